// SPDX-License-Identifier: Apache-2.0
// Calls with dates, times, timestamps and intervals, from query to printed result.
#include <string>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

TEST(DateCalls, Literals) {
    expect_shown({
        {"TIME '10:00+02' ; TIME WITH TIME ZONE '10:00' ; TIMESTAMP '2024-02-29 10:00:00.25 +05:30' ; DATETIME '2024-02-29 10:00'",
         R"("10:00:00+02:00", "10:00:00+00:00", "2024-02-29 10:00:00.25+05:30", "2024-02-29 10:00:00")"},
        {"TIMESTAMP WITH TIME ZONE '2024-02-29'", R"("2024-02-29 00:00:00+08:00")", {"--set", "time_zone=+08:00"}},
        {"INTERVAL '1-2' YEAR TO MONTH ; INTERVAL '14' MONTH ; INTERVAL '-3' YEAR ; INTERVAL '2147483647-11' YEAR TO MONTH",
         R"("1-02", "1-02", "-3-00", "2147483647-11")"},
        {"INTERVAL '-5' DAY ; INTERVAL '36' HOUR ; INTERVAL '90' MINUTE ; INTERVAL '-0.000001' SECOND ; INTERVAL '-59.96' SECOND(1)",
         R"("-5 00:00:00", "1 12:00:00", "0 01:30:00", "-0 00:00:00.000001", "-0 00:01:00")"},
        {"INTERVAL '1 02' DAY TO HOUR ; INTERVAL '1 02:03' DAY TO MINUTE ; INTERVAL '-1 02:03:04.5' DAY TO SECOND",
         R"("1 02:00:00", "1 02:03:00", "-1 02:03:04.5")"},
        {"INTERVAL '25:30' HOUR TO MINUTE ; INTERVAL '1:30:15.25' HOUR TO SECOND ; INTERVAL '90:30' MINUTE TO SECOND",
         R"("1 01:30:00", "0 01:30:15.25", "0 01:30:30")"},
        {"INTERVAL '1-12' YEAR TO MONTH", "8, near INTERVAL: the text cannot be read as INTERVAL YEAR TO MONTH"},
        {"INTERVAL '2147483648' DAY", "8, near INTERVAL: the text cannot be read as INTERVAL DAY"},
        {"DATE '2024-02-29 10:00'", "8, near DATE: the text cannot be read as DATE"},
    });
}

TEST(DateCalls, Extract) {
    const std::string zoned = "TIMESTAMP '2024-02-29 13:45:06.5-03:30'";
    expect_shown({
        {"EXTRACT(YEAR FROM DATE '2024-02-29') ; EXTRACT(MINUTE FROM TIME '13:45:06') ; EXTRACT(SECOND FROM TIME '13:45:06.5')",
         "2024, 45, 6.5"},
        {"EXTRACT(HOUR FROM TIMESTAMP '2024-02-29 13:45:06') ; EXTRACT(TIMEZONE_HOUR FROM TIME '10:00+02')", "13, 2"},
        {joined({"EXTRACT(DAY FROM ", zoned, ") ; EXTRACT(SECOND FROM ", zoned, ") ; EXTRACT(TIMEZONE_HOUR FROM ", zoned,
                 ") ; EXTRACT(TIMEZONE_MINUTE FROM ", zoned, ")"}),
         "29, 6.5, -3, -30"},
        {"EXTRACT(MONTH FROM INTERVAL '-1-2' YEAR TO MONTH) ; EXTRACT(HOUR FROM INTERVAL '1 02:03:04.5' DAY TO SECOND)", "-2, 2"},
        {"EXTRACT(SECOND FROM INTERVAL '-4.25' SECOND) ; EXTRACT(MICROSECOND FROM INTERVAL '4.25' SECOND)", "-4.25, 250000"},
        {"EXTRACT('month' FROM '2024-02-29') ; EXTRACT(SECOND FROM '13:45:06.5') ; EXTRACT(DAY FROM 'x') ; EXTRACT(YEAR FROM NULL)",
         "2, 6.5, null, null"},
        {"EXTRACT(HOUR FROM DATE '2024-02-29')", "16, near HOUR: DATE has no field HOUR; it has YEAR, MONTH, DAY"},
        {"EXTRACT(DAY FROM INTERVAL '1' YEAR)", "16, near DAY: INTERVAL YEAR TO MONTH has no field DAY; it has YEAR, MONTH"},
        {"EXTRACT(TIMEZONE_HOUR FROM TIME '10:00')",
         "16, near TIMEZONE_HOUR: TIME has no field TIMEZONE_HOUR; it has HOUR, MINUTE, SECOND"},
        {"EXTRACT(SECND FROM TIME '10:00')", "16, near SECND: EXTRACT has no field SECND; did you mean SECOND?"},
        {"EXTRACT(YEAR FROM 5)", "26, near 5: EXTRACT takes dates, times, timestamps, intervals and text, not INT"},
    });
}

