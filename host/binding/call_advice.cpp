// SPDX-License-Identifier: Apache-2.0
#include "host/binding/call_advice.h"

#include <algorithm>
#include <map>

#include <fmt/format.h>

#include "host/near_names.h"
#include "host/sql/builtins.h"
#include "host/values/value_text.h"

namespace host {
namespace {

using bifun::any_number;
using bifun::any_type;
using bifun::type_set;
using bifun::value_type;

// What other systems' functions of the same name take.
constexpr bifun::advice calls_elsewhere[] = {
    {"TO_TIMESTAMP", "FROM_UNIXTIME(n) makes a timestamp of seconds since 1970", {any_number}},
    {"TO_DATE TO_TIMESTAMP TO_DT_TZ",
     "it is no text; CAST(x AS DATE) leaves out the time of day, and TO_CHAR(d, format) writes a date",
     {value_type::DATETIME}},
    {"TO_NUMBER TO_DOUBLE", "it is a number already", {any_number}},
    {"DATE_ADD DATE_SUB", "use DATEADD(field, n, d), such as DATEADD(DAY, 1, d)", {any_type, any_number}},
    {"ADD_DAYS ADD_WEEKS ADD_MONTHS",
     "an interval is added as in d + INTERVAL '1' DAY",
     {any_type, type_set(value_type::INTERVAL_DT) | value_type::INTERVAL_YM}},
    {"RAWTOHEX", "TO_CHAR(n, 'FMXXXX') has the hexadecimal digits of a number", {any_number}},
    {"NEXT_DAY", "the day is named, as in NEXT_DAY(d, 'MONDAY')", {any_type, any_number}},
    {"TRUNC ROUND", "the unit stands behind the date, as in TRUNC(d, 'MONTH')", {value_type::VARCHAR, value_type::DATETIME}},
};

struct count_elsewhere {
    std::string_view builtin;
    std::size_t count;
    std::string_view advice;
};

constexpr count_elsewhere counts_elsewhere[] = {
    {"TO_TIMESTAMP", 2, "; TO_DATE(text, format) reads by a format, also a time of day"},
    {"DATEDIFF", 2, "; DAYS_BETWEEN(end, start) counts days"},
    {"LOG", 1, "; LN(x) is the natural logarithm, LOG10(x) the decimal one"},
    {"ADD_MONTHS", 1, "; ADD_MONTHS(d, 1) adds one"},
    {"NVL", 3, "; COALESCE(x, y, z) takes more than two"},
    {"IF", 2, "; IF(condition, x, NULL) is NULL where the condition is not true"},
};

struct field_elsewhere {
    std::string_view names;
    std::string_view advice;
};

// Of EXTRACT and DATEPART, where they have no such field of their own.
constexpr field_elsewhere fields_elsewhere[] = {
    {"EPOCH", "UNIX_TIMESTAMP(d)"},
    {"DOW WEEKDAY DAYOFWEEK DAYOFWEEK_SUN", "DAYOFWEEK(d), 1 for Sunday to 7"},
    {"ISODOW DAYOFWEEKISO", "MOD(DAYOFWEEK(d) + 5, 7) + 1, 1 for Monday to 7"},
    {"DOY DAYOFYEAR", "DAYOFYEAR(d)"},
    {"WEEK WEEKS ISOWEEK", "TO_CHAR(d, 'IW'), the week of the ISO year"},
    {"ISOYEAR", "TO_CHAR(d, 'IYYY')"},
    {"QUARTER QUARTERS", "QUARTER(d)"},
    {"CENTURY", "TO_CHAR(d, 'CC')"},
    {"DECADE", "TRUNC(YEAR(d) / 10)"},
    {"MILLENNIUM", "TRUNC((YEAR(d) + 999) / 1000)"},
    {"JULIAN", "TO_CHAR(d, 'J')"},
    {"MILLISECOND MILLISECONDS", "DATEPART(MILLISECOND, t), of the fraction alone"},
    {"DATE", "CAST(x AS DATE)"},
    {"TIME", "CAST(x AS TIME)"},
};

constexpr field_elsewhere units_elsewhere[] = {
    {"HOUR", "HH"}, {"MINUTE", "MI"}, {"WEEK", "IW"}, {"QUARTER", "Q"}, {"CENTURY", "CC"}, {"DATE", "DD"},
};

std::string_view advice_of(std::span<const field_elsewhere> table, std::string_view name) {
    const std::string upper = upper_case(name);
    const auto found = std::ranges::find_if(table, [&](const field_elsewhere& known) { return bifun::has_word(known.names, upper); });
    return found == table.end() ? std::string_view() : found->advice;
}

std::string_view advice_on_extremes(std::string_view builtin) {
    return builtin == "GREATEST" ? "; for texts there is CASE WHEN x > y THEN x ELSE y END"
           : builtin == "LEAST"  ? "; for texts there is CASE WHEN x < y THEN x ELSE y END"
                                 : "";
}

// Of arguments that a member would take if those that are no texts were some: NVL(k, '').
std::string advice_on_texts(std::string_view builtin, std::vector<offered_argument> tried) {
    std::string advice;
    for (offered_argument& argument : tried) {
        if (!argument.keyword && stands_for_text(argument.type) && argument.type != sql_type::boolean) {
            advice = way_to_text(argument.type);
            argument = {sql_type::varchar, false};
        }
    }
    return binding::choose_member(builtin, tried) != nullptr ? advice : "";
}

// Whether the text is the name of a field or mode of the call, which stands first.
bool is_keyword_of(std::string_view builtin, std::string_view text) {
    return find_keyword(keywords_of(builtin).list, upper_case(text)) != nullptr;
}

std::string first_place_of_keyword(std::string_view builtin) {
    return fmt::format("; the {} stands first, as in {}", role_name(keywords_of(builtin).list.role), find_builtin(builtin)->form);
}

} // namespace

std::vector<offered_argument> offered_of(std::span<const operand> arguments) {
    std::vector<offered_argument> offered;
    offered.reserve(arguments.size());
    for (const operand& argument : arguments) {
        offered.push_back({argument.type, argument.literal != nullptr, argument.keyword,
                           argument.literal != nullptr ? std::string_view(argument.literal->text) : std::string_view()});
    }
    return offered;
}

std::string advice_on_arguments(const binder& state, std::string_view builtin, std::span<const operand> arguments) {
    const std::vector<offered_argument> offered = offered_of(arguments);
    const bool has_text = std::ranges::find(arguments, sql_type::varchar, &operand::type) != arguments.end();
    if (has_text && !advice_on_extremes(builtin).empty()) {
        return std::string(advice_on_extremes(builtin));
    }
    for (const auto& known : {std::span<const bifun::advice>(calls_elsewhere), std::span<const bifun::advice>(bifun::advices)}) {
        if (const std::string_view advice = binding::find_advice(known, builtin, offered); !advice.empty()) {
            return fmt::format("; {}", advice);
        }
    }
    const bool has_text_of_file = std::ranges::any_of(
        arguments, [](const operand& argument) { return argument.type == sql_type::varchar && argument.literal == nullptr; });
    const auto is_taken_as = [&](std::size_t i, sql_type type) {
        std::vector<offered_argument> tried = offered;
        tried[i].type = type;
        return binding::choose_member(builtin, tried) != nullptr;
    };
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const bool is_literal = arguments[i].literal != nullptr;
        if (is_literal && has_text_of_file && is_number(arguments[i].type) && is_taken_as(i, sql_type::varchar)) {
            return "; the number is a text in quotes";
        }
        if (is_literal && arguments[i].type == sql_type::varchar && shape_of_number(arguments[i].literal->text).is_number &&
            (is_taken_as(i, sql_type::integer) || is_taken_as(i, sql_type::decimal))) {
            return "; write the number without quotes";
        }
    }
    std::string of_texts = advice_on_texts(builtin, offered);
    if (has_text && !of_texts.empty()) {
        return of_texts;
    }
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const misplaced_value given = misplaced(state, arguments[i]);
        if (given.column == nullptr) {
            continue;
        }
        if (!given.column->seems.empty() && is_taken_as(i, given.column->seems[0].type)) {
            return way_to(given.column->seems[0].type, given);
        }
        for (const sql_type needed : {sql_type::date, sql_type::boolean, sql_type::decimal}) {
            if (!way_to(needed, given).empty() && is_taken_as(i, needed)) {
                return way_to(needed, given);
            }
        }
    }
    const std::string general = binding::advice_for(builtin, offered);
    return general.empty() ? of_texts : general;
}

