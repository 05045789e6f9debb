// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>

#include "bop/frame/status.h"
#include "embedded/decimal/decimal_parts.h"
#include "embedded/decimal/digits.h"
#include "engine/decimal.h"
#include "layouts/decimal_text.h"

namespace zqengine {

namespace {

// ---- text in -----------------------------------------------------------------------------------------------------

struct span {
    const std::uint8_t* begin;
    const std::uint8_t* end;
};

bool is_digit(std::uint8_t character) { return character - unsigned{'0'} < 10; }

// The eight bytes from `next` on; where the text ends before, NULs.
std::uint64_t load_8(span text, const std::uint8_t* next) {
    std::uint64_t word = 0;
    const std::ptrdiff_t left = text.end - next;
    if (left >= 8) {
        std::memcpy(&word, next, sizeof word);
    } else if (left > 0 && text.end - text.begin >= 8) {
        std::memcpy(&word, text.end - 8, sizeof word);
        word >>= 64 - 8 * left;
    } else {
        for (std::ptrdiff_t i = 0; i < left; ++i) {
            word |= std::uint64_t{next[i]} << 8 * i;
        }
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

void settle(digit_reader& read) {
    read.coefficient = read.coefficient * powers_of_ten[read.pending_digits] + read.pending;
    read.pending = 0;
    read.pending_digits = 0;
}

void append(digit_reader& read, std::uint32_t number, std::uint32_t count) {
    if (read.pending_digits + count > max_pending_digits) {
        settle(read);
    }
    read.pending = read.pending * static_cast<std::uint64_t>(powers_of_ten[count]) + number;
    read.pending_digits += count;
    read.digits += count;
}

// Reads digits where more than 38 may come together.
[[gnu::noinline]] digit_reader read_excess_digits(span text, digit_reader read) {
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
[[gnu::always_inline]] inline void read_digits(span text, digit_reader& read) {
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
const std::uint8_t* read_exponent(span text, const std::uint8_t* next, std::int64_t& exponent) {
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

const std::uint8_t* skip_blanks(span text, const std::uint8_t* next) {
    while (next != text.end && *next == ' ') {
        ++next;
    }
    return next;
}

// ---- text out ----------------------------------------------------------------------------------------------------

// memcpy for at most 48 bytes, without a call.
void copy_digits(char* destination, const char* source, std::size_t count) {
    if (count >= 16) {
        if (count > 32) {
            std::memcpy(destination + 16, source + 16, 16);
        }
        std::memcpy(destination, source, 16);
        std::memcpy(destination + count - 16, source + count - 16, 16);
    } else if (count >= 8) {
        std::memcpy(destination, source, 8);
        std::memcpy(destination + count - 8, source + count - 8, 8);
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            destination[i] = source[i];
        }
    }
}

} // namespace

} // namespace zqengine

using namespace zqengine;

int32_t xdec_from_char(const uint8_t* characters, uint32_t length, xdec* result) {
    const span text{.begin = characters, .end = characters + length};
    digit_reader read{};
    read.next = skip_blanks(text, text.begin);
    const bool negative = read.next != text.end && *read.next == '-';
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
        return BIFUN_UNUSABLE_TEXT;
    }
    const std::uint8_t* next = read.next;
    std::int64_t exponent = 0;
    if (next != text.end && (*next == 'E' || *next == 'e')) {
        next = read_exponent(text, next + 1, exponent);
        if (next == nullptr) {
            return BIFUN_UNUSABLE_TEXT;
        }
    }
    if (skip_blanks(text, next) != text.end) {
        return BIFUN_UNUSABLE_TEXT;
    }
    settle(read);
    const std::int64_t scale = fraction_digits - exponent - static_cast<std::int64_t>(read.dropped);
    return make_decimal(result, {.coefficient = read.coefficient, .scale = scale, .negative = negative, .half = read.half});
}

int32_t xdec_to_char_with_zero(const xdec* value, char* buffer, uint32_t buffer_size, int32_t reserved_1, int32_t reserved_2,
                               uint32_t* length) {
    static_cast<void>(reserved_1);
    static_cast<void>(reserved_2);
    if (buffer_size > bifun::decimal_layout::short_text_room) {
        const std::uint32_t written = bifun::decimal_layout::write_short(*value, reinterpret_cast<std::uint8_t*>(buffer));
        if (written != 0) {
            buffer[written] = '\0';
            *length = written;
            return BIFUN_OK;
        }
    }
    const std::uint32_t exponent = value->bytes[bifun::decimal_layout::exponent_at];
    const std::uint32_t scale = value->bytes[bifun::decimal_layout::scale_at];
    const std::uint32_t digits = coefficient_digits(*value);
    const bool negative = value->bytes[0] == XDEC_NEGATIVE;
    const std::uint32_t integer_digits = digits > scale ? digits - scale : 0; // of the coefficient
    const std::uint32_t written_before_point = integer_digits == 0 ? 1 : integer_digits + exponent;
    const std::uint32_t total = (negative ? 1 : 0) + written_before_point + (scale == 0 ? 0 : scale + 1);
    if (total >= buffer_size) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }

    char room[digit_room];
    write_coefficient(room + digit_room, bifun::decimal_layout::coefficient(*value));
    const char* const first = room + digit_room - digits;
    char* out = buffer;
    if (negative) {
        *out++ = '-';
    }
    if (integer_digits == 0) {
        *out++ = '0';
    } else {
        copy_digits(out, first, integer_digits);
        out += integer_digits;
    }
    if (exponent != 0) {
        std::memset(out, '0', exponent);
        out += exponent;
    }
    if (scale != 0) {
        *out++ = '.';
        const std::uint32_t fraction_digits = digits - integer_digits; // of the coefficient
        if (fraction_digits < scale) {
            std::memset(out, '0', scale - fraction_digits);
            out += scale - fraction_digits;
        }
        copy_digits(out, first + integer_digits, fraction_digits);
        out += fraction_digits;
    }
    *out = '\0';
    *length = total;
    return BIFUN_OK;
}
