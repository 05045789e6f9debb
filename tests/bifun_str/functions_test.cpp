// The string functions: an example of each rule, where the sides of trimming differ on purpose, patterns of all lengths, malformed texts,
// statuses; and the exported operations on single values.

#include <dlfcn.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "bop/bifun.h"
#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"
#include "engine/charset.h"
#include "engine/memory.h"
#include "tests/bifun_str/string_model.h"
#include "tests/contract/each_engine.h"

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
using each_engine::expect_results;
using each_engine::with_each_engine;
using string_model::value;

class StringFunctions : public testing::Test {
  protected:
    void SetUp() override { use(ZQ_CHARSET_UTF8); }
    static void use(std::uint32_t charset, std::uint32_t mode = 0, std::uint32_t case_sensitive = 1) {
        contract::set_up({.compatible_mode = mode, .charset_code = charset, .case_sensitive = case_sensitive});
    }
};

using Trim = StringFunctions;
using Substring = StringFunctions;

// ---- trimming ---------------------------------------------------------------------------------------------------------

TEST_F(Trim, Sides) {
    expect_results({
        // A character stays where blanks are behind it.
        "btrim_vaa_str | 0 | xxaxbxx xax_ xxx__ ___ éé一aé | x x x x é | [1] axb ax_ __ ___ 一a",
        "btrim_vaa_str | 579 | xab__ xax ab__ | x x _ | [1] ab__ ax ab__",
        "btrim_vaa_str | 580 | xaxx xax_ ab__ | x x _ | [1] xa xax_ ab",
        "btrim_vva_str | 581 | x*49&a | x | [1] a",
        "btrim_vav_str | -1 | xax | x | [1] a",
        "bltrim_aa_str | xyxab__ xx__ ___ ab_ éa一b | xy x x '' 一aé | [1] ab__ __ ___ ab_ b",
        "bltrim_av_str | xyab | x*47&y | [1] ab",
        "bltrim_av_str | xyab | x*48&y | [1] ab",
        "brtrim_aa_str | abxyx axx__ ___ abx__ ab__ bé一é | xy x x x_ '' 一é | [1] ab axx__ ___ ab ab__ b",
        "brtrim_av_str | abxy | x*60&y | [1] ab",
        "brtrim_va_str | a*60&xyx | xy | [1] a*60",
    });
}

// With a stored blank or other whitespace, which is tab to carriage return.
TEST_F(Trim, Whitespace) {
    const value blank = {"", 1};
    const struct {
        const char* symbol;
        std::vector<value> arguments;
        const char* result;
    } cases[] = {
        {"btrim_vaa_str", {0, {"\t\n\v\f\r ab\t", 3}, blank}, "'ab\\x09'"},
        {"btrim_vaa_str", {0, {"\x08\x0E", 1}, blank}, "'\\x08\\x0E'"},
        {"btrim_vaa_str", {0, {" xax", 1}, "x"}, "' xax'+1"},
        {"btrim_vaa_str", {0, " xax", "x"}, "' xa'"},
        {"btrim_vaa_str", {0, "\tx\t", "\t"}, "'\\x09x'"},
        {"btrim_def_a_str", {{"\t ab ", 2}}, "'ab '"},
        // From the left blanks alone take no tabs with them, other characters are not looked at behind whitespace, a set with whitespace
        // takes all of it first.
        {"bltrim_def_a_str", {{" \tab", 2}}, "'\\x09ab'+2"},
        {"bltrim_def_a_str", {{"  ", 2}}, "''+2"},
        {"btrim_vaa_str", {579, " xab", "x"}, "=?"},
        {"bltrim_aa_str", {"\txab", "x"}, "=?"},
        {"bltrim_aa_str", {"\t xab", {"x", 1}}, "'ab'"},
        {"bltrim_aa_str", {{" x xa", 1}, {"x", 1}}, "' xa'+1"},
        {"bltrim_aa_str", {{"\t x", 3}, {"x", 1}}, "''"},
        {"bltrim_aa_str", {{"x\tx a", 1}, "x\t"}, "' a'+1"},
        {"brtrim_def_a_str", {{"ab ", 3}}, "'ab '"},
        {"brtrim_aa_str", {{"abx x", 2}, {"x", 1}}, "'abx '"},
        {"brtrim_aa_str", {{"abx", 2}, "\tx"}, "'ab'"},
    };
    with_each_engine([&] {
        for (const auto& c : cases) {
            const bifun::entry_point& entry = contract::entry_of(c.symbol);
            EXPECT_EQ(string_model::call_strings(entry, {c.arguments}).rows[0], c.result) << shown(entry, c.arguments);
        }
    });
}

