// SPDX-License-Identifier: Apache-2.0
#include "adapters/binding/datetime_call.h"

#include <algorithm>

#include <fmt/format.h>

#include "adapters/binding/known_fact.h"

namespace binding {
namespace {

using bifun::datetime_kinds;
using bifun::keyword_role;

// Whether a field is named that only dates have.
bool names_date_field(const bifun::entry_point& member, std::span<const offered_argument> arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].keyword && known_fact(member, i).keywords.role == keyword_role::field) {
            return bifun::is_date_field(*arguments[i].keyword);
        }
    }
    return false;
}

// 0 where it is no time.
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

} // namespace

std::optional<std::int64_t> count_round_the_clock(std::string_view builtin, std::int32_t field, sql_type moved) {
    const bool moves = std::ranges::any_of(bifun::entry_points, [&](const bifun::entry_point& member) {
        return member.builtin == builtin && member.argument_count == 3 && known_fact(member, 0).adds_time;
    });
    const std::int64_t per_day = count_per_day(field);
    return moves && per_day != 0 && is_datetime(moved) && !has_date(moved) ? std::optional(per_day) : std::nullopt;
}

std::optional<datetime_refusal> find_datetime_refusal(const bifun::entry_point& member, std::span<const offered_argument> arguments,
                                                      std::span<const datetime_argument> datetimes) {
    const bool of_dates = names_date_field(member, arguments);
    for (const auto [position, type] : datetimes) {
        const datetime_kinds kinds = of_dates ? datetime_kinds::WITH_DATE : known_fact(member, position).kinds;
        if (!overlap(kinds, kind_of(type))) {
            return datetime_refusal{position, fmt::format("{} needs a {} here, and this is of type {}", member.builtin,
                                                          overlap(kinds, datetime_kinds::DATE) ? "date" : "time", sql_type_name(type))};
        }
        if (has_date(type) != has_date(datetimes[0].type)) {
            return datetime_refusal{
                position, fmt::format("{} cannot have {} and {}", member.builtin, sql_type_name(datetimes[0].type), sql_type_name(type))};
        }
    }
    return std::nullopt;
}

sql_type datetime_result(const bifun::entry_point& member, std::span<const offered_argument> arguments,
                         std::span<const datetime_argument> datetimes) {
    if (const std::optional<datetime_kinds> kind = bifun::result_kind_of(member)) {
        return type_of(*kind);
    }
    if (datetimes.empty()) {
        return sql_type::timestamp;
    }
    // Dates before timestamps, both before those with a zone.
    const sql_type common = std::ranges::max(datetimes, {}, &datetime_argument::type).type;
    bool gets_time = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const auto [type, is_literal, keyword] = arguments[i];
        const bool has_time = keyword ? !bifun::is_date_field(*keyword) : type == sql_type::decimal || type == sql_type::double_precision;
        gets_time |= has_time && known_fact(member, i).adds_time;
    }
    return common == sql_type::date && gets_time ? sql_type::timestamp : common;
}

} // namespace binding
