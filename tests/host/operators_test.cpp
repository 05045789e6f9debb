// SPDX-License-Identifier: Apache-2.0
// Operators and expressions that are no functions of the library: arithmetic, CASE and its kin, CAST, LIKE, the current moment, OFFSET.
#include <string>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

TEST(Operators, Numbers) {
    expect_shown({
        {"+5 ; 1 + 2 * 3 - 4 ; (1 + 2) * 3 ; -ABS(-5) ; 2 - +-3 ; 10 % 3 ; - -5 ; 1 - -1", "5, 3, 9, -5, 5, 1, 5, 2"},
        {"7 / 2 ; 6.00 / 2 ; 1 / 3 ; -2 / 3 ; 10 / 0.5 ; 0 / 7 ; 1e0 / 8 ; 9999999999 / 3",
         joined({"3.5, 3.00, 0.", std::string(38, '3'), ", -0.", std::string(37, '6'), "7, 20, 0, 0.125, 3333333333"})},
        {"1.10 + 2.2 ; 2147483647 + 1.0 ; 0.1 * 0.1 ; 0.1e0 + 0.2e0 ; 3000000000 * 3",
         "3.30, 2147483648.0, 0.01, 0.30000000000000004, 9000000000"},
        {"NULL + 1 ; 1 / NULL ; -NULL ; 5 / NULLIF(0, 0)", "null, null, null, null"},
        {"2147483647 + 1", "+: numeric overflow of INT in row 1; CAST(x AS BIGINT) has more digits"},
        {"9223372036854775807 * 2", "*: numeric overflow of BIGINT in row 1; CAST(x AS DECIMAL) has more digits"},
        {"1e308 * 10", "*: numeric overflow of DOUBLE in row 1"},
        {"1 / 0", "/: division by zero in row 1; NULLIF(x, 0) gives NULL there"},
        {"1 / 0e0", "/: division by zero in row 1; ..."},
        {"'5' + 1", "12, near +: + does not take VARCHAR and INT; write the number without quotes"},
        {"'a' + 'b'", "12, near +: + does not take VARCHAR and VARCHAR; || joins texts"},
        {"-'a'", "8, near -: - takes a number, and this is of type VARCHAR; write the number without quotes"},
    });
    expect_answer("a,b\n1,2.5\n,1\n-3,0.5\n", "SELECT a + 1 AS s, a * b AS p, -b AS n, SUBSTR('abcdef', a + 5) t FROM t WHERE a - b < 0",
                  "s,p,n,t\n2,2.5,-2.5,f\n-2,-1.5,-0.5,bcdef\n");
    expect_failure("a\n1\n\n2147483647\n", "SELECT a + a FROM t",
                   "+: numeric overflow of INT in row 3 (t.csv, line 4); CAST(x AS BIGINT) has more digits");
}

TEST(Operators, Dates) {
    expect_shown({
        {"DATE '2024-02-28' + 1 ; 1 + DATE '2024-02-28' ; DATE '2024-03-01' - 1 ; DATE '2024-02-28' + 1.5 ; DATE '2024-02-28' - NULL",
         R"("2024-02-29", "2024-02-29", "2024-02-29", "2024-02-29 12:00:00", null)"},
        {"DATE '2024-03-01' - DATE '2024-02-01' ; DATE '2024-01-31' + INTERVAL '1' MONTH ; DATE '2024-03-31' - INTERVAL '1' MONTH",
         R"(29, "2024-02-29", "2024-02-29")"},
        {"DATE '2024-01-31' + INTERVAL '1' DAY ; DATE '2024-01-31' - INTERVAL '1' HOUR ; INTERVAL '90' MINUTE + TIME '23:00:00'",
         R"("2024-02-01", "2024-01-30 23:00:00", "00:30:00")"},
        {"TIMESTAMP '2024-01-31 10:00:00+02:00' + INTERVAL '1 02:00:00' DAY TO SECOND", R"("2024-02-01 12:00:00+02:00")"},
        {"NULL + INTERVAL '1' DAY ; NULL - INTERVAL '1' MONTH ; INTERVAL '1' DAY + NULL ; NULL - DATE '2024-01-01'",
         "null, null, null, null"},
        {"NULL * INTERVAL '1' DAY", "13, near *: * does not take NULL and INTERVAL DAY TO SECOND; ..."},
        {"DATE '9999-12-31' + INTERVAL '1' DAY", "+: the datetime is outside years -4712 to 9999 in row 1"},
        {"DATE '2024-01-31' * 2",
         "26, near *: * does not take DATE and INT; it takes numbers, and + and - also a date with days or an interval"},
        {"TIMESTAMP '2024-01-31 10:00:00' - DATE '2024-01-01'",
         "40, near -: - does not take TIMESTAMP and DATE; use DATEDIFF(SECOND, start, end), with any field"},
    });
    expect_answer("d,n\n2024-02-28,2\n2024-03-01,\n", "SELECT d + n a, d - n b, d - DATE '2024-01-01' c FROM t WHERE d + 1 > '2024-02-28'",
                  "a,b,c\n2024-03-01,2024-02-26,58\n,,60\n");
}

