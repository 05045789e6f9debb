// ABS, CEIL, FLOOR and MOD of integers.

#include <gtest/gtest.h>

#include "engine/columns.h"
#include "tests/contract/text_case.h"

namespace {

using contract::evaluate;
using contract::text_case;

TEST(Integers, HaveTheseValues) {
    const text_case cases[] = {
        {"babs_a_math_int", {"-9223372036854775807 9223372036854775807 0 -1 1"}, "[1] 9223372036854775807 9223372036854775807 0 1 1"},
        {"babs_a_math_int", {"-2147483648 -4294967296"}, "[1] 2147483648 4294967296"},
        {"bceil_a_math_int", {"-2147483648 2147483647 0 -1"}, "[1] -2147483648 2147483647 0 -1"},
        {"bfloor_a_math_int", {"-2147483648 2147483647 0 -1"}, "[1] -2147483648 2147483647 0 -1"},
        {"bceil_a_math_int64",
         {"-9223372036854775808 9223372036854775807 9007199254740993"},
         "[1] -9223372036854775808 9223372036854775807 9007199254740993"},
        // The remainder has the sign of x; of 0 it is x, of -1 it is 0.
        {"bmod_aa_math_int64", {"7 -7 7 -7 -7 7", "3 3 -3 -3 0 0"}, "[1] 1 -1 1 -1 -7 7"},
        {"bmod_aa_math_int64",
         {"-9223372036854775808 -9223372036854775808 -9223372036854775808", "-1 0 9223372036854775807"},
         "[1] 0 -9223372036854775808 -1"},
        {"bmod_aa_math_int64", {"9223372036854775807 5 0", "-9223372036854775808 -9223372036854775808 7"}, "[1] 9223372036854775807 5 0"},
        {"bmod_av_do_math_int64", {"7 -7 NULL", "-1"}, "[0] 0 0 NULL"},
        {"bmod_av_do_math_int64", {"@2,0,0 7 -8 9", "0"}, "[1] 9 7 7"},
        {"bmod_va_do_math_int64", {"-9223372036854775808", "-1 0 2 10 -10"}, "[1] 0 -9223372036854775808 0 -8 -8"},
    };
    for (const text_case& text_case : cases) {
        EXPECT_EQ(evaluate(text_case), text_case.result) << text_case.symbol;
    }
}

TEST(Integers, PropagateNull) {
    const text_case cases[] = {
        {"babs_a_math_int", {"NULL=-9223372036854775808 -5"}, "[0] NULL 5"},
        {"bceil_a_math_int", {"[7] 1 2"}, "[7] 1 2"},
        {"bceil_a_math_int", {"[9]"}, "[9]"},
        {"bfloor_a_math_int", {"@1,0 NULL 2"}, "[0] 2 NULL"},
        {"bmod_aa_math_int64", {"[7] 7", "[2] 2"}, "[1] 1"},
        {"bmod_aa_math_int64", {"7 NULL NULL", "NULL=0 0 NULL=-1"}, "[0] NULL NULL NULL"},
        {"bmod_va_do_math_int64", {"NULL", "1 2 0"}, "[0] NULL NULL NULL"},
        {"bmod_av_do_math_int64", {"1 2", "NULL"}, "[0] NULL NULL"},
    };
    for (const text_case& text_case : cases) {
        EXPECT_EQ(evaluate(text_case), text_case.result) << text_case.symbol << " of " << text_case.arguments[0];
    }
}

TEST(Abs, FailsForTheSmallestBigint) {
    const text_case cases[] = {
        {"babs_a_math_int", {"-1 -2 -9223372036854775808 -4"}, "[0] 1 2 ? ? status -6102"},
        {"babs_a_math_int", {"-9223372036854775808"}, "[0] ? status -6102"},
        {"babs_a_math_int", {"NULL -1 -9223372036854775808 NULL"}, "[0] NULL 1 ? ? status -6102"},
        {"babs_a_math_int", {"@1,2,0 -9223372036854775808 -5 NULL"}, "[0] 5 NULL ? status -6102"},
        {"babs_a_math_int", {"@1,1 -9223372036854775808 -5"}, "[1] 5 5"}, // a row that is not in the batch
    };
    for (const text_case& text_case : cases) {
        EXPECT_EQ(evaluate(text_case), text_case.result) << text_case.arguments[0];
    }
}

TEST(Ceil, OfOneBigintIsStoredInOneRow) {
    using kernel = std::int32_t (*)(bifun_environment*, bifun_memory_object*, std::int64_t, std::uint32_t, bifun_column*);
    auto* const ceil = reinterpret_cast<kernel>(contract::library_symbol("bceil_a_process_int64"));
    const zqengine::column_pointer column(zqengine::create_column(bifun::value_type::BIGINT, 3));
    EXPECT_EQ(ceil(nullptr, nullptr, -9223372036854775807, 1, &column->column), 0);
    const std::int64_t* const values = zqengine::values_of<std::int64_t>(*column);
    EXPECT_EQ(values[0], 0);
    EXPECT_EQ(values[1], -9223372036854775807);
    EXPECT_EQ(values[2], 0);
    EXPECT_EQ(column->data.null_flags[1], 0); // the caller's
}

} // namespace
