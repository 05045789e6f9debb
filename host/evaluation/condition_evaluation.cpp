// SPDX-License-Identifier: Apache-2.0
// IN, IS NULL and IS TRUE. Comparisons and logic are in comparison.h.

#include "host/evaluation/execution_parts.h"

namespace host {
namespace {

using bifun::value_type;

// IS NULL and IS TRUE are never unknown: `holds` sees the null flag and the value of each row.
template <class Holds> void test_rows(const bifun_column& tested, step& made, std::uint32_t row_count, Holds holds) {
    bifun_column& result = made.result->column;
    fill_condition(result, false, row_count);
    auto* const values = static_cast<std::int32_t*>(result.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t i = row_of(tested, k);
        values[k] = holds(tested.data->null_flags[i] != 0, i) != made.negated ? 1 : 0;
    }
}

} // namespace

void evaluate_in_list(const execution& run, step& made, std::uint32_t row_count) {
    bifun_column& result = made.result->column;
    const bifun_column& tested = column_of(run, made.operands[0]);
    if (made.items.empty()) {
        fill_condition(result, false, row_count);
    } else {
        find_values(made.item_values, tested, run.rules, result, row_count);
    }
    const value_type type = value_type_of(run.query.steps[made.operands[0]].type);
    for (std::size_t i = 1; i < made.operands.size(); ++i) {
        compare_columns(type, comparison_operator::equal, tested, column_of(run, made.operands[i]), run.rules, made.scratch->column,
                        row_count);
        or_condition(result, made.scratch->column, row_count);
    }
}

void evaluate_null_test(const execution& run, step& made, std::uint32_t row_count) {
    test_rows(column_of(run, made.operands[0]), made, row_count, [](bool known, std::uint32_t) { return !known; });
}

void evaluate_truth_test(const execution& run, step& made, std::uint32_t row_count) {
    const bifun_column& tested = column_of(run, made.operands[0]);
    const auto* const values = static_cast<const std::int32_t*>(tested.data->values);
    test_rows(tested, made, row_count, [&](bool known, std::uint32_t i) {
        return made.tested == truth_value::unknown ? !known : known && (values[i] == 1) == (made.tested == truth_value::true_value);
    });
}

} // namespace host
