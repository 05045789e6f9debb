// SPDX-License-Identifier: Apache-2.0
// NVL(x, y), IF(condition, x, y) and LNNVL(condition).

#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "bop/bifun.h"
#include "engine/charset.h"
#include "tests/contract/text_case.h"

namespace {

using bifun::value_type;
using contract::expect_results;

constexpr std::uint32_t empty_strings_are_null = 2;

void set_mode(std::uint32_t mode) { contract::set_up({mode, ZQ_CHARSET_UTF8, 1}); }

TEST(Settings, AreZeroUntilTheLibraryIsTold) {
    const auto& settings = *static_cast<const bifun_settings*>(contract::library_symbol("global_bifun_var"));
    EXPECT_TRUE(settings.compatible_mode == 0 && settings.charset_code == 0 && settings.case_sensitive == 0);
    contract::set_up({2, ZQ_CHARSET_EUC_KR, 7});
    EXPECT_TRUE(settings.compatible_mode == 2 && settings.charset_code == ZQ_CHARSET_EUC_KR && settings.case_sensitive == 7);
}

bool is_present(const zqengine::column_storage& column, std::uint32_t row, std::uint32_t mode) {
    const auto* const text = zqengine::values_of<bifun_string>(column) + row;
    const bool may_be_empty = mode == empty_strings_are_null && bifun::is_string(column.type);
    return column.data.null_flags[row] != 0 && !(may_be_empty && text->length == 0 && text->trailing_blanks == 0);
}

// Of columns of every type. Only 1 is true, and the value of a condition decides even where it is NULL. IF takes no notice of the mode.
TEST(Conditional, RowsAreThoseOfTheArgumentChosen) {
    constexpr std::uint32_t row_count = 500;
    std::size_t tested = 0;
    for (const bifun::entry_point& entry : bifun::entry_points) {
        const bool is_nvl = entry.builtin == "NVL";
        const bool has_columns = entry.argument_list[entry.argument_count - 1].kind == bifun::argument_kind::column;
        for (std::uint32_t mode = 0; mode < 4 && has_columns && (is_nvl || entry.builtin == "IF"); ++mode) {
            std::vector<zqengine::column_pointer> columns;
            std::vector<contract::call_argument> arguments;
            for (std::size_t i = 0; i < entry.argument_count; ++i) {
                columns.push_back(contract::generate_column(entry.argument_list[i].type, row_count, 0.3, i + mode));
                arguments.push_back({.column = columns.back().get()});
            }
            contract::outcome expected{0, row_count, zqengine::column_pointer(zqengine::create_column(entry.result, row_count))};
            const std::size_t width = bifun::value_width(entry.result);
            for (std::uint32_t row = 0; row < row_count; ++row) {
                const bool takes_first =
                    is_nvl ? is_present(*columns[0], row, mode) : zqengine::values_of<std::int32_t>(*columns[0])[row] == 1;
                const zqengine::column_storage& chosen = *columns[(is_nvl ? 0 : 1) + (takes_first ? 0 : 1)];
                expected.result->data.null_flags[row] = is_present(chosen, row, is_nvl ? mode : 0) ? 1 : 0;
                std::memcpy(zqengine::values_of<std::uint8_t>(*expected.result) + row * width,
                            zqengine::values_of<std::uint8_t>(chosen) + row * width, width);
            }
            set_mode(mode);
            EXPECT_TRUE(contract::same_rows(contract::call(entry, arguments, row_count), 0, expected, 0, row_count))
                << entry.symbol << mode;
            ++tested;
        }
    }
    EXPECT_GT(tested, 40U);
}

// Neither argument has a NULL, and the result has none either, until an empty string stands for one. Three blanks are a value.
TEST(Nvl, TakesEmptyStringsForNullInModeTwo) {
    set_mode(empty_strings_are_null);
    expect_results({
        "bnvl_varchar_av | NULL '' | ___ | [0] ___ ___",
        "bnvl_varchar_av | '' b ___ | x | [1] x b ___",
        "bnvl_varchar_av | a b | '' | [1] a b",
        "bnvl_varchar_av | a '' NULL | '' | [0] a NULL NULL",
        "bnvl_varbinary_av | '' NULL b | x | [0] x x b",
        "bnvl_varbinary_av | NULL b '' | '' | [0] NULL b NULL",
    });
    set_mode(1);
    expect_results({
        "bnvl_int_av | [0] 1 2 | 7 | [0] 1 2", // a column that promises nothing
        "bnvl_varchar_av | [1] '' a | '' | [1] '' a",
        // A constant string lies inside its record up to 48 bytes.
        "bnvl_varbinary_av | a NULL NULL=z | i*48 | [0] a i*48 i*48",
        "bnvl_varbinary_av | @1,0 a NULL | p*49 | [0] p*49 a",
        "bnvl_varbinary_av | '' NULL | '' | [0] '' ''",
    });
}

// The copy of x leaves its flag, and only what is chosen clears it.
TEST(If, TakesNullOnlyFromTheArgumentChosen) {
    expect_results({
        "bifoperator_int_aav | 1 0 1 | 1 2 3 | NULL | [0] 1 NULL 3",
        "bifoperator_int_aav | 1 1 1 | 1 2 3 | NULL | [1] 1 2 3",
        "bifoperator_int_aav | 0 0 | NULL NULL | 5 | [0] 5 5",
        "bifoperator_int_aaa | NULL=1 0 | 1 2 | NULL 5 | [1] 1 5",
        "bifoperator_int_avv | 0 NULL=2 | NULL | 5 | [1] 5 5",
        "bifoperator_int_avv | 0 0 | 5 | NULL | [0] NULL NULL",
        "bifoperator_varchar_avv | 0 1 | NULL | '' | [0] '' NULL",
    });
    expect_results({"bifoperator_int_avv | 1 0 | 1 | 2 | [0] 1 2", "bifoperator_int_aav | 1 0 | [3] 1 1 | 2 | [3] 1 2"},
                   {.no_nulls_before = 0});
}

TEST(Lnnvl, IsTrueUnlessTheValueOfTheConditionIs) {
    expect_results({"blnnvl_a_bool | 1 0 3 -1 NULL NULL=1 NULL=0 | [1] 0 1 1 1 1 0 1"}, {.no_nulls_before = 0});
}

} // namespace
