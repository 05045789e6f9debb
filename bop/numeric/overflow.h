// SPDX-License-Identifier: Apache-2.0
// The overflow checks of DOUBLE results.
#ifndef BIFUN_NUMERIC_OVERFLOW_H
#define BIFUN_NUMERIC_OVERFLOW_H

#include "bop/frame/row_loop.h"
#include "engine/number_check.h"

namespace bifun {

// The engine says whether a result that is not finite is an overflow.
inline status check_overflow(double result) {
    return ntype_is_double_overflow(result) == BIFUN_NUMERIC_OVERFLOW ? BIFUN_NUMERIC_OVERFLOW : BIFUN_OK;
}

// Infinities are overflows, NaN is not.
inline status check_bounds(double result) {
    constexpr double largest = std::numeric_limits<double>::max();
    return result > largest || result < -largest ? BIFUN_NUMERIC_OVERFLOW : BIFUN_OK;
}

} // namespace bifun

#endif