std::string_view advice_on_count(std::string_view builtin, std::size_t count) {
    const auto* const known = std::ranges::find_if(
        counts_elsewhere, [&](const count_elsewhere& other) { return other.builtin == builtin && other.count == count; });
    return known == std::end(counts_elsewhere) ? std::string_view() : known->advice;
}

std::string advice_on_unread_literal(std::string_view builtin, std::span<const operand> arguments, const operand& literal) {
    if (is_keyword_of(builtin, literal.literal->text)) {
        return first_place_of_keyword(builtin);
    }
    const std::string_view of_extremes = advice_on_extremes(builtin);
    return of_extremes.empty() ? advice_on_texts(builtin, offered_of(arguments)) : std::string(of_extremes);
}

std::string advice_on_keyword(const expression& call, std::string_view builtin) {
    const expression& keyword = call.operands.front();
    const bifun::keyword_list keywords = keywords_of(builtin).list;
    const bool stands_later = std::ranges::any_of(call.operands.begin() + 1, call.operands.end(), [&](const expression& operand) {
        return is_keyword_of(builtin, operand.kind == expression_kind::column ? operand.name : operand.text);
    });
    if (stands_later) {
        return first_place_of_keyword(builtin);
    }
    const std::string_view elsewhere =
        bifun::has_word("EXTRACT DATEPART", builtin) ? advice_of(fields_elsewhere, keyword.text) : std::string_view();
    if (!elsewhere.empty()) {
        return fmt::format("; use {}", elsewhere);
    }
    std::map<std::int32_t, std::string> names; // by their codes
    for (const bifun::keyword& word : keywords.words) {
        names[word.code] = word.names.substr(0, word.names.find(' '));
    }
    std::vector<std::string> shown;
    shown.reserve(names.size());
    for (const auto& [code, name] : names) {
        shown.push_back(name);
    }
    const std::string hint = did_you_mean(keyword.text, shown);
    return hint.empty() ? fmt::format("; there are {}", fmt::join(shown, ", ")) : hint;
}

std::string advice_on_unit(std::string_view units, std::string_view unit) {
    const std::string_view singular = unit.substr(0, unit.size() - (unit.ends_with('S') ? 1 : 0));
    const std::string_view elsewhere = advice_of(units_elsewhere, singular);
    for (const std::string_view meant : {singular, elsewhere}) {
        if (!meant.empty() && bifun::has_word(units, meant)) {
            return fmt::format("; write '{}'", meant);
        }
    }
    return "";
}

} // namespace host
