// SPDX-License-Identifier: Apache-2.0
#include "embedded/decimal/wide_decimal.h"

#include <algorithm>

#include "bop/frame/status.h"

namespace zqengine {

namespace layout = bifun::decimal_layout;

namespace {

bool is_less(wide_number a, wide_number b) { return (a.high < b.high) | ((a.high == b.high) & (a.low < b.low)); }

int leading_zeros(uint128 number) {
    const std::uint64_t high = layout::high_half(number);
    return high != 0 ? std::countl_zero(high) : 64 + std::countl_zero(layout::low_half(number));
}

// Digits of a number from 2^128 to 10^76.
std::int64_t wide_digit_count(wide_number number) {
    const std::int32_t bits = 256 - leading_zeros(number.high);
    const std::int32_t digits = bits * 78913 >> 18; // the floor of bits x log10(2), for up to 256 bits
    const wide_number power =
        multiply_wide(powers_of_ten[max_coefficient_digits], powers_of_ten[static_cast<std::size_t>(digits) - max_coefficient_digits]);
    return digits + (is_less(number, power) ? 0 : 1);
}

// halves_after_cut for a number from 2^128 to 10^76, where the quotient is at most 2 x 10^38; `cut` is 1 to 38.
uint128 wide_halves_after_cut(wide_number number, std::int64_t cut) {
    const auto& by = layout::long_reciprocals[static_cast<std::size_t>(cut)];
    const uint128 divisor = powers_of_ten[static_cast<std::size_t>(cut)] / 2;
    // The 128 leading bits times the reciprocal, rounded down, moved to their place.
    const int zeros = leading_zeros(number.high);
    const uint128 leading = number.high << zeros | number.low >> (128 - zeros);
    const wide_number product = multiply_wide(leading, by.multiplier - 1);
    const int places = 128 - zeros - static_cast<int>(by.shift);
    const uint128 quotient = places <= 0 ? product.high >> -places : product.high << places | product.low >> (128 - places);
    // Too small by 3 at most. The bits left out are less than 2^-127 of the quotient, the rounding of the reciprocal is too, and the
    // quotient is at most 2 x 10^38: that makes less than 1.2 twice, and less than 1 for its own rounding. So the remainder is below
    // 4 x divisor, less than 2^128.
    const uint128 remainder = number.low - quotient * divisor;
    return quotient + (remainder >= divisor ? 1 : 0) + (remainder >= divisor * 2 ? 1 : 0) + (remainder >= divisor * 3 ? 1 : 0);
}

} // namespace

std::int32_t make_wide_decimal(xdec* result, wide_number magnitude, std::int64_t scale, bool negative) {
    if (magnitude.high == 0) {
        return make_decimal(result, {.coefficient = magnitude.low, .scale = scale, .negative = negative, .half = false});
    }
    const std::int64_t cut = std::max(wide_digit_count(magnitude) - max_coefficient_digits, scale - max_scale);
    const uint128 halves = cut <= layout::max_long_cut ? wide_halves_after_cut(magnitude, cut)
                                                       : halves_after_any_cut(wide_halves_after_cut(magnitude, layout::max_long_cut) >> 1,
                                                                              cut - layout::max_long_cut);
    // The cut applies both limits, so that nothing is rounded twice.
    return make_decimal(result, {.coefficient = (halves + 1) >> 1, .scale = scale - cut, .negative = negative, .half = false});
}

} // namespace zqengine
