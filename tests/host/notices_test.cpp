// SPDX-License-Identifier: Apache-2.0
// What is said beside a result that may not be the one that was meant.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

const std::string days = "d,e,n,s\n31.12.2023,2024-01-01,12.7,a\n,n/a,,b\n05.02.2024,2024-01-03,x,c\n";
const std::string as_dates = "; --types \"d:DATE 'DD.MM.YYYY'\" reads the column as dates";

TEST(Notices, TextsThatAreNoDatesForACall) {
    const std::string rest =
        joined({" gives NULL for texts that are no dates such as 2024-02-29, in 2 rows; the first is \"31.12.2023\" in row 1 "
                "(t.csv, line 2)",
                as_dates});
    expect_notices(days,
                   "SELECT EXTRACT(YEAR FROM d) AS y, WEEKDAY(d) AS w, TO_CHAR(LAST_DAY(d), 'DD') AS l, UNIX_TIMESTAMP(d) AS u FROM t "
                   "WHERE d IS NOT NULL",
                   "y,w,l,u\n,,,\n,,,\n",
                   {joined({"EXTRACT", rest}), joined({"WEEKDAY", rest}), joined({"LAST_DAY", rest}), joined({"UNIX_TIMESTAMP", rest})},
                   {"--batch-rows", "2"});
    expect_notices(
        days, "SELECT TRUNC(n) AS n FROM t WHERE s < 'c'", "n\n\n\n",
        {"TRUNC gives NULL for texts that are no dates such as 2024-02-29, in 1 row; the first is \"12.7\" in row 1 (t.csv, line "
         "2); CAST(x AS DECIMAL) makes a number of a text"});
    expect_notices(days, "SELECT LAST_DAY(e) AS l FROM t WHERE s <> 'b'", "l\n2024-01-31 00:00:00\n2024-01-31 00:00:00\n", {});
}

TEST(Notices, TextsThatAreNoNumbersForACall) {
    const std::string file = "a,d,e\n\"1,300.00\",\"$1,234.50\",\"5,00 \u20ac\"\n12 EUR,n/a,x\n,,\n1e3,2,\"-1.234,50 \u20ac\"\n";
    const std::string begin = " gives NULL for texts that are no numbers, in ";
    expect_notices(file, "SELECT TO_NUMBER(a) AS a, TO_DOUBLE(d) AS d, TO_NUMBER(RTRIM(e)) AS e FROM t", "a,d,e\n,,\n,,\n,,\n1000,2,\n",
                   {joined({"TO_NUMBER", begin,
                            "2 rows; the first is \"1,300.00\" in row 1 (t.csv, line 2); TO_NUMBER(REPLACE(a, ',', '')) "
                            "reads such a text"}),
                    joined({"TO_DOUBLE", begin,
                            "1 row; the first is \"$1,234.50\" in row 1 (t.csv, line 2); "
                            "TO_NUMBER(REPLACE(REPLACE(d, '$', ''), ',', '')) reads such a text"}),
                    joined({"TO_NUMBER", begin,
                            "3 rows; the first is \"5,00 \u20ac\" in row 1 (t.csv, line 2); "
                            "TO_NUMBER(REPLACE(REPLACE(x, ' \u20ac', ''), ',', '.')) reads such a text"})});
    expect_answer(file,
                  "SELECT TO_NUMBER(REPLACE(REPLACE(d, '$', ''), ',', '')) AS d, "
                  "TO_NUMBER(REPLACE(REPLACE(REPLACE(e, ' \u20ac', ''), '.', ''), ',', '.')) AS e FROM t WHERE a IS NOT NULL AND e <> 'x'",
                  "d,e\n1234.50,5.00\n2,-1234.50\n");
    expect_notices("a,b\n1 234,\"5,7\"\nz,6\n", "SELECT TO_NUMBER(a) AS a, TO_NUMBER(b) AS b FROM t LIMIT 1", "a,b\n,\n",
                   {joined({"TO_NUMBER", begin,
                            "1 row; the first is \"1 234\" in row 1 (t.csv, line 2); TO_NUMBER(REPLACE(a, ' ', '')) "
                            "reads such a text"}),
                    joined({"TO_NUMBER", begin,
                            "1 row; the first is \"5,7\" in row 1 (t.csv, line 2); --decimal comma reads the column as "
                            "numbers"})});
}

