// Integers as text, eight digits at a time.
#ifndef BIFUN_NUMERIC_INTEGER_TEXT_H
#define BIFUN_NUMERIC_INTEGER_TEXT_H

#include <bit>
#include <cstdint>
#include <cstring>

#include "layouts/eight_digits.h"

namespace bifun {

constexpr std::uint32_t integer_text_size = 32;

// Writes the number to the beginning of `text`, of which integer_text_size bytes may be overwritten, and returns its length. Without a
// branch: how many digits numbers have is hard to guess.
inline std::uint32_t write_integer(std::int64_t number, std::uint8_t* text) {
    constexpr std::uint64_t eight = 100'000'000;
    constexpr std::uint64_t zeros = 0x3030303030303030;
    const bool negative = number < 0;
    const std::uint64_t magnitude = negative ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);
    *text = '-'; // unless a digit takes its place
    std::uint8_t* at = text + static_cast<std::uint32_t>(negative);

    // Of the first group that has other digits than zeros these go, of those before it all digits.
    std::uint64_t shown = 0;
    const auto write_group = [&](std::uint64_t group, std::uint64_t last_digit) {
        const std::uint64_t characters = eight_digits(static_cast<std::uint32_t>(group));
        const auto hidden = static_cast<std::uint32_t>(std::countr_zero((characters ^ zeros) | shown | last_digit)) & 0x78U;
        const std::uint64_t first_shown = characters >> (hidden & 63);
        std::memcpy(at, &first_shown, sizeof first_shown);
        at += 8 - hidden / 8;
        shown = hidden == 64 ? 0 : 1;
    };
    const std::uint64_t leading = magnitude / eight;
    write_group(leading / eight, 0);
    write_group(leading % eight, 0);
    write_group(magnitude % eight, std::uint64_t{1} << 56);
    return static_cast<std::uint32_t>(at - text);
}

} // namespace bifun

#endif
