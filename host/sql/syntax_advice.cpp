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

constexpr std::string_view curly_quotes[] = {"\u2018", "\u2019", "\u201C", "\u201D"};

constexpr word_elsewhere words_elsewhere[] = {
    {"TRY_CAST SAFE_CAST TRY_CONVERT", "CAST fails where a text is none of the type; TO_NUMBER(x) is NULL there, and so is "
                                       "CASE WHEN ISNUMERIC(x) THEN CAST(x AS INT) END; CAST(TO_DT_TZ(x) AS DATE) is NULL "
                                       "where a text is no date such as 2024-02-29"},
    {"REGEXP RLIKE GLOB MATCH", no_regular_expressions},
    {"DESCRIBE DESC PRAGMA SUMMARIZE", "\"bifun describe FILE\" shows the columns of a file, and \\d in the shell"},
    {"QUALIFY", "there are no window functions"},
    {"DIV", "use TRUNC(x / y)"},
    {"XOR", "use (a OR b) AND NOT (a AND b)"},
    {"EXCLUDE", "write the names of the columns"},
    {"CONTAINS", "LIKE '%text%' finds texts that hold another"},
    {"STARTS STARTSWITH", "LIKE 'text%' finds texts that begin with another"},
    {"ENDS ENDSWITH", "LIKE '%text' finds texts that end with another"},
    {"JOIN", no_joins},
};

const std::string keywords[] = {"SELECT", "FROM", "WHERE", "LIMIT", "OFFSET", "AND", "BETWEEN", "LIKE", "GROUP", "ORDER"};

bool is_one_of(std::string_view words, std::string_view token) { return bifun::has_word(words, upper_case(token)); }

// Whether a token ends what stands before it: a list of columns, an expression. So does the end of the text.
bool begins_clause(std::string_view token) { return is_one_of("FROM WHERE LIMIT OFFSET", token); }

// Of a keyword that is mistyped at the place of the error or, where it was taken for a name, before it.
std::string keyword_advice(const std::vector<placed_token>& tokens, std::size_t place) {
    for (std::size_t i = std::min(place + 1, tokens.size()); i-- > (place > 0 ? place - 1 : 0);) {
        const std::string_view word = tokens[i].text;
        const bool is_mistyped = is_sql_word_character(word[0]) && std::ranges::find(keywords, upper_case(word)) == std::end(keywords);
        if (const std::string advice = is_mistyped ? did_you_mean(word, keywords) : ""; !advice.empty()) {
            return advice;
        }
    }
    return "";
}

// Of what is missing before the place of the error, or too much there.
std::string list_advice(const std::vector<placed_token>& tokens, std::size_t place) {
    const std::string_view token = place < tokens.size() ? tokens[place].text : "";
    const bool ends = token.empty() || begins_clause(token);
    if (place > 0 && tokens[place - 1].text == "," && (ends || token == ")")) {
        return token.empty() ? "; there is nothing behind the comma" : fmt::format("; there is nothing between the comma and {}", token);
    }
    if (place > 0 && is_one_of("FROM", tokens[place - 1].text) && begins_clause(token)) {
        return "; FROM takes the name of a table, which is that of its file without .csv";
    }
    std::vector<std::string_view> open;
    for (std::size_t i = 0; i < place; ++i) {
        const std::string_view before = tokens[i].text;
        if (before == "(" || is_one_of("CASE", before)) {
            open.push_back(before);
        } else if (!open.empty() && (before == ")" || is_one_of("END", before))) {
            open.pop_back();
        }
    }
    const bool is_in_case = !open.empty() && open.back() != "(";
    if (is_in_case && (ends || token == "," || token == ")" || is_one_of("AS", token))) {
        return "; CASE ends with END, as in CASE WHEN a > 1 THEN 'x' ELSE 'y' END";
    }
    return !open.empty() && ends ? "; a closing parenthesis is missing" : "";
}

