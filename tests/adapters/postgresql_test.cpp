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

struct statement_case {
    const char* sql;
    const char* answer;
};

// What PostgreSQL can have and the library cannot, or the other way round, and what the library refuses.
TEST_F(PostgreSql, ErrorsHaveStateMessageAndDetail) {
    const statement_case cases[] = {
        {"SELECT bifun.ln(-1)", "22023 LN: -6803 an argument is outside the function's domain / LN(-1)"},
        {"SELECT bifun.ln(x) FROM (VALUES (1), (-1)) AS t(x)", "22023 LN: -6803 an argument is outside the function's domain / LN(-1)"},
        {"SELECT bifun.abs((-9223372036854775807)::bigint - 1)", "22003 ABS: -6102 numeric overflow / ABS(-9223372036854775808)"},
        {"SELECT bifun.round('NaN'::numeric)", "22003 ROUND: NaN is no decimal"},
        {"SELECT bifun.round('-Infinity'::numeric)", "22003 ROUND: infinity is no decimal"},
        {"SELECT bifun.round(10::numeric ^ 400)", "22003 ROUND: the number is beyond the largest decimal"},
        {"SELECT bifun.year(date '-infinity')", "22008 YEAR: infinity is no date"},
        {"SELECT bifun.year(timestamptz 'infinity')", "22008 YEAR: infinity is no timestamp"},
        {"SELECT bifun.day(date '1582-10-10')",
         "22008 DAY: there is no such date: they are from -4712-01-01 to 9999-12-31, and 1582-10-15 follows 1582-10-04"},
        {"SELECT bifun.year(timestamp '294276-12-31')",
         "22008 YEAR: there is no such date: they are from -4712-01-01 to 9999-12-31, and 1582-10-15 follows 1582-10-04"},
        {"SELECT bifun.last_day(date '1500-02-01')", "22008 LAST_DAY: the result is 29 February of a year that has none by the Gregorian "
                                                     "calendar, which PostgreSQL goes by before 1582, "
                                                     "too"},
        {"SELECT bifun.sec_to_time(86401)",
         "22008 SEC_TO_TIME: the result is a time of more than 24 hours, which PostgreSQL does not have"},
        {"SELECT bifun.hour(timetz '12:00+15')", "22009 HOUR: the zone of a time is not one of whole minutes from -14:00 to +14:00"},
        {"SELECT bifun.extract('century', date '2024-01-01')", "22023 EXTRACT has no field 'century'; there are YEAR, MONTH, DAY, HOUR, "
                                                               "MINUTE, SECOND, MICROSECOND, TIMEZONE_HOUR, TIMEZONE_MINUTE"},
        {"SELECT bifun.extract('hour', date '2024-01-01')",
         "22023 EXTRACT: DATE has no field hour; it has YEAR, MONTH, DAY / EXTRACT('hour', 2024-01-01)"},
        {"SELECT bifun.date_add(date '2024-01-31', interval '1 month 1 day')",
         "22023 DATE_ADD: an interval is of years and months, or of days and time / DATE_ADD(2024-01-31, INTERVAL '1 months 1 days 0 "
         "microseconds')"},
        {"SELECT bifun.next_day(date '2024-01-31', 'x')", "22007 NEXT_DAY: -6145 unknown day name / NEXT_DAY(2024-01-31, 'x')"},
        {"SELECT bifun.trim('both', 'a', 'xy')", "22027 TRIM: -6109 the trim set is not exactly one character / TRIM('both', 'a', 'xy')"},
        {"SELECT bifun.trim(1)", "42883 function bifun.trim(integer) does not exist"},
        {"SET bifun.date_format = 'foo'", "22023 invalid value for parameter \"bifun.date_format\": \"foo\" / formats have no such "
                                          "element; text stands in double quotes, at byte 1."},
    };
    for (const statement_case& tried : cases) {
        EXPECT_EQ(answer(tried.sql), tried.answer) << tried.sql;
        EXPECT_EQ(answer("SELECT bifun.length('abc')"), "3") << tried.sql;
    }
}

