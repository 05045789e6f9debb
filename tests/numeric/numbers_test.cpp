// SPDX-License-Identifier: Apache-2.0
// Arithmetic and rounding of integers, doubles and decimals, the functions of the mathematics library, RAND, and TO_CHAR of numbers.

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "bop/bifun.h"
#include "tests/contract/domains.h"
#include "tests/contract/text_case.h"

namespace {

using contract::evaluate;
using contract::expect_results;

__extension__ using int128 = __int128;

// Holds the function's rows against those of a model, to the bit; one NaN is like another.
template <class Model, class... T> void expect_model(const char* symbol, const Model& model, const std::vector<T>&... columns) {
    using result_type = decltype(model(columns[0]...));
    const contract::outcome outcome = contract::call_with(symbol, columns...);
    ASSERT_EQ(outcome.status, 0) << symbol;
    for (std::uint32_t row = 0; row < outcome.row_count; ++row) {
        const result_type result = zqengine::values_of<result_type>(*outcome.result)[row];
        const result_type expected = model(columns[row]...);
        if (std::memcmp(&result, &expected, sizeof result) != 0 && (result == result || expected == expected)) {
            std::ostringstream call;
            ((call << std::hexfloat << ' ' << columns[row]), ...);
            FAIL() << symbol << call.str() << ": " << result << ", not " << expected;
        }
    }
}

TEST(Arithmetic, HasTheseValues) {
    expect_results({
        "babs_a_math_int | -9223372036854775807 9223372036854775807 0 -4294967296 | [1] 9223372036854775807 9223372036854775807 0 "
        "4294967296",
        "bceil_a_math_int | -2147483648 2147483647 | [1] -2147483648 2147483647",
        "bfloor_a_math_int | -2147483648 2147483647 | [1] -2147483648 2147483647",
        "btrunc_int_def_a_math_int | -2147483648 7 | [1] -2147483648 7",
        "bceil_a_math_int64 | -9223372036854775808 9007199254740993 | [1] -9223372036854775808 9007199254740993",
        "babs_a_math_dbl | -1.5 0 -0.0 nan -nan | [1] 1.5 0 -0 -nan nan", // the sign of a NaN is flipped, not cleared
        "bsign_a_math_dbl | 2.5 -2.5 0 -0.0 nan -nan inf -inf 4.9e-324 -4.9e-324 | [1] 1 -1 0 0 0 0 1 -1 1 -1",
        // Pi has fifteen digits, and the multiplication comes first.
        "bdegrees_a_math_dbl | 3.14159265358979 3.1415926535897931 1e305 -0.0 | [1] 180 180.00000000000017 5.7295779513082385e+306 -0",
        "bradians_a_math_dbl | 180 -180 0 1e308 | [1] 3.14159265358979 -3.14159265358979 0 inf",
        "bpower_aa_math_dbl | 10 -2 | 400 0.5 | [0] 0 ? status -6102", // what overflows is 0
    });
}

TEST(Arithmetic, CeilOfOneBigintIsStoredInOneRow) {
    auto* const ceil = reinterpret_cast<decltype(&bceil_a_process_int64)>(contract::library_symbol("bceil_a_process_int64"));
    const zqengine::column_pointer column(zqengine::create_column(bifun::value_type::BIGINT, 3));
    EXPECT_EQ(ceil(nullptr, nullptr, -9223372036854775807, &column->column, 1), 0);
    const std::int64_t* const values = zqengine::values_of<std::int64_t>(*column);
    EXPECT_EQ(std::vector(values, values + 3), std::vector<std::int64_t>({0, -9223372036854775807, 0}));
    EXPECT_EQ(column->data.null_flags[1], 0); // the caller's
}

// Of equal ones the second: of zeros of either sign, of decimals of any scale. A NaN is neither less nor greater.
TEST(Arithmetic, ExtremesTakeTheSecondUnlessTheFirstIsBeyondIt) {
    expect_results({
        "bgreatest_aa_math_bigint | -1 -9223372036854775808 4294967296 | -2 0 1 | [1] -1 0 4294967296",
        "bleast_aa_math_bigint | -1 -9223372036854775808 4294967296 | -2 0 1 | [1] -2 -9223372036854775808 1",
        "bgreatest_aa_math_dbl | 1.5 -inf 5e-324 0 -0.0 nan 1 | 1.25 inf 0 -0.0 0 1 nan | [1] 1.5 inf 4.9406564584124654e-324 -0 0 1 nan",
        "bleast_aa_math | 1.5 -inf -5e-324 0 -0.0 nan 1 | 1.25 inf 0 -0.0 0 1 nan | [1] 1.25 -inf -4.9406564584124654e-324 -0 0 1 nan",
        "bgreatest_aa_math_dec | 1.0 0 -2.50 2 -1.1 1.10 | 1.00 0.00 -2.5 1.999 -1.2 -9.90 | [1] 1.00 0.00 -2.5 2 -1.1 1.10",
        "bleast_aa_math_dec | 1.0 0 -2.50 2 -1.1 1.10 | 1.00 0.00 -2.5 1.999 -1.2 -9.90 | [1] 1.00 0.00 -2.5 1.999 -1.2 -9.90",
    });
}

// ---- MOD ----

// Every pair of numbers around powers of two, and multiples of each with their neighbours, against division in 128 bits.
TEST(Mod, IsTheRemainderOfTruncatingDivision) {
    std::vector<std::int64_t> numbers{0};
    for (std::uint32_t bit = 0; bit < 64; ++bit) {
        for (const std::uint64_t offset : {0U, 1U, 2U}) {
            numbers.push_back(static_cast<std::int64_t>((std::uint64_t{1} << bit) + offset));
            numbers.push_back(static_cast<std::int64_t>(-(std::uint64_t{1} << bit) - offset));
            numbers.push_back(static_cast<std::int64_t>((0x9E3779B97F4A7C15U >> bit) * (offset + 1)));
        }
    }
    std::vector<std::int64_t> xs;
    std::vector<std::int64_t> ys;
    for (const std::int64_t x : numbers) {
        for (const std::int64_t y : numbers) {
            const auto multiple = static_cast<std::uint64_t>(y == 0 || y == -1 ? 0 : x / y * y);
            for (const std::uint64_t candidate : {static_cast<std::uint64_t>(x), multiple, multiple + 1, multiple - 1}) {
                xs.push_back(static_cast<std::int64_t>(candidate));
                ys.push_back(y);
            }
        }
    }
    const auto remainder = [](std::int64_t x, std::int64_t y) {
        return static_cast<std::int64_t>(y == 0 ? int128{x} : int128{x} - int128{y} * (int128{x} / y));
    };
    expect_model("bmod_aa_math_int64", remainder, xs, ys);
}

// Pairs of any bits, of like exponents, of multiples and their neighbours, and with special values, against the library's function.
TEST(Mod, OfDoublesIsTheLibrarysRemainderToTheBit) {
    using limits = std::numeric_limits<double>;
    constexpr double special[] = {
        0.0, -0.0, limits::denorm_min(), -limits::min(), limits::max(), limits::infinity(), -limits::infinity(), 0x1p52, 0x1p53, 1.0, 3.0};
    std::mt19937_64 random(1);
    const auto of_exponent = [&](int exponent) {
        return std::ldexp(static_cast<double>(static_cast<std::int64_t>(random()) >> (random() % 60)), exponent);
    };
    std::vector<double> xs;
    std::vector<double> ys;
    for (std::uint32_t pair = 0; pair < 200000; ++pair) {
        const int exponent = static_cast<int>(random() % 2000) - 1090;
        double x = std::bit_cast<double>(random());
        double y = std::bit_cast<double>(random());
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
    expect_model(
        "bmod_aa_math_dbl", [](double x, double y) { return y == 0 ? x : std::fmod(x, y); }, xs, ys);
}

// ---- the mathematics library ----

double cot(double x) { return 1.0 / std::tan(x); }
double log_to(double base, double x) { return std::log(x) / std::log(base); }

// Last bits are the library's, so it is called here too. The first argument of ATAN2 is y, that of LOG the base.
TEST(Mathematics, CallsTheLibrary) {
    const std::pair<const char*, double (*)(double)> of_one[] = {
        {"bsin_a_math_dbl", ::sin},    {"bcos_a_math_dbl", ::cos},   {"btan_a_math_dbl", ::tan},     {"bcot_a_math_dbl", cot},
        {"basin_a_math_dbl", ::asin},  {"bacos_a_math_dbl", ::acos}, {"batan_a_math_dbl", ::atan},   {"bsinh_a_math_dbl", ::sinh},
        {"bcosh_a_math_dbl", ::cosh},  {"btanh_a_math_dbl", ::tanh}, {"bsqrt_a_math_dbl", ::sqrt},   {"bexp_a_math_dbl", ::exp},
        {"bln_a_math_dbl", ::log},     {"bceil_a_math_dbl", ::ceil}, {"bfloor_a_math_dbl", ::floor}, {"btrunc_def_a_math_dbl", ::trunc},
        {"blog10_a_math_dbl", ::log10}};
    const std::pair<const char*, double (*)(double, double)> of_two[] = {
        {"batan2_aa_math_dbl", ::atan2}, {"bpower_aa_math_dbl", ::pow}, {"blog_aa_math_dbl", log_to}};
    const auto values = [](const char* symbol, std::size_t position) {
        const zqengine::column_pointer column = contract::sound_column(contract::entry_of(symbol), position, 400, 0, position);
        return std::vector(zqengine::values_of<double>(*column), zqengine::values_of<double>(*column) + column->capacity);
    };
    for (const auto& [symbol, function] : of_one) {
        expect_model(symbol, function, values(symbol, 0));
    }
    for (const auto& [symbol, function] : of_two) {
        expect_model(symbol, function, values(symbol, 0), values(symbol, 1));
    }
}

// The fraction does not count, nor does what is above the low 32 bits; what is no 64-bit integer is taken for the smallest.
TEST(Rand, IsDecidedByTheSeed) {
    const std::pair<double, unsigned> seeds[] = {{5, 5},
                                                 {5.9, 5},
                                                 {-5.9, 4294967291},
                                                 {-1, 4294967295},
                                                 {4294967301.0, 5},
                                                 {0x1p62, 0},
                                                 {0x1p63, 0},
                                                 {-0x1p63, 0},
                                                 {1e300, 0},
                                                 {-HUGE_VAL, 0},
                                                 {HUGE_VAL, 0},
                                                 {std::nan(""), 0},
                                                 {2147483648.0, 2147483648}};
    for (const auto& [given, used] : seeds) {
        std::srand(used);
        const double drawn = static_cast<double>(std::rand()) / 2147483647.0; // before the call draws
        expect_model(
            "brand_a_math_int", [drawn](double) { return drawn; }, std::vector{given, given});
    }
}

// ---- BITAND ----

TEST(Bitand, CutsFractionsOff) {
    expect_results({
        "bbit_and_for_dec_av | 12 12.9 -12.9 0.9 15 NULL=1E38 | 10.9 | [0] 8 8 0 0 10 NULL",
        "bbit_and_for_dec_av | 7 -7 99999999999999999999999999999999999999.0 -0.9 | 0.5 | [1] 0 0 0 0",
        "bbit_and_for_dec_av | -1 18446744073709551616 18446744073709551615 -18446744073709551616 | 18446744073709551616 | [1] "
        "18446744073709551616 18446744073709551616 0 18446744073709551616",
        "bbit_and_for_dec_va | 1E126 | NULL 0 | [0] NULL NULL status -6102",
    });
}

std::string text_of(int128 value) {
    std::string digits;
    for (int128 rest = value; rest != 0 || digits.empty(); rest /= 10) {
        const int digit = static_cast<int>(rest % 10);
        digits.insert(digits.begin(), static_cast<char>('0' + (digit < 0 ? -digit : digit)));
    }
    return value < 0 ? "-" + digits : digits;
}

TEST(Bitand, IsThatOf128BitIntegers) {
    std::mt19937_64 random(3);
    const auto operand = [&] {
        const auto bits = static_cast<int128>(static_cast<unsigned __int128>(random()) << 64 | random());
        return bits >> (2 + random() % 126); // at most 38 digits
    };
    for (int pair = 0; pair < 3000; ++pair) {
        const int128 x = operand();
        const int128 y = operand();
        for (const char* const symbol : {"bbit_and_for_dec_av", "bbit_and_for_dec_va"}) {
            ASSERT_EQ(evaluate({symbol, {text_of(x), text_of(y)}, ""}), "[1] " + text_of(x & y)) << text_of(x) << ' ' << text_of(y);
        }
    }
}

// ---- rounding ----

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
    expect_model("bround_aa_math_dbl", rounded, xs, scales);
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

// ---- text ----

// One more, one less and any with as many digits as each power of ten.
TEST(NumberToChar, OfIntegersIsTheStandardLibrarys) {
    std::mt19937_64 random(10);
    std::vector<std::int64_t> numbers = {0, INT32_MAX, INT32_MIN, INT64_MAX, INT64_MIN};
    for (std::int64_t power = 1; power <= INT64_MAX / 10; power *= 10) {
        for (const std::int64_t number : {power * 10, power * 10 - 1, power + static_cast<std::int64_t>(random() % 9) * power + 1}) {
            numbers.insert(numbers.end(), {number, -number});
        }
    }
    for (const char* const symbol : {"bto_char_a_int64_to_varchar", "bto_char_a_int_to_varchar"}) {
        std::string column;
        for (const std::int64_t number : numbers) {
            if (number == static_cast<std::int32_t>(number) || std::string_view(symbol) == "bto_char_a_int64_to_varchar") {
                column.append(" ").append(std::to_string(number));
            }
        }
        EXPECT_EQ(evaluate({symbol, {column}, {}}), std::string("[1]").append(column));
    }
}

// Formats are of 1 to 75 bytes and NLS texts of 1 to 128; the format is looked at first, and no number is needed to fail.
TEST(NumberToChar, HasTheseValues) {
    expect_results({
        "bto_char_a_dec_to_varchar | -0.50 1.00 -99999999999999999999999999999999999999 -1E-127 | [1] -0.50 1.00 "
        "-99999999999999999999999999999999999999 -0.&0*126&1",
        "bto_char_a_double_to_varchar | 0.1 -2 1e300 -0.0 nan | [1] 0.1 -2 1E+300 -0 NaN",
        "bto_char_av_int_to_varchar_with_fmt | 1234 -5 NULL | 9,990.00 | [0]  1,234.00     -5.00 NULL",
        "bto_char_av_int64_to_varchar_with_fmt | -9223372036854775808 | S9999999999999999999 | [1] -9223372036854775808",
        "bto_char_av_double_to_varchar_with_fmt | 0.125 -2.5 NULL=inf | FM990.099 | [0] 0.125 -2.5 NULL",
        "bto_char_av_double_to_varchar_with_fmt | 1e200 | 9 | [0] NULL status -6102", // beyond DECIMAL
        "bto_char_av_int_to_varchar_with_fmt | NULL NULL | 9x | [0] NULL NULL",       // never read
        "bto_char_avv_dec_to_varchar_with_nls | 1234.5 -0.25 | FM9G990D00 | NLS_NUMERIC_CHARACTERS=',.' | [1] 1.234,50 -0,25",
        "bto_char_avv_int_to_varchar_with_nls | 12 | FML999 | NLS_CURRENCY=x | [1] x12",
        "bto_char_avv_int64_to_varchar_with_nls | 12 | FMC999 | NLS_ISO_CURRENCY=EUR | [1] EUR12",
        "bto_char_avv_double_to_varchar_with_nls | 1.5 | FM9D9 | NLS_NUMERIC_CHARACTERS=',.' | [1] 1,5",
        "bto_char_av_int_to_varchar_with_fmt | 1 -2 | 9*75 | [1]  *75&1  *74&-2",
        "bto_char_av_int_to_varchar_with_fmt | 1 NULL | 9*76 | [0] NULL NULL",
        "bto_char_av_double_to_varchar_with_fmt | inf 2 | '' | [0] NULL NULL",
        "bto_char_avv_int_to_varchar_with_nls | 1 2 | FML9 | NLS_CURRENCY=x&y*114 | [1] x&y*114&1 x&y*114&2",
        "bto_char_avv_int_to_varchar_with_nls | 1 2 | FML9 | NLS_CURRENCY=x&y*115 | [0] NULL NULL status -4037",
        "bto_char_avv_dec_to_varchar_with_nls | NULL 2 | 9 | '' | [0] NULL NULL status -4037",
        "bto_char_avv_int64_to_varchar_with_nls | 1 | 9*76 | '' | [0] NULL",
        "bto_char_avv_double_to_varchar_with_nls | inf | '' | x*129 | [0] NULL",
    });
}

} // namespace
