// SPDX-License-Identifier: Apache-2.0
#include "engine/decimal.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>

#include "bop/frame/status.h"
#include "embedded/decimal/decimal_parts.h"
#include "embedded/decimal/digits.h"
#include "embedded/decimal/nearest_double.h"

namespace zqengine {

namespace layout = bifun::decimal_layout;
using bifun::order;

namespace {

struct cut_coefficient {
    uint128 coefficient;
    bool half;
};

// Without its last `count` digits, at least 1; `half` as in decimal_parts.
cut_coefficient cut_digits(uint128 coefficient, std::int64_t count) {
    if (count > max_coefficient_digits) {
        return {.coefficient = 0, .half = false}; // 2^128 is less than half of 10^39
    }
    const auto digits = static_cast<std::size_t>(count);
    const uint128 quotient = coefficient / powers_of_ten[digits];
    const uint128 remainder = coefficient - quotient * powers_of_ten[digits];
    return {.coefficient = quotient, .half = remainder >= powers_of_ten[digits - 1] * 5};
}

std::int32_t sign_of(const xdec& value) { return value.bytes[0] == XDEC_POSITIVE ? 1 : value.bytes[0] == XDEC_NEGATIVE ? -1 : 0; }

// The position of the first digit: digits before the point, or less zeros behind it.
std::int32_t first_digit_at(const xdec& value) { return std::int32_t{value.bytes[layout::precision_at]} - value.bytes[layout::scale_at]; }

// xdec_cmp where the units differ; kept out of it, so that the frequent case saves no registers.
[[gnu::noinline]] std::int32_t compare_units(const xdec& a, const xdec& b) {
    const std::int32_t sign = sign_of(a);
    if (const std::int32_t by_sign = order(sign, sign_of(b)); by_sign != 0 || sign == 0) {
        return by_sign;
    }
    if (const std::int32_t by_position = order(first_digit_at(a), first_digit_at(b)); by_position != 0) {
        return by_position * sign;
    }
    // The first digits stand at the same place, so the shorter coefficient, filled up with zeros, is in the unit of the longer one, and
    // no longer than that.
    uint128 coefficient_a = layout::coefficient(a);
    uint128 coefficient_b = layout::coefficient(b);
    const std::uint32_t digits_a = coefficient_digits(a);
    const std::uint32_t digits_b = coefficient_digits(b);
    if (digits_a < digits_b) {
        coefficient_a *= powers_of_ten[digits_b - digits_a];
    } else {
        coefficient_b *= powers_of_ten[digits_a - digits_b];
    }
    return order(coefficient_a, coefficient_b) * sign;
}

// The bits of the double that is nearest to the magnitude, or 0. It is not 0.
std::uint64_t nearest_bits(const decimal_parts& parts) {
    return parts.coefficient < ten_to_19 ? nearest_double_bits(static_cast<std::uint64_t>(parts.coefficient), parts.scale)
                                         : nearest_double_bits(parts.coefficient, parts.scale, true);
}

} // namespace

std::int32_t make_rounded_decimal(xdec* result, const decimal_parts& parts) {
    uint128 coefficient = parts.coefficient;
    std::int64_t scale = parts.scale;
    bool half = parts.half;

    // Both limits are applied by one cut, so that nothing is rounded twice.
    const std::int64_t beyond_digits = std::int64_t{digit_count(coefficient)} - max_coefficient_digits;
    const std::int64_t beyond_scale = scale - max_scale;
    const std::int64_t beyond = std::max({beyond_digits, beyond_scale, std::int64_t{0}});
    if (beyond > 0) {
        const cut_coefficient cut = cut_digits(coefficient, beyond);
        coefficient = cut.coefficient;
        half = cut.half;
        scale -= beyond;
    }
    if (half) {
        ++coefficient;
        if (coefficient == powers_of_ten[max_coefficient_digits]) {
            coefficient = powers_of_ten[max_coefficient_digits - 1];
            --scale;
        }
    }

    if (coefficient == 0) {
        const auto zero_scale = static_cast<std::uint32_t>(std::clamp<std::int64_t>(scale, 0, max_scale));
        store_zero(result, zero_scale);
        return BIFUN_OK;
    }
    const std::uint8_t mark = parts.negative ? XDEC_NEGATIVE : XDEC_POSITIVE;
    const std::uint32_t digits = digit_count(coefficient);
    if (scale >= 0) {
        store_decimal(result, mark, digits, static_cast<std::uint32_t>(scale), 0, coefficient);
        return BIFUN_OK;
    }
    const std::int64_t zeros = -scale;
    if (digits + zeros > max_precision) {
        return BIFUN_NUMERIC_OVERFLOW;
    }
    const auto precision = static_cast<std::uint32_t>(digits + zeros);
    const std::uint32_t held_digits = std::min(precision, max_coefficient_digits);
    store_decimal(result, mark, precision, 0, precision - held_digits, coefficient * powers_of_ten[held_digits - digits]);
    return BIFUN_OK;
}

} // namespace zqengine

