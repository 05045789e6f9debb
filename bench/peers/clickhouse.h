// SPDX-License-Identifier: Apache-2.0
// ClickHouse as a library found at run time.
#ifndef BIFUN_BENCH_PEERS_CLICKHOUSE_H
#define BIFUN_BENCH_PEERS_CLICKHOUSE_H

#include <memory>
#include <string>

#include "bench/peers/measurement.h"
#include "bench/peers/table.h"

namespace bifun::peers {

struct clickhouse_session;
void close_clickhouse(clickhouse_session* session);
struct clickhouse_closer {
    void operator()(clickhouse_session* session) const { close_clickhouse(session); }
};
using clickhouse_pointer = std::unique_ptr<clickhouse_session, clickhouse_closer>;

// A session with one thread and default settings otherwise, or null where there is no library at `path`. These throw std::runtime_error
// with ClickHouse's message. Loading goes through a temporary file.
clickhouse_pointer open_clickhouse(const std::string& path);
std::string clickhouse_version(clickhouse_session& session);
void load_clickhouse(clickhouse_session& session, const table& table);

// Runs a query and takes the last value of its first row.
measurement run_clickhouse(clickhouse_session& session, const std::string& query);

} // namespace bifun::peers

#endif
