// SPDX-License-Identifier: Apache-2.0
// Columns and constants made up for tests. The same type, size and seed give the same values everywhere.
#ifndef BIFUN_TESTS_CONTRACT_GENERATED_BATCH_H
#define BIFUN_TESTS_CONTRACT_GENERATED_BATCH_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "bop/frame/contract.h"
#include "bop/frame/value_type.h"
#include "embedded/columns/column_storage.h"

namespace contract {

// How many boundary values a type has.
std::size_t boundary_count(bifun::value_type type);

// A column of exactly `row_count` rows. The first are the type's boundary values, beginning with number `seed` and going round; then
// every eighth is one and the others are ordinary. `null_rate` is the share of NULL rows, 0 to 1. Behind a NULL lies garbage that shows
// when it is touched: strings on a page that cannot be read, decimals of 0xFF bytes, the smallest BIGINT and intervals. Behind the
// boundary values of strings lies such a page too. The column's no-null flag is 1 where `null_rate` is 0.
zqengine::column_pointer generate_column(bifun::value_type type, std::uint32_t row_count, double null_rate, std::uint64_t seed);

// A column of these values, none of them NULL.
template <class T> zqengine::column_pointer column_of(bifun::value_type type, const std::vector<T>& values) {
    zqengine::column_pointer column(zqengine::create_column(type, static_cast<std::uint32_t>(values.size())));
    column->column.no_nulls = 1;
    std::memset(column->data.null_flags, 1, values.size());
    std::memcpy(column->data.values, values.data(), values.size() * sizeof(T));
    return column;
}

// The rows that a selection names, one after another. Strings stay where they are.
zqengine::column_pointer gather(const zqengine::column_storage& column, const std::vector<std::uint16_t>& selection);

// A constant record with the bytes that it points to.
struct generated_constant {
    alignas(16) std::uint8_t record[sizeof(bifun_string_constant)];
    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t length; // of `bytes`
};

// Row `row` of a column as a constant, which shares no bytes with it. What the constant does not use, all of a NULL but its flag, is
// garbage.
generated_constant constant_of_row(const zqengine::column_storage& column, std::uint32_t row);

} // namespace contract

#endif
