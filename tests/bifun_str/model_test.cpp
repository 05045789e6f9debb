// SPDX-License-Identifier: Apache-2.0
// The string functions against the model, on random batches of every entry point.

#include <algorithm>
#include <cctype>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/bifun_str/string_calls.h"
#include "tests/contract/each_engine.h"

namespace {

using bifun::argument_kind;
using bifun::entry_point;
using bifun::value_type;
using string_model::call_strings;
using string_model::shown;
using string_model::string_call;
using string_model::text;
using string_model::value;

std::set<std::string_view> builtins() {
    std::set<std::string_view> names;
    for (const entry_point* const entry : string_model::string_functions()) {
        names.insert(entry->builtin);
    }
    return names;
}

constexpr std::uint32_t row_count = 37;

std::mt19937 random_numbers(57); // NOLINT(cert-msc51-cpp): every run is the same

std::int32_t between(std::int32_t low, std::int32_t high) { return std::uniform_int_distribution<std::int32_t>(low, high)(random_numbers); }
bool once_in(std::int32_t n) { return between(1, n) == 1; }

template <class Value> const Value& one_of(const std::vector<Value>& values) {
    return values[static_cast<std::size_t>(between(0, static_cast<std::int32_t>(values.size()) - 1))];
}

// A few characters, so that patterns are found in texts, again and again. In an alphabet the two cases of a letter are neighbours.
using theme = std::vector<std::string>;

// Of what a built-in takes: digits, or characters that have neighbours, which the model finds soon.
theme alphabet_for(std::uint32_t charset, std::string_view builtin) {
    theme alphabet = string_model::alphabet(charset);
    if (builtin == "HEXTORAW") {
        std::erase_if(alphabet, [](const std::string& character) { return character.size() > 1 || std::isxdigit(character[0]) == 0; });
    } else if (builtin.starts_with("STRPOS")) {
        std::erase_if(alphabet, [](const std::string& c) { return c == "\xFF" || c == "\2010\2010" || c == "\xF1\x80\x80\x80"; });
    } else if (builtin == "SOUNDEX" || builtin == "DIFFERENCE") {
        alphabet.insert(alphabet.end(), {"H", "w", "e", "p", "F", "s", "c", "\\"});
    } else if (builtin == "ASCIISTR") {
        alphabet.emplace_back("\\");
    }
    return alphabet;
}

theme make_theme(const theme& alphabet) {
    theme characters(static_cast<std::size_t>(between(1, 4)));
    std::ranges::generate(characters, [&] { return one_of(alphabet); });
    if (const auto first = std::ranges::find(alphabet, characters[0]); once_in(2) && first + 1 != alphabet.end()) {
        characters.push_back(first[1]);
    }
    return characters;
}

// Half of them repeat themselves.
text make_text(const theme& theme, std::int32_t least, std::int32_t most) {
    const auto length = static_cast<std::size_t>(between(least, most));
    const std::size_t period = once_in(2) ? static_cast<std::size_t>(between(1, 3)) : length;
    std::vector<std::string> characters;
    text result;
    for (std::size_t i = 0; i < length; ++i) {
        characters.push_back(i < period ? one_of(theme) : characters[i - period]);
        result.stored += characters.back();
    }
    result.blanks = once_in(2) ? static_cast<std::uint32_t>(between(0, 3)) : 0;
    return result;
}

bool takes_language(std::string_view builtin) { return builtin == "UPPER" || builtin == "LOWER" || builtin == "INITCAP"; }
bool takes_pattern_first(std::string_view builtin) { return builtin == "POSITION" || builtin == "LOCATE"; }
std::size_t pattern_position(std::string_view builtin) { return takes_pattern_first(builtin) ? 0 : builtin == "TRIM" ? 2 : 1; }

// The algorithm changes behind 31 bytes, looking at all places ends behind 64, the place of the table changes behind 256 bytes and that of
// a constant's bytes behind 48.
text make_pattern(const theme& theme) {
    const std::int32_t length = once_in(10) ? one_of(std::vector{30, 31, 32, 48, 49, 64, 65, 255, 256, 257}) : between(0, 3);
    return make_text(theme, length, length);
}

// For an argument of the entry point: a text or number for which its batch does not fail.
value make_value(const bifun_settings& settings, const entry_point& entry, std::size_t position, const theme& theme) {
    value result;
    result.is_null = once_in(12);
    const std::string_view builtin = entry.builtin;
    if (entry.argument_list[position].type == value_type::VARCHAR) {
        if (takes_language(builtin) && position == 1) {
            result.string = one_of(std::vector<text>{{"NLS_SORT=XTURKISH"}, {"NLS_SORT=BINARY"}});
        } else if (builtin == "TRANSLATE" && position == 2) {
            result.string = make_text(once_in(2) ? theme : make_theme(string_model::alphabet(settings.charset_code)), 0, 5);
        } else if (position != pattern_position(builtin)) {
            result.string = once_in(10) ? make_text(theme, 20, 70) : make_text(theme, 0, 9);
        } else if (builtin != "TRIM") {
            result.string = builtin == "LTRIM" || builtin == "RTRIM" ? make_text(theme, 0, once_in(12) ? 60 : 3) : make_pattern(theme);
        } else if (entry.argument_list[position].kind == argument_kind::constant || !once_in(6)) {
            result.string = once_in(3) ? text{"", 1} : text{one_of(theme), 0};
        }
    } else if (builtin == "TRIM") {
        result.number = between(578, 581);
    } else if (builtin == "OVERLAY" || builtin == "INSSTR") {
        const bool is_length = position == (builtin == "OVERLAY" ? 3 : 2);
        result.number = between(is_length ? 0 : 1, 14);
    } else if (builtin == "LPAD" || builtin == "RPAD") {
        result.number = once_in(8) ? between(40, 300) : between(-1, 24);
    } else if (builtin.starts_with("STRPOS")) {
        result.number = between(1, 12);
    } else if (builtin == "REPEAT") {
        result.number = between(0, 5);
    } else if (builtin == "SPACE") {
        result.number = once_in(4) ? 32767 : between(0, 9);
    } else if (builtin == "INSTR" || builtin == "INSTRB" || builtin == "LOCATE") {
        result.number = position == 3 ? between(1, 4) : between(-12, 12);
    } else if (builtin == "SUBSTRING_INDEX") {
        result.number = between(-4, 4);
    } else if (builtin == "LEFT" || builtin == "RIGHT") {
        result.number = between(0, 14);
    } else {
        result.number = position == 2 ? between(settings.compatible_mode == 1 ? 0 : -2, 12) : between(-15, 15);
    }
    const bool fails_beyond =
        builtin == "TRIM" || builtin == "REPEAT" || builtin == "SPACE" || builtin.substr(1) == "PAD" || builtin.starts_with("STRPOS");
    if (once_in(20) && (!fails_beyond || result.number < 0)) {
        using limits = std::numeric_limits<std::int32_t>;
        result.number = result.number < 0 ? limits::min() : limits::max();
    }
    return result;
}

// Makes a text of a column hold its row's pattern once or twice.
void put_pattern_into_text(const entry_point& entry, std::vector<value>& row) {
    const std::size_t pattern = pattern_position(entry.builtin);
    const std::size_t text = takes_pattern_first(entry.builtin) ? 1 : 0;
    if (pattern < row.size() && entry.argument_list[pattern].type == value_type::VARCHAR && entry.builtin != "TRIM" &&
        !takes_language(entry.builtin) && entry.argument_list[text].kind == argument_kind::column && once_in(2)) {
        std::string& stored = row[text].string.stored;
        const std::string sought = row[pattern].string.stored + std::string(row[pattern].string.blanks, ' ');
        stored = sought + (once_in(2) ? stored + sought : std::string()) + stored;
    }
}

void expect_model(const bifun_settings& settings, const entry_point& entry) {
    const theme theme = make_theme(alphabet_for(settings.charset_code, entry.builtin));
    std::vector<std::vector<value>> rows(row_count);
    for (std::vector<value>& row : rows) {
        for (std::size_t i = 0; i < entry.argument_count; ++i) {
            const bool is_constant = entry.argument_list[i].kind == argument_kind::constant;
            row.push_back(is_constant && &row != &rows[0] ? rows[0][i] : make_value(settings, entry, i, theme));
        }
        put_pattern_into_text(entry, row);
    }
    each_engine::with_each_engine([&] {
        const string_call call = call_strings(entry, rows);
        ASSERT_EQ(call.outcome.status, 0) << entry.symbol;
        for (std::uint32_t row = 0; row < row_count; ++row) {
            const std::vector<value>& arguments = rows[row];
            // LTRIM of a constant without characters looks at nothing else.
            const bool is_settled = std::string_view(entry.symbol) == "bltrim_va_str" && shown(entry, 0, arguments[0]) == "''";
            const std::string expected = is_settled ? "''" : string_model::row_of(settings, entry, arguments);
            EXPECT_EQ(call.rows[row], expected)
                << shown(entry, arguments) << ", charset " << settings.charset_code << ", case " << settings.case_sensitive;
        }
    });
}

class StringModel : public testing::TestWithParam<std::string_view> {};

TEST_P(StringModel, AgreesWithTheLibrary) {
    std::size_t tested = 0;
    for (const entry_point* const entry : string_model::string_functions()) {
        if (entry->builtin != GetParam()) {
            continue;
        }
        ++tested;
        for (const std::uint32_t compatible_mode : {0U, 1U, 3U}) {
            for (std::uint32_t variant = 0; variant < 3 * 2; ++variant) {
                const bifun_settings settings = {
                    .compatible_mode = compatible_mode, .charset_code = variant % 3, .case_sensitive = variant / 3};
                contract::set_up(settings);
                for (int batch = 0; batch < 20 && !HasFailure(); ++batch) {
                    expect_model(settings, *entry);
                }
            }
        }
    }
    EXPECT_GT(tested, 0U);
}

INSTANTIATE_TEST_SUITE_P(Builtins, StringModel, testing::ValuesIn(builtins()),
                         [](const auto& builtin) { return std::string(builtin.param); });

} // namespace
