// SPDX-License-Identifier: Apache-2.0
// Months and thirty-firsts of a month as a packed decimal: what xdec_from_double makes of their double, the shortest decimal that reads
// back as it, in integers.
#ifndef BIFUN_DATE_MONTH_FRACTIONS_H
#define BIFUN_DATE_MONTH_FRACTIONS_H

#include <bit>
#include <cstdint>

#include "layouts/decimal_layout.h"
#include "layouts/decimal_rounding.h"

namespace bifun::month_fractions {

constexpr std::uint64_t power_of_ten(std::uint32_t exponent) { return static_cast<std::uint64_t>(decimal_layout::powers_of_ten[exponent]); }

// How many of the powers of ten from one to another a number reaches.
inline std::uint32_t digits_above(std::uint32_t number, std::uint32_t first, std::uint32_t last) {
    std::uint32_t count = 0;
    for (std::uint32_t power = first; power <= last; ++power) {
        count += static_cast<std::uint32_t>(number >= power_of_ten(power));
    }
    return count;
}

inline void store(xdec& result, bool is_negative, std::uint64_t coefficient, std::uint32_t digits, std::uint32_t scale) {
    // Without a branch, for signs are as good as random: the marks differ in all bits.
    static_assert(XDEC_NEGATIVE == (XDEC_POSITIVE ^ 0xFF));
    const std::uint32_t sign_mark = XDEC_POSITIVE ^ (0xFF & (0U - static_cast<std::uint32_t>(is_negative)));
    const std::uint32_t mark = coefficient == 0 ? std::uint32_t{XDEC_ZERO} : sign_mark;
    decimal_layout::store_parts(result, decimal_layout::pack_head(mark, digits, scale, 0), coefficient);
}

// Less than a million.
inline void store_months(xdec& result, std::int32_t months) {
    const auto magnitude = static_cast<std::uint32_t>(months < 0 ? -months : months);
    store(result, months < 0, magnitude, 1 + digits_above(magnitude, 1, 5), 0);
}

// Less than a million months and 1 to 30 thirty-firsts, whose double it is. 17 digits always suffice. All numbers of 17 digits between the
// middles to both neighbours of the double read back as it, and where one of them ends with zeros it is shorter. No number of 17 digits is
// such a middle, and the double is no power of two, so that both are equally far away.
inline void store_fraction(xdec& result, double value) {
    constexpr std::uint32_t most_digits = 17;
    constexpr std::uint64_t sign_bit = std::uint64_t{1} << 63;
    const auto given = std::bit_cast<std::uint64_t>(value);
    const bool is_negative = (given & sign_bit) != 0;
    const std::uint64_t bits = given & ~sign_bit;
    const auto hundreds = static_cast<std::uint32_t>(std::bit_cast<double>(bits) * 100);
    // Of digits behind the point as many as make 17 from the first that is not 0.
    const std::uint32_t scale = most_digits + 1 - digits_above(hundreds, 1, 7);
    const std::uint64_t power = power_of_ten(scale);

    constexpr std::uint32_t fraction_bits = 52;
    constexpr std::uint32_t exponent_bias = 1023;
    constexpr std::uint64_t leading_bit = std::uint64_t{1} << fraction_bits;
    const std::uint64_t significand = (bits & (leading_bit - 1)) | leading_bit;
    const std::uint32_t halvings = fraction_bits + exponent_bias - static_cast<std::uint32_t>(bits >> fraction_bits);

    const decimal_layout::uint128 twice = decimal_layout::uint128{2 * significand} * power;
    const auto whole = [&](decimal_layout::uint128 of_twice) { return static_cast<std::uint64_t>(of_twice >> (halvings + 1)); };
    const std::uint64_t lowest = whole(twice - power) + 1;
    const std::uint64_t highest = whole(twice + power);
    const std::uint64_t below = whole(twice);
    const std::uint64_t of_15 = (below + 50) / 100;
    const std::uint64_t of_16 = (below + 5) / 10;
    const std::uint64_t of_17 = whole(twice + (decimal_layout::uint128{1} << halvings));
    if (of_15 * 100 >= lowest && of_15 * 100 <= highest) [[unlikely]] {
        std::uint64_t coefficient = of_15;
        std::uint32_t zeros = 2;
        for (; coefficient % 10 == 0; coefficient /= 10) {
            ++zeros;
        }
        store(result, is_negative, coefficient, most_digits - zeros, scale - zeros);
        return;
    }
    // As many rows have 16 digits as 17.
    const auto is_of_16 = static_cast<std::uint32_t>(of_16 * 10 >= lowest) & static_cast<std::uint32_t>(of_16 * 10 <= highest);
    const std::uint64_t coefficient = of_17 ^ ((of_17 ^ of_16) & (std::uint64_t{0} - is_of_16));
    store(result, is_negative, coefficient, most_digits - is_of_16, scale - is_of_16);
}

} // namespace bifun::month_fractions

#endif
