// SPDX-License-Identifier: Apache-2.0
#include "adapters/duckdb/overloads.h"

#include <algorithm>
#include <array>
#include <span>

namespace duckdb_extension {
namespace {

using binding::signature;
using binding::sql_type;

constexpr std::size_t most_arguments_joined = 8;

// What DuckDB converts without being told to, into the first of the types that there is.
struct conversion {
    duckdb_type from;
    std::array<sql_type, 3> to;
};

constexpr std::array<sql_type, 3> of_integers{sql_type::bigint, sql_type::integer, sql_type::double_precision};
constexpr std::array<sql_type, 3> of_wide_integers{sql_type::bigint, sql_type::double_precision};
constexpr std::array<sql_type, 3> of_others{sql_type::double_precision};
constexpr std::array<sql_type, 3> of_timestamps{sql_type::timestamp};
constexpr conversion conversions[] = {
    {DUCKDB_TYPE_TINYINT, of_integers},
    {DUCKDB_TYPE_SMALLINT, of_integers},
    {DUCKDB_TYPE_INTEGER, of_integers},
    {DUCKDB_TYPE_UTINYINT, of_integers},
    {DUCKDB_TYPE_USMALLINT, of_integers},
    {DUCKDB_TYPE_UINTEGER, of_wide_integers},
    {DUCKDB_TYPE_BIGINT, of_wide_integers},
    {DUCKDB_TYPE_UBIGINT, of_others},
    {DUCKDB_TYPE_HUGEINT, of_others},
    {DUCKDB_TYPE_UHUGEINT, of_others},
    {DUCKDB_TYPE_FLOAT, of_others},
    {DUCKDB_TYPE_TIMESTAMP_S, of_timestamps},
    {DUCKDB_TYPE_TIMESTAMP_MS, of_timestamps},
    {DUCKDB_TYPE_TIMESTAMP_NS, of_timestamps},
};

// The one among the signatures that has `type` at the position and else the types of `form`; null where there is none.
const signature* find_other(std::span<const signature> signatures, const signature& form, std::size_t position, sql_type type) {
    for (const signature& other : signatures) {
        auto types = form.type_list;
        types[position] = type;
        if (other.argument_count == form.argument_count && other.type_list == types) {
            return &other;
        }
    }
    return nullptr;
}

// Where the only decimal of a call stands, if a number of any other type is taken there, too.
std::optional<std::size_t> position_of_decimal(std::span<const signature> signatures, const signature& form) {
    const auto types = form.types();
    const auto found = std::ranges::find(types, sql_type::decimal);
    if (form.takes_more || std::ranges::count(types, sql_type::decimal) != 1) {
        return std::nullopt;
    }
    const auto position = static_cast<std::size_t>(found - types.begin());
    return find_other(signatures, form, position, sql_type::double_precision) != nullptr ? std::optional(position) : std::nullopt;
}

bool is_own_type(duckdb_type type, sql_type known) {
    return (type == DUCKDB_TYPE_INTEGER && known == sql_type::integer) || (type == DUCKDB_TYPE_BIGINT && known == sql_type::bigint);
}

void add_conversions(std::span<const signature> signatures, const signature& form, std::size_t position, bool writes,
                     std::vector<overload>& made) {
    for (const auto& [from, to] : conversions) {
        const signature* nearest = nullptr;
        bool has_own = false;
        for (const sql_type type : {sql_type::integer, sql_type::bigint}) {
            has_own |= is_own_type(from, type) && find_other(signatures, form, position, type) != nullptr;
        }
        for (const sql_type type : to) {
            nearest = nearest == nullptr ? find_other(signatures, form, position, type) : nearest;
        }
        if (!has_own && nearest != nullptr) {
            made.push_back({*nearest, form.argument_count, open_parameter{position, from}, writes});
        }
    }
}

} // namespace

std::vector<overload> overloads_of(std::string_view builtin) {
    const bool writes = std::ranges::any_of(bifun::entry_points, [&](const bifun::entry_point& member) {
        return member.builtin == builtin && bifun::writes_arguments(member);
    });
    const std::vector<signature> signatures = binding::signatures_of(builtin);
    std::vector<overload> made;
    for (const signature& form : signatures) {
        if (const auto position = position_of_decimal(signatures, form)) {
            made.push_back({form, form.argument_count, open_parameter{*position, DUCKDB_TYPE_ANY}, writes});
            add_conversions(signatures, form, *position, writes, made);
            continue;
        }
        const std::size_t most = form.takes_more ? most_arguments_joined : form.argument_count;
        for (std::size_t count = form.argument_count; count <= most; ++count) {
            made.push_back({form, count, std::nullopt, writes});
        }
    }
    return made;
}

} // namespace duckdb_extension
