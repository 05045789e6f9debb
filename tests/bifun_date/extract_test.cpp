// Parts of datetimes and intervals: EXTRACT, DATEPART, YEAR to SEC, days of the week and names.

#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/bifun_date/each_engine.h"

namespace {

using bifun_date::expect_results;
using bifun_date::with_each_engine;
using contract::evaluate;

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
    with_each_engine([&types] {
        for (const auto& [symbol, value, fields] : types) {
            const std::string column = std::string("NULL ") + value + " " + value;
            for (int code = -1; code <= 15; ++code) {
                const std::string number = std::to_string(code);
                const auto field = fields.find(code);
                const std::string expected =
                    field == fields.end() ? "[0] NULL NULL ? status -6803" : "[0] NULL " + field->second + " " + field->second;
                EXPECT_EQ(evaluate({symbol, {number, column}, {}}), expected) << symbol << ' ' << code;
                EXPECT_EQ(evaluate({symbol, {number, "NULL NULL"}, {}}), "[0] NULL NULL") << symbol << ' ' << code;
            }
            EXPECT_EQ(evaluate({symbol, {"NULL", column}, {}}), "[0] NULL NULL NULL") << symbol;
            EXPECT_EQ(evaluate({symbol, {"NULL=0", value}, {}}), "[0] NULL") << symbol;
            EXPECT_EQ(evaluate({symbol, {"0", "[1]"}, {}}), "[1]") << symbol;
        }
    });
}

TEST(Extract, GivesTheseValues) {
    expect_results({
        "bextract_datetime_va_date | 1 | [7] @2,0,0 -4712-01-01 2024-01-01 9999-12-31 | [1] 9999 -4712 -4712",
        "bextract_datetime_tz_va_date | 12 | 13:45 13:45Z 13:45+00:30 13:45-00:30 13:45-14:00 | [1] 0 0 0 0 -14",
        "bextract_datetime_tz_va_date | 13 | 13:45 13:45Z 13:45+00:30 13:45-00:30 13:45-14:00 | [1] 0 0 30 -30 0",
        "bextract_time_ex_va_date | 6 | 00:00 23:59:59.000001 2024-02-29T13:45:06.5 | [1] 0 59.000000999999997 6.5",
        "bextract_iv_dt_ex_va_date | 6 | 1/2/3/4/250000 0/0/0/0/-1 0/0/0/100/0 | [1] 4.25 -9.9999999999999995e-07 100",
        "bextract_str_va_date | 1 | 2024-02-29 x '' NULL 13:45 __ 2023-02-29 20240229T1345 | [0] 2024 NULL NULL NULL 1900 NULL NULL 2024",
        "bextract_str_va_date | 6 | x NULL 2024 | [0] NULL NULL NULL",
        // nothing to refuse
        "bextract_str_va_date | 6 | x 2024-02-29 x | [0] NULL NULL ? status -6803",
        "bextract_str_va_date | 3 | @1,0 2024-02-29__ 1582-10-15 | [1] 15 29",
        "bextract_str_ex_va_date | 6 | 1582-10-05 13:45:00.25 | [0] NULL 0.25",
        "bweekday_str_a_date | 2000-10-01 2000-09-30 x NULL 1582-10-04 1582-10-15 | [0] 0 6 NULL NULL 4 5",
    });
}

TEST(Components, OfDatetimes) {
    expect_results({
        "byear_a_date | [7] -4712-01-01 2024-12-31T23:59:58.999999+14:00 1582-10-15T00:00:01 | [7] -4712 2024 1582",
        "bmonth_a_date | [7] -4712-01-01 2024-12-31T23:59:58.999999+14:00 1582-10-15T00:00:01 | [7] 1 12 10",
        "bday_a_date | [7] -4712-01-01 2024-12-31T23:59:58.999999+14:00 1582-10-15T00:00:01 | [7] 1 31 15",
        "bdayofmonth_a_date | [7] -4712-01-01 2024-12-31T23:59:58.999999+14:00 1582-10-15T00:00:01 | [7] 1 31 15",
        "bhour_a_date | [7] -4712-01-01 2024-12-31T23:59:58.999999+14:00 1582-10-15T00:00:01 | [7] 0 23 0",
        "bmin_a_date | [7] -4712-01-01 2024-12-31T23:59:58.999999+14:00 1582-10-15T00:00:01 | [7] 0 59 0",
        "bsec_a_date | [7] -4712-01-01 2024-12-31T23:59:58.999999+14:00 1582-10-15T00:00:01 | [7] 0 58 1",
        "bdayofyear_a_date | [7] -4712-01-01 2024-12-31T23:59:58.999999+14:00 1582-10-15T00:00:01 | [7] 1 366 278",
        "bquarter_zqtime_a_date | 2024-01-31 2024-03-31 2024-04-01 2024-06-30 2024-07-01 2024-09-30 2024-10-01 2024-12-31 | [1] 1 1 2 2 3 "
        "3 4 4",
        "bdatepart1_va_date | 8 | 2024-01-31 2024-03-31 2024-04-01 2024-06-30 2024-07-01 2024-09-30 2024-10-01 2024-12-31 | [1] 1 1 2 2 3 "
        "3 4 4",
        "bdatepart1_va_date | 7 | 12:00:00.123456 12:00:00.000999 12:00:00.999999 | [1] 123 0 999",
        "bdatepart1_va_date | 9 | 2024-02-01 2023-12-31 1582-12-31 1500-12-31 | [1] 32 365 355 366",
        // Weeks begin on Sunday and 1 January is in week 1.
        "bdatepart1_va_date | 10 | 2024-01-06 2024-01-07 2024-12-31 2000-12-30 2000-12-31 2022-01-01 2022-01-02 | [1] 1 2 53 53 54 1 2",
        "bmonth_a_date | @1,1,0 2024-01-31 NULL | [0] NULL NULL 1",
        "bhour_a_date | [9] | [9]",
    });
}

