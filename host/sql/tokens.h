// SPDX-License-Identifier: Apache-2.0
// SQL text in pieces, before it is known to be SQL.
#ifndef BIFUN_HOST_SQL_TOKENS_H
#define BIFUN_HOST_SQL_TOKENS_H

#include <cstddef>
#include <string_view>

namespace host {

// Of which operators are made.
constexpr std::string_view operator_characters = "~!@#^&|`?+-*/%<>=";

bool is_sql_word_character(char c);
bool is_sql_comment(std::string_view rest);

// The token at an offset: a word, a run of operator characters, a quoted text, a comment, or a single character, blanks among them. What
// has no end runs to that of the text.
std::string_view sql_token(std::string_view sql, std::size_t begin);

} // namespace host

#endif
