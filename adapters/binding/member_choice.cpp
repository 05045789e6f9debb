// SPDX-License-Identifier: Apache-2.0
#include "adapters/binding/member_choice.h"

#include <algorithm>
#include <compare>
#include <vector>

#include <fmt/format.h>

#include "adapters/binding/keyword_use.h"
#include "adapters/binding/known_fact.h"
#include "adapters/binding/upper_case.h"

namespace binding {
namespace {

using bifun::argument_fact;
using bifun::argument_kind;
using bifun::entry_point;
using bifun::value_type;

using parameters = std::span<const bifun::argument>;

// The parameters of a call with so many arguments that the member serves, by itself or with what stands for its last one.
std::optional<parameters> parameters_of_call(const entry_point& member, std::size_t argument_count) {
    const bool completed = member.argument_count == argument_count + 1 && !known_fact(member, argument_count).if_omitted.empty();
    return completed || member.argument_count == argument_count ? std::optional(member.arguments().first(argument_count)) : std::nullopt;
}

// Takes every call that the other one takes: the same types, and columns wherever the other has columns.
bool covers(parameters wider, parameters other) {
    return std::ranges::equal(wider, other, [](const bifun::argument& a, const bifun::argument& b) {
        return a.type == b.type && (a.kind == argument_kind::column || b.kind == argument_kind::constant);
    });
}

// The less the better, the first first.
struct fit {
    unsigned other_kinds = 0; // datetimes that the member is not for, which it may refuse
    unsigned widening = 0;
    unsigned omitted = 0;
    unsigned spread = 0; // literals that columns have to be made of

