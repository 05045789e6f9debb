// Datetimes moved by an amount: DATEADD, ADD_*, DATE_ADD, DATE_SUB, LAST_DAY, NEXT_DAY; and intervals made from numbers. A result outside
// the range of years ends the batch.

#include <array>

#include "bop/bifun_date/datetime_operations.h"
#include "bop/bifun_date/datetime_text.h"
#include "bop/bifun_date/entry_points.h"
#include "bop/bifun_date/weekday.h"
#include "bop/frame/row_loop.h"
#include "engine/interval.h"

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

// Many rows at once, where datetimes are packed. How many days a count stands for is one more constant to the kernel.
template <class Value, class Count>
status add_days_at_once(batch_of<DATETIME> batch, Value value, Count count, std::int64_t days_per_count) {
    using checks = row_checks<check_add_days_packed, nullptr, failing_row::null>;
    return set_all_rows<add_days_packed, checks>(batch, value, count, constant_argument{days_per_count, true});
}

template <class Amount, class Value> status dateadd(batch_of<DATETIME> batch, constant_of<INT> given_field, Amount amount, Value value) {
    const auto [field, present] = argument(given_field);
    if (!present) {
        return null_rows(batch);
    }
    const datetime_arithmetic::field_step by = datetime_arithmetic::step_of(field);
    if (datetimes_are_packed() && by.kind == datetime_arithmetic::step_kind::days) {
        return add_days_at_once(batch, value, amount, by.size);
    }
    return with_datetimes([&, &field = field]<class Datetimes>(Datetimes) {
        constant_argument step{constant_step<Datetimes>{}, true};
        step.value.made = Datetimes::make_step(field, step.value.step);
        return set_rows<add_steps<Datetimes>>(batch, step, amount, value);
    });
}

template <class Value> status add_days(batch_of<DATETIME> batch, Value value, column_of<DOUBLE> days) {
    return with_datetimes([&]<class Datetimes>(Datetimes) { return set_rows<add_number_of_days<Datetimes>>(batch, value, days); });
}

status add_days(batch_of<DATETIME> batch, column_of<DATETIME> value, constant_of<DOUBLE> given_days) {
    const auto [days, present] = argument(given_days);
    datetime_arithmetic::day_span whole;
    if (datetimes_are_packed() && datetime_arithmetic::split_days(days, whole) && whole.microseconds == 0) {
        return add_days_at_once(batch, value, constant_argument{whole.days, present}, 1);
    }
    return with_datetimes([&, &days = days, &present = present]<class Datetimes>(Datetimes) {
        constant_argument span{constant_span<Datetimes>{}, present};
        span.value.made = Datetimes::make_span(days, span.value.span);
        return set_rows<add_span<Datetimes>>(batch, value, span);
    });
}

template <class Value, class Weeks> status add_weeks(batch_of<DATETIME> batch, Value value, Weeks weeks) {
    return with_datetimes([&]<class Datetimes>(Datetimes) { return set_rows<add_number_of_weeks<Datetimes>>(batch, value, weeks); });
}

template <class Value, class Months> status add_months(batch_of<DATETIME> batch, Value value, Months months) {
    return with_datetimes([&]<class Datetimes>(Datetimes) { return set_rows<Datetimes::add_months>(batch, value, months); });
}

template <class Interval> status add_interval(batch_of<DATETIME> batch, column_of<DATETIME> value, Interval interval) {
    return with_datetimes([&]<class Datetimes>(Datetimes) { return set_rows<Datetimes::add_interval>(batch, value, interval); });
}

template <class Interval> status subtract_interval(batch_of<DATETIME> batch, column_of<DATETIME> value, Interval interval) {
    return with_datetimes([&]<class Datetimes>(Datetimes) { return set_rows<Datetimes::subtract_interval>(batch, value, interval); });
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

template <class Datetimes> status next_day(const zqtime& value, const next_weekday<Datetimes>& next, zqtime& result) {
    std::int32_t weekday;
    const status counted = ifun_weekday_in_for_glgl_special(Datetimes{}, value, weekday);
    const std::int32_t days = next.weekday <= weekday ? next.weekday + 7 - weekday : next.weekday - weekday;
    return counted < BIFUN_OK ? counted : Datetimes::add_steps(value, next.day, days, result);
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
        return set_rows<next_day<Datetimes>>(batch, value, next);
    });
}

status entry::bnumtoivym_av_date(batch_of<INTERVAL_YM> batch, column_of<DECIMAL> number, constant_of<VARCHAR> unit) {
    return store_rows<to_year_month>(batch, number, unit);
}
status entry::bnumtoivdt_av_date(batch_of<INTERVAL_DT> batch, column_of<DECIMAL> number, constant_of<VARCHAR> unit) {
    return store_rows<to_day_time>(batch, number, unit);
}

} // namespace bifun
