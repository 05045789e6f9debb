// How far apart two datetimes are: DATEDIFF, BIGDATEDIFF, *_BETWEEN; and the number of a day, TO_DAYS.

#include "bop/bifun_date/datetime_rows.h"
#include "bop/bifun_date/weekday.h"
#include "bop/frame/row_loop.h"
#include "engine/decimal.h"
#include "engine/session.h"

namespace bifun {
namespace {

// ---- DATEDIFF and BIGDATEDIFF ----------------------------------------------------------------------------------------------------

// The fields that are asked for most are counted for many rows at once, where datetimes are packed.

// What is counted from a fixed moment to a date; the difference of two such counts always fits.
INLINED inline std::int32_t years_to(std::uint32_t date) { return datetime_layout::year_of_date(date); }
INLINED inline std::int32_t months_to(std::uint32_t date) { return datetime_arithmetic::months_of_date(date); }
INLINED inline std::int32_t days_to(std::uint32_t date) { return datetime_arithmetic::day_number_of_date(date); }

template <auto count_to> INLINED inline std::int32_t packed_datediff(const zqtime& start, const zqtime& end) {
    return count_to(datetime_layout::load_date(end)) - count_to(datetime_layout::load_date(start));
}

INLINED inline std::int64_t seconds_to(const zqtime& value) {
    return datetime_arithmetic::seconds_of(datetime_layout::load_date(value), datetime_layout::load_time(value));
}

INLINED inline std::int32_t packed_seconds(const zqtime& start, const zqtime& end) {
    return static_cast<std::int32_t>(seconds_to(end) - seconds_to(start));
}

INLINED inline status check_seconds(const zqtime& start, const zqtime& end) {
    const std::int64_t count = seconds_to(end) - seconds_to(start);
    return count == static_cast<std::int32_t>(count) ? BIFUN_OK : BIFUN_NUMERIC_OVERFLOW;
}

using checks_of_seconds = row_checks<check_seconds, nullptr, failing_row::null>;

INLINED inline std::int64_t packed_big_seconds(const zqtime& start, const zqtime& end) { return seconds_to(end) - seconds_to(start); }

template <class Start, class End> INLINED inline status datediff(const batch& batch, int_constant field, Start start, End end) {
    const auto counts = [&](const auto&... arguments) INLINED -> status {
        if (datetimes_are_packed() && field->not_null != 0) {
            switch (field->value) {
            case ZQTIME_YEAR:
                return set_rows<rows::all, packed_datediff<years_to>>(batch, arguments...);
            case ZQTIME_MONTH:
                return set_rows<rows::all, packed_datediff<months_to>>(batch, arguments...);
            case ZQTIME_DAY:
                return set_rows<rows::all, packed_datediff<days_to>>(batch, arguments...);
            case ZQTIME_SECOND:
                return set_rows<rows::all, packed_seconds, checks_of_seconds>(batch, arguments...);
            default:
                break;
            }
        }
        return attempt_datetime_rows<std::int32_t>(
            batch,
            [](auto datetimes, std::int32_t& count, const zqtime& from, const zqtime& to, std::int32_t code)
                INLINED { return datetimes.datediff(code, from, to, count); },
            arguments..., integer(field));
    };
    return counts(datetime(start), datetime(end));
}

// Boundaries of calendar fields, and time that passed, from `s` to `e`.
constexpr auto ifun_parse_bigdatediff = [](auto datetimes, std::int64_t& result, std::int32_t field, const zqtime& s, const zqtime& e)
                                            INLINED -> status {
    const auto years = [&] { return std::int64_t{datetimes.year(e)} - datetimes.year(s); };
    const auto days = [&] { return std::int64_t{datetimes.diff_day(e, s)}; };
    const auto hours = [&] { return days() * 24 + datetimes.hour(e) - datetimes.hour(s); };
    const auto minutes = [&] { return hours() * 60 + datetimes.minute(e) - datetimes.minute(s); };
    const auto seconds = [&] { return minutes() * 60 + datetimes.second(e) - datetimes.second(s); };
    switch (field) {
    case ZQTIME_YEAR:
        result = years();
        return BIFUN_OK;
    case ZQTIME_MONTH:
        result = years() * 12 + datetimes.month(e) - datetimes.month(s);
        return BIFUN_OK;
    case ZQTIME_DAY:
    case ZQTIME_DAY_OF_YEAR:
        result = days();
        return BIFUN_OK;
    case ZQTIME_HOUR:
        result = hours();
        return BIFUN_OK;
    case ZQTIME_MINUTE:
        result = minutes();
        return BIFUN_OK;
    case ZQTIME_SECOND:
        result = seconds();
        return BIFUN_OK;
    case ZQTIME_SUBSECOND:
        result = seconds() * 1000 + (datetimes.microsecond(e) - datetimes.microsecond(s)) / 1000;
        return BIFUN_OK;
    case ZQTIME_QUARTER: {
        const std::int32_t first = datetimes.month(s);
        const std::int32_t last = datetimes.month(e);
        const bool borrows = first > last;
        result = (years() - (borrows ? 1 : 0)) * 4 + (last + (borrows ? 12 : 0) - 1) / 3 - (first - 1) / 3;
        return BIFUN_OK;
    }
    case ZQTIME_WEEK: {
        // Counted from Saturday to Sunday.
        const std::int32_t back = datetimes.diff_day(s, e);
        result = back == 0 ? 0 : (datetimes.day_of_week(s) - back - datetimes.day_of_week(e)) / 7;
        return BIFUN_OK;
    }
    default:
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
};

template <class Start, class End> INLINED inline status bigdatediff(const batch& batch, int_constant field, Start start, End end) {
    if (datetimes_are_packed() && field->not_null != 0 && field->value == ZQTIME_SECOND) {
        return set_rows<rows::all, packed_big_seconds>(batch, datetime(start), datetime(end));
    }
    return attempt_datetime_rows<std::int64_t>(batch, ifun_parse_bigdatediff, integer(field), datetime(start), datetime(end));
}

// ---- *_BETWEEN ---------------------------------------------------------------------------------------------------------------------

template <class Datetimes> INLINED inline std::int32_t days_between(const zqtime& a, const zqtime& b) { return Datetimes::diff_day(a, b); }

template <class Datetimes> std::int32_t years_between(const zqtime& a, const zqtime& b) { return Datetimes::year(a) - Datetimes::year(b); }

template <auto packed_kernel, auto engine_kernel, class A, class B> INLINED inline status rows_between(const batch& batch, A a, B b) {
    return datetimes_are_packed() ? set_rows<rows::all, packed_kernel>(batch, datetime(a), datetime(b))
                                  : set_rows<rows::present, engine_kernel>(batch, datetime(a), datetime(b));
}

template <class A, class B> INLINED inline status days_between_rows(const batch& batch, A a, B b) {
    return rows_between<days_between<packed_datetimes>, days_between<engine_datetimes>>(batch, a, b);
}

template <class A, class B> INLINED inline status years_between_rows(const batch& batch, A a, B b) {
    return rows_between<years_between<packed_datetimes>, years_between<engine_datetimes>>(batch, a, b);
}

// Weeks begin on Sunday. The days are those of the calendar as it is written, the weekdays those that were.
constexpr auto ifun_parse_weeks_between = [](auto datetimes, std::int32_t& result, const zqtime& a, const zqtime& b) INLINED -> status {
    const std::int32_t days = datetimes.diff_day_without_adjust(a, b);
    if (days == 0) {
        result = 0;
        return BIFUN_OK;
    }
    std::int32_t weekday_a;
    std::int32_t weekday_b;
    const status counted_a = ifun_weekday_in(datetimes, a, weekday_a);
    const status counted_b = ifun_weekday_in(datetimes, b, weekday_b);
    result = (days + weekday_b - weekday_a) / 7;
    return counted_a < BIFUN_OK ? counted_a : counted_b;
};

// A day is 1/31 of a month, whichever month; the time of day does not count.
constexpr auto ifun_parse_months_between = [](auto datetimes, xdec& result, const zqtime& a, const zqtime& b) INLINED -> status {
    const std::int32_t year_a = datetimes.year(a);
    const std::int32_t year_b = datetimes.year(b);
    const std::int32_t month_a = datetimes.month(a);
    const std::int32_t month_b = datetimes.month(b);
    const std::int32_t day_a = datetimes.day(a);
    const std::int32_t day_b = datetimes.day(b);
    const std::int32_t months = (year_a - year_b) * 12 - month_b + month_a;
    const bool are_ends = day_a == datetimes.month_end_day(year_a, month_a) && day_b == datetimes.month_end_day(year_b, month_b);
    return xdec_from_double(&result, day_a == day_b || are_ends ? months : months + (day_a - day_b) / 31.0);
};

template <class A, class B> status weeks_between(const batch& batch, A a, B b) {
    return attempt_datetime_rows<std::int32_t>(batch, ifun_parse_weeks_between, datetime(a), datetime(b));
}

template <class A, class B> status months_between(const batch& batch, A a, B b) {
    return attempt_datetime_rows<xdec>(batch, ifun_parse_months_between, datetime(a), datetime(b));
}

// ---- TO_DAYS -----------------------------------------------------------------------------------------------------------------------

// Returns whether the day has a number.
bool number_of_day(const zqtime& value, std::int64_t& number) {
    zqtime date = value;
    (void)zqtime_set_tz(&date, ZQTIME_NO_ZONE);
    (void)zqtime_set_hour(&date, 0);
    (void)zqtime_set_min(&date, 0);
    (void)zqtime_set_sec(&date, 0);
    (void)zqtime_set_msec(&date, 0);
    if (zqtime_to_days(&date, &number) < BIFUN_OK || number > INT32_MAX) {
        return false;
    }
    // The numbers that SQL users know are two lower; up to 1600 they are those of the engine.
    constexpr std::int32_t last_year_as_counted = 1600;
    number -= engine_datetimes::year(date) > last_year_as_counted ? 2 : 0;
    return true;
}

struct current_day {
    bool is_known;
    zqtime moment;
};

current_day today() {
    const auto zone = static_cast<std::int32_t>(ini_get_value(0, INI_NOW_TIME_ZONE));
    constexpr std::int32_t precision = 6;
    current_day now{};
    now.is_known = zqtime_tz_now(precision, zone, &now.moment) >= BIFUN_OK;
    return now;
}

} // namespace
} // namespace bifun

using namespace bifun;

VECTORISED status bdatediff_vaa_date(BATCH_OF(int_constant field, column start, column end)) { return datediff(BATCH, field, start, end); }
VECTORISED status bdatediff_vav_date(BATCH_OF(int_constant field, column start, datetime_constant end)) {
    return datediff(BATCH, field, start, end);
}
VECTORISED status bdatediff_vva_date(BATCH_OF(int_constant field, datetime_constant start, column end)) {
    return datediff(BATCH, field, start, end);
}

VECTORISED status bbigdatediff_vaa_date(BATCH_OF(int_constant field, column start, column end)) {
    return bigdatediff(BATCH, field, start, end);
}
VECTORISED status bbigdatediff_vav_date(BATCH_OF(int_constant field, column start, datetime_constant end)) {
    return bigdatediff(BATCH, field, start, end);
}
VECTORISED status bbigdatediff_vva_date(BATCH_OF(int_constant field, datetime_constant start, column end)) {
    return bigdatediff(BATCH, field, start, end);
}

VECTORISED status bdays_between_aa_date(BATCH_OF(column a, column b)) { return days_between_rows(BATCH, a, b); }
VECTORISED status bdays_between_av_date(BATCH_OF(column a, datetime_constant b)) { return days_between_rows(BATCH, a, b); }
VECTORISED status bdays_between_va_date(BATCH_OF(datetime_constant a, column b)) { return days_between_rows(BATCH, a, b); }

status bweeks_between_aa_date(BATCH_OF(column a, column b)) { return weeks_between(BATCH, a, b); }
status bweeks_between_av_date(BATCH_OF(column a, datetime_constant b)) { return weeks_between(BATCH, a, b); }
status bweeks_between_va_date(BATCH_OF(datetime_constant a, column b)) { return weeks_between(BATCH, a, b); }

status bmonths_between_aa_date(BATCH_OF(column a, column b)) { return months_between(BATCH, a, b); }
status bmonths_between_av_date(BATCH_OF(column a, datetime_constant b)) { return months_between(BATCH, a, b); }
status bmonths_between_va_date(BATCH_OF(datetime_constant a, column b)) { return months_between(BATCH, a, b); }

VECTORISED status byears_between_aa_date(BATCH_OF(column a, column b)) { return years_between_rows(BATCH, a, b); }
VECTORISED status byears_between_av_date(BATCH_OF(column a, datetime_constant b)) { return years_between_rows(BATCH, a, b); }
VECTORISED status byears_between_va_date(BATCH_OF(datetime_constant a, column b)) { return years_between_rows(BATCH, a, b); }

// A NULL stands for today, which is asked for once.
status bto_days_a_date(BATCH_OF(column value)) {
    const batch batch = BATCH;
    result->no_nulls = value->no_nulls;
    return with_rows(
        [&](const auto& rows) -> status {
            current_day now{};
            bool is_asked = false;
            for (std::uint32_t k = 0; k < row_count; ++k) {
                const bool is_today = !rows.has_value(k);
                if (is_today && !is_asked) {
                    now = today();
                    is_asked = true;
                }
                std::int64_t number = 0;
                const bool is_known = (!is_today || now.is_known) && number_of_day(is_today ? now.moment : rows[k], number);
                null_flags(batch)[k] = static_cast<std::uint8_t>(is_known);
                if (is_known) {
                    set_value(batch, k, number);
                } else {
                    result->no_nulls = 0;
                }
            }
            return BIFUN_OK;
        },
        datetime(value));
}
