// SPDX-License-Identifier: Apache-2.0
// The program as people run it.
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

TEST(Program, Literals) {
    expect_shown({
        {"-2147483648 ; 0 ; - /* - */ -(5) ; -9223372036854775808 ; NULL ; 1 < 2", "-2147483648, 0, 5, -9223372036854775808, null, true"},
        {"GREATEST(1.0, 1.00) ; LEAST(.5, 5.) ; 12345678901234567890123456789012345678 ; 1.5e-3",
         "1.00, 0.5, 12345678901234567890123456789012345678, 0.0015"},
        {"N'x' ; n'' || 'y'", R"("x", "y")"},
        {joined({"'' ; 'x  ' ; NVL('", std::string(49, 'y'), "', 'z')"}), joined({R"("", "x  ", ")", std::string(49, 'y'), "\""})},
        {"DATE '2024-2-9' ; TIME '09:05' ; TIMESTAMP '2024-02-29 10:00:00.25'", R"("2024-02-09", "09:05:00", "2024-02-29 10:00:00.25")"},
    });
}

TEST(Program, Binding) {
    const arguments mode_2 = {"--set", "compatible_mode=2"};
    const arguments fold_case = {"--set", "case_sensitive=0"};
    expect_shown({
        {"NVL(NULL, 7) ; ABS(-7) ; LEAST(2, 2.5) ; GREATEST(0.5, 1e0) ; MOD(ABS(-7), NVL(NULL, 4))", "7, 7, 2, 1, 3"},
        {"NVL(DATE '2024-01-01', '2023-01-01') ; NVL(DATE '2024-01-01', TIMESTAMP '2024-01-01 01:00:00')",
         R"("2024-01-01", "2024-01-01 00:00:00")"},
        {"IF(1 > NULL, 'x', 'y') ; LNNVL(NULL > 1) ; LNNVL(1 > 0 OR NULL) ; IF(1 = 1, NULL, 2)", R"("y", true, false, null)"},
        {"NVL('', 'x')", "\"\""},
        {"NVL('', 'x') ; NVL('   ', 'x')", R"("x", "   ")", mode_2},
        {"'ABC' = 'abc ' ; 'Abc' IN ('B', 'aBC ', NULL)", "true, true", fold_case},
        {"'\xE4\xB8\x82' = '\xE4\xB8\xA2'", "false", {"--set", "charset=gb18030", "--set", "case_sensitive=0"}}, // second bytes differ
    });
}

TEST(Program, Numbers) {
    expect_shown({
        {"ROUND(7, -1) ; ROUND(-2.5e0) ; ROUND(SQRT(2), 2) ; ROUND(1e0, NULL) ; TRUNC('12.57', 0) ; TRUNC('12.57', 1)",
         "10, -3, 1.41, null, 12, 12.5"},
        {"FLOOR(3000000000) ; CEIL(-1.5) ; POWER(1.5, 2) ; GREATEST(9007199254740993, 0e0) ; MOD(9007199254740993.0, 10)",
         "3000000000, -1, 2.25, 9.007199254740992E+15, 2"},
        {"ABS(-1234567890123456789012345678901234.5678) ; BITAND(-4, NVL(NULL, 6))", "1234567890123456789012345678901234.5678, 4"},
        {joined({"TO_CHAR(-12345678901234567890123456789012345.678, 'FM", std::string(35, '9'), "D000')"}),
         "\"-12345678901234567890123456789012345.678\""},
        {"TO_CHAR(3000000000, 'FM9G999G999G999') ; TO_CHAR(1234.5, 'FM9G999D00L', 'NLS_NUMERIC_CHARACTERS='',.'' NLS_CURRENCY=€')",
         R"("3,000,000,000", "1.234,50€")"},
        {"TO_CHAR(1.5, NULL) ; TO_CHAR(1e20)", R"(null, "1E+20")"},
        {"TO_CHAR(1, '9', 'x')", "TO_CHAR: -6131 invalid NLS parameters in row 1"},
    });
    expect_answer("x,n,e\n2.345,2,1e2\n,1,\n-2.5,,-2.5e0\n1250,-2,25e-1\n",
                  "SELECT ROUND(x, n) a, ROUND(2.55, n) b, ROUND(x) c, TRUNC(x, 1) d, ROUND(e) f, ROUND(e, n) g, SIGN(e) h FROM t",
                  "a,b,c,d,f,g,h\n2.35,2.55,2,2.3,100,100,1\n,2.6,,,,,\n,,-3,-2.5,-3,,-1\n1300,0,1250,1250,3,0,1\n");
    expect_failure("x\n4\n\n-1\n", "SELECT SQRT(x) FROM t",
                   "SQRT: -6803 an argument is outside the function's domain in row 3 (t.csv, line 4), given -1");
    expect_failure("x\n\n1.5\n", "SELECT TO_CHAR(x, '9.9.9') FROM t",
                   "TO_CHAR: -6130 invalid number format: 9 is a digit and 0 one that ...");
}

