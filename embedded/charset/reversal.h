// SPDX-License-Identifier: Apache-2.0
// Reversing text in place.
#ifndef BIFUN_EMBEDDED_CHARSET_REVERSAL_H
#define BIFUN_EMBEDDED_CHARSET_REVERSAL_H

#include <algorithm>
#include <cstdint>
#include <utility>

#include "embedded/charset/ascii.h"

namespace zqengine {

inline void reverse_bytes(std::uint8_t* text, std::uint32_t length) {
    std::uint32_t from = 0;
    std::uint32_t to = length;
    for (; to - from >= 16; from += 8, to -= 8) {
        const auto front = load_word<std::uint64_t>(text + from);
        const auto back = load_word<std::uint64_t>(text + to - 8);
        store_word(text + from, __builtin_bswap64(back));
        store_word(text + to - 8, __builtin_bswap64(front));
    }
    std::reverse(text + from, text + to);
}

// Whether the reversed text is made of the same characters. Only a byte that is a character by itself can come to begin a longer one,
// together with the characters that stand before it now.
template <class Charset> bool keeps_characters_reversed(const std::uint8_t* text, std::uint32_t offset, std::uint32_t length) {
    constexpr std::uint32_t longest = 4;
    std::uint32_t before[longest] = {offset, offset, offset, offset}; // where this character and the three before it begin
    for (std::uint32_t back = 1; back < longest && back <= offset; ++back) {
        before[back] = offset - back; // ASCII
    }
    while (offset < length) {
        const std::uint32_t character_length = Charset::length_of(text + offset, length - offset);
        if (character_length == 1 && text[offset] >= 0x80) {
            std::uint8_t reversed[longest] = {text[offset]};
            std::uint32_t filled = 1;
            for (std::uint32_t back = 1; back < longest; ++back) {
                for (std::uint32_t at = before[back]; at < before[back - 1] && filled < longest; ++at) {
                    reversed[filled++] = text[at];
                }
            }
            if (Charset::length_of(reversed, filled) != 1) {
                return false;
            }
        }
        offset += character_length;
        std::copy_backward(before, before + longest - 1, before + longest);
        before[0] = offset;
    }
    return true;
}

inline void reverse_character(std::uint8_t* character, std::uint32_t length) {
    switch (length) {
    case 1:
        break;
    case 4:
        store_word(character, __builtin_bswap32(load_word<std::uint32_t>(character)));
        break;
    default:
        std::swap(character[0], character[length - 1]);
    }
}

// Reverses the bytes of every character up to the end, or up to a byte that is a character without being valid; returns where it stopped.
template <class Charset> std::uint32_t reverse_each(std::uint8_t* text, std::uint32_t offset, std::uint32_t length) {
    while (offset < length) {
        const std::uint32_t character_length = Charset::length_of(text + offset, length - offset);
        if (!Charset::is_valid(text + offset, character_length)) {
            break;
        }
        reverse_character(text + offset, character_length);
        offset += character_length;
    }
    return offset;
}

// Returns false, and leaves the text as it is, where the reversed text would be made of other characters.
template <class Charset> bool reverse_characters(Charset /*charset*/, std::uint8_t* text, std::uint32_t length) {
    const std::uint32_t ascii = leading_ascii(text, length);
    std::uint32_t done = reverse_each<Charset>(text, ascii, length);
    if (done < length) {
        // Take it back: valid characters alone can be reversed.
        reverse_bytes(text, done);
        reverse_each<Charset>(text, 0, done);
        reverse_bytes(text, done);
        if (!keeps_characters_reversed<Charset>(text, ascii, length)) {
            return false;
        }
        for (done = ascii; done < length;) {
            const std::uint32_t character_length = Charset::length_of(text + done, length - done);
            reverse_character(text + done, character_length);
            done += character_length;
        }
    }
    reverse_bytes(text, length);
    return true;
}

} // namespace zqengine

#endif
