// What the parts of binding share: an expression becomes steps, one behind the other, in a binder.
#ifndef BIFUN_HOST_BINDING_BINDER_H
#define BIFUN_HOST_BINDING_BINDER_H

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "host/evaluation/plan.h"
#include "host/session/library.h"
#include "host/session/settings.h"
#include "host/sql/expression.h"
#include "host/tables/table.h"

namespace host {

// What an expression has become: a step, or a literal that does not know its place yet.
struct operand {
    const expression* literal; // null for a step
    std::size_t step;
    sql_type type;
    std::size_t offset;
    std::optional<std::int32_t> keyword = {}; // the code, where it is one
};

struct binder {
    const std::string& sql;
    table* source;
    std::vector<std::string> table_names; // that may stand before a column
    const session_settings& settings;
    const function_library& library;
    std::vector<step> steps;
    std::deque<expression> added_literals; // omitted arguments of calls and the codes of keywords
};

std::size_t add_step(binder& state, step made);

// All of these throw program_error, with the place in the SQL text, for what cannot be bound.

operand bind(binder& state, const expression& tree);

// Of a call, to the member of its built-in that takes the arguments.
operand bind_call(binder& state, const expression& tree);

// A step whose values have exactly the type asked for. Any datetime is one without a zone; where one with a zone is asked for, a value
// without gets the session's.
std::size_t as_type(binder& state, const operand& given, sql_type type);

} // namespace host

#endif
