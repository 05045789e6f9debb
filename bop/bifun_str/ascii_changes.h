// SPDX-License-Identifier: Apache-2.0
// What functions that change every character of a text do to ASCII. The places read and written do not overlap.
#ifndef BIFUN_STR_ASCII_CHANGES_H
#define BIFUN_STR_ASCII_CHANGES_H

#include "bop/bifun_str/block_pairs.h"
#include "bop/frame/byte_operations.h"

namespace bifun {

// The letter with which the case begins that is to be changed.
enum class ascii_case : std::uint8_t { to_upper = 'a', to_lower = 'A' };

// Returns whether all bytes are ASCII; what is written has no meaning else.
template <ascii_case change> bool change_ascii_case(std::uint8_t* __restrict to, const std::uint8_t* __restrict from, std::size_t length) {
    constexpr auto first = static_cast<std::uint8_t>(change);
    std::uint8_t seen = 0;
    for (std::size_t i = 0; i < length; ++i) {
        const std::uint8_t byte = from[i];
        const std::uint8_t other_case = static_cast<std::uint8_t>(byte - first) < 26 ? 0x20 : 0;
        seen |= byte;
        to[i] = byte ^ other_case;
    }
    return seen < 0x80;
}

template <ascii_case change> void append_in_case(text_writer& text, const std::uint8_t* bytes, std::uint32_t length) {
    if (text.may_overrun && length <= copy_room) [[likely]] {
        change_case_into_room(text.at, bytes, length, static_cast<std::uint8_t>(change));
    } else {
        (void)change_ascii_case<change>(text.at, bytes, length);
    }
    text.at += length;
}

// ---- words: runs of letters and digits, which begin with an upper case letter and go on with lower case ones ----

// `word_before` is 0xFF in its first byte where the text before the block ends within a word; and so it is then for the block behind it.
inline byte_block with_initials(byte_block bytes, byte_block& word_before) {
    const auto lies_in = [](byte_block block, int first, int count) {
        return where_less_signed(block - repeated(first - 0x80), repeated(count - 0x80));
    };
    const byte_block lower = bytes ^ (lies_in(bytes, 'A', 26) & 0x20);
    const byte_block letters = lies_in(lower, 'a', 26);
    const byte_block of_word = letters | lies_in(lower, '0', 10);
    const byte_block initials = letters & ~(moved_back<1>(of_word) | word_before);
    word_before = moved_to_front<block_length - 1>(of_word);
    return lower ^ (initials & 0x20);
}

inline void append_with_initials(text_writer& text, const std::uint8_t* bytes, std::uint32_t length) {
    byte_block word_before{};
    std::uint32_t done = 0;
    if (text.may_overrun) [[likely]] {
        for (; done < length; done += block_pair_length) {
            const block_pair pair = load_block_pair(bytes + done, length - done);
            const byte_block first = with_initials(pair.first, word_before);
            store_block_pair(text.at + done, {first, with_initials(pair.last, word_before)});
        }
        text.at += length;
        return;
    }
    for (; length - done >= block_length; done += block_length) {
        store_block(text.at + done, with_initials(load_block(bytes + done), word_before));
    }
    if (done < length) {
        const std::uint32_t rest = length - done;
        const byte_block last = with_initials(load_part_of_block(bytes + done, rest), word_before);
        std::uint8_t whole[block_length];
        store_block(whole, last);
        std::memcpy(text.at + done, whole, rest);
    }
    text.at += length;
}

// ---- reversal ----

inline byte_block reversed(byte_block block) {
    return __builtin_shufflevector(block, block, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
}

// The first and the last word of a text that is no longer than both, each reversed and in the place of the other.
template <class Word, class Reverse>
inline void write_ends_swapped(std::uint8_t* to, const std::uint8_t* from, std::uint32_t length, Reverse reverse) {
    Word first;
    Word last;
    std::memcpy(&first, from, sizeof first);
    std::memcpy(&last, from + length - sizeof last, sizeof last);
    first = reverse(first);
    last = reverse(last);
    std::memcpy(to, &last, sizeof last);
    std::memcpy(to + length - sizeof first, &first, sizeof first);
}

// By moves that overlap but never leave the text.
inline void write_reversed(std::uint8_t* to, const std::uint8_t* from, std::uint32_t length) {
    const std::uint8_t* const end = from + length;
    if (length >= block_length) {
        std::uint32_t done = 0;
        for (; length - done > block_length; done += block_length) {
            store_block(to + done, reversed(load_block(end - done - block_length)));
        }
        store_block(to + length - block_length, reversed(load_block(from)));
    } else if (length >= 8) {
        write_ends_swapped<std::uint64_t>(to, from, length, [](std::uint64_t word) { return __builtin_bswap64(word); });
    } else if (length >= 4) {
        write_ends_swapped<std::uint32_t>(to, from, length, [](std::uint32_t word) { return __builtin_bswap32(word); });
    } else {
        for (std::uint32_t i = 0; i < length; ++i) {
            to[i] = end[-1 - static_cast<std::ptrdiff_t>(i)];
        }
    }
}

inline void append_reversed(text_writer& text, const std::uint8_t* bytes, std::uint32_t length) {
#if defined(BIFUN_MASKED_LOADS)
    if (text.may_overrun && length <= copy_room) [[likely]] {
        // The text at the end of the register, which is loaded from before it on.
        const __mmask64 last = length == 0 ? 0 : ~std::uint64_t{0} << (copy_room - length);
        const __m512i loaded = _mm512_maskz_loadu_epi8(last, bytes + length - copy_room);
        const __m512i order = _mm512_maskz_broadcast_i32x4(0xFFFF, _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
        const __m512i in_quarters = _mm512_shuffle_epi8(loaded, order);
        // Masked, because gcc warns of the undefined bits in the other form.
        _mm512_storeu_si512(text.at, _mm512_maskz_shuffle_i64x2(0xFF, in_quarters, in_quarters, 0x1B));
        text.at += length;
        return;
    }
#endif
    write_reversed(text.at, bytes, length);
    text.at += length;
}

} // namespace bifun

#endif
