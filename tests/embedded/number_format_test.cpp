// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "bop/frame/status.h"
#include "embedded/session/environment.h"
#include "engine/decimal.h"
#include "engine/number_check.h"
#include "engine/number_format.h"
#include "tests/contract/exact_block.h"
#include "tests/embedded/quoted_cells.h"

namespace {

using namespace std::string_literals;

// The text, or the status where the format or the NLS text is bad. All texts and the value lie in blocks of exactly their size.
std::string formatted(bifun_environment* environment, const std::string& number, const std::string& format_text,
                      const std::string& nls_text = "") {
    const exact_block digits(number);
    const exact_block format(format_text);
    const exact_block nls(nls_text);
    const exact_block odd(std::string(1 + sizeof(xdec), '\0'));
    auto* const value = reinterpret_cast<xdec*>(odd.data() + 1);
    EXPECT_EQ(xdec_from_char(digits.data(), digits.length, value), 0) << number;
    const exact_block buffer(std::string(1024, '~'));
    auto* const text = reinterpret_cast<char*>(buffer.data());
    const std::int32_t status = nls.length == 0
                                    ? xdec_to_char_with_fmt(environment, value, text, format.data(), format.length)
                                    : xdec_to_char_with_nls(environment, value, text, format.data(), format.length, nls.data(), nls.length);
    if (status != 0) {
        EXPECT_EQ(text[0], '~') << format_text;
        return std::to_string(status);
    }
    return text;
}

// By what they show: number, format, text and NLS text of each, the text with its blanks.
const char* const cases[] = {
    // digits, zeros, the point
    "0.7|.9| .7; 0.001|9.999|  .001",
    // separators
    "-1234567|9,999,999|-1,234,567; 123|9,,9,9| 1,,2,3; 12|99,| 12,; 1234567|9G999G999D99| 1,234,567.00",
    // rounding, half away from zero, once
    "0.5|9| 1; -0.5|9|-1; 9.995|99.99| 10.00; -0.4|S9|+0; 12345678901234567890123456789012345678E-38|9.9999|  .1235; 5E-30|9| 0",
    "6E37|9|##; 0.18446744073709551616|0.99999999999999999999| 0.18446744073709551616; 99999999999999999999E-20|9.9| 1.0",
    "60000000000000000000000000000000000000E-38|9| 1; 60000000000000000000000000000000000000E-39|9.9|  .1",
    "1E30|9,999,999999999999999999999999999.9| 1,000,000000000000000000000000000.0",
    // what does not fit
    "1|.9|###; 12|FM9|##; 10|L9|###; 10|9PR|###; 10|9MI|##",
    // signs
    "1234567890|9999999999S|1234567890+; -12|FM9999PR|<12>; 12|FMS9999|+12; -0.001|0.00PR| 0.00 ",
    // currency symbols
    "5|SB$99| +$5; 5|99U|  5$",
    // B
    "0|B9999|     ; 0.004|FMB0.00|; 0|B9.9EEEE|        ",
    // FM
    "123.45|FM999.009|123.45; 0|FM.99|.0; 100|FM9.9EEEE|1.E+02",
    // V
    "12.345|9V99|####; 1.234|9V09| 123; 0.05|99V0|   1; 0.7|V9| 7; 1|V9|##; 1234.5|9,999V9| 1,2345",
    // EEEE
    "-0.000123|9.99eeee|-1.23E-04; 9.96|9.9EEEE| 1.0E+01; 99.99999|999EEEE|   1E+02",
    "12|9.99999999999999999999999999999999999999999EEEE| 1.20000000000000000000000000000000000000000E+01; -9.5E-127|S9EEEE|-1E-126",
    "12|$9.9EEEEMI|$1.2E+01 ",
    // Roman numerals
    "3888|RN|MMMDCCCLXXXVIII; 0.4|RN|###############; 1E40|RN|###############; -1|RN|###############; 3999.4|fmRn|MMMCMXCIX",
    // hexadecimal digits
    "0|XX|  0; 256|XX|###; 15.5|XX| 10; -0.4|FMXX|0; 1E40|FMXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXX|1D6329F1C35CA4BFABB9F5610000000000",
    "99999999999999999999999999999999999999|0XXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXXX| 004B3B4CA85A86C47A098A223FFFFFFFFF",
    // TM
    "0.00|tm9|0; -0.00007|TMe|-7E-05; 0|TME|0E+00; 1E63|TM|1000000000000000000000000000000000000000000000000000000000000000",
    "1E-63|TM|.000000000000000000000000000000000000000000000000000000000000001; 1E-64|TM|1E-64",
    // NLS parameters
    "1.5|999.9|   1.5|nls_numeric_characters=',.'; 15|C99| EUR15|  NLS_ISO_CURRENCY =EUR  NLS_CURRENCY=x ; 15|L99| 15|NLS_CURRENCY=''",
    "15|$99| $15|NLS_CURRENCY=x; 15|99| 15|  ",
};

std::vector<std::string> split(const std::string& list, char separator) {
    std::istringstream rest(list);
    std::vector<std::string> parts;
    for (std::string part; std::getline(rest, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

TEST(NumberFormat, Cases) {
    bifun_environment environment;
    for (const char* const line : cases) {
        for (const std::string& the : split(line, ';')) {
            std::vector<std::string> fields = split(the, '|');
            fields.resize(4);
            const std::string number = fields[0].substr(fields[0].find_first_not_of(' '));
            EXPECT_EQ(formatted(nullptr, number, fields[1], fields[3]), fields[2]) << the;
            EXPECT_EQ(formatted(&environment, number, fields[1], fields[3]), fields[2]) << the;
        }
    }
}

TEST(NumberFormat, BadFormats) {
    for (const char* const format :
         {"FM",    "FM.",   ".",       "S",      "$",    ",9",      "9.9.9", "9.9,9",  "D9D", "9,9D9", "9.9G9", "9S9",  "S9S",  "S9MI",
          "S9PR",  "9MIPR", "9PRMI",   "MI9",    "PR9",  "9$",      "$L9",   "$9L",    "L9C", "BB9",   "9B",    "9V",   "9V.9", "9.9V9",
          "9V9,9", "9V9V9", "9,9EEEE", ".9EEEE", "9EEE", "9V9EEEE", "EEEE",  "9EEEEE", "9X",  "X9",    "X0",    "XX.X", "SX",   "XMI",
          "RN9",   "9RN",   "R",       "TM99",   "TM9E", "STM",     "9TM",   "9 9",    " 9",  "9Q",    "9FM",   "LS9",  "$BS9", "9.9MIS"}) {
        EXPECT_EQ(formatted(nullptr, "1", format), "-6130") << format;
    }
    EXPECT_EQ(formatted(nullptr, "1", ""), "-6130");
    EXPECT_EQ(formatted(nullptr, "1", std::string("9\0", 2)), "-6130");
    EXPECT_EQ(formatted(nullptr, "1", std::string(76, '9')), "-6130");
}

TEST(NumberFormat, BadNlsTexts) {
    for (const char* const nls : {"NLS_CURRENCY", "NLS_CURRENCY=", "NLS_CURRENCY='x", "NLS_CURRENCY=x'y", "NLS_CURRENCY='x'y",
                                  "NLS_CURRENCY=x NLS_CURRENCY=x", "NLS_SORT=x", "NLS_CURRENCY='\t'", "=x", "NLS_NUMERIC_CHARACTERS='.'",
                                  "NLS_NUMERIC_CHARACTERS='..'", "NLS_NUMERIC_CHARACTERS='.-'", "NLS_NUMERIC_CHARACTERS='.1'",
                                  "NLS_NUMERIC_CHARACTERS='.,,'", "NLS_NUMERIC_CHARACTERS='\xC2\xA0'"}) {
        EXPECT_EQ(formatted(nullptr, "1", "9", nls), "-6131") << nls;
    }
    EXPECT_EQ(formatted(nullptr, "1", "L9", "NLS_CURRENCY='" + std::string(114, 'x') + "'"), "-6131");
}

TEST(NumberFormat, LongestTexts) {
    const std::string symbol(113, 'x');
    const std::string nls = std::string("NLS_CURRENCY='").append(symbol).append("'");
    const std::string nines(38, '9');
    EXPECT_EQ(formatted(nullptr, nines + "E37", std::string(75, '9')), " "s + nines + std::string(37, '0'));
    EXPECT_EQ(formatted(nullptr, nines + "E38", std::string(75, '9')), std::string(76, '#'));
    EXPECT_EQ(formatted(nullptr, nines + "E-127", "."s + std::string(74, '9')), " ."s + std::string(74, '0'));
    EXPECT_EQ(formatted(nullptr, "-1", "L."s + std::string(71, '9') + "PR", nls), std::string(187, '#'));
    EXPECT_EQ(formatted(nullptr, "-0.1", "L."s + std::string(71, '9') + "PR", nls), "<"s + symbol + ".1" + std::string(70, '0') + ">");
    EXPECT_EQ(formatted(nullptr, "-9", std::string(70, '9') + "EEEEL", nls), std::string(69, ' ') + "-9E+00" + symbol);
    EXPECT_EQ(formatted(nullptr, "1", "B"s + std::string(72, '0') + "PR"), " "s + std::string(71, '0') + "1 ");
    EXPECT_EQ(formatted(nullptr, nines + "E89", std::string(75, 'X')), std::string(76, '#'));
}

// A session's next format takes the place of the last one only where it differs, in whichever byte, and is good.
TEST(NumberFormat, SessionKeepsTheLastFormat) {
    bifun_environment environment;
    for (const char* const the :
         {"9,999.99| 1,234.50", "9,999.90| 1,234.50", "FM,|-6130", "9,999.90| 1,234.50", "9G999D99| 1.234,50|NLS_NUMERIC_CHARACTERS=',.'",
          "9G999D99| 1 234,50|NLS_NUMERIC_CHARACTERS=', '", "9G999D99| 1,234.50", "9G999D9| 1,234.5", "0G999D9| 1,234.5",
          "000999D99| 001234.50", "0009990| 0001235", "0009990|-6131|NLS=", "0009991|-6130"}) {
        std::vector<std::string> fields = split(the, '|');
        fields.resize(3);
        EXPECT_EQ(formatted(&environment, "1234.5", fields[0], fields[2]), fields[1]) << the;
    }
    EXPECT_EQ(formatted(&environment, "1", "999"), "   1");
    environment.number_formats.kept[environment.number_formats.last].parsed.width = 2; // stays, for the same text is not parsed again
    EXPECT_EQ(formatted(&environment, "1000", "999"), "##");
}

// Numbers of all lengths under formats of all lengths, also with zeros behind their last digit, which take wider arithmetic.
TEST(NumberFormat, WritesTheDigitsThatFit) {
    std::mt19937_64 random(7);
    bifun_environment environment;
    for (int i = 0; i < 40000; ++i) {
        const std::size_t whole = 1 + random() % 24;
        const std::size_t fraction = random() % 2 * (random() % 16);
        const std::size_t near = whole + fraction + random() % 3;
        const std::size_t count = random() % 2 == 0 ? 1 + random() % 38 : std::clamp<std::size_t>(near, 2, 39) - 1;
        std::string digits(count, random() % 3 == 0 ? '0' : '9');
        digits[0] = digits[0] == '0' ? '1' : '9';
        std::generate(digits.begin() + 1, digits.begin() + static_cast<std::ptrdiff_t>(random() % 2 == 0 ? count : 1),
                      [&] { return static_cast<char>('0' + random() % 10); });
        const std::size_t zeros = random() % 2 * (random() % (39 - count));
        std::string number(random() % 2, '-');
        std::string format(whole, '9');
        std::string expected(1 + whole + (fraction == 0 ? 0 : fraction + 1), '#');
        if (count <= whole + fraction) {
            std::string text(fraction + 1 - std::min(fraction + 1, count), '0');
            text.append(digits).insert(text.size() - fraction, fraction == 0 ? 0 : 1, '.');
            text.insert(0, number);
            expected = std::string(expected.size() - text.size(), ' ').append(text);
        }
        number.append(digits).append(zeros, '0').append("E-").append(std::to_string(fraction + zeros));
        format.back() = '0';
        format.append(fraction == 0 ? 0 : 1, '.').append(fraction, '0');
        ASSERT_EQ(formatted(&environment, number, format), expected) << number << ' ' << format;
    }
}

// Rows of the tables in the reference page: | `number` | `format` | `'result'` |, with the NLS text in a fourth column.
TEST(NumberFormat, ReferencePage) {
    std::ifstream page(NUMBER_FORMATS_PAGE);
    int examples = 0;
    for (std::string line; std::getline(page, line);) {
        const std::vector<std::string> cells = quoted_cells(line);
        if (line.starts_with("| `") && cells.size() >= 3 && is_text(cells[2])) {
            const std::string nls = cells.size() > 3 ? cells[3] : "";
            EXPECT_EQ(formatted(nullptr, cells[0], cells[1], nls), text_in(cells[2])) << line;
            ++examples;
        }
    }
    EXPECT_GT(examples, 60);
}

TEST(DoubleText, Cases) {
    // The texts read back as their values.
    for (const char* const text :
         {"0", "-0", "0.1", "-1234.5", "0.00001", "9.999999999999999E-06", "999999999999999.9", "-1E+15", "1.5E+20", "5E-324",
          "-1.7976931348623157E+308", "-0.000012345678901234568", "NaN", "Infinity", "-Infinity"}) {
        const double value = std::strtod(text, nullptr);
        char buffer[32];
        std::uint32_t length = 0;
        ASSERT_EQ(zq_dou2char(value, buffer, sizeof buffer, &length), 0);
        EXPECT_STREQ(buffer, text);
        EXPECT_EQ(length, strlen(text));
        EXPECT_EQ(zq_dou2char(value, buffer, length + 1, &length), 0);
        EXPECT_EQ(zq_dou2char(value, buffer, length, &length), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    }
}

// The same by the standard library's shortest notation.
std::string standard_text(double value) {
    if (std::isnan(value) || std::isinf(value)) {
        return std::isnan(value) ? "NaN" : value < 0 ? "-Infinity" : "Infinity";
    }
    const double magnitude = std::fabs(value);
    const bool plain = magnitude == 0 || (magnitude >= 1e-5 && magnitude < 1e15);
    char buffer[32];
    char* const end =
        std::to_chars(std::begin(buffer), std::end(buffer), value, plain ? std::chars_format::fixed : std::chars_format::scientific).ptr;
    std::replace(std::begin(buffer), end, 'e', 'E');
    return {buffer, end};
}

void expect_standard_text(double value) {
    char buffer[64];
    std::uint32_t length = 0;
    ASSERT_EQ(zq_dou2char(value, buffer, sizeof buffer, &length), 0);
    ASSERT_EQ(std::string(buffer, length), standard_text(value)) << std::bit_cast<std::uint64_t>(value);
    double again = 0;
    ASSERT_EQ(zq_char2dou(reinterpret_cast<const std::uint8_t*>(buffer), length, &again), BIFUN_OK) << buffer;
    ASSERT_TRUE(std::isnan(value) ? std::isnan(again) : std::bit_cast<std::uint64_t>(again) == std::bit_cast<std::uint64_t>(value))
        << buffer;
}

TEST(DoubleText, IsTheStandardShortestText) {
    std::mt19937_64 random(11);
    const auto expect_with_neighbours = [](double value) {
        for (const double near : {std::nextafter(value, 0.0), value, std::nextafter(value, HUGE_VAL)}) {
            expect_standard_text(near);
            expect_standard_text(-near);
        }
    };
    for (int exponent = -1074; exponent < 1024; ++exponent) {
        expect_with_neighbours(std::ldexp(1.0, exponent));
    }
    for (int exponent = -323; exponent <= 308; ++exponent) {
        for (int digit = 1; digit < 10; ++digit) {
            std::ostringstream text;
            text << digit << 'e' << exponent;
            expect_with_neighbours(std::strtod(text.str().c_str(), nullptr));
        }
    }
    for (int i = 0; i < 50'000; ++i) {
        expect_standard_text(std::bit_cast<double>(random()));
        // Of plain notation, with few digits and with many.
        const auto digits = static_cast<double>(random() >> random() % 64);
        expect_standard_text(digits / std::pow(10.0, static_cast<double>(random() % 22)));
        expect_standard_text(std::ldexp(digits, -static_cast<int>(random() % 70)));
        expect_standard_text(std::trunc(digits));
    }
}

TEST(NumberCheck, Digits) {
    const auto read = [](const std::string& text, double& result) {
        const exact_block bytes(text);
        return utl_digit_from_char(bytes.data(), bytes.length, &result);
    };
    double result = -1;
    for (const std::string& text :
         {std::string("0"), std::string("123.4"), std::string("5."), std::string(".5"), std::string("00012"),
          std::string("9007199254740993"), std::string(308, '9'), std::string("0.").append(400, '0').append("1")}) {
        EXPECT_EQ(read(text, result), 0) << text;
        EXPECT_EQ(result, std::strtod(text.c_str(), nullptr)) << text;
    }
    result = -1;
    for (const std::string& text : {std::string(), std::string("."), std::string("1.2.3"), std::string("-1"), std::string("1E5"),
                                    std::string("inf"), std::string(" 1"), std::string(400, '9')}) {
        EXPECT_EQ(read(text, result), BIFUN_ARGUMENT_OUT_OF_DOMAIN) << text;
        EXPECT_EQ(result, -1) << text;
    }
}

} // namespace
