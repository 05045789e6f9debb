// SPDX-License-Identifier: Apache-2.0
// Numbers written in the plainest way, which nearly all are, read without a branch on their bytes.
#ifndef BIFUN_EMBEDDED_DECIMAL_PLAIN_NUMBER_H
#define BIFUN_EMBEDDED_DECIMAL_PLAIN_NUMBER_H

#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace zqengine {

// digits x 10^-scale
struct plain_number {
    std::uint64_t digits;
    std::uint32_t scale;
    bool negative;
    bool is_plain; // else the others have no meaning
};

#if defined(__x86_64__)

namespace plain {

constexpr std::uint32_t most_bytes = 32;

// A text of up to 32 bytes so that its last byte is the last of the second block, with zeros ('0') before it.
struct aligned_text {
    __m128i first;
    __m128i second;
};

constexpr std::uint8_t no_byte = 0x80;

// Sixteen bytes that begin n bytes into it move a block 16 - n places back.
alignas(16) inline constexpr std::uint8_t places[] = {no_byte, no_byte, no_byte, no_byte, no_byte, no_byte, no_byte, no_byte,
                                                      no_byte, no_byte, no_byte, no_byte, no_byte, no_byte, no_byte, no_byte,
                                                      0,       1,       2,       3,       4,       5,       6,       7,
                                                      8,       9,       10,      11,      12,      13,      14,      15};

// Sixteen bytes that begin n bytes into it have 32 - n zeros.
alignas(16) inline constexpr std::uint8_t zeros[] = "00000000000000000000000000000000\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0";

inline __m128i load(const std::uint8_t* bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)); }

template <class Word> inline std::uint64_t load_word(const std::uint8_t* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

[[gnu::target("ssse3"), gnu::always_inline]] inline aligned_text align_by_lookups(const std::uint8_t* text, std::uint32_t length) {
    const std::uint8_t* const end = text + length;
    if (length >= 16) {
        const __m128i first = _mm_shuffle_epi8(load(text), load(places + length - 16));
        return {.first = _mm_or_si128(first, load(zeros + length)), .second = load(end - 16)};
    }
    std::uint64_t before = 0;
    std::uint64_t last = 0;
    if (length >= 8) {
        before = load_word<std::uint64_t>(text) << 8 * (15 - length) << 8;
        last = load_word<std::uint64_t>(end - 8);
    } else if (length >= 4) {
        last = load_word<std::uint32_t>(end - 4) << 32 | load_word<std::uint32_t>(text) << 8 * (8 - length);
    } else {
        last = std::uint64_t{text[0]} << 8 * (8 - length) | std::uint64_t{text[length / 2]} << 8 * (8 - length + length / 2) |
               std::uint64_t{end[-1]} << 56;
    }
    const __m128i second = _mm_set_epi64x(static_cast<std::int64_t>(last), static_cast<std::int64_t>(before));
    return {.first = _mm_set1_epi8('0'), .second = _mm_or_si128(second, load(zeros + 16 + length))};
}

// What is not loaded is not touched either.
[[gnu::target("avx512vl,avx512bw"), gnu::always_inline]] inline aligned_text align_by_masks(const std::uint8_t* text,
                                                                                            std::uint32_t length) {
    const std::uint32_t loaded = ~0U << (most_bytes - length);
    const std::uint8_t* const end = text + length;
    const __m128i zero = _mm_set1_epi8('0');
    return {.first = _mm_mask_loadu_epi8(zero, static_cast<__mmask16>(loaded), end - most_bytes),
            .second = _mm_mask_loadu_epi8(zero, static_cast<__mmask16>(loaded >> 16), end - most_bytes / 2)};
}

inline std::uint32_t bits_of(__m128i first, __m128i second) {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(first)) | static_cast<std::uint32_t>(_mm_movemask_epi8(second)) << 16;
}

// `bytes`, but `others` in the first `count` places, which may be below 0 or above 16.
[[gnu::target("ssse3"), gnu::always_inline]] inline __m128i replace_first(__m128i bytes, __m128i others, std::int32_t count) {
    const __m128i replaced = _mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(count)), load(places + 16));
    return _mm_or_si128(_mm_andnot_si128(replaced, bytes), _mm_and_si128(replaced, others));
}

