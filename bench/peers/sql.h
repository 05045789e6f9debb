// The queries for the peers.
#ifndef BIFUN_BENCH_PEERS_SQL_H
#define BIFUN_BENCH_PEERS_SQL_H

#include <string>

#include "bench/peers/cases.h"

namespace bifun::peers {

enum class dialect : std::uint8_t { duckdb, clickhouse };

// Aggregates every column that the case reads, and last the expression of the case.
std::string measured_query(const bench_case& bench_case, dialect dialect);

// The same with the column `like_result` in place of the expression.
std::string baseline_query(const bench_case& bench_case, dialect dialect);

} // namespace bifun::peers

#endif
