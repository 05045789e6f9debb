// SPDX-License-Identifier: Apache-2.0
#include "host/sql/nesting.h"

#include <algorithm>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "host/near_names.h"
#include "host/sql/sql_text.h"
#include "host/sql/tokens.h"

namespace host {
namespace {

// What a token does to the depth.
enum class nesting_effect : unsigned char {
    none,
    open,
    open_case,
    close,
    close_case,
    begins_chain,
    joins_by_and,
    joins_by_or,
    takes_and, // BETWEEN
    lengthens_chain,
    lengthens_statement // chains that go on behind what begins others
};

struct word_effect {
    std::string_view word;
    nesting_effect effect;
};

constexpr word_effect word_effects[] = {
    {"CASE", nesting_effect::open_case},
    {"END", nesting_effect::close_case},
    {"AND", nesting_effect::joins_by_and},
    {"OR", nesting_effect::joins_by_or},
    {"WHEN", nesting_effect::begins_chain},
    {"THEN", nesting_effect::begins_chain},
    {"ELSE", nesting_effect::begins_chain},
    {"FROM", nesting_effect::begins_chain},
    {"WHERE", nesting_effect::begins_chain},
    {"LIMIT", nesting_effect::begins_chain},
    {"BETWEEN", nesting_effect::takes_and},
    {"NOT", nesting_effect::lengthens_chain},
    {"IS", nesting_effect::lengthens_chain},
    {"ISNULL", nesting_effect::lengthens_chain},
    {"NOTNULL", nesting_effect::lengthens_chain},
    {"IN", nesting_effect::lengthens_chain},
    {"LIKE", nesting_effect::lengthens_chain},
    {"ILIKE", nesting_effect::lengthens_chain},
    {"SIMILAR", nesting_effect::lengthens_chain},
    {"ESCAPE", nesting_effect::lengthens_chain},
    {"COLLATE", nesting_effect::lengthens_chain},
    {"AT", nesting_effect::lengthens_chain},
    {"OVERLAPS", nesting_effect::lengthens_chain},
    {"OPERATOR", nesting_effect::lengthens_chain},
    {"JOIN", nesting_effect::lengthens_statement},
    {"UNION", nesting_effect::lengthens_statement},
    {"INTERSECT", nesting_effect::lengthens_statement},
    {"EXCEPT", nesting_effect::lengthens_statement},
};

nesting_effect effect_of(std::string_view token) {
    switch (token[0]) {
    case '(':
    case '[':
        return nesting_effect::open;
    case ')':
    case ']':
        return nesting_effect::close;
    case ',':
        return nesting_effect::begins_chain;
    case ':':
        return token.size() == 2 ? nesting_effect::lengthens_chain : nesting_effect::none;
    default:
        break;
    }
    if (operator_characters.find(token[0]) != operator_characters.npos) {
        return nesting_effect::lengthens_chain;
    }
    const auto* const known = std::ranges::find_if(word_effects, [&](const word_effect& w) { return equal_ignoring_case(w.word, token); });
    return known == std::end(word_effects) ? nesting_effect::none : known->effect;
}

// The parser takes + and - at the end of a run of operator characters for operators of their own.
std::size_t operators_in(std::string_view token) {
    const std::size_t last = token.find_last_not_of("+-");
    const std::size_t before = last == token.npos ? 0 : last + 1;
    return std::max<std::size_t>(token.size() - before + (before > 0 ? 1 : 0), 1);
}

struct nesting_level {
    bool is_case = false;
    bool and_is_taken = false; // by a BETWEEN
    bool has_and = false;      // any number of conditions that AND joins is one step deeper than each of them
    bool has_or = false;
    std::size_t chain = 0;
    std::size_t statement_chain = 0;
};

} // namespace

void check_nesting(std::string_view sql) {
    std::vector<nesting_level> levels(1);
    std::size_t depth = 0; // all levels but the first, and their chains
    std::string_view token;
    for (std::size_t at = 0; at < sql.size(); at += token.size()) {
        token = sql_token(sql, at);
        if (is_sql_comment(token)) {
            continue;
        }
        nesting_level& level = levels.back();
        const nesting_effect effect = effect_of(token);
        switch (effect) {
        case nesting_effect::none:
            break;
        case nesting_effect::open:
        case nesting_effect::open_case:
            levels.push_back({.is_case = effect == nesting_effect::open_case});
            ++depth;
            break;
        case nesting_effect::close:
        case nesting_effect::close_case:
            if (levels.size() > 1 && level.is_case == (effect == nesting_effect::close_case)) {
                depth -= level.chain + level.statement_chain + 1;
                levels.pop_back();
            }
            break;
        case nesting_effect::joins_by_and:
        case nesting_effect::joins_by_or:
        case nesting_effect::begins_chain:
            if (effect == nesting_effect::joins_by_and && level.and_is_taken) {
                level.and_is_taken = false;
                break;
            }
            depth -= level.chain;
            level.chain = 0;
            level.and_is_taken = false;
            if (effect != nesting_effect::begins_chain) {
                bool& has_join = effect == nesting_effect::joins_by_and ? level.has_and : level.has_or;
                level.statement_chain += has_join ? 0 : 1;
                depth += has_join ? 0 : 1;
                has_join = true;
            }
            break;
        case nesting_effect::takes_and:
        case nesting_effect::lengthens_chain: {
            const std::size_t operators = effect == nesting_effect::takes_and || is_sql_word_character(token[0]) ? 1 : operators_in(token);
            level.and_is_taken |= effect == nesting_effect::takes_and;
            level.chain += operators;
            depth += operators;
            break;
        }
        case nesting_effect::lengthens_statement:
            ++level.statement_chain;
            ++depth;
            break;
        }
        if (depth > deepest_nesting) {
            fail_at(sql, at, fmt::format("the statement is nested more than {} levels deep here", deepest_nesting));
        }
    }
}

} // namespace host
