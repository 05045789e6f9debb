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

bool same_types(const entry_point& a, const entry_point& b) {
    return std::ranges::equal(a.arguments(), b.arguments(), {}, &bifun::argument::type, &bifun::argument::type);
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

std::string signatures(std::string_view builtin) {
    std::vector<const entry_point*> listed;
    std::string text;
    for (const entry_point& member : bifun::entry_points) {
        if (member.builtin != builtin ||
            std::ranges::any_of(listed, [&](const entry_point* other) { return same_types(*other, member); })) {
            continue;
        }
        listed.push_back(&member);
        std::string parameters;
        for (std::size_t i = 0; i < member.argument_count; ++i) {
            const bool always_constant = std::ranges::none_of(bifun::entry_points, [&](const entry_point& other) {
                return other.builtin == builtin && same_types(other, member) && other.arguments()[i].kind == argument_kind::column;
            });
            parameters +=
                fmt::format("{}{}{}", i == 0 ? "" : ", ", always_constant ? "constant " : "", bifun::type_name(member.arguments()[i].type));
        }
        text += fmt::format("{}({})", text.empty() ? "" : ", ", parameters);
    }
    return text;
}

} // namespace host
