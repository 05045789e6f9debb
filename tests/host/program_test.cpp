// The program as people run it.
#include <fcntl.h>
#include <unistd.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

// ---- one run, one answer -------------------------------------------------------------------------------------------

struct program_case {
    const char* name;
    std::string file; // written as t.csv unless it is empty
    arguments words;
    std::string out;
    std::string err = {};
};

void PrintTo(const program_case& tested, std::ostream* stream) { *stream << tested.name; }

class Program : public testing::TestWithParam<program_case> {};

TEST_P(Program, Answers) {
    const scratch_directory directory;
    if (!GetParam().file.empty()) {
        directory.write("t.csv", GetParam().file);
    }
    const run_result result = directory.run(GetParam().words);
    EXPECT_EQ(result.out, GetParam().out);
    EXPECT_EQ(result.err, GetParam().err);
    EXPECT_EQ(result.status, GetParam().err.empty() ? 0 : 1);
}

// With headings left out of the expectation by an alias.
program_case value(const char* name, const std::string& sql, const std::string& expected, arguments options = {}) {
    options.push_back(joined({"SELECT ", sql, " AS v"}));
    return {name, "", std::move(options), joined({"v\n", expected, "\n"})};
}

// The rows of t.csv for which a condition holds, by the column i.
program_case filter(const char* name, const std::string& condition, const std::string& expected) {
    const std::string file = "i,b,d,e,s,day,moment,clock\n"
                             "1,3000000000,1.50,1e3,abc,2024-02-29,2024-02-29 10:00,10:00\n"
                             "2,5,-0.25,2.5e0,\"abc  \",2023-01-01,2024-01-01 00:00:00,23:59:59.5\n"
                             "3,,,,,,,\n"
                             "4,4,12345678901234567890,-1e-3,ABC,1999-12-31,1999-12-31 12:00,00:00\n";
    return {name, file, {"t.csv", joined({"SELECT i FROM t WHERE ", condition})}, joined({"i\n", expected})};
}

program_case failure(const char* name, const std::string& file, arguments words, const std::string& message) {
    return {name, file, std::move(words), "", joined({"bifun: ", message, "\n"})};
}

program_case sql_failure(const char* name, const std::string& sql, const std::string& message) {
    return failure(name, "Name,qty,day\nAnn,1,2024-01-01\n", {"t.csv", sql}, joined({"SQL, character ", message}));
}

std::string nested_negations(int depth) {
    std::string sql = "SELECT ";
    for (int i = 0; i < depth; ++i) {
        sql += "NOT ";
    }
    return sql + "TRUE";
}

std::string named(const testing::TestParamInfo<program_case>& tested) { return tested.param.name; }

const std::string texts = "name,note\nAnn,\nBob,\"\"\nCy  ,\"a,\"\"b\"\"\"\nDé 山,\"line\nbreak\"\n";

INSTANTIATE_TEST_SUITE_P(
    Literals, Program,
    testing::Values(value("Integers", "-2147483648", "-2147483648"), value("Zero", "0", "0"),
                    value("SignsAndComments", "- /* - */ -(5)", "5"), value("LowestBigint", "-9223372036854775808", "-9223372036854775808"),
                    value("ScaleIsKept", "GREATEST(1.0, 1.00)", "1.00"), value("PointAtTheEdge", "LEAST(.5, 5.)", "0.5"),
                    value("WideDecimal", "12345678901234567890123456789012345678", "12345678901234567890123456789012345678"),
                    value("Exponent", "1.5e-3", "0.0015"), value("Null", "NULL", ""), value("EmptyString", "''", "\"\""),
                    value("TrailingBlanks", "'x  '", "x  "),
                    value("LongString", joined({"NVL('", std::string(49, 'y'), "', 'z')"}), std::string(49, 'y')),
                    value("Date", "DATE '2024-2-9'", "2024-02-09"), value("Time", "TIME '09:05'", "09:05:00"),
                    value("Timestamp", "TIMESTAMP '2024-02-29 10:00:00.25'", "2024-02-29 10:00:00.25"), value("Boolean", "1 < 2", "true")),
    named);

