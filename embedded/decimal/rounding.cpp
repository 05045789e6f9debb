// SPDX-License-Identifier: Apache-2.0
#include "bop/frame/status.h"
#include "embedded/decimal/decimal_parts.h"
#include "embedded/decimal/wide_decimal.h"
#include "engine/decimal.h"

namespace zqengine {

namespace layout = bifun::decimal_layout;

namespace {

// What is left by round_to and truncate_to: `digits` is negative, or more than 38 digits are cut off.
[[gnu::noinline]] std::int32_t set_any_digits(const xdec& value, std::int32_t digits, bool round, xdec* result) {
    const decimal_parts parts = split_decimal(value);
    const std::int64_t cut = parts.scale - digits;
    if (cut <= 0) { // zeros behind the coefficient
        *result = value;
        return BIFUN_OK;
    }
    const uint128 kept = (halves_after_any_cut(parts.coefficient, cut) + (round ? 1 : 0)) >> 1;
    const std::int64_t zeros = -std::int64_t{digits};
    const std::int64_t integer_digits = coefficient_digits(value) - parts.scale;
    if (zeros >= 0 && zeros <= max_coefficient_digits && integer_digits < max_coefficient_digits) {
        const uint128 coefficient = kept * powers_of_ten[static_cast<std::size_t>(zeros)];
        return make_decimal(result, {.coefficient = coefficient, .scale = 0, .negative = parts.negative, .half = false});
    }
    return make_decimal(result, {.coefficient = kept, .scale = digits, .negative = parts.negative, .half = false});
}

// Whether coefficient x 10^-scale is an integer, and the integer. With an exponent it is the coefficient, which is beyond 64 bits then.
bool integer_magnitude(const xdec& value, uint128* integer) {
    const std::uint32_t scale = value.bytes[layout::scale_at];
    const uint128 coefficient = layout::coefficient(value);
    const uint128 whole = halves_after_any_cut(coefficient, scale) >> 1;
    *integer = whole;
    return whole * powers_of_ten[scale > max_coefficient_digits ? 0 : scale] == coefficient;
}

bool to_ulint64(const xdec& value, std::uint64_t* number) {
    uint128 integer;
    if (value.bytes[0] == XDEC_NEGATIVE || !integer_magnitude(value, &integer)) {
        return false;
    }
    *number = layout::low_half(integer);
    return layout::high_half(integer) == 0;
}

} // namespace

} // namespace zqengine

using namespace zqengine;

int32_t xdec_round(const xdec* value, int32_t flag, int32_t digits, xdec* result) {
    static_cast<void>(flag);
    return layout::round_to(*value, digits, result) ? BIFUN_OK : set_any_digits(*value, digits, true, result);
}

int32_t xdec_trunc_scale_with_pos(const xdec* value, int32_t digits, xdec* result) {
    return layout::truncate_to(*value, digits, result) ? BIFUN_OK : set_any_digits(*value, digits, false, result);
}

int32_t xdec_trunc_scale(xdec* value) { return xdec_trunc_scale_with_pos(value, 0, value); }

int32_t xdec_in_ulint64(const xdec* value) {
    std::uint64_t number;
    return to_ulint64(*value, &number) ? 1 : 0;
}

int32_t xdec_get_ulint64(const xdec* value, uint64_t* result) {
    std::uint64_t number;
    if (!to_ulint64(*value, &number)) {
        return BIFUN_NUMERIC_OVERFLOW;
    }
    *result = number;
    return BIFUN_OK;
}

int32_t xdec_from_ulint64(xdec* result, uint64_t value) {
    return make_decimal(result, {.coefficient = value, .scale = 0, .negative = false, .half = false});
}

int32_t xdec_div_get_quotient_int_by_16(const xdec* value, xdec* quotient, int32_t* remainder) {
    const std::uint32_t exponent = value->bytes[layout::exponent_at];
    uint128 integer;
    if (value->bytes[0] == XDEC_NEGATIVE || !integer_magnitude(*value, &integer)) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    if (exponent == 0) {
        *remainder = static_cast<std::int32_t>(integer % 16);
        return make_decimal(quotient, {.coefficient = integer / 16, .scale = 0, .negative = false, .half = false});
    }
    if (exponent >= 4) { // 10^4 / 16 = 625
        *remainder = 0;
        return make_wide_decimal(quotient, multiply_wide(integer, 625), 4 - std::int64_t{exponent}, false);
    }
    const wide_number whole = multiply_wide(integer, powers_of_ten[exponent]);
    *remainder = static_cast<std::int32_t>(whole.low % 16);
    return make_wide_decimal(quotient, {.high = whole.high >> 4, .low = whole.high << 124 | whole.low >> 4}, 0, false);
}
