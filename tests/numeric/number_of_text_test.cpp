// SPDX-License-Identifier: Apache-2.0
// TO_NUMBER, TO_DOUBLE and ISNUMERIC, through the library.

#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "engine/charset.h"
#include "tests/contract/text_case.h"

namespace {

using contract::evaluate;
using contract::expect_results;

class NumberOfText : public testing::Test {
  protected:
    void TearDown() override { contract::set_up({0, ZQ_CHARSET_UTF8, 1}); }
};

TEST_F(NumberOfText, IsNullOrAnErrorForOtherText) {
    for (const std::uint32_t mode : {0U, 1U, 3U}) {
        contract::set_up({mode, ZQ_CHARSET_UTF8, 1});
        expect_results({
            "bto_number_a_str | 1.00 ~-.5e1~__ x '' _ 12a NULL | [0] 1.00 -5 NULL NULL NULL NULL NULL",
            "bisnumeric_a_str | 1.00 ~-.5e1~__ x '' _ 12a NULL 1e999 | [0] 1 1 0 0 0 0 NULL 0",
            "bto_double_a_str | 1.00 ~-.5e1~__ x '' _ 12a NULL -inf NaN 3e-324 | [0] 1 -5 NULL NULL NULL NULL NULL -inf nan "
            "4.9406564584124654e-324",
            "bto_number_a_str | 1 1e999 2 | [0] 1 NULL ? status -6102",
        });
    }
    contract::set_up({2, ZQ_CHARSET_UTF8, 1});
    expect_results({
        "bto_number_a_str | 1.00 '' NULL | [0] 1.00 NULL NULL",
        "bto_number_a_str | 1 _ 2 | [0] 1 NULL ? status -6128",
        "bto_double_a_str | 1024e0 '' NULL | [0] 1024 NULL NULL",
        "bto_double_a_str | 1 x 2 | [0] 1 NULL ? status -6128",
        "bisnumeric_a_str | 1 '' _ x | [1] 1 0 0 0",
    });
}

TEST_F(NumberOfText, IsReadUnderAFormat) {
    expect_results({
        "bto_number_av_str | 1,234.50 ~12-_ NULL | 9,999.99MI | [0] 1234.50 -12 NULL",
        "bto_number_av_str | 1 | NULL=9 | [0] NULL",
        "bto_number_avv_str | 1.234,5€ | 9G999D9L | NLS_NUMERIC_CHARACTERS=',.'~NLS_CURRENCY=€ | [1] 1234.5",
        "bto_number_avv_str | 1 | 9 | NULL=x | [0] NULL",
        "bto_double_av_str | 1,234.50 ~12-_ NULL | 9,999.99MI | [0] 1234.5 -12 NULL",
        "bto_double_avv_str | 0,5 | 9D9 | NLS_NUMERIC_CHARACTERS=',.' | [1] 0.5",
        "bisnumeric_av_str | 1,234 1234 12345 NULL '' 1e9 | 9,999 | [0] 1 1 0 NULL 0 0",
        "bisnumeric_avv_str | €1 $1 | L9 | NLS_CURRENCY=€ | [1] 1 0",
        "bisnumeric_av_str | 1E126 1E127 | 9EEEE | [1] 1 0",
    });
}

// Of texts made of pieces of numbers.
TEST_F(NumberOfText, IsNumericSaysWhatToNumberReads) {
    constexpr std::string_view pieces[] = {"1", "23", "0", ".", ",", "-", "+", "E", "e5", "$", "<", ">", "~", "F", "x", "M", "IX"};
    constexpr std::string_view formats[] = {"", "9,999.99", "S99", "B99MI", "$99PR", "9.9EEEE", "99V9", "XXXX", "RN", "TM"};
    std::mt19937 random(5);
    int read = 0;
    for (int i = 0; i < 4000; ++i) {
        std::string text;
        for (std::size_t left = 1 + random() % 5; left > 0; --left) {
            text += pieces[random() % std::size(pieces)];
        }
        const std::string_view format = formats[random() % std::size(formats)];
        const bool has_format = !format.empty();
        const std::vector<std::string_view> arguments =
            has_format ? std::vector<std::string_view>{text, format} : std::vector<std::string_view>{text};
        const std::string number = evaluate({has_format ? "bto_number_av_str" : "bto_number_a_str", arguments, ""});
        const std::string numeric = evaluate({has_format ? "bisnumeric_av_str" : "bisnumeric_a_str", arguments, ""});
        const bool is_read = number.find("NULL") == number.npos;
        EXPECT_EQ(numeric, is_read ? "[1] 1" : "[1] 0") << text << " under " << format << ": " << number;
        read += is_read ? 1 : 0;
    }
    EXPECT_GT(read, 100);
    EXPECT_LT(read, 3800);
}

} // namespace
