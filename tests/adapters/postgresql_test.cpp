// SPDX-License-Identifier: Apache-2.0
// The extension in a PostgreSQL server, which adapters/postgresql/private-server runs.
#include <gtest/gtest.h>

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
    std::string definition;
    for (const cell_column& column : cell_columns()) {
        definition += fmt::format(", {} {}", column.name, type_name(column.type));
    }
    ASSERT_EQ(answer(fmt::format("SET timezone = 'UTC'; CREATE TEMP TABLE cells(n int{})", definition)), "");
    for (std::size_t row = 0; row < cell_columns().front().values.size(); ++row) {
        std::string values;
        for (const cell_column& column : cell_columns()) {
            values += column.values[row] ? fmt::format(", '{}'", *column.values[row]) : ", NULL";
        }
        ASSERT_EQ(answer(fmt::format("INSERT INTO cells VALUES ({}{})", row, values)), "");
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

} // namespace
} // namespace bifun::test
