// SPDX-License-Identifier: Apache-2.0
// Texts of fixed width under a date format (dfm_fixed_text of engine/date_format.h), written without a call: sixteen characters at a time,
// by processors that can move them so.
#ifndef BIFUN_LAYOUTS_FIXED_TEXT_H
#define BIFUN_LAYOUTS_FIXED_TEXT_H

#include <cstdint>

#if defined(__SSSE3__)
#include <immintrin.h>
#endif

#include "engine/date_format.h"
#include "layouts/two_digits.h"

namespace bifun::fixed_text {

// YYYYMMDD and 00HHMMSS, the first character in the lowest byte. The year has at most four digits and the others two.
struct digit_words {
    std::uint64_t date;
    std::uint64_t time;
};

[[gnu::always_inline]] inline digit_words digits_of(std::uint32_t year, std::uint32_t month, std::uint32_t day, std::uint32_t hour,
                                                    std::uint32_t minute, std::uint32_t second) {
    return {.date = four_digits(year) | two_digits(month) << 32 | two_digits(day) << 48,
            .time = two_digits(hour) << 16 | two_digits(minute) << 32 | two_digits(second) << 48};
}

// The values for which a format says what it says.
constexpr std::uint32_t last_year = 9999;
constexpr std::uint32_t last_hour = 99;

#if defined(__SSSE3__)
constexpr bool can_write = true;

// May write up to DFM_FIXED_TEXT_SIZE bytes.
inline void write(const dfm_fixed_text& text, digit_words digits, std::uint8_t* out) {
    const __m128i characters = _mm_set_epi64x(static_cast<std::int64_t>(digits.time), static_cast<std::int64_t>(digits.date));
    const std::uint32_t length = text.length;
    std::uint32_t at = 0;
    do {
        const __m128i order = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.order + at));
        const __m128i others = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.others + at));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + at), _mm_or_si128(_mm_shuffle_epi8(characters, order), others));
        at += 16;
    } while (at < length);
}
#else
constexpr bool can_write = false;
inline void write(const dfm_fixed_text& /*text*/, digit_words /*digits*/, std::uint8_t* /*out*/) {}
#endif

} // namespace bifun::fixed_text

#endif
