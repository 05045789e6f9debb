// SPDX-License-Identifier: Apache-2.0
// Result values through the engine's setters.
#ifndef BIFUN_FRAME_SETTERS_H
#define BIFUN_FRAME_SETTERS_H

#include "bop/frame/batch.h"
#include "bop/frame/statements.h"
#include "engine/columns.h"

namespace bifun {

inline void set_value(const batch& batch, std::uint32_t row, std::int32_t value) {
    const bifun_int_constant record{1, value};
    (void)bdta3_set_int(batch.environment, batch.memory, batch.result, row, &record);
}

inline void set_value(const batch& batch, std::uint32_t row, std::int64_t value) {
    const bifun_bigint_constant record{1, value};
    (void)bdta3_set_int64(batch.environment, batch.memory, batch.result, row, &record);
}

inline void set_value(const batch& batch, std::uint32_t row, double value) {
    const bifun_double_constant record{1, value};
    (void)bdta3_set_double(batch.environment, batch.memory, batch.result, row, &record);
}

inline void set_value(const batch& batch, std::uint32_t row, const xdec& value) {
    const bifun_decimal_constant record{1, value};
    (void)bdta3_set_dec(batch.environment, batch.memory, batch.result, row, &record);
}

inline void set_value(const batch& batch, std::uint32_t row, const zqtime& value) {
    const bifun_datetime_constant record{1, value};
    (void)bdta3_set_datetime(batch.environment, batch.memory, batch.result, row, &record);
}

// The engine copies the bytes: they may be those of an argument or of the caller.
inline void set_value(const batch& batch, std::uint32_t row, const bifun_string& value) {
    (void)bdta3_col_assign_str(batch.environment, batch.memory, batch.result, row, value.data, value.length, value.trailing_blanks);
}

// Whether the library may put values of the type into the value array itself.
template <class T> bool values_can_be_stored() { return setters_are_plain_stores(); }
template <> inline bool values_can_be_stored<bifun_string>() { return results_may_refer(); }

// Copies `source`, as seen through its selection vector, into the result. Only -503 counts as a failure: an engine's copy may have no
// status to return.
inline status copy_column(const batch& batch, const bifun_column* source) {
    const status copied = bdta3_col_copy(batch.environment, batch.memory, batch.result, source, batch.row_count);
    if (copied != BIFUN_OUT_OF_MEMORY) {
        return BIFUN_OK;
    }
    batch.result->no_nulls = 0;
    return copied;
}

} // namespace bifun

#endif
