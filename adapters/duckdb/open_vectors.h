// SPDX-License-Identifier: Apache-2.0
// Vectors of parameters that take several types.
#ifndef BIFUN_ADAPTERS_DUCKDB_OPEN_VECTORS_H
#define BIFUN_ADAPTERS_DUCKDB_OPEN_VECTORS_H

#include <cstdint>
#include <string>

#include "adapters/binding/call.h"
#include "adapters/duckdb/api.h"

namespace duckdb_extension {

// As show_vector, for a vector of any type: numbers become those of the type as DuckDB would convert them, decimals of any width DECIMAL,
// and timestamps of other units those of microseconds. What is wrong may also be the vector's type.
std::string show_open_vector(duckdb_vector vector, binding::sql_type type, std::uint32_t row_count, binding::call_argument& argument);

} // namespace duckdb_extension

#endif
