// SPDX-License-Identifier: Apache-2.0
// SQL text as a tree of expressions. The grammar is libpg_query's; what the program does not do is refused here, with its place in the
// text.
#ifndef BIFUN_HOST_SQL_SYNTAX_H
#define BIFUN_HOST_SQL_SYNTAX_H

#include <string>

#include "host/sql/expression.h"

namespace host {

// Throws program_error with the place where the text is not SQL or not supported.
select_statement parse_select(const std::string& sql);

} // namespace host

#endif
