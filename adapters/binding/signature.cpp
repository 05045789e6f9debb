// SPDX-License-Identifier: Apache-2.0
#include "adapters/binding/signature.h"

#include <algorithm>
#include <bit>

#include <fmt/format.h>

#include "adapters/binding/datetime_call.h"
#include "adapters/binding/keyword_use.h"
#include "adapters/binding/known_fact.h"
#include "adapters/binding/member_choice.h"

namespace binding {
namespace {

using bifun::entry_point;
using bifun::value_type;

constexpr sql_type datetime_types[] = {sql_type::date, sql_type::time, sql_type::timestamp, sql_type::time_with_zone,
                                       sql_type::timestamp_with_zone};

using type_list = std::vector<sql_type>;

bool takes(const entry_point& member, std::size_t position, sql_type datetime) {
    return member.arguments()[position].type != value_type::DATETIME || overlap(known_fact(member, position).kinds, kind_of(datetime));
}

sql_type type_of_argument(const entry_point& member, std::size_t position, sql_type datetime) {
    const value_type type = member.arguments()[position].type;
    if (known_fact(member, position).keywords.role != bifun::keyword_role::none) {
        return sql_type::varchar;
    }
    if (type == value_type::INTERVAL_YM) {
        return sql_type::interval_dt;
    }
    return type == value_type::DATETIME ? datetime : sql_type_of(type);
}

// A host cannot pass large objects, and where an entry point takes a field by its name another one takes it by its code.
bool serves_hosts(const entry_point& member) {
    for (std::size_t i = 0; i < member.argument_count; ++i) {
        const value_type type = member.arguments()[i].type;
        const bool is_named_field = type == value_type::VARCHAR && known_fact(member, i).keywords.role != bifun::keyword_role::none;
        if (type == value_type::BLOB || is_named_field) {
            return false;
        }
    }
    return true;
}

// Adds to `lists` the types that the first `count` arguments of the member may have, all datetimes of one type: hosts make a timestamp of a
// date that stands beside one.
void add_type_lists(const entry_point& member, std::size_t count, std::vector<type_list>& lists) {
    for (const sql_type datetime : datetime_types) {
        type_list types;
        for (std::size_t i = 0; i < count && takes(member, i, datetime); ++i) {
            types.push_back(type_of_argument(member, i, datetime));
        }
        if (types.size() == count && std::ranges::find(lists, types) == lists.end()) {
            lists.push_back(types);
        }
    }
}

std::vector<offered_argument> offered_of(const signature& call, const call_values& values) {
    std::vector<offered_argument> offered;
    for (std::size_t i = 0; i < call.argument_count; ++i) {
        const bool is_keyword = call.keyword == i;
        const bool is_months = contains(values.intervals_of_months, i);
        const sql_type type = is_keyword ? sql_type::integer : is_months ? sql_type::interval_ym : call.type_list[i];
        offered.push_back({type, contains(values.constants, i), is_keyword ? values.keyword : std::nullopt});
    }
    return offered;
}

std::vector<datetime_argument> datetimes_of(std::span<const offered_argument> offered) {
    std::vector<datetime_argument> datetimes;
    for (std::size_t i = 0; i < offered.size(); ++i) {
        if (is_datetime(offered[i].type)) {
            datetimes.push_back({i, offered[i].type});
        }
    }
    return datetimes;
}

// What the values may be: every keyword, and intervals of months or of days.
template <class Visit> void for_each_case(const signature& call, argument_set constants, const Visit& visit) {
    argument_set intervals = 0;
    for (std::size_t i = 0; i < call.argument_count; ++i) {
        intervals |= call.type_list[i] == sql_type::interval_dt ? argument_set{1} << i : 0;
    }
    std::vector<std::optional<std::int32_t>> codes{std::nullopt};
    if (call.keyword) {
        codes.clear();
        for (const bifun::keyword& word : call.keywords.words) {
            codes.emplace_back(word.code);
        }
    }
    for (const std::optional<std::int32_t> code : codes) {
        for (argument_set months = 0; months <= intervals; ++months) {
            if ((months & ~intervals) == 0) {
                visit(call_values{constants, code, months});
            }
        }
    }
}

// Completes a call that has its types and its keyword, with the fewest constants for which there is a member; false where there is none.
bool complete(signature& call) {
    const argument_set keyword = call.keyword ? argument_set{1} << *call.keyword : 0;
    std::vector<argument_set> sets;
    for (argument_set set = 0; set < argument_set{1} << call.argument_count; ++set) {
        if ((set & keyword) == keyword) {
            sets.push_back(set);
        }
    }
    std::ranges::stable_sort(sets, {}, [](argument_set set) { return std::popcount(set); });
    for (const argument_set constants : sets) {
        std::optional<sql_type> result;
        for_each_case(call, constants, [&](const call_values& values) {
            const entry_point* const member = find_member(call, values);
            const std::optional<sql_type> type = member != nullptr ? result_type(call, values, *member) : std::nullopt;
            if (type) {
                result = std::max(result.value_or(*type), *type);
                call.changes = std::max(call.changes, change_of(*member));
                call.is_null_for_null &=
                    null_rule_of(*member) == bifun::null_rule::propagates || null_rule_of(*member) == bifun::null_rule::adds_nulls;
            }
        });
        if (result) {
            call.result = *result == sql_type::interval_ym ? sql_type::interval_dt : *result;
            call.constants = constants;
            return true;
        }
    }
    return false;
}

} // namespace

const entry_point* find_member(const signature& call, const call_values& values) {
    return choose_member(call.builtin, offered_of(call, values));
}

std::optional<sql_type> result_type(const signature& call, const call_values& values, const entry_point& member) {
    const std::vector<offered_argument> offered = offered_of(call, values);
    const std::vector<datetime_argument> datetimes = datetimes_of(offered);
    if (find_datetime_refusal(member, offered, datetimes)) {
        return std::nullopt;
    }
    if (member.result != value_type::DATETIME) {
        return sql_type_of(member.result);
    }
    // A date that text is read into has a time of day where its format has one.
    const bool reads_by_format = call.builtin == "TO_DATE" && call.argument_count > 1;
    return reads_by_format ? sql_type::timestamp : datetime_result(member, offered, datetimes);
}

std::string explain_refusal(const signature& call, const call_values& values, std::string_view keyword) {
    const std::vector<offered_argument> offered = offered_of(call, values);
    if (const entry_point* const member = find_member(call, values)) {
        const std::optional<datetime_refusal> refusal = find_datetime_refusal(*member, offered, datetimes_of(offered));
        return refusal ? refusal->message : "";
    }
    const bool is_by_field = call.keyword && keywords_of(call.builtin).chooses_member;
    const std::string of_field = is_by_field ? field_refusal(call.builtin, keyword, offered) : "";
    if (!of_field.empty()) {
        return fmt::format("{}: {}", call.builtin, of_field);
    }
    std::vector<std::string_view> types;
    for (std::size_t i = 0; i < offered.size(); ++i) {
        types.push_back(call.keyword == i ? role_name(call.keywords.role) : sql_type_name(offered[i].type));
    }
    return fmt::format("{} does not take ({}); it takes {}{}", call.builtin, fmt::join(types, ", "),
                       describe_signatures(call.builtin, call.argument_count), advice_for(call.builtin, offered));
}

std::vector<signature> signatures_of(std::string_view builtin) {
    std::vector<type_list> lists;
    std::optional<std::size_t> keyword;
    for (const entry_point& member : bifun::entry_points) {
        if (member.builtin != builtin || !serves_hosts(member)) {
            continue;
        }
        add_type_lists(member, member.argument_count, lists);
        for (std::size_t i = 0; i < member.argument_count; ++i) {
            keyword = known_fact(member, i).keywords.role != bifun::keyword_role::none ? i : keyword;
        }
        if (member.argument_count > 0 && !known_fact(member, member.argument_count - 1).if_omitted.empty()) {
            add_type_lists(member, member.argument_count - 1, lists);
        }
    }
    std::vector<signature> made;
    for (const type_list& types : lists) {
        signature call{.builtin = builtin,
                       .type_list = {},
                       .argument_count = types.size(),
                       .result = sql_type::null,
                       .constants = 0,
                       .keyword = types.size() > 1 ? keyword : std::nullopt, // TRIM(s) has none
                       .keywords = keywords_of(builtin).list,
                       .changes = bifun::change::never,
                       .is_null_for_null = true,
                       .takes_more = bifun::spelling_of(builtin).takes_more};
        std::ranges::copy(types, call.type_list.begin());
        if (complete(call)) {
            made.push_back(call);
        }
    }
    return made;
}

} // namespace binding
