// SPDX-License-Identifier: Apache-2.0
// Upper and lower case of well-formed UTF-8: ASCII, Latin and Cyrillic letters whose other case has as many bytes, among characters that
// have no case. Many bytes at once; of other letters the engine knows more.
#ifndef BIFUN_STR_LETTERS_OF_UTF8_H
#define BIFUN_STR_LETTERS_OF_UTF8_H

#include <bit>

#if defined(__AVX2__)
#include <immintrin.h>
#endif

#include "bop/bifun_str/ascii_changes.h"

namespace bifun {

#if defined(__AVX2__)
using letter_block [[gnu::vector_size(32)]] = std::uint8_t;
using signed_letters [[gnu::vector_size(32)]] = std::int8_t;
#else
using letter_block = byte_block;
using signed_letters [[gnu::vector_size(16)]] = std::int8_t;
#endif
constexpr std::uint32_t letter_block_length = sizeof(letter_block);

using unaligned_letters [[gnu::vector_size(letter_block_length), gnu::aligned(1), gnu::may_alias]] = std::uint8_t;
inline letter_block load_letters(const std::uint8_t* bytes) { return *reinterpret_cast<const unaligned_letters*>(bytes); }
inline void store_letters(std::uint8_t* bytes, letter_block letters) { *reinterpret_cast<unaligned_letters*>(bytes) = letters; }

// The lower eight bits of the number, in every byte.
inline letter_block every_letter(int byte) { return letter_block{} + static_cast<std::uint8_t>(byte); }

// All bits where it holds, else none. Bytes are compared with signs: those that continue a character are below those that begin one of more
// bytes, and these below ASCII. What they are compared with is from 0x81 on.
inline letter_block are_below(letter_block a, letter_block b) {
    return reinterpret_cast<letter_block>(reinterpret_cast<signed_letters>(a) < reinterpret_cast<signed_letters>(b));
}
inline letter_block is(letter_block bytes, int byte) { return reinterpret_cast<letter_block>(bytes == every_letter(byte)); }
inline letter_block from(letter_block bytes, int first) { return are_below(every_letter(first - 1), bytes); }
inline letter_block below(letter_block bytes, int end) { return are_below(bytes, every_letter(end)); }
inline letter_block within(letter_block bytes, int first, int last) {
    return are_below(bytes - every_letter(first - 0x80), every_letter(last + 1 - first - 0x80));
}

#if defined(__AVX2__)
inline std::uint32_t high_bits(letter_block letters) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(reinterpret_cast<__m256i>(letters)));
}
inline bool has_bits(letter_block letters) {
    return _mm256_testz_si256(reinterpret_cast<__m256i>(letters), reinterpret_cast<__m256i>(letters)) == 0;
}
// The byte before each one, and the one behind it; zeros beyond the block.
inline letter_block letters_before(letter_block letters) {
    const auto bytes = reinterpret_cast<__m256i>(letters);
    return reinterpret_cast<letter_block>(_mm256_alignr_epi8(bytes, _mm256_permute2x128_si256(bytes, bytes, 0x08), 15));
}
inline letter_block letters_behind(letter_block letters) {
    const auto bytes = reinterpret_cast<__m256i>(letters);
    return reinterpret_cast<letter_block>(_mm256_alignr_epi8(_mm256_permute2x128_si256(bytes, bytes, 0x81), bytes, 1));
}
#else
inline std::uint32_t high_bits(letter_block letters) { return bits_of(letters); }
inline bool has_bits(letter_block letters) { // of masks
    return high_bits(letters) != 0;
}
inline letter_block letters_before(letter_block letters) { return moved_back<1>(letters); }
inline letter_block letters_behind(letter_block letters) { return moved_to_front<1>(letters); }
#endif

// What is added to each byte, and where that is not known.
struct letter_changes {
    letter_block added;
    letter_block unknown;
};

// U+0400 to U+045F: capitals from U+0410 on stand 0x20 before their small letters, those before it 0x50. The second byte tells, and has
// the first one changed with it.
template <ascii_case change> letter_block change_cyrillic(letter_block bytes, letter_block before) {
    if constexpr (change == ascii_case::to_upper) {
        const letter_block near = is(before, 0xD0) & from(bytes, 0xB0);
        const letter_block crossing = is(before, 0xD1) & below(bytes, 0xA0);
        const letter_block crossed = (below(bytes, 0x90) & 0x30) - 0x10;
        return (near & every_letter(-0x20)) + (crossing & crossed) + letters_behind(crossing);
    } else {
        const letter_block of_capitals = is(before, 0xD0) & below(bytes, 0xB0);
        const letter_block near = within(bytes, 0x90, 0x9F);
        const letter_block crossed = (below(bytes, 0x90) & 0x30) - 0x20;
        const letter_block crossing = of_capitals & ~near;
        return (of_capitals & near & 0x20) + (crossing & crossed) - letters_behind(crossing);
    }
}

// Of capitals and small letters in turns, the number of the first one even or odd.
template <ascii_case change> letter_block change_pairs(letter_block bytes, letter_block even, letter_block odd) {
    const letter_block is_second = (bytes & even & 1) | (~bytes & odd & 1);
    return change == ascii_case::to_upper ? -is_second : ((even | odd) & 1) - is_second;
}

