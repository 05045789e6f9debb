// SPDX-License-Identifier: Apache-2.0
// Calls written as text, for tables of cases.
//
// A column is its rows, separated by blanks: `1 NULL 3`. Before them may stand its no-null flag in brackets, else 1 without and 0 with
// a NULL among the rows, and a selection vector: `[7] @2,0,0 5 6 7`. `NULL=1` is a NULL with a 1 in its value slot. A constant is one
// such row. Numbers, decimals and datetimes (2024-02-29T13:45:00, a midnight without its time) are written as usual; an interval is its
// fields, `-1/-6` or `1/2/3/4/500000`; a string is its characters, `~` for a blank that is stored, then `_` for each trailing blank; `''`
// is the empty string, `a*49` is 49 times a, and `&` joins such parts: `a*49&b`. A large object
// is its length.
#ifndef BIFUN_TESTS_CONTRACT_TEXT_CASE_H
#define BIFUN_TESTS_CONTRACT_TEXT_CASE_H

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tests/contract/called_export.h"

namespace contract {

struct text_column {
    zqengine::column_pointer column;
    std::vector<std::uint16_t> selection;
    std::uint32_t row_count;
};

text_column read_column(bifun::value_type type, std::string_view text);

// One value, which is not NULL, into a row. Flags stay as they are.
void read_value(zqengine::column_storage& column, std::uint32_t row, const std::string& text);

// The value of a row, whatever its flag.
std::string write_value(const zqengine::column_storage& column, std::uint32_t row);

// What stands between ` | `.
std::vector<std::string> parts_of(std::string_view text);

struct text_case {
    const char* symbol;
    std::vector<std::string_view> arguments;
    std::string_view result; // as `evaluate` writes it
};

// Calls the entry point and writes the result as a column, its no-null flag always, rows not written as `?`, rows that are not NULL
// but have been given no value as `=?`, and a status other than 0 behind them.
std::string evaluate(const text_case& text_case, const circumstances& circumstances = {});

// Evaluates cases, each written as `entry point | argument | ... | result`, and expects their results.
void expect_results(std::initializer_list<std::string_view> cases, const circumstances& circumstances = {});

} // namespace contract

#endif
