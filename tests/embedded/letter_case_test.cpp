// SPDX-License-Identifier: Apache-2.0
// Upper, lower and title case against ICU: every character by itself, and texts whose letters look at their neighbours.

#include "engine/letter_case.h"

#include <unicode/ubrk.h>
#include <unicode/ucasemap.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "embedded/charset/database_charset.h"
#include "engine/charset.h"

namespace {

using zqengine::set_database_charset;

std::string changed(std::int32_t to, std::int32_t rules, const std::string& text) {
    std::string result(text.size() * NLS_CASE_GROWTH, '?');
    const std::uint64_t length = nls_change_case(to, rules, reinterpret_cast<const std::uint8_t*>(text.data()),
                                                 static_cast<std::uint32_t>(text.size()), reinterpret_cast<std::uint8_t*>(result.data()));
    EXPECT_LE(length, result.size());
    result.resize(length);
    return result;
}

std::u16string units_of(UChar32 code_point) {
    UChar units[2];
    std::int32_t length = 0;
    U16_APPEND_UNSAFE(units, length, code_point);
    return {units, static_cast<std::size_t>(length)};
}

class LetterCase : public testing::TestWithParam<std::pair<std::uint32_t, const char*>> {
  protected:
    LetterCase() {
        set_database_charset(GetParam().first);
        ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        ucnv_setFallback(converter, 0);
    }
    ~LetterCase() override {
        ucnv_close(converter);
        ubrk_close(characters);
        set_database_charset(ZQ_CHARSET_UTF8);
    }

    // Nothing where the character set lacks it.
    std::string encoded(const std::u16string& units) {
        char bytes[64];
        status = U_ZERO_ERROR;
        const std::int32_t length =
            ucnv_fromUChars(converter, bytes, sizeof bytes, units.data(), static_cast<std::int32_t>(units.size()), &status);
        return U_SUCCESS(status) ? std::string(bytes, static_cast<std::size_t>(length)) : std::string();
    }

    std::u16string by_icu(std::int32_t to, const std::u16string& text, const char* locale) {
        UChar mapped[16];
        const auto length = static_cast<std::int32_t>(text.size());
        status = U_ZERO_ERROR;
        const std::int32_t written = to == NLS_CASE_UPPER   ? u_strToUpper(mapped, 16, text.data(), length, locale, &status)
                                     : to == NLS_CASE_LOWER ? u_strToLower(mapped, 16, text.data(), length, locale, &status)
                                                            : u_strToTitle(mapped, 16, text.data(), length, characters, locale, &status);
        return {mapped, static_cast<std::size_t>(written)};
    }

    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(GetParam().second, &status);
    UBreakIterator* characters = ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status);
};

TEST_P(LetterCase, OfEveryCharacterIsIcusWhereTheCharacterSetHasIt) {
    std::size_t changes = 0;
    for (UChar32 code_point = 0; code_point <= 0x10FFFF; ++code_point) {
        const std::u16string units = units_of(code_point);
        const std::string character = U_IS_SURROGATE(code_point) ? std::string() : encoded(units);
        // A character set may have a character twice, or as one that its table of characters does not know. ICU's converter knows more
        // pairs than EUC-KR has, of bytes below 0xA1.
        const bool is_no_pair = GetParam().first == ZQ_CHARSET_EUC_KR &&
                                std::ranges::any_of(character, [](char byte) { return static_cast<std::uint8_t>(byte) < 0xA1; });
        if (character.empty() || (code_point >= 0x80 && (character.size() == 1 || is_no_pair))) {
            continue;
        }
        for (const std::int32_t to : {NLS_CASE_UPPER, NLS_CASE_LOWER, NLS_CASE_INITIAL}) {
            if (to == NLS_CASE_INITIAL && (U_GET_GC_MASK(code_point) & (U_GC_L_MASK | U_GC_N_MASK | U_GC_M_MASK)) == 0) {
                continue; // begins no word
            }
            for (const std::int32_t rules : {NLS_CASE_ROOT, NLS_CASE_TURKIC}) {
                const std::string mapped = encoded(by_icu(to, units, rules == NLS_CASE_TURKIC ? "tr" : ""));
                const std::string expected = mapped.empty() ? character : mapped;
                ASSERT_EQ(changed(to, rules, character), expected) << std::hex << code_point << ", case " << to << ", rules " << rules;
                changes += expected != character ? 1 : 0;
            }
        }
    }
    EXPECT_GT(changes, 200U);
}