INSTANTIATE_TEST_SUITE_P(
    Binding, Program,
    testing::Values(value("IntStaysInt", "NVL(NULL, 7)", "7"), value("IntWidensToBigint", "ABS(-7)", "7"),
                    value("MixedNumbersWiden", "LEAST(2, 2.5)", "2"), value("DecimalWidensToDouble", "GREATEST(0.5, 1e0)", "1"),
                    value("NestedCalls", "MOD(ABS(-7), NVL(NULL, 4))", "3"),
                    value("TextReadAsDate", "NVL(DATE '2024-01-01', '2023-01-01')", "2024-01-01"),
                    value("MixedDatesAreDatetimes", "NVL(DATE '2024-01-01', TIMESTAMP '2024-01-01 01:00:00')", "2024-01-01 00:00:00"),
                    value("UnknownConditionIsNotTrue", "IF(1 > NULL, 'x', 'y')", "y"), value("LnnvlOfUnknown", "LNNVL(NULL > 1)", "true"),
                    value("LnnvlOfTrue", "LNNVL(1 > 0 OR NULL)", "false"), value("NullChosen", "IF(1 = 1, NULL, 2)", ""),
                    value("Mode1KeepsEmpty", "NVL('', 'x')", "\"\""),
                    value("Mode2ReplacesEmpty", "NVL('', 'x')", "x", {"--set", "compatible_mode=2"}),
                    value("Mode2KeepsBlanks", "NVL('   ', 'x')", "   ", {"--set", "compatible_mode=2"}),
                    value("FoldedCase", "'ABC' = 'abc '", "true", {"--set", "case_sensitive=0"}),
                    value("FoldedList", "'Abc' IN ('B', 'aBC ', NULL)", "true", {"--set", "case_sensitive=0"}),
                    value("FoldingSparesSecondBytes", "'\xE4\xB8\x82' = '\xE4\xB8\xA2'", "false",
                          {"--set", "charset=gb18030", "--set", "case_sensitive=0"})),
    named);

