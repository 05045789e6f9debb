// SPDX-License-Identifier: Apache-2.0
// What paths are written with: words, symbols, names and literals.
#ifndef BIFUN_EMBEDDED_JSON_JSON_PATH_TEXT_H
#define BIFUN_EMBEDDED_JSON_JSON_PATH_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "embedded/json/json_path.h"

namespace zqengine {

struct path_reader {
    std::string_view text;
    std::size_t at;
    jpath& path;
    std::uint32_t depth;      // of what is nested
    std::uint32_t filters;    // around, in which @ is an item
    std::uint32_t subscripts; // around, in which last is an index
    bool is_out_of_memory;
};

std::string_view rest_of(const path_reader& reader);
void skip_spaces(path_reader& reader);

// Go on behind a symbol or a word where it comes next, perhaps behind spaces; a word is not the beginning of a longer one.
bool take(path_reader& reader, std::string_view symbol);
bool take_word(path_reader& reader, std::string_view word);

// Texts go to the characters of the path. False where there is none, and then
// the reader is at the byte that does not fit.
[[nodiscard]] bool read_quoted(path_reader& reader, path_text& kept); // behind its opening quote
[[nodiscard]] bool read_name(path_reader& reader, path_step& step);
[[nodiscard]] bool read_literal(path_reader& reader, path_operand& operand);

// A level: digits.
[[nodiscard]] bool read_level(path_reader& reader, std::uint32_t& level);

} // namespace zqengine

#endif
