#include "host/sql_syntax.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <span>

#include <nlohmann/json.hpp>
#include <pg_query.h>

#include "host/call_spelling.h"
#include "host/member_choice.h"
#include "host/program_error.h"
#include "host/sql_text.h"

namespace host {
namespace {

using json = nlohmann::json;

struct translation_context {
    const std::string& sql;
    std::size_t depth = 0;
};

constexpr std::size_t deepest = 500; // expressions in one another

expression translate(const json& node, translation_context context);

// ---- places in the text --------------------------------------------------------------------------------------------

constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

// The first place in the text that a part of the tree names.
std::size_t first_offset(const json& node) {
    std::size_t first = nowhere;
    if (node.is_object()) {
        const auto location = node.find("location");
        if (location != node.end() && location->is_number_integer() && location->get<int>() >= 0) {
            first = location->get<std::size_t>();
        }
    }
    if (node.is_structured()) {
        for (const json& child : node) {
            first = std::min(first, first_offset(child));
        }
    }
    return first;
}

// The place that a node itself names; the tree leaves out a location of 0.
std::size_t offset_of(const json& body) {
    const auto location = body.find("location");
    if (location == body.end()) {
        return 0;
    }
    return location->get<int>() >= 0 ? location->get<std::size_t>() : first_offset(body);
}

[[noreturn]] void refuse(const json& part, const translation_context& context, std::string_view message) {
    const std::size_t offset = first_offset(part);
    fail_at(context.sql, offset == nowhere ? 0 : offset, message);
}

expression make(expression_kind kind, const json& body) {
    expression made{.kind = kind};
    made.offset = offset_of(body);
    return made;
}

std::vector<expression> translate_all(const json& list, translation_context context) {
    std::vector<expression> all;
    for (const json& item : list) {
        all.push_back(translate(item, context));
    }
    return all;
}

// ---- literals and names --------------------------------------------------------------------------------------------

// The parser's tree leaves out the value of an integer that is not positive, so it is read from the text: signs, parentheses, blanks
// and comments, then the digits.
std::string integer_text(std::string_view sql, std::size_t offset) {
    bool negative = false;
    while (offset < sql.size() && (sql[offset] < '0' || sql[offset] > '9')) {
        if (sql.substr(offset, 2) == "--") {
            offset = std::min(sql.find('\n', offset), sql.size());
        } else if (sql.substr(offset, 2) == "/*") {
            int open = 0;
            do {
                const bool opens = sql.substr(offset, 2) == "/*";
                const bool closes = sql.substr(offset, 2) == "*/";
                open += opens ? 1 : closes ? -1 : 0;
                offset += opens || closes ? 2 : 1;
            } while (open > 0 && offset < sql.size());
        } else {
            negative = negative != (sql[offset] == '-');
            ++offset;
        }
    }
    std::size_t end = offset;
    while (end < sql.size() && sql[end] >= '0' && sql[end] <= '9') {
        ++end;
    }
    return (negative ? "-" : "") + std::string(sql.substr(offset, end - offset));
}

expression translate_constant(const json& body, translation_context context) {
    expression made = make(expression_kind::literal, body);
    if (body.contains("ival")) {
        const int value = body["ival"].value("ival", 0);
        made.literal = literal_kind::number;
        made.text = value > 0 ? std::to_string(value) : integer_text(context.sql, made.offset);
    } else if (body.contains("fval")) {
        made.literal = literal_kind::number;
        made.text = body["fval"].value("fval", "");
    } else if (body.contains("sval")) {
        made.literal = literal_kind::string;
        made.text = body["sval"].value("sval", "");
    } else if (body.contains("boolval")) {
        made.literal = literal_kind::boolean;
        made.truth = body["boolval"].value("boolval", false);
    } else if (!body.contains("isnull")) {
        refuse(body, context, "bit strings are not supported; literals are numbers, 'text', DATE '...', TRUE, FALSE and NULL");
    }
    return made;
}

expression translate_column(const json& body, translation_context context) {
    expression made = make(expression_kind::column, body);
    const json& fields = body["fields"];
    if (fields.back().contains("A_Star")) {
        refuse(body, context, "* stands for all columns only as an item of the select list");
    }
    if (fields.size() > 2) {
        refuse(body, context, "a column is written name or table.name");
    }
    made.name = fields.back()["String"].value("sval", "");
    if (fields.size() == 2) {
        made.table = fields.front()["String"].value("sval", "");
    }
    return made;
}

struct literal_type {
    std::string_view name; // as the parser calls it
    literal_kind kind;
};

constexpr literal_type literal_types[] = {
    {"date", literal_kind::date},           {"time", literal_kind::time},          {"timetz", literal_kind::time_with_zone},
    {"timestamp", literal_kind::timestamp}, {"datetime", literal_kind::timestamp}, {"timestamptz", literal_kind::timestamp_with_zone},
    {"interval", literal_kind::interval},
};

// The parser gives the fields of an interval as a set of bits, then the fraction digits of its seconds.
interval_qualifier translate_qualifier(const json& type, const translation_context& context) {
    constexpr int field_bits[] = {1 << 2, 1 << 1, 1 << 3, 1 << 10, 1 << 11, 1 << 12}; // year to second
    constexpr int all_bits = 0x7FFF;                                                  // where there are none
    const json modifiers = type.value("typmods", json::array());
    const auto number = [&](std::size_t i) {
        const json& modifier = modifiers[i];
        return modifier.contains("A_Const") && modifier["A_Const"].contains("ival") ? modifier["A_Const"]["ival"].value("ival", 0) : 0;
    };
    const int fields = modifiers.empty() ? 0 : number(0);
    interval_qualifier made{.first = interval_field::second, .last = interval_field::year};
    for (int i = 0; i < 6; ++i) {
        if ((fields & field_bits[i]) != 0) {
            made.first = std::min(made.first, static_cast<interval_field>(i));
            made.last = static_cast<interval_field>(i);
        }
    }
    if (fields == all_bits || !find_qualifier(qualifier_name(made))) {
        refuse(type, context, "an interval names its fields behind its text: INTERVAL '3' DAY, INTERVAL '1-2' YEAR TO MONTH");
    }
    if (modifiers.size() > 1) {
        made.fraction_digits = number(1);
        if (made.fraction_digits < 0 || made.fraction_digits > 6) {
            refuse(modifiers[1], context, "the seconds of an interval have 0 to 6 fraction digits");
        }
    }
    return made;
}

// DATE '2024-02-29' and the like. The parser makes no difference between this and a cast of a constant. A cast of its own, as around the n
// of SUBSTRING(s FOR n), has no place in the text.
expression translate_cast(const json& body, translation_context context) {
    const json& type = body["typeName"];
    if (body.value("location", 0) < 0 && type.value("location", 0) < 0) {
        return translate(body["arg"], context);
    }
    const std::string name = type["names"].back()["String"].value("sval", "");
    const auto* const known = std::ranges::find(literal_types, name, &literal_type::name);
    const bool is_text = body["arg"].contains("A_Const") && body["arg"]["A_Const"].contains("sval");
    const bool is_interval = known != std::end(literal_types) && known->kind == literal_kind::interval;
    if (known == std::end(literal_types) || !is_text || (type.contains("typmods") && !is_interval)) {
        refuse(body, context,
               "casts are not supported; literals with a type are DATE '...', TIME '...', TIMESTAMP '...' and INTERVAL '...' DAY");
    }
    expression made = translate_constant(body["arg"]["A_Const"], context);
    made.literal = known->kind;
    if (is_interval) {
        made.fields = translate_qualifier(type, context);
    }
    made.offset = std::min(made.offset, offset_of(type));
    return made;
}

// ---- operators -----------------------------------------------------------------------------------------------------

struct comparison_name {
    std::string_view symbol;
    comparison_operator operation;
};

constexpr comparison_name comparison_names[] = {
    {"=", comparison_operator::equal},          {"<>", comparison_operator::not_equal}, {"<", comparison_operator::less},
    {"<=", comparison_operator::less_or_equal}, {">", comparison_operator::greater},    {">=", comparison_operator::greater_or_equal},
};

// A comparison, or a call that is written as an operator.
expression translate_symbol(const json& body, translation_context context) {
    expression made = make(expression_kind::comparison, body);
    made.name = body["name"].back()["String"].value("sval", "");
    const auto* const known = std::ranges::find(comparison_names, made.name, &comparison_name::symbol);
    const bool is_comparison = known != std::end(comparison_names);
    if (!(is_comparison || is_own_syntax(made.name)) || !body.contains("lexpr") || body["name"].size() != 1) {
        fail_at(context.sql, made.offset,
                fmt::format("the operator {} is not supported; operators are = <> < <= > >= AND OR NOT BETWEEN IN IS", made.name));
    }
    made.operands.push_back(translate(body["lexpr"], context));
    made.operands.push_back(translate(body["rexpr"], context));
    if (is_comparison) {
        made.comparison = known->operation;
    } else {
        made.kind = expression_kind::call;
        spell_as_builtin(made);
    }
    return made;
}

// x BETWEEN y AND z, x IN (y, ...).
expression translate_operator_with_list(const json& body, translation_context context, expression_kind kind, bool negated) {
    expression made = make(kind, body);
    made.negated = negated;
    made.operands = translate_all(body["rexpr"]["List"]["items"], context);
    made.operands.insert(made.operands.begin(), translate(body["lexpr"], context));
    return made;
}

expression translate_operator(const json& body, translation_context context) {
    const std::string kind = body.value("kind", "");
    if (kind == "AEXPR_OP") {
        return translate_symbol(body, context);
    }
    if (kind == "AEXPR_IN") {
        const bool negated = body["name"].back()["String"].value("sval", "") == "<>";
        return translate_operator_with_list(body, context, expression_kind::in_list, negated);
    }
    if (kind == "AEXPR_BETWEEN" || kind == "AEXPR_NOT_BETWEEN") {
        return translate_operator_with_list(body, context, expression_kind::between, kind == "AEXPR_NOT_BETWEEN");
    }
    fail_at(context.sql, offset_of(body), "this operator is not supported; operators are = <> < <= > >= AND OR NOT BETWEEN IN IS");
}

expression translate_boolean(const json& body, translation_context context) {
    const std::string operation = body.value("boolop", "");
    expression made = make(operation == "AND_EXPR"  ? expression_kind::conjunction
                           : operation == "OR_EXPR" ? expression_kind::disjunction
                                                    : expression_kind::negation,
                           body);
    made.operands = translate_all(body["args"], context);
    return made;
}

expression translate_null_test(const json& body, translation_context context) {
    expression made = make(expression_kind::null_test, body);
    made.negated = body.value("nulltesttype", "") == "IS_NOT_NULL";
    made.operands.push_back(translate(body["arg"], context));
    return made;
}

expression translate_truth_test(const json& body, translation_context context) {
    expression made = make(expression_kind::truth_test, body);
    std::string_view test = body["booltesttype"].get_ref<const std::string&>();
    made.negated = test.starts_with("IS_NOT_");
    test.remove_prefix(made.negated ? 7 : 3);
    made.tested = test == "TRUE" ? truth_value::true_value : test == "FALSE" ? truth_value::false_value : truth_value::unknown;
    made.operands.push_back(translate(body["arg"], context));
    return made;
}

// ---- calls ---------------------------------------------------------------------------------------------------------

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
    {"agg_star", "aggregates such as COUNT(*) are not supported"},
    {"agg_distinct", "aggregates are not supported, so there is no DISTINCT in a call"},
    {"agg_order", "aggregates are not supported, so there is no ORDER BY in a call"},
    {"agg_filter", "aggregates are not supported, so there is no FILTER"},
    {"agg_within_group", "aggregates are not supported, so there is no WITHIN GROUP"},
    {"over", "window functions are not supported"},
    {"func_variadic", "VARIADIC is not supported"},
};

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
    for (const json& argument : body.value("args", json::array())) {
        made.operands.push_back(has_field && made.operands.empty() ? translate_field(argument, has_own_syntax, context)
                                                                   : translate(argument, context));
    }
    if (has_own_syntax && is_own_syntax(made.name)) {
        spell_as_builtin(made);
    } else if (builtin != nullptr) {
        made.name = builtin->name;
    } else if (has_own_syntax && made.name == "timezone") {
        made.name = "at time zone"; // as people write it
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

// ---- the table of nodes --------------------------------------------------------------------------------------------

struct node_translation {
    std::string_view node;
    expression (*translate)(const json& body, translation_context context);
};

constexpr node_translation node_translations[] = {
    {"A_Const", translate_constant},   {"ColumnRef", translate_column},   {"FuncCall", translate_call},
    {"MinMaxExpr", translate_extreme}, {"TypeCast", translate_cast},      {"A_Expr", translate_operator},
    {"BoolExpr", translate_boolean},   {"NullTest", translate_null_test}, {"BooleanTest", translate_truth_test},
};

struct refused_node {
    std::string_view node;
    std::string_view message;
};

constexpr refused_node refused_nodes[] = {
    {"CoalesceExpr", "COALESCE is not supported; use NVL(x, y)"},
    {"CaseExpr", "CASE is not supported; use IF(condition, x, y)"},
    {"SubLink", "subqueries are not supported"},
    {"ParamRef", "there are no parameters; write the value"},
    {"SQLValueFunction", "this value is not supported"},
    {"A_ArrayExpr", "arrays are not supported"},
    {"A_Indirection", "arrays and records are not supported"},
    {"RowExpr", "records are not supported"},
    {"NamedArgExpr", "arguments have no names; write the value alone"},
    {"CollateClause", "COLLATE is not supported"},
    {"SetToDefault", "DEFAULT is not a value"},
};

expression translate(const json& node, translation_context context) {
    const std::string& name = node.begin().key();
    const json& body = node.begin().value();
    if (++context.depth > deepest) {
        refuse(node, context, fmt::format("the expression is nested more than {} levels deep", deepest));
    }
    const auto* const known = std::ranges::find(node_translations, name, &node_translation::node);
    if (known != std::end(node_translations)) {
        return known->translate(body, context);
    }
    const auto* const refused = std::ranges::find(refused_nodes, name, &refused_node::node);
    refuse(node, context, refused != std::end(refused_nodes) ? refused->message : "this expression is not supported");
}

// ---- the statement -------------------------------------------------------------------------------------------------

constexpr refused_node refused_clauses[] = {
    {"withClause", "WITH is not supported"},
    {"distinctClause", "DISTINCT is not supported"},
    {"intoClause", "INTO is not supported"},
    {"groupClause", "GROUP BY is not supported"},
    {"havingClause", "HAVING is not supported"},
    {"windowClause", "window functions are not supported"},
    {"valuesLists", "VALUES is not supported; write SELECT"},
    {"sortClause", "ORDER BY is not supported; rows come in the order of the file"},
    {"limitOffset", "OFFSET is not supported"},
    {"lockingClause", "FOR UPDATE and the like are not supported"},
};

table_name translate_from(const json& from, const translation_context& context) {
    if (from.size() > 1 || from[0].contains("JoinExpr")) {
        refuse(from, context, "joins are not supported; FROM takes one table");
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

std::optional<std::uint64_t> translate_limit(const json& limit, const translation_context& context) {
    const expression count = limit.contains("A_Const") ? translate_constant(limit["A_Const"], context) : expression{};
    if (limit.contains("A_Const") && count.literal == literal_kind::null) {
        return std::nullopt; // LIMIT ALL
    }
    std::uint64_t rows = 0;
    const char* const end = count.text.data() + count.text.size();
    const auto [next, error] = std::from_chars(count.text.data(), end, rows);
    if (count.literal != literal_kind::number || next != end || error != std::errc{}) {
        refuse(limit, context, "LIMIT takes a whole number that is not negative");
    }
    return rows;
}

select_item translate_item(const json& target, const translation_context& context) {
    select_item item{.all_columns = false, .value = {}, .alias = target.value("name", "")};
    const json& value = target["val"];
    const bool all = value.contains("ColumnRef") && value["ColumnRef"]["fields"].back().contains("A_Star");
    if (!all) {
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

select_statement translate_statement(const json& body, const translation_context& context) {
    for (const refused_node& clause : refused_clauses) {
        const auto found = body.find(clause.node);
        if (found != body.end()) {
            refuse(first_offset(*found) == nowhere ? body : *found, context, clause.message);
        }
    }
    if (body.value("op", "SETOP_NONE") != "SETOP_NONE") {
        refuse(body["rarg"], context, "UNION, INTERSECT and EXCEPT are not supported");
    }
    select_statement statement;
    for (const json& target : body.value("targetList", json::array())) {
        statement.items.push_back(translate_item(target["ResTarget"], context));
    }
    if (statement.items.empty()) {
        refuse(body, context, "the select list is empty; write what to select, such as *");
    }
    if (body.contains("fromClause")) {
        statement.from = translate_from(body["fromClause"], context);
    }
    if (body.contains("whereClause")) {
        statement.where = translate(body["whereClause"], context);
    }
    if (body.contains("limitCount")) {
        if (body.value("limitOption", "") == "LIMIT_OPTION_WITH_TIES") {
            refuse(body["limitCount"], context, "WITH TIES is not supported");
        }
        statement.limit = translate_limit(body["limitCount"], context);
    }
    return statement;
}

json parse_tree(const std::string& sql) {
    if (sql.find('\0') != std::string::npos) {
        fail("SQL: the text holds a NUL character");
    }
    const PgQueryParseResult parsed = pg_query_parse(sql.c_str());
    const std::unique_ptr<const PgQueryParseResult, void (*)(const PgQueryParseResult*)> owner(
        &parsed, [](const PgQueryParseResult* result) { pg_query_free_parse_result(*result); });
    if (parsed.error != nullptr) {
        const auto character = static_cast<std::size_t>(std::max(parsed.error->cursorpos, 1));
        fail("{}: {}", sql_position(sql, sql_offset_of_character(sql, character)), parsed.error->message);
    }
    json tree = json::parse(parsed.parse_tree, nullptr, false);
    if (tree.is_discarded()) {
        fail("SQL: the text is not valid UTF-8");
    }
    return tree;
}

} // namespace

select_statement parse_select(const std::string& sql) {
    const json tree = parse_tree(sql);
    const json& statements = tree["stmts"];
    const translation_context context{.sql = sql};
    if (statements.empty()) {
        fail("SQL: the text is empty; write a query such as SELECT * FROM table");
    }
    if (statements.size() > 1) {
        fail_at(sql, sql.find_first_not_of(" \t\r\n", statements[1].value("stmt_location", std::size_t{0})),
                "one query at a time; there is a second one behind the semicolon");
    }
    const json& statement = statements[0]["stmt"];
    if (!statement.contains("SelectStmt")) {
        fail_at(sql, std::min(sql.find_first_not_of(" \t\r\n"), sql.size()), "only SELECT is supported");
    }
    return translate_statement(statement["SelectStmt"], context);
}

} // namespace host