// Conditions, and the rows for which they hold by the column i.
TEST(Program, Conditions) {
    const std::string file = "i,b,d,e,s,day,moment,clock\n"
                             "1,3000000000,1.50,1e3,abc,2024-02-29,2024-02-29 10:00,10:00\n"
                             "2,5,-0.25,2.5e0,\"abc  \",2023-01-01,2024-01-01 00:00:00,23:59:59.5\n"
                             "3,,,,,,,\n"
                             "4,4,12345678901234567890,-1e-3,ABC,1999-12-31,1999-12-31 12:00,00:00\n";
    std::istringstream conditions(
        "i < 1.5 -> 1 ; b > d -> 1 2 ; d = 12345678901234567890.0 -> 4 ; e = 1000 -> 1 ; s = 'abc' -> 1 2 ; "
        "s <> 'abc' -> 4 ; s < 'abd' -> 1 2 4 ; day >= '2023-01-01' -> 1 2 ; day < moment -> 1 2 4 ; clock > '10:00' -> 2 ; "
        "i BETWEEN 2 AND b -> 2 4 ; i NOT BETWEEN 2 AND 3 -> 1 4 ; i IN (4, 1.0, NULL) -> 1 4 ; i NOT IN (4, b) -> 1 2 ; "
        "s IN ('b', 'abc ', 'ABC', 'a') -> 1 2 4 ; d IN (7.0, 1.500, -0.25) -> 1 2 ; e IN (1e3, -1e-3) -> 1 4 ; "
        "day NOT IN ('2024-02-29', '1999-12-31') -> 2 ; i IN (3, b, 1) -> 1 3 4 ; e > 0 AND (LN(e) > 1 AND i <> 2) -> 1 ; "
        "NOT (b = 5) -> 1 4 ; b = 5 OR i = 3 -> 2 3 ; NOT (b = 5 AND i = 2) -> 1 3 4 ; b IS NULL -> 3 ; d IS NOT NULL -> 1 2 4 ; "
        "(b > 4) IS UNKNOWN -> 3 ; (b > 4) IS NOT TRUE -> 3 4 ; LNNVL(b > 4) -> 3 4 ; NULL -> ; i > 4 AND ABS(b) > 0 -> ");
    for (std::string condition; std::getline(conditions, condition, ';');) {
        const std::size_t arrow = condition.find("-> ");
        std::string rows = joined({"i\n", condition.substr(arrow + 3)});
        std::ranges::replace(rows, ' ', '\n');
        expect_answer(file, joined({"SELECT i FROM t WHERE ", condition.substr(0, arrow)}), rows);
    }
}

