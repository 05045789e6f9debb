// SPDX-License-Identifier: Apache-2.0
// A database of a libduckdb.so that is loaded at run time.
#ifndef BIFUN_TESTS_ADAPTERS_DUCKDB_DATABASE_H
#define BIFUN_TESTS_ADAPTERS_DUCKDB_DATABASE_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace bifun::test {

struct query_result {
    std::string error; // empty where the query succeeded
    std::vector<std::vector<std::optional<std::string>>> rows;
};

struct duckdb_database;
struct duckdb_closer {
    void operator()(duckdb_database* database) const;
};
using duckdb_pointer = std::unique_ptr<duckdb_database, duckdb_closer>;

// In memory, with unsigned extensions allowed. Throws where the library cannot be loaded.
duckdb_pointer open_duckdb(const std::string& library);

// One statement, by the database's first connection or by another, which is made when it is first asked for. Values are as DuckDB casts
// them to VARCHAR. Different connections may be used by threads at once.
query_result query(duckdb_database& database, const std::string& sql, std::size_t connection = 0);

} // namespace bifun::test

#endif
