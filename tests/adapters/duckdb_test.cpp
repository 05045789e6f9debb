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

const char* type_name(sql_type type) {
    switch (type) {
    case sql_type::decimal:
        return "DECIMAL(38,10)";
    default:
        return binding::sql_type_name(type).data(); // literals
    }
}

TEST_P(DuckDb, CellsAreThoseOfTheProgram) {
    std::string definition;
    for (const cell_column& column : cell_columns()) {
        definition += fmt::format(", {} {}", column.name, type_name(column.type));
    }
    ASSERT_EQ(answer(fmt::format("CREATE TABLE cells(n INT{})", definition)), "");
    for (std::size_t row = 0; row < cell_columns().front().values.size(); ++row) {
        std::string values;
        for (const cell_column& column : cell_columns()) {
            values += column.values[row] ? fmt::format(", CAST('{}' AS {})", *column.values[row], type_name(column.type)) : ", NULL";
        }
        ASSERT_EQ(answer(fmt::format("INSERT INTO cells VALUES ({}{})", row, values)), "1");
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

} // namespace
} // namespace bifun::test
