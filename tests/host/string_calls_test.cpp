// SPDX-License-Identifier: Apache-2.0
// String calls in SQL's own syntax and in plain calls, blank-padded values and character sets, from query to printed result.
#include <string>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

const arguments fold_case = {"--set", "case_sensitive=0"};
const arguments gb18030 = {"--set", "charset=gb18030"};

TEST(StringCalls, Trim) {
    expect_shown({
        {"TRIM('  a b  ') ; TRIM(BOTH FROM '  a  ') ; TRIM(LEADING FROM '  a  ') ; TRIM(TRAILING FROM '  a  ')",
         R"("a b", "a", "a  ", "  a")"},
        {"TRIM(BOTH ' ' FROM '  a  ') ; TRIM('x' FROM 'xaxbx') ; TRIM(LEADING 'x' FROM 'xax') ; TRIM(TRAILING 'é' FROM 'aéé')",
         R"("a", "axb", "ax", "a")"},
        {"TRIM('x' FROM 'ax  ') ; TRIM(NULL FROM 'a') ; TRIM(NVL(NULL, 'x') FROM 'xax') ; TRIM('   ')", R"("ax  ", null, "a", "")"},
        {"LTRIM('xyxabc', 'xy') ; LTRIM('  a ') ; RTRIM('abcxyx', 'xy') ; RTRIM('  a ')", R"("abc", "a ", "abc", "  a")"},
        {"TRIM('a' FROM 'b', 'c')", "8, near TRIM: TRIM takes 1 or 3 arguments, not 4: TRIM([[BOTH | LEADING | TRAILING] [c] FROM] s)"},
        {"BTRIM('a')", "8, near BTRIM: there is no function btrim; did you mean TRIM or LTRIM or RTRIM?"},
    });
}

TEST(StringCalls, Substrings) {
    expect_shown({
        {"SUBSTR('aébcd', 2, 3) ; SUBSTR('abc', NVL(NULL, 2)) ; SUBSTR('abc ') ; SUBSTR('ab   ', 2, 3) ; SUBSTR('ab', 9, -1)",
         R"("ébc", "bc", "abc ", "b  ", "")"},
        {"SUBSTRING('abcdef' FROM 2 FOR 3) ; SUBSTRING('abcdef' FROM -2) ; SUBSTRING('abcdef' FOR 2) ; SUBSTRING('abcdef', 5)",
         R"("bcd", "ef", "ab", "ef")"},
        {"SUBSTRB('éa', 2, 2) ; SUBSTRB('abc', -2) ; LEFT('éa', 1) ; RIGHT('éa', 1) ; SUBSTRING_INDEX('www.bifun.org', '.', 2)",
         R"(" a", "bc", "é", "a", "www.bifun")"},
        {"SUBSTR('abc', 1, -1)", "null", {"--set", "compatible_mode=3"}},
        {"SUBSTR('abc', 3000000000)",
         "8, near SUBSTR: SUBSTR does not take (VARCHAR, BIGINT); it takes (VARCHAR, INT); CAST(x AS INT) makes one of it"},
    });
}

TEST(StringCalls, Searches) {
    expect_shown({
        {"INSTR('éabab', 'ab') ; INSTR('corporate floor', 'or', 3, 2) ; INSTR('corporate floor', 'or', -3)", "2, 14, 5"},
        {"INSTR('abc', '') ; INSTR('abc', 'x') ; INSTR('abc', NVL(NULL, 'c')) ; INSTRB('éab', 'a')", "null, 0, 3, 3"},
        {"POSITION('b' IN 'abc') ; POSITION('  ' IN 'a  ') ; INSTR('ABC', 'b')", "2, 2, 0"},
        {"INSTR('ABC', 'b') ; INSTR('ABÉ', 'é', 1, 1) ; POSITION('b' IN 'ABC') ; LOCATE('b', 'ABC')", "2, 3, 2, 0", fold_case},
        {"POSITION(NVL(NULL, 'a') IN 'a')",
         "8, near POSITION: POSITION does not take (VARCHAR, VARCHAR); it takes (constant VARCHAR, VARCHAR); use LOCATE(pattern, s)"},
    });
}

