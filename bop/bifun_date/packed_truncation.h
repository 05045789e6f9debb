// SPDX-License-Identifier: Apache-2.0
// TRUNC of packed datetimes: a kernel without a branch for each unit, of which loops over many rows make vectors. They do what the engine's
// operations are called for in truncation.cpp.
#ifndef BIFUN_DATE_PACKED_TRUNCATION_H
#define BIFUN_DATE_PACKED_TRUNCATION_H

#include "bop/frame/batch.h"
#include "layouts/datetime_arithmetic.h"
#include "layouts/datetime_layout.h"

namespace bifun {

// ---- results: the zone stays -------------------------------------------------------------------------------------------------------

[[gnu::always_inline]] inline void store_truncated(const zqtime& value, std::uint32_t date, std::uint32_t time, zqtime& result) {
    const std::uint32_t zone = datetime_layout::with_microsecond(datetime_layout::load_fraction_and_zone(value), 0);
    datetime_layout::store_words(result, time, date, zone);
}

[[gnu::always_inline]] inline void store_day(const zqtime& value, std::uint32_t date, zqtime& result) {
    store_truncated(value, date, 0, result);
}

// ---- times -------------------------------------------------------------------------------------------------------------------------

inline void trunc_to_minute_packed(const zqtime& value, zqtime& result) {
    const std::uint32_t time = datetime_layout::load_time(value);
    store_truncated(value, datetime_layout::load_date(value), time - datetime_layout::second_of_time(time), result);
}

inline void trunc_to_hour_packed(const zqtime& value, zqtime& result) {
    const std::uint32_t hour = datetime_layout::hour_of_time(datetime_layout::load_time(value));
    store_truncated(value, datetime_layout::load_date(value), datetime_layout::pack_time(hour, 0, 0), result);
}

inline void trunc_to_day_packed(const zqtime& value, zqtime& result) { store_day(value, datetime_layout::load_date(value), result); }

// ---- months and years --------------------------------------------------------------------------------------------------------------

inline void trunc_to_month_packed(const zqtime& value, zqtime& result) {
    store_day(value, datetime_layout::with_day(datetime_layout::load_date(value), 1), result);
}

inline void trunc_to_quarter_packed(const zqtime& value, zqtime& result) {
    const std::uint32_t date = datetime_layout::load_date(value);
    const std::uint32_t month = (datetime_layout::month_of_date(date) - 1) * 11 / 32 * 3 + 1; // 11/32 is 1/3 for 0 to 11
    store_day(value, datetime_layout::pack_date(datetime_layout::year_of_date(date), month, 1), result);
}

inline void trunc_to_year_packed(const zqtime& value, zqtime& result) {
    const std::int32_t year = datetime_layout::year_of_date(datetime_layout::load_date(value));
    store_day(value, datetime_layout::pack_date(year, 1, 1), result);
}

inline void trunc_to_century_packed(const zqtime& value, zqtime& result) {
    constexpr std::int32_t origin = -5000; // a multiple of 100, before every year
    const std::int32_t year = datetime_layout::year_of_date(datetime_layout::load_date(value));
    const std::int32_t first_year = year >= 1 ? 1 : 0; // of the centuries on this side of year 1
    const auto years = static_cast<std::uint32_t>(year - first_year - origin);
    const auto century = static_cast<std::int32_t>(years / 100 * 100);
    store_day(value, datetime_layout::pack_date(century + origin + first_year, 1, 1), result);
}

// ---- weeks -------------------------------------------------------------------------------------------------------------------------

constexpr std::uint32_t date_in_october_1582(std::uint32_t day) {
    return datetime_arithmetic::pack_date({calendar::changeover_year, calendar::changeover_month, day});
}

// Dates among the missing days have weeks of their own, which begin on the 1st and the 8th. Others become `date`.
[[gnu::always_inline]] inline std::uint32_t or_week_of_missing_day(std::uint32_t given, std::uint32_t date) {
    const std::uint32_t behind = given - date_in_october_1582(calendar::last_julian_day + 1);
    const std::uint32_t week = behind > 2 ? date_in_october_1582(8) : date_in_october_1582(1);
    return behind < calendar::first_gregorian_day - calendar::last_julian_day - 1 ? week : date;
}

[[gnu::always_inline]] inline std::uint32_t date_of_day_number(std::int32_t number) {
    return datetime_arithmetic::pack_date(calendar::date_of_julian_day(number));
}

// Sunday. The first year begins on a Monday, whose Sunday lies before it.
inline void trunc_to_week_packed(const zqtime& value, zqtime& result) {
    const std::int32_t number = datetime_arithmetic::day_number_of_date(datetime_layout::load_date(value));
    const auto weekday = static_cast<std::int32_t>(calendar::weekday_of_julian_day(number));
    store_day(value, date_of_day_number(number - weekday), result);
}
inline status check_trunc_to_week_packed(const zqtime& value) {
    constexpr std::int32_t first_sunday = 6;
    const std::int32_t number = datetime_arithmetic::day_number_of_date(datetime_layout::load_date(value));
    return number < first_sunday ? BIFUN_INVALID_DATETIME : BIFUN_OK;
}

inline void trunc_to_iso_week_packed(const zqtime& value, zqtime& result) {
    const std::uint32_t date = datetime_layout::load_date(value);
    const auto number = static_cast<std::uint32_t>(datetime_arithmetic::day_number_of_date(date));
    const std::uint32_t monday = date_of_day_number(static_cast<std::int32_t>(number - number % 7));
    store_day(value, date == date_in_october_1582(8) ? date : monday, result);
}

inline void trunc_to_week_of_year_packed(const zqtime& value, zqtime& result) {
    const std::uint32_t date = datetime_layout::load_date(value);
    const std::int32_t year = datetime_layout::year_of_date(date);
    const std::int32_t number = datetime_arithmetic::day_number_of_date(date);
    const std::int32_t new_year = calendar::julian_day(year, 1, 1, year > calendar::changeover_year);
    const bool is_behind_changeover = year == calendar::changeover_year && datetime_arithmetic::is_gregorian(date);
    const std::int32_t first = is_behind_changeover ? calendar::first_gregorian_julian_day : new_year;
    const std::uint32_t days = static_cast<std::uint32_t>(number - first) % 7;
    const std::uint32_t begin = date_of_day_number(number - static_cast<std::int32_t>(days));
    store_day(value, or_week_of_missing_day(date, begin), result);
}

// Of the year 1582 weeks begin on Friday from the changeover on, as in October on the 1st, 8th and so on; in November on the 5th and in
// December on the 3rd.
inline void trunc_to_week_of_month_packed(const zqtime& value, zqtime& result) {
    const std::uint32_t date = datetime_layout::load_date(value);
    const std::uint32_t day = datetime_layout::day_of_date(date);
    const std::uint32_t november = datetime_arithmetic::pack_date({calendar::changeover_year, 11, 0});
    const std::uint32_t december = datetime_arithmetic::pack_date({calendar::changeover_year, 12, 0});
    const std::uint32_t month = datetime_layout::with_day(date, 0);
    const std::uint32_t days_before = month == november ? 3 : month == december ? 5 : 0; // of a week that began in the month before
    const std::uint32_t since_begin = (day - 1 + days_before) % 7;
    const std::uint32_t last_month = month == november ? date_in_october_1582(31) : november + 30;
    const std::uint32_t begin = since_begin < day ? date - since_begin : last_month + day - since_begin;
    store_day(value, or_week_of_missing_day(date, begin), result);
}

} // namespace bifun

#endif
