// SPDX-License-Identifier: Apache-2.0
#include "host/tables/csv_syntax.h"

namespace host {
namespace {

char byte_behind_backslash(char byte) {
    constexpr std::string_view letters = "0bfnrtvZ";
    constexpr std::string_view bytes("\0\b\f\n\r\t\v\x1A", letters.size());
    const std::size_t found = letters.find(byte);
    return found == letters.npos ? byte : bytes[found];
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
        decoded += field[at] == '\\' && syntax.escape == '\\' ? byte_behind_backslash(field[at + 1]) : field[at + 1];
        begin = at + 2;
    }
    return decoded.append(field.substr(begin));
}

} // namespace host
