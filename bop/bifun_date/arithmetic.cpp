// SPDX-License-Identifier: Apache-2.0
// Datetimes moved by an amount: DATEADD, ADD_*, DATE_ADD, DATE_SUB, LAST_DAY, NEXT_DAY; and intervals made from numbers. A result outside
// the range of years ends the batch.

#include <array>

#include "bop/bifun_date/datetime_operations.h"
#include "bop/bifun_date/datetime_text.h"
#include "bop/bifun_date/entry_points.h"
#include "bop/bifun_date/weekday.h"
#include "bop/frame/row_loop.h"
#include "engine/interval.h"
#include "layouts/packed_sums.h"

namespace bifun {
namespace {

// ---- DATEADD and ADD_DAYS ------------------------------------------------------------------------------------------------------

// What a constant stands for, and the status of finding it out: where that is a failure, the first row that is not NULL has it.
template <class Datetimes> struct constant_step {
    typename Datetimes::field_step step;
    status made;
};
template <class Datetimes> struct constant_span {
    typename Datetimes::day_span span;
    status made;
};

template <class Datetimes> status add_steps(const constant_step<Datetimes>& by, std::int64_t amount, const zqtime& value, zqtime& result) {
    return by.made < BIFUN_OK ? by.made : Datetimes::add_steps(value, by.step, amount, result);
}

template <class Datetimes> status add_span(const zqtime& value, const constant_span<Datetimes>& by, zqtime& result) {
    return by.made < BIFUN_OK ? by.made : Datetimes::add_span(value, by.span, result);
}

template <class Datetimes> status add_number_of_days(const zqtime& value, double days, zqtime& result) {
    constant_span<Datetimes> by;
    by.made = Datetimes::make_span(days, by.span);
    return add_span(value, by, result);
}

template <class Datetimes> status add_number_of_weeks(const zqtime& value, std::int32_t weeks, zqtime& result) {
    // The days wrap around in 32 bits.
    return add_number_of_days<Datetimes>(value, static_cast<std::int32_t>(static_cast<std::uint32_t>(weeks) * 7), result);
}

// ---- many rows at once, where datetimes are packed ----

// Whether a count is one of `most` or less, to either side.
template <class Count> bool is_within(Count count, std::int64_t most) {
    const auto limit = static_cast<std::make_unsigned_t<Count>>(most);
    return static_cast<std::make_unsigned_t<Count>>(count) + limit <= 2 * limit;
}

std::uint32_t unsigned_product(std::int64_t count, std::int64_t size) {
    return static_cast<std::uint32_t>(count) * static_cast<std::uint32_t>(size);
}

using packed_step = constant_step<packed_datetimes>;

constexpr std::int64_t most_days_per_step = 7;
bool steps_of_days_are_usual(const packed_step& by, std::int64_t amount, const zqtime& value) {
    return packed_sums::both(is_within(amount, packed_sums::most_days / most_days_per_step),
                             packed_sums::days_are_usual(datetime_layout::load_date(value), unsigned_product(amount, by.step.size)));
}
void add_steps_of_days(const packed_step& by, std::int64_t amount, const zqtime& value, zqtime& result) {
    packed_sums::add_days(value, unsigned_product(amount, by.step.size), result);
}

// With a constant amount that is 0 to 30 days.
bool few_steps_are_usual(const packed_step&, std::int64_t, const zqtime& value) {
    return packed_sums::few_days_are_usual(datetime_layout::load_date(value));
}
void add_few_steps_of_days(const packed_step& by, std::int64_t amount, const zqtime& value, zqtime& result) {
    packed_sums::add_few_days(value, unsigned_product(amount, by.step.size), result);
}

constexpr std::int64_t most_months_per_step = 12;
bool steps_of_months_are_usual(const packed_step& by, std::int64_t amount, const zqtime& value) {
    return packed_sums::both(is_within(amount, packed_sums::most_months / most_months_per_step),
                             packed_sums::months_are_usual(datetime_layout::load_date(value), unsigned_product(amount, by.step.size)));
}
void add_steps_of_months(const packed_step& by, std::int64_t amount, const zqtime& value, zqtime& result) {
    packed_sums::add_months<false>(value, unsigned_product(amount, by.step.size), result);
}

std::int64_t seconds_in(const packed_step& by) { return by.step.size / datetime_arithmetic::microseconds_per_second; }
bool steps_of_time_are_usual(const packed_step& by, std::int64_t amount, const zqtime& value) {
    return packed_sums::both(is_within(amount, packed_sums::most_seconds / seconds_in(by)),
                             packed_sums::seconds_are_usual(datetime_layout::load_time(value), datetime_layout::load_date(value),
                                                            unsigned_product(amount, seconds_in(by))));
}
void add_steps_of_time(const packed_step& by, std::int64_t amount, const zqtime& value, zqtime& result) {
    packed_sums::add_seconds<false>(value, unsigned_product(amount, seconds_in(by)), result);
}
bool few_steps_of_time_are_usual(const packed_step& by, std::int64_t amount, const zqtime& value) {
    return packed_sums::both(few_steps_are_usual(by, amount, value), packed_sums::is_time_of_day(datetime_layout::load_time(value)));
}
void add_few_steps_of_time(const packed_step& by, std::int64_t amount, const zqtime& value, zqtime& result) {
    packed_sums::add_seconds<true>(value, unsigned_product(amount, seconds_in(by)), result);
}

// Whether an amount is a constant that makes 0 to `most` with steps of this size.
bool is_few(constant_of<BIGINT> amount, std::int64_t size, std::int64_t most) {
    const auto [count, present] = argument(amount);
    return present && count >= 0 && count <= most / size;
}
bool is_few(column_of<BIGINT>, std::int64_t, std::int64_t) { return false; }

template <class Amount, class Value>
status dateadd_packed(batch_of<DATETIME> batch, constant_argument<packed_step> step, Amount amount, Value value) {
    switch (step.value.step.kind) {
    case datetime_arithmetic::step_kind::days:
        if (is_few(amount, step.value.step.size, packed_sums::most_few_days)) {
            return set_usual_rows<few_steps_are_usual, add_few_steps_of_days, add_steps<packed_datetimes>>(batch, step, amount, value);
        }
        return set_usual_rows<steps_of_days_are_usual, add_steps_of_days, add_steps<packed_datetimes>>(batch, step, amount, value);
    case datetime_arithmetic::step_kind::months:
        return set_usual_rows<steps_of_months_are_usual, add_steps_of_months, add_steps<packed_datetimes>>(batch, step, amount, value);
    case datetime_arithmetic::step_kind::time:
        if (step.value.step.size >= datetime_arithmetic::microseconds_per_second) {
            if (is_few(amount, seconds_in(step.value), packed_sums::most_few_seconds)) {
                return set_usual_rows<few_steps_of_time_are_usual, add_few_steps_of_time, add_steps<packed_datetimes>>(batch, step, amount,
                                                                                                                       value);
            }
            return set_usual_rows<steps_of_time_are_usual, add_steps_of_time, add_steps<packed_datetimes>>(batch, step, amount, value);
        }
        [[fallthrough]];
    default:
        return set_rows<add_steps<packed_datetimes>>(batch, step, amount, value);
    }
}

template <class Amount, class Value> status dateadd(batch_of<DATETIME> batch, constant_of<INT> given_field, Amount amount, Value value) {
    const auto [field, present] = argument(given_field);
    if (!present) {
        return null_rows(batch);
    }
    return with_datetimes([&, &field = field]<class Datetimes>(Datetimes) {
        constant_argument step{constant_step<Datetimes>{}, true};
        step.value.made = Datetimes::make_step(field, step.value.step);
        if constexpr (std::is_same_v<Datetimes, packed_datetimes>) {
            return dateadd_packed(batch, step, amount, value);
        } else {
            return set_rows<add_steps<Datetimes>>(batch, step, amount, value);
        }
    });
}

bool whole_days_are_usual(const zqtime& value, const constant_span<packed_datetimes>& by) {
    return packed_sums::both(is_within(by.span.days, packed_sums::most_days),
                             packed_sums::days_are_usual(datetime_layout::load_date(value), static_cast<std::uint32_t>(by.span.days)));
}
void add_whole_days(const zqtime& value, const constant_span<packed_datetimes>& by, zqtime& result) {
    packed_sums::add_days(value, static_cast<std::uint32_t>(by.span.days), result);
}

bool few_whole_days_are_usual(const zqtime& value, const constant_span<packed_datetimes>&) {
    return packed_sums::few_days_are_usual(datetime_layout::load_date(value));
}
void add_few_whole_days(const zqtime& value, const constant_span<packed_datetimes>& by, zqtime& result) {
    packed_sums::add_few_days(value, static_cast<std::uint32_t>(by.span.days), result);
}

template <class Value> status add_days(batch_of<DATETIME> batch, Value value, column_of<DOUBLE> days) {
    return with_datetimes([&]<class Datetimes>(Datetimes) { return set_rows<add_number_of_days<Datetimes>>(batch, value, days); });
}

status add_days(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<DOUBLE> given_days) {
    const auto [days, present] = argument(given_days);
    datetime_arithmetic::day_span whole;
    if (datetimes_are_packed() && datetime_arithmetic::split_days(days, whole) && whole.microseconds == 0) {
        const constant_argument by{constant_span<packed_datetimes>{whole, BIFUN_OK}, present};
        if (whole.days >= 0 && whole.days <= packed_sums::most_few_days) {
            return set_usual_rows<few_whole_days_are_usual, add_few_whole_days, add_span<packed_datetimes>>(batch, value, by);
        }
        return set_usual_rows<whole_days_are_usual, add_whole_days, add_span<packed_datetimes>>(batch, value, by);
    }
    return with_datetimes([&, &days = days, &present = present]<class Datetimes>(Datetimes) {
        constant_argument span{constant_span<Datetimes>{}, present};
        span.value.made = Datetimes::make_span(days, span.value.span);
        return set_rows<add_span<Datetimes>>(batch, value, span);
    });
}

bool weeks_are_usual(const zqtime& value, std::int32_t weeks) {
    return packed_sums::both(is_within(weeks, packed_sums::most_days / 7),
                             packed_sums::days_are_usual(datetime_layout::load_date(value), static_cast<std::uint32_t>(weeks) * 7));
}
void add_usual_weeks(const zqtime& value, std::int32_t weeks, zqtime& result) {
    packed_sums::add_days(value, static_cast<std::uint32_t>(weeks) * 7, result);
}

template <class Value, class Weeks> status add_weeks(batch_of<DATETIME> batch, Value value, Weeks weeks) {
    return datetimes_are_packed()
               ? set_usual_rows<weeks_are_usual, add_usual_weeks, add_number_of_weeks<packed_datetimes>>(batch, value, weeks)
               : set_rows<add_number_of_weeks<engine_datetimes>>(batch, value, weeks);
}

// ---- ADD_MONTHS, and intervals of years and months ----

bool months_are_usual(const zqtime& value, std::int32_t months) {
    return packed_sums::both(is_within(months, packed_sums::most_months),
                             packed_sums::months_are_usual(datetime_layout::load_date(value), static_cast<std::uint32_t>(months)));
}
void add_usual_months(const zqtime& value, std::int32_t months, zqtime& result) {
    packed_sums::add_months<true>(value, static_cast<std::uint32_t>(months), result);
}

template <class Value, class Months> status add_months(batch_of<DATETIME> batch, Value value, Months months) {
    return datetimes_are_packed() ? set_usual_rows<months_are_usual, add_usual_months, packed_datetimes::add_months>(batch, value, months)
                                  : set_rows<engine_datetimes::add_months>(batch, value, months);
}

template <std::int32_t sign> std::uint32_t signed_months(const bifun_interval_ym& interval) {
    const std::uint32_t months = static_cast<std::uint32_t>(interval.years) * 12 + static_cast<std::uint32_t>(interval.months);
    return sign < 0 ? 0 - months : months;
}
template <std::int32_t sign> bool interval_is_usual(const zqtime& value, const bifun_interval_ym& interval) {
    const bool are_within = packed_sums::both(is_within(interval.years, packed_sums::most_months / 24),
                                              is_within(interval.months, packed_sums::most_months / 2));
    return packed_sums::both(are_within, packed_sums::months_are_usual(datetime_layout::load_date(value), signed_months<sign>(interval)));
}
template <std::int32_t sign> void add_usual_interval(const zqtime& value, const bifun_interval_ym& interval, zqtime& result) {
    packed_sums::add_months<false>(value, signed_months<sign>(interval), result);
}

template <class Interval> status add_interval(batch_of<DATETIME> batch, column_of<DATETIME> value, Interval interval) {
    return datetimes_are_packed()
               ? set_usual_rows<interval_is_usual<1>, add_usual_interval<1>, packed_datetimes::add_interval>(batch, value, interval)
               : set_rows<engine_datetimes::add_interval>(batch, value, interval);
}

template <class Interval> status subtract_interval(batch_of<DATETIME> batch, column_of<DATETIME> value, Interval interval) {
    return datetimes_are_packed()
               ? set_usual_rows<interval_is_usual<-1>, add_usual_interval<-1>, packed_datetimes::subtract_interval>(batch, value, interval)
               : set_rows<engine_datetimes::subtract_interval>(batch, value, interval);
}

// ---- LAST_DAY and NEXT_DAY -------------------------------------------------------------------------------------------------------

template <class Datetimes> status ifun_parse_last_day(const zqtime& value, zqtime& result) {
    return Datetimes::last_day_of_month(value, result);
}

constexpr std::uint32_t longest_day_name = 19;

// The weekday, 0 Sunday to 6 Saturday, of a name.
status parse_weekday(const bifun_string& name, std::int32_t& weekday) {
    if (name.length > longest_day_name) {
        return BIFUN_DAY_NAME_TOO_LONG;
    }
    std::array<char, longest_day_name + 1> text{};
    if (name.length != 0) {
        std::memcpy(text.data(), name.data, name.length);
    }
    const std::uint32_t found = zqtime_convert_weekday(global_bifun_var.charset_code, text.data());
    weekday = static_cast<std::int32_t>(found);
    return found == ZQTIME_UNKNOWN_WEEKDAY ? BIFUN_UNKNOWN_DAY_NAME : BIFUN_OK;
}

template <class Datetimes> struct next_weekday {
    std::int32_t weekday;
    typename Datetimes::field_step day;
};

std::int32_t days_to_next(std::int32_t next, std::int32_t weekday) { return next - weekday + (next <= weekday ? 7 : 0); }

bool day_before_next_is_usual(const zqtime& value, const next_weekday<packed_datetimes>&) {
    return packed_sums::days_are_usual(datetime_layout::load_date(value), 7);
}
void usual_next_day(const zqtime& value, const next_weekday<packed_datetimes>& next, zqtime& result) {
    std::int32_t weekday;
    (void)ifun_weekday_in_for_glgl_special(packed_datetimes{}, value, weekday); // which does not fail
    packed_sums::add_days(value, static_cast<std::uint32_t>(days_to_next(next.weekday, weekday)), result);
}

template <class Datetimes> status next_day(const zqtime& value, const next_weekday<Datetimes>& next, zqtime& result) {
    std::int32_t weekday;
    const status counted = ifun_weekday_in_for_glgl_special(Datetimes{}, value, weekday);
    return counted < BIFUN_OK ? counted : Datetimes::add_steps(value, next.day, days_to_next(next.weekday, weekday), result);
}

// ---- intervals -------------------------------------------------------------------------------------------------------------------

status to_year_month(const xdec& number, const bifun_string& unit, bifun_interval_ym& result) {
    return xdec_to_ivym(&number, unit.data, unit.length, &result);
}

status to_day_time(const xdec& number, const bifun_string& unit, bifun_interval_dt& result) {
    return xdec_to_ivdt(&number, unit.data, unit.length, &result);
}

} // namespace

status entry::bdateadd_vaa_date(batch_of<DATETIME> batch, constant_of<INT> field, column_of<BIGINT> amount, column_of<DATETIME> value) {
    return dateadd(batch, field, amount, value);
}
status entry::bdateadd_vav_date(batch_of<DATETIME> batch, constant_of<INT> field, column_of<BIGINT> amount, constant_of<DATETIME> value) {
    return dateadd(batch, field, amount, value);
}
status entry::bdateadd_vva_date(batch_of<DATETIME> batch, constant_of<INT> field, constant_of<BIGINT> amount, column_of<DATETIME> value) {
    return dateadd(batch, field, amount, value);
}

status entry::badd_days_aa_date(batch_of<DATETIME> batch, column_of<DATETIME> value, column_of<DOUBLE> days) {
    return add_days(batch, value, days);
}
status entry::badd_days_av_date(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<DOUBLE> days) {
    return add_days(batch, value, days);
}
status entry::badd_days_va_date(batch_of<DATETIME> batch, constant_of<DATETIME> value, column_of<DOUBLE> days) {
    return add_days(batch, value, days);
}

status entry::badd_weeks_aa_date(batch_of<DATETIME> batch, column_of<DATETIME> value, column_of<INT> weeks) {
    return add_weeks(batch, value, weeks);
}
status entry::badd_weeks_av_date(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<INT> weeks) {
    return add_weeks(batch, value, weeks);
}
status entry::badd_weeks_va_date(batch_of<DATETIME> batch, constant_of<DATETIME> value, column_of<INT> weeks) {
    return add_weeks(batch, value, weeks);
}

status entry::badd_months_aa_date(batch_of<DATETIME> batch, column_of<DATETIME> value, column_of<INT> months) {
    return add_months(batch, value, months);
}
status entry::badd_months_av_date(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<INT> months) {
    return add_months(batch, value, months);
}
status entry::badd_months_va_date(batch_of<DATETIME> batch, constant_of<DATETIME> value, column_of<INT> months) {
    return add_months(batch, value, months);
}

status entry::bdate_add_ym_aa(batch_of<DATETIME> batch, column_of<DATETIME> value, column_of<INTERVAL_YM> interval) {
    return add_interval(batch, value, interval);
}
status entry::bdate_add_ym_av(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<INTERVAL_YM> interval) {
    return add_interval(batch, value, interval);
}
status entry::bdate_sub_ym_aa(batch_of<DATETIME> batch, column_of<DATETIME> value, column_of<INTERVAL_YM> interval) {
    return subtract_interval(batch, value, interval);
}
status entry::bdate_sub_ym_av(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<INTERVAL_YM> interval) {
    return subtract_interval(batch, value, interval);
}

status entry::blast_day_a_date(batch_of<DATETIME> batch, column_of<DATETIME> value) {
    return datetimes_are_packed() ? set_all_rows<set_last_day_packed>(batch, value)
                                  : set_rows<ifun_parse_last_day<engine_datetimes>>(batch, value);
}
status entry::blast_day_str_a_date(batch_of<DATETIME> batch, column_of<VARCHAR> text) {
    return with_datetimes(
        [&]<class Datetimes>(Datetimes) { return set_rows<of_text<ifun_parse_last_day<Datetimes>, zqtime>>(batch, text); });
}

status entry::bnext_day_av_date(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<VARCHAR> name) {
    const auto [day_name, present] = argument(name);
    std::int32_t weekday = 0;
    const status parsed = present ? parse_weekday(day_name, weekday) : BIFUN_OK;
    if (parsed < BIFUN_OK) {
        return fail_batch(batch, parsed);
    }
    return with_datetimes([&, &present = present]<class Datetimes>(Datetimes) {
        constant_argument next{next_weekday<Datetimes>{}, present};
        next.value.weekday = weekday;
        (void)Datetimes::make_step(ZQTIME_DAY, next.value.day);
        if constexpr (std::is_same_v<Datetimes, packed_datetimes>) {
            return set_usual_rows<day_before_next_is_usual, usual_next_day, next_day<packed_datetimes>>(batch, value, next);
        } else {
            return set_rows<next_day<Datetimes>>(batch, value, next);
        }
    });
}

status entry::bnumtoivym_av_date(batch_of<INTERVAL_YM> batch, column_of<DECIMAL> number, constant_of<VARCHAR> unit) {
    return store_rows<to_year_month>(batch, number, unit);
}
status entry::bnumtoivdt_av_date(batch_of<INTERVAL_DT> batch, column_of<DECIMAL> number, constant_of<VARCHAR> unit) {
    return store_rows<to_day_time>(batch, number, unit);
}

} // namespace bifun