TEST(Notices, ZonesThatFunctionsDoNotSee) {
    const std::string file = "a,b\n2024-01-01 10:00:00+00:00,2024-01-01 12:00:00+02:00\n,2024-01-01 12:00:00Z\n"
                             "2024-01-01T23:30:00-05:00,2024-01-02T05:00:00-05:00\n";
    const std::string way = "; DATEADD(MINUTE, -60 * EXTRACT(TIMEZONE_HOUR FROM t) - EXTRACT(TIMEZONE_MINUTE FROM t), t) has the clock "
                            "time of UTC";
    const std::string begin = " takes the clock time of another zone for one of the session's, in 1 row; the first is ";
    expect_notices(file, "SELECT DATEDIFF(SECOND, a, b) AS s, DAYS_BETWEEN(b, TIMESTAMP '2024-01-01 00:00:00') AS d FROM t",
                   "s,d\n7200,0\n,0\n19800,1\n",
                   {joined({"DATEDIFF takes the clock times of different zones as they are, in 1 row; the first is 2024-01-01 "
                            "10:00:00+00:00 and 2024-01-01 12:00:00+02:00 in row 1 (t.csv, line 2)",
                            way}),
                    joined({"DAYS_BETWEEN takes the clock times of different zones as they are, in 2 rows; the first is 2024-01-01 "
                            "12:00:00+00:00 and 2024-01-01 00:00:00 in row 2 (t.csv, line 3)",
                            way})},
                   {"--set", "time_zone=+02:00"});
    expect_notices(file, "SELECT UNIX_TIMESTAMP(b) AS u, UNIX_TIMESTAMP('2024-01-01 10:00:00+02:00') AS c FROM t LIMIT 1",
                   "u,c\n1704110400,1704103200\n",
                   {joined({"UNIX_TIMESTAMP", begin, "2024-01-01 12:00:00+02:00 in row 1 (t.csv, line 2)", way}),
                    joined({"UNIX_TIMESTAMP", begin, "\"2024-01-01 10:00:00+02:00\" in row 1 (t.csv, line 2)", way})});
    expect_notices(
        file,
        "SELECT UNIX_TIMESTAMP(DATEADD(MINUTE, -60 * EXTRACT(TIMEZONE_HOUR FROM b) - EXTRACT(TIMEZONE_MINUTE FROM b), b)) - "
        "UNIX_TIMESTAMP(TIMESTAMP '2024-01-01 10:00:00') AS u, DATEDIFF(DAY, DATE '2024-01-01', b) AS d, b > a AS o FROM t WHERE "
        "EXTRACT(TIMEZONE_HOUR FROM b) = 0",
        "u,d,o\n7200,0,\n", {});
}

TEST(Notices, NullsForTheCurrentTimeAndNumbersWithoutRoom) {
    expect_notices("id,d\n1,2024-01-01\n2,\n", "SELECT id FROM t WHERE UNIX_TIMESTAMP(d) > 1735689600 AND UNIX_TIMESTAMP(NULL) > 5",
                   "id\n2\n",
                   {"UNIX_TIMESTAMP takes NULL for the current time, in 1 row; the first is row 2 (t.csv, line 3); CASE WHEN d IS NOT NULL "
                    "THEN UNIX_TIMESTAMP(d) END leaves NULL as it is"});
    expect_notices("n\n1\n1234567\n\n", "SELECT TO_CHAR(n, '999') AS c, TO_CHAR(n, 'FM9999999') AS d FROM t",
                   "c,d\n   1,1\n####,1234567\n,\n",
                   {"TO_CHAR has no room under its format for the number, in 1 row; the first is 1234567 in row 2 (t.csv, line 3); the "
                    "format needs more digits before the point"});
}

TEST(Notices, DatesThatAreComparedAsTexts) {
    const std::string file = "d,e,n\n31.12.2023,12/31/2023,\n05.02.2024,01/15/2024,2024-01-01\n05.02.2024,01/15/2024,n/a\n";
    expect_notices(file, "SELECT e FROM t WHERE d > '2024-01-01' OR d BETWEEN '01.01.2024' AND '31.12.2024'",
                   "e\n12/31/2023\n01/15/2024\n01/15/2024\n", {joined({"d is text, and compared as such with '2024-01-01'", as_dates})});
    expect_notices(file, "SELECT d FROM t WHERE d IN ('2024-02-05') OR d = '31.12.2023'", "d\n31.12.2023\n",
                   {joined({"d is text, and compared as such with '2024-02-05'", as_dates})});
    expect_notices(file, "SELECT d < e AS x FROM t LIMIT 1", "x\nfalse\n", {joined({"d is text, and compared as such with e", as_dates})});
    expect_notices(file, "SELECT e FROM t WHERE n >= '2024-01-01' AND n <= 'zzz'", "e\n01/15/2024\n01/15/2024\n",
                   {"n is text, and compared as such with '2024-01-01'; --null 'n/a' --null '' takes that text and empty fields for NULL, "
                    "and the others for DATE"});
    expect_notices(file, "SELECT e FROM t WHERE d = '31.12.2023' AND e <> 'x' AND n IS NULL", "e\n12/31/2023\n", {});
}

TEST(Notices, NumbersAndTimesThatAreComparedAsTexts) {
    const std::string file = "v,t,z\n5,9:30 AM,01067\n10,1:00 PM,80331\nn.d.,11:00 PM,01069\n";
    const std::string way = "; --null 'n.d.' --null '' takes that text and empty fields for NULL, and the others for INT";
    expect_notices(file, "SELECT v FROM t WHERE v BETWEEN '7' AND '9' OR t > '10:00 AM'", "v\n5\n10\nn.d.\n",
                   {joined({"v is text, and compared as such with '7'", way}),
                    "t is text, and compared as such with '10:00 AM'; --types \"t:TIME 'HH:MI AM'\" reads the column as times"});
    expect_notices(file, "SELECT v FROM t WHERE z BETWEEN '01000' AND '01999' AND v = '5' AND t <> '1:00 PM' AND v < 'x'", "v\n5\n", {});
    expect_failure(file, "SELECT v FROM t WHERE v > 7", joined({"SQL, character 25, near >: VARCHAR and INT cannot be compared", way}));
    expect_failure(
        file, "SELECT v FROM t WHERE z IN (1067, 9999)",
        "SQL, character 25, near IN: VARCHAR and INT cannot be compared; write the number in quotes, as the file has it, such as "
        "'01067'; --types z:DECIMAL reads the column as numbers");
    expect_failure(file, "SELECT CAST(t AS TIME) FROM t",
                   "CAST: \"9:30 AM\" cannot be TIME in row 1 (t.csv, line 2); --types \"t:TIME 'HH:MI AM'\" reads the column as times");
}