INSTANTIATE_TEST_SUITE_P(
    Numbers, Program,
    testing::Values(
        value("RoundOfInt", "ROUND(7, -1)", "10"), value("RoundOfDoubleToInteger", "ROUND(-2.5e0)", "-3"),
        value("RoundOfCall", "ROUND(SQRT(2), 2)", "1.41"), value("RoundByNull", "ROUND(1e0, NULL)", ""),
        value("TruncOfText", "TRUNC('12.57')", "12"), value("TruncOfTextToDigits", "TRUNC('12.57', 1)", "12.5"),
        value("FloorOfBigint", "FLOOR(3000000000)", "3000000000"), value("CeilOfDecimal", "CEIL(-1.5)", "-1"),
        value("PowerOfDecimal", "POWER(1.5, 2)", "2.25"),
        value("NearestDoubleOfBigint", "GREATEST(9007199254740993, 0e0)", "9007199254740992"),
        value("NearestDoubleOfDecimal", "MOD(9007199254740993.0, 10)", "2"),
        value("AbsKeepsDigits", "ABS(-1234567890123456789012345678901234.5678)", "1234567890123456789012345678901234.5678"),
        value("BitandOfLiterals", "BITAND(-4, NVL(NULL, 6))", "4"),
        value("FormattedDecimalKeepsDigits",
              joined({"TO_CHAR(-12345678901234567890123456789012345.678, 'FM", std::string(35, '9'), "D000')"}),
              "-12345678901234567890123456789012345.678"),
        value("FormattedBigint", "TO_CHAR(3000000000, 'FM9G999G999G999')", "\"3,000,000,000\""),
        value("NlsParameters", "TO_CHAR(1234.5, 'FM9G999D00L', 'NLS_NUMERIC_CHARACTERS='',.'' NLS_CURRENCY=€')", "\"1.234,50€\""),
        value("NullFormat", "TO_CHAR(1.5, NULL)", ""), value("TextOfDouble", "TO_CHAR(1e20)", "1E+20"),
        program_case{
            "ColumnsWithNulls",
            "x,n,e\n2.345,2,1e2\n,1,\n-2.5,,-2.5e0\n1250,-2,25e-1\n",
            {"t.csv", "SELECT ROUND(x, n) a, ROUND(2.55, n) b, ROUND(x) c, TRUNC(x, 1) d, ROUND(e) f, ROUND(e, n) g, SIGN(e) h FROM t"},
            "a,b,c,d,f,g,h\n2.35,2.55,2,2.3,100,100,1\n,2.6,,,,,\n,,-3,-2.5,-3,,-1\n1300,0,1250,1250,3,0,1\n"},
        failure("Domain", "x\n4\n\n-1\n", {"t.csv", "SELECT SQRT(x) FROM t"},
                "SQRT: -6803 an argument is outside the function's domain in row 3"),
        failure("Logarithm", "", {"SELECT LN(0)"}, "LN: -6803 an argument is outside the function's domain in row 1"),
        failure("Angle", "", {"SELECT ASIN(2)"}, "ASIN: -6803 an argument is outside the function's domain in row 1"),
        failure("PowerOfZero", "", {"SELECT POWER(0, -1)"}, "POWER: -6803 an argument is outside the function's domain in row 1"),
        failure("Overflow", "x\n1\n1000\n", {"t.csv", "SELECT ROUND(EXP(x), 1) FROM t"}, "EXP: -6102 numeric overflow in row 2"),
        failure("NotANumber", "x\n1\n1a\n", {"t.csv", "SELECT TRUNC(x) FROM t"},
                "TRUNC: -6803 an argument is outside the function's domain in row 2"),
        failure("InvalidFormat", "x\n\n1.5\n", {"t.csv", "SELECT TO_CHAR(x, '9.9.9') FROM t"},
                "TO_CHAR: -6130 invalid number format in row 2"),
        failure("InvalidNls", "", {"SELECT TO_CHAR(1, '9', 'x')"}, "TO_CHAR: -6131 invalid NLS parameters in row 1"),
        failure("EmptyNls", "", {"SELECT TO_CHAR(1, '9', '')"}, "TO_CHAR: -4037 the NLS parameter is empty or longer than 128 bytes")),
    named);

INSTANTIATE_TEST_SUITE_P(
    Conditions, Program,
    testing::Values(filter("IntAgainstDecimal", "i < 1.5", "1\n"), filter("BigintAgainstDecimal", "b > d", "1\n2\n"),
                    filter("DecimalAgainstDecimal", "d = 12345678901234567890.0", "4\n"), filter("DoubleAgainstInt", "e = 1000", "1\n"),
                    filter("BlanksDoNotCount", "s = 'abc'", "1\n2\n"), filter("NotEqualSkipsNull", "s <> 'abc'", "4\n"),
                    filter("StringOrder", "s < 'abd'", "1\n2\n4\n"), filter("DateAgainstText", "day >= '2023-01-01'", "1\n2\n"),
                    filter("DateAgainstDatetime", "day < moment", "1\n2\n4\n"), filter("Time", "clock > '10:00'", "2\n"),
                    filter("Between", "i BETWEEN 2 AND b", "2\n4\n"), filter("NotBetween", "i NOT BETWEEN 2 AND 3", "1\n4\n"),
                    filter("InList", "i IN (4, 1.0, NULL)", "1\n4\n"), filter("NotInWithNullIsUnknown", "i NOT IN (4, NULL)", ""),
                    filter("InListOfTexts", "s IN ('b', 'abc ', 'ABC', 'a')", "1\n2\n4\n"),
                    filter("InListOfDecimals", "d IN (7.0, 1.500, -0.25)", "1\n2\n"),
                    filter("InListOfDoubles", "e IN (1e3, -1e-3)", "1\n4\n"),
                    filter("InListOfDates", "day NOT IN ('2024-02-29', '1999-12-31')", "2\n"),
                    filter("InListWithColumn", "i IN (3, b, 1)", "1\n3\n4\n"),
                    filter("FirstConditionGuardsSecond", "e > 0 AND (LN(e) > 1 AND i <> 2)", "1\n"),
                    filter("NotOfUnknown", "NOT (b = 5)", "1\n4\n"), filter("UnknownOrTrue", "b = 5 OR i = 3", "2\n3\n"),
                    filter("FalseAndUnknown", "NOT (b = 5 AND i = 2)", "1\n3\n4\n"), filter("IsNull", "b IS NULL", "3\n"),
                    filter("IsNotNull", "d IS NOT NULL", "1\n2\n4\n"), filter("IsUnknown", "(b > 4) IS UNKNOWN", "3\n"),
                    filter("IsNotTrue", "(b > 4) IS NOT TRUE", "3\n4\n"), filter("FunctionAsCondition", "LNNVL(b > 4)", "3\n4\n"),
                    filter("NullCondition", "NULL", ""), filter("NothingPasses", "i > 4 AND ABS(b) > 0", "")),
    named);

