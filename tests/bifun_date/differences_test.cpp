// Differences between datetimes, and the numbers of days.

#include <dlfcn.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "embedded/session/parameters.h"
#include "engine/session.h"
#include "tests/bifun_date/each_engine.h"

// Replaces the engine's operation in this program: it can be told what to answer.
namespace {
std::int32_t to_days_status = 0;
std::int64_t more_days = 0;
} // namespace

extern "C" __attribute__((visibility("default"))) std::int32_t zqtime_to_days(const zqtime* value, std::int64_t* days) {
    static auto* const to_days = reinterpret_cast<decltype(&zqtime_to_days)>(dlsym(RTLD_NEXT, "zqtime_to_days"));
    const std::int32_t status = to_days(value, days);
    *days += more_days;
    return to_days_status != 0 ? to_days_status : status;
}

namespace {

using bifun_date::expect_results;
using bifun_date::with_each_engine;
using contract::evaluate;

struct pair_of_datetimes {
    const char* start;
    const char* end;
    const char* counts; // by code from year to weekday, of BIGDATEDIFF; where DATEDIFF differs, its count behind a slash
};

TEST(Datediff, CountsEachField) {
    // Year, month, day, hour, minute, second, millisecond, quarter, day of year, week, weekday.
    const pair_of_datetimes pairs[] = {
        {"2023-12-31T23:59:59.999", "2024-01-01T00:00:00", "1 1 1 1 1 1 1 1 1 0 -6803/1"},
        {"2024-01-01T00:00:00", "2023-12-31T23:59:59.999", "-1 -1 -1 -1 -1 -1 -1 -1 -1 0 -6803/-1"},
        {"2024-02-29T13:45:06.5+01:00", "2024-02-29T13:45:06.5-08:00", "0 0 0 0 0 0 0 0 0 0 -6803/0"},
        // From Saturday to Sunday is a week, back as well; from Sunday to Saturday is none.
        {"2024-03-02", "2024-03-03", "0 0 1 24 1440 86400 86400000 0 1 1 -6803/1"},
        {"2024-03-03", "2024-03-02", "0 0 -1 -24 -1440 -86400 -86400000 0 -1 -1 -6803/-1"},
        {"2024-03-03T23:59", "2024-03-09", "0 0 6 121 7201 432060 432060000 0 6 0 -6803/6"},
        {"2024-03-09", "2024-03-31", "0 0 22 528 31680 1900800 1900800000 0 22 4 -6803/22"},
        // Quarters with the later month in the earlier part of a year.
        {"2023-11-30", "2024-04-01", "1 5 123 2952 177120 10627200 10627200000/-6102 2 123 18 -6803/123"},
        {"2024-06-01", "2024-05-31", "0 -1 -1 -24 -1440 -86400 -86400000 0 -1 0 -6803/-1"},
        {"2024-05-01", "2024-03-31", "0 -2 -31 -744 -44640 -2678400 -2678400000/-6102 -1 -31 -4 -6803/-31"},
        {"2024-01-01", "2023-01-01", "-1 -12 -365 -8760 -525600 -31536000 -31536000000/-6102 -4 -365 -52 -6803/-365"},
        // Over the changeover one day passes.
        {"1582-10-04", "1582-10-15", "0 0 1 24 1440 86400 86400000 0 1 0 -6803/1"},
        {"1582-10-15T00:00:01", "1582-10-04T23:59:59", "0 0 -1 -1 -1 -2 -2000 0 -1 0 -6803/-1"},
        // BIGDATEDIFF cuts the difference of the fractions, DATEDIFF counts the milliseconds begun.
        {"00:00:00.0009", "00:00:00.0010", "0 0 0 0 0 0 0/1 0 0 0 -6803/0"},
        {"00:00:00.0001", "00:00:00.0019", "0 0 0 0 0 0 1 0 0 0 -6803/0"},
        {"00:00:00.0019", "00:00:01.0001", "0 0 0 0 0 1 999 0 0 0 -6803/0"},
        {"-4712-01-01", "9999-12-31T23:59:59.999999",
         "14711 176543 5373484 128963639 7737818399/-6102 464269103999/-6102 464269103999999/-6102 58847 5373484 767640 -6803/5373484"},
    };
    with_each_engine([&pairs] {
        for (const auto& [start, end, counts] : pairs) {
            std::istringstream words(counts);
            int code = 0;
            for (std::string word; words >> word;) {
                const std::string field = std::to_string(++code);
                const std::size_t slash = word.find('/');
                const std::string big = word.substr(0, slash);
                const std::string small = slash == std::string::npos ? big : word.substr(slash + 1);
                const auto expected = [](const std::string& count) {
                    return count == "-6803" || count == "-6102" ? "[0] NULL status " + count : "[1] " + count;
                };
                for (const char* kinds : {"vaa", "vav", "vva"}) {
                    EXPECT_EQ(evaluate({("bbigdatediff_" + std::string(kinds) + "_date").c_str(), {field, start, end}, {}}), expected(big))
                        << start << ' ' << end << ' ' << field;
                    EXPECT_EQ(evaluate({("bdatediff_" + std::string(kinds) + "_date").c_str(), {field, start, end}, {}}), expected(small))
                        << start << ' ' << end << ' ' << field;
                }
            }
            EXPECT_EQ(code, 11);
        }
    });
    expect_results({
        "bdatediff_vaa_date | 3 | 2024-01-01 NULL 2024-01-02 NULL | @0,1,2,2 2024-01-03 2024-01-04 NULL | [0] 2 NULL NULL NULL",
        "bbigdatediff_vva_date | 3 | 2024-01-01 | [7] @1,1,0 2024-01-03 2024-01-04 | [1] 3 3 2",
        "bbigdatediff_vav_date | 10 | [1] 2024-03-03 2024-03-02 | 2024-03-10 | [1] 1 2",
        "bdatediff_vav_date | 3 | 2024-01-01 NULL | NULL | [0] NULL NULL",
        "bbigdatediff_vva_date | 3 | NULL | 2024-01-01 | [0] NULL",
        "bdatediff_vaa_date | NULL | 2024-01-01 | 2024-01-01 | [0] NULL",
        // A code that is not known fails the first row that is not NULL.
        "bdatediff_vav_date | 0 | NULL 2024-01-01 2024-01-01 | 2024-01-01 | [0] NULL NULL ? status -6803",
        "bbigdatediff_vav_date | 0 | NULL 2024-01-01 2024-01-01 | 2024-01-01 | [0] NULL NULL ? status -6803",
        "bbigdatediff_vav_date | 11 | NULL | 2024-01-01 | [0] NULL",
        "bbigdatediff_vav_date | -1 | 2024-01-01 | 2024-01-01 | [0] NULL status -6803",
        "bdatediff_vav_date | 12 | 2024-01-01 | 2024-01-01 | [0] NULL status -6803",
        "bdatediff_vva_date | 6 | 2024-01-01 | 2024-01-01T00:00:01 2100-01-01 NULL | [0] 1 NULL ? status -6102",
    });
}

// The formulas of BIGDATEDIFF count boundaries, as the engine does.
TEST(Bigdatediff, CountsBoundaries) {
    std::mt19937_64 random(12);
    const auto row_count = 2000U;
    std::vector<zqtime> starts(row_count);
    std::vector<zqtime> ends(row_count);
    for (std::uint32_t row = 0; row < row_count; ++row) {
        zqtime first;
        ASSERT_EQ(zqtime_encode(&first, row % 2 == 0 ? -4712 : 1582, 1, 1, 0, 0, 0, 0, ZQTIME_NO_ZONE), 0);
        const std::int64_t seconds = row % 2 == 0 ? 464'269'104'000 : 3 * 31'536'000;
        for (zqtime* value : {&starts[row], &ends[row]}) {
            ASSERT_EQ(
                zqtime_add_by_fmt(&first, ZQTIME_SECOND, static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(seconds)), value),
                0);
        }
    }
    const zqengine::column_pointer start = contract::column_of(bifun::value_type::DATETIME, starts);
    const zqengine::column_pointer end = contract::column_of(bifun::value_type::DATETIME, ends);
    with_each_engine([&] {
        for (const std::int32_t code : {1, 2, 3, 4, 5, 6, 8, 9, 10}) {
            const zqengine::column_pointer codes = contract::column_of(bifun::value_type::INT, std::vector{code});
            const contract::generated_constant field = contract::constant_of_row(*codes, 0);
            const contract::outcome counts =
                contract::call(contract::entry_of("bbigdatediff_vaa_date"),
                               {{.constant = &field}, {.column = start.get()}, {.column = end.get()}}, row_count);
            for (std::uint32_t row = 0; row < row_count; ++row) {
                std::int32_t boundaries;
                if (zqtime_parse_datediff(code, &starts[row], &ends[row], &boundaries) == 0) {
                    ASSERT_EQ(zqengine::values_of<std::int64_t>(*counts.result)[row], boundaries) << code << ' ' << row;
                }
            }
        }
    });
}

