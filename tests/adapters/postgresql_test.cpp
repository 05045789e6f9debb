// SPDX-License-Identifier: Apache-2.0
// The extension in a PostgreSQL server, which adapters/postgresql/private-server runs.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <thread>

#include <fmt/format.h>

#include "tests/adapters/equal_cells.h"
#include "tests/adapters/postgresql_session.h"

namespace bifun::test {
namespace {

using binding::sql_type;

class PostgreSql : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        const session_pointer first = open_session();
        ASSERT_EQ(query(*first, "CREATE EXTENSION IF NOT EXISTS bifun").error, "");
    }

    // The cells of a query, rows with blanks and lines with " / " between, or the error.
    std::string answer(const std::string& sql) {
        const session_answer result = query(*session, sql);
        std::string text = result.error;
        for (const auto& row : result.rows) {
            text += text.empty() ? "" : " / ";
            for (const auto& cell : row) {
                text += fmt::format("{}{}", &cell == &row.front() ? "" : " ", cell.value_or("NULL"));
            }
        }
        return text;
    }

    session_pointer session = open_session();
};

std::string_view type_name(sql_type type) {
    return type == sql_type::double_precision ? "double precision" : type == sql_type::varchar ? "text" : binding::sql_type_name(type);
}

TEST_F(PostgreSql, CellsAreThoseOfTheProgram) {
    ASSERT_EQ(answer("SET timezone = 'UTC'"), "");
    for (const std::string& statement : cell_table_statements(type_name)) {
        ASSERT_EQ(query(*session, statement).error, "") << statement;
    }
    const auto ask = [&](const cell_call& call) {
        session_answer result = query(*session, fmt::format("SELECT (bifun.{})::text FROM cells{} ORDER BY n", call.host, call.filter));
        host_answer made{std::move(result.error), {}};
        for (auto& row : result.rows) {
            made.values.push_back(std::move(row[0]));
        }
        return made;
    };
    expect_equal_cells(ask, std::nullopt);
}

// NVL gives its argument back.
TEST_F(PostgreSql, ValuesComeBackAsTheyWere) {
    const char* const sources[] = {
        "SELECT round((random() * 2 - 1)::numeric * 10::numeric ^ (i % 60 - 25), (i % 77 * 7 % 36)) FROM generate_series(1, 20000) AS i "
        "WHERE i % 60 - 25 <= 37 - i % 77 * 7 % 36",
        "SELECT (9999 * 10000::numeric ^ (i - 9)) FROM generate_series(0, 16) AS i UNION SELECT 10::numeric ^ i FROM generate_series(-60, "
        "60) i",
        "SELECT date '4713-01-01 BC' + i * 7 FROM generate_series(13, 766000) AS i WHERE i % 11 = 0 AND date '4713-01-01 BC' + i * 7 NOT "
        "BETWEEN '1582-10-05' AND '1582-10-14'",
        "SELECT timestamp '1700-01-01' + i * interval '13 days 01:02:03.456789' FROM generate_series(0, 20000) AS i",
        "SELECT timestamptz '1700-01-01' + i * interval '13 days 01:02:03.456789' FROM generate_series(0, 20000) AS i",
        "SELECT time '00:00' + i * interval '0.987654 s' FROM generate_series(0, 80000) AS i UNION SELECT time '24:00'",
        "SELECT ('12:34:56.7' || to_char(i * 7 % 840, 'SG') || i * 7 % 840 / 60 || ':' || i % 60)::timetz FROM generate_series(0, 200) AS "
        "i",
        "SELECT repeat('tä', i) || repeat(' ', i % 5) FROM generate_series(0, 3000, 7) AS i",
        "SELECT decode(md5(i::text), 'hex') FROM generate_series(0, 100) AS i",
        "SELECT (random() * 1e300 - 5e299)::float8 FROM generate_series(0, 100) AS i UNION SELECT 'NaN' UNION SELECT '-Infinity'",
    };
    for (const char* zone : {"UTC", "America/New_York", "Australia/Lord_Howe"}) {
        EXPECT_EQ(answer(fmt::format("SET timezone = '{}'", zone)), "");
        for (const char* source : sources) {
            EXPECT_EQ(
                answer(fmt::format(
                    "SELECT count(*) > 10, count(*), min(x::text) FROM ({}) AS t(x) WHERE bifun.nvl(x, x) IS DISTINCT FROM x", source)),
                "f 0 NULL")
                << zone << " " << source;
        }
    }
}