INSTANTIATE_TEST_SUITE_P(Charsets, LetterCase,
                         testing::Values(std::pair{ZQ_CHARSET_UTF8, "UTF-8"}, std::pair{ZQ_CHARSET_GB18030, "gb18030"},
                                         std::pair{ZQ_CHARSET_EUC_KR, "windows-949"}),
                         [](const auto& charset) { return "Code" + std::to_string(charset.param.first); });

// Sigmas before and behind letters, marks and what cases pass over; I with its dot near and far; blocks of ASCII between.
TEST(LettersOfTexts, AreIcusInUpperAndLowerCase) {
    const std::vector<std::string> parts = {"Σ",
                                            "Σ",
                                            "α",
                                            "Α",
                                            "'",
                                            ".",
                                            " ",
                                            "I",
                                            "I",
                                            "i",
                                            "İ",
                                            "\xCC\x87" /* dot above */,
                                            "\xCC\xA3" /* dot below */,
                                            "\xCC\x81" /* acute */,
                                            "ß",
                                            "ﬃ",
                                            "日",
                                            "𐐀",
                                            "A block of SIXTEEN or more",
                                            "1"};
    std::mt19937 random(7); // NOLINT(cert-msc51-cpp): every run is the same
    for (int text = 0; text < 20000; ++text) {
        std::string given;
        for (auto length = random() % 9; length > 0; --length) {
            given += parts[random() % parts.size()];
        }
        for (const auto& [rules, locale] : {std::pair{NLS_CASE_ROOT, ""}, std::pair{NLS_CASE_TURKIC, "az"}}) {
            UErrorCode status = U_ZERO_ERROR;
            UCaseMap* const map = ucasemap_open(locale, 0, &status);
            std::string expected(given.size() * NLS_CASE_GROWTH + 1, '\0');
            const auto length = static_cast<std::int32_t>(given.size());
            const auto room = static_cast<std::int32_t>(expected.size());
            const std::int32_t lower = ucasemap_utf8ToLower(map, expected.data(), room, given.data(), length, &status);
            EXPECT_EQ(changed(NLS_CASE_LOWER, rules, given), expected.substr(0, static_cast<std::size_t>(lower))) << given;
            const std::int32_t upper = ucasemap_utf8ToUpper(map, expected.data(), room, given.data(), length, &status);
            EXPECT_EQ(changed(NLS_CASE_UPPER, rules, given), expected.substr(0, static_cast<std::size_t>(upper))) << given;
            ASSERT_TRUE(U_SUCCESS(status));
            ucasemap_close(map);
        }
    }
}

TEST(LettersOfTexts, BeginWordsOrGoOn) {
    const std::pair<const char*, const char*> cases[] = {
        {"o'neill don't", "O'Neill Don'T"},
        {"3rd x3rd ÀB àb", "3rd X3rd Àb Àb"},
        {"e\xCC\x81\x43OLE", "E\xCC\x81\x63ole"}, // the accent goes on
        {"ﬁn ǆep ßS ΑΣ ΣΑ", "Fin ǅep Sss Ας Σα"},
        {"\xFFxY\xE4\xB8", "\xFFXy\xE4\xB8"}, // bytes that are no characters end words
        {"日aB", "日ab"},
    };
    for (const auto& [given, expected] : cases) {
        EXPECT_EQ(changed(NLS_CASE_INITIAL, NLS_CASE_ROOT, given), expected);
    }
    EXPECT_EQ(changed(NLS_CASE_INITIAL, NLS_CASE_TURKIC, "iIi"), "İıi");
    set_database_charset(99);
    EXPECT_EQ(changed(NLS_CASE_INITIAL, NLS_CASE_ROOT,
                      "aB \xC3\xA9"
                      "B"),
              "Ab \xC3\xA9"
              "B");
    EXPECT_EQ(changed(NLS_CASE_UPPER, NLS_CASE_TURKIC, "ai\xFF"), "AI\xFF");
    set_database_charset(ZQ_CHARSET_UTF8);
}

} // namespace
