// SPDX-License-Identifier: Apache-2.0
// Values of files and queries that their types do not keep as they are written: never changed, and never without a word.
#include <string>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

const std::string nines_38(38, '9');
const std::string zeros_126(126, '0');

// A column comes out as it went in, as JSON shows it: in quotes where it is text.
TEST(ExactValues, TypesThatAreFound) {
    struct found_type {
        std::string first, second;
        bool is_text;
    };
    const found_type columns[] = {
        {"1234567890123456789012345678901234567899", "1", true},
        {nines_38, "0.1", false},
        {joined({"0.", zeros_126, "1"}), "1", false},
        {joined({"0.", zeros_126, "01"}), "1", true},
        {joined({"-0.", nines_38}), joined({"9", nines_38}), true},
        {"9223372036854775808", "-9223372036854775808", false},
        {"1E+400", "1", true},
        {"1E-400", "1", false}, // a double, which is the nearest
        {"1.5E+20", "12345678901234567.25", true},
        {"1.5E+20", "9007199254740993", true}, // doubles have no such neighbour of 2^53
        {"1.5E+20", "90071992547409.25", false},
        {"2024-02-29 10:00:00.1234567", "2024-02-29 10:00:00", true},
        {"10:00:00,1234567", "10:00:00", true},
        {"10:00:00.123456", "10:00:00.1", false},
        {"1E+-5", "1", true},
    };
    for (const auto& [first, second, is_text] : columns) {
        SCOPED_TRACE(joined({first, " ", second}));
        const scratch_directory directory;
        directory.write("t.csv", joined({"a,b\n\"", first, "\",\n\"", second, "\",\n"}));
        const std::string out = directory.run({"--format", "json", "t.csv", "SELECT a, a = '' c FROM t"}).out;
        EXPECT_EQ(out.starts_with(joined({"[\n  {\"a\": \"", first, "\", \"c\": false"})), is_text) << out;
        const run_result csv = directory.run({"t.csv", "SELECT a, b FROM t"});
        const bool has_comma = first.find(',') != std::string::npos;
        const std::string shown = first == "1E-400" ? "0" : first;
        EXPECT_EQ(csv.out, joined({"a,b\n", has_comma ? "\"" : "", shown, has_comma ? "\"" : "", ",\n", second, ",\n"}));
    }
    expect_answer("a\n10:00:00.1234560\n", "SELECT a FROM t", "a\n10:00:00.123456\n"); // nothing is lost
}

TEST(ExactValues, TypesThatAreGiven) {
    const auto fails = [](const std::string& type, const std::string& value, const std::string& reason) {
        expect_failure(joined({"a\n\n\"", value, "\"\n"}), "SELECT a FROM t",
                       joined({"t.csv, line 3, column a: \"", value.substr(0, 40), value.size() > 40 ? "..." : "", "\" ", reason,
                               "; give the column another type with --types, such as a:VARCHAR ..."}),
                       {"--types", joined({"a:", type})});
    };
    fails("DECIMAL", joined({"1", nines_38}), "has more digits than DECIMAL keeps");
    fails("DECIMAL", joined({".", repeated("0", 127), "1"}), "has more digits than DECIMAL keeps");
    fails("DECIMAL", "1e-200", "has more digits than DECIMAL keeps");
    fails("DECIMAL", "x", "is not of type DECIMAL");
    fails("TIMESTAMP", "2024-02-29 10:00:00.0000001", "has more digits than TIMESTAMP keeps");
    fails("INTERVAL SECOND", "1.1234567", "has more digits than INTERVAL SECOND keeps");
    fails("DOUBLE", "1e400", "is not of type DOUBLE");
    fails("BIGINT", "9223372036854775808", "is not of type BIGINT");
    expect_answer("a\n1e-400\n4e-324\n1e-320\n-1e-400\n123456789012345678901234567890123456789012345\n", "SELECT a FROM t",
                  "a\n0\n5E-324\n1E-320\n-0\n1.2345678901234567E+44\n", {"--types", "a:DOUBLE"});
    expect_answer("a\n1e3\n12e-2\n", "SELECT a FROM t", "a\n1000\n0.12\n", {"--types", "a:DECIMAL"});
}

TEST(ExactValues, Literals) {
    expect_failure("", joined({"SELECT 0.", zeros_126, "01"}), "SQL, character 8, near 0.0000 ...");
    expect_failure("", joined({"SELECT 1", nines_38}), "SQL, character 8, near 1999 ...");
    expect_shown({
        {joined({"0.", zeros_126, "1"}), joined({"0.", zeros_126, "1"})},
        {"1e-400 ; -1e-400 ; 3e-324 ; 1e-310", "0, -0, 5E-324, 1E-310"},
        {"1e400", "8, near 1e400: the number is beyond the range of DOUBLE"},
        {"TIMESTAMP '2024-02-29 10:00:00.1234567'", "8, near TIMESTAMP: the text cannot be read as TIMESTAMP"},
        {"INTERVAL '1.1234567' SECOND ; 1", "8, near INTERVAL: the text cannot be read as INTERVAL SECOND"},
    });
}

// Blanks at the end are a count, whoever made the text: functions take counted and stored ones for different things.
TEST(ExactValues, TextsThatPrintAlike) {
    expect_shown({
        {"RTRIM(SUBSTR('ab   c', 1, 4)) ; RTRIM('ab  ') ; TRIM(RPAD('ab', 5)) ; RTRIM(REPLACE('abx', 'x', '  ')) ; RTRIM('a' || '  ')",
         R"("ab", "ab", "ab", "ab", "a")"},
        {"SUBSTR('ab   c', 1, 4) ; SUBSTR('ab   c', 1, 4) || 'x' ; LENGTH(SUBSTR('ab   c', 1, 4)) ; LENGTH('ab  ')",
         R"("ab  ", "ab  x", 4, 4)"},
        {"LENGTH(SUBSTR('a   c', 2, 3)) ; LENGTH(REPLACE('x', 'x', '   ')) ; LENGTH('   ')", "3, 3, 3"},
    });
    expect_answer("s,n\nab   c,1\n,2\nb c,3\n", "SELECT RTRIM(SUBSTR(s, n, 3)) || '.' v FROM t", "v\nab.\n.\nc.\n");
}

TEST(ExactValues, NumbersUnderFormats) {
    const std::string refusal = "TO_CHAR: a format shows no digits behind the 127th of a fraction, and the number in row ";
    expect_shown({
        {"TO_CHAR(1.5, '9.9', NULL) ; TO_CHAR(1.5e0, NULL, NULL) ; TO_CHAR(ABS(-5), NULL) ; TO_CHAR(DATE '2024-02-29', 'YYYY', NULL)",
         "null, null, null, null"},
        {"TO_CHAR(1e-127, '9.9EEEE') ; TO_CHAR(0e0, 'TM') ; TO_CHAR(1e-200, '0.99') ; TO_CHAR(1e-200) ; 1e-200",
         R"(" 1.0E-127", "0", " 0.00", "1E-200", 1E-200)"},
        {"TO_CHAR(1.25e-126, '9.9EEEE')", "TO_CHAR: a format ..."},
    });
    expect_failure("x\n1e-5\n\n-1e-130\n", "SELECT TO_CHAR(x, 'tme') FROM t",
                   joined({refusal, "3 (t.csv, line 4) has some; without a format it is shown in full"}));
}

} // namespace
