// SPDX-License-Identifier: Apache-2.0
// + - * / over numbers and dates, and CAST.

#include <algorithm>

#include <fmt/format.h>

#include "host/binding/binder.h"
#include "host/sql/sql_text.h"

namespace host {
namespace {

bool is_number_or_null(const operand& given) { return is_number(given.type) || given.type == sql_type::null; }

operand add_calculation(binder& state, const expression& tree, arithmetic_operator operation, sql_type type,
                        std::vector<std::size_t> operands) {
    const std::size_t made = add_step(state, {.kind = step_kind::arithmetic, .type = type, .operands = std::move(operands)});
    state.steps[made].operation = operation;
    return {nullptr, made, type, tree.offset};
}

operand add_negation(binder& state, const expression& tree, const operand& number) {
    const sql_type type = number.type == sql_type::null ? sql_type::integer : number.type;
    return add_calculation(state, tree, arithmetic_operator::negate, type, {as_type(state, number, type)});
}

// The wider type of the two; a quotient of integers is a DECIMAL.
operand bind_numbers(binder& state, const expression& tree, const operand& left, const operand& right) {
    const sql_type least = tree.operation == arithmetic_operator::divide ? sql_type::decimal : sql_type::integer;
    const sql_type type = std::max({left.type, right.type, least});
    const std::size_t first = as_type(state, left, type);
    return add_calculation(state, tree, tree.operation, type, {first, as_type(state, right, type)});
}

// An interval of days is added to a DATE as such; one with a time of day makes it a TIMESTAMP.
operand add_interval(binder& state, const expression& tree, const operand& date, const operand& interval) {
    const bool adds = tree.operation == arithmetic_operator::add;
    if (interval.type == sql_type::interval_ym) {
        return bind_call(state, tree, adds ? "DATE_ADD" : "DATE_SUB", {date, interval});
    }
    const bool is_of_days = interval.literal != nullptr && interval.literal->fields.last == interval_field::day;
    const sql_type type = date.type == sql_type::date && !is_of_days ? sql_type::timestamp : date.type;
    const std::size_t first = as_type(state, date, type);
    return add_calculation(state, tree, tree.operation, type, {first, as_type(state, interval, interval.type)});
}

// A literal NULL beside an interval or behind which a date stands is one of the type that goes with it.
operand typed_null(binder& state, const operand& given, const operand& other) {
    const sql_type type = is_interval(other.type) ? sql_type::timestamp : other.type == sql_type::date ? sql_type::date : sql_type::null;
    if (given.type != sql_type::null || type == sql_type::null) {
        return given;
    }
    return {nullptr, as_type(state, given, type), type, given.offset};
}

// So many days: what stands behind a minus is negated.
operand add_days(binder& state, const expression& tree, const operand& date, const operand& days) {
    const bool adds = tree.operation == arithmetic_operator::add;
    return bind_call(state, tree, "ADD_DAYS", {date, adds ? days : add_negation(state, tree, days)});
}

[[noreturn]] void refuse(const binder& state, const expression& tree, const operand& left, const operand& right) {
    const bool is_left_text = left.type == sql_type::varchar;
    const bool has_text = is_left_text || right.type == sql_type::varchar;
    const sql_type other = is_left_text ? right.type : left.type;
    const misplaced_value text = misplaced(state, is_left_text ? left : right);
    const bool seems_date = text.column != nullptr && ((!text.column->seems.empty() && has_date(text.column->seems[0].type)) ||
                                                       (text.column->forms && (text.column->forms->besides & datetime_fields) != 0));
    const sql_type needed = seems_date || is_datetime(other) || is_interval(other) ? sql_type::date : sql_type::decimal;
    const bool adds_texts = is_left_text && right.type == sql_type::varchar && tree.operation == arithmetic_operator::add;
    const std::string advice = is_datetime(left.type) && is_datetime(right.type) ? "; use DATEDIFF(SECOND, start, end), with any field"
                               : has_text
                                   ? (adds_texts ? "; || joins texts" : "") + (adds_texts && text.is_literal ? "" : way_to(needed, text))
                               : (is_interval(left.type) && is_number(right.type)) || (is_number(left.type) && is_interval(right.type))
                                   ? "; NUMTODSINTERVAL and NUMTOYMINTERVAL make intervals of numbers"
                                   : "; it takes numbers, and + and - also a date with days or an interval";
    fail_at(state.sql, tree.offset,
            fmt::format("{} does not take {} and {}{}", arithmetic_symbol(tree.operation), sql_type_name(left.type),
                        sql_type_name(right.type), advice));
}

operand bind_sign(binder& state, const expression& tree) {
    const operand number = bind(state, tree.operands[0]);
    if (!is_number_or_null(number)) {
        fail_at(state.sql, tree.offset,
                fmt::format("{} takes a number, and this is of type {}{}", arithmetic_symbol(tree.operation), sql_type_name(number.type),
                            way_to(sql_type::decimal, misplaced(state, number))));
    }
    return tree.operation == arithmetic_operator::negate ? add_negation(state, tree, number) : number;
}

// ---- CAST ----------------------------------------------------------------------------------------------------------

bool can_cast(sql_type from, sql_type to) {
    if (from == to || to == sql_type::varchar || (from == sql_type::varchar && !is_interval(to))) {
        return true;
    }
    if (is_datetime(from) && is_datetime(to)) {
        return has_date(from) == has_date(to) || (has_date(from) && from != sql_type::date);
    }
    return is_number(from) && is_number(to);
}

// No value is lost on the way from one to the other, and none is changed.
bool is_widening(sql_type from, sql_type to) {
    const bool to_wider_number = is_number(from) && is_number(to) && from < to;
    return from == to || to_wider_number || (from == sql_type::date && to == sql_type::timestamp);
}

} // namespace

operand bind_arithmetic(binder& state, const expression& tree) {
    if (tree.operands.size() == 1) {
        return bind_sign(state, tree);
    }
    const bool adds = tree.operation == arithmetic_operator::add;
    const bool subtracts = tree.operation == arithmetic_operator::subtract;
    const bool takes_dates = adds || subtracts;
    operand left = bind(state, tree.operands[0]);
    operand right = bind(state, tree.operands[1]);
    if (adds && is_interval(left.type)) {
        right = typed_null(state, right, left);
    } else if (subtracts || (adds && is_interval(right.type))) {
        left = typed_null(state, left, right);
    }
    if (is_number_or_null(left) && is_number_or_null(right)) {
        return bind_numbers(state, tree, left, right);
    }
    if (takes_dates && is_datetime(left.type) && is_interval(right.type)) {
        return add_interval(state, tree, left, right);
    }
    if (adds && is_interval(left.type) && is_datetime(right.type)) {
        return add_interval(state, tree, right, left);
    }
    if (takes_dates && has_date(left.type) && is_number_or_null(right)) {
        return add_days(state, tree, left, right);
    }
    if (adds && is_number_or_null(left) && has_date(right.type)) {
        return add_days(state, tree, right, left);
    }
    if (subtracts && left.type == sql_type::date && right.type == sql_type::date) {
        return bind_call(state, tree, "DAYS_BETWEEN", {left, right});
    }
    refuse(state, tree, left, right);
}

bool stands_for_text(sql_type type) { return type > sql_type::null && type < sql_type::varchar; }

operand as_text(binder& state, const operand& given) {
    if (!stands_for_text(given.type)) {
        return given;
    }
    const std::size_t value = as_type(state, given, given.type);
    return {nullptr, add_step(state, {.kind = step_kind::cast, .type = sql_type::varchar, .operands = {value}}), sql_type::varchar,
            given.offset};
}

operand bind_cast(binder& state, const expression& tree) {
    const operand given = bind(state, tree.operands[0]);
    const sql_type type = tree.target.type;
    if (given.type != sql_type::null && !can_cast(given.type, type)) {
        fail_at(state.sql, tree.offset,
                fmt::format("CAST makes no {} of {}{}", sql_type_name(type), sql_type_name(given.type),
                            given.type == sql_type::boolean && is_number(type)   ? "; CASE WHEN x THEN 1 ELSE 0 END makes one"
                            : type == sql_type::boolean && is_number(given.type) ? "; compare it, as in x <> 0"
                                                                                 : way_to(type, misplaced(state, given))));
    }
    if (given.type == sql_type::null || (!tree.target.shape && is_widening(given.type, type))) {
        return {nullptr, as_type(state, given, type), type, tree.offset};
    }
    const std::size_t made = add_step(state, {.kind = step_kind::cast, .type = type, .operands = {as_type(state, given, given.type)}});
    state.steps[made].shape = tree.target.shape;
    return {nullptr, made, type, tree.offset};
}

} // namespace host
