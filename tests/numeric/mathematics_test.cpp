// The functions of the mathematics library on DOUBLE, and RAND.

#include <cmath>
#include <cstdlib>
#include <vector>

#include <gtest/gtest.h>

#include "tests/contract/text_case.h"

namespace {

double result_of(const char* symbol, double x) {
    const contract::outcome outcome = contract::call_with(symbol, std::vector{x});
    EXPECT_EQ(outcome.status, 0) << symbol;
    return *zqengine::values_of<double>(*outcome.result);
}

double cot(double x) { return 1.0 / std::tan(x); }

// Last bits are the library's, so it is called here too.
TEST(Mathematics, CallsTheLibrary) {
    struct function {
        const char* symbol;
        double (*expected)(double);
        double least; // a value that is allowed; all are up to 1
    };
    const function functions[] = {{"bsin_a_math_dbl", ::sin, -1},   {"bcos_a_math_dbl", ::cos, -1},      {"btan_a_math_dbl", ::tan, -1},
                                  {"bcot_a_math_dbl", cot, -1},     {"basin_a_math_dbl", ::asin, -1},    {"bacos_a_math_dbl", ::acos, -1},
                                  {"batan_a_math_dbl", ::atan, -1}, {"bsinh_a_math_dbl", ::sinh, -1},    {"bcosh_a_math_dbl", ::cosh, -1},
                                  {"btanh_a_math_dbl", ::tanh, -1}, {"bsqrt_a_math_dbl", ::sqrt, 0.01},  {"bexp_a_math_dbl", ::exp, -1},
                                  {"bln_a_math_dbl", ::log, 0.01},  {"blog10_a_math_dbl", ::log10, 0.01}};
    for (const function& function : functions) {
        for (const double x : {function.least, 0.02, 0.3, 0.7, 1.0}) {
            EXPECT_DOUBLE_EQ(result_of(function.symbol, x), function.expected(x)) << function.symbol << " of " << x;
        }
    }
}

TEST(Mathematics, HasTheseValues) {
    contract::expect_results({
        "bsin_a_math_dbl | 0 -0.0 nan | [1] 0 -0 nan",
        "basin_a_math_dbl | 1 -1 -0.0 nan | [1] 1.5707963267948966 -1.5707963267948966 -0 nan",
        "bacos_a_math_dbl | 1 -1 0 | [1] 0 3.1415926535897931 1.5707963267948966",
        "batan_a_math_dbl | inf -inf -0.0 | [1] 1.5707963267948966 -1.5707963267948966 -0",
        // The first argument is y.
        "batan2_aa_math_dbl | 1 0 0 -0.0 | 0 1 -1 -1 | [1] 1.5707963267948966 0 3.1415926535897931 -3.1415926535897931",
        "batan2_aa_math_dbl | -1 nan | 0 0 | [1] -1.5707963267948966 nan",
        "bsinh_a_math_dbl | 0 nan | [1] 0 nan",
        "bcosh_a_math_dbl | 0 nan | [1] 1 nan",
        "btanh_a_math_dbl | inf -inf -0.0 | [1] 1 -1 -0",
        "bsqrt_a_math_dbl | 0 -0.0 2.25 inf nan | [1] 0 -0 1.5 inf nan",
        "bexp_a_math_dbl | 0 -800 -inf nan | [1] 1 0 0 nan",
        "bln_a_math_dbl | 1 inf nan | [1] 0 inf nan",
        "blog10_a_math_dbl | 1000 0.001 1 | [1] 3 -3 0",
        // The first argument is the base.
        "blog_aa_math_dbl | 2 10 0.5 2 nan 2 -nan | 8 1 4 0.25 10 nan 0 | [0] 3 0 -2 -2 nan nan 0 status -6803",
        "blog_va_do_math_dbl | NULL=-1 | 10 0 -1 | [0] NULL NULL NULL", // nothing is checked
        "bpower_aa_math_dbl | 0 -2 -2 2 -0.0 -inf | 0 3 -2 0.5 3 2 | [0] 1 -8 0.25 1.4142135623730951 -0 0 status -6102",
        "bpower_aa_math_dbl | nan 1 8 2 -8 | 0 nan nan -inf -1 | [1] 1 1 nan 0 -0.125",
        "bpower_va_do_math_dbl | 10 | 2 NULL=400 308 400 | [0] 100 NULL 1e+308 0 status -6102",
    });
}

TEST(Rand, IsDecidedByTheSeed) {
    struct seed {
        double given;
        unsigned used;
    };
    // The fraction does not count, nor does what is above the low 32 bits; what is no 64-bit integer is taken for the smallest.
    const seed seeds[] = {{5, 5},
                          {5.9, 5},
                          {-5.9, 4294967291},
                          {-1, 4294967295},
                          {4294967301.0, 5},
                          {0, 0},
                          {0x1p62, 0},
                          {0x1p63, 0},
                          {-0x1p63, 0},
                          {1e300, 0},
                          {-HUGE_VAL, 0},
                          {HUGE_VAL, 0},
                          {std::nan(""), 0},
                          {2147483648.0, 2147483648}};
    for (const seed& seed : seeds) {
        std::srand(seed.used);
        const double expected = static_cast<double>(std::rand()) / 2147483647.0; // before the call draws
        EXPECT_EQ(result_of("brand_a_math_int", seed.given), expected) << seed.given;
    }
    const contract::outcome outcome = contract::call_with("brand_a_math_int", std::vector<double>(9, 5.5));
    EXPECT_TRUE(contract::same_rows(outcome, 0, outcome, 1, 8));
}

} // namespace