TEST(DateCalls, Parts) {
    expect_shown({
        {"YEAR(DATE '-0001-02-03') ; MONTH('2024-02-29') ; DAY(TIMESTAMP '2024-02-29 10:00') ; DAYOFMONTH(DATE '2024-02-29')",
         "-1, 2, 29, 29"},
        {"HOUR(TIME '13:45:06') ; HOUR(DATE '2024-02-29') ; MIN(TIME '13:45:06') ; SEC(TIME '13:45:06.9')", "13, 0, 45, 6"},
        {"WEEKDAY('soon') ; DAYNAME(DATE '2024-02-28') ; MONTHNAME(DATE '2024-05-01')", R"(null, "Wednesday", "May")"},
        {"DATEPART(week, DATE '2024-01-07') ; DATEPART(\"Week\", DATE '2024-01-07') ; DATEPART('wk', DATE '2024-01-07')", "2, 2, 2"},
        {"YEAR(TIME '10:00')", "13, near TIME: YEAR needs a date here, and this is of type TIME"},
        {"YEAR('x')", "13, near 'x': this text cannot be read as a date, time or timestamp"},
        {"DATEPART(wek, DATE '2024-01-01')", "17, near wek: DATEPART has no field WEK; did you mean WEEK?"},
        {"DATEPART('week ', DATE '2024-01-01')", "17, near 'week ': DATEPART has no field 'week '; did you mean WEEK?"},
        {"DATEPART(3, DATE '2024-01-01')", "17, near 3: the first argument names a field, such as DAY"},
        {"DATEPART('day', 5)", "8, near DATEPART: DATEPART does not take (field, INT); it takes (field, DATETIME)"},
        {"DATEPART(MONTH, TIME '10:00')", "24, near TIME: DATEPART needs a date here, and this is of type TIME"},
        {"WEEKDAY(DATE '2024-01-01')",
         "8, near WEEKDAY: WEEKDAY does not take (DATE); it takes (VARCHAR); use DAYOFWEEK(d), which counts from 1"},
        {"MIN(5)", "8, near MIN: MIN does not take (INT); it takes (DATETIME); it is the minute of a time, and there are no aggregates"},
    });
}

