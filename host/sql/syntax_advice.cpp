// SPDX-License-Identifier: Apache-2.0
#include "host/sql/syntax_advice.h"

#include <algorithm>
#include <vector>

#include "host/near_names.h"
#include "host/sql/builtins.h"
#include "host/sql/tokens.h"

namespace host {
namespace {

struct placed_token {
    std::string_view text;
    std::size_t offset;
};

std::vector<placed_token> tokens_of(std::string_view sql) {
    std::vector<placed_token> tokens;
    for (std::size_t at = 0; at < sql.size();) {
        const std::string_view token = sql_token(sql, at);
        if (!is_sql_comment(token) && token.find_first_not_of(" \t\r\n") != token.npos) {
            tokens.push_back({token, at});
        }
        at += token.size();
    }
    return tokens;
}

struct word_elsewhere {
    std::string_view words; // at most `most_behind` tokens before the place of the error, or there
    std::string_view advice;
};

constexpr word_elsewhere words_elsewhere[] = {
    {"TRY_CAST SAFE_CAST TRY_CONVERT", "CAST fails where a text is none of the type; TO_NUMBER(x) is NULL there, and so is "
                                       "CASE WHEN ISNUMERIC(x) THEN CAST(x AS INT) END"},
    {"REGEXP RLIKE GLOB MATCH", no_regular_expressions},
    {"DESCRIBE DESC PRAGMA SUMMARIZE", "\"bifun describe FILE\" shows the columns of a file, and \\d in the shell"},
    {"QUALIFY", "there are no window functions"},
    {"DIV", "use TRUNC(x / y)"},
    {"XOR", "use (a OR b) AND NOT (a AND b)"},
    {"EXCLUDE", "write the names of the columns"},
};

} // namespace

std::string syntax_advice(std::string_view sql, std::size_t offset) {
    const std::vector<placed_token> tokens = tokens_of(sql);
    const auto place = static_cast<std::size_t>(std::ranges::lower_bound(tokens, offset, {}, &placed_token::offset) - tokens.begin());
    const auto is_at = [&](std::size_t i, std::string_view word) { return i < tokens.size() && equal_ignoring_case(tokens[i].text, word); };
    for (std::size_t i = 0; i < tokens.size() && i <= place; ++i) {
        if (is_at(i, "LIMIT") && is_at(i + 2, ",") && i + 3 < tokens.size()) {
            return fmt::format("; write LIMIT {} OFFSET {}", tokens[i + 3].text, tokens[i + 1].text);
        }
        if (is_at(i, "INTERVAL") && i + 1 == place && i + 2 < tokens.size()) {
            std::string unit = upper_case(tokens[i + 2].text);
            unit.resize(unit.size() - (unit.ends_with('S') ? 1 : 0));
            return fmt::format("; write INTERVAL '{}' {}", tokens[i + 1].text, unit);
        }
        if (is_at(i, "&&")) {
            return "; use AND";
        }
        if (is_at(i, "TOP") && i > 0 && is_at(i - 1, "SELECT")) {
            return fmt::format("; write LIMIT {} at the end", i + 1 < tokens.size() ? tokens[i + 1].text : "n");
        }
    }
    if (place == 0 && is_at(0, "FROM")) {
        return "; write SELECT * FROM";
    }
    if (place > 0 && place < tokens.size() && is_at(place - 1, "AS") && tokens[place].text.starts_with('\'')) {
        return "; names stand in double quotes";
    }
    if (sql.find('`') != sql.npos || is_at(place, "[")) {
        return "; names of columns that are no words, or reserved ones, stand in double quotes";
    }
    constexpr std::size_t most_before = 5;
    for (std::size_t i = std::min(place + 1, tokens.size()); i-- > (place > most_before ? place - most_before : 0);) {
        const std::string word = upper_case(tokens[i].text);
        const auto* const known =
            std::ranges::find_if(words_elsewhere, [&](const word_elsewhere& other) { return bifun::has_word(other.words, word); });
        if (known != std::end(words_elsewhere)) {
            return fmt::format("; {}", known->advice);
        }
    }
    return "";
}

} // namespace host
