// SPDX-License-Identifier: Apache-2.0
// Doubles of text, against the C library's conversion.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "bop/frame/status.h"
#include "embedded/decimal/number_scan.h"
#include "embedded/decimal/plain_number.h"
#include "engine/decimal.h"
#include "engine/number_format.h"
#include "tests/contract/exact_block.h"

namespace {

std::int32_t read(std::string_view text, double& value) {
    const exact_block bytes(text);
    return zq_char2dou(bytes.data(), bytes.length, &value);
}

void expect_nearest(const std::string& text) {
    constexpr double untouched = -7;
    const double expected = std::strtod(text.c_str(), nullptr);
    double value = untouched;
    const std::int32_t status = read(text, value);
    if (std::isinf(expected)) {
        EXPECT_EQ(status, BIFUN_NUMERIC_OVERFLOW) << text;
        EXPECT_EQ(value, untouched) << text;
        return;
    }
    EXPECT_EQ(status, BIFUN_OK) << text;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(expected)) << text;
}

// The digits of the middle between a double and the next, all of them, with the exponent.
std::string middle_above(double value, int& exponent) {
    const long double middle = (static_cast<long double>(value) + std::nextafter(value, HUGE_VAL)) / 2; // 64 bits have room for it
    const std::string text = fmt::format("{:.800e}", middle);
    const std::size_t mark = text.find('e');
    exponent = std::atoi(text.c_str() + mark + 1);
    return text.substr(0, mark);
}

TEST(DoubleReading, MiddlesAndWhatIsNextToThem) {
    std::mt19937_64 random(1);
    constexpr double largest_with_next = 1e308;
    for (int i = 0; i < 2000; ++i) {
        const std::uint64_t bits = random() & (i % 8 == 0 ? 0x001FFFFFFFFFFFFF : 0x7FFFFFFFFFFFFFFF); // subnormal and small ones among them
        const auto value = std::bit_cast<double>(bits);
        if (!(value < largest_with_next)) {
            continue;
        }
        int exponent = 0;
        std::string digits = middle_above(value, exponent);
        expect_nearest(fmt::format("{}e{}", digits, exponent));
        digits.back() = '1';
        expect_nearest(fmt::format("-{}e{}", digits, exponent));
        for (const std::size_t kept : {17U, 19U, 20U, 21U, 22U, 30U, 38U, 39U, 40U, 41U, 100U}) {
            expect_nearest(fmt::format("{}e{}", digits.substr(0, kept), exponent));
            expect_nearest(fmt::format("0000000000000{}e{}", digits.substr(0, kept), exponent));
        }
    }
    // Integers half-way between two doubles, in every notation.
    for (int i = 0; i < 2000; ++i) {
        const std::uint64_t odd = (random() >> 10 | std::uint64_t{1} << 53) | 1;
        for (const int zeros : {0, 1, 3, 5}) {
            const std::string digits = std::to_string(odd) + std::string(static_cast<std::size_t>(zeros), '0');
            expect_nearest(digits);
            expect_nearest(digits + ".000");
            expect_nearest(digits + "000E-3");
        }
        expect_nearest(fmt::format("{}.{}", odd, i));
    }
}

TEST(DoubleReading, AnyDigitsWithAnyExponent) {
    std::mt19937_64 random(2);
    for (int i = 0; i < 100'000; ++i) {
        const std::uint64_t digits = random() >> random() % 64;
        expect_nearest(fmt::format("{}e{}", digits, static_cast<int>(random() % 700) - 360));
        const double value = std::ldexp(static_cast<double>(digits), -static_cast<int>(random() % 90));
        expect_nearest(fmt::format("{:.{}f}", random() % 2 == 0 ? value : -value, random() % 40));
        const auto any = std::bit_cast<double>(random());
        if (std::isfinite(any)) {
            expect_nearest(fmt::format("{:.{}e}", any, random() % 25));
        }
    }
    for (const char* const text : {"1.7976931348623157e308",
                                   "1.7976931348623158e308",
                                   "1.797693134862315807e308",
                                   "1.797693134862315808e308",
                                   "179769313486231580793e289",
                                   "2e308",
                                   "1e99999999999999999999",
                                   "5e-324",
                                   "2.4703282292062328e-324",
                                   "2.4703282292062327e-324",
                                   "-1e-99999999999999999999",
                                   "0e99999999999999999999",
                                   "-0",
                                   "00.000",
                                   "1e0000000000000000000000002",
                                   "18446744073709551615",
                                   "18446744073709551616",
                                   "9999999999999999999",
                                   "99999999999999999999",
                                   "0.000000000000000000000000000001",
                                   "2.2250738585072011e-308"}) {
        expect_nearest(text);
    }
    expect_nearest(std::string(309, '9'));
    expect_nearest(std::string(310, '9'));
    expect_nearest("0." + std::string(400, '0') + "1e400");
    expect_nearest(std::string(5000, '1') + "e-5000");
}

