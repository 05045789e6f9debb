// SPDX-License-Identifier: Apache-2.0
// TRUNC of datetimes to a unit, and of texts.

#include "bop/bifun_date/datetime_operations.h"
#include "bop/bifun_date/entry_points.h"
#include "bop/bifun_date/packed_truncation.h"
#include "bop/bifun_date/rounded_text.h"
#include "bop/bifun_date/weekday.h"
#include "bop/frame/row_loop.h"

namespace bifun {
namespace {

// ---- by the engine's operations ----------------------------------------------------------------------------------------------------

status fun_trunc_day(const zqtime& value, zqtime& result) {
    result = value;
    engine_datetimes::clear_below(ZQTIME_DAY, result);
    return BIFUN_OK;
}

// The first year of a century; centuries before year 1 begin with a multiple of 100.
std::int32_t first_year_of_century(std::int32_t year) {
    if (year >= 1) {
        return (year - 1) / 100 * 100 + 1;
    }
    return (year / 100 - (year % 100 != 0 ? 1 : 0)) * 100;
}

status trunc_to_century(const zqtime& value, zqtime& result) {
    const std::int32_t year = first_year_of_century(engine_datetimes::year(value));
    const std::int32_t zone = engine_datetimes::zone(value);
    // The first century begins before the calendar does.
    return year < calendar::min_year ? zqtime_encode_without_check(&result, year, 1, 1, 0, 0, 0, 0, zone)
                                     : engine_datetimes::encode_date(year, 1, 1, zone, result);
}

// The latest day with the weekday of the year's first day, or of the month's. Behind the changeover that of 1582-10-15 counts until the
// end of the year.
status trunc_to_week_of(std::int32_t unit, const zqtime& value, zqtime& result) {
    const std::int32_t year = engine_datetimes::year(value);
    const std::int32_t month = engine_datetimes::month(value);
    const std::int32_t day = engine_datetimes::day(value);
    const std::int32_t zone = engine_datetimes::zone(value);
    if (zqtime_glgl_need_adjust_by_zero(&value) != 0) {
        return zqtime_encode_without_check(&result, 1582, 10, day - 5 > 2 ? 8 : 1, 0, 0, 0, 0, zone);
    }
    const bool is_behind_changeover = year == 1582 && (month > 10 || (month == 10 && day >= 15));
    zqtime reference;
    const status encoded = is_behind_changeover
                               ? engine_datetimes::encode_date(1582, 10, 15, zone, reference)
                               : engine_datetimes::encode_date(year, unit == unit::week_of_year ? 1 : month, 1, zone, reference);
    if (encoded < BIFUN_OK) {
        return encoded;
    }
    std::int32_t first_weekday;
    std::int32_t weekday;
    const status counted_first = ifun_weekday_in(engine_datetimes{}, reference, first_weekday);
    const status counted = ifun_weekday_in(engine_datetimes{}, value, weekday);
    if (counted_first < BIFUN_OK || counted < BIFUN_OK) {
        return counted_first < BIFUN_OK ? counted_first : counted;
    }
    return engine_datetimes::move_to_day(value, -((weekday - first_weekday + 7) % 7), result);
}

// Sunday, or for iso_week Monday.
status trunc_to_week(std::int32_t unit, const zqtime& value, zqtime& result) {
    std::int32_t weekday;
    const status counted = ifun_weekday_in_for_glgl_special(engine_datetimes{}, value, weekday);
    if (counted < BIFUN_OK) {
        return counted;
    }
    if (unit == unit::week) {
        return engine_datetimes::move_to_day(value, -weekday, result);
    }
    // Where weeks are cut off at the changeover, this is a first day.
    const bool is_first_day =
        engine_datetimes::year(value) == 1582 && engine_datetimes::month(value) == 10 && engine_datetimes::day(value) == 8;
    return is_first_day ? fun_trunc_day(value, result) : engine_datetimes::move_to_day(value, weekday == 0 ? -6 : 1 - weekday, result);
}

status ifun_trunc_dt_low(const zqtime& value, std::int32_t unit, zqtime& result) {
    const std::int32_t year = engine_datetimes::year(value);
    const std::int32_t month = engine_datetimes::month(value);
    const std::int32_t zone = engine_datetimes::zone(value);
    switch (unit) {
    case unit::day:
        return fun_trunc_day(value, result);
    case unit::century:
        return trunc_to_century(value, result);
    case unit::year:
        return engine_datetimes::encode_date(year, 1, 1, zone, result);
    case unit::quarter:
        return engine_datetimes::encode_date(year, month <= 3 ? 1 : month <= 6 ? 4 : month <= 9 ? 7 : 10, 1, zone, result);
    case unit::month:
        return engine_datetimes::encode_date(year, month, 1, zone, result);
    case unit::week_of_year:
    case unit::week_of_month:
        return trunc_to_week_of(unit, value, result);
    case unit::week:
    case unit::iso_week:
        return trunc_to_week(unit, value, result);
    case unit::hour:
    case unit::minute:
        result = value;
        engine_datetimes::clear_below(unit == unit::hour ? ZQTIME_HOUR : ZQTIME_MINUTE, result);
        return BIFUN_OK;
    default:
        return BIFUN_INVALID_DATE_FORMAT;
    }
}

// ---- dates and times ---------------------------------------------------------------------------------------------------------------

status trunc_packed_rows(batch_of<DATETIME> batch, column_of<DATETIME> value, std::int32_t unit) {
    using checks_of_weeks = row_checks<check_trunc_to_week_packed, nullptr, failing_row::null>;
    switch (unit) {
    case unit::day:
        return set_all_rows<trunc_to_day_packed>(batch, value);
    case unit::century:
        return set_all_rows<trunc_to_century_packed>(batch, value);
    case unit::year:
        return set_all_rows<trunc_to_year_packed>(batch, value);
    case unit::quarter:
        return set_all_rows<trunc_to_quarter_packed>(batch, value);
    case unit::month:
        return set_all_rows<trunc_to_month_packed>(batch, value);
    case unit::week_of_year:
        return set_all_rows<trunc_to_week_of_year_packed>(batch, value);
    case unit::week_of_month:
        return set_all_rows<trunc_to_week_of_month_packed>(batch, value);
    case unit::week:
        return set_all_rows<trunc_to_week_packed, checks_of_weeks>(batch, value);
    case unit::iso_week:
        return set_all_rows<trunc_to_iso_week_packed>(batch, value);
    case unit::hour:
        return set_all_rows<trunc_to_hour_packed>(batch, value);
    default:
        return set_all_rows<trunc_to_minute_packed>(batch, value);
    }
}

status trunc_rows(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<VARCHAR> unit_name) {
    const auto [name, present] = argument(unit_name);
    if (!present) {
        return null_rows(batch);
    }
    const std::int32_t unit = ifun_parse_roundpart(name.data, name.length);
    if (unit == unit::none) {
        return fail_batch(batch, BIFUN_INVALID_DATE_FORMAT);
    }
    if (!datetimes_are_packed()) {
        return set_rows<ifun_trunc_dt_low>(batch, value, constant_argument{unit, true});
    }
    const status outcome = trunc_packed_rows(batch, value, unit);
    batch.result->no_nulls = batch.result->no_nulls != 0 ? 1 : 0; // the unit is an argument as well
    return outcome;
}

// ---- texts -------------------------------------------------------------------------------------------------------------------------

value_or_null btrunc_dt_str_low(const bifun_string& text, const text_rounding& by, rounded_text& result) {
    return round_datetime_text<ifun_trunc_dt_low>(text, by, result);
}

status trunc_decimal(const xdec& number, std::int32_t scale, xdec& result) { return xdec_trunc_scale_with_pos(&number, scale, &result); }

value_or_null btrunc_dec_str_low(const bifun_string& text, const text_rounding& by, rounded_text& result) {
    return round_number_text<trunc_decimal>(text, by, result);
}

} // namespace

status entry::btrunc_date_av_date(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<VARCHAR> unit) {
    return trunc_rows(batch, value, unit);
}
status entry::btrunc_time_av_date(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<VARCHAR> unit) {
    return trunc_rows(batch, value, unit);
}
status entry::btrunc_datetime_av_date(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<VARCHAR> unit) {
    return trunc_rows(batch, value, unit);
}
status entry::btrunc_day_a_date(batch_of<DATETIME> batch, column_of<DATETIME> value) {
    return datetimes_are_packed() ? set_all_rows<trunc_to_day_packed>(batch, value) : set_rows<fun_trunc_day>(batch, value);
}

status entry::btrunc_dt_str_av_date(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> unit_or_scale) {
    return with_text_rounding(batch, unit_or_scale, [&](const text_rounding& by) {
        return by.unit != unit::none ? string_rows<btrunc_dt_str_low>(batch, text, fixed(by))
                                     : string_rows<btrunc_dec_str_low>(batch, text, fixed(by));
    });
}
status entry::btrunc_day_str_a_date(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    const text_rounding by = rounding_to(unit::day, batch);
    return string_rows<btrunc_dt_str_low>(batch, text, fixed(by));
}

} // namespace bifun
