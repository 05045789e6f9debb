// SPDX-License-Identifier: Apache-2.0
#include "embedded/collation/sort_name.h"

#include <unicode/ucol.h>
#include <unicode/uenum.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "embedded/format/format_reader.h"

namespace zqengine {
namespace {

struct named_order {
    std::string_view name;
    std::string_view locale;
};

// Where a language has two, the one of the X is that of its dictionaries or of old.
constexpr named_order named_orders[] = {
    {"BINARY", ""},
    {"UCA", ""},
    {"UNICODE", ""},
    {"GENERIC_M", ""},
    {"ARABIC", "ar"},
    {"AZERBAIJANI", "az"},
    {"BULGARIAN", "bg"},
    {"CATALAN", "ca"},
    {"CROATIAN", "hr"},
    {"CZECH", "cs"},
    {"DANISH", "da"},
    {"DUTCH", "nl"},
    {"ENGLISH", "en"},
    {"ESTONIAN", "et"},
    {"FINNISH", "fi"},
    {"FRENCH", "fr"},
    {"FRENCH_M", "fr_CA"},
    {"GERMAN", "de"},
    {"XGERMAN", "de@collation=phonebook"},
    {"GREEK", "el"},
    {"HEBREW", "he"},
    {"HUNGARIAN", "hu"},
    {"ICELANDIC", "is"},
    {"ITALIAN", "it"},
    {"JAPANESE_M", "ja"},
    {"KOREAN_M", "ko"},
    {"LATVIAN", "lv"},
    {"LITHUANIAN", "lt"},
    {"NORWEGIAN", "nb"},
    {"POLISH", "pl"},
    {"PORTUGUESE", "pt"},
    {"ROMANIAN", "ro"},
    {"RUSSIAN", "ru"},
    {"SCHINESE_PINYIN_M", "zh@collation=pinyin"},
    {"SCHINESE_RADICAL_M", "zh@collation=unihan"},
    {"SCHINESE_STROKE_M", "zh@collation=stroke"},
    {"TCHINESE_RADICAL_M", "zh_Hant@collation=unihan"},
    {"TCHINESE_STROKE_M", "zh_Hant@collation=stroke"},
    {"SLOVAK", "sk"},
    {"SLOVENIAN", "sl"},
    {"SPANISH", "es"},
    {"XSPANISH", "es@collation=traditional"},
    {"SWEDISH", "sv"},
    {"THAI_M", "th"},
    {"TURKISH", "tr"},
    {"XTURKISH", "tr"},
    {"XAZERBAIJANI", "az"},
    {"UKRAINIAN", "uk"},
    {"VIETNAMESE", "vi"},
};

void skip_blanks(format_reader& text) {
    while (text.next != text.end && *text.next == ' ') {
        ++text.next;
    }
}

bool is_of_name(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-'; }

// What stands behind the equals sign; nothing where the text is another.
std::string_view read_name(const std::uint8_t* characters, std::uint32_t length) {
    format_reader text{.next = characters, .end = characters + length};
    skip_blanks(text);
    if (!take(text, "NLS_SORT")) {
        return {};
    }
    skip_blanks(text);
    if (!take(text, "=")) {
        return {};
    }
    skip_blanks(text);
    const bool is_quoted = take(text, "'");
    const std::uint8_t* const begin = text.next;
    while (text.next != text.end && is_of_name(static_cast<char>(*text.next))) {
        ++text.next;
    }
    const std::string_view name(reinterpret_cast<const char*>(begin), static_cast<std::size_t>(text.next - begin));
    if (is_quoted && !take(text, "'")) {
        return {};
    }
    skip_blanks(text);
    return text.next == text.end ? name : std::string_view();
}

bool is_word(std::string_view text, std::string_view word) {
    format_reader rest{.next = reinterpret_cast<const std::uint8_t*>(text.data()),
                       .end = reinterpret_cast<const std::uint8_t*>(text.data()) + text.size()};
    return take(rest, word) && rest.next == rest.end;
}

// Takes the end off where it is there.
bool take_end(std::string_view& name, std::string_view end) {
    const bool is_there = name.size() > end.size() && is_word(name.substr(name.size() - end.size()), end);
    name.remove_suffix(is_there ? end.size() : 0);
    return is_there;
}

// Whether the order that a locale names by itself is one that there is: others would be passed over.
bool has_known_order(const char* locale) {
    UErrorCode status = U_ZERO_ERROR;
    char named[ULOC_KEYWORDS_CAPACITY] = {};
    if (uloc_getKeywordValue(locale, "collation", named, sizeof named, &status) == 0) {
        return U_SUCCESS(status);
    }
    UEnumeration* const orders = ucol_getKeywordValuesForLocale("collation", locale, 0, &status);
    bool is_known = false;
    for (const char* order = uenum_next(orders, nullptr, &status); U_SUCCESS(status) && order != nullptr && !is_known;
         order = uenum_next(orders, nullptr, &status)) {
        is_known = std::strcmp(order, named) == 0;
    }
    uenum_close(orders);
    return is_known;
}

// Of a language tag. Whether it is a whole one, of a language and an order that there are.
bool find_locale(std::string_view tag, char* locale, std::int32_t size) {
    char text[longest_sort_name + 1] = {};
    std::copy(tag.begin(), tag.end(), text);
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t parsed = 0;
    const std::int32_t written = uloc_forLanguageTag(text, locale, size, &parsed, &status);
    return U_SUCCESS(status) && written < size && static_cast<std::size_t>(parsed) == tag.size() && *uloc_getISO3Language(locale) != '\0' &&
           has_known_order(locale);
}

} // namespace

bool parse_sort_name(const std::uint8_t* text, std::uint32_t length, sort_name& result) {
    if (length > longest_sort_name) {
        return false;
    }
    std::string_view name = read_name(text, length);
    result.strength = take_end(name, "_CI")   ? sort_strength::letters_and_accents
                      : take_end(name, "_AI") ? sort_strength::letters
                                              : sort_strength::letters_accents_and_case;
    result.is_binary = is_word(name, "BINARY");
    const auto* const found = std::ranges::find_if(named_orders, [=](const named_order& known) { return is_word(name, known.name); });
    if (found == std::end(named_orders)) {
        return !name.empty() && find_locale(name, result.locale, sizeof result.locale);
    }
    std::memcpy(result.locale, found->locale.data(), found->locale.size());
    result.locale[found->locale.size()] = '\0';
    return true;
}

bool is_turkic(const sort_name& name) {
    char language[ULOC_LANG_CAPACITY] = {};
    UErrorCode status = U_ZERO_ERROR;
    uloc_getLanguage(name.locale, language, sizeof language, &status);
    return U_SUCCESS(status) && (std::strcmp(language, "tr") == 0 || std::strcmp(language, "az") == 0);
}

} // namespace zqengine
