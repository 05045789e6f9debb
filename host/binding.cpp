#include "host/binding.h"

#include <algorithm>
#include <deque>
#include <map>
#include <set>

#include "engine/number_check.h"
#include "host/call_spelling.h"
#include "host/date_formats.h"
#include "host/datetime_call.h"
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
    std::optional<std::int32_t> keyword = {}; // the code, where it is one
};

struct binder {
    const std::string& sql;
    table* source;
    std::vector<std::string> table_names; // that may stand before a column
    const session_settings& settings;
    const function_library& library;
    std::vector<step> steps;
    std::deque<expression> added_literals; // omitted arguments of calls and the codes of keywords
};

std::size_t add_step(binder& state, step made) {
    state.steps.push_back(std::move(made));
    return state.steps.size() - 1;
}

operand bind(binder& state, const expression& tree);

// ---- literals and conversions --------------------------------------------------------------------------------------

constant constant_of_type(const binder& state, const expression& literal, sql_type type) {
    constant made = make_constant(literal, value_type_of(type), state.settings, state.sql);
    if (has_zone(type) && literal.literal != literal_kind::null) {
        add_zone(made.as_datetime.value, state.settings.time_zone());
    }
    return made;
}

// A step whose values have exactly the type asked for. Any datetime is one without a zone; where one with a zone is asked for, a value
// without gets the session's.
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

// ---- calls ---------------------------------------------------------------------------------------------------------

operand add_literal(binder& state, literal_kind kind, std::string text, std::size_t offset) {
    expression& literal = state.added_literals.emplace_back(expression{.kind = expression_kind::literal, .offset = offset});
    literal.literal = kind;
    literal.text = std::move(text);
    return {&literal, 0, literal_type_of(literal, state.sql), offset};
}

// The names of keywords to show, by their codes.
std::map<std::int32_t, std::string> names_of(bifun::keyword_list keywords) {
    std::map<std::int32_t, std::string> names;
    for (const auto& [code, all] : keywords.words) {
        names[code] = all.substr(0, all.find(' '));
    }
    return names;
}

std::int32_t code_of_keyword(const binder& state, const expression& keyword, std::string_view builtin) {
    const bifun::keyword_list keywords = keywords_of(builtin).list;
    const bifun::keyword* const known = find_keyword(keywords, upper_case(keyword.text));
    if (known == nullptr) {
        std::vector<std::string> names;
        for (const auto& [code, name] : names_of(keywords)) {
            names.push_back(name);
        }
        const std::string hint = did_you_mean(keyword.text, names);
        fail_at(state.sql, keyword.offset,
                fmt::format("{} has no {} {}{}", builtin, role_name(keywords.role), expression_text(keyword),
                            hint.empty() ? fmt::format("; there are {}", fmt::join(names, ", ")) : hint));
    }
    return known->code;
}

// A keyword becomes its code, or stays a text where it is one and a member takes that.
operand bind_keyword(binder& state, const expression& keyword, std::string_view builtin) {
    const std::int32_t code = code_of_keyword(state, keyword, builtin);
    const bool is_name = keyword.literal == literal_kind::string && keywords_of(builtin).name_position;
    operand made = is_name ? add_literal(state, literal_kind::string, keyword.text, keyword.offset)
                           : add_literal(state, literal_kind::number, std::to_string(code), keyword.offset);
    made.keyword = code;
    return made;
}

std::vector<offered_argument> offered_of(const std::vector<operand>& arguments) {
    std::vector<offered_argument> offered;
    offered.reserve(arguments.size());
    for (const operand& argument : arguments) {
        offered.push_back({argument.type, argument.literal != nullptr, argument.keyword});
    }
    return offered;
}

// The datetimes among a call's arguments. The catalogue knows one type for all of them; a text may stand for any.
std::vector<datetime_argument> datetimes_of(const binder& state, const bifun::entry_point& member, const std::vector<operand>& arguments) {
    std::vector<datetime_argument> found;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const operand& argument = arguments[i];
        if (member.arguments()[i].type != value_type::DATETIME || argument.type == sql_type::null) {
            continue;
        }
        const std::optional<sql_type> type = argument.type == sql_type::varchar ? datetime_type_of(*argument.literal) : argument.type;
        if (!type) {
            fail_at(state.sql, argument.offset, "this text cannot be read as a date, time or timestamp");
        }
        found.push_back({i, *type});
    }
    return found;
}

// The catalogue knows one datetime type; the result keeps the finer one of the datetime arguments.
sql_type result_type(const binder& state, const bifun::entry_point& member, const std::vector<operand>& arguments) {
    std::vector<datetime_argument> datetimes = datetimes_of(state, member, arguments);
    const std::vector<offered_argument> offered = offered_of(arguments);
    const auto refusal = find_datetime_refusal(member, offered, datetimes);
    if (refusal) {
        fail_at(state.sql, arguments[refusal->position].offset, refusal->message);
    }
    if (member.result != value_type::DATETIME) {
        return sql_type_of(member.result);
    }
    const operand& first = arguments.front();
    if (first.type == sql_type::varchar && first.literal != nullptr && datetimes.empty()) {
        datetimes.push_back({0, datetime_type_of(*first.literal).value_or(sql_type::timestamp)}); // LAST_DAY of a text
    }
    return datetime_result(member, offered, datetimes);
}

