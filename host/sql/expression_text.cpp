// SPDX-License-Identifier: Apache-2.0
// Expressions as SQL text again.
#include <span>

#include <fmt/format.h>

#include "host/near_names.h"
#include "host/sql/call_spelling.h"
#include "host/sql/expression.h"

namespace host {
namespace {

std::string in_quotes(std::string_view text) {
    std::string made = "'";
    for (const char c : text) {
        made.append(c == '\'' ? 2 : 1, c);
    }
    return made + "'";
}

std::string literal_text(const expression& tree) {
    switch (tree.literal) {
    case literal_kind::null:
        return "NULL";
    case literal_kind::boolean:
        return tree.truth ? "TRUE" : "FALSE";
    case literal_kind::number:
        return tree.text;
    case literal_kind::string:
        return in_quotes(tree.text);
    case literal_kind::interval:
        return fmt::format("INTERVAL {} {}", in_quotes(tree.text), qualifier_name(tree.fields));
    case literal_kind::date:
    case literal_kind::time:
    case literal_kind::timestamp:
    case literal_kind::time_with_zone:
    case literal_kind::timestamp_with_zone:
        return fmt::format("{} {}", literal_type_name(tree.literal), in_quotes(tree.text));
    }
    return {};
}

// Expressions one behind the other, in parentheses where `nested` says so.
template <class Nested> std::string joined(std::span<const expression> operands, std::string_view separator, Nested nested) {
    std::string text;
    for (const expression& operand : operands) {
        const std::string part = expression_text(operand);
        text += fmt::format("{}{}", text.empty() ? "" : separator, nested(operand.kind) ? "(" + part + ")" : part);
    }
    return text;
}

bool needs_nothing(expression_kind) { return false; }
bool is_logic(expression_kind kind) { return kind == expression_kind::conjunction || kind == expression_kind::disjunction; }
bool is_operator(expression_kind kind) { return kind >= expression_kind::arithmetic; }

std::string choice_text(const expression& tree) {
    std::span<const expression> operands = tree.operands;
    std::string text = "CASE";
    if (tree.has_tested) {
        text += fmt::format(" {}", expression_text(operands.front()));
        operands = operands.subspan(1);
    }
    for (std::size_t i = 0; i + 1 < operands.size(); i += 2) {
        text += fmt::format(" WHEN {} THEN {}", expression_text(operands[i]), expression_text(operands[i + 1]));
    }
    return operands.size() % 2 == 0 ? text + " END" : fmt::format("{} ELSE {} END", text, expression_text(operands.back()));
}

std::string cast_target_name(const cast_target& target) {
    return target.shape ? fmt::format("DECIMAL({}, {})", target.shape->digits, target.shape->fraction_digits)
                        : std::string(sql_type_name(target.type));
}

} // namespace

std::string expression_text(const expression& tree) {
    constexpr std::string_view truth_names[] = {"TRUE", "FALSE", "UNKNOWN"};
    const std::string_view negation = tree.negated ? "NOT " : "";
    const std::span<const expression> operands = tree.operands;
    const std::string first = tree.kind >= expression_kind::between ? joined(operands.first(1), "", is_operator) : "";
    switch (tree.kind) {
    case expression_kind::literal:
        return literal_text(tree);
    case expression_kind::keyword:
        return tree.literal == literal_kind::string ? in_quotes(tree.text) : upper_case(tree.text);
    case expression_kind::column:
        return tree.name;
    case expression_kind::call:
        return call_text(tree);
    case expression_kind::cast:
        return fmt::format("CAST({} AS {})", expression_text(tree.operands[0]), cast_target_name(tree.target));
    case expression_kind::choice:
        return choice_text(tree);
    case expression_kind::first_known:
        return fmt::format("COALESCE({})", joined(operands, ", ", needs_nothing));
    case expression_kind::null_if:
        return fmt::format("NULLIF({})", joined(operands, ", ", needs_nothing));
    case expression_kind::moment:
        return tree.text;
    case expression_kind::arithmetic:
        return operands.size() == 1 ? fmt::format("{}{}", arithmetic_symbol(tree.operation), joined(operands, "", is_operator))
                                    : joined(operands, fmt::format(" {} ", arithmetic_symbol(tree.operation)), is_operator);
    case expression_kind::comparison:
        return joined(operands, fmt::format(" {} ", comparison_symbol(tree.comparison)), is_operator);
    case expression_kind::conjunction:
        return joined(operands, " AND ", is_logic);
    case expression_kind::disjunction:
        return joined(operands, " OR ", is_logic);
    case expression_kind::negation:
        return "NOT " + joined(operands, "", is_logic);
    case expression_kind::between:
        return fmt::format("{} {}BETWEEN {}", first, negation, joined(operands.subspan(1), " AND ", is_operator));
    case expression_kind::in_list:
        return fmt::format("{} {}IN ({})", first, negation, joined(operands.subspan(1), ", ", needs_nothing));
    case expression_kind::like:
        return fmt::format("{} {}{} {}{}", first, negation, tree.folds_case ? "ILIKE" : "LIKE",
                           joined(operands.subspan(1), "", is_operator),
                           tree.text.empty() ? "" : fmt::format(" ESCAPE {}", in_quotes(tree.text)));
    case expression_kind::null_test:
        return fmt::format("{} IS {}NULL", first, negation);
    case expression_kind::truth_test:
        return fmt::format("{} IS {}{}", first, negation, truth_names[static_cast<std::size_t>(tree.tested)]);
    }
    return {};
}

} // namespace host
