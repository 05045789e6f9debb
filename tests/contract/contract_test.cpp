// What is true of every entry point, whatever it computes. Each property is written once, over the catalogue.

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "embedded/memory/allocation.h"
#include "engine/columns.h"
#include "engine/decimal.h"
#include "tests/contract/called_export.h"
#include "tests/contract/exceptions.h"

namespace contract {
namespace {

using bifun::argument_kind;
using bifun::entry_point;
using bifun::entry_points;
using bifun::value_type;
using zqengine::column_storage;

constexpr double some_nulls = 0.2;

std::int64_t& bigint_at(const column_storage& column, std::uint32_t row) { return static_cast<std::int64_t*>(column.data.values)[row]; }

// A generated column in which no row makes the built-in fail.
zqengine::column_pointer sound_column(const entry_point& entry, value_type type, std::uint32_t row_count, double null_rate,
                                      std::uint64_t seed) {
    zqengine::column_pointer column = generate_column(type, row_count, null_rate, seed);
    const failing_value* const failing = failing_value_of(entry.builtin);
    for (std::uint32_t row = 0; failing != nullptr && row < row_count; ++row) {
        if (column->data.null_flags[row] != 0 && bigint_at(*column, row) == failing->value) {
            ++bigint_at(*column, row);
        }
    }
    return column;
}

// The same, made once for all tests that ask for it.
const column_storage& column_for(const entry_point& entry, value_type type, std::uint32_t row_count, double null_rate, std::uint64_t seed) {
    static std::map<std::tuple<const failing_value*, value_type, std::uint32_t, double, std::uint64_t>, zqengine::column_pointer> columns;
    auto& column = columns[{failing_value_of(entry.builtin), type, row_count, null_rate, seed}];
    if (column == nullptr) {
        column = sound_column(entry, type, row_count, null_rate, seed);
    }
    return *column;
}

const generated_constant& constant_for(value_type type, std::size_t position) {
    static std::map<std::pair<value_type, std::size_t>, generated_constant> constants;
    const auto [found, is_new] = constants.try_emplace({type, position});
    if (is_new) {
        const auto row = static_cast<std::uint32_t>(boundary_count(type) + position);
        found->second = constant_of_row(*generate_column(type, row + 1, 0, 0), row);
    }
    return found->second;
}

// Dense columns, each of values of its own, and constants that are not NULL.
std::vector<call_argument> arguments_of(const entry_point& entry, std::uint32_t row_count, double null_rate) {
    std::vector<call_argument> arguments;
    for (const bifun::argument& argument : entry.arguments()) {
        const std::size_t position = arguments.size();
        if (argument.kind == argument_kind::column) {
            arguments.push_back({.column = &column_for(entry, argument.type, row_count, null_rate, position)});
        } else {
            arguments.push_back({.constant = &constant_for(argument.type, position)});
        }
    }
    return arguments;
}

bool is_not_null(const generated_constant& constant) {
    std::uint32_t not_null;
    std::memcpy(&not_null, constant.record, sizeof not_null);
    return not_null != 0;
}

// ---- selection vectors ------------------------------------------------------------------------------------------------

// The rows that a selection names, one after another. Strings stay where they are.
zqengine::column_pointer gather(const column_storage& column, const std::vector<std::uint16_t>& selection) {
    zqengine::column_pointer dense(zqengine::create_column(column.type, static_cast<std::uint32_t>(selection.size())));
    dense->column.no_nulls = column.column.no_nulls;
    const std::size_t width = bifun::value_width(column.type);
    for (std::size_t k = 0; k < selection.size(); ++k) {
        dense->data.null_flags[k] = column.data.null_flags[selection[k]];
        std::memcpy(zqengine::values_of<std::uint8_t>(*dense) + k * width, zqengine::values_of<std::uint8_t>(column) + selection[k] * width,
                    width);
    }
    return dense;
}

TEST(Contract, ASelectionVectorIsTheColumnOfTheRowsItNames) {
    constexpr std::uint32_t data_rows = 33000;
    constexpr std::uint32_t row_count = 1501;
    std::array<std::vector<std::uint16_t>, 4> selections;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        selections[0].push_back(static_cast<std::uint16_t>(k));                 // identity
        selections[1].push_back(static_cast<std::uint16_t>(data_rows - 1 - k)); // reversed, from beyond the largest signed number
        selections[2].push_back(static_cast<std::uint16_t>(k * 7 % 50));        // repeated
        selections[3].push_back(static_cast<std::uint16_t>(k * 21));            // sparse
    }
    for (const entry_point& entry : entry_points) {
        for (const double null_rate : {0.0, some_nulls}) {
            const std::vector<call_argument> whole = arguments_of(entry, data_rows, null_rate);
            for (const auto& selection : selections) {
                std::vector<zqengine::column_pointer> gathered;
                for (const call_argument& argument : whole) {
                    gathered.push_back(argument.column != nullptr ? gather(*argument.column, selection) : nullptr);
                }
                // Each argument alone, then all of them together.
                for (std::size_t selected = 0; selected <= whole.size(); ++selected) {
                    std::vector<call_argument> through_selection = whole;
                    std::vector<call_argument> dense = whole;
                    for (std::size_t i = 0; i < whole.size(); ++i) {
                        if (whole[i].column != nullptr && (selected == i || selected == whole.size())) {
                            through_selection[i].selection = selection;
                            dense[i].column = gathered[i].get();
                        }
                    }
                    EXPECT_TRUE(same_outcome(call(entry, through_selection, row_count), call(entry, dense, row_count)))
                        << entry.symbol << ", selection " << &selection - selections.data() << " on " << selected;
                }
            }
        }
    }
}

// ---- constants --------------------------------------------------------------------------------------------------------

// Whether `other` is the same built-in of the same types, with columns where `entry` has some of its constants.
bool has_columns_for_constants(const entry_point& entry, const entry_point& other) {
    bool differs = false;
    bool matches = entry.builtin == other.builtin && entry.argument_count == other.argument_count && entry.result == other.result;
    for (std::size_t i = 0; matches && i < entry.argument_count; ++i) {
        matches = entry.argument_list[i].type == other.argument_list[i].type &&
                  (entry.argument_list[i].kind == other.argument_list[i].kind || other.argument_list[i].kind == argument_kind::column);
        differs |= entry.argument_list[i].kind != other.argument_list[i].kind;
    }
    return matches && differs;
}

// Every boundary value of a type, and a NULL.
zqengine::column_pointer boundaries_and_null(value_type type) {
    const auto count = static_cast<std::uint32_t>(boundary_count(type));
    zqengine::column_pointer column = generate_column(type, count + 1, 0, 0);
    column->data.null_flags[count] = 0;
    std::memset(zqengine::values_of<std::uint8_t>(*column) + count * bifun::value_width(type), 0xFF, bifun::value_width(type));
    return column;
}

TEST(Contract, AConstantIsTheColumnThatRepeatsIt) {
    constexpr std::uint32_t row_count = 100;
    for (const entry_point& entry : entry_points) {
        bool has_other = std::ranges::count(entry.arguments(), argument_kind::constant, &bifun::argument::kind) == 0;
        for (const entry_point& other : entry_points) {
            if (!has_columns_for_constants(entry, other)) {
                continue;
            }
            has_other = true;
            const zqengine::column_pointer pool = boundaries_and_null(entry.arguments().back().type);
            for (std::uint32_t number = 0; number < pool->capacity * pool->capacity; ++number) {
                std::vector<generated_constant> constants(entry.argument_count);
                std::vector<zqengine::column_pointer> repeated(entry.argument_count);
                std::vector<call_argument> with_constants = arguments_of(entry, row_count, number % 2 == 0 ? some_nulls : 0);
                std::vector<call_argument> with_columns = with_constants;
                std::uint32_t rest = number; // names a pool row for each constant
                for (std::size_t i = 0; i < entry.argument_count; ++i) {
                    if (entry.argument_list[i].kind == argument_kind::column) {
                        continue;
                    }
                    const std::uint32_t row = rest % pool->capacity;
                    rest /= pool->capacity;
                    constants[i] = constant_of_row(*pool, row);
                    with_constants[i].constant = with_columns[i].constant = &constants[i];
                    if (other.argument_list[i].kind == argument_kind::column) {
                        repeated[i] = gather(*pool, std::vector(row_count, static_cast<std::uint16_t>(row)));
                        repeated[i]->column.no_nulls = pool->data.null_flags[row];
                        with_columns[i] = {.column = repeated[i].get()};
                    }
                }
                if (rest > 0) {
                    break; // fewer than two constants: all rows of the pool have been taken
                }
                const outcome a = call(entry, with_constants, row_count);
                const outcome b = call(other, with_columns, row_count);
                EXPECT_EQ(a.status, b.status) << entry.symbol << ", constants " << number;
                EXPECT_TRUE(same_rows(a, 0, b, 0, row_count)) << entry.symbol << " and " << other.symbol << ", constants " << number;
            }
        }
        // NVL of VARBINARY exists with a constant only.
        EXPECT_TRUE(has_other || entry.result == value_type::VARBINARY) << entry.symbol;
    }
}

// ---- batches ----------------------------------------------------------------------------------------------------------

TEST(Contract, ABatchIsTheBatchesItIsCutInto) {
    constexpr std::uint32_t row_count = 70001;
    struct slice {
        std::uint32_t first, count;
    };
    constexpr slice slices[] = {{0, 0},     {0, 1}, {0, 7},    {0, 1023},    {0, 1024},    {0, 1025},     {0, 65536},
                                {0, 65537}, {7, 1}, {1023, 2}, {1024, 1025}, {2049, 4093}, {6142, 63859}, {70000, 1}};
    for (const entry_point& entry : entry_points) {
        for (const double null_rate : {0.0, some_nulls}) {
            const std::vector<call_argument> arguments = arguments_of(entry, row_count, null_rate);
            const outcome whole = call(entry, arguments, row_count);
            for (const slice& slice : slices) {
                std::vector<call_argument> part = arguments;
                for (call_argument& argument : part) {
                    argument.first_row = slice.first;
                }
                const outcome cut = call(entry, part, slice.count);
                EXPECT_EQ(cut.status, 0) << entry.symbol;
                EXPECT_TRUE(same_rows(cut, 0, whole, slice.first, slice.count)) << entry.symbol << ", " << slice.count << " rows";
            }
        }
    }
}

// ---- NULL -------------------------------------------------------------------------------------------------------------

bool has_value(const call_argument& argument, std::uint32_t row) {
    return argument.constant != nullptr ? is_not_null(*argument.constant) : argument.column->data.null_flags[row] == 1;
}

bool announces_no_nulls(const call_argument& argument) {
    return argument.constant != nullptr ? is_not_null(*argument.constant) : argument.column->column.no_nulls != 0;
}

bool expected_flag(null_rule rule, const std::vector<call_argument>& arguments, std::uint32_t row) {
    const auto present = [&](const call_argument& argument) { return has_value(argument, row); };
    switch (rule) {
    case null_rule::propagates:
        return std::ranges::all_of(arguments, present);
    case null_rule::replaced:
        return std::ranges::any_of(arguments, present);
    case null_rule::chosen: {
        const std::int32_t condition = zqengine::values_of<std::int32_t>(*arguments[0].column)[row];
        return present(arguments[condition == 1 ? 1 : 2]);
    }
    default:
        return true;
    }
}

std::uint32_t expected_no_nulls(null_rule rule, const std::vector<call_argument>& arguments, std::uint32_t before, bool any_null) {
    if (rule == null_rule::never_null) {
        return 1;
    }
    if (rule == null_rule::chosen) {
        const std::uint32_t begun_with = arguments[1].column != nullptr ? arguments[1].column->column.no_nulls : before;
        return any_null ? 0 : begun_with;
    }
    // The flag of one column is passed on as it stands; several are joined to 0 or 1.
    return arguments.size() == 1 ? arguments[0].column->column.no_nulls
                                 : static_cast<std::uint32_t>(std::ranges::all_of(arguments, announces_no_nulls));
}

TEST(Contract, NullFlagsFollowTheNullRule) {
    constexpr std::uint32_t row_count = 200;
    struct variant {
        double null_rate;
        std::uint32_t no_nulls;
    };
    // Constants take the first of these, and the last as NULL.
    constexpr variant variants[] = {{0, 1}, {0, 0}, {0, 7}, {0.3, 0}, {1, 0}};
    for (const entry_point& entry : entry_points) {
        const null_rule rule = null_rule_of(entry.builtin);
        std::size_t combinations = 1;
        for (std::size_t i = 0; i < entry.argument_count; ++i) {
            combinations *= std::size(variants);
        }
        for (std::size_t combination = 0; combination < combinations; ++combination) {
            std::vector<call_argument> arguments = arguments_of(entry, row_count, 0);
            std::vector<zqengine::column_pointer> columns(arguments.size());
            std::vector<generated_constant> constants(arguments.size());
            for (std::size_t i = 0, rest = combination; i < arguments.size(); ++i, rest /= std::size(variants)) {
                const variant& variant = variants[rest % std::size(variants)];
                const value_type type = entry.argument_list[i].type;
                if (arguments[i].constant == nullptr) {
                    columns[i] = sound_column(entry, type, row_count, variant.null_rate, i);
                    columns[i]->column.no_nulls = variant.no_nulls;
                    arguments[i] = {.column = columns[i].get()};
                } else if (variant.null_rate == 1) {
                    constants[i] = constant_of_row(*generate_column(type, 1, 1, 0), 0);
                    arguments[i].constant = &constants[i];
                }
            }
            for (const std::uint32_t before : {0U, 1U}) {
                const outcome outcome = call(entry, arguments, row_count, {.no_nulls_before = before});
                bool any_null = false;
                std::uint32_t wrong = 0;
                for (std::uint32_t row = 0; row < row_count; ++row) {
                    const bool expected = expected_flag(rule, arguments, row);
                    any_null |= !expected;
                    wrong += outcome.flag(row) == static_cast<std::uint8_t>(expected) ? 0 : 1;
                }
                EXPECT_EQ(outcome.status, 0) << entry.symbol;
                EXPECT_EQ(wrong, 0U) << entry.symbol << ", combination " << combination;
                EXPECT_EQ(outcome.no_nulls(), expected_no_nulls(rule, arguments, before, any_null))
                    << entry.symbol << ", combination " << combination;
            }
        }
    }
}

TEST(Contract, ABatchWithoutRowsSetsOnlyTheNoNullFlag) {
    for (const entry_point& entry : entry_points) {
        std::vector<call_argument> arguments = arguments_of(entry, 7, some_nulls);
        for (const std::uint32_t before : {0U, 1U}) {
            const outcome outcome = call(entry, arguments, 0, {.no_nulls_before = before});
            const null_rule rule = null_rule_of(entry.builtin);
            EXPECT_EQ(outcome.status, 0) << entry.symbol;
            // IF returns at once and leaves the flag alone.
            EXPECT_EQ(outcome.no_nulls(), rule == null_rule::chosen ? before : expected_no_nulls(rule, arguments, before, false))
                << entry.symbol;
        }
    }
}

// ---- what an engine may say of itself ---------------------------------------------------------------------------------

TEST(Contract, ResultsDoNotDependOnWhatTheEngineSaysOfItself) {
    constexpr std::uint32_t row_count = 5003;
    for (const entry_point& entry : entry_points) {
        for (const double null_rate : {0.0, some_nulls}) {
            const std::vector<call_argument> arguments = arguments_of(entry, row_count, null_rate);
            const outcome with_both = call(entry, arguments, row_count);
            for (const std::int32_t plain_stores : {0, 1}) {
                for (const std::int32_t layout : {XDEC_LAYOUT_PRIVATE, XDEC_LAYOUT_PACKED_128}) {
                    bdta3_setters_are_plain_stores = plain_stores;
                    xdec_layout = layout;
                    const outcome otherwise = call(entry, arguments, row_count);
                    bdta3_setters_are_plain_stores = 1;
                    xdec_layout = XDEC_LAYOUT_PACKED_128;
                    EXPECT_TRUE(same_outcome(otherwise, with_both))
                        << entry.symbol << ", plain stores " << plain_stores << ", layout " << layout;
                }
            }
        }
    }
}

// ---- failure ----------------------------------------------------------------------------------------------------------

TEST(Contract, TheFirstFailingRowEndsTheBatch) {
    constexpr std::uint32_t row_count = 3000;
    std::size_t failing_entries = 0;
    for (const entry_point& entry : entry_points) {
        const failing_value* const failing = failing_value_of(entry.builtin);
        if (failing == nullptr) {
            continue;
        }
        ++failing_entries;
        for (const double null_rate : {0.0, some_nulls}) {
            for (const std::uint32_t failing_row : {0U, 1U, 7U, 1022U, 1023U, 1024U, 1025U, 2047U, 2048U, row_count - 1}) {
                const zqengine::column_pointer column = sound_column(entry, value_type::BIGINT, row_count, null_rate, 99);
                std::vector<call_argument> arguments = arguments_of(entry, row_count, null_rate);
                arguments[0] = {.column = column.get()};
                column->data.null_flags[failing_row] = 1;
                bigint_at(*column, failing_row) = failing->value + 1;
                const outcome sound = call(entry, arguments, row_count);
                ASSERT_EQ(sound.status, 0) << entry.symbol;

                // Another failing value behind it, and one before it that is NULL.
                bigint_at(*column, failing_row) = failing->value;
                bigint_at(*column, row_count - 1) = failing->value;
                if (failing_row > 0 && null_rate > 0) {
                    column->data.null_flags[failing_row - 1] = 0;
                    sound.result->data.null_flags[failing_row - 1] = 0;
                    bigint_at(*column, failing_row - 1) = failing->value;
                }
                for (const std::int32_t plain_stores : {0, 1}) {
                    bdta3_setters_are_plain_stores = plain_stores;
                    const outcome failed = call(entry, arguments, row_count);
                    bdta3_setters_are_plain_stores = 1;
                    EXPECT_EQ(failed.status, failing->status) << entry.symbol << ", row " << failing_row;
                    EXPECT_TRUE(same_rows(failed, 0, sound, 0, failing_row)) << entry.symbol << ", row " << failing_row;
                    std::uint32_t written = 0;
                    for (std::uint32_t row = failing_row; row < row_count; ++row) {
                        std::uint64_t value;
                        std::memcpy(&value, zqengine::values_of<std::int64_t>(*failed.result) + row, sizeof value);
                        written += failed.flag(row) == unwritten && value == 0xA5A5A5A5A5A5A5A5 ? 0 : 1;
                    }
                    EXPECT_EQ(written, 0U) << entry.symbol << ", from row " << failing_row << " on";
                }
            }
        }
    }
    EXPECT_EQ(failing_entries, std::size(failing_values));
}

TEST(Contract, ExhaustedMemoryIsReportedAndNothingIsLost) {
    constexpr std::uint32_t row_count = 60;
    for (const entry_point& entry : entry_points) {
        const std::vector<call_argument> arguments = arguments_of(entry, row_count, some_nulls);
        const std::int64_t bytes_before = zqengine::live_bytes();
        bool out_of_memory = true;
        for (std::int64_t step = 1; out_of_memory; ++step) {
            const outcome outcome = call(entry, arguments, row_count, {.failing_step = step});
            out_of_memory = outcome.ran_out_of_memory;
            // An engine is told by the status, or keeps in mind that an assignment has failed.
            const bool reported = outcome.status == BIFUN_OUT_OF_MEMORY || outcome.result->status == BIFUN_OUT_OF_MEMORY;
            EXPECT_EQ(reported, out_of_memory) << entry.symbol << ", step " << step;
            EXPECT_TRUE(outcome.status == 0 || out_of_memory) << entry.symbol << ", step " << step;
        }
        EXPECT_EQ(zqengine::live_bytes(), bytes_before) << entry.symbol;
    }
}

} // namespace
} // namespace contract
