// SPDX-License-Identifier: Apache-2.0
#include "tests/bifun_str/string_model.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <memory>

#include "engine/charset.h"

namespace string_model {
namespace {

using characters = std::vector<std::string>;

constexpr std::int64_t everything = std::numeric_limits<std::int64_t>::max();

bool lies_in(unsigned char byte, unsigned low, unsigned high) { return byte >= low && byte <= high; }

bool is_whitespace(char byte) { return byte == ' ' || lies_in(static_cast<unsigned char>(byte), 9, 13); }

// 0 where no character of more than one byte begins.
std::size_t multibyte_length(std::uint32_t charset, std::string_view bytes) {
    const auto at = [&](std::size_t i) { return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U; };
    const auto byte_lies_in = [&](std::size_t i, unsigned low, unsigned high) { return at(i) >= low && at(i) <= high; };
    if (charset == ZQ_CHARSET_EUC_KR) {
        return byte_lies_in(0, 0xA1, 0xFE) && byte_lies_in(1, 0xA1, 0xFE) ? 2 : 0;
    }
    if (charset == ZQ_CHARSET_GB18030) {
        if (!byte_lies_in(0, 0x81, 0xFE)) {
            return 0;
        }
        if (byte_lies_in(1, '0', '9')) {
            return byte_lies_in(2, 0x81, 0xFE) && byte_lies_in(3, '0', '9') ? 4 : 0;
        }
        return byte_lies_in(1, 0x40, 0xFE) && at(1) != 0x7F ? 2 : 0;
    }
    const std::size_t length = byte_lies_in(0, 0xC2, 0xDF) ? 2 : byte_lies_in(0, 0xE1, 0xEC) ? 3 : byte_lies_in(0, 0xF1, 0xF3) ? 4 : 0;
    for (std::size_t i = 1; i < length; ++i) {
        if (!byte_lies_in(i, 0x80, 0xBF)) {
            return 0;
        }
    }
    return length;
}

characters full_text(std::uint32_t charset, const text& value) {
    characters all = characters_of(charset, value.stored);
    all.insert(all.end(), value.blanks, " ");
    return all;
}

std::string joined(characters::const_iterator begin, characters::const_iterator end) {
    std::string bytes;
    std::for_each(begin, end, [&](const std::string& character) { bytes += character; });
    return bytes;
}

// ---- trimming ---------------------------------------------------------------------------------------------------------

bool is_empty(const text& value) { return value.stored.empty() && value.blanks == 0; }
bool is_blank_set(const text& set) { return set.stored.empty() && set.blanks != 0; }
bool has_whitespace(const text& set) { return std::ranges::any_of(set.stored, is_whitespace); }

std::string without_leading(std::uint32_t charset, const std::string& bytes, const characters& set) {
    const characters all = characters_of(charset, bytes);
    return joined(std::ranges::find_if(all, [&](const auto& c) { return std::ranges::count(set, c) == 0; }), all.end());
}

std::string without_trailing(std::uint32_t charset, const std::string& bytes, const characters& set) {
    characters all = characters_of(charset, bytes);
    while (!all.empty() && std::ranges::count(set, all.back()) != 0) {
        all.pop_back();
    }
    return joined(all.begin(), all.end());
}

std::string without_leading_whitespace(const std::string& bytes) { return {std::ranges::find_if_not(bytes, is_whitespace), bytes.end()}; }

std::string trimmed_on_the_left(std::uint32_t charset, const text& value, const text& set) {
    const characters members = characters_of(charset, set.stored);
    if (is_empty(value) || is_empty(set)) {
        return shown(value);
    }
    if (is_blank_set(set)) {
        // The count is kept where there is a text before it.
        return shown({without_leading(charset, value.stored, {" "}), value.stored.empty() ? 0 : value.blanks});
    }
    if (set.blanks != 0 || has_whitespace(set)) {
        const std::string rest = without_leading(charset, without_leading_whitespace(value.stored), members);
        return shown({rest, rest.empty() ? 0 : value.blanks});
    }
    if (!value.stored.empty() && is_whitespace(value.stored[0])) {
        return "=?";
    }
    return shown({without_leading(charset, value.stored, members), value.blanks});
}

std::string trimmed_on_the_right(std::uint32_t charset, const text& value, const text& set) {
    if (is_blank_set(set)) {
        return shown({value.stored, 0});
    }
    if (is_empty(value) || is_empty(set) || (set.blanks == 0 && !has_whitespace(set) && value.blanks != 0)) {
        return shown(value);
    }
    return shown({without_trailing(charset, value.stored, characters_of(charset, set.stored)), 0});
}

std::string trimmed_on_both_sides(std::uint32_t charset, const text& value, const text& set) {
    if (set.blanks != 0) {
        return shown({without_leading_whitespace(value.stored), 0});
    }
    const characters members = characters_of(charset, set.stored);
    const bool begins_with_whitespace = !value.stored.empty() && is_whitespace(value.stored[0]);
    const std::string rest = begins_with_whitespace ? value.stored : without_leading(charset, value.stored, members);
    return shown({value.blanks != 0 ? rest : without_trailing(charset, rest, members), value.blanks});
}

std::string trim(std::uint32_t charset, std::int32_t mode, const text& value, const text& set) {
    if (is_empty(value) || is_empty(set)) {
        return shown(value);
    }
    if (characters_of(charset, set.stored).size() + set.blanks != 1) {
        return "";
    }
    return (mode == 579 ? trimmed_on_the_left : mode == 580 ? trimmed_on_the_right : trimmed_on_both_sides)(charset, value, set);
}

// ---- parts ------------------------------------------------------------------------------------------------------------

struct range {
    std::size_t begin, end;
};

// Units `position` to `position + length - 1` of `total`, counted from the end where the position is negative.
range part(std::size_t total, std::int64_t position, std::int64_t length) {
    const auto size = static_cast<std::int64_t>(total);
    const std::int64_t begin = position > 0 ? position - 1 : position == 0 ? 0 : size + position;
    if (begin < 0 || begin >= size) {
        return {0, 0};
    }
    return {static_cast<std::size_t>(begin), static_cast<std::size_t>(begin + std::min(length, size - begin))};
}

// Whether the length makes the row NULL: it does not matter where nothing is there to take.
bool refuses(std::size_t total, std::int64_t position, std::int64_t length) {
    const auto size = static_cast<std::int64_t>(total);
    return length < 0 && position <= size && size + position >= 0;
}

// Characters `begin` to `end` of a text: of its blanks as a count.
std::string shown_part(const characters& all, const text& value, range taken) {
    const std::size_t stored = all.size() - value.blanks;
    const auto at = [&](std::size_t index) { return all.begin() + static_cast<std::ptrdiff_t>(std::min(index, stored)); };
    return shown(
        {joined(at(taken.begin), at(taken.end)), static_cast<std::uint32_t>(taken.end - std::clamp(stored, taken.begin, taken.end))});
}

std::string substring(std::uint32_t charset, const text& value, std::int64_t position, std::int64_t length) {
    const characters all = full_text(charset, value);
    return refuses(all.size(), position, length) ? "NULL" : shown_part(all, value, part(all.size(), position, length));
}

std::string right(std::uint32_t charset, const text& value, std::int64_t length) {
    const auto total = static_cast<std::int64_t>(full_text(charset, value).size());
    return substring(charset, value, length >= total ? 1 : total - length + 1, everything);
}

std::string substring_of_bytes(std::uint32_t charset, const text& value, std::int64_t position, std::int64_t length) {
    const std::size_t total = value.stored.size() + value.blanks;
    if (refuses(total, position, length)) {
        return "NULL";
    }
    const range taken = part(total, position, length);
    if (taken.begin >= value.stored.size() || taken.begin == taken.end) {
        return shown({"", static_cast<std::uint32_t>(taken.end - taken.begin)});
    }
    std::string uncut;
    for (const std::string& character : characters_of(charset, value.stored)) {
        const bool is_cut = uncut.size() < taken.begin || uncut.size() + character.size() > taken.end;
        uncut += is_cut ? std::string(character.size(), ' ') : character;
    }
    return shown({uncut.substr(taken.begin, taken.end - taken.begin), value.blanks});
}

// ---- searching --------------------------------------------------------------------------------------------------------

// The indexes of the characters with which an occurrence begins.
std::vector<std::size_t> occurrences(const characters& all, const characters& pattern) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i + pattern.size() <= all.size(); ++i) {
        if (std::equal(pattern.begin(), pattern.end(), all.begin() + static_cast<std::ptrdiff_t>(i))) {
            found.push_back(i);
        }
    }
    return found;
}

