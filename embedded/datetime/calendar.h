// The calendar of datetimes: Julian before 1582-10-15, Gregorian from then on, years astronomical. Closed formulas only.
#ifndef BIFUN_EMBEDDED_DATETIME_CALENDAR_H
#define BIFUN_EMBEDDED_DATETIME_CALENDAR_H

#include <cstdint>

namespace zqengine {

constexpr std::int32_t min_year = -4712;
constexpr std::int32_t max_year = 9999;

// The changeover: 1582-10-04 is followed by 1582-10-15.
constexpr std::int32_t changeover_year = 1582;
constexpr std::uint32_t changeover_month = 10;
constexpr std::uint32_t last_julian_day = 4;
constexpr std::uint32_t first_gregorian_day = 15;

constexpr bool is_leap_year(std::int32_t year) {
    if (year % 4 != 0) {
        return false;
    }
    return year < changeover_year || year % 100 != 0 || year % 400 == 0;
}

// The number of the last day of a month, 1 to 12. October 1582 has 31, as its missing days lie within.
constexpr std::uint32_t last_day_of_month(std::int32_t year, std::uint32_t month) {
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

// The Julian day number: -4712-01-01 is day 0. For dates that exist and years from -8000 on. Years are counted from March, so that the
// leap day is the last; after E. G. Richards, "Calendars", in the Explanatory Supplement to the Astronomical Almanac (2013), 15.11.
constexpr std::int32_t julian_day(std::int32_t year, std::uint32_t month, std::uint32_t day) {
    constexpr std::int32_t year_origin = -8000; // a multiple of 400, before every year
    const bool gregorian =
        year > changeover_year ||
        (year == changeover_year && (month > changeover_month || (month == changeover_month && day >= first_gregorian_day)));
    const bool before_march = month <= 2;
    const auto years = static_cast<std::uint32_t>(year - year_origin) - (before_march ? 1 : 0);
    const std::uint32_t months = before_march ? month + 9 : month - 3;        // 0 March to 11 February
    const std::uint32_t days = (153 * months + 2) / 5 + day - 1;              // since 1 March
    const std::uint32_t julian_days = days + 365 * years + years / 4;         // since 1 March of the origin, by the Julian calendar
    const std::uint32_t left_out = gregorian ? years / 100 - years / 400 : 0; // leap days that the Gregorian calendar leaves out
    constexpr std::int32_t julian_origin = -1200882;                          // the day number of -8000-03-01, Julian
    constexpr std::int32_t gregorian_shift = 62;                              // Gregorian less Julian day number of that date
    return static_cast<std::int32_t>(julian_days - left_out) + julian_origin + (gregorian ? gregorian_shift : 0);
}

static_assert(julian_day(min_year, 1, 1) == 0);
static_assert(julian_day(changeover_year, changeover_month, last_julian_day) == 2299160);
static_assert(julian_day(changeover_year, changeover_month, first_gregorian_day) == 2299161);

} // namespace zqengine

#endif
