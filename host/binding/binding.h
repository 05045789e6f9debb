// SPDX-License-Identifier: Apache-2.0
// From an expression tree to a plan: names become columns and entry points.
#ifndef BIFUN_HOST_BINDING_BINDING_H
#define BIFUN_HOST_BINDING_BINDING_H

#include <string>

#include "host/evaluation/plan.h"
#include "host/session/library.h"
#include "host/session/settings.h"
#include "host/sql/expression.h"

namespace host {

// Marks the columns of the table that a query names as needed. Throws where there is no such column.
void mark_needed_columns(const select_statement& statement, const std::string& sql, table& source);

// The table's columns have their types. The plan refers to the table and to nothing else of what it is made from. Throws program_error
// with the place in the text for what does not exist or does not fit.
plan bind_statement(const select_statement& statement, const std::string& sql, table* source, const session_settings& settings,
                    const function_library& library);

} // namespace host

#endif
