// String calls in SQL's own syntax and in plain calls, blank-padded values and character sets, from query to printed result.
#include <string>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

const arguments fold_case = {"--set", "case_sensitive=0"};

TEST(StringCalls, Trim) {
    expect_shown({
        {"TRIM('  a b  ')", "\"a b\""},
        {"TRIM(BOTH FROM '  a  ')", "\"a\""},
        {"TRIM(LEADING FROM '  a  ')", "\"a  \""},
        {"TRIM(TRAILING FROM '  a  ')", "\"  a\""},
        {"TRIM(BOTH ' ' FROM '  a  ')", "\"a\""},
        {"TRIM('x' FROM 'xxaxbxx')", "\"axb\""},
        {"TRIM(LEADING 'x' FROM 'xxax')", "\"ax\""},
        {"TRIM(TRAILING 'é' FROM 'aéé')", "\"a\""},
        {"TRIM('x' FROM 'ax  ')", "\"ax  \""},
        {"TRIM(NULL FROM 'a')", "null"},
        {"TRIM(NVL(NULL, 'x') FROM 'xax')", "\"a\""},
        {"TRIM('   ')", "\"\""},
        {"LTRIM('xyxabc', 'xy')", "\"abc\""},
        {"LTRIM('  a ')", "\"a \""},
        {"RTRIM('abcxyx', 'xy')", "\"abc\""},
        {"RTRIM('  a ')", "\"  a\""},
        {"RTRIM(TRIM(LEADING 'x' FROM 'xa '))", "\"a\""},
        {"TRIM('xy' FROM 'xa')", "TRIM: -6109 the trim set is not exactly one character"},
        {"TRIM(1 FROM 'a')", "SQL, character 8, near TRIM: TRIM does not take (mode, VARCHAR, INT); it takes (mode, VARCHAR, VARCHAR)"},
        {"TRIM('a' FROM 'b', 'c')", "SQL, character 8, near TRIM: TRIM takes 1 or 3 arguments, not 4: TRIM([[BOTH | LEADING | TRAILING] "
                                    "[c] FROM] s)"},
        {"BTRIM('a')", "SQL, character 8, near BTRIM: there is no function btrim; did you mean TRIM or LTRIM or RTRIM?"},
    });
}

TEST(StringCalls, Substrings) {
    expect_shown({
        {"SUBSTR('aébcd', 2, 3)", "\"ébc\""},
        {"SUBSTR('abcdef', -4, 2)", "\"cd\""},
        {"SUBSTR('abc', NVL(NULL, 2))", "\"bc\""},
        {"SUBSTR('abc ')", "\"abc \""},
        {"SUBSTR('ab   ', 2, 3)", "\"b  \""},
        {"SUBSTR('ab', 9, -1)", "\"\""},
        {"SUBSTRING('abcdef' FROM 2 FOR 3)", "\"bcd\""},
        {"SUBSTRING('abcdef' FROM -2)", "\"ef\""},
        {"SUBSTRING('abcdef' FOR 2)", "\"ab\""},
        {"SUBSTRING('abcdef', 5)", "\"ef\""},
        {"SUBSTRB('éa', 2, 2)", "\" a\""},
        {"SUBSTRB('abc', -2)", "\"bc\""},
        {"LEFT('éa', 1)", "\"é\""},
        {"RIGHT('éa', 1)", "\"a\""},
        {"SUBSTRING_INDEX('www.bifun.org', '.', 2)", "\"www.bifun\""},
        {"SUBSTR('abc', 1, -1)", "SUBSTR: -6110 the length of the substring is negative in row 1"},
        {"SUBSTR('abc', 1, -1)", "null", {"--set", "compatible_mode=3"}},
        {"LEFT('abc', -1)", "LEFT: -6803 an argument is outside the function's domain"},
        {"SUBSTR('abc', 3000000000)", "SQL, character 8, near SUBSTR: SUBSTR does not take (VARCHAR, BIGINT); it takes (VARCHAR, INT)"},
        {"SUBSTRING('a' SIMILAR 'b' ESCAPE 'c')",
         "SQL, character 8, near SUBSTRING: SUBSTR does not take (VARCHAR, VARCHAR, VARCHAR); it takes (VARCHAR, INT, INT)"},
    });
}

TEST(StringCalls, Searches) {
    expect_shown({
        {"INSTR('éabab', 'ab')", "2"},
        {"INSTR('corporate floor', 'or', 3, 2)", "14"},
        {"INSTR('corporate floor', 'or', -3)", "5"},
        {"INSTR('abc', '')", "null"},
        {"INSTR('abc', 'x')", "0"},
        {"INSTR('abc', NVL(NULL, 'c'))", "3"},
        {"INSTRB('éab', 'a')", "3"},
        {"INSTRB('corporate floor', 'or', 3, 2)", "14"},
        {"LOCATE('or', 'corporate', 3)", "5"},
        {"LOCATE('c', 'abc')", "3"},
        {"POSITION('b' IN 'abc')", "2"},
        {"POSITION('  ' IN 'a  ')", "2"},
        {"INSTR('ABC', 'b')", "0"},
        {"INSTR('ABC', 'b')", "2", fold_case},
        {"INSTR('ABÉ', 'é', 1, 1)", "3", fold_case},
        {"POSITION('b' IN 'ABC')", "2", fold_case},
        {"LOCATE('b', 'ABC')", "0", fold_case},
        {"INSTR('abc', 'a', 1, 0)", "INSTR: -6803 an argument is outside the function's domain"},
        {"POSITION(NVL(NULL, 'a') IN 'a')", "SQL, character 8, near POSITION: POSITION does not take (VARCHAR, VARCHAR); it takes "
                                            "(constant VARCHAR, VARCHAR); use LOCATE(pattern, s)"},
    });
}

