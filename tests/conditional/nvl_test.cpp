// NVL(x, y): x where it is not NULL, otherwise y.

#include <gtest/gtest.h>

#include "bop/bifun.h"
#include "engine/charset.h"
#include "tests/contract/text_case.h"

namespace {

using contract::evaluate;
using contract::text_case;

using settings_initialiser = std::int32_t (*)(std::uint32_t, std::uint32_t, std::uint32_t);

// Sets the compatibility mode, and the one before it again at the end.
class Nvl : public testing::Test {
  protected:
    Nvl()
        : settings(static_cast<bifun_settings*>(contract::library_symbol("global_bifun_var"))), before(*settings),
          initialise(reinterpret_cast<settings_initialiser>(contract::library_symbol("bifun_dll_var_init"))) {}
    ~Nvl() override { *settings = before; }

    void set_mode(std::uint32_t mode) { ASSERT_EQ(initialise(mode, ZQ_CHARSET_UTF8, 1), 0); }

    bifun_settings* settings;
    bifun_settings before;
    settings_initialiser initialise;
};

void expect_all(std::span<const text_case> cases) {
    for (const text_case& text_case : cases) {
        EXPECT_EQ(evaluate(text_case), text_case.result) << text_case.symbol;
    }
}

TEST_F(Nvl, IsInModeZeroUntilTheLibraryIsTold) {
    EXPECT_EQ(before.compatible_mode, 0U);
    EXPECT_EQ(before.charset_code, 0U);
    EXPECT_EQ(before.case_sensitive, 0U);
    ASSERT_EQ(initialise(2, ZQ_CHARSET_EUC_KR, 7), 0);
    EXPECT_EQ(settings->compatible_mode, 2U);
    EXPECT_EQ(settings->charset_code, ZQ_CHARSET_EUC_KR);
    EXPECT_EQ(settings->case_sensitive, 7U);
}

TEST_F(Nvl, ReplacesNullInFixedWidthColumns) {
    const text_case cases[] = {
        {"bnvl_int_av", {"1 NULL 3", "7"}, "[0] 1 7 3"},
        {"bnvl_int_av", {"1 NULL=9 3", "NULL"}, "[0] 1 NULL 3"},
        {"bnvl_int_av", {"[7] -2147483648 2147483647", "7"}, "[1] -2147483648 2147483647"},
        {"bnvl_int_av", {"[1] 1 2", "NULL"}, "[0] 1 2"},
        {"bnvl_int_av", {"[0] 1 2", "7"}, "[0] 1 2"}, // a column that promises nothing
        {"bnvl_int_aa", {"1 NULL NULL 4", "5 6 NULL 8"}, "[0] 1 6 NULL 4"},
        {"bnvl_int_aa", {"[1] 1 2", "[0] 3 4"}, "[0] 1 2"},
        {"bnvl_int_aa", {"[2] 1 2", "[4] 3 4"}, "[1] 1 2"},
        // Each column is read through its own selection vector.
        {"bnvl_int_aa", {"@5,2,2 1 2 NULL 4 5 6", "10 20 30"}, "[0] 6 20 30"},
        {"bnvl_int_aa", {"NULL NULL 3", "@3,0,1 10 20 30 40"}, "[0] 40 10 3"},
        {"bnvl_int_aa", {"@2,1,0,0 NULL 2 3", "@0,0,3,1 10 NULL 30 40"}, "[0] 3 2 40 NULL"},
        {"bnvl_int64_av", {"9223372036854775807 NULL", "-9223372036854775808"}, "[0] 9223372036854775807 -9223372036854775808"},
        {"bnvl_int64_aa", {"NULL 1", "4294967297 NULL"}, "[0] 4294967297 1"},
        {"bnvl_double_av", {"NULL -0.0 nan", "-inf"}, "[0] -inf -0 nan"},
        {"bnvl_double_av", {"0 NULL", "-0.0"}, "[0] 0 -0"},
        {"bnvl_double_aa", {"NULL 5e-324 NULL", "nan 1 NULL"}, "[0] nan 4.9406564584124654e-324 NULL"},
        {"bnvl_dec_av",
         {"1.00 NULL -99999999999999999999999999999999999999", "0.500"},
         "[0] 1.00 0.500 -99999999999999999999999999999999999999"},
        {"bnvl_dec_aa", {"@1,0 NULL 1.10", "NULL 2.2000"}, "[0] 1.10 2.2000"},
        {"bnvl_date_av", {"2024-02-29T13:45:00 NULL", "9999-12-31T23:59:59"}, "[0] 2024-02-29T13:45:00 9999-12-31T23:59:59"},
        {"bnvl_date_aa", {"NULL NULL 1582-10-04", "1582-10-15 NULL NULL"}, "[0] 1582-10-15T00:00:00 NULL 1582-10-04T00:00:00"},
    };
    expect_all(cases);
}

TEST_F(Nvl, TakesConstantStringsFromInsideTheRecordUpTo48Bytes) {
    set_mode(1);
    const text_case cases[] = {
        {"bnvl_varchar_av", {"a NULL", "i*48"}, "[0] a i*48"},
        {"bnvl_varchar_av", {"a NULL", "p*49"}, "[0] a p*49"},
        {"bnvl_varchar_av", {"a*5000__ NULL", "b___"}, "[0] a*5000__ b___"},
        {"bnvl_varchar_av", {"NULL NULL", "NULL"}, "[0] NULL NULL"},
        {"bnvl_varchar_aa", {"@0,1,1 x_ NULL", "@2,2,0 y NULL z_"}, "[0] x_ z_ y"},
        {"bnvl_varbinary_av", {"a NULL NULL=z", "i*48"}, "[0] a i*48 i*48"},
        {"bnvl_varbinary_av", {"@1,0 a NULL", "p*49"}, "[0] p*49 a"},
        {"bnvl_varbinary_av", {"NULL", "NULL"}, "[0] NULL"},
    };
    expect_all(cases);
}

TEST_F(Nvl, KeepsEmptyStringsInModesOtherThanTwo) {
    for (const std::uint32_t mode : {0U, 1U, 3U}) {
        set_mode(mode);
        const text_case cases[] = {
            {"bnvl_varchar_av", {"'' NULL b", "x"}, "[0] '' x b"}, {"bnvl_varchar_av", {"'' NULL", "''"}, "[0] '' ''"},
            {"bnvl_varchar_av", {"[1] '' a", "''"}, "[1] '' a"},   {"bnvl_varchar_aa", {"'' NULL NULL", "x '' NULL"}, "[0] '' '' NULL"},
            {"bnvl_varbinary_av", {"'' NULL", "''"}, "[0] '' ''"},
        };
        expect_all(cases);
    }
}

TEST_F(Nvl, TakesEmptyStringsForNullInModeTwo) {
    set_mode(2);
    const text_case cases[] = {
        {"bnvl_varchar_av", {"'' NULL b", "x"}, "[0] x x b"},
        {"bnvl_varchar_av", {"NULL", "''"}, "[0] NULL"},
        // Three blanks are a value, on either side.
        {"bnvl_varchar_av", {"NULL ''", "___"}, "[0] ___ ___"},
        {"bnvl_varchar_av", {"___ _", "x"}, "[1] ___ _"},
        // Neither argument has a NULL, and the result has none either, until an empty string stands for one.
        {"bnvl_varchar_av", {"'' b", "x"}, "[1] x b"},
        {"bnvl_varchar_av", {"a b", "''"}, "[1] a b"},
        {"bnvl_varchar_av", {"a ''", "''"}, "[0] a NULL"},
        {"bnvl_varchar_aa", {"'' a NULL '' NULL", "x y '' '' NULL"}, "[0] x a NULL NULL NULL"},
        {"bnvl_varchar_aa", {"'' a", "'' y"}, "[0] NULL a"},
        {"bnvl_varchar_aa", {"@1,1,0 a ''", "@0,1,1 '' ___"}, "[0] NULL ___ a"},
        {"bnvl_varbinary_av", {"'' NULL b", "x"}, "[0] x x b"},
        {"bnvl_varbinary_av", {"NULL b ''", "''"}, "[0] NULL b NULL"},
        // Numbers take no notice of the mode.
        {"bnvl_int_av", {"0 NULL", "0"}, "[0] 0 0"},
    };
    expect_all(cases);
}

} // namespace
