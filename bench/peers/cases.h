// SPDX-License-Identifier: Apache-2.0
// What is compared: the columns of the table, and the expressions over them as each engine writes them.
#ifndef BIFUN_BENCH_PEERS_CASES_H
#define BIFUN_BENCH_PEERS_CASES_H

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "bop/frame/facts.h"

namespace bifun::peers {

enum class content : std::uint8_t {
    uniform,   // numbers between the bounds; datetimes of the years between the bounds; texts with a length between the bounds
    magnitude, // numbers whose magnitude lies between the bounds, either sign
};

// A column of the table. The bounds of decimals bound the coefficient, in digits: 38 gives coefficients below 10^38; those of other forms
// than the usual one are as for value_form.
struct table_column {
    std::string_view name;
    value_type type;
    content values;
    double low;
    double high;
    bool nulls; // in one row of ten
    std::uint8_t precision = 0;
    std::uint8_t scale = 0;
    value_form form = value_form::usual;
    std::string_view letters = {}; // of texts, where they are not the usual ones
};

std::span<const table_column> table_columns();

// Throws std::runtime_error where there is no such column.
const table_column& column_named(std::string_view name);

enum class argument_source : std::uint8_t {
    column,   // `text` names it
    constant, // `text` is its value
    positive, // the condition that the column named by `text` is above 0, which the host evaluates for each batch
};

struct case_argument {
    argument_source source;
    std::string_view text;
};

// Whose results must be bifun's. Where it is not both, a comment beside the case says why.
enum class compared : std::uint8_t { both, duckdb, clickhouse, neither };

struct bench_case {
    std::string_view name;
    std::string_view duckdb;      // empty where it has no such function
    std::string_view clickhouse;  // the same
    std::string_view like_result; // a column without NULLs of the type of the result: what the baseline aggregates in its place
    const char* symbol;
    std::vector<case_argument> arguments;
    compared compared_with = compared::both;
};

std::span<const bench_case> bench_cases();

// The columns that a case reads: those of its arguments and `like_result`, each once.
std::vector<std::string_view> columns_read(const bench_case& bench_case);

} // namespace bifun::peers

#endif
