// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

#include "bop/frame/status.h"
#include "embedded/decimal/decimal_parts.h"
#include "embedded/decimal/division.h"
#include "engine/decimal.h"
#include "tests/contract/exact_block.h"

using namespace zqengine;

namespace {

xdec untouched() {
    xdec value;
    memset(&value, 0x5A, sizeof value);
    return value;
}

bool is_untouched(const xdec& value) {
    const xdec other = untouched();
    return memcmp(&value, &other, sizeof value) == 0;
}

std::int32_t read(const std::string& text, xdec& result) {
    const exact_block bytes(text);
    result = untouched();
    const std::int32_t status = xdec_from_char(bytes.data(), bytes.length, &result);
    EXPECT_TRUE(status == 0 || is_untouched(result)) << text.substr(0, 60);
    return status;
}

std::string written(const xdec& value) {
    char buffer[256];
    std::uint32_t length = 0;
    EXPECT_EQ(xdec_to_char_with_zero(&value, buffer, sizeof buffer, 0, 0, &length), 0);
    EXPECT_EQ(length, strlen(buffer));
    return buffer;
}

std::string bytes_of(const xdec& value) {
    std::string hex;
    for (const std::uint8_t byte : value.bytes) {
        hex += {"0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
    }
    return hex;
}

struct answer {
    std::int32_t status = 0;
    xdec result = untouched();
    std::string further = {}; // what else the operation gives, or what is wrong
};

// One operation of two operands, or of one and a number; its result goes beside its operands, and in their places.
template <class Operation> answer in_all_places(const xdec& a, const xdec& b, Operation operation) {
    answer beside;
    beside.status = operation(&a, &b, &beside.result);
    for (const std::size_t place : {0U, 1U}) {
        xdec operands[] = {a, b};
        const xdec expected = beside.status == 0 ? beside.result : operands[place];
        const std::int32_t status = operation(&operands[0], &operands[1], &operands[place]);
        if (status != beside.status || bytes_of(operands[place]) != bytes_of(expected)) {
            beside.further = " other in place";
        }
    }
    return beside;
}

using bifun::decimal_layout::round_long;
using bifun::decimal_layout::truncate_long;

answer calculate(char operation, const std::string& first, const std::string& second) {
    xdec a;
    xdec b;
    EXPECT_EQ(read(first, a) | read(second, b), 0) << first << ' ' << second;
    const auto digits = static_cast<std::int32_t>(std::strtol(second.c_str(), nullptr, 10));
    const auto of_one = [&](auto function) {
        return in_all_places(a, a, [&](const xdec* value, const xdec*, xdec* result) { return function(value, result); });
    };
    // The operation takes the core for short coefficients first; the one for long ones has to agree with it.
    const auto set_digits = [&](auto function, auto long_core) {
        answer set = of_one([&](const xdec* value, xdec* result) { return function(value, digits, result); });
        xdec result;
        const bool done = long_core(a, digits, &result);
        if (done != (digits >= 0 && a.bytes[2] - digits <= 38) || (done && bytes_of(result) != bytes_of(set.result))) {
            set.further += " other core";
        }
        return set;
    };
    switch (operation) {
    case '+':
        return in_all_places(a, b, xdec_add);
    case '-':
        return in_all_places(a, b, xdec_sub);
    case '*':
        return in_all_places(a, b, xdec_mul);
    case 'Q':
        return in_all_places(a, b, [](const xdec* x, const xdec* y, xdec* result) { return zqengine::divide(*x, *y, *result); });
    case 'N': {
        answer negated = of_one(xdec_neg);
        negated.further += " " + bytes_of(of_one(xdec_abs).result);
        return negated;
    }
    case 'R':
        return set_digits([](const xdec* value, std::int32_t to, xdec* result) { return xdec_round(value, 0, to, result); }, round_long);
    case 'X':
        return set_digits(xdec_trunc_scale_with_pos, truncate_long);
    case 'Z':
        return of_one([](const xdec* value, xdec* result) {
            memmove(result, value, sizeof *result);
            return xdec_trunc_scale(result);
        });
    case 'U':
        return of_one([](const xdec* value, xdec* result) {
            std::uint64_t number = 77;
            const std::int32_t status = xdec_get_ulint64(value, &number);
            EXPECT_EQ(xdec_in_ulint64(value) != 0, status == 0);
            return status == 0 ? xdec_from_ulint64(result, number) : number == 77 ? status : 1;
        });
    default: {
        std::int32_t remainder = 77;
        answer divided =
            of_one([&](const xdec* value, xdec* result) { return xdec_div_get_quotient_int_by_16(value, result, &remainder); });
        divided.further += " " + std::to_string(remainder);
        return divided;
    }
    }
}

// For decimal_oracle.py: one operation a line, one answer a line.
//     T <text>    status [bytes text double-bits]     the text without its blanks
//     D <bits>    the same, from a double
//     I <number>  the same, from an integer
//     C <a> <b>   0, order of a and b, order of b and a
// and those of `calculate`, with the same answer and what is further given.
int answer_operations() {
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line.substr(2));
        std::string first;
        std::string second = "0";
        words >> first >> second;
        answer given;
        if (line[0] == 'C') {
            xdec b;
            const std::int32_t status = read(first, given.result) | read(second, b);
            std::cout << status << ' ' << xdec_cmp(&given.result, &b) << ' ' << xdec_cmp(&b, &given.result) << '\n';
            continue;
        }
        if (line[0] == 'T') {
            given.status = read(first, given.result);
        } else if (line[0] == 'D') {
            given.status = xdec_from_double(&given.result, std::bit_cast<double>(std::stoull(first, nullptr, 16)));
        } else if (line[0] == 'I') {
            given.status = xdec_from_int64(&given.result, std::stoll(first), XDEC_ANY_PRECISION);
        } else {
            given = calculate(line[0], first, second);
        }
        std::cout << given.status;
        if (given.status == 0) {
            const auto bits = std::bit_cast<std::uint64_t>(xdec_to_double(&given.result));
            std::cout << ' ' << bytes_of(given.result) << ' ' << written(given.result) << ' ' << std::hex << bits << std::dec;
        }
        std::cout << (given.status == 0 || is_untouched(given.result) ? "" : " touched") << given.further << '\n';
    }
    return 0;
}

} // namespace

