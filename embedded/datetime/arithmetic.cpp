#include <cstdint>

#include "bop/frame/status.h"
#include "engine/datetime.h"
#include "engine/interval.h"
#include "layouts/datetime_arithmetic.h"
#include "layouts/datetime_layout.h"

using namespace bifun::datetime_arithmetic;
using bifun::datetime_layout::load_datetime;
using bifun::datetime_layout::store_datetime;

namespace {

// Stores what arithmetic left, where that is in range.
std::int32_t store_sum(bool in_range, datetime_words sum, zqtime* result) {
    if (!in_range) {
        return BIFUN_INVALID_DATETIME;
    }
    store_datetime(*result, sum);
    return BIFUN_OK;
}

std::int32_t add_months(const zqtime* value, std::int64_t months, bool keep_last_day, zqtime* result) {
    datetime_words sum;
    const bool in_range = bifun::datetime_arithmetic::add_months(load_datetime(*value), months, keep_last_day, sum);
    return store_sum(in_range, sum, result);
}

std::int64_t months_in(const bifun_interval_ym& interval) { return std::int64_t{interval.years} * 12 + interval.months; }

} // namespace

// ---- differences --------------------------------------------------------------------------------------------------

void zqtime_glgl_adjust(zqtime* value) { store_datetime(*value, adjusted(load_datetime(*value))); }

int32_t zqtime_diff_day(const zqtime* a, const zqtime* b) { return day_number(load_datetime(*a)) - day_number(load_datetime(*b)); }

int32_t zqtime_diff_day_without_glgl_adjust(const zqtime* a, const zqtime* b) {
    return day_number_as_gregorian(load_datetime(*a)) - day_number_as_gregorian(load_datetime(*b));
}

int32_t zqtime_parse_datediff(int32_t field, const zqtime* a, const zqtime* b, int32_t* result) {
    std::int64_t difference;
    if (!datediff(field, load_datetime(*a), load_datetime(*b), difference)) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    const auto narrow = static_cast<std::int32_t>(difference);
    if (narrow != difference) {
        return BIFUN_NUMERIC_OVERFLOW;
    }
    *result = narrow;
    return BIFUN_OK;
}

int32_t zqtime_to_days(const zqtime* value, int64_t* days) {
    *days = days_from_year_0(load_datetime(*value));
    return BIFUN_OK;
}

// ---- sums ---------------------------------------------------------------------------------------------------------

int32_t zqtime_add_by_fmt(const zqtime* value, int32_t field, int64_t amount, zqtime* result) {
    const field_step step = step_of(field);
    if (step.kind == step_kind::none) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    datetime_words sum;
    const bool in_range = add_steps(load_datetime(*value), step, amount, sum);
    return store_sum(in_range, sum, result);
}

int32_t zqtime_date_add_number(const zqtime* value, double days, zqtime* result) {
    day_span span;
    if (!split_days(days, span)) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    datetime_words sum;
    const bool in_range = add_span(load_datetime(*value), span, sum);
    return store_sum(in_range, sum, result);
}

int32_t zqtime_date_add_iv_ym(const zqtime* value, int32_t months, zqtime* result) { return add_months(value, months, true, result); }

int32_t datetime_add_interval_ym(const zqtime* value, const bifun_interval_ym* interval, zqtime* result) {
    return add_months(value, months_in(*interval), false, result);
}

int32_t datetime_sub_interval_ym(const zqtime* value, const bifun_interval_ym* interval, zqtime* result) {
    return add_months(value, -months_in(*interval), false, result);
}
