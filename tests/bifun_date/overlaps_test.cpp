// SPDX-License-Identifier: Apache-2.0
// OVERLAPS against every order of four points, all there and with some missing; GREATEST and LEAST of datetimes and intervals.

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "engine/datetime.h"
#include "engine/statements.h"
#include "tests/contract/text_case.h"

namespace {

using bifun::value_type;

// A point of time as a number from 0 on, or nothing.
using point = int;
constexpr point missing = -1000;
struct periods {
    point start_1, end_1, start_2, end_2;
};

// Whether the periods share a moment, which may be one between the points.
bool share_a_moment(const periods& given) {
    for (int twice = 0; twice <= 6; ++twice) {
        const auto lies_within = [&](point a, point b) { return (a * 2 <= twice && twice <= b * 2) || (b * 2 <= twice && twice <= a * 2); };
        if (lies_within(given.start_1, given.end_1) && lies_within(given.start_2, given.end_2)) {
            return true;
        }
    }
    return false;
}

// Step by step over slots that are exchanged. A comparison with nothing does not hold.
bool overlaps(periods slots) {
    const auto is_less = [](point a, point b) { return a != missing && b != missing && a < b; };
    if (std::min({slots.start_1, slots.end_1, slots.start_2, slots.end_2}) != missing) {
        return share_a_moment(slots);
    }
    bool has_end_1 = slots.end_1 != missing;
    bool has_end_2 = slots.end_2 != missing;
    const auto exchange_2 = [&] {
        std::swap(slots.start_2, slots.end_2);
        has_end_2 = true;
    };
    const bool lacks_start_1 = slots.start_1 == missing;
    if (lacks_start_1) {
        std::swap(slots.start_1, slots.end_1);
        has_end_1 = true;
    } else if (is_less(slots.end_1, slots.start_1)) {
        std::swap(slots.start_1, slots.end_1);
    }
    if (slots.start_2 == missing) {
        exchange_2();
    } else if (is_less(slots.end_2, slots.start_2)) {
        std::swap(slots.start_2, slots.end_2);
    }
    if (slots.start_1 != missing && slots.start_1 == slots.start_2) {
        return true;
    }
    if (has_end_2) {
        return !has_end_1 && is_less(slots.start_2, slots.start_1) && is_less(slots.start_1, slots.end_2);
    }
    return has_end_1 && is_less(slots.start_1, slots.start_2) && is_less(slots.start_2, slots.end_1);
}

// Every choice of four points among four moments, so every order of them, with every choice of missing ones.
std::vector<periods> all_periods() {
    std::vector<periods> all;
    for (int choice = 0; choice < 4 * 4 * 4 * 4; ++choice) {
        for (int lacking = 0; lacking < 16; ++lacking) {
            const auto at = [&](int position) { return (lacking >> position & 1) != 0 ? missing : choice >> 2 * position & 3; };
            all.push_back({at(0), at(1), at(2), at(3)});
        }
    }
    return all;
}

// Moments that differ in the day, the time or the fraction, the last of a time beyond a day.
zqtime moment(int number) {
    constexpr std::array<std::array<std::uint32_t, 4>, 4> parts{{{28, 23, 59, 5}, {29, 0, 0, 7}, {29, 0, 0, 8}, {29, 1, 0, 0}}};
    const auto& [day, hour, second, microsecond] = parts.at(static_cast<std::size_t>(number));
    zqtime made;
    EXPECT_EQ(zqtime_encode(&made, 2024, 2, day, hour, 0, second, microsecond, ZQTIME_NO_ZONE), 0);
    return made;
}

// The same moment by the clocks of the place's zone.
zqtime moment_in_zone(int number, int place) {
    zqtime made = moment(number);
    EXPECT_EQ(zqtime_add_by_fmt(&made, ZQTIME_HOUR, place, &made), 0);
    EXPECT_EQ(zqtime_set_tz(&made, place * 60), 0);
    return made;
}

zqtime long_time(int number) {
    zqtime made = moment(3);
    EXPECT_EQ(zqtime_set_hour_without_check(&made, 596520 + static_cast<std::uint32_t>(number)), 0);
    return made;
}

template <class T, class Make>
zqengine::column_pointer column_of_points(value_type type, const std::vector<point>& points, const Make& make) {
    std::vector<T> values;
    for (const point number : points) {
        values.push_back(number != missing ? make(number) : T{});
    }
    zqengine::column_pointer column = contract::column_of(type, values);
    for (std::uint32_t row = 0; row < values.size(); ++row) {
        if (points[row] == missing) {
            column->data.null_flags[row] = 0;
            column->column.no_nulls = 0;
        }
    }
    return column;
}

void expect_overlaps(const char* symbol, const std::vector<periods>& given, const std::vector<zqengine::column_pointer>& columns) {
    for (const std::int32_t layout : {ZQTIME_LAYOUT_PACKED, ZQTIME_LAYOUT_PRIVATE}) {
        zq_engine_statements.datetime_layout = layout;
        const contract::outcome outcome = contract::call(
            contract::entry_of(symbol),
            {{.column = columns[0].get()}, {.column = columns[1].get()}, {.column = columns[2].get()}, {.column = columns[3].get()}},
            static_cast<std::uint32_t>(given.size()));
        zq_engine_statements.datetime_layout = ZQTIME_LAYOUT_PACKED;
        ASSERT_EQ(outcome.status, 0);
        for (std::uint32_t row = 0; row < given.size(); ++row) {
            ASSERT_EQ(outcome.flag(row), given[row].start_1 != missing ? 1 : 0);
            if (given[row].start_1 != missing) {
                ASSERT_EQ(zqengine::values_of<std::int32_t>(*outcome.result)[row], overlaps(given[row]) ? 1 : 0)
                    << symbol << ' ' << row << ", layout " << layout;
            }
        }
    }
}

std::vector<point> points_of(const std::vector<periods>& given, point periods::*position) {
    std::vector<point> points;
    for (const periods& each : given) {
        points.push_back(each.*position);
    }
    return points;
}

constexpr point periods::*positions[] = {&periods::start_1, &periods::end_1, &periods::start_2, &periods::end_2};

TEST(Overlaps, OfEveryOrderOfFourPoints) {
    const std::vector<periods> all = all_periods();
    std::vector<periods> complete;
    for (const periods& each : all) {
        if (std::min({each.start_1, each.end_1, each.start_2, each.end_2}) != missing) {
            complete.push_back(each);
        }
    }
    for (const auto& given : {all, complete}) {
        std::vector<zqengine::column_pointer> plain;
        std::vector<zqengine::column_pointer> zoned;
        std::vector<zqengine::column_pointer> longer;
        for (const auto position : positions) {
            const std::vector<point> points = points_of(given, position);
            const int place = static_cast<int>(plain.size()) * 4 - 6;
            plain.push_back(column_of_points<zqtime>(value_type::DATETIME, points, moment));
            zoned.push_back(column_of_points<zqtime>(value_type::DATETIME, points, [&](int i) { return moment_in_zone(i, place); }));
            longer.push_back(column_of_points<zqtime>(value_type::DATETIME, points, long_time));
        }
        expect_overlaps("boverlaps_dt_aaaa_date", given, plain);
        expect_overlaps("boverlaps_dt_aaaa_date", given, zoned);
        expect_overlaps("boverlaps_dt_aaaa_date", given, longer);
    }
}

// The first start may be missing here.
TEST(Overlaps, OfOnePairOfPeriods) {
    auto* const overlaps_low = reinterpret_cast<decltype(&zqtime_overlaps_dt_low)>(contract::library_symbol("zqtime_overlaps_dt_low"));
    ASSERT_NE(overlaps_low, nullptr);
    for (const periods& given : all_periods()) {
        std::array<zqtime, 4> values{};
        std::array<std::int32_t, 4> present{};
        for (std::size_t i = 0; i < values.size(); ++i) {
            const point number = given.*positions[i];
            present.at(i) = number != missing ? 1 : 0;
            values.at(i) = moment(number != missing ? number : 0); // what is missing is not looked at
        }
        EXPECT_EQ(overlaps_low(values.data(), present[0], &values[1], present[1], &values[2], present[2], &values[3], present[3]),
                  overlaps(given) ? 1 : 0);
    }
}

// Ends from starts and intervals: an interval without a start makes no end.
TEST(Overlaps, OfStartsAndIntervals) {
    std::vector<periods> given;
    std::array<std::vector<point>, 4> arguments;
    for (periods each : all_periods()) {
        // The length of a period comes first, so that one without a start has a length as well.
        const auto length = [](point start, point end) { return end != missing ? end - (start != missing ? start : 0) : missing; };
        arguments[0].push_back(each.start_1);
        arguments[1].push_back(length(each.start_1, each.end_1));
        arguments[2].push_back(each.start_2);
        arguments[3].push_back(length(each.start_2, each.end_2));
        each.end_1 = each.start_1 != missing ? each.end_1 : missing;
        each.end_2 = each.start_2 != missing ? each.end_2 : missing;
        given.push_back(each);
    }
    const auto month = [](int number) {
        zqtime made;
        EXPECT_EQ(zqtime_encode(&made, 2023, static_cast<std::uint32_t>(11 + number % 2), 1, 0, 0, 0, 0, ZQTIME_NO_ZONE), 0);
        EXPECT_EQ(zqtime_add_by_fmt(&made, ZQTIME_MONTH, number - number % 2, &made), 0);
        return made;
    };
    const auto day = [](int number) {
        zqtime made;
        EXPECT_EQ(zqtime_encode(&made, 2024, 2, static_cast<std::uint32_t>(26 + number), 1, 0, 0, 1, ZQTIME_NO_ZONE), 0);
        return made;
    };
    const auto days = [](int number) { return bifun_interval_dt{number - 1, 25, -60, 3, -3'000'000}; };
    std::vector<zqengine::column_pointer> by_month;
    std::vector<zqengine::column_pointer> by_day;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::vector<point>& points = arguments.at(i);
        const bool is_start = i % 2 == 0;
        by_month.push_back(is_start ? column_of_points<zqtime>(value_type::DATETIME, points, month)
                                    : column_of_points<bifun_interval_ym>(value_type::INTERVAL_YM, points, [](int number) {
                                          return bifun_interval_ym{1, number - 12};
                                      }));
        by_day.push_back(is_start ? column_of_points<zqtime>(value_type::DATETIME, points, day)
                                  : column_of_points<bifun_interval_dt>(value_type::INTERVAL_DT, points, days));
    }
    expect_overlaps("boverlaps_ivym_aaaa_date", given, by_month);
    expect_overlaps("boverlaps_ivdt_aaaa_date", given, by_day);
}

