// SPDX-License-Identifier: Apache-2.0
// One table and a list of calls over it, as the program writes them and as hosts do, whose results have to be equal cell by cell.
#ifndef BIFUN_TESTS_ADAPTERS_EQUAL_CELLS_H
#define BIFUN_TESTS_ADAPTERS_EQUAL_CELLS_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/binding/signature.h"

namespace bifun::test {

using cell = std::optional<std::string>;

struct cell_column {
    std::string name;
    binding::sql_type type;
    std::vector<cell> values;
};

// Some columns of every type that a file can have, of the same number of rows.
const std::vector<cell_column>& cell_columns();

// How a host writes a call; `arguments` are its expressions.
struct cell_call {
    std::string program; // the query for the program, over the table `cells`
    std::string host;    // the call as NAME(arguments), without a prefix to the name
    std::string filter;  // WHERE ..., or empty
    binding::sql_type result;
};

// Every signature that the program and hosts have in common, each with some constants.
std::vector<cell_call> cell_calls();

// The statements by which a host makes the table `cells` with all columns and a row number `n`, in a database that has none.
std::vector<std::string> cell_table_statements(const std::function<std::string_view(binding::sql_type)>& type_name);

// What a host gives for a query.
struct host_answer {
    std::string error; // empty where it succeeded
    std::vector<cell> values;
};

// Runs all calls by the program and by the host, and expects the same values, or the same status of the library. `ask` runs "SELECT call
// FROM cells filter", with the row number in column `n` to sort by. `fraction_digits` is what decimals of the host have behind the point,
// if that is limited.
void expect_equal_cells(const std::function<host_answer(const cell_call& call)>& ask, std::optional<int> fraction_digits);

} // namespace bifun::test

#endif
