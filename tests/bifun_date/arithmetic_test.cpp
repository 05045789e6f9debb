// Datetimes moved by an amount, and intervals made from numbers.

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/bifun_date/each_engine.h"

namespace {

using bifun_date::expect_results;
using bifun_date::with_each_engine;
using contract::evaluate;

TEST(Dateadd, AddsFields) {
    expect_results({
        "bdateadd_vaa_date | 1 | 1 -1 NULL 0 4 | 2024-02-29T13:45:06.5+01:00 NULL 2024-02-29 2024-02-29 2024-02-29 | [0] "
        "2025-02-28T13:45:06.5+01:00 NULL NULL 2024-02-29T00:00:00 2028-02-29T00:00:00",
        // Months clamp to the end of the month and to the day after the changeover.
        "bdateadd_vva_date | 2 | 1 | @0,1,2,2,3 2024-01-31 2024-02-29 1582-09-10 2024-12-31 | [1] 2024-02-29T00:00:00 2024-03-29T00:00:00 "
        "1582-10-15T00:00:00 1582-10-15T00:00:00 2025-01-31T00:00:00",
        "bdateadd_vav_date | 8 | [7] 1 -1 | 2024-05-31 | [1] 2024-08-31T00:00:00 2024-02-29T00:00:00",
        "bdateadd_vav_date | 3 | 1 -1 NULL | 1582-10-15T12:00 | [0] 1582-10-16T12:00:00 1582-10-04T12:00:00 NULL",
        "bdateadd_vav_date | 4 | 1 -25 | 2024-02-28T23:30 | [1] 2024-02-29T00:30:00 2024-02-27T22:30:00",
        "bdateadd_vav_date | 5 | 90 -1 | 2024-01-01T00:00:30 | [1] 2024-01-01T01:30:30 2023-12-31T23:59:30",
        "bdateadd_vav_date | 6 | 4294967296 -1 | 2024-01-01 | [1] 2160-02-07T06:28:16 2023-12-31T23:59:59",
        "bdateadd_vav_date | 7 | 1 -1 | 0001-01-01 | [1] 0001-01-01T00:00:00.001 0000-12-31T23:59:59.999",
        "bdateadd_vav_date | 9 | 1 366 | 2023-12-31 | [1] 2024-01-01T00:00:00 2024-12-31T00:00:00",
        "bdateadd_vav_date | 10 | 1 -1 | 1582-10-15 | [1] 1582-10-22T00:00:00 1582-09-28T00:00:00",
        "bdateadd_vav_date | 11 | 2 | 2024-02-28 | [1] 2024-03-01T00:00:00",
        "bdateadd_vav_date | 3 | 1 2 | NULL | [0] NULL NULL",
        "bdateadd_vva_date | 3 | NULL | 2024-01-01 | [0] NULL",
        "bdateadd_vaa_date | NULL | 1 | 2024-01-01 | [0] NULL",
        // Failures stop the batch at their row.
        "bdateadd_vav_date | 3 | 0 NULL 1 0 | 9999-12-31T23:59 | [0] 9999-12-31T23:59:00 NULL NULL ? status -6118",
        "bdateadd_vva_date | 6 | -1 | 2024-01-01 -4712-01-01 2024-01-01 | [0] 2023-12-31T23:59:59 NULL ? status -6118",
        "bdateadd_vav_date | 1 | 9223372036854775807 | 2024-01-01 | [0] NULL status -6118",
        "bdateadd_vav_date | 7 | -9223372036854775808 | 2024-01-01 | [0] NULL status -6118",
        "bdateadd_vav_date | 12 | NULL 1 1 | 2024-01-01 | [0] NULL NULL ? status -6803",
        "bdateadd_vav_date | 0 | 1 | 2024-01-01 | [0] NULL status -6803",
    });
}

TEST(AddDays, TakesFractions) {
    expect_results({
        "badd_days_aa_date | 2024-02-28T12:00Z 1582-10-15 NULL 2024-01-01 2024-01-01 | 1.5 -0.25 1 NULL -0.0 | [0] "
        "2024-03-01T00:00:00+00:00 1582-10-04T18:00:00 NULL NULL 2024-01-01T00:00:00",
        // Half a microsecond is 5.787037E-12 of a day.
        "badd_days_va_date | 2024-01-01 | 5.788e-12 5.786e-12 -5.788e-12 | [1] 2024-01-01T00:00:00.000001 "
        "2024-01-01T00:00:00 2023-12-31T23:59:59.999999",
        "badd_days_va_date | 2024-01-01 | 0.99999999999999 -0.99999999999999 | [1] 2024-01-02T00:00:00 2023-12-31T00:00:00",
        "badd_days_av_date | [7] @1,0 2024-01-01 2023-12-31 | 31 | [1] 2024-01-31T00:00:00 2024-02-01T00:00:00",
        "badd_days_av_date | 2024-01-01 NULL | NULL | [0] NULL NULL",
        "badd_days_va_date | NULL | 1 2 | [0] NULL NULL",
        "badd_days_va_date | 2024-01-01 | 1 nan 1 | [0] 2024-01-02T00:00:00 NULL ? status -6803",
        "badd_days_va_date | 2024-01-01 | -inf | [0] NULL status -6803",
        "badd_days_va_date | 2024-01-01 | 1e300 | [0] NULL status -6118",
        "badd_days_av_date | 9999-12-30 9999-12-31 9999-12-30 | 1 | [0] 9999-12-31T00:00:00 NULL ? status -6118",
        "badd_days_av_date | -4712-01-01T00:00:01 | -0.5 | [0] NULL status -6118",
    });
}

// 7 x 613566757 is 2^32 + 3.
TEST(AddWeeks, WrapsItsDaysIn32Bits) {
    expect_results({
        "badd_weeks_aa_date | 2024-02-22 2024-02-29T13:45 NULL | 1 -1 NULL | [0] 2024-02-29T00:00:00 2024-02-22T13:45:00 NULL",
        "badd_weeks_va_date | 2024-01-01 | 613566757 613566756 -613566757 -613566756 2147483647 | [0] 2024-01-04T00:00:00 "
        "2023-12-28T00:00:00 2023-12-29T00:00:00 2024-01-05T00:00:00 NULL status -6118",
        "badd_weeks_av_date | 2024-01-01 | -2147483648 | [0] NULL status -6118",
        "badd_weeks_av_date | @1,0 1582-10-04 NULL | 1 | [0] NULL 1582-10-21T00:00:00",
        "badd_weeks_av_date | 2024-01-01 | NULL | [0] NULL",
    });
}

TEST(AddMonths, KeepsTheLastDayOfTheMonth) {
    expect_results({
        "badd_months_aa_date | 2024-02-29 2023-02-28T13:45+01:00 2024-02-28 2024-01-30 2024-01-31 NULL | 1 1 1 1 -2 1 | [0] "
        "2024-03-31T00:00:00 2023-03-31T13:45:00+01:00 2024-03-28T00:00:00 2024-02-29T00:00:00 2023-11-30T00:00:00 NULL",
        "badd_months_va_date | 1582-09-10 | 0 1 2 NULL | [0] 1582-09-10T00:00:00 1582-10-15T00:00:00 1582-11-10T00:00:00 NULL",
        "badd_months_av_date | 1500-02-29 1500-02-28 | 2400 | [1] 1700-02-28T00:00:00 1700-02-28T00:00:00",
        "badd_months_av_date | 9999-11-30 9999-12-01 9999-11-30 | 1 | [0] 9999-12-31T00:00:00 NULL ? status -6118",
        "badd_months_va_date | -4712-01-31 | 2147483647 | [0] NULL status -6118",
        "badd_months_va_date | -4712-01-31 | -2147483648 | [0] NULL status -6118",
        "badd_months_va_date | NULL | 1 | [0] NULL",
    });
}

TEST(DateAdd, AddsAndSubtractsYearsAndMonths) {
    expect_results({
        "bdate_add_ym_aa | 2024-02-29T13:45 2024-01-31 NULL 2024-01-31 | 1/0 0/1 1/1 NULL | [0] 2025-02-28T13:45:00 2024-02-29T00:00:00 "
        "NULL NULL",
        "bdate_sub_ym_aa | 2024-03-31 2024-02-29 2023-01-31 | 0/1 4/0 -1/-1 | [1] 2024-02-29T00:00:00 2020-02-29T00:00:00 "
        "2024-02-29T00:00:00",
        // The fields need not have one sign; a last day is not kept last.
        "bdate_add_ym_av | @0,0 2024-02-29 | 1/-11 | [1] 2024-03-29T00:00:00 2024-03-29T00:00:00",
        "bdate_sub_ym_av | 1582-11-10 2024-02-29 | 0/1 | [1] 1582-10-15T00:00:00 2024-01-29T00:00:00",
        "bdate_add_ym_av | 2024-01-01 | 178956970/-2147483647 | [1] 2023-06-01T00:00:00",
        "bdate_sub_ym_av | 2024-01-01 | -2147483648/-2147483648 | [0] NULL status -6118",
        "bdate_add_ym_av | 9999-01-01 9999-12-01 9999-01-01 | 0/1 | [0] 9999-02-01T00:00:00 NULL ? status -6118",
        "bdate_sub_ym_av | 2024-01-01 NULL | NULL | [0] NULL NULL",
    });
}

TEST(LastDay, KeepsTheTime) {
    expect_results({
        "blast_day_a_date | 2024-02-10T13:45 2023-02-28 1900-02-01 1500-02-01 1582-10-04T23:59:59.999999-01:00 NULL 9999-12-01 | [0] "
        "2024-02-29T13:45:00 2023-02-28T00:00:00 1900-02-28T00:00:00 1500-02-29T00:00:00 1582-10-31T23:59:59.999999-01:00 NULL "
        "9999-12-31T00:00:00",
        "blast_day_str_a_date | 2024-02-10T13:45 x NULL 2024-02-30 13:45 | [0] 2024-02-29T13:45:00 NULL NULL NULL 1900-01-31T13:45:00",
        "blast_day_str_a_date | [7] @1,1 x 2024-04-01__ | [7] 2024-04-30T00:00:00 2024-04-30T00:00:00",
    });
}

TEST(NextDay, IsOneToSevenDaysLater) {
    const char* const names[] = {"Sunday", "MONDAY", "tuesday", "WED", "thu", "Friday", "sat"};
    const char* const days[] = {"2024-03-03", "2024-03-04", "2024-03-05", "2024-03-06", "2024-03-07", "2024-03-08", "2024-03-09"};
    with_each_engine([&names, &days] {
        for (int target = 0; target < 7; ++target) {
            for (int from = 0; from < 7; ++from) {
                const int days_later = target > from ? target - from : target + 7 - from;
                const std::string date =
                    "2024-03-" + std::string(3 + from + days_later < 10 ? "0" : "") + std::to_string(3 + from + days_later);
                EXPECT_EQ(evaluate({"bnext_day_av_date", {std::string(days[from]) + "T13:45+01:00", names[target]}, {}}),
                          "[1] " + date + "T13:45:00+01:00");
            }
        }
    });
    expect_results({
        "bnext_day_av_date | 1582-10-03 1582-10-04 NULL | Friday | [0] 1582-10-15T00:00:00 1582-10-15T00:00:00 NULL",
        "bnext_day_av_date | -4712-01-01 | monday | [1] -4712-01-08T00:00:00",
        "bnext_day_av_date | 9999-12-30 9999-12-31 9999-12-30 | Friday | [0] 9999-12-31T00:00:00 NULL ? status -6118",
        // A name is judged before any row is looked at, its length first.
        "bnext_day_av_date | NULL 2024-01-01 | x*19 | [0] NULL NULL status -6145",
        "bnext_day_av_date | NULL 2024-01-01 | x*20 | [0] NULL NULL status -6112",
        "bnext_day_av_date | NULL | x*49 | [0] NULL status -6112",
        "bnext_day_av_date | [1] | x*20 | [0] status -6112",
        "bnext_day_av_date | 2024-01-01 | '' | [0] NULL status -6145",
        "bnext_day_av_date | 2024-01-01 | Mond | [0] NULL status -6145",
        "bnext_day_av_date | 2024-01-01 | Mo | [0] NULL status -6145",
        "bnext_day_av_date | 2024-01-01 | NULL | [0] NULL",
        "bnext_day_av_date | 2024-01-01 | NULL=x*20 | [0] NULL",
    });
}

TEST(Intervals, AreMadeFromNumbers) {
    expect_results({
        "bnumtoivym_av_date | 1.5 -1.5 NULL 0 | YEAR | [0] 1/6 -1/-6 NULL 0/0",
        "bnumtoivym_av_date | [7] @1,0 14.5 -14.5 | month | [1] -1/-3 1/3",
        "bnumtoivym_av_date | 1 2147483648 1 | year | [0] 1/0 NULL ? status -6102",
        "bnumtoivym_av_date | NULL 1 1 | DAY | [0] NULL NULL ? status -6803",
        "bnumtoivym_av_date | 1 NULL | NULL | [0] NULL NULL",
        "bnumtoivym_av_date | 1 | NULL=DAY | [0] NULL",
        "bnumtoivdt_av_date | 1.5 -0.25 NULL | DAY | [0] 1/12/0/0/0 0/-6/0/0/0 NULL",
        "bnumtoivdt_av_date | 25.5 -1 | hour | [1] 1/1/30/0/0 0/-1/0/0/0",
        "bnumtoivdt_av_date | -90.25 | Minute | [1] 0/-1/-30/-15/0",
        "bnumtoivdt_av_date | 86399.9999995 0.0000004 | SECOND | [1] 1/0/0/0/0 0/0/0/0/0",
        "bnumtoivdt_av_date | 1 | '' | [0] NULL status -6803",
        "bnumtoivdt_av_date | 1 NULL | NULL | [0] NULL NULL",
    });

    // Over 48 bytes a constant lies elsewhere.
    const std::string unit = "SECOND" + std::string(50, ' ');
    const zqengine::column_pointer number = contract::read_column(bifun::value_type::DECIMAL, "61.5").column;
    const zqengine::column_pointer units(zqengine::create_column(bifun::value_type::VARCHAR, 1));
    units->data.null_flags[0] = 1;
    ASSERT_EQ(bdta3_col_assign_str(nullptr, nullptr, &units->column, 0, reinterpret_cast<const std::uint8_t*>(unit.data()),
                                   static_cast<std::uint32_t>(unit.size()), 0),
              0);
    const contract::generated_constant constant = contract::constant_of_row(*units, 0);
    const contract::outcome outcome =
        contract::call(contract::entry_of("bnumtoivdt_av_date"), {{.column = number.get()}, {.constant = &constant}}, 1);
    const bifun_interval_dt expected{0, 0, 1, 1, 500'000};
    EXPECT_EQ(std::memcmp(zqengine::values_of<bifun_interval_dt>(*outcome.result), &expected, sizeof expected), 0);
}

} // namespace
