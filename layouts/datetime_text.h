// SPDX-License-Identifier: Apache-2.0
// Dates and times as digits, for the library and the embedded engine: what TO_CHAR gives where no format is set.
#ifndef BIFUN_LAYOUTS_DATETIME_TEXT_H
#define BIFUN_LAYOUTS_DATETIME_TEXT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "bop/frame/contract.h"
#include "layouts/eight_digits.h"
#include "layouts/two_digits.h"

namespace bifun::datetime_text {

// Each function writes at `out` and returns what is behind its text. It may write up to 16 bytes more than that.
constexpr std::size_t slack = 16;

// The longest text of a datetime with fraction and zone: years of five characters, hours of seven digits.
constexpr std::size_t longest = 48;

inline std::uint8_t* put_bytes(std::uint8_t* out, std::uint64_t bytes) {
    std::memcpy(out, &bytes, sizeof bytes);
    return out + sizeof bytes;
}

// -0044-03-15: four digits of the year at least, the sign one of them.
[[gnu::noinline, gnu::cold]] inline std::uint8_t* put_negative_year(std::uint8_t* out, std::uint32_t magnitude) {
    const bool has_four = magnitude > 999;
    *out = '-';
    put_bytes(out + 1, four_digits(magnitude) >> (has_four ? 0 : 8));
    return out + (has_four ? 5 : 4);
}

// YYYY-MM-DD, with the year as "%04d" has it.
[[gnu::always_inline]] inline std::uint8_t* put_date(std::uint8_t* out, std::int32_t year, std::uint32_t month, std::uint32_t day) {
    const std::uint64_t month_and_day = std::uint64_t{'-'} | two_digits(month) << 8 | std::uint64_t{'-'} << 24;
    if (year >= 0) [[likely]] {
        put_bytes(out, four_digits(static_cast<std::uint32_t>(year)) | month_and_day << 32);
        const auto last = static_cast<std::uint16_t>(two_digits(day));
        std::memcpy(out + 8, &last, sizeof last);
        return out + 10;
    }
    out = put_negative_year(out, static_cast<std::uint32_t>(-year));
    put_bytes(out, month_and_day | two_digits(day) << 32);
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
    return put_bytes(out, two_digits(hour) | std::uint64_t{':'} << 16 | two_digits(minute) << 24 | std::uint64_t{':'} << 40 |
                              two_digits(second) << 48);
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
    put_bytes(out, std::uint64_t{' '} | (zone < 0 ? std::uint64_t{'-'} : std::uint64_t{'+'}) << 8 | two_digits(minutes / 60) << 16 |
                       std::uint64_t{':'} << 32 | two_digits(minutes % 60) << 40);
    return out + 7;
}

} // namespace bifun::datetime_text

#endif