TEST(Decimal, RejectsWhatIsNoNumber) {
    std::istringstream texts("| |+|-|.|-.|..5|.E5|1..2|1.2.3|--1|+-1|- 1|1 2|1,2|1E|1E+|1E 5|1E5.0|E5|0x10|NaN|inf|1/|1:|12345678x|"
                             "1234567812345678:|\t1|1\n|1\xCF|1234567\xFF|12345678\xE2\x82\xAC|1\xBA"
                             "23456789");
    xdec value;
    for (std::string text; std::getline(texts, text, '|');) {
        EXPECT_EQ(read(text, value), BIFUN_UNUSABLE_TEXT) << text;
    }
    EXPECT_EQ(read(std::string("1\0", 2), value), BIFUN_UNUSABLE_TEXT);
    EXPECT_EQ(xdec_from_char(nullptr, 0, &value), BIFUN_UNUSABLE_TEXT);
}

TEST(Decimal, ReadsLongTexts) {
    const std::string blanks(999, ' ');
    const std::string zeros(1'000'000, '0');
    const std::string smallest_zero = std::string("0.").append(127, '0');
    const auto reads = [](const std::string& text, const std::string& expected) {
        xdec value;
        const std::int32_t status = read(text, value);
        EXPECT_EQ(status == 0 ? written(value) : std::to_string(status), expected) << text.substr(0, 30);
    };
    reads(blanks + "-0.50" + blanks, "-0.50");
    reads(blanks + "-.50" + blanks, "-0.50");
    reads("+5.e1", "50");
    reads(zeros + "7", "7");
    reads("0." + zeros + "7E+1000001", "7");
    reads("7" + zeros + "E-1000000", std::string("7.").append(37, '0'));
    reads("0." + zeros + "7", smallest_zero);
    reads("7" + zeros, "-6102");
    reads("7E99999999999999999999", "-6102");
    reads("7E-99999999999999999999", smallest_zero);
    reads("0E99999999999999999999", "0");
    reads("-9" + zeros + "x", "109");
}

TEST(Decimal, WritesIntoRoomThatJustSuffices) {
    for (const std::string& text : {std::string("0"), std::string("-0.50"), std::string("-12.345"), std::string(38, '9').append(89, '0'),
                                    std::string("-0.").append(127, '1'), "0." + std::string(127, '0')}) {
        xdec value;
        ASSERT_EQ(read(text, value), 0);
        const std::string whole = written(value);
        std::uint32_t length = 77;
        const exact_block room(whole + '~');
        auto* const place = reinterpret_cast<char*>(room.data());
        ASSERT_EQ(xdec_to_char_with_zero(&value, place, room.length - 1, 0, 0, &length), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
        EXPECT_EQ(length, 77U);
        ASSERT_EQ(xdec_to_char_with_zero(&value, place, room.length, 0, 0, &length), 0);
        EXPECT_EQ(place, whole);
    }
}

TEST(Decimal, WritesAnyDigitsUnderAnyScale) {
    for (std::size_t digits = 1; digits <= 38; ++digits) {
        for (std::size_t scale = 0; scale <= 40; ++scale) {
            std::string text;
            for (std::size_t i = 0; i < digits; ++i) {
                text += static_cast<char>('0' + (i * 7 + scale) % 9 + 1);
            }
            text.insert(0, text.size() <= scale ? scale + 1 - text.size() : 0, '0');
            if (scale != 0) {
                text.insert(text.size() - scale, 1, '.');
            }
            for (const std::string& signed_text : {text, '-' + text}) {
                xdec value;
                ASSERT_EQ(read(signed_text, value), 0);
                EXPECT_EQ(written(value), signed_text);
            }
        }
    }
}

TEST(Decimal, FillsAndCopies) {
    xdec a;
    xdec b;
    xdec_fill_one(&a);
    EXPECT_EQ(bytes_of(a), "c10100000000000001" + std::string(42, '0'));
    xdec_fill_zero(&b);
    EXPECT_EQ(bytes_of(b), "80010000" + std::string(52, '0'));
    xdec_copy(&b, &a);
    EXPECT_EQ(bytes_of(a), bytes_of(b));
}

int main(int argument_count, char** arguments) {
    if (argument_count == 2 && strcmp(arguments[1], "--answer") == 0) {
        return answer_operations();
    }
    testing::InitGoogleTest(&argument_count, arguments);
    return RUN_ALL_TESTS();
}
