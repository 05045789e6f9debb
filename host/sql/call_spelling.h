// SPDX-License-Identifier: Apache-2.0
// How SQL writes a call: from the parser's names and arguments for it to those of the built-in.
#ifndef BIFUN_HOST_SQL_CALL_SPELLING_H
#define BIFUN_HOST_SQL_CALL_SPELLING_H

#include <string>
#include <string_view>

#include "bop/frame/catalogue.h"
#include "host/sql/expression.h"

namespace host {

// Whether the parser has this name for the syntax of a built-in of its own.
bool is_own_syntax(std::string_view parser_name);

// Gives a call by such a name, with the arguments as the parser has them, the name and the arguments of the built-in.
void spell_as_builtin(expression& call);

// What a built-in does, with its further names: "...; also SUBSTRING".
std::string meaning_with_names(const bifun::builtin& builtin);

} // namespace host

#endif
