// SPDX-License-Identifier: Apache-2.0
// How far apart two datetimes are: DATEDIFF, BIGDATEDIFF, *_BETWEEN; and the number of a day, TO_DAYS.

#include "bop/bifun_date/current_datetime.h"
#include "bop/bifun_date/datetime_operations.h"
#include "bop/bifun_date/entry_points.h"
#include "bop/bifun_date/month_fractions.h"
#include "bop/bifun_date/weekday.h"
#include "bop/frame/row_loop.h"
#include "engine/decimal.h"
#include "layouts/packed_sums.h"

namespace bifun {
namespace {

// ---- DATEDIFF and BIGDATEDIFF ----------------------------------------------------------------------------------------------------

// The fields that are asked for most are counted for many rows at once, where datetimes are packed.

// What is counted from a fixed moment to a date; the difference of two such counts always fits.
std::int32_t years_to(std::uint32_t date) { return datetime_layout::year_of_date(date); }
std::int32_t months_to(std::uint32_t date) { return datetime_arithmetic::months_of_date(date); }
std::int32_t days_to(std::uint32_t date) { return datetime_arithmetic::day_number_of_date(date); }

template <auto count_to> std::int32_t packed_datediff(const zqtime& start, const zqtime& end) {
    return count_to(datetime_layout::load_date(end)) - count_to(datetime_layout::load_date(start));
}

std::uint32_t second_of_day(const zqtime& value) { return datetime_layout::seconds_of_time(datetime_layout::load_time(value)); }

std::int64_t packed_big_seconds(const zqtime& start, const zqtime& end) {
    return packed_datediff<days_to>(start, end) * datetime_arithmetic::seconds_per_day +
           (std::int64_t{second_of_day(end)} - std::int64_t{second_of_day(start)});
}

status packed_seconds(const zqtime& start, const zqtime& end, std::int32_t& result) {
    const std::int64_t count = packed_big_seconds(start, end);
    result = static_cast<std::int32_t>(count);
    return count == result ? BIFUN_OK : BIFUN_NUMERIC_OVERFLOW;
}

// Times of a day, less than 68 years apart, which are 24,837 days: the count fits in 32 bits.
bool seconds_are_few(const zqtime& start, const zqtime& end) {
    constexpr std::uint32_t years = 68U << 9;
    const std::uint32_t apart = datetime_layout::load_date(end) - datetime_layout::load_date(start) + (years - 1);
    const bool are_times_of_day = packed_sums::both(packed_sums::is_time_of_day(datetime_layout::load_time(start)),
                                                    packed_sums::is_time_of_day(datetime_layout::load_time(end)));
    return packed_sums::both(apart < 2 * years - 1, are_times_of_day);
}
std::int32_t few_seconds(const zqtime& start, const zqtime& end) {
    constexpr auto seconds_per_day = static_cast<std::uint32_t>(datetime_arithmetic::seconds_per_day);
    const auto days = static_cast<std::uint32_t>(packed_datediff<days_to>(start, end));
    return static_cast<std::int32_t>(days * seconds_per_day + second_of_day(end) - second_of_day(start));
}

template <class Datetimes> status datediff(const zqtime& start, const zqtime& end, std::int32_t field, std::int32_t& result) {
    return Datetimes::datediff(field, start, end, result);
}

template <class Start, class End> status datediff_rows(batch_of<INT> batch, constant_of<INT> field, Start start, End end) {
    const auto [code, present] = argument(field);
    switch (datetimes_are_packed() && present ? code : 0) {
    case ZQTIME_YEAR:
        return set_all_rows<packed_datediff<years_to>>(batch, start, end);
    case ZQTIME_MONTH:
        return set_all_rows<packed_datediff<months_to>>(batch, start, end);
    case ZQTIME_DAY:
        return set_all_rows<packed_datediff<days_to>>(batch, start, end);
    case ZQTIME_SECOND:
        return set_usual_rows<seconds_are_few, few_seconds, packed_seconds>(batch, start, end);
    default:
        return with_datetimes([&]<class Datetimes>(Datetimes) { return set_rows<datediff<Datetimes>>(batch, start, end, field); });
    }
}

// Boundaries of calendar fields, and time that passed, from `s` to `e`.
template <class Datetimes> status ifun_parse_bigdatediff(std::int32_t field, const zqtime& s, const zqtime& e, std::int64_t& result) {
    constexpr Datetimes datetimes;
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
}

template <class Start, class End> status bigdatediff_rows(batch_of<BIGINT> batch, constant_of<INT> field, Start start, End end) {
    const auto [code, present] = argument(field);
    if (datetimes_are_packed() && present && code == ZQTIME_SECOND) {
        return set_all_rows<packed_big_seconds>(batch, start, end);
    }
    return with_datetimes(
        [&]<class Datetimes>(Datetimes) { return set_rows<ifun_parse_bigdatediff<Datetimes>>(batch, field, start, end); });
}

// ---- *_BETWEEN ---------------------------------------------------------------------------------------------------------------------

template <class A, class B> status days_between(batch_of<INT> batch, A a, B b) {
    return datetimes_are_packed() ? set_all_rows<packed_datetimes::diff_day>(batch, a, b)
                                  : set_rows<engine_datetimes::diff_day>(batch, a, b);
}

template <class Datetimes> std::int32_t years_of_two(const zqtime& a, const zqtime& b) { return Datetimes::year(a) - Datetimes::year(b); }

template <class A, class B> status years_between(batch_of<INT> batch, A a, B b) {
    return datetimes_are_packed() ? set_all_rows<years_of_two<packed_datetimes>>(batch, a, b)
                                  : set_rows<years_of_two<engine_datetimes>>(batch, a, b);
}

// Weeks begin on Sunday. The days are those of the calendar as it is written, the weekdays those that were.
status ifun_parse_weeks_between(const zqtime& a, const zqtime& b, std::int32_t& result) {
    constexpr engine_datetimes datetimes;
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
}

// A day is 1/31 of a month, whichever month; the time of day does not count.
template <class Datetimes> status ifun_parse_months_between(const zqtime& a, const zqtime& b, xdec& result) {
    constexpr Datetimes datetimes;
    const std::int32_t year_a = datetimes.year(a);
    const std::int32_t year_b = datetimes.year(b);
    const std::int32_t month_a = datetimes.month(a);
    const std::int32_t month_b = datetimes.month(b);
    const std::int32_t day_a = datetimes.day(a);
    const std::int32_t day_b = datetimes.day(b);
    const std::int32_t months = (year_a - year_b) * 12 - month_b + month_a;
    const bool are_ends = day_a == datetimes.month_end_day(year_a, month_a) && day_b == datetimes.month_end_day(year_b, month_b);
    return xdec_from_double(&result, day_a == day_b || are_ends ? months : months + (day_a - day_b) / 31.0);
}

void months_between_packed(const zqtime& a, const zqtime& b, xdec& result) {
    const std::uint32_t date_a = datetime_layout::load_date(a);
    const std::uint32_t date_b = datetime_layout::load_date(b);
    const std::uint32_t day_a = datetime_layout::day_of_date(date_a);
    const std::uint32_t day_b = datetime_layout::day_of_date(date_b);
    const std::int32_t months = months_to(date_a) - months_to(date_b);
    const bool are_ends =
        day_a == datetime_arithmetic::last_day_of_month(date_a) && day_b == datetime_arithmetic::last_day_of_month(date_b);
    if (day_a == day_b || are_ends) [[unlikely]] {
        month_fractions::store_months(result, months);
    } else {
        month_fractions::store_fraction(result, months + static_cast<std::int32_t>(day_a - day_b) / 31.0);
    }
}

// The same without a branch: where no days lie between, the weekdays do not make a week either.
std::int32_t weeks_between_packed(const zqtime& a, const zqtime& b) {
    const auto weekday = [](const zqtime& value) {
        std::int32_t number;
        (void)ifun_weekday_in(packed_datetimes{}, value, number); // which does not fail
        return number;
    };
    return (packed_datetimes::diff_day_without_adjust(a, b) + weekday(b) - weekday(a)) / 7;
}

template <class A, class B> status weeks_between(batch_of<INT> batch, A a, B b) {
    return datetimes_are_packed() ? set_all_rows<weeks_between_packed>(batch, a, b) : set_rows<ifun_parse_weeks_between>(batch, a, b);
}

template <class A, class B> status months_between(batch_of<DECIMAL> batch, A a, B b) {
    if (datetimes_are_packed() && decimals_are_packed()) {
        return set_rows<months_between_packed>(batch, a, b);
    }
    return with_datetimes([&]<class Datetimes>(Datetimes) { return set_rows<ifun_parse_months_between<Datetimes>>(batch, a, b); });
}

// ---- TO_DAYS -----------------------------------------------------------------------------------------------------------------------

// The numbers that SQL users know are two lower; up to this year they are those of the engine.
constexpr std::int32_t last_year_as_counted = 1600;

std::int64_t number_of_packed_day(const zqtime& value) {
    const std::uint32_t date = datetime_layout::load_date(value);
    constexpr std::int32_t first_day_of_year_0 = calendar::julian_day(0, 1, 1, false);
    return datetime_arithmetic::day_number_of_date(date) - first_day_of_year_0 -
           (datetime_layout::year_of_date(date) > last_year_as_counted ? 2 : 0);
}

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
    number -= engine_datetimes::year(date) > last_year_as_counted ? 2 : 0;
    return true;
}

} // namespace

