// GREATEST and LEAST of two numbers.

#include <gtest/gtest.h>

#include "engine/statements.h"
#include "tests/contract/text_case.h"

namespace {

using contract::expect_results;

TEST(Extremes, OfBigints) {
    expect_results({
        "bgreatest_aa_math_bigint | -1 -9223372036854775808 9223372036854775807 4294967296 | -2 0 -1 1 | [1] -1 0 9223372036854775807 "
        "4294967296",
        "bleast_aa_math_bigint | -1 -9223372036854775808 9223372036854775807 4294967296 | -2 0 -1 1 | [1] -2 -9223372036854775808 -1 1",
    });
}

TEST(Extremes, OfDoublesCompareAsIeeeDoes) {
    expect_results({
        "bgreatest_aa_math_dbl | 1.5 -inf 5e-324 -1.5 | 1.25 inf 0 -1.25 | [1] 1.5 inf 4.9406564584124654e-324 -1.25",
        "bleast_aa_math | 1.5 -inf -5e-324 -1.5 | 1.25 inf 0 -1.25 | [1] 1.25 -inf -4.9406564584124654e-324 -1.5",
        // Zeros of either sign are equal and a NaN is neither less nor greater: the second is the result.
        "bgreatest_aa_math_dbl | 0 -0.0 nan 1 | -0.0 0 1 nan | [1] -0 0 1 nan",
        "bleast_aa_math | 0 -0.0 nan 1 | -0.0 0 1 nan | [1] -0 0 1 nan",
    });
}

// With the engine's comparison for every row, and with the library's own where it knows the layout.
TEST(Extremes, OfDecimalsCompareByNumericValue) {
    for (const std::int32_t layout : {XDEC_LAYOUT_PRIVATE, XDEC_LAYOUT_PACKED_128}) {
        zq_engine_statements.decimal_layout = layout;
        expect_results({
            // Equal values: the second, with its own scale.
            "bgreatest_aa_math_dec | 1.0 1.00 0 0.00 -2.50 | 1.00 1.0 0.0 0 -2.5 | [1] 1.00 1.0 0.0 0 -2.5",
            "bleast_aa_math_dec | 1.0 1.00 0 0.00 -2.50 | 1.00 1.0 0.0 0 -2.5 | [1] 1.00 1.0 0.0 0 -2.5",
            // One scale, with every pair of signs.
            "bgreatest_aa_math_dec | 1.10 -1.10 1.20 -1.20 0.00 -0.01 | 1.20 -1.20 -9.90 9.90 -0.01 0.00 | [1] 1.20 -1.10 1.20 9.90 0.00 "
            "0.00",
            "bleast_aa_math_dec | 1.10 -1.10 1.20 -1.20 0.00 -0.01 | 1.20 -1.20 -9.90 9.90 -0.01 0.00 | [1] 1.10 -1.20 -9.90 -1.20 -0.01 "
            "-0.01",
            // Several scales, whose coefficients are in another order than the values.
            "bgreatest_aa_math_dec | 2 0.9 -2 100 | 1.999 0.10000 -1.999 99.99 | [1] 2 0.9 -1.999 100",
            "bleast_aa_math_dec | 2 0.9 -2 100 | 1.999 0.10000 -1.999 99.99 | [1] 1.999 0.10000 -2 99.99",
            // 38 digits, differing in the last.
            "bgreatest_aa_math_dec | 99999999999999999999999999999999999998 -99999999999999999999999999999999999998 | "
            "99999999999999999999999999999999999999 -99999999999999999999999999999999999999 | [1] 99999999999999999999999999999999999999 "
            "-99999999999999999999999999999999999998",
            "bleast_aa_math_dec | 18446744073709551616 18446744073709551615 | 18446744073709551616 18446744073709551616 | [1] "
            "18446744073709551616 18446744073709551615",
        });
    }
}

} // namespace