TEST(Notices, NullAndEmptyTexts) {
    const std::string file = "w,d\n1,2024-01-01\n,\n";
    expect_notices(file, "SELECT w FROM t WHERE w = NULL OR w NOT IN (3, NULL)", "w\n",
                   {"a comparison with NULL is never true; x IS NULL and x IS NOT NULL test for it",
                    "NOT IN is never true of a list with NULL; x IS NOT NULL leaves out NULL"});
    expect_notices(file, "SELECT w FROM t WHERE w IS NOT DISTINCT FROM NULL OR w IN (1, NULL)", "w\n1\n\n", {});
    const std::string is_null = "; an empty field is NULL, as in x IS NULL and x IS NOT NULL";
    expect_failure(file, "SELECT w FROM t WHERE w = ''",
                   joined({"SQL, character 25, near =: INT and VARCHAR cannot be compared", is_null}));
    expect_failure(file, "SELECT w FROM t WHERE d <> ''", joined({"SQL, character 28, near '': this cannot be read as DATE", is_null}));
    expect_failure(file, "SELECT COALESCE(d, '-') FROM t",
                   "SQL, character 20, near '-': this cannot be read as DATE; CAST(x AS VARCHAR) makes a text of the DATE");
}

TEST(Notices, TextsOfWhichSomeAreDates) {
    const std::string file = "d,c,n\n2024-01-02,20240101,1\n02.01.2024,20240102,2\n1/2/2024,20240103,3\n";
    const std::string way = "; CAST(TO_DT_TZ(d) AS DATE) is NULL where a text is no date such as 2024-02-29, and TO_DATE(d, 'DD.MM.YYYY') "
                            "reads others by a format";
    expect_failure(file, "SELECT CAST(d AS DATE) FROM t", joined({"CAST: \"02.01.2024\" cannot be DATE in row 2 (t.csv, line 3)", way}));
    expect_failure(file, "SELECT d FROM t WHERE d > DATE '2024-01-01'",
                   joined({"SQL, character 25, near >: VARCHAR and DATE cannot be compared", way}));
    expect_failure(file, "SELECT d + 30 FROM t", joined({"SQL, character 10, near +: + does not take VARCHAR and INT", way}));
    expect_failure(file, "SELECT CAST(c AS DATE) FROM t",
                   "SQL, character 8, near CAST: CAST makes no DATE of INT; --types \"c:DATE 'YYYYMMDD'\" reads numbers such as ...");
    expect_failure(
        file, "SELECT DATE '9999-12-30' + n FROM t",
        "+: -6118 the datetime is outside years -4712 to 9999, or cannot be formatted or read in row 2 (t.csv, line 3), given 2");
}

TEST(Notices, TextsByChoice) {
    const std::string file = "d,n\n2024-01-01,1\n2024-02-01,2\n";
    const arguments types = {"--types", "d:VARCHAR,n:TEXT"};
    expect_notices(file, "SELECT n FROM t WHERE d > '2024-01-15'", "n\n2\n",
                   {"d is text, and compared as such with '2024-01-15'; --types d:DATE reads the column as dates"}, types);
    expect_failure(file, "SELECT n + 1 FROM t",
                   "SQL, character 10, near +: + does not take VARCHAR and INT; --types n:INT reads the column as numbers", types);
}

TEST(Notices, BlanksBeforeValues) {
    const std::string file = "id, name\n1, Ann\n2, Bob\n3,Cid\n";
    const std::string notice = "t.csv: most values of column name begin with a blank, which is a part of them; TRIM(name) is without it";
    expect_notices(file, "SELECT id FROM t WHERE name = 'Ann'", "id\n", {notice});
    expect_notices(file, "SELECT id FROM t WHERE name = 'Ann'", "id\n", {notice}, {"--types", "name:VARCHAR(9)"});
    expect_notices(file, "SELECT id FROM t WHERE Trim(name) = 'Ann'", "id\n1\n", {});
    expect_notices(file, "SELECT id FROM t", "id\n1\n2\n3\n", {});
}

TEST(Notices, FormatsOfOtherFunctions) {
    const std::string file = "d\n2024-02-29\n";
    expect_notices(
        file, "SELECT TO_CHAR(d, '%YYYY') AS x, DATE_FORMAT(d, 'YYYY') AS y, DATE_FORMAT(d, '%Y') AS z FROM t", "x,y,z\n%2024,YYYY,2024\n",
        {"TO_CHAR: the format '%YYYY' has no elements with %; DATE_FORMAT(d, '%Y-%m-%d') has formats with %",
         "DATE_FORMAT: the format 'YYYY' has no element with %, such as %Y, and is written as it is; TO_CHAR has formats such as "
         "YYYY-MM-DD"});
    expect_shown({
        {"TO_CHAR(DATE '2024-02-29', '%Y-%m')",
         "35, near '%Y-%m': date formats have no element \"m\" at position 5; text stands in \"double "
         "quotes\"; DATE_FORMAT(d, '%Y-%m-%d') has formats with %"},
        {"TO_DATE('2024-02', '%Y-%m')",
         "27, near '%Y-%m': date formats have no element \"m\" at position 5; text stands in \"double quotes\"; "
         "formats are such as YYYY-MM-DD"},
    });
}