TEST(Operators, Choices) {
    expect_shown({
        {"CASE WHEN 1 = 2 THEN 'a' WHEN NULL THEN 'b' ELSE 'c' END ; CASE WHEN 1 = 2 THEN 1 END ; CASE WHEN TRUE THEN 1 ELSE 2.5 END",
         R"("c", null, 1)"},
        {"CASE ABS(-2) WHEN 1 THEN 'a' WHEN 2.0 THEN 'b' END ; CASE NULL WHEN NULL THEN 1 ELSE 2 END ; CASE 'x ' WHEN 'x' THEN 1 END",
         R"("b", 2, 1)"},
        {"COALESCE(NULL, NULL, 3) ; COALESCE(NULL, 'x') ; COALESCE(NULL) ; COALESCE(1, 1 / 0) ; NULLIF(1, 1.0) ; NULLIF('a', 'b')",
         R"(3, "x", null, 1, null, "a")"},
        {"CASE WHEN 1 = 1 THEN DATE '2024-02-29' ELSE '2024-01-01 10:00' END", R"("2024-02-29 00:00:00")"},
        {"CASE WHEN 1 = 1 THEN 1 ELSE 'a' END",
         "8, near CASE: INT and VARCHAR do not go together; CAST(x AS VARCHAR) makes a text of the INT"},
        {"CASE 1 WHEN 'a' THEN 2 END", "20, near 'a': INT and VARCHAR cannot be compared; ..."},
    });
    const std::string file = "a,s\n1,x\n0,y\n,z\n-1,x\n4,\n";
    const std::string sql =
        "SELECT a, CASE WHEN a > 0 THEN CASE WHEN LN(a) > 1 THEN s || 'big' ELSE 'one' END ELSE COALESCE(s, 'none') END v, "
        "CASE s WHEN 'x' THEN a WHEN 'y' THEN 10 / (a + 1) WHEN s THEN 7 END w, NULLIF(s, 'x') n FROM t";
    // No branch sees rows that it does not take, whatever the batches are: LN(0) and 10 / 0 would fail.
    for (const char* const rows : {"1", "3", "1000"}) {
        expect_answer(file, sql, "a,v,w,n\n1,one,1,\n0,y,10,y\n,z,7,z\n-1,x,-1,\n4,big,,\n", {"--batch-rows", rows});
        expect_answer(file, joined({sql, " WHERE CASE WHEN a > 0 THEN LN(a) > 1 ELSE a + 1 = 1 END"}), "a,v,w,n\n0,y,10,y\n4,big,,\n",
                      {"--batch-rows", rows});
    }
    expect_failure(file, "SELECT CASE WHEN s = 'x' THEN LN(a) END FROM t",
                   "LN: -6803 an argument is outside the function's domain in row 4 (t.csv, line 5), given -1");
    expect_answer("a\n1\n", "SELECT CASE a WHEN 1 THEN 'x' ELSE 'y' END, CASE WHEN a = 1 THEN 2 END, COALESCE(a, 1), NULLIF(a, 1) FROM t",
                  "CASE a WHEN 1 THEN 'x' ELSE 'y' END,CASE WHEN a = 1 THEN 2 END,\"COALESCE(a, 1)\",\"NULLIF(a, 1)\"\nx,2,1,\n");
}

