#include "host/binding.h"

#include <algorithm>
#include <deque>
#include <set>

#include "host/member_choice.h"
#include "host/near_names.h"
#include "host/program_error.h"
#include "host/sql_text.h"

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

// What an expression has become: a step, or a literal that does not know its place yet.
struct operand {
    const expression* literal; // null for a step
    std::size_t step;
    sql_type type;
    std::size_t offset;
};

struct binder {
    const std::string& sql;
    table* source;
    std::vector<std::string> table_names; // that may stand before a column
    const charset& text_charset;
    const function_library& library;
    std::vector<step> steps;
    std::deque<expression> added_literals; // the default arguments of calls
};

std::size_t add_step(binder& state, step made) {
    state.steps.push_back(std::move(made));
    return state.steps.size() - 1;
}

operand bind(binder& state, const expression& tree);

// ---- literals and conversions --------------------------------------------------------------------------------------

std::size_t add_constant(binder& state, const operand& literal, value_type type) {
    return add_step(state, {.kind = step_kind::constant,
                            .type = sql_type_of(type),
                            .operands = {},
                            .value = make_constant(*literal.literal, type, state.text_charset, state.sql)});
}

// A step whose result has exactly the type asked for.
std::size_t as_type(binder& state, const operand& given, value_type type) {
    if (given.literal != nullptr) {
        return add_constant(state, given, type);
    }
    if (value_type_of(given.type) == type) {
        return given.step;
    }
    return add_step(state, {.kind = step_kind::conversion, .type = sql_type_of(type), .operands = {given.step}});
}

std::size_t as_condition(binder& state, const operand& given) {
    if (given.type != sql_type::boolean && given.type != sql_type::null) {
        fail_at(state.sql, given.offset, fmt::format("a condition is needed here, and this is of type {}", sql_type_name(given.type)));
    }
    return as_type(state, given, value_type::BOOL);
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

// ---- calls ---------------------------------------------------------------------------------------------------------

// The catalogue knows one datetime type; the result keeps the finer one that the datetime arguments have in common.
sql_type result_type(const binder& state, const bifun::entry_point& member, const std::vector<operand>& arguments) {
    const sql_type coarse = sql_type_of(member.result);
    if (coarse != sql_type::datetime) {
        return coarse;
    }
    std::set<sql_type> types;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const operand& argument = arguments[i];
        if (member.arguments()[i].type != value_type::DATETIME || argument.type == sql_type::null) {
            continue;
        }
        const bool is_text = argument.type == sql_type::varchar;
        const std::optional<sql_type> type = is_text ? datetime_type_of(*argument.literal) : argument.type;
        if (!type) {
            fail_at(state.sql, argument.offset, "a date, time or datetime is needed here");
        }
        types.insert(*type);
    }
    return types.size() == 1 ? *types.begin() : sql_type::datetime;
}

// The DOUBLEs that stand for most decimal fractions are a little off, so cutting digits would turn 0.3 into 0.2 now and then.
std::string_view advice_for(std::string_view builtin, std::span<const offered_argument> arguments) {
    const bool cuts_digits_of_double = builtin == "TRUNC" && arguments.size() == 2 && arguments[0].type == sql_type::double_precision;
    return cuts_digits_of_double ? "; use ROUND(x, n) for a DOUBLE, or give its column the type DECIMAL with --types" : "";
}

// May add a default argument.
const bifun::entry_point& find_member(binder& state, const expression& tree, std::vector<operand>& arguments) {
    const bifun::builtin* const builtin = find_builtin(tree.name);
    if (builtin == nullptr) {
        std::vector<std::string> names;
        std::ranges::transform(bifun::builtins, std::back_inserter(names),
                               [](const bifun::builtin& known) { return std::string(known.name); });
        const std::string hint = did_you_mean(tree.name, names);
        fail_at(state.sql, tree.offset,
                fmt::format("there is no function {}{}", tree.name, hint.empty() ? "; \"bifun functions\" lists what there is" : hint));
    }
    if (!takes_argument_count(builtin->name, arguments.size())) {
        fail_at(state.sql, tree.offset,
                fmt::format("{} takes {} argument{}, not {}: {}", builtin->name, argument_counts(builtin->name),
                            argument_counts(builtin->name) == "1" ? "" : "s", arguments.size(), builtin->form));
    }
    std::vector<offered_argument> offered;
    std::vector<std::string_view> types;
    for (const operand& argument : arguments) {
        offered.push_back({argument.type, argument.literal != nullptr});
        types.push_back(sql_type_name(argument.type));
    }
    if (const default_argument* const added = find_default_argument(builtin->name, offered)) {
        expression& literal = state.added_literals.emplace_back(expression{.kind = expression_kind::literal, .offset = tree.offset});
        literal.literal = added->kind;
        literal.text = added->text;
        arguments.push_back({&literal, 0, literal_type_of(literal, state.sql), tree.offset});
        offered.push_back({arguments.back().type, true});
    }
    const bifun::entry_point* const member = choose_member(builtin->name, offered);
    if (member == nullptr) {
        fail_at(state.sql, tree.offset,
                fmt::format("{} does not take ({}); it takes {}{}", builtin->name, fmt::join(types, ", "),
                            signatures(builtin->name, types.size()), advice_for(builtin->name, offered)));
    }
    return *member;
}