struct type_as_call {
    std::string_view names;
    std::string_view type; // of CAST
};

constexpr type_as_call types_as_calls[] = {
    {"INT INTEGER SMALLINT", "INT"},
    {"BIGINT", "BIGINT"},
    {"DECIMAL NUMERIC DEC", "DECIMAL"},
    {"FLOAT REAL", "DOUBLE"},
    {"VARCHAR CHARACTER", "VARCHAR"},
    {"BOOLEAN", "BOOL"},
    {"TIME", "TIME"},
    {"TIMESTAMP", "TIMESTAMP"},
};

// Of calls up to the place that are written with a word which the parser keeps for something else.
std::string call_advice(const std::vector<placed_token>& tokens, std::size_t place) {
    const auto text_at = [&](std::size_t i) { return i < tokens.size() ? tokens[i].text : std::string_view(); };
    constexpr std::size_t most_before = 4;
    for (std::size_t i = place > most_before ? place - most_before : 0; i < place; ++i) {
        if (text_at(i + 1) != "(" || (i > 0 && (is_one_of("AS", text_at(i - 1)) || text_at(i - 1) == "::"))) {
            continue;
        }
        const std::string name = upper_case(text_at(i));
        const bool is_simple = text_at(i + 3) == ")";
        if (name == "TRIM" && is_one_of("LEFT RIGHT", text_at(i + 2))) {
            return fmt::format("; write TRIM({} FROM s)", is_one_of("LEFT", text_at(i + 2)) ? "LEADING" : "TRAILING");
        }
        if (name == "POSITION" && text_at(place) == ",") {
            return place == i + 3 && text_at(i + 5) == ")" ? fmt::format("; write POSITION({} IN {})", text_at(i + 2), text_at(i + 4))
                                                           : "; write POSITION(pattern IN s)";
        }
        if (name == "CHAR" || name == "NCHAR") {
            return fmt::format("; CHR({0}) is the character of a code, and CAST({0} AS VARCHAR) makes a text of a value",
                               is_simple ? text_at(i + 2) : "x");
        }
        const auto* const known =
            std::ranges::find_if(types_as_calls, [&](const type_as_call& type) { return bifun::has_word(type.names, name); });
        if (known != std::end(types_as_calls)) {
            return fmt::format("; write CAST({} AS {})", is_simple ? text_at(i + 2) : "x", known->type);
        }
    }
    return "";
}

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
    const auto is_straight = [](const placed_token& token) { return !begins_with_curly_quote(token.text); };
    if (!std::ranges::all_of(tokens, is_straight)) {
        return fmt::format("; {}", straight_quotes);
    }
    for (std::size_t i = place > 0 ? place - 1 : 0; i < std::min(place + 1, tokens.size()); ++i) {
        if (tokens[i].text == "?") {
            return fmt::format("; {}", no_parameters);
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
    if (std::string of_call = call_advice(tokens, place); !of_call.empty()) {
        return of_call;
    }
    const std::string of_lists = list_advice(tokens, place);
    return of_lists.empty() ? keyword_advice(tokens, place) : of_lists;
}

std::string advice_on_trim(std::string_view sql, std::size_t offset) {
    const std::vector<placed_token> tokens = tokens_of(sql);
    const auto at = static_cast<std::size_t>(std::ranges::lower_bound(tokens, offset, {}, &placed_token::offset) - tokens.begin());
    const bool is_first = at > 1 && at + 1 < tokens.size() && is_one_of("TRIM", tokens[at - 2].text) && tokens[at - 1].text == "(" &&
                          is_one_of("FROM", tokens[at + 1].text);
    return is_first ? "; before FROM stand LEADING, TRAILING or BOTH and the character, as in TRIM(LEADING '0' FROM s)" : "";
}

bool begins_with_curly_quote(std::string_view text) {
    return std::ranges::any_of(curly_quotes, [&](std::string_view quote) { return text.starts_with(quote); });
}

} // namespace host
