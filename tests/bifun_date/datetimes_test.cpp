// SPDX-License-Identifier: Apache-2.0
// Parts of datetimes and intervals and their names; datetimes moved by an amount, and intervals made from numbers; differences between
// datetimes, and the numbers of days.

#include <dlfcn.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "embedded/session/parameters.h"
#include "engine/datetime.h"
#include "engine/session.h"
#include "engine/statements.h"
#include "tests/contract/text_case.h"

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

using contract::evaluate;
using contract::expect_results;

// ---- parts ------------------------------------------------------------------------------------------------------------

// For each entry point a value and its fields by code. Any other code is refused, at the first row that is not NULL.
TEST(Extract, KnowsTheFieldsOfEachType) {
    struct fields_of_type {
        const char* symbol;
        const char* value;
        std::map<int, std::string> fields;
    };
    const char* const datetime = "2024-11-23T13:45:06.789123-03:30";
    const fields_of_type types[] = {
        {"bextract_datetime_va_date", datetime, {{1, "2024"}, {2, "11"}, {3, "23"}, {4, "13"}, {5, "45"}}},
        {"bextract_date_va_date", datetime, {{1, "2024"}, {2, "11"}, {3, "23"}}},
        {"bextract_time_va_date", datetime, {{4, "13"}, {5, "45"}}},
        {"bextract_time_ex_va_date", datetime, {{6, "6.789123"}}},
        {"bextract_datetime_tz_va_date", datetime, {{1, "2024"}, {2, "11"}, {3, "23"}, {4, "13"}, {5, "45"}, {12, "-3"}, {13, "-30"}}},
        {"bextract_time_tz_va_date", datetime, {{4, "13"}, {5, "45"}, {12, "-3"}, {13, "-30"}}},
        {"bextract_iv_ym_va_date", "-2147483648/15", {{1, "-2147483648"}, {2, "15"}}},
        {"bextract_iv_dt_va_date", "-3/25/-61/2147483647/-7", {{3, "-3"}, {4, "25"}, {5, "-61"}, {6, "2147483647"}, {7, "-7"}}},
        {"bextract_iv_dt_ex_va_date", "0/0/0/-6/-500000", {{6, "-6.5"}}},
        {"bextract_str_va_date", datetime, {{1, "2024"}, {2, "11"}, {3, "23"}, {4, "13"}, {5, "45"}}},
        {"bextract_str_ex_va_date", "13:45:59.5", {{6, "59.5"}}},
        {"bdatepart1_va_date",
         datetime,
         {{1, "2024"}, {2, "11"}, {3, "23"}, {4, "13"}, {5, "45"}, {6, "6"}, {7, "789"}, {8, "4"}, {9, "328"}, {10, "47"}, {11, "7"}}},
    };
    for (const auto& [symbol, value, fields] : types) {
        const std::string column = std::string("NULL ") + value + " " + value;
        for (int code = -1; code <= 15; ++code) {
            const std::string number = std::to_string(code);
            const auto field = fields.find(code);
            const std::string expected =
                field == fields.end() ? "[0] NULL NULL ? status -6803" : "[0] NULL " + field->second + " " + field->second;
            EXPECT_EQ(evaluate({symbol, {number, column}, {}}), expected) << symbol << ' ' << code;
            EXPECT_EQ(evaluate({symbol, {number, "NULL"}, {}}), "[0] NULL") << symbol << ' ' << code;
        }
        EXPECT_EQ(evaluate({symbol, {"NULL=0", column}, {}}), "[0] NULL NULL NULL") << symbol;
    }
}