TEST_F(PostgreSql, ClocksAreThoseOfTheSession) {
    for (const char* zone : {"America/New_York", "Asia/Kathmandu", "Australia/Lord_Howe", "Europe/Dublin"}) {
        EXPECT_EQ(answer(fmt::format("SET timezone = '{}'", zone)), "");
        EXPECT_EQ(
            answer("SELECT count(*) FROM generate_series(timestamptz '1930-01-01', '2040-01-01', '37:11:13') AS t WHERE bifun.to_char(t, "
                   "'YYYY-MM-DD HH24:MI:SS') IS DISTINCT FROM to_char(t, 'YYYY-MM-DD HH24:MI:SS') OR bifun.hour(t) <> extract(hour "
                   "FROM t) OR (t > '1970-01-02' AND (bifun.from_unixtime(extract(epoch FROM t)::bigint) <> date_trunc('second', "
                   "t::timestamp) OR bifun.unix_timestamp(t::timestamp) <> floor(extract(epoch FROM t::timestamp::timestamptz))))"),
            "0")
            << zone;
    }
    EXPECT_EQ(answer("SET timezone = 'Europe/London'; SELECT bifun.to_char(timestamptz '1840-01-01 12:00:00+00', 'HH24:MI:SS TZH:TZM')"),
              "11:59:00 -00:01");
}

TEST_F(PostgreSql, SettingsHoldForTheSession) {
    EXPECT_EQ(answer("SET bifun.date_format = 'DD.MM.YYYY'; SELECT bifun.to_char(date '2024-02-29'), bifun.to_date('01.03.2024')"),
              "29.02.2024 2024-03-01");
    EXPECT_EQ(answer("SET bifun.date_language = chinese; SELECT bifun.to_char(date '2024-02-29', 'MONTH')"), "2月 ");
    EXPECT_EQ(answer("RESET ALL; SELECT bifun.to_char(date '2024-02-29'), bifun.length(''), bifun.instr('aXbx', 'x')"),
              "2024-02-29 NULL 4");
    EXPECT_EQ(answer("SET bifun.compatible_mode = 3; SET bifun.case_sensitive = off; SELECT bifun.length(''), bifun.instr('aXbx', 'x')"),
              "0 2");
    const session_pointer other = open_session("", "-c bifun.compatible_mode=3");
    EXPECT_EQ(query(*other, "SELECT bifun.length('')").rows, session_answer({"", {{"0"}}}).rows);
    EXPECT_EQ(answer("ALTER DATABASE postgres SET bifun.compatible_mode = 3"), "");
    EXPECT_EQ(query(*open_session(), "SELECT bifun.length('')").rows, session_answer({"", {{"0"}}}).rows);
    EXPECT_EQ(answer("ALTER DATABASE postgres RESET bifun.compatible_mode"), "");
    EXPECT_EQ(answer("CREATE ROLE plain; GRANT USAGE ON SCHEMA bifun TO plain"), "");
    EXPECT_EQ(answer("SET ROLE plain; SET bifun.compatible_mode = 2").substr(0, 5), "42501");
    // Before the module is there, anybody may set what it does not take then.
    const session_pointer early = open_session();
    EXPECT_EQ(query(*early, "SET ROLE plain; SET bifun.compatible_mode = 3").error, "");
    EXPECT_EQ(query(*early, "SELECT bifun.length('')").rows, session_answer({"", {{std::nullopt}}}).rows);
}

TEST_F(PostgreSql, WorkersShareAPlan) {
    ASSERT_EQ(answer("CREATE TABLE many AS SELECT i, 'row ' || i AS s FROM generate_series(1, 200000) AS i; ANALYZE many; SET "
                     "max_parallel_workers_per_gather = 2; SET parallel_setup_cost = 0; SET min_parallel_table_scan_size = 0; SET "
                     "parallel_tuple_cost = 0"),
              "");
    const std::string sum = "SELECT sum(bifun.length(bifun.rtrim(s, '0')) + bifun.mod(i, 7)) FROM many";
    EXPECT_NE(answer("EXPLAIN " + sum).find("Gather"), std::string::npos);
    const std::string parallel = answer("SET bifun.compatible_mode = 3; " + sum);
    EXPECT_EQ(answer("SET max_parallel_workers_per_gather = 0; " + sum), parallel);
    EXPECT_EQ(answer("DROP TABLE many; SELECT bifun.length('')"), "0");
}

TEST_F(PostgreSql, AStatementEndsWhenItIsTold) {
    EXPECT_EQ(answer("SET statement_timeout = 300; SELECT sum(bifun.lengthb(bifun.repeat('x', 1000))) FROM (SELECT generate_series(1, "
                     "1000000000)) AS t"),
              "57014 canceling statement due to statement timeout");
    EXPECT_EQ(answer("SET statement_timeout = 0; SELECT bifun.length(bifun.repeat('x', 1000))"), "1000");
}

// What the server's process has in memory, in kB.
long memory_of(const std::string& process) {
    std::ifstream status("/proc/" + process + "/status");
    for (std::string word; status >> word;) {
        if (word == "VmRSS:") {
            long size = 0;
            status >> size;
            return size;
        }
    }
    return -1;
}

