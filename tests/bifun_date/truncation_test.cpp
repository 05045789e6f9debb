// SPDX-License-Identifier: Apache-2.0
// TRUNC and ROUND of every day that there is, against a walk through the calendar that knows nothing but the lengths of months.

#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/datetime.h"
#include "engine/statements.h"
#include "tests/contract/text_case.h"

namespace {

struct day {
    std::int32_t year;
    std::int32_t month;
    std::int32_t day;
};

bool is_leap(std::int32_t year) { return year % 4 == 0 && (year < 1583 || year % 100 != 0 || year % 400 == 0); }

std::int32_t length_of(std::int32_t year, std::int32_t month) {
    constexpr std::int32_t lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return lengths[month - 1] + (month == 2 && is_leap(year) ? 1 : 0);
}

// From Monday, -4712-01-01, on.
const std::vector<day>& calendar() {
    static const std::vector<day> days = [] {
        std::vector<day> all;
        for (std::int32_t year = -4712; year <= 9999; ++year) {
            for (std::int32_t month = 1; month <= 12; ++month) {
                for (std::int32_t number = 1; number <= length_of(year, month); ++number) {
                    if (year != 1582 || month != 10 || number < 5 || number > 14) {
                        all.push_back({year, month, number});
                    }
                }
            }
        }
        return all;
    }();
    return days;
}

std::int64_t weekday(std::int64_t index) { return (index + 1) % 7; } // 0 Sunday

constexpr std::array<const char*, 11> units{"DD", "CC", "YYYY", "Q", "MM", "WW", "W", "D", "HH", "MI", "IW"};

// Where each unit began as the walk goes on: the index of its first day.
struct walk {
    std::int64_t year = 0, quarter = 0, month = 0, week_of_year = 0, week_of_month = 0;
    std::int32_t century = -4800; // its first year
    std::int64_t first_weekday_of_year = 1;

