// SPDX-License-Identifier: Apache-2.0
#include "adapters/binding/known_fact.h"

#include <array>
#include <iterator>
#include <vector>

namespace binding {

const bifun::argument_fact& known_fact(const bifun::entry_point& entry, std::size_t position) {
    using fact_table = std::vector<std::array<const bifun::argument_fact*, bifun::most_arguments>>;
    static const fact_table table = [] {
        fact_table made(std::size(bifun::entry_points));
        for (std::size_t i = 0; i < made.size(); ++i) {
            for (std::size_t k = 0; k < bifun::entry_points[i].argument_count; ++k) {
                made[i][k] = &fact_of(bifun::entry_points[i], k);
            }
        }
        return made;
    }();
    return *table[static_cast<std::size_t>(&entry - bifun::entry_points)][position];
}

} // namespace binding