TEST(Notices, MonthsWhereMinutesAreMeant) {
    const std::string file = "t\n2024-02-29 15:04:05\n";
    expect_notices(
        file,
        "SELECT TO_CHAR(t, 'yyyy-mm-dd hh:mm:ss') AS x, TO_CHAR(t, 'HH24MMSS') AS y, DATE_FORMAT(t, '%H:%M') AS z, "
        "TO_CHAR(TO_DATE('10:30', 'HH24:MM'), 'HH24:MI DD/MM') AS w FROM t WHERE FALSE",
        "x,y,z,w\n",
        {"TO_CHAR: the format 'yyyy-mm-dd hh:mm:ss' has the month behind the hour, \"mm\" at position 15; minutes are MI, and hours "
         "from 0 to 23 HH24",
         "TO_CHAR: the format 'HH24MMSS' has the month behind the hour, \"MM\" at position 5; minutes are MI",
         "DATE_FORMAT: the format '%H:%M' has the month behind the hour, \"%M\" at position 4; minutes are %i",
         "TO_DATE: the format 'HH24:MM' has the month behind the hour, \"MM\" at position 6; minutes are MI"});
    expect_shown({
        {"TO_DATE('x', 'YYYY-MM-DD HH24:MM')",
         "21, near 'YYYY-MM-DD HH24:MM': in the date format \"MM\" at position 17 says again what \"MM\" at position 6 says; it has the "
         "month behind the hour, \"MM\" at position 17; minutes are MI"},
        {"TO_CHAR(TIME '10:30', 'HH24:MM')",
         "30, near 'HH24:MM': TIME has no date, and the date format has \"MM\" at position 6; it has the month behind the hour, \"MM\" at "
         "position 6; minutes are MI"},
    });
}

TEST(Notices, MonthsWhereMinutesAreMeantInOptions) {
    const std::string month = " has the month behind the hour, \"mm\" at position 4; minutes are MI, and hours from 0 to 23 HH24";
    expect_notices("t\n10:05\n", "SELECT MONTH(t) AS m FROM t", "m\n5\n", {joined({"--types t: the format 'hh:mm'", month})},
                   {"--types", "t:TIMESTAMP 'hh:mm'"});
    expect_notices("", "SELECT TO_CHAR(DATE '2024-02-29') AS d", "d\n12:02\n", {joined({"--set date_format: the format 'hh:mm'", month})},
                   {"--set", "date_format=hh:mm"});
    expect_failure("t\n10:05\n", "SELECT t FROM t",
                   "--types: in the date format \"mm\" at position 15 says again what \"mm\" at position 6 says; it has the month behind "
                   "the hour, \"mm\" at position 15; minutes are MI, and hours from 0 to 23 HH24",
                   {"--types", "t:TIMESTAMP 'yyyy-mm-dd hh:mm:ss'"});
    expect_failure("", "SELECT 1",
                   joined({"--set: time_format: a time has no date, and the date format has \"mm\" at position 4; it", month}),
                   {"--set", "time_format=hh:mm"});
}

TEST(Notices, PartsOfSeconds) {
    expect_notices(
        "n\n1700000000\n-5\n\n1700000000123\n2147483648\n",
        "SELECT FROM_UNIXTIME(n) AS t, FROM_UNIXTIME(4102444800) AS u, FROM_UNIXTIME(1700000000000000, '%Y') AS v FROM t WHERE n > 0",
        "t,u,v\n2023-11-14 22:13:20,,\n,,\n,,\n",
        {"FROM_UNIXTIME gives NULL for more than 2147483647 seconds, in 2 rows; the first is 1700000000123 in row 4 (t.csv, line 5); "
         "CAST(n / 1000 AS BIGINT) makes seconds of milliseconds",
         "FROM_UNIXTIME gives NULL for more than 2147483647 seconds, in 3 rows; the first is 4102444800 in row 1 (t.csv, line 2)",
         "FROM_UNIXTIME gives NULL for more than 2147483647 seconds, in 3 rows; the first is 1700000000000000 in row 1 (t.csv, line "
         "2); CAST(n / 1000000 AS BIGINT) makes seconds of microseconds"});
}

TEST(Notices, NumbersThatAreNamesOfColumns) {
    expect_notices("2020,a\n5,1\n", "SELECT 2020 + a AS x, \"2020\" AS y FROM t WHERE 2020 > 6", "x,y\n2021,5\n",
                   {"2020 is a number in the query; the column of that name is written \"2020\""});
}

TEST(Notices, RowsThatAreTakenForNames) {
    const std::string notice = "t.csv: the names of columns are numbers or dates; if the first line is a row, --no-header reads it as one";
    for (const std::string file : {"1,Ann,2.5\n2,Bob,3.5", "Ann,2024-01-31\nBob,\nCid,2024-02-01\n", "1999;x\n2003;y\n", "3\n4\n",
                                   "10%;5 \u20ac;a\n12%;6 \u20ac;b\n"}) {
        expect_notices(file, "SELECT 'y' AS x FROM t LIMIT 1", "x\ny\n", {notice});
    }
    for (const std::string file : {"name,2020,2021\nAnn,5,6\n", "id,1,2,3\n7,1,2,3\n", "x,1,2\nAnn,5,6\n", "place,2024-01-31\nA,5\n",
                                   "Q1,Q2\n10%,11%\n", "a,5\n1,2\n", "1\nx\n", "1,2\n"}) {
        expect_notices(file, "SELECT 'y' AS x FROM t LIMIT 1", file == "1,2\n" ? "x\n" : "x\ny\n", {});
    }
    const scratch_directory directory;
    directory.write("t.csv", "1,Ann\n2,Bob\n");
    EXPECT_EQ(directory.run({"describe", "t.csv"}).err, joined({"bifun: ", notice, "\n"}));
}