    void go_to(std::int64_t index) {
        const day& today = calendar()[static_cast<std::size_t>(index)];
        const bool is_changeover = today.year == 1582 && today.month == 10 && today.day == 15;
        const bool is_first = today.day == 1;
        const bool is_new_year = is_first && today.month == 1;
        year = is_new_year ? index : year;
        first_weekday_of_year = is_new_year ? weekday(index) : first_weekday_of_year;
        quarter = is_first && today.month % 3 == 1 ? index : quarter;
        month = is_first ? index : month;
        const bool begins_century = today.year > 0 ? today.year % 100 == 1 : today.year % 100 == 0;
        century = begins_century && is_new_year ? today.year : century;
        week_of_year = is_new_year || is_changeover || index == week_of_year + 7 ? index : week_of_year;
        // Weeks that begin at the changeover go on until the end of the year.
        const bool goes_on = today.year == 1582 && today.month > 10;
        week_of_month = (is_first && !goes_on) || is_changeover || index == week_of_month + 7 ? index : week_of_month;
    }
};

struct time_of_day {
    std::uint32_t hour, minute, second, microsecond;
};
constexpr time_of_day times[] = {{0, 0, 0, 0},          {11, 59, 59, 999'999}, {12, 0, 0, 0},         {23, 59, 59, 999'999},
                                 {10, 30, 29, 999'999}, {10, 30, 30, 0},       {23, 29, 29, 999'999}, {23, 29, 30, 0}};

// A result: a day by its index, or the first of a year, and the seconds of the time; or a failure.
struct expected {
    std::int64_t index;
    std::int64_t seconds = 0;
    std::optional<std::int32_t> first_of_year = {};
};

constexpr std::int64_t behind_calendar = INT64_MAX;

expected truncated(const walk& walk, std::int64_t index, const time_of_day& time, std::size_t unit) {
    switch (unit) {
    case 0:
        return {index};
    case 1:
        return {0, 0, walk.century};
    case 2:
        return {walk.year};
    case 3:
        return {walk.quarter};
    case 4:
        return {walk.month};
    case 5:
        return {walk.week_of_year};
    case 6:
        return {walk.week_of_month};
    case 7:
        return {index - weekday(index)};
    case 8:
        return {index, time.hour * std::int64_t{3600}};
    case 9:
        return {index, (time.hour * 60 + time.minute) * std::int64_t{60}};
    default:
        return {index - index % 7};
    }
}

// The day of the weekday that is at most three days away.
std::int64_t nearest(std::int64_t index, std::int64_t wanted) {
    for (const std::int64_t days : {0, 1, 2, 3}) {
        if (weekday(index + 7 - days) == wanted) {
            return index - days;
        }
        if (weekday(index + days) == wanted) {
            return index + days;
        }
    }
    return behind_calendar;
}

// The next first day of a month, or of one that so many months divide from January.
std::int64_t next_first(std::int64_t index, std::int32_t months) {
    for (auto i = static_cast<std::size_t>(index) + 1; i < calendar().size(); ++i) {
        if (calendar()[i].day == 1 && (calendar()[i].month - 1) % months == 0) {
            return static_cast<std::int64_t>(i);
        }
    }
    return behind_calendar;
}

// Seconds from the day's midnight on, rounded up to a day or not.
expected at_second(std::int64_t index, std::int64_t seconds) { return {index + seconds / 86400, seconds % 86400}; }

expected rounded(const walk& walk, std::int64_t index, const time_of_day& time, std::size_t unit) {
    const day& today = calendar()[static_cast<std::size_t>(index)];
    const std::int64_t second = (time.hour * 60 + time.minute) * 60 + time.second;
    const std::int64_t until_sunday = (7 - weekday(index)) % 7;
    const auto month_in_quarter = (today.month - 1) % 3;
    switch (unit) {
    case 0:
        return {time.hour < 12 ? index : index + 1};
    case 1:
        if (today.year >= 0) {
            return {0, 0, (today.year + 50) / 100 * 100 + 1};
        }
        return {0, 0, today.year >= -50 ? 1 : (today.year - 49) / 100 * 100};
    case 2:
        return {0, 0, today.month <= 6 ? today.year : today.year + 1};
    case 3: {
        const bool is_next = month_in_quarter == 2 || (month_in_quarter == 1 && today.day >= 16);
        return {is_next ? next_first(index, 3) : walk.quarter};
    }
    case 4:
        return {today.day >= 16 ? next_first(index, 1) : walk.month};
    case 5: {
        const bool from_friday = today.year == 1582 && (today.month > 10 || (today.month == 10 && today.day > 1));
        return {nearest(index, from_friday ? 5 : walk.first_weekday_of_year)};
    }
    case 6: {
        const bool from_friday = today.year == 1582 && today.month == 10 && today.day >= 15;
        return {nearest(index, from_friday ? 5 : weekday(walk.month))};
    }
    case 7:
        return {weekday(index) > 3 || (weekday(index) == 3 && time.hour >= 12) ? index + until_sunday : index - weekday(index)};
    case 8:
        return at_second(index, (second + 3600 - 1830) / 3600 * 3600); // half an hour and half a minute
    case 9:
        return at_second(index, (second + 30) / 60 * 60);
    default:
        return {weekday(index) == 0 ? index + 1 : weekday(index) <= 4 ? index - index % 7 : index - index % 7 + 7};
    }
}

// Whether there is such a value, which is put into `result`. The first century begins before the calendar does.
bool make(const expected& wanted, std::int32_t zone, zqtime& result) {
    if (wanted.first_of_year) {
        return *wanted.first_of_year <= 9999 && zqtime_encode_without_check(&result, *wanted.first_of_year, 1, 1, 0, 0, 0, 0, zone) == 0;
    }
    if (wanted.index < 0 || static_cast<std::size_t>(wanted.index) >= calendar().size()) {
        return false;
    }
    const day& date = calendar()[static_cast<std::size_t>(wanted.index)];
    const auto part = [](std::int64_t number) { return static_cast<std::uint32_t>(number); };
    return zqtime_encode(&result, date.year, part(date.month), part(date.day), part(wanted.seconds / 3600), part(wanted.seconds / 60 % 60),
                         part(wanted.seconds % 60), 0, zone) == 0;
}

contract::generated_constant unit_constant(const char* name) {
    return contract::constant_of_row(*contract::read_column(bifun::value_type::VARCHAR, name).column, 0);
}

using model = expected (*)(const walk&, std::int64_t, const time_of_day&, std::size_t);

// Days in runs of `run_length`, each by the layout and every eighth, and that of October 1582, by the engine's operations as well.
void expect_model(const char* symbol, model model, bool drops_zone) {
    constexpr std::size_t run_length = 60'000;
    constexpr std::size_t changeover = 2'299'161;
    const bifun::entry_point& entry = contract::entry_of(symbol);
    std::array<walk, units.size()> walks;
    for (std::size_t first = 0; first < calendar().size(); first += run_length) {
        const std::size_t count = std::min(run_length, calendar().size() - first);
        for (std::size_t unit = 0; unit < units.size(); ++unit) {
            const bool loses_zone = drops_zone && unit >= 1 && unit <= 4;
            std::vector<zqtime> values;
            std::vector<zqtime> results;
            for (std::size_t i = first; i < first + count; ++i) {
                const day& date = calendar()[i];
                const time_of_day& time = times[(i + i / 7) % std::size(times)];
                const std::int32_t zone = i % 3 == 0 ? 330 : int{ZQTIME_NO_ZONE};
                walks[unit].go_to(static_cast<std::int64_t>(i));
                zqtime value;
                ASSERT_EQ(zqtime_encode(&value, date.year, static_cast<std::uint32_t>(date.month), static_cast<std::uint32_t>(date.day),
                                        time.hour, time.minute, time.second, time.microsecond, zone),
                          0);
                zqtime result;
                if (make(model(walks[unit], static_cast<std::int64_t>(i), time, unit), loses_zone ? int{ZQTIME_NO_ZONE} : zone, result)) {
                    values.push_back(value);
                    results.push_back(result);
                } else {
                    const zqengine::column_pointer alone = contract::column_of(bifun::value_type::DATETIME, std::vector{value});
                    const contract::generated_constant name = unit_constant(units[unit]);
                    ASSERT_LT(contract::call(entry, {{.column = alone.get()}, {.constant = &name}}, 1).status, 0) << i << units[unit];
                }
            }
            const zqengine::column_pointer column = contract::column_of(bifun::value_type::DATETIME, values);
            const contract::generated_constant name = unit_constant(units[unit]);
            const bool by_operations = first / run_length % 8 == 0 || (first <= changeover && changeover < first + run_length);
            for (const std::int32_t layout : {ZQTIME_LAYOUT_PACKED, ZQTIME_LAYOUT_PRIVATE}) {
                if (layout == ZQTIME_LAYOUT_PRIVATE && !by_operations) {
                    continue;
                }
                zq_engine_statements.datetime_layout = layout;
                const contract::outcome outcome = contract::call(entry, {{.column = column.get()}, {.constant = &name}}, column->capacity);
                zq_engine_statements.datetime_layout = ZQTIME_LAYOUT_PACKED;
                ASSERT_EQ(outcome.status, 0) << units[unit];
                for (std::uint32_t row = 0; row < column->capacity; ++row) {
                    ASSERT_EQ(std::memcmp(&zqengine::values_of<zqtime>(*outcome.result)[row], &results[row], sizeof(zqtime)), 0)
                        << units[unit] << " of " << contract::write_value(*column, row) << " is "
                        << contract::write_value(*outcome.result, row) << ", layout " << layout;
                }
            }
        }
    }
}

TEST(Trunc, OfEveryDayToEveryUnit) { expect_model("btrunc_datetime_av_date", truncated, false); }

TEST(Round, OfEveryDayToEveryUnit) { expect_model("bround_datetime_av_date", rounded, true); }

// By hand: Thursday the 4th is followed by Friday the 15th.
TEST(Trunc, InOctober1582) {
    contract::expect_results({
        "btrunc_date_av_date | 1582-10-01 1582-10-04 1582-10-15 1582-10-21 1582-10-22 1582-11-01 1582-12-02 1583-01-01 | W | "
        "[1] 1582-10-01 1582-10-01 1582-10-15 1582-10-15 1582-10-22 1582-10-29 1582-11-26 1583-01-01",
        "btrunc_date_av_date | 1582-10-04 1582-10-15 1582-10-31 1582-12-31 1583-01-07 | WW | "
        "[1] 1582-10-01 1582-10-15 1582-10-29 1582-12-31 1583-01-01",
        "btrunc_date_av_date | 1582-10-04 1582-10-15 1582-10-17 | D | [1] 1582-09-30 1582-09-30 1582-10-17",
        "btrunc_date_av_date | 1582-10-15 1582-10-18 | IW | [1] 1582-10-01 1582-10-18",
        "btrunc_date_av_date | 1582-10-15 1582-12-31 | Q | [1] 1582-10-01 1582-10-01",
        "bround_day_a_date | 1582-10-04T11:59:59 1582-10-04T12:00 | [1] 1582-10-04 1582-10-15",
        "bround_date_av_date | 1582-10-01 1582-10-02 1582-10-04 1582-10-18 1582-10-19 1582-11-04 | WW | "
        "[1] 1582-10-01 1582-10-15 1582-10-15 1582-10-15 1582-10-22 1582-11-05",
        "bround_date_av_date | 1582-10-04 1582-10-15 1582-10-19 1582-11-04 | W | [1] 1582-10-01 1582-10-15 1582-10-22 1582-11-01",
        "bround_date_av_date | 1582-10-15 1582-10-16 | MM | [1] 1582-10-01 1582-11-01",
    });
}

// Days that the changeover left out, of an engine that has them: weeks of their own.
TEST(Trunc, OfDaysThatTheChangeoverLeftOut) {
    std::vector<zqtime> days(10);
    for (std::uint32_t i = 0; i < days.size(); ++i) {
        ASSERT_EQ(zqtime_encode_without_check(&days[i], 1582, 10, i + 5, 1, 2, 3, 4, 60), 0);
    }
    const zqengine::column_pointer column = contract::column_of(bifun::value_type::DATETIME, days);
    for (const std::int32_t layout : {ZQTIME_LAYOUT_PACKED, ZQTIME_LAYOUT_PRIVATE}) {
        zq_engine_statements.datetime_layout = layout;
        for (const char* const unit : {"W", "WW"}) {
            const contract::generated_constant name = unit_constant(unit);
            const contract::outcome outcome =
                contract::call(contract::entry_of("btrunc_date_av_date"), {{.column = column.get()}, {.constant = &name}}, 10);
            for (std::uint32_t row = 0; row < days.size(); ++row) {
                EXPECT_EQ(contract::write_value(*outcome.result, row), row < 3 ? "1582-10-01T00:00:00+01:00" : "1582-10-08T00:00:00+01:00");
            }
        }
        const contract::generated_constant iso_week = unit_constant("IW");
        const contract::outcome outcome = contract::call(contract::entry_of("btrunc_date_av_date"),
                                                         {{.column = column.get(), .first_row = 3}, {.constant = &iso_week}}, 1);
        EXPECT_EQ(contract::write_value(*outcome.result, 0), "1582-10-08T00:00:00+01:00");
    }
    zq_engine_statements.datetime_layout = ZQTIME_LAYOUT_PACKED;
}

TEST(Trunc, NamesOfUnits) {
    struct names_of_unit {
        const char* names;
        const char* result;
    };
    // A Thursday.
    constexpr names_of_unit known[] = {{"CC scc", "2001-01-01"},
                                       {"D dy DAY", "2024-08-11"},
                                       {"DD ddd J", "2024-08-15"},
                                       {"HH hh12 HH24", "2024-08-15T13:00:00"},
                                       {"iw", "2024-08-12"},
                                       {"M mm MON Month RM", "2024-08-01"},
                                       {"Mi", "2024-08-15T13:45:00"},
                                       {"Q q", "2024-07-01"},
                                       {"w", "2024-08-15"},
                                       {"WW", "2024-08-12"},
                                       {"Y yy YYY YYYY year SYYY SYYYY SYEAR", "2024-01-01"},
                                       {"x H MMM YYYYYY HH1 HH241", "[0] NULL status -6127"}};
    for (const names_of_unit& unit : known) {
        std::string name;
        for (const char c : std::string(unit.names) + ' ') {
            if (c != ' ') {
                name += c;
                continue;
            }
            const std::string result = contract::evaluate({"btrunc_date_av_date", {"2024-08-15T13:45:59.5", name}, {}});
            const bool is_known = *unit.result == '2';
            EXPECT_EQ(result, is_known ? "[1] " + std::string(unit.result) : unit.result) << name;
            name.clear();
        }
    }
}

TEST(TruncAndRound, OfTexts) {
    contract::expect_results({
        "btrunc_day_str_a_date | 2024-02-29T13:45 x 123.5 20240301 | [0] 2024-02-29 00:00:00 NULL NULL 2024-03-01 00:00:00",
        "btrunc_dt_str_av_date | 2024-02-29T13:45 x | Q | [0] 2024-01-01 00:00:00 NULL",
        "btrunc_dt_str_av_date | 123.456 -0.99 1e3 x 2024-02-29 | 1 | [0] 123.4 -0.9 1000 NULL NULL",
        "btrunc_dt_str_av_date | 129.99 x | -1 | [0] 120 NULL",
        "btrunc_dt_str_av_date | 129.99 x | 2147483647 | [0] 0 NULL",
        "btrunc_dt_str_av_date | 129.990 | -2147483648 | [0] 129.990",
        "bround_dt_str_av_date | 2024-05-16 2024-05-15T23:59:59 | q | [0] 2024-07-01 00:00:00 2024-04-01 00:00:00",
        "bround_dt_str_av_date | 123.45 -123.45 x | 1 | [0] 123.5 -123.5 NULL",
        "bround_a_str | 123.5 -0.5 2024-02-29T12:00 2024-02-29T11:59 x | [0] 124 -1 2024-03-01 00:00:00 2024-02-29 00:00:00 NULL",
        // Digits are a number even where they could be a date.
        "bround_a_str | 20240229 | [0] 20240229",
    });
}

} // namespace