TEST(Extract, GivesTheseValues) {
    expect_results({
        "bextract_datetime_tz_va_date | 12 | 13:45 13:45Z 13:45+00:30 13:45-00:30 13:45-14:00 | [1] 0 0 0 0 -14",
        "bextract_datetime_tz_va_date | 13 | 13:45 13:45Z 13:45+00:30 13:45-00:30 13:45-14:00 | [1] 0 0 30 -30 0",
        "bextract_time_ex_va_date | 6 | 00:00 23:59:59.000001 | [1] 0 59.000000999999997",
        "bextract_iv_dt_ex_va_date | 6 | 1/2/3/4/250000 0/0/0/0/-1 0/0/0/100/0 | [1] 4.25 -9.9999999999999995e-07 100",
        "bextract_str_va_date | 1 | 2024-02-29__ x '' NULL 13:45 2023-02-29 | [0] 2024 NULL NULL NULL 1900 NULL",
        "bextract_str_va_date | 6 | x 2024-02-29 x | [0] NULL NULL ? status -6803",
        "bextract_str_ex_va_date | 6 | 1582-10-05 13:45:00.25 | [0] NULL 0.25",
        "bweekday_str_a_date | 2000-10-01 2000-09-30 x NULL 1582-10-04 1582-10-15 | [0] 0 6 NULL NULL 4 5",
        "bquarter_zqtime_a_date | 2024-01-31 2024-03-31 2024-04-01 2024-06-30 2024-09-30 2024-10-01 2024-12-31 | [1] 1 1 2 2 3 4 4",
        "bdatepart1_va_date | 7 | 12:00:00.123456 12:00:00.000999 12:00:00.999999 | [1] 123 0 999",
        // Weeks begin on Sunday and 1 January is in week 1.
        "bdatepart1_va_date | 10 | 2024-01-06 2024-01-07 2000-12-30 2000-12-31 2022-01-01 2022-01-02 | [1] 1 2 53 54 1 2",
        "bdayname_a_date | 2000-10-01 2000-10-02 2000-10-03 2000-10-04 2000-10-05 2000-10-06 2000-10-07 1582-10-04 | [1] Sunday Monday "
        "Tuesday Wednesday Thursday Friday Saturday Thursday",
        "bmonthname_a_date | 2024-01-01 2024-02-01 2024-03-01 2024-04-01 2024-05-01 2024-06-01 2024-07-01 2024-08-01 2024-09-01 2024-10-01 "
        "2024-11-01 2024-12-01 | [1] January February March April May June July August September October November December",
    });
    const std::pair<const char*, const char*> components[] = {
        {"byear_a_date", "2024"}, {"bmonth_a_date", "12"}, {"bday_a_date", "31"}, {"bdayofmonth_a_date", "31"},
        {"bhour_a_date", "23"},   {"bmin_a_date", "59"},   {"bsec_a_date", "58"}, {"bdayofyear_a_date", "366"}};
    for (const auto& [symbol, value] : components) {
        EXPECT_EQ(evaluate({symbol, {"2024-12-31T23:59:58.999999+14:00"}, {}}), std::string("[1] ") + value) << symbol;
    }
}

TEST(Datepart, KnowsTheseNames) {
    const std::pair<const char*, std::vector<std::string>> names[] = {
        {"2024", {"YY", "yy", "yY", "YEAR", "Year", "YYYY", "yyyy"}},
        {"11", {"m", "M", "MM", "mm", "MONTH", "month"}},
        {"23", {"d", "D", "DD", "Dd", "DAY", "day"}},
        {"13", {"HH", "hh", "HOUR", "hour"}},
        {"45", {"n", "N", "MI", "mi", "MINUTE", "Minute"}},
        {"6", {"s", "S", "SS", "ss", "SECOND", "second"}},
        {"789", {"MS", "ms", "MILLISECOND", "MilliSecond"}},
        {"4", {"q", "Q", "QQ", "qq", "QUARTER", "quarter"}},
        {"328", {"y", "Y", "DY", "dy", "DAYOFYEAR", "dayofyear"}},
        {"47", {"WK", "wk", "WW", "wW", "WEEK", "week"}},
        {"7", {"DW", "dw", "WEEKDAY", "weekday"}},
    };
    for (const auto& [number, spellings] : names) {
        for (const std::string& name : spellings) {
            EXPECT_EQ(evaluate({"bdatepart_av_date", {"2024-11-23T13:45:06.789123 NULL", name}, {}}),
                      std::string("[0] ") + number + " NULL")
                << name;
        }
    }
    // Refused before any row is looked at.
    for (const char* name :
         {"w",  "h",      "e",           "''",           "_",    "WEEK_", "y_",     "WEEKS", "YE", "YYY", "M1",      "DAYS",
          "TZ", "YEAR&.", "MICROSECOND", "MILLISECONDS", "y*48", "y*49",  "y*1000", "WEEK~", "~y", "~",   "WEE\xCB", "\xD9"}) {
        EXPECT_EQ(evaluate({"bdatepart_av_date", {"2024-11-23 NULL", name}, {}}), "[0] NULL NULL status -6803") << name;
        EXPECT_EQ(evaluate({"bdatepart_av_date", {"[1]", name}, {}}), "[0] status -6803") << name;
    }
}

