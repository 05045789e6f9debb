// SPDX-License-Identifier: Apache-2.0
// The shortest decimal that reads back as the same double.
//
// After Raffaello Giulietti, "The Schubfach way to render doubles" (2020). A double is c x 2^q; with the power of ten 10^k that is next
// below the distance of its neighbours, the shortest decimal is one of four multiples of 10^k and 10^(k+1) around it. Which of them lie
// nearer to it than to its neighbours is told by comparing the numbers divided by 10^k, as integers: each is one product with a rounded
// power of ten, whose lost bits are kept as one sticky bit, which the paper shows to be enough.
#ifndef BIFUN_EMBEDDED_FORMAT_SHORTEST_DECIMAL_H
#define BIFUN_EMBEDDED_FORMAT_SHORTEST_DECIMAL_H

#include <bit>
#include <cstdint>

#include "embedded/decimal/powers_of_ten.h"
#include "layouts/decimal_rounding.h"

namespace zqengine {

using bifun::decimal_layout::uint128;

// digits x 10^exponent, with 17 digits, of which the last ones may be zeros.
struct shortest_decimal {
    std::uint64_t digits;
    std::int32_t exponent;
};

// How many zeros make 17 digits of a number that has no more.
inline std::uint32_t missing_digits(std::uint64_t number) {
    // 1233 / 4096 is the logarithm of two to the base of ten, near enough for numbers of 64 bits.
    const auto estimate = static_cast<std::uint32_t>(std::bit_width(number)) * 1233 >> 12;
    return 17 - estimate - (number >= static_cast<std::uint64_t>(bifun::decimal_layout::powers_of_ten[estimate]) ? 1 : 0);
}

inline shortest_decimal with_17_digits(std::uint64_t digits, std::int32_t exponent, std::uint32_t missing) {
    return {.digits = digits * static_cast<std::uint64_t>(bifun::decimal_layout::powers_of_ten[missing]),
            .exponent = exponent - static_cast<std::int32_t>(missing)};
}

// number x power / 2^128, the last bit set where bits behind it are.
inline std::uint64_t scaled(const power_of_ten& power, std::uint64_t number) {
    const uint128 low = uint128{power.low} * number;
    const uint128 sum = uint128{power.high} * number + static_cast<std::uint64_t>(low >> 64);
    return static_cast<std::uint64_t>(sum >> 64) | (static_cast<std::uint64_t>(sum) > 1 ? 1 : 0);
}

// Of all decimals that are nearer to `magnitude` than to any other double, those with the fewest digits, and of these the nearest. The
// magnitude is finite and above 0.
inline shortest_decimal shortest_decimal_of(double magnitude) {
    constexpr std::uint32_t fraction_bits = 52;
    constexpr std::int32_t exponent_bias = 1023 + fraction_bits;
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const std::uint64_t fraction = bits & ((std::uint64_t{1} << fraction_bits) - 1);
    const auto biased = static_cast<std::int32_t>(bits >> fraction_bits);
    const std::uint64_t c = biased != 0 ? fraction | std::uint64_t{1} << fraction_bits : fraction;
    const std::int32_t q = (biased != 0 ? biased : 1) - exponent_bias;
    if (q <= 0 && q >= -static_cast<std::int32_t>(fraction_bits) && std::countr_zero(c) >= -q) {
        const std::uint64_t integer = c >> -q; // below 2^53
        return with_17_digits(integer, 0, missing_digits(integer));
    }

    // Four times the number, and the middles between it and its neighbours. A power of two is nearer to the one below.
    const bool near_below = fraction == 0 && biased > 1;
    const std::uint64_t middle_below = 4 * c - (near_below ? 1 : 2);
    const std::uint64_t middle_above = 4 * c + 2;
    // The logarithm of 2^q, or 3/4 of it, to the base of ten: exact for every exponent of a double.
    const std::int32_t k = (q * 1262611 - (near_below ? 524031 : 0)) >> 22;
    const std::int32_t h = q + binary_logarithm(-k) + 1;
    const power_of_ten& power = rounded_up_power(-k);
    // A middle reads as the number where its last bit is zero.
    const std::uint64_t excluded = c & 1;
    const std::uint64_t least = scaled(power, middle_below << h) + excluded;
    const std::uint64_t number = scaled(power, 4 * c << h);
    const std::uint64_t greatest = scaled(power, middle_above << h) - excluded;

    // Which of the four it is, is as good as random: chosen without a branch.
    const std::uint64_t down = number / 4;
    // Of a number with all its 53 bits 16 or 17 digits.
    constexpr std::uint64_t ten_to_15 = 1'000'000'000'000'000;
    const std::uint32_t missing = down >= ten_to_15 ? (down < 10 * ten_to_15 ? 1 : 0) : missing_digits(down);
    const std::uint64_t tens = number / 40;
    const std::uint64_t tens_below = least <= 40 * tens ? 1 : 0;
    const std::uint64_t tens_above = 40 * tens + 40 <= greatest ? 1 : 0;
    const std::uint64_t takes_tens = (tens != 0 ? 1 : 0) & (tens_below ^ tens_above);
    const std::uint64_t below = least <= 4 * down ? 1 : 0;
    const std::uint64_t above = 4 * down + 4 <= greatest ? 1 : 0;
    const std::uint64_t behind = number & 3; // quarters
    const std::uint64_t nearer_above = (behind + (down & 1)) > 2 ? 1 : 0;
    const std::uint64_t is_one = below ^ above;
    const std::uint64_t units = down + ((is_one & above) | (~is_one & nearer_above));
    const std::uint64_t by_tens = 0 - takes_tens;
    const std::uint64_t digits = ((tens + tens_above) * 10 & by_tens) | (units & ~by_tens);
    // So the multiplication waits for nothing but the digits. They have one more than the number where this is rounded up to a power of
    // ten.
    shortest_decimal shortest = with_17_digits(digits, k, missing);
    if (digits >= static_cast<std::uint64_t>(bifun::decimal_layout::powers_of_ten[17 - missing])) [[unlikely]] {
        shortest = with_17_digits(digits, k, missing - 1);
    }
    return shortest;
}

} // namespace zqengine

#endif
