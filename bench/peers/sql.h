// SPDX-License-Identifier: Apache-2.0
// The queries for the peers.
#ifndef BIFUN_BENCH_PEERS_SQL_H
#define BIFUN_BENCH_PEERS_SQL_H

#include <string>
#include <string_view>

#include "bench/peers/cases.h"

namespace bifun::peers {

enum class dialect : std::uint8_t { duckdb, clickhouse };

// The expression of the case as the engine writes it, empty where it has no such function.
std::string_view expression_of(const bench_case& bench_case, dialect dialect);

// Aggregates every column that the case reads, and last the expression of the case.
std::string measured_query(const bench_case& bench_case, dialect dialect);

// The same with the column `like_result` in place of the expression.
std::string baseline_query(const bench_case& bench_case, dialect dialect);

// The values of the expression in the first rows as one text, `separator` between them; timestamps and dates in microseconds since
// 1970-01-01, "NULL" for NULL.
constexpr char separator = '|';
std::string sample_query(const bench_case& bench_case, dialect dialect, std::uint32_t rows);

} // namespace bifun::peers

#endif
