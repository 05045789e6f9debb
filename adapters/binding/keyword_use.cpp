// SPDX-License-Identifier: Apache-2.0
#include "adapters/binding/keyword_use.h"

#include "adapters/binding/known_fact.h"

namespace binding {

keyword_use keywords_of(std::string_view builtin) {
    keyword_use found;
    for (const bifun::entry_point& member : bifun::entry_points) {
        for (std::size_t i = 0; member.builtin == builtin && i < member.argument_count; ++i) {
            const bifun::argument_fact& fact = known_fact(member, i);
            if (fact.keywords.role != bifun::keyword_role::none) {
                found.list = fact.keywords;
                found.chooses_member |= fact.fields != 0;
                found.name_position = member.arguments()[i].type == bifun::value_type::VARCHAR ? i : found.name_position;
            }
        }
    }
    return found;
}

} // namespace binding