TEST_F(Trim, TheSetOfTrimIsOneCharacter) {
    expect_results({
        "btrim_vaa_str | 0 | xax NULL xbx xcx | x xy xy x | [0] a NULL NULL ? status -6109",
        "btrim_vaa_str | 579 | xyx | x_ | [0] NULL status -6109",
        "btrim_vaa_str | 580 | ___ | __ | [0] NULL status -6109",
        "btrim_vva_str | 580 | xax | x NULL xy x | [0] xa NULL NULL ? status -6109",
        "btrim_vva_str | 0 | xyx | éé | [0] NULL status -6109",
        "btrim_vav_str | 0 | xax xbx | xy | [0] NULL NULL status -6109",
        // Of an empty text nothing is to be trimmed, by an empty set neither: a constant is checked all the same.
        "btrim_vaa_str | 0 | '' xyx__ | xy '' | [1] '' xyx__",
        "btrim_vva_str | 579 | '' | xy | [1] ''",
        "btrim_vva_str | 579 | xyx__ | '' | [1] xyx__",
        "btrim_vav_str | 0 | '' | xy | [0] NULL status -6109",
        "btrim_vav_str | 0 | xyx | '' | [0] NULL status -6109",
        "bltrim_va_str | '' | x NULL '' | [1] '' '' ''",
        "bltrim_va_str | xa_ | x NULL '' | [0] a_ NULL xa_",
        "brtrim_va_str | '' | x NULL '' | [0] '' NULL ''",
    });
}

// Texts that are the same backwards, so that it cannot be seen whether the second one has been done.
TEST_F(Trim, AReversalThatFailsStopsTheBatch) {
    for (const int failing : {1, 2}) {
        for (const char* const symbol : {"btrim_vaa_str", "btrim_vav_str", "btrim_vva_str"}) {
            reversals_to_failure = failing;
            EXPECT_EQ(evaluate({symbol, {"580", "éxé", "é"}, {}}), "[0] NULL status -6108") << symbol << failing;
            EXPECT_EQ(reversals_to_failure, 0);
        }
    }
    use(ZQ_CHARSET_GB18030);
    expect_results({"brtrim_aa_str | A\x81 | A | [0] NULL status -6108", "btrim_vaa_str | 0 | AA\x81 | A | [1] \x81"});
    use(ZQ_CHARSET_UTF8);
    reversals_to_failure = 3;
    EXPECT_EQ(evaluate({"brtrim_av_str", {"NULL é_ xé éé é", "é"}, {}}), "[0] NULL é_ x NULL ? status -6108");
}

// ---- parts ------------------------------------------------------------------------------------------------------------