TEST(Program, FilesAndFormats) {
    const std::string texts = "name,note\nAnn,\nBob,\"\"\nCy  ,\"a,\"\"b\"\"\"\nDé 山,\"line\nbreak\"\n";
    const arguments json = {"--format", "json"};
    expect_answer(texts, "SELECT * FROM t", texts);
    expect_answer("a,b\r\n1,2\r\n\r\n3,4", "SELECT b, a FROM T", "b,a\n2,1\n4,3\n");
    expect_answer("\xEF\xBB\xBF\x61\n1\n", "SELECT a FROM t", "a\n1\n");
    expect_answer("a\n1\n\n3\n", "SELECT NVL(a, 2) x FROM t", "x\n1\n2\n3\n");
    expect_answer("a,b\n", "SELECT b FROM t", "b\n");
    expect_answer("a,b\n", "SELECT b FROM t", "[]\n", json);
    // Types are inferred from all rows, or given.
    expect_answer("a,b,c,d,e,f\n007,1,1,2024-01-01,,12345678901\n1,2.50,1e+2,2024-01-01 10:00,,2\n", "SELECT * FROM t",
                  "[\n  {\"a\": \"007\", \"b\": 1, \"c\": 1, \"d\": \"2024-01-01 00:00:00\", \"e\": null, \"f\": 12345678901},\n"
                  "  {\"a\": \"1\", \"b\": 2.50, \"c\": 100, \"d\": \"2024-01-01 10:00:00\", \"e\": null, \"f\": 2}\n]\n",
                  json);
    expect_answer("a,b\n1,2\n", "SELECT *, a = '1' FROM t", "[\n  {\"a\": \"1  \", \"b\": 2, \"a = '1'\": true}\n]\n",
                  {"--types", "a:CHAR(3), b : decimal", "--format", "json"});
    expect_answer(texts, "SELECT name n, note n FROM t WHERE note <> ''",
                  "[\n  {\"n\": \"Cy  \", \"n_2\": \"a,\\\"b\\\"\"},\n  {\"n\": \"Dé 山\", \"n_2\": \"line\\nbreak\"}\n]\n", json);
    expect_answer("a\nnan\n-inf\n0.1\n", "SELECT a FROM t", "[\n  {\"a\": \"NaN\"},\n  {\"a\": \"-Infinity\"},\n  {\"a\": 0.1}\n]\n",
                  {"--format", "json", "--types", "a:DOUBLE"});
    expect_answer("x,n,y\n山é,5,\"a\tb\"\nlong,,z\n", "SELECT x, n, y FROM t",
                  " x    |    n | y\n------+------+------\n 山é  |    5 | a\\tb\n long | NULL | z\n", {"--format", "table"});
    // The limit counts rows that are selected, and nothing behind it is read.
    expect_answer("a\n1\n2\nx\n", "SELECT a FROM t LIMIT 2", "a\n1\n2\n", {"--types", "a:INT", "--batch-rows", "1"});
    expect_answer("a\n1\n5\n2\n6\n7\n", "SELECT a FROM t WHERE a > 4 LIMIT 2", "a\n5\n6\n", {"--batch-rows", "2"});
    expect_answer("a,b\n1,\n2,5\n3,\n4,6\n", "SELECT a, NVL(b, 0) n, a > b c FROM t WHERE a <> 2", "a,n,c\n1,0,\n3,0,\n4,6,false\n");
    expect_answer("", "SELECT zone FROM zones WHERE latitude > 60.0 AND mean_time_until < '1900-01-01'", "zone\nEurope/Helsinki\n",
                  {BIFUN_ZONES});
}

// A function's error names the row of the file. What is complete before it stays.
TEST(Program, FunctionErrors) {
    const std::string file = "a,b\n1,1\n2,-9223372036854775808\n3,3\n-9223372036854775808,4\n";
    const std::string in_row_2 = "ABS: -6102 numeric overflow in row 2 (t.csv, line 3), given -9223372036854775808";
    const std::string in_row_4 = "ABS: -6102 numeric overflow in row 4 (t.csv, line 5), given -9223372036854775808";
    expect_failure(file, "SELECT ABS(a) FROM t", in_row_4);
    expect_failure(file, "SELECT ABS(a) FROM t WHERE b <> 1 AND b <> 3", in_row_4);
    expect_failure(file, "SELECT ABS(a) FROM t WHERE a <> 1 AND b <> 3", in_row_4);
    expect_failure(file, "SELECT a FROM t WHERE ABS(b) > 0", in_row_2);
    expect_failure(file, "SELECT ABS(NVL(b, 0)) FROM t", in_row_2);
    expect_answer(file, "SELECT ABS(a) v FROM t", "v\n1\n2\n", {"--batch-rows", "2"}, in_row_4);
    expect_answer(file, "SELECT ABS(b) v FROM t", "[\n  {\"v\": 1}\n]\n", {"--format", "json", "--batch-rows", "1"}, in_row_2);
    expect_answer(file, "SELECT ABS(a) v FROM t LIMIT 3", "v\n1\n2\n3\n");
}