TEST(Between, CountsDaysWeeksMonthsAndYears) {
    expect_results({
        "bdays_between_aa_date | 2024-03-01T00:00 2024-02-29T23:59 1582-10-15 -4712-01-01 NULL | 2024-02-28T23:59 2024-02-29 1582-10-04 "
        "9999-12-31 NULL | [0] 2 0 1 -5373484 NULL",
        "bdays_between_av_date | [7] @1,0 2024-01-01 2024-01-31 | 2024-01-11 | [1] 20 -10",
        "bdays_between_va_date | 2024-01-11 | 2024-01-01 NULL | [0] 10 NULL",
        "bdays_between_va_date | NULL | 2024-01-01 | [0] NULL",
        // 2024-03-02 is a Saturday.
        "bweeks_between_aa_date | 2024-03-03 2024-03-02 2024-03-02 2024-03-09 2024-03-10 2024-03-02 NULL | 2024-03-02 2024-03-03 "
        "2024-02-25 2024-03-03 2024-02-25 2024-03-02 2024-03-02 | [0] 1 -1 0 0 2 0 NULL",
        // The days are counted as they are written, the weekdays as they were: eleven days from Thursday to Friday.
        "bweeks_between_av_date | 1582-10-15 1582-10-17 1582-10-04 | 1582-10-04 | [1] 1 2 0",
        "bweeks_between_va_date | 1582-10-04 | 1582-10-15 1582-10-01 1500-03-01 | [1] -1 0 4309",
        "bweeks_between_va_date | 9999-12-31 | -4712-01-01 NULL | [0] 767634 NULL",
        "bweeks_between_av_date | 2024-01-01 | NULL | [0] NULL",
        "bmonths_between_aa_date | 2024-03-31 2024-03-30 2024-03-29T13:45 2024-02-29 2024-03-15 2024-02-29 2024-01-31 2023-02-28 NULL | "
        "2024-02-29 2024-02-29 2024-02-29 2024-03-31 2024-02-29 2024-01-30 2024-02-28 2024-01-31 2024-01-31 | [0] 1 1.032258064516129 1 "
        "-1 0.5483870967741935 0.967741935483871 -0.9032258064516129 -11 NULL",
        "bmonths_between_av_date | 1582-10-15 1582-10-31 | 1582-10-04 | [1] 0.3548387096774194 0.8709677419354839",
        "bmonths_between_va_date | 9999-12-31T23:59:59 | -4712-01-01 -4712-01-31 NULL | [0] 176543.96774193548 176543 NULL",
        "bmonths_between_va_date | NULL | 2024-01-01 | [0] NULL",
        "byears_between_aa_date | 2024-01-01 2023-12-31 -4712-12-31 NULL | 2023-12-31 2024-01-01 9999-01-01 2024-01-01 | [0] 1 -1 -14711 "
        "NULL",
        "byears_between_av_date | 2024-01-01 0000-01-01 | -0001-12-31 | [1] 2025 1",
        "byears_between_va_date | 2024-01-01 | [7] 2023-01-01 | [1] 1",
    });
}

