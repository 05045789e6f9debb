// SPDX-License-Identifier: Apache-2.0
// DuckDB's vectors as arguments of calls, and results as vectors.
#ifndef BIFUN_ADAPTERS_DUCKDB_VECTORS_H
#define BIFUN_ADAPTERS_DUCKDB_VECTORS_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "adapters/binding/call.h"
#include "adapters/duckdb/api.h"

namespace duckdb_extension {

// DuckDB has decimals of 38 digits in all, and functions of one type: this many of them are behind the point.
constexpr std::uint8_t decimal_digits = 38;
constexpr std::uint8_t fraction_digits = 10;

// Of a value that is no datetime of the library.
constexpr const char* no_such_date = "a date is not among -4712-01-01 to 9999-12-31, or one of the ten days that October 1582 lacks";

// The type that DuckDB has for values of the type; to be destroyed by the caller.
duckdb_logical_type make_type(binding::sql_type type);

// Shows the first `row_count` rows of a vector as an argument, or its first one where all are the same. The values of numbers and bytes of
// strings stay in the vector, unless `copy` is given, which gets the bytes of strings. Moments are in `time_zone`, minutes. Returns an
// empty text, or what is wrong with a value that cannot be an argument.
std::string show_vector(duckdb_vector vector, binding::sql_type type, std::uint32_t row_count, std::int32_t time_zone,
                        std::vector<std::uint8_t>* copy, binding::call_argument& argument);

// Stores results as binding::result_store says. Returns an empty text, or what is wrong with a value that DuckDB cannot have.
std::string store_results(const bifun_column* results, bifun::value_type given, std::span<const std::uint16_t> rows,
                          std::uint32_t row_count, binding::sql_type type, std::int32_t time_zone, duckdb_vector vector);

} // namespace duckdb_extension

#endif
