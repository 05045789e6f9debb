// SPDX-License-Identifier: Apache-2.0
// Calls.

#include <algorithm>

#include <fmt/format.h>

#include "host/sql/builtins.h"
#include "host/sql/call_spelling.h"
#include "host/sql/parse_tree.h"
#include "host/sql/sql_text.h"
#include "host/sql/syntax_advice.h"

namespace host {
namespace {

// The field of a date: a bare word, which the parser takes for a column, or a text. In SQL's own syntax it makes no difference between
// them.
expression translate_field(const json& argument, bool has_own_syntax, const translation_context& context) {
    if (argument.contains("A_Const") && argument["A_Const"].contains("sval")) {
        expression made = translate_constant(argument["A_Const"], context);
        made.kind = expression_kind::keyword;
        made.literal = has_own_syntax ? literal_kind::null : literal_kind::string;
        return made;
    }
    const bool bare = argument.contains("ColumnRef") && argument["ColumnRef"]["fields"].size() == 1 &&
                      argument["ColumnRef"]["fields"][0].contains("String");
    if (!bare) {
        refuse(argument, context, "the first argument names a field, such as DAY");
    }
    expression made = make(expression_kind::keyword, argument["ColumnRef"]);
    made.text = argument["ColumnRef"]["fields"][0]["String"].value("sval", "");
    return made;
}

struct refused_call_part {
    const char* key;
    std::string_view message;
};

constexpr refused_call_part refused_call_parts[] = {
    {"agg_star", "aggregates such as COUNT(*) are not supported; a query gives a row for every row of the file that passes WHERE"},
    {"agg_distinct", "aggregates are not supported, so there is no DISTINCT in a call"},
    {"agg_order", "aggregates are not supported, so there is no ORDER BY in a call"},
    {"agg_filter", "aggregates are not supported, so there is no FILTER"},
    {"agg_within_group", "aggregates are not supported, so there is no WITHIN GROUP"},
    {"over", "window functions are not supported; a function sees the values of one row"},
    {"func_variadic", "VARIADIC is not supported"},
};

} // namespace

expression translate_call(const json& body, translation_context context) {
    expression made = make(expression_kind::call, body);
    for (const refused_call_part& part : refused_call_parts) {
        if (body.contains(part.key)) {
            fail_at(context.sql, made.offset, part.message);
        }
    }
    const json& names = body["funcname"];
    made.name = names.back()["String"].value("sval", "");
    const bool has_own_syntax = body.value("funcformat", "") == "COERCE_SQL_SYNTAX";
    if (!has_own_syntax && names.size() > 1) {
        fail_at(context.sql, made.offset, "functions have no schema; write the name alone");
    }
    const bifun::builtin* const builtin = find_builtin(made.name);
    const bool has_field = builtin != nullptr && keywords_of(builtin->name).list.role == bifun::keyword_role::field;
    for (const json& argument : list_in(body, "args")) {
        made.operands.push_back(has_field && made.operands.empty() ? translate_field(argument, has_own_syntax, context)
                                                                   : translate(argument, context));
    }
    const auto clauses = std::ranges::find(context.clauses, made.offset, &json_clauses::call);
    if (clauses != context.clauses.end()) {
        made.operands.push_back({.kind = expression_kind::literal, .offset = clauses->offset});
        made.operands.back().literal = literal_kind::string;
        made.operands.back().text = clauses->text;
    }
    if (has_own_syntax && is_own_syntax(made.name)) {
        spell_as_builtin(made);
    } else if (builtin != nullptr) {
        made.name = builtin->name;
    } else if (has_own_syntax && made.name == "timezone") {
        fail_at(context.sql, made.offset, fmt::format("AT TIME ZONE is not supported; {}", no_zone_conversion));
    }
    return made;
}

expression translate_extreme(const json& body, translation_context context) {
    expression made = make(expression_kind::call, body);
    made.name = body.value("op", "IS_GREATEST");
    made.operands = translate_all(body["args"], context);
    spell_as_builtin(made);
    return made;
}

} // namespace host
