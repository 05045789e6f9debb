// SPDX-License-Identifier: Apache-2.0
// Text in the character sets of the database.
#ifndef BIFUN_HOST_VALUES_CHARSET_TEXT_H
#define BIFUN_HOST_VALUES_CHARSET_TEXT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/charset.h"

namespace host {

struct charset {
    std::string_view name;       // as people write it
    std::string_view iconv_name; // as iconv knows it
    std::uint32_t code;          // of engine/charset.h
};

// Null where there is no such character set; case and - _ do not matter.
const charset* find_charset(std::string_view name);
std::vector<std::string> charset_names();

// Whether every character of the text is one of the character set, and whole.
bool is_valid_text(const charset& set, std::string_view text);

// Nothing where the text is not valid or holds a character that the target does not have.
std::optional<std::string> from_utf8(const charset& set, std::string_view text);
std::optional<std::string> to_utf8(const charset& set, std::string_view text);

// To UTF-8, with U+FFFD in place of the bytes that are no characters.
std::string to_utf8_with_replacements(const charset& set, std::string_view text);

// The same of a text that a message shows: of a long one the beginning, with "..." behind it.
std::string shown_text(const charset& set, std::string_view text);

} // namespace host

#endif
