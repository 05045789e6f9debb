// SPDX-License-Identifier: Apache-2.0
// Powers of ten as binary numbers of 128 bits, for doubles from text and to text.
#ifndef BIFUN_EMBEDDED_DECIMAL_POWERS_OF_TEN_H
#define BIFUN_EMBEDDED_DECIMAL_POWERS_OF_TEN_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace zqengine {

constexpr std::int32_t least_power_of_ten = -292;
constexpr std::int32_t greatest_power_of_ten = 324;
constexpr std::int32_t last_exact_power = 55; // 5^55 has 128 bits; the powers from 10^0 on are exact up to here

struct power_of_ten {
    std::uint64_t high;
    std::uint64_t low;
};

using power_table = std::array<power_of_ten, greatest_power_of_ten - least_power_of_ten + 1>;
extern const power_table rounded_up_powers;

// 10^k x 2^(127 - e), rounded up, where e is binary_logarithm(k).
inline const power_of_ten& rounded_up_power(std::int32_t k) { return rounded_up_powers[static_cast<std::size_t>(k - least_power_of_ten)]; }

// That of 10^k, rounded down: exact for every k of the table.
constexpr std::int32_t binary_logarithm(std::int32_t k) { return (k * 1741647) >> 19; }

} // namespace zqengine

#endif
