// The datetime layout ZQTIME_LAYOUT_PACKED of engine/statements.h, and what can be told from it without a call.
//
//     bytes 0-7     from high to low: 8 zero bits, the adjusted bit, year + 5000 in 14 bits, month in 4, day in 5, hour in 20, minute in 6,
//                   second in 6
//     bytes 8-11    from high to low: microsecond in 20 bits, a zero bit, zone + 1024 in 11 bits
//
// Little-endian. The two words, without the zone, compare as the times do. The adjusted bit is set by zqtime_glgl_adjust only, on a value
// that is used for counting days and then dropped: its date is by the Gregorian calendar although it lies before the changeover.
#ifndef BIFUN_LAYOUTS_DATETIME_LAYOUT_H
#define BIFUN_LAYOUTS_DATETIME_LAYOUT_H

#include <cstdint>
#include <cstring>

#include "bop/frame/contract.h"

namespace bifun::datetime_layout {

struct datetime_words {
    std::uint64_t civil;
    std::uint32_t fraction_and_zone;
};

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

inline datetime_words load_datetime(const zqtime& value) {
    datetime_words words;
    std::memcpy(&words.civil, value.bytes, sizeof words.civil);
    std::memcpy(&words.fraction_and_zone, value.bytes + 8, sizeof words.fraction_and_zone);
    return words;
}

inline void store_datetime(zqtime& value, datetime_words words) {
    std::memcpy(value.bytes, &words.civil, sizeof words.civil);
    std::memcpy(value.bytes + 8, &words.fraction_and_zone, sizeof words.fraction_and_zone);
}

constexpr std::int32_t year_bias = 5000;
constexpr std::int32_t zone_bias = 1024;

constexpr int year_shift = 41;
constexpr int month_shift = 37;
constexpr int day_shift = 32;
constexpr std::uint64_t adjusted_bit = std::uint64_t{1} << 55;
constexpr std::uint64_t time_mask = (std::uint64_t{1} << day_shift) - 1;
constexpr int microsecond_shift = 12;
constexpr std::uint32_t zone_mask = 0x7FF;

constexpr std::int32_t year_of(datetime_words words) { return static_cast<std::int32_t>(words.civil >> year_shift & 0x3FFF) - year_bias; }
constexpr std::uint32_t month_of(datetime_words words) { return static_cast<std::uint32_t>(words.civil >> month_shift & 0xF); }
constexpr std::uint32_t day_of(datetime_words words) { return static_cast<std::uint32_t>(words.civil >> day_shift & 0x1F); }
constexpr std::uint32_t hour_of(datetime_words words) { return static_cast<std::uint32_t>(words.civil >> 12 & 0xFFFFF); }
constexpr std::uint32_t minute_of(datetime_words words) { return static_cast<std::uint32_t>(words.civil >> 6 & 0x3F); }
constexpr std::uint32_t second_of(datetime_words words) { return static_cast<std::uint32_t>(words.civil & 0x3F); }
constexpr std::uint32_t microsecond_of(datetime_words words) { return words.fraction_and_zone >> microsecond_shift; }
constexpr std::int32_t zone_of(datetime_words words) { return static_cast<std::int32_t>(words.fraction_and_zone & zone_mask) - zone_bias; }

// Bytes 4-7, the upper half of the first word, alone: the date in 32 bits, of which loops over many values make vectors.
inline std::uint32_t load_date(const zqtime& value) {
    std::uint32_t date;
    std::memcpy(&date, value.bytes + 4, sizeof date);
    return date;
}

constexpr std::int32_t year_of_date(std::uint32_t date) { return static_cast<std::int32_t>(date >> 9 & 0x3FFF) - year_bias; }
constexpr std::uint32_t month_of_date(std::uint32_t date) { return date >> 5 & 0xF; }
constexpr std::uint32_t day_of_date(std::uint32_t date) { return date & 0x1F; }

constexpr std::uint32_t pack_date_word(std::int32_t year, std::uint32_t month, std::uint32_t day) {
    return static_cast<std::uint32_t>(year + year_bias) << 9 | month << 5 | day;
}

// Bytes 0-3, the lower half: the time.
inline std::uint32_t load_time(const zqtime& value) {
    std::uint32_t time;
    std::memcpy(&time, value.bytes, sizeof time);
    return time;
}

// Bytes 8-11.
inline std::uint32_t load_fraction_and_zone(const zqtime& value) {
    std::uint32_t word;
    std::memcpy(&word, value.bytes + 8, sizeof word);
    return word;
}

// All three in their places.
inline void store_words(zqtime& value, std::uint32_t time, std::uint32_t date, std::uint32_t fraction_and_zone) {
    std::memcpy(value.bytes, &time, sizeof time);
    std::memcpy(value.bytes + 4, &date, sizeof date);
    std::memcpy(value.bytes + 8, &fraction_and_zone, sizeof fraction_and_zone);
}

// The date in its place in the first word. The parts must fit their bits.
constexpr std::uint64_t pack_date(std::int32_t year, std::uint32_t month, std::uint32_t day) {
    return std::uint64_t{pack_date_word(year, month, day)} << day_shift;
}

constexpr std::uint64_t pack_time(std::uint32_t hour, std::uint32_t minute, std::uint32_t second) {
    return hour << 12 | minute << 6 | second;
}

constexpr datetime_words pack_datetime(const datetime_parts& parts) {
    return {.civil = pack_date(parts.year, parts.month, parts.day) | pack_time(parts.hour, parts.minute, parts.second),
            .fraction_and_zone = parts.microsecond << microsecond_shift | static_cast<std::uint32_t>(parts.zone + zone_bias)};
}

} // namespace bifun::datetime_layout

#endif
