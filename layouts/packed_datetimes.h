// SPDX-License-Identifier: Apache-2.0
// What is asked of datetimes of the packed layout, worked out in place. The operations of engine/datetime.h and engine/interval.h are the
// contracts; statuses are theirs.
#ifndef BIFUN_LAYOUTS_PACKED_DATETIMES_H
#define BIFUN_LAYOUTS_PACKED_DATETIMES_H

#include <cstdint>

#include "bop/frame/contract.h"
#include "bop/frame/status.h"
#include "layouts/calendar.h"
#include "layouts/datetime_arithmetic.h"
#include "layouts/datetime_layout.h"
#include "layouts/intervals.h"

namespace bifun {

// 2000-10-01 is a Sunday; weekdays are counted from there.
struct weekday_reference {
    static constexpr std::int32_t year = 2000;
    static constexpr std::uint32_t month = 10;
    static constexpr std::uint32_t day = 1;
};

// ---- kernels without a branch, for loops over many rows --------------------------------------------------------------------

[[gnu::always_inline]] inline void set_last_day_packed(const zqtime& value, zqtime& result) {
    const std::uint32_t date = datetime_layout::load_date(value);
    datetime_layout::store_words(result, datetime_layout::load_time(value),
                                 datetime_layout::with_day(date, datetime_arithmetic::last_day_of_month(date)),
                                 datetime_layout::load_fraction_and_zone(value));
}

// ---- operations --------------------------------------------------------------------------------------------------------------

// Components are signed: a year may be negative, and differences are taken of all of them.
struct packed_datetimes {
    static datetime_layout::datetime_words words(const zqtime& value) { return datetime_layout::load_datetime(value); }

    static std::uint32_t date(const zqtime& value) { return datetime_layout::load_date(value); }
    static std::int32_t number(std::uint32_t value) { return static_cast<std::int32_t>(value); }

    static std::int32_t year(const zqtime& value) { return datetime_layout::year_of_date(date(value)); }
    static std::int32_t month(const zqtime& value) { return number(datetime_layout::month_of_date(date(value))); }
    static std::int32_t day(const zqtime& value) { return number(datetime_layout::day_of_date(date(value))); }
    static std::int32_t hour(const zqtime& value) { return number(datetime_layout::hour_of_time(datetime_layout::load_time(value))); }
    static std::int32_t minute(const zqtime& value) { return number(datetime_layout::minute_of_time(datetime_layout::load_time(value))); }
    static std::int32_t second(const zqtime& value) { return number(datetime_layout::second_of_time(datetime_layout::load_time(value))); }
    static std::int32_t microsecond(const zqtime& value) {
        return number(datetime_layout::microsecond_of_fraction(datetime_layout::load_fraction_and_zone(value)));
    }
    static std::int32_t zone(const zqtime& value) {
        return datetime_layout::zone_of_fraction(datetime_layout::load_fraction_and_zone(value));
    }
    static std::int32_t zone_hour(const zqtime& value) { return displacement(value) / 60; }
    static std::int32_t zone_minute(const zqtime& value) { return displacement(value) % 60; }
    static std::int32_t day_of_year(const zqtime& value) { return number(datetime_arithmetic::day_of_year(date(value))); }
    static std::int32_t day_of_week(const zqtime& value) { return number(datetime_arithmetic::day_of_week(date(value))); }
    static std::int32_t week(const zqtime& value) { return number(datetime_arithmetic::week_of_year(date(value))); }

    static std::int32_t diff_day(const zqtime& a, const zqtime& b) {
        return datetime_arithmetic::day_number_of_date(date(a)) - datetime_arithmetic::day_number_of_date(date(b));
    }
    static std::int32_t diff_day_without_adjust(const zqtime& a, const zqtime& b) {
        return datetime_arithmetic::day_number_of_date(date(a), true) - datetime_arithmetic::day_number_of_date(date(b), true);
    }
    static std::int32_t days_from_reference(const zqtime& value, std::int32_t& days) {
        days = datetime_arithmetic::day_number_of_date(date(value)) -
               calendar::julian_day(weekday_reference::year, weekday_reference::month, weekday_reference::day);
        return BIFUN_OK;
    }
    static std::int32_t datediff(std::int32_t field, const zqtime& a, const zqtime& b, std::int32_t& result) {
        std::int64_t count;
        if (!datetime_arithmetic::datediff(field, words(a), words(b), count)) {
            return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
        }
        const auto fitting = static_cast<std::int32_t>(count);
        if (fitting != count) {
            return BIFUN_NUMERIC_OVERFLOW;
        }
        result = fitting;
        return BIFUN_OK;
    }

