// SPDX-License-Identifier: Apache-2.0
// Forms of fixed width, such as HH:MM:SS, read eight characters at a time: the first is in the lowest byte.
#ifndef BIFUN_LAYOUTS_FIXED_DIGITS_H
#define BIFUN_LAYOUTS_FIXED_DIGITS_H

#include <cstdint>
#include <cstring>

namespace bifun {

inline std::uint64_t eight_characters(const std::uint8_t* first) {
    std::uint64_t characters;
    std::memcpy(&characters, first, sizeof characters);
    return characters;
}

constexpr std::uint64_t pattern_of(const char (&pattern)[9]) {
    std::uint64_t characters = 0;
    for (int i = 7; i >= 0; --i) {
        characters = characters << 8 | static_cast<std::uint8_t>(pattern[i]);
    }
    return characters;
}

// Digits joined with the digit behind them: a byte at which two of them begin holds their number. What is in other bytes, and what a last
// digit without a neighbour gives, has no meaning.
struct joined_digits {
    std::uint64_t pairs;

    [[nodiscard]] std::uint32_t at(int index) const { return static_cast<std::uint32_t>(pairs >> 8 * index & 0xFF); }
};

// Whether the characters are those of the pattern, with any digits where it has zeros.
template <std::uint64_t pattern> bool match_digits(std::uint64_t characters, joined_digits& digits) {
    // Added to a byte that may be there, this leaves its top bit clear: 0x76 allows 0 to 9, and 0x7F 0 only.
    constexpr std::uint64_t allowance = [] {
        std::uint64_t bytes = 0;
        for (int i = 0; i < 64; i += 8) {
            bytes |= std::uint64_t{(pattern >> i & 0xFF) == '0' ? 0x76U : 0x7FU} << i;
        }
        return bytes;
    }();
    const std::uint64_t values = characters ^ pattern;
    digits.pairs = values * 10 + (values >> 8);
    // Carries reach only bytes behind one that has its top bit set itself.
    return (((values + allowance) | values) & 0x8080808080808080) == 0;
}

} // namespace bifun

#endif
