// INSTR, INSTRB, POSITION, LOCATE and the searches of one text: boundaries, patterns of all lengths, case and statuses.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "bop/bifun.h"
#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"
#include "engine/memory.h"
#include "tests/bifun_str/failing_reversal.h"
#include "tests/bifun_str/string_calls.h"
#include "tests/contract/text_case.h"

namespace {

using string_model::call_strings;
using string_model::expect_rows;
using string_model::row_case;
using string_model::value;

constexpr std::int32_t smallest = INT32_MIN, largest = INT32_MAX;
const value empty = {"", 0};
const value padded = {"ab", 3};

class Search : public testing::Test {
  protected:
    void SetUp() override { use(ZQ_CHARSET_UTF8, 1); }
    void TearDown() override { rt_memobj_destroy(&environment, memory); }
    static void use(std::uint32_t charset, std::uint32_t case_sensitive) {
        contract::set_up({.compatible_mode = 0, .charset_code = charset, .case_sensitive = case_sensitive});
    }

    bifun_environment environment;
    bifun_memory_object* memory = rt_memobj_create_ex(&environment, 0, 4096, __FILE__, __LINE__);
};

TEST_F(Search, Places) {
    const row_case cases[] = {
        {"binstr_avvv_str", {"corporate floor", "or", 3, 2}, "14"},
        {"binstr_avvv_str", {"corporate floor", "or", -3, 2}, "2"},
        {"binstr_def1_avv_str", {"corporate floor", "or", 3}, "5"},
        {"binstr_avvv_str", {"abc", "c", 3, 1}, "3"},
        {"binstr_avvv_str", {"abc", "c", 4, 1}, "0"},
        {"binstr_avvv_str", {"abc", "a", largest, 1}, "0"},
        {"binstr_avvv_str", {"abc", "a", 1, largest}, "0"},
        {"binstr_avvv_str", {"abc", "a", 0, 1}, "0"},
        {"binstr_avvv_str", {"abc", "a", -3, 1}, "1"},
        {"binstr_avvv_str", {"abc", "a", -4, 1}, "0"},
        {"binstr_avvv_str", {"abc", "a", smallest, 1}, "0"},
        {"binstr_avvv_str", {"abc", "abcd", 1, 1}, "0"},
        {"binstr_avvv_str", {"abc", "abcd", -1, 1}, "0"},
        {"binstr_avvv_str", {empty, "a", -1, 1}, "0"},
        // Backwards the whole occurrence lies at or before the start.
        {"binstr_avvv_str", {"abcabc", "bc", -1, 1}, "5"},
        {"binstr_avvv_str", {"abcabc", "bc", -2, 1}, "2"},
        {"binstr_avvv_str", {"abcabc", "bc", -5, 1}, "0"},
        // They overlap.
        {"binstr_avvv_str", {"aaaa", "aa", 1, 3}, "3"},
        {"binstr_avvv_str", {"aaaa", "aa", 1, 4}, "0"},
        {"binstr_avvv_str", {"aaaa", "aa", -1, 2}, "2"},
        {"binstr_avvv_str", {"aaaa", "aa", -2, 2}, "1"},
        {"binstr_avvv_str", {"éa一é一", "一", -2, 1}, "3"},
        {"binstr_avvv_str", {"éa一é一", "一", 4, 1}, "5"},
        {"binstrb_avvv_str", {"éa一é一", "一", 5, 1}, "9"},
        {"binstrb_avvv_str", {"éa一é一", "一", 4, 1}, "4"},
        {"binstrb_avvv_str", {"éa一é一", "一", -3, 1}, "4"},
        {"binstrb_def2_av_str", {"éa", "a"}, "3"},
        {"binstrb_def1_avv_str", {"éa", "a", -1}, "3"},
        {"bposition_va_str", {"一", "éa一"}, "3"},
        {"blocate_def_aa_str", {"一", "éa一"}, "3"},
        {"blocate_def_va_str", {"ab", "ab"}, "1"},
        {"blocate_def_av_str", {"abc", "ab"}, "0"},
        {"blocate_aav_str", {"a", "éaa", 3}, "3"},
        {"blocate_vav_str", {"a", "éaa", 4}, "0"},
        {"blocate_avv_str", {"a", "aé", 0}, "0"},
        {"blocate_aav_str", {"a", "aé", -1}, "0"},
        {"blocate_aav_str", {"a", "aé", largest}, "0"},
    };
    expect_rows(cases);
}

TEST_F(Search, BlanksAreCharacters) {
    const row_case cases[] = {
        {"binstr_def2_av_str", {padded, {"b", 2}}, "2"},    {"binstr_def2_av_str", {padded, {"b", 4}}, "0"},
        {"binstr_def2_av_str", {padded, {"", 1}}, "3"},     {"binstr_def2_av_str", {padded, {"", 3}}, "3"},
        {"binstr_def2_av_str", {padded, {"", 4}}, "0"},     {"binstr_def2_av_str", {padded, "b "}, "2"},
        {"binstr_def2_aa_str", {{"é ", 2}, {"", 3}}, "2"},  {"binstr_def2_aa_str", {{"ab c", 2}, {"", 1}}, "3"},
        {"binstrb_def2_av_str", {{"é", 2}, {"", 2}}, "3"},  {"bposition_va_str", {{"", 2}, {" b ", 1}}, "3"},
        {"binstr_avvv_str", {padded, {"", 1}, -1, 1}, "5"}, {"binstr_avvv_str", {padded, {"", 1}, -1, 3}, "3"},
        {"binstr_avvv_str", {padded, {"", 1}, -1, 4}, "0"}, {"binstr_avvv_str", {padded, "b", -4, 1}, "2"},
        {"binstr_avvv_str", {padded, "b", -5, 1}, "0"},     {"binstr_avvv_str", {padded, {"", 2}, 4, 1}, "4"},
        {"binstr_avvv_str", {padded, {"", 2}, 5, 1}, "0"},  {"binstr_avvv_str", {padded, {"b", 1}, 1, 1}, "2"},
        {"blocate_def_aa_str", {{"b", 3}, padded}, "2"},    {"blocate_aav_str", {{"", 2}, padded, 4}, "4"},
        {"blocate_vav_str", {" ", {"", 1}, 1}, "1"},
    };
    expect_rows(cases);
}

TEST_F(Search, PatternsWithoutCharactersAndOccurrencesBelowOne) {
    const contract::text_case batches[] = {
        {"binstr_avvv_str", {"a NULL ''", "''", "1", "0"}, "[0] NULL NULL NULL"},
        {"binstr_avvv_str", {"a NULL", "a", "1", "0"}, "[0] NULL NULL status -6803"},
        {"binstrb_avvv_str", {"a NULL", "a", "-1", "-2147483648"}, "[0] NULL NULL status -6803"},
        {"binstr_avvv_str", {"a", "a", "1", "NULL=0"}, "[0] NULL"},
        {"binstr_avvv_str", {"a", "a", "NULL", "1"}, "[0] NULL"},
        {"binstr_def1_avv_str", {"a b", "''", "1"}, "[0] NULL NULL"},
        {"binstr_def2_av_str", {"a b", "''"}, "[0] NULL NULL"},
        {"binstr_def2_aa_str", {"a b c", "a '' NULL"}, "[0] 1 NULL NULL"},
        {"binstrb_def2_av_str", {"a ''", "''"}, "[0] NULL NULL"},
        {"bposition_va_str", {"''", "a b"}, "[0] NULL NULL"},
        {"bposition_va_str", {"a", "ba NULL ''"}, "[0] 2 NULL 0"},
        {"blocate_def_aa_str", {"'' a NULL", "a a a"}, "[0] NULL 1 NULL"},
        {"blocate_def_va_str", {"''", "a"}, "[0] NULL"},
    };
    for (const contract::text_case& batch : batches) {
        EXPECT_EQ(contract::evaluate(batch), batch.result) << batch.symbol;
    }
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
                        EXPECT_EQ(call_strings(entry, {arguments}).rows[0], string_model::row_of(settings, entry.builtin, arguments))
                            << symbol << ", " << unit << " over " << length << ", " << blanks << " blanks, from " << start;
                    }
                }
            }
        }
    }
}

