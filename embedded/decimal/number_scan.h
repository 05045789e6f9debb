// SPDX-License-Identifier: Apache-2.0
// Numbers as they are usually written, taken apart: for DECIMAL and DOUBLE.
#ifndef BIFUN_EMBEDDED_DECIMAL_NUMBER_SCAN_H
#define BIFUN_EMBEDDED_DECIMAL_NUMBER_SCAN_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "embedded/decimal/decimal_parts.h"
#include "embedded/decimal/digits.h"

namespace zqengine {

struct text_span {
    const std::uint8_t* begin;
    const std::uint8_t* end;
};

inline bool is_digit(std::uint8_t character) { return character - unsigned{'0'} < 10; }

// The eight bytes from `next` on; where the text ends before, NULs.
inline std::uint64_t load_8(text_span text, const std::uint8_t* next) {
    std::uint64_t word = 0;
    const std::ptrdiff_t left = text.end - next;
    if (left >= 8) {
        std::memcpy(&word, next, sizeof word);
    } else if (left > 0 && text.end - text.begin >= 8) {
        std::memcpy(&word, text.end - 8, sizeof word);
        word >>= 64 - 8 * left;
    } else if (left >= 4) {
        std::uint32_t first = 0;
        std::uint32_t last = 0;
        std::memcpy(&first, next, sizeof first);
        std::memcpy(&last, text.end - sizeof last, sizeof last);
        word = first | std::uint64_t{last} << (8 * left - 32);
    } else if (left > 0) {
        word = next[0] | std::uint64_t{next[left / 2]} << 8 * (left / 2) | std::uint64_t{text.end[-1]} << (8 * left - 8);
    }
    return word;
}

// The digits before `next`: `coefficient` and behind it the `pending_digits` digits of `pending`, 38 together at most. Handed on by value
// where a function is not inlined, so that it stays in registers.
struct digit_reader {
    const std::uint8_t* next;
    uint128 coefficient;
    std::uint64_t pending;
    std::uint32_t pending_digits;
    std::uint32_t digits;  // all but leading zeros
    std::uint64_t dropped; // digits behind the 38th
    bool half;             // the first dropped one is 5 or more
};

constexpr std::uint32_t max_pending_digits = 19;

inline void settle(digit_reader& read) {
    read.coefficient = read.coefficient * powers_of_ten[read.pending_digits] + read.pending;
    read.pending = 0;
    read.pending_digits = 0;
}

inline void append(digit_reader& read, std::uint32_t number, std::uint32_t count) {
    if (read.pending_digits + count > max_pending_digits) {
        settle(read);
    }
    read.pending = read.pending * static_cast<std::uint64_t>(powers_of_ten[count]) + number;
    read.pending_digits += count;
    read.digits += count;
}

// Reads digits where more than 38 may come together.
[[gnu::noinline]] inline digit_reader read_excess_digits(text_span text, digit_reader read) {
    for (; read.next != text.end && is_digit(*read.next); ++read.next) {
        const std::uint32_t digit = *read.next - unsigned{'0'};
        if (read.digits < max_coefficient_digits) {
            append(read, digit, 1);
        } else {
            read.half = read.dropped == 0 ? digit >= 5 : read.half;
            ++read.dropped;
        }
    }
    return read;
}

// Reads as many digits as come.
[[gnu::always_inline]] inline void read_digits(text_span text, digit_reader& read) {
    if (read.digits == 0) {
        while (read.next != text.end && *read.next == '0') {
            ++read.next;
        }
    }
    while (true) {
        const std::uint64_t word = load_8(text, read.next);
        const std::uint32_t count = leading_digits(word);
        if (count == 0) {
            return;
        }
        if (read.digits + count > max_coefficient_digits) {
            read = read_excess_digits(text, read);
            return;
        }
        append(read, number_of_digits(word, count), count);
        read.next += count;
        if (count < 8) {
            return;
        }
    }
}

// Reads [sign]digits; returns null where there are none. Stops counting where no text is long enough to make up for the exponent.
inline const std::uint8_t* read_exponent(text_span text, const std::uint8_t* next, std::int64_t& exponent) {
    constexpr std::int64_t beyond_any_text = 100'000'000'000;
    const bool negative = next != text.end && *next == '-';
    if (next != text.end && (*next == '-' || *next == '+')) {
        ++next;
    }
    const std::uint8_t* const first = next;
    for (; next != text.end && is_digit(*next); ++next) {
        exponent = std::min(exponent * 10 + (*next - '0'), beyond_any_text);
    }
    exponent = negative ? -exponent : exponent;
    return next == first ? nullptr : next;
}

inline const std::uint8_t* skip_blanks(text_span text, const std::uint8_t* next) {
    while (next != text.end && *next == ' ') {
        ++next;
    }
    return next;
}

// What a text says: its digits as an integer x 10^-scale.
struct scanned_number {
    bool is_number = false; // the others only count where it is
    bool negative = false;
    digit_reader digits{};
    std::int64_t scale = 0; // of all digits, the dropped ones too
};

// Reads [blanks][sign]digits[.digits][E[sign]digits][blanks], with E in either case; digits may be missing before or behind the point,
// not both.
[[gnu::always_inline]] inline scanned_number scan_number(text_span text) {
    scanned_number number;
    digit_reader& read = number.digits;
    read.next = skip_blanks(text, text.begin);
    number.negative = read.next != text.end && *read.next == '-';
    if (read.next != text.end && (*read.next == '-' || *read.next == '+')) {
        ++read.next;
    }

    const std::uint8_t* const integer = read.next;
    read_digits(text, read);
    const std::int64_t integer_digits = read.next - integer;
    std::int64_t fraction_digits = 0;
    if (read.next != text.end && *read.next == '.') {
        const std::uint8_t* const fraction = ++read.next;
        read_digits(text, read);
        fraction_digits = read.next - fraction;
    }
    if (integer_digits + fraction_digits == 0) {
        return number;
    }
    const std::uint8_t* next = read.next;
    std::int64_t exponent = 0;
    if (next != text.end && (*next == 'E' || *next == 'e')) {
        next = read_exponent(text, next + 1, exponent);
        if (next == nullptr) {
            return number;
        }
    }
    number.scale = fraction_digits - exponent;
    number.is_number = skip_blanks(text, next) == text.end;
    return number;
}

} // namespace zqengine

#endif