using namespace zqengine;

void xdec_copy(xdec* destination, const xdec* source) { std::memcpy(destination, source, sizeof *destination); }

void xdec_fill_zero(xdec* value) { store_zero(value, 0); }

void xdec_fill_one(xdec* value) { store_decimal(value, XDEC_POSITIVE, 1, 0, 0, 1); }

int32_t xdec_cmp(const xdec* a, const xdec* b) {
    return layout::same_unit(*a, *b) ? layout::compare_in_unit(*a, *b) : compare_units(*a, *b);
}

int32_t xdec_from_int64(xdec* result, int64_t value, int32_t precision) {
    static_cast<void>(precision);
    const auto bits = static_cast<std::uint64_t>(value);
    return make_decimal(result, {.coefficient = value < 0 ? 0 - bits : bits, .scale = 0, .negative = value < 0, .half = false});
}

int32_t xdec_from_double(xdec* result, double value) {
    if (!std::isfinite(value)) {
        return BIFUN_NUMERIC_OVERFLOW;
    }
    // An integer that a double tells from both its neighbours is its own shortest decimal.
    constexpr double all_integers_below = 9007199254740992.0;
    if (std::fabs(value) < all_integers_below && std::trunc(value) == value) {
        return xdec_from_int64(result, static_cast<std::int64_t>(value), 255);
    }
    // d[.d...]e+dd, at most 17 digits
    char text[32];
    const char* const end = std::to_chars(text, text + sizeof text, std::fabs(value), std::chars_format::scientific).ptr;
    std::uint64_t coefficient = static_cast<std::uint64_t>(text[0] - '0');
    const char* next = text + 1;
    std::int64_t scale = 0;
    if (*next == '.') {
        for (++next; *next != 'e'; ++next) {
            coefficient = coefficient * 10 + static_cast<std::uint64_t>(*next - '0');
            ++scale;
        }
    }
    std::int32_t exponent = 0;
    std::from_chars(next + (next[1] == '+' ? 2 : 1), end, exponent);

    const decimal_parts parts{.coefficient = coefficient, .scale = scale - exponent, .negative = value < 0, .half = false};
    const std::int32_t status = make_decimal(result, parts);
    if (status == BIFUN_OK && result->bytes[0] == XDEC_ZERO) {
        xdec_fill_zero(result); // a double has no digits behind the point to keep
    }
    return status;
}

double xdec_to_double(const xdec* value) {
    const decimal_parts parts = split_decimal(*value);
    if (parts.coefficient == 0) {
        return 0;
    }
    double magnitude = std::bit_cast<double>(nearest_bits(parts));
    if (magnitude == 0) {
        char text[digit_room + 8];
        char* const digits_end = text + digit_room;
        write_coefficient(digits_end, parts.coefficient);
        *digits_end = 'e';
        const char* const end = std::to_chars(digits_end + 1, text + sizeof text, -parts.scale).ptr;
        std::from_chars(digits_end - coefficient_digits(*value), end, magnitude);
    }
    return parts.negative ? -magnitude : magnitude;
}