INSTANTIATE_TEST_SUITE_P(
    FilesAndFormats, Program,
    testing::Values(
        program_case{"CsvGoesRound", texts, {"t.csv", "SELECT * FROM t"}, texts},
        program_case{"CarriageReturns", "a,b\r\n1,2\r\n\r\n3,4", {"t.csv", "SELECT b, a FROM T"}, "b,a\n2,1\n4,3\n"},
        program_case{"ByteOrderMark",
                     "\xEF\xBB\xBF"
                     "a\n1\n",
                     {"t.csv", "SELECT a FROM t"},
                     "a\n1\n"},
        program_case{"BlankLineOfOneColumnIsNull", "a\n1\n\n3\n", {"t.csv", "SELECT NVL(a, 2) x FROM t"}, "x\n1\n2\n3\n"},
        program_case{"HeaderOnly", "a,b\n", {"t.csv", "SELECT b FROM t"}, "b\n"},
        program_case{"HeaderOnlyJson", "a,b\n", {"--format", "json", "t.csv", "SELECT b FROM t"}, "[]\n"},
        program_case{"InferredTypes",
                     "a,b,c,d,e,f\n007,1,1,2024-01-01,,12345678901\n1,2.50,1e2,2024-01-01 10:00,,2\n",
                     {"--format", "json", "t.csv", "SELECT * FROM t"},
                     "[\n  {\"a\": \"007\", \"b\": 1, \"c\": 1, \"d\": \"2024-01-01 00:00:00\", \"e\": null, \"f\": 12345678901},\n"
                     "  {\"a\": \"1\", \"b\": 2.50, \"c\": 100, \"d\": \"2024-01-01 10:00:00\", \"e\": null, \"f\": 2}\n]\n"},
        program_case{"GivenTypes",
                     "a,b\n1,2\n",
                     {"--types", "a:CHAR(3), b : decimal", "--format", "json", "t.csv", "SELECT *, a = '1' FROM t"},
                     "[\n  {\"a\": \"1  \", \"b\": 2, \"a = '1'\": true}\n]\n"},
        program_case{"JsonEscapes",
                     texts,
                     {"--format", "json", "t.csv", "SELECT name n, note n FROM t WHERE note <> ''"},
                     "[\n  {\"n\": \"Cy  \", \"n_2\": \"a,\\\"b\\\"\"},\n  {\"n\": \"Dé 山\", \"n_2\": \"line\\nbreak\"}\n]\n"},
        program_case{"JsonSpecialDoubles",
                     "a\nnan\n-inf\n0.1\n",
                     {"--format", "json", "--types", "a:DOUBLE", "t.csv", "SELECT a FROM t"},
                     "[\n  {\"a\": \"NaN\"},\n  {\"a\": \"-Infinity\"},\n  {\"a\": 0.1}\n]\n"},
        program_case{"Table",
                     "x,n,y\n山é,5,\"a\tb\"\nlong,,z\n",
                     {"--format", "table", "t.csv", "SELECT x, n, y FROM t"},
                     " x    |    n | y\n------+------+------\n 山é  |    5 | a\\tb\n long | NULL | z\n"},
        program_case{"Gb18030", "a\n\xC9\xBD\n", {"--set", "charset=GB18030", "t.csv", "SELECT a FROM t WHERE a = '山'"}, "a\n\xC9\xBD\n"},
        program_case{"Gb18030AsJson",
                     "a\n\xC9\xBD\n",
                     {"--set", "charset=gb18030", "--format", "json", "t.csv", "SELECT a FROM t"},
                     "[\n  {\"a\": \"山\"}\n]\n"},
        program_case{"LimitStopsReading",
                     "a\n1\n2\nx\n",
                     {"--types", "a:INT", "--batch-rows", "1", "t.csv", "SELECT a FROM t LIMIT 2"},
                     "a\n1\n2\n"},
        program_case{"LimitCountsSelectedRows",
                     "a\n1\n5\n2\n6\n7\n",
                     {"--batch-rows", "2", "t.csv", "SELECT a FROM t WHERE a > 4 LIMIT 2"},
                     "a\n5\n6\n"},
        program_case{"ResultsOfSelectedRows",
                     "a,b\n1,\n2,5\n3,\n4,6\n",
                     {"t.csv", "SELECT a, NVL(b, 0) n, a > b c FROM t WHERE a <> 2"},
                     "a,n,c\n1,0,\n3,0,\n4,6,false\n"},
        program_case{"Peaks",
                     "",
                     {BIFUN_PEAKS, "SELECT name FROM peaks WHERE height_m > 8500 AND winter_ascent < '1987-01-01'"},
                     "name\nMount Everest\nKangchenjunga\n"}),
    named);

