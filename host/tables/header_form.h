// SPDX-License-Identifier: Apache-2.0
// Whether the first line of a file is one of its rows rather than the names of its columns.
#ifndef BIFUN_HOST_TABLES_HEADER_FORM_H
#define BIFUN_HOST_TABLES_HEADER_FORM_H

#include <cstdint>
#include <string_view>
#include <vector>

namespace host {

// What a field is to a header, however it is written: 1.234,56 and 10% are numbers, 31.12.2024 and 10:30 are dates.
enum class value_form : std::uint8_t { empty, text, whole_number, year, number, date };

value_form value_form_of(std::string_view field);

// Whether a field is a number or a date.
inline bool is_value(value_form form) { return form > value_form::text; }

// The name of a column, with what all its fields are that have been looked at: empty ones do not count, and numbers of several forms are
// numbers.
struct column_form {
    std::string_view name;
    value_form values = value_form::empty;
};

// Takes one more field of the column into account.
void include_field(column_form& column, std::string_view field);

// Whether names are such as stand below them, and none is a word above numbers or dates. Years and dates above other numbers, and numbers
// that count the last columns, are names: a table may have a column for each.
bool seems_row(const std::vector<column_form>& columns);

} // namespace host

#endif
