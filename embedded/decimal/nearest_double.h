// SPDX-License-Identifier: Apache-2.0
// The double that is nearest to w x 10^k. Of the power the table has the first 128 bits, rounded up by less than one of them: the product
// with w, as a number of 128 bits and what it loses, is within one of the exact one. So the 53 bits that a double keeps of it are rounded
// the right way unless those behind them are one half to the last bit.
#ifndef BIFUN_EMBEDDED_DECIMAL_NEAREST_DOUBLE_H
#define BIFUN_EMBEDDED_DECIMAL_NEAREST_DOUBLE_H

#include <bit>
#include <cstdint>
#include <iterator>

#include "embedded/decimal/decimal_parts.h"
#include "embedded/decimal/powers_of_ten.h"

namespace zqengine {

// The bits of the double that is nearest to number x 2^exponent x 10^power, where the number has its uppermost bit set. 0 where this way
// does not tell: at both ends of the doubles, and next to the middle of two of them.
inline std::uint64_t nearest_double_bits(std::uint64_t number, std::int32_t exponent, std::int32_t power) {
    constexpr std::int32_t greatest_biased = 2045; // one more could be rounded up to infinity
    const power_of_ten& factor = rounded_up_power(power);
    const uint128 low = uint128{factor.low} * number;
    const uint128 product = uint128{factor.high} * number + static_cast<std::uint64_t>(low >> 64);
    const auto high = static_cast<std::uint64_t>(product >> 64);
    const auto top = static_cast<std::uint32_t>(high >> 63);
    const std::uint64_t doubled = high >> (9 + top); // the 53 bits, and one behind them
    const std::uint64_t behind = high << (55 - top) | static_cast<std::uint64_t>(product);
    std::uint64_t significand = (doubled + 1) >> 1;
    if ((behind | (~doubled & 1)) == 0) [[unlikely]] {
        if (power < 0 || power > last_exact_power) {
            return 0;
        }
        significand -= static_cast<std::uint64_t>(low) == 0 ? significand & 1 : 0;
    }
    const std::int32_t biased = 1086 + static_cast<std::int32_t>(top) + binary_logarithm(power) + exponent;
    if (biased < 1 || biased > greatest_biased) [[unlikely]] {
        return 0;
    }
    // The uppermost bit of the significand adds the one that the exponent lacks.
    return (static_cast<std::uint64_t>(biased - 1) << 52) + significand;
}

// The same of number x 10^-scale, which is one division of doubles where both are that without rounding. The number is above 0.
inline std::uint64_t nearest_double_bits(std::uint64_t number, std::int64_t scale) {
    static constexpr double exact_powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                              1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    // Below 2^53, and where the shortest texts of doubles hardly ever are on both sides.
    constexpr std::uint64_t few_digits = 1'000'000'000'000'000;
    if (number < few_digits && static_cast<std::uint64_t>(scale) < std::size(exact_powers)) {
        return std::bit_cast<std::uint64_t>(static_cast<double>(number) / exact_powers[scale]);
    }
    const std::int32_t zeros = std::countl_zero(number);
    return -scale < least_power_of_ten || -scale > greatest_power_of_ten
               ? 0
               : nearest_double_bits(number << zeros, -zeros, static_cast<std::int32_t>(-scale));
}

// The same of coefficient x 10^-scale, or, where it is not exact, of what is above that and below (coefficient + 1) x 10^-scale. The
// coefficient is at least 10^19.
std::uint64_t nearest_double_bits(uint128 coefficient, std::int64_t scale, bool is_exact);

} // namespace zqengine

#endif
