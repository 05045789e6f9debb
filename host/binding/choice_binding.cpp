// SPDX-License-Identifier: Apache-2.0
// CASE, COALESCE and NULLIF. What a branch needs is in sequences of its own, so that no function sees rows that the branch does not take:
// CASE WHEN x > 0 THEN LN(x) END.

#include "host/binding/binder.h"

namespace host {
namespace {

// The values of all branches as those of one type.
operand add_choice(binder& state, const expression& tree, std::size_t choice, std::vector<choice_branch> branches,
                   const std::vector<operand>& values) {
    const sql_type type = common_type(state, values, tree.offset, do_not_go_together);
    for (std::size_t i = 0; i < branches.size(); ++i) {
        branches[i].value = in_sequence(state, branches[i].value_steps, [&] { return as_type(state, values[i], type); });
    }
    state.steps[choice].type = type;
    state.steps[choice].branches = std::move(branches);
    state.in_hand.push_back(choice);
    return {nullptr, choice, type, tree.offset};
}

// A step that stands behind those of its operands.
std::size_t make_choice(binder& state) {
    state.steps.push_back({.kind = step_kind::choice, .type = sql_type::null, .operands = {}});
    return state.steps.size() - 1;
}

} // namespace

operand bind_choice(binder& state, const expression& tree) {
    const std::size_t choice = make_choice(state);
    std::size_t next = 0;
    operand tested{};
    if (tree.has_tested) {
        tested = bind(state, tree.operands[next++]);
        if (tested.literal == nullptr) {
            state.steps.push_back({.kind = step_kind::rest, .type = tested.type, .operands = {}});
            state.steps[choice].operands = {tested.step};
            state.steps[choice].rest = tested.step = state.steps.size() - 1;
        }
    }
    std::vector<choice_branch> branches;
    std::vector<operand> values;
    for (; next < tree.operands.size(); next += 2) {
        choice_branch& branch = branches.emplace_back();
        const bool is_else = next + 1 == tree.operands.size();
        if (!is_else) {
            const expression& condition = tree.operands[next];
            branch.condition = in_sequence(state, branch.condition_steps, [&] {
                const operand when = bind(state, condition);
                return tree.has_tested ? add_comparison(state, comparison_operator::equal, tested, when, condition.offset)
                                       : as_condition(state, when);
            });
        }
        values.push_back(in_sequence(state, branch.value_steps, [&] { return bind(state, tree.operands[is_else ? next : next + 1]); }));
    }
    return add_choice(state, tree, choice, std::move(branches), values);
}

operand bind_first_known(binder& state, const expression& tree) {
    const std::size_t choice = make_choice(state);
    std::vector<choice_branch> branches;
    std::vector<operand> values;
    for (const expression& value : tree.operands) {
        choice_branch& branch = branches.emplace_back();
        branch.takes_nulls = false;
        values.push_back(in_sequence(state, branch.value_steps, [&] { return bind(state, value); }));
    }
    return add_choice(state, tree, choice, std::move(branches), values);
}

operand bind_null_if(binder& state, const expression& tree) {
    const operand value = bind(state, tree.operands[0]);
    const operand compared = bind(state, tree.operands[1]);
    const std::size_t condition = add_comparison(state, comparison_operator::equal, value, compared, tree.offset);
    const sql_type type = value.type == sql_type::null ? sql_type::integer : value.type;
    const std::size_t kept = as_type(state, value, type);
    return {nullptr, add_step(state, {.kind = step_kind::null_if, .type = type, .operands = {kept, condition}}), type, tree.offset};
}

} // namespace host
