#include <gtest/gtest.h>

#include <cstring>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "bop/frame/status.h"
#include "embedded/decimal/decimal_parts.h"
#include "engine/decimal.h"

using namespace zqengine;

namespace {

// Decimals at an odd address, in a block of their own, so that reading or writing past them is caught.
struct odd_decimal {
    std::unique_ptr<std::uint8_t[]> block{new std::uint8_t[1 + sizeof(xdec)]};
    xdec* value = reinterpret_cast<xdec*>(block.get() + 1);
    odd_decimal() { memset(value, 0x5A, sizeof *value); }
};

std::int32_t read(const std::string& text, const odd_decimal& result) {
    const std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[text.size()]);
    std::copy(text.begin(), text.end(), bytes.get());
    const std::int32_t status = xdec_from_char(bytes.get(), static_cast<std::uint32_t>(text.size()), result.value);
    EXPECT_TRUE(status == 0 || result.value->bytes[0] == 0x5A) << text.substr(0, 60);
    return status;
}

std::string written(const odd_decimal& value) {
    char buffer[256];
    std::uint32_t length = 0;
    EXPECT_EQ(xdec_to_char_with_zero(value.value, buffer, sizeof buffer, 0, 0, &length), 0);
    EXPECT_EQ(length, strlen(buffer));
    return buffer;
}

std::string bytes_of(const odd_decimal& value) {
    std::string hex;
    for (const std::uint8_t byte : value.value->bytes) {
        hex += {"0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
    }
    return hex;
}

double double_of(std::uint64_t bits) {
    double number;
    memcpy(&number, &bits, sizeof number);
    return number;
}

// For decimal_oracle.py: one operation a line, one answer a line.
//     T <text>    status [bytes text double-bits]     the text without its blanks
//     D <bits>    the same, from a double
//     I <number>  the same, from an integer
//     C <a> <b>   0, order of a and b, order of b and a
int answer_operations() {
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream words(line.substr(2));
        std::string first;
        std::string second;
        words >> first >> second;
        const odd_decimal a;
        const odd_decimal b;
        if (line[0] == 'C') {
            const std::int32_t status = read(first, a) | read(second, b);
            std::cout << status << ' ' << xdec_cmp(a.value, b.value) << ' ' << xdec_cmp(b.value, a.value) << '\n';
            continue;
        }
        const std::int32_t status = line[0] == 'T'   ? read(first, a)
                                    : line[0] == 'D' ? xdec_from_double(a.value, double_of(std::stoull(first, nullptr, 16)))
                                                     : xdec_from_int64(a.value, std::stoll(first), 255);
        std::cout << status << (status != 0 && a.value->bytes[0] != 0x5A ? " touched" : "");
        if (status == 0) {
            const double number = xdec_to_double(a.value);
            std::uint64_t bits;
            memcpy(&bits, &number, sizeof bits);
            std::cout << ' ' << bytes_of(a) << ' ' << written(a) << ' ' << std::hex << bits << std::dec;
        }
        std::cout << '\n';
    }
    return 0;
}

} // namespace

TEST(Decimal, RejectsWhatIsNoNumber) {
    std::istringstream texts("| |+|-|.|.5|5.|-.5|1..2|1.2.3|--1|+-1|- 1|1 2|1,2|1E|1E+|1E 5|1E5.0|E5|1.E5|0x10|NaN|inf|1/|1:|12345678x|"
                             "1234567812345678:|\t1|1\n|1\xCF|1234567\xFF|12345678\xE2\x82\xAC|1\xBA"
                             "23456789");
    const odd_decimal value;
    for (std::string text; std::getline(texts, text, '|');) {
        EXPECT_EQ(read(text, value), BIFUN_UNUSABLE_TEXT) << text;
    }
    EXPECT_EQ(read(std::string("1\0", 2), value), BIFUN_UNUSABLE_TEXT);
    EXPECT_EQ(xdec_from_char(nullptr, 0, value.value), BIFUN_UNUSABLE_TEXT);
}

TEST(Decimal, ReadsLongTexts) {
    const std::string blanks(999, ' ');
    const std::string zeros(1'000'000, '0');
    const std::string smallest_zero = std::string("0.").append(127, '0');
    const auto reads = [](const std::string& text, const std::string& expected) {
        const odd_decimal value;
        const std::int32_t status = read(text, value);
        EXPECT_EQ(status == 0 ? written(value) : std::to_string(status), expected) << text.substr(0, 30);
    };
    reads(blanks + "-0.50" + blanks, "-0.50");
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
        const odd_decimal value;
        ASSERT_EQ(read(text, value), 0);
        const std::string whole = written(value);
        std::uint32_t length = 77;
        const auto size = static_cast<std::uint32_t>(whole.size());
        const std::unique_ptr<char[]> room(new char[size + 1]);
        ASSERT_EQ(xdec_to_char_with_zero(value.value, room.get(), size, 0, 0, &length), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
        EXPECT_EQ(length, 77U);
        ASSERT_EQ(xdec_to_char_with_zero(value.value, room.get(), size + 1, 0, 0, &length), 0);
        EXPECT_EQ(room.get(), whole);
    }
}

TEST(Decimal, FillsAndCopies) {
    const odd_decimal a;
    const odd_decimal b;
    xdec_fill_one(a.value);
    EXPECT_EQ(bytes_of(a), "c10100000000000001" + std::string(42, '0'));
    xdec_fill_zero(b.value);
    EXPECT_EQ(bytes_of(b), "80010000" + std::string(52, '0'));
    xdec_copy(b.value, a.value);
    EXPECT_EQ(bytes_of(a), bytes_of(b));
    EXPECT_EQ(xdec_layout, XDEC_LAYOUT_PACKED_128);
}

// What only arithmetic hands to make_decimal: coefficients of 39 digits and halves behind any coefficient.
TEST(Decimal, RoundsPartsOnce) {
    const auto makes = [](uint128 coefficient, std::int64_t scale, bool half, const std::string& expected) {
        const odd_decimal value;
        ASSERT_EQ(make_decimal(value.value, {.coefficient = coefficient, .scale = scale, .negative = false, .half = half}), 0);
        EXPECT_EQ(written(value), expected) << scale;
    };
    const uint128 largest = powers_of_ten[38] - 1;
    makes(~uint128{0}, 1, false, "34028236692093846346337460743176821146");
    makes(~uint128{0}, 0, true, "340282366920938463463374607431768211460");
    makes(~uint128{0}, 40, true, "0.034028236692093846346337460743176821146");
    makes(~uint128{0}, 166, true, std::string("0.").append(127, '0'));
    makes(9, 0, true, "10");
    makes(99, 1, true, "10.0");
    makes(0, 2, true, "0.01");
    makes(largest, 0, true, "1" + std::string(38, '0'));
    makes(largest, 38, true, std::string("1.").append(37, '0'));
    makes(powers_of_ten[38], 1, false, "1" + std::string(37, '0'));
}

int main(int argument_count, char** arguments) {
    if (argument_count == 2 && strcmp(arguments[1], "--answer") == 0) {
        return answer_operations();
    }
    testing::InitGoogleTest(&argument_count, arguments);
    return RUN_ALL_TESTS();
}
