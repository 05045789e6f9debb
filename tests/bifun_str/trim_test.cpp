// TRIM, LTRIM and RTRIM: boundaries, and where their sides differ on purpose.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/bifun_str/failing_reversal.h"
#include "tests/bifun_str/string_calls.h"
#include "tests/contract/text_case.h"

namespace {

using string_model::expect_rows;
using string_model::row_case;
using string_model::value;

constexpr std::int32_t both = 0, leading = 579, trailing = 580;
const value blank = {"", 1};
const value empty = {"", 0};
const value null;

class Trim : public testing::Test {
  protected:
    void SetUp() override { use(ZQ_CHARSET_UTF8); }
    static void use(std::uint32_t charset) { contract::set_up({.compatible_mode = 0, .charset_code = charset, .case_sensitive = 1}); }
};

TEST_F(Trim, BothSides) {
    const row_case cases[] = {
        // A blank takes all leading whitespace with it, and on the right the blanks that are a count.
        {"btrim_vaa_str", {both, {"\tab", 3}, blank}, "'ab'"},
        {"btrim_vaa_str", {both, {"\t\n\v\f\r ab\t", 3}, blank}, "'ab\\x09'"},
        {"btrim_vaa_str", {both, {"ab ", 1}, blank}, "'ab '"},
        {"btrim_vaa_str", {both, {"\x08\x0E", 1}, blank}, "'\\x08\\x0E'"},
        {"btrim_vaa_str", {both, {" \t", 1}, blank}, "''"},
        {"btrim_vaa_str", {both, {"", 3}, blank}, "''"},
        {"btrim_def_a_str", {{"\t ab", 2}}, "'ab'"},
        {"btrim_def_a_str", {"ab "}, "'ab '"},
        {"btrim_def_a_str", {empty}, "''"},
        // Another character stays where blanks are behind it, and before it where whitespace is.
        {"btrim_vaa_str", {both, "xxaxbxx", "x"}, "'axb'"},
        {"btrim_vaa_str", {both, "xxx", "x"}, "''"},
        {"btrim_vaa_str", {both, {"xxx", 2}, "x"}, "''+2"},
        {"btrim_vaa_str", {both, {"xax", 1}, "x"}, "'ax'+1"},
        {"btrim_vaa_str", {both, " xax", "x"}, "' xa'"},
        {"btrim_vaa_str", {both, {" xax", 1}, "x"}, "' xax'+1"},
        {"btrim_vaa_str", {both, "\tx\t", "\t"}, "'\\x09x'"},
        {"btrim_vaa_str", {both, "\t\t", "\t"}, "''"},
        {"btrim_vaa_str", {both, " x ", " "}, "' x'"},
        {"btrim_vaa_str", {both, {"", 3}, "x"}, "''+3"},
        {"btrim_vva_str", {both, "xax", "x"}, "'a'"},
        {"btrim_vva_str", {581, {std::string(49, 'x') + "a", 0}, "x"}, "'a'"},
        {"btrim_vav_str", {-1, "xax", "x"}, "'a'"},
        {"btrim_vaa_str", {both, "éé一aé", "é"}, "'\\xE4\\xB8\\x80a'"},
        {"btrim_vaa_str", {both, "\377a\xFF", "\xFF"}, "'a'"},
    };
    expect_rows(cases);
}

TEST_F(Trim, TheSetOfTrimIsOneCharacter) {
    const row_case cases[] = {
        {"btrim_vaa_str", {both, "xyx", "xy"}, "-6109 NULL"},
        {"btrim_vaa_str", {leading, "xyx", {"x", 1}}, "-6109 NULL"},
        {"btrim_vaa_str", {trailing, {"", 3}, {"", 2}}, "-6109 NULL"},
        {"btrim_vva_str", {both, "xyx", "éé"}, "-6109 NULL"},
        {"btrim_vav_str", {both, "xyx", "xy"}, "-6109 NULL"},
        // Of an empty text nothing is to be trimmed, by an empty set neither: a constant is checked all the same.
        {"btrim_vaa_str", {both, empty, "xy"}, "''"},
        {"btrim_vva_str", {both, empty, "xy"}, "''"},
        {"btrim_vav_str", {both, empty, "xy"}, "-6109 NULL"},
        {"btrim_vaa_str", {both, {"xyx", 2}, empty}, "'xyx'+2"},
        {"btrim_vaa_str", {trailing, {"xyx", 2}, empty}, "'xyx'+2"},
        {"btrim_vva_str", {leading, {"xyx", 2}, empty}, "'xyx'+2"},
        {"btrim_vav_str", {both, "xyx", empty}, "-6109 NULL"},
    };
    expect_rows(cases);
    const contract::text_case batches[] = {
        {"btrim_vaa_str", {"0", "xax NULL xbx xcx", "x xy xy x"}, "[0] a NULL NULL ? status -6109"},
        {"btrim_vva_str", {"580", "xax", "x NULL xy x"}, "[0] xa NULL NULL ? status -6109"},
        {"btrim_vav_str", {"0", "xax xbx", "xy"}, "[0] NULL NULL status -6109"},
        {"btrim_vav_str", {"0", "xax xbx", "NULL"}, "[0] NULL NULL"},
        {"bltrim_va_str", {"''", "x NULL ''"}, "[1] '' '' ''"},
        {"bltrim_va_str", {"xa_", "x NULL ''"}, "[0] a_ NULL xa_"},
        {"bltrim_va_str", {"NULL", "x NULL ''"}, "[0] NULL NULL NULL"},
        {"brtrim_va_str", {"''", "x NULL ''"}, "[0] '' NULL ''"},
    };
    for (const contract::text_case& batch : batches) {
        EXPECT_EQ(contract::evaluate(batch), batch.result) << batch.symbol;
    }
}

TEST_F(Trim, LeadingSide) {
    const row_case cases[] = {
        // Blanks alone go only where the text begins with one, and tabs are none. The count stays behind stored bytes, were there any.
        {"bltrim_def_a_str", {{"  ab", 2}}, "'ab'+2"},
        {"bltrim_def_a_str", {"\tab"}, "'\\x09ab'"},
        {"bltrim_def_a_str", {" \tab"}, "'\\x09ab'"},
        {"bltrim_def_a_str", {{"  ", 2}}, "''+2"},
        {"bltrim_def_a_str", {{"", 2}}, "''"},
        {"bltrim_aa_str", {{" a", 2}, {"", 2}}, "'a'+2"},
        {"btrim_vaa_str", {leading, {"\ta", 1}, blank}, "'\\x09a'+1"},
        {"btrim_vaa_str", {leading, {"xab", 2}, "x"}, "'ab'+2"},
        {"btrim_vaa_str", {leading, " xab", "x"}, "=?"},
        // Other characters.
        {"bltrim_aa_str", {{"xyxab", 2}, "xy"}, "'ab'+2"},
        {"bltrim_aa_str", {{"xx", 2}, "x"}, "''+2"},
        {"bltrim_aa_str", {{"", 3}, "x"}, "''+3"},
        {"bltrim_aa_str", {{"ab", 1}, empty}, "'ab'+1"},
        {"bltrim_aa_str", {"\txab", "x"}, "=?"},
        {"bltrim_av_str", {" ", "x"}, "=?"},
        {"bltrim_va_str", {" xab", "x"}, "=?"},
        // With a blank or other whitespace among them, all leading whitespace goes first, and only then the others.
        {"bltrim_aa_str", {"\t xab", {"x", 1}}, "'ab'"},
        {"bltrim_aa_str", {{" x xa", 1}, {"x", 1}}, "' xa'+1"},
        {"bltrim_aa_str", {{"\t x", 3}, {"x", 1}}, "''"},
        {"bltrim_aa_str", {{"", 3}, {"x", 1}}, "''"},
        {"bltrim_aa_str", {{" \txa", 1}, "x\t"}, "'a'+1"},
        {"bltrim_aa_str", {{"x\tx a", 1}, "x\t"}, "' a'+1"},
        {"bltrim_av_str", {"xyab", {std::string(47, 'x') + "y", 0}}, "'ab'"},
        {"bltrim_av_str", {"xyab", {std::string(48, 'x') + "y", 0}}, "'ab'"},
        {"bltrim_aa_str", {"éa一b", "一aé"}, "'b'"},
    };
    expect_rows(cases);
}

TEST_F(Trim, TrailingSide) {
    const row_case cases[] = {
        {"brtrim_def_a_str", {{"ab\t", 3}}, "'ab\\x09'"},
        {"brtrim_def_a_str", {{"ab ", 3}}, "'ab '"},
        {"brtrim_def_a_str", {{"", 3}}, "''"},
        {"brtrim_aa_str", {{"ab", 3}, {"", 2}}, "'ab'"},
        {"btrim_vaa_str", {trailing, {"ab ", 2}, blank}, "'ab '"},
        {"btrim_vaa_str", {trailing, "xaxx", "x"}, "'xa'"},
        // A text with blanks behind it ends in a blank, unless the set has whitespace of any kind.
        {"brtrim_aa_str", {{"axx", 2}, "x"}, "'axx'+2"},
        {"brtrim_aa_str", {{"", 3}, "x"}, "''+3"},
        {"brtrim_aa_str", {{"ab\t", 2}, "\t"}, "'ab'"},
        {"brtrim_aa_str", {{"abx", 2}, "\tx"}, "'ab'"},
        {"brtrim_aa_str", {{"", 3}, "\t"}, "''"},
        {"brtrim_aa_str", {{"abx", 2}, {"x", 1}}, "'ab'"},
        {"brtrim_aa_str", {{"abx x", 2}, {"x", 1}}, "'abx '"},
        {"brtrim_aa_str", {{"ab", 2}, empty}, "'ab'+2"},
        {"brtrim_aa_str", {empty, "x"}, "''"},
        {"brtrim_av_str", {"abxy", {std::string(60, 'x') + "y", 0}}, "'ab'"},
        {"brtrim_va_str", {{std::string(60, 'a') + "xyx", 0}, "xy"}, "'" + std::string(60, 'a') + "'"},
        {"brtrim_aa_str", {"bé一é", "一é"}, "'b'"},
    };
    expect_rows(cases);
}

TEST_F(Trim, BytesOfOtherCharactersAreNotTheSets) {
    use(ZQ_CHARSET_GB18030);
    const row_case cases[] = {
        {"btrim_vaa_str", {both, "\201AA\201A", "A"}, "'\\x81AA\\x81A'"},
        {"btrim_vaa_str", {both, "AA\201AA", "A"}, "'\\x81A'"},
        {"brtrim_aa_str", {"0\2010\20100", "0"}, "'0\\x810\\x810'"},
        {"brtrim_aa_str", {"b\x81\x81\x81\x81", "\x81\x81"}, "'b'"},
    };
    expect_rows(cases);
    use(ZQ_CHARSET_EUC_KR);
    const row_case pairs[] = {
        {"brtrim_aa_str", {"\xC1\xA5\xA5\xC1", "\xA5\xC1"}, "'\\xC1\\xA5'"},
        {"bltrim_aa_str", {"\xA5\xC1\xC1\xA5", "\xC1\xA5"}, "'\\xA5\\xC1\\xC1\\xA5'"},
    };
    expect_rows(pairs);
}

// Texts that are the same backwards, so that it cannot be seen whether the second one has been done.
TEST_F(Trim, AReversalThatFailsStopsTheBatch) {
    for (const int failing : {1, 2}) {
        for (const char* const symbol : {"btrim_vaa_str", "btrim_vav_str", "btrim_vva_str"}) {
            reversals_to_failure = failing;
            EXPECT_EQ(string_model::call_strings(contract::entry_of(symbol), {{trailing, "éxé", "é"}}).status, -6108) << symbol << failing;
            EXPECT_EQ(reversals_to_failure, 0);
        }
    }
    use(ZQ_CHARSET_GB18030);
    const row_case malformed[] = {{"brtrim_aa_str", {"A\x81", "A"}, "-6108 NULL"}, {"btrim_vaa_str", {both, "AA\x81", "A"}, "'\\x81'"}};
    expect_rows(malformed);
    use(ZQ_CHARSET_UTF8);
    const contract::text_case batch = {"brtrim_av_str", {"NULL é_ xé éé é", "é"}, "[0] NULL é_ x NULL ? status -6108"};
    reversals_to_failure = 3;
    EXPECT_EQ(contract::evaluate(batch), batch.result);
}

} // namespace
