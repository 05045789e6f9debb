// SPDX-License-Identifier: Apache-2.0
// Sort keys are ICU's to the last byte, also those that are put together of the weights of single characters.

#include "engine/collation.h"

#include <unicode/ucol.h>
#include <unicode/uloc.h>
#include <unicode/ustring.h>

#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "embedded/collation/root_weights.h"

namespace {

constexpr std::uint32_t most_bytes = 16384;

struct opened_order {
    std::unique_ptr<nls_collation, void (*)(nls_collation*)> keys{nullptr, [](nls_collation* order) { nls_sort_close(nullptr, order); }};
    std::unique_ptr<UCollator, decltype(&ucol_close)> collator{nullptr, ucol_close};
};

// `tag` is a language tag of BCP 47.
opened_order open_order(const std::string& tag) {
    opened_order order;
    UErrorCode status = U_ZERO_ERROR;
    char locale[ULOC_FULLNAME_CAPACITY];
    uloc_forLanguageTag(tag.c_str(), locale, sizeof locale, nullptr, &status);
    order.collator.reset(ucol_open(locale, &status));
    const std::string nls = "NLS_SORT=" + tag;
    nls_collation* keys = nullptr;
    EXPECT_EQ(nls_sort_open(nullptr, reinterpret_cast<const std::uint8_t*>(nls.data()), static_cast<std::uint32_t>(nls.size()), &keys), 0)
        << tag;
    order.keys.reset(keys);
    EXPECT_TRUE(U_SUCCESS(status)) << tag;
    return order;
}

void expect_key_of_icu(const opened_order& order, const std::u16string& text, const std::string& tag) {
    UErrorCode status = U_ZERO_ERROR;
    char bytes[4096];
    std::int32_t size = 0;
    u_strToUTF8(bytes, sizeof bytes, &size, text.data(), static_cast<std::int32_t>(text.size()), &status);
    ASSERT_TRUE(U_SUCCESS(status));
    static std::uint8_t expected[most_bytes];
    static std::uint8_t found[most_bytes];
    const auto expected_size = static_cast<std::uint64_t>(
        ucol_getSortKey(order.collator.get(), text.data(), static_cast<std::int32_t>(text.size()), expected, most_bytes));
    std::uint64_t length = 0;
    ASSERT_EQ(nls_sort_key(order.keys.get(), reinterpret_cast<const std::uint8_t*>(bytes), static_cast<std::uint32_t>(size), found,
                           most_bytes, &length),
              0);
    ASSERT_TRUE(length == expected_size - 1 && std::equal(found, found + length, expected))
        << tag << ": " << std::string(bytes, static_cast<std::size_t>(size));
}

// Letters of the scripts that have weights of their own, more often than what goes together with its neighbours or has none.
std::u16string random_text(std::mt19937& random) {
    struct letters {
        char16_t first;
        char16_t last;
    };
    constexpr letters scripts[] = {{'a', 'z'},     {'A', 'z'},     {0x20, 0x7E},     {0x20, 0x17F},    {0x20, 0x17F},
                                   {0x370, 0x3FF}, {0x400, 0x52F}, {0x430, 0x44F},   {0x4E00, 0x9FFF}, {0x4E00, 0x4E20},
                                   {0x300, 0x30F}, {0xB7, 0xB7},   {0x3040, 0x30FF}, {0xE40, 0xE4F},   {0xAC00, 0xAD00}};
    const std::size_t used = random() % 4 == 0 ? std::size(scripts) : 10;
    const std::size_t first = random() % used;
    std::u16string text;
    const std::size_t most = random() % 16 == 0 ? 300 : 14;
    for (auto length = random() % most; length > 0; --length) {
        const letters& script = scripts[random() % 3 != 0 ? first : random() % used];
        text += static_cast<char16_t>(script.first + random() % static_cast<unsigned>(script.last - script.first + 1));
    }
    return text;
}

TEST(SortKeys, AreIcusInEveryLanguage) {
    std::set<std::string> tags = {"en-u-ks-level1", "de-u-ks-level2",  "en-u-ks-level4", "en-u-kn", "en-u-kb",        "en-u-kc",
                                  "en-u-kf-upper",  "en-u-ka-shifted", "en-u-kr-grek",   "en-u-kk", "de-u-co-phonebk"};
    for (std::int32_t i = 0; i < ucol_countAvailable(); ++i) {
        UErrorCode status = U_ZERO_ERROR;
        char tag[ULOC_FULLNAME_CAPACITY];
        const std::int32_t size = uloc_toLanguageTag(ucol_getAvailable(i), tag, sizeof tag, 1, &status);
        if (*ucol_getAvailable(i) != '\0') {
            tags.insert(std::string(tag, static_cast<std::size_t>(size)));
        }
    }
    std::mt19937 random(12); // NOLINT(cert-msc51-cpp): every run is the same
    for (const std::string& tag : tags) {
        const opened_order order = open_order(tag);
        for (int text = 0; text < 3000; ++text) {
            expect_key_of_icu(order, random_text(random), tag);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

// Of every two characters of the scripts that have letters in pairs or with marks.
TEST(SortKeys, AreIcusOfNeighbours) {
    const opened_order order = open_order("en");
    std::u16string alphabet;
    for (char16_t character = 0x20; character < 0x530; ++character) {
        const bool is_listed = character < 0x180 || (character >= 0x370 && character % 3 == 0) || character == 0x301 || character == 0x306;
        alphabet += is_listed ? std::u16string(1, character) : std::u16string();
    }
    alphabet += u"\u4E00\u9FFF\u3042";
    for (const char16_t first : alphabet) {
        for (const char16_t second : alphabet) {
            expect_key_of_icu(order, {first, second}, "en");
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

// What ICU writes otherwise would be left to it, and take several times as long.
TEST(SortKeys, AreMadeOfTheWeightsOfCharacters) {
    constexpr std::u32string_view text = U"Zürich, 12 Äpfel & Έβγ Жж 一丁";
    std::vector<std::uint32_t> code_points(text.begin(), text.end());
    std::uint8_t key[256];
    EXPECT_GT(zqengine::root_key(code_points.data(), static_cast<std::uint32_t>(code_points.size()),
                                 zqengine::sort_strength::letters_accents_and_case, key, sizeof key),
              0);
}

// Where there is no room for the key its length is told nevertheless.
TEST(SortKeys, WantRoom) {
    const opened_order order = open_order("de");
    const std::string text = "Übergröße, Äpfel";
    std::uint64_t whole = 0;
    std::uint8_t key[most_bytes];
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto size = static_cast<std::uint32_t>(text.size());
    for (const std::uint32_t measured : {size, std::uint32_t{4}}) { // with a sharp s and without
        ASSERT_EQ(nls_sort_key(order.keys.get(), bytes, measured, key, most_bytes, &whole), 0);
        for (std::uint32_t room = 0; room <= whole; ++room) {
            std::vector<std::uint8_t> given(room + 1, 0xEE);
            std::uint64_t length = 0;
            ASSERT_EQ(nls_sort_key(order.keys.get(), bytes, measured, given.data(), room, &length), 0);
            EXPECT_EQ(length, whole);
            EXPECT_EQ(given[room], 0xEE);
            EXPECT_TRUE(room < whole || std::equal(key, key + whole, given.data()));
        }
    }
}

} // namespace