TEST(Notices, LeadFromTextsToTheTypesOfTheirColumns) {
    const std::string file = "d,b,a,m,w,i,z\n31.12.2023,true,x,\"1,5\",31/12/2023 10:30,1,01234\n";
    const std::string numbers = "; TO_NUMBER(a) is NULL where a text is no number";
    const struct {
        std::string expression, message;
    } cases[] = {
        {"YEAR(d)", joined({"8, near YEAR: YEAR does not take (VARCHAR); it takes (DATETIME)", as_dates})},
        {"d + 1", joined({"10, near +: + does not take VARCHAR and INT", as_dates})},
        {"d < CURRENT_DATE", joined({"10, near <: VARCHAR and DATE cannot be compared", as_dates})},
        {"a * 2", joined({"10, near *: * does not take VARCHAR and INT", numbers})},
        {"a = 2", joined({"10, near =: VARCHAR and INT cannot be compared; write the number in quotes, as a text", numbers})},
        {"m > 2", "10, near >: VARCHAR and INT cannot be compared; --decimal comma reads the column as numbers"},
        {"z = 1234",
         "10, near =: VARCHAR and INT cannot be compared; write the number in quotes, as the file has it, such as '01234'; --types "
         "z:DECIMAL reads the ..."},
        {"w + 1", "10, near +: + does not take VARCHAR and INT; --types \"w:TIMESTAMP 'DD/MM/YYYY HH24:MI'\" reads the column as dates"},
        {"ABS(m)",
         "8, near ABS: ABS does not take (VARCHAR); it takes (BIGINT), (DOUBLE), (DECIMAL); --decimal comma reads the column as numbers"},
        {"NVL(a, 0)",
         "8, near NVL: NVL does not take (VARCHAR, INT); it takes (INT, INT), (BIGINT, BIGINT), (DOUBLE, DOUBLE), (DECIMAL, DECIMAL), "
         "(DATETIME, DATETIME), (VARCHAR, VARCHAR), (VARBINARY, constant VARBINARY); the number is a text in quotes"},
        {"COALESCE(a, i)", "8, near COALESCE: VARCHAR and INT do not go together; CAST(x AS VARCHAR) makes a text of the INT"},
        {"YEAR(a)", "8, near YEAR: YEAR does not take (VARCHAR); it takes (DATETIME); give the column of a date a type ..."},
        {"YEAR(i)", "8, near YEAR: YEAR does not take (INT); it takes (DATETIME); --types \"i:DATE 'YYYYMMDD'\" reads numbers such as "
                    "20240229 as dates, and "
                    "FROM_UNIXTIME takes seconds since 1970"},
        {"IF(b, 1, 0)",
         "8, near IF: IF does not take (VARCHAR, INT, INT); it takes (BOOL, INT, INT), (BOOL, BIGINT, BIGINT), (BOOL, DOUBLE, "
         "DOUBLE), (BOOL, DECIMAL, DECIMAL), (BOOL, VARCHAR, VARCHAR); --types b:BOOL reads true and false"},
        {"NOT b",
         "12, near b: a condition is needed here, and this is of type VARCHAR; compare it, as in x = 'true'; --types b:BOOL reads true "
         "and false"},
    };
    for (const auto& tested : cases) {
        expect_failure(file, joined({"SELECT ", tested.expression, " FROM t"}), joined({"SQL, character ", tested.message}));
    }
}

TEST(Notices, NameBothTypesWhereTextsHaveEither) {
    const std::string file = "u,s,m,n,p,f,t,i,z\n\"1,234\",12/31/23,01/02/2024,1.5,10%,0.1234567890123456789,2024-01-01T10:00:00.1234567Z,"
                             "2024-01-01,31-Dec-2023\n2,11/30/23,03/04/2024,-,2%,1e-05,2024-01-01T10:00:00.1234567Z,Total,30-Nov-2023\n";
    const std::pair<std::string, std::string> cases[] = {
        {"u + 1", "; --decimal point reads 1,234 as 1234, and --decimal comma as 1.234"},
        {"YEAR(s)", "; --types \"s:DATE 'MM/DD/YY'\" reads the column as dates; YY is a year from 2000 on, RR one from 1950 to 2049"},
        {"YEAR(m)", "; --types \"m:DATE 'DD/MM/YYYY'\" or --types \"m:DATE 'MM/DD/YYYY'\" reads the column as dates, by which of them "
                    "is meant"},
        {"n + 1", "; --null '-' --null '' takes that text and empty fields for NULL, and the others for DECIMAL"},
        {"p + 1", "; TO_NUMBER(REPLACE(p, '%', '')) makes numbers of its texts"},
        {"f + 1", "; --types f:DECIMAL reads the column as numbers"},
        {"YEAR(t)", "; CAST(SUBSTR(t, 1, 26) AS TIMESTAMP) leaves out what stands behind six digits of a fraction"},
        {"YEAR(i)",
         "; \"Total\" in line 3 is not of type DATE, which the others have; --types i:DATE --ignore-errors leaves out such rows"},
        {"YEAR(z)", "; --types \"z:DATE 'DD-MON-YYYY'\" reads the column as dates"},
    };
    const scratch_directory directory;
    directory.write("t.csv", file);
    for (const auto& [expression, way] : cases) {
        const std::string err = directory.run({"t.csv", joined({"SELECT ", expression, " FROM t"})}).err;
        EXPECT_TRUE(err.ends_with(joined({way, "\n"}))) << err;
    }
    EXPECT_TRUE(
        directory.run({"t.csv", "SELECT s FROM t WHERE s > '2024-01-01'"}).err.starts_with("bifun: s is text, and compared as such"));
    EXPECT_NE(directory.run({"describe", "t.csv"}).err.find("column m: dates of this form are text"), std::string::npos);
}

