// SPDX-License-Identifier: Apache-2.0
// Strings of JSON, between their quotes, and the escapes in them.
#ifndef BIFUN_EMBEDDED_JSON_JSON_STRINGS_H
#define BIFUN_EMBEDDED_JSON_JSON_STRINGS_H

#include <string_view>

namespace zqengine {

// Whether all escapes in a text are such: \u of surrogates stand in pairs.
[[nodiscard]] bool has_good_escapes(std::string_view text);

// Writes the characters of a string whose escapes are good; they have no more bytes than it. Returns what is behind the last.
char* write_characters(std::string_view text, char* out);

// Writes a string with its quotes and the escapes that it needs: at most six bytes for each character of ASCII, and two. Returns what is
// behind it.
char* write_string(std::string_view characters, char* out);

// Whether the string, its escapes resolved, has these characters.
bool has_characters(std::string_view text, bool has_escapes, std::string_view characters);

} // namespace zqengine

#endif
