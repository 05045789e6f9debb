// SPDX-License-Identifier: Apache-2.0
#include "embedded/format/nls_parameters.h"

#include <cstring>
#include <string_view>

#include "embedded/format/format_reader.h"

namespace zqengine {

namespace {

void skip_blanks(format_reader& text) {
    while (text.next != text.end && *text.next == ' ') {
        ++text.next;
    }
}

// Reads the value behind the equals sign, quotes resolved. The room is that of the longest text.
bool read_value(format_reader& text, currency_symbol& value) {
    value.length = 0;
    const bool quoted = take(text, "'");
    while (text.next != text.end) {
        if (*text.next == '\'') {
            if (!quoted) {
                return false;
            }
            ++text.next;
            if (text.next == text.end || *text.next != '\'') {
                return text.next == text.end || *text.next == ' ';
            }
        } else if (*text.next == ' ' && !quoted) {
            break;
        } else if (*text.next < ' ') {
            return false;
        }
        value.text[value.length++] = static_cast<char>(*text.next++);
    }
    return !quoted && value.length != 0;
}

bool is_separator(char character) {
    return character >= ' ' && character < 0x7F && std::memchr("0123456789+-<>", character, 14) == nullptr;
}

} // namespace

bool parse_nls_parameters(const std::uint8_t* characters, std::uint32_t length, nls_parameters& result) {
    if (length > max_nls_length) {
        return false;
    }
    constexpr std::string_view names[] = {"NLS_NUMERIC_CHARACTERS", "NLS_CURRENCY", "NLS_ISO_CURRENCY", "NLS_DUAL_CURRENCY"};
    currency_symbol* const symbols[] = {nullptr, &result.currency, &result.iso_currency, &result.dual_currency};
    bool seen[std::size(names)] = {};

    format_reader text{.next = characters, .end = characters + length};
    for (skip_blanks(text); text.next != text.end; skip_blanks(text)) {
        std::size_t which = 0;
        while (which < std::size(names) && !take(text, names[which])) {
            ++which;
        }
        if (which == std::size(names) || seen[which]) {
            return false;
        }
        seen[which] = true;
        skip_blanks(text);
        if (!take(text, "=")) {
            return false;
        }
        skip_blanks(text);
        currency_symbol value;
        if (!read_value(text, value)) {
            return false;
        }
        if (symbols[which] != nullptr) {
            *symbols[which] = value;
        } else {
            if (value.length != 2 || value.text[0] == value.text[1] || !is_separator(value.text[0]) || !is_separator(value.text[1])) {
                return false;
            }
            result.decimal_point = value.text[0];
            result.group_separator = value.text[1];
        }
    }
    return true;
}

} // namespace zqengine
