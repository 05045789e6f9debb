// SPDX-License-Identifier: Apache-2.0
// Quotients of decimals, which the library does not need.
#ifndef BIFUN_EMBEDDED_DECIMAL_DIVISION_H
#define BIFUN_EMBEDDED_DECIMAL_DIVISION_H

#include <cstdint>

#include "bop/frame/contract.h"

namespace zqengine {

// dividend / divisor, exact where that takes no more than 38 digits, else rounded to 38, half away from zero. An exact quotient has as
// many digits behind the point as it needs, and at least as many as the dividend has more than the divisor. `result` may be the place of an
// operand. Returns 0; -6803 where the divisor is 0; -6102 where the quotient is beyond the largest DECIMAL; then the result is untouched.
std::int32_t divide(const xdec& dividend, const xdec& divisor, xdec& result);

} // namespace zqengine

#endif
