#include "host/binding/binding.h"

#include <algorithm>
#include <map>

#include "host/binding/binder.h"
#include "host/binding/literal.h"
#include "host/near_names.h"
#include "host/program_error.h"
#include "host/sql/sql_text.h"
#include "host/values/value_text.h"

namespace host {
namespace {

using bifun::value_type;

// SQL folds unquoted names to lower case, so a name is first looked for as it is and then without regard to case. The parser cuts
// names to 63 bytes: one that long also stands for the only column that begins with it.
const table_column* find_column(const table& source, std::string_view name) {
    const auto unique = [&](auto matches) -> const table_column* {
        const auto found = std::ranges::find_if(source.columns, matches);
        const bool single = found != source.columns.end() && std::find_if(found + 1, source.columns.end(), matches) == source.columns.end();
        return single ? &*found : nullptr;
    };
    constexpr std::size_t shortest_cut_name = 60; // a multibyte character may have fallen across the limit
    const table_column* found = unique([&](const table_column& column) { return column.name == name; });
    if (found == nullptr) {
        found = unique([&](const table_column& column) { return equal_ignoring_case(column.name, name); });
    }
    if (found == nullptr && name.size() >= shortest_cut_name) {
        found = unique([&](const table_column& column) { return equal_ignoring_case(column.name.substr(0, name.size()), name); });
    }
    return found;
}

const table_column& column_named(const table& source, const expression& tree, const std::string& sql) {
    const table_column* const column = find_column(source, tree.name);
    if (column == nullptr) {
        std::vector<std::string> names;
        std::ranges::transform(source.columns, std::back_inserter(names), &table_column::name);
        std::string hint = did_you_mean(tree.name, names);
        if (hint.empty()) {
            hint = fmt::format("; there are {}", fmt::join(names, ", "));
        }
        fail_at(sql, tree.offset, fmt::format("{} has no column {}{}", source.reader.path(), tree.name, hint));
    }
    return *column;
}

} // namespace

std::size_t add_step(binder& state, step made) {
    state.steps.push_back(std::move(made));
    return state.steps.size() - 1;
}

// ---- literals and conversions --------------------------------------------------------------------------------------

constant constant_of_type(const binder& state, const expression& literal, sql_type type) {
    constant made = make_constant(literal, value_type_of(type), state.settings, state.sql);
    if (has_zone(type) && literal.literal != literal_kind::null) {
        add_zone(made.as_datetime.value, state.settings.time_zone());
    }
    return made;
}

std::size_t as_type(binder& state, const operand& given, sql_type type) {
    if (given.literal != nullptr) {
        return add_step(
            state, {.kind = step_kind::constant, .type = type, .operands = {}, .value = constant_of_type(state, *given.literal, type)});
    }
    const bool lacks_zone = has_zone(type) && !has_zone(given.type);
    if (value_type_of(given.type) == value_type_of(type) && !lacks_zone) {
        return given.step;
    }
    return add_step(state, {.kind = step_kind::conversion, .type = type, .operands = {given.step}});
}

namespace {

std::size_t as_condition(binder& state, const operand& given) {
    if (given.type != sql_type::boolean && given.type != sql_type::null) {
        fail_at(state.sql, given.offset, fmt::format("a condition is needed here, and this is of type {}", sql_type_name(given.type)));
    }
    return as_type(state, given, sql_type::boolean);
}

// ---- columns -------------------------------------------------------------------------------------------------------

void check_table_prefix(const binder& state, std::string_view name, std::size_t offset) {
    const bool known = std::ranges::any_of(state.table_names, [&](const std::string& own) { return equal_ignoring_case(own, name); });
    if (!name.empty() && !known) {
        fail_at(state.sql, offset, fmt::format("there is no table {} in FROM", name));
    }
}

operand bind_column(binder& state, const expression& tree) {
    if (state.source == nullptr) {
        fail_at(state.sql, tree.offset,
                fmt::format("there is no column {}, because the query has no FROM; text stands in 'single quotes'", tree.name));
    }
    check_table_prefix(state, tree.table, tree.offset);
    const table_column* const column = &column_named(*state.source, tree, state.sql);
    const std::size_t made = add_step(state, {.kind = step_kind::table_column,
                                              .type = column->type.type,
                                              .operands = {},
                                              .table_column = static_cast<std::size_t>(column - state.source->columns.data())});
    return {nullptr, made, column->type.type, tree.offset};
}

// ---- comparisons and conditions ------------------------------------------------------------------------------------

// The type in which values are compared: the widest of numbers, or the one type that all of them have. A string literal may stand for
// a datetime. A datetime without a zone is compared with one that has a zone as if it were in the session's.
sql_type comparison_type(const binder& state, const std::vector<operand>& operands, std::size_t offset) {
    std::optional<sql_type> common;
    for (const operand& given : operands) {
        if (given.type == sql_type::null || (given.literal != nullptr && given.type == sql_type::varchar)) {
            continue;
        }
        const sql_type known = common.value_or(given.type);
        const bool both_numbers = is_number(known) && is_number(given.type);
        const bool both_dates = is_datetime(known) && is_datetime(given.type) && has_date(known) == has_date(given.type);
        common = std::max(known, given.type);
        if (!both_numbers && !both_dates && known != given.type) {
            fail_at(state.sql, offset, fmt::format("{} and {} cannot be compared", sql_type_name(known), sql_type_name(given.type)));
        }
    }
    for (const operand& given : operands) {
        if (given.literal == nullptr || given.type != sql_type::varchar || common == sql_type::varchar) {
            continue;
        }
        if (!common) {
            return sql_type::varchar;
        }
        if (!is_datetime(*common)) {
            fail_at(state.sql, offset,
                    fmt::format("{} and VARCHAR cannot be compared{}", sql_type_name(*common),
                                is_number(*common)     ? "; write the number without quotes"
                                : is_interval(*common) ? "; write the interval with its type, such as INTERVAL '3' DAY"
                                                       : ""));
        }
        const std::optional<sql_type> type = datetime_type_of(*given.literal);
        if (!type || has_date(*type) != has_date(*common)) {
            fail_at(state.sql, given.offset, fmt::format("this cannot be read as {}", sql_type_name(*common)));
        }
        common = std::max(*common, *type);
    }
    return common.value_or(sql_type::integer);
}

std::size_t add_condition(binder& state, step_kind kind, std::vector<std::size_t> operands, bool negated = false) {
    return add_step(state, {.kind = kind, .type = sql_type::boolean, .operands = std::move(operands), .negated = negated});
}

std::size_t negated_if(binder& state, bool negated, std::size_t condition) {
    return negated ? add_condition(state, step_kind::negation, {condition}) : condition;
}

std::size_t add_comparison(binder& state, comparison_operator operation, const operand& left, const operand& right, std::size_t offset) {
    const sql_type type = comparison_type(state, {left, right}, offset);
    const std::size_t first = as_type(state, left, type);
    const std::size_t made = add_condition(state, step_kind::comparison, {first, as_type(state, right, type)});
    state.steps[made].comparison = operation;
    return made;
}

std::size_t bind_in_list(binder& state, const expression& tree, const std::vector<operand>& operands) {
    const sql_type type = comparison_type(state, operands, tree.offset);
    std::vector<std::size_t> compared{as_type(state, operands[0], type)};
    std::vector<constant> items;
    for (const operand& given : std::span(operands).subspan(1)) {
        if (given.literal != nullptr && given.type != sql_type::null) {
            items.push_back(constant_of_type(state, *given.literal, type));
        } else {
            compared.push_back(as_type(state, given, type));
        }
    }
    const std::size_t made = add_condition(state, step_kind::in_list, std::move(compared));
    state.steps[made].items = std::move(items);
    return negated_if(state, tree.negated, made);
}

std::size_t bind_logic(binder& state, step_kind kind, const std::vector<operand>& operands) {
    std::vector<std::size_t> conditions;
    conditions.reserve(operands.size());
    for (const operand& given : operands) {
        conditions.push_back(as_condition(state, given));
    }
    return add_condition(state, kind, std::move(conditions));
}

} // namespace

operand bind(binder& state, const expression& tree) {
    if (tree.kind == expression_kind::literal) {
        return {&tree, 0, literal_type_of(tree, state.sql), tree.offset};
    }
    if (tree.kind == expression_kind::column) {
        return bind_column(state, tree);
    }
    if (tree.kind == expression_kind::call) {
        return bind_call(state, tree);
    }
    std::vector<operand> operands;
    for (const expression& given : tree.operands) {
        operands.push_back(bind(state, given));
    }
    std::size_t made = 0;
    switch (tree.kind) {
    case expression_kind::comparison:
        made = add_comparison(state, tree.comparison, operands[0], operands[1], tree.offset);
        break;
    case expression_kind::conjunction:
        made = bind_logic(state, step_kind::conjunction, operands);
        break;
    case expression_kind::disjunction:
        made = bind_logic(state, step_kind::disjunction, operands);
        break;
    case expression_kind::negation:
        made = bind_logic(state, step_kind::negation, operands);
        break;
    case expression_kind::between: {
        const std::size_t low = add_comparison(state, comparison_operator::greater_or_equal, operands[0], operands[1], tree.offset);
        const std::size_t high = add_comparison(state, comparison_operator::less_or_equal, operands[0], operands[2], tree.offset);
        made = negated_if(state, tree.negated, add_condition(state, step_kind::conjunction, {low, high}));
        break;
    }
    case expression_kind::in_list:
        made = bind_in_list(state, tree, operands);
        break;
    case expression_kind::null_test: {
        const std::size_t tested = as_type(state, operands[0], operands[0].type);
        made = add_condition(state, step_kind::null_test, {tested}, tree.negated);
        break;
    }
    default:
        made = bind_logic(state, step_kind::truth_test, operands);
        state.steps[made].negated = tree.negated;
        state.steps[made].tested = tree.tested;
    }
    return {nullptr, made, sql_type::boolean, tree.offset};
}

namespace {

// ---- WHERE ---------------------------------------------------------------------------------------------------------

void bind_where(binder& state, const expression& tree, plan& made) {
    if (tree.kind == expression_kind::conjunction) {
        std::ranges::for_each(tree.operands, [&](const expression& part) { bind_where(state, part, made); });
        return;
    }
    const std::size_t step = as_condition(state, bind(state, tree));
    made.conditions.push_back({.step = step, .steps_end = state.steps.size()});
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
        name = is_column ? state.source->columns[state.steps[step].table_column].name : expression_text(item.value);
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

void mark_needed(const expression& tree, const std::string& sql, table& source) {
    if (tree.kind == expression_kind::column) {
        const table_column& found = column_named(source, tree, sql);
        source.columns[static_cast<std::size_t>(&found - source.columns.data())].needed = true;
    }
    for (const expression& part : tree.operands) {
        mark_needed(part, sql, source);
    }
}

} // namespace

void mark_needed_columns(const select_statement& statement, const std::string& sql, table& source) {
    for (const select_item& item : statement.items) {
        if (item.all_columns) {
            std::ranges::for_each(source.columns, [](table_column& column) { column.needed = true; });
        } else {
            mark_needed(item.value, sql, source);
        }
    }
    if (statement.where) {
        mark_needed(*statement.where, sql, source);
    }
}

plan bind_statement(const select_statement& statement, const std::string& sql, table* source, const session_settings& settings,
                    const function_library& library) {
    binder state{
        .sql = sql, .source = source, .table_names = {}, .settings = settings, .library = library, .steps = {}, .added_literals = {}};
    if (statement.from) {
        state.table_names.push_back(statement.from->alias.empty() ? statement.from->name : statement.from->alias);
    }
    plan made;
    made.source = source;
    made.limit = statement.limit;
    if (statement.where) {
        bind_where(state, *statement.where, made);
    }
    for (const select_item& item : statement.items) {
        bind_item(state, item, made);
    }
    make_names_unique(made.results);
    made.steps = std::move(state.steps);
    return made;
}

} // namespace host
