// SPDX-License-Identifier: Apache-2.0
#include "host/functions/function_list.h"

#include <algorithm>

#include "bop/frame/catalogue.h"
#include "host/program_error.h"
#include "host/sql/builtins.h"
#include "host/sql/call_spelling.h"

namespace host {

std::string function_list() {
    std::size_t width = 0;
    for (const bifun::builtin& known : bifun::builtins) {
        width = std::max(width, known.form.size());
    }
    std::string text;
    for (const bifun::builtin& known : bifun::builtins) {
        text += fmt::format("{:<{}}  {}\n", known.form, width, meaning_with_names(known));
    }
    return text;
}

std::string function_description(std::string_view name) {
    const bifun::builtin* const known = find_builtin(name);
    if (known == nullptr) {
        fail("{}", unknown_function(name));
    }
    std::string text = fmt::format("{}\n    {}\n\nExample\n    bifun \"SELECT {}\"\n\nEntry points\n", known->form,
                                   meaning_with_names(*known), known->example);
    std::size_t width = 0;
    for (const bifun::entry_point& member : bifun::entry_points) {
        width = member.builtin == known->name ? std::max(width, std::string_view(member.symbol).size()) : width;
    }
    for (const bifun::entry_point& member : bifun::entry_points) {
        if (member.builtin != known->name) {
            continue;
        }
        std::string arguments;
        for (const bifun::argument& argument : member.arguments()) {
            arguments += fmt::format("{}{} {}", arguments.empty() ? "" : ", ", bifun::type_name(argument.type),
                                     argument.kind == bifun::argument_kind::column ? "column" : "constant");
        }
        text += fmt::format("    {:<{}}  ({}) -> {}\n", member.symbol, width, arguments, bifun::type_name(member.result));
    }
    return text;
}

} // namespace host
