// SPDX-License-Identifier: Apache-2.0
// What the string families share: what is known of texts before a row is seen, and the full text of one value.
#ifndef BIFUN_STR_TEXT_H
#define BIFUN_STR_TEXT_H

#include <algorithm>

#include "bop/bifun_str/text_blocks.h"
#include "bop/bifun_str/utf8.h"
#include "bop/frame/scratch.h"
#include "bop/frame/statements.h"
#include "bop/frame/string_rows.h"
#include "engine/charset.h"

namespace bifun {

// What scratch allocations of the string families name as their source.
constexpr const char* string_source_file = "bop/bifun_str";

// How characters are told. For a kernel that has to know, an argument: texts_of(text), or fixed(text_operations_of_engine()) where nothing
// is known of its text before a row is seen.
struct alignas(std::uint32_t) text_operations {
    bool ascii_is_single_byte; // so that nobody has to be asked about text of such bytes
    bool utf8_is_unicode;      // nor about short well-formed text; and bytes below 0x80 are characters anywhere
    known_texts known;         // of the kernel's text; of ASCII only where it is single-byte
};

inline text_operations text_operations_of_engine() {
    const bool is_utf8 = global_bifun_var.charset_code == ZQ_CHARSET_UTF8;
    return {ascii_is_single_byte(), is_utf8 && utf8_is_unicode(), known_texts::nothing};
}

// For another text than the kernel's.
inline text_operations of_any_text(text_operations texts) {
    texts.known = known_texts::nothing;
    return texts;
}

[[gnu::noinline]] inline text_operations texts_of_block(const void* source, std::uint32_t first, std::uint32_t count) {
    const auto& column = *static_cast<const bifun_column*>(source);
    text_operations texts = text_operations_of_engine();
    if (texts.ascii_is_single_byte) {
        texts.known = know_texts(column, first, count, texts.utf8_is_unicode);
    }
    return texts;
}

// What is known without a look at the texts.
inline text_operations texts_as_told(const bifun_column& column) {
    text_operations texts = text_operations_of_engine();
    if (texts.ascii_is_single_byte) {
        texts.known = told_texts(column, texts.utf8_is_unicode);
    }
    return texts;
}

inline block_argument<text_operations> texts_of(column_of<VARCHAR> text) { return {text.column, texts_of_block}; }
inline fixed_argument<text_operations> texts_of(constant_of<VARCHAR> /*text*/) { return fixed(text_operations_of_engine()); }

// Whether every character of the stored bytes is known to have one byte, without asking the engine.
inline bool has_single_bytes(const text_operations& texts, const bifun_string& value) {
    return texts.known == known_texts::ascii || (texts.ascii_is_single_byte && is_ascii(value.data, value.length));
}

// The same for the first `count` stored bytes.
inline bool begins_with_single_bytes(const text_operations& texts, const bifun_string& value, std::uint32_t count) {
    return texts.known == known_texts::ascii || (texts.ascii_is_single_byte && begins_with_ascii(value.data, count));
}

// Whether a text is known to be of as many characters as bytes, and its full length is far from the largest numbers. Without a branch.
inline bool is_told_by_record(const text_operations& texts, const bifun_string& text) {
    const auto is_ascii = static_cast<std::uint32_t>(texts.known == known_texts::ascii);
    return (is_ascii & static_cast<std::uint32_t>((text.length | text.trailing_blanks) < 1U << 30)) != 0;
}

// Where the characters of a text of at most 64 bytes begin, as bits, as far as it is known without asking the engine.
inline utf8_characters characters_of(const text_operations& texts, const bifun_string& value) {
    if (texts.known == known_texts::ascii) {
        return {true, first_bits(value.length)};
    }
    const text_bytes<64> bytes(value.data, value.length);
    if (texts.known == known_texts::utf8) {
        return {true, starts_of_well_formed(bytes, value.length)};
    }
    if ((texts.ascii_is_single_byte || texts.utf8_is_unicode) && bytes_beyond_ascii(bytes) == 0) {
        return {true, first_bits(value.length)};
    }
    return texts.utf8_is_unicode ? utf8_characters_of(bytes, value.data, value.length) : utf8_characters{false, 0};
}

// Whether the stored bytes are known to be well-formed UTF-8 without asking the engine.
inline bool is_well_formed(const text_operations& texts, const bifun_string& value) {
    return texts.known == known_texts::utf8 ||
           (texts.utf8_is_unicode && value.length <= longest_masked && characters_of(texts, value).are_known);
}

// The characters of a well-formed text of any length.
inline std::uint32_t count_of_well_formed(const bifun_string& value) {
    std::uint32_t characters = 0;
    for (std::uint32_t offset = 0; offset < value.length; offset += longest_masked) {
        const std::uint32_t length = std::min(value.length - offset, std::uint32_t{longest_masked});
        characters += static_cast<std::uint32_t>(std::popcount(starts_of_well_formed(text_bytes<64>(value.data + offset, length), length)));
    }
    return characters;
}

// Called, so that a loop over known texts keeps its values in registers.
[[gnu::noinline]] inline std::uint32_t count_characters(text_operations texts, bifun_string value) {
    if (texts.known == known_texts::utf8) {
        return count_of_well_formed(value);
    }
    if (value.length <= longest_masked) {
        const utf8_characters characters = characters_of(texts, value);
        if (characters.are_known) {
            return static_cast<std::uint32_t>(std::popcount(characters.starts));
        }
    } else if (has_single_bytes(texts, value)) {
        return value.length;
    }
    return zq_mbstrlen_ex(value.data, value.length);
}

// The number of characters of the stored bytes.
inline std::uint32_t stored_characters(const text_operations& texts, const bifun_string& value) {
    if (texts.known == known_texts::ascii) {
        return value.length;
    }
    if (texts.known == known_texts::utf8 && value.length <= longest_masked) {
        const text_bytes<64> bytes(value.data, value.length);
        return static_cast<std::uint32_t>(std::popcount(starts_of_well_formed(bytes, value.length)));
    }
    return count_characters(texts, value);
}

// The offset behind the first n characters of the stored bytes; their length where there are fewer.
inline std::uint32_t offset_of_character(const text_operations& texts, const bifun_string& value, std::uint32_t n) {
    if (texts.known == known_texts::ascii) {
        return n < value.length ? n : value.length;
    }
    if (value.length <= longest_masked) [[likely]] {
        const utf8_characters characters = characters_of(texts, value);
        if (characters.are_known) [[likely]] {
            return offset_of_start(characters.starts, n, value.length);
        }
    }
    return zq_mbsninc_ex(value.data, value.length, n);
}

// What a call gives for a row. A record, not a reference to the loop's result: that stays in registers then.
template <class Outcome> struct string_outcome {
    bifun_string value;
    Outcome outcome;
};

inline bool is_empty(const bifun_string& value) { return value.length == 0 && value.trailing_blanks == 0; }

// What the empty text gives where something of it is counted or told: NULL, or 0 in the compatible mode for that.
constexpr std::uint32_t empty_texts_have_length_zero = 3;
inline value_or_null length_of_empty() {
    return global_bifun_var.compatible_mode == empty_texts_have_length_zero ? value_or_null() : value_or_null::null();
}

inline std::uint64_t full_length(const bifun_string& value) { return std::uint64_t{value.length} + value.trailing_blanks; }

// Mostly there are none.
inline void append_blanks(text_writer& text, std::uint32_t count) {
    if (count != 0) {
        append(text, blank, count);
    }
}

inline void append_full_text(text_writer& text, const bifun_string& value) {
    append(text, value.data, value.length);
    append_blanks(text, value.trailing_blanks);
}

// The full text in `target`, which has room for it.
inline void write_full_text(std::uint8_t* target, const bifun_string& value) {
    text_writer text{target, false};
    append_full_text(text, value);
}

} // namespace bifun

#endif
