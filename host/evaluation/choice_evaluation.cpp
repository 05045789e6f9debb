// SPDX-License-Identifier: Apache-2.0
// CASE, COALESCE and NULLIF: values taken row by row from other columns.

#include <cstring>
#include <numeric>

#include "host/evaluation/execution_parts.h"

namespace host {
namespace {

// The value of one row into another. The bytes of a text stay where they are: what it was taken from lives as long as the batch.
void copy_row(bifun::value_type type, const bifun_column& from, std::uint32_t row, bifun_column& to, std::uint32_t place) {
    const std::size_t width = bifun::value_width(type);
    to.data->null_flags[place] = from.data->null_flags[row];
    std::memcpy(static_cast<char*>(to.data->values) + place * width, static_cast<const char*>(from.data->values) + row * width, width);
}

// Rows of a choice: where they are in its result, and in the batch.
struct chosen_rows {
    std::vector<std::uint16_t> places;
    std::vector<std::uint16_t> rows;

    void add(std::uint16_t place, std::uint16_t row) {
        places.push_back(place);
        rows.push_back(row);
    }
    [[nodiscard]] std::uint32_t size() const { return static_cast<std::uint32_t>(places.size()); }
};

// Those of the rows left for which the branch's condition is true; the others stay. The view is that of the choice, and is narrowed.
chosen_rows take_true_rows(execution& run, const step& choice, const choice_branch& branch, chosen_rows& left) {
    for (const std::size_t operand : choice.operands) {
        const bifun_column& tested = column_of(run, operand);
        bifun_column& rest = column_of(run, choice.rest);
        for (std::uint32_t k = 0; k < left.size(); ++k) {
            copy_row(value_type_of(run.query.steps[operand].type), tested, row_of(tested, left.places[k]), rest, k);
        }
        rest.no_nulls = tested.no_nulls;
    }
    set_view(run, left.rows.data());
    evaluate_steps(run, branch.condition_steps, left.size());
    const bifun_column& condition = column_of(run, *branch.condition);
    const auto* const values = static_cast<const std::int32_t*>(condition.data->values);
    chosen_rows taken;
    chosen_rows others;
    for (std::uint32_t k = 0; k < left.size(); ++k) {
        (values[row_of(condition, k)] == 1 ? taken : others).add(left.places[k], left.rows[k]);
    }
    left = std::move(others);
    return taken;
}

} // namespace

void evaluate_choice(execution& run, step& made, std::uint32_t row_count) {
    bifun_column& result = made.result->column;
    const bifun::value_type type = value_type_of(made.type);
    const std::uint16_t* const view = run.view;
    chosen_rows left;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        result.data->null_flags[k] = 0;
        left.add(static_cast<std::uint16_t>(k), view != nullptr ? view[k] : static_cast<std::uint16_t>(k));
    }
    for (const choice_branch& branch : made.branches) {
        set_view(run, view);
        chosen_rows taken = branch.condition && left.size() > 0 ? take_true_rows(run, made, branch, left) : chosen_rows{};
        if (!branch.condition) {
            std::swap(taken, left);
        }
        if (taken.size() == 0) {
            continue;
        }
        set_view(run, taken.rows.data());
        evaluate_steps(run, branch.value_steps, taken.size());
        const bifun_column& values = column_of(run, branch.value);
        for (std::uint32_t k = 0; k < taken.size(); ++k) {
            const std::uint32_t row = row_of(values, k);
            if (branch.takes_nulls || values.data->null_flags[row] != 0) {
                copy_row(type, values, row, result, taken.places[k]);
            } else {
                left.add(taken.places[k], taken.rows[k]);
            }
        }
    }
    set_view(run, view);
    result.no_nulls = std::memchr(result.data->null_flags, 0, row_count) == nullptr ? 1 : 0;
    if (made.type == sql_type::boolean) {
        normalise_condition(result, row_count);
    }
}

void evaluate_null_if(const execution& run, step& made, std::uint32_t row_count) {
    bifun_column& result = made.result->column;
    const bifun_column& values = column_of(run, made.operands[0]);
    const bifun_column& condition = column_of(run, made.operands[1]);
    const auto* const is_null = static_cast<const std::int32_t*>(condition.data->values);
    for (std::uint32_t k = 0; k < row_count; ++k) {
        copy_row(value_type_of(made.type), values, row_of(values, k), result, k);
        result.data->null_flags[k] = is_null[row_of(condition, k)] == 1 ? 0 : result.data->null_flags[k];
    }
    result.no_nulls = 0;
}

} // namespace host
