// SPDX-License-Identifier: Apache-2.0
// The extension in DuckDB, an old and a new version of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <thread>

#include <fmt/format.h>

#include "tests/adapters/duckdb_database.h"
#include "tests/adapters/equal_cells.h"

namespace bifun::test {
namespace {

using binding::sql_type;

struct duckdb_version {
    const char* name;
    const char* platform; // for which that build loads extensions
    bool has_settings;
};
constexpr duckdb_version versions[] = {{"1.2.2", "linux_amd64_gcc4", false}, {"1.5.6", "linux_amd64", true}};

class DuckDb : public testing::TestWithParam<duckdb_version> {
  protected:
    void SetUp() override {
        const std::string library = fmt::format("{}/{}/libduckdb.so", BIFUN_DUCKDB_LIBRARIES, GetParam().name);
        ASSERT_TRUE(std::filesystem::exists(library)) << "tools/fetch-duckdb gets it";
        database = open_duckdb(library);
        const query_result loaded =
            query(*database, fmt::format("LOAD '{}/{}/bifun.duckdb_extension'", BIFUN_DUCKDB_EXTENSIONS, GetParam().platform));
        ASSERT_EQ(loaded.error, "");
    }

    // The cells of a query, rows with blanks and lines with " / " between, or the error.
    std::string answer(const std::string& sql, std::size_t connection = 0) {
        const query_result result = query(*database, sql, connection);
        std::string text = result.error;
        for (const auto& row : result.rows) {
            text += text.empty() ? "" : " / ";
            for (std::size_t i = 0; i < row.size(); ++i) {
                text += fmt::format("{}{}", i == 0 ? "" : " ", row[i].value_or("NULL"));
            }
        }
        return text;
    }