// ---- errors --------------------------------------------------------------------------------------------------------

const std::string overflowing = "a,b\n1,1\n2,-9223372036854775808\n3,3\n-9223372036854775808,4\n";

INSTANTIATE_TEST_SUITE_P(
    FunctionErrors, Program,
    testing::Values(failure("RowOfTheBatch", overflowing, {"t.csv", "SELECT ABS(a) FROM t"}, "ABS: -6102 numeric overflow in row 4"),
                    failure("RowOfTheFileBehindWhere", overflowing, {"t.csv", "SELECT ABS(a) FROM t WHERE b <> 1 AND b <> 3"},
                            "ABS: -6102 numeric overflow in row 4"),
                    failure("RowOfTheFileBehindTwoConditions", overflowing, {"t.csv", "SELECT ABS(a) FROM t WHERE a <> 1 AND b <> 3"},
                            "ABS: -6102 numeric overflow in row 4"),
                    failure("RowInTheCondition", overflowing, {"t.csv", "SELECT a FROM t WHERE ABS(b) > 0"},
                            "ABS: -6102 numeric overflow in row 2"),
                    failure("NestedCall", overflowing, {"t.csv", "SELECT ABS(NVL(b, 0)) FROM t"}, "ABS: -6102 numeric overflow in row 2"),
                    program_case{"EarlierBatchesStay",
                                 overflowing,
                                 {"--batch-rows", "2", "t.csv", "SELECT ABS(a) v FROM t"},
                                 "v\n1\n2\n",
                                 "bifun: ABS: -6102 numeric overflow in row 4\n"},
                    program_case{"JsonIsClosed",
                                 overflowing,
                                 {"--format", "json", "--batch-rows", "1", "t.csv", "SELECT ABS(b) v FROM t"},
                                 "[\n  {\"v\": 1}\n]\n",
                                 "bifun: ABS: -6102 numeric overflow in row 2\n"},
                    program_case{"RowBehindTheLimitIsNotSeen", overflowing, {"t.csv", "SELECT ABS(a) v FROM t LIMIT 3"}, "v\n1\n2\n3\n"}),
    named);