TEST_F(Substring, Parts) {
    expect_results({
        "bsubstr_aaa_str | ab___ ab___ ab___ ab___ ab___ ab___ ab___ '' | 2 3 5 6 0 -4 -6 0 | 3 2 1 1 1 2 9 1 | [0] b__ __ _ '' a b_ '' ''",
        "bsubstr_aaa_str | é一x é一__ a\xE4\xB8 | -3 2 2 | 1 2 1 | [0] é 一_ \xE4", // each byte of a cut character is one
        // Blanks are in place of cut characters. All trailing blanks stay with stored bytes.
        "bsubstrb_avv_str | é一x | 2 | 4 | [0]  一",
        "bsubstrb_avv_str | é一x | 4 | 1 | [0]  ",
        "bsubstrb_avv_str | a\xC3 | 2 | 1 | [0] \xC3",
        "bsubstrb_avv_str | ab___ | 1 | 1 | [0] a___",
        "bsubstrb_avv_str | ab___ | 3 | 2 | [0] __",
        "bsubstrb_def_av_str | ab___ é一x | -4 | [1] b___ 一x",
        "bleftstr_av_str | ab___ a é一x | 3 | [1] ab_ a é一x",
        "brightstr_av_str | ab___ é一x '' | 2 | [1] __ 一x ''",
        "bleftstr_av_str | NULL ab cd | -1 | [0] NULL NULL NULL status -6803",
        "brightstr_av_str | ab cd | -2147483648 | [0] NULL NULL status -6803",
    });
}

TEST_F(Substring, NegativeLengths) {
    expect_results({
        "bsubstr_aaa_str | ab cd ef | 1 1 1 | 1 -1 2 | [0] a NULL ef",
        "bsubstr_aav_str | ab NULL ef ef | 1 1 9 -3 | -1 | [0] NULL NULL '' ''",
        "bsubstrb_avv_str | ab NULL '' | 1 | -1 | [0] NULL NULL ''",
    });
    use(ZQ_CHARSET_UTF8, 1);
    expect_results({
        "bsubstr_aaa_str | ab cd ef | 1 1 1 | 1 -1 2 | [0] a NULL ? status -6110",
        "bsubstr_aav_str | NULL ab cd | 1 9 1 | -1 | [0] NULL '' NULL status -6110",
        "bsubstrb_avv_str | NULL '' ab cd | 1 | -1 | [0] NULL '' NULL ? status -6803",
    });
}

TEST_F(Substring, SubstringIndex) {
    expect_results({
        "bsubstr_index_avv_str | www.bifun.org www '' .. NULL | . | 2 | [0] www.bifun www '' . NULL",
        "bsubstr_index_aav_str | www.bifun.org . aaaa é一é一 | . . aa 一 | -2 | [1] bifun.org . a é一",
        // Blanks are characters, and results have them in full.
        "bsubstr_index_avv_str | a___ | _ | 3 | [1] a  ",
        "bsubstr_index_aav_str | a___ | '' | 1 | [1] ''",
        "bsubstr_index_avv_str | a&.*70&b&.*70&c | .*70 | -2 | [1] b&.*70&c",
    });
}

TEST_F(Substring, ReversalsThatFail) {
    // Of the text, of the delimiter, and of what lies behind it.
    const char* const results[] = {"[0] NULL status -6108", "[0] NULL status -6108", "[1] ''"};
    for (int failing = 1; failing <= 3; ++failing) {
        reversals_to_failure = failing;
        EXPECT_EQ(evaluate({"bsubstr_index_avv_str", {"aé一éb", "é", "-1"}, {}}), results[failing - 1]) << failing;
        reversals_to_failure = 0;
    }
    use(ZQ_CHARSET_GB18030);
    expect_results({"bsubstr_index_aav_str | A\x81 | A | -1 | [0] NULL status -6108"});
}

// ---- searching --------------------------------------------------------------------------------------------------------

class Search : public StringFunctions {
  protected:
    void TearDown() override {
        zqengine::fail_step(0);
        rt_memobj_destroy(&environment, memory);
    }

    bifun_environment environment;
    bifun_memory_object* memory = rt_memobj_create_ex(&environment, 0, 4096, __FILE__, __LINE__);
};

