// SPDX-License-Identifier: Apache-2.0
#include "embedded/decimal/nearest_double.h"

#include <limits>

namespace zqengine {

std::uint64_t nearest_double_bits(uint128 coefficient, std::int64_t scale, bool is_exact) {
    if (-scale < least_power_of_ten || -scale > greatest_power_of_ten) {
        return 0;
    }
    const auto power = static_cast<std::int32_t>(-scale);
    const std::int32_t excess = 64 - std::countl_zero(static_cast<std::uint64_t>(coefficient >> 64));
    const auto leading = static_cast<std::uint64_t>(coefficient >> excess);
    const std::uint64_t bits = nearest_double_bits(leading, excess, power);
    if (bits == 0 || (is_exact && uint128{leading} << excess == coefficient)) {
        return bits;
    }
    // What is between this number and the next has the double that both have.
    return leading != std::numeric_limits<std::uint64_t>::max() && nearest_double_bits(leading + 1, excess, power) == bits ? bits : 0;
}

} // namespace zqengine