const bifun::builtin& builtin_named(const binder& state, const expression& tree) {
    const bifun::builtin* const builtin = find_builtin(tree.name);
    if (builtin == nullptr) {
        fail_at(state.sql, tree.offset, unknown_function(tree.name));
    }
    if (!takes_argument_count(builtin->name, tree.operands.size())) {
        fail_at(state.sql, tree.offset,
                fmt::format("{} takes {} argument{}, not {}: {}", builtin->name, argument_counts(builtin->name),
                            argument_counts(builtin->name) == "1" ? "" : "s", tree.operands.size(), builtin->form));
    }
    return *builtin;
}

// A value that has not the field which stands first, or none at all.
[[noreturn]] void refuse_field(const binder& state, const expression& tree, std::string_view builtin,
                               std::vector<offered_argument> offered) {
    std::vector<std::string> names;
    for (const auto& [code, name] : names_of(keywords_of(builtin).list)) {
        offered.front().keyword = code;
        if (choose_member(builtin, offered) != nullptr) {
            names.push_back(name);
        }
    }
    const std::string_view type = sql_type_name(offered.back().type);
    if (names.empty()) {
        fail_at(state.sql, tree.operands.back().offset,
                fmt::format("{} takes dates, times, timestamps, intervals and text, not {}", builtin, type));
    }
    fail_at(state.sql, tree.operands.front().offset,
            fmt::format("{} has no field {}; it has {}", type, expression_text(tree.operands.front()), fmt::join(names, ", ")));
}

// May add the argument that is omitted, and moves the name of a field to where the member takes it.
const bifun::entry_point& find_member(binder& state, const expression& tree, std::string_view builtin, std::vector<operand>& arguments) {
    const keyword_use keywords = keywords_of(builtin);
    std::vector<std::string_view> types;
    types.reserve(arguments.size());
    for (const operand& argument : arguments) {
        types.push_back(argument.keyword ? role_name(keywords.list.role) : sql_type_name(argument.type));
    }
    if (keywords.name_position && arguments.front().type == sql_type::varchar) {
        const auto behind = static_cast<std::ptrdiff_t>(*keywords.name_position) + 1;
        std::rotate(arguments.begin(), arguments.begin() + 1, arguments.begin() + behind);
    }
    const std::vector<offered_argument> offered = offered_of(arguments);
    const bifun::entry_point* const member = choose_member(builtin, offered);
    if (member == nullptr && keywords.chooses_member) {
        refuse_field(state, tree, builtin, offered);
    }
    if (member == nullptr) {
        fail_at(state.sql, tree.offset,
                fmt::format("{} does not take ({}); it takes {}{}", builtin, fmt::join(types, ", "), signatures(builtin, types.size()),
                            advice_for(builtin, offered)));
    }
    if (member->argument_count > arguments.size()) {
        const bool is_text = bifun::is_string(member->arguments().back().type);
        arguments.push_back(add_literal(state, is_text ? literal_kind::string : literal_kind::number,
                                        std::string(fact_of(*member, arguments.size()).if_omitted), tree.offset));
    }
    return *member;
}

// The literal that is a date format, in the database character set; nothing where the argument is none, or NULL or empty.
std::optional<std::string> date_format_of(const binder& state, const bifun::entry_point& member, const std::vector<operand>& arguments,
                                          std::size_t position) {
    if (position >= arguments.size() || fact_of(member, position).format == bifun::date_format::none ||
        arguments[position].literal == nullptr || arguments[position].type == sql_type::null || arguments[position].literal->text.empty()) {
        return std::nullopt;
    }
    return from_utf8(*state.settings.text_charset, arguments[position].literal->text);
}

void check_date_formats(const binder& state, const bifun::entry_point& member, const std::vector<operand>& arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::optional<std::string> format = date_format_of(state, member, arguments, i);
        const std::optional<std::string> fault = format ? find_format_fault(fact_of(member, i).format, *format) : std::nullopt;
        if (fault) {
            fail_at(state.sql, arguments[i].offset, *fault);
        }
        const sql_type written = arguments[0].type;
        const bool is_time = is_datetime(written) && !has_date(written);
        const std::optional<std::string> of_date = format && is_time ? find_date_element(fact_of(member, i).format, *format) : std::nullopt;
        if (of_date) {
            fail_at(state.sql, arguments[i].offset,
                    fmt::format("{} has no date, and the date format has {}", sql_type_name(written), *of_date));
        }
    }
}

// A date that text is read into has a time of day where its format has one, or the session lets it.
sql_type type_of_read_date(const binder& state, const bifun::entry_point& member, const std::vector<operand>& arguments) {
    constexpr std::size_t format_position = 1;
    const std::optional<std::string> format = date_format_of(state, member, arguments, format_position);
    const bool has_time = member.argument_count > format_position ? format && reads_time(*format) : state.settings.dates_keep_time;
    return has_time ? sql_type::timestamp : sql_type::date;
}