// A date stays a date unless what is added can have a time of day.
TEST(DateCalls, Arithmetic) {
    expect_shown({
        {"DATEADD(MONTH, 1, DATE '2024-01-31') ; DATEADD('qq', -1, DATE '2024-01-31') ; DATEADD(hh, 25, DATE '2024-01-31')",
         R"("2024-02-29", "2023-10-31", "2024-02-01 01:00:00")"},
        {"DATEADD(SECOND, 3000000000, TIMESTAMP '2024-01-01 00:00+01:00') ; DATEADD(MINUTE, 90, TIME '23:00')",
         R"("2119-01-25 05:20:00+01:00", "00:30:00")"},
        {"DATEADD(DAY, NVL(NULL, 1), '2024-02-28') ; ADD_DAYS(DATE '2024-02-28', 2) ; ADD_DAYS(DATE '2024-02-28', 1.5)",
         R"("2024-02-29", "2024-03-01", "2024-02-29 12:00:00")"},
        {"ADD_DAYS(TIMESTAMP '2024-02-28 12:00', -0.25e0) ; ADD_WEEKS(DATE '2024-02-22', 1) ; ADD_MONTHS(DATE '2024-02-29', 1)",
         R"("2024-02-28 06:00:00", "2024-02-29", "2024-03-31")"},
        {"DATE_ADD(DATE '2024-02-29', INTERVAL '1-1' YEAR TO MONTH) ; DATE_SUB('2024-03-31', INTERVAL '1' MONTH)",
         R"("2025-03-29", "2024-02-29")"},
        {"LAST_DAY(TIMESTAMP '2024-02-10 13:45') ; LAST_DAY('2024-02-10') ; LAST_DAY('2024-02-10 13:45') ; LAST_DAY('x')",
         R"("2024-02-29 13:45:00", "2024-02-29", "2024-02-29 13:45:00", null)"},
        {"NEXT_DAY(DATE '2024-02-26', 'MONDAY') ; NEXT_DAY(DATE '2024-02-29', 'sun')", R"("2024-03-04", "2024-03-03")"},
        {"NUMTOYMINTERVAL(-1.5, 'YEAR') ; NUMTODSINTERVAL(1.5, 'day') ; DATE_ADD(DATE '2024-02-29', NUMTOYMINTERVAL(1, 'month'))",
         R"("-1-06", "1 12:00:00", "2024-03-29")"},
        {"ADD_MONTHS(DATE '9999-12-01', 1)",
         "ADD_MONTHS: -6118 the datetime is outside years -4712 to 9999, or cannot be formatted or read in row 1"},
        {"NEXT_DAY(DATE '2024-02-29', 'FUNDAY')", "NEXT_DAY: -6145 unknown day name: there are Monday to Sunday and Mon to Sun"},
        {"DATE_ADD(DATE '2024-01-01', INTERVAL '1' DAY)",
         "8, near DATE_ADD: DATE_ADD does not take (DATE, INTERVAL DAY TO SECOND); it takes (DATETIME, INTERVAL YEAR TO MONTH); ..."},
        {"DATEADD(DAY, 1.5, DATE '2024-01-01')", "8, near DATEADD: DATEADD does not take (field, DECIMAL, DATE); it takes (field, BIGINT, "
                                                 "DATETIME); CAST(x AS BIGINT) makes one of it"},
        {"ADD_MONTHS(TIME '10:00', 1)", "19, near TIME: ADD_MONTHS needs a date here, and this is of type TIME"},
    });
}

TEST(DateCalls, Differences) {
    expect_shown({
        {"DATEDIFF(YEAR, DATE '2023-12-31', DATE '2024-01-01') ; DATEDIFF(day, '2024-01-31', DATE '2024-03-01')", "1, 30"},
        {"DATEDIFF(MI, TIME '10:00', TIME '09:30') ; BIGDATEDIFF(SECOND, DATE '1900-01-01', DATE '2024-01-01')", "-30, 3913056000"},
        {"DAYS_BETWEEN(DATE '2024-03-01', TIMESTAMP '2024-02-01 23:00') ; WEEKS_BETWEEN(DATE '2024-03-03', DATE '2024-03-02')", "29, 1"},
        {"MONTHS_BETWEEN(DATE '2024-03-31', DATE '2024-02-29') ; YEARS_BETWEEN(DATE '2024-01-01', DATE '2023-12-31')", "1, 1"},
        {"DATEDIFF(HOUR, DATE '2024-01-01', TIME '10:00')", "42, near TIME: DATEDIFF cannot have DATE and TIME"},
    });
}

// A time shows no date, and goes round the clock.
TEST(DateCalls, TimesHaveNoDate) {
    expect_shown({
        {"DATEADD(HOUR, 2, TIME '23:00') = TIME '01:00' ; DATEADD(HOUR, 2, TIME '23:00') IN (TIME '01:00')", "true, true"},
        {"DATEDIFF(MINUTE, DATEADD(HOUR, 2, TIME '23:00'), TIME '01:30') ; GREATEST(DATEADD(HOUR, 2, TIME '23:00'), TIME '02:00')",
         R"(30, "02:00:00")"},
        {"DATEADD(HOUR, 1000000000000, TIME '23:00') ; DATEADD(MINUTE, -1, '00:00') ; DATEADD(MS, -9223372036854775808, TIME '00:00')",
         R"("15:00:00", "23:59:00", "16:47:04.192")"},
        {"DATEADD(SECOND, ABS(-86401), TIME '23:59:59') ; DATEADD(HOUR, -25, TIME '00:30+02')", R"("00:00:00", "23:30:00+02:00")"},
        {"ROUND(TIME '23:45', 'HH') = TIME '00:00' ; TRUNC(TIME '13:45:06', 'MI') ; TRUNC(TIME '13:45', 'CC') = TIME '00:00'",
         R"(true, "13:45:00", true)"},
    });
    expect_answer("t,n\n23:00,2\n12:00,9000000000\n,\n", "SELECT DATEADD(HOUR, n, t) a FROM t", "a\n01:00:00\n12:00:00\n\n");
}