// Days of the week by the rule of whole days since a Sunday, and by the engine, over the changeover and the ends of the range.
TEST(DayOfWeek, GoesOnOverTheChangeover) {
    expect_results({
        "bdayofweek_a_date | 2000-10-01 2000-10-07T23:59:59 2000-09-30 2024-02-29 NULL | [0] 1 7 7 5 NULL",
        "bdayofweek_a_date | 1582-10-03 1582-10-04T12:00 1582-10-15 1582-10-16 -4712-01-01 -4712-01-07 0000-01-01 | [1] 4 5 6 7 2 1 5",
        "bdatepart1_va_date | 11 | 1582-10-03 1582-10-04T12:00 1582-10-15 1582-10-16 -4712-01-01 -4712-01-07 0000-01-01 | [1] 4 5 6 7 2 1 "
        "5",
        "bdayname_a_date | 2000-10-01 2000-10-02 2000-10-03 2000-10-04 2000-10-05 2000-10-06 2000-10-07 1582-10-04 | [1] Sunday Monday "
        "Tuesday Wednesday Thursday Friday Saturday Thursday",
        "bmonthname_a_date | 2024-01-01 2024-02-01 2024-03-01 2024-04-01 2024-05-01 2024-06-01 2024-07-01 2024-08-01 2024-09-01 "
        "2024-10-01 2024-11-01 NULL 2024-12-01 | [0] January February March April May June July August September October November NULL "
        "December",
    });

    std::vector<zqtime> days(2000);
    for (const char* first : {"-4712-01-01", "1580-01-01", "9994-07-11"}) {
        ASSERT_EQ(zqtime_from_char_ex(reinterpret_cast<const std::uint8_t*>(first), static_cast<std::uint32_t>(std::string(first).size()),
                                      days.data()),
                  0);
        for (std::size_t i = 1; i < days.size(); ++i) {
            ASSERT_EQ(zqtime_add_by_fmt(&days[i - 1], ZQTIME_DAY, 1, &days[i]), 0);
        }
        const zqengine::column_pointer column = contract::column_of(bifun::value_type::DATETIME, days);
        with_each_engine([&column, &days] {
            const auto row_count = static_cast<std::uint32_t>(days.size());
            const contract::outcome numbers =
                contract::call(contract::entry_of("bdayofweek_a_date"), {{.column = column.get()}}, row_count);
            for (std::uint32_t row = 0; row < row_count; ++row) {
                const std::int32_t* const values = zqengine::values_of<std::int32_t>(*numbers.result);
                ASSERT_EQ(values[row], static_cast<std::int32_t>(zqtime_day_of_week(&days[row])) + 1) << row;
                ASSERT_TRUE(row == 0 || values[row] == values[row - 1] % 7 + 1) << row;
            }
        });
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
    with_each_engine([&names] {
        for (const auto& [number, spellings] : names) {
            for (const std::string& name : spellings) {
                EXPECT_EQ(evaluate({"bdatepart_av_date", {"2024-11-23T13:45:06.789123 NULL", name}, {}}),
                          std::string("[0] ") + number + " NULL")
                    << name;
            }
        }
        // Refused before any row is looked at.
        for (const char* name :
             {"w",          "W",    "h",    "H",      "e",       "''",      "_",  "WEEK_",  "y_",          "WEEKS",
              "YE",         "YYY",  "MMM",  "M1",     "DAYS",    "ISOWEEK", "TZ", "YEAR&.", "MICROSECOND", "MILLISECONDS",
              "NANOSECOND", "y*48", "y*49", "y*1000", "WEE\xCB", "\xD9"}) {
            EXPECT_EQ(evaluate({"bdatepart_av_date", {"2024-11-23 NULL", name}, {}}), "[0] NULL NULL status -6803") << name;
            EXPECT_EQ(evaluate({"bdatepart_av_date", {"NULL", name}, {}}), "[0] NULL status -6803") << name;
            EXPECT_EQ(evaluate({"bdatepart_av_date", {"[1]", name}, {}}), "[0] status -6803") << name;
        }
        EXPECT_EQ(evaluate({"bdatepart_av_date", {"2024-11-23 NULL", "NULL"}, {}}), "[0] NULL NULL");
        EXPECT_EQ(evaluate({"bdatepart_av_date", {"2024-11-23 NULL", "NULL=WEEKS"}, {}}), "[0] NULL NULL");
    });
}

// A name with a blank that is stored, which a case written as text cannot have.
TEST(Datepart, TrimsNoBlanks) {
    const zqengine::column_pointer value = contract::read_column(bifun::value_type::DATETIME, "2024-11-23").column;
    for (const std::string name : {"WEEK ", " WEEK", "y ", " ", "WEEK"}) {
        const zqengine::column_pointer names(zqengine::create_column(bifun::value_type::VARCHAR, 1));
        names->data.null_flags[0] = 1;
        ASSERT_EQ(bdta3_col_assign_str(nullptr, nullptr, &names->column, 0, reinterpret_cast<const std::uint8_t*>(name.data()),
                                       static_cast<std::uint32_t>(name.size()), 0),
                  0);
        const contract::generated_constant constant = contract::constant_of_row(*names, 0);
        EXPECT_EQ(contract::call(contract::entry_of("bdatepart_av_date"), {{.column = value.get()}, {.constant = &constant}}, 1).status,
                  name == "WEEK" ? 0 : -6803);
    }
}

} // namespace
