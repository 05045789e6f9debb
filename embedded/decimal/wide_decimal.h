// SPDX-License-Identifier: Apache-2.0
// Decimals of numbers up to 256 bits, such as the product of two coefficients.
#ifndef BIFUN_EMBEDDED_DECIMAL_WIDE_DECIMAL_H
#define BIFUN_EMBEDDED_DECIMAL_WIDE_DECIMAL_H

#include "embedded/decimal/decimal_parts.h"

namespace zqengine {

using bifun::decimal_layout::multiply_wide;
using bifun::decimal_layout::wide_number;

// 2 x coefficient / 10^cut, rounded down: the quotient, and in the last bit whether half a unit or more is cut off. The coefficient is
// below 10^38, `cut` not negative.
inline uint128 halves_after_any_cut(uint128 coefficient, std::int64_t cut) {
    namespace layout = bifun::decimal_layout;
    if (cut == 0) {
        return coefficient * 2;
    }
    if (cut > layout::max_long_cut) {
        return 0;
    }
    return layout::halves_after_cut(coefficient, layout::reciprocal_of_half<uint128>(static_cast<std::uint32_t>(cut)));
}

// Stores magnitude x 10^-scale as make_decimal does. The magnitude is below 10^76.
[[nodiscard]] std::int32_t make_wide_decimal(xdec* result, wide_number magnitude, std::int64_t scale, bool negative);

} // namespace zqengine

#endif
