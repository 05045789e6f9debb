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

// Whether the string, its escapes resolved, has these characters.
bool has_characters(std::string_view text, bool has_escapes, std::string_view characters);

} // namespace zqengine

#endif
