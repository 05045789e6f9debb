// Arithmetic on DOUBLE: ABS, SIGN, CEIL, FLOOR, MOD, DEGREES, RADIANS.

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/contract/text_case.h"

namespace {

using contract::evaluate;
using contract::text_case;

TEST(Floating, HasTheseValues) {
    const text_case cases[] = {
        {"babs_a_math_dbl", {"-1.5 1.5 0 -0.0 -inf -4.9406564584124654e-324"}, "[1] 1.5 1.5 0 -0 inf 4.9406564584124654e-324"},
        {"babs_a_math_dbl", {"nan -nan"}, "[1] -nan nan"}, // the sign is flipped, not cleared
        {"bsign_a_math_dbl", {"2.5 -2.5 0 -0.0 nan -nan inf -inf 4.9e-324 -4.9e-324"}, "[1] 1 -1 0 0 0 0 1 -1 1 -1"},
        {"bceil_a_math_dbl", {"1.5 -1.5 -0.5 4503599627370495.5 inf 1e300"}, "[1] 2 -1 -0 4503599627370496 inf 1.0000000000000001e+300"},
        {"bfloor_a_math_dbl", {"1.5 -1.5 -0.0 -4503599627370495.5 -inf 0.999"}, "[1] 1 -2 -0 -4503599627370496 -inf 0"},
        // The remainder has the sign of x; of 0 it is x, infinities and NaN included.
        {"bmod_aa_math_dbl", {"7.5 -7 7 -6 6 -0.0", "0 3 -3 3 -3 5"}, "[1] 7.5 -1 1 -0 0 -0"},
        {"bmod_aa_math_dbl", {"inf nan 5 5 nan 1", "-0.0 0 inf -inf 1 nan"}, "[1] inf nan 5 5 nan nan"},
        {"bmod_aa_math_dbl", {"1e308 1 5.5 0.3", "3e-308 4.9e-324 -4.9e-324 0.1"}, "[1] 5.4761449005729127e-309 0 0 0.099999999999999978"},
        {"bmod_av_do_math_dbl", {"7.5 NULL -7.5", "2"}, "[0] 1.5 NULL -1.5"},
        {"bmod_va_do_math_dbl", {"7.5", "2 0 NULL -4"}, "[0] 1.5 7.5 NULL 3.5"},
        {"bmod_va_do_math_dbl", {"NULL", "2 0"}, "[0] NULL NULL"},
        // Pi has fifteen digits, and the multiplication comes first.
        {"bdegrees_a_math_dbl", {"3.14159265358979 0 -0.0 nan"}, "[1] 180 0 -0 nan"},
        {"bdegrees_a_math_dbl", {"3.1415926535897931"}, "[1] 180.00000000000017"},
        {"bdegrees_a_math_dbl", {"1e305 1e307 0"}, "[0] 5.7295779513082385e+306 0 ? status -6102"},
        {"bradians_a_math_dbl", {"180 -180 0 inf 1e308"}, "[1] 3.14159265358979 -3.14159265358979 0 inf inf"},
    };
    for (const text_case& text_case : cases) {
        EXPECT_EQ(evaluate(text_case), text_case.result) << text_case.symbol << " of " << text_case.arguments[0];
    }
}

TEST(Floating, PiHasFifteenDigits) {
    const zqengine::column_pointer half_turn = contract::column_of<double>(bifun::value_type::DOUBLE, {180});
    const contract::outcome outcome = contract::call(contract::entry_of("bradians_a_math_dbl"), {{.column = half_turn.get()}}, 1);
    EXPECT_EQ(*zqengine::values_of<std::uint64_t>(*outcome.result), 0x400921FB54442D11U);
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
        switch (pair % 5) {
        case 0:
            break;
        case 1:
            x = of_exponent(exponent + static_cast<int>(random() % 60));
            y = of_exponent(exponent);
            break;
        case 2: // a multiple or next to one, the quotient of up to 60 bits
            y = of_exponent(exponent);
            x = y * static_cast<double>(random() >> (4 + random() % 60));
            x = std::nextafter(x, random() % 3 == 0 ? x : random() % 2 == 0 ? limits::infinity() : -limits::infinity());
            break;
        case 3: // subnormal
            x = std::bit_cast<double>(random() & 0x800FFFFFFFFFFFFF);
            y = std::bit_cast<double>(random() & 0x800FFFFFFFFFFFFF >> random() % 50);
            break;
        default:
            (pair % 2 == 0 ? x : y) = special[random() % std::size(special)];
            (random() % 4 == 0 ? x : y) = special[random() % std::size(special)];
        }
        xs.push_back(x);
        ys.push_back(y);
    }
    const auto row_count = static_cast<std::uint32_t>(xs.size());
    const zqengine::column_pointer x = contract::column_of(bifun::value_type::DOUBLE, xs);
    const zqengine::column_pointer y = contract::column_of(bifun::value_type::DOUBLE, ys);
    const contract::outcome outcome =
        contract::call(contract::entry_of("bmod_aa_math_dbl"), {{.column = x.get()}, {.column = y.get()}}, row_count);
    for (std::uint32_t row = 0; row < row_count; ++row) {
        const double expected = ys[row] == 0 ? xs[row] : std::fmod(xs[row], ys[row]);
        const double result = zqengine::values_of<double>(*outcome.result)[row];
        ASSERT_TRUE(std::bit_cast<std::uint64_t>(result) == std::bit_cast<std::uint64_t>(expected) ||
                    (std::isnan(result) && std::isnan(expected)))
            << std::hexfloat << "MOD(" << xs[row] << ", " << ys[row] << ") = " << result << ", not " << expected;
    }
}

} // namespace