// ---- sums -------------------------------------------------------------------------------------------------------------

// What an amount of a field is, is the engine's; results outside the range end the batch.
TEST(Sums, OfDatetimes) {
    expect_results({
        "bdateadd_vaa_date | 1 | 1 -1 0 | 2024-02-29T13:45:06.5+01:00 NULL 2024-02-29 | [0] 2025-02-28T13:45:06.5+01:00 NULL 2024-02-29",
        "bdateadd_vav_date | 8 | [7] 1 -1 | 2024-05-31 | [1] 2024-08-31 2024-02-29",
        "bdateadd_vav_date | 6 | 4294967296 -1 | 2024-01-01 | [1] 2160-02-07T06:28:16 2023-12-31T23:59:59",
        "bdateadd_vva_date | 6 | -1 | 2024-01-01 -4712-01-01 2024-01-01 | [0] 2023-12-31T23:59:59 NULL ? status -6118",
        "bdateadd_vav_date | 1 | 9223372036854775807 | 2024-01-01 | [0] NULL status -6118",
        "bdateadd_vav_date | 12 | NULL 1 1 | 2024-01-01 | [0] NULL NULL ? status -6803",
        "badd_days_aa_date | 2024-02-28T12:00Z 1582-10-15 2024-01-01 | 1.5 -0.25 -0.0 | [1] 2024-03-01T00:00:00+00:00 1582-10-04T18:00:00 "
        "2024-01-01",
        // Half a microsecond is 5.787037E-12 of a day.
        "badd_days_va_date | 2024-01-01 | 5.788e-12 5.786e-12 -5.788e-12 | [1] 2024-01-01T00:00:00.000001 2024-01-01 "
        "2023-12-31T23:59:59.999999",
        "badd_days_va_date | 2024-01-01 | 1 nan 1 | [0] 2024-01-02 NULL ? status -6803",
        "badd_days_va_date | 2024-01-01 | -inf | [0] NULL status -6803",
        "badd_days_av_date | -4712-01-01T00:00:01 | -0.5 | [0] NULL status -6118",
        "badd_weeks_aa_date | 2024-02-22 2024-02-29T13:45 | 1 -1 | [1] 2024-02-29 2024-02-22T13:45:00",
        // The days wrap around in 32 bits: 7 x 613566757 is 2^32 + 3.
        "badd_weeks_va_date | 2024-01-01 | 613566757 613566756 -613566757 -613566756 2147483647 | [0] 2024-01-04 2023-12-28 2023-12-29 "
        "2024-01-05 NULL status -6118",
        // The last day of a month stays the last, unless an interval is added, whose fields need not have one sign.
        "badd_months_aa_date | 2023-02-28T13:45+01:00 2024-02-28 1582-09-10 | 1 1 1 | [1] 2023-03-31T13:45:00+01:00 2024-03-28 1582-10-15",
        "badd_months_va_date | -4712-01-31 | -2147483648 | [0] NULL status -6118",
        "bdate_add_ym_aa | 2024-02-29T13:45 2024-01-31 2024-02-29 | 1/0 0/1 1/-11 | [1] 2025-02-28T13:45:00 2024-02-29 2024-03-29",
        "bdate_sub_ym_av | 2024-03-31 2024-02-29 | 0/1 | [1] 2024-02-29 2024-01-29",
        "bdate_add_ym_av | 2024-01-01 | 178956970/-2147483647 | [1] 2023-06-01",
        "bdate_sub_ym_av | 2024-01-01 | -2147483648/-2147483648 | [0] NULL status -6118",
        "blast_day_a_date | 1900-02-01 1500-02-01 1582-10-04T23:59:59.999999-01:00 9999-12-01 | [1] 1900-02-28 1500-02-29 "
        "1582-10-31T23:59:59.999999-01:00 9999-12-31",
        "blast_day_str_a_date | [7] @1,1,0 x 2024-04-01__ | [0] 2024-04-30 2024-04-30 NULL",
    });
}