    auto operator<=>(const fit&) const = default;
};

bool takes_keyword(const argument_fact& fact, std::optional<std::int32_t> keyword) {
    return keyword.has_value() == (fact.keywords.role != bifun::keyword_role::none) &&
           (fact.fields == 0 || bifun::contains(fact.fields, *keyword));
}

// The first word of the type behind RETURNING, in upper case.
std::string returned_type(std::string_view text) {
    const auto take_word = [&] {
        const std::size_t first = std::min(text.find_first_not_of(" \t\r\n"), text.size());
        const std::size_t end = std::min(text.find_first_of(" \t\r\n", first), text.size());
        const std::string word = upper_case(text.substr(first, end - first));
        text.remove_prefix(end);
        return word;
    };
    return take_word() == "RETURNING" ? take_word() : "VARCHAR";
}

std::optional<fit> fit_of(const entry_point& member, std::span<const offered_argument> offered) {
    if (!parameters_of_call(member, offered.size())) {
        return std::nullopt;
    }
    fit found{.omitted = member.argument_count == offered.size() ? 0U : 1U};
    const bool by_field = keywords_of(member.builtin).chooses_member;
    for (std::size_t i = 0; i < offered.size(); ++i) {
        const auto [kind, type] = member.arguments()[i];
        const argument_fact& fact = known_fact(member, i);
        const std::optional<unsigned> steps = widening(offered[i], type);
        // NULL may have any field: those with a date, a time and a zone.
        const sql_type given = offered[i].type == sql_type::null ? sql_type::timestamp_with_zone : offered[i].type;
        const bool is_kind = type != value_type::DATETIME || overlap(fact.kinds, kind_of(given));
        if (!steps || (by_field && !is_kind) || !takes_keyword(fact, offered[i].keyword) ||
            (kind == argument_kind::constant && !offered[i].is_literal) ||
            (!fact.returning.empty() && !bifun::has_word(fact.returning, returned_type(offered[i].text)))) {
            return std::nullopt;
        }
        found.other_kinds += is_kind ? 0 : 1;
        found.widening += *steps;
        found.spread += offered[i].is_literal && kind == argument_kind::column ? 1 : 0;
    }
    found.spread += found.omitted == 1 && member.arguments().back().kind == argument_kind::column ? 1 : 0;
    return found;
}

// Calls `visit` with each argument of each member.
template <class Visit> void for_each_argument(std::string_view builtin, const Visit& visit) {
    for (const entry_point& member : bifun::entry_points) {
        for (std::size_t i = 0; member.builtin == builtin && i < member.argument_count; ++i) {
            visit(member.arguments()[i], known_fact(member, i), i);
        }
    }
}

// For the first argument that fits no member, as far as one type would.
std::string advice_to_cast(std::string_view builtin, std::span<const offered_argument> offered) {
    for (std::size_t i = 0; i < offered.size(); ++i) {
        std::uint32_t taken = 0;
        bool fits = offered[i].keyword.has_value();
        for_each_argument(builtin, [&](bifun::argument parameter, const argument_fact& fact, std::size_t position) {
            if (position == i && fact.keywords.role == bifun::keyword_role::none) {
                taken |= bifun::type_set(parameter.type).bits;
                fits |= widening(offered[i], parameter.type).has_value();
            }
        });
        if (fits) {
            continue;
        }
        if (taken == bifun::type_set(value_type::VARCHAR).bits) {
            return "; CAST(x AS VARCHAR) makes a text of it";
        }
        for (const value_type number : {value_type::DECIMAL, value_type::BIGINT, value_type::INT, value_type::DOUBLE}) {
            if ((taken & ~bifun::any_number.bits) == 0 && (taken & bifun::type_set(number).bits) != 0) {
                return fmt::format("; CAST(x AS {}) makes one of it", parameter_type_name(number));
            }
        }
        break;
    }
    return "";
}

bool has_member_with(std::string_view builtin, std::size_t argument_count) {
    return std::ranges::any_of(bifun::entry_points, [&](const entry_point& member) {
        return member.builtin == builtin && parameters_of_call(member, argument_count);
    });
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

const entry_point* choose_member(std::string_view builtin, std::span<const offered_argument> arguments) {
    const entry_point* best = nullptr;
    fit best_fit;
    for (const entry_point& member : bifun::entry_points) {
        const std::optional<fit> found = member.builtin == builtin ? fit_of(member, arguments) : std::nullopt;
        if (found && (best == nullptr || *found < best_fit)) {
            best = &member;
            best_fit = *found;
        }
    }
    return best;
}

std::string argument_counts(std::string_view builtin) {
    std::vector<std::size_t> counts;
    for (std::size_t count = 0; count <= bifun::most_arguments; ++count) {
        if (has_member_with(builtin, count)) {
            counts.push_back(count);
        }
    }
    return fmt::format("{}{}", fmt::join(counts, " or "), bifun::spelling_of(builtin).takes_more ? " or more" : "");
}

bool takes_argument_count(std::string_view builtin, std::size_t count) {
    return has_member_with(builtin, count) || (count > 2 && bifun::spelling_of(builtin).takes_more);
}

std::string describe_signatures(std::string_view builtin, std::size_t argument_count) {
    // A call with the name of a field looks like one with the field, which stands first.
    const std::optional<std::size_t> name_position = keywords_of(builtin).name_position;
    std::vector<std::pair<const entry_point*, parameters>> calls;
    for (const entry_point& member : bifun::entry_points) {
        const std::optional<parameters> call =
            member.builtin == builtin ? parameters_of_call(member, argument_count) : std::optional<parameters>();
        const bool has_name = call && name_position && *name_position < call->size() && (*call)[*name_position].type == value_type::VARCHAR;
        if (!call || has_name || std::ranges::any_of(calls, [&](const auto& other) { return covers(other.second, *call); })) {
            continue;
        }
        std::erase_if(calls, [&](const auto& other) { return covers(*call, other.second); });
        calls.emplace_back(&member, *call);
    }
    std::string text;
    for (const auto& [member, call] : calls) {
        std::string types;
        for (std::size_t i = 0; i < call.size(); ++i) {
            const bifun::keyword_role role = known_fact(*member, i).keywords.role;
            types += i == 0 ? "" : ", ";
            types += role != bifun::keyword_role::none ? std::string(role_name(role))
                                                       : fmt::format("{}{}", call[i].kind == argument_kind::constant ? "constant " : "",
                                                                     parameter_type_name(call[i].type));
        }
        text += fmt::format("{}({})", text.empty() ? "" : ", ", types);
    }
    return text;
}

std::string field_refusal(std::string_view builtin, std::string_view field, std::span<const offered_argument> arguments) {
    std::vector<offered_argument> tried(arguments.begin(), arguments.end());
    const auto keyword = std::ranges::find_if(tried, [](const offered_argument& argument) { return argument.keyword.has_value(); });
    std::vector<std::string_view> names;
    for (const bifun::keyword& word : keywords_of(builtin).list.words) {
        keyword->keyword = word.code;
        if (choose_member(builtin, tried) != nullptr) {
            names.push_back(word.names.substr(0, word.names.find(' ')));
        }
    }
    return names.empty() ? ""
                         : fmt::format("{} has no field {}; it has {}", sql_type_name(tried.back().type), field, fmt::join(names, ", "));
}

std::string returned_types(std::string_view builtin) {
    std::string types;
    for_each_argument(builtin, [&](bifun::argument, const argument_fact& fact, std::size_t) {
        const std::string_view first = fact.returning.substr(0, fact.returning.find(' '));
        types += first.empty() ? "" : fmt::format("{}{}", types.empty() ? "" : ", ", first);
    });
    return types;
}

std::string_view find_advice(std::span<const bifun::advice> advices, std::string_view builtin,
                             std::span<const offered_argument> arguments) {
    const auto is_of = [&](std::size_t i, bifun::type_set types) {
        return types.bits == bifun::any_type.bits ||
               (i < arguments.size() && arguments[i].type != sql_type::null && contains(types, value_type_of(arguments[i].type)));
    };
    const auto found = std::ranges::find_if(advices, [&](const bifun::advice& known) {
        return bifun::has_word(known.names, builtin) && is_of(0, known.types[0]) && is_of(1, known.types[1]);
    });
    return found == advices.end() ? std::string_view() : found->text;
}

std::string advice_for(std::string_view builtin, std::span<const offered_argument> arguments) {
    if (const std::string_view known = find_advice(bifun::advices, builtin, arguments); !known.empty()) {
        return fmt::format("; {}", known);
    }
    std::string_view text;
    for_each_argument(builtin, [&](bifun::argument parameter, const argument_fact&, std::size_t i) {
        const bool is_text = i < arguments.size() && arguments[i].type == sql_type::varchar && !arguments[i].is_literal;
        text = is_text && parameter.type == value_type::DATETIME ? "; give the column of a date a type such as DATE with --types" : text;
    });
    return text.empty() ? advice_to_cast(builtin, arguments) : std::string(text);
}

} // namespace binding