enum class unit : std::uint8_t { character, byte };

std::int64_t place_of(const characters& all, const characters& pattern, unit unit, std::int64_t start, std::int64_t occurrence) {
    const auto size = [&](std::size_t begin, std::size_t end) {
        const auto at = [&](std::size_t i) { return all.begin() + static_cast<std::ptrdiff_t>(i); };
        return static_cast<std::int64_t>(unit == unit::byte ? joined(at(begin), at(end)).size() : end - begin);
    };
    std::vector<std::int64_t> places;
    for (const std::size_t index : occurrences(all, pattern)) {
        const std::int64_t place = size(0, index) + 1;
        const std::int64_t last = place + size(index, index + pattern.size()) - 1;
        if (start > 0 ? place >= start : start < 0 && last <= size(0, all.size()) + start + 1) {
            places.push_back(place);
        }
    }
    if (start < 0) {
        std::ranges::reverse(places);
    }
    return occurrence <= static_cast<std::int64_t>(places.size()) ? places[static_cast<std::size_t>(occurrence - 1)] : 0;
}

// Case pairs of the alphabets of which both have as many bytes.
text folded(std::uint32_t charset, const text& value) {
    constexpr std::string_view pairs[][2] = {{"\xA6\xA1", "\xA6\xC1"}, {"\xC3\x89", "\xC3\xA9"}, {"\xA5\xC1", "\xA5\xE1"}};
    text result = {"", value.blanks};
    for (std::string character : characters_of(charset, value.stored)) {
        if (character.size() == 1) {
            character[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(character[0])));
        } else if (character == pairs[charset][1]) {
            character = pairs[charset][0];
        }
        result.stored += character;
    }
    return result;
}

