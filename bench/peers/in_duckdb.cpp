// SPDX-License-Identifier: Apache-2.0
// The functions of the extension beside DuckDB's own, in the same queries: what passing values to the library and back costs, too.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "tests/adapters/duckdb_database.h"

namespace {

using bifun::test::duckdb_database;

constexpr int row_count = 2'000'000;

struct measured_case {
    const char* column; // whose scan is subtracted
    const char* in_bifun;
    const char* in_duckdb; // the nearest there is
};

const measured_case cases[] = {
    {"l", "bifun_abs(l)", "abs(l)"},
    {"d", "bifun_abs(d)", "abs(d)"},
    {"m", "bifun_abs(m)", "abs(m)"},
    {"m", "bifun_round(m, 1)", "round(m, 1)"},
    {"m", "bifun_to_char(m, '999999990.00')", "printf('%.2f', m::DOUBLE)"},
    {"ts", "bifun_year(ts)", "year(ts)"},
    {"ts", "bifun_trunc(ts, 'MONTH')", "date_trunc('month', ts)"},
    {"ts", "bifun_add_months(ts, 1)", "ts + INTERVAL 1 MONTH"},
    {"ts", "bifun_to_char(ts, 'YYYY-MM-DD')", "strftime(ts, '%Y-%m-%d')"},
    {"dt", "bifun_last_day(dt)", "last_day(dt)"},
    {"dt", "bifun_datediff('month', dt, DATE '2024-01-01')", "datediff('month', dt, DATE '2024-01-01')"},
    {"s", "bifun_length(s)", "length(s)"},
    {"s", "bifun_substr(s, 3, 5)", "substr(s, 3, 5)"},
    {"s", "bifun_instr(s, 'ber')", "instr(s, 'ber')"},
    {"s", "bifun_trim(s)", "trim(s)"},
    {"s", "bifun_replace(s, 'e', 'EE')", "replace(s, 'e', 'EE')"},
    {"s", "bifun_lpad(s, 30, '*')", "lpad(s, 30, '*')"},
};

void run(duckdb_database& database, const std::string& sql) {
    const bifun::test::query_result result = query(database, sql);
    if (!result.error.empty()) {
        throw std::runtime_error(sql + ": " + result.error);
    }
}

// The best of some repetitions.
double nanoseconds_per_row(duckdb_database& database, const char* expression, int repetitions) {
    const std::string sql = fmt::format("SELECT max({}) FROM t", expression);
    double best = 1e30;
    for (int k = 0; k < repetitions; ++k) {
        const auto start = std::chrono::steady_clock::now();
        run(database, sql);
        best = std::min(best, std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() / row_count);
    }
    return best;
}

// `wanted` is part of the calls that are measured.
void measure(const std::string& library, const std::string& extension, int repetitions, std::string_view wanted) {
    const bifun::test::duckdb_pointer database = bifun::test::open_duckdb(library);
    run(*database, fmt::format("LOAD '{}'", extension));
    run(*database, "SET threads = 1");
    run(*database, fmt::format("CREATE TABLE t AS SELECT i::BIGINT l, (i * 1.5)::DOUBLE d, ((i % 100000) * 1.01)::DECIMAL(18, 2) m, "
                               "TIMESTAMP '2020-01-01' + to_seconds(i) ts, (TIMESTAMP '2020-01-01' + to_minutes(i))::DATE dt, "
                               "'text number ' || i s FROM range({}) t(i)",
                               row_count));
    fmt::print("| In DuckDB, ns per row | bifun | DuckDB | |\n|---|---|---|---|\n");
    for (const measured_case& measured : cases) {
        if (std::string_view(measured.in_bifun).find(wanted) == std::string_view::npos) {
            continue;
        }
        const double scan = nanoseconds_per_row(*database, measured.column, repetitions);
        const double ours = nanoseconds_per_row(*database, measured.in_bifun, repetitions) - scan;
        const double theirs = nanoseconds_per_row(*database, measured.in_duckdb, repetitions) - scan;
        fmt::print("| `{}` | {:.1f} | {:.1f} | {} |\n", measured.in_bifun, ours, theirs, measured.in_duckdb);
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc < 3) {
            fmt::print(stderr, "bifun_in_duckdb LIBDUCKDB.so bifun.duckdb_extension [REPETITIONS [PART_OF_CALL]]\n");
            return 1;
        }
        measure(argv[1], argv[2], argc > 3 ? std::atoi(argv[3]) : 5, argc > 4 ? argv[4] : "");
    } catch (const std::exception& error) {
        fmt::print(stderr, "bifun_in_duckdb: {}\n", error.what());
        return 1;
    }
    return 0;
}
