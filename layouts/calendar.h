// SPDX-License-Identifier: Apache-2.0
// The calendar of datetimes: Julian before 1582-10-15, Gregorian from then on, years astronomical. Closed formulas only, without branches,
// so that loops over them vectorise; after E. G. Richards, "Calendars", in the Explanatory Supplement to the Astronomical Almanac
// (2013), 15.11, with the months by C. Neri and L. Schneider, "Euclidean affine functions and their application to calendar algorithms"
// (2022).
#ifndef BIFUN_LAYOUTS_CALENDAR_H
#define BIFUN_LAYOUTS_CALENDAR_H

#include <cstdint>

namespace bifun::calendar {

constexpr std::int32_t min_year = -4712;
constexpr std::int32_t max_year = 9999;

// The changeover: 1582-10-04 is followed by 1582-10-15.
constexpr std::int32_t changeover_year = 1582;
constexpr std::uint32_t changeover_month = 10;
constexpr std::uint32_t last_julian_day = 4;
constexpr std::uint32_t first_gregorian_day = 15;

// For years from -10000 on.
[[gnu::always_inline]] constexpr bool is_leap_year(std::int32_t year) {
    const std::uint32_t years = static_cast<std::uint32_t>(year) + 10000; // a multiple of 400
    // 25 divides the numbers whose product with its inverse modulo 2^32 is no larger than 2^32 / 25.
    const bool divides_25 = years * 0xC28F5C29 <= UINT32_MAX / 25;
    // A year that 25 divides is a century where 4 divides it, and then a leap year only where 16 does.
    const bool may_be_common_century = year > changeover_year && divides_25;
    return (years & (may_be_common_century ? 15U : 3U)) == 0;
}

// The number of the last day of a month, 1 to 12. October 1582 has 31, as its missing days lie within.
[[gnu::always_inline]] constexpr std::uint32_t last_day_of_month(std::int32_t year, std::uint32_t month) {
    if (month == 2) {
        return is_leap_year(year) ? 29 : 28;
    }
    return 30 + ((month ^ month >> 3) & 1); // odd months have 31 up to July, even ones from August
}

constexpr bool is_missing_day(std::int32_t year, std::uint32_t month, std::uint32_t day) {
    return year == changeover_year && month == changeover_month && day > last_julian_day && day < first_gregorian_day;
}

constexpr bool date_exists(std::int32_t year, std::uint32_t month, std::uint32_t day) {
    return year >= min_year && year <= max_year && month >= 1 && month <= 12 && day >= 1 && day <= last_day_of_month(year, month) &&
           !is_missing_day(year, month, day);
}

constexpr bool is_gregorian(std::int32_t year, std::uint32_t month, std::uint32_t day) {
    const auto key = [](std::int32_t y, std::uint32_t m, std::uint32_t d) { return y * 512 + static_cast<std::int32_t>(m * 32 + d); };
    return key(year, month, day) >= key(changeover_year, changeover_month, first_gregorian_day);
}

// The Julian day number: -4712-01-01 is day 0. For years from -8000 on and any day, counted on from the month's first. `gregorian` says by
// which calendar the date is. Years are counted from March, so that the leap day is the last: 0 March to 11 February.
[[gnu::always_inline]] constexpr std::int32_t julian_day_from_march(std::int32_t year, std::uint32_t month, std::uint32_t day,
                                                                    bool gregorian) {
    constexpr std::int32_t year_origin = -8000; // a multiple of 400, before every year
    const auto years = static_cast<std::uint32_t>(year - year_origin);
    const std::uint32_t days = (979 * month + 18) / 32 + day - 1;              // since 1 March
    const std::uint32_t julian_days = days + 1461 * years / 4;                 // since 1 March of the origin, by the Julian calendar
    const std::uint32_t centuries = years * 5243 >> 19;                        // years / 100, for years below 43699
    const std::uint32_t left_out = gregorian ? centuries - centuries / 4 : 0U; // leap days that the Gregorian calendar leaves out
    constexpr std::int32_t julian_origin = -1200882;                           // the day number of -8000-03-01, Julian
    constexpr std::int32_t gregorian_shift = 62;                               // Gregorian less Julian day number of that date
    return static_cast<std::int32_t>(julian_days - left_out) + julian_origin + (gregorian ? gregorian_shift : 0);
}

// The same of a month 1-12 of a year from January on.
[[gnu::always_inline]] constexpr std::int32_t julian_day(std::int32_t year, std::uint32_t month, std::uint32_t day, bool gregorian) {
    const bool before_march = month <= 2;
    return julian_day_from_march(year - (before_march ? 1 : 0), before_march ? month + 9 : month - 3, day, gregorian);
}

constexpr std::int32_t julian_day(std::int32_t year, std::uint32_t month, std::uint32_t day) {
    return julian_day(year, month, day, is_gregorian(year, month, day));
}

constexpr std::int32_t first_gregorian_julian_day = 2299161;
constexpr std::int32_t number_of_last_day = 5373484; // 9999-12-31

struct calendar_date {
    std::int32_t year;
    std::uint32_t month;
    std::uint32_t day;
};

// The date of a Julian day number from 0 on, by the given calendar.
[[gnu::always_inline]] constexpr calendar_date date_of_julian_day(std::int32_t julian_day, bool gregorian) {
    const auto number = static_cast<std::uint32_t>(julian_day);
    constexpr std::uint32_t left_out_at_origin = 38; // wraps for the centuries before
    const std::uint32_t left_out = (4 * number + 274277) / 146097 * 3 / 4 - left_out_at_origin;
    const std::uint32_t days = number + 1401 + (gregorian ? left_out : 0U); // since 1 March -4716, as if all centuries had leap years
    const std::uint32_t quarters = 4 * days + 3;
    const std::uint32_t day_of_year = quarters % 1461 / 4;    // from 1 March
    const std::uint32_t months = 2141 * day_of_year + 197913; // 3 March to 14 February in the upper half
    const bool after_december = day_of_year >= 306;
    return {.year = static_cast<std::int32_t>(quarters / 1461) - 4716 + (after_december ? 1 : 0),
            .month = (months >> 16) - (after_december ? 12U : 0U),
            .day = ((months & 0xFFFF) * 62690 >> 27) + 1}; // divided by 2141
}

constexpr calendar_date date_of_julian_day(std::int32_t julian_day) {
    return date_of_julian_day(julian_day, julian_day >= first_gregorian_julian_day);
}

// The number of the day in its year, 1 to 366; the missing days do not count.
[[gnu::always_inline]] constexpr std::uint32_t day_of_year(std::int32_t year, std::uint32_t month, std::uint32_t day) {
    const std::uint32_t before_month = (979 * month - 966) / 32; // as if February had 30 days
    const std::uint32_t february = month <= 2 ? 0U : is_leap_year(year) ? 1U : 2U;
    // Without a branch: of the changeover year those behind the changeover.
    const auto missed = static_cast<std::uint32_t>(year == changeover_year) & static_cast<std::uint32_t>(is_gregorian(year, month, day));
    return before_month + day - february - missed * (first_gregorian_day - last_julian_day - 1);
}

// 0 Sunday to 6 Saturday.
constexpr std::uint32_t weekday_of_julian_day(std::int32_t julian_day) { return static_cast<std::uint32_t>(julian_day + 1) % 7; }

static_assert(julian_day(min_year, 1, 1) == 0);
static_assert(julian_day(changeover_year, changeover_month, last_julian_day) == first_gregorian_julian_day - 1);
static_assert(julian_day(changeover_year, changeover_month, first_gregorian_day) == first_gregorian_julian_day);
static_assert(julian_day(max_year, 12, 31) == number_of_last_day);
static_assert(weekday_of_julian_day(julian_day(2000, 10, 1)) == 0);

} // namespace bifun::calendar

#endif
