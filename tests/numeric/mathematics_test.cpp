// The functions of the mathematics library on DOUBLE, and RAND.

#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/contract/text_case.h"

namespace {

using contract::evaluate;
using contract::text_case;

double result_of(const char* symbol, const std::vector<double>& values) {
    std::vector<zqengine::column_pointer> columns;
    std::vector<contract::call_argument> arguments;
    for (const double value : values) {
        columns.push_back(contract::column_of<double>(bifun::value_type::DOUBLE, {value}));
        arguments.push_back({.column = columns.back().get()});
    }
    const contract::outcome outcome = contract::call(contract::entry_of(symbol), arguments, 1);
    EXPECT_EQ(outcome.status, 0) << symbol;
    return *zqengine::values_of<double>(*outcome.result);
}

// Last bits are the library's, so it is called here too.
TEST(Mathematics, CallsTheLibrary) {
    struct function {
        const char* symbol;
        double (*expected)(double);
        double least; // a value that is allowed; all are up to 1
    };
    const function functions[] = {
        {"bsin_a_math_dbl", [](double x) { return std::sin(x); }, -1},
        {"bcos_a_math_dbl", [](double x) { return std::cos(x); }, -1},
        {"btan_a_math_dbl", [](double x) { return std::tan(x); }, -1},
        {"bcot_a_math_dbl", [](double x) { return 1.0 / std::tan(x); }, -1},
        {"basin_a_math_dbl", [](double x) { return std::asin(x); }, -1},
        {"bacos_a_math_dbl", [](double x) { return std::acos(x); }, -1},
        {"batan_a_math_dbl", [](double x) { return std::atan(x); }, -1},
        {"bsinh_a_math_dbl", [](double x) { return std::sinh(x); }, -1},
        {"bcosh_a_math_dbl", [](double x) { return std::cosh(x); }, -1},
        {"btanh_a_math_dbl", [](double x) { return std::tanh(x); }, -1},
        {"bsqrt_a_math_dbl", [](double x) { return std::sqrt(x); }, 0.01},
        {"bexp_a_math_dbl", [](double x) { return std::exp(x); }, -1},
        {"bln_a_math_dbl", [](double x) { return std::log(x); }, 0.01},
        {"blog10_a_math_dbl", [](double x) { return std::log10(x); }, 0.01},
    };
    for (const function& function : functions) {
        for (const double x : {function.least, 0.02, 0.3, 0.7, 1.0}) {
            EXPECT_DOUBLE_EQ(result_of(function.symbol, {x}), function.expected(x)) << function.symbol << " of " << x;
        }
    }
}

TEST(Mathematics, HasTheseValues) {
    const text_case cases[] = {
        {"bsin_a_math_dbl", {"0 -0.0 nan"}, "[1] 0 -0 nan"},
        {"bcot_a_math_dbl", {"1 0 1"}, "[0] 0.64209261593433065 0 ? status -6803"},
        {"basin_a_math_dbl", {"1 -1 -0.0 nan"}, "[1] 1.5707963267948966 -1.5707963267948966 -0 nan"},
        {"bacos_a_math_dbl", {"1 -1 0"}, "[1] 0 3.1415926535897931 1.5707963267948966"},
        {"batan_a_math_dbl", {"inf -inf -0.0"}, "[1] 1.5707963267948966 -1.5707963267948966 -0"},
        // The first argument is y.
        {"batan2_aa_math_dbl",
         {"1 0 0 -0.0 -1 nan", "0 1 -1 -1 0 0"},
         "[1] 1.5707963267948966 0 3.1415926535897931 -3.1415926535897931 "
         "-1.5707963267948966 nan"},
        {"batan2_av_do_math_dbl", {"1 0", "0"}, "[0] 1.5707963267948966 0 status -6803"},
        {"batan2_va_do_math_dbl", {"1", "0 inf"}, "[1] 1.5707963267948966 0"},
        {"bsinh_a_math_dbl", {"0 nan 711 1"}, "[0] 0 nan ? ? status -6102"},
        {"bcosh_a_math_dbl", {"0 nan 711 1"}, "[0] 1 nan 0 ? status -6102"},
        {"btanh_a_math_dbl", {"inf -inf -0.0"}, "[1] 1 -1 -0"},
        {"bsqrt_a_math_dbl", {"0 -0.0 2.25 inf nan -1e-300"}, "[0] 0 -0 1.5 inf nan 0 status -6803"},
        {"bexp_a_math_dbl", {"0 -800 -inf nan 710"}, "[0] 1 0 0 nan 0 status -6102"},
        {"bln_a_math_dbl", {"1 inf nan -0.0"}, "[0] 0 inf nan 0 status -6803"},
        {"blog10_a_math_dbl", {"1000 0.001 1 -1"}, "[0] 3 -3 0 0 status -6803"},
        // The first argument is the base.
        {"blog_aa_math_dbl", {"2 10 0.5 2 1", "8 1 4 0.25 10"}, "[0] 3 0 -2 -2 0 status -6803"},
        {"blog_aa_math_dbl", {"nan 2 -nan", "1 nan 0"}, "[0] nan nan 0 status -6803"},
        {"blog_av_do_math_dbl", {"2 4 -2", "16"}, "[0] 4 2 0 status -6803"},
        {"blog_va_do_math_dbl", {"1", "10"}, "[0] 0 status -6803"},
        {"blog_va_do_math_dbl", {"NULL=-1", "10 0 -1"}, "[0] NULL NULL NULL"}, // nothing is checked
        {"bpower_aa_math_dbl", {"0 -2 -2 2 -0.0 -inf", "0 3 -2 0.5 3 2"}, "[0] 1 -8 0.25 1.4142135623730951 -0 0 status -6102"},
        {"bpower_aa_math_dbl", {"nan 1 8 2 -8", "0 nan nan -inf 0.33333333333333331"}, "[0] 1 1 nan 0 0 status -6803"},
        {"bpower_av_do_math_dbl", {"3 0", "-1"}, "[0] 0.33333333333333331 0 status -6803"},
        {"bpower_va_do_math_dbl", {"10", "2 NULL=400 308 400"}, "[0] 100 NULL 1e+308 0 status -6102"},
        {"bpower_va_do_math_dbl", {"-8", "2 -1 nan"}, "[0] 64 -0.125 0 status -6803"},
    };
    for (const text_case& text_case : cases) {
        EXPECT_EQ(evaluate(text_case), text_case.result) << text_case.symbol << " of " << text_case.arguments[0];
    }
}

TEST(Rand, IsDecidedByTheSeed) {
    struct seed {
        double given;
        unsigned used;
    };
    // The fraction does not count, nor does what is above the low 32 bits; what is no 64-bit integer is taken for the smallest.
    constexpr double infinity = std::numeric_limits<double>::infinity();
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
                          {-infinity, 0},
                          {infinity, 0},
                          {std::nan(""), 0},
                          {2147483648.0, 2147483648}};
    for (const seed& seed : seeds) {
        std::srand(seed.used);
        const double expected = static_cast<double>(std::rand()) / 2147483647.0; // before the call draws
        EXPECT_EQ(result_of("brand_a_math_int", {seed.given}), expected) << seed.given;
    }
    const zqengine::column_pointer fives = contract::column_of<double>(bifun::value_type::DOUBLE, std::vector<double>(9, 5.5));
    const contract::outcome outcome = contract::call(contract::entry_of("brand_a_math_int"), {{.column = fives.get()}}, 9);
    EXPECT_TRUE(contract::same_rows(outcome, 0, outcome, 1, 8));
}

} // namespace
