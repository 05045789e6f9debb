// SPDX-License-Identifier: Apache-2.0
// Characters changed or written as others.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iterator>

#include "engine/charset.h"
#include "tests/bifun_str/family_models.h"

namespace string_model {

namespace {

// The letters of the alphabets: upper and lower case.
std::string in_case(std::uint32_t charset, std::string character, bool upper) {
    static const std::vector<std::pair<std::string, std::string>> letters[] = {{{"\xA6\xA1", "\xA6\xC1"}},
                                                                               {{"\xC3\x89", "\xC3\xA9"}, {"\xE2\xB1\xAF", "\xC9\x90"}},
                                                                               {{"\xA5\xC1", "\xA5\xE1"}, {"\xA5\xB4", "\xA5\xA5"}}};
    if (character.size() == 1) {
        const int byte = static_cast<unsigned char>(character[0]);
        return {static_cast<char>(upper ? std::toupper(byte) : std::tolower(byte))};
    }
    for (const auto& [capital, small] : letters[charset]) {
        if (character == capital || character == small) {
            return upper ? capital : small;
        }
    }
    return character;
}

// The others of the alphabets are ideographs and syllables.
bool is_of_word(const std::string& character) {
    return character.size() == 1 ? std::isalnum(static_cast<unsigned char>(character[0])) != 0
                                 : character != "\2010\2010" && character != "\xF1\x80\x80\x80";
}

} // namespace

std::string in_case(std::uint32_t charset, const text& value, std::string_view builtin) {
    text result{"", value.blanks};
    bool is_in_word = false;
    for (const std::string& character : characters_of(charset, value.stored)) {
        const bool is_first = is_of_word(character) && !is_in_word;
        is_in_word = is_of_word(character);
        result.stored += in_case(charset, character, builtin == "UPPER" || (builtin == "INITCAP" && is_first));
    }
    return shown(result);
}

std::string reversal(std::uint32_t charset, const text& value) {
    characters all = full_text(charset, value);
    std::ranges::reverse(all);
    return value.stored.empty() ? shown(value) : shown(text{joined(all.begin(), all.end())});
}

namespace {

// The next character of as many bytes, or the one before.
std::string neighbour(std::uint32_t charset, std::string character, int step) {
    const std::size_t length = character.size();
    do {
        for (std::size_t i = length; i-- > 0;) {
            character[i] = static_cast<char>(character[i] + step);
            if (static_cast<unsigned char>(character[i]) != (step > 0 ? 0 : 0xFF)) {
                break;
            }
        }
    } while (length > 1 && multibyte_length(charset, character) != length);
    return character;
}

} // namespace

std::string stepped(std::uint32_t charset, const text& value, std::int64_t position, int step) {
    cells all = cells_of(charset, value);
    if (position >= 1 && position <= std::ssize(all)) {
        const auto index = static_cast<std::size_t>(position - 1);
        std::for_each(all.begin(), all.begin() + position, [](cell& cell) { cell.is_counted = false; });
        all[index].character = neighbour(charset, all[index].character, step);
    }
    return shown(all);
}

std::string written_out(const text& value) { return value.stored + std::string(value.blanks, ' '); }

std::string in_digits(std::string_view bytes) {
    std::string digits;
    for (const char byte : bytes) {
        char two[3];
        std::snprintf(two, sizeof two, "%02X", static_cast<unsigned char>(byte));
        digits += two;
    }
    return digits;
}

std::string from_digits(std::string digits) {
    std::string bytes;
    for (digits.insert(0, digits.size() % 2, '0'); !digits.empty(); digits.erase(0, 2)) {
        bytes += static_cast<char>(std::stoi(digits.substr(0, 2), nullptr, 16));
    }
    return bytes;
}

std::string escaped(std::uint32_t charset, const text& value) {
    text result{"", value.blanks};
    for (const std::string& character : characters_of(charset, value.stored)) {
        std::uint32_t code_point = 0;
        zq_get_char_unicode_vals(reinterpret_cast<const std::uint8_t*>(character.data()), static_cast<std::uint32_t>(character.size()),
                                 &code_point);
        char escape[16] = {};
        if (code_point >= 0x10000) {
            std::snprintf(escape, sizeof escape, "\\%04X\\%04X", 0xD7C0 + (code_point >> 10), 0xDC00 + code_point % 0x400);
        } else {
            std::snprintf(escape, sizeof escape, "\\%04X", code_point);
        }
        result.stored += code_point < 0x80 && code_point != '\\' ? character : escape;
    }
    return shown(result);
}

std::string first_code(const bifun_settings& settings, const text& value) {
    const characters all = full_text(settings.charset_code, value);
    return all.empty() ? settings.compatible_mode == 3 ? "0" : "NULL" : std::to_string(std::stoll(in_digits(all[0]), nullptr, 16));
}

// Four characters, or none.
std::string soundex(std::uint32_t charset, const text& value) {
    std::string letters;
    for (const std::string& character : characters_of(charset, value.stored)) {
        if (character.size() == 1 && static_cast<unsigned char>(character[0]) < 0x80 && std::isalpha(character[0]) != 0) {
            letters += static_cast<char>(std::toupper(character[0]));
        }
    }
    const std::string first = letters.substr(0, 1);
    std::erase_if(letters, [&](const char& letter) { return &letter != letters.data() && (letter == 'H' || letter == 'W'); });
    std::string digits;
    for (const char letter : letters) {
        digits += "01230120022455012623010202"[letter - 'A'];
    }
    digits.erase(std::unique(digits.begin(), digits.end()), digits.end());
    std::erase(digits, '0');
    const bool first_has_digit = !first.empty() && std::string_view("AEIOUYHW").find(first[0]) == std::string_view::npos;
    return first.empty() ? "" : (first + digits.substr(first_has_digit ? 1 : 0) + "000").substr(0, 4);
}

std::string difference(std::string a, std::string b) {
    a.resize(4);
    b.resize(4);
    int equal = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        equal += a[i] == b[i] ? 1 : 0;
    }
    return std::to_string(equal);
}

} // namespace string_model
