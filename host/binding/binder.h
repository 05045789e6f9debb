// SPDX-License-Identifier: Apache-2.0
// What the parts of binding share: an expression becomes steps, one behind the other, in a binder.
#ifndef BIFUN_HOST_BINDING_BINDER_H
#define BIFUN_HOST_BINDING_BINDER_H

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/evaluation/plan.h"
#include "host/session/library.h"
#include "host/session/settings.h"
#include "host/sql/expression.h"
#include "host/tables/table.h"
#include "host/tables/type_advice.h"

namespace host {

// What an expression has become: a step, or a literal that does not know its place yet.
struct operand {
    const expression* literal; // null for a step
    std::size_t step;
    sql_type type;
    std::size_t offset;
    std::optional<std::int32_t> keyword = {}; // the code, where it is one
};

struct statement_moment {
    zqtime local;
    zqtime zoned; // in the session's zone
};

struct binder {
    const std::string& sql;
    table* source;
    std::vector<std::string> table_names; // that may stand before a column
    const session_settings& settings;
    const function_library& library;
    std::vector<step> steps;
    sequence in_hand;                      // where steps are added
    std::optional<statement_moment> now;   // once it is asked for
    std::deque<expression> added_literals; // omitted arguments of calls and the codes of keywords
    std::vector<std::string> notices{};    // as those of the plan
    std::span<const select_item> named{};  // the items whose names stand for them where there is no such column: in WHERE
};

// At the end of the sequence in hand.
std::size_t add_step(binder& state, step made);

// Calls `bind` with `steps` as the sequence in hand.
template <class Bind> auto in_sequence(binder& state, sequence& steps, const Bind& bind) {
    std::swap(state.in_hand, steps);
    const auto made = bind();
    std::swap(state.in_hand, steps);
    return made;
}

// Once for what begins so, however often it is noticed.
void add_notice(binder& state, const std::string& beginning, std::string_view rest);

// An operand as advice on types takes it.
misplaced_value misplaced(const binder& state, const operand& given);

// The item that a name behind AS means; null where there is none, or a column of that name.
const expression* find_named_item(std::span<const select_item> items, const table& source, const expression& column, std::string_view sql);

const table_column& column_named(const table& source, const expression& tree, const std::string& sql);
void check_table_prefix(const binder& state, std::string_view name, std::size_t offset);

// All of these throw program_error, with the place in the SQL text, for what cannot be bound.

operand bind(binder& state, const expression& tree);

// Of a call, to the member of its built-in that takes the arguments.
operand bind_call(binder& state, const expression& tree);

// That there is such a built-in, of so many arguments, and its field or mode, of a call whose arguments are not bound yet.
void check_call_names(std::string_view sql, const expression& call);

// The same to a built-in, of arguments that are bound.
operand bind_call(binder& state, const expression& tree, std::string_view builtin, std::vector<operand> arguments);

// + - * /, and CASE, COALESCE, NULLIF and CAST.
operand bind_arithmetic(binder& state, const expression& tree);
operand bind_choice(binder& state, const expression& tree);
operand bind_first_known(binder& state, const expression& tree);
operand bind_null_if(binder& state, const expression& tree);
operand bind_cast(binder& state, const expression& tree);

// What CAST(x AS VARCHAR) makes of it: where texts alone are taken, values of other types stand for their texts. Texts, NULL and bytes,
// which are no text of their own, stay as they are.
bool stands_for_text(sql_type type);
operand as_text(binder& state, const operand& given);

// A literal that is not in the text of the statement.
operand add_literal(binder& state, literal_kind kind, std::string text, std::size_t offset);

// "; CAST(x AS VARCHAR) makes a text of the INT"
std::string way_to_text(sql_type given);

// The type that values become where they meet: the widest of numbers, or the one type that all of them have. A string literal may stand for
// a datetime. A datetime without a zone becomes one with a zone where it meets one. `complaint` says what types cannot do that do not go
// together: "cannot be compared", which they may be for equality alone.
constexpr std::string_view cannot_be_compared = "cannot be compared";
constexpr std::string_view do_not_go_together = "do not go together";
sql_type common_type(const binder& state, const std::vector<operand>& operands, std::size_t offset, std::string_view complaint,
                     bool is_equality = false);

// A step with the truth value of the comparison.
std::size_t add_comparison(binder& state, comparison_operator operation, const operand& left, const operand& right, std::size_t offset);

// A step of a condition. Any other type is refused.
std::size_t as_condition(binder& state, const operand& given);

// A step whose values have exactly the type asked for. Any datetime is one without a zone; where one with a zone is asked for, a value
// without gets the session's.
std::size_t as_type(binder& state, const operand& given, sql_type type);

} // namespace host

#endif
