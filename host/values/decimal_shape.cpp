// SPDX-License-Identifier: Apache-2.0
#include "host/values/decimal_shape.h"

#include <fmt/format.h>

#include "bop/frame/status.h"
#include "engine/decimal.h"
#include "host/values/value_text.h"

namespace host {

bool fit_to_shape(xdec& value, decimal_shape shape) {
    xdec zeros;
    xdec beyond;
    xdec magnitude;
    return xdec_round(&value, 0, shape.fraction_digits, &value) == BIFUN_OK &&
           read_decimal(fmt::format("1E{}", shape.digits - shape.fraction_digits), beyond) && xdec_abs(&value, &magnitude) == BIFUN_OK &&
           xdec_cmp(&magnitude, &beyond) < 0 && read_decimal(fmt::format("0E-{}", shape.fraction_digits), zeros) &&
           xdec_add(&value, &zeros, &value) == BIFUN_OK;
}

} // namespace host