bool is_integer(std::string_view text) {
    std::int64_t number;
    return str2int64(reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<std::uint32_t>(text.size()), &number) == BIFUN_OK;
}

// A text that has to be one of some words, or may be an integer in place of one.
void check_word(const binder& state, const bifun::entry_point& member, std::size_t position, const operand& argument) {
    const std::string_view words = fact_of(member, position).words;
    if (words.empty() || argument.literal == nullptr || argument.type != sql_type::varchar) {
        return;
    }
    const std::string& text = argument.literal->text;
    const bool may_be_integer = fact_of(member, position).or_integer;
    if (may_be_integer && is_integer(text)) {
        return;
    }
    const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
    const std::string word = upper_case(std::string_view(text).substr(first, text.find_last_not_of(' ') + 1 - first));
    if (word.empty() || word.find(' ') != word.npos || !bifun::has_word(words, word)) {
        std::string names(words);
        for (std::size_t blank = names.find(' '); blank != names.npos; blank = names.find(' ', blank + 2)) {
            names.replace(blank, 1, ", ");
        }
        fail_at(state.sql, argument.offset,
                fmt::format("{} has no unit '{}'; there are {}{}", member.builtin, text, names, may_be_integer ? ", and integers" : ""));
    }
}

// How many of a field are a day; 0 where it is no time.
std::int64_t count_per_day(std::int32_t field) {
    switch (field) {
    case ZQTIME_HOUR:
        return 24;
    case ZQTIME_MINUTE:
        return 24 * 60;
    case ZQTIME_SECOND:
        return 24 * 60 * 60;
    case ZQTIME_SUBSECOND:
        return 24 * 60 * 60 * 1000;
    default:
        return 0;
    }
}

// A time that is moved by a field goes round the clock: whole days among the amount do not count, however many.
void leave_out_whole_days(binder& state, const expression& tree, std::string_view builtin, std::vector<operand>& arguments) {
    const bool moves = std::ranges::any_of(bifun::entry_points, [&](const bifun::entry_point& member) {
        return member.builtin == builtin && member.argument_count == 3 && bifun::fact_of(member, 0).adds_time;
    });
    if (!moves || arguments.size() != 3 || !arguments[0].keyword || count_per_day(*arguments[0].keyword) == 0) {
        return;
    }
    const operand& moved = arguments[2];
    const std::optional<sql_type> type =
        moved.literal != nullptr && moved.type == sql_type::varchar ? datetime_type_of(*moved.literal) : moved.type;
    const bool is_whole = arguments[1].type == sql_type::integer || arguments[1].type == sql_type::bigint;
    if (!type || !is_datetime(*type) || has_date(*type) || !is_whole) {
        return;
    }
    const std::int64_t per_day = count_per_day(*arguments[0].keyword);
    if (arguments[1].literal != nullptr) {
        const constant amount = make_constant(*arguments[1].literal, value_type::BIGINT, state.settings, state.sql);
        arguments[1] = add_literal(state, literal_kind::number, std::to_string(amount.as_bigint.value % per_day), arguments[1].offset);
        return;
    }
    expression rest{.kind = expression_kind::call, .offset = tree.operands[1].offset};
    rest.name = "MOD";
    rest.operands = {tree.operands[1], *add_literal(state, literal_kind::number, std::to_string(per_day), rest.offset).literal};
    arguments[1] = bind(state, rest);
}

operand add_call(binder& state, const expression& tree, std::string_view builtin, std::vector<operand> arguments) {
    leave_out_whole_days(state, tree, builtin, arguments);
    const bifun::entry_point& member = find_member(state, tree, builtin, arguments);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        check_word(state, member, i, arguments[i]);
    }
    check_date_formats(state, member, arguments);
    step call{.kind = step_kind::call, .type = result_type(state, member, arguments), .operands = {}};
    if (builtin == "TO_DATE") {
        call.type = type_of_read_date(state, member, arguments);
    }
    call.entry = &member;
    call.function = state.library.find(member.symbol);
    const sql_type type = call.type;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const value_type parameter = member.arguments()[i].type;
        const bool is_zoned = parameter == value_type::DATETIME && has_zone(type);
        call.operands.push_back(as_type(state, arguments[i], is_zoned ? type : sql_type_of(parameter)));
    }
    return {nullptr, add_step(state, std::move(call)), type, tree.offset};
}

operand bind_call(binder& state, const expression& tree) {
    const std::string_view builtin = builtin_named(state, tree).name;
    std::vector<operand> arguments;
    for (const expression& argument : tree.operands) {
        arguments.push_back(argument.kind == expression_kind::keyword ? bind_keyword(state, argument, builtin) : bind(state, argument));
    }
    if (!bifun::spelling_of(builtin).takes_more) {
        return add_call(state, tree, builtin, std::move(arguments));
    }
    operand joined = arguments[0];
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        joined = add_call(state, tree, builtin, {joined, arguments[i]});
    }
    return joined;
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
