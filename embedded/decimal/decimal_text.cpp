// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "bop/frame/status.h"
#include "embedded/decimal/decimal_parts.h"
#include "embedded/decimal/digits.h"
#include "embedded/decimal/number_scan.h"
#include "embedded/decimal/plain_number.h"
#include "engine/decimal.h"
#include "layouts/decimal_text.h"

namespace zqengine {

namespace {

[[gnu::noinline]] std::int32_t read_scanned(text_span text, xdec& result) {
    scanned_number number = scan_number(text);
    if (!number.is_number) {
        return BIFUN_UNUSABLE_TEXT;
    }
    settle(number.digits);
    return make_decimal(&result, {.coefficient = number.digits.coefficient,
                                  .scale = number.scale - static_cast<std::int64_t>(number.digits.dropped),
                                  .negative = number.negative,
                                  .half = number.digits.half});
}

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
    return with_plain_number(characters, length, [=](const plain_number& plain) {
        if (!plain.is_plain) [[unlikely]] {
            return read_scanned({.begin = characters, .end = characters + length}, *result);
        }
        return make_decimal(result, {.coefficient = plain.digits, .scale = plain.scale, .negative = plain.negative, .half = false});
    });
}

int32_t xdec_to_char_with_zero(const xdec* value, char* buffer, uint32_t buffer_size, int32_t reserved_1, int32_t reserved_2,
                               uint32_t* length) {
    static_cast<void>(reserved_1);
    static_cast<void>(reserved_2);
    if (buffer_size > bifun::decimal_layout::long_text_room) {
        auto* const text = reinterpret_cast<std::uint8_t*>(buffer);
        std::uint32_t written = bifun::decimal_layout::write_short(*value, text);
        written = written != 0 ? written : bifun::decimal_layout::write_long(*value, text);
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
