// SPDX-License-Identifier: Apache-2.0
// Which rows of a vector are there, and which of them are NULL.
#ifndef BIFUN_ADAPTERS_DUCKDB_VECTOR_ROWS_H
#define BIFUN_ADAPTERS_DUCKDB_VECTOR_ROWS_H

#include <cstddef>
#include <cstdint>

#include "adapters/binding/call.h"
#include "adapters/duckdb/api.h"

namespace duckdb_extension {

// Shows the NULLs of a vector whose values have so many bytes, and says whether it repeats: returns how many rows there are to be shown, 1
// or all of them.
std::uint32_t show_rows(duckdb_vector vector, std::size_t width, std::uint32_t row_count, binding::call_argument& argument);

// Calls `show` for each row that is not NULL, and returns whether it has returned true for all of them. Without a branch for what is usual.
template <class Show> bool for_each_value(const binding::call_argument& argument, std::uint32_t row_count, const Show& show) {
    bool all = true;
    if (argument.column.no_nulls != 0) {
        for (std::uint32_t row = 0; row < row_count; ++row) {
            all &= show(row);
        }
        return all;
    }
    for (std::uint32_t row = 0; row < row_count; ++row) {
        if (argument.data.null_flags[row] != 0) {
            all &= show(row);
        }
    }
    return all;
}

} // namespace duckdb_extension

#endif
