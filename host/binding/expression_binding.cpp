// SPDX-License-Identifier: Apache-2.0
// Expressions: what is no call and no calculation.

#include <algorithm>

#include "embedded/datetime/text.h"
#include "engine/datetime.h"
#include "engine/session.h"
#include "host/binding/binder.h"
#include "host/binding/literal.h"
#include "host/near_names.h"
#include "host/program_error.h"
#include "host/sql/builtins.h"
#include "host/sql/names.h"
#include "host/sql/sql_text.h"
#include "host/sql/syntax_advice.h"
#include "host/tables/text_forms.h"
#include "host/values/value_text.h"

namespace host {
namespace {

using bifun::value_type;

// A name as it is spelled means the column of just that name, and else those that differ in case alone. The parser cuts names to 63 bytes:
// one that long also stands for columns that begin with it.
std::vector<const table_column*> find_columns(const table& source, std::string_view spelled) {
    std::vector<const table_column*> found;
    const auto find = [&](auto matches) {
        for (const table_column& column : source.columns) {
            if (matches(column)) {
                found.push_back(&column);
            }
        }
    };
    constexpr std::size_t shortest_cut_name = 60; // a multibyte character may have fallen across the limit
    find([&](const table_column& column) { return column.name == spelled; });
    if (found.empty()) {
        find([&](const table_column& column) { return equal_ignoring_case(column.name, spelled); });
    }
    if (found.empty() && spelled.size() >= shortest_cut_name) {
        find([&](const table_column& column) { return equal_ignoring_case(column.name.substr(0, spelled.size()), spelled); });
    }
    return found;
}

std::string_view spelling_of_column(const expression& tree, std::string_view sql) {
    return column_as_spelled(sql, tree.offset, !tree.table.empty(), tree.name);
}

// Whether this is what a column of the file would be called without a header.
bool is_name_by_place(const table& source, std::string_view name) {
    for (std::size_t i = 1; i <= source.columns.size(); ++i) {
        if (equal_ignoring_case(name, fmt::format("column_{}", i))) {
            return source.reader.has_header();
        }
    }
    return false;
}

} // namespace

const table_column& column_named(const table& source, const expression& tree, const std::string& sql) {
    const std::vector<const table_column*> found = find_columns(source, spelling_of_column(tree, sql));
    if (found.size() > 1) {
        std::vector<std::string> names;
        std::ranges::transform(found, std::back_inserter(names), [](const table_column* column) { return column->name; });
        fail_at(sql, tree.offset,
                fmt::format("{} has the columns {}, and none is spelled so; write one of them as it is, or in double quotes",
                            source.reader.path(), fmt::join(names, ", ")));
    }
    if (found.empty()) {
        std::vector<std::string> names;
        std::ranges::transform(source.columns, std::back_inserter(names), &table_column::name);
        const auto all_names = [&] {
            std::ranges::transform(names, names.begin(), name_in_query);
            return fmt::format("; there are {}", fmt::join(names, ", "));
        };
        const std::string_view written = name_as_written(sql, tree.offset, tree.name);
        // eol-lts is eol less lts.
        const auto around = std::ranges::find_if(names, [&](const std::string& name) {
            return name_in_query(name) != name && find_name_around(sql, name, tree.offset) != sql.npos;
        });
        std::string hint = is_name_by_place(source, tree.name) ? all_names() + "; --no-header names them by their place"
                           : around != names.end() ? fmt::format("; the column {} is written {}", *around, name_in_query(*around))
                                                   : did_you_mean(tree.name, names, name_in_query);
        if (hint.empty() && sql[tree.offset] == '"') {
            hint = fmt::format("; a text stands in single quotes: '{}'", written);
        }
        if (hint.empty()) {
            hint = advice_on_trim(sql, tree.offset);
        }
        if (hint.empty()) {
            hint = advice_on_word(tree.name);
        }
        if (hint.empty()) {
            hint = all_names();
        }
        fail_at(sql, tree.offset, fmt::format("{} has no column {}{}", source.reader.path(), written, hint));
    }
    return *found.front();
}

const expression* find_named_item(std::span<const select_item> items, const table& source, const expression& column, std::string_view sql) {
    const auto found = std::ranges::find_if(items, [&](const select_item& item) {
        return !item.alias.empty() && equal_ignoring_case(item.alias, column.name) && column.table.empty();
    });
    return found == items.end() || !find_columns(source, spelling_of_column(column, sql)).empty() ? nullptr : &found->value;
}

void check_table_prefix(const binder& state, std::string_view name, std::size_t offset) {
    const bool known = std::ranges::any_of(state.table_names, [&](const std::string& own) { return equal_ignoring_case(own, name); });
    if (!name.empty() && !known) {
        fail_at(state.sql, offset, fmt::format("there is no table {} in FROM", name));
    }
}

void add_notice(binder& state, const std::string& beginning, std::string_view rest) {
    if (std::ranges::none_of(state.notices, [&](const std::string& known) { return known.starts_with(beginning); })) {
        state.notices.push_back(beginning + std::string(rest));
    }
}

misplaced_value misplaced(const binder& state, const operand& given) {
    const bool is_column = given.literal == nullptr && state.steps[given.step].kind == step_kind::table_column;
    return {.type = given.type,
            .is_literal = given.literal != nullptr,
            .column = is_column ? &state.source->columns[state.steps[given.step].table_column] : nullptr};
}

std::size_t add_step(binder& state, step made) {
    state.steps.push_back(std::move(made));
    state.in_hand.push_back(state.steps.size() - 1);
    return state.in_hand.back();
}

operand add_literal(binder& state, literal_kind kind, std::string text, std::size_t offset) {
    expression& literal = state.added_literals.emplace_back(expression{.kind = expression_kind::literal, .offset = offset});
    literal.literal = kind;
    literal.text = std::move(text);
    return {&literal, 0, literal_type_of(literal, state.sql), offset};
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

std::size_t as_condition(binder& state, const operand& given) {
    if (given.type != sql_type::boolean && given.type != sql_type::null) {
        fail_at(state.sql, given.offset,
                fmt::format("a condition is needed here, and this is of type {}{}{}", sql_type_name(given.type),
                            given.type == sql_type::varchar ? "; compare it, as in x = 'true'" : "",
                            way_to(sql_type::boolean, misplaced(state, given))));
    }
    return as_type(state, given, sql_type::boolean);
}

namespace {

// ---- columns -------------------------------------------------------------------------------------------------------

operand bind_column(binder& state, const expression& tree) {
    if (state.source == nullptr) {
        fail_at(state.sql, tree.offset,
                fmt::format("there is no column {}, because the query has no FROM{}", tree.name,
                            advice_on_word(tree.name).empty() ? "; text stands in 'single quotes'" : advice_on_word(tree.name)));
    }
    check_table_prefix(state, tree.table, tree.offset);
    if (const expression* const item = find_named_item(state.named, *state.source, tree, state.sql); item != nullptr) {
        const std::span<const select_item> named = std::exchange(state.named, {}); // which the item knows nothing of
        const operand bound = bind(state, *item);
        state.named = named;
        return bound;
    }
    const table_column* const column = &column_named(*state.source, tree, state.sql);
    const std::size_t made = add_step(state, {.kind = step_kind::table_column,
                                              .type = column->type.type,
                                              .operands = {},
                                              .table_column = static_cast<std::size_t>(column - state.source->columns.data())});
    return {nullptr, made, column->type.type, tree.offset};
}

// ---- comparisons and conditions ------------------------------------------------------------------------------------

// Of a literal beside values of that type: as a text, dates would have another order.
std::string way_to_write(sql_type needed, std::string_view text) {
    std::string ways;
    for (const std::string& date : has_date(needed) ? iso_dates(text) : std::vector<std::string>()) {
        ways += fmt::format("{} DATE '{}'", ways.empty() ? "; write" : " or", date);
    }
    return !ways.empty() ? ways : has_date(needed) ? "; a date is written DATE '2025-01-31'" : "; a time is written TIME '10:30:00'";
}

constexpr std::string_view null_instead_of_empty = "; an empty field is NULL, as in x IS NULL and x IS NOT NULL";

bool is_blank(const operand& text) { return without_blanks_around(text.literal->text).empty(); }

} // namespace

std::string way_to_text(sql_type given) { return fmt::format("; CAST(x AS VARCHAR) makes a text of the {}", sql_type_name(given)); }

sql_type common_type(const binder& state, const std::vector<operand>& operands, std::size_t offset, std::string_view complaint,
                     bool is_equality) {
    const bool joins = complaint == do_not_go_together;
    std::optional<sql_type> common;
    const operand* widest = nullptr;
    for (const operand& given : operands) {
        if (given.type == sql_type::null || (given.literal != nullptr && given.type == sql_type::varchar)) {
            continue;
        }
        const sql_type known = common.value_or(given.type);
        const bool both_numbers = is_number(known) && is_number(given.type);
        const bool both_dates = is_datetime(known) && is_datetime(given.type) && has_date(known) == has_date(given.type);
        if (!both_numbers && !both_dates && known != given.type) {
            fail_at(state.sql, offset,
                    fmt::format("{} and {} {}{}", sql_type_name(known), sql_type_name(given.type), complaint,
                                joins && std::max(known, given.type) == sql_type::varchar
                                    ? way_to_text(std::min(known, given.type))
                                    : way_together(misplaced(state, *widest), misplaced(state, given), is_equality)));
        }
        widest = widest == nullptr || given.type > known ? &given : widest;
        common = std::max(known, given.type);
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
                    fmt::format("{} and VARCHAR {}{}", sql_type_name(*common), complaint,
                                joins             ? way_to_text(*common)
                                : is_blank(given) ? null_instead_of_empty
                                                  : way_to(*common, misplaced(state, given))));
        }
        const std::optional<sql_type> type = datetime_type_of(*given.literal);
        if (!type || has_date(*type) != has_date(*common)) {
            fail_at(state.sql, given.offset,
                    fmt::format("this cannot be read as {}{}", sql_type_name(*common),
                                joins             ? way_to_text(*common)
                                : is_blank(given) ? null_instead_of_empty
                                                  : way_to_write(*common, given.literal->text)));
        }
        common = std::max(*common, *type);
    }
    return common.value_or(sql_type::integer);
}

