// Datetimes moved by an amount: DATEADD, ADD_*, DATE_ADD, DATE_SUB, LAST_DAY, NEXT_DAY; and intervals made from numbers. A result outside
// the range of years ends the batch.

#include <array>

#include "bop/bifun_date/datetime_rows.h"
#include "bop/bifun_date/weekday.h"
#include "bop/frame/row_loop.h"
#include "engine/interval.h"

namespace bifun {
namespace {

// Many rows at once, where datetimes are packed. How many days a count stands for is one more constant to the kernel.
template <class Value, class Count>
INLINED inline status add_days_at_once(const batch& batch, const Value& value, const Count& count, std::int64_t days_per_count) {
    using checks = row_checks<check_add_days_packed, nullptr, failing_row::null>;
    return set_rows<rows::all, add_days_packed, checks>(batch, value, count, constant_argument<std::int64_t>{days_per_count, true});
}

// `field` is the same for all rows, so attempts know it already; as an argument it only takes part in what the flags promise. One that
// cannot be added fails at the first row.
template <class Amount, class Value> INLINED inline status dateadd(const batch& batch, int_constant field, Amount amount, Value value) {
    if (field->not_null == 0) {
        return null_rows(batch);
    }
    const datetime_arithmetic::field_step by = datetime_arithmetic::step_of(field->value);
    if (datetimes_are_packed() && by.kind == datetime_arithmetic::step_kind::days) {
        return add_days_at_once(batch, datetime(value), bigint(amount), by.size);
    }
    return with_datetimes([&](auto datetimes) {
        typename decltype(datetimes)::field_step step;
        const status made = datetimes.make_step(field->value, step);
        return attempt_set_rows<zqtime>(
            batch,
            [datetimes, step, made](zqtime& result, std::int32_t, std::int64_t count, const zqtime& moment)
                INLINED -> status { return made < BIFUN_OK ? made : datetimes.add_steps(moment, step, count, result); },
            integer(field), bigint(amount), datetime(value));
    });
}

INLINED inline status add_days(const batch& batch, column value, double_constant days) {
    const constant_argument<double> count = floating(days);
    datetime_arithmetic::day_span whole;
    if (datetimes_are_packed() && datetime_arithmetic::split_days(count.value, whole) && whole.microseconds == 0) {
        return add_days_at_once(batch, datetime(value), constant_argument<std::int64_t>{whole.days, count.present}, 1);
    }
    return with_datetimes([&](auto datetimes) {
        typename decltype(datetimes)::day_span span;
        const status made = datetimes.make_span(count.value, span);
        return attempt_set_rows<zqtime>(
            batch,
            [datetimes, span, made](zqtime& result, const zqtime& moment, double)
                INLINED -> status { return made < BIFUN_OK ? made : datetimes.add_span(moment, span, result); },
            datetime(value), count);
    });
}

constexpr auto add_number_of_days = [](auto datetimes, const zqtime& moment, double days, zqtime& result) INLINED -> status {
    typename decltype(datetimes)::day_span span;
    const status made = datetimes.make_span(days, span);
    return made < BIFUN_OK ? made : datetimes.add_span(moment, span, result);
};

template <class Value> status add_days(const batch& batch, Value value, column days) {
    return attempt_datetime_rows<zqtime>(
        batch,
        [](auto datetimes, zqtime& result, const zqtime& moment, double count)
            INLINED { return add_number_of_days(datetimes, moment, count, result); },
        datetime(value), floating(days));
}

template <class Value, class Weeks> status add_weeks(const batch& batch, Value value, Weeks weeks) {
    return attempt_datetime_rows<zqtime>(
        batch,
        [](auto datetimes, zqtime& result, const zqtime& moment, std::int32_t count) INLINED {
            // The days wrap around in 32 bits.
            const auto days = static_cast<std::int32_t>(static_cast<std::uint32_t>(count) * 7);
            return add_number_of_days(datetimes, moment, static_cast<double>(days), result);
        },
        datetime(value), integer(weeks));
}

template <class Value, class Months> status add_months(const batch& batch, Value value, Months months) {
    return attempt_datetime_rows<zqtime>(
        batch,
        [](auto datetimes, zqtime& result, const zqtime& moment, std::int32_t count)
            INLINED { return datetimes.add_months(moment, count, result); },
        datetime(value), integer(months));
}

constexpr auto add_interval = [](auto datetimes, zqtime& result, const zqtime& value, const bifun_interval_ym& span)
                                  INLINED { return datetimes.add_interval(value, span, result); };
constexpr auto subtract_interval = [](auto datetimes, zqtime& result, const zqtime& value, const bifun_interval_ym& span)
                                       INLINED { return datetimes.subtract_interval(value, span, result); };

constexpr auto ifun_parse_last_day = [](auto datetimes, zqtime& result, const zqtime& value)
                                         INLINED { return datetimes.last_day_of_month(value, result); };

// ---- NEXT_DAY ------------------------------------------------------------------------------------------------------------------

constexpr std::uint32_t longest_day_name = 19;

// The weekday, 0 Sunday to 6 Saturday, of a name.
status parse_weekday(const bifun_string& name, std::int32_t& weekday) {
    if (name.length > longest_day_name) {
        return BIFUN_DAY_NAME_TOO_LONG;
    }
    std::array<char, longest_day_name + 1> text{};
    std::copy_n(name.data, name.length, text.begin());
    const std::uint32_t found = zqtime_convert_weekday(global_bifun_var.charset_code, text.data());
    weekday = static_cast<std::int32_t>(found);
    return found == ZQTIME_UNKNOWN_WEEKDAY ? BIFUN_UNKNOWN_DAY_NAME : BIFUN_OK;
}

// ---- intervals -------------------------------------------------------------------------------------------------------------------

// An operation of the engine is called, never passed on: its address would have to be known when the library is loaded.
constexpr auto to_year_month = [](const xdec& number, const bifun_string& unit, bifun_interval_ym& result)
                                   INLINED { return failure_of(xdec_to_ivym(&number, unit.data, unit.length, &result)); };
constexpr auto to_day_time = [](const xdec& number, const bifun_string& unit, bifun_interval_dt& result)
                                 INLINED { return failure_of(xdec_to_ivdt(&number, unit.data, unit.length, &result)); };

template <class Interval, class Convert>
status intervals_of(const batch& batch, column number, string_constant unit, const Convert& convert) {
    return attempt_store_rows<Interval>(
        batch, [convert](Interval& result, const xdec& count, const bifun_string& name) INLINED { return convert(count, name, result); },
        decimal(number), string(unit));
}

} // namespace
} // namespace bifun

