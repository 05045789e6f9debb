// SPDX-License-Identifier: Apache-2.0
// Arithmetic on datetimes: that of the layout, for callers from outside.
#include "engine/datetime.h"
#include "engine/interval.h"
#include "layouts/packed_datetimes.h"

using bifun::packed_datetimes;
namespace arithmetic = bifun::datetime_arithmetic;

// ---- differences --------------------------------------------------------------------------------------------------

void zqtime_glgl_adjust(zqtime* value) {
    bifun::datetime_layout::store_datetime(*value, arithmetic::adjusted(packed_datetimes::words(*value)));
}

int32_t zqtime_diff_day(const zqtime* a, const zqtime* b) { return packed_datetimes::diff_day(*a, *b); }

int32_t zqtime_diff_day_without_glgl_adjust(const zqtime* a, const zqtime* b) { return packed_datetimes::diff_day_without_adjust(*a, *b); }

int32_t zqtime_parse_datediff(int32_t field, const zqtime* a, const zqtime* b, int32_t* result) {
    return packed_datetimes::datediff(field, *a, *b, *result);
}

int32_t zqtime_to_days(const zqtime* value, int64_t* days) {
    *days = arithmetic::days_from_year_0(packed_datetimes::words(*value));
    return BIFUN_OK;
}

// ---- sums ---------------------------------------------------------------------------------------------------------

int32_t zqtime_add_by_fmt(const zqtime* value, int32_t field, int64_t amount, zqtime* result) {
    packed_datetimes::field_step step;
    const std::int32_t made = packed_datetimes::make_step(field, step);
    return made != BIFUN_OK ? made : packed_datetimes::add_steps(*value, step, amount, *result);
}

int32_t zqtime_date_add_number(const zqtime* value, double days, zqtime* result) {
    packed_datetimes::day_span span;
    const std::int32_t made = packed_datetimes::make_span(days, span);
    return made != BIFUN_OK ? made : packed_datetimes::add_span(*value, span, *result);
}

int32_t zqtime_date_add_iv_ym(const zqtime* value, int32_t months, zqtime* result) {
    return packed_datetimes::add_months(*value, months, *result);
}

int32_t datetime_add_interval_ym(const zqtime* value, const bifun_interval_ym* interval, zqtime* result) {
    return packed_datetimes::add_interval(*value, *interval, *result);
}

int32_t datetime_sub_interval_ym(const zqtime* value, const bifun_interval_ym* interval, zqtime* result) {
    return packed_datetimes::subtract_interval(*value, *interval, *result);
}

int32_t datetime_add_interval_dt(const zqtime* value, const bifun_interval_dt* interval, zqtime* result) {
    return packed_datetimes::add_time_interval(*value, *interval, *result);
}

int32_t datetime_sub_interval_dt(const zqtime* value, const bifun_interval_dt* interval, zqtime* result) {
    return packed_datetimes::subtract_time_interval(*value, *interval, *result);
}

// ---- comparisons --------------------------------------------------------------------------------------------------

int32_t zqtime_cmp(const zqtime* a, const zqtime* b) { return packed_datetimes::compare(*a, *b); }

int32_t interval_ym_cmp(const bifun_interval_ym* a, const bifun_interval_ym* b) { return packed_datetimes::compare(*a, *b); }

int32_t interval_dt_cmp(const bifun_interval_dt* a, const bifun_interval_dt* b) { return packed_datetimes::compare(*a, *b); }

// ---- days by number -----------------------------------------------------------------------------------------------

int64_t zqtime_calc_n_days_from_zero(int32_t year, uint32_t month, uint32_t day) {
    return packed_datetimes::days_from_zero(year, static_cast<int32_t>(month), static_cast<int32_t>(day));
}

int32_t zqtime_get_date_by_ndays_from_zero(int64_t number, int32_t* year, uint32_t* month, uint32_t* day) {
    std::int32_t found_month;
    std::int32_t found_day;
    const std::int32_t found = packed_datetimes::date_from_zero(number, *year, found_month, found_day);
    if (found == BIFUN_OK) {
        *month = static_cast<uint32_t>(found_month);
        *day = static_cast<uint32_t>(found_day);
    }
    return found;
}
