// SPDX-License-Identifier: Apache-2.0
#include "adapters/duckdb/vector_rows.h"

#include <cstring>

namespace duckdb_extension {
namespace {

using binding::call_argument;

// A validity mask has a bit for each row; null stands for one without a clear bit.
bool is_valid(const std::uint64_t* validity, std::uint32_t row) { return validity == nullptr || (validity[row / 64] >> row % 64 & 1) != 0; }

// Eight bits as bytes of 0 and 1.
std::uint64_t bytes_of_bits(std::uint64_t bits) {
    const std::uint64_t spread = (bits & 0xFF) * 0x0101'0101'0101'0101 & 0x8040'2010'0804'0201;
    return ((spread + 0x7F7F'7F7F'7F7F'7F7F) | spread) >> 7 & 0x0101'0101'0101'0101;
}

void show_nulls(const std::uint64_t* validity, std::uint32_t row_count, call_argument& argument) {
    argument.column.no_nulls = 1;
    if (validity == nullptr) {
        std::memset(argument.data.null_flags, 1, row_count);
        return;
    }
    for (std::uint32_t row = 0; row < row_count; row += 8) {
        const std::uint64_t bits = validity[row / 64] >> row % 64;
        const std::uint64_t flags = bytes_of_bits(bits);
        const std::uint32_t count = row_count - row < 8 ? row_count - row : 8;
        std::memcpy(argument.data.null_flags + row, &flags, count);
        const std::uint64_t asked = (std::uint64_t{1} << count) - 1;
        argument.column.no_nulls &= (bits & asked) == asked ? 1U : 0U;
    }
}

// Whether all rows hold the same bytes, or all are NULL. A constant that DuckDB has made a vector of is so.
bool repeats(const std::uint8_t* values, std::size_t width, const std::uint64_t* validity, std::uint32_t row_count) {
    if (row_count == 1) {
        return true;
    }
    const bool is_null = !is_valid(validity, 0);
    if (!is_null && std::memcmp(values, values + width, width) != 0) {
        return false;
    }
    for (std::uint32_t row = 1; validity != nullptr && row < row_count; ++row) {
        if (is_valid(validity, row) == is_null) {
            return false;
        }
    }
    return is_null || std::memcmp(values, values + width, width * (row_count - 1)) == 0;
}

} // namespace

std::uint32_t show_rows(duckdb_vector vector, std::size_t width, std::uint32_t row_count, call_argument& argument) {
    const std::uint64_t* const validity = duckdb_vector_get_validity(vector);
    argument.repeats = repeats(static_cast<const std::uint8_t*>(duckdb_vector_get_data(vector)), width, validity, row_count);
    const std::uint32_t shown = argument.repeats ? 1 : row_count;
    show_nulls(validity, shown, argument);
    return shown;
}

} // namespace duckdb_extension
