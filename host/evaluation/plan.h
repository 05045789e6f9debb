// A query as a list of steps over one batch, each with a column of its own for its result.
//
// Steps stand in the order in which they are executed; a step reads the results of earlier ones only. The conditions come first, each
// with the steps that only it needs: the rows that pass one become the selection vector of the table's columns, and all steps behind it
// see those rows only. Their results are dense.
#ifndef BIFUN_HOST_EVALUATION_PLAN_H
#define BIFUN_HOST_EVALUATION_PLAN_H

#include <cstdint>
#include <optional>
#include <string>
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
    call,         // `entry`
    comparison,   // operand `comparison` operand
    in_list,      // whether the first operand equals one of `items` or of the other operands
    conjunction,
    disjunction,
    negation,
    null_test,
    truth_test,
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
    comparison_operator comparison = comparison_operator::equal;
    truth_value tested = truth_value::true_value;
    bool negated = false;
    std::vector<constant> items{};      // in_list: the literals, none of them NULL
    zqengine::column_pointer result{};  // not for table columns
    zqengine::column_pointer scratch{}; // in_list: one comparison
    sorted_values item_values{};        // in_list: `items` as they are searched
};

// What a row has to pass. WHERE x > 0 AND LN(x) > 1 is two conditions, so that LN sees no other x.
struct row_condition {
    std::size_t step;      // the one whose true rows pass
    std::size_t steps_end; // behind the last step of this condition
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
    std::optional<std::uint64_t> limit;
    std::vector<result_column> results;
};

} // namespace host

#endif