TEST_F(Search, BytesOfOtherCharactersAreNoOccurrence) {
    use(ZQ_CHARSET_GB18030, 1);
    const row_case cases[] = {
        {"binstr_def2_av_str", {"\2010\20100", "0"}, "2"},
        {"binstr_def2_aa_str", {"\2010\2010", "0"}, "0"},
        {"binstr_def2_av_str", {"\x81\x81\201A", "\201A"}, "2"},
        {"binstr_def2_av_str", {"\x81\x81\x81\x81\201A", "\x81\x81\x81\x81"}, "1"},
        {"binstr_avvv_str", {"A\201AA", "A", 2, 1}, "3"},
        {"binstr_avvv_str", {"A\201A", "A", -1, 1}, "1"},
        {"binstr_avvv_str", {"\x81\x81\201A", "\x81\x81", -1, 1}, "1"},
        {"binstrb_def2_av_str", {"\201AA", "A"}, "3"},
        {"binstrb_avvv_str", {"\201AA", "A", 2, 1}, "3"},
        {"blocate_def_aa_str", {"A", "\201AA"}, "2"},
        {"blocate_aav_str", {"A", "\201A\201A", 1}, "0"},
        {"bposition_va_str", {"0\x81", "\2010\20100"}, "0"},
    };
    expect_rows(cases);
}