operand bind_call(binder& state, const expression& tree) {
    std::vector<operand> arguments;
    for (const expression& argument : tree.operands) {
        arguments.push_back(bind(state, argument));
    }
    const bifun::entry_point& member = find_member(state, tree, arguments);
    step call{.kind = step_kind::call, .type = result_type(state, member, arguments), .operands = {}};
    call.entry = &member;
    call.function = state.library.find(member.symbol);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        call.operands.push_back(as_type(state, arguments[i], member.arguments()[i].type));
    }
    const sql_type type = call.type;
    return {nullptr, add_step(state, std::move(call)), type, tree.offset};
}

// ---- comparisons and conditions ------------------------------------------------------------------------------------

// The type in which values are compared: the widest of numbers, or the one type that all of them have. A string literal may stand for
// a datetime.
value_type comparison_type(const binder& state, const std::vector<operand>& operands, std::size_t offset) {
    std::optional<sql_type> common;
    for (const operand& given : operands) {
        if (given.type == sql_type::null || (given.literal != nullptr && given.type == sql_type::varchar)) {
            continue;
        }
        if (!common || (is_number(*common) && is_number(given.type))) {
            common = std::max(common.value_or(given.type), given.type);
            continue;
        }
        const bool both_dates = is_datetime(*common) && is_datetime(given.type);
        const bool time_with_date = both_dates && (*common == sql_type::time) != (given.type == sql_type::time);
        if (time_with_date || (!both_dates && *common != given.type)) {
            fail_at(state.sql, offset, fmt::format("{} and {} cannot be compared", sql_type_name(*common), sql_type_name(given.type)));
        }
    }
    for (const operand& given : operands) {
        if (given.literal == nullptr || given.type != sql_type::varchar || common == sql_type::varchar) {
            continue;
        }
        if (!common) {
            return value_type::VARCHAR;
        }
        if (!is_datetime(*common)) {
            fail_at(state.sql, offset,
                    fmt::format("{} and VARCHAR cannot be compared{}", sql_type_name(*common),
                                is_number(*common) ? "; write the number without quotes" : ""));
        }
        const std::optional<sql_type> type = datetime_type_of(*given.literal);
        if (!type || (*type == sql_type::time) != (*common == sql_type::time)) {
            fail_at(state.sql, given.offset, fmt::format("this cannot be read as {}", sql_type_name(*common)));
        }
    }
    return common ? value_type_of(*common) : value_type::INT;
}

std::size_t add_condition(binder& state, step_kind kind, std::vector<std::size_t> operands, bool negated = false) {
    return add_step(state, {.kind = kind, .type = sql_type::boolean, .operands = std::move(operands), .negated = negated});
}

std::size_t negated_if(binder& state, bool negated, std::size_t condition) {
    return negated ? add_condition(state, step_kind::negation, {condition}) : condition;
}

std::size_t add_comparison(binder& state, comparison_operator operation, const operand& left, const operand& right, std::size_t offset) {
    const value_type type = comparison_type(state, {left, right}, offset);
    const std::size_t first = as_type(state, left, type);
    const std::size_t made = add_condition(state, step_kind::comparison, {first, as_type(state, right, type)});
    state.steps[made].comparison = operation;
    return made;
}

std::size_t bind_in_list(binder& state, const expression& tree, const std::vector<operand>& operands) {
    const value_type type = comparison_type(state, operands, tree.offset);
    std::vector<std::size_t> compared{as_type(state, operands[0], type)};
    std::vector<constant> items;
    for (const operand& given : std::span(operands).subspan(1)) {
        if (given.literal != nullptr && given.type != sql_type::null) {
            items.push_back(make_constant(*given.literal, type, state.text_charset, state.sql));
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
        const std::size_t tested = as_type(state, operands[0], value_type_of(operands[0].type));
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
    const std::size_t step = as_type(state, bound, value_type_of(bound.type));
    std::string name = item.alias;
    if (name.empty()) {
        const bool is_column = state.steps[step].kind == step_kind::table_column;
        name = is_column ? state.source->columns[state.steps[step].table_column].name : expression_text(item.value);
    }
    add_result(made, std::move(name), bound.type, step);
}

// Every result column gets a name of its own: a, a_2, a_3.
void make_names_unique(std::vector<result_column>& results) {
    std::set<std::string> taken;
    for (result_column& result : results) {
        std::string name = result.name;
        for (int number = 2; !taken.insert(name).second; ++number) {
            name = fmt::format("{}_{}", result.name, number);
        }
        result.name = std::move(name);
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

plan bind_statement(const select_statement& statement, const std::string& sql, table* source, const charset& set,
                    const function_library& library) {
    binder state{
        .sql = sql, .source = source, .table_names = {}, .text_charset = set, .library = library, .steps = {}, .added_literals = {}};
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
