// SPDX-License-Identifier: Apache-2.0
// What the model of the string functions has no answer for: malformed texts, statuses, limits, counts that nobody has stored, reversals
// that fail, where positions are too; and the exported operations on single values.

#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "bop/bifun.h"
#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"
#include "engine/charset.h"
#include "engine/memory.h"
#include "tests/bifun_str/string_calls.h"
#include "tests/contract/each_engine.h"
#include "tests/contract/exact_block.h"
#include "tests/contract/text_case.h"

namespace {
int reversals_to_failure = 0;          // 1: the next one fails; 0: none
std::uint64_t bytes_before_places = 0; // in front of the places of which the engine was asked whether a character begins there
} // namespace

// Replace the engine's operations in this program.
extern "C" __attribute__((visibility("default"))) std::uint8_t* zq_mbsrev_ex(std::uint8_t* text, std::uint32_t length) {
    static auto* const reverse = reinterpret_cast<decltype(&zq_mbsrev_ex)>(dlsym(RTLD_NEXT, "zq_mbsrev_ex"));
    return reversals_to_failure > 0 && --reversals_to_failure == 0 ? nullptr : reverse(text, length);
}
extern "C" __attribute__((visibility("default"))) std::int32_t zq_char_start(const std::uint8_t* text, std::uint32_t length,
                                                                             std::uint32_t offset) {
    static auto* const is_start = reinterpret_cast<decltype(&zq_char_start)>(dlsym(RTLD_NEXT, "zq_char_start"));
    bytes_before_places += offset;
    return is_start(text, length, offset);
}

namespace {

using contract::evaluate;
using contract::expect_results;

constexpr std::uint32_t utf8 = ZQ_CHARSET_UTF8;
constexpr std::uint32_t gb18030 = ZQ_CHARSET_GB18030;
constexpr std::uint32_t euc_kr = ZQ_CHARSET_EUC_KR;

class StringFunctions : public testing::Test {
  protected:
    void SetUp() override { use(utf8); }
    void TearDown() override {
        zqengine::fail_step(0);
        reversals_to_failure = 0;
        rt_memobj_destroy(&environment, memory);
    }
    static void use(std::uint32_t charset, std::uint32_t mode = 0, std::uint32_t case_sensitive = 1) {
        contract::set_up({.compatible_mode = mode, .charset_code = charset, .case_sensitive = case_sensitive});
    }

