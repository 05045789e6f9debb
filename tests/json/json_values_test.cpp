// SPDX-License-Identifier: Apache-2.0
// JSON_VALUE and JSON_QUERY, through the library.
#include <gtest/gtest.h>

#include "tests/contract/text_case.h"

namespace {

using contract::expect_results;

TEST(JsonValue, IsAScalarAsText) {
    expect_results({
        R"(bjson_value_av_str | {"a":1.50} {"a":"x\ny\u00e9"} {"a":true} {"a":false} {"a":null} {"b":1} {"a":[1]} {"a": NULL '' {"a":""} | $.a | [0] 1.50 x)"
        "\n"
        R"(yé true false NULL NULL NULL NULL NULL NULL '')",
        R"(bjson_value_av_str | {"a":12345678901234567890.1234567890} | $.a | [0] 12345678901234567890.1234567890)",
        R"(bjson_value_av_str | 1 | NULL=$ | [0] NULL)",
        R"(bjson_value_avv_str | 1 | $ | NULL=x | [0] NULL)",
        R"(bjson_value_avv_str | 1.0 | $ | RETURNING~INT | [0] 1.0)",
        R"(bjson_value_avv_str | {} ~[1] {"a":7} {"a":[]} | $.a | DEFAULT~'it''s'~ON~EMPTY~DEFAULT~-1~ON~ERROR | [0] it's it's 7 -1)",
        R"(bjson_value_avv_str | 1 {} | $.a | ERROR~ON~EMPTY | [0] NULL ? status -7104)",
    });
}

TEST(JsonValue, IsOfTheTypeReturned) {
    expect_results({
        R"(bjson_value_int_avv_str | 12 "12" -2147483648 1.0 2e3 1.5 "x" true 2147483648 null | $ | RETURNING~INT | [0] 12 12 -2147483648 1 2000 NULL NULL NULL NULL NULL)",
        R"(bjson_value_int64_avv_str | 9223372036854775807 9223372036854775808 -1 {} | $ | RETURNING~BIGINT~DEFAULT~0~ON~EMPTY~DEFAULT~7~ON~ERROR | [0] 9223372036854775807 7 -1 7)",
        R"(bjson_value_dec_avv_str | 12.50 "1e2" 1e999 ~[] | $ | RETURNING~DECIMAL | [0] 12.50 100 NULL NULL)",
        R"(bjson_value_dbl_avv_str | 0.5 "1e3" 1e999 1e-999 "+1" | $ | RETURNING~DOUBLE~PRECISION | [0] 0.5 1000 NULL 0 1)",
        R"(bjson_value_bool_avv_str | true false "true" "false" 1 "yes" null | $ | RETURNING~BOOL | [0] 1 0 1 0 NULL NULL NULL)",
        R"(bjson_value_date_avv_str | "2024-02-29" "2024-02-29~13:45:00" "2023-02-29" 1 | $ | RETURNING~DATE | [0] 2024-02-29 2024-02-29 NULL NULL)",
        R"(bjson_value_dt_avv_str | "2024-02-29~13:45:00" {} "2024-02-29T13:45:00Z" "2024-02-29T13:45:00+02:00" "13:45" | $ | RETURNING~TIMESTAMP~DEFAULT~'2000-01-01'~ON~ERROR | [0] 2024-02-29T13:45:00 2000-01-01 2000-01-01 2000-01-01 2000-01-01)",
        R"(bjson_value_bool_avv_str | 1 true | $ | RETURNING~BOOLEAN~DEFAULT~FALSE~ON~ERROR | [0] 0 1)",
        R"(bjson_value_dbl_avv_str | "~.5~" {} | $ | RETURNING~DOUBLE~PRECISION~DEFAULT~-1.5e3~ON~ERROR | [0] 0.5 -1500)",
    });
}

TEST(JsonQuery, IsJson) {
    expect_results({
        R"(bjson_query_av_str | {"a":~[1,~"x~y"]} {"a":"x"} {"a":null} {} { '' NULL | $.a | [0] [1,"x y"] "x" null NULL NULL NULL NULL)",
        R"(bjson_query_avv_str | ~[1,2] ~[1] ~[] 3 | $[&*&] | WITH~WRAPPER | [0] [1,2] [1] NULL [3])",
        R"(bjson_query_avv_str | ~[1,2] ~[1] ~[] { | $[&*&] | with~conditional~array~wrapper~empty~on~empty~empty~object~on~error | [0] [1,2] 1 [] {})",
        R"(bjson_query_avv_str | ~[1,2] | $[&*&] | WITHOUT~WRAPPER~EMPTY~ARRAY~ON~ERROR | [0] [])",
    });
}

} // namespace