    duckdb_pointer database;
};
INSTANTIATE_TEST_SUITE_P(Versions, DuckDb, testing::ValuesIn(versions), [](const auto& version) {
    std::string name = version.param.name;
    std::ranges::replace(name, '.', '_');
    return name;
});

std::string_view type_name(sql_type type) { return type == sql_type::decimal ? "DECIMAL(38,10)" : binding::sql_type_name(type); }

TEST_P(DuckDb, CellsAreThoseOfTheProgram) {
    for (const std::string& statement : cell_table_statements(type_name)) {
        ASSERT_EQ(query(*database, statement).error, "") << statement;
    }
    const auto ask = [&](const cell_call& call) {
        query_result result = query(*database, fmt::format("SELECT (bifun_{})::VARCHAR FROM cells{} ORDER BY n", call.host, call.filter));
        host_answer made{std::move(result.error), {}};
        for (auto& row : result.rows) {
            made.values.push_back(std::move(row[0]));
        }
        return made;
    };
    constexpr int fraction_digits = 10;
    expect_equal_cells(ask, fraction_digits);
}

TEST_P(DuckDb, WhatStandsForOneConstantElsewhereMayVary) {
    EXPECT_EQ(answer("SELECT bifun_extract(f, TIMESTAMP '2024-05-06 01:02:03.5'), bifun_lpad('x', n, p) "
                     "FROM (VALUES ('year', 3, '*'), ('second', 2, 'ab'), (NULL, 1, '*'), ('YEAR', 3, NULL)) t(f, n, p)"),
              "2024.0 **x / 3.5 ax / NULL x / 2024.0 NULL");
    EXPECT_EQ(
        answer("SELECT sum(bifun_length(bifun_rpad('x', (i % 300)::INT))), count(bifun_date_add(DATE '2024-01-31', to_months(i::INT % 7))) "
               "FROM range(5000) t(i)"),
        "737500 5000");
    EXPECT_EQ(
        answer(
            "SELECT bifun_greatest(3, 1, x, 7), bifun_concat('a', NULL, x::VARCHAR, 'a text longer than twelve') FROM range(8, 10) t(x)"),
        "8 a8a text longer than twelve / 9 a9a text longer than twelve");
    EXPECT_EQ(answer("SELECT bifun_greatest(INTERVAL 3 DAY, INTERVAL 90 HOUR), bifun_numtoyminterval(14, 'MONTH'), "
                     "bifun_numtodsinterval(-1.5, 'DAY'), "
                     "bifun_nvl(NULL::BLOB, '\\xFF\\x00'::BLOB)"),
              "90:00:00 1 year 2 months -1 day -12:00:00 \\xFF\\x00");
}

// Decimals of any width are taken as they are, and what is no decimal goes where DuckDB would have converted it to.
TEST_P(DuckDb, NumbersOfAnyTypeAreTaken) {
    const std::pair<const char*, const char*> cases[] = {
        {"-1.5::DECIMAL(4, 1)", "1.5 DECIMAL"},
        {"-12345.67::DECIMAL(9, 2)", "12345.67 DECIMAL"},
        {"-1234567890123.45::DECIMAL(18, 2)", "1234567890123.45 DECIMAL"},
        {"-12345678901234567890.5::DECIMAL(38, 5)", "12345678901234567890.5 DECIMAL"},
        {"-99999999999999999999999999999999999999::DECIMAL(38, 0)", "more than 28 digits"},
        {"-5", "5 BIGINT"},
        {"-5::TINYINT", "5 BIGINT"},
        {"5::USMALLINT", "5 BIGINT"},
        {"4294967295::UINTEGER", "4294967295 BIGINT"},
        {"-9999999999", "9999999999 BIGINT"},
        {"18446744073709551615::UBIGINT", "1.8446744073709552E+19 DOUBLE"},
        {"-170141183460469231731687303715884105727::HUGEINT", "1.7014118346046923E+38 DOUBLE"},
        {"-2.5::FLOAT", "2.5 DOUBLE"},
        {"NULL", "NULL DECIMAL"},
        {"TIMESTAMP_S '2024-05-06 07:08:09'", "no function for an argument of this type"},
        {"'x'::VARCHAR", "no function for an argument of this type"},
    };
    for (const auto& [argument, expected] : cases) {
        const std::string sql =
            fmt::format("SELECT bifun_to_char(a), regexp_extract(typeof(a), '[A-Z]+') FROM (SELECT bifun_abs({}) a)", argument);
        EXPECT_NE(answer(sql).find(expected), std::string::npos) << argument << ": " << answer(sql);
    }
    EXPECT_EQ(answer("SELECT bifun_trunc(TIMESTAMP_S '2024-05-06 07:08:09', 'MM'), bifun_trunc(TIMESTAMP_MS '1969-12-31 23:59:59.999'), "
                     "bifun_to_char(TIMESTAMP_NS '1969-12-31 23:59:59.999999999'), bifun_round(5, 1), bifun_trunc(5::SMALLINT)"),
              "2024-05-01 00:00:00 1969-12-31 00:00:00 1969-12-31 23:59:59 5.0 5");
    EXPECT_EQ(
        answer("SELECT sum(bifun_round(m, 0)), count(bifun_abs(m)) FROM (SELECT CASE WHEN i % 3 > 0 THEN (i / 10)::DECIMAL(9, 1) END m "
               "FROM range(5000) t(i))"),
        "833333.0000000000 3333");
}

TEST_P(DuckDb, ErrorsTellTheCallAndLeaveTheSessionUsable) {
    const std::pair<const char*, const char*> cases[] = {
        {"SELECT bifun_ln(3 - i) FROM range(5) t(i)", "bifun LN: -6803 an argument is outside the function's domain, in LN(0)"},
        {"SELECT bifun_trim(DATE '2024-01-01')", "No function matches"},
        {"SELECT bifun_extract('DAY', TIME '01:02:03')",
         "bifun EXTRACT: TIME has no field DAY; it has HOUR, MINUTE, SECOND, in EXTRACT('DAY', 01:02:03)"},
        {"SELECT bifun_extract('week', DATE '2024-01-01')", "bifun EXTRACT has no field 'week'; there are YEAR, MONTH"},
        {"SELECT bifun_date_add(DATE '2024-01-01', INTERVAL '1 month 1 day')", "an interval is of years and months, or of days and time"},
        {"SELECT bifun_lpad('x', 40000)", "bifun LPAD: -6108"},
        {"SELECT bifun_year(DATE '20000-01-01')", "bifun YEAR: a date is not among -4712-01-01 to 9999-12-31"},
        {"SELECT bifun_year('infinity'::DATE)", "bifun YEAR: a date is not among"},
        {"SELECT bifun_year(DATE '1582-10-10')", "one of the ten days that October 1582 lacks"},
        {"SELECT bifun_to_char(1, 'oops')", "bifun TO_CHAR: -6130 invalid number format, in TO_CHAR(1, 'oops')"},
    };
    for (const auto& [sql, message] : cases) {
        EXPECT_NE(answer(sql).find(message), std::string::npos) << answer(sql);
        EXPECT_EQ(answer("SELECT bifun_upper_bound FROM (SELECT bifun_abs(-1) AS bifun_upper_bound)"), "1");
    }
}

TEST_P(DuckDb, NoMemoryForResultsIsAnError) {
    EXPECT_EQ(answer("SET memory_limit = '20MB'"), "");
    const std::string error = answer("SELECT count(DISTINCT bifun_lpad(i::VARCHAR, 3000, 'ab')) FROM range(1000000) t(i)");
    EXPECT_NE(error.find("allocat"), std::string::npos) << error;
    EXPECT_EQ(error.find('{'), std::string::npos) << error;
    EXPECT_EQ(answer("SELECT bifun_trim(' x ')"), "x");
}

TEST_P(DuckDb, SettingsAreOfTheSession) {
    if (!GetParam().has_settings) {
        GTEST_SKIP() << "this version lets no C extension add settings";
    }
    EXPECT_EQ(answer("SET bifun_date_format = 'DD.MM.YYYY'"), "");
    EXPECT_EQ(answer("SELECT bifun_to_char(DATE '2024-02-29'), bifun_to_date('01.03.2024')"), "29.02.2024 2024-03-01");
    EXPECT_EQ(answer("SELECT bifun_to_char(DATE '2024-02-29')", 1), "2024-02-29");
    EXPECT_EQ(answer("SET bifun_time_zone = 120"), "");
    EXPECT_EQ(answer("SELECT bifun_hour(TIMESTAMPTZ '2024-02-29 12:00:00+00')"), "14");
    EXPECT_EQ(answer("SET bifun_date_format = 'DD.QX'"), "");
    EXPECT_NE(answer("SELECT bifun_to_char(DATE '2024-02-29')").find("'DD.QX' is no date format"), std::string::npos);
    EXPECT_EQ(answer("RESET bifun_date_format"), "");
    EXPECT_EQ(answer("SELECT bifun_to_char(DATE '2024-02-29')"), "2024-02-29");
}

// Trimming writes to its argument for a moment, and threads scan the same strings.
TEST_P(DuckDb, SessionsAtOnce) {
    ASSERT_EQ(answer("CREATE TABLE texts AS SELECT i, '日本語の長いテキスト ' || i || 'é' AS s FROM range(50000) t(i)"), "50000");
    const std::string sql =
        "SELECT count(*), sum(bifun_length(bifun_rtrim(s, 'é0123456789'))), max(bifun_replace(s, 'い', 'xx')) FROM texts";
    const std::string expected = answer(sql);
    EXPECT_EQ(expected.substr(0, 5), "50000");
    std::vector<std::string> answers(4);
    std::vector<std::thread> threads;
    for (std::size_t k = 0; k < answers.size(); ++k) {
        answer("SELECT 1", k + 1);
        threads.emplace_back([&, k] { answers[k] = answer(sql, k + 1); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::string& given : answers) {
        EXPECT_EQ(given, expected);
    }
}

} // namespace
} // namespace bifun::test
