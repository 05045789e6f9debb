// SPDX-License-Identifier: Apache-2.0
// Components of datetimes and intervals: EXTRACT, DATEPART and the functions that are named after a component. A field that the kind of
// value does not have fails at the first row that is not NULL. Integers go straight into the value array.

#include "bop/bifun_date/datetime_operations.h"
#include "bop/bifun_date/datetime_text.h"
#include "bop/bifun_date/entry_points.h"
#include "bop/bifun_date/fields.h"
#include "bop/bifun_date/weekday.h"
#include "bop/frame/row_loop.h"
#include "bop/frame/string_rows.h"

namespace bifun {
namespace {

// ---- kernels -----------------------------------------------------------------------------------------------------------------

template <class Datetimes> std::int32_t millisecond(const zqtime& value) { return Datetimes::microsecond(value) / 1000; }

template <class Datetimes> std::int32_t quarter(const zqtime& value) {
    const std::int32_t month = Datetimes::month(value);
    return month % 3 == 0 ? month / 3 : month / 3 + 1;
}

template <class Datetimes> std::int32_t quarter_for_datepart(const zqtime& value) { return (Datetimes::month(value) - 1) / 3 + 1; }

template <class Datetimes> std::int32_t weekday_for_datepart(const zqtime& value) { return Datetimes::day_of_week(value) + 1; }

std::int32_t day_of_week_from_1(const zqtime& value) {
    std::int32_t weekday;
    (void)ifun_weekday_in(packed_datetimes{}, value, weekday); // which does not fail
    return weekday + 1;
}

template <class Datetimes> double seconds(const zqtime& value) {
    return Datetimes::second(value) + Datetimes::microsecond(value) / 1000000.0;
}

// Interval fields are given as they are stored.
std::int32_t years(const bifun_interval_ym& value) { return value.years; }
std::int32_t months(const bifun_interval_ym& value) { return value.months; }
std::int32_t days(const bifun_interval_dt& value) { return value.days; }
std::int32_t hours(const bifun_interval_dt& value) { return value.hours; }
std::int32_t minutes(const bifun_interval_dt& value) { return value.minutes; }
std::int32_t whole_seconds(const bifun_interval_dt& value) { return value.seconds; }
std::int32_t fraction(const bifun_interval_dt& value) { return value.microseconds; }
double seconds_of_interval(const bifun_interval_dt& value) { return value.seconds + value.microseconds / 1000000.0; }

// ---- columns of datetimes ----------------------------------------------------------------------------------------------------

template <auto packed_kernel, auto engine_kernel> status rows_of(batch_of<INT> batch, column_of<DATETIME> value) {
    return datetimes_are_packed() ? store_all_rows<packed_kernel>(batch, value) : store_rows<engine_kernel>(batch, value);
}

template <class Result, class Value> status refuse(const Value&, Result&) { return BIFUN_ARGUMENT_OUT_OF_DOMAIN; }

template <value_type result, value_type type> status refuse_rows(batch_of<result> batch, column_of<type> value) {
    return store_rows<refuse<stored<result>, stored<type>>>(batch, value);
}

// The fields of a kind of value, as bits.
using field_set = std::uint32_t;
template <class... Fields> constexpr field_set fields(Fields... field) { return ((1U << field) | ...); }

constexpr field_set date_fields = fields(ZQTIME_YEAR, ZQTIME_MONTH, ZQTIME_DAY);
constexpr field_set time_fields = fields(ZQTIME_HOUR, ZQTIME_MINUTE);
constexpr field_set zone_fields = fields(ZQTIME_ZONE_HOUR, ZQTIME_ZONE_MINUTE);
constexpr field_set datepart_fields =
    date_fields | time_fields | fields(ZQTIME_SECOND, ZQTIME_SUBSECOND, ZQTIME_QUARTER, ZQTIME_DAY_OF_YEAR, ZQTIME_WEEK, ZQTIME_WEEKDAY);

bool contains(field_set set, std::int32_t field) { return field > 0 && field < 32 && (set >> field & 1) != 0; }

status field_rows(batch_of<INT> batch, std::int32_t field, field_set allowed, column_of<DATETIME> value) {
    using packed = packed_datetimes;
    using engine = engine_datetimes;
    switch (contains(allowed, field) ? field : 0) {
    case ZQTIME_YEAR:
        return rows_of<packed::year, engine::year>(batch, value);
    case ZQTIME_MONTH:
        return rows_of<packed::month, engine::month>(batch, value);
    case ZQTIME_DAY:
        return rows_of<packed::day, engine::day>(batch, value);
    case ZQTIME_HOUR:
        return rows_of<packed::hour, engine::hour>(batch, value);
    case ZQTIME_MINUTE:
        return rows_of<packed::minute, engine::minute>(batch, value);
    case ZQTIME_SECOND:
        return rows_of<packed::second, engine::second>(batch, value);
    case ZQTIME_SUBSECOND:
        return rows_of<millisecond<packed>, millisecond<engine>>(batch, value);
    case ZQTIME_QUARTER:
        return rows_of<quarter_for_datepart<packed>, quarter_for_datepart<engine>>(batch, value);
    case ZQTIME_DAY_OF_YEAR:
        return rows_of<packed::day_of_year, engine::day_of_year>(batch, value);
    case ZQTIME_WEEK:
        return rows_of<packed::week, engine::week>(batch, value);
    case ZQTIME_WEEKDAY:
        return rows_of<weekday_for_datepart<packed>, weekday_for_datepart<engine>>(batch, value);
    case ZQTIME_ZONE_HOUR:
        return rows_of<packed::zone_hour, engine::zone_hour>(batch, value);
    case ZQTIME_ZONE_MINUTE:
        return rows_of<packed::zone_minute, engine::zone_minute>(batch, value);
    default:
        return refuse_rows(batch, value);
    }
}

// Calls `rows` where the field is not NULL. Of two arguments the promise that no row is NULL is 0 or 1.
template <class Rows> status rows_of_field(const batch& batch, constant_of<INT> field, const Rows& rows) {
    const auto [code, present] = argument(field);
    if (!present) {
        return null_rows(batch);
    }
    const status outcome = rows(code);
    batch.result->no_nulls = static_cast<std::uint32_t>(batch.result->no_nulls != 0);
    return outcome;
}

status extract(batch_of<INT> batch, constant_of<INT> field, field_set allowed, column_of<DATETIME> value) {
    return rows_of_field(batch, field, [&](std::int32_t code) { return field_rows(batch, code, allowed, value); });
}

// ---- columns of text -----------------------------------------------------------------------------------------------------------

template <class Datetimes> status ifun_parse_extract_datetime(std::int32_t field, const zqtime& value, std::int32_t& component) {
    constexpr Datetimes datetimes;
    switch (field) {
    case ZQTIME_YEAR:
        component = datetimes.year(value);
        return BIFUN_OK;
    case ZQTIME_MONTH:
        component = datetimes.month(value);
        return BIFUN_OK;
    case ZQTIME_DAY:
        component = datetimes.day(value);
        return BIFUN_OK;
    case ZQTIME_HOUR:
        component = datetimes.hour(value);
        return BIFUN_OK;
    case ZQTIME_MINUTE:
        component = datetimes.minute(value);
        return BIFUN_OK;
    default:
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
}

template <class Datetimes> status ifun_parse_extract_msec(std::int32_t field, const zqtime& value, double& component) {
    if (field != ZQTIME_SECOND) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    component = seconds<Datetimes>(value);
    return BIFUN_OK;
}

// ---- names -----------------------------------------------------------------------------------------------------------------------

constexpr std::uint32_t name_size = 16;
using name_text = bounded_text<name_size>;

struct name {
    std::uint8_t length;
    char bytes[name_size];
};
template <std::size_t size> constexpr name name_of(const char (&text)[size]) {
    name made{size - 1, {}};
    for (std::size_t i = 0; i + 1 < size; ++i) {
        made.bytes[i] = text[i];
    }
    return made;
}

// As many as their number has bits for; numbers without a name have the empty text.
constexpr name day_names[8] = {name_of("Sunday"),   name_of("Monday"), name_of("Tuesday"),  name_of("Wednesday"),
                               name_of("Thursday"), name_of("Friday"), name_of("Saturday"), name_of("")};
constexpr name month_names[16] = {name_of(""),         name_of("January"),   name_of("February"), name_of("March"),
                                  name_of("April"),    name_of("May"),       name_of("June"),     name_of("July"),
                                  name_of("August"),   name_of("September"), name_of("October"),  name_of("November"),
                                  name_of("December"), name_of(""),          name_of(""),         name_of("")};

template <std::size_t count> void put_name(const name (&names)[count], std::int32_t number, name_text& text) {
    const auto place = static_cast<std::uint32_t>(number);
    const name& shown = names[place < count ? place : count - 1];
    std::memcpy(text.bytes, shown.bytes, name_size);
    text.length = shown.length;
}

void put_day_name(std::int32_t day_of_week, name_text& text) { put_name(day_names, day_of_week, text); }
void put_month_name(std::int32_t month, name_text& text) { put_name(month_names, month, text); }

void ifun_parse_dayname(const zqtime& value, name_text& text) { put_day_name(engine_datetimes::day_of_week(value), text); }
void ifun_parse_monthname(const zqtime& value, name_text& text) { put_month_name(engine_datetimes::month(value), text); }

// Names in storage of the result, which its rows share.
template <std::size_t count> struct shared_names { bifun_string of_number[count]; };

template <std::size_t count> void refer_to_name(std::int32_t number, const shared_names<count>& names, bifun_string& text) {
    const auto place = static_cast<std::uint32_t>(number);
    text = names.of_number[place < count ? place : count - 1];
}

template <std::size_t count, class Numbers> status rows_of_names(batch_of<VARCHAR> batch, const name (&names)[count], Numbers numbers) {
    shared_names<count> shared_by_rows{};
    if (batch.row_count != 0) {
        std::uint8_t* bytes = bdta3_col_space_alloc(batch.environment, batch.memory, batch.result->data, sizeof names);
        if (bytes == nullptr) {
            return stop_at_failure(batch, BIFUN_OUT_OF_MEMORY);
        }
        for (std::size_t i = 0; i < count; ++i, bytes += sizeof(name)) {
            std::memcpy(bytes, names[i].bytes, name_size);
            shared_by_rows.of_number[i] = {names[i].length, 0, bytes};
        }
    }
    return store_all<refer_to_name<count>, no_checks, bifun_string>(batch, argument(numbers),
                                                                    argument(shared(std::as_const(shared_by_rows))));
}

status weekday_from_1_of_engine(const zqtime& value, std::int32_t& number) {
    std::int32_t weekday;
    const status counted = ifun_weekday_in(engine_datetimes{}, value, weekday);
    number = weekday + 1;
    return counted;
}

template <class Datetimes> status weekday_of_text(const zqtime& value, std::int32_t& weekday) {
    return ifun_weekday_in(Datetimes{}, value, weekday);
}

} // namespace

status entry::bextract_datetime_va_date(batch_of<INT> batch, constant_of<INT> field, column_of<DATETIME> value) {
    return extract(batch, field, date_fields | time_fields, value);
}
status entry::bextract_date_va_date(batch_of<INT> batch, constant_of<INT> field, column_of<DATETIME> value) {
    return extract(batch, field, date_fields, value);
}
status entry::bextract_time_va_date(batch_of<INT> batch, constant_of<INT> field, column_of<DATETIME> value) {
    return extract(batch, field, time_fields, value);
}
status entry::bextract_datetime_tz_va_date(batch_of<INT> batch, constant_of<INT> field, column_of<DATETIME> value) {
    return extract(batch, field, date_fields | time_fields | zone_fields, value);
}
status entry::bextract_time_tz_va_date(batch_of<INT> batch, constant_of<INT> field, column_of<DATETIME> value) {
    return extract(batch, field, time_fields | zone_fields, value);
}

status entry::bextract_time_ex_va_date(batch_of<DOUBLE> batch, constant_of<INT> field, column_of<DATETIME> value) {
    return rows_of_field(batch, field, [&](std::int32_t code) {
        return code != ZQTIME_SECOND    ? refuse_rows(batch, value)
               : datetimes_are_packed() ? set_all_rows<seconds<packed_datetimes>>(batch, value)
                                        : set_rows<seconds<engine_datetimes>>(batch, value);
    });
}

status entry::bextract_iv_ym_va_date(batch_of<INT> batch, constant_of<INT> field, column_of<INTERVAL_YM> value) {
    return rows_of_field(batch, field, [&](std::int32_t code) {
        switch (code) {
        case ZQTIME_YEAR:
            return store_all_rows<years>(batch, value);
        case ZQTIME_MONTH:
            return store_all_rows<months>(batch, value);
        default:
            return refuse_rows(batch, value);
        }
    });
}

status entry::bextract_iv_dt_va_date(batch_of<INT> batch, constant_of<INT> field, column_of<INTERVAL_DT> value) {
    return rows_of_field(batch, field, [&](std::int32_t code) {
        switch (code) {
        case ZQTIME_DAY:
            return store_all_rows<days>(batch, value);
        case ZQTIME_HOUR:
            return store_all_rows<hours>(batch, value);
        case ZQTIME_MINUTE:
            return store_all_rows<minutes>(batch, value);
        case ZQTIME_SECOND:
            return store_all_rows<whole_seconds>(batch, value);
        case ZQTIME_SUBSECOND:
            return store_all_rows<fraction>(batch, value);
        default:
            return refuse_rows(batch, value);
        }
    });
}

status entry::bextract_iv_dt_ex_va_date(batch_of<DOUBLE> batch, constant_of<INT> field, column_of<INTERVAL_DT> value) {
    return rows_of_field(batch, field, [&](std::int32_t code) {
        return code == ZQTIME_SECOND ? set_all_rows<seconds_of_interval>(batch, value) : refuse_rows(batch, value);
    });
}

status entry::bextract_str_va_date(batch_of<INT> batch, constant_of<INT> field, column_of<VARCHAR> value) {
    return with_datetimes([&]<class Datetimes>(Datetimes) {
        return store_rows<field_of_text<ifun_parse_extract_datetime<Datetimes>, std::int32_t>>(batch, field, value);
    });
}
status entry::bextract_str_ex_va_date(batch_of<DOUBLE> batch, constant_of<INT> field, column_of<VARCHAR> value) {
    return with_datetimes([&]<class Datetimes>(Datetimes) {
        return set_rows<field_of_text<ifun_parse_extract_msec<Datetimes>, double>>(batch, field, value);
    });
}

status entry::byear_a_date(batch_of<INT> batch, column_of<DATETIME> value) {
    return field_rows(batch, ZQTIME_YEAR, datepart_fields, value);
}
status entry::bmonth_a_date(batch_of<INT> batch, column_of<DATETIME> value) {
    return field_rows(batch, ZQTIME_MONTH, datepart_fields, value);
}
status entry::bday_a_date(batch_of<INT> batch, column_of<DATETIME> value) { return field_rows(batch, ZQTIME_DAY, datepart_fields, value); }
status entry::bdayofmonth_a_date(batch_of<INT> batch, column_of<DATETIME> value) {
    return field_rows(batch, ZQTIME_DAY, datepart_fields, value);
}
status entry::bhour_a_date(batch_of<INT> batch, column_of<DATETIME> value) {
    return field_rows(batch, ZQTIME_HOUR, datepart_fields, value);
}
status entry::bmin_a_date(batch_of<INT> batch, column_of<DATETIME> value) {
    return field_rows(batch, ZQTIME_MINUTE, datepart_fields, value);
}
status entry::bsec_a_date(batch_of<INT> batch, column_of<DATETIME> value) {
    return field_rows(batch, ZQTIME_SECOND, datepart_fields, value);
}
status entry::bdayofyear_a_date(batch_of<INT> batch, column_of<DATETIME> value) {
    return field_rows(batch, ZQTIME_DAY_OF_YEAR, datepart_fields, value);
}
status entry::bquarter_zqtime_a_date(batch_of<INT> batch, column_of<DATETIME> value) {
    return rows_of<quarter<packed_datetimes>, quarter<engine_datetimes>>(batch, value);
}
status entry::bdayofweek_a_date(batch_of<INT> batch, column_of<DATETIME> value) {
    return datetimes_are_packed() ? store_all_rows<day_of_week_from_1>(batch, value) : store_rows<weekday_from_1_of_engine>(batch, value);
}
status entry::bweekday_str_a_date(batch_of<INT> batch, column_of<VARCHAR> value) {
    return with_datetimes(
        [&]<class Datetimes>(Datetimes) { return store_rows<of_text<weekday_of_text<Datetimes>, std::int32_t>>(batch, value); });
}

status entry::bdayname_a_date(batch_of<VARCHAR> batch, column_of<DATETIME> value) {
    const auto numbers = mapped<packed_datetimes::day_of_week>(value);
    return !datetimes_are_packed() ? string_rows<ifun_parse_dayname>(batch, value)
           : results_may_refer()   ? rows_of_names(batch, day_names, numbers)
                                   : string_rows<put_day_name>(batch, numbers);
}
status entry::bmonthname_a_date(batch_of<VARCHAR> batch, column_of<DATETIME> value) {
    const auto numbers = mapped<packed_datetimes::month>(value);
    return !datetimes_are_packed() ? string_rows<ifun_parse_monthname>(batch, value)
           : results_may_refer()   ? rows_of_names(batch, month_names, numbers)
                                   : string_rows<put_month_name>(batch, numbers);
}

status entry::bdatepart_av_date(batch_of<INT> batch, column_of<DATETIME> value, constant_of<VARCHAR> field) {
    const auto [name, present] = argument(field);
    // Blanks behind a name belong to it, whether they are stored or counted.
    const std::int32_t code = name.trailing_blanks != 0 ? 0 : ifun_parse_datepart(name.data, name.length);
    if (present && code == 0) {
        return fail_batch(batch, BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    }
    const bifun_int_constant parsed{present ? 1U : 0U, code};
    return extract(batch, {&parsed}, datepart_fields, value);
}
status entry::bdatepart1_va_date(batch_of<INT> batch, constant_of<INT> field, column_of<DATETIME> value) {
    return extract(batch, field, datepart_fields, value);
}

} // namespace bifun