TEST(Notices, NameFunctionsForFormsOfPeople) {
    const std::string file = "b,m,u,d,p,z,y\n(5.00),5.00-,\"$1,234.50\",\"Jan 2, 2024\",01/13/2024 1:30 PM,2024-01-01 10:00:00 UTC,yes\n"
                             "7.5,7.5,$7,\"Feb 13, 2024\",02/01/2024 10:30 AM,2024-01-02 10:00:00 UTC,No\n";
    const std::pair<std::string, std::string> cases[] = {
        {"b + 1", "; TO_NUMBER(REPLACE(REPLACE(b, '(', '-'), ')', '')) makes numbers of its texts"},
        {"m + 1", "; TO_NUMBER(m, '999999999999.999999MI') makes numbers of its texts"},
        {"u + 1", "; TO_NUMBER(u, '$999,999,999,999.99') makes numbers of texts such as $1,234.50"},
        {"YEAR(d)", "; --types \"d:DATE 'MON DD, YYYY'\" reads the column as dates"},
        {"YEAR(p)", "; --types \"p:TIMESTAMP 'MM/DD/YYYY HH:MI AM'\" reads the column as dates"},
        {"YEAR(z)", "; CAST(REPLACE(z, ' UTC', 'Z') AS TIMESTAMP WITH TIME ZONE) makes times of texts such as 2024-01-01 10:00:00 UTC"},
        {"NOT y", "; --types y:BOOL reads true and false"},
    };
    const scratch_directory directory;
    directory.write("t.csv", file);
    for (const auto& [expression, way] : cases) {
        const std::string err = directory.run({"t.csv", joined({"SELECT ", expression, " FROM t"})}).err;
        EXPECT_TRUE(err.ends_with(joined({way, "\n"}))) << err;
    }
    expect_answer(
        file,
        "SELECT TO_NUMBER(REPLACE(REPLACE(b, '(', '-'), ')', '')) AS b, TO_NUMBER(m, '999999999999.999999MI') AS m, "
        "TO_NUMBER(u, '$999,999,999,999.99') AS u, d, p, CAST(REPLACE(z, ' UTC', 'Z') AS TIMESTAMP WITH TIME ZONE) AS z, y FROM t",
        "b,m,u,d,p,z,y\n-5.00,-5.00,1234.50,2024-01-02,2024-01-13 13:30:00,2024-01-01 10:00:00+00:00,true\n"
        "7.5,7.5,7,2024-02-13,2024-02-01 10:30:00,2024-01-02 10:00:00+00:00,false\n",
        {"--types", "d:DATE 'MON DD, YYYY',p:TIMESTAMP 'MM/DD/YYYY HH:MI AM',y:BOOL"});
}

TEST(Notices, NullsStayWhenAWordIsOneToo) {
    const std::string file = "n,s\nNA,\n,x\n3,\"\"\n";
    expect_failure(file, "SELECT n + 1 FROM t",
                   "SQL, character 10, near +: + does not take VARCHAR and INT; --null 'NA' --null '' takes that text and empty fields for "
                   "NULL, and the others for INT");
    expect_answer(file, "SELECT n + 1 AS n, s IS NULL AS s FROM t", "n,s\n,true\n,false\n4,false\n", {"--null", "NA", "--null", ""});
}