status entry::bdatediff_vaa_date(batch_of<INT> batch, constant_of<INT> field, column_of<DATETIME> start, column_of<DATETIME> end) {
    return datediff_rows(batch, field, start, end);
}
status entry::bdatediff_vav_date(batch_of<INT> batch, constant_of<INT> field, column_of<DATETIME> start, constant_of<DATETIME> end) {
    return datediff_rows(batch, field, start, end);
}
status entry::bdatediff_vva_date(batch_of<INT> batch, constant_of<INT> field, constant_of<DATETIME> start, column_of<DATETIME> end) {
    return datediff_rows(batch, field, start, end);
}

status entry::bbigdatediff_vaa_date(batch_of<BIGINT> batch, constant_of<INT> field, column_of<DATETIME> start, column_of<DATETIME> end) {
    return bigdatediff_rows(batch, field, start, end);
}
status entry::bbigdatediff_vav_date(batch_of<BIGINT> batch, constant_of<INT> field, column_of<DATETIME> start, constant_of<DATETIME> end) {
    return bigdatediff_rows(batch, field, start, end);
}
status entry::bbigdatediff_vva_date(batch_of<BIGINT> batch, constant_of<INT> field, constant_of<DATETIME> start, column_of<DATETIME> end) {
    return bigdatediff_rows(batch, field, start, end);
}

