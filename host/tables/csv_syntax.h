// SPDX-License-Identifier: Apache-2.0
// The bytes of a CSV file that are no text themselves.
#ifndef BIFUN_HOST_TABLES_CSV_SYNTAX_H
#define BIFUN_HOST_TABLES_CSV_SYNTAX_H

#include <optional>
#include <string>
#include <string_view>

namespace host {

struct csv_syntax {
    char delimiter = ',';
    std::optional<char> quote = '"'; // around fields, and doubled within them; text inside others. Nothing where a file has none
    std::optional<char> comment{};   // a line that begins with it is left out
    std::optional<char> escape{};    // a quote, a delimiter, a line end or an escape behind it is text, within quotes and without
    bool has_letter_escapes = false; // and every other byte is itself, but for letters that are control characters
};

// The text of a field that has an escape or quotes within its quotes, of which the outer ones are not given; `quoted` where there were
// some. It refers to the field or to `decoded`. The letters are those of LOAD DATA and COPY: 0 b f n r t v and Z for NUL, backspace, form
// feed, line feed, carriage return, tab, vertical tab and byte 26. Without them, an escape before any other byte is text.
std::string_view decoded_text(std::string_view field, bool quoted, const csv_syntax& syntax, std::string& decoded);

} // namespace host

#endif
