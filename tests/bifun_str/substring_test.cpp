// SUBSTR, SUBSTRB, LEFT, RIGHT and SUBSTRING_INDEX: boundaries and statuses.

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "tests/bifun_str/failing_reversal.h"
#include "tests/bifun_str/string_calls.h"
#include "tests/contract/text_case.h"

namespace {

using string_model::expect_rows;
using string_model::row_case;
using string_model::value;

constexpr std::int32_t smallest = INT32_MIN, largest = INT32_MAX;
const value empty = {"", 0};
const value padded = {"ab", 3};
const value mixed = "é一x"; // 2, 3 and 1 bytes

class Substring : public testing::Test {
  protected:
    void SetUp() override { use(0, ZQ_CHARSET_UTF8); }
    static void use(std::uint32_t mode, std::uint32_t charset) {
        contract::set_up({.compatible_mode = mode, .charset_code = charset, .case_sensitive = 1});
    }
};

TEST_F(Substring, Substr) {
    const row_case cases[] = {
        {"bsubstr_avv_str", {padded, 1, 1}, "'a'"},
        {"bsubstr_avv_str", {padded, 1, 2}, "'ab'"},
        {"bsubstr_avv_str", {padded, 2, 1}, "'b'"},
        {"bsubstr_avv_str", {padded, 2, 3}, "'b'+2"},
        {"bsubstr_avv_str", {padded, 2, 4}, "'b'+3"},
        {"bsubstr_avv_str", {padded, 1, largest}, "'ab'+3"},
        {"bsubstr_avv_str", {padded, 3, 2}, "''+2"},
        {"bsubstr_avv_str", {padded, 3, largest}, "''+3"},
        {"bsubstr_avv_str", {padded, 5, 1}, "''+1"},
        {"bsubstr_avv_str", {padded, 6, 1}, "''"},
        {"bsubstr_avv_str", {padded, largest, largest}, "''"},
        {"bsubstr_avv_str", {padded, 0, 1}, "'a'"},
        {"bsubstr_avv_str", {padded, -1, 1}, "''+1"},
        {"bsubstr_avv_str", {padded, -4, 2}, "'b'+1"},
        {"bsubstr_avv_str", {padded, -5, 1}, "'a'"},
        {"bsubstr_avv_str", {padded, -6, 9}, "''"},
        {"bsubstr_avv_str", {padded, smallest, largest}, "''"},
        {"bsubstr_avv_str", {padded, 1, 0}, "''"},
        {"bsubstr_avv_str", {empty, 0, 1}, "''"},
        {"bsubstr_avv_str", {empty, 1, 1}, "''"},
        // Where nothing can be taken the length does not count.
        {"bsubstr_avv_str", {padded, 1, -1}, "NULL"},
        {"bsubstr_avv_str", {padded, 5, smallest}, "NULL"},
        {"bsubstr_avv_str", {padded, 6, -1}, "''"},
        {"bsubstr_avv_str", {padded, -6, -1}, "''"},
        {"bsubstr_def1_av_str", {padded, -1}, "''+1"},
        {"bsubstr_def1_av_str", {padded, 2}, "'b'+3"},
        {"bsubstr_def1_aa_str", {padded, 6}, "''"},
        {"bsubstr_def2_a_str", {padded}, "'ab'+3"},
        {"bsubstr_def2_a_str", {{"", 2}}, "''+2"},
        {"bsubstr_ava_str", {mixed, 2, 1}, "'\\xE4\\xB8\\x80'"},
        {"bsubstr_aav_str", {mixed, -3, 1}, "'\\xC3\\xA9'"},
        {"bsubstr_aaa_str", {{"é一", 2}, 2, 2}, "'\\xE4\\xB8\\x80'+1"},
        {"bsubstr_aaa_str", {"a\xE4\xB8", 2, 1}, "'\\xE4'"}, // each byte of a cut character is one
    };
    expect_rows(cases);
}

TEST_F(Substring, NegativeLengths) {
    const contract::text_case null_rows[] = {
        {"bsubstr_aaa_str", {"ab cd ef", "1 1 1", "1 -1 2"}, "[0] a NULL ef"},
        {"bsubstr_aav_str", {"ab NULL ef", "1 1 9", "-1"}, "[0] NULL NULL ''"},
        {"bsubstrb_avv_str", {"ab NULL ''", "1", "-1"}, "[0] NULL NULL ''"},
    };
    for (const contract::text_case& batch : null_rows) {
        EXPECT_EQ(contract::evaluate(batch), batch.result) << batch.symbol;
    }
    use(1, ZQ_CHARSET_UTF8);
    const contract::text_case failing[] = {
        {"bsubstr_aaa_str", {"ab cd ef", "1 1 1", "1 -1 2"}, "[0] a NULL ? status -6110"},
        {"bsubstr_aav_str", {"NULL ab cd", "1 9 1", "-1"}, "[0] NULL '' NULL status -6110"},
        {"bsubstrb_avv_str", {"NULL '' ab cd", "1", "-1"}, "[0] NULL '' NULL ? status -6803"},
    };
    for (const contract::text_case& batch : failing) {
        EXPECT_EQ(contract::evaluate(batch), batch.result) << batch.symbol;
    }
}

TEST_F(Substring, Substrb) {
    const row_case cases[] = {
        {"bsubstrb_avv_str", {mixed, 1, 2}, "'\\xC3\\xA9'"},
        {"bsubstrb_avv_str", {mixed, 1, 1}, "' '"},
        {"bsubstrb_avv_str", {mixed, 2, 3}, "'   '"},
        {"bsubstrb_avv_str", {mixed, 2, 4}, "' \\xE4\\xB8\\x80'"},
        {"bsubstrb_avv_str", {mixed, 4, 3}, "'  x'"},
        {"bsubstrb_avv_str", {mixed, 4, 1}, "' '"}, // cut on both sides
        {"bsubstrb_def_av_str", {mixed, -2}, "' x'"},
        {"bsubstrb_def_av_str", {mixed, 7}, "''"},
        {"bsubstrb_def_av_str", {mixed, -7}, "''"},
        {"bsubstrb_avv_str", {"a\xC3", 2, 1}, "'\\xC3'"},
        {"bsubstrb_avv_str", {mixed, 1, 0}, "''"},
        // All blanks of a text stay with its stored bytes.
        {"bsubstrb_avv_str", {padded, 1, 1}, "'a'+3"},
        {"bsubstrb_avv_str", {padded, 0, largest}, "'ab'+3"},
        {"bsubstrb_avv_str", {padded, 3, 2}, "''+2"},
        {"bsubstrb_avv_str", {padded, -1, 9}, "''+1"},
        {"bsubstrb_def_av_str", {padded, -4}, "'b'+3"},
        {"bsubstrb_def_av_str", {{"", 2}, 1}, "''+2"},
    };
    expect_rows(cases);
    use(0, ZQ_CHARSET_GB18030);
    const row_case of_four_bytes[] = {
        {"bsubstrb_avv_str", {"\2010\20100", 2, 4}, "'   0'"},
        {"bsubstrb_avv_str", {"0\2010\2010", 1, 4}, "'0   '"},
    };
    expect_rows(of_four_bytes);
}

TEST_F(Substring, LeftAndRight) {
    const row_case cases[] = {
        {"bleftstr_av_str", {padded, 0}, "''"},
        {"bleftstr_av_str", {padded, 1}, "'a'"},
        {"bleftstr_av_str", {padded, 2}, "'ab'"},
        {"bleftstr_av_str", {padded, 3}, "'ab'+1"},
        {"bleftstr_av_str", {padded, largest}, "'ab'+3"},
        {"brightstr_av_str", {padded, 0}, "''"},
        {"brightstr_av_str", {padded, 1}, "''+1"},
        {"brightstr_av_str", {padded, 3}, "''+3"},
        {"brightstr_av_str", {padded, 4}, "'b'+3"},
        {"brightstr_av_str", {padded, 5}, "'ab'+3"},
        {"brightstr_av_str", {padded, largest}, "'ab'+3"},
        {"brightstr_av_str", {empty, 3}, "''"},
        {"bleftstr_av_str", {mixed, 2}, "'\\xC3\\xA9\\xE4\\xB8\\x80'"},
        {"brightstr_av_str", {mixed, 2}, "'\\xE4\\xB8\\x80x'"},
    };
    expect_rows(cases);
    const contract::text_case batches[] = {
        {"bleftstr_av_str", {"NULL ab cd", "-1"}, "[0] NULL NULL NULL status -6803"},
        {"brightstr_av_str", {"ab cd", "-2147483648"}, "[0] NULL NULL status -6803"},
        {"brightstr_av_str", {"ab NULL", "NULL=-1"}, "[0] NULL NULL"},
    };
    for (const contract::text_case& batch : batches) {
        EXPECT_EQ(contract::evaluate(batch), batch.result) << batch.symbol;
    }
}

TEST_F(Substring, SubstringIndex) {
    const std::string dots(70, '.');
    const row_case cases[] = {
        {"bsubstr_index_avv_str", {"www.bifun.org", ".", 1}, "'www'"},
        {"bsubstr_index_avv_str", {"www.bifun.org", ".", 2}, "'www.bifun'"},
        {"bsubstr_index_avv_str", {"www.bifun.org", ".", 3}, "'www.bifun.org'"},
        {"bsubstr_index_avv_str", {"www.bifun.org", ".", -1}, "'org'"},
        {"bsubstr_index_avv_str", {"www.bifun.org", ".", -2}, "'bifun.org'"},
        {"bsubstr_index_avv_str", {"www.bifun.org", ".", -3}, "'www.bifun.org'"},
        {"bsubstr_index_avv_str", {"www.bifun.org", ".", smallest}, "'www.bifun.org'"},
        {"bsubstr_index_avv_str", {"www.bifun.org", ".", largest}, "'www.bifun.org'"},
        {"bsubstr_index_avv_str", {"www.bifun.org", ".", 0}, "''"},
        {"bsubstr_index_aav_str", {"www.bifun.org", empty, 1}, "''"},
        {"bsubstr_index_aav_str", {empty, ".", -1}, "''"},
        {"bsubstr_index_aav_str", {".", ".", -1}, "''"},
        {"bsubstr_index_aav_str", {"a", "ab", -1}, "'a'"},
        // Blanks are characters, and results have them in full.
        {"bsubstr_index_aav_str", {{"a", 3}, {"", 1}, 1}, "'a'"},
        {"bsubstr_index_aav_str", {{"a", 3}, {"", 1}, 2}, "'a '"},
        {"bsubstr_index_aav_str", {{"a", 3}, {"", 1}, -3}, "'  '"},
        {"bsubstr_index_aav_str", {{"a", 3}, {"", 1}, 4}, "'a   '"},
        {"bsubstr_index_aav_str", {{"a", 3}, {"a", 2}, -1}, "' '"},
        {"bsubstr_index_aav_str", {"aaaa", "aa", 2}, "'a'"}, // they overlap
        {"bsubstr_index_aav_str", {"aaaa", "aa", -3}, "'aa'"},
        {"bsubstr_index_avv_str", {"éa一é一", "一", -2}, "'\\xC3\\xA9\\xE4\\xB8\\x80'"},
        {"bsubstr_index_avv_str", {{"a" + dots + "b" + dots + "c", 0}, {dots, 0}, -2}, "'b" + dots + "c'"},
    };
    expect_rows(cases);
    use(0, ZQ_CHARSET_GB18030);
    const row_case by_characters[] = {
        {"bsubstr_index_aav_str", {"\2010\20100", "0", 1}, "'\\x810\\x810'"},
        {"bsubstr_index_aav_str", {"\201A1A2", "A", 1}, "'\\x81A1'"},
        {"bsubstr_index_aav_str", {"1A2\201A3", "A", -1}, "'2\\x81A3'"},
    };
    expect_rows(by_characters);
}

TEST_F(Substring, ReversalsThatFail) {
    // Of the text, of the delimiter, and of what lies behind it.
    const char* const results[] = {"-6108 NULL", "-6108 NULL", "''"};
    for (int failing = 1; failing <= 3; ++failing) {
        reversals_to_failure = failing;
        const row_case one[] = {{"bsubstr_index_avv_str", {"aé一éb", "é", -1}, results[failing - 1]}};
        expect_rows(one, {true});
        reversals_to_failure = 0;
    }
    use(0, ZQ_CHARSET_GB18030);
    const row_case malformed[] = {{"bsubstr_index_aav_str", {"A\x81", "A", -1}, "-6108 NULL"}};
    expect_rows(malformed);
}

} // namespace