std::string search(const bifun_settings& settings, bool folds, unit unit, text value, text pattern, std::int64_t start,
                   std::int64_t occurrence) {
    if (is_empty(pattern)) {
        return "NULL";
    }
    if (folds && settings.case_sensitive == 0) {
        value = folded(settings.charset_code, value);
        pattern = folded(settings.charset_code, pattern);
    }
    return std::to_string(
        place_of(full_text(settings.charset_code, value), full_text(settings.charset_code, pattern), unit, start, occurrence));
}

std::string substring_index(std::uint32_t charset, const text& value, const text& delimiter, std::int64_t count) {
    const characters all = full_text(charset, value);
    const characters sought = full_text(charset, delimiter);
    if (count == 0 || sought.empty()) {
        return shown({});
    }
    const std::vector<std::size_t> found = occurrences(all, sought);
    const auto wanted = static_cast<std::size_t>(std::abs(count));
    range taken = {0, all.size()};
    if (wanted <= found.size() && count > 0) {
        taken.end = found[wanted - 1];
    } else if (wanted <= found.size()) {
        taken.begin = found[found.size() - wanted] + sought.size();
    }
    return shown_part(all, value, taken);
}

// ---- building ---------------------------------------------------------------------------------------------------------

// A character of a text on its way into another: whether it is a blank that is counted where it stands at the end.
struct cell {
    std::string character;
    bool is_counted;
};
using cells = std::vector<cell>;

cells cells_of(std::uint32_t charset, const text& value) {
    cells all;
    for (const std::string& character : characters_of(charset, value.stored)) {
        all.push_back({character, false});
    }
    all.insert(all.end(), value.blanks, {" ", true});
    return all;
}

cells written_out(cells all) {
    std::ranges::for_each(all, [](cell& cell) { cell.is_counted = false; });
    return all;
}

