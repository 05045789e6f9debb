// SPDX-License-Identifier: Apache-2.0
// A query as a list of steps over one batch, each with a column of its own for its result.
//
// Steps are evaluated in sequences; a step reads the results of those before it in the sequence only, and each step is in one of them. The
// conditions come first, each with the steps that only it needs: the rows that pass one become the selection vector of the table's columns,
// and all steps behind it see those rows only. Their results are dense. The branches of a choice see the rows that it leaves to them.
#ifndef BIFUN_HOST_EVALUATION_PLAN_H
#define BIFUN_HOST_EVALUATION_PLAN_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bop/frame/catalogue.h"
#include "embedded/columns/column_storage.h"
#include "host/evaluation/comparison.h"
#include "host/evaluation/constant.h"
#include "host/sql/operators.h"
#include "host/tables/table.h"
#include "host/values/sql_type.h"

namespace host {

enum class step_kind : std::uint8_t {
    table_column, // column `table_column` of the table
    constant,     // `value`, as the argument of a call or as a column that shows its one row again and again
    conversion,   // a number as a wider one, a datetime as one with a zone
    cast,         // the value as one of `type`, which may fail
    call,         // `entry`
    comparison,   // operand `comparison` operand
    arithmetic,   // the operands under `operation`, both of the same type, or a datetime and an interval
    rest,         // of a choice's operand, the rows that no branch has taken yet; in no sequence
    choice,       // of each row the first branch that takes it; NULL where none does
    null_if,      // the first operand, NULL where the second one is true
    like,         // whether the first operand matches the pattern that is the second
    in_list,      // whether the first operand equals one of `items` or of the other operands
    conjunction,
    disjunction,
    negation,
    null_test,
    truth_test,
};

// Indexes of steps.
using sequence = std::vector<std::size_t>;

struct choice_branch {
    sequence condition_steps{};
    std::optional<std::size_t> condition{}; // takes the rows for which it is true; without one those whose value is not NULL, or all
    sequence value_steps{};
    std::size_t value = 0;
    bool takes_nulls = true; // without a condition
};

// What the rows of a call may have that is said beside the result, because it may not be known of the function.
enum class oddity : std::uint8_t {
    unread_dates,   // texts that are no datetimes, of which the call makes NULL
    unread_numbers, // the same of numbers
    late_seconds,   // seconds since 1970 that are too many, the same
    nulls_for_now,  // NULLs, for which the call takes the current time
    apart_zones,    // of datetimes whose clock times are taken: two that differ, or one that is not the session's
    filled_results, // formats without room for the number, of which the call makes #
};

// Which rows have it.
struct odd_rows {
    oddity kind;
    std::size_t argument = 0; // the position; of two zones the first
    std::uint64_t rows = 0;
    std::string first{}; // and its place
    std::string way{};   // "; ...", what to write for such rows as the first one; may be empty
};

struct step {
    step_kind kind;
    sql_type type;
    std::vector<std::size_t> operands; // earlier steps
    std::size_t table_column = 0;
    constant value{.as_string = {}, .text = {}};
    const bifun::entry_point* entry = nullptr;
    void* function = nullptr;
    bool shows_all_digits = false; // call: of its first argument, a double that becomes a decimal
    std::string_view written{};    // call: the operator that was written for it, where it was one
    std::vector<odd_rows> odd{};   // call
    comparison_operator comparison = comparison_operator::equal;
    arithmetic_operator operation = arithmetic_operator::add;
    std::string escape{};                  // like: the character before one that stands for itself; may be none
    std::optional<decimal_shape> shape{};  // cast: to a DECIMAL of so many digits
    std::vector<choice_branch> branches{}; // choice; one that tests a value has it as operand, and the rows left of it in `rest`
    std::size_t rest = 0;
    truth_value tested = truth_value::true_value;
    bool negated = false;
    std::vector<constant> items{};      // in_list: the literals, none of them NULL
    zqengine::column_pointer result{};  // not for table columns
    zqengine::column_pointer scratch{}; // in_list: one comparison
    sorted_values item_values{};        // in_list: `items` as they are searched
};

// What a row has to pass. WHERE x > 0 AND LN(x) > 1 is two conditions, so that LN sees no other x.
struct row_condition {
    std::size_t step; // the one whose true rows pass
    sequence steps;
};

struct result_column {
    std::string name;
    sql_type type;
    std::size_t step;
};

struct plan {
    table* source = nullptr; // null: one row of nothing
    std::vector<step> steps;
    std::vector<row_condition> conditions;
    sequence result_steps;
    std::optional<std::uint64_t> limit;
    std::uint64_t offset = 0; // rows that are left out before
    std::vector<result_column> results;
    std::vector<std::string> notices{}; // what may not be meant as it is written, to be said beside the result
};

} // namespace host

#endif
