// SPDX-License-Identifier: Apache-2.0
// Two decimal digits at a time, by a table: for numbers that lie apart, as the parts of a date do.
#ifndef BIFUN_LAYOUTS_TWO_DIGITS_H
#define BIFUN_LAYOUTS_TWO_DIGITS_H

#include <cstdint>

namespace bifun {

struct two_digit_table {
    std::uint16_t characters[100];
};

// The first digit in the lower byte.
inline constexpr two_digit_table two_digit_characters = [] {
    two_digit_table table{};
    for (std::uint32_t number = 0; number < 100; ++number) {
        table.characters[number] = static_cast<std::uint16_t>(('0' + number / 10) | ('0' + number % 10) << 8);
    }
    return table;
}();

// Of a number below 100, as the low bits of a word.
inline std::uint64_t two_digits(std::uint32_t number) { return two_digit_characters.characters[number]; }

// Of a number below 10000.
inline std::uint64_t four_digits(std::uint32_t number) {
    const std::uint32_t hundreds = number * 5243 >> 19;
    return two_digits(hundreds) | two_digits(number - hundreds * 100) << 16;
}

} // namespace bifun

#endif