cells part_of(const cells& all, std::size_t begin, std::size_t end) {
    return {all.begin() + static_cast<std::ptrdiff_t>(begin), all.begin() + static_cast<std::ptrdiff_t>(end)};
}

cells& append(cells& all, const cells& more) {
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

std::string shown(const cells& all) {
    text result;
    const auto uncounted = std::ranges::find_if_not(all.rbegin(), all.rend(), &cell::is_counted);
    std::for_each(all.begin(), uncounted.base(), [&](const cell& cell) { result.stored += cell.character; });
    result.blanks = static_cast<std::uint32_t>(uncounted - all.rbegin());
    return string_model::shown(result);
}

// A pattern without trailing blanks of its own is not looked for in those of the text.
std::string replace(const bifun_settings& settings, const text& value, const text& pattern, const text& replacement) {
    const std::uint32_t charset = settings.charset_code;
    const bool folds = settings.case_sensitive == 0;
    const cells original = cells_of(charset, value);
    const text looked_in = {value.stored, pattern.blanks == 0 ? 0 : value.blanks};
    const characters searched = full_text(charset, folds ? folded(charset, looked_in) : looked_in);
    const characters sought = full_text(charset, folds ? folded(charset, pattern) : pattern);
    cells result;
    std::size_t done = 0;
    for (const std::size_t place : sought.empty() ? std::vector<std::size_t>() : occurrences(searched, sought)) {
        if (place >= done) {
            append(result, part_of(original, done, place));
            append(result, written_out(cells_of(charset, replacement)));
            done = place + sought.size();
        }
    }
    return shown(append(result, part_of(original, done, original.size())));
}

std::string overlay(std::uint32_t charset, const text& value, std::int64_t position, std::int64_t length, const text& replacement) {
    const cells all = cells_of(charset, value);
    const auto begin = static_cast<std::size_t>(std::min(position - 1, std::ssize(all)));
    const auto end = static_cast<std::size_t>(std::min(position - 1 + length, std::ssize(all)));
    cells result = written_out(part_of(all, 0, begin));
    append(result, written_out(cells_of(charset, replacement)));
    return shown(append(result, part_of(all, end, all.size())));
}

std::string translate(std::uint32_t charset, const text& value, const text& from, const text& to) {
    const characters sought = full_text(charset, from);
    const characters given = full_text(charset, to);
    cells result;
    for (const cell& cell : cells_of(charset, value)) {
        const auto found = static_cast<std::size_t>(std::ranges::find(sought, cell.character) - sought.begin());
        if (found == sought.size()) {
            result.push_back(cell);
        } else if (found < given.size()) {
            result.push_back({given[found], cell.is_counted && given[found] == " "});
        }
    }
    return shown(result);
}

// A number of characters, of which those that the text lacks are of the pad.
cells padding(std::uint32_t charset, std::size_t present, std::int64_t length, const text& pad) {
    const characters repeated = full_text(charset, pad);
    cells result;
    for (std::size_t i = 0; !repeated.empty() && static_cast<std::int64_t>(present + i) < length; ++i) {
        const std::string& character = repeated[i % repeated.size()];
        result.push_back({character, character == " "});
    }
    return result;
}

cells beginning(const cells& all, std::int64_t length) {
    return part_of(all, 0, static_cast<std::size_t>(std::clamp<std::int64_t>(length, 0, std::ssize(all))));
}

std::string padded_on_the_left(std::uint32_t charset, const text& value, std::int64_t length, const text& pad) {
    const cells all = cells_of(charset, value);
    cells result = padding(charset, all.size(), length, pad);
    return shown(append(result, beginning(all, length)));
}

std::string padded_on_the_right(std::uint32_t charset, const text& value, std::int64_t length, const text& pad) {
    const cells all = cells_of(charset, value);
    cells result = beginning(all, length);
    return shown(append(result, padding(charset, all.size(), length, pad)));
}

std::string concatenation(const value& a, const value& b) {
    if (a.is_null || b.is_null) {
        return a.is_null && b.is_null ? "NULL" : shown(a.is_null ? b.string : a.string);
    }
    const std::string blanks(a.string.blanks, ' ');
    return b.string.stored.empty() ? shown(text{a.string.stored, a.string.blanks + b.string.blanks})
                                   : shown(text{a.string.stored + blanks + b.string.stored, b.string.blanks});
}

std::string repetition(std::uint32_t charset, const text& value, std::int64_t count) {
    cells result;
    for (std::int64_t i = 0; i < count; ++i) {
        append(result, cells_of(charset, value));
    }
    return shown(result);
}

// ---- changing ---------------------------------------------------------------------------------------------------------

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

std::string stepped(std::uint32_t charset, const text& value, std::int64_t position, int step) {
    cells all = cells_of(charset, value);
    if (position >= 1 && position <= std::ssize(all)) {
        const auto index = static_cast<std::size_t>(position - 1);
        std::for_each(all.begin(), all.begin() + position, [](cell& cell) { cell.is_counted = false; });
        all[index].character = neighbour(charset, all[index].character, step);
    }
    return shown(all);
}

// ---- converting -------------------------------------------------------------------------------------------------------

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

// Nothing has no length, as a rule.
std::string length_or_null(const bifun_settings& settings, std::size_t length) {
    return length == 0 && settings.compatible_mode != 3 ? "NULL" : std::to_string(length);
}

} // namespace