TEST(Program, SqlErrors) {
    struct sql_error {
        std::string sql, message;
    };
    const sql_error errors[] = {
        {"SELECT é, 'x' y z", "17: syntax error at or near \"z\""},
        {"SELECT nmae FROM t", "8, near nmae: t.csv has no column nmae; did you mean Name?"},
        {"SELECT 1 FROM q", "15, near q: there is no table q; the tables are t"},
        {"SELECT q.qty FROM t", "8, near q.qty: there is no table q in FROM"},
        {"SELECT NVLL(1, 2)", "8, near NVLL: there is no function nvll; did you mean NVL?"},
        {"SELECT GREATEST(1)", "8, near GREATEST: GREATEST takes 2 or more arguments, not 1: GREATEST(x, y, ...)"},
        {"SELECT FLOOR('1')",
         "8, near FLOOR: FLOOR does not take (VARCHAR); it takes (INT), (DOUBLE), (DECIMAL); write the number without quotes"},
        {"SELECT TO_CHAR(qty, Name) FROM t",
         "8, near TO_CHAR: TO_CHAR does not take (INT, VARCHAR); it takes (INT, constant VARCHAR), ..."},
        {"SELECT TRUNC(1.5e0, 1)",
         "8, near TRUNC: TRUNC does not take (DOUBLE, INT); it takes (DECIMAL, INT), (VARCHAR, INT), (DATETIME, constant VARCHAR), ..."},
        {"SELECT 1e999", "8, near 1e999: the number is beyond the range of DOUBLE"},
        {"SELECT 1 FROM t WHERE qty", "23, near qty: a condition is needed here, and this is of type INT; compare it, as in x <> 0"},
        {"SELECT qty = '1' FROM t", "12, near =: INT and VARCHAR cannot be compared; write the number without quotes"},
        {"SELECT name > 5 FROM t", "13, near >: VARCHAR and INT cannot be compared; ... --decimal ..."},
        {"SELECT name > DATE '2024-01-01' FROM t", "13, near >: VARCHAR and DATE cannot be compared"},
        {"SELECT day > 5 FROM t", "12, near >: DATE and INT cannot be compared; a date is written in quotes"},
        {"SELECT day > 'x' FROM t", "14, near 'x': this cannot be read as DATE; a date is written DATE '2025-01-31'"},
        {"SELECT day > '31.01.2025' FROM t", "14, near '31.01.2025': this cannot be read as DATE; write DATE '2025-01-31'"},
        {"SELECT day > '01/02/2025' FROM t",
         "14, near '01/02/2025': this cannot be read as DATE; write DATE '2025-02-01' or DATE '2025-01-02'"},
        {"SELECT qty ^ 1 FROM t", "12, near ^: the operator ^ is not supported; use POWER(x, y)"},
        {"SELECT qty # 1 FROM t",
         "12, near #: the operator # is not supported; operators are + - * / % || = <> < <= > >= AND OR NOT BETWEEN IN LIKE ILIKE IS"},
        {"SELECT ROW(1, 2)", "8, near ROW: records are not supported"},
        {"SELECT 1 FROM t ORDER BY qty", "26, near qty: ORDER BY is not supported; rows come in the order of the file"},
        {"SELECT qty FROM t GROUP BY qty",
         "28, near qty: GROUP BY is not supported; a query gives a row for every row of the file that passes WHERE"},
        {"SELECT 1 FROM t, q", "15, near t: joins are not supported; FROM takes one table"},
        {"SELECT (SELECT 1)", "8, near (: subqueries are not supported; write the values, as in x IN (1, 2)"},
        {"SELECT COUNT(*) FROM t",
         "8, near COUNT: aggregates such as COUNT(*) are not supported; a query gives a row for every row of the file that passes WHERE"},
        {"SELECT 1; SELECT 2", "11, near SELECT: one query at a time; there is a second one behind the semicolon"},
        {"DROP TABLE t", "1, near DROP: only SELECT is supported"},
        {joined({"SELECT 1", std::string(38, '0')}),
         "8, near 100000000000000000000000000000...: a DECIMAL has at most 38 digits, and at most 127 behind the point; write ..."},
    };
    for (const sql_error& error : errors) {
        expect_failure("Name,qty,day\nAnn,1,2024-01-01\n", error.sql, joined({"SQL, character ", error.message}));
    }
    expect_failure("", "SELECT 1,\n  a", "SQL, line 2, character 3, near a: there is no column a, because the query has no FROM; ...");
    expect_failure("", "SELECT 'é'", "SQL, character 8, near 'é': the character set euc-kr does not ...", {"--set", "charset=euc-kr"});
}

