// SPDX-License-Identifier: Apache-2.0
// The fields of a file as values of the types of its columns.
#ifndef BIFUN_HOST_TABLES_FIELD_VALUE_H
#define BIFUN_HOST_TABLES_FIELD_VALUE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "embedded/columns/column_storage.h"
#include "engine/date_format.h"
#include "host/session/settings.h"
#include "host/tables/column_type.h"
#include "host/tables/csv_file.h"
#include "host/tables/type_inference.h"

namespace host {

enum class field_fault : std::uint8_t {
    none,
    not_of_type,
    not_as_sampled,
    too_many_digits,
    short_year,
    too_wide,
    invalid_text,
    out_of_memory
};

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
