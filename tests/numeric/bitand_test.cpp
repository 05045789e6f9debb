// BITAND of two decimals.

#include <random>
#include <string>

#include <gtest/gtest.h>

#include "tests/contract/text_case.h"

namespace {

__extension__ using int128 = __int128;

TEST(Bitand, HasTheseValues) {
    contract::expect_results({
        "bbit_and_for_dec_av | 12 12.9 -12.9 0.9 15 NULL | 10.9 | [0] 8 8 0 0 10 NULL",
        "bbit_and_for_dec_av | -1 18446744073709551616 18446744073709551615 -18446744073709551616 | 18446744073709551616 | [1] "
        "18446744073709551616 18446744073709551616 0 18446744073709551616",
        "bbit_and_for_dec_av | 18446744073709551615 18446744073709551616 -1 -18446744073709551616 | 18446744073709551615 | [1] "
        "18446744073709551615 0 18446744073709551615 0",
        "bbit_and_for_dec_av | -1 5 99999999999999999999999999999999999999 -0.5 | 5 | [1] 5 5 5 0",
        "bbit_and_for_dec_av | -1 -99999999999999999999999999999999999999 99999999999999999999999999999999999999 | "
        "99999999999999999999999999999999999999 | [1] 99999999999999999999999999999999999999 1 99999999999999999999999999999999999999",
        "bbit_and_for_dec_av | 7 -7 99999999999999999999999999999999999999.0 -0.9 | 0.5 | [1] 0 0 0 0",
        // 39 digits are too many, even if the other operand is 0; behind a NULL nobody looks at them.
        "bbit_and_for_dec_av | 1 NULL=1E38 100000000000000000000000000000000000000 2 | 0 | [0] 0 NULL NULL ? status -6102",
        "bbit_and_for_dec_va | NULL | 12 1E38 | [0] NULL NULL",
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
        const std::string x_text = text_of(x);
        const std::string y_text = text_of(y);
        for (const char* const symbol : {"bbit_and_for_dec_av", "bbit_and_for_dec_va"}) {
            ASSERT_EQ(contract::evaluate({symbol, {x_text, y_text}, ""}), "[1] " + text_of(x & y)) << x_text << " and " << y_text;
        }
    }
}

} // namespace