// Sets the size of the stack of programs run from here.
struct stack_limit {
    rlimit before{};

    explicit stack_limit(rlim_t size) {
        getrlimit(RLIMIT_STACK, &before);
        const rlimit smaller{size, before.rlim_max};
        setrlimit(RLIMIT_STACK, &smaller);
    }
    ~stack_limit() { setrlimit(RLIMIT_STACK, &before); }
    stack_limit(const stack_limit&) = delete;
    stack_limit& operator=(const stack_limit&) = delete;
};

// Whatever is nested, it is evaluated or refused with its place, and never too much for a small stack.
TEST(Program, DeepStatements) {
    const stack_limit small(rlim_t{1} << 20);
    struct nested {
        std::string begin, open, middle, close;
        std::string error; // where even little of it is an error
    };
    const nested kinds[] = {
        {"", "ABS(", "1", ")", ""},
        {"", "(", "1", ")", ""},
        {"'a'", "||'a'", "", "", ""},
        {"", "NOT ", "1=1", "", ""},
        {"1", " * 1", "", "", ""},
        {"", "CASE WHEN ", "1=1", " THEN 1=1 END", ""},
        {"", "CASE COALESCE(1, 1) WHEN 2 THEN 3 ELSE ", "1", " END", ""},
        {"", "(1=1 OR ", "1=1", ")", ""},
        {"", "SUBSTRING(", "'a'", " FROM 1 FOR 1)", ""},
        {"1", " UNION SELECT 1", "", "", "UNION"},
        {"", "(SELECT ", "1", ")", "subqueries"},
        {"1 FROM a", " JOIN b ON 1=1", "", "", "joins"},
        {"", "ARRAY[", "1", "]", "arrays"},
        {"x", " COLLATE a", "", "", "COLLATE"},
        {"", "/* ' */ E'\\'' || (", "'a'", ")", ""},
    };
    const scratch_directory directory;
    for (const nested& kind : kinds) {
        for (const std::size_t depth : {95U, 10000U}) {
            SCOPED_TRACE(joined({kind.begin, kind.open, kind.middle}));
            std::string sql = joined({"SELECT ", kind.begin});
            for (std::size_t i = 0; i < depth && sql.size() < 25000; ++i) {
                sql += kind.open;
            }
            sql += kind.middle;
            for (std::size_t i = 0; i < depth && sql.size() < 50000; ++i) {
                sql += kind.close;
            }
            const run_result result = directory.run({sql});
            const bool fails = depth > 100 || !kind.error.empty();
            EXPECT_EQ(result.status, fails ? 1 : 0) << result.err;
            EXPECT_NE(result.err.find(depth > 100 ? "nested more than 200 levels deep" : kind.error), std::string::npos) << result.err;
        }
    }
    // What is long is not deep, nor is what stands in quotes and comments.
    const std::pair<std::string, std::string> long_lists[] = {{"ABS(-1)", ","}, {"1 = 1", " OR "},    {"1 BETWEEN 0 AND 2", " AND "},
                                                              {"'((('", ","},   {"1 /* ((( */", ","}, {"$$((($$", ","}};
    for (const auto& [item, separator] : long_lists) {
        std::string sql = joined({"SELECT ", item});
        while (sql.size() < 25000) {
            sql.append(separator).append(item);
        }
        EXPECT_EQ(directory.run({sql}).status, 0) << item;
    }
}