    bifun_environment environment;
    bifun_memory_object* memory = rt_memobj_create_ex(&environment, 0, 4096, __FILE__, __LINE__);
};

TEST_F(StringFunctions, WhatIsEmptyMayDecideAlone) {
    expect_results({
        // Of an empty text nothing is to be trimmed, by an empty set neither: a constant set is checked all the same.
        "btrim_vaa_str | 0 | '' xyx__ xbx | xy '' xy | [0] '' xyx__ NULL status -6109",
        "btrim_vva_str | 579 | '' | xy | [1] ''",
        "btrim_vav_str | 0 | '' | xy | [0] NULL status -6109",
        "bltrim_va_str | '' | x NULL '' | [1] '' '' ''",
        "brtrim_va_str | '' | x NULL '' | [0] '' NULL ''",
        "binstr_avvv_str | a NULL '' | '' | 1 | 0 | [0] NULL NULL NULL",
        "binstrb_avvv_str | a NULL | a | -1 | -2147483648 | [0] NULL NULL status -6803",
    });
    use(utf8, 1); // a negative length fails, unless nothing is there to take
    expect_results({
        "bsubstr_aav_str | NULL ab cd | 1 9 1 | -1 | [0] NULL '' NULL status -6110",
        "bsubstrb_avv_str | NULL '' ab cd | 1 | -1 | [0] NULL '' NULL ? status -6803",
    });
}

// Each byte of a character that is cut off is one; a pattern may be the beginning of a character.
TEST_F(StringFunctions, MalformedTextsAndPatterns) {
    expect_results({
        "bsubstr_aaa_str | a\xE4\xB8 | 2 | 1 | [0] \xE4",
        "bsubstrb_avv_str | a\xC3 | 2 | 1 | [0] \xC3",
        // Backwards they would be an é.
        "bsubstr_index_aav_str | a.b.c '' | \xA9\xC3 b | -1 | [0] NULL ? status -6108",
        "bsubstr_index_avv_str | '' a | \xA9\xC3 | -1 | [0] NULL ? status -6108",
        // In the sets the lead byte takes the two behind it along.
        "btranslate_avv_str | \xE4xyz | \xE4xyz | 1234 | [1] \xE4xy2",
        "btranslate_avv_str | abc | abc | 1\xE4xy2 | [1] 1\xE4xy2",
        "btranslate_avv_str | a\xE4 | \xE4 | x | [1] ax",
    });
    use(gb18030);
    expect_results({
        "btrim_vaa_str | 0 | AA\x81 | A | [1] \x81",
        "binstr_avvv_str | \2010\2010 | \2010\x81 | 1 | 1 | [0] 1",
        "binstr_avvv_str | \2010\2010 | \2010\x81 | -1 | 1 | [0] 1",
        "binstr_def2_av_str | A\x81 \201AA | \x81 | [0] 2 1",
        "bposition_va_str | 0\x81 | \2010\20100 | [0] 0",
        // Would become another character backwards.
        "binstr_avvv_str | A\x81 | A | -1 | 1 | [0] NULL status -6108",
        "binstr_avvv_str | AB | A\x81 | -1 | 1 | [0] NULL status -6108",
        "brtrim_aa_str | A\x81 | A | [0] NULL status -6108",
        "bsubstr_index_aav_str | A\x81 | A | -1 | [0] NULL status -6108",
    });
}

// Texts that are the same backwards do not show whether the second reversal of a trim has been done. What lies behind a delimiter is put
// right last.
TEST_F(StringFunctions, ReversalsThatFail) {
    const struct {
        int failing;
        contract::text_case call;
    } cases[] = {{1, {"btrim_vaa_str", {"580", "éxé", "é"}, "[0] NULL status -6108"}},
                 {2, {"btrim_vav_str", {"580", "éxé", "é"}, "[0] NULL status -6108"}},
                 {3, {"brtrim_av_str", {"NULL é_ xé éé é", "é"}, "[0] NULL é_ x NULL ? status -6108"}},
                 {1, {"bsubstr_index_avv_str", {"aé一éb", "é", "-1"}, "[0] NULL status -6108"}},
                 {2, {"bsubstr_index_avv_str", {"aé一éb", "é", "-1"}, "[0] NULL status -6108"}},
                 {3, {"bsubstr_index_avv_str", {"aé一éb", "é", "-1"}, "[1] ''"}},
                 {1, {"binstrb_avvv_str", {"éa", "é", "-1", "1"}, "[0] NULL status -6108"}},
                 {2, {"binstrb_avvv_str", {"éa", "é", "-1", "1"}, "[0] NULL status -6108"}}};
    for (const auto& [failing, call] : cases) {
        reversals_to_failure = failing;
        EXPECT_EQ(evaluate(call), call.result) << call.symbol << failing;
        EXPECT_EQ(reversals_to_failure, 0);
    }
}

// Two small letters with one capital: folded to capitals they are the same, to small letters they are not. LOCATE takes texts as they are.
TEST_F(StringFunctions, CaseFolding) {
    use(utf8, 0, 0);
    expect_results({
        "binstr_def2_av_str | x\u00B5 | \u03BC | [0] 2",
        "binstr_def2_aa_str | x\u00B5 | \u03BC | [0] 2",
        "binstrb_def2_av_str | x\u00B5 | \u03BC | [0] 2",
        "bposition_va_str | \u03BC | x\u00B5 | [0] 2",
        "binstr_def1_avv_str | x\u00B5 | \u03BC | 1 | [0] 0",
        "binstr_avvv_str | x\u00B5 | \u03BC | -1 | 1 | [0] 0",
        "binstrb_avvv_str | x\u00B5 | \u03BC | 1 | 1 | [0] 0",
        "blocate_def_aa_str | b B | ABC aBc | [0] 0 2",
    });
}

// ---- built texts ------------------------------------------------------------------------------------------------------

// One byte below what fails. Of CONCAT a part that stays alone is measured in its own way, or not at all.
TEST_F(StringFunctions, BuiltTextsHaveAtMost32767Bytes) {
    each_engine::expect_results({
        "boverlay_avvv_str | NULL a*32766 a*32767 | x | 32768 | 0 | [0] NULL a*32766&x NULL status -6108",
        "boverlay_avvv_str | a*32760______ a*32760_______ | x | 1 | 0 | [0] x&a*32760______ NULL status -6108",
        "boverlay_aav_str | ___ ___ | a*32765 a*32766 | 3 | [0]   &a*32765 NULL status -6108",
        "binsstr_avva_str | ab ab | 3 | 0 | x*32765 x*32766 | [0] ab&x*32765 NULL status -6108",
        "bconcat_aa_str | a*32766 a*32766 | b bc | [0] a*32766&b NULL status -6108",
        "bconcat_av_str | a*32767_ a*32768 | __ | [0] a*32767___ NULL status -6108",
        "bconcat_aa_str | a*32767__ NULL a*32768 | NULL a*32768 NULL | [0] a*32767__ a*32768 NULL status -6803",
        "brepeatstr_av_str | a*4681 '' a*4682 | 7 | [0] a*32767 '' NULL status -6803",
        "brepeatstr_av_str | '' | 2147483647 | [1] ''",
        "blpad_avv_str | a a_ a | 32767 | x | [1] x*32766&a x*32765&a_ x*32766&a",
        "brpad_avv_str | NULL a*32767 a*32768 | 40000 | '' | [0] NULL a*32767 NULL status -6108",
        // Cut texts are results, too.
        "brpad_avv_str | a*40000 | 32767 | x | [1] a*32767",
        "blpad_avv_str | a*40000 | 32768 | x | [0] NULL status -6108",
        "brpad_def_av_str | a*40000 | 32768 | [0] NULL status -6108",
        // No limits.
        "breplace_avv_str | a*20000 | a | bb | [1] b*40000",
        "btranslate_avv_str | a*40000 | a | b | [1] b*40000",
    });
}

// Texts of as many blanks as can be counted, more than anybody can have stored; and limits that are no numbers of characters.
TEST_F(StringFunctions, CountsDoNotOverflow) {
    using string_model::value;
    constexpr std::uint32_t most = UINT32_MAX;
    const struct {
        const char* symbol;
        std::vector<value> arguments;
        std::int32_t status;
        const char* row;
    } cases[] = {
        {"bconcat_aa_str", {{"a", most}, {"b", 0}}, BIFUN_INVALID_CHARACTER_STRING, "NULL"},
        {"bconcat_aa_str", {{"a", 0}, {"", most}}, 0, "'a'+4294967295"},
        {"bconcat_aa_str", {{"a", 1}, {"", most}}, BIFUN_INVALID_CHARACTER_STRING, "NULL"},
        {"boverlay_aav_str", {{"a", most}, {"b", 0}, {1}}, BIFUN_INVALID_CHARACTER_STRING, "NULL"},
        {"boverlay_aav_str", {{"a", 0}, {"b", most}, {1}}, BIFUN_INVALID_CHARACTER_STRING, "NULL"},
        {"boverlay_aavv_str", {{"a", most}, {"b", 0}, {2}, {INT32_MAX}}, BIFUN_INVALID_CHARACTER_STRING, "NULL"},
        {"brepeatstr_av_str", {{"", most}, {INT32_MAX}}, BIFUN_ARGUMENT_OUT_OF_DOMAIN, "NULL"},
        {"brepeatstr_av_str", {{"a", most}, {1}}, BIFUN_ARGUMENT_OUT_OF_DOMAIN, "NULL"},
        {"brepeatstr_av_str", {{"a", most}, {0}}, 0, "''"},
        {"brepeatstr_av_str", {{"一", 0}, {10923}}, BIFUN_ARGUMENT_OUT_OF_DOMAIN, "NULL"},
        {"brpad_avv_str", {{"", 0}, {10923}, {"一", 0}}, BIFUN_INVALID_CHARACTER_STRING, "NULL"},
        {"blpad_avv_str", {{"一", 0}, {32766}, {"x", 0}}, BIFUN_INVALID_CHARACTER_STRING, "NULL"},
        {"blpad_avv_str", {{"", most}, {7}, {"x", 0}}, 0, "''+7"},
        {"blpad_avv_str", {{"", most}, {32768}, {"x", 0}}, BIFUN_INVALID_CHARACTER_STRING, "NULL"},
        {"brpad_avv_str", {{"a", most}, {INT32_MAX}, {"x", 0}}, BIFUN_INVALID_CHARACTER_STRING, "NULL"},
        {"brpad_avv_str", {{"a", 0}, {9}, {"x", most}}, BIFUN_OUT_OF_MEMORY, "NULL"},
        {"breplace_aaa_str", {{"a", most}, {"a", 0}, {"b", 0}}, 0, "'b'+4294967295"},
        {"breplace_aaa_str", {{"a", most}, {"a", most}, {"b", 0}}, BIFUN_OUT_OF_MEMORY, "NULL"},
        {"breplace_aaa_str", {{"a", 0}, {"a", 0}, {"b", most}}, BIFUN_OUT_OF_MEMORY, "NULL"},
        {"btranslate_avv_str", {{"a", most}, {" ", 0}, {}}, 0, "NULL"},
        {"btranslate_avv_str", {{"a", most}, {" ", 0}, {"", 0}}, 0, "'a'"},
        {"btranslate_avv_str", {{"a", most}, {"a", 0}, {"bc", 0}}, 0, "'b'+4294967295"},
        {"btranslate_avv_str", {{"a", most}, {" ", 0}, {"xy", 0}}, BIFUN_OUT_OF_MEMORY, "NULL"},
        {"btranslate_avv_str", {{"a", 0}, {"a", most}, {"b", 0}}, BIFUN_OUT_OF_MEMORY, "NULL"},
        {"blength_a_str", {{"a", most}}, 0, "1"},
        {"blength_space_a_str", {{"a", INT32_MAX - 1}}, 0, "2147483647"},
        {"blength_space_a_str", {{"a", INT32_MAX}}, BIFUN_NUMERIC_OVERFLOW, "NULL"},
        {"blength_space_a_str", {{"a", most}}, BIFUN_NUMERIC_OVERFLOW, "NULL"},
        {"blengthb_a_str", {{"", most}}, BIFUN_NUMERIC_OVERFLOW, "NULL"},
    };
    each_engine::with_each_engine([&] {
        for (const auto& c : cases) {
            const string_model::string_call call = string_model::call_strings(contract::entry_of(c.symbol), {c.arguments});
            EXPECT_TRUE(call.outcome.status == c.status && call.rows[0] == c.row)
                << string_model::shown(contract::entry_of(c.symbol), c.arguments) << ": " << call.outcome.status << ", " << call.rows[0];
        }
    });
}

// The folded pattern and its tables, the folded text, the result: whichever has no room, nothing else is lost.
TEST_F(StringFunctions, ReplacingWithoutMemory) {
    use(utf8, 0, 0);
    each_engine::with_each_engine([] {
        for (const char* const symbol : {"breplace_aaa_str", "breplace_avv_str"}) {
            std::int64_t step = 0;
            std::string result;
            do {
                result = evaluate({symbol, {"P*3000", "p*300", "x*900"}, {}}, {.failing_step = ++step});
            } while (result == "[0] NULL status -503");
            EXPECT_EQ(result, "[1] x*9000");
            EXPECT_GT(step, 3) << symbol;
        }
    });
}

// An engine may have to look at all bytes in front of a place. In a run of two-byte characters these must not become the square of the
// text, be the places characters or not.
TEST_F(StringFunctions, ReplacingInLongTextsOfMultibyteCharacters) {
    using string_model::value;
    constexpr std::size_t length = 20000;
    use(euc_kr);
    std::string source;
    while (source.size() < length) {
        source += "\xB0\xA1";
    }
    const std::pair<const char*, std::string> cases[] = {{"\xB0\xA1", std::string(length / 2, 'x')}, {"\xA1\xB0", source}};
    for (const char* const symbol : {"breplace_avv_str", "breplace_aaa_str"}) {
        for (const auto& [pattern, result] : cases) {
            bytes_before_places = 0;
            const string_model::string_call call =
                string_model::call_strings(contract::entry_of(symbol), {{value(source, 0), value(pattern), value("x")}});
            EXPECT_EQ(call.rows[0], string_model::shown(string_model::text{result, 0})) << symbol;
            EXPECT_LT(bytes_before_places, 8 * length) << symbol;
        }
    }
}

// ---- operations on single values --------------------------------------------------------------------------------------

template <class Function> Function* exported(const char* name) { return reinterpret_cast<Function*>(contract::library_symbol(name)); }

// What is searched backwards stays reversed, unless the search fails.
TEST_F(StringFunctions, SearchOfOneText) {
    const auto search_low = exported<decltype(ifun_instr_low)>("ifun_instr_low");
    std::uint32_t found = 7;
    std::uint32_t offset = 7;
    const auto search = [&](const exact_block& text, const exact_block& pattern, std::int32_t start, std::uint32_t occurrence) {
        return search_low(&environment, memory, text.data(), text.length, pattern.data(), pattern.length, start, occurrence, &found,
                          &offset);
    };
    const struct {
        const char *text, *pattern;
        std::int32_t start;
        std::uint32_t occurrence, position, offset;
        const char *text_after, *pattern_after;
    } cases[] = {{"éabab", "ab", 1, 2, 4, 4, "éabab", "ab"},
                 {"éabab", "ab", 3, 1, 4, 4, "éabab", "ab"},
                 {"éabab", "ab", -1, 2, 2, 2, "babaé", "ba"},
                 {"éabab", "ab", -5, 1, 0, 0, "babaé", "ba"},
                 {"éabab", "é", -1, 1, 1, 0, "babaé", "é"},
                 {"ab", "abc", 1, 1, 0, 0, "ab", "abc"},
                 {"", "a", 1, 1, 0, 0, "", "a"},
                 {"éa", "a", 3, 1, 0, 0, "éa", "a"}};
    for (const auto& c : cases) {
        const exact_block text(c.text);
        const exact_block pattern(c.pattern);
        EXPECT_EQ(search(text, pattern, c.start, c.occurrence), 0);
        EXPECT_TRUE(found == c.position && (found == 0 || offset == c.offset)) << c.text << c.pattern << c.start << ' ' << found << offset;
        EXPECT_TRUE(text.text() == c.text_after && pattern.text() == c.pattern_after) << text.text() << pattern.text();
    }
    const exact_block text("éa");
    const exact_block long_pattern(std::string(257, 'b'));
    for (const int step : {1, 2}) {
        zqengine::fail_step(step);
        EXPECT_EQ(search(text, long_pattern, -1, 1), BIFUN_OUT_OF_MEMORY);
        EXPECT_EQ(text.text(), "éa");
    }
    for (const int failing : {1, 2}) {
        reversals_to_failure = failing;
        EXPECT_EQ(search(text, exact_block("a"), -1, 1), BIFUN_INVALID_CHARACTER_STRING);
        EXPECT_EQ(text.text(), "éa");
    }
}

TEST_F(StringFunctions, SearchOfOneTextWhateverItsCase) {
    const auto search = exported<decltype(binstr_avvv_process_case_sencitive)>("binstr_avvv_process_case_sencitive");
    const struct {
        const char *text, *pattern;
        std::int32_t start, occurrence, status;
        std::uint32_t position;
    } cases[] = {{"aBAb", "ab", 1, 2, 0, 3}, {"aBAb", "AB", -1, 2, 0, 1},   {"aBAb", "b", 0, 1, 0, 0},
                 {"éÉ", "É", 2, 1, 0, 2},    {"aBAb", "a", 1, 0, -6803, 0}, {"\u00B5", "\u03BC", 1, 1, 0, 0}};
    use(utf8, 0, 0);
    for (const auto& c : cases) {
        const exact_block text(c.text);
        const exact_block pattern(c.pattern);
        std::uint32_t position = 7;
        EXPECT_EQ(search(&environment, memory, text.data(), text.length, pattern.data(), pattern.length, c.start, c.occurrence, &position),
                  c.status);
        EXPECT_EQ(position, c.position) << c.text << ", " << c.pattern;
        EXPECT_TRUE(text.text() == c.text && pattern.text() == c.pattern);
    }
}

// By the kernel that the pattern asks for, too. The row's flag is the caller's.
TEST_F(StringFunctions, ReplacingInOneText) {
    using string_model::text;
    const zqengine::column_pointer column(zqengine::create_column(bifun::value_type::VARCHAR, 2));
    const struct {
        text source, pattern, replacement;
        const char* result;
    } cases[] = {{{"abcab", 2}, {"ab", 0}, {"x", 1}, "'x cx '+2"},
                 {{"ab", 2}, {" ", 0}, {"x", 0}, "'ab'+2"},
                 {{"a b", 3}, {"", 2}, {"é", 0}, "'a b\\xC3\\xA9'+1"},
                 {{"ab", 3}, {"b", 2}, {"", 0}, "'a'+1"},
                 {{"", 3}, {"", 1}, {"", 0}, "''"},
                 {{"ab", 1}, {"", 0}, {"x", 0}, "'ab'+1"},
                 {{"aaa", 0}, {"aa", 0}, {"", 0}, "'a'"},
                 {{"éa", 0}, {"\xA9", 0}, {"", 0}, "'\\xC3\\xA9a'"}};
    static_assert(std::is_same_v<decltype(bifun_replace_low), decltype(bifun_replace_low_1)>);
    const auto shown_row = [&](std::int32_t status) {
        const bifun_string& row = zqengine::values_of<bifun_string>(*column)[1];
        EXPECT_TRUE(status == 0 && column->data.null_flags[1] == 7) << status;
        return string_model::shown(text{std::string(row.data, row.data + row.length), row.trailing_blanks});
    };
    for (const auto& c : cases) {
        const exact_block source(c.source.stored);
        const exact_block pattern(c.pattern.stored);
        const exact_block with(c.replacement.stored);
        const char* const kernel = pattern.length == 0 && c.pattern.blanks != 0   ? "bifun_replace_low_1"
                                   : pattern.length != 0 && c.pattern.blanks == 0 ? "bifun_replace_low_2"
                                                                                  : "bifun_replace_low_3";
        column->data.null_flags[1] = 7;
        for (const char* const name : {"bifun_replace_low", kernel}) {
            EXPECT_EQ(shown_row(exported<decltype(bifun_replace_low)>(name)(
                          &environment, memory, 1, &column->column, source.data(), source.length, c.source.blanks, pattern.data(),
                          pattern.length, c.pattern.blanks, with.data(), with.length, c.replacement.blanks)),
                      c.result)
                << name;
        }
        if (with.length == 0 && c.replacement.blanks == 0) {
            EXPECT_EQ(shown_row(exported<decltype(bifun_replace_def_low)>("bifun_replace_def_low")(
                          &environment, memory, 1, &column->column, source.data(), source.length, c.source.blanks, pattern.data(),
                          pattern.length, c.pattern.blanks)),
                      c.result);
        }
    }
    const exact_block long_pattern(std::string(300, 'b'));
    zqengine::fail_step(1);
    EXPECT_EQ(exported<decltype(bifun_replace_low)>("bifun_replace_low")(&environment, memory, 1, &column->column, long_pattern.data(), 300,
                                                                         0, long_pattern.data(), 300, 0, nullptr, 0, 0),
              BIFUN_OUT_OF_MEMORY);
}

// The output has room for the longest result and no more.
TEST_F(StringFunctions, OverlayOfOneText) {
    using string_model::text;
    constexpr std::uint32_t by_replacement = UINT32_MAX;
    const auto overlay = exported<decltype(ifun_overlay_low)>("ifun_overlay_low");
    const std::string longest(32767, 'x');
    const struct {
        text source, replacement;
        std::uint32_t position, length;
        std::string result; // empty: -6108
    } cases[] = {{{"éab", 2}, {"xy", 0}, 2, by_replacement, "'\\xC3\\xA9xy'+2"},
                 {{"éab", 2}, {"x", 1}, 2, by_replacement, "'\\xC3\\xA9x '+2"},
                 {{"ab", 4}, {"x", 0}, 4, 2, "'ab x'+1"},
                 {{"ab", 4}, {"", 2}, 4, 1, "'ab   '+2"},
                 {{"ab", 4}, {"", 0}, 5, 0, "'ab  '+2"},
                 {{"ab", 1}, {"x", 0}, 4294967295, 4294967294, "'ab x'"},
                 {{"ab", 1}, {"x", 0}, 1, 4294967294, "'x'"},
                 {{"ab", 1}, {"x", 0}, 0, 1, "'xb'+1"}, // as position 1
                 {{longest, 0}, {"", 0}, 1, 0, string_model::shown(text{longest, 0})},
                 {{"", 0}, {longest, 0}, 1, by_replacement, string_model::shown(text{longest, 0})},
                 {{"", 32766}, {"x", 0}, 1, 0, "'x'+32766"},
                 {{"", 32767}, {"x", 0}, 1, 1, "'x'+32766"},
                 {{"", 32767}, {"x", 0}, 1, 0, ""},
                 {{longest, 1}, {"", 0}, 1, 0, ""},
                 {{longest, 0}, {"x", 0}, 32768, 1, ""},
                 {{"a", 4294967295}, {"b", 4294967295}, 4294967295, by_replacement, ""},
                 {{"a", 4294967295}, {"b", 0}, 1, 1, ""}};
    for (const auto& c : cases) {
        const exact_block source(c.source.stored);
        const exact_block replacement(c.replacement.stored);
        const exact_block output(longest);
        std::uint32_t length = 7;
        std::uint32_t blanks = 7;
        const std::int32_t status = overlay(source.data(), source.length, c.source.blanks, replacement.data(), replacement.length,
                                            c.replacement.blanks, c.position, c.length, output.data(), &length, &blanks);
        EXPECT_EQ(status, c.result.empty() ? BIFUN_INVALID_CHARACTER_STRING : BIFUN_OK) << c.position << ' ' << c.length;
        if (status == BIFUN_OK) {
            EXPECT_EQ(string_model::shown(text{std::string(output.data(), output.data() + length), blanks}), c.result);
        }
    }
}

// A character that is cut off is stepped over as if whole.
TEST_F(StringFunctions, CharactersOfAText) {
    const auto gather = exported<decltype(zq_gather_char_info)>("zq_gather_char_info");
    std::uint32_t count = 7;
    std::uint32_t* lengths;
    std::uint8_t** starts;
    const struct {
        std::uint32_t charset;
        std::string_view text;
        std::vector<std::uint32_t> lengths;
    } cases[] = {{utf8, "", {}},
                 {utf8, "aé一\U0001F600a\xE4\xB8", {1, 2, 3, 4, 1, 3}},
                 {gb18030, "\x81\x41\x81\x30\x81\x30\x41\x81\x30\x81", {2, 4, 1, 4}},
                 {euc_kr, "\xB0\xA1\xB0", {2, 2}}};
    for (const auto& c : cases) {
        use(c.charset);
        const exact_block text(c.text);
        ASSERT_EQ(gather(&environment, memory, text.data(), static_cast<std::int32_t>(text.length), &count, &lengths, &starts), 0);
        EXPECT_EQ(std::vector(lengths, lengths + count), c.lengths) << c.text;
        const std::uint8_t* expected = text.data();
        for (std::uint32_t i = 0; i < count; expected += lengths[i], ++i) {
            EXPECT_EQ(starts[i], expected);
        }
    }
    EXPECT_EQ(gather(&environment, memory, nullptr, -1, &count, &lengths, &starts), 0);
    EXPECT_EQ(count, 0U);
    for (const int step : {1, 2}) {
        const exact_block text("ab");
        zqengine::fail_step(step);
        EXPECT_EQ(gather(&environment, memory, text.data(), 2, &count, &lengths, &starts), BIFUN_OUT_OF_MEMORY);
    }
}

TEST_F(StringFunctions, PositionOfACharacter) {
    using search = decltype(bifun_search_char_in_str);
    static_assert(std::is_same_v<search, decltype(bifun_search_char_in_str_ex)>);
    const auto expect_position = [](std::string_view bytes, std::string_view character, std::ptrdiff_t expected) {
        const exact_block text(bytes);
        const exact_block sought(character);
        for (const char* const name : {"bifun_search_char_in_str", "bifun_search_char_in_str_ex"}) {
            std::uint32_t position = 7;
            exported<search>(name)(text.data(), text.length, sought.data(), sought.length, &position);
            EXPECT_EQ(position, expected) << bytes << ", " << character;
        }
    };
    std::mt19937 random(4); // NOLINT(cert-msc51-cpp): every run is the same
    for (const std::uint32_t charset : {gb18030, utf8, euc_kr}) {
        use(charset);
        const std::vector<std::string> alphabet = string_model::alphabet(charset);
        for (int round = 0; round < 200; ++round) {
            std::string text;
            for (std::size_t i = random() % 6; i > 0; --i) {
                text += alphabet[random() % alphabet.size()];
            }
            const std::vector<std::string> all = string_model::characters_of(charset, text);
            for (const std::string& character : alphabet) {
                const auto found = std::ranges::find(all, character);
                expect_position(text, character, found == all.end() ? 0 : found - all.begin() + 1);
            }
        }
        expect_position(charset == utf8 ? "a\xE4\xB8" : "A\x81", charset == utf8 ? "一" : "\201A", 0); // cut off
    }
}

// Whatever the row or value held. The lengths are set before memory is asked for.
TEST_F(StringFunctions, BlanksAreWrittenOut) {
    const auto into_row = exported<decltype(bifun_colstr_assign_with_blank)>("bifun_colstr_assign_with_blank");
    const auto into_value = exported<decltype(bifun_colstr_assign_with_blank_no_clear)>("bifun_colstr_assign_with_blank_no_clear");
    const zqengine::column_pointer column(zqengine::create_column(bifun::value_type::VARCHAR, 2));
    bifun_string& row = zqengine::values_of<bifun_string>(*column)[1];
    std::uint8_t& flag = column->data.null_flags[1];
    bifun_string target;
    for (const std::string_view text : {"", "ab", "é"}) {
        for (const std::uint32_t blanks : {0U, 1U, 5000U}) {
            const exact_block stored(text);
            const bifun_string source = {stored.length, blanks, stored.data()};
            const std::string expected = std::string(text) + std::string(blanks, ' ');
            for (const int failing_step : {0, expected.empty() ? 0 : 1}) {
                row = target = {7, 7, nullptr};
                flag = 0;
                const std::int32_t status = failing_step != 0 ? BIFUN_OUT_OF_MEMORY : BIFUN_OK;
                zqengine::fail_step(failing_step);
                EXPECT_EQ(into_row(&environment, memory, &column->column, 1, &source), status);
                zqengine::fail_step(failing_step);
                EXPECT_EQ(into_value(&environment, memory, &target, &source), status);
                for (const bifun_string& value : {row, target}) {
                    EXPECT_TRUE(value.length == expected.size() && value.trailing_blanks == 0 && flag == 1);
                    EXPECT_TRUE(status != 0 || std::string(value.data, value.data + value.length) == expected);
                }
            }
        }
    }
    bifun_string same = {2, 3, nullptr};
    EXPECT_EQ(into_value(&environment, memory, &same, &same), 0);
    EXPECT_TRUE(same.length == 2 && same.trailing_blanks == 3 && same.data == nullptr);
}

} // namespace
