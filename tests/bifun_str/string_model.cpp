// SPDX-License-Identifier: Apache-2.0
#include "tests/bifun_str/string_model.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iterator>

#include "engine/charset.h"
#include "tests/bifun_str/family_models.h"

namespace string_model {
namespace {

bool lies_in(unsigned char byte, unsigned low, unsigned high) { return byte >= low && byte <= high; }

// Nothing has no length, as a rule.
std::string length_or_null(const bifun_settings& settings, std::size_t length) {
    return length == 0 && settings.compatible_mode != 3 ? "NULL" : std::to_string(length);
}

} // namespace

// ---- characters ----

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

bool is_empty(const text& value) { return value.stored.empty() && value.blanks == 0; }

std::vector<std::size_t> occurrences(const characters& all, const characters& pattern) {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i + pattern.size() <= all.size(); ++i) {
        if (std::equal(pattern.begin(), pattern.end(), all.begin() + static_cast<std::ptrdiff_t>(i))) {
            found.push_back(i);
        }
    }
    return found;
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

// ---- cells ----

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

// ---- rows ----

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

} // namespace string_model