TEST(Program, FileErrors) {
    const std::string query = "SELECT 1 FROM t";
    const std::string read = "SELECT a FROM t";
    expect_failure("", query, "t.csv: No such file or directory; check the file's name ...", {"t.csv"});
    expect_failure("a\n", query, "NULL: no such file; another text for NULL has the option before it, too: --null 'NA' --null 'NULL'",
                   {"--null", "NA", "NULL"});
    expect_failure("\n", query, "t.csv: the file is empty; its first line must name the columns");
    expect_failure("a,b\n\"x\ny\",1\n3\n", query, "t.csv, line 4: the header has 2 fields and this row 1; ...");
    expect_failure("a,b\n1,2\n3,\"x\n\n", query, "t.csv, line 3: the row that begins here has a quote that is never closed; ...");
    expect_failure("a\nx\n\"y\"z\n", query, "t.csv, line 3: text stands behind a closing quote; ...");
    expect_failure("PAR1xx", query,
                   "t.csv: this is a Parquet file; bifun reads CSV files, into which what has written this one may export it");
    expect_failure("BZh9", query, "t.csv: this is packed by bzip2; bzip2 -dc FILE | bifun - \"SELECT * FROM stdin\" reads it");
    expect_failure(
        "{\"a\": 1}\n", query,
        "t.csv: this is JSON; with --no-header --quote none --delimiter 0x01 each line is a text, for JSON_VALUE(column_1, '$.name')");
    expect_answer("{\"a\": 1}\n{\"a\": \"x\"}\n", "SELECT JSON_VALUE(column_1, '$.a') AS a FROM t", "a\n1\nx\n",
                  {"--no-header", "--quote", "none", "--delimiter", "0x01"});
    const scratch_directory mixed;
    mixed.write("t.csv", "a\n\xC3\xA4\n\xE4-\n");
    EXPECT_EQ(
        mixed.run({"describe", "t.csv"}).err,
        "bifun: t.csv: there is text that is not valid utf-8, besides text that is; in a query --ignore-errors leaves out such rows\n");
    expect_failure(
        "a\n\xC3\xA4\n\xE4-\n", read,
        "t.csv, line 3, column a: \"\xEF\xBF\xBD-\" is not valid utf-8, as other rows are; --ignore-errors leaves out such rows");
    expect_failure("a\nx\n\xC0\xAF\n", read, "t.csv, line 3, column a: \"\xEF\xBF\xBD\xEF\xBF\xBD\" is not valid utf-8; ...");
    expect_failure(
        "a\n1\n2147483648\n", read,
        "t.csv, line 3, column a: \"2147483648\" is not of type INT; give the column another type with --types, such as a:VARCHAR",
        {"--types", "a:INT"});
    expect_failure(
        "a\n10:00\n", read,
        "t.csv, line 2, column a: \"10:00\" is not of type DATE; give the column another type with --types, such as a:VARCHAR, or "
        "a format, as in \"a:DATE 'DD.MM.YYYY'\"",
        {"--types", "a:DATE"});
    expect_failure("a\néé  \nééé\n", read, "t.csv, line 3, column a: \"ééé\" does not fit CHAR(2); ...", {"--types", "a:CHAR(2)"});
    expect_failure("name\nx\n", query, "--types: t.csv has no column nam; did you mean name?", {"--types", "nam:INT"});
    expect_failure("", "SELECT 1", "--types: \"BLOB\" is not a type; there are BOOL, TINYINT, ...", {"--types", "a:BLOB"});
    expect_answer("a\n007\n", "SELECT a || 'x' v FROM t", "v\n007x\n", {"--types", "a:Text"});
    expect_failure("a\n", query, "SQL, character 15, near t: ./t.csv and t.csv are both the table t; give one of them", {"./t.csv"});
}

