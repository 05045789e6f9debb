// SPDX-License-Identifier: Apache-2.0
// The table that every engine loads: generated once, as columns of the embedded engine.
#ifndef BIFUN_BENCH_PEERS_TABLE_H
#define BIFUN_BENCH_PEERS_TABLE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bench/peers/cases.h"
#include "embedded/columns/column_storage.h"
#include "layouts/decimal_layout.h"

namespace bifun::peers {

struct loaded_column {
    const table_column* definition;
    zqengine::column_pointer storage;
};

struct table {
    std::uint32_t row_count;
    std::vector<loaded_column> columns;
};

// Makes the named columns, each once. The value of a row depends on nothing but the column and the row.
// Throws std::runtime_error when memory is exhausted.
table make_table(const std::vector<std::string_view>& names, std::uint32_t row_count);

const loaded_column& column_of(const table& table, std::string_view name);

// A decimal without its point. For values without an exponent.
decimal_layout::int128 signed_coefficient(const xdec& value);

// Microseconds since 1970-01-01 00:00:00. For years from 1583 on.
std::int64_t unix_microseconds(const zqtime& value);

// Days since 1970-01-01, under the same condition.
std::int32_t unix_days(const zqtime& value);

// The value as an engine sees it that stores trailing blanks.
std::string text_with_blanks(const bifun_string& value);

inline bool is_date(const table_column& column) { return column.type == value_type::DATETIME && column.form == value_form::date; }

} // namespace bifun::peers

#endif
