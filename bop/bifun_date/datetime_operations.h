// What the date families ask of a datetime, in two forms: worked out in place, for an engine whose datetimes have the packed layout, and by
// the engine's operations. What both records have gives the same results; a family is written once, over one of them:
//
//     with_datetimes([&](auto datetimes) INLINED { return ...; })
//
// Components are signed: a year may be negative, and differences are taken of all of them.
#ifndef BIFUN_DATE_DATETIME_OPERATIONS_H
#define BIFUN_DATE_DATETIME_OPERATIONS_H

#include "bop/frame/batch.h"
#include "bop/frame/statements.h"
#include "engine/datetime.h"
#include "engine/interval.h"
#include "layouts/datetime_arithmetic.h"

namespace bifun {

// 2000-10-01 is a Sunday; weekdays are counted from there.
struct weekday_reference {
    static constexpr std::int32_t year = 2000;
    static constexpr std::uint32_t month = 10;
    static constexpr std::uint32_t day = 1;
};

// ---- kernels without a branch, for loops over many rows --------------------------------------------------------------------

INLINED inline void set_last_day_packed(const zqtime& value, zqtime& result) {
    const std::uint32_t date = datetime_layout::load_date(value);
    const std::uint32_t last = calendar::last_day_of_month(datetime_layout::year_of_date(date), datetime_layout::month_of_date(date));
    constexpr std::uint32_t day_bits = 0x1F;
    datetime_layout::store_words(result, datetime_layout::load_time(value), (date & ~day_bits) | last,
                                 datetime_layout::load_fraction_and_zone(value));
}

// Adds days; the check tells whether the result is within the range of years.
INLINED inline void add_days_packed(const zqtime& value, std::int64_t count, std::int64_t days_per_count, zqtime& result) {
    // Unsigned: what does not fit is not used.
    const std::uint32_t days = static_cast<std::uint32_t>(count) * static_cast<std::uint32_t>(days_per_count);
    const std::uint32_t number =
        static_cast<std::uint32_t>(datetime_arithmetic::day_number_of_date(datetime_layout::load_date(value))) + days;
    const calendar::calendar_date moved = calendar::date_of_julian_day(static_cast<std::int32_t>(number));
    datetime_layout::store_words(result, datetime_layout::load_time(value),
                                 datetime_layout::pack_date_word(moved.year, moved.month, moved.day),
                                 datetime_layout::load_fraction_and_zone(value));
}
INLINED inline status check_add_days_packed(const zqtime& value, std::int64_t count, std::int64_t days_per_count) {
    constexpr std::int64_t most_days = 10'000'000; // more would leave the range anyway
    const std::int64_t limited = count < -most_days ? -most_days : count > most_days ? most_days : count;
    const std::int64_t number = datetime_arithmetic::day_number_of_date(datetime_layout::load_date(value)) + limited * days_per_count;
    return number >= 0 && number <= calendar::number_of_last_day ? BIFUN_OK : BIFUN_INVALID_DATETIME;
}

// ---- the two forms -----------------------------------------------------------------------------------------------------------

struct packed_datetimes {
    static datetime_layout::datetime_words words(const zqtime& value) { return datetime_layout::load_datetime(value); }

    static std::uint32_t date(const zqtime& value) { return datetime_layout::load_date(value); }
    static std::int32_t number(std::uint32_t value) { return static_cast<std::int32_t>(value); }

    static std::int32_t year(const zqtime& value) { return datetime_layout::year_of_date(date(value)); }
    static std::int32_t month(const zqtime& value) { return number(datetime_layout::month_of_date(date(value))); }
    static std::int32_t day(const zqtime& value) { return number(datetime_layout::day_of_date(date(value))); }
    static std::int32_t hour(const zqtime& value) { return number(datetime_layout::load_time(value) >> 12); }
    static std::int32_t minute(const zqtime& value) { return number(datetime_layout::load_time(value) >> 6 & 0x3F); }
    static std::int32_t second(const zqtime& value) { return number(datetime_layout::load_time(value) & 0x3F); }
    static std::int32_t microsecond(const zqtime& value) {
        return static_cast<std::int32_t>(datetime_layout::microsecond_of(words(value)));
    }
    static std::int32_t zone_hour(const zqtime& value) { return zone(value) / 60; }
    static std::int32_t zone_minute(const zqtime& value) { return zone(value) % 60; }
    static std::int32_t day_of_year(const zqtime& value) {
        return static_cast<std::int32_t>(datetime_arithmetic::day_of_year(words(value)));
    }
    static std::int32_t day_of_week(const zqtime& value) {
        return static_cast<std::int32_t>(datetime_arithmetic::day_of_week(words(value)));
    }
    static std::int32_t week(const zqtime& value) { return static_cast<std::int32_t>(datetime_arithmetic::week_of_year(words(value))); }

