// SPDX-License-Identifier: Apache-2.0
// DECIMAL values taken apart, and built from parts: every operation that makes a decimal ends in make_decimal.
#ifndef BIFUN_EMBEDDED_DECIMAL_DECIMAL_PARTS_H
#define BIFUN_EMBEDDED_DECIMAL_DECIMAL_PARTS_H

#include <bit>
#include <cstdint>

#include "bop/frame/contract.h"
#include "layouts/decimal_rounding.h"

namespace zqengine {

using bifun::decimal_layout::coefficient_digits;
using bifun::decimal_layout::powers_of_ten;
using bifun::decimal_layout::uint128;

constexpr std::uint32_t max_coefficient_digits = bifun::decimal_layout::max_coefficient_digits;
constexpr std::uint32_t max_scale = 127;
constexpr std::uint32_t max_precision = 127;

// Digits of `value` without leading zeros, at most 39; 0 has none.
inline std::uint32_t digit_count(uint128 value) {
    // The analyzer overlooks the widening where `value` comes from 64 bits.
    const auto high = static_cast<std::uint64_t>(value >> 64); // NOLINT(clang-analyzer-core.UndefinedBinaryOperatorResult)
    const auto low = static_cast<std::uint64_t>(value);
    const auto bits = static_cast<std::uint32_t>(high != 0 ? 64 + std::bit_width(high) : std::bit_width(low));
    const std::uint32_t digits = bits * 1233 >> 12; // the floor of bits x log10(2), for up to 128 bits
    return digits + (value >= powers_of_ten[digits] ? 1 : 0);
}

// coefficient x 10^-scale. A negative scale stands for zeros behind the coefficient.
struct decimal_parts {
    uint128 coefficient;
    std::int64_t scale;
    bool negative;
    bool half; // what was cut off behind the coefficient is half a unit or more
};

inline decimal_parts split_decimal(const xdec& value) {
    namespace layout = bifun::decimal_layout;
    return {.coefficient = layout::coefficient(value),
            .scale = std::int64_t{value.bytes[layout::scale_at]} - value.bytes[layout::exponent_at],
            .negative = value.bytes[0] == XDEC_NEGATIVE,
            .half = false};
}

// Writes the bytes of a value whose fields are known to be in their ranges.
inline void store_decimal(xdec* result, std::uint8_t mark, std::uint32_t precision, std::uint32_t scale, std::uint32_t exponent,
                          uint128 coefficient) {
    namespace layout = bifun::decimal_layout;
    layout::store_parts(*result, layout::pack_head(mark, precision, scale, exponent), coefficient);
}

inline void store_zero(xdec* result, std::uint32_t scale) { store_decimal(result, XDEC_ZERO, 1, scale, 0, 0); }

// The part of make_decimal for zero, rounding, and zeros behind the coefficient.
[[nodiscard]] std::int32_t make_rounded_decimal(xdec* result, const decimal_parts& parts);

// Stores the value, rounded half away from zero, once, to 38 digits and to 127 digits behind the point. A coefficient of 0 gives zero of
// the scale nearest to `parts.scale`. Any coefficient and any scale that leaves room for a little arithmetic are allowed.
// Returns 0; -6102 where the value has more than 127 digits before the point, and then the result is untouched.
[[nodiscard]] inline std::int32_t make_decimal(xdec* result, const decimal_parts& parts) {
    const std::uint32_t digits = digit_count(parts.coefficient);
    if (digits - 1 < max_coefficient_digits && parts.scale >= 0 && parts.scale <= max_scale && !parts.half) {
        store_decimal(result, parts.negative ? XDEC_NEGATIVE : XDEC_POSITIVE, digits, static_cast<std::uint32_t>(parts.scale), 0,
                      parts.coefficient);
        return 0;
    }
    return make_rounded_decimal(result, parts);
}

} // namespace zqengine

#endif
