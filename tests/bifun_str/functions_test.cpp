// What the model of the string functions has no answer for: malformed texts, statuses, reversals that fail, where positions are too; and
// the exported operations on single values.

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
#include "tests/bifun_str/string_model.h"
#include "tests/contract/exact_block.h"
#include "tests/contract/text_case.h"

namespace {
int reversals_to_failure = 0; // 1: the next one fails; 0: none
}

// Replaces the engine's operation in this program.
extern "C" __attribute__((visibility("default"))) std::uint8_t* zq_mbsrev_ex(std::uint8_t* text, std::uint32_t length) {
    static auto* const reverse = reinterpret_cast<decltype(&zq_mbsrev_ex)>(dlsym(RTLD_NEXT, "zq_mbsrev_ex"));
    return reversals_to_failure > 0 && --reversals_to_failure == 0 ? nullptr : reverse(text, length);
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