TEST_F(Search, MalformedTextsAndPatterns) {
    use(ZQ_CHARSET_GB18030, 1);
    const row_case cases[] = {
        {"binstr_avvv_str", {"A\x81", "A", -1, 1}, "-6108 NULL"}, // would become another character backwards
        {"binstr_avvv_str", {"AB", "A\x81", -1, 1}, "-6108 NULL"},
        {"binstr_avvv_str", {"\2010\2010", "\2010\x81", 1, 1}, "1"}, // the beginning of a character
        {"binstr_avvv_str", {"\2010\2010", "\2010\x81", -1, 1}, "1"},
        {"binstr_def2_av_str", {"A\x81", "\x81"}, "2"},
    };
    expect_rows(cases);
    use(ZQ_CHARSET_UTF8, 1);
    for (const int failing : {1, 2}) {
        reversals_to_failure = failing;
        const row_case one[] = {{"binstrb_avvv_str", {"éa", "é", -1, 1}, "-6108 NULL"}};
        expect_rows(one, {failing == 1});
        reversals_to_failure = 0;
    }
}

TEST_F(Search, CaseFolding) {
    const row_case sensitive[] = {
        {"binstr_def2_av_str", {"ABC", "b"}, "0"},
        {"binstr_avvv_str", {"ABCb", "b", 1, 1}, "4"},
        {"bposition_va_str", {"É", "aé"}, "0"},
    };
    expect_rows(sensitive);
    use(ZQ_CHARSET_UTF8, 0);
    const row_case insensitive[] = {
        {"binstr_def2_av_str", {"ABC", "b"}, "2"},
        {"binstr_def2_aa_str", {"aBc", "BC"}, "2"},
        {"binstr_avvv_str", {"ABCb", "B", 1, 2}, "4"},
        {"binstr_avvv_str", {"ABCb", "bC", -1, 1}, "2"},
        {"binstr_def1_avv_str", {"ABC", "bc", 1}, "2"},
        {"binstrb_def2_av_str", {"éÉ", "É"}, "1"},
        {"binstrb_avvv_str", {"aÉ", "é", 1, 1}, "2"},
        {"bposition_va_str", {"É", "aé"}, "2"},
        {"binstr_def2_av_str", {{"A", 2}, {"a", 1}}, "1"},
        // Two small letters with one capital: folded to capitals they are the same, to small letters they are not.
        {"binstr_def2_av_str", {"x\u00B5", "\u03BC"}, "2"},
        {"binstr_def2_aa_str", {"x\u00B5", "\u03BC"}, "2"},
        {"binstrb_def2_av_str", {"x\u00B5", "\u03BC"}, "2"},
        {"bposition_va_str", {"\u03BC", "x\u00B5"}, "2"},
        {"binstr_def1_avv_str", {"x\u00B5", "\u03BC", 1}, "0"},
        {"binstr_avvv_str", {"x\u00B5", "\u03BC", -1, 1}, "0"},
        {"binstrb_avvv_str", {"x\u00B5", "\u03BC", 1, 1}, "0"},
        // LOCATE takes texts as they are.
        {"blocate_def_aa_str", {"b", "ABC"}, "0"},
        {"blocate_vav_str", {"B", "aBc", 1}, "2"},
    };
    expect_rows(insensitive);
}

// ---- the searches of one text ------------------------------------------------------------------------------------------

struct found {
    std::int32_t status;
    std::uint32_t position, offset;
    std::string text, pattern; // afterwards
};