TEST(DoubleReading, NamesAndWhatIsNoNumber) {
    constexpr double untouched = 7;
    const auto result = [](std::string_view text) {
        double value = untouched;
        const std::int32_t status = read(text, value);
        EXPECT_TRUE(status == BIFUN_OK || value == untouched) << text;
        return status == BIFUN_OK ? fmt::format("{}", value) : std::to_string(status);
    };
    for (const char* const text : {"Infinity", "inf", "+INF", "  infinity  ", " +Inf"}) {
        EXPECT_EQ(result(text), "inf") << text;
    }
    EXPECT_EQ(result("-Infinity"), "-inf");
    for (const char* const text : {"NaN", "nan ", "-nan"}) {
        EXPECT_EQ(result(text), "nan") << text;
    }
    for (const char* const text : {" 1.5 ", "+1.5", "1.50", "15e-1", "  +.15E+1", "0001.5"}) {
        EXPECT_EQ(result(text), "1.5") << text;
    }
    for (const char* const text :
         {"",   " ",  ".",    "-",   "+-1", "--1",      "-.",       "- 1",  "1 2",    "1..2", "1.2.3",  "1e",   "1e+",
          "e5", "1,", "0x10", "1_0", "1d",  "1234567x", "x1234567", "nano", "nan(1)", "nann", "infini", "-in f"}) {
        EXPECT_EQ(result(text), "109") << text;
    }
}

#if defined(__x86_64__)
// Both ways to read plain numbers say what the general one says, of texts of every length with a point or a wrong byte in every place.
TEST(DoubleReading, PlainNumbersAreWhatTheGeneralWayReads) {
    std::mt19937_64 random(3);
    const auto check = [](const std::string& text) {
        const exact_block bytes(text);
        const zqengine::scanned_number number = zqengine::scan_number({.begin = bytes.data(), .end = bytes.data() + bytes.length});
        const bool has_to_be_plain = number.is_number && text.find(' ') == text.npos && number.digits.digits <= 18 && text.size() <= 32;
        const auto expect_same = [&](const zqengine::plain_number& plain) {
            EXPECT_TRUE(plain.is_plain || !has_to_be_plain) << text;
            EXPECT_TRUE(!plain.is_plain || (number.is_number && plain.digits == number.digits.pending && plain.scale == number.scale &&
                                            plain.negative == number.negative))
                << text;
            return 0;
        };
        EXPECT_TRUE(!zqengine::plain::has_lookups() || zqengine::plain::use_by_lookups(bytes.data(), bytes.length, expect_same) == 0);
        EXPECT_TRUE(!zqengine::plain::has_masks() || zqengine::plain::use_by_masks(bytes.data(), bytes.length, expect_same) == 0);
    };
    for (std::size_t length = 0; length <= 34; ++length) {
        for (std::size_t changed = 0; changed <= length; ++changed) {
            for (const char byte : {'.', ':', '/', ' ', '-', '\xB0'}) {
                std::string text = std::string(length, '0') + byte;
                const std::size_t significant = random() % 20;
                for (std::size_t i = 0; i < length; ++i) {
                    text[i] = i + significant < length ? '0' : static_cast<char>('0' + random() % 10);
                }
                std::swap(text[changed], text[length]);
                check(text);
                check('-' + text);
                text[random() % text.size()] = '.';
                check(text);
            }
        }
    }
}
#endif

// A DECIMAL is the double that its text is.
TEST(DoubleReading, DecimalsBecomeTheSameDoubles) {
    std::mt19937_64 random(4);
    for (int i = 0; i < 20'000; ++i) {
        std::string text = random() % 2 == 0 ? "-" : "";
        const std::size_t digits = 1 + random() % 38;
        for (std::size_t k = 0; k < digits; ++k) {
            text += static_cast<char>('0' + random() % 10);
        }
        text += fmt::format("e{}", static_cast<int>(random() % 160) - 120);
        const exact_block bytes(text);
        xdec decimal;
        if (xdec_from_char(bytes.data(), bytes.length, &decimal) != BIFUN_OK) {
            continue;
        }
        char plain[256];
        std::uint32_t length = 0;
        ASSERT_EQ(xdec_to_char_with_zero(&decimal, plain, sizeof plain, 0, 0, &length), BIFUN_OK);
        ASSERT_EQ(xdec_to_double(&decimal), std::strtod(plain, nullptr)) << text;
    }
}

} // namespace
