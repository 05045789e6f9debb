// SPDX-License-Identifier: Apache-2.0
// ROUND of datetimes to a unit, and of texts. Results of years, quarters and months have no zone.

#include "bop/bifun_date/datetime_operations.h"
#include "bop/bifun_date/entry_points.h"
#include "bop/bifun_date/rounded_text.h"
#include "bop/bifun_date/weekday.h"
#include "bop/frame/row_loop.h"

namespace bifun {
namespace {

// ---- days and times ----------------------------------------------------------------------------------------------------------------

// The midnight that is nearer, noon's being the next one. The zone stays.
template <class Datetimes> status ifun_round_day_low(const zqtime& value, zqtime& result) {
    std::int32_t year = Datetimes::year(value);
    std::int32_t month = Datetimes::month(value);
    std::int32_t day = Datetimes::day(value);
    if (Datetimes::hour(value) >= 12 && ++day > Datetimes::month_end_day(year, month)) {
        day = 1;
        year += month == 12 ? 1 : 0;
        month = month == 12 ? 1 : month + 1;
    }
    if (Datetimes::is_missing_day(year, month, day)) {
        day = static_cast<std::int32_t>(calendar::first_gregorian_day);
    }
    return Datetimes::encode_date(year, month, day, Datetimes::zone(value), result);
}

template <class Datetimes> status round_time(const zqtime& value, std::int32_t field, bool is_up, zqtime& result) {
    const status moved = is_up ? Datetimes::add(value, field, 1, result) : (result = value, BIFUN_OK);
    if (moved >= BIFUN_OK) {
        Datetimes::clear_below(field, result);
    }
    return moved;
}

// ---- years, quarters and months ------------------------------------------------------------------------------------------------------

std::int32_t nearest_century(std::int32_t year) {
    const std::int32_t century = year / 100;
    const std::int32_t rest = year % 100;
    if (year >= 0) {
        return (rest < 50 ? century : century + 1) * 100 + 1;
    }
    const std::int32_t nearest = (rest < -50 ? century - 1 : century) * 100;
    return nearest == 0 ? 1 : nearest;
}

// A month counted from January; one more than December is in the next year.
template <class Datetimes> status first_of_month(std::int32_t year, std::int32_t months, zqtime& result) {
    return Datetimes::encode_date(year + (months > 11 ? 1 : 0), months > 11 ? months - 11 : months + 1, 1, ZQTIME_NO_ZONE, result);
}

// The first month of the quarter that is nearer, counted from January. Its middle month is halved behind the 15th.
std::int32_t nearest_quarter(std::int32_t month, std::int32_t day) {
    const std::int32_t in_quarter = (month - 1) % 3;
    const bool is_next = in_quarter == 2 || (in_quarter == 1 && day > 15);
    return month - 1 - in_quarter + (is_next ? 3 : 0);
}

// ---- weeks ---------------------------------------------------------------------------------------------------------------------------

template <class Datetimes> status weekday_of_date(std::int32_t year, std::int32_t month, std::int32_t& weekday) {
    zqtime date;
    const status encoded = Datetimes::encode_date(year, month, 1, ZQTIME_NO_ZONE, date);
    return encoded < BIFUN_OK ? encoded : ifun_weekday_in(Datetimes{}, date, weekday);
}

// On which weekday the weeks of a value's year begin. Behind the changeover it is Friday, as 1582-10-15 was.
constexpr std::int32_t friday = 5;
template <class Datetimes> status ifun_week_start_day_for_ww(const zqtime& value, std::int32_t& weekday) {
    const std::int32_t year = Datetimes::year(value);
    const std::int32_t month = Datetimes::month(value);
    const bool is_in_october = month == 10 && Datetimes::day(value) > 1;
    if (year == calendar::changeover_year && (is_in_october || month >= 11)) {
        weekday = friday;
        return BIFUN_OK;
    }
    return weekday_of_date<Datetimes>(year, 1, weekday);
}

template <class Datetimes> status week_start_day_for_w(const zqtime& value, std::int32_t& weekday) {
    if (Datetimes::is_behind_changeover_in_month(value)) {
        weekday = friday;
        return BIFUN_OK;
    }
    return weekday_of_date<Datetimes>(Datetimes::year(value), Datetimes::month(value), weekday);
}

// The nearest day with the weekday on which weeks begin.
template <class Datetimes> status round_to_week_of(std::int32_t unit, const zqtime& value, zqtime& result) {
    std::int32_t first_weekday;
    std::int32_t weekday;
    const status found = unit == unit::week_of_year ? ifun_week_start_day_for_ww<Datetimes>(value, first_weekday)
                                                    : week_start_day_for_w<Datetimes>(value, first_weekday);
    const status counted = found < BIFUN_OK ? found : ifun_weekday_in_for_glgl_special(Datetimes{}, value, weekday);
    if (counted < BIFUN_OK) {
        return counted;
    }
    const std::int32_t days = first_weekday - weekday + (weekday >= first_weekday ? 7 : 0);
    return Datetimes::move_to_day(value, days > 3 ? days - 7 : days, result);
}

// Sunday, from Wednesday noon on the next one; or for iso_week Monday, from Friday on the next one.
template <class Datetimes> status round_to_week(std::int32_t unit, const zqtime& value, zqtime& result) {
    std::int32_t weekday;
    const status counted = ifun_weekday_in_for_glgl_special(Datetimes{}, value, weekday);
    if (counted < BIFUN_OK) {
        return counted;
    }
    const bool is_next_sunday = weekday > 3 || (weekday == 3 && Datetimes::hour(value) >= 12);
    const std::int32_t to_sunday = is_next_sunday ? 7 - weekday : -weekday;
    const std::int32_t to_monday = (weekday > 4 ? 8 : 1) - weekday;
    return Datetimes::move_to_day(value, unit == unit::week ? to_sunday : to_monday, result);
}

// ---- every unit ----------------------------------------------------------------------------------------------------------------------

template <class Datetimes> status ifun_round_dt_low(const zqtime& value, std::int32_t unit, zqtime& result) {
    const std::int32_t year = Datetimes::year(value);
    const std::int32_t month = Datetimes::month(value);
    const std::int32_t day = Datetimes::day(value);
    const std::int32_t minute = Datetimes::minute(value);
    const std::int32_t second = Datetimes::second(value);
    switch (unit) {
    case unit::day:
        return ifun_round_day_low<Datetimes>(value, result);
    case unit::century:
        return first_of_month<Datetimes>(nearest_century(year), 0, result);
    case unit::year:
        return first_of_month<Datetimes>(month >= 7 ? year + 1 : year, 0, result);
    case unit::quarter:
        return first_of_month<Datetimes>(year, nearest_quarter(month, day), result);
    case unit::month:
        return first_of_month<Datetimes>(year, day > 15 ? month : month - 1, result);
    case unit::week_of_year:
    case unit::week_of_month:
        return round_to_week_of<Datetimes>(unit, value, result);
    case unit::week:
    case unit::iso_week:
        return round_to_week<Datetimes>(unit, value, result);
    case unit::hour:
        return round_time<Datetimes>(value, ZQTIME_HOUR, minute > 30 || (minute == 30 && second >= 30), result);
    case unit::minute:
        return round_time<Datetimes>(value, ZQTIME_MINUTE, second >= 30, result);
    default:
        return BIFUN_INVALID_DATE_FORMAT;
    }
}

status round_rows(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<VARCHAR> unit_name) {
    const auto [name, present] = argument(unit_name);
    if (!present) {
        return null_rows(batch);
    }
    const std::int32_t unit = ifun_parse_roundpart(name.data, name.length);
    if (unit == unit::none) {
        return fail_batch(batch, BIFUN_INVALID_DATE_FORMAT);
    }
    return with_datetimes([&]<class Datetimes>(Datetimes) {
        return set_rows<ifun_round_dt_low<Datetimes>>(batch, value, constant_argument{unit, true});
    });
}

// ---- texts ---------------------------------------------------------------------------------------------------------------------------

value_or_null ifun_round_dt_str_low(const bifun_string& text, const text_rounding& by, rounded_text& result) {
    return round_datetime_text<ifun_round_dt_low<engine_datetimes>>(text, by, result);
}

status round_decimal(const xdec& number, std::int32_t scale, xdec& result) { return xdec_round(&number, 0, scale, &result); }

value_or_null ifun_round_dec_str_low(const bifun_string& text, const text_rounding& by, rounded_text& result) {
    return round_number_text<round_decimal>(text, by, result);
}

// A number to an integer; another text as a datetime to the day.
value_or_null ifun_round_str_low(const bifun_string& text, const text_rounding& by, rounded_text& result) {
    xdec number;
    const status read = xdec_from_char(text.data, text.length, &number);
    if (read < BIFUN_OK || read == BIFUN_UNUSABLE_TEXT) {
        return ifun_round_dt_str_low(text, by, result);
    }
    const status rounded = round_decimal(number, 0, number);
    return rounded < BIFUN_OK ? rounded : show_number(number, result);
}

status bround_dt_str_av_process(batch_of<VARCHAR> batch, column_of<VARCHAR> text, const text_rounding& by) {
    return by.unit != unit::none ? string_rows<ifun_round_dt_str_low>(batch, text, fixed(by))
                                 : string_rows<ifun_round_dec_str_low>(batch, text, fixed(by));
}

status bround_str_a_process(batch_of<VARCHAR> batch, column_of<VARCHAR> text, const text_rounding& by) {
    return string_rows<ifun_round_str_low>(batch, text, fixed(by));
}

} // namespace

status entry::bround_date_av_date(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<VARCHAR> unit) {
    return round_rows(batch, value, unit);
}
status entry::bround_time_av_date(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<VARCHAR> unit) {
    return round_rows(batch, value, unit);
}
status entry::bround_datetime_av_date(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<VARCHAR> unit) {
    return round_rows(batch, value, unit);
}
status entry::bround_day_a_date(batch_of<DATETIME> batch, column_of<DATETIME> value) {
    return with_datetimes([&]<class Datetimes>(Datetimes) { return set_rows<ifun_round_day_low<Datetimes>>(batch, value); });
}

status entry::bround_dt_str_av_date(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> unit_or_scale) {
    return with_text_rounding(batch, unit_or_scale, [&](const text_rounding& by) { return bround_dt_str_av_process(batch, text, by); });
}
status entry::bround_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    const text_rounding by = rounding_to(unit::day, batch);
    return bround_str_a_process(batch, text, by);
}

} // namespace bifun
