// SPDX-License-Identifier: Apache-2.0
// Decimal digits eight at a time, in the bytes of a 64-bit word: the first digit is the lowest byte.
#ifndef BIFUN_EMBEDDED_DECIMAL_DIGITS_H
#define BIFUN_EMBEDDED_DECIMAL_DIGITS_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "embedded/decimal/decimal_parts.h"
#include "layouts/decimal_text.h"
#include "layouts/eight_digits.h"

namespace zqengine {

using bifun::decimal_layout::split_at_19_digits;
using bifun::decimal_layout::ten_to_19;

constexpr std::uint64_t eight_zero_characters = 0x3030303030303030;

// How many bytes of the word, counted from the first, are digits.
inline std::uint32_t leading_digits(std::uint64_t characters) {
    // A digit gives 0 to 9, which the addition leaves below 0x80. Carries reach only bytes behind the first that is no digit.
    const std::uint64_t values = characters ^ eight_zero_characters;
    const std::uint64_t others = ((values + 0x7676767676767676) | values) & 0x8080808080808080;
    return static_cast<std::uint32_t>(std::countr_zero(others)) / 8;
}

// The number that the first `count` bytes spell; `count` is 1 to 8 and they are digits.
inline std::uint32_t number_of_digits(std::uint64_t characters, std::uint32_t count) {
    // Digits become 0 to 9, moved up so that the last is in the highest byte; then neighbours are joined three times.
    std::uint64_t digits = (characters ^ eight_zero_characters) << (64 - 8 * count);
    digits = (digits * 10 + (digits >> 8)) & 0x00FF00FF00FF00FF;
    digits = (digits * 100 + (digits >> 16)) & 0x0000FFFF0000FFFF;
    return static_cast<std::uint32_t>(digits * 10000 + (digits >> 32));
}

// Writes eight digits; `number` is below 10^8.
inline void write_8_digits(char* destination, std::uint32_t number) {
    const std::uint64_t characters = bifun::eight_digits(number);
    std::memcpy(destination, &characters, sizeof characters);
}

// Writes the last 19 digits of room for 24 that end at `end`; those before are garbage. `number` is below 10^19.
inline void write_19_digits(char* end, std::uint64_t number) {
    constexpr std::uint64_t ten_to_16 = 10'000'000'000'000'000;
    constexpr std::uint32_t ten_to_8 = 100'000'000;
    const std::uint64_t low = number % ten_to_16;
    write_8_digits(end - 24, static_cast<std::uint32_t>(number / ten_to_16));
    write_8_digits(end - 16, static_cast<std::uint32_t>(low / ten_to_8));
    write_8_digits(end - 8, static_cast<std::uint32_t>(low % ten_to_8));
}

// Room for the digits of any coefficient, written from the end.
constexpr std::size_t digit_room = 48;

// Writes the digits of a coefficient so that the last stands before `end`, over zeros or garbage in the rest of the room.
inline void write_coefficient(char* end, uint128 coefficient) {
    if (coefficient < ten_to_19) {
        write_19_digits(end, static_cast<std::uint64_t>(coefficient));
        return;
    }
    const auto parts = split_at_19_digits(coefficient);
    write_19_digits(end, parts.lower);
    // The upper half goes second: the garbage before the lower one lies where its last digits come.
    write_19_digits(end - 19, parts.upper);
}

} // namespace zqengine

#endif
