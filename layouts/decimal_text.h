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

// `count` is -1 to 16; all sixteen are of the last kind where it is -1.
inline byte_block bytes_around(const byte_border& border, std::int32_t count) { return load_block(border.bytes + (16 - count)); }

// Sixteen characters with a point before that at `place`, and those behind it, from the last one of `before` on where it is -1, moved back.
// The last one goes. Without a point where the place is -1 or 16.
inline byte_block with_point(byte_block before, byte_block characters, std::int32_t place) {
    const byte_block moved = moved_back<1>(characters) | moved_to_front<15>(before);
    return (characters & bytes_around(bytes_before, place)) | (moved & bytes_around(bytes_behind, place)) |
           bytes_around(point_between, place);
}
inline byte_block with_point(byte_block characters, std::uint32_t place) {
    return with_point(byte_block{}, characters, static_cast<std::int32_t>(place));
}

// How many digits a text shows, with a zero before the point and all of the scale.
inline std::uint32_t shown_digits(const xdec& value) { return std::max(coefficient_digits(value), value.bytes[scale_at] + 1U); }

constexpr std::uint32_t most_short_digits = 19;
constexpr std::uint32_t most_long_digits = 38;

inline bool has_short_text(const xdec& value) { return shown_digits(value) <= most_short_digits && value.bytes[exponent_at] == 0; }

constexpr std::uint32_t short_text_room = 32;

// Writes what xdec_to_char_with_zero writes, but no NUL, and returns its length, where the text has up to 19 digits. Otherwise 0. `text`
// has short_text_room bytes, all of which may be overwritten. Without a branch on the number, but for its scale.
inline std::uint32_t write_short(const xdec& value, std::uint8_t* text) {
    const std::uint32_t scale = value.bytes[scale_at];
    const std::uint32_t digits = shown_digits(value);
    if (!has_short_text(value)) {
        return 0;
    }
    std::uint64_t coefficient;
    std::memcpy(&coefficient, value.bytes + coefficient_at, sizeof coefficient);
    const std::uint32_t negative = value.bytes[0] == XDEC_NEGATIVE ? 1 : 0;
    *text = '-'; // unless a digit takes its place
    text += negative;

    // As nineteen digits from the first one on: three, eight and eight.
    constexpr std::uint64_t ten_to_8 = 100'000'000;
    const std::uint64_t nineteen = coefficient * static_cast<std::uint64_t>(powers_of_ten[most_short_digits - digits]);
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

constexpr std::uint64_t ten_to_19 = 10'000'000'000'000'000'000U;

struct digit_halves {
    std::uint64_t upper;
    std::uint64_t lower;
};

// Quotient and remainder by d = 10^19 of a number below 10^38. Multiplies by the reciprocal, after Moeller and Granlund, "Improved
// division by invariant integers", algorithm 4; d has its top bit set, as that requires. The last step there, for a remainder still too
// large, is left out: the remainder before the correction below is
//     (high x k + low x (2^64 - d) + (estimate mod 2^64) x d) / 2^64 - d,    k = 2^128 - (2^64 + reciprocal) x d,
// which for numbers below 10^38 is less than 0.95 d.
inline digit_halves split_at_19_digits(uint128 number) {
    constexpr auto reciprocal = static_cast<std::uint64_t>(~uint128{0} / ten_to_19); // less 2^64
    const uint128 estimate = uint128{reciprocal} * high_half(number) + number;
    std::uint64_t quotient = high_half(estimate) + 1;
    std::uint64_t remainder = low_half(number) - quotient * ten_to_19;
    // In arithmetic, for whether it is so is as good as random.
    const std::uint64_t too_far = remainder > low_half(estimate) ? 1 : 0;
    quotient -= too_far;
    remainder += ten_to_19 & (std::uint64_t{0} - too_far);
    return {.upper = quotient, .lower = remainder};
}

constexpr std::uint32_t long_text_room = 64;

// The same where the text has up to 38 digits, in long_text_room bytes: without a branch on the number, but the shorter texts take longer.
inline std::uint32_t write_long(const xdec& value, std::uint8_t* text) {
    const std::uint32_t scale = value.bytes[scale_at];
    const std::uint32_t digits = shown_digits(value);
    if (digits > most_long_digits || value.bytes[exponent_at] != 0) {
        return 0;
    }
    const std::uint32_t negative = value.bytes[0] == XDEC_NEGATIVE ? 1 : 0;
    *text = '-'; // unless a digit takes its place
    text += negative;

    // As 38 digits from the first one on: sixteen, sixteen and six.
    constexpr std::uint64_t ten_to_6 = 1'000'000;
    constexpr std::uint64_t ten_to_8 = 100'000'000;
    constexpr std::uint64_t ten_to_13 = 10'000'000'000'000;
    const auto [upper, lower] = split_at_19_digits(coefficient(value) * powers_of_ten[most_long_digits - digits]);
    const std::uint64_t first = upper / 1000;
    const std::uint64_t second = upper % 1000 * ten_to_13 + lower / ten_to_6;
    const auto last = static_cast<std::uint32_t>(lower % ten_to_6 * 100);
    const auto characters_of = [](std::uint64_t sixteen) {
        const auto [eight, others] =
            sixteen_digits(static_cast<std::uint32_t>(sixteen / ten_to_8), static_cast<std::uint32_t>(sixteen % ten_to_8));
        return block_of_words(eight, others);
    };
    const byte_block first_characters = characters_of(first);
    const byte_block second_characters = characters_of(second);
    const byte_block last_characters = block_of_words(eight_digits(last), 0);

    constexpr std::int32_t nowhere = 64;
    const std::int32_t point = scale != 0 ? static_cast<std::int32_t>(digits - scale) : nowhere;
    const auto place_from = [point](std::int32_t begin) { return std::clamp(point - begin, -1, 16); };
    store_block(text, with_point(byte_block{}, first_characters, place_from(0)));
    store_block(text + 16, with_point(first_characters, second_characters, place_from(16)));
    store_block(text + 32, with_point(second_characters, last_characters, place_from(32)));
    return negative + digits + (scale != 0 ? 1 : 0);
}

} // namespace bifun::decimal_layout

#endif