INSTANTIATE_TEST_SUITE_P(
    SqlErrors, Program,
    testing::Values(
        sql_failure("Syntax", "SELECT é, 'x' y z", "17: syntax error at or near \"z\""),
        sql_failure("UnknownColumn", "SELECT nmae FROM t", "8, near nmae: t.csv has no column nmae; did you mean Name?"),
        sql_failure("UnknownTable", "SELECT 1 FROM q", "15, near q: there is no table q; the tables are t"),
        sql_failure("WrongPrefix", "SELECT q.qty FROM t", "8, near q.qty: there is no table q in FROM"),
        sql_failure("UnknownFunction", "SELECT NVLL(1, 2)", "8, near NVLL: there is no function nvll; did you mean NVL?"),
        sql_failure("ArgumentCount", "SELECT GREATEST(1, 2, 3)", "8, near GREATEST: GREATEST takes 2 arguments, not 3: GREATEST(x, y)"),
        sql_failure("ArgumentType", "SELECT FLOOR('1')",
                    "8, near FLOOR: FLOOR does not take (VARCHAR); it takes (INT), (DOUBLE), (DECIMAL)"),
        sql_failure("RoundOfText", "SELECT ROUND(Name) FROM t",
                    "8, near ROUND: ROUND does not take (VARCHAR); it takes (DECIMAL), (DOUBLE)"),
        sql_failure("NoLiteralToCombine", "SELECT BITAND(qty, qty) FROM t",
                    "8, near BITAND: BITAND does not take (INT, INT); it takes (DECIMAL, constant DECIMAL), (constant DECIMAL, DECIMAL)"),
        sql_failure("FormatFromColumn", "SELECT TO_CHAR(qty, Name) FROM t",
                    "8, near TO_CHAR: TO_CHAR does not take (INT, VARCHAR); it takes (INT, constant VARCHAR), (BIGINT, constant VARCHAR), "
                    "(DOUBLE, constant VARCHAR), (DECIMAL, constant VARCHAR)"),
        sql_failure("DigitsOfDouble", "SELECT TRUNC(1.5e0, 1)",
                    "8, near TRUNC: TRUNC does not take (DOUBLE, INT); it takes (DECIMAL, INT), (VARCHAR, INT); use ROUND(x, n) for a "
                    "DOUBLE, or give its column the type DECIMAL with --types"),
        sql_failure("NameThatGoesOn", "SELECT CEILING(1)", "8, near CEILING: there is no function ceiling; did you mean CEIL?"),
        sql_failure("DoubleOutOfRange", "SELECT 1e999", "8, near 1e999: the number is beyond the range of DOUBLE"),
        sql_failure("NestedTooDeeply", nested_negations(500), "2008, near TRUE: the expression is nested more than 500 levels deep"),
        sql_failure("NoCondition", "SELECT 1 FROM t WHERE qty", "23, near qty: a condition is needed here, and this is of type INT"),
        sql_failure("NumberAgainstText", "SELECT qty = '1' FROM t",
                    "12, near =: INT and VARCHAR cannot be compared; write the number without quotes"),
        sql_failure("BadDate", "SELECT DATE '2023-02-29'", "8, near DATE: the text cannot be read as DATE"),
        sql_failure("TextAsDate", "SELECT day > 'x' FROM t", "14, near 'x': this cannot be read as DATE"),
        sql_failure("Arithmetic", "SELECT qty + 1 FROM t",
                    "12, near +: the operator + is not supported; operators are = <> < <= > >= AND OR NOT BETWEEN IN IS"),
        sql_failure("Coalesce", "SELECT COALESCE(1, 2)", "8, near COALESCE: COALESCE is not supported; use NVL(x, y)"),
        sql_failure("OrderBy", "SELECT 1 FROM t ORDER BY qty",
                    "26, near qty: ORDER BY is not supported; rows come in the order of the file"),
        sql_failure("GroupBy", "SELECT qty FROM t GROUP BY qty", "28, near qty: GROUP BY is not supported"),
        sql_failure("Join", "SELECT 1 FROM t, q", "15, near t: joins are not supported; FROM takes one table"),
        sql_failure("Subquery", "SELECT (SELECT 1)", "8, near (: subqueries are not supported"),
        sql_failure("Aggregate", "SELECT COUNT(*) FROM t", "8, near COUNT: aggregates such as COUNT(*) are not supported"),
        sql_failure("TwoQueries", "SELECT 1; SELECT 2", "11, near SELECT: one query at a time; there is a second one behind the semicolon"),
        sql_failure("NoSelect", "DROP TABLE t", "1, near DROP: only SELECT is supported"),
        failure("SecondLine", "", {"SELECT 1,\n  a"},
                "SQL, line 2, character 3, near a: there is no column a, because the query has no FROM; text stands in 'single quotes'"),
        failure("TooManyDigits", "", {joined({"SELECT 1", std::string(38, '0')})},
                "SQL, character 8, near 100000000000000000000000000000...: a DECIMAL has at most 38 digits; write the number with an "
                "exponent for a DOUBLE"),
        failure("CharacterNotInTheSet", "", {"--set", "charset=euc-kr", "SELECT 'é'"},
                "SQL, character 8, near 'é': the character set euc-kr does not have all characters of this text")),
    named);

