// SPDX-License-Identifier: Apache-2.0
#include "host/binding/binding.h"

#include <algorithm>
#include <map>

#include "host/binding/binder.h"
#include "host/program_error.h"
#include "host/sql/sql_text.h"

namespace host {
namespace {

// ---- WHERE ---------------------------------------------------------------------------------------------------------

void bind_where(binder& state, const expression& tree, plan& made) {
    if (tree.kind == expression_kind::conjunction) {
        std::ranges::for_each(tree.operands, [&](const expression& part) { bind_where(state, part, made); });
        return;
    }
    row_condition condition{};
    condition.step = in_sequence(state, condition.steps, [&] { return as_condition(state, bind(state, tree)); });
    made.conditions.push_back(std::move(condition));
}

// ---- the select list -----------------------------------------------------------------------------------------------

void add_result(plan& made, std::string name, sql_type type, std::size_t step) {
    made.results.push_back({std::move(name), type == sql_type::null ? sql_type::integer : type, step});
}

void bind_all_columns(binder& state, const expression& star, plan& made) {
    if (state.source == nullptr) {
        fail_at(state.sql, star.offset, "* needs a table; write FROM with the name of a file without .csv");
    }
    check_table_prefix(state, star.table, star.offset);
    for (std::size_t i = 0; i < state.source->columns.size(); ++i) {
        const table_column& column = state.source->columns[i];
        const std::size_t step =
            add_step(state, {.kind = step_kind::table_column, .type = column.type.type, .operands = {}, .table_column = i});
        add_result(made, column.name, column.type.type, step);
    }
}

void bind_item(binder& state, const select_item& item, plan& made) {
    if (item.all_columns) {
        return bind_all_columns(state, item.value, made);
    }
    const operand bound = bind(state, item.value);
    const std::size_t step = as_type(state, bound, bound.type);
    std::string name = item.alias;
    if (name.empty()) {
        const bool is_column = state.steps[step].kind == step_kind::table_column;
        name = is_column ? state.source->columns[state.steps[step].table_column].name : item.text;
    }
    add_result(made, std::move(name), bound.type, step);
}

// Every result column gets a name of its own: a, a_2, a_3.
void make_names_unique(std::vector<result_column>& results) {
    std::map<std::string, int> taken; // with the last number that was given
    for (result_column& result : results) {
        const auto [same, is_first] = taken.try_emplace(result.name, 1);
        while (!is_first) {
            std::string name = fmt::format("{}_{}", same->first, ++same->second);
            if (taken.try_emplace(name, 1).second) {
                result.name = std::move(name);
                break;
            }
        }
    }
}

// What stands for an item of the select list is marked there.
void mark_needed(const expression& tree, const std::string& sql, table& source, std::span<const select_item> named) {
    if (tree.kind == expression_kind::column && find_named_item(named, source, tree, sql) == nullptr) {
        const table_column& found = column_named(source, tree, sql);
        source.columns[static_cast<std::size_t>(&found - source.columns.data())].needed = true;
    }
    if (tree.kind == expression_kind::call) {
        check_call_names(sql, tree); // before what stands for no column in calls of other systems: DATEDIFF(start, end, DAY)
    }
    for (const expression& part : tree.operands) {
        mark_needed(part, sql, source, named);
    }
}

} // namespace

void mark_needed_columns(const select_statement& statement, const std::string& sql, table& source) {
    for (const select_item& item : statement.items) {
        if (item.all_columns) {
            std::ranges::for_each(source.columns, [](table_column& column) { column.needed = true; });
        } else {
            mark_needed(item.value, sql, source, {});
        }
    }
    if (statement.where) {
        mark_needed(*statement.where, sql, source, statement.items);
    }
}

plan bind_statement(const select_statement& statement, const std::string& sql, table* source, const session_settings& settings,
                    const function_library& library) {
    binder state{.sql = sql,
                 .source = source,
                 .table_names = {},
                 .settings = settings,
                 .library = library,
                 .steps = {},
                 .in_hand = {},
                 .now = {},
                 .added_literals = {}};
    if (statement.from) {
        state.table_names.push_back(statement.from->alias.empty() ? statement.from->name : statement.from->alias);
    }
    plan made;
    made.source = source;
    made.limit = statement.limit;
    made.offset = statement.offset;
    if (statement.where) {
        state.named = statement.items;
        bind_where(state, *statement.where, made);
        state.named = {};
    }
    for (const select_item& item : statement.items) {
        bind_item(state, item, made);
    }
    make_names_unique(made.results);
    made.steps = std::move(state.steps);
    made.result_steps = std::move(state.in_hand);
    made.notices = std::move(state.notices);
    return made;
}

} // namespace host