TEST_F(Search, Places) {
    expect_results({
        "binstr_def2_aa_str | éa一é一 ab___ ab___ ab___ ab___ '' | 一 b__ b____ ___ _ a | [0] 3 2 0 3 3 0",
        "binstr_def1_avv_str | abab ab ab___ | b | 3 | [0] 4 0 0",
        // They overlap. Backwards the whole occurrence lies at or before the start.
        "binstr_avvv_str | aaaa aaa aab | aa | 1 | 2 | [0] 2 2 0",
        "binstr_avvv_str | aaaa aaa abaab | aa | -2 | 1 | [0] 2 1 3",
        "binstr_avvv_str | ab___ | _ | -1 | 3 | [0] 3",
        "binstrb_avvv_str | éa一é一 一 | 一 | 4 | 1 | [0] 4 0",
        "binstrb_avvv_str | éa一é一 一 | 一 | -3 | 1 | [0] 4 0",
        "bposition_va_str | 一 | éa一 一 | [0] 3 1",
        "blocate_aav_str | a ab __ | éaa ab ab___ | 2 | [0] 2 0 3",
        "blocate_aav_str | a | aé | -1 | [0] 0",
    });
}

TEST_F(Search, PatternsWithoutCharactersAndOccurrencesBelowOne) {
    expect_results({
        "binstr_avvv_str | a NULL '' | '' | 1 | 0 | [0] NULL NULL NULL",
        "binstr_avvv_str | a NULL | a | 1 | 0 | [0] NULL NULL status -6803",
        "binstrb_avvv_str | a NULL | a | -1 | -2147483648 | [0] NULL NULL status -6803",
        "binstr_def2_aa_str | a b c | a '' NULL | [0] 1 NULL NULL",
    });
}

// The algorithm changes behind 31 bytes, the place of its table behind 256, that of a constant's bytes behind 48.
TEST_F(Search, PatternsOfAllLengths) {
    const bifun_settings settings = {0, ZQ_CHARSET_UTF8, 1};
    for (const std::size_t length : {1U, 2U, 30U, 31U, 32U, 48U, 49U, 255U, 256U, 257U, 1000U}) {
        for (const std::string_view unit : {"a", "aab", "é"}) {
            std::string periodic;
            while (periodic.size() < length) {
                periodic += unit;
            }
            for (const std::uint32_t blanks : {0U, 1U}) {
                const value pattern = {periodic, blanks};
                const value text = {periodic + std::string(unit) + "b" + std::string(blanks, ' ') + periodic, blanks + 1};
                for (const char* const symbol : {"binstr_avvv_str", "binstrb_avvv_str"}) {
                    const bifun::entry_point& entry = contract::entry_of(symbol);
                    for (const std::int32_t start : {1, -1, -2}) {
                        const std::vector<value> arguments = {text, pattern, start, 2};
                        EXPECT_EQ(string_model::call_strings(entry, {arguments}).rows[0],
                                  string_model::row_of(settings, entry.builtin, arguments))
                            << symbol << ", " << unit << " over " << length << ", " << blanks << " blanks, from " << start;
                    }
                }
            }
        }
    }
}

TEST_F(Search, MalformedTextsAndPatterns) {
    use(ZQ_CHARSET_GB18030);
    expect_results({
        "binstr_avvv_str | A\x81 | A | -1 | 1 | [0] NULL status -6108", // would become another character backwards
        "binstr_avvv_str | AB | A\x81 | -1 | 1 | [0] NULL status -6108",
        "binstr_avvv_str | \2010\2010 | \2010\x81 | 1 | 1 | [0] 1", // the beginning of a character
        "binstr_avvv_str | \2010\2010 | \2010\x81 | -1 | 1 | [0] 1",
        "binstr_def2_av_str | A\x81 \201AA | \x81 | [0] 2 1",
        "bposition_va_str | 0\x81 | \2010\20100 | [0] 0",
    });
    use(ZQ_CHARSET_UTF8);
    for (const int failing : {1, 2}) {
        zq_engine_statements.ascii_is_single_byte = failing == 1;
        reversals_to_failure = failing;
        EXPECT_EQ(evaluate({"binstrb_avvv_str", {"éa", "é", "-1", "1"}, {}}), "[0] NULL status -6108") << failing;
        reversals_to_failure = 0;
    }
    zq_engine_statements.ascii_is_single_byte = 1;
}

