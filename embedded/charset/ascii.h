// SPDX-License-Identifier: Apache-2.0
// ASCII text sixteen bytes at a time.
#ifndef BIFUN_EMBEDDED_CHARSET_ASCII_H
#define BIFUN_EMBEDDED_CHARSET_ASCII_H

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "layouts/byte_block.h"

namespace zqengine {

using bifun::bits_of;
using bifun::block_length;
using bifun::byte_block;
using bifun::load_block;
using bifun::repeated;
using bifun::store_block;
using bifun::where_equal;
using bifun::where_less_signed;

enum class letter_case : std::uint32_t { upper, lower };

inline bool is_ascii(byte_block block) { return bits_of(block) == 0; }

template <class Word> Word load_word(const std::uint8_t* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

template <class Word> void store_word(std::uint8_t* bytes, Word word) { std::memcpy(bytes, &word, sizeof word); }

// `length` bytes, below 16, and zeros behind them.
inline byte_block load_short(const std::uint8_t* bytes, std::uint32_t length) {
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    if (length >= 8) {
        low = load_word<std::uint64_t>(bytes);
        high = load_word<std::uint64_t>(bytes + length - 8) >> 8 >> (8 * (15 - length)); // 64 in two shifts, for a length of 8
    } else if (length >= 4) {
        low = load_word<std::uint32_t>(bytes) | std::uint64_t{load_word<std::uint32_t>(bytes + length - 4)} << (8 * (length - 4));
    } else if (length > 0) {
        low = bytes[0] | std::uint64_t{bytes[length / 2]} << (8 * (length / 2)) | std::uint64_t{bytes[length - 1]} << (8 * (length - 1));
    }
    return bifun::block_of_words(low, high);
}

// The bytes with their ASCII letters in the case asked for; other bytes, those above 0x7F too, as they are.
inline byte_block fold_ascii(byte_block block, letter_case to) {
    const int first_letter = to == letter_case::upper ? 'a' : 'A';
    // Letters come to stand at the least signed values.
    const byte_block from_first = block - repeated(first_letter - 0x80);
    const byte_block is_letter = where_less_signed(from_first, repeated(26 - 0x80));
    return block ^ (is_letter & 0x20);
}

inline std::uint8_t fold_ascii(std::uint8_t byte, letter_case to) {
    const std::uint32_t from_first = std::uint32_t{byte} - (to == letter_case::upper ? 'a' : 'A');
    return static_cast<std::uint8_t>(byte ^ (from_first < 26 ? 0x20 : 0));
}

// Folds the text up to the first block that is not ASCII, whose offset it returns; `length` for ASCII text.
inline std::uint32_t fold_leading_ascii(std::uint8_t* text, std::uint32_t length, letter_case to) {
    std::uint32_t offset = 0;
    if (length >= block_length) {
        // What the blocks leave over is done with the bytes before it, read before these are written: a load that spans a fresh store
        // waits.
        const byte_block last = load_block(text + length - block_length);
        for (; length - offset >= block_length; offset += block_length) {
            const byte_block block = load_block(text + offset);
            if (!is_ascii(block)) {
                return offset;
            }
            store_block(text + offset, fold_ascii(block, to));
        }
        if (!is_ascii(last)) {
            return offset;
        }
        store_block(text + length - block_length, fold_ascii(last, to));
        return length;
    }
    if (length >= 8) {
        std::uint8_t* const last = text + length - 8;
        const byte_block block = bifun::block_of_words(load_word<std::uint64_t>(text), load_word<std::uint64_t>(last));
        if (!is_ascii(block)) {
            return 0;
        }
        const byte_block folded = fold_ascii(block, to);
        store_word(text, bifun::first_word(folded));
        store_word(last, bifun::last_word(folded));
        return length;
    }
    while (offset < length && text[offset] < 0x80) {
        text[offset] = fold_ascii(text[offset], to);
        ++offset;
    }
    return offset;
}

// The length of the text's ASCII start in whole groups of 64 bytes.
inline std::uint32_t leading_ascii_groups(const std::uint8_t* text, std::uint32_t length) {
    constexpr std::uint32_t group = 4 * block_length;
    std::uint32_t offset = 0;
    while (length - offset >= group) {
        const std::uint8_t* const p = text + offset;
        if (!is_ascii(load_block(p) | load_block(p + 16) | load_block(p + 32) | load_block(p + 48))) {
            break;
        }
        offset += group;
    }
    return offset;
}

// The length of the text's ASCII start, exactly.
inline std::uint32_t leading_ascii(const std::uint8_t* text, std::uint32_t length) {
    std::uint32_t offset = leading_ascii_groups(text, length);
    while (offset < length) {
        const std::uint32_t size = std::min(length - offset, block_length);
        const std::uint32_t others = bits_of(size == block_length ? load_block(text + offset) : load_short(text + offset, size));
        if (others != 0) {
            return offset + static_cast<std::uint32_t>(std::countr_zero(others));
        }
        offset += size;
    }
    return length;
}

} // namespace zqengine

#endif