TEST_F(PostgreSql, TenMillionRowsLeaveNothingBehind) {
    const std::string process = answer("SET jit = off; SELECT pg_backend_pid()");
    const auto run = [&](int rows) {
        return answer(
            fmt::format("SELECT count(bifun.rtrim(bifun.concat('row ', i::text, '   '))), max(bifun.round(i / 7.0, 2)), "
                        "count(bifun.add_months(date '2024-01-31', i % 100)), count(bifun.to_char(i, '999,999,999')) FROM (SELECT "
                        "generate_series(1, {})) AS t(i)",
                        rows));
    };
    EXPECT_EQ(run(100'000), "100000 14285.71 100000 100000");
    const long before = memory_of(process);
    EXPECT_EQ(run(10'000'000), "10000000 1428571.43 10000000 10000000");
    EXPECT_LT(memory_of(process), before + 1024);
    // Sites are made and gone with their queries.
    EXPECT_EQ(answer("DO $$ BEGIN FOR i IN 1..20000 LOOP EXECUTE 'SELECT bifun.lpad(''x'', ' || i % 7 || ', ''ab'')'; END LOOP; END $$"),
              "");
    EXPECT_LT(memory_of(process), before + 4096);
}

TEST_F(PostgreSql, ManySessionsAtOnce) {
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int k = 1; k <= 8; ++k) {
        threads.emplace_back([k, &right] {
            const session_pointer own = open_session("", fmt::format("-c bifun.compatible_mode={}", k % 3 + 1));
            for (int round = 0; round < 50; ++round) {
                const session_answer made =
                    query(*own, fmt::format("SELECT sum(bifun.length(bifun.lpad('x', {}, 'y'))), bifun.length('') FROM "
                                            "generate_series(1, 100)",
                                            k));
                const bool is_right =
                    made.rows.size() == 1 && made.rows[0][0] == std::to_string(100 * k) && made.rows[0][1].has_value() == (k % 3 == 2);
                right += is_right ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(right, 400);
}

TEST_F(PostgreSql, TheDatabaseDecidesTheCharacterSet) {
    EXPECT_EQ(answer("CREATE DATABASE korean ENCODING 'EUC_KR' LOCALE 'C' TEMPLATE template0"), "");
    EXPECT_EQ(answer("CREATE DATABASE western ENCODING 'LATIN1' LOCALE 'C' TEMPLATE template0"), "");
    const session_pointer korean = open_session("korean", "-c client_encoding=UTF8");
    EXPECT_EQ(query(*korean, "CREATE EXTENSION bifun").error, "");
    EXPECT_EQ(query(*korean, "SELECT bifun.length('한글'), bifun.lengthb('한글'), bifun.substr('한글x', 2)").rows,
              (session_answer{"", {{"2", "4", "글x"}}}).rows);
    const session_pointer western = open_session("western");
    EXPECT_EQ(query(*western, "CREATE EXTENSION bifun").error, "0A000 bifun does not have the database's encoding, LATIN1");
}

// From a version with few functions, two of which this one has not and one of which gave another result.
TEST_F(PostgreSql, AnOlderVersionIsBroughtUpToDate) {
    const std::string scripts = std::getenv("BIFUN_EXTENSION_SCRIPTS");
    std::ofstream(scripts + "/bifun--0.0.sql")
        << "CREATE FUNCTION @extschema@.ln(float8) RETURNS float8 LANGUAGE C STRICT AS 'MODULE_PATHNAME', 'bifun_call';"
           "CREATE FUNCTION @extschema@.old(float8) RETURNS text LANGUAGE C AS 'MODULE_PATHNAME', 'bifun_call';"
           "CREATE FUNCTION @extschema@.sin(float8) RETURNS text LANGUAGE C AS 'MODULE_PATHNAME', 'bifun_call';"
           "CREATE FUNCTION @extschema@.cos(int) RETURNS text LANGUAGE C AS 'MODULE_PATHNAME', 'bifun_call';";
    ASSERT_EQ(std::system(fmt::format("'{}' --update > '{}/bifun--0.0--0.1.sql'", BIFUN_SCRIPT_PROGRAM, scripts).c_str()), 0);
    ASSERT_EQ(answer("CREATE DATABASE older"), "");
    const session_pointer older = open_session("older");
    EXPECT_EQ(query(*older, "CREATE EXTENSION bifun VERSION '0.0'; ALTER EXTENSION bifun UPDATE").error, "");
    const std::string count =
        "SELECT count(*) FROM pg_depend WHERE deptype = 'e' AND refobjid = (SELECT oid FROM pg_extension WHERE extname = 'bifun')";
    EXPECT_EQ(query(*older, count).rows[0][0], std::to_string(std::stoi(answer(count)) + 2));
    for (const char* function : {"old", "cos"}) {
        EXPECT_EQ(query(*older, fmt::format("SELECT bifun.{}(1)", function)).error,
                  fmt::format(
                      "22023 this version of bifun has no function {} with these arguments and this result / ALTER EXTENSION bifun UPDATE "
                      "declares those that it has",
                      function));
    }
    EXPECT_EQ(query(*older, "SELECT bifun.ln(1), bifun.sin(0::float8), bifun.trim(' x ')").rows,
              (session_answer{"", {{"0", "0", "x"}}}).rows);
}

} // namespace
} // namespace bifun::test