std::vector<std::string> alphabet(std::uint32_t charset) {
    const std::vector<std::string> of_charsets[] = {
        {"\201a", "\201A", "\x81\x81", "\2010\2010", "\xA6\xA1", "\xA6\xC1"},
        {"\xC3\x89", "\xC3\xA9", "\xC9\x90", "\xE2\xB1\xAF", "\xE4\xB8\x80", "\xE9\x80\x80", "\xF1\x80\x80\x80"},
        {"\xA5\xC1", "\xA5\xE1", "\xA5\xA5", "\xC1\xA5", "\xB0\xA1"}};
    std::vector<std::string> all = {"a", "A", "b", "0", " ", "\t", "\r", "\x08", "\x0E", "\xFF"}; // the last is a character of none of them
    all.insert(all.end(), of_charsets[charset].begin(), of_charsets[charset].end());
    return all;
}

std::vector<std::string> characters_of(std::uint32_t charset, std::string_view bytes) {
    characters all;
    for (; !bytes.empty(); bytes.remove_prefix(all.back().size())) {
        all.emplace_back(bytes.substr(0, std::max<std::size_t>(multibyte_length(charset, bytes), 1)));
    }
    return all;
}

std::string shown(const text& value) {
    std::string print = "'";
    for (const char byte : value.stored) {
        char code[8];
        std::snprintf(code, sizeof code, lies_in(static_cast<unsigned char>(byte), ' ', '~') ? "%c" : "\\x%02X",
                      static_cast<unsigned char>(byte));
        print += code;
    }
    print += "'";
    if (value.blanks != 0) {
        print.append("+").append(std::to_string(value.blanks));
    }
    return print;
}

