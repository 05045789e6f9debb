// Components of datetimes and intervals: EXTRACT, DATEPART and the functions that are named after a component. A field that the kind of
// value does not have fails at the first row that is not NULL. Integers go straight into the value array.

#include <array>
#include <string_view>

#include "bop/bifun_date/datetime_rows.h"
#include "bop/bifun_date/fields.h"
#include "bop/bifun_date/weekday.h"
#include "bop/frame/row_loop.h"

namespace bifun {
namespace {

// ---- kernels -----------------------------------------------------------------------------------------------------------------

template <class Datetimes> std::int32_t millisecond(const zqtime& value) { return Datetimes::microsecond(value) / 1000; }

template <class Datetimes> std::int32_t quarter(const zqtime& value) {
    const std::int32_t month = Datetimes::month(value);
    return month % 3 == 0 ? month / 3 : month / 3 + 1;
}

template <class Datetimes> std::int32_t quarter_for_datepart(const zqtime& value) { return (Datetimes::month(value) - 1) / 3 + 1; }

template <class Datetimes> INLINED inline std::int32_t weekday_for_datepart(const zqtime& value) {
    return Datetimes::day_of_week(value) + 1;
}

INLINED inline std::int32_t day_of_week_from_1(const zqtime& value) {
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

template <auto packed_kernel, auto engine_kernel> INLINED inline status rows_of(const batch& batch, const column_argument<zqtime>& value) {
    return datetimes_are_packed() ? store_rows<rows::all, packed_kernel>(batch, value)
                                  : store_rows<rows::present, engine_kernel>(batch, value);
}

// Writes no value, so the type of the result does not matter.
template <class T> status refuse_rows(const batch& batch, const column_argument<T>& value) {
    return attempt_store_rows<std::int32_t>(
        batch, [](std::int32_t&, const T&) -> status { return BIFUN_ARGUMENT_OUT_OF_DOMAIN; }, value);
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

VECTORISED status field_rows(const batch& batch, std::int32_t field, field_set allowed, column argument) {
    using packed = packed_datetimes;
    using engine = engine_datetimes;
    const column_argument<zqtime> value = datetime(argument);
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
template <class Rows> INLINED inline status rows_of_field(const batch& batch, int_constant field, const Rows& rows) {
    if (field->not_null == 0) {
        return null_rows(batch);
    }
    const status outcome = rows(field->value);
    batch.result->no_nulls = static_cast<std::uint32_t>(batch.result->no_nulls != 0);
    return outcome;
}

status extract(const batch& batch, int_constant field, field_set allowed, column value) {
    return rows_of_field(batch, field, [&](std::int32_t code) { return field_rows(batch, code, allowed, value); });
}

// ---- columns of text -----------------------------------------------------------------------------------------------------------

constexpr auto ifun_parse_extract_datetime = [](auto datetimes, std::int32_t& component, const zqtime& value,
                                                std::int32_t field) -> status {
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
};

constexpr auto ifun_parse_extract_msec = [](auto datetimes, double& component, const zqtime& value, std::int32_t field) -> status {
    if (field != ZQTIME_SECOND) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    component = seconds<decltype(datetimes)>(value);
    return BIFUN_OK;
};

// ---- names -----------------------------------------------------------------------------------------------------------------------

constexpr std::string_view day_names[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
constexpr std::string_view month_names[] = {"January", "February", "March",     "April",   "May",      "June",
                                            "July",    "August",   "September", "October", "November", "December"};

// The name with this number, counted from 0; an empty text where there is none.
template <std::size_t count> bifun_string name_at(const std::string_view (&names)[count], std::int32_t number) {
    const std::string_view name = number >= 0 && number < static_cast<std::int32_t>(count) ? names[number] : "";
    // Results are copied from here; nobody writes.
    return {static_cast<std::uint32_t>(name.size()), 0, reinterpret_cast<std::uint8_t*>(const_cast<char*>(name.data()))};
}

template <class Name> status name_rows(const batch& batch, column value, const Name& name) {
    return with_byte_operations([&](auto bytes) INLINED -> status {
        return with_datetimes([&](auto datetimes) INLINED -> status {
            return attempt_string_rows(
                batch, bytes,
                [datetimes, name](bifun_string& text, const zqtime& moment) INLINED -> status {
                    text = name(datetimes, moment);
                    return BIFUN_OK;
                },
                datetime(value));
        });
    });
}

constexpr auto ifun_parse_dayname = [](auto datetimes, const zqtime& value)
                                        INLINED { return name_at(day_names, datetimes.day_of_week(value)); };
constexpr auto ifun_parse_monthname = [](auto datetimes, const zqtime& value)
                                          INLINED { return name_at(month_names, datetimes.month(value) - 1); };

} // namespace
} // namespace bifun

using namespace bifun;

status bextract_datetime_va_date(BATCH_OF(int_constant field, column value)) {
    return extract(BATCH, field, date_fields | time_fields, value);
}
status bextract_date_va_date(BATCH_OF(int_constant field, column value)) { return extract(BATCH, field, date_fields, value); }
status bextract_time_va_date(BATCH_OF(int_constant field, column value)) { return extract(BATCH, field, time_fields, value); }
status bextract_datetime_tz_va_date(BATCH_OF(int_constant field, column value)) {
    return extract(BATCH, field, date_fields | time_fields | zone_fields, value);
}
status bextract_time_tz_va_date(BATCH_OF(int_constant field, column value)) {
    return extract(BATCH, field, time_fields | zone_fields, value);
}

VECTORISED status bextract_time_ex_va_date(BATCH_OF(int_constant field, column value)) {
    const batch batch = BATCH;
    return rows_of_field(batch, field, [&](std::int32_t code) INLINED -> status {
        if (code != ZQTIME_SECOND) {
            return refuse_rows(batch, datetime(value));
        }
        return datetimes_are_packed() ? set_rows<rows::all, seconds<packed_datetimes>>(batch, datetime(value))
                                      : set_rows<rows::present, seconds<engine_datetimes>>(batch, datetime(value));
    });
}

VECTORISED status bextract_iv_ym_va_date(BATCH_OF(int_constant field, column value)) {
    const batch batch = BATCH;
    return rows_of_field(batch, field, [&](std::int32_t code) INLINED -> status {
        switch (code) {
        case ZQTIME_YEAR:
            return store_rows<rows::all, years>(batch, interval_ym(value));
        case ZQTIME_MONTH:
            return store_rows<rows::all, months>(batch, interval_ym(value));
        default:
            return refuse_rows(batch, interval_ym(value));
        }
    });
}

VECTORISED status bextract_iv_dt_va_date(BATCH_OF(int_constant field, column value)) {
    const batch batch = BATCH;
    return rows_of_field(batch, field, [&](std::int32_t code) INLINED -> status {
        switch (code) {
        case ZQTIME_DAY:
            return store_rows<rows::all, days>(batch, interval_dt(value));
        case ZQTIME_HOUR:
            return store_rows<rows::all, hours>(batch, interval_dt(value));
        case ZQTIME_MINUTE:
            return store_rows<rows::all, minutes>(batch, interval_dt(value));
        case ZQTIME_SECOND:
            return store_rows<rows::all, whole_seconds>(batch, interval_dt(value));
        case ZQTIME_SUBSECOND:
            return store_rows<rows::all, fraction>(batch, interval_dt(value));
        default:
            return refuse_rows(batch, interval_dt(value));
        }
    });
}

VECTORISED status bextract_iv_dt_ex_va_date(BATCH_OF(int_constant field, column value)) {
    const batch batch = BATCH;
    return rows_of_field(batch, field, [&](std::int32_t code) INLINED -> status {
        return code == ZQTIME_SECOND ? set_rows<rows::all, seconds_of_interval>(batch, interval_dt(value))
                                     : refuse_rows(batch, interval_dt(value));
    });
}

status bextract_str_va_date(BATCH_OF(int_constant field, column value)) {
    return attempt_text_rows<std::int32_t>(BATCH, value, ifun_parse_extract_datetime, integer(field));
}
status bextract_str_ex_va_date(BATCH_OF(int_constant field, column value)) {
    return attempt_text_rows<double>(BATCH, value, ifun_parse_extract_msec, integer(field));
}

status byear_a_date(BATCH_OF(column value)) { return field_rows(BATCH, ZQTIME_YEAR, datepart_fields, value); }
status bmonth_a_date(BATCH_OF(column value)) { return field_rows(BATCH, ZQTIME_MONTH, datepart_fields, value); }
status bday_a_date(BATCH_OF(column value)) { return field_rows(BATCH, ZQTIME_DAY, datepart_fields, value); }
status bdayofmonth_a_date(BATCH_OF(column value)) { return field_rows(BATCH, ZQTIME_DAY, datepart_fields, value); }
status bhour_a_date(BATCH_OF(column value)) { return field_rows(BATCH, ZQTIME_HOUR, datepart_fields, value); }
status bmin_a_date(BATCH_OF(column value)) { return field_rows(BATCH, ZQTIME_MINUTE, datepart_fields, value); }
status bsec_a_date(BATCH_OF(column value)) { return field_rows(BATCH, ZQTIME_SECOND, datepart_fields, value); }
status bdayofyear_a_date(BATCH_OF(column value)) { return field_rows(BATCH, ZQTIME_DAY_OF_YEAR, datepart_fields, value); }
VECTORISED status bquarter_zqtime_a_date(BATCH_OF(column value)) {
    return rows_of<quarter<packed_datetimes>, quarter<engine_datetimes>>(BATCH, datetime(value));
}

VECTORISED status bdayofweek_a_date(BATCH_OF(column value)) {
    const batch batch = BATCH;
    if (datetimes_are_packed()) {
        return store_rows<rows::all, day_of_week_from_1>(batch, datetime(value));
    }
    return attempt_store_rows<std::int32_t>(
        batch,
        [](std::int32_t& number, const zqtime& moment) {
            std::int32_t weekday;
            const status counted = ifun_weekday_in(engine_datetimes{}, moment, weekday);
            number = weekday + 1;
            return counted;
        },
        datetime(value));
}

status bweekday_str_a_date(BATCH_OF(column value)) {
    return attempt_text_rows<std::int32_t>(BATCH, value, [](auto datetimes, std::int32_t& weekday, const zqtime& moment) {
        return ifun_weekday_in(datetimes, moment, weekday);
    });
}

status bdayname_a_date(BATCH_OF(column value)) { return name_rows(BATCH, value, ifun_parse_dayname); }
status bmonthname_a_date(BATCH_OF(column value)) { return name_rows(BATCH, value, ifun_parse_monthname); }

status bdatepart_av_date(BATCH_OF(column value, string_constant field)) {
    const batch batch = BATCH;
    const constant_argument<bifun_string> name = string(field);
    // Blanks behind a name belong to it, whether they are stored or counted.
    const std::int32_t code = name.value.trailing_blanks != 0 ? 0 : ifun_parse_datepart(name.value.data, name.value.length);
    if (name.present && code == 0) {
        return fail_batch(batch, BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    }
    const bifun_int_constant parsed{field->not_null, code};
    return extract(batch, &parsed, datepart_fields, value);
}

status bdatepart1_va_date(BATCH_OF(int_constant field, column value)) { return extract(BATCH, field, datepart_fields, value); }