TEST(NextDay, IsOneToSevenDaysLater) {
    const char* const names[] = {"Sunday", "MONDAY", "tuesday", "WED", "thu", "Friday", "sat"};
    const auto day = [](int number) { return "2024-03-" + std::string(number < 10 ? "0" : "") + std::to_string(number); };
    for (int target = 0; target < 7; ++target) {
        for (int from = 0; from < 7; ++from) { // 2024-03-03 is a Sunday
            const int days_later = target > from ? target - from : target + 7 - from;
            EXPECT_EQ(evaluate({"bnext_day_av_date", {day(3 + from) + "T13:45+01:00", names[target]}, {}}),
                      "[1] " + day(3 + from + days_later) + "T13:45:00+01:00");
        }
    }
    expect_results({
        "bnext_day_av_date | 1582-10-03 1582-10-04 | Friday | [1] 1582-10-15 1582-10-15",
        "bnext_day_av_date | -4712-01-01 | monday | [1] -4712-01-08",
        "bnext_day_av_date | 9999-12-30 9999-12-31 9999-12-30 | Friday | [0] 9999-12-31 NULL ? status -6118",
        // A name is judged before any row is looked at, its length first.
        "bnext_day_av_date | NULL 2024-01-01 | x*19 | [0] NULL NULL status -6145",
        "bnext_day_av_date | [1] | x*20 | [0] status -6112",
        "bnext_day_av_date | 2024-01-01 | Mo | [0] NULL status -6145",
        "bnext_day_av_date | 2024-01-01 | NULL=x*20 | [0] NULL",
    });
}