    // What is added in one step of a field, and a number of days: what is known of them before a row is seen.
    using field_step = datetime_arithmetic::field_step;
    using day_span = datetime_arithmetic::day_span;
    static std::int32_t make_step(std::int32_t field, field_step& step) {
        step = datetime_arithmetic::step_of(field);
        return step.kind == datetime_arithmetic::step_kind::none ? BIFUN_ARGUMENT_OUT_OF_DOMAIN : BIFUN_OK;
    }
    static std::int32_t make_span(double days, day_span& span) {
        return datetime_arithmetic::split_days(days, span) ? BIFUN_OK : BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    static std::int32_t add_steps(const zqtime& value, const field_step& step, std::int64_t amount, zqtime& result) {
        datetime_layout::datetime_words sum;
        return stored(datetime_arithmetic::add_steps(words(value), step, amount, sum), sum, result);
    }
    static std::int32_t add_span(const zqtime& value, const day_span& span, zqtime& result) {
        datetime_layout::datetime_words sum;
        return stored(datetime_arithmetic::add_span(words(value), span, sum), sum, result);
    }
    static std::int32_t add_months(const zqtime& value, std::int32_t months, zqtime& result) {
        datetime_layout::datetime_words sum;
        return stored(datetime_arithmetic::add_months(words(value), months, true, sum), sum, result);
    }
    static std::int32_t add_interval(const zqtime& value, const bifun_interval_ym& interval, zqtime& result) {
        return add_months_of_interval(value, intervals::months_in(interval), result);
    }
    static std::int32_t subtract_interval(const zqtime& value, const bifun_interval_ym& interval, zqtime& result) {
        return add_months_of_interval(value, -intervals::months_in(interval), result);
    }
    static std::int32_t add_time_interval(const zqtime& value, const bifun_interval_dt& interval, zqtime& result) {
        const auto [days, microseconds] = intervals::split(interval);
        return add_time(value, days, microseconds, result);
    }
    static std::int32_t subtract_time_interval(const zqtime& value, const bifun_interval_dt& interval, zqtime& result) {
        const auto [days, microseconds] = intervals::split(interval);
        return add_time(value, -days, -microseconds, result);
    }
    static std::int32_t compare(const zqtime& a, const zqtime& b) { return datetime_arithmetic::compare(words(a), words(b)); }
    static std::int32_t compare(const bifun_interval_ym& a, const bifun_interval_ym& b) { return intervals::compare(a, b); }
    static std::int32_t compare(const bifun_interval_dt& a, const bifun_interval_dt& b) { return intervals::compare(a, b); }
    static std::int32_t last_day_of_month(const zqtime& value, zqtime& result) {
        set_last_day_packed(value, result);
        return BIFUN_OK;
    }
    static std::int32_t month_end_day(std::int32_t year, std::int32_t month) {
        return number(calendar::last_day_of_month(year, static_cast<std::uint32_t>(month)));
    }

    static bool is_missing_day(std::int32_t year, std::int32_t month, std::int32_t day) {
        return calendar::is_missing_day(year, static_cast<std::uint32_t>(month), static_cast<std::uint32_t>(day));
    }
    static bool is_behind_changeover_in_month(const zqtime& value) {
        return datetime_layout::are_of_one_month(date(value), datetime_arithmetic::first_gregorian_date) &&
               datetime_layout::day_of_date(date(value)) > calendar::last_julian_day;
    }
    // At midnight.
    static std::int32_t encode_date(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t zone, zqtime& result) {
        const auto unsigned_month = static_cast<std::uint32_t>(month);
        const auto unsigned_day = static_cast<std::uint32_t>(day);
        if (!calendar::date_exists(year, unsigned_month, unsigned_day)) {
            return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
        }
        datetime_layout::store_words(result, 0, datetime_layout::pack_date(year, unsigned_month, unsigned_day),
                                     datetime_layout::pack_fraction(0, zone));
        return BIFUN_OK;
    }
    // Sets to 0 what is finer than a day, an hour or a minute.
    static void clear_below(std::int32_t field, zqtime& value) {
        const std::uint32_t time = datetime_layout::load_time(value);
        const std::uint32_t hour = field == ZQTIME_DAY ? 0 : datetime_layout::hour_of_time(time);
        const std::uint32_t minute = field == ZQTIME_MINUTE ? datetime_layout::minute_of_time(time) : 0;
        datetime_layout::store_words(value, datetime_layout::pack_time(hour, minute, 0), date(value),
                                     datetime_layout::pack_fraction(0, zone(value)));
    }
    static std::int32_t add(const zqtime& value, std::int32_t field, std::int64_t amount, zqtime& result) {
        return add_steps(value, datetime_arithmetic::step_of(field), amount, result);
    }
    // So many days later, at midnight.
    static std::int32_t move_to_day(const zqtime& value, std::int32_t days, zqtime& result) {
        const std::int32_t moved = add(value, ZQTIME_DAY, days, result);
        if (moved == BIFUN_OK) {
            clear_below(ZQTIME_DAY, result);
        }
        return moved;
    }
    // The parts must exist.
    static std::int32_t encode_minute(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour, std::int32_t minute,
                                      zqtime& result) {
        const auto part = [](std::int32_t value) { return static_cast<std::uint32_t>(value); };
        datetime_layout::store_words(result, datetime_layout::pack_time(part(hour), part(minute), 0),
                                     datetime_layout::pack_date(year, part(month), part(day)),
                                     datetime_layout::pack_fraction(0, ZQTIME_NO_ZONE));
        return BIFUN_OK;
    }
    static std::int32_t validate_date(std::int32_t year, std::int32_t month, std::int32_t day) {
        const bool exists = calendar::date_exists(year, static_cast<std::uint32_t>(month), static_cast<std::uint32_t>(day));
        return exists || is_missing_day(year, month, day) ? BIFUN_OK : BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    // Days as they are numbered, also those that the changeover left out: behind it there are so many more than passed.
    static std::int64_t days_from_zero(std::int32_t year, std::int32_t month, std::int32_t day) {
        const auto unsigned_month = static_cast<std::uint32_t>(month);
        const auto unsigned_day = static_cast<std::uint32_t>(day);
        const bool gregorian = calendar::is_gregorian(year, unsigned_month, unsigned_day);
        return calendar::julian_day(year, unsigned_month, unsigned_day, gregorian) + (gregorian ? missing_days : 0) - day_number_of_year_0;
    }
    static std::int32_t date_from_zero(std::int64_t days, std::int32_t& year, std::int32_t& month, std::int32_t& day) {
        const std::int64_t number_of_day = days + day_number_of_year_0;
        if (number_of_day < 0 || number_of_day > calendar::number_of_last_day + missing_days) {
            return BIFUN_INVALID_DATETIME;
        }
        const bool gregorian = number_of_day >= calendar::first_gregorian_julian_day + missing_days;
        const std::int64_t julian_day = number_of_day - (gregorian ? missing_days : 0);
        const calendar::calendar_date date = calendar::date_of_julian_day(static_cast<std::int32_t>(julian_day), gregorian);
        year = date.year;
        month = number(date.month);
        day = number(date.day);
        return BIFUN_OK;
    }

  private:
    static constexpr std::int64_t day_number_of_year_0 = calendar::julian_day(0, 1, 1, false);
    static constexpr std::int64_t missing_days = calendar::first_gregorian_day - calendar::last_julian_day - 1;

    static std::int32_t displacement(const zqtime& value) {
        const std::int32_t minutes = zone(value);
        return minutes == ZQTIME_NO_ZONE ? 0 : minutes;
    }
    static std::int32_t add_time(const zqtime& value, std::int64_t days, std::int64_t microseconds, zqtime& result) {
        datetime_layout::datetime_words sum;
        return stored(datetime_arithmetic::add_time(words(value), days, microseconds, sum), sum, result);
    }
    static std::int32_t add_months_of_interval(const zqtime& value, std::int64_t months, zqtime& result) {
        datetime_layout::datetime_words sum;
        return stored(datetime_arithmetic::add_months(words(value), months, false, sum), sum, result);
    }
    static std::int32_t stored(bool in_range, datetime_layout::datetime_words value, zqtime& result) {
        if (!in_range) {
            return BIFUN_INVALID_DATETIME;
        }
        datetime_layout::store_datetime(result, value);
        return BIFUN_OK;
    }
};

} // namespace bifun

#endif
