// SPDX-License-Identifier: Apache-2.0
#include "host/sql/syntax.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <span>

#include <pg_query.h>

#include "bop/frame/catalogue.h"
#include "host/near_names.h"
#include "host/program_error.h"
#include "host/sql/json_clauses.h"
#include "host/sql/nesting.h"
#include "host/sql/parse_tree.h"
#include "host/sql/sql_text.h"
#include "host/sql/syntax_advice.h"
#include "host/sql/tokens.h"

namespace host {
namespace {

struct refused_clause {
    std::string_view name;
    std::string_view message;
};

constexpr refused_clause refused_clauses[] = {
    {"withClause", "WITH is not supported; a query is one SELECT over one file"},
    {"distinctClause", "DISTINCT is not supported; a query gives a row for every row of the file that passes WHERE"},
    {"intoClause", "INTO is not supported; the result goes to the standard output"},
    {"groupClause", "GROUP BY is not supported; a query gives a row for every row of the file that passes WHERE"},
    {"havingClause", "HAVING is not supported; WHERE takes conditions on rows"},
    {"windowClause", "window functions are not supported; a function sees the values of one row"},
    {"valuesLists", "VALUES is not supported; write SELECT"},
    {"sortClause", "ORDER BY is not supported; rows come in the order of the file"},
    {"lockingClause", "FOR UPDATE and the like are not supported"},
};

constexpr std::string_view no_subqueries = "subqueries are not supported; a query is one SELECT over one file, named after FROM";

table_name translate_from(const json& from, const translation_context& context) {
    if (from.size() > 1 || from[0].contains("JoinExpr")) {
        refuse(from, context, no_joins);
    }
    if (from[0].contains("RangeSubselect")) {
        refuse(from, context, no_subqueries);
    }
    if (!from[0].contains("RangeVar")) {
        refuse(from, context, "FROM takes the name of a table, which is that of its file without .csv");
    }
    const json& table = from[0]["RangeVar"];
    if (table.contains("schemaname") || table.contains("catalogname")) {
        refuse(table, context, "tables have no schema; a table is named after its file without .csv");
    }
    table_name named{.name = table.value("relname", ""), .alias = {}, .offset = offset_of(table)};
    if (table.contains("alias")) {
        if (table["alias"].contains("colnames")) {
            refuse(table, context, "columns of a table alias are not supported");
        }
        named.alias = table["alias"].value("aliasname", "");
    }
    return named;
}

std::optional<std::uint64_t> translate_row_count(const json& limit, std::string_view clause, const translation_context& context) {
    const expression count = limit.contains("A_Const") ? translate_constant(limit["A_Const"], context) : expression{};
    if (limit.contains("A_Const") && count.literal == literal_kind::null) {
        return std::nullopt; // LIMIT ALL
    }
    std::uint64_t rows = 0;
    const char* const end = count.text.data() + count.text.size();
    const auto [next, error] = std::from_chars(count.text.data(), end, rows);
    if (count.literal != literal_kind::number || next != end || error != std::errc{}) {
        refuse(limit, context, fmt::format("{} takes a whole number that is not negative", clause));
    }
    return rows;
}

// An item of the select list as it was typed, in one line.
std::string item_text(std::string_view sql, std::size_t begin) {
    std::string text;
    std::string_view before;
    bool is_apart = false;
    int depth = 0;
    for (std::size_t at = begin; at < sql.size();) {
        const std::string_view token = sql_token(sql, at);
        at += token.size();
        if (is_sql_comment(token) || token.find_first_not_of(" \t\r\n\f\v") == token.npos) {
            is_apart = true;
            continue;
        }
        const bool is_name = before == "." || equal_ignoring_case(before, "DISTINCT"); // t.from, IS DISTINCT FROM
        const bool ends = token == "," || token == ")" || token == ";" ||
                          (!is_name && bifun::has_word("FROM WHERE LIMIT OFFSET FETCH", upper_case(token)));
        if (depth == 0 && ends) {
            break;
        }
        depth += token == "(" || token == "[" ? 1 : token == ")" || token == "]" ? -1 : 0;
        text.append(is_apart && !text.empty() ? " " : "").append(token);
        is_apart = false;
        before = token;
    }
    return text;
}

select_item translate_item(const json& target, const translation_context& context) {
    select_item item{.all_columns = false, .value = {}, .alias = target.value("name", "")};
    const json& value = target["val"];
    const bool all = value.contains("ColumnRef") && value["ColumnRef"]["fields"].back().contains("A_Star");
    if (!all) {
        item.text = item.alias.empty() ? item_text(context.sql, offset_of(target)) : "";
        item.value = translate(value, context);
        return item;
    }
    const json& fields = value["ColumnRef"]["fields"];
    if (!item.alias.empty() || fields.size() > 2) {
        refuse(value, context, "* takes no alias and is written * or table.*");
    }
    item.all_columns = true;
    item.value.offset = offset_of(value["ColumnRef"]);
    item.value.table = fields.size() == 2 ? fields[0]["String"].value("sval", "") : "";
    return item;
}

// Geb. FROM is a column named from to the parser, where the point is a part of a name.
const expression* find_column_named_from(std::span<const expression> parts) {
    for (const expression& part : parts) {
        if (part.kind == expression_kind::column && !part.table.empty() && part.name == "from") {
            return &part;
        }
        if (const expression* const found = find_column_named_from(part.operands); found != nullptr) {
            return found;
        }
    }
    return nullptr;
}

select_statement translate_statement(const json& body, const translation_context& context) {
    for (const refused_clause& clause : refused_clauses) {
        const auto found = body.find(clause.name);
        if (found != body.end()) {
            refuse(first_offset(*found) == nowhere ? body : *found, context, clause.message);
        }
    }
    if (body.value("op", "SETOP_NONE") != "SETOP_NONE") {
        refuse(body["rarg"], context, "UNION, INTERSECT and EXCEPT are not supported; a query is one SELECT over one file");
    }
    select_statement statement;
    for (const json& target : list_in(body, "targetList")) {
        statement.items.push_back(translate_item(target["ResTarget"], context));
    }
    if (statement.items.empty()) {
        refuse(body, context, "the select list is empty; write what to select, such as *");
    }
    if (body.contains("fromClause")) {
        statement.from = translate_from(body["fromClause"], context);
    }
    for (const select_item& item : statement.items) {
        if (const expression* const found = statement.from ? nullptr : find_column_named_from({&item.value, 1}); found != nullptr) {
            throw syntax_error(fmt::format("{}: FROM behind a point is the name of a column; names with a point stand in double quotes",
                                           sql_position(context.sql, found->offset)),
                               found->offset);
        }
    }
    if (body.contains("whereClause")) {
        statement.where = translate(body["whereClause"], context);
    }
    if (body.contains("limitCount")) {
        if (body.value("limitOption", "") == "LIMIT_OPTION_WITH_TIES") {
            refuse(body["limitCount"], context, "WITH TIES is not supported; write LIMIT n");
        }
        statement.limit = translate_row_count(body["limitCount"], "LIMIT", context);
    }
    if (body.contains("limitOffset")) {
        statement.offset = translate_row_count(body["limitOffset"], "OFFSET", context).value_or(0);
    }
    return statement;
}

// `plain` is the text without what the parser does not know.
json parse_tree(const std::string& sql, const std::string& plain) {
    if (sql.find('\0') != std::string::npos) {
        fail("SQL: the text holds a NUL character");
    }
    check_nesting(plain);
    const PgQueryParseResult parsed = pg_query_parse(plain.c_str());
    const std::unique_ptr<const PgQueryParseResult, void (*)(const PgQueryParseResult*)> owner(
        &parsed, [](const PgQueryParseResult* result) { pg_query_free_parse_result(*result); });
    if (parsed.error != nullptr) {
        const auto character = static_cast<std::size_t>(std::max(parsed.error->cursorpos, 1));
        const std::size_t offset = sql_offset_of_character(sql, character);
        const std::string_view message(parsed.error->message);
        const bool is_subquery = message.find("subquery in FROM") != message.npos;
        throw syntax_error(
            fmt::format("{}: {}{}", sql_position(sql, offset), is_subquery ? no_subqueries : message, syntax_advice(sql, offset)), offset);
    }
    json tree = json::parse(parsed.parse_tree, nullptr, false);
    if (tree.is_discarded()) {
        fail("SQL: the text is not valid UTF-8");
    }
    return tree;
}

} // namespace

select_statement parse_select(const std::string& sql) {
    std::string plain = sql;
    const std::vector<json_clauses> clauses = hide_json_clauses(plain);
    const json tree = parse_tree(sql, plain);
    const json& statements = tree["stmts"];
    const translation_context context{.sql = sql, .clauses = clauses};
    if (statements.empty()) {
        fail("SQL: the text is empty; write a query such as SELECT * FROM table");
    }
    if (statements.size() > 1) {
        fail_at(sql, sql.find_first_not_of(" \t\r\n", statements[1].value("stmt_location", std::size_t{0})),
                "one query at a time; there is a second one behind the semicolon");
    }
    const json& statement = statements[0]["stmt"];
    if (!statement.contains("SelectStmt")) {
        const bool is_show = statements[0]["stmt"].contains("VariableShowStmt");
        fail_at(sql, std::min(sql.find_first_not_of(" \t\r\n"), sql.size()),
                is_show ? "only SELECT is supported; \"bifun describe FILE\" shows the columns of a file, and \\d in the shell"
                        : "only SELECT is supported");
    }
    return translate_statement(statement["SelectStmt"], context);
}

} // namespace host
