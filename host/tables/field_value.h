// SPDX-License-Identifier: Apache-2.0
// The fields of a file as values of the types of its columns.
#ifndef BIFUN_HOST_TABLES_FIELD_VALUE_H
#define BIFUN_HOST_TABLES_FIELD_VALUE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "embedded/columns/column_storage.h"
#include "engine/date_format.h"
#include "host/session/settings.h"
#include "host/tables/csv_file.h"
#include "host/tables/type_inference.h"
#include "host/values/interval_text.h"
#include "host/values/sql_type.h"

namespace host {

// The type of a table's column, with the width that its values must not exceed. No value is cut or rounded to it.
struct column_type {
    sql_type type = sql_type::varchar;
    std::optional<std::uint32_t> characters{};      // VARCHAR(n), and CHAR(n)
    bool is_padded = false;                         // CHAR(n): to n characters
    std::optional<decimal_shape> shape{};           // DECIMAL(p, s); values get zeros up to s digits behind the point
    std::optional<std::int32_t> largest{};          // SMALLINT and TINYINT, of type INT
    std::optional<std::uint32_t> fraction_digits{}; // TIMESTAMP(n)
    interval_qualifier fields{};                    // of an interval's text
    std::string format{};                           // DATE 'DD.MM.YYYY': the format model of the text, empty for none
};

std::string column_type_name(const column_type& type);

// The type with that name, as in --types: CHAR(10), DATE; nothing where there is none.
std::optional<column_type> find_column_type(std::string_view name);
constexpr std::string_view column_type_names =
    "BOOL, TINYINT, SMALLINT, INT, BIGINT, DECIMAL or NUMERIC, also (p, s), DOUBLE, DATE, TIME and "
    "TIMESTAMP (or DATETIME), these two also (n) and WITH TIME ZONE, INTERVAL with its fields "
    "(such as INTERVAL DAY TO SECOND), CHAR(n), VARCHAR(n), and VARCHAR or TEXT; DATE, TIME and TIMESTAMP also with "
    "a format, as in DATE 'DD.MM.YYYY'";

enum class field_fault : std::uint8_t { none, not_of_type, not_as_sampled, too_many_digits, too_wide, invalid_text, out_of_memory };

// How the fields of a column are stored.
struct field_storing {
    column_type type;
    // What a part of the file has shown, where the type comes from there: a field that with these would have given another type is a fault.
    std::optional<field_kinds> sampled;
    const session_settings& settings;
    const dfm_model* format = nullptr;  // of the type's format
    std::optional<char> decimal_mark{}; // as in file_options
};

// Stores a text, which is no NULL, as row `row`. `is_ascii` may be false of ASCII, too.
field_fault store_field(const field_storing& storing, std::string_view text, bool is_ascii, zqengine::column_storage& column,
                        std::uint32_t row);

// Stores the fields of one column of rows just read as the rows from `first_row` on. Returns the number of rows stored: less than those
// given where the field behind them has a fault.
std::size_t store_fields(const field_storing& storing, csv_reader& reader, std::span<const std::uint32_t> rows, std::size_t column,
                         zqengine::column_storage& values, std::uint32_t first_row, field_fault& fault);

} // namespace host

#endif
