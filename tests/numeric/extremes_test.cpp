// GREATEST and LEAST of two numbers.

#include <gtest/gtest.h>

#include "engine/decimal.h"
#include "tests/contract/text_case.h"

namespace {

using contract::evaluate;
using contract::text_case;

TEST(Extremes, OfBigints) {
    const text_case cases[] = {
        {"bgreatest_aa_math_bigint",
         {"-1 -9223372036854775808 9223372036854775807 4294967296", "-2 0 -1 1"},
         "[1] -1 0 9223372036854775807 4294967296"},
        {"bleast_aa_math_bigint",
         {"-1 -9223372036854775808 9223372036854775807 4294967296", "-2 0 -1 1"},
         "[1] -2 -9223372036854775808 -1 1"},
        {"bgreatest_aa_math_bigint", {"1 NULL NULL 4", "NULL 2 NULL 3"}, "[0] NULL NULL NULL 4"},
        {"bgreatest_av_do_math_bigint", {"1 NULL 3", "2"}, "[0] 2 NULL 3"},
        {"bgreatest_va_do_math_bigint", {"2", "@2,2,0 1 NULL 3"}, "[0] 3 3 2"},
        {"bleast_av_bi_math_bigint", {"1 3", "2"}, "[1] 1 2"},
        {"bleast_va_bi_math_bigint", {"2", "[9] 1 3"}, "[1] 1 2"},
        {"bleast_va_bi_math_bigint", {"NULL", "1 3"}, "[0] NULL NULL"},
    };
    for (const text_case& text_case : cases) {
        EXPECT_EQ(evaluate(text_case), text_case.result) << text_case.symbol;
    }
}

TEST(Extremes, OfDoublesCompareAsIeeeDoes) {
    const text_case cases[] = {
        {"bgreatest_aa_math_dbl", {"1.5 -inf 5e-324 -1.5", "1.25 inf 0 -1.25"}, "[1] 1.5 inf 4.9406564584124654e-324 -1.25"},
        {"bleast_aa_math", {"1.5 -inf -5e-324 -1.5", "1.25 inf 0 -1.25"}, "[1] 1.25 -inf -4.9406564584124654e-324 -1.5"},
        // Zeros of either sign are equal and a NaN is neither less nor greater: the second is the result.
        {"bgreatest_aa_math_dbl", {"0 -0.0 nan 1", "-0.0 0 1 nan"}, "[1] -0 0 1 nan"},
        {"bleast_aa_math", {"0 -0.0 nan 1", "-0.0 0 1 nan"}, "[1] -0 0 1 nan"},
        {"bgreatest_av_do_math_dbl", {"NULL nan 3", "2"}, "[0] NULL 2 3"},
        {"bgreatest_va_do_math_dbl", {"2", "1 3 NULL"}, "[0] 2 3 NULL"},
        {"bleast_av_do_math", {"-0.0 -1", "0"}, "[1] 0 -1"},
        {"bleast_va_do_math", {"0", "-0.0 -1"}, "[1] -0 -1"},
        {"bleast_va_do_math", {"NULL", "1"}, "[0] NULL"},
    };
    for (const text_case& text_case : cases) {
        EXPECT_EQ(evaluate(text_case), text_case.result) << text_case.symbol;
    }
}

// With the engine's comparison for every row, and with the library's own where it knows the layout.
TEST(Extremes, OfDecimalsCompareByNumericValue) {
    const text_case cases[] = {
        // Equal values: the second, with its own scale.
        {"bgreatest_aa_math_dec", {"1.0 1.00 0 0.00 -2.50", "1.00 1.0 0.0 0 -2.5"}, "[1] 1.00 1.0 0.0 0 -2.5"},
        {"bleast_aa_math_dec", {"1.0 1.00 0 0.00 -2.50", "1.00 1.0 0.0 0 -2.5"}, "[1] 1.00 1.0 0.0 0 -2.5"},
        // One scale, with every pair of signs.
        {"bgreatest_aa_math_dec",
         {"1.10 -1.10 1.20 -1.20 0.00 -0.01", "1.20 -1.20 -9.90 9.90 -0.01 0.00"},
         "[1] 1.20 -1.10 1.20 9.90 0.00 0.00"},
        {"bleast_aa_math_dec",
         {"1.10 -1.10 1.20 -1.20 0.00 -0.01", "1.20 -1.20 -9.90 9.90 -0.01 0.00"},
         "[1] 1.10 -1.20 -9.90 -1.20 -0.01 -0.01"},
        // Several scales, whose coefficients are in another order than the values.
        {"bgreatest_aa_math_dec", {"2 0.9 -2 100", "1.999 0.10000 -1.999 99.99"}, "[1] 2 0.9 -1.999 100"},
        {"bleast_aa_math_dec", {"2 0.9 -2 100", "1.999 0.10000 -1.999 99.99"}, "[1] 1.999 0.10000 -2 99.99"},
        // 38 digits, differing in the last.
        {"bgreatest_aa_math_dec",
         {"99999999999999999999999999999999999998 -99999999999999999999999999999999999998",
          "99999999999999999999999999999999999999 -99999999999999999999999999999999999999"},
         "[1] 99999999999999999999999999999999999999 -99999999999999999999999999999999999998"},
        {"bleast_av_do_math_dec",
         {"18446744073709551616 18446744073709551615 NULL", "18446744073709551616"},
         "[0] 18446744073709551616 18446744073709551615 NULL"},
        {"bleast_va_do_math_dec", {"1.0", "@1,0,0 1.000 0.9"}, "[1] 0.9 1.000 1.000"},
        {"bgreatest_av_do_math_dec", {"1.000 2", "1.0"}, "[1] 1.0 2"},
        {"bgreatest_va_do_math_dec", {"1.0", "1.000 NULL 0.99"}, "[0] 1.000 NULL 1.0"},
        {"bgreatest_va_do_math_dec", {"NULL", "1.000"}, "[0] NULL"},
    };
    for (const std::int32_t layout : {XDEC_LAYOUT_PRIVATE, XDEC_LAYOUT_PACKED_128}) {
        xdec_layout = layout;
        for (const text_case& text_case : cases) {
            EXPECT_EQ(evaluate(text_case), text_case.result) << text_case.symbol << ", layout " << layout;
        }
    }
}

} // namespace