TEST(Intervals, AreMadeFromNumbers) {
    expect_results({
        "bnumtoivym_av_date | 1.5 -1.5 0.04166666 0.04166667 1.96 2147483647.95 -2147483648.95 1E-120 | YEAR | [1] 1/6 -1/-6 0/0 0/1 2/0 "
        "2147483647/11 -2147483648/-11 0/0",
        "bnumtoivym_av_date | 14 -14.5 14.4999 25769803775 0 | ~Month~ | [1] 1/2 -1/-3 1/2 2147483647/11 0/0",
        "bnumtoivym_av_date | 2147483647.96 | YEAR | [0] NULL status -6102",
        "bnumtoivym_av_date | -2147483649 | YEAR | [0] NULL status -6102",
        "bnumtoivym_av_date | 25769803776 | MONTH | [0] NULL status -6102",
        "bnumtoivym_av_date | 1E120 | MONTH | [0] NULL status -6102",
        "bnumtoivym_av_date | NULL 1 1 | DAY | [0] NULL NULL ? status -6803",
        "bnumtoivdt_av_date | 1.5 -0.25 2147483647.9999999 -2147483648.5 0.99999999999999999 1E-127 | DAY | [1] 1/12/0/0/0 0/-6/0/0/0 "
        "2147483647/23/59/59/991360 -2147483648/-12/0/0/0 1/0/0/0/0 0/0/0/0/0",
        "bnumtoivdt_av_date | -1.5 100.25 0.9999999999999999999999999999999999999 | hour | [1] 0/-1/-30/0/0 4/4/15/0/0 0/1/0/0/0",
        "bnumtoivdt_av_date | 1441.1 | ~MINUTE | [1] 1/0/1/6/0",
        "bnumtoivdt_av_date | 61.5 | SECOND&~*50 | [1] 0/0/1/1/500000",
        "bnumtoivdt_av_date | 90061.0000005 90061.00000049 -0.0000005 59.9999995 185542587187199.999999 | SECOND | [1] 1/1/1/1/1 "
        "1/1/1/1/0 0/0/0/0/-1 0/0/1/0/0 2147483647/23/59/59/999999",
        // Halves of a microsecond, as near as 38 digits can tell: 1/172800000000 of a day is 5.787037...E-12.
        "bnumtoivdt_av_date | 0.000000000005787037037037037037037037037038 0.000000000005787037037037037037037037037037 "
        "0.0000000000057870370370370370370370370370370370370 0.0000000000057870370370370370370370370370370370371 "
        "1.0000000000057870370370370370370370370 1.0000000000057870370370370370370370371 | DAY | [1] 0/0/0/0/1 0/0/0/0/0 0/0/0/0/0 "
        "0/0/0/0/1 1/0/0/0/0 1/0/0/0/1",
        "bnumtoivdt_av_date | 0.0000005000000000000000000000000000000 0.00000049999999999999999999999999999999999999 | SECOND | [1] "
        "0/0/0/0/1 0/0/0/0/0",
        "bnumtoivdt_av_date | 2147483647.99999999999999 | DAY | [0] NULL status -6102",
        "bnumtoivdt_av_date | 185542587187200 | SECOND | [0] NULL status -6102",
        "bnumtoivdt_av_date | 99999999999999999999999999999999999999 | SECOND | [0] NULL status -6102",
        "bnumtoivdt_av_date | 1E100 | SECOND | [0] NULL status -6102",
    });
    for (const char* const unit : {"''", "~~", "YEA", "YEARS", "MONTH", "D"}) {
        EXPECT_EQ(evaluate({"bnumtoivdt_av_date", {"1", unit}, {}}), "[0] NULL status -6803") << unit;
        EXPECT_TRUE(unit == std::string("MONTH") || evaluate({"bnumtoivym_av_date", {"1", unit}, {}}) == "[0] NULL status -6803") << unit;
    }
}

// ---- differences ------------------------------------------------------------------------------------------------------

// Fields are codes from year to weekday. BIGDATEDIFF knows no weekdays and cuts the difference of the fractions, DATEDIFF counts the
// milliseconds begun. A code that is not known fails the first row that is not NULL.
TEST(Datediff, CountsEachField) {
    expect_results({
        "bdatediff_vaa_date | 1 | 2023-12-31T23:59:59.999 2024-03-03 | 2024-01-01 2024-03-02 | [1] 1 0",
        "bdatediff_vaa_date | 2 | 2023-11-30 2024-01-01 | 2024-04-01 2023-01-01 | [1] 5 -12",
        "bdatediff_vaa_date | 3 | 2023-12-31T23:59:59.999 -4712-01-01 | 2024-01-01 9999-12-31 | [1] 1 5373484",
        "bdatediff_vaa_date | 4 | 2023-12-31T23:59:59.999 -4712-01-01 | 2024-01-01 9999-12-31T23:59 | [1] 1 128963639",
        "bdatediff_vaa_date | 5 | 2024-03-03 -4712-01-01 | 2024-03-02 9999-12-31 | [0] -1440 NULL status -6102",
        "bdatediff_vva_date | 6 | 2024-01-01 | 2024-01-01T00:00:01 2100-01-01 NULL | [0] 1 NULL ? status -6102",
        "bdatediff_vaa_date | 7 | 00:00:00.0009 00:00:00.0019 2023-11-30 | 00:00:00.0010 00:00:01.0001 2024-04-01 | [0] 1 999 NULL status "
        "-6102",
        "bdatediff_vaa_date | 8 | 2023-11-30 2024-01-01 | 2024-04-01 2023-01-01 | [1] 2 -4",
        "bdatediff_vaa_date | 9 | 2023-11-30 | 2024-04-01 | [1] 123",
        "bdatediff_vaa_date | 10 | 2024-03-03 2024-03-02 2024-03-02 | 2024-03-02 2024-03-03 2024-03-02 | [1] -1 1 0",
        "bdatediff_vaa_date | 11 | 2023-11-30 | 2024-04-01 | [1] 123",
        "bbigdatediff_vaa_date | 6 | -4712-01-01 | 9999-12-31T23:59:59.999999 | [1] 464269103999",
        "bbigdatediff_vaa_date | 7 | 00:00:00.0009 00:00:00.0019 -4712-01-01 | 00:00:00.0010 00:00:01.0001 9999-12-31T23:59:59.999999 | "
        "[1] 0 999 464269103999999",
        "bbigdatediff_vaa_date | 11 | 2023-11-30 | 2024-04-01 | [0] NULL status -6803",
        "bdatediff_vav_date | 0 | NULL 2024-01-01 2024-01-01 | 2024-01-01 | [0] NULL NULL ? status -6803",
        "bbigdatediff_vav_date | -1 | NULL 2024-01-01 2024-01-01 | 2024-01-01 | [0] NULL NULL ? status -6803",
    });
}