TEST(DateCalls, TruncAndRound) {
    expect_shown({
        {"TRUNC(DATE '2024-02-29', 'MM') ; TRUNC(TIMESTAMP '2024-02-29 13:45', 'hh') ; TRUNC(TIMESTAMP '2024-02-29 13:45')",
         R"("2024-02-01", "2024-02-29 13:00:00", "2024-02-29 00:00:00")"},
        {"ROUND(DATE '2024-05-16', 'Q') ; ROUND(TIMESTAMP '2024-02-29 12:00') ; TRUNC(TIMESTAMP '2024-02-29 13:45+02', 'YEAR')",
         R"("2024-07-01", "2024-03-01 00:00:00", "2024-01-01 00:00:00+02:00")"},
        {"TRUNC('2024-02-29 10:00') ; TRUNC('2024-02-29 10:00', 'IW') ; TRUNC('129.99', '-1') ; ROUND('129.95', '1') ; ROUND('0.5')",
         R"("2024-02-29 00:00:00", "2024-02-26 00:00:00", "120", "130.0", "1")"},
        {"TRUNC('soon') ; TRUNC(NULL, 'MM') ; TRUNC(DATE '2024-02-29', NULL) ; TRUNC(7.89, 1)", "null, null, null, 7.8"},
        {"TRUNC(DATE '2024-02-29', 'MONTHS')", "33, near 'MONTHS': TRUNC has no unit 'MONTHS'; write 'MONTH'"},
        {"ROUND('129.95', '1.5')", "24, near '1.5': ROUND has no unit '1.5'; there are CC, ..."},
        {"ROUND(DATE '9999-12-31', 'MM')", "ROUND: -6803 an argument is outside the function's domain in row 1"},
    });
}

TEST(DateCalls, Numbers) {
    expect_shown({
        {"TO_DATETIME(2024, 1, 31, 25, 0) ; TO_DATETIME(2024, 3, 0, 0, -1)", R"("2024-02-01 01:00:00", "2024-02-28 23:59:00")"},
        {"TO_DATETIME(1, 1, 0, 0, 0)", "TO_DATETIME: -6132 the resulting year is 0 in row 1"},
        {"FROM_UNIXTIME(1709210096) ; FROM_UNIXTIME(-1)", R"("2024-02-29 12:34:56", null)"},
        {"FROM_UNIXTIME(1709210096) ; UNIX_TIMESTAMP(TIMESTAMP '2024-02-29 20:34:56') ; UNIX_TIMESTAMP('2024-02-29 20:34:56')",
         R"("2024-02-29 20:34:56", 1709210096, 1709210096)",
         {"--set", "time_zone=+08:00"}},
        {"SEC_TO_TIME(-3661) ; SEC_TO_TIME(2147483647) ; TIME_TO_SEC(SEC_TO_TIME(360000)) ; TIME_TO_SEC(TIME '01:01:01')",
         R"("01:01:01", "596523:14:07", 360000, 3661)"},
        {"NUMTODSINTERVAL(1, 'MONTH')", "27, near 'MONTH': NUMTODSINTERVAL has no unit 'MONTH'; there are DAY, HOUR, MINUTE, SECOND"},
        {"BIGDATEDIFF(DW, DATE '2024-02-29', DATE '2024-03-01')", "20, near DW: BIGDATEDIFF has no field DW; ..."},
    });
}

