// SPDX-License-Identifier: Apache-2.0
#include "host/sql/tokens.h"

#include <algorithm>

namespace host {
namespace {

// Behind the closing quote of a text whose first quote stands at `begin`; in E'...' a backslash takes away the meaning of what follows.
std::size_t end_of_quoted(std::string_view sql, std::size_t begin, bool has_escapes) {
    std::size_t at = begin + 1;
    while (at < sql.size() && sql[at] != sql[begin]) {
        at += has_escapes && sql[at] == '\\' ? 2 : 1;
    }
    return std::min(at + 1, sql.size());
}

// $$...$$ and $name$...$name$; just the sign where it begins none.
std::size_t end_of_dollar_quoted(std::string_view sql, std::size_t begin) {
    std::size_t close = begin + 1;
    while (close < sql.size() && is_sql_word_character(sql[close]) && sql[close] != '$') {
        ++close;
    }
    const bool is_number = begin + 1 < sql.size() && sql[begin + 1] >= '0' && sql[begin + 1] <= '9';
    if (close >= sql.size() || sql[close] != '$' || is_number) {
        return begin + 1;
    }
    const std::string_view mark = sql.substr(begin, close + 1 - begin);
    const std::size_t end = sql.find(mark, close + 1);
    return end == sql.npos ? sql.size() : end + mark.size();
}

std::size_t end_of_comment(std::string_view sql, std::size_t begin) {
    if (sql[begin] == '-') {
        return std::min(sql.find('\n', begin), sql.size());
    }
    std::size_t at = begin;
    std::size_t open = 0;
    do {
        const std::string_view two = sql.substr(at, 2);
        open += two == "/*" ? 1U : 0U;
        open -= two == "*/" ? 1U : 0U;
        at += two == "/*" || two == "*/" ? 2 : 1;
    } while (open > 0 && at < sql.size());
    return at;
}

} // namespace

bool is_sql_word_character(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '$' ||
           static_cast<unsigned char>(c) >= 0x80U;
}

bool is_sql_comment(std::string_view rest) { return rest.starts_with("--") || rest.starts_with("/*"); }

std::string_view sql_token(std::string_view sql, std::size_t begin) {
    std::size_t end = begin + 1;
    if (is_sql_comment(sql.substr(begin))) {
        end = end_of_comment(sql, begin);
    } else if (sql[begin] == '\'' || sql[begin] == '"') {
        end = end_of_quoted(sql, begin, false);
    } else if (sql[begin] == '$') {
        end = end_of_dollar_quoted(sql, begin);
    } else if (is_sql_word_character(sql[begin])) {
        while (end < sql.size() && is_sql_word_character(sql[end])) {
            ++end;
        }
        const bool is_mark = end == begin + 1 && (sql[begin] == 'e' || sql[begin] == 'E');
        if (is_mark && end < sql.size() && sql[end] == '\'') {
            end = end_of_quoted(sql, end, true);
        }
    } else if (operator_characters.find(sql[begin]) != operator_characters.npos) {
        while (end < sql.size() && operator_characters.find(sql[end]) != operator_characters.npos && !is_sql_comment(sql.substr(end))) {
            ++end;
        }
    } else if (sql.substr(begin, 2) == "::") {
        ++end;
    }
    return sql.substr(begin, end - begin);
}

} // namespace host
