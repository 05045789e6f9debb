// SPDX-License-Identifier: Apache-2.0
#include "host/tables/csv_syntax.h"

namespace host {
namespace {

// What an escape and the byte behind it stand for.
void append_escaped(std::string& decoded, char byte, const csv_syntax& syntax) {
    constexpr std::string_view letters = "0bfnrtvZ";
    constexpr std::string_view controls("\0\b\f\n\r\t\v\x1A", letters.size());
    const std::size_t letter = syntax.has_letter_escapes ? letters.find(byte) : letters.npos;
    const bool has_meaning = byte == *syntax.escape || byte == syntax.quote || byte == syntax.delimiter || byte == '\n' || byte == '\r';
    if (!has_meaning && !syntax.has_letter_escapes) {
        decoded += *syntax.escape;
    }
    decoded += letter == letters.npos ? byte : controls[letter];
}

} // namespace

std::string_view decoded_text(std::string_view field, bool quoted, const csv_syntax& syntax, std::string& decoded) {
    const auto next_special = [&](std::size_t from) {
        if (!syntax.escape) {
            return quoted ? field.find(*syntax.quote, from) : field.npos;
        }
        const char special[] = {*syntax.escape, quoted ? *syntax.quote : *syntax.escape};
        return field.find_first_of(std::string_view(special, sizeof special), from);
    };
    std::size_t at = next_special(0);
    if (at == field.npos) {
        return field;
    }
    decoded.clear();
    std::size_t begin = 0;
    for (; at != field.npos && at + 1 < field.size(); at = next_special(begin)) {
        decoded.append(field, begin, at - begin);
        if (field[at] == syntax.escape) {
            append_escaped(decoded, field[at + 1], syntax);
        } else {
            decoded += field[at + 1];
        }
        begin = at + 2;
    }
    return decoded.append(field.substr(begin));
}

} // namespace host
