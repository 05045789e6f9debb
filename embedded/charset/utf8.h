// SPDX-License-Identifier: Apache-2.0
// UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
#ifndef BIFUN_EMBEDDED_CHARSET_UTF8_H
#define BIFUN_EMBEDDED_CHARSET_UTF8_H

#include <algorithm>
#include <bit>
#include <cstdint>

#include "embedded/charset/ascii.h"
#include "embedded/charset/walk.h"

namespace zqengine {

struct utf8 {
    // A rank is the code point.
    static constexpr std::uint32_t ranks = 0x10000;
    static constexpr std::uint32_t all_ranks = 0x110000;
    static constexpr bool rank_is_code_point = true;

    static bool continues(std::uint8_t byte) { return (byte & 0xC0) == 0x80; }

    static std::uint32_t claimed_length(const std::uint8_t* character) {
        const std::uint8_t lead = character[0];
        return lead < 0xC2 || lead > 0xF4 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    }

    static std::uint32_t length_of(const std::uint8_t* character, std::uint32_t remaining) {
        const std::uint32_t length = claimed_length(character);
        if (length == 1 || length > remaining || !continues(character[1])) {
            return 1;
        }
        if (length == 2) {
            return 2;
        }
        const std::uint8_t lead = character[0];
        const std::uint8_t second = character[1];
        if (length == 3) {
            const bool overlong = lead == 0xE0 && second < 0xA0;
            const bool surrogate = lead == 0xED && second >= 0xA0;
            return continues(character[2]) && !overlong && !surrogate ? 3 : 1;
        }
        const bool overlong = lead == 0xF0 && second < 0x90;
        const bool too_high = lead == 0xF4 && second >= 0x90;
        return continues(character[2]) && continues(character[3]) && !overlong && !too_high ? 4 : 1;
    }

    static bool is_valid(const std::uint8_t* character, std::uint32_t length) { return length > 1 || character[0] < 0x80; }

    static bool is_start(const std::uint8_t* text, std::uint32_t length, std::uint32_t offset) {
        if (!continues(text[offset])) {
            return true;
        }
        for (std::uint32_t back = 1; back <= std::min(offset, 3U); ++back) {
            const std::uint8_t* const before = text + offset - back;
            if (!continues(*before)) {
                return length_of(before, length - offset + back) <= back;
            }
        }
        return true;
    }

    // Of a valid character of more than one byte.
    static std::uint32_t rank(const std::uint8_t* character, std::uint32_t length) {
        const auto bits = [character](std::uint32_t at) { return character[at] & 0x3FU; };
        switch (length) {
        case 2:
            return (character[0] & 0x1FU) << 6 | bits(1);
        case 3:
            return (character[0] & 0x0FU) << 12 | bits(1) << 6 | bits(2);
        default:
            return (character[0] & 0x07U) << 18 | bits(1) << 12 | bits(2) << 6 | bits(3);
        }
    }

    // In `length` bytes, which it has.
    static void write(std::uint32_t rank, std::uint8_t* character, std::uint32_t length) {
        for (std::uint32_t at = length - 1; at > 0; --at) {
            character[at] = static_cast<std::uint8_t>(0x80 | (rank & 0x3F));
            rank >>= 6;
        }
        character[0] = static_cast<std::uint8_t>(0xF00U >> length | rank);
    }

    static std::uint32_t rank_length(std::uint32_t rank) { return rank < 0x80 ? 1 : rank < 0x800 ? 2 : rank < 0x10000 ? 3 : 4; }