found search_low(bifun_environment& environment, bifun_memory_object* memory, std::string text, std::string pattern, std::int32_t start,
                 std::uint32_t occurrence, std::int64_t failing_step = 0) {
    static const auto function = reinterpret_cast<decltype(&ifun_instr_low)>(contract::library_symbol("ifun_instr_low"));
    found result{0, 7, 7, std::move(text), std::move(pattern)};
    zqengine::fail_step(failing_step);
    result.status = function(&environment, memory, reinterpret_cast<std::uint8_t*>(result.text.data()),
                             static_cast<std::uint32_t>(result.text.size()), reinterpret_cast<std::uint8_t*>(result.pattern.data()),
                             static_cast<std::uint32_t>(result.pattern.size()), start, occurrence, &result.position, &result.offset);
    zqengine::fail_step(0);
    return result;
}

TEST_F(Search, OfOneText) {
    const struct {
        const char *text, *pattern;
        std::int32_t start;
        std::uint32_t occurrence, position, offset;
        const char *text_after, *pattern_after;
    } cases[] = {
        {"éabab", "ab", 1, 2, 4, 4, "éabab", "ab"},
        {"éabab", "ab", 3, 1, 4, 4, "éabab", "ab"},
        {"éabab", "ab", -1, 2, 2, 2, "babaé", "ba"},
        {"éabab", "ab", -5, 1, 0, 0, "babaé", "ba"},
        {"éabab", "é", -1, 1, 1, 0, "babaé", "é"},
        {"ab", "abc", 1, 1, 0, 0, "ab", "abc"},
        {"", "a", 1, 1, 0, 0, "", "a"},
        {"éa", "a", 3, 1, 0, 0, "éa", "a"},
        {"éa", "éa", 1, 1, 1, 0, "éa", "éa"},
    };
    for (const auto& c : cases) {
        const found found = search_low(environment, memory, c.text, c.pattern, c.start, c.occurrence);
        EXPECT_EQ(found.status, 0);
        EXPECT_EQ(found.position, c.position) << c.text << ", " << c.pattern << ", " << c.start;
        EXPECT_TRUE(c.position == 0 || found.offset == c.offset) << c.text << ", " << c.pattern << ", " << c.start;
        EXPECT_EQ(found.text, c.text_after);
        EXPECT_EQ(found.pattern, c.pattern_after);
    }
    EXPECT_EQ(search_low(environment, memory, "ab", "b", 1, 1, 1).status, BIFUN_OUT_OF_MEMORY);
    EXPECT_EQ(search_low(environment, memory, "ab", std::string(257, 'b'), 1, 1, 1).status, BIFUN_OUT_OF_MEMORY);
    EXPECT_EQ(search_low(environment, memory, "ab", std::string(257, 'b'), 1, 1, 2).status, BIFUN_OUT_OF_MEMORY);
    reversals_to_failure = 1;
    EXPECT_EQ(search_low(environment, memory, "éa", "a", -1, 1).status, -6108);
}

TEST_F(Search, OfOneTextWhateverItsCase) {
    const auto function =
        reinterpret_cast<decltype(&binstr_avvv_process_case_sencitive)>(contract::library_symbol("binstr_avvv_process_case_sencitive"));
    const struct {
        std::string_view text, pattern;
        std::int32_t start, occurrence, status;
        std::uint32_t position;
    } cases[] = {{"aBAb", "ab", 1, 2, 0, 3},    {"aBAb", "AB", -1, 2, 0, 1},  {"aBAb", "b", 0, 1, 0, 0},       {"éÉ", "É", 2, 1, 0, 2},
                 {"aBAb", "a", 1, 0, -6803, 0}, {"ab", "a", 1, -1, -6803, 0}, {"\u00B5", "\u03BC", 1, 1, 0, 0}};
    use(ZQ_CHARSET_UTF8, 0);
    for (const auto& c : cases) {
        std::uint32_t position = 7;
        EXPECT_EQ(function(&environment, memory, reinterpret_cast<const std::uint8_t*>(c.text.data()),
                           static_cast<std::uint32_t>(c.text.size()), reinterpret_cast<const std::uint8_t*>(c.pattern.data()),
                           static_cast<std::uint32_t>(c.pattern.size()), c.start, c.occurrence, &position),
                  c.status);
        EXPECT_TRUE(c.status != 0 || position == c.position) << c.text << ", " << c.pattern << ": " << position;
    }
}

} // namespace
