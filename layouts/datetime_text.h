// Dates and times as digits, for the library and the embedded engine: what TO_CHAR gives where no format is set.
#ifndef BIFUN_LAYOUTS_DATETIME_TEXT_H
#define BIFUN_LAYOUTS_DATETIME_TEXT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "bop/frame/contract.h"
#include "layouts/eight_digits.h"

namespace bifun::datetime_text {

// Each function writes at `out` and returns what is behind its text. It may write up to 16 bytes more than that.
constexpr std::size_t slack = 16;

// The longest text of a datetime with fraction and zone: years of five characters, hours of seven digits.
constexpr std::size_t longest = 48;

inline std::uint8_t* put_bytes(std::uint8_t* out, std::uint64_t bytes) {
    std::memcpy(out, &bytes, sizeof bytes);
    return out + sizeof bytes;
}

// The characters of a word with two digits each, the first in the lowest bytes.
inline std::uint64_t between_pairs(std::uint64_t digits, int first_pair, char separator, int second_pair) {
    return (digits >> 16 * first_pair & 0xFFFF) | std::uint64_t{static_cast<std::uint8_t>(separator)} << 16 |
           (digits >> 16 * second_pair & 0xFFFF) << 24;
}

// -0044-03-15: four digits of the year at least, the sign one of them.
[[gnu::noinline, gnu::cold]] inline std::uint8_t* put_negative_year(std::uint8_t* out, std::uint32_t magnitude) {
    const bool four_digits = magnitude > 999;
    *out = '-';
    const std::uint64_t digits = eight_digits(magnitude) >> (four_digits ? 32 : 40);
    put_bytes(out + 1, digits);
    return out + (four_digits ? 5 : 4);
}

// YYYY-MM-DD, with the year as "%04d" has it.
[[gnu::always_inline]] inline std::uint8_t* put_date(std::uint8_t* out, std::int32_t year, std::uint32_t month, std::uint32_t day) {
    const std::uint64_t digits = eight_digits((static_cast<std::uint32_t>(year < 0 ? -year : year) * 100 + month) * 100 + day);
    const std::uint64_t month_and_day = between_pairs(digits, 2, '-', 3) << 8 | '-';
    if (year >= 0) [[likely]] {
        put_bytes(out, (digits & 0xFFFFFFFF) | month_and_day << 32);
        const auto last = static_cast<std::uint16_t>(digits >> 48);
        std::memcpy(out + 8, &last, sizeof last);
        return out + 10;
    }
    out = put_negative_year(out, static_cast<std::uint32_t>(-year));
    put_bytes(out, month_and_day);
    return out + 6;
}

// A time made from seconds may have an hour of up to seven digits.
[[gnu::noinline, gnu::cold]] inline std::uint8_t* put_long_hour(std::uint8_t* out, std::uint32_t hour) {
    for (std::uint32_t unit = 1'000'000; unit >= 100; unit /= 10) {
        if (hour >= unit) {
            *out++ = static_cast<std::uint8_t>('0' + hour / unit % 10);
        }
    }
    return out;
}

// HH:MM:SS.
[[gnu::always_inline]] inline std::uint8_t* put_time(std::uint8_t* out, std::uint32_t hour, std::uint32_t minute, std::uint32_t second) {
    if (hour > 99) [[unlikely]] {
        out = put_long_hour(out, hour);
        hour %= 100;
    }
    const std::uint64_t digits = eight_digits((hour * 100 + minute) * 100 + second);
    return put_bytes(out, (digits >> 16 & 0xFFFF) | between_pairs(digits, 2, ':', 3) << 24 | std::uint64_t{':'} << 16);
}

// .FFFFFF
inline std::uint8_t* put_fraction(std::uint8_t* out, std::uint32_t microsecond) {
    put_bytes(out, (eight_digits(microsecond) >> 8 & ~std::uint64_t{0xFF}) | '.');
    return out + 7;
}

// A blank and +HH:MM, of a displacement in minutes; nothing for ZQTIME_NO_ZONE.
inline std::uint8_t* put_zone(std::uint8_t* out, std::int32_t zone) {
    if (zone == ZQTIME_NO_ZONE) {
        return out;
    }
    const auto minutes = static_cast<std::uint32_t>(zone < 0 ? -zone : zone);
    const std::uint64_t digits = eight_digits(minutes / 60 * 100 + minutes % 60);
    put_bytes(out, between_pairs(digits, 2, ':', 3) << 16 | (zone < 0 ? std::uint64_t{'-'} << 8 : std::uint64_t{'+'} << 8) | ' ');
    return out + 7;
}

} // namespace bifun::datetime_text

#endif