INSTANTIATE_TEST_SUITE_P(
    FileErrors, Program,
    testing::Values(
        failure("NoSuchFile", "", {"t.csv", "SELECT 1 FROM t"},
                "t.csv: No such file or directory; check the file's name and that you may read it"),
        failure("Empty", "\n", {"t.csv", "SELECT 1 FROM t"}, "t.csv: the file is empty; its first line must name the columns"),
        failure("EmptyName", "a,\n1,2\n", {"t.csv", "SELECT 1 FROM t"},
                "t.csv, line 1: column 2 has no name; every column needs one in the header"),
        failure("DuplicateName", "a,b,a\n", {"t.csv", "SELECT 1 FROM t"},
                "t.csv, line 1: two columns are named a; every column needs a name of its own"),
        failure("RaggedRow", "a,b\n\"x\ny\",1\n3\n", {"t.csv", "SELECT 1 FROM t"},
                "t.csv, line 4: the header has 2 fields and this row 1; a field that holds a comma stands in double quotes"),
        failure("OpenQuote", "a,b\n1,2\n3,\"x\n\n", {"t.csv", "SELECT 1 FROM t"},
                "t.csv, line 3: the row that begins here has a quote that is never closed"),
        failure("StrayQuote", "a\nx\ny\"z\n", {"t.csv", "SELECT 1 FROM t"},
                "t.csv, line 3: a quote stands inside a field, or text behind a closing quote; write a field with quotes as \"...\" with "
                "each quote inside doubled"),
        failure("InvalidUtf8", "a\nx\n\xC0\xAF\n", {"t.csv", "SELECT a FROM t"},
                "t.csv, line 3, column a: \"\xEF\xBF\xBD\xEF\xBF\xBD\" is not valid utf-8; name the file's character set with --set "
                "charset=NAME"),
        failure("NotOfGivenType", "a\n1\n2147483648\n", {"--types", "a:INT", "t.csv", "SELECT a FROM t"},
                "t.csv, line 3, column a: \"2147483648\" is not of type INT; give the column another type with --types, such as a:VARCHAR"),
        failure("TimeAsDate", "a\n10:00\n", {"--types", "a:DATE", "t.csv", "SELECT a FROM t"},
                "t.csv, line 2, column a: \"10:00\" is not of type DATE; give the column another type with --types, such as a:VARCHAR"),
        failure("TooLongForChar", "a\néé  \nééé\n", {"--types", "a:CHAR(2)", "t.csv", "SELECT a FROM t"},
                "t.csv, line 3, column a: \"ééé\" does not fit CHAR(2); give the column a longer type with --types"),
        failure("GivenColumnUnknown", "name\nx\n", {"--types", "nam:INT", "t.csv", "SELECT 1 FROM t"},
                "--types: t.csv has no column nam; did you mean name?"),
        failure("GivenTypeUnknown", "", {"--types", "a:TEXT", "SELECT 1"},
                "--types: \"TEXT\" is not a type; there are INT, BIGINT, DECIMAL, DOUBLE, DATE, TIME and TIMESTAMP (or DATETIME), these "
                "two also WITH TIME ZONE, INTERVAL with its fields (such as INTERVAL DAY TO SECOND), CHAR(n) and VARCHAR"),
        failure("OneTableTwice", "a\n", {"t.csv", "./t.csv", "SELECT 1 FROM t"},
                "SQL, character 15, near t: t.csv and ./t.csv are both the table t; give one of them")),
    named);

