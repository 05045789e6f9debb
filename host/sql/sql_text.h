// SPDX-License-Identifier: Apache-2.0
// The text of a query and the places in it that errors name.
#ifndef BIFUN_HOST_SQL_SQL_TEXT_H
#define BIFUN_HOST_SQL_SQL_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// "SQL, character 8", counted from 1; with the line where the text has more than one. `offset` counts bytes.
std::string sql_position(std::string_view sql, std::size_t offset);

// The byte offset of a character counted from 1.
std::size_t sql_offset_of_character(std::string_view sql, std::size_t character);

// Throws "SQL, character 8, near "nmae": message".
[[noreturn]] void fail_at(std::string_view sql, std::size_t offset, std::string_view message);

} // namespace host

#endif