TEST(DateCalls, PeriodsAndExtremes) {
    expect_shown({
        {"(DATE '2024-01-01', DATE '2024-01-05') OVERLAPS (DATE '2024-01-09', TIMESTAMP '2024-01-05 00:00')", "true"},
        {"(DATE '2024-01-01', INTERVAL '4' DAY) OVERLAPS ('2024-01-06', INTERVAL '1' DAY)", "false"},
        {"(DATE '2024-01-31', INTERVAL '1' MONTH) OVERLAPS (DATE '2024-02-29', INTERVAL '0' MONTH)", "true"},
        {"(DATE '2024-01-01', NULL) OVERLAPS (DATE '2024-01-01', DATE '2024-01-03')", "true"},
        {"(TIME '10:00', TIME '11:00') OVERLAPS (TIME '11:00', TIME '12:00')", "true"},
        {"(DATE '2024-01-01', DATE '2024-01-05') OVERLAPS (DATE '2024-01-09', INTERVAL '1' DAY)",
         "47, near OVERLAPS: OVERLAPS does not take (DATE, DATE, DATE, INTERVAL DAY TO SECOND); it takes ..."},
        {"(TIME '10:00', INTERVAL '1' MONTH) OVERLAPS (TIME '11:00', INTERVAL '1' MONTH)",
         "9, near TIME: OVERLAPS needs a date here, and this is of type TIME"},
        {"GREATEST(DATE '2024-02-29', TIMESTAMP '2024-02-29 01:00') ; LEAST(DATE '2024-02-29', '2023-01-01', DATE '2025-01-01')",
         R"("2024-02-29 01:00:00", "2023-01-01")"},
        {"GREATEST(INTERVAL '1' DAY, INTERVAL '25' HOUR, INTERVAL '90' MINUTE) ; LEAST(INTERVAL '1' YEAR, INTERVAL '11' MONTH) ; "
         "LEAST(3, 1.5, 2)",
         R"("1 01:00:00", "0-11", 1.5)"},
    });
    expect_answer("a,b\n2024-01-01,2024-01-05\n2024-03-01,\n,2024-01-01\n",
                  "SELECT (a, b) OVERLAPS (DATE '2024-01-05', DATE '2024-02-01') FROM t",
                  "\"(a, b) OVERLAPS (DATE '2024-01-05', DATE '2024-02-01')\"\ntrue\nfalse\n\n");
}

const std::string shifts = "day,clock,moment,zoned,span,pause\n"
                           "2024-01-31,23:30,2024-01-31 23:30:00.5,2024-01-31 23:30+02:00,1-02,0 08:30:00\n"
                           "1582-10-04,00:00,1582-10-04 00:00,1999-12-31 22:30:00+01:00,-0-11,-1 00:00:00.25\n"
                           ",,,,,\n";
const std::string bad_shift = "2023-02-28,12:00,2023-02-28 12:00,2024-01-31 22:30:00+01:00,+14-00,24:00:00\n";
const arguments spans = {"--types", "span:interval year to  month, pause:INTERVAL DAY TO SECOND"};

TEST(DateCalls, Columns) {
    expect_answer(shifts, "SELECT span s, pause p, zoned z FROM t",
                  "s,p,z\n1-02,0 08:30:00,2024-01-31 23:30:00+02:00\n-0-11,-1 00:00:00.25,1999-12-31 22:30:00+01:00\n,,\n", spans);
    expect_answer(shifts, "SELECT DATEADD(DAY, 1, day) a, DATEADD(HOUR, 1, clock) c, DATE_ADD(moment, span) m, LAST_DAY(zoned) z FROM t",
                  "a,c,m,z\n2024-02-01,00:30:00,2025-03-31 23:30:00.5,2024-01-31 23:30:00+02:00\n"
                  "1582-10-15,01:00:00,1581-11-04 00:00:00,1999-12-31 22:30:00+01:00\n,,,\n",
                  spans);
    expect_answer(shifts,
                  "SELECT EXTRACT(MONTH FROM span) e, EXTRACT(SECOND FROM pause) p, EXTRACT(SECOND FROM moment) m, "
                  "DATEDIFF(DAY, day, DATE '1582-10-15') d FROM t",
                  "e,p,m,d\n2,0,0.5,-161180\n-11,-0.25,0,1\n,,,\n", spans);
    expect_answer(shifts,
                  "SELECT day, span > INTERVAL '0' MONTH a, pause IN (INTERVAL '510' MINUTE, INTERVAL '1' DAY) b, "
                  "zoned BETWEEN '2024-01-31 22:30+01:00' AND '2024-02-01' c FROM t",
                  "day,a,b,c\n2024-01-31,true,true,true\n1582-10-04,false,false,false\n,,,\n", spans);
    expect_answer(shifts + bad_shift, "SELECT 1 FROM t", "1\n1\n1\n1\n1\n", spans); // nothing of the last row is read
    expect_failure(shifts + bad_shift, "SELECT pause FROM t",
                   "t.csv, line 5, column pause: \"24:00:00\" is not of type INTERVAL DAY TO SECOND; ...", spans);
}

