// SPDX-License-Identifier: Apache-2.0
#include "adapters/binding/keyword_use.h"

#include <map>

#include "adapters/binding/known_fact.h"

namespace binding {

namespace {

std::map<std::string_view, keyword_use> all_keywords() {
    std::map<std::string_view, keyword_use> all;
    for (const bifun::entry_point& member : bifun::entry_points) {
        keyword_use& found = all[member.builtin];
        for (std::size_t i = 0; i < member.argument_count; ++i) {
            const bifun::argument_fact& fact = known_fact(member, i);
            if (fact.keywords.role != bifun::keyword_role::none) {
                found.list = fact.keywords;
                found.chooses_member |= fact.fields != 0;
                found.name_position = member.arguments()[i].type == bifun::value_type::VARCHAR ? i : found.name_position;
            }
        }
    }
    return all;
}

} // namespace

const keyword_use& keywords_of(std::string_view builtin) {
    static const std::map<std::string_view, keyword_use> all = all_keywords();
    static const keyword_use none;
    const auto found = all.find(builtin);
    return found != all.end() ? found->second : none;
}

} // namespace binding