INSTANTIATE_TEST_SUITE_P(
    OptionErrors, Program,
    testing::Values(
        failure("NoQuery", "", {}, "there is no query; give one as in: bifun \"SELECT NVL(NULL, 7)\", or see bifun --help"),
        failure("FileWithoutQuery", "a\n", {"t.csv"}, "there is no query behind t.csv; give one as in: bifun t.csv \"SELECT * FROM t\""),
        failure("UnknownOption", "", {"--fromat", "csv", "SELECT 1"},
                "The following argument was not expected: --fromat; see bifun --help"),
        failure("UnknownSetting", "", {"--set", "mode=1", "SELECT 1"},
                "--set: there is no setting mode; there are compatible_mode, charset, case_sensitive, time_zone and param.NUMBER"),
        failure("UnknownValue", "", {"--set", "charset=latin1", "SELECT 1"},
                "--set: charset cannot be \"latin1\"; it can be utf-8, gb18030, euc-kr"),
        failure("BatchRows", "", {"--batch-rows", "65537", "SELECT 1"},
                "--batch-rows: Value 65537 not in range 1 to 65536; see bifun --help"),
        failure("LibraryWithoutTheFunctions", "", {"--library", "libm.so.6", "SELECT 1"},
                "the function library libm.so.6 does not export bifun_dll_var_init; name another with --library"),
        failure("FunctionsNearName", "", {"functions", "lnvl"}, "there is no function lnvl; did you mean NVL or LNNVL?")),
    named);

// ---- what takes more than one run ----------------------------------------------------------------------------------

TEST(ProgramRuns, BatchSizeDoesNotShow) {
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
    const std::string all = directory.run({"--types", "b:VARCHAR", "t.csv", "SELECT * FROM t"}).out;
    EXPECT_EQ(all, file);
}

TEST(ProgramRuns, ReaderThatHasGoneIsNoError) {
    const scratch_directory directory;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    const run_result result = directory.run({BIFUN_PEAKS, "SELECT * FROM peaks"}, ends[1]);
    close(ends[1]);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
}

TEST(ProgramRuns, FullDiskIsAnError) {
    const scratch_directory directory;
    const int full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    const run_result result = directory.run({BIFUN_PEAKS, "SELECT * FROM peaks"}, full);
    close(full);
    EXPECT_EQ(result.err, "bifun: the output cannot be written: No space left on device\n");
    EXPECT_EQ(result.status, 1);
}

TEST(ProgramRuns, FunctionsAreDescribed) {
    const scratch_directory directory;
    const std::string list = directory.run({"functions"}).out;
    EXPECT_NE(list.find("\nLNNVL(condition) "), std::string::npos);
    const std::string description = directory.run({"functions", "Nvl"}).out;
    EXPECT_NE(description.find("bifun \"SELECT NVL(NULL, 7)\"\n"), std::string::npos);
    EXPECT_TRUE(directory.run({"functions", "--markdown"}).out == read_file(BIFUN_FUNCTION_REFERENCE))
        << "bifun functions --markdown > docs/functions.md";
    EXPECT_NE(description.find("    bnvl_dec_av        (DECIMAL column, DECIMAL constant) -> DECIMAL\n"), std::string::npos);
}

} // namespace