// Of bytes that rarely occur together with those of change_cyrillic: the other letters that are known here.
template <ascii_case change> [[gnu::noinline]] letter_changes change_other_letters(letter_block bytes, letter_block before) {
    constexpr bool to_upper = change == ascii_case::to_upper;
    // U+00C0 to U+00FF. The micro sign, the sharp s and the y with diaeresis have capitals far away.
    const letter_block in_latin = is(before, 0xC3);
    const letter_block no_latin = is(bytes, to_upper ? 0xB7 : 0x97);
    const letter_block latin = in_latin & (to_upper ? within(bytes, 0xA0, 0xBE) : within(bytes, 0x80, 0x9E)) & ~no_latin;
    const letter_block far =
        to_upper ? (in_latin & (is(bytes, 0x9F) | is(bytes, 0xBF))) | (is(before, 0xC2) & is(bytes, 0xB5)) : letter_block{};

    // U+0100 to U+017F, and what Cyrillic has in pairs.
    const letter_block extended_1 = is(before, 0xC4);
    const letter_block extended_2 = is(before, 0xC5);
    const letter_block even_latin =
        (extended_1 & (below(bytes, 0xB0) | within(bytes, 0xB2, 0xB7))) | (extended_2 & within(bytes, 0x8A, 0xB7));
    const letter_block odd = ((extended_1 | extended_2) & within(bytes, 0xB9, 0xBE)) | (extended_2 & within(bytes, 0x81, 0x88));
    const letter_block even_cyrillic = (is(before, 0xD2) & from(bytes, 0x8A)) | (is(before, 0xD3) & from(bytes, 0x90));
    const letter_block pairs = even_latin | odd | even_cyrillic;
    const letter_block no_pairs = (extended_1 | extended_2 | is(before, 0xD2) | is(before, 0xD3)) & ~pairs;

    const letter_block other_leads = within(bytes, 0xC6, 0xCB) | within(bytes, 0xCD, 0xCF) | within(bytes, 0xD4, 0xD6) | is(bytes, 0xE1) |
                                     is(bytes, 0xEF) | within(bytes, 0xF1, 0xF4);
    // Punctuation, Hangul and emoji are sure to have no case.
    const letter_block other_seconds =
        (is(before, 0xE2) & from(bytes, 0x84)) | (is(before, 0xEA) & below(bytes, 0xB0)) | (is(before, 0xF0) & below(bytes, 0x9F));
    return {(latin & every_letter(to_upper ? -0x20 : 0x20)) + change_pairs<change>(bytes, even_latin | even_cyrillic, odd),
            far | no_pairs | other_leads | other_seconds};
}

// Changes the characters that are whole, of a block that begins with one. Returns whether all are known.
template <ascii_case change> bool change_whole_characters(letter_block& bytes) {
    const letter_block before = letters_before(bytes);
    // What is none of ASCII, U+0400 to U+047F, combining marks, Hebrew and Arabic, Indic and Chinese characters.
    const letter_block rare = within(bytes, 0xC2, 0xCB) | within(bytes, 0xCD, 0xCF) | within(bytes, 0xD2, 0xD6) |
                              within(bytes, 0xE1, 0xE2) | is(bytes, 0xEA) | within(bytes, 0xEF, 0xF4);
    const letter_block ascii = within(bytes, static_cast<int>(change), static_cast<int>(change) + 25) & 0x20;
    const letter_block pairs = change_pairs<change>(bytes, is(before, 0xD1) & from(bytes, 0xA0), letter_block{});
    letter_block added = change_cyrillic<change>(bytes, before) + pairs;
    if (has_bits(rare)) {
        const letter_changes others = change_other_letters<change>(bytes, before);
        if (has_bits(others.unknown)) {
            return false;
        }
        added += others.added;
    }
    bytes = (bytes ^ ascii) + added;
    return true;
}

// Writes well-formed UTF-8 in the other case. Returns false where a letter is not known; what is written has no meaning then.
template <ascii_case change> bool change_letters(std::uint8_t* __restrict to, const std::uint8_t* __restrict from, std::size_t length) {
    std::size_t done = 0;
    while (length - done > letter_block_length) {
        letter_block bytes = load_letters(from + done);
        const std::uint32_t continuing = high_bits(below(bytes, 0xC0));
        if (!change_whole_characters<change>(bytes)) {
            return false;
        }
        store_letters(to + done, bytes);
        // The last character may go on behind the block.
        constexpr std::uint32_t unused_bits = 32 - letter_block_length;
        done += letter_block_length - 1 - static_cast<std::uint32_t>(std::countl_one(continuing << unused_bits));
    }
    std::uint8_t rest[letter_block_length] = {};
    if (done < length) {
        std::memcpy(rest, from + done, length - done);
    }
    letter_block bytes = load_letters(rest);
    const bool are_known = change_whole_characters<change>(bytes);
    store_letters(rest, bytes);
    if (done < length) {
        std::memcpy(to + done, rest, length - done);
    }
    return are_known;
}

} // namespace bifun

#endif
