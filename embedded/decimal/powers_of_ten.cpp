// SPDX-License-Identifier: Apache-2.0
#include "embedded/decimal/powers_of_ten.h"

#include <bit>

#include "layouts/decimal_layout.h"

namespace zqengine {

namespace {

using bifun::decimal_layout::uint128;

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

constexpr power_table make_powers() {
    power_table powers{};
    large_number number{};
    number[0] = 1;
    std::size_t top = 0;
    for (std::int32_t k = 0; k <= greatest_power_of_ten; ++k) {
        powers[static_cast<std::size_t>(k - least_power_of_ten)] = leading_bits(number, top, k <= last_exact_power);
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
    for (std::int32_t k = -1; k >= least_power_of_ten; --k) {
        std::uint64_t rest = 0;
        for (std::size_t i = top + 1; i-- > 0;) {
            rest = rest << 32 | number[i];
            number[i] = static_cast<std::uint32_t>(rest / 10);
            rest %= 10;
        }
        if (number[top] == 0) {
            --top;
        }
        powers[static_cast<std::size_t>(k - least_power_of_ten)] = leading_bits(number, top, false);
    }
    return powers;
}

} // namespace

constexpr power_table rounded_up_powers = make_powers();

} // namespace zqengine
