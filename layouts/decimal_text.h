// SPDX-License-Identifier: Apache-2.0
// The text of packed decimals (layouts/decimal_layout.h), for whoever writes numbers: the library and the embedded engine.
#ifndef BIFUN_LAYOUTS_DECIMAL_TEXT_H
#define BIFUN_LAYOUTS_DECIMAL_TEXT_H

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "layouts/byte_block.h"
#include "layouts/decimal_rounding.h"
#include "layouts/eight_digits.h"

namespace bifun::decimal_layout {

// Sixteen bytes that begin 16 - n bytes into one of these have n of the first kind before the others.
struct byte_border {
    std::uint8_t bytes[33];
};
constexpr byte_border border_of(std::uint8_t before, std::uint8_t at, std::uint8_t behind) {
    byte_border border{};
    for (std::size_t i = 0; i < sizeof border; ++i) {
        border.bytes[i] = i < 16 ? before : i == 16 ? at : behind;
    }
    return border;
}
[[gnu::visibility("hidden")]] inline constexpr byte_border bytes_before = border_of(0xFF, 0, 0);
[[gnu::visibility("hidden")]] inline constexpr byte_border bytes_behind = border_of(0, 0, 0xFF);
[[gnu::visibility("hidden")]] inline constexpr byte_border point_between = border_of(0, '.', 0);

inline byte_block bytes_around(const byte_border& border, std::uint32_t count) { return load_block(border.bytes + 16 - count); }

// Sixteen characters with a point before that at `place`, 0 to 15. The last one goes.
inline byte_block with_point(byte_block characters, std::uint32_t place) {
    return (characters & bytes_around(bytes_before, place)) | (moved_back<1>(characters) & bytes_around(bytes_behind, place)) |
           bytes_around(point_between, place);
}

constexpr std::uint32_t short_text_room = 32;

// Writes what xdec_to_char_with_zero writes, but no NUL, and returns its length, where the text has up to 19 digits: a zero before the
// point and all digits of the scale count. Otherwise 0. `text` has short_text_room bytes, all of which may be overwritten. Without a branch
// on the number, but for its scale.
inline std::uint32_t write_short(const xdec& value, std::uint8_t* text) {
    constexpr std::uint32_t most_digits = 19;
    const std::uint32_t scale = value.bytes[scale_at];
    const std::uint32_t digits = std::max(coefficient_digits(value), scale + 1);
    if (digits > most_digits || value.bytes[exponent_at] != 0) {
        return 0;
    }
    std::uint64_t coefficient;
    std::memcpy(&coefficient, value.bytes + coefficient_at, sizeof coefficient);
    const std::uint32_t negative = value.bytes[0] == XDEC_NEGATIVE ? 1 : 0;
    *text = '-'; // unless a digit takes its place
    text += negative;

    // As nineteen digits from the first one on: three, eight and eight.
    constexpr std::uint64_t ten_to_8 = 100'000'000;
    const std::uint64_t nineteen = coefficient * static_cast<std::uint64_t>(powers_of_ten[most_digits - digits]);
    const std::uint64_t eleven = nineteen / ten_to_8;
    const std::uint64_t first = eight_digits(static_cast<std::uint32_t>(eleven / ten_to_8)) >> 40;
    const auto [middle, last] =
        sixteen_digits(static_cast<std::uint32_t>(eleven % ten_to_8), static_cast<std::uint32_t>(nineteen % ten_to_8));
    const uint128 sixteen = uint128{last} << 88 | uint128{middle} << 24 | first;
    const auto three = static_cast<std::uint32_t>(last >> 40);

    const std::uint32_t integer_digits = digits - scale;
    constexpr std::uint32_t word_digits = 16;
    if (scale != 0 && integer_digits < word_digits) {
        const byte_block characters = block_of_words(static_cast<std::uint64_t>(sixteen), static_cast<std::uint64_t>(sixteen >> 64));
        const std::uint32_t behind = static_cast<std::uint32_t>(sixteen >> 120) | three << 8;
        store_block(text, with_point(characters, integer_digits));
        std::memcpy(text + word_digits, &behind, sizeof behind);
    } else {
        const std::uint32_t before = scale != 0 ? 8 * (integer_digits - word_digits) : 24;
        const std::uint32_t kept = (1U << before) - 1;
        const std::uint32_t behind = (three & kept) | (three & ~kept) << 8 | std::uint32_t{'.'} << before;
        std::memcpy(text, &sixteen, sizeof sixteen);
        std::memcpy(text + word_digits, &behind, sizeof behind);
    }
    return negative + digits + (scale != 0 ? 1 : 0);
}

} // namespace bifun::decimal_layout

#endif