// Of equal values the second counts; of intervals one that is constant counts as the first.
TEST(GreatestAndLeast, OfDatetimesAndIntervals) {
    contract::expect_results({
        "bgreatest_date_aa_date | 2024-02-29T12:00+02:00 2024-02-28 9999-12-31 | 2024-02-29T11:00+01:00 2024-02-29 NULL | "
        "[0] 2024-02-29T11:00:00+01:00 2024-02-29 NULL",
        "bleast_date_aa_ | 2024-02-29T12:00+02:00 2024-02-28 | 2024-02-29T11:00+01:00 2024-02-29 | [1] 2024-02-29T11:00:00+01:00 "
        "2024-02-28",
        "bgreatest_date_av_date | 2024-02-29T12:00+02:00 2024-02-29T13:00 | 2024-02-29T11:00+01:00 | "
        "[1] 2024-02-29T11:00:00+01:00 2024-02-29T13:00:00",
        "bleast_date_va_date | 2024-02-29T12:00+02:00 | 2024-02-29T11:00+01:00 | [1] 2024-02-29T11:00:00+01:00",
        "bgreat_ivdt_aa_date | 1/0/0/0/0 0/0/0/0/2 2147483647/0/0/0/0 | 0/24/0/0/0 0/0/0/0/1 -2147483648/0/0/0/0 | "
        "[1] 0/24/0/0/0 0/0/0/0/2 2147483647/0/0/0/0",
        "bless_ivdt_aa_date | 2147483647/2147483647/2147483647/2147483647/2147483647 0/0/0/-1/0 | 2147483647/0/0/0/0 0/0/0/0/-999999 | "
        "[1] 2147483647/0/0/0/0 0/0/0/-1/0",
        "bgreat_ivdt_av_date | 1/0/0/0/0 | 0/24/0/0/0 | [1] 1/0/0/0/0",
        "bgreat_ivdt_va_date | 1/0/0/0/0 | 0/24/0/0/0 | [1] 0/24/0/0/0",
        "bless_ivym_aa_date | 1/0 0/-1 2147483647/2147483647 NULL | 0/12 0/-2 2147483647/0 1/1 | [0] 0/12 0/-2 2147483647/0 NULL",
        "bless_ivym_av_date | 1/0 | 0/12 | [1] 1/0",
        "bgreat_ivym_va_date | 1/0 | 0/12 -1/30 | [1] 0/12 -1/30",
    });
}

} // namespace
