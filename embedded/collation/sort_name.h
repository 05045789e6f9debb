// SPDX-License-Identifier: Apache-2.0
// The name of an order of texts, as an NLS text has it.
#ifndef BIFUN_EMBEDDED_COLLATION_SORT_NAME_H
#define BIFUN_EMBEDDED_COLLATION_SORT_NAME_H

#include <cstdint>

namespace zqengine {

// What makes texts differ.
enum class sort_strength : std::uint8_t { letters, letters_and_accents, letters_accents_and_case };

constexpr std::uint32_t longest_sort_name = 128;

struct sort_name {
    char locale[2 * longest_sort_name]; // as ICU names it; the empty one is the root
    bool is_binary;                     // the order of the bytes, or without case or accents those of what is left
    sort_strength strength;
};

// Reads `NLS_SORT = name`, in any case, with blanks between, the name in quotes or not. A name is one of the table in docs/strings.md, or a
// language tag of BCP 47; _CI or _AI may stand behind it. Returns whether the text is so and the language known.
[[nodiscard]] bool parse_sort_name(const std::uint8_t* text, std::uint32_t length, sort_name& name);

// Whether the language is one that has a dotless i.
[[nodiscard]] bool is_turkic(const sort_name& name);

} // namespace zqengine

#endif