TEST(ToDays, TakesTwoDaysOffAfterTheYear1600) {
    expect_results({
        "bto_days_a_date | 0000-01-01 0000-12-31T23:59:59.999999+14:00 0001-01-01 -0001-12-31 -4712-01-01 | [1] 0 365 366 -1 -1721058",
        "bto_days_a_date | [7] @1,0,0 1600-12-31T12:00 1601-01-01 | [7] 584754 584755 584755",
        "bto_days_a_date | 1582-10-04 1582-10-15 2007-10-07 9999-12-31 | [1] 578102 578103 733321 3652424",
    });
}

// Today is that of parameter 650, at whatever moment of the call; NULL rows are none.
TEST(ToDays, OfNullIsToday) {
    with_each_engine([] {
        for (const std::int32_t zone : {-840, 0, 840, int{ZQTIME_NO_ZONE}}) {
            ASSERT_EQ(zqengine::set_parameter(INI_NOW_TIME_ZONE, zone), 0);
            const auto expected_today = [zone] {
                zqtime now;
                std::int64_t days = 0;
                EXPECT_EQ(zqtime_tz_now(0, zone, &now), 0);
                EXPECT_EQ(zqtime_to_days(&now, &days), 0);
                return std::to_string(days - 2);
            };
            const std::string before = expected_today();
            const std::string result = evaluate({"bto_days_a_date", {"@0,1,2,0 NULL 0000-01-02 NULL=2024-01-01"}, {}});
            const std::string after = expected_today();
            EXPECT_TRUE(result == "[0] " + before + " 1 " + before + ' ' + before || result == "[0] " + after + " 1 " + after + ' ' + after)
                << result;
        }
    });
    ASSERT_EQ(zqengine::set_parameter(INI_NOW_TIME_ZONE, ZQTIME_NO_ZONE), 0);
}

TEST(ToDays, IsNullWhereTheEngineFailsOrTheNumberIsTooLarge) {
    for (const std::int32_t plain_stores : {1, 0}) {
        bdta3_setters_are_plain_stores = plain_stores;
        zqtime_layout = ZQTIME_LAYOUT_PRIVATE; // otherwise the operation need not be asked
        to_days_status = -6118;
        EXPECT_EQ(evaluate({"bto_days_a_date", {"2024-01-01 0000-01-01"}, {}}), "[0] NULL NULL");
        to_days_status = 0;
        more_days = 2'147'483'647;
        EXPECT_EQ(evaluate({"bto_days_a_date", {"-0001-12-31 0000-01-01 0000-01-02"}, {}}), "[0] 2147483646 2147483647 NULL");
        more_days = 0;
    }
    bdta3_setters_are_plain_stores = 1;
    zqtime_layout = ZQTIME_LAYOUT_PACKED;
}

} // namespace
