// SPDX-License-Identifier: Apache-2.0
// + - * / over numbers, and intervals of time added to datetimes. Integers and decimals never lose a digit before the 38th: what does not
// fit its type ends the query.

#include <cmath>
#include <type_traits>

#include "bop/frame/status.h"
#include "embedded/decimal/division.h"
#include "engine/decimal.h"
#include "engine/interval.h"
#include "host/evaluation/execution_parts.h"
#include "host/program_error.h"
#include "host/values/value_text.h"

namespace host {
namespace {

using bifun::value_type;

// Statuses besides BIFUN_OK, BIFUN_NUMERIC_OVERFLOW and BIFUN_INVALID_DATETIME.
constexpr std::int32_t division_by_zero = BIFUN_ARGUMENT_OUT_OF_DOMAIN;

template <class Integer> std::int32_t calculate(arithmetic_operator operation, Integer a, Integer b, Integer& result) {
    bool overflows = false;
    switch (operation) {
    case arithmetic_operator::add:
        overflows = __builtin_add_overflow(a, b, &result);
        break;
    case arithmetic_operator::subtract:
        overflows = __builtin_sub_overflow(a, b, &result);
        break;
    case arithmetic_operator::multiply:
        overflows = __builtin_mul_overflow(a, b, &result);
        break;
    default: // negate: quotients are no integers
        overflows = __builtin_sub_overflow(Integer{0}, a, &result);
        break;
    }
    return overflows ? BIFUN_NUMERIC_OVERFLOW : BIFUN_OK;
}

std::int32_t calculate(arithmetic_operator operation, double a, double b, double& result) {
    switch (operation) {
    case arithmetic_operator::add:
        result = a + b;
        break;
    case arithmetic_operator::subtract:
        result = a - b;
        break;
    case arithmetic_operator::multiply:
        result = a * b;
        break;
    case arithmetic_operator::divide:
        if (b == 0) {
            return division_by_zero;
        }
        result = a / b;
        break;
    case arithmetic_operator::negate:
        result = -a;
        break;
    }
    return std::isinf(result) && std::isfinite(a) && std::isfinite(b) ? BIFUN_NUMERIC_OVERFLOW : BIFUN_OK;
}

std::int32_t calculate(arithmetic_operator operation, const xdec& a, const xdec& b, xdec& result) {
    switch (operation) {
    case arithmetic_operator::add:
        return xdec_add(&a, &b, &result);
    case arithmetic_operator::subtract:
        return xdec_sub(&a, &b, &result);
    case arithmetic_operator::multiply:
        return xdec_mul(&a, &b, &result);
    case arithmetic_operator::divide:
        return zqengine::divide(a, b, result);
    case arithmetic_operator::negate:
        return xdec_neg(&a, &result);
    }
    return BIFUN_OK;
}

std::int32_t calculate(arithmetic_operator operation, const zqtime& a, const bifun_interval_dt& b, zqtime& result) {
    return operation == arithmetic_operator::add ? datetime_add_interval_dt(&a, &b, &result) : datetime_sub_interval_dt(&a, &b, &result);
}

[[noreturn]] void fail_in_row(const execution& run, const step& made, std::int32_t status, std::uint32_t row) {
    const std::string place = place_of_row(run, row);
    if (status == BIFUN_INVALID_DATETIME) {
        fail("{}: the datetime is outside years -4712 to 9999 in {}", arithmetic_symbol(made.operation), place);
    }
    if (status == division_by_zero) {
        fail("/: division by zero in {}; NULLIF(x, 0) gives NULL there", place);
    }
    fail("{}: numeric overflow of {} in {}{}", arithmetic_symbol(made.operation), sql_type_name(made.type), place,
         made.type == sql_type::integer  ? "; CAST(x AS BIGINT) has more digits"
         : made.type == sql_type::bigint ? "; CAST(x AS DECIMAL) has more digits"
                                         : "");
}

template <class Left, class Right> void calculate_rows(const execution& run, step& made, std::uint32_t row_count) {
    const bifun_column& left = column_of(run, made.operands.front());
    const bifun_column& right = column_of(run, made.operands.back());
    bifun_column& result = made.result->column;
    const auto* const a = static_cast<const Left*>(left.data->values);
    const auto* const b = static_cast<const Right*>(right.data->values);
    auto* const values = static_cast<Left*>(result.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t i = row_of(left, k);
        const std::uint32_t j = row_of(right, k);
        const bool known = left.data->null_flags[i] != 0 && right.data->null_flags[j] != 0;
        result.data->null_flags[k] = known ? 1 : 0;
        const std::int32_t status = known ? calculate(made.operation, a[i], b[j], values[k]) : BIFUN_OK;
        if (status != BIFUN_OK) {
            fail_in_row(run, made, status, k);
        }
        if constexpr (std::is_same_v<Left, zqtime>) {
            if (known) {
                complete_datetime(values[k], made.type, run.environment.time_zone);
            }
        }
    }
    result.no_nulls = left.no_nulls != 0 && right.no_nulls != 0 ? 1 : 0;
}

} // namespace

void evaluate_arithmetic(const execution& run, step& made, std::uint32_t row_count) {
    switch (value_type_of(made.type)) {
    case value_type::INT:
        return calculate_rows<std::int32_t, std::int32_t>(run, made, row_count);
    case value_type::BIGINT:
        return calculate_rows<std::int64_t, std::int64_t>(run, made, row_count);
    case value_type::DECIMAL:
        return calculate_rows<xdec, xdec>(run, made, row_count);
    case value_type::DOUBLE:
        return calculate_rows<double, double>(run, made, row_count);
    default:
        return calculate_rows<zqtime, bifun_interval_dt>(run, made, row_count);
    }
}

} // namespace host