std::string row_of(const bifun_settings& settings, const bifun::entry_point& entry, const std::vector<value>& arguments) {
    const std::string_view builtin = entry.builtin;
    const std::uint32_t charset = settings.charset_code;
    const std::size_t count = arguments.size();
    const auto number = [&](std::size_t position, std::int64_t otherwise) {
        return position < count ? arguments[position].number : otherwise;
    };
    const text& first = arguments[0].string;
    const text blank = {"", 1};
    if (builtin == "CONCAT") {
        return concatenation(arguments[0], arguments[1]);
    }
    if (std::ranges::any_of(arguments, &value::is_null)) {
        return "NULL";
    }
    const text& second = count > 1 ? arguments[1].string : blank;
    const text& third = count > 2 ? arguments[2].string : builtin == "REPLACE" ? text{} : blank;
    const bool counts_blanks = std::string_view(entry.symbol) != "blength_a_str";
    // clang-format off
    return builtin == "TRIM" && count == 1 ? trimmed_on_both_sides(charset, first, blank)
         : builtin == "TRIM"            ? trim(charset, arguments[0].number, second, arguments[2].string)
         : builtin == "LTRIM"           ? trimmed_on_the_left(charset, first, second)
         : builtin == "RTRIM"           ? trimmed_on_the_right(charset, first, second)
         : builtin == "SUBSTR"          ? substring(charset, first, number(1, 1), number(2, everything))
         : builtin == "SUBSTRB"         ? substring_of_bytes(charset, first, number(1, 1), number(2, everything))
         : builtin == "LEFT"            ? substring(charset, first, 1, number(1, 0))
         : builtin == "RIGHT"           ? right(charset, first, number(1, 0))
         : builtin == "SUBSTRING_INDEX" ? substring_index(charset, first, second, number(2, 0))
         : builtin == "INSTR"           ? search(settings, true, unit::character, first, second, number(2, 1), number(3, 1))
         : builtin == "INSTRB"          ? search(settings, true, unit::byte, first, second, number(2, 1), number(3, 1))
         : builtin == "POSITION" || builtin == "LOCATE"
             ? search(settings, builtin == "POSITION", unit::character, second, first, std::max<std::int64_t>(number(2, 1), 0), 1)
         : builtin == "REPLACE"         ? replace(settings, first, second, third)
         : builtin == "OVERLAY"
             ? overlay(charset, first, number(2, 1), number(3, std::ssize(full_text(charset, second))), second)
         : builtin == "INSSTR"          ? overlay(charset, first, number(1, 1), number(2, 0), arguments[3].string)
         : builtin == "TRANSLATE"       ? translate(charset, first, second, third)
         : builtin == "LPAD"            ? padded_on_the_left(charset, first, number(1, 0), third)
         : builtin == "RPAD"            ? padded_on_the_right(charset, first, number(1, 0), third)
         : builtin == "REPEAT"          ? repetition(charset, first, number(1, 0))
         : builtin == "UPPER" || builtin == "LOWER" || builtin == "INITCAP" ? in_case(charset, first, builtin)
         : builtin == "REVERSE"         ? reversal(charset, first)
         : builtin == "STRPOSINC" || builtin == "STRPOSDEC"
             ? stepped(charset, first, number(1, std::ssize(full_text(charset, first))), builtin == "STRPOSINC" ? 1 : -1)
         : builtin == "ASCII"           ? first_code(settings, first)
         : builtin == "ASCIISTR"        ? escaped(charset, first)
         : builtin == "HEXTORAW"        ? shown(text{from_digits(first.stored)})
         : builtin == "RAWTOHEX"        ? shown(text{in_digits(written_out(first))})
         : builtin == "TEXT_TO_CHAR"    ? shown(first)
         : builtin == "CHARTOBIN"       ? shown(text{written_out(first)})
         : builtin == "SOUNDEX"         ? shown(text{soundex(charset, first)})
         : builtin == "DIFFERENCE"      ? difference(soundex(charset, first), soundex(charset, second))
         : builtin == "SPACE"           ? shown(text{"", static_cast<std::uint32_t>(number(0, 0))})
         : builtin == "LENGTH"
             ? length_or_null(settings, full_text(charset, {first.stored, counts_blanks ? first.blanks : 0}).size())
         : builtin == "LENGTHB"         ? length_or_null(settings, first.stored.size() + first.blanks)
         : "no model of " + std::string(builtin);
    // clang-format on
}

// ---- calls ------------------------------------------------------------------------------------------------------------

