// SPDX-License-Identifier: Apache-2.0
// Decimals of a given number of digits.
#ifndef BIFUN_HOST_VALUES_DECIMAL_SHAPE_H
#define BIFUN_HOST_VALUES_DECIMAL_SHAPE_H

#include "bop/frame/contract.h"
#include "host/values/sql_type.h"

namespace host {

// Rounds a value, halves away from zero, or adds zeros to it, so that it has as many digits behind the point as the shape. False where it
// has more before the point than the shape has.
bool fit_to_shape(xdec& value, decimal_shape shape);

} // namespace host

#endif
