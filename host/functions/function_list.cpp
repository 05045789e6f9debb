// SPDX-License-Identifier: Apache-2.0
#include "host/functions/function_list.h"

#include <algorithm>

#include "bop/frame/catalogue.h"
#include "host/near_names.h"
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

namespace {

// What looks like a function, or is asked for as one, and is syntax.
struct syntax_word {
    std::string_view names;
    std::string_view form;
    std::string_view meaning;
    std::string_view example;
};

constexpr syntax_word syntax_words[] = {
    {"CASE WHEN THEN ELSE END", "CASE [x] WHEN condition THEN y ... [ELSE z] END",
     "y of the first condition that is true, or of the first value that x equals; z, or NULL, where none is",
     "CASE WHEN 2 > 1 THEN 'a' ELSE 'b' END"},
    {"COALESCE", "COALESCE(x, y, ...)", "the first of them that is not NULL", "COALESCE(NULL, 7)"},
    {"NULLIF", "NULLIF(x, y)", "NULL where x equals y, and else x", "NULLIF(0, 0)"},
    {"CAST ::", "CAST(x AS type)",
     "x as a BOOL, INT, BIGINT, DECIMAL(p, s), DOUBLE, VARCHAR, DATE, TIME or TIMESTAMP, these two also WITH TIME ZONE; what is none of "
     "the type is an "
     "error, integers and DECIMAL(p, s) are rounded, and a type without a zone leaves the zone out",
     "CAST('12.50' AS DECIMAL)"},
    {"||", "x || y", "x and y, one behind the other; a NULL is taken for the empty text unless both are NULL", "'post' || 'script'"},
    {"LIKE ILIKE", "s [NOT] LIKE pattern [ESCAPE c]",
     "whether s is like the pattern, in which % is any text and _ any character; ILIKE disregards case", "'abc' LIKE 'a%'"},
    {"BETWEEN", "x [NOT] BETWEEN y AND z", "whether x >= y AND x <= z", "2 BETWEEN 1 AND 3"},
    {"IN", "x [NOT] IN (y, ...)", "whether x equals one of them", "2 IN (1, 2)"},
    {"IS", "x IS [NOT] NULL, TRUE, FALSE or UNKNOWN", "whether x is that; never NULL itself", "NULL IS NULL"},
    {"CURRENT_DATE CURRENT_TIME CURRENT_TIMESTAMP LOCALTIME LOCALTIMESTAMP",
     "CURRENT_DATE, CURRENT_TIME, CURRENT_TIMESTAMP, LOCALTIME, LOCALTIMESTAMP",
     "the moment at which the query began, the same in all rows", "CURRENT_DATE"},
};

} // namespace

std::string function_description(std::string_view name) {
    const bifun::builtin* const known = find_builtin(name);
    const std::string upper = upper_case(name);
    const auto* const word = std::ranges::find_if(syntax_words, [&](const syntax_word& of) { return bifun::has_word(of.names, upper); });
    if (known == nullptr && word != std::end(syntax_words)) {
        return fmt::format("{}\n    {}\n\nExample\n    bifun \"SELECT {}\"\n", word->form, word->meaning, word->example);
    }
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