// The formulas of BIGDATEDIFF count boundaries, as the engine does.
TEST(Bigdatediff, CountsBoundaries) {
    std::mt19937_64 random(12);
    constexpr std::uint32_t row_count = 2000;
    std::vector<zqtime> starts(row_count);
    std::vector<zqtime> ends(row_count);
    for (std::uint32_t row = 0; row < row_count; ++row) {
        zqtime first;
        ASSERT_EQ(zqtime_encode(&first, row % 2 == 0 ? -4712 : 1582, 1, 1, 0, 0, 0, 0, ZQTIME_NO_ZONE), 0);
        const std::uint64_t seconds = row % 2 == 0 ? 464'269'104'000 : 3 * 31'536'000;
        for (zqtime* value : {&starts[row], &ends[row]}) {
            ASSERT_EQ(zqtime_add_by_fmt(&first, ZQTIME_SECOND, static_cast<std::int64_t>(random() % seconds), value), 0);
        }
    }
    const zqengine::column_pointer start = contract::column_of(bifun::value_type::DATETIME, starts);
    const zqengine::column_pointer end = contract::column_of(bifun::value_type::DATETIME, ends);
    for (const std::int32_t code : {1, 2, 3, 4, 5, 6, 8, 9, 10}) {
        const zqengine::column_pointer codes = contract::column_of(bifun::value_type::INT, std::vector{code});
        const contract::generated_constant field = contract::constant_of_row(*codes, 0);
        const contract::outcome counts = contract::call(contract::entry_of("bbigdatediff_vaa_date"),
                                                        {{.constant = &field}, {.column = start.get()}, {.column = end.get()}}, row_count);
        for (std::uint32_t row = 0; row < row_count; ++row) {
            std::int32_t boundaries;
            if (zqtime_parse_datediff(code, &starts[row], &ends[row], &boundaries) == 0) {
                ASSERT_EQ(zqengine::values_of<std::int64_t>(*counts.result)[row], boundaries) << code << ' ' << row;
            }
        }
    }
}

