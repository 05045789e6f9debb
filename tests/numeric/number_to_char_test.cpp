// TO_CHAR of numbers. The formats themselves are the engine's.

#include <gtest/gtest.h>

#include "tests/contract/text_case.h"

namespace {

TEST(NumberToChar, HasTheseValues) {
    contract::expect_results({
        "bto_char_a_int_to_varchar | -5 0 -2147483648 NULL 2147483647 | [0] -5 0 -2147483648 NULL 2147483647",
        "bto_char_a_int_to_varchar | [7] @1,1,0 12345 6 | [7] 6 6 12345", // nothing of a longer text stays behind
        "bto_char_a_int64_to_varchar | -9223372036854775808 9223372036854775807 | [1] -9223372036854775808 9223372036854775807",
        "bto_char_a_dec_to_varchar | -0.50 1.00 0.000 -99999999999999999999999999999999999999 7 | [1] -0.50 1.00 0.000 "
        "-99999999999999999999999999999999999999 7",
        "bto_char_a_dec_to_varchar | 1E126 -1E-127 | [1] 1&0*126 -0.&0*126&1",
        "bto_char_a_double_to_varchar | 0.1 -2 1e300 -0.0 4.9406564584124654e-324 nan | [1] 0.1 -2 1E+300 -0 5E-324 NaN",
        "bto_char_av_int_to_varchar_with_fmt | 1234 -5 NULL | 9,990.00 | [0]  1,234.00     -5.00 NULL",
        "bto_char_av_int64_to_varchar_with_fmt | -9223372036854775808 | S9999999999999999999 | [1] -9223372036854775808",
        "bto_char_av_double_to_varchar_with_fmt | 0.125 -2.5 NULL=inf | FM990.099 | [0] 0.125 -2.5 NULL",
        "bto_char_av_double_to_varchar_with_fmt | 1 nan | 9 | [0]  1 NULL status -6102",
        "bto_char_av_double_to_varchar_with_fmt | 1e200 | 9 | [0] NULL status -6102", // beyond DECIMAL
        "bto_char_av_int_to_varchar_with_fmt | NULL 1 2 | 9x | [0] NULL NULL ? status -6130",
        "bto_char_av_int_to_varchar_with_fmt | NULL NULL | 9x | [0] NULL NULL", // never read
        "bto_char_avv_dec_to_varchar_with_nls | 1234.5 -0.25 | FM9G990D00 | NLS_NUMERIC_CHARACTERS=',.' | [1] 1.234,50 -0,25",
        "bto_char_avv_int_to_varchar_with_nls | 12 | FML999 | NLS_CURRENCY=x | [1] x12",
        "bto_char_avv_int64_to_varchar_with_nls | 12 | FMC999 | NLS_ISO_CURRENCY=EUR | [1] EUR12",
        "bto_char_avv_double_to_varchar_with_nls | 1.5 | FM9D9 | NLS_NUMERIC_CHARACTERS=',.' | [1] 1,5",
        // Formats of 1 to 75 bytes and NLS texts of 1 to 128; the format is looked at first, and no number is needed to fail.
        "bto_char_av_int_to_varchar_with_fmt | 1 -2 | 9*75 | [1]  *75&1  *74&-2",
        "bto_char_av_int_to_varchar_with_fmt | 1 NULL | 9*76 | [0] NULL NULL",
        "bto_char_av_int64_to_varchar_with_fmt | 1 2 | '' | [0] NULL NULL",
        "bto_char_av_double_to_varchar_with_fmt | inf 2 | '' | [0] NULL NULL",
        "bto_char_avv_int_to_varchar_with_nls | 1 2 | FML9 | NLS_CURRENCY=x&y*114 | [1] x&y*114&1 x&y*114&2",
        "bto_char_avv_int_to_varchar_with_nls | 1 2 | FML9 | NLS_CURRENCY=x&y*115 | [0] NULL NULL status -4037",
        "bto_char_avv_dec_to_varchar_with_nls | NULL 2 | 9 | '' | [0] NULL NULL status -4037",
        "bto_char_avv_int64_to_varchar_with_nls | 1 | 9*76 | '' | [0] NULL",
        "bto_char_avv_double_to_varchar_with_nls | inf | '' | x*129 | [0] NULL",
    });
}

} // namespace
