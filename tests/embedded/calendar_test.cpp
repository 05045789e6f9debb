// SPDX-License-Identifier: Apache-2.0
// Every day of the range against ICU's calendar, whose changeover is ours.
#include <gtest/gtest.h>

#include <unicode/gregocal.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "bop/frame/status.h"
#include "engine/datetime.h"
#include "engine/interval.h"
#include "layouts/calendar.h"

using bifun::calendar::calendar_date;

namespace {

constexpr std::int32_t last_day_number = 5'373'484;      // 9999-12-31
constexpr std::int32_t number_of_changeover = 2'299'161; // 1582-10-15
constexpr std::int32_t day_number_of_1970 = 2'440'588;
#ifdef BIFUN_SANITIZED
constexpr std::int32_t stride = 29;
#else
constexpr std::int32_t stride = 1;
#endif

struct icu_calendar {
    std::vector<calendar_date> days;     // by Julian day number
    std::vector<std::int32_t> month_end; // the number of the last day of each month, from January -4712
};

calendar_date read_date(icu::GregorianCalendar& calendar, std::int32_t day_number) {
    UErrorCode status = U_ZERO_ERROR;
    calendar.setTime((day_number - day_number_of_1970) * 86'400'000.0, status);
    const calendar_date date{.year = calendar.get(UCAL_EXTENDED_YEAR, status),
                             .month = static_cast<std::uint32_t>(calendar.get(UCAL_MONTH, status) + 1),
                             .day = static_cast<std::uint32_t>(calendar.get(UCAL_DATE, status))};
    EXPECT_TRUE(U_SUCCESS(status));
    return date;
}

icu::GregorianCalendar make_calendar() {
    UErrorCode status = U_ZERO_ERROR;
    return {*icu::TimeZone::getGMT(), status};
}

const icu_calendar& calendar() {
    static const icu_calendar whole = [] {
        icu_calendar result;
        icu::GregorianCalendar calendar = make_calendar();
        for (std::int32_t number = 0; number <= last_day_number; ++number) {
            const calendar_date date = read_date(calendar, number);
            if (number > 0 && date.day == 1) {
                result.month_end.push_back(number - 1);
            }
            result.days.push_back(date);
        }
        result.month_end.push_back(last_day_number);
        return result;
    }();
    return whole;
}

zqtime make(calendar_date date, std::uint32_t hour = 0, std::uint32_t minute = 0, std::uint32_t second = 0, std::uint32_t microsecond = 0) {
    zqtime value;
    if (zqtime_encode(&value, date.year, date.month, date.day, hour, minute, second, microsecond, 60) != 0) {
        ADD_FAILURE() << date.year << '-' << date.month << '-' << date.day;
    }
    return value;
}

bool same(const zqtime& a, const zqtime& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Whether a status and a sum, which was `before`, are those of day `number`, in the range or beyond it.
bool is_day(std::int64_t number, std::int32_t status, const zqtime& sum, const zqtime& before) {
    if (number < 0 || number > last_day_number) {
        return status == BIFUN_INVALID_DATETIME && same(sum, before);
    }
    return status == 0 && same(sum, make(calendar().days[static_cast<std::size_t>(number)]));
}

} // namespace

TEST(Calendar, PlacesAreThoseOfIcu) {
    icu::GregorianCalendar calendar = make_calendar();
    icu::GregorianCalendar gregorian = make_calendar();
    UErrorCode status = U_ZERO_ERROR;
    gregorian.setGregorianChange(std::numeric_limits<double>::lowest(), status);
    const zqtime year_0 = make({0, 1, 1});
    const zqtime day_1970 = make({1970, 1, 1});
    std::uint32_t week = 0;
    for (std::int32_t number = 0; number <= last_day_number; ++number) {
        const calendar_date date = read_date(calendar, number);
        const auto weekday = static_cast<std::uint32_t>(calendar.get(UCAL_DAY_OF_WEEK, status) - UCAL_SUNDAY);
        const zqtime value = make(date, 23, 59, 59);
        if (date.month == 1 && date.day == 1) {
            week = 1;
        } else if (weekday == 0) {
            ++week;
        }
        ASSERT_EQ(bifun::calendar::julian_day(date.year, date.month, date.day), number);
        ASSERT_EQ(zqtime_day_of_week(&value), weekday) << number;
        ASSERT_EQ(zqtime_day_of_year(&value), static_cast<std::uint32_t>(calendar.get(UCAL_DAY_OF_YEAR, status))) << number;
        ASSERT_EQ(zqtime_week_for_datepart(&value), week) << number;
        std::int64_t days;
        ASSERT_EQ(zqtime_to_days(&value, &days), 0);
        ASSERT_EQ(days, zqtime_diff_day(&value, &year_0));
        ASSERT_EQ(zqtime_diff_day(&year_0, &value), 1'721'058 - number);

        zqtime adjusted = value;
        zqtime_glgl_adjust(&adjusted);
        const calendar_date gregorian_date = number < number_of_changeover ? read_date(gregorian, number) : date;
        std::int32_t year;
        std::uint32_t month, day;
        zqtime_decode(&adjusted, &year, &month, &day, nullptr, nullptr, nullptr, nullptr);
        ASSERT_TRUE(year == gregorian_date.year && month == gregorian_date.month && day == gregorian_date.day) << number;
        ASSERT_EQ(zqtime_diff_day(&adjusted, &year_0), days) << number;
        zqtime_glgl_adjust(&adjusted);
        ASSERT_EQ(zqtime_diff_day(&year_0, &adjusted), -days) << number;
        if (number < number_of_changeover && (date.day == 1 || date.day == 29)) {
            gregorian.clear();
            gregorian.set(UCAL_EXTENDED_YEAR, date.year);
            gregorian.set(UCAL_MONTH, static_cast<std::int32_t>(date.month) - 1);
            gregorian.set(UCAL_DATE, static_cast<std::int32_t>(date.day));
            const auto since_1970 = static_cast<std::int32_t>(gregorian.getTime(status) / 86'400'000);
            ASSERT_EQ(zqtime_diff_day_without_glgl_adjust(&value, &day_1970), since_1970) << number;
        }
    }
    ASSERT_TRUE(U_SUCCESS(status));
}

TEST(Calendar, AddsDaysAndWeeks) {
    const auto& days = calendar().days;
    for (const std::int32_t amount : {1, -1, 365, -146'097}) {
        for (std::int32_t number = 0; number <= last_day_number; number += stride) {
            const zqtime value = make(days[static_cast<std::size_t>(number)]);
            zqtime sum = value;
            std::int32_t status = zqtime_add_by_fmt(&sum, ZQTIME_DAY, amount, &sum);
            ASSERT_TRUE(is_day(number + amount, status, sum, value)) << "day " << number << ' ' << amount;
            if (number % 11 == 0) {
                sum = value;
                status = zqtime_add_by_fmt(&value, ZQTIME_WEEK, amount, &sum);
                ASSERT_TRUE(is_day(number + amount * 7, status, sum, value)) << "week " << number << ' ' << amount;
                sum = value;
                status = zqtime_date_add_number(&value, amount, &sum);
                ASSERT_TRUE(is_day(number + amount, status, sum, value)) << "days " << number << ' ' << amount;
            }
        }
    }
}

TEST(Calendar, AddsMonths) {
    const auto& [days, month_end] = calendar();
    const auto end_of = [&ends = month_end](std::int64_t month) { return ends[static_cast<std::size_t>(month)]; };
    const auto months = static_cast<std::int64_t>(month_end.size());
    for (const std::int32_t amount : {1, -1, 132, -2401}) {
        const bifun_interval_ym interval{.years = amount / 12, .months = amount % 12};
        std::int64_t month = 0;
        for (std::int32_t number = 0; number <= last_day_number; number += stride) {
            while (number > end_of(month)) {
                ++month;
            }
            const calendar_date date = days[static_cast<std::size_t>(number)];
            const std::int64_t target = month + amount;
            const bool is_in_range = target >= 0 && target < months;
            std::int64_t clamped = -1;
            if (is_in_range) {
                // The first day that is not before the wanted one, or the last of the month.
                const std::int64_t first = target == 0 ? 0 : end_of(target - 1) + 1;
                clamped = std::min<std::int64_t>(first + date.day - 1, end_of(target));
                while (clamped > first && days[static_cast<std::size_t>(clamped - 1)].day >= date.day) {
                    --clamped;
                }
            }
            const std::int64_t kept_last = is_in_range && number == end_of(month) ? end_of(target) : clamped;
            const zqtime value = make(date);
            zqtime sum = value;
            std::int32_t status = zqtime_add_by_fmt(&value, ZQTIME_MONTH, amount, &sum);
            ASSERT_TRUE(is_day(clamped, status, sum, value)) << "month " << number << ' ' << amount;
            sum = value;
            status = zqtime_date_add_iv_ym(&sum, amount, &sum);
            ASSERT_TRUE(is_day(kept_last, status, sum, value)) << "last day kept " << number << ' ' << amount;
            sum = value;
            status = datetime_add_interval_ym(&sum, &interval, &sum);
            ASSERT_TRUE(is_day(clamped, status, sum, value)) << "interval " << number << ' ' << amount;
        }
    }
}

// Times as microseconds since day 0: sums and differences of random datetimes in plain arithmetic.
TEST(Calendar, CountsTimesAndBoundaries) {
    constexpr std::int64_t day_length = 86'400'000'000;
    constexpr std::pair<std::int32_t, std::int64_t> units[] = {{ZQTIME_DAY, day_length},
                                                               {ZQTIME_HOUR, day_length / 24},
                                                               {ZQTIME_MINUTE, 60'000'000},
                                                               {ZQTIME_SECOND, 1'000'000},
                                                               {ZQTIME_SUBSECOND, 1000}};
    const auto& days = calendar().days;
    std::mt19937_64 random(1582);
    const auto any_time = [&random] {
        return std::uniform_int_distribution<std::int64_t>(0, (last_day_number + 1) * day_length - 1)(random);
    };
    const auto make_time = [&days](std::int64_t time) {
        const auto second = static_cast<std::uint32_t>(time % day_length / 1'000'000);
        return make(days[static_cast<std::size_t>(time / day_length)], second / 3600, second / 60 % 60, second % 60,
                    static_cast<std::uint32_t>(time % 1'000'000));
    };
    for (int i = 0; i < 300'000; ++i) {
        const std::int64_t start = any_time();
        // Far apart, close by, and around the changeover.
        const std::int64_t end =
            i % 3 == 0   ? any_time()
            : i % 3 == 1 ? std::clamp<std::int64_t>(start + any_time() / 100'000 - 2'000'000'000, 0, last_day_number * day_length)
                         : number_of_changeover * day_length + any_time() / 500'000;
        const zqtime a = make_time(start);
        const zqtime b = make_time(end);
        const auto require_difference = [&a, &b](std::int32_t field, std::int64_t expected) {
            std::int32_t difference = 4711;
            const std::int32_t status = zqtime_parse_datediff(field, &a, &b, &difference);
            const bool fits = expected == static_cast<std::int32_t>(expected);
            ASSERT_EQ(status, fits ? 0 : BIFUN_NUMERIC_OVERFLOW) << field << ' ' << expected;
            ASSERT_EQ(difference, fits ? expected : 4711) << field;
        };
        for (const auto& [field, length] : units) {
            ASSERT_NO_FATAL_FAILURE(require_difference(field, end / length - start / length));
            const std::int64_t amount = (end - start) / length;
            zqtime sum;
            ASSERT_EQ(zqtime_add_by_fmt(&a, field, amount, &sum), 0);
            ASSERT_TRUE(same(sum, make_time(start + amount * length))) << field << ' ' << amount;
        }
        // Boundaries lie between two of what the dates are in; day 0 is a Monday, and weeks begin on Sunday.
        const std::int64_t first = start / day_length;
        const std::int64_t last = end / day_length;
        const calendar_date from = days[static_cast<std::size_t>(first)];
        const calendar_date to = days[static_cast<std::size_t>(last)];
        const auto month_of = [](const calendar_date& date) { return date.year * 12LL + date.month - 1; };
        const auto quarter_of = [](const calendar_date& date) { return date.year * 4LL + (date.month - 1) / 3; };
        ASSERT_NO_FATAL_FAILURE(require_difference(ZQTIME_YEAR, to.year - from.year));
        ASSERT_NO_FATAL_FAILURE(require_difference(ZQTIME_QUARTER, quarter_of(to) - quarter_of(from)));
        ASSERT_NO_FATAL_FAILURE(require_difference(ZQTIME_MONTH, month_of(to) - month_of(from)));
        ASSERT_NO_FATAL_FAILURE(require_difference(ZQTIME_WEEK, (last + 1) / 7 - (first + 1) / 7));
        ASSERT_NO_FATAL_FAILURE(require_difference(ZQTIME_DAY_OF_YEAR, last - first));
        ASSERT_NO_FATAL_FAILURE(require_difference(ZQTIME_WEEKDAY, last - first));
    }
}
