// SPDX-License-Identifier: Apache-2.0
// Constants as the arguments of functions and as columns.
#ifndef BIFUN_ADAPTERS_BINDING_CONSTANT_H
#define BIFUN_ADAPTERS_BINDING_CONSTANT_H

#include <cstdint>
#include <vector>

#include "bop/frame/contract.h"
#include "bop/frame/value_type.h"

namespace binding {

// The argument record of a constant. The bytes of a long string lie in `text`, where functions may change them during a call.
struct constant {
    union {
        bifun_int_constant as_int; // also BOOL
        bifun_bigint_constant as_bigint;
        bifun_double_constant as_double;
        bifun_decimal_constant as_decimal;
        bifun_datetime_constant as_datetime;
        bifun_interval_ym_constant as_interval_ym;
        bifun_interval_dt_constant as_interval_dt;
        bifun_string_constant as_string;
    };
    std::vector<std::uint8_t> text;
};

// A row of a column's data, whatever selection the column has. `made` is changed; the record points into it.
void read_constant(const bifun_column& column, bifun::value_type type, std::uint32_t row, constant& made);

} // namespace binding

#endif
