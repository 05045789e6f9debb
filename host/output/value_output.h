// SPDX-License-Identifier: Apache-2.0
// Values and texts as the output formats write them, each appended to `out`.
#ifndef BIFUN_HOST_OUTPUT_VALUE_OUTPUT_H
#define BIFUN_HOST_OUTPUT_VALUE_OUTPUT_H

#include <cstdint>
#include <string>
#include <string_view>

#include "bop/frame/contract.h"
#include "host/values/sql_type.h"

namespace host {

// The value in a row of the values behind a column.
template <class T> const T& value_at(const bifun_column& column, std::uint32_t row) {
    return static_cast<const T*>(column.data->values)[row];
}

// The value of a row that is not NULL and no text, as zqengine::write_value writes it; a binary one in hexadecimal digits.
void append_value(std::string& out, const bifun_column& column, sql_type type, std::uint32_t row);

// A field of a CSV or TSV file, in quotes where it needs them; an empty one is "", for one without quotes is NULL.
void append_delimited_text(std::string& out, std::string_view stored, std::size_t trailing_blanks, char delimiter);

// With quotes, from UTF-8.
void append_json_text(std::string& out, std::string_view text);

// A cell of a Markdown table, from text without control characters: it is shown as it is, whatever Markdown or HTML makes of its bytes.
void append_markdown_text(std::string& out, std::string_view text);

// Characters that would move the cursor or command the terminal, written so that they do not.
std::string without_control_characters(std::string text);

} // namespace host

#endif
