// SPDX-License-Identifier: Apache-2.0
// Values written in the plainest way, which nearly all are: read in place, to the bytes that the general readers give. What is written in
// any other way is left to those.
#ifndef BIFUN_HOST_TABLES_PLAIN_VALUES_H
#define BIFUN_HOST_TABLES_PLAIN_VALUES_H

#include <bit>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "embedded/decimal/nearest_double.h"
#include "host/values/sql_type.h"
#include "layouts/calendar.h"
#include "layouts/datetime_layout.h"
#include "layouts/decimal_layout.h"

namespace host::plain_values {

// Digits with at most one point between them and a minus sign before, at most 18 of them; no zero before another digit.
struct digits {
    std::uint64_t magnitude;
    std::uint32_t count;       // 0 where the text is none
    std::uint32_t significant; // without the zeros at the beginning; 0 for zero
    std::uint32_t scale;
    bool negative;
};

constexpr std::size_t most_digits = 18;

inline digits read_digits(std::string_view text) {
    digits read{};
    read.negative = !text.empty() && text.front() == '-';
    text.remove_prefix(read.negative ? 1 : 0);
    if (text.size() > most_digits + 1 || (text.size() > 1 && text[0] == '0' && text[1] != '.')) {
        return read;
    }
    std::size_t point = text.size();
    std::uint64_t magnitude = 0;
    std::uint32_t significant = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto digit = static_cast<std::uint8_t>(text[i] - '0');
        if (digit > 9) {
            if (text[i] != '.' || point != text.size() || i == 0 || i + 1 == text.size()) {
                return read;
            }
            point = i;
            continue;
        }
        magnitude = magnitude * 10 + digit;
        significant += magnitude != 0 ? 1 : 0;
    }
    const auto size = static_cast<std::uint32_t>(text.size());
    const std::uint32_t count = size - (point < size ? 1 : 0);
    if (count > most_digits) {
        return read;
    }
    read.magnitude = magnitude;
    read.significant = significant;
    read.count = count;
    read.scale = point < size ? count - static_cast<std::uint32_t>(point) : 0;
    return read;
}

// Each is false where the text is not plain, and then leaves the value alone.

inline bool read_value(std::string_view text, std::int32_t& value) {
    constexpr std::uint32_t digits_of_any = 9;
    const digits read = read_digits(text);
    if (read.count == 0 || read.count > digits_of_any || read.scale != 0) {
        return false;
    }
    const auto magnitude = static_cast<std::int32_t>(read.magnitude);
    value = read.negative ? -magnitude : magnitude;
    return true;
}

inline bool read_value(std::string_view text, std::int64_t& value) {
    const digits read = read_digits(text);
    if (read.count == 0 || read.scale != 0) {
        return false;
    }
    const auto magnitude = static_cast<std::int64_t>(read.magnitude);
    value = read.negative ? -magnitude : magnitude;
    return true;
}

inline bool read_value(std::string_view text, double& value) {
    constexpr std::uint32_t digits_of_any = 15;
    const digits read = read_digits(text);
    if (read.count == 0 || read.count > digits_of_any) {
        return false;
    }
    const double magnitude =
        read.magnitude != 0 ? std::bit_cast<double>(zqengine::nearest_double_bits(read.magnitude, std::int64_t{read.scale})) : 0;
    value = read.negative ? -magnitude : magnitude;
    return true;
}

inline bool read_value(std::string_view text, xdec& value) {
    const digits read = read_digits(text);
    if (read.count == 0) {
        return false;
    }
    const std::uint32_t mark = read.significant == 0 ? XDEC_ZERO : read.negative ? XDEC_NEGATIVE : XDEC_POSITIVE;
    const std::uint32_t precision = read.significant == 0 ? 1 : read.significant;
    bifun::decimal_layout::store_parts(value, bifun::decimal_layout::pack_head(mark, precision, read.scale, 0), read.magnitude);
    return true;
}

// With zeros up to the digits behind the point that the shape has.
inline bool read_value(std::string_view text, decimal_shape shape, xdec& value) {
    constexpr std::uint64_t powers[] = {1, 10, 100, 1'000, 10'000, 100'000, 1'000'000};
    const digits read = read_digits(text);
    const std::uint32_t zeros = static_cast<std::uint32_t>(shape.fraction_digits) - read.scale;
    if (read.count == 0 || read.significant == 0 || zeros >= std::size(powers) || read.significant + zeros > most_digits ||
        read.significant + zeros > static_cast<std::uint32_t>(shape.digits)) {
        return false;
    }
    bifun::decimal_layout::store_parts(
        value,
        bifun::decimal_layout::pack_head(read.negative ? XDEC_NEGATIVE : XDEC_POSITIVE, read.significant + zeros, read.scale + zeros, 0),
        read.magnitude * powers[zeros]);
    return true;
}

// Two digits as a number, or something above 99.
inline std::uint32_t two_digits(const char* text) {
    const std::uint32_t first = static_cast<std::uint8_t>(text[0] - '0');
    const std::uint32_t second = static_cast<std::uint8_t>(text[1] - '0');
    return first > 9 || second > 9 ? UINT8_MAX : first * 10 + second;
}

constexpr std::size_t date_length = 10;
constexpr std::size_t timestamp_length = 19;

// YYYY-MM-DD, of 1600 or later; 0 for any other text.
inline std::uint32_t read_date(const char* text) {
    constexpr std::uint32_t first_century = 16;
    const std::uint32_t century = two_digits(text);
    const std::uint32_t rest = two_digits(text + 2);
    const std::uint32_t month = two_digits(text + 5);
    const std::uint32_t day = two_digits(text + 8);
    const auto year = static_cast<std::int32_t>(century * 100 + rest);
    if (century < first_century || century > 99 || rest > 99 || text[4] != '-' || text[7] != '-' ||
        !bifun::calendar::date_exists(year, month, day)) {
        return 0;
    }
    return bifun::datetime_layout::pack_date(year, month, day);
}

inline bool read_date_value(std::string_view text, zqtime& value) {
    const std::uint32_t date = text.size() == date_length ? read_date(text.data()) : 0;
    if (date == 0) {
        return false;
    }
    bifun::datetime_layout::store_words(value, 0, date, bifun::datetime_layout::pack_fraction(0, ZQTIME_NO_ZONE));
    return true;
}

// YYYY-MM-DD HH:MM:SS
inline bool read_timestamp_value(std::string_view text, zqtime& value) {
    const std::uint32_t date = text.size() == timestamp_length ? read_date(text.data()) : 0;
    if (date == 0 || text[10] != ' ' || text[13] != ':' || text[16] != ':') {
        return false;
    }
    const std::uint32_t hour = two_digits(text.data() + 11);
    const std::uint32_t minute = two_digits(text.data() + 14);
    const std::uint32_t second = two_digits(text.data() + 17);
    if (hour > 23 || minute > 59 || second > 59) {
        return false;
    }
    bifun::datetime_layout::store_words(value, bifun::datetime_layout::pack_time(hour, minute, second), date,
                                        bifun::datetime_layout::pack_fraction(0, ZQTIME_NO_ZONE));
    return true;
}

} // namespace host::plain_values

#endif
