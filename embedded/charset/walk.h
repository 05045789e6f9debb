// SPDX-License-Identifier: Apache-2.0
// Counting and stepping character by character, for a charset record that has no faster way.
//
// A charset record has these static members. The character at a place is the valid one that begins there, if all of it is in the text, else
// the one byte; every member tells the same characters.
//   length_of(character, remaining)     the bytes of the character, with at least one byte remaining
//   claimed_length(character)           the same by as few bytes as tell it, for a character that is taken to be valid and whole
//   is_valid(character, length)         whether the character, of that length, is valid
//   is_start(text, length, offset)      whether a character begins there
//   count, step, window_at              as below
//   rank, write, rank_length, ranks     see charset_tables.h
#ifndef BIFUN_EMBEDDED_CHARSET_WALK_H
#define BIFUN_EMBEDDED_CHARSET_WALK_H

#include <algorithm>
#include <cstdint>

#include "embedded/charset/ascii.h"

namespace zqengine {

// How far a number of characters reach, and how many of them there were.
struct steps {
    std::uint32_t offset;
    std::uint32_t characters;
};

// The first bytes of a text, up to the beginning of a character or the end of the text: at least 1 and at most 19.
struct window {
    std::uint32_t starts; // bit k where a character begins at byte k
    std::uint32_t length;
};

// The first `characters` characters of the text, or all if there are fewer.
template <class Charset> steps step_by_character(const std::uint8_t* text, std::uint32_t length, std::uint32_t characters) {
    std::uint32_t offset = 0;
    std::uint32_t stepped = 0;
    while (stepped < characters && offset < length) {
        if (text[offset] >= 0x80) {
            offset += Charset::length_of(text + offset, length - offset);
            ++stepped;
            continue;
        }
        const std::uint32_t room = std::min(characters - stepped, length - offset);
        const bool by_block = room >= block_length && is_ascii(load_block(text + offset));
        const std::uint32_t ascii = by_block ? std::max(leading_ascii_groups(text + offset, room), block_length) : 1;
        offset += ascii;
        stepped += ascii;
    }
    return {.offset = offset, .characters = stepped};
}

template <class Charset> std::uint32_t count_by_character(const std::uint8_t* text, std::uint32_t length) {
    return step_by_character<Charset>(text, length, UINT32_MAX).characters;
}

// With at least one byte remaining.
template <class Charset> window window_by_character(const std::uint8_t* text, std::uint32_t remaining) {
    const std::uint32_t end = std::min(remaining, block_length);
    if (end == block_length && is_ascii(load_block(text))) {
        return {.starts = (1U << block_length) - 1, .length = block_length};
    }
    window found{.starts = 0, .length = 0};
    while (found.length < end) {
        found.starts |= 1U << found.length;
        found.length += Charset::length_of(text + found.length, remaining - found.length);
    }
    return found;
}

} // namespace zqengine

#endif
