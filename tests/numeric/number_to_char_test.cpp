// TO_CHAR of numbers. The formats themselves are the engine's.

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/contract/text_case.h"

namespace {

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
        EXPECT_EQ(contract::evaluate({symbol, {column}, {}}), std::string("[1]").append(column));
    }
}

// Formats are of 1 to 75 bytes and NLS texts of 1 to 128; the format is looked at first, and no number is needed to fail.
TEST(NumberToChar, HasTheseValues) {
    contract::expect_results({
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