namespace {

std::size_t add_condition(binder& state, step_kind kind, std::vector<std::size_t> operands, bool negated = false) {
    return add_step(state, {.kind = kind, .type = sql_type::boolean, .operands = std::move(operands), .negated = negated});
}

std::size_t negated_if(binder& state, bool negated, std::size_t condition) {
    return negated ? add_condition(state, step_kind::negation, {condition}) : condition;
}

// What a text shows of a date, as a column or as a literal.
enum class date_look : std::uint8_t { none, iso, written };

date_look look_of(const binder& state, const operand& given) {
    if (given.type != sql_type::varchar) {
        return date_look::none;
    }
    if (given.literal == nullptr) {
        const table_column* const column = misplaced(state, given).column;
        return column != nullptr && !column->seems.empty() && has_date(column->seems[0].type) ? date_look::written : date_look::none;
    }
    const std::optional<sql_type> type = datetime_type_of(*given.literal);
    return type && has_date(*type) ? date_look::iso : is_written_date(given.literal->text) ? date_look::written : date_look::none;
}

// What the texts of a column are meant as, if they are compared with this one: dates or times, or numbers.
std::optional<sql_type> meant_type(const binder& state, bool is_equality, const table_column& column, const operand& text,
                                   const operand& other) {
    const date_look look = look_of(state, other);
    if (look != date_look::none && !(is_equality && (look_of(state, text) == date_look::none || look == date_look::written))) {
        return sql_type::date;
    }
    if (is_equality || other.literal == nullptr || other.type != sql_type::varchar) {
        return std::nullopt;
    }
    if (column.forms && is_twelve_hour_time(column.forms->first) && is_twelve_hour_time(other.literal->text)) {
        return sql_type::time;
    }
    const number_shape shape = shape_of_number(without_blanks_around(other.literal->text));
    const bool holds_numbers = is_number(column.shown) || !way_to_all_numbers(column).empty() ||
                               (column.forms && (numbers_in(column.forms->besides) & number_fields) != 0);
    return shape.is_number && !shape.has_leading_zero && holds_numbers ? std::optional(sql_type::decimal) : std::nullopt;
}

// Texts that are dates or numbers have another order than these, and are never equal where they are not written alike.
void notice_values_as_texts(binder& state, comparison_operator operation, const operand& left, const operand& right) {
    const bool is_left = left.literal == nullptr;
    const operand& text = is_left ? left : right;
    const operand& other = is_left ? right : left;
    const table_column* const column = text.type == sql_type::varchar ? misplaced(state, text).column : nullptr;
    const bool is_equality = operation == comparison_operator::equal || operation == comparison_operator::not_equal;
    const std::optional<sql_type> meant = column != nullptr ? meant_type(state, is_equality, *column, text, other) : std::nullopt;
    if (meant) {
        add_notice(state, fmt::format("{} is text, and compared as such", column->name),
                   fmt::format(" with {}{}",
                               other.literal != nullptr ? fmt::format("'{}'", other.literal->text) : misplaced(state, other).column->name,
                               way_to(*meant, misplaced(state, text))));
    }
}

} // namespace