TEST(Operators, Casts) {
    expect_shown({
        {"CAST('12' AS INT) ; CAST(' 12.50 ' AS DECIMAL) ; '1e3'::double ; CAST(2.5 AS INT) ; CAST(-2.5e0 AS BIGINT) ; CAST(5 AS DOUBLE "
         "PRECISION)",
         "12, 12.50, 1000, 3, -3, 5"},
        {"CAST(12.345 AS DECIMAL(5, 2)) ; CAST(5 AS DECIMAL(5, 2)) ; CAST(0.1e0 AS DECIMAL) ; CAST(NULL AS DATE)",
         "12.35, 5.00, 0.1, null"},
        {"12::text || 'x' ; CAST(1.50 AS VARCHAR) ; CAST(1e20 AS VARCHAR) ; CAST(DATE '2024-02-29' AS VARCHAR) ; CAST(1 = 1 AS VARCHAR)",
         R"("12x", "1.50", "1E+20", "2024-02-29", "true")"},
        {"CAST(TIMESTAMP '2024-02-29 10:00:00' AS DATE) ; CAST(TIMESTAMP '2024-02-29 10:00:00' AS TIME) ; CAST(DATE '2024-02-29' AS "
         "TIMESTAMP)",
         R"("2024-02-29", "10:00:00", "2024-02-29 00:00:00")"},
        {"CAST(SUBSTR('on 2024-02-29', 4) AS DATE) ; '2024-02-29'::date ; CAST(TIMESTAMP '2024-02-29 10:00:00+02:00' AS TIMESTAMP)",
         R"("2024-02-29", "2024-02-29", "2024-02-29 10:00:00")"},
        {"CAST('12.7' AS INT) ; CAST(' -1.5' AS BIGINT) ; CAST('1e3' AS INT)", "13, -2, 1000"},
        {"CAST('x' AS INT)", "CAST: \"x\" cannot be INT in row 1"},
        {"CAST('2147483647.5' AS INT)", "CAST: \"2147483647.5\" cannot be INT in row 1"},
        {"SHA2('x', 1)", "SHA2: -6803 an argument is outside the function's domain; the bits are 224, 256, 384 or 512"},
        {"CAST(3000000000 AS INT)", "CAST: 3000000000 cannot be INT in row 1"},
        {"CAST(1234.5 AS DECIMAL(5, 2))", "CAST: 1234.5 cannot be DECIMAL(5, 2) in row 1"},
        {"CAST(1e-200 AS INT) ; CAST(1e-200 AS DECIMAL(3, 2))", "0, 0.00"},
        {"CAST(1e-200 AS DECIMAL)", "CAST: 1E-200 cannot be DECIMAL in row 1"},
        {"CAST(1 AS DATE)", "8, near CAST: CAST makes no DATE of INT"},
        {"CAST('yes' AS BOOLEAN) ; NOT 'f'::bool ; CAST('2024-02-29 10:00' AS DATE) ; CAST('2024-02-29 1' || '0:00' AS DATE)",
         R"(true, true, "2024-02-29", "2024-02-29")"},
        {"CAST(1 AS BOOLEAN)", "8, near CAST: CAST makes no BOOL of INT; compare it, as in x <> 0"},
        {"CAST(1 AS REAL[])", "18, near REAL: CAST makes BOOL, INT, BIGINT, ..."},
        {"CAST('a' AS VARCHAR(3))", "20, near VARCHAR: in a CAST VARCHAR has no length or precision; use SUBSTR for texts"},
    });
    // Fields of two lines, and rows behind the first that the reader has in hand.
    expect_failure("s,t\n1,\"a\nb\"\nx,\n", "SELECT CAST(s AS INT) FROM t",
                   "CAST: \"x\" cannot be INT in row 2 (t.csv, line 4); \"x\" in line 4 is not of type INT, which the others have; --types "
                   "s:INT --ignore-errors leaves out such rows");
    expect_failure(joined({"s,t\n", repeated("1,\"a\nb\"\n", 9), "x,\n", repeated("1,abcdefgh\n", 20'000)}), "SELECT CAST(s AS INT) FROM t",
                   "CAST: \"x\" cannot be INT in row 10 (t.csv, line 20); ...", {"--batch-rows", "65536", "--types", "s:VARCHAR"});
    expect_failure("s\n1\n\nx\n", "SELECT CAST(s AS INT) FROM t", "CAST: \"x\" cannot be INT in row 3 (t.csv, line 4); ...");
}

TEST(Operators, Like) {
    expect_shown({
        {"'abc' LIKE 'a%' ; 'abc' LIKE '_b_' ; 'abc' NOT LIKE '%d' ; 'abc' LIKE 'ab' ; '' LIKE '%' ; '' LIKE '_' ; NULL LIKE 'a'",
         "true, true, true, false, true, false, null"},
        {"'mississippi' LIKE '%iss%ip%' ; 'mississippi' LIKE 'm%iss%x' ; 'aab' LIKE '%ab' ; 'é山' LIKE '__' ; 'ABC' LIKE 'abc'",
         "true, false, true, true, false"},
        {"'a%c' LIKE 'a!%c' ESCAPE '!' ; 'abc' LIKE 'a!%c' ESCAPE '!' ; 'a!' LIKE 'a!!' ESCAPE '!' ; 'a\\c' LIKE 'a\\c'",
         "true, false, true, true"},
        {"'ab  ' LIKE '%b' ; 'ab' LIKE 'ab  ' ; 'ab ' LIKE 'ab_' ; 'ab' LIKE 'ab_' ; 'a b' LIKE 'a%b'", "true, true, true, false, true"},
        {"'ABC' LIKE '%bc'", "true", {"--set", "case_sensitive=0"}},
        {"'\xE4\xB8\x82' LIKE '_'", "true", {"--set", "charset=gb18030"}},
        {"'a' LIKE 'a!' ESCAPE '!'", "LIKE: the pattern 'a!' ends in its escape character"},
        {"'a' LIKE 'a' ESCAPE 'xy'", "28, near 'xy': ESCAPE takes one character in quotes"},
        {"'ÄB' ILIKE 'ä_' ; 'a%B' NOT ILIKE 'Ax%b' ESCAPE 'X' ; NULL ILIKE 'a'", "true, false, null"},
    });
    expect_answer("s,p\nabc,a%\nabd,%c\n,%\nxyz,\n", "SELECT s, s LIKE p AS m FROM t WHERE s NOT LIKE 'x%'", "s,m\nabc,true\nabd,false\n");
}

TEST(Operators, Moments) {
    expect_shown({
        {"CURRENT_DATE = CAST(LOCALTIMESTAMP AS DATE) ; CURRENT_DATE - CURRENT_DATE ; CURRENT_TIMESTAMP = CURRENT_TIMESTAMP ; "
         "CAST(CURRENT_TIMESTAMP AS TIME) = CAST(CURRENT_TIME AS TIME) ; LOCALTIME = CAST(LOCALTIMESTAMP AS TIME)",
         "true, 0, true, true, true"},
        {"TO_DAYS(CURRENT_DATE) = TO_DAYS(NULL) ; EXTRACT(TIMEZONE_HOUR FROM CURRENT_TIMESTAMP)", "true, 8", {"--set", "time_zone=+08:00"}},
        {"CURRENT_USER", "8, near CURRENT_USER: this value is not supported; there are CURRENT_DATE, CURRENT_TIME, CURRENT_TIMESTAMP, ..."},
    });
}

TEST(Operators, Offset) {
    const std::string file = "a\n1\n2\n3\n4\n5\n";
    for (const char* const rows : {"1", "2", "1000"}) {
        const arguments options = {"--batch-rows", rows};
        expect_answer(file, "SELECT a, ABS(a) b FROM t LIMIT 2 OFFSET 1", "a,b\n2,2\n3,3\n", options);
        expect_answer(file, "SELECT a FROM t WHERE a <> 2 OFFSET 2", "a\n4\n5\n", options);
        expect_answer(file, "SELECT a FROM t WHERE a <> 2 LIMIT 1 OFFSET 1", "a\n3\n", options);
        expect_answer(file, "SELECT a FROM t OFFSET 5", "a\n", options);
        expect_answer("a\n1\n2\nx\n", "SELECT a FROM t LIMIT 1 OFFSET 1", "a\n2\n", {"--types", "a:INT", "--batch-rows", rows});
    }
    expect_failure(file, "SELECT ABS(a - 5) / (a - 3) FROM t OFFSET 1", "/: division by zero in row 3 (t.csv, line 4); ...");
    expect_failure(file, "SELECT a FROM t OFFSET -1", "SQL, character 24, near -: OFFSET takes a whole number that is not negative");
}

// A column without an alias is named after what was typed for it.
TEST(Operators, Headings) {
    expect_answer("a,from\n1,2\n",
                  "SELECT a+1  *\n  -a /* , */, SUBSTRING('a b' FROM 2), t.\"from\", t . from -- FROM\n"
                  ", (a IS NOT DISTINCT FROM 1), JSON_VALUE('[1]', '$[0]' RETURNING INT), a::text || ',' FROM t;",
                  "a+1 * -a,SUBSTRING('a b' FROM 2),from,from_2,(a IS NOT DISTINCT FROM 1),\"JSON_VALUE('[1]', '$[0]' RETURNING "
                  "INT)\",\"a::text || ','\"\n0, b,2,2,true,1,\"1,\"\n");
    expect_answer("", "(SELECT 'x', 1+1)", "'x',1+1\nx,2\n");
    expect_answer("", "SELECT 1/2 WHERE TRUE", "1/2\n0.5\n");
}

TEST(Operators, Distinctions) {
    expect_shown({
        {"1 IS DISTINCT FROM 2 ; 1 IS DISTINCT FROM 1.0 ; NULL IS DISTINCT FROM 1 ; NULL IS DISTINCT FROM NULL ; 'a' IS NOT DISTINCT FROM "
         "NULL ; "
         "DATE '2024-01-01' IS NOT DISTINCT FROM '2024-01-01'",
         "true, false, true, false, false, true"},
        {"1 IS DISTINCT FROM 'a'", "10, near IS: INT and VARCHAR cannot be compared; ..."},
    });
    expect_answer("a,b\n1,1\n,\n2,\n,3\n4,5\n", "SELECT a, b FROM t WHERE a IS DISTINCT FROM b", "a,b\n2,\n,3\n4,5\n");
}

TEST(Operators, NamesOfItemsInWhere) {
    const std::string file = "a,b\n1,x\n5,y\n7,z\n";
    expect_answer(file, "SELECT a + 1 AS c, UPPER(b) AS B, b FROM t WHERE C > 2 AND c % 2 = 0 AND b <> 'Z'", "c,b,b_2\n6,Y,y\n8,Z,z\n");
    expect_failure(file, "SELECT c + 1 AS c FROM t WHERE c > 1", "SQL, character 8, near c: t.csv has no column c; ...");
    expect_failure(file, "SELECT a AS c FROM t WHERE t.c > 1", "SQL, character 28, near t.c: t.csv has no column c; ...");
    expect_failure(file, "SELECT a AS c, c + 1 FROM t", "SQL, character 16, near c: t.csv has no column c; ...");
}

// Functions by the names that they have in other systems.
TEST(Operators, NamesOfColumnsThatDifferInCase) {
    const std::string file = "ID,id,x,A,a,a\n1,2,3,4,5,6\n";
    expect_answer(file, "SELECT ID, id, \"ID\" AS q, t.ID AS p, ID + 0 AS s FROM t WHERE t /* ID */ . id = 2", "ID,id,q,p,s\n1,2,1,1,1\n");
    expect_answer(file, "SELECT A, a, A_2, X FROM t", "A,a,a_2,x\n4,5,6,3\n");
    expect_failure(file, "SELECT Id FROM t",
                   "SQL, character 8, near Id: t.csv has the columns ID, id, and none is spelled so; write one of them as it is, or in "
                   "double quotes");
    expect_failure(file, "SELECT x FROM t", "--types: t.csv has several columns that differ from Id in case alone; ...",
                   {"--types", "Id:INT"});
}

TEST(Operators, NamesOfFilesWithoutAHeader) {
    expect_failure("a,b\n1,2\n", "SELECT column_2 FROM t",
                   "SQL, character 8, near column_2: t.csv has no column column_2; there are a, b; --no-header names them by their place");
    expect_failure("a,b\n1,2\n", "SELECT column_3 FROM t", "SQL, character 8, near column_3: t.csv has no column column_3; there are a, b");
    expect_failure("1,2\n", "SELECT column_3 FROM t",
                   "SQL, character 8, near column_3: t.csv has no column column_3; did you mean column_1 or column_2?", {"--no-header"});
}

TEST(Operators, ErrorsShowTheValuesOfTheirRow) {
    const std::string file = joined({"s,n,d\n", repeated("ab", 40), ",,2024-01-01\n\"x \",-1,9999-12-31\n"});
    const std::string text = joined({"\"", repeated("ab", 20), "...\""});
    expect_failure(file, "SELECT SQRT(n) FROM t",
                   "SQRT: -6803 an argument is outside the function's domain in row 2 (t.csv, line 3), given -1");
    expect_failure(file, "SELECT TRIM(s FROM s) FROM t",
                   joined({"TRIM: -6109 the trim set is not exactly one character in row 1 (t.csv, line 2), given ", text, ", ", text}));
    expect_failure(
        file, "SELECT ADD_MONTHS(d, -n) FROM t",
        "ADD_MONTHS: -6118 the datetime is outside years -4712 to 9999, or cannot be formatted or read in row 2 (t.csv, line 3), "
        "given 9999-12-31, 1");
    expect_failure(
        file, "SELECT TO_DATE(s, 'DD') FROM t",
        joined({"TO_DATE: -6118 the datetime is outside years -4712 to 9999, or cannot be formatted or read in row 1 (t.csv, line 2): ",
                text, " has no match at position 1, where a day, 1 to 31, (DD) is expected"}));
}

TEST(Operators, NamesElsewhere) {
    expect_shown({
        {"CASEFOLD('A')", "8, near CASEFOLD: there is no function casefold; use LOWER(s); ILIKE and, with --set case_sensitive=0, ..."},
        {"REGEXP_REPLACE('a', 'b', '')",
         "8, near REGEXP_REPLACE: there is no function regexp_replace; there are no regular expressions; ..."},
        {"'a' ~ 'b'", "12, near ~: the operator ~ is not supported; there are no regular expressions; ..."},
        {"'a' SIMILAR TO 'b'", "12, near SIMILAR: SIMILAR TO is not supported; there are no regular expressions; ..."},
        {"GREATEST('a', 'b')",
         "17, near 'a': this text cannot be read as a date, time or timestamp; for texts there is CASE WHEN x > y THEN x ELSE y END"},
        {"IFNULL(1, 2)", "8, near IFNULL: there is no function ifnull; use COALESCE(x, y) or NVL(x, y)"},
        {"NVL(5, '')",
         "8, near NVL: NVL does not take (INT, VARCHAR); it takes (INT, INT), (BIGINT, BIGINT), (DOUBLE, DOUBLE), (DECIMAL, DECIMAL), "
         "(DATETIME, DATETIME), (VARCHAR, VARCHAR), (VARBINARY, constant VARBINARY); CAST(x AS VARCHAR) makes a text of the INT"},
        {"SUM(1)", "8, near SUM: there is no function sum; there are no aggregates: a query gives a row for every row of the file"},
        {"NVL(DATE '2024-01-01', '')",
         "31, near '': this text cannot be read as a date, time or timestamp; CAST(x AS VARCHAR) makes a text of the DATE"},
        {"IF(1 = 1, 'a', 5)",
         "8, near IF: IF does not take (BOOL, VARCHAR, INT); it takes (BOOL, INT, INT), (BOOL, BIGINT, BIGINT), (BOOL, DOUBLE, DOUBLE), "
         "(BOOL, DECIMAL, DECIMAL), (BOOL, VARCHAR, VARCHAR); CAST(x AS VARCHAR) makes a text of the INT"},
        {"ABS('5')", "8, near ABS: ABS does not take (VARCHAR); it takes (BIGINT), (DOUBLE), (DECIMAL); write the number without quotes"},
        {"TO_TIMESTAMP(5)",
         "8, near TO_TIMESTAMP: TO_TIMESTAMP does not take (INT); it takes (VARCHAR); FROM_UNIXTIME(n) makes a timestamp of seconds since "
         "1970"},
        {"LOG(5)", "8, near LOG: LOG takes 2 arguments, not 1: LOG(base, x); LN(x) is the natural logarithm, LOG10(x) the decimal one"},
        {"EXTRACT(EPOCH FROM DATE '2024-01-01')", "16, near EPOCH: EXTRACT has no field EPOCH; use UNIX_TIMESTAMP(d)"},
        {"DATEADD(epoch, 1, DATE '2024-01-01')", "16, near epoch: DATEADD has no field EPOCH; there are YEAR, ..."},
        {"DATEDIFF(d, DATE '2024-01-01', 'day')", "39, near 'day': this text cannot be read as a date, time or timestamp; the field stands "
                                                  "first, as in DATEDIFF(field, start, end)"},
        {"TRUNC(DATE '2024-01-01', 'hour') ; 1", "33, near 'hour': TRUNC has no unit 'hour'; write 'HH'"},
        {"NUMTODSINTERVAL(1, 'week')", "27, near 'week': NUMTODSINTERVAL has no unit 'week'; there are DAY, HOUR, MINUTE, SECOND"},
        {"TO_CHAR(12, '#,##0.00')",
         "TO_CHAR: -6130 invalid number format: \"#\" is no element; 9 is a digit and 0 one that is always there, as in 'FM999,990.00'"},
        {"SYSDATE", "8, near SYSDATE: there is no column sysdate, because the query has no FROM; use CURRENT_DATE, ..."},
        {"POW(1, 2)", "8, near POW: there is no function pow; did you mean POWER?"},
    });
}

// The field stands elsewhere, or is no column.
TEST(Operators, FieldsElsewhere) {
    const std::pair<std::string, std::string> refused[] = {
        {"DATEDIFF(a, b, DAY)", "17, near a: DATEDIFF has no field A; the field stands first, as in DATEDIFF(field, start, end)"},
        {"TIMESTAMPDIFF(DAY, a, b)", "8, near TIMESTAMPDIFF: there is no function timestampdiff; use DATEDIFF(field, start, end)"},
        {"ROWNUM", "8, near ROWNUM: t.csv has no column ROWNUM; LIMIT n gives the first rows"},
    };
    for (const auto& [expression, message] : refused) {
        expect_failure("a,b\n", joined({"SELECT ", expression, " FROM t"}), joined({"SQL, character ", message}));
    }
}

// Syntax of other systems, which the parser does not know.
TEST(Operators, SyntaxElsewhere) {
    const std::pair<std::string, std::string> refused[] = {
        {"SELECT a 'val' FROM t", "8, near a: a is no type of a text; a name for a column stands behind AS, in double quotes if at all"},
        {"SELECT a. FROM t", "8: FROM behind a point is the name of a column; names with a point stand in double quotes"},
        {"SELECT TRY_CAST(a AS INT) FROM t",
         "19: syntax error at or near \"AS\"; CAST fails where a text is none of the type; TO_NUMBER(x) is NULL there, "
         "and so is CASE WHEN ISNUMERIC(x) THEN CAST(x AS INT) END; CAST(TO_DT_TZ(x) AS DATE) is NULL where a text is no date such as "
         "2024-02-29"},
        {"SELECT a FROM t LIMIT 1, 20", "17: LIMIT #,# syntax is not supported; write LIMIT 20 OFFSET 1"},
        {"SELECT a FROM t WHERE a > CURRENT_DATE - INTERVAL 3 days", "51: syntax error at or near \"3\"; write INTERVAL '3' DAY"},
        {"SELECT a FROM ./t.csv",
         "15: syntax error at or near \".\"; FROM takes the name of a table, which is that of its file without .csv"},
        {"SELECT a AS 'b c' FROM t", "13: syntax error at or near \"'b c'\"; names stand in double quotes"},
        {"SELECT a FROM t WHERE a = 1 && a = 2", "34: syntax error at or near \"=\"; use AND"},
        {"SELECT TOP 5 a FROM t", "12: syntax error at or near \"5\"; write LIMIT 5 at the end"},
        {"SELECT a FROM t WHERE a RLIKE 'x'",
         "25: syntax error at or near \"RLIKE\"; there are no regular expressions; there are LIKE, ILIKE, INSTR, SUBSTR and REPLACE"},
        {"DESCRIBE t",
         "1: syntax error at or near \"DESCRIBE\"; \"bifun describe FILE\" shows the columns of a file, and \\d in the shell"},
        {"SHOW TABLES", "1, near SHOW: only SELECT is supported; \"bifun describe FILE\" ..."},
        {"SELECT CHAR(a) FROM t",
         "13: syntax error at or near \"a\"; CHR(a) is the character of a code, and CAST(a AS VARCHAR) makes a text of a value"},
        {"SELECT INT(a) FROM t", "11: syntax error at or near \"(\"; write CAST(a AS INT)"},
        {"SELECT TIMESTAMP(a || 'x') FROM t", "18: syntax error at or near \"a\"; write CAST(x AS TIMESTAMP)"},
        {"SELECT CAST(a AS INT) AS b c FROM t", "28: syntax error at or near \"c\""},
        {"SELECT POSITION('x', a) FROM t", "20: syntax error at or near \",\"; write POSITION('x' IN a)"},
        {"SELECT TRIM(LEFT FROM a) FROM t", "18: syntax error at or near \"FROM\"; write TRIM(LEADING FROM s)"},
        {"SELECT TRIM(UP FROM a) FROM t", "13, near UP: t.csv has no column UP; before FROM stand LEADING, TRAILING or BOTH and the "
                                          "character, as in TRIM(LEADING '0' FROM s)"},
        {"SELECT INTERVAL '1 day 2 hours' FROM t",
         "8, near INTERVAL: an interval has one field; write d + INTERVAL '1 day' + INTERVAL '2 hours'"},
        {"SELECT INTERVAL '2 weeks' FROM t", "8, near INTERVAL: an interval has one field; write INTERVAL '14 days'"},
        {"SELECT INTERVAL '2 2' FROM t", "8, near INTERVAL: an interval is written INTERVAL '3 days', ..."},
        {"SELECT a FROM t WHERE a = ANY(ARRAY[1, 2])",
         "25, near =: ANY and ALL are not supported; write the values, as in x IN (1, 2) and x NOT IN (1, 2)"},
        {"SELECT a FROM t WHERE a BETWEEN SYMMETRIC 3 AND 1",
         "25, near BETWEEN: SYMMETRIC is not supported; write x BETWEEN LEAST(y, z) AND GREATEST(y, z)"},
        {"FROM t", "1: syntax error at or near \"FROM\"; write SELECT * FROM"},
        {"SELECT a, FROM t", "11: syntax error at or near \"FROM\"; there is nothing between the comma and FROM"},
        {"SELECT a FROM t WHERE a IN (1,)", "31: syntax error at or near \")\"; there is nothing between the comma and )"},
        {"SELECT a FROM t, LIMIT 1", "18: syntax error at or near \"LIMIT\"; there is nothing between the comma and LIMIT"},
        {"SELEC a FROM t", "1: syntax error at or near \"SELEC\"; did you mean SELECT?"},
        {"SELECT a FROM t WHER a = 3", "22: syntax error at or near \"a\"; did you mean WHERE?"},
        {"SELECT a frm t", "14: syntax error at or near \"t\"; did you mean FROM?"},
        {"SELECT CASE WHEN (a = 1) THEN 2 FROM t", "33: syntax error at or near \"FROM\"; CASE ends with END, as in CASE WHEN ..."},
        {"SELECT (CASE WHEN a = 1 THEN 2 END FROM t", "36: syntax error at or near \"FROM\"; a closing parenthesis is missing"},
        {"SELECT a FROM WHERE a = 1", "15: syntax error at or near \"WHERE\"; FROM takes the name of a table, ..."},
        {"SELECT a FROM t WHERE a CONTAINS 'x'", "25: syntax error at or near \"CONTAINS\"; LIKE '%text%' finds texts that hold another"},
        {"SELECT a FROM t WHERE a = ?", "28: syntax error at end of input; there are no parameters; write the value"},
        {"SELECT a FROM t JOIN x", "23: syntax error at end of input; joins are not supported; FROM takes one table"},
        {"SELECT a FROM t WHERE a = \u2018x\u2019", "27, near \u2018x\u2019: quotes are straight: 'text' and \"name of a column\""},
        {"SELECT \u201Ca b c\u201D FROM t", "13: syntax error at or near \"c\u201D\"; quotes are straight: ..."},
        {"SELECT a AT TIME ZONE '+01:00' FROM t", "10, near AT: AT TIME ZONE is not supported; no function converts zones: ..."},
        {"SELECT a FROM (SELECT a FROM t)", "15: subqueries are not supported; a query is one SELECT over one file, named after FROM"},
        {"SELECT a FROM (SELECT a FROM t) x",
         "23, near a: subqueries are not supported; a query is one SELECT over one file, named after FROM"},
    };
    for (const auto& [sql, message] : refused) {
        expect_failure("a\n", sql, joined({"SQL, character ", message}));
    }
}

} // namespace
