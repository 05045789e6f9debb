#include "host/member_choice.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "host/near_names.h"

namespace host {
namespace {

using bifun::argument_kind;
using bifun::entry_point;
using bifun::value_type;

// A neutral NLS text: it says what holds without one, so that the members with NLS parameters serve calls with a format alone.
constexpr default_argument default_arguments[] = {
    {"ROUND", {sql_type::double_precision, sql_type::null}, literal_kind::number, "0"},
    {"TRUNC", {sql_type::varchar, sql_type::null}, literal_kind::number, "0"},
    {"TO_CHAR", {sql_type::decimal, sql_type::varchar}, literal_kind::string, "NLS_NUMERIC_CHARACTERS='.,'"},
};

// Arguments, whose types `type_of` tells, have exactly the types that a default argument stands behind.
template <class Argument, class TypeOf>
bool stands_behind(const default_argument& known, std::span<const Argument> arguments, TypeOf type_of) {
    const auto* const end = std::ranges::find(known.given, sql_type::null);
    return std::ranges::equal(std::span(known.given, end), arguments, {}, {}, type_of);
}

using parameters = std::span<const bifun::argument>;

// The parameters of a call with so many arguments that the member serves, by itself or with a default argument.
std::optional<parameters> parameters_of_call(const entry_point& member, std::size_t argument_count) {
    if (member.argument_count == argument_count) {
        return member.arguments();
    }
    if (member.argument_count != argument_count + 1) {
        return std::nullopt;
    }
    const parameters given = member.arguments().first(argument_count);
    const bool completed = std::ranges::any_of(default_arguments, [&](const default_argument& known) {
        return known.builtin == member.builtin &&
               stands_behind(known, given, [](const bifun::argument& parameter) { return sql_type_of(parameter.type); });
    });
    return completed ? std::optional(given) : std::nullopt;
}

// Takes every call that the other one takes: the same types, and columns wherever the other has columns.
bool covers(parameters wider, parameters other) {
    return std::ranges::equal(wider, other, [](const bifun::argument& a, const bifun::argument& b) {
        return a.type == b.type && (a.kind == argument_kind::column || b.kind == argument_kind::constant);
    });
}

struct fit {
    unsigned widening = 0;
    unsigned constants = 0;
};

std::optional<fit> fit_of(const entry_point& member, std::span<const offered_argument> offered) {
    if (member.argument_count != offered.size()) {
        return std::nullopt;
    }
    fit found;
    for (std::size_t i = 0; i < offered.size(); ++i) {
        const bifun::argument& parameter = member.arguments()[i];
        const std::optional<unsigned> steps = widening(offered[i], parameter.type);
        if (!steps || (parameter.kind == argument_kind::constant && !offered[i].is_literal)) {
            return std::nullopt;
        }
        found.widening += *steps;
        found.constants += parameter.kind == argument_kind::constant ? 1 : 0;
    }
    return found;
}

} // namespace

std::optional<unsigned> widening(offered_argument argument, value_type parameter) {
    constexpr value_type numbers[] = {value_type::INT, value_type::BIGINT, value_type::DECIMAL, value_type::DOUBLE};
    constexpr unsigned reading_a_string = 16;
    if (argument.type == sql_type::null || value_type_of(argument.type) == parameter) {
        return 0;
    }
    if (is_number(argument.type)) {
        const auto* const from = std::ranges::find(numbers, value_type_of(argument.type));
        const auto* const to = std::ranges::find(numbers, parameter);
        return to != std::end(numbers) && from < to ? std::optional(static_cast<unsigned>(to - from)) : std::nullopt;
    }
    const bool reads = argument.type == sql_type::varchar && argument.is_literal && parameter == value_type::DATETIME;
    return reads ? std::optional(reading_a_string) : std::nullopt;
}

const bifun::builtin* find_builtin(std::string_view name) {
    const auto* const found =
        std::ranges::find_if(bifun::builtins, [&](const bifun::builtin& known) { return equal_ignoring_case(known.name, name); });
    return found == std::end(bifun::builtins) ? nullptr : found;
}

const entry_point* choose_member(std::string_view builtin, std::span<const offered_argument> arguments) {
    const entry_point* best = nullptr;
    fit best_fit;
    for (const entry_point& member : bifun::entry_points) {
        const std::optional<fit> found = member.builtin == builtin ? fit_of(member, arguments) : std::nullopt;
        if (found && (best == nullptr || std::pair(found->widening, best_fit.constants) < std::pair(best_fit.widening, found->constants))) {
            best = &member;
            best_fit = *found;
        }
    }
    return best;
}

const default_argument* find_default_argument(std::string_view builtin, std::span<const offered_argument> arguments) {
    const auto* const found = std::ranges::find_if(default_arguments, [&](const default_argument& known) {
        return known.builtin == builtin && stands_behind(known, arguments, &offered_argument::type);
    });
    return found == std::end(default_arguments) ? nullptr : found;
}

std::string argument_counts(std::string_view builtin) {
    std::set<std::size_t> counts;
    for (const entry_point& member : bifun::entry_points) {
        if (member.builtin == builtin) {
            counts.insert(member.argument_count);
        }
    }
    return fmt::format("{}", fmt::join(counts, " or "));
}

bool takes_argument_count(std::string_view builtin, std::size_t count) {
    return std::ranges::any_of(bifun::entry_points,
                               [&](const entry_point& member) { return member.builtin == builtin && member.argument_count == count; });
}

std::string signatures(std::string_view builtin, std::size_t argument_count, std::string_view role) {
    std::vector<parameters> calls;
    const bool has_keyword = !role.empty() && argument_count > 1;
    for (const entry_point& member : bifun::entry_points) {
        const std::optional<parameters> call =
            member.builtin == builtin ? parameters_of_call(member, argument_count) : std::optional<parameters>();
        // DATEPART also has a member that takes the field last, as text; calls with a text are turned round.
        const bool is_turned = call && has_keyword && call->front().type != value_type::INT;
        if (!call || is_turned || std::ranges::any_of(calls, [&](parameters other) { return covers(other, *call); })) {
            continue;
        }
        std::erase_if(calls, [&](parameters other) { return covers(*call, other); });
        calls.push_back(*call);
    }
    std::string text;
    for (const parameters call : calls) {
        std::string types(has_keyword ? role : "");
        for (const bifun::argument& parameter : call.subspan(has_keyword ? 1 : 0)) {
            types += fmt::format("{}{}{}", types.empty() ? "" : ", ", parameter.kind == argument_kind::constant ? "constant " : "",
                                 parameter_type_name(parameter.type));
        }
        text += fmt::format("{}({})", text.empty() ? "" : ", ", types);
    }
    return text;
}

const entry_point& member_named(std::string_view symbol) {
    return *std::ranges::find_if(bifun::entry_points, [&](const entry_point& member) { return member.symbol == symbol; });
}

std::string_view advice_for(std::string_view builtin, std::span<const offered_argument> arguments) {
    const auto has = [&](std::size_t i, auto matches) { return i < arguments.size() && matches(arguments[i].type); };
    const auto is_text = [](sql_type type) { return type == sql_type::varchar; };
    // The DOUBLEs that stand for most decimal fractions are a little off, so cutting digits would turn 0.3 into 0.2 now and then.
    if (builtin == "TRUNC" && has(1, is_number) && has(0, [](sql_type type) { return type == sql_type::double_precision; })) {
        return "; use ROUND(x, n) for a DOUBLE, or give its column the type DECIMAL with --types";
    }
    if ((builtin == "DATE_ADD" || builtin == "DATE_SUB") && has(1, [](sql_type type) { return type == sql_type::interval_dt; })) {
        return "; use DATEADD(field, n, d) for days and times, such as DATEADD(DAY, 1, d)";
    }
    if (builtin == "WEEKDAY" && has(0, is_datetime)) {
        return "; use DAYOFWEEK(d), which counts from 1";
    }
    if (builtin == "MIN" && has(0, is_number)) {
        return "; it is the minute of a time, and there are no aggregates";
    }
    if (builtin == "POSITION" && has(0, is_text) && has(1, is_text)) {
        return "; use LOCATE(pattern, s)";
    }
    const auto needs_datetime = [&](std::size_t i) {
        return is_text(arguments[i].type) && !arguments[i].is_literal &&
               std::ranges::any_of(bifun::entry_points, [&](const entry_point& member) {
                   return member.builtin == builtin && i < member.argument_count && member.arguments()[i].type == value_type::DATETIME;
               });
    };
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (needs_datetime(i)) {
            return "; give the column of a date a type such as DATE with --types";
        }
    }
    return "";
}

} // namespace host
