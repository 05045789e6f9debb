// SPDX-License-Identifier: Apache-2.0
// Dates and times as text and back, from query to printed result.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

TEST(DateFormatCalls, WithoutAFormat) {
    expect_shown({
        {"TO_CHAR(DATE '2024-02-29') ; TO_CHAR(TIME '10:00:01.5') ; TO_CHAR(TIMESTAMP '-0044-02-29 10:00:01.5')",
         R"("2024-02-29", "10:00:01", "-044-02-29 10:00:01")"},
        {"TO_CHAR(TIMESTAMP '2024-02-29 10:00-03:30') ; TO_CHAR(TIME '10:00+02')", R"("2024-02-29 10:00:00 -03:30", "10:00:00 +02:00")"},
        {"TO_CHAR(TIME '10:00:01.5') ; TO_CHAR(TIMESTAMP '2024-02-29 10:00:01.001234+01') ; TO_CHAR(DATE '2024-02-29')",
         R"("10:00:01.500000", "2024-02-29 10:00:01.001234 +01:00", "2024-02-29")",
         {"--set", "param.529=1"}},
        {"TO_DATE('2024/02/29') ; TO_DATE('20240229 10:00:00') ; TO_DATE('1582-10-10') ; TO_TIMESTAMP('2024-2-9 1:2:3.5')",
         R"("2024-02-29", "2024-02-29", "1582-10-15", "2024-02-09 01:02:03.5")"},
        {"TO_DT_TZ('2024-02-29 13:45-03:30') ; TO_DT_TZ('2024-02-29') ; TO_DT_TZ('soon')",
         R"("2024-02-29 13:45:00-03:30", "2024-02-29 00:00:00+08:00", null)",
         {"--set", "time_zone=+08:00"}},
        {"TO_DATE(NULL) ; TO_DATE('2024', NULL)", "null, null"},
    });
}

TEST(DateFormatCalls, Formats) {
    expect_shown({
        {"TO_CHAR(DATE '2024-02-29', 'FMDay, DDth Month YYYY') ; TO_CHAR(TIMESTAMP '2024-02-29 13:05:06.5', 'HH:MI:SS.FF2 am')",
         R"("Thursday, 29th February 2024", "01:05:06.50 pm")"},
        {"TO_CHAR(TIMESTAMP '2024-02-29 13:05-03:30', 'TZH') ; TO_CHAR(TIME '10:00', 'HH24 TZR')",
         R"("-03", "10 +02:00")",
         {"--set", "time_zone=+02:00"}},
        {"TO_CHAR(DATE '2024-02-29', 'FMMonth DD', 'NLS_DATE_LANGUAGE = CHINESE') ; TO_CHAR(DATE '2024-02-29', '')", R"("2月 29", null)"},
        {"TO_CHAR('2024-02-29 10:00', 'DD.MM') ; TO_CHAR('1234.5', '9,999.99') ; TO_CHAR('soon', 'YYYY')", R"("29.02", " 1,234.50", null)"},
        {"DATE_FORMAT(TIMESTAMP '2024-02-29 13:05:06', '%W %D %M, %r') ; FROM_UNIXTIME(86399, '%H:%i') ; FROM_UNIXTIME(-1, '%Y')",
         R"("Thursday 29th February, 01:05:06 PM", "23:59", null)"},
        {"TO_DATE('29 Feb 2024', 'DD MON YYYY') ; TO_DATE('2024-02-29 13:45', 'YYYY-MM-DD HH24:MI')",
         R"("2024-02-29", "2024-02-29 13:45:00")"},
        {"TO_DATE('2024 2月 29', 'YYYY MON DD', 'NLS_DATE_LANGUAGE=CHINESE') ; TO_DT_TZ('2024-02-29 -08', 'YYYY-MM-DD TZH')",
         R"("2024-02-29", "2024-02-29 00:00:00-08:00")"},
    });
}

TEST(DateFormatCalls, SessionFormats) {
    expect_shown({
        {"TO_CHAR(DATE '2024-02-29') ; TO_DATE('01.03.2024')", R"("29.02.2024", "2024-03-01")", {"--set", "date_format=DD.MM.YYYY"}},
        {"TO_CHAR(TIME '10:05') ; TO_CHAR(TIMESTAMP '2024-02-29 10:05')",
         R"("10h05", "2024-02-29 10:05:00")",
         {"--set", "time_format=HH24\"h\"MI"}},
        {"TO_CHAR(TIMESTAMP '2024-02-29 10:05') ; TO_TIMESTAMP('3月 2024')",
         R"("2月 2024", "2024-03-01 00:00:00")",
         {"--set", "date_language=chinese", "--set", "datetime_format=FMMON YYYY"}},
        {"TO_DATE('2024-02-29 13:45')", R"("2024-02-29")", {"--set", "date_format=YYYY-MM-DD HH24:MI"}},
        {"TO_DATE('2024-02-29 13:45')", R"("2024-02-29 13:45:00")", {"--set", "date_format=YYYY-MM-DD HH24:MI", "--set", "oracle_date=1"}},
        {"TO_CHAR(TIME '10:00+02') ; TO_CHAR(TIMESTAMP '2024-02-29 10:00+02') ; TO_DT_TZ('2024-3 +05')",
         R"("10 +02", "2024-02 +02", "2024-03-01 00:00:00+05:00")",
         {"--set", "time_tz_format=HH24 TZH", "--set", "datetime_tz_format=YYYY-MM TZH"}},
    });
}