TEST(StringCalls, BuiltTexts) {
    expect_shown({
        {"'a' || NULL || 'b' || SPACE(2) || 'c' ; CONCAT('a', 'b', 'c', 'd') ; NULL || NULL ; CONCAT(NULL, NULL, NULL)",
         R"("ab  c", "abcd", null, null)"},
        {"OVERLAY('abcdef' PLACING 'xy' FROM 2) ; OVERLAY('abcdef' PLACING 'xy' FROM 2 FOR 0) ; INSSTR('abcdef', 2, 4, 'xy')",
         R"("axydef", "axybcdef", "axyf")"},
        {"REPLACE('a b ', ' ') ; REPLACE('aaa', 'aa', 'é') ; TRANSLATE('abcé', 'éab', 'xy') ; REPEAT('ab', 2)",
         R"("ab", "éa", "ycx", "abab")"},
        {"LPAD('é', 3) ; LPAD('é', 3, 'xy') ; RPAD('é', 3, 'xy') ; RPAD('ab', 1)", R"("  é", "xyé", "éxy", "a")"},
        {"LENGTH('é ') ; CHAR_LENGTH('é ') ; CHARACTER_LENGTH('é ') ; LENGTHB('é ') ; OCTET_LENGTH('é ') ; LENGTH('')",
         "2, 2, 2, 3, 3, null"},
        {"CONCAT('a')", "8, near CONCAT: CONCAT takes 2 or more arguments, not 1: CONCAT(a, b, ...)"},
        {"OVERLAY('a' PLACING 'b' FROM 0)", "OVERLAY: -6803 an argument is outside the function's domain; the position is 1 or more"},
    });
}

// What stands where texts alone are taken, and what reads something from texts.
TEST(StringCalls, OtherTypesAsTexts) {
    expect_shown({
        {"'a' || 5 ; CONCAT('a', 5, DATE '2024-01-02') ; 1 || 2 ; 1.50 || NULL ; 'x' || (1 = 1) ; TIME '10:00' || INTERVAL '1' DAY",
         R"("a5", "a52024-01-02", "12", "1.50", "xtrue", "10:00:001 00:00:00")"},
        {"UPPER(1e20) ; LENGTH(12) ; TRIM(LEADING 0 FROM 10.0) ; REPLACE(2024, 2, 'x') ; SUBSTR(DATE '2024-01-02', 1, 4) ; LPAD(5, 3, 0)",
         R"("1E+20", 2, "10.0", "x0x4", "2024", "005")"},
        {"5 LIKE '5%' ; DATE '2024-01-02' NOT LIKE '2024-%' ; 15 ILIKE 1 || '_'", "true, false, true"},
        {"UNHEX('41') LIKE 'A'", "8, near UNHEX: LIKE takes texts, and this is of type VARBINARY; BINARY_TO_CHAR(b) makes a text of bytes"},
        {"RAWTOHEX(255)", "8, near RAWTOHEX: RAWTOHEX does not take (INT); it takes ..."},
        {"TO_NUMBER(DATE '2024-01-02')", "8, near TO_NUMBER: TO_NUMBER does not take (DATE); it takes ..."},
        {"WEEKDAY(DATE '2024-01-02')", "8, near WEEKDAY: WEEKDAY does not take (DATE); it takes (VARCHAR); ..."},
        {"TO_DATE(DATE '2024-01-02', 'YYYY')", "8, near TO_DATE: TO_DATE does not take (DATE, VARCHAR); it takes ..."},
    });
    expect_answer("s,n,d\na,1,2024-01-02\n,,\n",
                  "SELECT s || n || d AS c, n || '' AS e, LEFT(d, 4) AS y FROM t WHERE d IS NULL OR n LIKE '1'",
                  "c,e,y\na12024-01-02,1,2024\n,\"\",\n");
}

// Literals where some entry point takes a constant and where none does; a column where none takes one.
TEST(StringCalls, BuiltTextsOfColumnsAndLiterals) {
    const std::string file = "s,t,n\nabab,b,1\n,x,2\ncb,,3\n";
    expect_answer(
        file,
        "SELECT REPLACE(s, 'b', t) r, REPLACE('abc', t, 'x') e, OVERLAY('abc' PLACING t FROM 2 FOR 1) o, INSSTR('abc', 1, 1, 'x') i, "
        "LPAD('a', 2, t) l, 'x' || s || t c, TRANSLATE('abc', 'b', 'x') a, REPEAT('x', 2) p, SPACE(1) b, LENGTH(s || SPACE(n)) n FROM t",
        "r,e,o,i,l,c,a,p,b,n\nabab,axc,abc,xbc,ba,xababb,axc,xx, ,5\n,abc,axc,xbc,xa,xx,axc,xx, ,2\n"
        ",,,xbc,,xcb,axc,xx, ,5\n");
    expect_failure(file, "SELECT LPAD(s, n) FROM t",
                   "SQL, character 8, near LPAD: LPAD does not take (VARCHAR, INT); it takes (VARCHAR, constant INT)");
    expect_failure(file, "SELECT REPEAT(s, 20000) FROM t",
                   "REPEAT: -6803 an argument is outside the function's domain in row 1 (t.csv, line 2), given \"abab\"");
}

