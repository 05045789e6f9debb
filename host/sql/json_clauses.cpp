// SPDX-License-Identifier: Apache-2.0
#include "host/sql/json_clauses.h"

#include <algorithm>
#include <array>
#include <optional>

#include "host/near_names.h"
#include "host/sql/tokens.h"

namespace host {
namespace {

struct open_parenthesis {
    std::optional<std::size_t> call; // of a function with clauses
    std::size_t clauses = std::string::npos;
    bool begins_argument = true;
    bool has_comma = false; // the path, behind it, is a constant: no such word is in it
};

bool has_clauses(std::string_view word) { return equal_ignoring_case(word, "JSON_VALUE") || equal_ignoring_case(word, "JSON_QUERY"); }

bool begins_clauses(std::string_view word) {
    constexpr std::array<std::string_view, 7> words = {"RETURNING", "NULL", "ERROR", "DEFAULT", "EMPTY", "WITH", "WITHOUT"};
    return std::ranges::any_of(words, [&](std::string_view known) { return equal_ignoring_case(word, known); });
}

std::string without_comments(std::string_view sql) {
    std::string text;
    while (!sql.empty()) {
        const std::string_view token = sql_token(sql, 0);
        text += is_sql_comment(token) ? " " : token;
        sql.remove_prefix(token.size());
    }
    return text;
}

// What is in the place must not end the comment or begin another.
void hide(std::string& sql, std::size_t begin, std::size_t end) {
    std::replace(sql.begin() + static_cast<std::ptrdiff_t>(begin), sql.begin() + static_cast<std::ptrdiff_t>(end), '*', ' ');
    sql.replace(begin, 2, "/*");
    sql.replace(end - 2, 2, "*/");
}

} // namespace

std::vector<json_clauses> hide_json_clauses(std::string& sql) {
    std::vector<json_clauses> found;
    std::vector<open_parenthesis> open;
    std::optional<std::size_t> call; // the name that comes directly before
    std::size_t end = 0;             // of what is neither space nor comment
    for (std::size_t at = 0; at < sql.size();) {
        const std::string token(sql_token(sql, at));
        const std::size_t next = at + token.size();
        if (token.find_first_not_of(" \t\r\n\f\v") == token.npos || is_sql_comment(token)) {
            at = next;
            continue;
        }
        if (token == "(") {
            open.push_back({.call = call});
        } else if (token == ")" && !open.empty()) {
            const open_parenthesis closed = open.back();
            open.pop_back();
            if (closed.clauses != sql.npos) {
                found.push_back(
                    {*closed.call, closed.clauses, without_comments(std::string_view(sql).substr(closed.clauses, end - closed.clauses))});
                hide(sql, closed.clauses, end);
            }
        } else if (!open.empty()) {
            open_parenthesis& inner = open.back();
            if (inner.call && inner.clauses == sql.npos && inner.has_comma && !inner.begins_argument && begins_clauses(token)) {
                inner.clauses = at;
            }
            inner.begins_argument = token == ",";
            inner.has_comma |= token == ",";
        }
        if (token == ")" && !open.empty()) {
            open.back().begins_argument = false;
        }
        call = has_clauses(token) ? std::optional(at) : std::nullopt;
        end = next;
        at = next;
    }
    return found;
}

} // namespace host