TEST(Notices, NameAllThatMakesTextsOfAColumn) {
    const std::string file = "x,d,t,m,g,p,f\n1,31.12.2024,2024-01-01 10:00:00,\"3,5\",007,3.5,\"1.234,50\"\n"
                             "NA,-,2024-01-01T10:00:00Z,NA,NA,4.25,2.5\n-,30.11.2024,2024-01-02 10:00:00,\"2,5\",-,1.75,1\n";
    const std::string zone = "some of its times have a zone and others none; --types \"t:TIMESTAMP WITH TIME ZONE\" gives these the "
                             "zone of the session, --set time_zone";
    const std::string point = "t.csv: column p has numbers with a point before the fraction; --decimal comma takes these for texts, and "
                              "1.234 for 1234";
    const std::pair<std::string, std::string> cases[] = {
        {"x + 1", "; --null 'NA' --null '-' --null '' takes these texts and empty fields for NULL, and the others for INT"},
        {"YEAR(d)", "; --types \"d:DATE 'DD.MM.YYYY'\" --null '-' --null '' reads the column as dates"},
        {"YEAR(t)", joined({"; ", zone})},
        {"m + 1",
         "; --decimal comma --null 'NA' --null '' reads the column as numbers, but takes those of p, which have a point, for texts; "
         "TO_NUMBER(REPLACE(REPLACE(m, '.', ''), ',', '.')) reads m alone"},
        {"g + 1", "; --types g:DECIMAL --null 'NA' --null '-' --null '' reads the column as numbers"},
        {"f + 1",
         "; some of its numbers have a comma before the fraction and others a point; TO_NUMBER(f) is NULL where a text is no number"},
    };
    const scratch_directory directory;
    directory.write("u.csv", "a\n1\na\n2\n");
    EXPECT_TRUE(directory.run({"u.csv", "SELECT a + 1 FROM u"})
                    .err.ends_with("; rows that repeat the header are left out with --types a:INT --ignore-errors\n"));
    directory.write("t.csv", file);
    for (const auto& [expression, way] : cases) {
        const std::string err = directory.run({"t.csv", joined({"SELECT ", expression, " FROM t"})}).err;
        EXPECT_TRUE(err.ends_with(joined({way, "\n"}))) << err;
    }
    EXPECT_EQ(
        directory.run({"describe", "t.csv"}).err,
        joined({"bifun: t.csv: column t: ", zone,
                "\nbifun: t.csv: column m: numbers of this form are text; --decimal comma --null 'NA' --null '' reads them as numbers\n"
                "bifun: t.csv: truth values, dates and durations of this form are text unless their column is given its type, with --types "
                "\"d:DATE 'DD.MM.YYYY'\"\nbifun: t.csv: columns x, d: words for NULL beside other values make texts of these; "
                "--null 'NA' --null '-' --null '' takes them and empty fields for NULL\n"}));
    expect_notices(file, "SELECT m FROM t LIMIT 1", "m\n3.5\n", {point}, {"--decimal", "comma", "--null", "NA"});
    expect_answer(file, "SELECT YEAR(t) AS y FROM t", "y\n2024\n2024\n2024\n", {"--types", "t:TIMESTAMP WITH TIME ZONE"});
    // Numbers of thousands are as those of the other columns have it, whatever separates the fields.
    const auto first_mark = [&](const std::string& number) {
        directory.write("t.csv", joined({"a;b\n1,234;", number, "\n5,100;", number, "\n"}));
        return directory.run({"t.csv", "SELECT a + 1 FROM t"}).err;
    };
    EXPECT_NE(first_mark("2.5").find("; --decimal point reads 1,234 as 1234, and"), std::string::npos);
    EXPECT_NE(first_mark("2,5").find("; --decimal comma reads 1,234 as 1.234, and"), std::string::npos);
    const std::string groups = "t.csv: column b has numbers with a comma before the fraction, so that 1.234 in column a may be 1234; "
                               "--decimal comma reads both so";
    expect_notices("a;b\n1.234;2,5\n5;3,5\n", "SELECT a FROM t", "a\n1.234\n5\n", {groups});
    expect_notices("a;b\n1.234;2,5\n5.1;3,5\n", "SELECT a FROM t", "a\n1.234\n5.1\n", {});
}

TEST(Notices, PointsThatMayBeOfThousandsOrOfFractions) {
    const arguments comma = {"--decimal", "comma"};
    const std::string places = "stop;lat;price\nA;52.520;1,50\nB;-48.137;2,00\n";
    const std::string each = "t.csv: column lat: each number has one point and three digits behind it; ";
    const std::string way =
        joined({each, "--decimal comma takes 52.520 for 52520, and --types lat:VARCHAR with CAST(lat AS DECIMAL) has the "
                      "point before a fraction"});
    expect_notices(places, "SELECT lat + price AS x FROM t LIMIT 1", "x\n52521.50\n", {way}, comma);
    expect_notices(places, "SELECT lat FROM t LIMIT 1", "lat\n52520\n", {way}, {"--decimal", "comma", "--types", "lat:DOUBLE"});
    expect_notices(places, "SELECT CAST(lat AS DECIMAL) + price AS x FROM t LIMIT 1", "x\n54.020\n", {},
                   {"--decimal", "comma", "--types", "lat:VARCHAR"});
    expect_notices(places, "SELECT price FROM t LIMIT 1", "price\n1.50\n", {}, comma);
    expect_failure("lat\n52.520\n48.1375\n", "SELECT lat FROM t",
                   "t.csv, line 2, column lat: \"52.520\" is 52520 with --decimal comma, and does not fit DECIMAL(6, 4); --types "
                   "lat:VARCHAR with CAST(lat AS DECIMAL(6, 4)) has the point before a fraction",
                   {"--decimal", "comma", "--types", "lat:DECIMAL(6,4)"});
    const std::string query = "SELECT lat FROM t LIMIT 1";
    expect_notices("k;lat\n1;\n2;\"1.000\"\n3;2.500\n", query, "lat\n\n",
                   {joined({each, "where 1.000 is 1000, --decimal comma reads it so"})});
    for (const std::string file : {"k;lat\n1.5;2.500\n", "k,lat\n1,2.500\n", "k;lat\n1;2.500\n2;0.500\n", "k;lat\n1;2.500\n2;1000\n"}) {
        expect_notices(file, query, "lat\n2.500\n", {});
    }
}