[[gnu::target("ssse3"), gnu::always_inline]] inline plain_number number_of(const aligned_text& text, bool negative) {
    const __m128i zero = _mm_set1_epi8('0');
    const __m128i nine = _mm_set1_epi8(9);
    const __m128i point = _mm_set1_epi8('.');
    __m128i first = _mm_xor_si128(text.first, zero);
    __m128i second = _mm_xor_si128(text.second, zero);
    const std::uint32_t digits =
        bits_of(_mm_cmpeq_epi8(_mm_min_epu8(first, nine), first), _mm_cmpeq_epi8(_mm_min_epu8(second, nine), second));
    const std::uint32_t points = bits_of(_mm_cmpeq_epi8(text.first, point), _mm_cmpeq_epi8(text.second, point));

    // The digits before the point close up to those behind it.
    const std::int32_t moved = points != 0 ? std::countr_zero(points) + 1 : 0;
    const __m128i second_moved = _mm_alignr_epi8(second, first, 15);
    first = replace_first(first, _mm_slli_si128(first, 1), moved);
    second = replace_first(second, second_moved, moved - 16);

    // Neighbours are joined to numbers of two digits, of four and of eight.
    const __m128i tens = _mm_set1_epi16(0x010A);
    const __m128i hundreds = _mm_set1_epi32(0x00010064);
    const __m128i fours = _mm_packs_epi32(_mm_madd_epi16(_mm_maddubs_epi16(first, tens), hundreds),
                                          _mm_madd_epi16(_mm_maddubs_epi16(second, tens), hundreds));
    const __m128i eights = _mm_madd_epi16(fours, _mm_set1_epi32(0x00012710));
    const auto high = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
    const auto low = static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(eights, eights)));

    constexpr std::uint64_t ten_to_8 = 100'000'000;
    constexpr std::uint32_t most_high = UINT64_MAX / (ten_to_8 * ten_to_8) - 1;
    const bool fits = ((static_cast<std::uint32_t>(high) == 0) & (high >> 32 <= most_high)) != 0;
    return {.digits = (high >> 32) * ten_to_8 * ten_to_8 + (low & UINT32_MAX) * ten_to_8 + (low >> 32),
            .scale = points != 0 ? most_bytes - static_cast<std::uint32_t>(moved) : 0,
            .negative = negative,
            .is_plain = ((~digits == points) & ((points & (points - 1)) == 0) & fits) != 0};
}

// What stands behind the sign.
struct unsigned_text {
    const std::uint8_t* bytes;
    std::uint32_t length;
    bool negative;
    bool may_be_plain;
};

inline unsigned_text without_sign(const std::uint8_t* text, std::uint32_t length) {
    // By a comparison, processors would wait for what else is in the register that takes the one byte of its result: the number before.
    const std::uint32_t sign = length != 0 ? ((std::uint32_t{*text} ^ '-') - 1) >> 31 : 0;
    const std::uint32_t behind = length - sign;
    return {.bytes = text + sign,
            .length = behind,
            .negative = sign != 0,
            .may_be_plain = behind - 1 < most_bytes && (behind != 1 || text[sign] != '.')};
}

template <class Use> [[gnu::target("ssse3")]] std::int32_t use_by_lookups(const std::uint8_t* text, std::uint32_t length, const Use& use) {
    const unsigned_text number = without_sign(text, length);
    return use(number.may_be_plain ? number_of(align_by_lookups(number.bytes, number.length), number.negative) : plain_number{});
}

template <class Use>
[[gnu::target("avx512vl,avx512bw")]] std::int32_t use_by_masks(const std::uint8_t* text, std::uint32_t length, const Use& use) {
    const unsigned_text number = without_sign(text, length);
    return use(number.may_be_plain ? number_of(align_by_masks(number.bytes, number.length), number.negative) : plain_number{});
}

inline bool has_masks() { return __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512bw") != 0; }
inline bool has_lookups() { return __builtin_cpu_supports("ssse3") != 0; }

} // namespace plain
#endif

// Calls `use`, whose result it returns, with what the text says: digits with at most one point among, before or behind them, and a minus
// sign before. Plain are at most 32 bytes behind the sign that without zeros in front have up to 19 digits, though not all of 19. On
// processors without the instructions for it no text is plain. `use` is compiled for the processor, too: its code follows without a call.
template <class Use> std::int32_t with_plain_number(const std::uint8_t* text, std::uint32_t length, const Use& use) {
#if defined(__x86_64__)
    if (plain::has_masks()) {
        return plain::use_by_masks(text, length, use);
    }
    if (plain::has_lookups()) {
        return plain::use_by_lookups(text, length, use);
    }
#endif
    return use(plain_number{});
}

} // namespace zqengine

#endif