TEST_F(Search, CaseFolding) {
    expect_results({"binstr_def2_av_str | ABC ABCb | b | [0] 0 4", "bposition_va_str | É | aé | [0] 0"});
    use(ZQ_CHARSET_UTF8, 0, 0);
    expect_results({
        "binstr_def2_aa_str | ABC aBc aé A__ | b BC É a_ | [0] 2 2 2 1",
        // Two small letters with one capital: folded to capitals they are the same, to small letters they are not.
        "binstr_def2_av_str | x\u00B5 | \u03BC | [0] 2",
        "binstr_def2_aa_str | x\u00B5 | \u03BC | [0] 2",
        "binstrb_def2_av_str | x\u00B5 | \u03BC | [0] 2",
        "bposition_va_str | \u03BC | x\u00B5 | [0] 2",
        "binstr_def1_avv_str | x\u00B5 | \u03BC | 1 | [0] 0",
        "binstr_avvv_str | x\u00B5 | \u03BC | -1 | 1 | [0] 0",
        "binstrb_avvv_str | x\u00B5 | \u03BC | 1 | 1 | [0] 0",
        // LOCATE takes texts as they are.
        "blocate_def_aa_str | b B | ABC aBc | [0] 0 2",
    });
}

// ---- the searches of one text ------------------------------------------------------------------------------------------

struct one_text_case {
    std::string text, pattern;
    std::int32_t start, occurrence, status;
    std::uint32_t position;
};

TEST_F(Search, OfOneText) {
    const auto search_low = reinterpret_cast<decltype(&ifun_instr_low)>(contract::library_symbol("ifun_instr_low"));
    // The case, the offset, what the text and the pattern are afterwards.
    struct {
        one_text_case given;
        std::uint32_t offset;
        const char *text_after, *pattern_after;
    } cases[] = {{{"éabab", "ab", 1, 2, 0, 4}, 4, "éabab", "ab"},
                 {{"éabab", "ab", 3, 1, 0, 4}, 4, "éabab", "ab"},
                 {{"éabab", "ab", -1, 2, 0, 2}, 2, "babaé", "ba"},
                 {{"éabab", "ab", -5, 1, 0, 0}, 7, "babaé", "ba"},
                 {{"éabab", "é", -1, 1, 0, 1}, 0, "babaé", "é"},
                 {{"ab", "abc", 1, 1, 0, 0}, 7, "ab", "abc"},
                 {{"", "a", 1, 1, 0, 0}, 7, "", "a"},
                 {{"éa", "a", 3, 1, 0, 0}, 7, "éa", "a"},
                 {{"éa", "éa", 1, 1, 0, 1}, 0, "éa", "éa"}};
    std::uint32_t found = 7;
    const auto search = [&](one_text_case& c, std::uint32_t& offset) {
        return search_low(&environment, memory, reinterpret_cast<std::uint8_t*>(c.text.data()), static_cast<std::uint32_t>(c.text.size()),
                          reinterpret_cast<std::uint8_t*>(c.pattern.data()), static_cast<std::uint32_t>(c.pattern.size()), c.start,
                          static_cast<std::uint32_t>(c.occurrence), &found, &offset);
    };
    for (auto& [c, offset, text_after, pattern_after] : cases) {
        std::uint32_t found_offset = 7;
        EXPECT_EQ(search(c, found_offset), 0);
        EXPECT_EQ(found, c.position) << c.text << ", " << c.pattern << ", " << c.start;
        EXPECT_TRUE(offset == 7 || found_offset == offset) << found_offset;
        EXPECT_TRUE(c.text == text_after && c.pattern == pattern_after) << c.text << ", " << c.pattern;
    }
    one_text_case failing = {"éa", std::string(257, 'b'), 1, 1, 0, 0};
    for (const int step : {1, 2}) {
        zqengine::fail_step(step);
        EXPECT_EQ(search(failing, found), BIFUN_OUT_OF_MEMORY);
    }
    reversals_to_failure = 1;
    failing = {"éa", "a", -1, 1, 0, 0};
    EXPECT_EQ(search(failing, found), -6108);
}

