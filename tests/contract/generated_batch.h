// Columns and constants made up for tests and benchmarks. The same type, size and seed give the same values everywhere.
#ifndef BIFUN_TESTS_CONTRACT_GENERATED_BATCH_H
#define BIFUN_TESTS_CONTRACT_GENERATED_BATCH_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "bop/frame/contract.h"
#include "bop/frame/value_type.h"
#include "embedded/columns/column_storage.h"

namespace contract {

// How many boundary values a type has.
std::size_t boundary_count(bifun::value_type type);

// A column of exactly `row_count` rows. The first are the type's boundary values, beginning with number `seed` and going round; then
// every eighth is one and the others are ordinary. `null_rate` is the share of NULL rows, 0 to 1. Behind a NULL lies garbage that shows
// when it is touched: strings on a page that cannot be read, decimals of 0xFF bytes, the smallest BIGINT. The column's no-null flag is
// 1 where `null_rate` is 0. Fails the program when memory is exhausted.
zqengine::column_pointer generate_column(bifun::value_type type, std::uint32_t row_count, double null_rate, std::uint64_t seed);

// A constant record with the bytes that it points to.
struct generated_constant {
    alignas(16) std::uint8_t record[sizeof(bifun_string_constant)];
    std::unique_ptr<std::uint8_t[]> bytes;
};

// Row `row` of a column, which may be NULL, as a constant.
generated_constant constant_of_row(const zqengine::column_storage& column, std::uint32_t row);

// Constant number `index` of a type: the boundary values, then ordinary ones. BOOL has no constants.
generated_constant generate_constant(bifun::value_type type, std::size_t index);

// A NULL constant with garbage in its value fields.
generated_constant null_constant(bifun::value_type type);

// A column that holds the constant, NULL or not, in each of its `row_count` rows.
zqengine::column_pointer repeat_constant(bifun::value_type type, const generated_constant& constant, std::uint32_t row_count);

} // namespace contract

#endif
