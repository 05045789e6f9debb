// SPDX-License-Identifier: Apache-2.0
// The fields of a file as values of the types of its columns.
#ifndef BIFUN_HOST_TABLES_FIELD_VALUE_H
#define BIFUN_HOST_TABLES_FIELD_VALUE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "embedded/columns/column_storage.h"
#include "host/session/settings.h"
#include "host/values/interval_text.h"
#include "host/values/sql_type.h"

namespace host {

// The type of a table's column. CHAR(n) is a VARCHAR whose values are padded to n characters. `fields` are those of an interval's text.
struct column_type {
    sql_type type = sql_type::varchar;
    std::optional<std::uint32_t> characters{};
    interval_qualifier fields{};
};

std::string column_type_name(const column_type& type);

// The type with that name, as in --types: CHAR(10), DATE; nothing where there is none.
std::optional<column_type> find_column_type(std::string_view name);
constexpr std::string_view column_type_names = "INT, BIGINT, DECIMAL, DOUBLE, DATE, TIME and TIMESTAMP (or DATETIME), these two also WITH "
                                               "TIME ZONE, INTERVAL with its fields (such as "
                                               "INTERVAL DAY TO SECOND), CHAR(n) and VARCHAR";

enum class field_fault : std::uint8_t { none, not_of_type, too_many_digits, too_long, invalid_text, out_of_memory };

// Stores a field that is not NULL as row `row` of a column of its type.
field_fault store_field(const column_type& type, const session_settings& settings, std::string_view text, zqengine::column_storage& column,
                        std::uint32_t row);

} // namespace host

#endif
