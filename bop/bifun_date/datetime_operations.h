// SPDX-License-Identifier: Apache-2.0
// What the date families ask of a datetime, in two forms: worked out in place, for an engine whose datetimes have the packed layout, and by
// the engine's operations. What both records have gives the same results; a family is written once, over one of them:
//
//     with_datetimes([&]<class Datetimes>(Datetimes) { return set_rows<kernel<Datetimes>>(...); })
//
// Components are signed: a year may be negative, and differences are taken of all of them.
#ifndef BIFUN_DATE_DATETIME_OPERATIONS_H
#define BIFUN_DATE_DATETIME_OPERATIONS_H

#include "bop/frame/batch.h"
#include "bop/frame/statements.h"
#include "engine/datetime.h"
#include "engine/interval.h"
#include "layouts/packed_datetimes.h"

namespace bifun {

struct engine_datetimes {
    static std::int32_t year(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_year(&value)); }
    static std::int32_t month(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_month(&value)); }
    static std::int32_t day(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_day(&value)); }
    static std::int32_t hour(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_hour(&value)); }
    static std::int32_t minute(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_min(&value)); }
    static std::int32_t second(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_sec(&value)); }
    static std::int32_t microsecond(const zqtime& value) { return static_cast<std::int32_t>(zqtime_get_msec(&value)); }
    static std::int32_t zone(const zqtime& value) { return zqtime_get_tz(&value); }
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
        return zqtime_parse_datediff(field, &a, &b, &result);
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
        return zqtime_add_by_fmt(&value, step, amount, &result);
    }
    static status add_span(const zqtime& value, day_span span, zqtime& result) { return zqtime_date_add_number(&value, span, &result); }
    static status add_months(const zqtime& value, std::int32_t months, zqtime& result) {
        return zqtime_date_add_iv_ym(&value, months, &result);
    }
    static status add_interval(const zqtime& value, const bifun_interval_ym& interval, zqtime& result) {
        return datetime_add_interval_ym(&value, &interval, &result);
    }
    static status subtract_interval(const zqtime& value, const bifun_interval_ym& interval, zqtime& result) {
        return datetime_sub_interval_ym(&value, &interval, &result);
    }
    static status add_time_interval(const zqtime& value, const bifun_interval_dt& interval, zqtime& result) {
        return datetime_add_interval_dt(&value, &interval, &result);
    }
    static std::int32_t compare(const zqtime& a, const zqtime& b) { return zqtime_cmp(&a, &b); }
    static std::int32_t compare(const bifun_interval_ym& a, const bifun_interval_ym& b) { return interval_ym_cmp(&a, &b); }
    static std::int32_t compare(const bifun_interval_dt& a, const bifun_interval_dt& b) { return interval_dt_cmp(&a, &b); }
    static status last_day_of_month(const zqtime& value, zqtime& result) {
        zqtime_assign(&result, &value);
        (void)zqtime_set_day(&result, zqtime_month_end_day(year(value), zqtime_get_month(&value)));
        return BIFUN_OK;
    }
    static bool is_missing_day(std::int32_t year, std::int32_t month, std::int32_t day) {
        return zqtime_cmp_with_glgl(year, static_cast<std::uint32_t>(month), static_cast<std::uint32_t>(day)) == 0;
    }
    static bool is_behind_changeover_in_month(const zqtime& value) { return zqtime_glgl_need_adjust_for_w(&value) != 0; }
    // At midnight.
    static status encode_date(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t zone, zqtime& result) {
        return zqtime_encode(&result, year, static_cast<std::uint32_t>(month), static_cast<std::uint32_t>(day), 0, 0, 0, 0, zone);
    }
    static status encode_minute(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour, std::int32_t minute,
                                zqtime& result) {
        return zqtime_encode(&result, year, static_cast<std::uint32_t>(month), static_cast<std::uint32_t>(day),
                             static_cast<std::uint32_t>(hour), static_cast<std::uint32_t>(minute), 0, 0, ZQTIME_NO_ZONE);
    }
    static status validate_date(std::int32_t year, std::int32_t month, std::int32_t day) {
        return zqtime_date_validate(year, static_cast<std::uint32_t>(month), static_cast<std::uint32_t>(day));
    }
    static std::int64_t days_from_zero(std::int32_t year, std::int32_t month, std::int32_t day) {
        return zqtime_calc_n_days_from_zero(year, static_cast<std::uint32_t>(month), static_cast<std::uint32_t>(day));
    }
    static status date_from_zero(std::int64_t number, std::int32_t& year, std::int32_t& month, std::int32_t& day) {
        std::uint32_t found_month = 0;
        std::uint32_t found_day = 0;
        const status found = zqtime_get_date_by_ndays_from_zero(number, &year, &found_month, &found_day);
        month = static_cast<std::int32_t>(found_month);
        day = static_cast<std::int32_t>(found_day);
        return found;
    }
    // Sets to 0 what is finer than a day, an hour or a minute.
    static void clear_below(std::int32_t field, zqtime& value) {
        if (field == ZQTIME_DAY) {
            (void)zqtime_set_hour(&value, 0);
        }
        if (field != ZQTIME_MINUTE) {
            (void)zqtime_set_min(&value, 0);
        }
        (void)zqtime_set_sec(&value, 0);
        (void)zqtime_set_msec(&value, 0);
    }
    static status add(const zqtime& value, std::int32_t field, std::int64_t amount, zqtime& result) {
        return zqtime_add_by_fmt(&value, field, amount, &result);
    }
    // So many days later, at midnight.
    static status move_to_day(const zqtime& value, std::int32_t days, zqtime& result) {
        const status moved = add(value, ZQTIME_DAY, days, result);
        if (moved >= BIFUN_OK) {
            clear_below(ZQTIME_DAY, result);
        }
        return moved;
    }

    static std::int32_t month_end_day(std::int32_t year, std::int32_t month) {
        return static_cast<std::int32_t>(zqtime_month_end_day(year, static_cast<std::uint32_t>(month)));
    }
};

template <class Body> status with_datetimes(const Body& body) {
    return datetimes_are_packed() ? body(packed_datetimes{}) : body(engine_datetimes{});
}

} // namespace bifun

#endif
