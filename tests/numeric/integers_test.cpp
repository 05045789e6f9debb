// ABS, CEIL, FLOOR, TRUNC and MOD of integers.

#include <vector>

#include <gtest/gtest.h>

#include "tests/contract/text_case.h"

namespace {

TEST(Integers, HaveTheseValues) {
    contract::expect_results({
        "babs_a_math_int | -9223372036854775807 9223372036854775807 0 -1 1 -4294967296 | [1] 9223372036854775807 9223372036854775807 0 1 1 "
        "4294967296",
        "bceil_a_math_int | -2147483648 2147483647 0 -1 | [1] -2147483648 2147483647 0 -1",
        "bfloor_a_math_int | -2147483648 2147483647 0 -1 | [1] -2147483648 2147483647 0 -1",
        "btrunc_int_def_a_math_int | -2147483648 7 NULL | [0] -2147483648 7 NULL",
        "bceil_a_math_int64 | -9223372036854775808 9223372036854775807 9007199254740993 | [1] -9223372036854775808 9223372036854775807 "
        "9007199254740993",
        // The remainder has the sign of x; of 0 it is x, of -1 it is 0.
        "bmod_aa_math_int64 | 7 -7 7 -7 -7 7 | 3 3 -3 -3 0 0 | [1] 1 -1 1 -1 -7 7",
        "bmod_aa_math_int64 | -9223372036854775808 -9223372036854775808 -9223372036854775808 | -1 0 9223372036854775807 | [1] 0 "
        "-9223372036854775808 -1",
        // A batch ends at the first failing row, and rows that it does not name are not read.
        "babs_a_math_int | @1,2,0 -9223372036854775808 -5 NULL | [0] 5 NULL ? status -6102",
        "babs_a_math_int | @1,1 -9223372036854775808 -5 | [1] 5 5",
    });
}

// Every pair of numbers around powers of two, and multiples of each with their neighbours, against division in 128 bits.
TEST(Mod, IsTheRemainderOfTruncatingDivision) {
    __extension__ using int128 = __int128;
    std::vector<std::int64_t> numbers{0};
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
            const auto multiple = static_cast<std::uint64_t>(y == 0 || y == -1 ? 0 : x / y * y);
            for (const std::uint64_t candidate : {static_cast<std::uint64_t>(x), multiple, multiple + 1, multiple - 1}) {
                xs.push_back(static_cast<std::int64_t>(candidate));
                ys.push_back(y);
            }
        }
    }
    const contract::outcome outcome = contract::call_with("bmod_aa_math_int64", xs, ys);
    for (std::size_t row = 0; row < xs.size(); ++row) {
        const int128 expected = ys[row] == 0 ? xs[row] : int128{xs[row]} - int128{ys[row]} * (int128{xs[row]} / ys[row]);
        ASSERT_EQ(zqengine::values_of<std::int64_t>(*outcome.result)[row], static_cast<std::int64_t>(expected))
            << "MOD(" << xs[row] << ", " << ys[row] << ")";
    }
}

TEST(Ceil, OfOneBigintIsStoredInOneRow) {
    auto* const ceil = reinterpret_cast<decltype(&bceil_a_process_int64)>(contract::library_symbol("bceil_a_process_int64"));
    const zqengine::column_pointer column(zqengine::create_column(bifun::value_type::BIGINT, 3));
    EXPECT_EQ(ceil(nullptr, nullptr, -9223372036854775807, &column->column, 1), 0);
    const std::int64_t* const values = zqengine::values_of<std::int64_t>(*column);
    EXPECT_EQ(std::vector(values, values + 3), std::vector<std::int64_t>({0, -9223372036854775807, 0}));
    EXPECT_EQ(column->data.null_flags[1], 0); // the caller's
}

} // namespace