TEST_F(Search, OfOneTextWhateverItsCase) {
    const auto search =
        reinterpret_cast<decltype(&binstr_avvv_process_case_sencitive)>(contract::library_symbol("binstr_avvv_process_case_sencitive"));
    const one_text_case cases[] = {{"aBAb", "ab", 1, 2, 0, 3},      {"aBAb", "AB", -1, 2, 0, 1},   {"aBAb", "b", 0, 1, 0, 0},
                                   {"éÉ", "É", 2, 1, 0, 2},         {"aBAb", "a", 1, 0, -6803, 0}, {"ab", "a", 1, -1, -6803, 0},
                                   {"\u00B5", "\u03BC", 1, 1, 0, 0}};
    use(ZQ_CHARSET_UTF8, 0, 0);
    for (const one_text_case& c : cases) {
        std::uint32_t position = 7;
        EXPECT_EQ(search(&environment, memory, reinterpret_cast<const std::uint8_t*>(c.text.data()),
                         static_cast<std::uint32_t>(c.text.size()), reinterpret_cast<const std::uint8_t*>(c.pattern.data()),
                         static_cast<std::uint32_t>(c.pattern.size()), c.start, c.occurrence, &position),
                  c.status);
        EXPECT_TRUE(c.status != 0 || position == c.position) << c.text << ", " << c.pattern << ": " << position;
    }
}

// ---- operations on single values --------------------------------------------------------------------------------------

template <class Function> Function* exported(const char* name) { return reinterpret_cast<Function*>(contract::library_symbol(name)); }

// In a block of exactly its size.
struct block {
    explicit block(std::string_view text) : bytes(new std::uint8_t[text.size()]), length(static_cast<std::uint32_t>(text.size())) {
        std::memcpy(bytes.get(), text.data(), text.size());
    }
    std::unique_ptr<std::uint8_t[]> bytes;
    std::uint32_t length;
};

using StringValues = Search;

// A character that is cut off is stepped over as if whole.
TEST_F(StringValues, CharactersOfAText) {
    const auto gather = exported<decltype(zq_gather_char_info)>("zq_gather_char_info");
    std::uint32_t count = 7;
    std::uint32_t* lengths;
    std::uint8_t** starts;
    const struct {
        std::uint32_t charset;
        std::string_view text;
        std::vector<std::uint32_t> lengths;
    } cases[] = {{ZQ_CHARSET_UTF8, "", {}},
                 {ZQ_CHARSET_UTF8, "aé一\U0001F600a\xE4\xB8", {1, 2, 3, 4, 1, 3}},
                 {ZQ_CHARSET_GB18030, "\x81\x41\x81\x30\x81\x30\x41\x81\x30\x81", {2, 4, 1, 4}},
                 {ZQ_CHARSET_EUC_KR, "\xB0\xA1\xB0", {2, 2}}};
    for (const auto& c : cases) {
        use(c.charset);
        const block text(c.text);
        ASSERT_EQ(gather(&environment, memory, text.bytes.get(), static_cast<std::int32_t>(text.length), &count, &lengths, &starts), 0);
        EXPECT_EQ(std::vector(lengths, lengths + count), c.lengths) << c.text;
        const std::uint8_t* expected = text.bytes.get();
        for (std::uint32_t i = 0; i < count; expected += lengths[i], ++i) {
            EXPECT_EQ(starts[i], expected);
        }
    }
    EXPECT_EQ(gather(&environment, memory, nullptr, -1, &count, &lengths, &starts), 0);
    EXPECT_EQ(count, 0U);
    for (const int step : {1, 2}) {
        const block text("ab");
        zqengine::fail_step(step);
        EXPECT_EQ(gather(&environment, memory, text.bytes.get(), 2, &count, &lengths, &starts), BIFUN_OUT_OF_MEMORY);
    }
}