// Values with and without zones in one column are text, unless the column is said to have zones: then the session's stands in.
TEST(DateCalls, ZonesOfColumns) {
    const std::string file = "z\n2024-01-31 10:00+02\n2024-01-31 10:00\n";
    const std::string zoned = "z:TIMESTAMP WITH TIME ZONE";
    expect_answer(file, "SELECT z FROM t", file);
    expect_answer(file, "SELECT z FROM t", "z\n2024-01-31 10:00:00+02:00\n2024-01-31 10:00:00-03:30\n",
                  {"--set", "time_zone=-03:30", "--types", zoned});
    expect_failure(file, "SELECT z FROM t", "t.csv, line 2, column z: \"2024-01-31 10:00+02\" is not of type TIMESTAMP; ...",
                   {"--types", "z:TIMESTAMP"});
    expect_answer(file,
                  "SELECT z IN (TIMESTAMP '2024-01-31 09:00', TIMESTAMP '2024-01-31 04:00-05', DATE '2024-01-31') a, "
                  "z > TIMESTAMP '2024-01-31 09:00' b, NVL(TIMESTAMP '2024-01-31 10:00', z) c FROM t",
                  "a,b,c\ntrue,false,2024-01-31 10:00:00+01:00\ntrue,true,2024-01-31 10:00:00+01:00\n",
                  {"--set", "time_zone=+01:00", "--types", zoned});
    expect_answer("u\n2024-01-31 10:00\n", "SELECT u < TIMESTAMP '2024-01-31 09:30Z' a, NVL(u, TIMESTAMP '2024-01-31 09:30Z') b FROM t",
                  "a,b\ntrue,2024-01-31 10:00:00+01:00\n", {"--set", "time_zone=+01:00"});
}

// Zones that are 26 hours apart never have the same date; the parameter alone sets the zone of the current date.
TEST(DateCalls, CurrentDateHasItsZone) {
    const auto today = [](const arguments& options) { return std::stol(shown("TO_DAYS(NULL)", options)); };
    const long east = today({"--set", "time_zone=+14:00"});
    EXPECT_GT(east, today({"--set", "time_zone=-12:00"}));
    EXPECT_GE(today({"--set", "param.650=840", "--set", "time_zone=-12:00"}), east);
    EXPECT_EQ(shown("1", {"--set", "time_zone=+15:00"}),
              "--set: time_zone cannot be \"+15:00\"; it can be Z and what lies between -14:00 and +14:00");
    EXPECT_EQ(shown("1", {"--set", "param.1=2"}), "--set: there is no parameter 1, or it cannot be 2");
}

TEST(DateCalls, IntervalsAsTheyAreWritten) {
    expect_shown({
        {"DATE '2024-02-29' + INTERVAL '1 day' ; DATE '2024-02-29' - INTERVAL ' -2  months ' ; TIME '10:00' + INTERVAL '1.5 seconds'",
         R"("2024-03-01", "2024-04-29", "10:00:01.5")"},
        {"EXTRACT(day FROM NULL) ; DATEPART(week, NULL) ; DATEPART('week', NULL) ; INTERVAL '1:30' MINUTE TO SECOND(2)",
         R"(null, null, null, "0 00:01:30")"},
        {"INTERVAL '1.5 hours'", "8, near INTERVAL: the text cannot be read as INTERVAL HOUR"},
        {"INTERVAL '1 day 2 hours'", "8, near INTERVAL: an interval has one field; write d + ..."},
    });
}

} // namespace