TEST(Between, CountsDaysWeeksMonthsAndYears) {
    expect_results({
        "bdays_between_aa_date | 2024-03-01T00:00 2024-02-29T23:59 1582-10-15 | 2024-02-28T23:59 2024-02-29 1582-10-04 | [1] 2 0 1",
        // 2024-03-02 is a Saturday.
        "bweeks_between_aa_date | 2024-03-03 2024-03-02 2024-03-02 2024-03-09 2024-03-10 2024-03-02 | 2024-03-02 2024-03-03 2024-02-25 "
        "2024-03-03 2024-02-25 2024-03-02 | [1] 1 -1 0 0 2 0",
        // The days are counted as they are written, the weekdays as they were: eleven days from Thursday to Friday.
        "bweeks_between_va_date | 1582-10-04 | 1582-10-15 1582-10-01 1500-03-01 | [1] -1 0 4309",
        "bmonths_between_aa_date | 2024-03-31 2024-03-30 2024-03-29T13:45 2024-02-29 2024-03-15 2024-01-31 2023-02-28 | 2024-02-29 "
        "2024-02-29 2024-02-29 2024-03-31 2024-02-29 2024-02-28 2024-01-31 | [1] 1 1.032258064516129 1 -1 0.5483870967741935 "
        "-0.9032258064516129 -11",
        "bmonths_between_av_date | 1582-10-15 1582-10-31 | 1582-10-04 | [1] 0.3548387096774194 0.8709677419354839",
        "bmonths_between_va_date | 9999-12-31T23:59:59 | -4712-01-01 -4712-01-31 | [1] 176543.96774193548 176543",
        "byears_between_aa_date | 2024-01-01 2023-12-31 -4712-12-31 | 2023-12-31 2024-01-01 9999-01-01 | [1] 1 -1 -14711",
    });
}

// The first and the last day of every year, counted from a Monday on. Behind the year 1600 the number of a day is two lower.
TEST(Days, AreCountedThroughAllYears) {
    std::vector<zqtime> days;
    std::vector<std::int64_t> numbers;
    std::int64_t first = 0;
    for (std::int32_t year = -4712; year <= 9999; ++year) {
        const bool is_leap = year % 4 == 0 && (year < 1583 || year % 100 != 0 || year % 400 == 0);
        const std::int64_t length = year == 1582 ? 355 : is_leap ? 366 : 365;
        days.resize(days.size() + 2);
        ASSERT_EQ(zqtime_encode(&days.end()[-2], year, 1, 1, 0, 0, 0, 0, ZQTIME_NO_ZONE), 0);
        ASSERT_EQ(zqtime_encode(&days.end()[-1], year, 12, 31, 23, 59, 59, 999'999, 840), 0);
        numbers.insert(numbers.end(), {first, first + length - 1});
        first += length;
    }
    const contract::outcome to_days = contract::call_with("bto_days_a_date", days);
    const contract::outcome of_week = contract::call_with("bdayofweek_a_date", days);
    const contract::outcome of_year = contract::call_with("bdayofyear_a_date", days);
    for (std::size_t i = 0; i < days.size(); ++i) {
        const auto year = static_cast<std::int32_t>(i / 2) - 4712;
        ASSERT_EQ(zqengine::values_of<std::int64_t>(*to_days.result)[i], numbers[i] - 1'721'058 - (year > 1600 ? 2 : 0)) << year;
        ASSERT_EQ(zqengine::values_of<std::int32_t>(*of_week.result)[i], (numbers[i] + 1) % 7 + 1) << year;
        ASSERT_EQ(zqengine::values_of<std::int32_t>(*of_year.result)[i], i % 2 == 0 ? 1 : numbers[i] - numbers[i - 1] + 1) << year;
    }
}

// Today is that of parameter 650, at whatever moment of the call; NULL rows are none.
TEST(ToDays, OfNullIsToday) {
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
    ASSERT_EQ(zqengine::set_parameter(INI_NOW_TIME_ZONE, ZQTIME_NO_ZONE), 0);
}

TEST(ToDays, IsNullWhereTheEngineFailsOrTheNumberIsTooLarge) {
    zq_engine_statements.datetime_layout = ZQTIME_LAYOUT_PRIVATE; // otherwise the operation need not be asked
    to_days_status = -6118;
    EXPECT_EQ(evaluate({"bto_days_a_date", {"2024-01-01 0000-01-01"}, {}}), "[0] NULL NULL");
    to_days_status = 0;
    more_days = 2'147'483'647;
    EXPECT_EQ(evaluate({"bto_days_a_date", {"-0001-12-31 0000-01-01 0000-01-02"}, {}}), "[0] 2147483646 2147483647 NULL");
    more_days = 0;
    zq_engine_statements.datetime_layout = ZQTIME_LAYOUT_PACKED;
}

} // namespace
