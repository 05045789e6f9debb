// SPDX-License-Identifier: Apache-2.0
// NLSSORT against ICU's comparison: keys of texts compare as the texts do.

#include <unicode/ucol.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bop/frame/catalogue.h"
#include "engine/charset.h"
#include "tests/contract/called_export.h"
#include "tests/contract/generated_batch.h"

namespace {

const bifun::entry_point& entry_named(std::string_view symbol) {
    return *std::ranges::find_if(bifun::entry_points, [=](const auto& entry) { return entry.symbol == symbol; });
}

// The keys of all texts in one batch. Those of texts that end in blanks have them as a count.
std::vector<std::string> keys_of(const std::vector<std::string>& texts, std::string nls) {
    const auto count = static_cast<std::uint32_t>(texts.size());
    const zqengine::column_pointer column(zqengine::create_column(bifun::value_type::VARCHAR, count));
    for (std::uint32_t row = 0; row < count; ++row) {
        const std::size_t stored = texts[row].find_last_not_of(' ') + 1;
        zqengine::values_of<bifun_string>(*column)[row] = {static_cast<std::uint32_t>(stored),
                                                           static_cast<std::uint32_t>(texts[row].size() - stored),
                                                           reinterpret_cast<std::uint8_t*>(const_cast<char*>(texts[row].data()))};
        column->data.null_flags[row] = 1;
    }
    column->column.no_nulls = 1;
    const zqengine::column_pointer parameter(zqengine::create_column(bifun::value_type::VARCHAR, 1));
    zqengine::values_of<bifun_string>(*parameter)[0] = {static_cast<std::uint32_t>(nls.size()), 0,
                                                        reinterpret_cast<std::uint8_t*>(nls.data())};
    parameter->data.null_flags[0] = 1;
    const contract::generated_constant constant = contract::constant_of_row(*parameter, 0);
    const bool has_parameter = !nls.empty();
    std::vector<contract::call_argument> arguments = {{.column = column.get()}};
    if (has_parameter) {
        arguments.push_back({.constant = &constant});
    }
    const contract::outcome outcome =
        contract::call(entry_named(has_parameter ? "bnlssort_av_str" : "bnlssort_def_a_str"), arguments, count);
    EXPECT_EQ(outcome.status, 0) << nls;
    std::vector<std::string> keys;
    for (std::uint32_t row = 0; row < count; ++row) {
        const bifun_string& key = zqengine::values_of<bifun_string>(*outcome.result)[row];
        EXPECT_EQ(key.trailing_blanks, 0U);
        keys.emplace_back(reinterpret_cast<const char*>(key.data), key.length);
    }
    return keys;
}

int sign(int order) { return (order > 0) - (order < 0); }

std::vector<std::string> random_texts() {
    const std::vector<std::string> parts = {"a", "A",  "ä",  "Ä",  "ae", "b", "z", "å", "ö", "ch",       "c", "d",
                                            "ß", "ss", "é",  "e",  "ı",  "i", "I", "İ", "1", "10",       "2", " ",
                                            "-", "日", "本", "가", "я",  "Я", "σ", "ς", "𐐀", "e\xCC\x81"};
    std::mt19937 random(11); // NOLINT(cert-msc51-cpp): every run is the same
    std::vector<std::string> texts = {"", " ", "  ", "a", "a ", "ä"};
    while (texts.size() < 150) {
        std::string text;
        for (auto length = random() % 6; length > 0; --length) {
            text += parts[random() % parts.size()];
        }
        texts.push_back(text);
    }
    return texts;
}

struct named_order {
    const char* nls;
    const char* locale;
    UCollationStrength strength;
};

class SortKeys : public testing::TestWithParam<named_order> {};

TEST_P(SortKeys, CompareAsIcuComparesTheTexts) {
    contract::set_up({.compatible_mode = 0, .charset_code = ZQ_CHARSET_UTF8, .case_sensitive = 1});
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UCollator, decltype(&ucol_close)> collator(ucol_open(GetParam().locale, &status), ucol_close);
    ASSERT_TRUE(U_SUCCESS(status));
    ucol_setStrength(collator.get(), GetParam().strength);
    const std::vector<std::string> texts = random_texts();
    const std::vector<std::string> keys = keys_of(texts, GetParam().nls);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        for (std::size_t j = 0; j < texts.size(); ++j) {
            const auto expected = ucol_strcollUTF8(collator.get(), texts[i].data(), static_cast<std::int32_t>(texts[i].size()),
                                                   texts[j].data(), static_cast<std::int32_t>(texts[j].size()), &status);
            ASSERT_EQ(sign(keys[i].compare(keys[j])), static_cast<int>(expected)) << texts[i] << " and " << texts[j];
        }
    }
}

