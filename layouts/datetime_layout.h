// SPDX-License-Identifier: Apache-2.0
// The datetime layout ZQTIME_LAYOUT_PACKED of engine/statements.h, and what can be told from it without a call. All bit positions are here.
//
//     bytes 0-3     time, from high to low: hour in 20 bits, minute in 6, second in 6
//     bytes 4-7     date, from high to low: 8 zero bits, the adjusted bit, year + 5000 in 14 bits, month in 4, day in 5
//     bytes 8-11    fraction and zone, from high to low: microsecond in 20 bits, a zero bit, zone + 1024 in 11 bits
//
// Little-endian. Time and date are one word of 64 bits as well, the civil time; it and the microsecond compare as the times do. The
// adjusted bit is set by zqtime_glgl_adjust only, on a value that is used for counting days and then dropped: its date is by the Gregorian
// calendar although it lies before the changeover.
#ifndef BIFUN_LAYOUTS_DATETIME_LAYOUT_H
#define BIFUN_LAYOUTS_DATETIME_LAYOUT_H

#include <cstdint>
#include <cstring>

#include "bop/frame/contract.h"

namespace bifun::datetime_layout {

constexpr std::int32_t max_zone = 840; // minutes, to either side

struct datetime_parts {
    std::int32_t year;
    std::uint32_t month;
    std::uint32_t day;
    std::uint32_t hour; // up to 20 bits: a time made from seconds may have more than 24
    std::uint32_t minute;
    std::uint32_t second;
    std::uint32_t microsecond;
    std::int32_t zone;
};

// ---- words of 32 bits, of which loops over many values make vectors ------------------------------------------------

inline std::uint32_t load_time(const zqtime& value) {
    std::uint32_t time;
    std::memcpy(&time, value.bytes, sizeof time);
    return time;
}

inline std::uint32_t load_date(const zqtime& value) {
    std::uint32_t date;
    std::memcpy(&date, value.bytes + 4, sizeof date);
    return date;
}

inline std::uint32_t load_fraction_and_zone(const zqtime& value) {
    std::uint32_t word;
    std::memcpy(&word, value.bytes + 8, sizeof word);
    return word;
}

inline void store_words(zqtime& value, std::uint32_t time, std::uint32_t date, std::uint32_t fraction_and_zone) {
    std::memcpy(value.bytes, &time, sizeof time);
    std::memcpy(value.bytes + 4, &date, sizeof date);
    std::memcpy(value.bytes + 8, &fraction_and_zone, sizeof fraction_and_zone);
}

constexpr std::uint32_t hour_of_time(std::uint32_t time) { return time >> 12; }
constexpr std::uint32_t minute_of_time(std::uint32_t time) { return time >> 6 & 0x3F; }
constexpr std::uint32_t second_of_time(std::uint32_t time) { return time & 0x3F; }

// Since midnight. Fits for any bits.
constexpr std::uint32_t seconds_of_time(std::uint32_t time) {
    // A word less what its minutes and hours count for beyond their seconds: an hour 4096 - 3600, of which its 64 minutes take 256.
    return time - 4 * (time >> 6) - 240 * hour_of_time(time);
}
static_assert(seconds_of_time(23U << 12 | 59U << 6 | 58U) == 86'398);

// The parts given to these must fit their bits.
constexpr std::uint32_t pack_time(std::uint32_t hour, std::uint32_t minute, std::uint32_t second) {
    return hour << 12 | minute << 6 | second;
}

constexpr std::int32_t year_bias = 5000;
constexpr std::uint32_t day_bits = 0x1F;
constexpr std::uint32_t adjusted_bit = std::uint32_t{1} << 23;

constexpr std::int32_t year_of_date(std::uint32_t date) { return static_cast<std::int32_t>(date >> 9 & 0x3FFF) - year_bias; }
constexpr std::uint32_t month_of_date(std::uint32_t date) { return date >> 5 & 0xF; }
constexpr std::uint32_t day_of_date(std::uint32_t date) { return date & day_bits; }
constexpr bool is_adjusted(std::uint32_t date) { return (date & adjusted_bit) != 0; }
constexpr bool are_of_one_month(std::uint32_t date_a, std::uint32_t date_b) { return ((date_a ^ date_b) & ~day_bits) == 0; }

constexpr std::uint32_t pack_date(std::int32_t year, std::uint32_t month, std::uint32_t day) {
    return static_cast<std::uint32_t>(year + year_bias) << 9 | month << 5 | day;
}
constexpr std::uint32_t with_day(std::uint32_t date, std::uint32_t day) { return (date & ~day_bits) | day; }

constexpr std::int32_t zone_bias = 1024;
constexpr std::uint32_t zone_bits = 0x7FF;

constexpr std::uint32_t microsecond_of_fraction(std::uint32_t fraction_and_zone) { return fraction_and_zone >> 12; }
constexpr std::int32_t zone_of_fraction(std::uint32_t fraction_and_zone) {
    return static_cast<std::int32_t>(fraction_and_zone & zone_bits) - zone_bias;
}

constexpr std::uint32_t pack_fraction(std::uint32_t microsecond, std::int32_t zone) {
    return microsecond << 12 | static_cast<std::uint32_t>(zone + zone_bias);
}
constexpr std::uint32_t with_microsecond(std::uint32_t fraction_and_zone, std::uint32_t microsecond) {
    return microsecond << 12 | (fraction_and_zone & zone_bits);
}

// ---- whole values in registers ---------------------------------------------------------------------------------------

struct datetime_words {
    std::uint64_t civil;
    std::uint32_t fraction_and_zone;
};

inline datetime_words load_datetime(const zqtime& value) {
    datetime_words words;
    std::memcpy(&words.civil, value.bytes, sizeof words.civil);
    words.fraction_and_zone = load_fraction_and_zone(value);
    return words;
}

inline void store_datetime(zqtime& value, datetime_words words) {
    std::memcpy(value.bytes, &words.civil, sizeof words.civil);
    std::memcpy(value.bytes + 8, &words.fraction_and_zone, sizeof words.fraction_and_zone);
}

constexpr std::uint32_t time_of(datetime_words words) { return static_cast<std::uint32_t>(words.civil); }
constexpr std::uint32_t date_of(datetime_words words) { return static_cast<std::uint32_t>(words.civil >> 32); }

constexpr datetime_words join_words(std::uint32_t time, std::uint32_t date, std::uint32_t fraction_and_zone) {
    return {.civil = std::uint64_t{date} << 32 | time, .fraction_and_zone = fraction_and_zone};
}
constexpr datetime_words with_date(datetime_words words, std::uint32_t date) {
    return join_words(time_of(words), date, words.fraction_and_zone);
}

constexpr std::int32_t year_of(datetime_words words) { return year_of_date(date_of(words)); }
constexpr std::uint32_t month_of(datetime_words words) { return month_of_date(date_of(words)); }
constexpr std::uint32_t day_of(datetime_words words) { return day_of_date(date_of(words)); }
constexpr std::uint32_t hour_of(datetime_words words) { return hour_of_time(time_of(words)); }
constexpr std::uint32_t minute_of(datetime_words words) { return minute_of_time(time_of(words)); }
constexpr std::uint32_t second_of(datetime_words words) { return second_of_time(time_of(words)); }
constexpr std::uint32_t microsecond_of(datetime_words words) { return microsecond_of_fraction(words.fraction_and_zone); }
constexpr std::int32_t zone_of(datetime_words words) { return zone_of_fraction(words.fraction_and_zone); }

constexpr datetime_words pack_datetime(const datetime_parts& parts) {
    return join_words(pack_time(parts.hour, parts.minute, parts.second), pack_date(parts.year, parts.month, parts.day),
                      pack_fraction(parts.microsecond, parts.zone));
}

constexpr datetime_parts unpack_datetime(datetime_words words) {
    return {.year = year_of(words),
            .month = month_of(words),
            .day = day_of(words),
            .hour = hour_of(words),
            .minute = minute_of(words),
            .second = second_of(words),
            .microsecond = microsecond_of(words),
            .zone = zone_of(words)};
}

} // namespace bifun::datetime_layout

#endif
