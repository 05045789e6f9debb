// SPDX-License-Identifier: Apache-2.0
// OVERLAY of one value: a range of characters of its full text gives way to the full text of the replacement. What is left of the value's
// trailing blanks behind the range stays a count.
#ifndef BIFUN_STR_OVERLAY_H
#define BIFUN_STR_OVERLAY_H

#include "bop/bifun_str/text.h"

namespace bifun {

// The longest result of functions that build texts, with its trailing blanks.
constexpr std::uint32_t longest_built_text = 32767;

// The range begins at character `position`, from 1 (0 is taken as 1), and ends `length` characters behind that, or where the replacement's
// length ends it.
struct overlaid_range {
    std::uint32_t position;
    std::uint32_t length;
};
constexpr std::uint32_t length_of_replacement = UINT32_MAX;

// What becomes of the source: the bytes and blanks before the range, and those behind it.
struct overlay_parts {
    std::uint32_t bytes_before;
    std::uint32_t blanks_before;
    std::uint32_t bytes_behind_from;
    std::uint32_t blanks_behind;
};

inline overlay_parts place_overlay(const text_operations& texts, const bifun_string& source, const bifun_string& replacement,
                                   const overlaid_range& range) {
    const std::uint64_t stored = stored_characters(texts, source);
    const std::uint64_t all = stored + source.trailing_blanks;
    const std::uint64_t length = range.length == length_of_replacement
                                     ? std::uint64_t{stored_characters(of_any_text(texts), replacement)} + replacement.trailing_blanks
                                     : range.length;
    const std::uint64_t start = std::min<std::uint64_t>(range.position == 0 ? 0 : range.position - 1, all);
    const std::uint64_t end = std::min(start + length, all);
    const auto offset_of = [&](std::uint64_t characters) {
        return characters >= stored      ? source.length
               : stored == source.length ? static_cast<std::uint32_t>(characters)
                                         : offset_of_character(texts, source, static_cast<std::uint32_t>(characters));
    };
    const auto blanks_in = [&](std::uint64_t characters) {
        return static_cast<std::uint32_t>(characters > stored ? characters - stored : 0);
    };
    return {offset_of(start), blanks_in(start), offset_of(end), source.trailing_blanks - blanks_in(end)};
}

inline std::uint64_t length_of_overlay(const bifun_string& source, const bifun_string& replacement, const overlay_parts& parts) {
    return std::uint64_t{parts.bytes_before} + parts.blanks_before + full_length(replacement) + (source.length - parts.bytes_behind_from);
}

inline void append_overlay(text_writer& text, const bifun_string& source, const bifun_string& replacement, const overlay_parts& parts) {
    append(text, source.data, parts.bytes_before);
    append_blanks(text, parts.blanks_before);
    append_full_text(text, replacement);
    append(text, source.data + parts.bytes_behind_from, source.length - parts.bytes_behind_from);
}

} // namespace bifun

#endif
