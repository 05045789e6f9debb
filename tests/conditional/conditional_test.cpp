// NVL(x, y), IF(condition, x, y) and LNNVL(condition).

#include <gtest/gtest.h>

#include "bop/bifun.h"
#include "engine/charset.h"
#include "tests/contract/text_case.h"

namespace {

using contract::expect_results;

void set_mode(std::uint32_t mode) { contract::set_up({mode, ZQ_CHARSET_UTF8, 1}); }

TEST(Nvl, IsInModeZeroUntilTheLibraryIsTold) {
    const auto& settings = *static_cast<const bifun_settings*>(contract::library_symbol("global_bifun_var"));
    EXPECT_TRUE(settings.compatible_mode == 0 && settings.charset_code == 0 && settings.case_sensitive == 0);
    contract::set_up({2, ZQ_CHARSET_EUC_KR, 7});
    EXPECT_TRUE(settings.compatible_mode == 2 && settings.charset_code == ZQ_CHARSET_EUC_KR && settings.case_sensitive == 7);
}

TEST(Nvl, ReplacesNull) {
    set_mode(1);
    expect_results({
        "bnvl_int_aa | -2147483648 NULL NULL=9 4 | 5 6 NULL 8 | [0] -2147483648 6 NULL 4",
        "bnvl_int_av | [1] 1 2 | NULL | [0] 1 2",
        "bnvl_int_av | [0] 1 2 | 7 | [0] 1 2", // a column that promises nothing
        "bnvl_int64_aa | NULL 9223372036854775807 | 4294967297 NULL | [0] 4294967297 9223372036854775807",
        "bnvl_double_aa | NULL 5e-324 NULL -0.0 0 | nan 1 NULL 0 -0.0 | [0] nan 4.9406564584124654e-324 NULL -0 0",
        "bnvl_dec_aa | @1,0 NULL 1.10 | NULL 2.2000 | [0] 1.10 2.2000",
        "bnvl_date_aa | NULL NULL 1582-10-04 | 1582-10-15 NULL NULL | [0] 1582-10-15 NULL 1582-10-04",
        "bnvl_varchar_aa | @0,1,1 x_ NULL | @2,2,0 y NULL z_ | [0] x_ z_ y",
        "bnvl_varchar_av | a*5000__ NULL | b___ | [0] a*5000__ b___",
        // A constant string lies inside its record up to 48 bytes.
        "bnvl_varbinary_av | a NULL NULL=z | i*48 | [0] a i*48 i*48",
        "bnvl_varbinary_av | @1,0 a NULL | p*49 | [0] p*49 a",
        "bnvl_varbinary_av | NULL | NULL | [0] NULL",
    });
}

TEST(Nvl, KeepsEmptyStringsInModesOtherThanTwo) {
    for (const std::uint32_t mode : {0U, 1U, 3U}) {
        set_mode(mode);
        expect_results({
            "bnvl_varchar_av | '' NULL b | x | [0] '' x b",
            "bnvl_varchar_av | [1] '' a | '' | [1] '' a",
            "bnvl_varchar_aa | '' NULL NULL | x '' NULL | [0] '' '' NULL",
            "bnvl_varbinary_av | '' NULL | '' | [0] '' ''",
        });
    }
}

TEST(Nvl, TakesEmptyStringsForNullInModeTwo) {
    set_mode(2);
    expect_results({
        "bnvl_varchar_av | NULL | '' | [0] NULL",
        // Three blanks are a value, on either side.
        "bnvl_varchar_av | NULL '' | ___ | [0] ___ ___",
        "bnvl_varchar_av | ___ _ | x | [1] ___ _",
        // Neither argument has a NULL, and the result has none either, until an empty string stands for one.
        "bnvl_varchar_av | '' b | x | [1] x b",
        "bnvl_varchar_av | a b | '' | [1] a b",
        "bnvl_varchar_av | a '' | '' | [0] a NULL",
        "bnvl_varchar_aa | '' a NULL '' NULL | x y '' '' NULL | [0] x a NULL NULL NULL",
        "bnvl_varchar_aa | @1,1,0 a '' | @0,1,1 '' ___ | [0] NULL ___ a",
        "bnvl_varbinary_av | '' NULL b | x | [0] x x b",
        "bnvl_varbinary_av | NULL b '' | '' | [0] NULL b NULL",
        // Numbers take no notice of the mode.
        "bnvl_int_av | 0 NULL | 0 | [0] 0 0",
    });
}

TEST(If, ChoosesByTheValueOfTheCondition) {
    expect_results({
        // Only 1 is true, and the value decides even where the condition is NULL.
        "bifoperator_int_aaa | 1 0 -1 2147483647 -2147483648 257 2 1 | 10 20 30 40 50 60 70 80 | 1 2 3 4 5 6 7 8 | [1] 10 2 3 4 5 6 7 80",
        "bifoperator_int_avv | NULL=1 NULL=0 NULL=2 | 10 | 5 | [1] 10 5 5",
        "bifoperator_int_aaa | NULL=1 NULL=0 | 10 20 | NULL 4 | [1] 10 4",
        "bifoperator_int64_aaa | 1 0 | 9223372036854775807 1 | 2 -9223372036854775808 | [1] 9223372036854775807 -9223372036854775808",
        "bifoperator_double_aaa | 1 0 1 | nan 1 -0.0 | 1 -inf 0 | [1] nan -inf -0",
        "bifoperator_dec_aaa | 1 0 | 1.0 2.0 | 1.00 2.00 | [1] 1.0 2.00",
        "bifoperator_varchar_aaa | @0,1,1 1 0 | @1,0,0 a b_ | c d_ e | [1] b_ d_ e",
        "bifoperator_varchar_aav | 0 1 0 | a b_ c | p*49__ | [1] p*49__ b_ p*49__",
    });
}

// The copy of x leaves its flag, and only what is chosen clears it.
TEST(If, TakesNullOnlyFromTheArgumentChosen) {
    expect_results({
        "bifoperator_int_aav | 1 0 1 | 1 2 3 | NULL | [0] 1 NULL 3",
        "bifoperator_int_aav | 1 1 1 | 1 2 3 | NULL | [1] 1 2 3",
        "bifoperator_int_aav | 0 0 | NULL NULL | 5 | [0] 5 5",
        "bifoperator_int_aaa | 1 0 | 1 2 | NULL 5 | [1] 1 5",
        "bifoperator_int_avv | 0 0 | NULL | 5 | [1] 5 5",
        "bifoperator_int_avv | 0 0 | 5 | NULL | [0] NULL NULL",
        "bifoperator_varchar_aaa | 1 0 0 | NULL b c | x NULL z | [0] NULL NULL z",
        "bifoperator_varchar_avv | 0 1 | NULL | '' | [0] '' NULL",
    });
    expect_results({"bifoperator_int_avv | 1 0 | 1 | 2 | [0] 1 2", "bifoperator_int_aav | 1 0 | [3] 1 1 | 2 | [3] 1 2"},
                   {.no_nulls_before = 0});
}

TEST(Lnnvl, IsTrueUnlessTheValueOfTheConditionIs) {
    expect_results({"blnnvl_a_bool | 1 0 3 -1 NULL NULL=1 NULL=0 | [1] 0 1 1 1 1 0 1"}, {.no_nulls_before = 0});
}

} // namespace