std::size_t add_comparison(binder& state, comparison_operator operation, const operand& left, const operand& right, std::size_t offset) {
    notice_values_as_texts(state, operation, left, right);
    const bool is_equality = operation == comparison_operator::equal || operation == comparison_operator::not_equal;
    const sql_type type = common_type(state, {left, right}, offset, cannot_be_compared, is_equality);
    const std::size_t first = as_type(state, left, type);
    const std::size_t made = add_condition(state, step_kind::comparison, {first, as_type(state, right, type)});
    state.steps[made].comparison = operation;
    return made;
}

namespace {

std::size_t bind_in_list(binder& state, const expression& tree, const std::vector<operand>& operands) {
    const sql_type type = common_type(state, operands, tree.offset, cannot_be_compared, true);
    std::vector<std::size_t> compared{as_type(state, operands[0], type)};
    std::vector<constant> items;
    for (const operand& given : std::span(operands).subspan(1)) {
        notice_values_as_texts(state, comparison_operator::equal, operands[0], given);
        if (given.literal != nullptr && given.type != sql_type::null) {
            items.push_back(constant_of_type(state, *given.literal, type));
        } else {
            compared.push_back(as_type(state, given, type));
        }
    }
    const bool has_null = std::ranges::find(operands.begin() + 1, operands.end(), sql_type::null, &operand::type) != operands.end();
    if (tree.negated && has_null) {
        add_notice(state, "NOT IN is never true of a list with NULL", "; x IS NOT NULL leaves out NULL");
    }
    const std::size_t made = add_condition(state, step_kind::in_list, std::move(compared));
    state.steps[made].items = std::move(items);
    return negated_if(state, tree.negated, made);
}

std::size_t bind_like(binder& state, const expression& tree, const std::vector<operand>& operands) {
    for (const operand& given : operands) {
        if (given.type == sql_type::varbinary) {
            fail_at(state.sql, given.offset, "LIKE takes texts, and this is of type VARBINARY; BINARY_TO_CHAR(b) makes a text of bytes");
        }
    }
    const auto compared = [&](const operand& value) {
        const operand given = as_text(state, value);
        return as_type(state, tree.folds_case ? bind_call(state, tree, "LOWER", {given}) : given, sql_type::varchar);
    };
    const std::size_t text = compared(operands[0]);
    const std::size_t made = add_condition(state, step_kind::like, {text, compared(operands[1])});
    const std::string escape = tree.folds_case ? lower_case(tree.text) : tree.text;
    state.steps[made].escape = from_utf8(*state.settings.text_charset, escape).value_or("");
    return negated_if(state, tree.negated, made);
}

// All of a statement happens at one moment. Dates and local times are those of the zone that functions take for the current one.
operand bind_moment(binder& state, const expression& tree) {
    constexpr std::int32_t digits_of_second = 6;
    if (!state.now) {
        statement_moment& now = state.now.emplace();
        (void)zqtime_tz_now(digits_of_second, static_cast<std::int32_t>(ini_get_value(0, INI_NOW_TIME_ZONE)), &now.local);
        (void)zqtime_tz_now(digits_of_second, state.settings.time_zone(), &now.zoned);
        zqtime_set_tz(&now.local, ZQTIME_NO_ZONE);
    }
    const bool has_zone = tree.literal == literal_kind::time_with_zone || tree.literal == literal_kind::timestamp_with_zone;
    const bool is_time = tree.literal == literal_kind::time || tree.literal == literal_kind::time_with_zone;
    const auto kind = tree.literal == literal_kind::date ? zqengine::datetime_kind::date
                      : is_time                          ? zqengine::datetime_kind::time
                                                         : zqengine::datetime_kind::datetime;
    std::string text(zqengine::datetime_text_size, '\0');
    text.resize(zqengine::write_datetime(has_zone ? state.now->zoned : state.now->local, kind, text.data()));
    return add_literal(state, tree.literal, std::move(text), tree.offset);
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
        if (tree.literal == literal_kind::number && state.source != nullptr && !find_columns(*state.source, tree.text).empty()) {
            add_notice(state, fmt::format("{} is a number in the query", tree.text),
                       fmt::format("; the column of that name is written \"{}\"", tree.text));
        }
        return {&tree, 0, literal_type_of(tree, state.sql), tree.offset};
    }
    if (tree.kind == expression_kind::column) {
        return bind_column(state, tree);
    }
    if (tree.kind == expression_kind::call) {
        return bind_call(state, tree);
    }
    switch (tree.kind) {
    case expression_kind::moment:
        return bind_moment(state, tree);
    case expression_kind::cast:
        return bind_cast(state, tree);
    case expression_kind::choice:
        return bind_choice(state, tree);
    case expression_kind::first_known:
        return bind_first_known(state, tree);
    case expression_kind::null_if:
        return bind_null_if(state, tree);
    case expression_kind::arithmetic:
        return bind_arithmetic(state, tree);
    default:
        break;
    }
    std::vector<operand> operands;
    for (const expression& given : tree.operands) {
        operands.push_back(bind(state, given));
    }
    std::size_t made = 0;
    switch (tree.kind) {
    case expression_kind::comparison:
        if (state.source != nullptr && std::ranges::find(operands, sql_type::null, &operand::type) != operands.end()) {
            add_notice(state, "a comparison with NULL is never true", "; x IS NULL and x IS NOT NULL test for it");
        }
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
    case expression_kind::distinction: {
        const std::size_t equal = add_comparison(state, comparison_operator::equal, operands[0], operands[1], tree.offset);
        std::vector<std::size_t> nulls;
        for (const operand& given : operands) {
            nulls.push_back(add_condition(state, step_kind::null_test, {as_type(state, given, given.type)}));
        }
        const std::size_t is_equal = add_condition(state, step_kind::truth_test, {equal});
        const std::size_t are_nulls = add_condition(state, step_kind::conjunction, std::move(nulls));
        made = negated_if(state, !tree.negated, add_condition(state, step_kind::disjunction, {is_equal, are_nulls}));
        break;
    }
    case expression_kind::in_list:
        made = bind_in_list(state, tree, operands);
        break;
    case expression_kind::like:
        made = bind_like(state, tree, operands);
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

} // namespace host