TEST(DateFormatCalls, BadFormats) {
    expect_shown({
        {"TO_CHAR(DATE '2024-02-29', 'YYYY XQ DD')",
         "35, near 'YYYY XQ DD': date formats have no element \"XQ\" at position 6; text stands in \"double quotes\""},
        {"TO_CHAR(DATE '2024-02-29', '年XQ')", "35, near '年XQ': date formats have no element \"XQ\" at position 2; ..."},
        {"TO_CHAR(DATE '2024-02-29', 'YYYY \"x')",
         "35, near 'YYYY \"x': the date format lacks the quote that closes \"\"x\" at position 6"},
        {"TO_CHAR(DATE '2024-02-29', 'DAYTH')",
         "35, near 'DAYTH': in the date format \"TH\" at position 4 stands behind what is no number"},
        {"DATE_FORMAT(DATE '2024-02-29', '%Y %')", "39, near '%Y %': the date format ends in \"%\" at position 4; %% is a percent sign"},
        {"TO_CHAR('2024-02-29', 'zzz')", "30, near 'zzz': date formats have no element \"zzz\" at position 1; ..."},
        {"TO_CHAR(TIME '10:00', 'HH24 YYYY')", "30, near 'HH24 YYYY': TIME has no date, and the date format has \"YYYY\" at position 6"},
        {"TO_DATE('2024', 'YYYY YY')",
         "24, near 'YYYY YY': in the date format \"YY\" at position 6 says again what \"YYYY\" at position 1 says"},
        {"TO_DATE('10 AM', 'HH24 AM')", "25, near 'HH24 AM': in the date format \"AM\" at position 6 contradicts \"HH24\" at position 1"},
        {"TO_DATE('2024 1', 'YYYY WW')", "26, near 'YYYY WW': by the date format \"WW\" at position 6 cannot be read"},
        {"TO_DATE('44', 'BC')", "22, near 'BC': in the date format \"BC\" at position 1 needs a year beside it"},
        {"TO_DATE('2024 +01', 'YYYY TZH')",
         "28, near 'YYYY TZH': a date has no time zone, and the date format has \"TZH\" at position 6; TO_DT_TZ reads one"},
        {"TO_DATE('1')",
         "TO_DATE: -6127 invalid date format in row 1: by the date format \"Q\" at position 1 cannot be read",
         {"--set", "date_format=Q"}},
        {"TO_TIMESTAMP('2024')",
         "TO_TIMESTAMP: -6127 invalid date format in row 1: a date has no time zone, and the date format has \"TZH\" at position 6; "
         "TO_DT_TZ reads one",
         {"--set", "datetime_format=YYYY TZH"}},
        {"TO_CHAR(TIME '10:00')",
         "--set: time_format: a time has no date, and the date format has \"DD\" at position 6",
         {"--set", "time_format=HH24 DD"}},
    });
}

TEST(DateFormatCalls, TextsThatDoNotMatch) {
    const std::string file = "day\n2024-01-01\n2024-02-01\n2024-13-01\n";
    const std::pair<std::string, std::string> calls[] = {
        {"TO_DATE(day, 'YYYY-MM-DD')",
         "3 (t.csv, line 4): \"2024-13-01\" has no match at position 6, where a month, 1 to 12, (MM) is expected"},
        {"TO_DATE(day)", "3 (t.csv, line 4): \"2024-13-01\" is none; expected is YYYY-MM-DD or YYYYMMDD, ..."},
        {"TO_DATE(day, 'YYYY-MM')", "1 (t.csv, line 2): \"2024-01-01\" goes on at position 8, behind the end of the format"},
        {"TO_DATE(day, 'YYYY-MM-DD-DY')", "1 (t.csv, line 2): \"2024-01-01\" ends where the name of a day (DY) is expected"},
        {"TO_DATE(day, 'YYYY\"年\"MM')", "1 (t.csv, line 2): \"2024-01-01\" has no match at position 5, where \"年\" is expected"},
        {"TO_DATE('2024-02-30', 'YYYY-MM-DD')", "1 (t.csv, line 2): the calendar has no day \"2024-02-30\""},
        {"TO_DATE('Fri 2024-02-29', 'DY YYYY-MM-DD')", "1 (t.csv, line 2): \"Fri 2024-02-29\" is on another day of the week"},
        {"TO_DATE('2月 2024', 'MON YYYY', 'NLS_DATE_LANGUAGE=ENGLISH')",
         "1 (t.csv, line 2): \"2月 2024\" has no match at position 1, where the name of a month (MON) is expected"},
        {"TO_DT_TZ('2024 +15', 'YYYY TZH')", "1 (t.csv, line 2): \"2024 +15\" has a time zone beyond 14 hours"}};
    for (const auto& [call, reason] : calls) {
        const std::string builtin = call.substr(0, call.find('('));
        expect_failure(
            file, joined({"SELECT ", call, " FROM t"}),
            joined({builtin, ": -6118 the datetime is outside years -4712 to 9999, or cannot be formatted or read in row ", reason}),
            {"--types", "day:VARCHAR"});
    }
}

} // namespace