// A value's blanks are a count beside its text, wherever it comes from.
TEST(StringCalls, BlankPaddedColumns) {
    const std::string file = "c,v\nab,  x \n\"é \",\"\"\n,\n\"   \",   \n";
    expect_answer(file,
                  "SELECT c, TRIM(c) t, RTRIM(c) r, SUBSTR(c, 2) s, RIGHT(c, 3) e, INSTR(c, ' ') i, LTRIM(v) l, "
                  "TRIM(TRAILING FROM v) n, c = 'ab' q FROM t",
                  "c,t,r,s,e,i,l,n,q\nab  ,ab,ab,b  ,b  ,3,x ,  x,true\né   ,é,é,   ,   ,2,\"\",\"\",false\n"
                  ",,,,,,,,\n    ,\"\",\"\",   ,   ,1,\"\",\"\",false\n",
                  {"--types", "c:CHAR(4),v:VARCHAR"});
    expect_answer(file, "SELECT c FROM t WHERE v = 'x' OR c = ''", "[\n  {\"c\": \"    \"}\n]\n",
                  {"--format", "json", "--types", "c:CHAR(4)"});
    // Blanks behind the n-th character do not count against CHAR(n).
    expect_failure("c\n\"ab   \"\nabc\n", "SELECT c FROM t", "t.csv, line 3, column c: \"abc\" does not fit CHAR(2); ...",
                   {"--types", "c:CHAR(2)"});
}

TEST(StringCalls, TrimSetsAndPatternsFromColumns) {
    expect_answer("s,x,d\nxaxx,x,a-b-c\n  b  ,\" \",-\nyy,y,\n,y,b\n",
                  "SELECT TRIM(x FROM s) t, TRIM(LEADING x FROM 'xyx') l, RTRIM(s, x) r, INSTR(s, x) i, LOCATE(x, s, 2) p, "
                  "SUBSTRING_INDEX(d, '-', -1) n FROM t",
                  "t,l,r,i,p,n\na,yx,xa,1,3,c\nb,xyx,  b,1,2,\"\"\n\"\",xyx,\"\",1,2,\n,xyx,,,,b\n");
    // LTRIM writes no value for the second row: that must not show what the first one left there.
    expect_answer("s\nxabc\n yb\n", "SELECT LTRIM(s, 'x') v FROM t", "v\nabc\n\"\"\n", {"--batch-rows", "1"});
    expect_failure("x\na\nab\n", "SELECT TRIM(x FROM 'a') FROM t",
                   "TRIM: -6109 the trim set is not exactly one character in row 2 (t.csv, line 3), given \"ab\"");
}

// Files and literals are in the database character set, and functions count its characters; JSON is in UTF-8.
TEST(StringCalls, CharacterSets) {
    const std::string file = "a\n\xC9\xBD\xC9\xBD\x62\xC9\xBD\n\x81\x30\x81\x30\x62\n";
    expect_answer(file, "SELECT TRIM('山' FROM a) t, INSTR(a, 'b') i, INSTRB(a, 'b') n, LEFT(a, 1) l FROM t WHERE a <> '山'",
                  "t,i,n,l\nb,3,5,\xC9\xBD\n\x81\x30\x81\x30\x62,2,5,\x81\x30\x81\x30\n", gb18030);
    expect_answer(file, "SELECT LEFT(a, 1) l FROM t LIMIT 1", "[\n  {\"l\": \"山\"}\n]\n",
                  {"--set", "charset=GB18030", "--format", "json"});
    expect_answer("a\n\xB0\xA1\xB3\xAA\xB0\xA1\n", "SELECT POSITION('나' IN a) p, RIGHT(a, 2) r FROM t", "p,r\n2,\xB3\xAA\xB0\xA1\n",
                  {"--set", "charset=euc-kr"});
    expect_failure(file, "SELECT a FROM t", "t.csv, line 2, column a: \"山山b山\" does not fit CHAR(3); ...",
                   {"--set", "charset=gb18030", "--types", "a:CHAR(3)"});
}

// Literals are in the database character set; what bytes a binary value has is shown whatever they are.
TEST(StringCalls, LettersAndBytes) {
    const std::string file = "a\n\xA9\xAC\x61\n";
    expect_answer(file, "SELECT UPPER(a) u, LCASE('Ω') l, ASCII(a) n, CHR(45217) c, ASCIISTR(a) s FROM t",
                  "u,l,n,c,s\nSSA,\xA5\xF8,43436,\xB0\xA1,\\00DFa\n", {"--set", "charset=euc-kr"});
    const char* const query = "SELECT UNHEX('ff00') b, UNHEX('') e, HEXTORAW(NULL) n, BINARY_TO_CHAR(HEXTORAW('C3A9')) t";
    expect_answer("", query, "b,e,n,t\nFF00,\"\",,é\n");
    expect_answer("", query, "[\n  {\"b\": \"FF00\", \"e\": \"\", \"n\": null, \"t\": \"é\"}\n]\n", {"--format", "json"});
    expect_answer("a\nÄz\nz\nAb\n", "SELECT a FROM t WHERE NLSSORT(a, 'NLS_SORT=GERMAN') < NLSSORT('b', 'NLS_SORT=GERMAN')", "a\nÄz\nAb\n");
    expect_failure("", "SELECT UNHEX('x')", "HEXTORAW: -6147 the value cannot be converted in row 1");
}

} // namespace
