// SPDX-License-Identifier: Apache-2.0
#include "embedded/json/json_strings.h"

#include <cstdint>
#include <cstring>

namespace zqengine {

namespace {

bool is_digit(char character) { return character >= '0' && character <= '9'; }

constexpr std::uint32_t no_unit = ~0U;

// The UTF-16 unit of four hexadecimal digits.
std::uint32_t unit_at(std::string_view digits) {
    std::uint32_t unit = 0;
    if (digits.size() < 4) {
        return no_unit;
    }
    for (const char digit : digits.substr(0, 4)) {
        const char letter = static_cast<char>(digit | 0x20);
        if (!is_digit(digit) && (letter < 'a' || letter > 'f')) {
            return no_unit;
        }
        unit = unit * 16 + static_cast<std::uint32_t>(is_digit(digit) ? digit - '0' : letter - 'a' + 10);
    }
    return unit;
}

bool is_high_surrogate(std::uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool is_low_surrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// The character of an escape that begins at the backslash, and how long it is; length 0 where it is none.
struct escaped_character {
    std::uint32_t code;
    std::uint32_t length;
};

escaped_character read_escape(std::string_view text) {
    if (text.size() < 2) {
        return {0, 0};
    }
    constexpr std::string_view names = "\"\\/bfnrt";
    constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    if (const std::size_t named = names.find(text[1]); named != names.npos) {
        return {static_cast<std::uint8_t>(meanings[named]), 2};
    }
    const std::uint32_t unit = text[1] == 'u' ? unit_at(text.substr(2)) : no_unit;
    if (unit == no_unit || is_low_surrogate(unit)) {
        return {0, 0};
    }
    if (!is_high_surrogate(unit)) {
        return {unit, 6};
    }
    const std::uint32_t low = text.size() >= 12 && text[6] == '\\' && text[7] == 'u' ? unit_at(text.substr(8)) : no_unit;
    return is_low_surrogate(low) ? escaped_character{0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00), 12} : escaped_character{0, 0};
}

char* write_utf8(std::uint32_t code, char* out) {
    const auto put = [&](std::uint32_t byte) { *out++ = static_cast<char>(byte); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6);
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3F));
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    }
    return out;
}

} // namespace

bool has_good_escapes(std::string_view text) {
    for (std::size_t at = text.find('\\'); at != text.npos; at = text.find('\\', at)) {
        const std::uint32_t length = read_escape(text.substr(at)).length;
        if (length == 0) {
            return false;
        }
        at += length;
    }
    return true;
}

char* write_characters(std::string_view text, char* out) {
    while (true) {
        const std::size_t plain = text.find('\\');
        const std::string_view copied = text.substr(0, plain);
        if (!copied.empty()) {
            std::memcpy(out, copied.data(), copied.size());
            out += copied.size();
        }
        if (plain == text.npos) {
            return out;
        }
        const escaped_character escape = read_escape(text.substr(plain));
        out = write_utf8(escape.code, out);
        text.remove_prefix(plain + escape.length);
    }
}

bool has_characters(std::string_view text, bool has_escapes, std::string_view characters) {
    if (!has_escapes) {
        return text == characters;
    }
    while (true) {
        const std::size_t plain = text.find('\\');
        const std::string_view same = text.substr(0, plain);
        if (!characters.starts_with(same)) {
            return false;
        }
        characters.remove_prefix(same.size());
        if (plain == text.npos) {
            return characters.empty();
        }
        const escaped_character escape = read_escape(text.substr(plain));
        char bytes[4];
        const std::string_view character(bytes, static_cast<std::size_t>(write_utf8(escape.code, bytes) - bytes));
        if (!characters.starts_with(character)) {
            return false;
        }
        characters.remove_prefix(character.size());
        text.remove_prefix(plain + escape.length);
    }
}

char* write_string(std::string_view characters, char* out) {
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr std::string_view named = "\b\t\n\f\r\"\\";
    constexpr std::string_view names = "btnfr\"\\";
    *out++ = '"';
    for (const char character : characters) {
        const std::size_t name = named.find(character);
        if (name != named.npos) {
            *out++ = '\\';
            *out++ = names[name];
        } else if (static_cast<unsigned char>(character) < 0x20) {
            out = static_cast<char*>(std::memcpy(out, "\\u00", 4)) + 4;
            *out++ = digits[static_cast<unsigned char>(character) >> 4];
            *out++ = digits[static_cast<unsigned char>(character) & 0x0F];
        } else {
            *out++ = character;
        }
    }
    *out++ = '"';
    return out;
}

} // namespace zqengine
