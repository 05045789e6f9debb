// SPDX-License-Identifier: Apache-2.0
// Integers as text, eight digits at a time.
#ifndef BIFUN_NUMERIC_INTEGER_TEXT_H
#define BIFUN_NUMERIC_INTEGER_TEXT_H

#include <bit>
#include <cstdint>
#include <cstring>

#include "bop/frame/byte_masks.h"
#include "layouts/eight_digits.h"

namespace bifun {

constexpr std::uint32_t integer_text_size = 32;

// Writes the number to the beginning of `text`, of which integer_text_size bytes may be overwritten, and returns its length. Without a
// branch: how many digits numbers have is hard to guess.
inline std::uint32_t write_integer(std::int64_t number, std::uint8_t* text) {
    constexpr std::uint64_t eight = 100'000'000;
    const std::uint32_t negative = number < 0 ? 1 : 0;
    const std::uint64_t magnitude = negative != 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
    const std::uint64_t leading = magnitude / eight;
    const auto first = static_cast<std::uint32_t>(leading / eight);
    const auto middle = static_cast<std::uint32_t>(leading % eight);
    const auto last = static_cast<std::uint32_t>(magnitude % eight);
    *text = '-'; // unless a digit takes its place
    text += negative;
#if defined(BIFUN_MASKED_LOADS)
    // The steps of eight_digits() for all groups at once.
    const __m256i numbers = _mm256_set_epi64x(0, last, middle, first);
    const __m256i thousands = _mm256_srli_epi64(_mm256_mul_epu32(numbers, _mm256_set1_epi64x(3518437209)), 45);
    const __m256i rest = _mm256_sub_epi64(numbers, _mm256_mul_epu32(thousands, _mm256_set1_epi64x(10000)));
    const __m256i fours = _mm256_or_si256(thousands, _mm256_slli_epi64(rest, 32));
    const __m256i hundreds = _mm256_srli_epi32(_mm256_madd_epi16(fours, _mm256_set1_epi32(10486)), 20);
    const __m256i below_hundred = _mm256_sub_epi32(fours, _mm256_madd_epi16(hundreds, _mm256_set1_epi32(100)));
    const __m256i twos = _mm256_or_si256(hundreds, _mm256_slli_epi32(below_hundred, 16));
    const __m256i tens = _mm256_mulhi_epu16(twos, _mm256_set1_epi16(6554));
    const __m256i ones = _mm256_sub_epi16(twos, _mm256_mullo_epi16(tens, _mm256_set1_epi16(10)));
    const __m256i digits = _mm256_or_si256(tens, _mm256_slli_epi16(ones, 8));
    constexpr std::uint32_t most_digits = 24;
    const std::uint32_t shown = _mm256_test_epi8_mask(digits, digits) | 1U << (most_digits - 1);
    const auto hidden = static_cast<std::uint32_t>(std::countr_zero(shown));
    // What is hidden lies in the texts before, and is not written.
    const __mmask32 written = ((1U << most_digits) - 1) & ~0U << hidden;
    _mm256_mask_storeu_epi8(text - hidden, written, _mm256_or_si256(digits, _mm256_set1_epi8('0')));
    return negative + most_digits - hidden;
#else
    // Of the first group that has other digits than zeros these go, of those before it all digits.
    std::uint64_t shown = 0;
    std::uint8_t* at = text;
    const auto write_group = [&](std::uint64_t characters, std::uint64_t last_digit) {
        constexpr std::uint64_t zeros = 0x3030303030303030;
        const auto hidden = static_cast<std::uint32_t>(std::countr_zero((characters ^ zeros) | shown | last_digit)) & 0x78U;
        const std::uint64_t characters_shown = characters >> (hidden & 63);
        std::memcpy(at, &characters_shown, sizeof characters_shown);
        at += 8 - hidden / 8;
        shown = hidden == 64 ? 0 : 1;
    };
    const auto [second, third] = sixteen_digits(middle, last);
    write_group(eight_digits(first), 0);
    write_group(second, 0);
    write_group(third, std::uint64_t{1} << 56);
    return negative + static_cast<std::uint32_t>(at - text);
#endif
}

} // namespace bifun

#endif
