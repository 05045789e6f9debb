// SPDX-License-Identifier: Apache-2.0
// What separates the fields of a file, and other bytes by name.
#ifndef BIFUN_HOST_TABLES_DELIMITER_H
#define BIFUN_HOST_TABLES_DELIMITER_H

#include <optional>
#include <string>
#include <string_view>

#include "host/tables/csv_syntax.h"

namespace host {

// A byte, or the name of one: comma, tab, semicolon, bar, space, colon, \t, 0x1F. Nothing where the text is neither, or where it is a quote
// or ends lines.
std::optional<char> find_delimiter_named(std::string_view text);
constexpr std::string_view delimiter_names = "comma, tab, semicolon, bar, space, colon, a character of one byte, or 0x and two digits";

// A character of one byte, or 0x and two digits; nothing where the text is neither, or where the byte ends lines.
std::optional<char> find_byte(std::string_view text);

// As a message names it.
std::string delimiter_name(char delimiter);

struct found_delimiter {
    char delimiter;
    std::string doubt; // what has to be said, if anything
};

// By the name of the file, .tsv or .psv, or else by its first lines, of which the first must be whole: what cuts all of them into the same
// number of fields, more than one. A comma where nothing does. Quotes and escapes are those of `syntax`. `is_all` where `text` is the whole
// file.
// `may_be_bar` where a bar is never a part of another character.
found_delimiter guess_delimiter(std::string_view path, std::string_view text, bool is_all, csv_syntax syntax, bool may_be_bar);

// What reads lines in which runs of blanks separate the fields; empty where the lines are of another kind.
std::string advice_on_aligned(std::string_view path, std::string_view text);

} // namespace host

#endif
