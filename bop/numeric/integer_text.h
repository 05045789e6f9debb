// Integers as text, eight digits at a time.
#ifndef BIFUN_NUMERIC_INTEGER_TEXT_H
#define BIFUN_NUMERIC_INTEGER_TEXT_H

#include <bit>
#include <cstdint>
#include <cstring>

#include "layouts/eight_digits.h"

namespace bifun {

constexpr std::size_t integer_text_size = 32;

// Writes the number into `buffer`, of integer_text_size bytes, from its end, and returns where it begins; it ends with the buffer.
inline char* write_integer(std::int64_t number, char* buffer) {
    constexpr std::uint64_t eight = 100'000'000;
    constexpr std::uint64_t sixteen = eight * eight;
    const bool negative = number < 0;
    const std::uint64_t magnitude = negative ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number);

    char* first = buffer + integer_text_size;
    std::uint64_t leading = magnitude; // what is left for the first group, below 10^8
    const auto write_group = [&first](std::uint64_t group) {
        const std::uint64_t characters = eight_digits(static_cast<std::uint32_t>(group));
        first -= sizeof characters;
        std::memcpy(first, &characters, sizeof characters);
        return characters;
    };
    if (magnitude >= sixteen) {
        write_group(magnitude % eight);
        write_group(magnitude / eight % eight);
        leading = magnitude / sixteen;
    } else if (magnitude >= eight) {
        write_group(magnitude % eight);
        leading = magnitude / eight;
    }
    const std::uint64_t characters = write_group(leading);
    // Leading zeros go, but the last digit stays.
    const std::uint64_t digits = (characters ^ 0x3030303030303030) | std::uint64_t{1} << 56;
    first += std::countr_zero(digits) / 8;
    if (negative) {
        *--first = '-';
    }
    return first;
}

} // namespace bifun

#endif