TEST(Notices, ValuesThatAreFaultsAreNotTakenForNull) {
    const std::string file = "took,v,d,w,e\n1:30:00,1,2024-12-01,05.01.2024 10:15,5\n25:10:05,2,2024-13-01,31.12.2024 23:59:30,n.d.\n"
                             "30:00:01,A7,2024-11-01,01.02.2024,6\n0:05:00,4,2024-01-01,02.02.2024 9:30,\n";
    const std::pair<std::string, std::string> cases[] = {
        {"TIME_TO_SEC(took)", "; --types \"took:INTERVAL HOUR TO SECOND\" reads the column as durations"},
        {"took > TIME '10:00'", "; --types \"took:INTERVAL HOUR TO SECOND\" reads the column as durations"},
        {"v * 2", "; \"A7\" in line 4 is not of type INT, which the others have; --types v:INT --ignore-errors leaves out such rows"},
        {"d + 1",
         "; \"2024-13-01\" in line 3 is not of type DATE, which the others have; --types d:DATE --ignore-errors leaves out such rows"},
        {"YEAR(w)", "; --types \"w:TIMESTAMP 'DD.MM.YYYY HH24:MI:SS'\" reads the column as dates"},
        {"e * 2", "; --null 'n.d.' --null '' takes that text and empty fields for NULL, and the others for INT"},
    };
    const scratch_directory directory;
    directory.write("t.csv", file);
    for (const auto& [expression, way] : cases) {
        const std::string err = directory.run({"t.csv", joined({"SELECT ", expression, " FROM t"})}).err;
        EXPECT_TRUE(err.ends_with(joined({way, "\n"}))) << err;
    }
    expect_answer(file, "SELECT w FROM t WHERE took > INTERVAL '24' HOUR", "w\n2024-12-31 23:59:30\n2024-02-01 00:00:00\n",
                  {"--types", "took:INTERVAL HOUR TO SECOND", "--types", "w:TIMESTAMP 'DD.MM.YYYY HH24:MI:SS'"});
    directory.write("t.csv", "a,b,c,d,e,f\n(5.00),5-,\"1,23,456.00\",=\"01067\",€ 5,2024-01-01 10:00:00.1234567\n"
                             "3,7-,\"2,34,567.00\",=\"01069\",€ 6,2024-01-02 10:00:00\n");
    EXPECT_EQ(
        directory.run({"describe", "t.csv"}).err,
        "bifun: t.csv: column a: numbers of this form are text; TO_NUMBER(REPLACE(REPLACE(a, '(', '-'), ')', '')) makes numbers of its "
        "texts\nbifun: t.csv: column b: numbers of this form are text; TO_NUMBER(b, '999999999999.999999MI') makes numbers of its "
        "texts\nbifun: t.csv: column c: numbers of this form are text; TO_NUMBER(REPLACE(c, ',', '')) makes numbers of texts such as "
        "1,23,456.00\nbifun: t.csv: column d: numbers of this form are text; REPLACE(SUBSTR(d, 2), '\"', '') is without the signs "
        "around texts such as =\"01067\"\nbifun: t.csv: column e: numbers of this form are text; TO_NUMBER(REPLACE(e, '€ ', '')) makes "
        "numbers of its texts\nbifun: t.csv: column f: times of this form are text; CAST(SUBSTR(f, 1, 26) AS TIMESTAMP) leaves out what "
        "stands behind six digits of a fraction\n");
    directory.write("u.csv", "a,b\n\"1,2,3\",\"1,23,45\"\nx,y\n"); // lists
    EXPECT_EQ(directory.run({"describe", "u.csv"}).err, "");
    expect_answer(
        read_file(directory.path / "t.csv"),
        "SELECT TO_NUMBER(REPLACE(c, ',', '')) AS c, REPLACE(SUBSTR(d, 2), '\"', '') AS d, CAST(SUBSTR(f, 1, 26) AS TIMESTAMP) AS f "
        "FROM t",
        "c,d,f\n123456.00,01067,2024-01-01 10:00:00.123456\n234567.00,01069,2024-01-02 10:00:00\n");
}

TEST(Notices, NumbersThatAreDoubleForACode) {
    const std::string file = "price,n\n1.10,1\n1e2,2\n2.505,1e-5\n";
    const std::string notice = "t.csv: column price is DOUBLE because of 1e2 in line 3; where that is a code, or the digits of the others "
                               "are to stay as they are, --types price:VARCHAR or --types price:DECIMAL";
    expect_notices(file, "SELECT price FROM t", "price\n1.1\n100\n2.505\n", {notice});
    expect_notices(file, "SELECT price FROM t", "price\n1.10\n100\n2.505\n", {}, {"--types", "price:DECIMAL"});
    expect_notices(file, "SELECT n FROM t LIMIT 1", "n\n1\n", {});
    expect_notices("price\n1e2\n1.5e3\n2\n", "SELECT price FROM t LIMIT 1", "price\n100\n", {});
    const scratch_directory directory;
    directory.write("t.csv", file);
    EXPECT_EQ(directory.run({"describe", "t.csv"}).err, joined({"bifun: ", notice, "\n"}));
    directory.write("t.csv", joined({"price\n", repeated("123456789.5\n", 100'000), "1E5\n"})); // behind what decides at first
    EXPECT_TRUE(directory.run({"--sample", "1", "t.csv", "SELECT price FROM t WHERE price < 0"})
                    .err.starts_with("bifun: t.csv: column price is DOUBLE because of 1E5 in line 100002; "));
}

TEST(Notices, NumbersWrittenAsCodesAreText) {
    expect_answer("p,c,n,e\n+4930123456,12E4,+1,1e5\n+49301,1e3,-1,1.0e5\n", "SELECT * FROM t",
                  "p,c,n,e\n+4930123456,12E4,1,100000\n+49301,1e3,-1,100000\n");
    expect_answer("p,c\n+49,12E4\n", "SELECT p + 1 AS p, c * 2 AS c FROM t", "p,c\n50,240000\n", {"--types", "p:INT,c:DOUBLE"});
    const scratch_directory directory;
    directory.write("t.csv", "a,b,c\n+5,1e5,+3\n+6,2e5,x\n7,3e5,4\n");
    EXPECT_EQ(directory.run({"describe", "t.csv"}).out,
              "column,type,values,nulls,smallest,largest,text_line,text\na,INT,3,0,+5,7,,\nb,VARCHAR,3,0,1e5,3e5,2,1e5\n"
              "c,VARCHAR,3,0,+3,x,3,x\n");
}

} // namespace
