#include "host/sql/builtins.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

#include "host/near_names.h"

namespace host {

const bifun::builtin* find_builtin(std::string_view name) {
    const std::string upper = upper_case(name);
    const auto* const spelled =
        std::ranges::find_if(bifun::spellings, [&](const auto& known) { return bifun::has_word(known.names, upper); });
    const std::string_view own_name = spelled == std::end(bifun::spellings) ? upper : spelled->builtin;
    const auto* const found = std::ranges::find(bifun::builtins, own_name, &bifun::builtin::name);
    return found == std::end(bifun::builtins) ? nullptr : found;
}

std::string unknown_function(std::string_view name) {
    std::vector<std::string> names;
    std::ranges::transform(bifun::builtins, std::back_inserter(names), [](const bifun::builtin& known) { return std::string(known.name); });
    const std::string hint = did_you_mean(name, names);
    return fmt::format("there is no function {}{}", name, hint.empty() ? "; \"bifun functions\" lists what there is" : hint);
}

keyword_use keywords_of(std::string_view builtin) {
    keyword_use found;
    for (const bifun::entry_point& member : bifun::entry_points) {
        for (std::size_t i = 0; member.builtin == builtin && i < member.argument_count; ++i) {
            const bifun::argument_fact& fact = bifun::fact_of(member, i);
            if (fact.keywords.role != bifun::keyword_role::none) {
                found.list = fact.keywords;
                found.chooses_member |= fact.fields != 0;
                found.name_position = member.arguments()[i].type == bifun::value_type::VARCHAR ? i : found.name_position;
            }
        }
    }
    return found;
}

} // namespace host
