// SPDX-License-Identifier: Apache-2.0
// What an engine says of itself changes no result.

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bop/frame/statements.h"
#include "engine/charset.h"
#include "tests/contract/demanding_engine.h"
#include "tests/contract/generated_arguments.h"
#include "tests/contract/said_statements.h"
#include "tests/contract/text_case.h"

namespace contract {
namespace {

using bifun::argument_kind;
using bifun::entry_point;
using bifun::entry_points;
using bifun::value_type;
using zqengine::column_storage;

TEST_F(Contract, ResultsDoNotDependOnWhatTheEngineSaysOfItself) {
    constexpr std::uint32_t row_count = 1100;
    constexpr bifun_settings settings[] = {usual_settings, {2, ZQ_CHARSET_GB18030, 0}, {1, ZQ_CHARSET_UTF8, 0}, {3, ZQ_CHARSET_EUC_KR, 1}};
    for (const auto statement : engine_statements) {
        ASSERT_NE(zq_engine_statements.*statement, 0);
    }
    for (const entry_point& entry : entry_points) {
        const std::size_t rounds =
            std::ranges::count(entry.arguments(), argument_kind::constant, &bifun::argument::kind) > 0 ? 20 : 2 * std::size(settings);
        for (std::size_t round = 0; round < rounds; ++round) {
            set_up(settings[round % std::size(settings)]);
            const std::vector<call_argument> arguments = arguments_of_round(entry, row_count, round % 8 < 4 ? 0 : some_nulls, round);
            const outcome usual = call(entry, arguments, row_count);
            EXPECT_TRUE(same_outcome(call(entry, arguments, row_count, {.memory_is_released = false}), usual)) << entry.symbol;
            for (const unsigned statements : {0U, results_refer, all_statements}) {
                if (!bifun::is_string(entry.result)) {
                    continue; // results that are values outlive their arguments
                }
                const unsaid unsaid(statements);
                EXPECT_TRUE(same_outcome(call(entry, arguments, row_count, {.arguments_are_short_lived = true}), usual)) << entry.symbol;
            }
            for (unsigned i = 0; i <= std::size(engine_statements); ++i) {
                const unsaid unsaid(i < std::size(engine_statements) ? 1U << i : all_statements);
                EXPECT_TRUE(same_outcome(call(entry, arguments, row_count), usual))
                    << entry.symbol << ", round " << round << " without " << i;
            }
        }
    }
}

// The last character of every text, in the bytes of the text. The column shows what it is given as UTF-8.
zqengine::column_pointer last_characters(const zqengine::column_storage& texts) {
    const auto* const values = zqengine::values_of<bifun_string>(texts);
    std::vector<bifun_string> parts(values, values + texts.capacity);
    for (std::uint32_t row = 0; row < texts.capacity; ++row) {
        std::uint32_t first = texts.data.null_flags[row] != 0 && parts[row].length != 0 ? parts[row].length - 1 : 0;
        while (first != 0 && (parts[row].data[first] & 0xC0) == 0x80) {
            --first;
        }
        if (texts.data.null_flags[row] != 0) {
            parts[row] = {parts[row].length - first, 0, parts[row].data + first};
        }
    }
    zqengine::column_pointer column = column_of(texts.type, parts);
    column->column.no_nulls = texts.column.no_nulls;
    std::copy_n(texts.data.null_flags, texts.capacity, column->data.null_flags);
    return column;
}

// As where one is a result that refers to the other.
TEST_F(Contract, StringArgumentsMayShareBytes) {
    constexpr std::uint32_t row_count = 300;
    for (const entry_point& entry : entry_points) {
        for (std::size_t round = 0; round < 16; ++round) {
            std::vector<call_argument> arguments = arguments_of_round(entry, row_count, round % 2 == 0 ? 0 : some_nulls, round);
            const zqengine::column_storage* texts = nullptr;
            std::vector<zqengine::column_pointer> parts;
            for (std::size_t i = 0; i < arguments.size(); ++i) {
                if (arguments[i].column == nullptr || !bifun::is_string(arguments[i].column->type)) {
                    continue;
                }
                if (texts == nullptr) {
                    texts = arguments[i].column;
                } else {
                    parts.push_back(last_characters(*texts));
                    arguments[i].column = parts.back().get();
                }
            }
            const unsaid unsaid(round % 4 < 2 ? 0U : all_statements);
            EXPECT_TRUE(parts.empty() || same_outcome(call(entry, arguments, row_count),
                                                      call(entry, arguments, row_count, {.arguments_are_short_lived = true})))
                << entry.symbol << ", round " << round;
        }
    }
}

// Among the statuses are those that have a meaning within the library.
TEST_F(Contract, ADemandingEngineHasTheSameResultsWhateverItsSuccessIs) {
    constexpr std::uint32_t row_count = 100;
    for (const entry_point& entry : entry_points) {
        for (std::size_t round = 0; round < 24; ++round) {
            const std::vector<call_argument> arguments = arguments_of_round(entry, row_count, round % 2 == 0 ? some_nulls : 0, round);
            const outcome usual = call(entry, arguments, row_count);
            const unsaid unsaid(round % 4 < 2 ? all_statements : number_texts_statement); // it wants zeros to write into
            for (const std::int32_t success : {1, BIFUN_UNUSABLE_TEXT + 0, INT32_MAX}) {
                demanding_engine::success = success;
                const outcome other = call(entry, arguments, row_count);
                demanding_engine::success = 0;
                EXPECT_TRUE(same_outcome(other, usual)) << entry.symbol << ", status " << success;
            }
        }
    }
}

// Parts of characters in each character set, some of which are characters backwards, and texts that may hold them.
constexpr std::string_view malformed_texts =
    "a.b.c | . | éa一é_ | '' | \xA9\xC3 | \xC3 | \xA9 | b\xC3 | \xB8\x80\xE4 | \xE4\xB8 | \xF0\x9F\x98 | \x81 | A\x81 | \x81\x30\x81 | "
    "0\x81 | \x30\x81\x30\x81_ | \xB0 | \xA1\xB0\xA1 | c\xB0\xA1 | \xB0\xA1\xB0";

// Single rows of values that may fail.
TEST_F(Contract, AnyRowIsTheSameWhateverTheEngineSaysOfItself) {
    constexpr std::uint32_t row_count = 64;
    const std::vector<std::string> texts = parts_of(malformed_texts);
    zqengine::column_pointer malformed(zqengine::create_column(value_type::VARCHAR, static_cast<std::uint32_t>(texts.size())));
    for (std::uint32_t row = 0; row < texts.size(); ++row) {
        read_value(*malformed, row, texts[row]);
        malformed->data.null_flags[row] = 1;
    }
    malformed->column.no_nulls = 1;
    std::map<std::pair<value_type, std::size_t>, zqengine::column_pointer> outside_domains;
    std::mt19937 numbers(61); // NOLINT(cert-msc51-cpp): every run is the same
    const auto below = [&numbers](std::uint32_t limit) { return static_cast<std::uint32_t>(numbers() % limit); };
    for (const std::uint32_t charset : {ZQ_CHARSET_UTF8, ZQ_CHARSET_GB18030, ZQ_CHARSET_EUC_KR}) {
        for (const entry_point& entry : entry_points) {
            set_up({below(4), charset, below(2)});
            const bool has_text = std::ranges::count(entry.arguments(), value_type::VARCHAR, &bifun::argument::type) > 0;
            for (int round = 0; round < (has_text ? 1500 : 400); ++round) {
                std::vector<generated_constant> constants(entry.argument_count);
                std::vector<call_argument> arguments(entry.argument_count);
                std::string shown = entry.symbol;
                for (std::size_t i = 0; i < entry.argument_count; ++i) {
                    const value_type type = entry.argument_list[i].type;
                    auto& any = outside_domains[{type, i}];
                    any = any != nullptr ? std::move(any) : generate_column(type, row_count, 0, i);
                    const bool is_sound = below(4) == 0;
                    const column_storage& column = is_sound                      ? column_for(entry, i, row_count, 0)
                                                   : type == value_type::VARCHAR ? *malformed
                                                                                 : *any;
                    const std::uint32_t row = below(column.capacity);
                    shown += " | " + write_value(column, row);
                    constants[i] = constant_of_row(column, row);
                    arguments[i] = entry.argument_list[i].kind == argument_kind::constant
                                       ? call_argument{.constant = &constants[i]}
                                       : call_argument{.column = &column, .first_row = row};
                }
                const outcome usual = call(entry, arguments, 1);
                const unsaid unsaid(1 + below(all_statements));
                EXPECT_TRUE(same_outcome(call(entry, arguments, 1), usual)) << shown << ", charset " << charset;
            }
        }
    }
}

TEST(EngineStatements, AreNotReadBehindTheRecordThatTheEngineHas) {
    constexpr bool (*library_takes_as_said[])() = {
        bifun::setters_are_plain_stores, bifun::free_bytes_are_open, bifun::ascii_is_single_byte, bifun::decimals_are_packed,
        bifun::datetimes_are_packed,     bifun::pads_as_described,   bifun::utf8_is_unicode,      bifun::number_texts_are_as_described,
        bifun::results_may_refer,        bifun::columns_tell_texts};
    const unsaid nothing(0);
    for (std::uint32_t count = 0; count <= std::size(engine_statements); ++count) {
        zq_engine_statements.size = static_cast<std::uint32_t>(sizeof zq_engine_statements.size + count * sizeof(std::int32_t));
        for (std::uint32_t i = 0; i < std::size(engine_statements); ++i) {
            EXPECT_EQ(library_takes_as_said[i](), i < count) << i << " of " << count;
        }
    }
}

} // namespace
} // namespace contract