// A value's blanks are a count beside its text, wherever it comes from.
TEST(StringCalls, BlankPaddedColumns) {
    const scratch_directory directory;
    directory.write("t.csv", "c,v\nab,  x \n\"é \",\"\"\n,\n\"   \",   \n");
    const run_result padded = directory.run({"--types", "c:CHAR(4),v:VARCHAR", "t.csv",
                                             "SELECT c, TRIM(c) t, RTRIM(c) r, SUBSTR(c, 2) s, RIGHT(c, 3) e, INSTR(c, ' ') i, LTRIM(v) l, "
                                             "TRIM(TRAILING FROM v) n, c = 'ab' q FROM t"});
    EXPECT_EQ(padded.out, "c,t,r,s,e,i,l,n,q\n"
                          "ab  ,ab,ab,b  ,b  ,3,x ,  x,true\n"
                          "é   ,é,é,   ,   ,2,\"\",\"\",false\n"
                          ",,,,,,,,\n"
                          "    ,\"\",\"\",   ,   ,1,\"\",\"\",false\n");
    EXPECT_EQ(padded.err, "");
    const run_result json = directory.run({"--format", "json", "--types", "c:CHAR(4)", "t.csv", "SELECT c FROM t WHERE v = 'x' OR c = ''"});
    EXPECT_EQ(json.out, "[\n  {\"c\": \"    \"}\n]\n");
    // Blanks behind the n-th character do not count against CHAR(n).
    directory.write("long.csv", "c\n\"ab   \"\nabc\n");
    EXPECT_EQ(directory.run({"--types", "c:CHAR(2)", "long.csv", "SELECT c FROM long"}).err,
              "bifun: long.csv, line 3, column c: \"abc\" does not fit CHAR(2); give the column a longer type with --types\n");
}

TEST(StringCalls, TrimSetsAndPatternsFromColumns) {
    const scratch_directory directory;
    directory.write("t.csv", "s,x,d\nxaxx,x,a-b-c\n  b  ,\" \",-\nyy,y,\n,y,b\n");
    const run_result result =
        directory.run({"t.csv", "SELECT TRIM(x FROM s) t, TRIM(LEADING x FROM 'xyx') l, RTRIM(s, x) r, INSTR(s, x) i, "
                                "LOCATE(x, s, 2) p, SUBSTRING_INDEX(d, '-', -1) n FROM t"});
    EXPECT_EQ(result.out, "t,l,r,i,p,n\na,yx,xa,1,3,c\nb,xyx,  b,1,2,\"\"\n\"\",xyx,\"\",1,2,\n,xyx,,,,b\n");
    EXPECT_EQ(result.err, "");
    // LTRIM writes no value for the second row: that must not show what the first one left there.
    directory.write("rows.csv", "s\nxabc\n yb\n");
    EXPECT_EQ(directory.run({"--batch-rows", "1", "rows.csv", "SELECT LTRIM(s, 'x') v FROM rows"}).out, "v\nabc\n\"\"\n");
    directory.write("set.csv", "x\na\nab\n");
    EXPECT_EQ(directory.run({"set.csv", "SELECT TRIM(x FROM 'a') FROM set"}).err,
              "bifun: TRIM: -6109 the trim set is not exactly one character in row 2\n");
}

// Files and literals are in the database character set, and functions count its characters; JSON is in UTF-8.
TEST(StringCalls, CharacterSets) {
    const scratch_directory directory;
    directory.write("g.csv", "a\n\xC9\xBD\xC9\xBD\x62\xC9\xBD\n\x81\x30\x81\x30\x62\n");
    directory.write("k.csv", "a\n\xB0\xA1\xB3\xAA\xB0\xA1\n");
    const std::string gb_query = "SELECT TRIM('山' FROM a) t, INSTR(a, 'b') i, INSTRB(a, 'b') n, LEFT(a, 1) l FROM g";
    EXPECT_EQ(directory.run({"--set", "charset=gb18030", "g.csv", gb_query}).out,
              "t,i,n,l\nb,3,5,\xC9\xBD\n\x81\x30\x81\x30\x62,2,5,\x81\x30\x81\x30\n");
    EXPECT_EQ(directory.run({"--set", "charset=gb18030", "--format", "json", "g.csv", "SELECT LEFT(a, 1) l FROM g LIMIT 1"}).out,
              "[\n  {\"l\": \"山\"}\n]\n");
    EXPECT_EQ(directory.run({"--set", "charset=euc-kr", "k.csv", "SELECT POSITION('나' IN a) p, RIGHT(a, 2) r FROM k"}).out,
              "p,r\n2,\xB3\xAA\xB0\xA1\n");
    EXPECT_EQ(directory.run({"--set", "charset=gb18030", "--types", "a:CHAR(3)", "g.csv", "SELECT a FROM g"}).err,
              "bifun: g.csv, line 2, column a: \"山山b山\" does not fit CHAR(3); give the column a longer type with --types\n");
}

TEST(StringCalls, Headings) {
    const scratch_directory directory;
    EXPECT_EQ(directory.run({"SELECT TRIM(LEADING FROM 'a'), POSITION('a' IN 'b'), SUBSTRING('ab' FROM 2)"}).out,
              "TRIM(LEADING ' ' FROM 'a'),POSITION('a' IN 'b'),\"SUBSTR('ab', 2)\"\na,0,b\n");
}

} // namespace