    static std::int32_t diff_day(const zqtime& a, const zqtime& b) {
        return datetime_arithmetic::day_number_of_date(date(a)) - datetime_arithmetic::day_number_of_date(date(b));
    }
    static std::int32_t diff_day_without_adjust(const zqtime& a, const zqtime& b) {
        return datetime_arithmetic::day_number_of_date(date(a), true) - datetime_arithmetic::day_number_of_date(date(b), true);
    }
    static status days_from_reference(const zqtime& value, std::int32_t& days) {
        days = datetime_arithmetic::day_number_of_date(date(value)) -
               calendar::julian_day(weekday_reference::year, weekday_reference::month, weekday_reference::day);
        return BIFUN_OK;
    }
    static status datediff(std::int32_t field, const zqtime& a, const zqtime& b, std::int32_t& result) {
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
    static status make_step(std::int32_t field, field_step& step) {
        step = datetime_arithmetic::step_of(field);
        return step.kind == datetime_arithmetic::step_kind::none ? BIFUN_ARGUMENT_OUT_OF_DOMAIN : BIFUN_OK;
    }
    static status make_span(double days, day_span& span) {
        return datetime_arithmetic::split_days(days, span) ? BIFUN_OK : BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    static status add_steps(const zqtime& value, const field_step& step, std::int64_t amount, zqtime& result) {
        datetime_layout::datetime_words sum;
        return stored(datetime_arithmetic::add_steps(words(value), step, amount, sum), sum, result);
    }
    static status add_span(const zqtime& value, const day_span& span, zqtime& result) {
        datetime_layout::datetime_words sum;
        return stored(datetime_arithmetic::add_span(words(value), span, sum), sum, result);
    }
    static status add_months(const zqtime& value, std::int32_t months, zqtime& result) {
        datetime_layout::datetime_words sum;
        return stored(datetime_arithmetic::add_months(words(value), months, true, sum), sum, result);
    }
    static status add_interval(const zqtime& value, const bifun_interval_ym& interval, zqtime& result) {
        return add_months_of_interval(value, months_in(interval), result);
    }
    static status subtract_interval(const zqtime& value, const bifun_interval_ym& interval, zqtime& result) {
        return add_months_of_interval(value, -months_in(interval), result);
    }
    static status last_day_of_month(const zqtime& value, zqtime& result) {
        set_last_day_packed(value, result);
        return BIFUN_OK;
    }
    static std::int32_t month_end_day(std::int32_t year, std::int32_t month) {
        return static_cast<std::int32_t>(calendar::last_day_of_month(year, static_cast<std::uint32_t>(month)));
    }

  private:
    static std::int32_t zone(const zqtime& value) {
        const std::int32_t minutes = datetime_layout::zone_of(words(value));
        return minutes == ZQTIME_NO_ZONE ? 0 : minutes;
    }
    static std::int64_t months_in(const bifun_interval_ym& interval) { return std::int64_t{interval.years} * 12 + interval.months; }
    static status add_months_of_interval(const zqtime& value, std::int64_t months, zqtime& result) {
        datetime_layout::datetime_words sum;
        return stored(datetime_arithmetic::add_months(words(value), months, false, sum), sum, result);
    }
    static status stored(bool in_range, datetime_layout::datetime_words value, zqtime& result) {
        if (!in_range) {
            return BIFUN_INVALID_DATETIME;
        }
        datetime_layout::store_datetime(result, value);
        return BIFUN_OK;
    }
};

inline status failure_of(status outcome) { return outcome < BIFUN_OK ? outcome : BIFUN_OK; }

// Of the statuses of operations only the negative ones count.
struct engine_datetimes {
    static std::int32_t year(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_year(&value)); }
    static std::int32_t month(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_month(&value)); }
    static std::int32_t day(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_day(&value)); }
    static std::int32_t hour(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_hour(&value)); }
    static std::int32_t minute(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_min(&value)); }
    static std::int32_t second(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_sec(&value)); }
    static std::int32_t microsecond(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_msec(&value)); }
    static std::int32_t zone_hour(const zqtime& value) { return zqtime_get_zone_hour(&value); }
    static std::int32_t zone_minute(const zqtime& value) { return zqtime_get_zone_min(&value); }
    static std::int32_t day_of_year(const zqtime& value) { return static_cast<std::int32_t>(zqtime_day_of_year(&value)); }
    // An engine's weekdays and weeks count in their low 16 bits.
    static std::int32_t day_of_week(const zqtime& value) { return static_cast<std::uint16_t>(zqtime_day_of_week(&value)); }
    static std::int32_t week(const zqtime& value) { return static_cast<std::uint16_t>(zqtime_week_for_datepart(&value)); }

    static std::int32_t diff_day(const zqtime& a, const zqtime& b) { return zqtime_diff_day(&a, &b); }
    static std::int32_t diff_day_without_adjust(const zqtime& a, const zqtime& b) { return zqtime_diff_day_without_glgl_adjust(&a, &b); }
    static status days_from_reference(const zqtime& value, std::int32_t& days) {
        zqtime adjusted = value;
        zqtime_glgl_adjust(&adjusted);
        zqtime reference;
        const status encoded = zqtime_encode(&reference, weekday_reference::year, weekday_reference::month, weekday_reference::day, 1, 1, 1,
                                             1, ZQTIME_NO_ZONE);
        if (encoded < BIFUN_OK) {
            return encoded;
        }
        days = zqtime_diff_day(&adjusted, &reference);
        return BIFUN_OK;
    }
    static status datediff(std::int32_t field, const zqtime& a, const zqtime& b, std::int32_t& result) {
        return failure_of(zqtime_parse_datediff(field, &a, &b, &result));
    }

    using field_step = std::int32_t;
    using day_span = double;
    static status make_step(std::int32_t field, field_step& step) {
        step = field;
        return BIFUN_OK;
    }
    static status make_span(double days, day_span& span) {
        span = days;
        return BIFUN_OK;
    }
    static status add_steps(const zqtime& value, field_step step, std::int64_t amount, zqtime& result) {
        return failure_of(zqtime_add_by_fmt(&value, step, amount, &result));
    }
    static status add_span(const zqtime& value, day_span span, zqtime& result) {
        return failure_of(zqtime_date_add_number(&value, span, &result));
    }
    static status add_months(const zqtime& value, std::int32_t months, zqtime& result) {
        return failure_of(zqtime_date_add_iv_ym(&value, months, &result));
    }
    static status add_interval(const zqtime& value, const bifun_interval_ym& interval, zqtime& result) {
        return failure_of(datetime_add_interval_ym(&value, &interval, &result));
    }
    static status subtract_interval(const zqtime& value, const bifun_interval_ym& interval, zqtime& result) {
        return failure_of(datetime_sub_interval_ym(&value, &interval, &result));
    }
    static status last_day_of_month(const zqtime& value, zqtime& result) {
        zqtime_assign(&result, &value);
        (void)zqtime_set_day(&result, zqtime_month_end_day(year(value), zqtime_get_month(&value)));
        return BIFUN_OK;
    }
    static std::int32_t month_end_day(std::int32_t year, std::int32_t month) {
        return static_cast<std::int32_t>(zqtime_month_end_day(year, static_cast<std::uint32_t>(month)));
    }
};

template <class Body> [[gnu::noinline]] status with_engine_datetimes(const Body& body) { return body(engine_datetimes{}); }

template <class Body> INLINED inline status with_datetimes(const Body& body) {
    return datetimes_are_packed() ? body(packed_datetimes{}) : with_engine_datetimes(body);
}

} // namespace bifun

#endif
