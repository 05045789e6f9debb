// SPDX-License-Identifier: Apache-2.0
// Whether many bytes are ASCII, or well-formed UTF-8, in the widest vectors that the build's instruction set has and that look bytes up;
// BIFUN_WIDE_BYTES is defined where there are such.
#ifndef BIFUN_STR_UTF8_VALIDATION_H
#define BIFUN_STR_UTF8_VALIDATION_H

#include "bop/frame/byte_masks.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace bifun {

#if defined(BIFUN_MASKED_LOADS)

using wide_bytes = __m512i;
inline wide_bytes load_wide(const std::uint8_t* bytes) { return _mm512_loadu_si512(bytes); }
inline wide_bytes load_part(const std::uint8_t* bytes, std::uint32_t skipped, std::uint32_t length) {
    return _mm512_maskz_loadu_epi8(_bzhi_u64(~std::uint64_t{0}, length) & ~first_bits(skipped), bytes);
}
inline bool has_bytes_beyond_ascii(wide_bytes bytes) { return _mm512_movepi8_mask(bytes) != 0; }
inline bool has_bits(wide_bytes bytes) { return _mm512_test_epi8_mask(bytes, bytes) != 0; }
inline wide_bytes every_wide_byte(std::uint8_t byte) { return _mm512_set1_epi8(static_cast<char>(byte)); }
inline wide_bytes either(wide_bytes a, wide_bytes b) { return _mm512_or_si512(a, b); }
inline wide_bytes both(wide_bytes a, wide_bytes b) { return _mm512_and_si512(a, b); }
inline wide_bytes difference(wide_bytes a, wide_bytes b) { return _mm512_xor_si512(a, b); }
inline wide_bytes reduced(wide_bytes bytes, std::uint8_t by) { return _mm512_subs_epu8(bytes, every_wide_byte(by)); }
inline wide_bytes high_halves(wide_bytes bytes) { return both(_mm512_srli_epi16(bytes, 4), every_wide_byte(0x0F)); }
inline wide_bytes looked_up(const std::uint8_t (&table)[16], wide_bytes index) {
    // Masked, because gcc warns of the undefined bits in the other form.
    return _mm512_shuffle_epi8(_mm512_maskz_broadcast_i32x4(0xFFFF, _mm_loadu_si128(reinterpret_cast<const __m128i*>(table))), index);
}
#define BIFUN_WIDE_BYTES

#elif defined(__AVX2__)

using wide_bytes = __m256i;
inline wide_bytes load_wide(const std::uint8_t* bytes) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes)); }
inline bool has_bytes_beyond_ascii(wide_bytes bytes) { return _mm256_movemask_epi8(bytes) != 0; }
inline bool has_bits(wide_bytes bytes) { return _mm256_testz_si256(bytes, bytes) == 0; }
inline wide_bytes every_wide_byte(std::uint8_t byte) { return _mm256_set1_epi8(static_cast<char>(byte)); }
inline wide_bytes either(wide_bytes a, wide_bytes b) { return _mm256_or_si256(a, b); }
inline wide_bytes both(wide_bytes a, wide_bytes b) { return _mm256_and_si256(a, b); }
inline wide_bytes difference(wide_bytes a, wide_bytes b) { return _mm256_xor_si256(a, b); }
inline wide_bytes reduced(wide_bytes bytes, std::uint8_t by) { return _mm256_subs_epu8(bytes, every_wide_byte(by)); }
inline wide_bytes high_halves(wide_bytes bytes) { return both(_mm256_srli_epi16(bytes, 4), every_wide_byte(0x0F)); }
inline wide_bytes looked_up(const std::uint8_t (&table)[16], wide_bytes index) {
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(table))), index);
}
#define BIFUN_WIDE_BYTES

#elif defined(BIFUN_BLOCK_LOOKUP)

using wide_bytes = byte_block;
inline wide_bytes load_wide(const std::uint8_t* bytes) { return load_block(bytes); }
inline bool has_bytes_beyond_ascii(wide_bytes bytes) { return ((first_word(bytes) | last_word(bytes)) & 0x8080808080808080) != 0; }
inline bool has_bits(wide_bytes bytes) { return (first_word(bytes) | last_word(bytes)) != 0; }
inline wide_bytes every_wide_byte(std::uint8_t byte) { return repeated(byte); }
inline wide_bytes either(wide_bytes a, wide_bytes b) { return a | b; }
inline wide_bytes both(wide_bytes a, wide_bytes b) { return a & b; }
inline wide_bytes difference(wide_bytes a, wide_bytes b) { return a ^ b; }
inline wide_bytes reduced(wide_bytes bytes, std::uint8_t by) { return (bytes - by) & where_at_least(bytes, repeated(by)); }
inline wide_bytes high_halves(wide_bytes bytes) { return bytes >> 4; }
inline wide_bytes looked_up(const std::uint8_t (&table)[16], wide_bytes index) { return looked_up(load_block(table), index); }
#define BIFUN_WIDE_BYTES

#endif

#if defined(BIFUN_WIDE_BYTES)

#if !defined(BIFUN_MASKED_LOADS)
// The bytes from `skipped` to `length`, zeros in place of the others.
inline wide_bytes load_part(const std::uint8_t* bytes, std::uint32_t skipped, std::uint32_t length) {
    std::uint8_t part[sizeof(wide_bytes)] = {};
    for (std::uint32_t i = skipped; i < length; ++i) {
        part[i] = bytes[i];
    }
    return load_wide(part);
}
#endif

