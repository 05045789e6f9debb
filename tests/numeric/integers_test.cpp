// ABS, CEIL, FLOOR and MOD of integers.

#include <vector>

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

// Every pair of numbers around powers of two, and multiples of each with their neighbours, against division in 128 bits.
TEST(Mod, IsTheRemainderOfTruncatingDivision) {
    __extension__ using int128 = __int128;
    std::vector<std::int64_t> numbers;
    for (std::uint32_t bit = 0; bit < 64; ++bit) {
        for (const std::uint64_t offset : {0U, 1U, 2U}) {
            numbers.push_back(static_cast<std::int64_t>((std::uint64_t{1} << bit) + offset));
            numbers.push_back(static_cast<std::int64_t>(-(std::uint64_t{1} << bit) - offset));
            numbers.push_back(static_cast<std::int64_t>((0x9E3779B97F4A7C15U >> bit) * (offset + 1)));
        }
    }
    std::vector<std::int64_t> xs;
    std::vector<std::int64_t> ys;
    for (const std::int64_t x : numbers) {
        for (const std::int64_t y : numbers) {
            const std::int64_t multiple = y == 0 || y == -1 ? 0 : x / y * y;
            for (const std::uint64_t offset : {std::uint64_t{0}, std::uint64_t{1}, ~std::uint64_t{0}}) {
                xs.push_back(static_cast<std::int64_t>(static_cast<std::uint64_t>(multiple) + offset));
                ys.push_back(y);
            }
            xs.push_back(x);
            ys.push_back(y);
        }
    }
    const auto row_count = static_cast<std::uint32_t>(xs.size());
    const zqengine::column_pointer x = contract::column_of(bifun::value_type::BIGINT, xs);
    const zqengine::column_pointer y = contract::column_of(bifun::value_type::BIGINT, ys);
    const contract::outcome outcome =
        contract::call(contract::entry_of("bmod_aa_math_int64"), {{.column = x.get()}, {.column = y.get()}}, row_count);
    for (std::uint32_t row = 0; row < row_count; ++row) {
        const int128 expected = ys[row] == 0 ? xs[row] : int128{xs[row]} - int128{ys[row]} * (int128{xs[row]} / ys[row]);
        ASSERT_EQ(zqengine::values_of<std::int64_t>(*outcome.result)[row], static_cast<std::int64_t>(expected))
            << "MOD(" << xs[row] << ", " << ys[row] << ")";
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
    using kernel = std::int32_t (*)(bifun_environment*, bifun_memory_object*, std::int64_t, bifun_column*, std::uint32_t);
    auto* const ceil = reinterpret_cast<kernel>(contract::library_symbol("bceil_a_process_int64"));
    const zqengine::column_pointer column(zqengine::create_column(bifun::value_type::BIGINT, 3));
    EXPECT_EQ(ceil(nullptr, nullptr, -9223372036854775807, &column->column, 1), 0);
    const std::int64_t* const values = zqengine::values_of<std::int64_t>(*column);
    EXPECT_EQ(values[0], 0);
    EXPECT_EQ(values[1], -9223372036854775807);
    EXPECT_EQ(values[2], 0);
    EXPECT_EQ(column->data.null_flags[1], 0); // the caller's
}

} // namespace