TEST_F(StringValues, PositionOfACharacter) {
    const struct {
        std::uint32_t charset;
        std::string_view text, character;
        std::uint32_t position;
    } cases[] = {{ZQ_CHARSET_UTF8, "", "a", 0},
                 {ZQ_CHARSET_UTF8, "ba", "a", 2},
                 {ZQ_CHARSET_UTF8, "ab一c一", "一", 3},
                 {ZQ_CHARSET_UTF8, "一ab一c", "c", 5},
                 {ZQ_CHARSET_UTF8, "一丁", "丁", 2},
                 {ZQ_CHARSET_UTF8, "a\xE4\xB8", "一", 0}, // cut off
                 {ZQ_CHARSET_GB18030, "\201AA", "A", 2},
                 {ZQ_CHARSET_GB18030, "\2010\20100", "0", 2},
                 {ZQ_CHARSET_GB18030, "A\x81", "\201A", 0},
                 {ZQ_CHARSET_GB18030, "A\2010", "\2010\2010", 0},
                 {ZQ_CHARSET_EUC_KR, "\xB0\xA1\xB0", "\xB0\xA1", 1}};
    using search = decltype(bifun_search_char_in_str);
    static_assert(std::is_same_v<search, decltype(bifun_search_char_in_str_ex)>);
    for (const auto& c : cases) {
        use(c.charset);
        const block text(c.text);
        const block character(c.character);
        for (const char* const name : {"bifun_search_char_in_str", "bifun_search_char_in_str_ex"}) {
            std::uint32_t position = 7;
            exported<search>(name)(text.bytes.get(), text.length, character.bytes.get(), character.length, &position);
            EXPECT_EQ(position, c.position) << c.text << ", " << c.character;
        }
    }
}

TEST_F(StringValues, BlanksAreWrittenOut) {
    const auto into_row = exported<decltype(bifun_colstr_assign_with_blank)>("bifun_colstr_assign_with_blank");
    const auto into_value = exported<decltype(bifun_colstr_assign_with_blank_no_clear)>("bifun_colstr_assign_with_blank_no_clear");
    const zqengine::column_pointer column(zqengine::create_column(bifun::value_type::VARCHAR, 2));
    const auto full_text = [](const bifun_string& value) {
        EXPECT_EQ(value.trailing_blanks, 0U);
        return std::string(reinterpret_cast<const char*>(value.data), value.length);
    };
    bifun_string target = {7, 7, nullptr};
    for (const std::string_view text : {"", "ab", "é"}) {
        for (const std::uint32_t blanks : {0U, 1U, 5000U}) {
            const block stored(text);
            const bifun_string source = {stored.length, blanks, stored.length == 0 ? nullptr : stored.bytes.get()};
            const std::string expected = std::string(text) + std::string(blanks, ' ');
            column->data.null_flags[1] = 0;
            ASSERT_EQ(into_row(&environment, memory, &column->column, 1, &source), 0);
            EXPECT_EQ(column->data.null_flags[1], 1);
            EXPECT_EQ(full_text(zqengine::values_of<bifun_string>(*column)[1]), expected);
            ASSERT_EQ(into_value(&environment, memory, &target, &source), 0);
            EXPECT_EQ(full_text(target), expected);
        }
    }
    const block stored("ab");
    bifun_string value = {2, 3, stored.bytes.get()};
    EXPECT_EQ(into_value(&environment, memory, &value, &value), 0);
    EXPECT_TRUE(value.length == 2 && value.trailing_blanks == 3 && value.data == stored.bytes.get());

    // The lengths are set before memory is asked for.
    zqengine::fail_step(1);
    EXPECT_EQ(into_row(&environment, memory, &column->column, 0, &value), BIFUN_OUT_OF_MEMORY);
    EXPECT_EQ(zqengine::values_of<bifun_string>(*column)[0].length, 5U);
    EXPECT_EQ(column->data.null_flags[0], 1);
    target = {7, 7, nullptr};
    zqengine::fail_step(1);
    EXPECT_EQ(into_value(&environment, memory, &target, &value), BIFUN_OUT_OF_MEMORY);
    EXPECT_TRUE(target.length == 5 && target.trailing_blanks == 0);
}

} // namespace