// What a pair of bytes may be wrong in, as a bit for each; a byte that continues wants a look at three. J. Keiser and D. Lemire, Validating
// UTF-8 in less than one instruction per byte, 2021.
namespace wrong_pair {
constexpr std::uint8_t too_short = 1;
constexpr std::uint8_t too_long = 2;
constexpr std::uint8_t overlong_of_three = 4;
constexpr std::uint8_t too_large = 8;
constexpr std::uint8_t surrogate = 16;
constexpr std::uint8_t overlong_of_two = 32;
constexpr std::uint8_t overlong_of_four = 64;
constexpr std::uint8_t far_too_large = 64;
constexpr std::uint8_t two_continue = 128;
constexpr std::uint8_t any = too_short | too_long | two_continue; // whatever the first byte's lower half is
constexpr std::uint8_t large = any | too_large | far_too_large;

constexpr std::uint8_t by_first_high[16] = {too_long,
                                            too_long,
                                            too_long,
                                            too_long,
                                            too_long,
                                            too_long,
                                            too_long,
                                            too_long,
                                            two_continue,
                                            two_continue,
                                            two_continue,
                                            two_continue,
                                            too_short | overlong_of_two,
                                            too_short,
                                            too_short | overlong_of_three | surrogate,
                                            too_short | too_large | far_too_large | overlong_of_four};
constexpr std::uint8_t by_first_low[16] = {any | overlong_of_three | overlong_of_two | overlong_of_four,
                                           any | overlong_of_two,
                                           any,
                                           any,
                                           any | too_large,
                                           large,
                                           large,
                                           large,
                                           large,
                                           large,
                                           large,
                                           large,
                                           large,
                                           large | surrogate,
                                           large,
                                           large};
constexpr std::uint8_t continuing = too_long | overlong_of_two | two_continue;
constexpr std::uint8_t by_second_high[16] = {too_short,
                                             too_short,
                                             too_short,
                                             too_short,
                                             too_short,
                                             too_short,
                                             too_short,
                                             too_short,
                                             continuing | overlong_of_three | far_too_large | overlong_of_four,
                                             continuing | overlong_of_three | too_large,
                                             continuing | surrogate | too_large,
                                             continuing | surrogate | too_large,
                                             too_short,
                                             too_short,
                                             too_short,
                                             too_short};
} // namespace wrong_pair

// Bits are set where bytes are wrong; `back` are the bytes as many places before.
inline wide_bytes wrong_bytes(wide_bytes bytes, wide_bytes back_1, wide_bytes back_2, wide_bytes back_3) {
    const wide_bytes pairs = both(both(looked_up(wrong_pair::by_first_high, high_halves(back_1)),
                                       looked_up(wrong_pair::by_first_low, both(back_1, every_wide_byte(0x0F)))),
                                  looked_up(wrong_pair::by_second_high, high_halves(bytes)));
    // Behind a lead of three or four bytes two that continue are right.
    const wide_bytes third_or_fourth = either(reduced(back_2, 0xE0 - 0x80), reduced(back_3, 0xF0 - 0x80));
    return difference(both(third_or_fourth, every_wide_byte(0x80)), pairs);
}

// Where the first vector begins of whose bytes some are beyond ASCII; `end` where there is none.
inline const std::uint8_t* skip_ascii(const std::uint8_t* bytes, const std::uint8_t* end) {
    while (end - bytes >= static_cast<std::ptrdiff_t>(sizeof(wide_bytes))) {
        if (has_bytes_beyond_ascii(load_wide(bytes))) {
            return bytes;
        }
        bytes += sizeof(wide_bytes);
    }
    return has_bytes_beyond_ascii(load_part(bytes, 0, static_cast<std::uint32_t>(end - bytes))) ? bytes : end;
}

// Whether the bytes from `begin` to `end` are well-formed UTF-8.
inline bool is_well_formed(const std::uint8_t* begin, const std::uint8_t* end) {
    constexpr std::ptrdiff_t width = sizeof(wide_bytes);
    constexpr std::ptrdiff_t longest_character = 4;
    wide_bytes wrong = every_wide_byte(0);
    // What is announced by the last bytes shows behind them.
    for (const std::uint8_t* at = begin; at < end + longest_character - 1; at += width) {
        if (at - begin >= longest_character - 1 && end - at >= width) {
            wrong = either(wrong, wrong_bytes(load_wide(at), load_wide(at - 1), load_wide(at - 2), load_wide(at - 3)));
            continue;
        }
        const auto back = [&](std::ptrdiff_t places) {
            const std::ptrdiff_t before = begin - (at - places); // of these bytes are before the first
            const std::ptrdiff_t length = end - (at - places);
            return load_part(at - places, static_cast<std::uint32_t>(before > 0 ? before : 0),
                             static_cast<std::uint32_t>(length < 0       ? 0
                                                        : length < width ? length
                                                                         : width));
        };
        wrong = either(wrong, wrong_bytes(back(0), back(1), back(2), back(3)));
    }
    return !has_bits(wrong);
}

#endif

} // namespace bifun

#endif
