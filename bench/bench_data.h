// SPDX-License-Identifier: Apache-2.0
// Generated columns and constants for benchmarks: any type, any number of distinct rows, the same in every run.
#ifndef BIFUN_BENCH_BENCH_DATA_H
#define BIFUN_BENCH_BENCH_DATA_H

#include <cstdint>
#include <string_view>
#include <variant>

#include "bop/frame/catalogue.h"
#include "embedded/columns/column_storage.h"

namespace bifun::bench {

// The n-th of the random numbers of a seed (splitmix64), so that a row's value does not depend on the rows before it.
constexpr std::uint64_t random_at(std::uint64_t seed, std::uint64_t n) {
    std::uint64_t z = seed * 0xD1342543DE82EF95ULL + (n + 1) * 0x9E3779B97F4A7C15ULL;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}

// The values that suit an argument of an entry point: what the catalogue says, and for the rest those of its type. The meaning of the
// bounds depends on the type:
//     BOOL 0 or 1, bounds unused | INT, BIGINT, DOUBLE uniform between the bounds
//     DECIMAL uniform between the bounds with 4 digits behind the point | DATETIME the years, both included, from 1583 on
//     VARCHAR, VARBINARY the length in bytes, of the letters | INTERVAL_YM months | INTERVAL_DT seconds | BLOB unused
typical_values values_of_argument(const entry_point& entry, std::size_t position);

// Fills rows 0 .. row_count - 1 without NULLs; each seed gives other values. False when memory is exhausted.
[[nodiscard]] bool fill_column(zqengine::column_storage& column, const typical_values& values, std::uint64_t seed, std::uint32_t row_count);

// Makes about one row in ten NULL; the values behind the NULLs stay.
void make_nulls(zqengine::column_storage& column, std::uint64_t seed, std::uint32_t row_count);

using constant_record =
    std::variant<bifun_int_constant, bifun_bigint_constant, bifun_double_constant, bifun_decimal_constant, bifun_datetime_constant,
                 bifun_string_constant, bifun_interval_ym_constant, bifun_interval_dt_constant>;

// A constant argument from its text: a number, a datetime, an interval's months or seconds, or the characters themselves. The text must
// outlive the record.
// Throws std::runtime_error where the text is no value of the type.
constant_record make_constant(value_type type, std::string_view text);

// What to pass for a constant argument.
inline const void* record_address(const constant_record& record) {
    return std::visit([](const auto& value) { return static_cast<const void*>(&value); }, record);
}

} // namespace bifun::bench

#endif