    static std::uint32_t count(const std::uint8_t* text, std::uint32_t length);
    static steps step(const std::uint8_t* text, std::uint32_t length, std::uint32_t characters);
    static window window_at(const std::uint8_t* text, std::uint32_t remaining);
};

// The places, as bytes of 0xFF, where valid characters of two, three and four bytes end. Exact for any bytes, since the lead byte of a
// valid character never stands inside another one.
struct utf8_ends {
    byte_block of_two;
    byte_block of_three;
    byte_block of_four;
};

// `before1` are the bytes one place before those of the block, and so on; zeros before the text.
inline utf8_ends ends_in(byte_block block, byte_block before1, byte_block before2, byte_block before3) {
    const auto from_to = [](byte_block bytes, int first, int last) {
        return where_less_signed(bytes - repeated(first - 0x80), repeated(last - first + 1 - 0x80));
    };
    const auto is = [](byte_block bytes, int byte) { return where_equal(bytes, repeated(byte)); };
    const auto below = [](byte_block bytes, int byte) { return where_less_signed(bytes, repeated(byte)); }; // both in 0x80 to 0xFF
    const byte_block continues = below(block, 0xC0);
    const byte_block two_continue = continues & below(before1, 0xC0);
    const byte_block three_continue = two_continue & below(before2, 0xC0);

    const byte_block second_of_three_low = below(before1, 0xA0);
    const byte_block bad_three = (is(before2, 0xE0) & second_of_three_low) | (~second_of_three_low & is(before2, 0xED));
    const byte_block second_of_four_low = below(before2, 0x90);
    const byte_block bad_four = (is(before3, 0xF0) & second_of_four_low) | (~second_of_four_low & is(before3, 0xF4));
    return {.of_two = continues & from_to(before1, 0xC2, 0xDF),
            .of_three = ~bad_three & two_continue & from_to(before2, 0xE0, 0xEF),
            .of_four = ~bad_four & three_continue & from_to(before3, 0xF0, 0xF4)};
}

// With nothing before the block.
inline utf8_ends ends_in(byte_block block) {
    return ends_in(block, bifun::moved_back<1>(block), bifun::moved_back<2>(block), bifun::moved_back<3>(block));
}

inline utf8_ends ends_in(const std::uint8_t* block) {
    return ends_in(load_block(block), load_block(block - 1), load_block(block - 2), load_block(block - 3));
}

// For every end the bytes of its character but the first.
inline byte_block continuing_bytes(const utf8_ends& ends) { return (ends.of_two & 1) | (ends.of_three & 2) | (ends.of_four & 3); }

// Characters are the bytes less those that continue one, which are counted where the character ends.
inline std::uint32_t utf8::count(const std::uint8_t* text, std::uint32_t length) {
    if (length < block_length) {
        const byte_block block = load_short(text, length);
        return is_ascii(block) ? length : length - bifun::sum_of(continuing_bytes(ends_in(block)));
    }
    std::uint32_t continuing = 0;
    const byte_block first = load_block(text);
    if (!is_ascii(first)) {
        continuing = bifun::sum_of(continuing_bytes(ends_in(first)));
    }
    std::uint32_t offset = block_length;
    while (length - offset >= block_length) {
        if (is_ascii(load_block(text + offset))) {
            offset += std::max(leading_ascii_groups(text + offset, length - offset), block_length);
        } else {
            continuing += bifun::sum_of(continuing_bytes(ends_in(text + offset)));
            offset += block_length;
        }
    }
    const std::uint32_t remaining = length - offset;
    const byte_block last = load_block(text + length - block_length);
    if (remaining > 0 && !is_ascii(last)) {
        alignas(16) static constexpr std::uint8_t none_then_all[2 * block_length] = {
            0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,    0,
            0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
        // Below 19 bytes there are not three before the last block, and at most two of its bytes remain, which do not look before it.
        const utf8_ends ends = length >= block_length + 3 ? ends_in(text + length - block_length) : ends_in(last);
        continuing += bifun::sum_of(continuing_bytes(ends) & load_block(none_then_all + remaining));
    }
    return length - continuing;
}

// Of 16 bytes; what begins in the first 13 of them ends inside.
inline window utf8::window_at(const std::uint8_t* text, std::uint32_t remaining) {
    constexpr std::uint32_t sure = block_length - 3;
    const std::uint32_t size = std::min(remaining, block_length);
    const std::uint32_t all = (1U << size) - 1;
    const byte_block block = size == block_length ? load_block(text) : load_short(text, size);
    if (is_ascii(block)) {
        return {.starts = all, .length = size};
    }
    const utf8_ends ends = ends_in(block);
    const byte_block of_more_than_two = ends.of_three | ends.of_four;
    const byte_block last_two = ends.of_two | of_more_than_two | bifun::moved_to_front<1>(of_more_than_two);
    const std::uint32_t continuing = bits_of(last_two | bifun::moved_to_front<2>(ends.of_four));
    const std::uint32_t starts = ~continuing & all;
    if (size == remaining) {
        return {.starts = starts, .length = size};
    }
    const auto length = static_cast<std::uint32_t>(std::countr_zero((starts | 1U << block_length) >> sure)) + sure;
    return {.starts = starts & ((1U << length) - 1), .length = length};
}

inline steps utf8::step(const std::uint8_t* text, std::uint32_t length, std::uint32_t characters) {
    std::uint32_t offset = 0;
    std::uint32_t left = characters;
    while (left > 0 && offset < length) {
        const window found = window_at(text + offset, length - offset);
        if (found.starts == (1U << found.length) - 1) { // one byte each
            const std::uint32_t ascii =
                found.length < block_length ? 0 : leading_ascii_groups(text + offset, std::min(left, length - offset));
            const std::uint32_t stepped = std::max(ascii, std::min(left, found.length));
            offset += stepped;
            left -= stepped;
            continue;
        }
        std::uint32_t starts = found.starts | 1U << found.length;
        for (; left > 0 && (starts & (starts - 1)) != 0; --left) {
            starts &= starts - 1;
        }
        offset += static_cast<std::uint32_t>(std::countr_zero(starts));
    }
    return {.offset = offset, .characters = characters - left};
}

} // namespace zqengine

#endif
