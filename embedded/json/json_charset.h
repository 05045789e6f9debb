// SPDX-License-Identifier: Apache-2.0
// Documents, paths and results in a database character set that is not UTF-8, in which paths are evaluated.
#ifndef BIFUN_EMBEDDED_JSON_JSON_CHARSET_H
#define BIFUN_EMBEDDED_JSON_JSON_CHARSET_H

#include <cstddef>
#include <cstdint>
#include <string_view>

struct UConverter; // ICU's

namespace zqengine {

// Begins with all members zero. A converted text stays until the next one.
struct charset_converter {
    UConverter* database;
    UConverter* utf8;
    char* buffer;
    std::size_t capacity;
};

void release_converter(charset_converter& converter);

// Whether a text has other bytes in UTF-8 than in the database character set: none does under one that has no code points.
[[nodiscard]] bool must_be_converted(std::string_view text);

// Of a text for which must_be_converted holds, and back. Return 0; -503; JSON_INVALID_TEXT for bytes that are no characters of the set,
// JSON_NO_CHARACTER for characters that the set has not.
[[nodiscard]] std::int32_t convert_to_utf8(charset_converter& converter, std::string_view text, std::string_view& converted);
[[nodiscard]] std::int32_t convert_from_utf8(charset_converter& converter, std::string_view text, std::string_view& converted);

} // namespace zqengine

#endif
