// SPDX-License-Identifier: Apache-2.0
// Eight decimal digits at a time, for whoever writes numbers: the library and the embedded engine.
#ifndef BIFUN_LAYOUTS_EIGHT_DIGITS_H
#define BIFUN_LAYOUTS_EIGHT_DIGITS_H

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace bifun {

// The characters of a number below 10^8, the first in the lowest byte. Two numbers of four digits become four of two and eight of one;
// each division is a multiplication that is exact for its range.
inline std::uint64_t eight_digits(std::uint32_t number) {
    const std::uint64_t fours = number / 10000 | std::uint64_t{number % 10000} << 32;
    const std::uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007F0000007F;
    const std::uint64_t twos = hundreds | (fours - hundreds * 100) << 16;
    const std::uint64_t tens = (twos * 103 >> 10) & 0x000F000F000F000F;
    const std::uint64_t ones = tens | (twos - tens * 10) << 8;
    return ones | 0x3030303030303030;
}

struct sixteen_characters {
    std::uint64_t first;
    std::uint64_t last;
};

// The characters of two numbers below 10^8, in the same way.
inline sixteen_characters sixteen_digits(std::uint32_t first, std::uint32_t last) {
#if defined(__SSE2__)
    const __m128i numbers = _mm_set_epi64x(last, first);
    const __m128i thousands = _mm_srli_epi64(_mm_mul_epu32(numbers, _mm_set1_epi64x(3518437209)), 45);
    const __m128i rest = _mm_sub_epi64(numbers, _mm_mul_epu32(thousands, _mm_set1_epi64x(10000)));
    const __m128i fours = _mm_or_si128(thousands, _mm_slli_epi64(rest, 32));
    const __m128i hundreds = _mm_srli_epi32(_mm_madd_epi16(fours, _mm_set1_epi32(10486)), 20);
    const __m128i twos = _mm_or_si128(hundreds, _mm_slli_epi32(_mm_sub_epi32(fours, _mm_madd_epi16(hundreds, _mm_set1_epi32(100))), 16));
    const __m128i tens = _mm_mulhi_epu16(twos, _mm_set1_epi16(6554));
    // tens | (twos - 10 tens) << 8
    const __m128i digits_of_twos = _mm_sub_epi16(_mm_slli_epi16(twos, 8), _mm_mullo_epi16(tens, _mm_set1_epi16(10 * 256 - 1)));
    const __m128i digits = _mm_or_si128(digits_of_twos, _mm_set1_epi8('0'));
    return {static_cast<std::uint64_t>(_mm_cvtsi128_si64(digits)),
            static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(digits, digits)))};
#else
    return {eight_digits(first), eight_digits(last)};
#endif
}

} // namespace bifun

#endif