TEST(Program, OptionErrors) {
    const std::pair<arguments, std::string> errors[] = {
        {{"--fromat", "csv", "SELECT 1"}, "The following argument was not expected: --fromat; did you mean --format? see bifun --help"},
        {{"--set", "mode=1", "SELECT 1"}, "--set: there is no setting mode; there are compatible_mode, charset, ..."},
        {{"--set", "charset=latin1", "SELECT 1"}, "--set: charset cannot be \"latin1\"; it can be utf-8, gb18030, euc-kr"},
        {{"--batch-rows", "65537", "SELECT 1"}, "--batch-rows: Value 65537 not in range 1 to 65536; see bifun --help"},
        {{"--library", "libm.so.6", "SELECT 1"}, "the function library libm.so.6 does not export bifun_dll_var_init; ..."},
        {{"--sep", ";", "SELECT 1"},
         "The following argument was not expected: --sep; --delimiter says what separates the fields; see bifun --help"},
        {{"--output", "t.parquet", "SELECT 1"}, "--output: .parquet cannot be written; there are table, csv, ..."},
        {{"SELECT * FROM stdin"},
         "SQL, character 15, near stdin: the standard input is read where its name - is given, as in: bifun - ..."},
        {{"t.csv", "SELECT", "a", "FROM", "t"}, "the query is one word, in quotes: bifun t.csv \"SELECT a FROM t\""},
        {{"select a FROM t", "t.csv"}, "the query is the last word, behind the files: bifun FILE.csv \"select a FROM t\""},
        {{"help"}, "help is neither a file nor a query; ..."},
        {{"SELECT * FROM 't.csv'"},
         "SQL, character 15: syntax error at or near \"'t.csv'\"; FROM takes the name of a table, which is that of its file without .csv"},
        {{"t.csv"}, "there is no query behind t.csv; give one as in: bifun t.csv \"SELECT * FROM t\""},
        {{"functions", "lnvl"}, "there is no function lnvl; did you mean NVL or LNNVL?"}};
    for (const auto& [words, message] : errors) {
        expect_failure("", words.back(), message, {words.begin(), words.end() - 1});
    }
    EXPECT_TRUE(scratch_directory().run({}).err.starts_with("bifun: there is no query; give one as in: bifun \"SELECT NVL(NULL, 7)\""));
}

TEST(Program, BatchSizeDoesNotShow) {
    const scratch_directory directory;
    std::string file = "a,b,s\n";
    for (int i = 0; i < 70000; ++i) {
        const std::string text(static_cast<std::size_t>(i % 60), 'x');
        const std::string middle = i % 7 == 0 ? "" : std::to_string(i % 1000);
        file += joined({std::to_string(i), ",", middle, middle.empty() ? "," : ".5,", text, "\n"});
    }
    directory.write("t.csv", file);
    const std::string sql =
        "SELECT a, NVL(b, -1), LEAST(a, b), NVL(s, 'none'), IF(b > 500, s, 'small') FROM t WHERE a <> 5 AND (b IS NULL OR b > 10)";
    const std::string whole = directory.run({"--batch-rows", "65536", "t.csv", sql}).out;
    EXPECT_GT(whole.size(), 1000000U);
    for (const char* const rows : {"1", "1000"}) {
        EXPECT_EQ(directory.run({"--batch-rows", rows, "t.csv", sql}).out, whole) << rows;
    }
    EXPECT_EQ(directory.run({"--types", "b:VARCHAR", "t.csv", "SELECT * FROM t"}).out, file);
}

TEST(Program, OutputThatCannotBeWritten) {
    const scratch_directory directory;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    const run_result unread = directory.run({BIFUN_ZONES, "SELECT * FROM zones"}, joined({"&", std::to_string(ends[1])}));
    const run_result unwritten = directory.run({BIFUN_ZONES, "SELECT * FROM zones"}, "/dev/full");
    close(ends[1]);
    EXPECT_EQ(unread.err, ""); // a reader that has gone is no error
    EXPECT_EQ(unread.status, 0);
    EXPECT_EQ(unwritten.err, "bifun: the output cannot be written: No space left on device\n");
    EXPECT_EQ(unwritten.status, 1);
}

TEST(Program, FunctionsAreDescribed) {
    const scratch_directory directory;
    EXPECT_NE(directory.run({"functions"}).out.find("\nLNNVL(condition) "), std::string::npos);
    const std::string description = directory.run({"functions", "Nvl"}).out;
    EXPECT_NE(description.find("bifun \"SELECT NVL(NULL, 7)\"\n"), std::string::npos);
    EXPECT_NE(description.find("    bnvl_dec_av        (DECIMAL column, DECIMAL constant) -> DECIMAL\n"), std::string::npos);
    EXPECT_TRUE(directory.run({"functions", "case"}).out.starts_with("CASE [x] WHEN condition THEN y ... [ELSE z] END\n"));
    EXPECT_TRUE(directory.run({"functions", "--markdown"}).out == read_file(BIFUN_FUNCTION_REFERENCE))
        << "bifun functions --markdown > docs/functions.md";
}

} // namespace
