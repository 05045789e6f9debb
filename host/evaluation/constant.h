// SPDX-License-Identifier: Apache-2.0
// Constants as the arguments of functions and as columns.
#ifndef BIFUN_HOST_EVALUATION_CONSTANT_H
#define BIFUN_HOST_EVALUATION_CONSTANT_H

#include <cstdint>
#include <span>
#include <vector>

#include "bop/frame/contract.h"
#include "embedded/columns/column_storage.h"

namespace host {

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

// A column of one row for each of the constants, or null when memory is exhausted. Its string bytes are its own.
zqengine::column_pointer make_constant_column(std::span<const constant> values, bifun::value_type type);

} // namespace host

#endif
