// SPDX-License-Identifier: Apache-2.0
// Calls: from a name and arguments to a member and what it is given.

#include <algorithm>

#include "adapters/binding/datetime_call.h"
#include "adapters/binding/member_choice.h"
#include "engine/number_check.h"
#include "host/binding/binder.h"
#include "host/binding/call_advice.h"
#include "host/binding/literal.h"
#include "host/near_names.h"
#include "host/program_error.h"
#include "host/sql/builtins.h"
#include "host/sql/sql_text.h"
#include "host/tables/text_forms.h"
#include "host/values/date_formats.h"

namespace host {
namespace {

using bifun::value_type;

std::string keyword_text(const expression& keyword) {
    return keyword.literal == literal_kind::string ? fmt::format("'{}'", keyword.text) : upper_case(keyword.text);
}

std::int32_t code_of_keyword(std::string_view sql, const expression& call, std::string_view builtin) {
    const expression& keyword = call.operands.front();
    const bifun::keyword_list keywords = keywords_of(builtin).list;
    const bifun::keyword* const known = find_keyword(keywords, upper_case(keyword.text));
    if (known == nullptr) {
        fail_at(
            sql, keyword.offset,
            fmt::format("{} has no {} {}{}", builtin, role_name(keywords.role), keyword_text(keyword), advice_on_keyword(call, builtin)));
    }
    return known->code;
}

// A keyword becomes its code, or stays a text where it is one and a member takes that.
operand bind_keyword(binder& state, const expression& call, std::string_view builtin) {
    const expression& keyword = call.operands.front();
    const std::int32_t code = code_of_keyword(state.sql, call, builtin);
    const bool is_name = keyword.literal == literal_kind::string && keywords_of(builtin).name_position;
    operand made = is_name ? add_literal(state, literal_kind::string, keyword.text, keyword.offset)
                           : add_literal(state, literal_kind::number, std::to_string(code), keyword.offset);
    made.keyword = code;
    return made;
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
            fail_at(state.sql, argument.offset,
                    fmt::format("this text cannot be read as a date, time or timestamp{}",
                                advice_on_unread_literal(member.builtin, arguments, argument)));
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

const bifun::builtin& builtin_named(std::string_view sql, const expression& tree) {
    const bifun::builtin* const builtin = find_builtin(tree.name);
    if (builtin == nullptr) {
        fail_at(sql, tree.offset, unknown_function(tree.name));
    }
    if (!takes_argument_count(builtin->name, tree.operands.size())) {
        fail_at(sql, tree.offset,
                fmt::format("{} takes {} argument{}, not {}: {}{}", builtin->name, argument_counts(builtin->name),
                            argument_counts(builtin->name) == "1" ? "" : "s", tree.operands.size(), builtin->form,
                            advice_on_count(builtin->name, tree.operands.size())));
    }
    return *builtin;
}

// A value that has not the field which stands first, or none at all.
[[noreturn]] void refuse_field(const binder& state, const expression& tree, std::string_view builtin,
                               const std::vector<offered_argument>& offered) {
    const std::string refusal = field_refusal(builtin, keyword_text(tree.operands.front()), offered);
    if (refusal.empty()) {
        fail_at(state.sql, tree.operands.back().offset,
                fmt::format("{} takes dates, times, timestamps, intervals and text, not {}", builtin, sql_type_name(offered.back().type)));
    }
    fail_at(state.sql, tree.operands.front().offset, refusal);
}

// Whether the built-in takes texts there and nothing else, and does more with them than to read a date, a number or JSON, of which a value
// of another type has none.
bool takes_any_text(std::string_view builtin, std::size_t position) {
    using bifun::value_form;
    constexpr bifun::type_set read_from_texts = bifun::type_set(value_type::DATETIME) | value_type::DECIMAL | value_type::DOUBLE;
    bool found = false;
    for (const bifun::entry_point& member : bifun::entry_points) {
        if (member.builtin != builtin || position >= member.argument_count) {
            continue;
        }
        const bifun::argument_fact& fact = fact_of(member, position);
        const value_type type = member.arguments()[position].type;
        const value_form form = fact.typical.form;
        const bool reads = contains(read_from_texts, member.result) || form == value_form::datetime_text || form == value_form::json_object;
        if (fact.keywords.role == bifun::keyword_role::none && (type != value_type::VARCHAR || reads)) {
            return false;
        }
        found |= type == value_type::VARCHAR;
    }
    return found;
}

// Values of other types become texts where a member takes the call then.
const bifun::entry_point* choose_by_texts(binder& state, std::string_view builtin, std::vector<operand>& arguments) {
    std::vector<offered_argument> offered = offered_of(arguments);
    std::vector<std::size_t> texts;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (stands_for_text(arguments[i].type) && !arguments[i].keyword && takes_any_text(builtin, i)) {
            offered[i] = {sql_type::varchar, false};
            texts.push_back(i);
        }
    }
    const bifun::entry_point* const member = choose_member(builtin, offered);
    for (const std::size_t i : member == nullptr ? std::vector<std::size_t>() : texts) {
        arguments[i] = as_text(state, arguments[i]);
    }
    return member;
}

// May add the argument that is omitted, makes texts of what is to be one, and moves the name of a field to where the member takes it.
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
    const bifun::entry_point* member = choose_member(builtin, offered);
    member = member == nullptr ? choose_by_texts(state, builtin, arguments) : member;
    if (member == nullptr && keywords.chooses_member) {
        refuse_field(state, tree, builtin, offered);
    }
    constexpr std::size_t clauses_at = 2;
    if (member == nullptr && offered.size() > clauses_at && offered[clauses_at].type == sql_type::varchar &&
        !returned_types(builtin).empty()) {
        fail_at(state.sql, arguments[clauses_at].offset, fmt::format("RETURNING takes {}", returned_types(builtin)));
    }
    if (member == nullptr) {
        fail_at(state.sql, tree.offset,
                fmt::format("{} does not take ({}); it takes {}{}", builtin, fmt::join(types, ", "),
                            describe_signatures(builtin, types.size()), advice_on_arguments(state, builtin, arguments)));
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

std::string_view percent_advice(const bifun::entry_point& member) {
    return member.result == value_type::VARCHAR ? "; DATE_FORMAT(d, '%Y-%m-%d') has formats with %" : "; formats are such as YYYY-MM-DD";
}

void check_date_formats(binder& state, const bifun::entry_point& member, const std::vector<operand>& arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::optional<std::string> format = date_format_of(state, member, arguments, i);
        if (!format) {
            continue;
        }
        const bifun::date_format use = fact_of(member, i).format;
        const std::optional<std::string> fault = find_format_fault(use, *format);
        const std::optional<std::string> month = find_month_behind_hour(use, *format);
        const bool is_percent = use == bifun::date_format::percent;
        const bool has_percent = format->find('%') != format->npos;
        const std::string of_month = month_behind_hour_too(use, *format);
        if (fault) {
            fail_at(state.sql, arguments[i].offset, *fault + (has_percent && !is_percent ? std::string(percent_advice(member)) : of_month));
        }
        const sql_type written = arguments[0].type;
        const bool is_time = is_datetime(written) && !has_date(written);
        const std::optional<std::string> of_date = is_time ? find_date_element(use, *format) : std::nullopt;
        if (of_date) {
            fail_at(state.sql, arguments[i].offset,
                    fmt::format("{} has no date, and the date format has {}{}", sql_type_name(written), *of_date, of_month));
        }
        const std::string beginning = fmt::format("{}: the format '{}'", member.builtin, *format);
        if (has_percent != is_percent) {
            add_notice(state, beginning,
                       is_percent ? " has no element with %, such as %Y, and is written as it is; TO_CHAR has formats such as YYYY-MM-DD"
                                  : fmt::format(" has no elements with %{}", percent_advice(member)));
        }
        if (month) {
            add_notice(state, beginning, fmt::format(" {}", *month));
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
        const std::string advice = advice_on_unit(words, word);
        fail_at(state.sql, argument.offset,
                fmt::format("{} has no unit '{}'{}", member.builtin, text,
                            advice.empty() ? fmt::format("; there are {}{}", names, may_be_integer ? ", and integers" : "") : advice));
    }
}

// A time that is moved by a field goes round the clock: whole days among the amount do not count, however many.
void leave_out_whole_days(binder& state, const expression& tree, std::string_view builtin, std::vector<operand>& arguments) {
    if (arguments.size() != 3 || !arguments[0].keyword) {
        return;
    }
    const operand& moved = arguments[2];
    const std::optional<sql_type> type =
        moved.literal != nullptr && moved.type == sql_type::varchar ? datetime_type_of(*moved.literal) : moved.type;
    const bool is_whole = arguments[1].type == sql_type::integer || arguments[1].type == sql_type::bigint;
    const std::optional<std::int64_t> per_day =
        type && is_whole ? count_round_the_clock(builtin, *arguments[0].keyword, *type) : std::optional<std::int64_t>();
    if (!per_day) {
        return;
    }
    if (arguments[1].literal != nullptr) {
        const constant amount = make_constant(*arguments[1].literal, value_type::BIGINT, state.settings, state.sql);
        arguments[1] = add_literal(state, literal_kind::number, std::to_string(amount.as_bigint.value % *per_day), arguments[1].offset);
        return;
    }
    arguments[1] = bind_call(state, tree.operands[1], "MOD",
                             {arguments[1], add_literal(state, literal_kind::number, std::to_string(*per_day), arguments[1].offset)});
}

// Whether a number is written under a format that shows all of its digits, however small it is.
bool shows_all_digits(const bifun::entry_point& member, const std::vector<operand>& arguments) {
    if (member.builtin != "TO_CHAR" || arguments.size() < 2 || member.arguments()[0].type != value_type::DOUBLE) {
        return false;
    }
    const std::string format = upper_case(arguments[1].literal->text);
    return format.find("EEEE") != format.npos || format.find("TM") != format.npos;
}

// The argument of a member that reads a text as a datetime and gives NULL for any other.
std::optional<std::size_t> argument_of_datetime_text(const bifun::entry_point& member) {
    for (std::size_t i = 0; i < member.argument_count; ++i) {
        const bifun::argument_fact& fact = fact_of(member, i);
        if (member.arguments()[i].type == value_type::VARCHAR && fact.others_pass &&
            fact.typical.form == bifun::value_form::datetime_text) {
            return i;
        }
    }
    return std::nullopt;
}

// Members whose NULL rule speaks of the first argument alone are asked for no row where another one is NULL: constants they take by their
// length.
bool is_null_by_constant(const bifun::entry_point& member, const std::vector<operand>& arguments) {
    return bifun::null_rule_of(member) == bifun::null_rule::first_only &&
           std::ranges::find(arguments, sql_type::null, &operand::type) != arguments.end();
}

// Whether values of the argument may have a zone; a DATE has none.
bool may_have_zone(const binder& state, const operand& given) {
    if (given.literal != nullptr && given.type == sql_type::varchar) {
        const std::optional<sql_type> read = datetime_type_of(*given.literal);
        return read && has_zone(*read);
    }
    const table_column* const column = misplaced(state, given).column;
    return has_zone(given.type) ||
           (given.type == sql_type::varchar && column != nullptr && column->forms && has_mixed_zones(*column->forms));
}

// The first of the arguments whose clock times count, where zones would make a difference: of a number that lies between two datetimes, and
// of seconds since 1970.
std::optional<std::size_t> argument_of_clock_time(const binder& state, const bifun::entry_point& member,
                                                  const std::vector<operand>& arguments) {
    if (member.builtin == "UNIX_TIMESTAMP") {
        return may_have_zone(state, arguments[0]) ? std::optional<std::size_t>(0) : std::nullopt;
    }
    const auto is_datetime_at = [&](std::size_t i) {
        return member.arguments()[i].type == value_type::DATETIME && arguments[i].type != sql_type::date;
    };
    const std::size_t count = arguments.size();
    const bool is_difference = is_number(sql_type_of(member.result)) && count > 1 && is_datetime_at(count - 2) && is_datetime_at(count - 1);
    return is_difference && (may_have_zone(state, arguments[count - 2]) || may_have_zone(state, arguments[count - 1]))
               ? std::optional(count - 2)
               : std::nullopt;
}

// What is to be counted of the rows of a call. A literal is in sight.
std::vector<odd_rows> oddities_of(const binder& state, const bifun::entry_point& member, const std::vector<operand>& arguments) {
    std::vector<odd_rows> found;
    const auto is_of_rows = [&](std::size_t i) { return state.source != nullptr && arguments[i].literal == nullptr; };
    if (member.builtin == "FROM_UNIXTIME") {
        found.push_back({.kind = oddity::late_seconds});
    }
    if (const auto text = argument_of_datetime_text(member); text && is_of_rows(*text)) {
        found.push_back({.kind = oddity::unread_dates, .argument = *text});
    }
    const bool reads_number = bifun::has_word("TO_NUMBER TO_DOUBLE", member.builtin);
    if (reads_number && bifun::null_rule_of(member) == bifun::null_rule::adds_nulls && is_of_rows(0)) {
        found.push_back({.kind = oddity::unread_numbers});
    }
    if (bifun::null_rule_of(member) == bifun::null_rule::defaulted && is_of_rows(0)) {
        found.push_back({.kind = oddity::nulls_for_now});
    }
    if (member.builtin == "TO_CHAR" && member.argument_count > 1 && is_number(sql_type_of(member.arguments()[0].type))) {
        found.push_back({.kind = oddity::filled_results});
    }
    if (const auto first = argument_of_clock_time(state, member, arguments); first) {
        found.push_back({.kind = oddity::apart_zones, .argument = *first});
    }
    return found;
}

} // namespace

operand bind_call(binder& state, const expression& tree, std::string_view builtin, std::vector<operand> arguments) {
    leave_out_whole_days(state, tree, builtin, arguments);
    const bifun::entry_point& member = find_member(state, tree, builtin, arguments);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        check_word(state, member, i, arguments[i]);
    }
    check_date_formats(state, member, arguments);
    if (is_null_by_constant(member, arguments)) {
        const sql_type type = sql_type_of(member.result);
        const operand null = add_literal(state, literal_kind::null, "", tree.offset);
        return {nullptr, as_type(state, null, type), type, tree.offset};
    }
    step call{.kind = step_kind::call, .type = result_type(state, member, arguments), .operands = {}};
    if (builtin == "TO_DATE") {
        call.type = type_of_read_date(state, member, arguments);
    }
    call.entry = &member;
    call.function = state.library.find(member.symbol);
    call.shows_all_digits = shows_all_digits(member, arguments);
    call.written = tree.kind == expression_kind::arithmetic ? arithmetic_symbol(tree.operation) : "";
    call.odd = oddities_of(state, member, arguments);
    const sql_type type = call.type;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const value_type parameter = member.arguments()[i].type;
        const bool is_zoned = parameter == value_type::DATETIME && has_zone(type);
        call.operands.push_back(as_type(state, arguments[i], is_zoned ? type : sql_type_of(parameter)));
    }
    return {nullptr, add_step(state, std::move(call)), type, tree.offset};
}

void check_call_names(std::string_view sql, const expression& call) {
    const std::string_view builtin = builtin_named(sql, call).name;
    if (!call.operands.empty() && call.operands.front().kind == expression_kind::keyword) {
        (void)code_of_keyword(sql, call, builtin);
    }
}

operand bind_call(binder& state, const expression& tree) {
    const std::string_view builtin = builtin_named(state.sql, tree).name;
    std::vector<operand> arguments;
    for (const expression& argument : tree.operands) {
        arguments.push_back(argument.kind == expression_kind::keyword ? bind_keyword(state, tree, builtin) : bind(state, argument));
    }
    if (!bifun::spelling_of(builtin).takes_more) {
        return bind_call(state, tree, builtin, std::move(arguments));
    }
    operand joined = arguments[0];
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        joined = bind_call(state, tree, builtin, {joined, arguments[i]});
    }
    return joined;
}

} // namespace host
