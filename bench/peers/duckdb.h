// SPDX-License-Identifier: Apache-2.0
// DuckDB as a library found at run time.
#ifndef BIFUN_BENCH_PEERS_DUCKDB_H
#define BIFUN_BENCH_PEERS_DUCKDB_H

#include <memory>
#include <string>

#include "bench/peers/measurement.h"
#include "bench/peers/table.h"

namespace bifun::peers {

struct duckdb_session;
void close_duckdb(duckdb_session* session);
struct duckdb_closer {
    void operator()(duckdb_session* session) const { close_duckdb(session); }
};
using duckdb_pointer = std::unique_ptr<duckdb_session, duckdb_closer>;

// An in-memory database with one thread, or null where there is no library at `path`. These throw std::runtime_error with DuckDB's message.
duckdb_pointer open_duckdb(const std::string& path);
std::string duckdb_version(duckdb_session& session);
void load_duckdb(duckdb_session& session, const table& table);

// Runs a query and takes the last value of its first row.
measurement run_duckdb(duckdb_session& session, const std::string& query);

} // namespace bifun::peers

#endif
