// SPDX-License-Identifier: Apache-2.0
#include "host/sql/names.h"

#include <algorithm>

extern "C" {
#include <pg_query.h>
}

#include "host/near_names.h"
#include "host/sql/tokens.h"

namespace host {
namespace {

std::size_t find_ignoring_case(std::string_view text, std::string_view part, std::size_t from) {
    for (std::size_t at = from; at + part.size() <= text.size(); ++at) {
        if (equal_ignoring_case(text.substr(at, part.size()), part)) {
            return at;
        }
    }
    return text.npos;
}

} // namespace

std::string name_in_query(const std::string& name) {
    const bool is_word = !name.empty() && std::ranges::all_of(name, is_sql_word_character) && name.find('$') == std::string::npos &&
                         (name.front() < '0' || name.front() > '9');
    const PgQueryParseResult parsed = pg_query_parse(("SELECT 1 FROM t AS " + name).c_str());
    const bool is_plain = is_word && parsed.error == nullptr;
    pg_query_free_parse_result(parsed);
    if (is_plain) {
        return name;
    }
    std::string quoted = "\"";
    for (const char c : name) {
        quoted.append(c == '"' ? 2 : 1, c);
    }
    return quoted + '"';
}

std::size_t find_name_around(std::string_view sql, std::string_view name, std::size_t offset) {
    for (std::size_t at = find_ignoring_case(sql, name, 0); at <= offset; at = find_ignoring_case(sql, name, at + 1)) {
        const std::size_t end = at + name.size();
        const bool is_quoted = at > 0 && sql[at - 1] == '"';
        const bool is_part = (at > 0 && is_sql_word_character(sql[at - 1])) || (end < sql.size() && is_sql_word_character(sql[end]));
        if (!is_quoted && !is_part && (offset <= end || sql.substr(end, offset - end).find_first_not_of(" \t\r\n,`]") == sql.npos)) {
            return at;
        }
    }
    return sql.npos;
}

std::string_view name_as_written(std::string_view sql, std::size_t offset, std::string_view folded) {
    const std::size_t at = find_ignoring_case(sql, folded, offset);
    return at == sql.npos ? folded : sql.substr(at, folded.size());
}

std::string_view column_as_spelled(std::string_view sql, std::size_t offset, bool has_table, std::string_view folded) {
    bool is_behind_table = !has_table;
    for (std::size_t at = offset; at < sql.size();) {
        const std::string_view token = sql_token(sql, at);
        const bool is_blank = is_sql_comment(token) || token.find_first_not_of(" \t\r\n\f\v") == token.npos;
        if (is_behind_table && !is_blank) {
            return equal_ignoring_case(token.substr(0, folded.size()), folded) ? token : folded;
        }
        is_behind_table |= token == ".";
        at += token.size();
    }
    return folded;
}

} // namespace host
