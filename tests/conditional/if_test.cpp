// IF(condition, x, y) and LNNVL(condition).

#include <gtest/gtest.h>

#include "tests/contract/text_case.h"

namespace {

using contract::evaluate;
using contract::text_case;

TEST(If, ChoosesByTheValueOfTheCondition) {
    const text_case cases[] = {
        // Only 1 is true.
        {"bifoperator_int_aav", {"1 0 2 1", "10 20 30 40", "5"}, "[1] 10 5 5 40"},
        {"bifoperator_int_avv", {"1 0 -1 2147483647 -2147483648 257", "10", "5"}, "[1] 10 5 5 5 5 5"},
        // The value decides even where the condition is NULL.
        {"bifoperator_int_avv", {"NULL=1 NULL=0 NULL=2", "10", "5"}, "[1] 10 5 5"},
        {"bifoperator_int_aaa", {"NULL=1 NULL=0", "10 20", "NULL 4"}, "[1] 10 4"},
        // A selection vector on one column leaves the others dense.
        {"bifoperator_int_aaa", {"@2,0,1 0 1 1", "10 20 30", "1 2 3"}, "[1] 10 2 30"},
        {"bifoperator_int_aaa", {"1 0 1", "@2,0,0 10 20 30", "1 2 3"}, "[1] 30 2 10"},
        {"bifoperator_int_aaa", {"0 1 0", "10 20 30", "@2,2,0 1 2 3"}, "[1] 3 20 1"},
        {"bifoperator_int_aav", {"@1,1,0 0 1", "@0,1,0 10 20", "5"}, "[1] 10 20 5"},
        {"bifoperator_int64_aaa",
         {"1 0", "9223372036854775807 1", "2 -9223372036854775808"},
         "[1] 9223372036854775807 -9223372036854775808"},
        {"bifoperator_int64_aav", {"0 1", "1 2", "4294967296"}, "[1] 4294967296 2"},
        {"bifoperator_int64_avv", {"0 1", "-1", "4294967296"}, "[1] 4294967296 -1"},
        {"bifoperator_double_aaa", {"1 0 1", "nan 1 -0.0", "1 -inf 0"}, "[1] nan -inf -0"},
        {"bifoperator_double_aav", {"0 1", "1 2", "-0.0"}, "[1] -0 2"},
        {"bifoperator_double_avv", {"0 1", "nan", "inf"}, "[1] inf nan"},
        {"bifoperator_dec_aaa", {"1 0", "1.0 2.0", "1.00 2.00"}, "[1] 1.0 2.00"},
        {"bifoperator_dec_aav",
         {"0 1", "1.0 2.0", "-99999999999999999999999999999999999999"},
         "[1] -99999999999999999999999999999999999999 2.0"},
        {"bifoperator_dec_avv", {"0 1 NULL=1", "0.10", "NULL"}, "[0] NULL 0.10 0.10"},
        {"bifoperator_varchar_aaa", {"@0,1,1 1 0", "@1,0,0 a b_", "c d_ e"}, "[1] b_ d_ e"},
        {"bifoperator_varchar_aav", {"0 1 0", "a b c", "i*48"}, "[1] i*48 b i*48"},
        {"bifoperator_varchar_aav", {"0 1", "a b_", "p*49__"}, "[1] p*49__ b_"},
        {"bifoperator_varchar_avv", {"0 1 2", "p*49", "''"}, "[1] '' p*49 ''"},
    };
    for (const text_case& text_case : cases) {
        EXPECT_EQ(evaluate(text_case), text_case.result) << text_case.symbol << " of " << text_case.arguments[0];
    }
}

TEST(If, TakesNullOnlyFromTheArgumentChosen) {
    const text_case cases[] = {
        {"bifoperator_int_aav", {"1 0 1", "1 2 3", "NULL"}, "[0] 1 NULL 3"},
        {"bifoperator_int_aav", {"1 1 1", "1 2 3", "NULL"}, "[1] 1 2 3"},
        {"bifoperator_int_aav", {"1 0", "NULL 2", "5"}, "[0] NULL 5"},
        {"bifoperator_int_aav", {"0 0", "NULL NULL", "5"}, "[0] 5 5"}, // the copy of x leaves its flag
        {"bifoperator_int_aaa", {"1 0 0", "1 2 3", "NULL 5 NULL"}, "[0] 1 5 NULL"},
        {"bifoperator_int_aaa", {"1 0", "1 2", "NULL 5"}, "[1] 1 5"},
        {"bifoperator_int_avv", {"1 0", "NULL", "5"}, "[0] NULL 5"},
        {"bifoperator_int_avv", {"0 0", "NULL", "5"}, "[1] 5 5"},
        {"bifoperator_int_avv", {"1 1", "NULL", "5"}, "[0] NULL NULL"},
        {"bifoperator_int_avv", {"0 0", "5", "NULL"}, "[0] NULL NULL"},
        {"bifoperator_int_avv", {"1 1", "5", "NULL"}, "[1] 5 5"},
        {"bifoperator_int_avv", {"1 0", "NULL", "NULL"}, "[0] NULL NULL"},
        {"bifoperator_dec_aaa", {"1 0 0", "1.0 2.0 3.0", "NULL NULL 3.00"}, "[0] 1.0 NULL 3.00"},
        {"bifoperator_dec_aav", {"1 0", "1.0 2.0", "NULL"}, "[0] 1.0 NULL"},
        {"bifoperator_varchar_aaa", {"1 0 0", "NULL b c", "x NULL z"}, "[0] NULL NULL z"},
        {"bifoperator_varchar_aav", {"0 1", "NULL ''", "NULL"}, "[0] NULL ''"},
        {"bifoperator_varchar_avv", {"0 1", "NULL", "''"}, "[0] '' NULL"},
    };
    for (const text_case& text_case : cases) {
        EXPECT_EQ(evaluate(text_case), text_case.result) << text_case.symbol << " of " << text_case.arguments[0];
    }
}

TEST(If, NeverSetsTheNoNullFlag) {
    EXPECT_EQ(evaluate({"bifoperator_int_avv", {"1 0", "1", "2"}, ""}, {.no_nulls_before = 0}), "[0] 1 2");
    EXPECT_EQ(evaluate({"bifoperator_dec_avv", {"1 0", "1", "2"}, ""}, {.no_nulls_before = 9}), "[9] 1 2");
    EXPECT_EQ(evaluate({"bifoperator_int_aav", {"1 0", "[3] 1 1", "2"}, ""}, {.no_nulls_before = 0}), "[3] 1 2"); // x's own
}

TEST(Lnnvl, IsTrueUnlessTheValueOfTheConditionIs) {
    const text_case cases[] = {
        {"blnnvl_a_bool", {"1 0 3"}, "[1] 0 1 1"},
        {"blnnvl_a_bool", {"NULL NULL=1 NULL=0"}, "[1] 1 0 1"},
        {"blnnvl_a_bool", {"@2,0,0 1 0 -1"}, "[1] 1 0 0"},
        {"blnnvl_a_bool", {"[0]"}, "[1]"},
    };
    for (const text_case& text_case : cases) {
        EXPECT_EQ(evaluate(text_case, {.no_nulls_before = 0}), text_case.result) << text_case.arguments[0];
    }
}

} // namespace
