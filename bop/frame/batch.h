// SPDX-License-Identifier: Apache-2.0
// What an entry point is given: a batch, and columns and constants of the types that the catalogue names. How one is written:
//
//     status entry::bmod_av_do_math_int64(batch_of<BIGINT> batch, column_of<BIGINT> x, constant_of<BIGINT> y) { return ...; }
//
// bop/frame/entry_points.h declares them from the catalogue, so a definition that differs from it does not compile.
#ifndef BIFUN_FRAME_BATCH_H
#define BIFUN_FRAME_BATCH_H

#include <cstdint>
#include <cstring>

#include "bop/frame/contract.h"
#include "bop/frame/status.h"
#include "bop/frame/value_type.h"

extern "C" bifun_settings global_bifun_var;

namespace bifun {

using status = std::int32_t;
using enum value_type;

// ---- types of the catalogue ----

// How a type's values lie in columns, and the record of its constants.
template <value_type type> struct storage;
template <class Value, class Constant> struct stored_as {
    using value = Value;
    using constant = Constant;
};
template <> struct storage<BOOL> : stored_as<std::int32_t, bifun_int_constant> {};
template <> struct storage<INT> : stored_as<std::int32_t, bifun_int_constant> {};
template <> struct storage<BIGINT> : stored_as<std::int64_t, bifun_bigint_constant> {};
template <> struct storage<DOUBLE> : stored_as<double, bifun_double_constant> {};
template <> struct storage<DECIMAL> : stored_as<xdec, bifun_decimal_constant> {};
template <> struct storage<DATETIME> : stored_as<zqtime, bifun_datetime_constant> {};
template <> struct storage<VARCHAR> : stored_as<bifun_string, bifun_string_constant> {};
template <> struct storage<VARBINARY> : stored_as<bifun_string, bifun_string_constant> {};
template <> struct storage<INTERVAL_YM> : stored_as<bifun_interval_ym, bifun_interval_ym_constant> {};
template <> struct storage<INTERVAL_DT> : stored_as<bifun_interval_dt, bifun_interval_dt_constant> {};

template <> struct storage<BLOB> { using value = const bifun_large_object*; }; // there are no constants of it

template <value_type type> using stored = typename storage<type>::value;

template <value_type type> struct column_of { const bifun_column* column; };
template <value_type type> struct constant_of { const typename storage<type>::constant* record; };

// ---- the batch ----

struct batch {
    bifun_environment* environment;
    bifun_memory_object* memory;
    bifun_column* result;
    std::uint32_t row_count;
};
template <value_type result_type> struct typed_batch : batch {};

// By reference: copies of it made a batch of one row take 21 ns instead of 11.
template <value_type result_type> using batch_of = const typed_batch<result_type>&;

inline std::uint8_t* null_flags(const batch& batch) { return batch.result->data->null_flags; }

template <class T> T* values(const batch& batch) { return static_cast<T*>(batch.result->data->values); }

// The result of a NULL constant that makes every row NULL.
inline status null_rows(const batch& batch) {
    if (batch.row_count > 0) {
        std::memset(null_flags(batch), 0, batch.row_count);
    }
    batch.result->no_nulls = 0;
    return BIFUN_OK;
}

// The result of a constant that is wrong: nothing is written but the flags.
inline status fail_batch(const batch& batch, status failure) {
    (void)null_rows(batch);
    return failure;
}

} // namespace bifun

#endif
