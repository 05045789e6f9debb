// SPDX-License-Identifier: Apache-2.0
// What is true of every entry point, whatever it computes. Each property is written once, over the catalogue.

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "embedded/memory/allocation.h"
#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "tests/contract/generated_arguments.h"
#include "tests/contract/said_statements.h"
#include "tests/contract/text_case.h"

namespace contract {
namespace {

using bifun::argument_kind;
using bifun::entry_point;
using bifun::entry_points;
using bifun::null_rule;
using bifun::value_type;
using zqengine::column_storage;

bool is_not_null(const generated_constant& constant) {
    std::uint32_t not_null;
    std::memcpy(&not_null, constant.record, sizeof not_null);
    return not_null != 0;
}

// ---- selection vectors ------------------------------------------------------------------------------------------------

// Sets of columns, as bits: all there are of one or two, of more none, each, and all of them.
std::vector<std::uint32_t> sets_of_columns(std::size_t count) {
    const std::uint32_t everyone = (1U << count) - 1;
    std::vector<std::uint32_t> sets{0};
    for (std::size_t c = 0; c < count; ++c) {
        sets.push_back(1U << c);
    }
    if (count > 1) {
        sets.push_back(everyone);
    }
    return sets;
}

// Blocks of rows end within the batch. Columns that promise to have no NULLs stand beside some that have.
TEST_F(Contract, ASelectionVectorIsTheColumnOfTheRowsItNames) {
    constexpr std::uint32_t data_rows = 33000;
    constexpr std::uint32_t row_count = 2501;
    std::array<std::vector<std::uint16_t>, 4> selections;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        selections[0].push_back(static_cast<std::uint16_t>(k));                 // identity
        selections[1].push_back(static_cast<std::uint16_t>(data_rows - 1 - k)); // reversed, from beyond the largest signed number
        selections[2].push_back(static_cast<std::uint16_t>(k * 7 % 50));        // repeated
        selections[3].push_back(static_cast<std::uint16_t>(k * 13));            // sparse
    }
    for (const entry_point& entry : entry_points) {
        std::vector<std::size_t> columns;
        for (std::size_t i = 0; i < entry.argument_count; ++i) {
            if (entry.argument_list[i].kind == argument_kind::column) {
                columns.push_back(i);
            }
        }
        const std::vector<std::uint32_t> sets = sets_of_columns(columns.size());
        for (const std::uint32_t with_nulls : sets) {
            std::vector<call_argument> whole = arguments_of(entry, data_rows, 0);
            for (std::size_t c = 0; c < columns.size(); ++c) {
                whole[columns[c]].column = &column_for(entry, columns[c], data_rows, (with_nulls >> c & 1) != 0 ? some_nulls : 0);
            }
            for (const auto& selection : selections) {
                for (const std::uint32_t selected : sets) {
                    std::vector<zqengine::column_pointer> gathered;
                    std::vector<call_argument> through_selection = whole;
                    std::vector<call_argument> dense = whole;
                    for (std::size_t c = 0; c < columns.size(); ++c) {
                        if ((selected >> c & 1) != 0) {
                            through_selection[columns[c]].selection = selection;
                            gathered.push_back(gather(*whole[columns[c]].column, selection));
                            dense[columns[c]].column = gathered.back().get();
                        }
                    }
                    EXPECT_TRUE(same_outcome(call(entry, through_selection, row_count), call(entry, dense, row_count)))
                        << entry.symbol << ", selection " << &selection - selections.data() << " on " << selected << ", NULLs in "
                        << with_nulls;
                }
            }
        }
    }
}

// ---- constants --------------------------------------------------------------------------------------------------------

// Whether `other` is the same built-in of the same types, with columns where `entry` has some of its constants; with many arguments, where
// it has one of them.
bool has_columns_for_constants(const entry_point& entry, const entry_point& other) {
    unsigned differences = 0;
    bool matches = entry.builtin == other.builtin && entry.argument_count == other.argument_count && entry.result == other.result;
    for (std::size_t i = 0; matches && i < entry.argument_count; ++i) {
        matches = entry.argument_list[i].type == other.argument_list[i].type &&
                  (entry.argument_list[i].kind == other.argument_list[i].kind || other.argument_list[i].kind == argument_kind::column);
        differences += entry.argument_list[i].kind != other.argument_list[i].kind ? 1 : 0;
    }
    return matches && differences != 0 && (differences == 1 || entry.argument_count <= 3);
}

// Every boundary value of an argument's domain, and a NULL.
zqengine::column_pointer boundaries_and_null(const entry_point& entry, std::size_t position) {
    const value_type type = entry.argument_list[position].type;
    const auto count = static_cast<std::uint32_t>(value_count(entry, position));
    zqengine::column_pointer column = sound_column(entry, position, count + 1, 0, 0);
    column->data.null_flags[count] = 0;
    std::memset(zqengine::values_of<std::uint8_t>(*column) + count * bifun::value_width(type), 0xFF, bifun::value_width(type));
    return column;
}

TEST_F(Contract, AConstantIsTheColumnThatRepeatsIt) {
    constexpr std::uint32_t row_count = 100;
    // Its constant may be empty and then decides alone: its rows are not NULL where the other form's are.
    constexpr std::string_view decides_by_constant = "bltrim_va_str";
    std::size_t pairs = 0;
    for (const entry_point& entry : entry_points) {
        for (const entry_point& other : entry_points) {
            if (!has_columns_for_constants(entry, other)) {
                continue;
            }
            ++pairs;
            std::vector<zqengine::column_pointer> pools(entry.argument_count);
            std::uint32_t choices = 1;
            for (std::size_t i = 0; i < entry.argument_count; ++i) {
                if (entry.argument_list[i].kind == argument_kind::constant) {
                    pools[i] = boundaries_and_null(entry, i);
                    choices *= pools[i]->capacity;
                }
            }
            constexpr std::uint32_t most_choices = 500;
            for (std::uint32_t choice = 0; choice < choices; choice += choices / most_choices + 1) {
                std::vector<generated_constant> constants(entry.argument_count);
                std::vector<zqengine::column_pointer> repeated(entry.argument_count);
                std::vector<call_argument> with_constants =
                    arguments_of(entry, row_count, choice % 2 == 0 && entry.symbol != decides_by_constant ? some_nulls : 0);
                std::vector<call_argument> with_columns = with_constants;
                std::uint32_t rest = choice; // names a pool row for each constant
                for (std::size_t i = 0; i < entry.argument_count; ++i) {
                    if (pools[i] == nullptr) {
                        continue;
                    }
                    const std::uint32_t row = rest % pools[i]->capacity;
                    rest /= pools[i]->capacity;
                    constants[i] = constant_of_row(*pools[i], row);
                    with_constants[i].constant = with_columns[i].constant = &constants[i];
                    if (other.argument_list[i].kind == argument_kind::column) {
                        repeated[i] = gather(*pools[i], std::vector(row_count, static_cast<std::uint16_t>(row)));
                        repeated[i]->column.no_nulls = pools[i]->data.null_flags[row];
                        with_columns[i] = {.column = repeated[i].get()};
                    }
                }
                const outcome a = call(entry, with_constants, row_count);
                const outcome b = call(other, with_columns, row_count);
                EXPECT_EQ(a.status, 0) << entry.symbol << ", constants " << choice;
                EXPECT_EQ(b.status, 0) << other.symbol << ", constants " << choice;
                EXPECT_TRUE(same_rows(a, 0, b, 0, row_count)) << entry.symbol << " and " << other.symbol << ", constants " << choice;
            }
        }
    }
    EXPECT_GT(pairs, std::size(entry_points) / 4);
}

// ---- batches ----------------------------------------------------------------------------------------------------------

TEST_F(Contract, ABatchIsTheBatchesItIsCutInto) {
    struct slice {
        std::uint32_t first, count;
    };
    struct whole_batch {
        double null_rate;
        std::uint32_t row_count;
    };
    constexpr whole_batch batches[] = {{0, 6142}, {some_nulls, 66001}};
    constexpr slice slices[] = {{0, 0}, {0, 1},    {0, 7},       {0, 1023},    {0, 1024},     {0, 1025},
                                {7, 1}, {1023, 2}, {1024, 1025}, {2049, 4093}, {6142, 59859}, {66000, 1}};
    for (const entry_point& entry : entry_points) {
        for (const auto [null_rate, row_count] : batches) {
            const std::vector<call_argument> arguments = arguments_of(entry, row_count, null_rate);
            const outcome whole = call(entry, arguments, row_count);
            for (const slice& slice : slices) {
                if (slice.first + slice.count > row_count) {
                    break;
                }
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
    case null_rule::adds_nulls:
        return std::ranges::all_of(arguments, present);
    case null_rule::first_only:
    case null_rule::first_decides:
        return present(arguments[0]);
    case null_rule::replaced:
    case null_rule::both_null:
        return std::ranges::any_of(arguments, present);
    case null_rule::chosen: {
        const std::int32_t condition = zqengine::values_of<std::int32_t>(*arguments[0].column)[row];
        return present(arguments[condition == 1 ? 1 : 2]);
    }
    default:
        return true;
    }
}

// `turned_null`: rows are NULL that would not be for the arguments' NULLs, or of an IF or CONCAT any are.
std::uint32_t expected_no_nulls(null_rule rule, const std::vector<call_argument>& arguments, std::uint32_t before, bool turned_null) {
    if (rule == null_rule::never_null || rule == null_rule::both_null || rule == null_rule::adds_nulls || turned_null) {
        return rule == null_rule::never_null || (rule == null_rule::both_null && !turned_null) ? 1 : 0;
    }
    if (rule == null_rule::chosen) {
        return arguments[1].column != nullptr ? arguments[1].column->column.no_nulls : before;
    }
    // The flag of one column is passed on as it stands; several are joined to 0 or 1.
    return arguments.size() == 1 || rule == null_rule::first_only
               ? arguments[0].column->column.no_nulls
               : static_cast<std::uint32_t>(std::ranges::all_of(arguments, announces_no_nulls));
}

TEST_F(Contract, NullFlagsFollowTheNullRule) {
    constexpr std::uint32_t most_rows = 200;
    struct variant {
        double null_rate;
        std::uint32_t no_nulls;
    };
    // Constants are not NULL or as the last of these.
    constexpr variant variants[] = {{0, 1}, {1, 0}, {0, 0}, {0, 7}, {0.3, 0}};
    for (const entry_point& entry : entry_points) {
        const null_rule rule = bifun::null_rule_of(entry);
        const bool flag_follows_rows = rule == null_rule::chosen || rule == null_rule::both_null;
        std::size_t combinations = 1;
        for (const bifun::argument& argument : entry.arguments()) {
            combinations *= argument.kind == argument_kind::constant ? 2 : std::size(variants);
        }
        for (std::size_t combination = 0; combination < combinations; ++combination) {
            std::vector<call_argument> arguments = arguments_of(entry, most_rows, 0);
            std::vector<zqengine::column_pointer> columns(arguments.size());
            std::vector<generated_constant> constants(arguments.size());
            std::size_t rest = combination;
            for (std::size_t i = 0; i < arguments.size(); ++i) {
                const std::size_t choices = arguments[i].constant != nullptr ? 2 : std::size(variants);
                const variant& variant = variants[rest % choices];
                rest /= choices;
                if (arguments[i].constant == nullptr) {
                    columns[i] = sound_column(entry, i, most_rows, variant.null_rate, i);
                    columns[i]->column.no_nulls = variant.no_nulls;
                    arguments[i] = {.column = columns[i].get()};
                } else if (variant.null_rate == 1) {
                    // The record of a NULL is garbage, unless it is to be read.
                    const zqengine::column_pointer column = sound_column(entry, i, 1, 0, 0);
                    column->data.null_flags[0] = rule == null_rule::first_only ? 1 : 0;
                    constants[i] = constant_of_row(*column, 0);
                    std::memset(constants[i].record, 0, sizeof(std::uint32_t));
                    arguments[i].constant = &constants[i];
                }
            }
            for (const std::uint32_t row_count : {0U, 1U, most_rows}) {
                for (const std::uint32_t before : {0U, 1U}) {
                    const outcome outcome = call(entry, arguments, row_count, {.no_nulls_before = before});
                    std::uint32_t turned_null = 0;
                    std::uint32_t wrong = 0;
                    std::uint32_t present = 0;
                    for (std::uint32_t row = 0; row < row_count; ++row) {
                        const bool expected = expected_flag(rule, arguments, row);
                        const bool may_turn = rule == null_rule::adds_nulls && outcome.flag(row) == 0;
                        turned_null += flag_follows_rows ? !expected : expected && may_turn;
                        wrong += outcome.flag(row) == static_cast<std::uint8_t>(expected) || may_turn ? 0 : 1;
                        present += expected ? 1 : 0;
                    }
                    EXPECT_EQ(outcome.status, 0) << entry.symbol;
                    EXPECT_EQ(wrong, 0U) << entry.symbol << ", combination " << combination;
                    // Without rows IF returns at once and leaves the flag alone.
                    const bool returns_at_once = rule == null_rule::chosen && row_count == 0;
                    EXPECT_EQ(outcome.no_nulls(), returns_at_once ? before : expected_no_nulls(rule, arguments, before, turned_null > 0))
                        << entry.symbol << ", combination " << combination;
                    EXPECT_TRUE(turned_null < present || present <= 1 || flag_follows_rows) << entry.symbol << " is always NULL";
                }
            }
        }
    }
}

// ---- instruction sets -------------------------------------------------------------------------------------------------

// The settings are stored anew: the next call chooses.
TEST_F(Contract, ResultsDoNotDependOnTheInstructionSet) {
    constexpr const char* variable = "BIFUN_INSTRUCTION_SET";
    const std::vector<const char*> sets = {BIFUN_INSTRUCTION_SETS};
    if (sets.size() == 1) {
        GTEST_SKIP() << "compiled for " << sets.front() << " alone";
    }
    constexpr std::uint32_t row_count = 1500;
    const char* const usual = std::getenv(variable);
    const std::string wanted = usual == nullptr ? "" : usual;
    for (const entry_point& entry : entry_points) {
        for (const double null_rate : {0.0, some_nulls}) {
            const std::vector<call_argument> arguments = arguments_of(entry, row_count, null_rate);
            const auto call_on = [&](const char* set) {
                setenv(variable, set, 1);
                set_up(usual_settings);
                return call(entry, arguments, row_count);
            };
            const outcome least = call_on(sets.front());
            for (std::size_t i = 1; i < sets.size(); ++i) {
                EXPECT_TRUE(same_outcome(call_on(sets[i]), least)) << entry.symbol << " on " << sets[i];
            }
        }
    }
    wanted.empty() ? unsetenv(variable) : setenv(variable, wanted.c_str(), 1);
    set_up(usual_settings);
}

// ---- failure ----------------------------------------------------------------------------------------------------------

// The arguments of a failing call: columns of sound rows, of the failing row, and of the failing row as a NULL, to be read through
// selection vectors.
struct failing_arguments {
    std::vector<zqengine::column_pointer> columns;
    std::vector<generated_constant> constants;
    std::vector<call_argument> arguments;
    std::vector<std::uint16_t> sound; // rows that do not fail with these constants
    std::uint16_t failing, null;
};

failing_arguments prepare(const entry_point& entry, const failing_call& failing) {
    constexpr std::uint16_t candidates = 24;
    failing_arguments prepared;
    prepared.failing = candidates;
    prepared.null = candidates + 1;
    prepared.columns.resize(entry.argument_count);
    prepared.constants.resize(entry.argument_count);
    for (std::size_t i = 0; i < entry.argument_count; ++i) {
        const value_type type = entry.argument_list[i].type;
        if (entry.argument_list[i].kind == argument_kind::constant) {
            prepared.constants[i] = constant_of_row(*read_column(type, failing.arguments[i]).column, 0);
            prepared.arguments.push_back({.constant = &prepared.constants[i]});
            continue;
        }
        prepared.columns[i] = sound_column(entry, i, candidates + 2, 0, i);
        read_value(*prepared.columns[i], prepared.failing, failing.arguments[i]);
        read_value(*prepared.columns[i], prepared.null, failing.arguments[i]);
        prepared.columns[i]->data.null_flags[prepared.null] = 0;
        prepared.columns[i]->column.no_nulls = 0;
        prepared.arguments.push_back({.column = prepared.columns[i].get()});
    }
    for (std::uint16_t row = 0; row < candidates; ++row) {
        std::vector<call_argument> one_row = prepared.arguments;
        for (call_argument& argument : one_row) {
            argument.first_row = row;
        }
        if (call(entry, one_row, 1).status == 0) {
            prepared.sound.push_back(row);
        }
    }
    return prepared;
}

bool rows_are_unwritten(const outcome& outcome, std::uint32_t first) {
    bool unchanged = true;
    for (std::uint32_t row = first; row < outcome.row_count; ++row) {
        unchanged &= outcome.flag(row) == unwritten && !outcome.holds_value(row);
    }
    return unchanged;
}

// A batch whose row `failing_row` is the first to fail.
void expect_failure(const entry_point& entry, const failing_call& failing, const std::vector<call_argument>& arguments,
                    std::uint32_t row_count, std::uint32_t failing_row) {
    outcome failed = call(entry, arguments, row_count);
    EXPECT_EQ(failed.status, failing.status);
    if (failing.seen_before_rows < arguments.size() && arguments[failing.seen_before_rows].constant != nullptr) {
        EXPECT_EQ(std::ranges::count(std::span(failed.result->data.null_flags, row_count), 0), row_count);
        std::memset(failed.result->data.null_flags, unwritten, row_count);
        EXPECT_TRUE(rows_are_unwritten(failed, 0));
        return;
    }
    EXPECT_TRUE(same_rows(failed, 0, call(entry, arguments, failing_row), 0, failing_row));
    EXPECT_TRUE(rows_are_unwritten(failed, failing_row + 1));
    if (failing.row == failing_row::zero) {
        EXPECT_EQ(failed.flag(failing_row), 1);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(zqengine::values_of<double>(*failed.result)[failing_row]), 0U);
        return;
    }
    // What lies behind the flag of a NULL is nobody's business.
    EXPECT_TRUE(failing.row == failing_row::null ? failed.flag(failing_row) == 0 : rows_are_unwritten(failed, failing_row));
}

TEST_F(Contract, TheFirstFailingRowEndsTheBatch) {
    for (const failing_call& failing : failing_calls()) {
        std::size_t entries = 0;
        for (const entry_point& entry : entry_points) {
            if (!failing.is_of(entry)) {
                continue;
            }
            ++entries;
            set_up({failing.compatible_mode, usual_settings.charset_code, usual_settings.case_sensitive});
            const failing_arguments prepared = prepare(entry, failing);
            for (const std::uint32_t failing_row : {0U, 1023U, 1024U, 2099U}) {
                const std::uint32_t row_count = failing_row % 2 == 0 ? failing_row + 5 : failing_row + 1;
                for (const bool with_nulls : {false, true}) {
                    SCOPED_TRACE(testing::Message() << entry.symbol << " of " << failing.arguments[0] << ", row " << failing_row);
                    if (!with_nulls && prepared.sound.empty() && failing_row > 0) {
                        continue; // only NULL rows do not fail with this constant
                    }
                    // Rows behind the failing one fail as well.
                    std::vector<std::uint16_t> selection(row_count, prepared.failing);
                    for (std::uint32_t row = 0; row < failing_row; ++row) {
                        const bool is_null = with_nulls && (row % 3 == 0 || prepared.sound.empty());
                        selection[row] = is_null ? prepared.null : prepared.sound[row % prepared.sound.size()];
                    }
                    std::vector<call_argument> selected = prepared.arguments;
                    std::vector<call_argument> dense = prepared.arguments;
                    std::vector<zqengine::column_pointer> gathered(entry.argument_count);
                    for (std::size_t i = 0; i < entry.argument_count; ++i) {
                        if (prepared.columns[i] != nullptr) {
                            prepared.columns[i]->column.no_nulls = with_nulls ? 0 : 1;
                            selected[i].selection = selection;
                            gathered[i] = gather(*prepared.columns[i], selection);
                            dense[i].column = gathered[i].get();
                        }
                    }
                    for (const unsigned statements : {all_statements, 0U}) {
                        const unsaid unsaid(statements);
                        expect_failure(entry, failing, selected, row_count, failing_row);
                        expect_failure(entry, failing, dense, row_count, failing_row);
                    }
                }
            }
        }
        EXPECT_GE(entries, 1U + std::ranges::count(failing.names, ' ')) << failing.names << " of " << failing.arguments[0];
    }
}

// What a domain keeps out must be known to fail, and every name in the catalogue means something.
TEST_F(Contract, EveryDomainHasAFailingCall) {
    const std::vector<failing_call> calls = failing_calls();
    for (const argument_fact& fact : bifun::argument_facts) {
        std::set<std::string_view> named;
        for (const entry_point& entry : entry_points) {
            if (fact.position < entry.argument_count && &bifun::fact_of(entry, fact.position) == &fact) {
                const bool fails = std::ranges::any_of(calls, [&](const failing_call& call) { return call.is_of(entry); });
                EXPECT_TRUE(fails || fact.others_pass || domain_of(entry, fact.position) == nullptr)
                    << entry.symbol << ", argument " << fact.position << ": add a call that fails to tests/contract/domains.h";
                named.insert(bifun::has_word(fact.names, entry.symbol) ? entry.symbol : entry.builtin);
            }
        }
        EXPECT_EQ(named.size(), 1U + std::ranges::count(fact.names, ' ')) << fact.names;
    }
}

TEST_F(Contract, ExhaustedMemoryIsReportedAndNothingIsLost) {
    constexpr std::uint32_t row_count = 60;
    for (const entry_point& entry : entry_points) {
        const std::vector<call_argument> arguments = arguments_of(entry, row_count, some_nulls);
        for (const unsigned statements : {all_statements, 0U}) {
            const unsaid unsaid(statements);
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
}

} // namespace
} // namespace contract
