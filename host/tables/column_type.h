// SPDX-License-Identifier: Apache-2.0
// The types of a table's columns, as --types names them.
#ifndef BIFUN_HOST_TABLES_COLUMN_TYPE_H
#define BIFUN_HOST_TABLES_COLUMN_TYPE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

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
    "TIMESTAMP (or DATETIME), these two also (n), for 0 to 6 digits of a second, and WITH TIME ZONE, INTERVAL with its fields "
    "(such as INTERVAL DAY TO SECOND), CHAR(n), VARCHAR(n), and VARCHAR or TEXT; DATE, TIME and TIMESTAMP also with "
    "a format, as in DATE 'DD.MM.YYYY'";

} // namespace host

#endif