using namespace bifun;

VECTORISED status bdateadd_vaa_date(BATCH_OF(int_constant field, column amount, column value)) {
    return dateadd(BATCH, field, amount, value);
}
VECTORISED status bdateadd_vav_date(BATCH_OF(int_constant field, column amount, datetime_constant value)) {
    return dateadd(BATCH, field, amount, value);
}
VECTORISED status bdateadd_vva_date(BATCH_OF(int_constant field, bigint_constant amount, column value)) {
    return dateadd(BATCH, field, amount, value);
}

status badd_days_aa_date(BATCH_OF(column value, column days)) { return add_days(BATCH, value, days); }
VECTORISED status badd_days_av_date(BATCH_OF(column value, double_constant days)) { return add_days(BATCH, value, days); }
status badd_days_va_date(BATCH_OF(datetime_constant value, column days)) { return add_days(BATCH, value, days); }

status badd_weeks_aa_date(BATCH_OF(column value, column weeks)) { return add_weeks(BATCH, value, weeks); }
status badd_weeks_av_date(BATCH_OF(column value, int_constant weeks)) { return add_weeks(BATCH, value, weeks); }
status badd_weeks_va_date(BATCH_OF(datetime_constant value, column weeks)) { return add_weeks(BATCH, value, weeks); }

status badd_months_aa_date(BATCH_OF(column value, column months)) { return add_months(BATCH, value, months); }
status badd_months_av_date(BATCH_OF(column value, int_constant months)) { return add_months(BATCH, value, months); }
status badd_months_va_date(BATCH_OF(datetime_constant value, column months)) { return add_months(BATCH, value, months); }

status bdate_add_ym_aa(BATCH_OF(column value, column interval)) {
    return attempt_datetime_rows<zqtime>(BATCH, add_interval, datetime(value), interval_ym(interval));
}
status bdate_add_ym_av(BATCH_OF(column value, interval_ym_constant interval)) {
    return attempt_datetime_rows<zqtime>(BATCH, add_interval, datetime(value), interval_ym(interval));
}
status bdate_sub_ym_aa(BATCH_OF(column value, column interval)) {
    return attempt_datetime_rows<zqtime>(BATCH, subtract_interval, datetime(value), interval_ym(interval));
}
status bdate_sub_ym_av(BATCH_OF(column value, interval_ym_constant interval)) {
    return attempt_datetime_rows<zqtime>(BATCH, subtract_interval, datetime(value), interval_ym(interval));
}

VECTORISED status blast_day_a_date(BATCH_OF(column value)) {
    const batch batch = BATCH;
    return datetimes_are_packed() ? set_rows<rows::all, set_last_day_packed>(batch, datetime(value))
                                  : attempt_datetime_rows<zqtime>(batch, ifun_parse_last_day, datetime(value));
}

status blast_day_str_a_date(BATCH_OF(column text)) { return attempt_text_rows<zqtime>(BATCH, text, ifun_parse_last_day); }

status bnext_day_av_date(BATCH_OF(column value, string_constant name)) {
    const batch batch = BATCH;
    const constant_argument<bifun_string> day_name = string(name);
    std::int32_t target = 0;
    const status parsed = day_name.present ? parse_weekday(day_name.value, target) : BIFUN_OK;
    if (parsed < BIFUN_OK) {
        return fail_batch(batch, parsed);
    }
    return with_datetimes([&](auto datetimes) {
        typename decltype(datetimes)::field_step day;
        (void)datetimes.make_step(ZQTIME_DAY, day);
        return attempt_set_rows<zqtime>(
            batch,
            [datetimes, target, day](zqtime& result, const zqtime& moment, const bifun_string&) INLINED -> status {
                std::int32_t weekday;
                const status counted = ifun_weekday_in_for_glgl_special(datetimes, moment, weekday);
                const std::int32_t days = target <= weekday ? target + 7 - weekday : target - weekday;
                return counted < BIFUN_OK ? counted : datetimes.add_steps(moment, day, days, result);
            },
            datetime(value), day_name);
    });
}

status bnumtoivym_av_date(BATCH_OF(column number, string_constant unit)) {
    return intervals_of<bifun_interval_ym>(BATCH, number, unit, to_year_month);
}
status bnumtoivdt_av_date(BATCH_OF(column number, string_constant unit)) {
    return intervals_of<bifun_interval_dt>(BATCH, number, unit, to_day_time);
}
