// SPDX-License-Identifier: Apache-2.0
// After Raffaello Giulietti, "The Schubfach way to render doubles" (2020). A double is c x 2^q; with the power of ten 10^k that is next
// below the distance of its neighbours, the shortest decimal is one of four multiples of 10^k and 10^(k+1) around it. Which of them lie
// nearer to it than to its neighbours is told by comparing the numbers divided by 10^k, as integers: each is one product with a rounded
// power of ten, whose lost bits are kept as one sticky bit, which the paper shows to be enough.

#include "embedded/format/shortest_decimal.h"

#include <array>
#include <bit>

#include "layouts/decimal_layout.h"

namespace zqengine {

namespace {

using bifun::decimal_layout::uint128;

constexpr std::int32_t least_power = -292;
constexpr std::int32_t greatest_power = 324;

struct power_of_ten {
    std::uint64_t high;
    std::uint64_t low;
};

// A large number, the lowest word first.
constexpr std::size_t large_words = 40;
using large_number = std::array<std::uint32_t, large_words>;

// The first 128 bits of `number`, whose uppermost word is at `top`, and what is behind them rounded up unless it is zero.
constexpr power_of_ten leading_bits(const large_number& number, std::size_t top, bool exact) {
    const auto word = [&](std::size_t i) { return i <= top ? std::uint64_t{number[top - i]} : 0; };
    const auto shift = static_cast<std::uint32_t>(std::countl_zero(number[top]));
    const auto shifted = [&](std::size_t i) { return (word(i) << 32 | word(i + 1)) << shift >> 32 & 0xFFFFFFFF; };
    const uint128 bits = uint128{shifted(0) << 32 | shifted(1)} << 64 | (shifted(2) << 32 | shifted(3));
    const uint128 rounded = bits + (exact ? 0 : 1);
    return {.high = static_cast<std::uint64_t>(rounded >> 64), .low = static_cast<std::uint64_t>(rounded)};
}

using power_table = std::array<power_of_ten, greatest_power - least_power + 1>;

// 10^k x 2^(127 - e), where e is the binary logarithm of 10^k rounded down, rounded up.
constexpr power_table make_powers() {
    constexpr std::int32_t last_exact = 55; // 5^55 has 128 bits
    power_table powers{};
    large_number number{};
    number[0] = 1;
    std::size_t top = 0;
    for (std::int32_t k = 0; k <= greatest_power; ++k) {
        powers[static_cast<std::size_t>(k - least_power)] = leading_bits(number, top, k <= last_exact);
        std::uint64_t carry = 0;
        for (std::size_t i = 0; i <= top; ++i) {
            carry += std::uint64_t{number[i]} * 10;
            number[i] = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
        if (carry != 0) {
            number[++top] = static_cast<std::uint32_t>(carry);
        }
    }
    // 2^1279 / 10^-k.
    number = {};
    top = large_words - 1;
    number[top] = std::uint32_t{1} << 31;
    for (std::int32_t k = -1; k >= least_power; --k) {
        std::uint64_t rest = 0;
        for (std::size_t i = top + 1; i-- > 0;) {
            rest = rest << 32 | number[i];
            number[i] = static_cast<std::uint32_t>(rest / 10);
            rest %= 10;
        }
        if (number[top] == 0) {
            --top;
        }
        powers[static_cast<std::size_t>(k - least_power)] = leading_bits(number, top, false);
    }
    return powers;
}

constexpr power_table powers = make_powers();

// number x power / 2^128, the last bit set where bits behind it are.
std::uint64_t scaled(const power_of_ten& power, std::uint64_t number) {
    const uint128 low = uint128{power.low} * number;
    const uint128 sum = uint128{power.high} * number + static_cast<std::uint64_t>(low >> 64);
    return static_cast<std::uint64_t>(sum >> 64) | (static_cast<std::uint64_t>(sum) > 1 ? 1 : 0);
}

} // namespace

shortest_decimal shortest_decimal_of(double magnitude) {
    constexpr std::uint32_t fraction_bits = 52;
    constexpr std::int32_t exponent_bias = 1023 + fraction_bits;
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const std::uint64_t fraction = bits & ((std::uint64_t{1} << fraction_bits) - 1);
    const auto biased = static_cast<std::int32_t>(bits >> fraction_bits);
    const std::uint64_t c = biased != 0 ? fraction | std::uint64_t{1} << fraction_bits : fraction;
    const std::int32_t q = (biased != 0 ? biased : 1) - exponent_bias;
    if (q <= 0 && q >= -static_cast<std::int32_t>(fraction_bits) && std::countr_zero(c) >= -q) {
        return {.digits = c >> -q, .exponent = 0}; // an integer below 2^53
    }

    // Four times the number, and the middles between it and its neighbours. A power of two is nearer to the one below.
    const bool near_below = fraction == 0 && biased > 1;
    const std::uint64_t middle_below = 4 * c - (near_below ? 1 : 2);
    const std::uint64_t middle_above = 4 * c + 2;
    // The logarithms are exact for every exponent of a double.
    const std::int32_t k = (q * 1262611 - (near_below ? 524031 : 0)) >> 22; // of 2^q, or 3/4 of it, to the base of ten
    const std::int32_t h = q + ((-k * 1741647) >> 19) + 1;                  // 1741647 / 2^19: of ten to the base of two
    const power_of_ten& power = powers[static_cast<std::size_t>(-k - least_power)];
    // A middle reads as the number where its last bit is zero.
    const std::uint64_t excluded = c & 1;
    const std::uint64_t least = scaled(power, middle_below << h) + excluded;
    const std::uint64_t number = scaled(power, 4 * c << h);
    const std::uint64_t greatest = scaled(power, middle_above << h) - excluded;

    const std::uint64_t down = number / 4;
    const std::uint64_t tens = number / 40;
    const bool tens_below = least <= 40 * tens;
    const bool tens_above = 40 * tens + 40 <= greatest;
    const bool takes_tens = (tens != 0) & (tens_below != tens_above);
    const bool below = least <= 4 * down;
    const bool above = 4 * down + 4 <= greatest;
    const std::uint64_t middle = 4 * down + 2;
    const bool nearer_above = (number > middle) | ((number == middle) & ((down & 1) != 0));
    const std::uint64_t units = down + ((below != above ? above : nearer_above) ? 1 : 0);
    return {.digits = takes_tens ? tens + (tens_above ? 1 : 0) : units, .exponent = k + (takes_tens ? 1 : 0)};
}

} // namespace zqengine