namespace {

using bifun::argument_kind;
using bifun::entry_point;
using bifun::value_type;

// A column whose texts lie in blocks of exactly their size.
struct argument_column {
    argument_column(value_type type, const std::vector<std::vector<value>>& rows, std::size_t position)
        : column(zqengine::create_column(type, static_cast<std::uint32_t>(rows.size()))), no_nulls(1) {
        for (std::uint32_t row = 0; row < rows.size(); ++row) {
            const value& value = rows[row][position];
            column->data.null_flags[row] = value.is_null ? 0 : 1;
            no_nulls &= value.is_null ? 0U : 1U;
            if (type == value_type::INT) {
                zqengine::values_of<std::int32_t>(*column)[row] = value.number;
                continue;
            }
            const std::string& stored = value.string.stored;
            blocks.push_back(std::make_unique<std::uint8_t[]>(stored.size()));
            std::ranges::copy(stored, blocks.back().get());
            zqengine::values_of<bifun_string>(*column)[row] = {static_cast<std::uint32_t>(stored.size()), value.string.blanks,
                                                               stored.empty() && row % 2 == 0 ? nullptr : blocks.back().get()};
        }
        column->column.no_nulls = no_nulls;
        if (type == value_type::VARCHAR && rows.size() % 2 == 0) {
            zqengine::tell_texts(*column, column->capacity);
        }
    }

    std::vector<std::unique_ptr<std::uint8_t[]>> blocks;
    zqengine::column_pointer column;
    std::uint32_t no_nulls;
};

// A row of a result as the model prints it.
std::string shown(const contract::outcome& outcome, std::uint32_t row) {
    if (outcome.flag(row) != 1) {
        return outcome.flag(row) == 0 ? "NULL" : "?";
    }
    if (!outcome.holds_value(row)) {
        return "=?";
    }
    if (outcome.result->type == value_type::INT) {
        return std::to_string(zqengine::values_of<std::int32_t>(*outcome.result)[row]);
    }
    if (outcome.result->type == value_type::BIGINT) {
        return std::to_string(zqengine::values_of<std::int64_t>(*outcome.result)[row]);
    }
    const bifun_string& value = zqengine::values_of<bifun_string>(*outcome.result)[row];
    return shown(text{std::string(reinterpret_cast<const char*>(value.data), value.length), value.trailing_blanks});
}

} // namespace

std::vector<const bifun::entry_point*> string_functions() {
    std::vector<const bifun::entry_point*> found;
    for (const bifun::entry_point& entry : bifun::entry_points) {
        // ROUND and the like are about numbers and dates in texts, or JSON; digests and sort keys have others to compare with.
        const bool is_other = bifun::has_word("ROUND TO_NUMBER ISNUMERIC JSON_VALUE JSON_QUERY MD5 SHA2 NLSSORT", entry.builtin) ||
                              std::ranges::any_of(entry.arguments(), [](const auto& argument) {
                                  return argument.type != value_type::VARCHAR && argument.type != value_type::INT;
                              });
        if (std::string_view(entry.symbol).ends_with("_str") && !is_other) {
            found.push_back(&entry);
        }
    }
    return found;
}

string_call call_strings(const entry_point& entry, const std::vector<std::vector<value>>& rows) {
    std::vector<argument_column> columns;
    std::vector<contract::generated_constant> constants(entry.argument_count);
    std::vector<contract::call_argument> arguments(entry.argument_count);
    columns.reserve(entry.argument_count);
    for (std::size_t i = 0; i < entry.argument_count; ++i) {
        columns.emplace_back(entry.argument_list[i].type, rows, i);
        if (entry.argument_list[i].kind == argument_kind::constant) {
            constants[i] = contract::constant_of_row(*columns[i].column, 0);
            arguments[i] = {.constant = &constants[i]};
        } else {
            arguments[i] = {.column = columns[i].column.get()};
        }
    }
    string_call call{contract::call(entry, arguments, static_cast<std::uint32_t>(rows.size())), {}};
    for (std::uint32_t row = 0; row < rows.size(); ++row) {
        call.rows.push_back(shown(call.outcome, row));
    }
    return call;
}

std::string shown(const entry_point& entry, std::size_t position, const value& argument) {
    return argument.is_null                                        ? "NULL"
           : entry.argument_list[position].type == value_type::INT ? std::to_string(argument.number)
                                                                   : shown(argument.string);
}

std::string shown(const entry_point& entry, const std::vector<value>& arguments) {
    std::string call = entry.symbol;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        call += (i == 0 ? "(" : ", ") + shown(entry, i, arguments[i]);
    }
    return call + ")";
}

} // namespace string_model
