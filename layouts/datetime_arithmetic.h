// SPDX-License-Identifier: Apache-2.0
// Arithmetic on datetimes of the packed layout, by the calendar of layouts/calendar.h: what the operations of engine/datetime.h do, for
// loops that call none. Closed formulas; nothing is read or written but the arguments. A function that returns a bool leaves `result`
// without a meaning where it returns false.
#ifndef BIFUN_LAYOUTS_DATETIME_ARITHMETIC_H
#define BIFUN_LAYOUTS_DATETIME_ARITHMETIC_H

#include <cstdint>

#include "bop/frame/contract.h"
#include "layouts/calendar.h"
#include "layouts/datetime_layout.h"
#include "layouts/order.h"

namespace bifun::datetime_arithmetic {

using datetime_layout::date_of;
using datetime_layout::datetime_words;
using datetime_layout::time_of;

// ---- days ---------------------------------------------------------------------------------------------------------

constexpr std::uint32_t pack_date(calendar::calendar_date date) { return datetime_layout::pack_date(date.year, date.month, date.day); }

constexpr std::uint32_t first_gregorian_date =
    pack_date({calendar::changeover_year, calendar::changeover_month, calendar::first_gregorian_day});

// By which calendar a date is. The adjusted bit lies above the date, so that adjusted values are Gregorian ones too.
constexpr bool is_gregorian(std::uint32_t date) { return date >= first_gregorian_date; }

// The Julian day number of a date, adjusted or not, or taken for a Gregorian one.
[[gnu::always_inline]] constexpr std::int32_t day_number_of_date(std::uint32_t date, bool gregorian) {
    // Three months taken from the packed date: what is left are a year and months from March on, but that January and February, 14 and 15
    // then, come behind 9.
    const std::uint32_t from_march = date - (3U << 5);
    const std::uint32_t field = datetime_layout::month_of_date(from_march);
    const std::uint32_t month = field > 9 ? field - 4 : field;
    return calendar::julian_day_from_march(datetime_layout::year_of_date(from_march), month, datetime_layout::day_of_date(date), gregorian);
}
[[gnu::always_inline]] constexpr std::int32_t day_number_of_date(std::uint32_t date) {
    return day_number_of_date(date, is_gregorian(date));
}
constexpr std::int32_t day_number(datetime_words words) { return day_number_of_date(date_of(words)); }

// zqtime_to_days: 0000-01-01 is day 0.
constexpr std::int32_t days_from_year_0(datetime_words words) { return day_number(words) - calendar::julian_day(0, 1, 1, false); }

// 0 Sunday to 6 Saturday.
constexpr std::uint32_t day_of_week(std::uint32_t date) { return calendar::weekday_of_julian_day(day_number_of_date(date)); }
constexpr std::uint32_t day_of_week(datetime_words words) { return day_of_week(date_of(words)); }

constexpr std::uint32_t last_day_of_month(std::uint32_t date) {
    return calendar::last_day_of_month(datetime_layout::year_of_date(date), datetime_layout::month_of_date(date));
}

// 1-366, counting days that exist.
[[gnu::always_inline]] constexpr std::uint32_t day_of_year(std::uint32_t date) {
    return calendar::day_of_year(datetime_layout::year_of_date(date), datetime_layout::month_of_date(date),
                                 datetime_layout::day_of_date(date));
}
constexpr std::uint32_t day_of_year(datetime_words words) { return day_of_year(date_of(words)); }

// 1-54: weeks begin on Sunday and 1 January lies in week 1.
[[gnu::always_inline]] constexpr std::uint32_t week_of_year(std::uint32_t date) {
    const std::uint32_t days = day_of_year(date) - 1;
    const auto first_day = static_cast<std::int32_t>(static_cast<std::uint32_t>(day_number_of_date(date)) - days);
    return (days + calendar::weekday_of_julian_day(first_day)) / 7 + 1;
}

// zqtime_glgl_adjust.
constexpr datetime_words adjusted(datetime_words words) {
    if (is_gregorian(date_of(words))) {
        return words;
    }
    const std::uint32_t date = pack_date(calendar::date_of_julian_day(day_number(words), true));
    return datetime_layout::with_date(words, date | datetime_layout::adjusted_bit);
}

// ---- sums ---------------------------------------------------------------------------------------------------------

// Any number of days. Returns whether the result is within the range of years.
constexpr bool add_days(datetime_words words, std::int64_t days, datetime_words& result) {
    // Within the first 28 days of a month that is whole, the day alone changes.
    constexpr std::int64_t shortest_month = 28;
    const std::uint32_t date = date_of(words);
    const std::uint64_t day = datetime_layout::day_of_date(date) + static_cast<std::uint64_t>(days) - 1;
    if (day < shortest_month && !datetime_layout::are_of_one_month(date, first_gregorian_date) && !datetime_layout::is_adjusted(date)) {
        result = datetime_layout::with_date(words, datetime_layout::with_day(date, static_cast<std::uint32_t>(day) + 1));
        return true;
    }
    // A sum that wraps does not come back into the range.
    const std::uint64_t number = static_cast<std::uint64_t>(day_number(words)) + static_cast<std::uint64_t>(days);
    const auto moved = calendar::date_of_julian_day(static_cast<std::int32_t>(static_cast<std::uint32_t>(number)));
    result = datetime_layout::with_date(words, pack_date(moved));
    return number <= std::uint64_t{calendar::number_of_last_day};
}

// Since January of year 0.
constexpr std::int32_t months_of_date(std::uint32_t date) {
    return datetime_layout::year_of_date(date) * 12 + static_cast<std::int32_t>(datetime_layout::month_of_date(date)) - 1;
}

// Any number of months. A day behind the end of the month becomes its last; with `keep_last_day` the last day of a month stays the last. A
// day that the changeover left out becomes 1582-10-15. Returns whether the result is within the range of years.
constexpr bool add_months(datetime_words words, std::int64_t months, bool keep_last_day, datetime_words& result) {
    constexpr std::uint64_t month_count = (calendar::max_year - calendar::min_year + 1) * 12;
    const std::uint32_t date = date_of(words);
    const std::uint32_t old_day = datetime_layout::day_of_date(date);
    // Months since the first one, wrapping as above.
    const std::uint64_t count =
        static_cast<std::uint32_t>(months_of_date(date) - calendar::min_year * 12) + static_cast<std::uint64_t>(months);
    const auto index = static_cast<std::uint32_t>(count);
    const std::int32_t year = static_cast<std::int32_t>(index / 12) + calendar::min_year;
    const std::uint32_t month = index % 12 + 1;
    const std::uint32_t last_day = calendar::last_day_of_month(year, month);
    const bool to_last = old_day > last_day || (keep_last_day && old_day == last_day_of_month(date));
    const std::uint32_t day = to_last ? last_day : old_day;
    result = datetime_layout::with_date(
        words, datetime_layout::pack_date(year, month, calendar::is_missing_day(year, month, day) ? calendar::first_gregorian_day : day));
    return count < month_count;
}

constexpr std::int64_t seconds_per_day = 86'400;
constexpr std::int64_t microseconds_per_second = 1'000'000;
constexpr std::int64_t microseconds_per_day = seconds_per_day * microseconds_per_second;

// Any number of days, and microseconds within +-2^62. Returns whether the result is within the range of years; its hours are 0-23.
constexpr bool add_time(datetime_words words, std::int64_t days, std::int64_t microseconds, datetime_words& result) {
    const std::int64_t sum = std::int64_t{datetime_layout::seconds_of_time(time_of(words))} * microseconds_per_second +
                             datetime_layout::microsecond_of(words) + microseconds;
    const std::int64_t carry = sum / microseconds_per_day - (sum % microseconds_per_day < 0 ? 1 : 0);
    const auto time = static_cast<std::uint64_t>(sum - carry * microseconds_per_day);
    const auto second_of_day = static_cast<std::uint32_t>(time / microseconds_per_second);
    const auto microsecond = static_cast<std::uint32_t>(time % microseconds_per_second);
    const datetime_words moved =
        datetime_layout::join_words(datetime_layout::pack_time(second_of_day / 3600, second_of_day / 60 % 60, second_of_day % 60),
                                    date_of(words), datetime_layout::with_microsecond(words.fraction_and_zone, microsecond));
    return add_days(moved, static_cast<std::int64_t>(static_cast<std::uint64_t>(days) + static_cast<std::uint64_t>(carry)), result);
}

// Days and the microseconds beyond them, both with the sign of the number.
struct day_span {
    std::int64_t days;
    std::int64_t microseconds;
};

// A number of days, its fraction rounded to microseconds as a double, halves away from zero. Returns false where it is no number; a span
// longer than the range of years stays too long for it.
constexpr bool split_days(double days, day_span& result) {
    constexpr double beyond_range = 1e9;
    if (!(days > -beyond_range && days < beyond_range)) {
        result = {.days = days < 0 ? -1'000'000'000 : 1'000'000'000, .microseconds = 0};
        return days - days == 0; // neither infinite nor NaN
    }
    result.days = static_cast<std::int64_t>(days);
    const double microseconds = (days - static_cast<double>(result.days)) * static_cast<double>(microseconds_per_day);
    result.microseconds = static_cast<std::int64_t>(microseconds);
    const double rest = microseconds - static_cast<double>(result.microseconds);
    result.microseconds += (rest >= 0.5 ? 1 : 0) - (rest <= -0.5 ? 1 : 0);
    return true;
}

// Whole days leave the time as it is, also one of more than a day.
constexpr bool add_span(datetime_words words, day_span span, datetime_words& result) {
    return span.microseconds == 0 ? add_days(words, span.days, result) : add_time(words, span.days, span.microseconds, result);
}

// How a field of zqtime_add_by_fmt is added, so that a loop finds it out once.
enum class step_kind : std::uint8_t { none, months, days, time };
struct field_step {
    step_kind kind;
    std::int64_t size;    // months, days or microseconds of one
    std::int64_t per_day; // how many are a day, for times
};

constexpr field_step step_of(std::int32_t field) {
    const auto time = [](std::int64_t per_day) {
        return field_step{.kind = step_kind::time, .size = microseconds_per_day / per_day, .per_day = per_day};
    };
    switch (field) {
    case ZQTIME_YEAR:
        return {.kind = step_kind::months, .size = 12, .per_day = 0};
    case ZQTIME_QUARTER:
        return {.kind = step_kind::months, .size = 3, .per_day = 0};
    case ZQTIME_MONTH:
        return {.kind = step_kind::months, .size = 1, .per_day = 0};
    case ZQTIME_WEEK:
        return {.kind = step_kind::days, .size = 7, .per_day = 0};
    case ZQTIME_DAY:
    case ZQTIME_DAY_OF_YEAR:
    case ZQTIME_WEEKDAY:
        return {.kind = step_kind::days, .size = 1, .per_day = 0};
    case ZQTIME_HOUR:
        return time(24);
    case ZQTIME_MINUTE:
        return time(24 * 60);
    case ZQTIME_SECOND:
        return time(24 * 60 * 60);
    case ZQTIME_SUBSECOND:
        return time(24 * 60 * 60 * 1000);
    default:
        return {.kind = step_kind::none, .size = 0, .per_day = 0};
    }
}

// Any amount of a step that is not `none`. Returns whether the result is within the range of years.
constexpr bool add_steps(datetime_words words, field_step step, std::int64_t amount, datetime_words& result) {
    if (step.kind == step_kind::time) {
        return add_time(words, amount / step.per_day, amount % step.per_day * step.size, result);
    }
    // More would leave the range anyway, and overflow on the way.
    constexpr std::int64_t limit = std::int64_t{1} << 40;
    const std::int64_t count = (amount > limit ? limit : amount < -limit ? -limit : amount) * step.size;
    return step.kind == step_kind::months ? add_months(words, count, false, result) : add_days(words, count, result);
}

// ---- differences --------------------------------------------------------------------------------------------------

constexpr std::int64_t quarters_of(datetime_words words) {
    return std::int64_t{datetime_layout::year_of(words)} * 4 + (datetime_layout::month_of(words) - 1) / 3;
}

constexpr std::int64_t weeks_of(datetime_words words) { return (day_number(words) + 1) / 7; }

constexpr std::int64_t hours_of(datetime_words words) { return std::int64_t{day_number(words)} * 24 + datetime_layout::hour_of(words); }

constexpr std::int64_t minutes_of(datetime_words words) { return hours_of(words) * 60 + datetime_layout::minute_of(words); }

// Since day 0. Any bits have a number, as those of a NULL row may be any.
[[gnu::always_inline]] constexpr std::int64_t seconds_of(std::uint32_t date, std::uint32_t time) {
    return day_number_of_date(date) * seconds_per_day + datetime_layout::seconds_of_time(time);
}
constexpr std::int64_t seconds_of(datetime_words words) { return seconds_of(date_of(words), time_of(words)); }

constexpr std::int64_t milliseconds_of(datetime_words words) {
    return seconds_of(words) * 1000 + datetime_layout::microsecond_of(words) / 1000;
}

// zqtime_parse_datediff, b - a, in 64 bits. Returns whether there is such a field.
constexpr bool datediff(std::int32_t field, datetime_words a, datetime_words b, std::int64_t& result) {
    switch (field) {
    case ZQTIME_YEAR:
        result = datetime_layout::year_of(b) - datetime_layout::year_of(a);
        return true;
    case ZQTIME_QUARTER:
        result = quarters_of(b) - quarters_of(a);
        return true;
    case ZQTIME_MONTH:
        result = months_of_date(date_of(b)) - months_of_date(date_of(a));
        return true;
    case ZQTIME_WEEK:
        result = weeks_of(b) - weeks_of(a);
        return true;
    case ZQTIME_DAY:
    case ZQTIME_DAY_OF_YEAR:
    case ZQTIME_WEEKDAY:
        result = day_number(b) - day_number(a);
        return true;
    case ZQTIME_HOUR:
        result = hours_of(b) - hours_of(a);
        return true;
    case ZQTIME_MINUTE:
        result = minutes_of(b) - minutes_of(a);
        return true;
    case ZQTIME_SECOND:
        result = seconds_of(b) - seconds_of(a);
        return true;
    case ZQTIME_SUBSECOND:
        result = milliseconds_of(b) - milliseconds_of(a);
        return true;
    default:
        return false;
    }
}

// zqtime_cmp.
constexpr std::int32_t compare(datetime_words a, datetime_words b) {
    const std::int32_t zone_a = datetime_layout::zone_of(a);
    const std::int32_t zone_b = datetime_layout::zone_of(b);
    const auto instant = [](datetime_words words, std::int32_t zone) { return seconds_of(words) - std::int64_t{zone} * 60; };
    // Times of one zone are in the order of their instants.
    const bool by_instant = zone_a != zone_b && zone_a != ZQTIME_NO_ZONE && zone_b != ZQTIME_NO_ZONE;
    const std::int32_t by_seconds = by_instant ? order(instant(a, zone_a), instant(b, zone_b)) : order(a.civil, b.civil);
    return by_seconds != 0 ? by_seconds : order(datetime_layout::microsecond_of(a), datetime_layout::microsecond_of(b));
}

} // namespace bifun::datetime_arithmetic

#endif
