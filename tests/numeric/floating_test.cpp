// Arithmetic on DOUBLE: ABS, SIGN, CEIL, FLOOR, MOD, DEGREES, RADIANS.

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/contract/text_case.h"

namespace {

TEST(Floating, HasTheseValues) {
    contract::expect_results({
        "babs_a_math_dbl | -1.5 1.5 0 -0.0 -inf -4.9406564584124654e-324 | [1] 1.5 1.5 0 -0 inf 4.9406564584124654e-324",
        "babs_a_math_dbl | nan -nan | [1] -nan nan", // the sign is flipped, not cleared
        "bsign_a_math_dbl | 2.5 -2.5 0 -0.0 nan -nan inf -inf 4.9e-324 -4.9e-324 | [1] 1 -1 0 0 0 0 1 -1 1 -1",
        "bceil_a_math_dbl | 1.5 -1.5 -0.5 4503599627370495.5 inf 1e300 | [1] 2 -1 -0 4503599627370496 inf 1.0000000000000001e+300",
        "bfloor_a_math_dbl | 1.5 -1.5 -0.0 -4503599627370495.5 -inf 0.999 | [1] 1 -2 -0 -4503599627370496 -inf 0",
        // The remainder has the sign of x; of 0 it is x, infinities and NaN included.
        "bmod_aa_math_dbl | 7.5 -7 7 -6 6 -0.0 inf nan 5 5 nan 1 | 0 3 -3 3 -3 5 -0.0 0 inf -inf 1 nan | [1] 7.5 -1 1 -0 0 -0 inf nan 5 5 "
        "nan nan",
        // Pi has fifteen digits, and the multiplication comes first.
        "bdegrees_a_math_dbl | 3.14159265358979 3.1415926535897931 1e305 -0.0 nan | [1] 180 180.00000000000017 5.7295779513082385e+306 -0 "
        "nan",
        "bradians_a_math_dbl | 180 -180 0 inf 1e308 | [1] 3.14159265358979 -3.14159265358979 0 inf inf",
    });
}

// Pairs of any bits, of like exponents, of multiples and their neighbours, and with special values, against the library's function.
TEST(Floating, ModIsTheLibrarysRemainderToTheBit) {
    using limits = std::numeric_limits<double>;
    constexpr double special[] = {
        0.0, -0.0, limits::denorm_min(), -limits::min(), limits::max(), limits::infinity(), -limits::infinity(), 0x1p52, 0x1p53, 1.0, 3.0};
    std::mt19937_64 random(1);
    const auto any_bits = [&] { return std::bit_cast<double>(random()); };
    const auto of_exponent = [&](int exponent) {
        return std::ldexp(static_cast<double>(static_cast<std::int64_t>(random()) >> (random() % 60)), exponent);
    };
    std::vector<double> xs;
    std::vector<double> ys;
    for (std::uint32_t pair = 0; pair < 200000; ++pair) {
        const int exponent = static_cast<int>(random() % 2000) - 1090;
        double x = any_bits();
        double y = any_bits();
        if (pair % 5 == 1) {
            x = of_exponent(exponent + static_cast<int>(random() % 60));
            y = of_exponent(exponent);
        } else if (pair % 5 == 2) { // a multiple or next to one, the quotient of up to 60 bits
            y = of_exponent(exponent);
            x = y * static_cast<double>(random() >> (4 + random() % 60));
            x = std::nextafter(x, random() % 3 == 0 ? x : random() % 2 == 0 ? limits::infinity() : -limits::infinity());
        } else if (pair % 5 == 3) { // subnormal
            x = std::bit_cast<double>(random() & 0x800FFFFFFFFFFFFF);
            y = std::bit_cast<double>(random() & 0x800FFFFFFFFFFFFF >> random() % 50);
        } else if (pair % 5 == 4) {
            (pair % 2 == 0 ? x : y) = special[random() % std::size(special)];
            (random() % 4 == 0 ? x : y) = special[random() % std::size(special)];
        }
        xs.push_back(x);
        ys.push_back(y);
    }
    const contract::outcome outcome = contract::call_with("bmod_aa_math_dbl", xs, ys);
    for (std::size_t row = 0; row < xs.size(); ++row) {
        const double expected = ys[row] == 0 ? xs[row] : std::fmod(xs[row], ys[row]);
        const double result = zqengine::values_of<double>(*outcome.result)[row];
        ASSERT_TRUE(std::bit_cast<std::uint64_t>(result) == std::bit_cast<std::uint64_t>(expected) ||
                    (std::isnan(result) && std::isnan(expected)))
            << std::hexfloat << "MOD(" << xs[row] << ", " << ys[row] << ") = " << result << ", not " << expected;
    }
}

} // namespace
