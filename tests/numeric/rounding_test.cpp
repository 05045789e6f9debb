// ROUND, TRUNC, CEIL, FLOOR and ABS of DECIMAL; ROUND and TRUNC of DOUBLE; TRUNC of INT and of digit strings.

#include <bit>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/contract/text_case.h"

namespace {

using contract::expect_results;

TEST(Rounding, OfDecimals) {
    expect_results({
        "btrunc_dec_def_a_math | 7.99 -7.99 -0.9 1E126 | [1] 7 -7 0 1&0*126",
        "btrunc_dec_aa_math | 1234.567 1234.567 -1.29 1.5 1234.5 1.25 | 2 -2 1 5 -2147483648 2147483647 | [1] 1234.56 1200 -1.2 1.5 0 1.25",
        "bround_def_a_math_dbl | 2.5 -2.5 2.49 99999999999999999999999999999999999999 | [1] 3 -3 2 99999999999999999999999999999999999999",
        "bround_dec_aa_math_dbl | 1234.5678 1250 -1.005 99.95 1.5 1.5 | 2 -2 2 1 2147483647 -2147483648 | [1] 1234.57 1300 -1.01 100.0 1.5 "
        "0",
        // Where the result would be beyond the largest DECIMAL, ROUND gives back the argument.
        "bround_dec_av_li_math_dbl | 9.9999E126 | -126 | [1] 99999&0*122",
        // The scale decides, not the digits.
        "bceil_a_math_dec | 1.5 -1.5 7 2.00 -2.00 0.00 0.01 -0.5 | [1] 2 -1 7 3 -2 0 1 0",
        "bfloor_a_math_dec | 1.5 -1.5 7 2.00 -2.00 0.00 -0.01 0.5 | [1] 1 -2 7 2 -3 0 -1 0",
        "bceil_a_math_dec | 9999999999999999999999999999999999999.5 1E-127 -1E126 | [1] 10000000000000000000000000000000000000 1 -1&0*126",
        "babs_a_math_dec | -1.50 1.50 0.0 -1E-127 | [1] 1.50 1.50 0.0 0.&0*126&1",
    });
}

// What no power of ten or only an infinite one can change; an infinite result ends the batch.
TEST(Rounding, OfDoublesAtTheEnds) {
    expect_results({
        "bround_aa_math_dbl | 5 0.1 -0.0 0 nan nan inf 1.5 7 1 inf | -400 39 5 -400 3 -400 -400 2147483647 -2147483648 2 2 | [0] 0 "
        "0.10000000000000001 -0 0 nan 0 0 1.5 0 1 0 status -6102",
        "bround_av_li_math_dbl | nan -inf | 39 | [0] nan 0 status -6102",
        "bround_av_li_math_dbl | -7 inf -0.0 | -2147483648 | [1] 0 0 -0",
        "bround_av_li_math_dbl | 15 1.7e308 | -308 | [0] 0 0 status -6102",
    });
}

// The rule written down with modf, as numbers are rounded by hand.
double rounded(double x, std::int32_t digits) {
    if (x == 0 || digits > 38) {
        return x;
    }
    const double factor = std::pow(10.0, std::abs(digits));
    const double scaled = digits > 0 ? x * factor : x / factor;
    if (std::isinf(digits > 0 ? scaled : factor)) {
        return digits > 0 ? x : 0;
    }
    double whole = 0;
    const double fraction = std::modf(scaled, &whole);
    if (std::fabs(fraction) >= 0.5) {
        whole += std::copysign(1.0, x);
    }
    return digits > 0 ? whole / factor : whole * factor;
}

TEST(Rounding, OfDoublesIsByTheRule) {
    std::mt19937_64 random(2);
    std::vector<double> xs;
    std::vector<std::int32_t> scales;
    while (xs.size() < 100000) {
        const std::int32_t scale = static_cast<std::int32_t>(random() % (random() % 8 == 0 ? 700 : 60)) - 20;
        const double digits = static_cast<double>(static_cast<std::int64_t>(random()) >> (random() % 64));
        const double near_half = (std::trunc(digits) + 0.5) / std::pow(10.0, scale);
        const double candidates[] = {std::bit_cast<double>(random()), digits, digits / 1000, near_half,
                                     std::nextafter(near_half, random() % 2 == 0 ? 1e308 : -1e308)};
        const double x = candidates[random() % std::size(candidates)];
        const std::int32_t signed_scale = scale > 60 && random() % 2 == 0 ? -scale : scale;
        if (!std::isinf(rounded(x, signed_scale)) && !std::isnan(x)) {
            xs.push_back(x);
            scales.push_back(signed_scale);
        }
    }
    const contract::outcome outcome = contract::call_with("bround_aa_math_dbl", xs, scales);
    ASSERT_EQ(outcome.status, 0);
    for (std::size_t row = 0; row < xs.size(); ++row) {
        const double result = zqengine::values_of<double>(*outcome.result)[row];
        ASSERT_EQ(std::bit_cast<std::uint64_t>(result), std::bit_cast<std::uint64_t>(rounded(xs[row], scales[row])))
            << std::hexfloat << "ROUND(" << xs[row] << ", " << scales[row] << ") = " << result;
    }
}

// Bytes are looked at before the scale; 319 of them count, and blanks that are not stored do not.
TEST(Rounding, OfDigitStrings) {
    expect_results({
        "btrunc_aa_math | 123.456 123.456 123.456 123 123 5__ | 1 -1 2147483647 -3 -2 0 | [1] 123.40000000000001 120 123.456 0 100 5",
        "btrunc_aa_math | '' . .5 .5 5. 0099 | 0 0 0 1 1 -1 | [1] 0 0 0 0.5 5 90",
        "btrunc_aa_math | 9 '' | 0 1 | [0] 9 NULL status -6803", // no digit is left to read
        "btrunc_aa_math | 9 . | 0 1 | [0] 9 NULL status -6803",
        "btrunc_av_li_math | 1 12a 3 | -5 | [0] 0 NULL ? status -6803",
        "btrunc_av_li_math | 0*318&5&a 0*317&25&3 0*319&7 | 0 | [1] 5 25 0",
        "btrunc_av_li_math | 0*318&a | 0 | [0] NULL status -6803",
        "btrunc_va_s_math | 0*310&123.4567890 | 5 4 -2 | [1] 123.45677999999999 123.4567 100",
    });
}

} // namespace