TEST_F(PostgreSql, TypesDecideAsInTheProgram) {
    const statement_case cases[] = {
        {"SELECT bifun.length('ab  '::char(5)), bifun.length('ab'::varchar), bifun.concat('a '::char(3), 'b', 'c'::char(2))", "5 2 a  bc "},
        {"SELECT pg_typeof(bifun.abs(1::smallint)), pg_typeof(bifun.abs(1)), pg_typeof(bifun.abs(1.0)), pg_typeof(bifun.abs(1::real))",
         "bigint bigint numeric double precision"},
        {"SELECT pg_typeof(bifun.floor(1::bigint)), pg_typeof(bifun.round(1, 1)), pg_typeof(bifun.nvl(1, 2.5)), pg_typeof(bifun.nvl(1, "
         "2::bigint))",
         "numeric numeric numeric bigint"},
        {"SELECT bifun.greatest(1, 2, 3, 4, 5, 6, 7, 8), bifun.least(2, 1.5::float8), bifun.concat('a', 'b', 'c', NULL, 'd')",
         "8 1.5 abcd"},
        {"SELECT bifun.nvl(1.50, 0), bifun.abs(-0.00), bifun.abs(-100.000), bifun.abs(-12345678901234567890.1234567890)",
         "1.50 0.00 100.000 12345678901234567890.1234567890"},
        {"SELECT bifun.char_length('abc'), bifun.substring('abc', 2), bifun.octet_length('é')", "3 bc 2"},
        {"SELECT bifun.nvl(NULL, '\\x00ff'::bytea), bifun.greatest(interval '1 day', '25:00'), bifun.date_add(timestamp '2024-01-31', '1 "
         "month')",
         "\\x00ff 25:00:00 2024-02-29 00:00:00"},
        {"SELECT bifun.if(NULL, 'a', 'b'), bifun.lnnvl(NULL), bifun.extract(NULL, date '2024-01-01'), bifun.trim('both', NULL, 'a')",
         "b t NULL NULL"},
        {"SELECT count(*) FROM pg_proc WHERE pronamespace = 'bifun'::regnamespace AND (obj_description(oid, 'pg_proc') IS NULL OR "
         "(provolatile = 'i' AND (1184 = ANY (proargtypes) OR prorettype = 1184)))",
         "0"},
        {"SELECT proisstrict, provolatile, proparallel FROM pg_proc WHERE oid IN ('bifun.ln(float8)'::regprocedure, "
         "'bifun.nvl(int, int)'::regprocedure, 'bifun.rand(float8)'::regprocedure, 'bifun.to_char(date)'::regprocedure) ORDER BY proname",
         "t i s / f i s / t v r / f s s"},
    };
    for (const statement_case& tried : cases) {
        EXPECT_EQ(answer(tried.sql), tried.answer) << tried.sql;
    }
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

// A site of a call is evaluated again and again: with other parameters, in a loop, in a generic plan, in an index.
TEST_F(PostgreSql, CallsAreEvaluatedAnewForEveryRow) {
    const statement_case cases[] = {
        {"SET plan_cache_mode = force_generic_plan; PREPARE p(text, int) AS SELECT bifun.trim($1), bifun.lpad('7', $2, '0'); EXECUTE p(' a "
         "', 2)",
         "a 07"},
        {"EXECUTE p('b', 3)", "b 007"},
        {"CREATE FUNCTION pg_temp.joined() RETURNS text LANGUAGE plpgsql AS $$ DECLARE r text := ''; BEGIN FOR i IN 1..3 LOOP r := "
         "bifun.concat(r, "
         "bifun.dateadd(CASE i WHEN 1 THEN 'year' ELSE 'day' END, i, date '2024-01-01')::date::text); END LOOP; RETURN r; END $$; SELECT "
         "pg_temp.joined()",
         "2025-01-012024-01-032024-01-04"},
        {"CREATE TEMP TABLE t AS SELECT i, lpad(i::text, 1 + i % 9, '*') AS s FROM generate_series(1, 3000) AS i; CREATE INDEX ON t "
         "(bifun.trim('both', s, '*')); ANALYZE t; SET enable_seqscan = off; SELECT i FROM t WHERE bifun.trim('both', s, '*') = '2996'",
         "2996"},
        {"SELECT string_agg(bifun.to_char(d, f), ' ') FROM (VALUES (date '2024-02-29', 'YYYY'), ('2024-02-29', 'MM'), (NULL, 'DD'), "
         "('2024-03-01', 'MM')) AS v(d, f)",
         "2024 02 03"},
    };
    for (const statement_case& tried : cases) {
        EXPECT_EQ(answer(tried.sql), tried.answer) << tried.sql;
    }
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

// From a version with few functions, two of which this one has not.
TEST_F(PostgreSql, AnOlderVersionIsBroughtUpToDate) {
    const std::string scripts = std::getenv("BIFUN_EXTENSION_SCRIPTS");
    std::ofstream(scripts + "/bifun--0.0.sql")
        << "CREATE FUNCTION @extschema@.ln(float8) RETURNS float8 LANGUAGE C STRICT AS 'MODULE_PATHNAME', 'bifun_call';"
           "CREATE FUNCTION @extschema@.old(float8) RETURNS text LANGUAGE C AS 'MODULE_PATHNAME', 'bifun_call';"
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
    EXPECT_EQ(query(*older, "SELECT bifun.ln(1), bifun.trim(' x ')").rows, (session_answer{"", {{"0", "x"}}}).rows);
}

} // namespace
} // namespace bifun::test