constexpr named_order orders[] = {{"", "", UCOL_TERTIARY},
                                  {"NLS_SORT=UNICODE_CI", "", UCOL_SECONDARY},
                                  {"nls_sort = 'GERMAN'", "de", UCOL_TERTIARY},
                                  {"NLS_SORT=XGERMAN_AI", "de@collation=phonebook", UCOL_PRIMARY},
                                  {"NLS_SORT=de-u-co-phonebk", "de@collation=phonebook", UCOL_TERTIARY},
                                  {" NLS_SORT =SWEDISH_CI ", "sv", UCOL_SECONDARY},
                                  {"NLS_SORT=XSPANISH", "es@collation=traditional", UCOL_TERTIARY},
                                  {"NLS_SORT=TURKISH", "tr", UCOL_TERTIARY},
                                  {"NLS_SORT=SCHINESE_STROKE_M", "zh@collation=stroke", UCOL_TERTIARY},
                                  {"NLS_SORT=en-u-kn", "en@colnumeric=yes", UCOL_TERTIARY},
                                  {"NLS_SORT=en-u-ks-level1", "en", UCOL_PRIMARY}};
INSTANTIATE_TEST_SUITE_P(Orders, SortKeys, testing::ValuesIn(orders));

TEST(SortKeysOfBytes, AreTheBytesOrWhatIsLeftOfThem) {
    contract::set_up({.compatible_mode = 0, .charset_code = ZQ_CHARSET_UTF8, .case_sensitive = 1});
    const std::vector<std::string> texts = {"Ab ",
                                            "Stra\xC3\x9F"
                                            "e",
                                            "\xC3\x89t\xC3\xA9", "\xFFz", ""};
    EXPECT_EQ(keys_of(texts, "NLS_SORT=BINARY"), texts);
    const std::vector<std::string> without_case = {"ab ", "strasse", "\xC3\xA9t\xC3\xA9", "\xEF\xBF\xBDz", ""};
    EXPECT_EQ(keys_of(texts, "NLS_SORT=binary_ci"), without_case);
    const std::vector<std::string> without_accents = {"ab ", "strasse", "ete", "\xEF\xBF\xBDz", ""};
    EXPECT_EQ(keys_of(texts, "NLS_SORT='BINARY_AI'"), without_accents);
}

// The same texts have the same keys in every character set.
TEST(SortKeysOfCharsets, AreOfCharactersNotBytes) {
    const auto key_under = [](std::uint32_t charset, const char* text) {
        contract::set_up({.compatible_mode = 0, .charset_code = charset, .case_sensitive = 1});
        return keys_of({text}, "NLS_SORT=KOREAN_M")[0];
    };
    const std::string key = key_under(ZQ_CHARSET_UTF8, "가a\xCE\xB1");
    EXPECT_EQ(key_under(ZQ_CHARSET_EUC_KR, "\xB0\xA1"
                                           "a\xA5\xE1"),
              key);
    EXPECT_EQ(key_under(ZQ_CHARSET_GB18030, "\x82\x37\xCF\x35"
                                            "a\xA6\xC1"),
              key);
    contract::set_up({.compatible_mode = 0, .charset_code = ZQ_CHARSET_UTF8, .case_sensitive = 1});
}

} // namespace
