// SPDX-License-Identifier: Apache-2.0
#include "host/sql/sql_text.h"

#include <algorithm>

#include "host/program_error.h"

namespace host {
namespace {

bool begins_character(char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }

bool is_word_character(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '$' || c == '.' ||
           static_cast<unsigned char>(c) >= 0x80U;
}

// The word, quoted text or symbol at an offset, cut when it is long.
std::string token_at(std::string_view sql, std::size_t offset) {
    std::size_t end = offset + 1;
    if (sql[offset] == '\'' || sql[offset] == '"') {
        const std::size_t quote = sql.find(sql[offset], end);
        end = quote == std::string_view::npos ? sql.size() : quote + 1;
    } else if (is_word_character(sql[offset])) {
        end = static_cast<std::size_t>(std::find_if_not(sql.begin() + static_cast<std::ptrdiff_t>(end), sql.end(), is_word_character) -
                                       sql.begin());
    } else {
        while (end < sql.size() && std::string_view("<>=!-+*/%|&^~").find(sql[end]) != std::string_view::npos) {
            ++end;
        }
    }
    constexpr std::size_t longest = 30;
    if (end - offset <= longest) {
        return std::string(sql.substr(offset, end - offset));
    }
    std::size_t cut = offset + longest;
    while (!begins_character(sql[cut])) {
        --cut;
    }
    return std::string(sql.substr(offset, cut - offset)) + "...";
}

} // namespace

std::string sql_position(std::string_view sql, std::size_t offset) {
    const std::string_view before = sql.substr(0, std::min(offset, sql.size()));
    const std::size_t line_begin = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
    const auto character = 1 + std::count_if(before.begin() + static_cast<std::ptrdiff_t>(line_begin), before.end(), begins_character);
    if (sql.find('\n') == std::string_view::npos) {
        return fmt::format("SQL, character {}", character);
    }
    return fmt::format("SQL, line {}, character {}", 1 + std::count(before.begin(), before.end(), '\n'), character);
}

std::size_t sql_offset_of_character(std::string_view sql, std::size_t character) {
    std::size_t offset = 0;
    for (std::size_t seen = 0; offset < sql.size(); ++offset) {
        seen += begins_character(sql[offset]) ? 1 : 0;
        if (seen == character) {
            break;
        }
    }
    return offset;
}

void fail_at(std::string_view sql, std::size_t offset, std::string_view message) {
    if (offset >= sql.size()) {
        fail("{}: {}", sql_position(sql, offset), message);
    }
    fail("{}, near {}: {}", sql_position(sql, offset), token_at(sql, offset), message);
}

} // namespace host
