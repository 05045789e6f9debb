// SPDX-License-Identifier: Apache-2.0
// Operators and conditions, and the kinds of nodes that there are.

#include <algorithm>

#include <fmt/format.h>

#include "host/sql/call_spelling.h"
#include "host/sql/parse_tree.h"
#include "host/sql/sql_text.h"
#include "host/sql/syntax_advice.h"

namespace host {
namespace {

struct comparison_name {
    std::string_view symbol;
    comparison_operator operation;
};

constexpr comparison_name comparison_names[] = {
    {"=", comparison_operator::equal},          {"<>", comparison_operator::not_equal}, {"<", comparison_operator::less},
    {"<=", comparison_operator::less_or_equal}, {">", comparison_operator::greater},    {">=", comparison_operator::greater_or_equal},
};

constexpr std::string_view all_operators = "operators are + - * / % || = <> < <= > >= AND OR NOT BETWEEN IN LIKE ILIKE IS";

// Null where the symbol is none of an operator of arithmetic.
const arithmetic_operator* find_arithmetic(std::string_view symbol) {
    static constexpr arithmetic_operator binary[] = {arithmetic_operator::add, arithmetic_operator::subtract, arithmetic_operator::multiply,
                                                     arithmetic_operator::divide};
    const auto* const found = std::ranges::find(binary, symbol, arithmetic_symbol);
    return found == std::end(binary) ? nullptr : found;
}

// a + b, -a
expression translate_arithmetic(const json& body, translation_context context, arithmetic_operator operation) {
    expression made = make(expression_kind::arithmetic, body);
    made.operation = operation;
    const bool is_sign = !body.contains("lexpr");
    if (!is_sign) {
        made.operands.push_back(translate(body["lexpr"], context));
    }
    made.operands.push_back(translate(body["rexpr"], context));
    if (is_sign && operation == arithmetic_operator::subtract) {
        made.operation = arithmetic_operator::negate;
    }
    return made;
}

struct operator_elsewhere {
    std::string_view symbol;
    std::string_view advice;
};

constexpr operator_elsewhere operators_elsewhere[] = {
    {"==", "use ="},
    {"^", "use POWER(x, y)"},
    {"**", "use POWER(x, y)"},
    {"//", "use TRUNC(x / y)"},
    {"&", "use BITAND(x, y)"},
    {"~", no_regular_expressions},
    {"!~", no_regular_expressions},
    {"~*", no_regular_expressions},
    {"!~*", no_regular_expressions},
    {"~~", "use LIKE"},
    {"&&", "use AND"},
    {"!", "use NOT"},
    {"->>", "use JSON_VALUE(doc, path) or JSON_QUERY(doc, path)"},
    {"->", "use JSON_VALUE(doc, path) or JSON_QUERY(doc, path)"},
};

// A comparison, or a call that is written as an operator.
expression translate_symbol(const json& body, translation_context context) {
    expression made = make(expression_kind::comparison, body);
    made.name = body["name"].back()["String"].value("sval", "");
    const auto* const known = std::ranges::find(comparison_names, made.name, &comparison_name::symbol);
    const bool is_comparison = known != std::end(comparison_names);
    const arithmetic_operator* const arithmetic = find_arithmetic(made.name);
    const bool is_sign = made.name == "+" || made.name == "-";
    if (!(is_comparison || arithmetic != nullptr || made.name == "%" || is_own_syntax(made.name)) ||
        (!body.contains("lexpr") && !is_sign) || body["name"].size() != 1) {
        const auto* const elsewhere = std::ranges::find(operators_elsewhere, made.name, &operator_elsewhere::symbol);
        fail_at(context.sql, made.offset,
                fmt::format("the operator {} is not supported; {}", made.name,
                            elsewhere == std::end(operators_elsewhere) ? all_operators : elsewhere->advice));
    }
    if (arithmetic != nullptr) {
        return translate_arithmetic(body, context, *arithmetic);
    }
    made.operands.push_back(translate(body["lexpr"], context));
    made.operands.push_back(translate(body["rexpr"], context));
    if (is_comparison) {
        made.comparison = known->operation;
    } else if (made.name == "%") {
        made.kind = expression_kind::call;
        made.name = "MOD";
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

// x LIKE y ESCAPE z: the parser makes a call of the pattern and what stands behind ESCAPE.
expression translate_like(const json& body, translation_context context) {
    expression made = make(expression_kind::like, body);
    made.negated = body["name"].back()["String"].value("sval", "").starts_with('!');
    made.operands.push_back(translate(body["lexpr"], context));
    const json& pattern = body["rexpr"];
    if (!pattern.contains("FuncCall") || pattern["FuncCall"]["funcname"].back()["String"].value("sval", "") != "like_escape") {
        made.operands.push_back(translate(pattern, context));
        return made;
    }
    const json& arguments = pattern["FuncCall"]["args"];
    made.operands.push_back(translate(arguments[0], context));
    const expression escape = translate(arguments[1], context);
    const auto begins_character = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; };
    if (escape.kind != expression_kind::literal || escape.literal != literal_kind::string ||
        std::ranges::count_if(escape.text, begins_character) != 1) {
        refuse(arguments[1], context, "ESCAPE takes one character in quotes");
    }
    made.text = escape.text;
    return made;
}

expression translate_null_if(const json& body, translation_context context) {
    expression made = make(expression_kind::null_if, body);
    made.operands.push_back(translate(body["lexpr"], context));
    made.operands.push_back(translate(body["rexpr"], context));
    return made;
}

expression translate_coalesce(const json& body, translation_context context) {
    expression made = make(expression_kind::first_known, body);
    made.operands = translate_all(body["args"], context);
    return made;
}

expression translate_case(const json& body, translation_context context) {
    expression made = make(expression_kind::choice, body);
    made.has_tested = body.contains("arg");
    if (made.has_tested) {
        made.operands.push_back(translate(body["arg"], context));
    }
    for (const json& branch : body["args"]) {
        made.operands.push_back(translate(branch["CaseWhen"]["expr"], context));
        made.operands.push_back(translate(branch["CaseWhen"]["result"], context));
    }
    if (body.contains("defresult")) {
        made.operands.push_back(translate(body["defresult"], context));
    }
    return made;
}

expression translate_distinction(const json& body, translation_context context, bool negated) {
    expression made = make(expression_kind::distinction, body);
    made.negated = negated;
    made.operands = {translate(body["lexpr"], context), translate(body["rexpr"], context)};
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
    if (kind == "AEXPR_LIKE" || kind == "AEXPR_ILIKE") {
        expression made = translate_like(body, context);
        made.folds_case = kind == "AEXPR_ILIKE";
        return made;
    }
    if (kind == "AEXPR_NULLIF") {
        return translate_null_if(body, context);
    }
    if (kind == "AEXPR_SIMILAR") {
        fail_at(context.sql, offset_of(body), fmt::format("SIMILAR TO is not supported; {}", no_regular_expressions));
    }
    if (kind == "AEXPR_DISTINCT" || kind == "AEXPR_NOT_DISTINCT") {
        return translate_distinction(body, context, kind == "AEXPR_NOT_DISTINCT");
    }
    if (kind == "AEXPR_BETWEEN_SYM" || kind == "AEXPR_NOT_BETWEEN_SYM") {
        fail_at(context.sql, offset_of(body), "SYMMETRIC is not supported; write x BETWEEN LEAST(y, z) AND GREATEST(y, z)");
    }
    if (kind == "AEXPR_OP_ANY" || kind == "AEXPR_OP_ALL") {
        fail_at(context.sql, offset_of(body), "ANY and ALL are not supported; write the values, as in x IN (1, 2) and x NOT IN (1, 2)");
    }
    fail_at(context.sql, offset_of(body), fmt::format("this operator is not supported; {}", all_operators));
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

struct node_translation {
    std::string_view node;
    expression (*translate)(const json& body, translation_context context);
};

constexpr node_translation node_translations[] = {
    {"A_Const", translate_constant},   {"ColumnRef", translate_column},      {"FuncCall", translate_call},
    {"MinMaxExpr", translate_extreme}, {"TypeCast", translate_cast},         {"A_Expr", translate_operator},
    {"CaseExpr", translate_case},      {"CoalesceExpr", translate_coalesce}, {"SQLValueFunction", translate_moment},
    {"BoolExpr", translate_boolean},   {"NullTest", translate_null_test},    {"BooleanTest", translate_truth_test},
};

struct refused_node {
    std::string_view node;
    std::string_view message;
};

constexpr refused_node refused_nodes[] = {
    {"SubLink", "subqueries are not supported; write the values, as in x IN (1, 2)"},
    {"ParamRef", no_parameters},
    {"A_ArrayExpr", "arrays are not supported"},
    {"A_Indirection", "arrays and records are not supported"},
    {"RowExpr", "records are not supported"},
    {"NamedArgExpr", "arguments have no names; write the value alone"},
    {"CollateClause", "COLLATE is not supported; --set case_sensitive=0 makes comparisons disregard case"},
    {"SetToDefault", "DEFAULT is not a value"},
};

} // namespace

expression translate(const json& node, translation_context context) {
    const std::string& name = node.begin().key();
    const json& body = node.begin().value();
    const auto* const known = std::ranges::find(node_translations, name, &node_translation::node);
    if (known != std::end(node_translations)) {
        return known->translate(body, context);
    }
    const auto* const refused = std::ranges::find(refused_nodes, name, &refused_node::node);
    refuse(node, context, refused != std::end(refused_nodes) ? refused->message : "this expression is not supported");
}

} // namespace host