status entry::bdays_between_aa_date(batch_of<INT> batch, column_of<DATETIME> a, column_of<DATETIME> b) { return days_between(batch, a, b); }
status entry::bdays_between_av_date(batch_of<INT> batch, column_of<DATETIME> a, constant_of<DATETIME> b) {
    return days_between(batch, a, b);
}
status entry::bdays_between_va_date(batch_of<INT> batch, constant_of<DATETIME> a, column_of<DATETIME> b) {
    return days_between(batch, a, b);
}

status entry::bweeks_between_aa_date(batch_of<INT> batch, column_of<DATETIME> a, column_of<DATETIME> b) {
    return weeks_between(batch, a, b);
}
status entry::bweeks_between_av_date(batch_of<INT> batch, column_of<DATETIME> a, constant_of<DATETIME> b) {
    return weeks_between(batch, a, b);
}
status entry::bweeks_between_va_date(batch_of<INT> batch, constant_of<DATETIME> a, column_of<DATETIME> b) {
    return weeks_between(batch, a, b);
}

status entry::bmonths_between_aa_date(batch_of<DECIMAL> batch, column_of<DATETIME> a, column_of<DATETIME> b) {
    return months_between(batch, a, b);
}
status entry::bmonths_between_av_date(batch_of<DECIMAL> batch, column_of<DATETIME> a, constant_of<DATETIME> b) {
    return months_between(batch, a, b);
}
status entry::bmonths_between_va_date(batch_of<DECIMAL> batch, constant_of<DATETIME> a, column_of<DATETIME> b) {
    return months_between(batch, a, b);
}

status entry::byears_between_aa_date(batch_of<INT> batch, column_of<DATETIME> a, column_of<DATETIME> b) {
    return years_between(batch, a, b);
}
status entry::byears_between_av_date(batch_of<INT> batch, column_of<DATETIME> a, constant_of<DATETIME> b) {
    return years_between(batch, a, b);
}
status entry::byears_between_va_date(batch_of<INT> batch, constant_of<DATETIME> a, column_of<DATETIME> b) {
    return years_between(batch, a, b);
}

// A NULL stands for today.
status entry::bto_days_a_date(batch_of<BIGINT> batch, column_of<DATETIME> value) {
    if (datetimes_are_packed() && value.column->no_nulls != 0) {
        return set_all_rows<number_of_packed_day>(batch, value);
    }
    current_datetime now;
    return rows_or_null<std::int64_t>(batch, value, [&](const zqtime* given, std::int64_t& result) -> value_or_null {
        const zqtime* const day = given != nullptr ? given : now_of(now);
        return day != nullptr && number_of_day(*day, result) ? value_or_null() : value_or_null::null();
    });
}

} // namespace bifun
