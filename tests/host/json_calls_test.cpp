// SPDX-License-Identifier: Apache-2.0
// Numbers of text and JSON, from query to printed result.
#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

// Expressions and a part of the message that they end in.
void expect_refused(std::initializer_list<shown_case> cases) {
    for (const shown_case& the : cases) {
        const std::string message = shown(the.expressions, the.options);
        EXPECT_NE(message.find(the.result), message.npos) << the.expressions << ": " << message;
    }
}

TEST(NumberCalls, ReadText) {
    expect_shown({
        {"TO_NUMBER('1,234.50', '9,999.99') + 1 ; TO_NUMBER(' -5e-1 ') ; TO_NUMBER('n/a') ; TO_NUMBER(NULL)", "1235.50, -0.5, null, null"},
        {"ISNUMERIC('1e5') ; ISNUMERIC('1,5') ; ISNUMERIC('1.234,5', '9G999D9', 'NLS_NUMERIC_CHARACTERS='',.''') ; ISNUMERIC(NULL)",
         "true, false, true, null"},
        {"TO_DOUBLE('1e-320') ; CAST('1e-320' AS DOUBLE) ; TO_DOUBLE('-inf') ; TO_DOUBLE('n/a') ; TO_DOUBLE('<1,234.5>', '9,999.9PR')",
         R"(1E-320, 1E-320, "-Infinity", null, -1234.5)"},
        {"TO_NUMBER('')", "null", {"--set", "compatible_mode=2"}},
    });
    expect_refused({
        {"TO_NUMBER('n/a')", "TO_NUMBER: -6128", {"--set", "compatible_mode=2"}},
        {"TO_NUMBER('12x', '999')", "\"12x\" departs from it behind \"12\""},
        {"TO_NUMBER('1234', '999')", "\"1234\" has more digits than it behind \"123\""},
        {"TO_NUMBER('-', '999')", "\"-\" lacks a digit at its end"},
        {"TO_NUMBER('12', '99Q')", "TO_NUMBER: -6130 invalid number format: 9 is a digit"},
    });
}

TEST(JsonCalls, TakeTheClausesOfSql) {
    expect_shown({
        {R"(JSON_VALUE('{"a": {"b": 1.50}}', '$.a.b') ; json_value('[1, 2]', '$[last]' returning int) + 1)", R"("1.50", 3)"},
        {R"(JSON_VALUE('{}', '$.a' RETURNING DECIMAL DEFAULT 1.5 ON EMPTY) ; JSON_VALUE('{"a": true}', '$.a' RETURNING BOOLEAN))",
         "1.5, true"},
        {R"(JSON_VALUE('{}', '$.a' DEFAULT 'é */ /* ''x'' -- (' ON EMPTY /* why */ NULL ON ERROR) || '!')", R"("é */ /* 'x' -- (!")"},
        {R"(JSON_VALUE('"2024-02-29"', '$' RETURNING DATE) ; JSON_VALUE('"2024-02-29 10:00"', '$' RETURNING TIMESTAMP))",
         R"("2024-02-29", "2024-02-29 10:00:00")"},
        {R"(JSON_VALUE('{"a": 1}', '$.a', 'RETURNING BIGINT') ; JSON_QUERY('{"a": [1, 2]}', '$.a[*]' WITH ARRAY WRAPPER))",
         R"(1, "[1,2]")"},
        {R"(JSON_QUERY('{"a": "x"}', '$.a') ; JSON_QUERY('{}', '$.a' EMPTY OBJECT ON EMPTY) ; JSON_QUERY('{', '$.a') ; JSON_VALUE(NULL, '$'))",
         R"("\"x\"", "{}", null, null)"},
        {R"(CASE WHEN JSON_VALUE(JSON_QUERY('{"a": [3]}', '$.a' WITHOUT WRAPPER), '$[0]' RETURNING INT NULL ON EMPTY) = 3 THEN 'yes' END)",
         R"("yes")"},
    });
}

TEST(JsonCalls, SayWhatIsWrong) {
    expect_refused({
        {"JSON_VALUE('{}', '$.a' ERROR ON EMPTY)", "JSON_VALUE: -7104 the path gives nothing in row 1"},
        {"JSON_VALUE('{', '$.a' ERROR ON ERROR)", "-7101 the text is no JSON in row 1"},
        {"JSON_QUERY('{}', '$.a b')", "\"$.a b\" is none from \"b\" on"},
        {"JSON_QUERY('{}', '$.')", "\"$.\" ends too early"},
        {"JSON_VALUE('{}', '$.a' RETURNING BLOB)",
         "near RETURNING: RETURNING takes VARCHAR, INT, BIGINT, DECIMAL, DOUBLE, BOOL, DATE, TIMESTAMP"},
        {"JSON_VALUE('{}', '$.a' RETURNING INT DEFAULT 'x' ON EMPTY)", "JSON_VALUE: -6147"},
        {"JSON_VALUE('{}', '$.a' NULL ON)", "JSON_VALUE: -6803"},
        {"JSON_EXTRACT('{}', '$.a')", "use JSON_VALUE(doc, path)"},
        {"JSON_VALUE('{}', '$.a' NULL ON EMPTY) + + nothing", "nothing"},
    });
}

} // namespace
