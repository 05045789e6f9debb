// SPDX-License-Identifier: Apache-2.0
#include "host/tables/field_value.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include "engine/charset.h"
#include "engine/columns.h"
#include "host/near_names.h"
#include "host/values/value_text.h"

namespace host {
namespace {

struct named_type {
    std::string_view name;
    sql_type type;
};

constexpr named_type named_types[] = {
    {"INT", sql_type::integer},
    {"BIGINT", sql_type::bigint},
    {"DECIMAL", sql_type::decimal},
    {"DOUBLE", sql_type::double_precision},
    {"DATE", sql_type::date},
    {"TIME", sql_type::time},
    {"TIMESTAMP", sql_type::timestamp},
    {"DATETIME", sql_type::timestamp},
    {"TIME WITH TIME ZONE", sql_type::time_with_zone},
    {"TIMESTAMP WITH TIME ZONE", sql_type::timestamp_with_zone},
    {"DATETIME WITH TIME ZONE", sql_type::timestamp_with_zone},
    {"VARCHAR", sql_type::varchar},
};

constexpr std::uint32_t longest_char = 32767;

const std::uint8_t* bytes_of(std::string_view text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

field_fault store_text(const column_type& type, const charset& set, std::string_view text, zqengine::column_storage& column,
                       std::uint32_t row) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
        return field_fault::too_long;
    }
    if (!is_valid_text(set, text)) {
        return field_fault::invalid_text;
    }
    blank_counted_text value = count_trailing_blanks(text);
    if (type.characters) {
        const std::uint32_t characters = zq_mbstrlen_ex(bytes_of(value.stored), static_cast<std::uint32_t>(value.stored.size()));
        if (characters > *type.characters) {
            return field_fault::too_long;
        }
        value.trailing_blanks = *type.characters - characters;
    }
    // The embedded engine's columns need neither an environment nor a memory object.
    const std::int32_t status = bdta3_col_assign_str(nullptr, nullptr, &column.column, row, bytes_of(value.stored),
                                                     static_cast<std::uint32_t>(value.stored.size()), value.trailing_blanks);
    return status == 0 ? field_fault::none : field_fault::out_of_memory;
}

// Of a text that is not read: whether that is because its type does not keep all of its digits.
bool has_too_many_digits(const column_type& type, std::string_view text) {
    const bool has_fraction = is_datetime(type.type) || is_interval(type.type);
    return type.type == sql_type::decimal ? shape_of_number(without_blanks_around(text)).is_number
                                          : has_fraction && has_excess_fraction(text);
}

std::string with_single_blanks(std::string_view text) {
    std::string made;
    for (const char c : without_blanks_around(text)) {
        if (c != ' ' || made.back() != ' ') {
            made += c;
        }
    }
    return made;
}

} // namespace

std::string column_type_name(const column_type& type) {
    if (is_interval(type.type)) {
        return "INTERVAL " + qualifier_name(type.fields);
    }
    return type.characters ? fmt::format("CHAR({})", *type.characters) : std::string(sql_type_name(type.type));
}

std::optional<column_type> find_column_type(std::string_view text) {
    const std::string one_spaced = with_single_blanks(text);
    const std::string_view name = one_spaced;
    const std::size_t open = name.find('(');
    if (open != std::string_view::npos && name.back() == ')' && equal_ignoring_case(without_blanks_around(name.substr(0, open)), "CHAR")) {
        std::uint32_t characters = 0;
        const bool read = read_number(name.substr(open + 1, name.size() - open - 2), characters);
        return read && characters >= 1 && characters <= longest_char
                   ? std::optional(column_type{.type = sql_type::varchar, .characters = characters})
                   : std::nullopt;
    }
    constexpr std::string_view interval = "INTERVAL ";
    if (equal_ignoring_case(name.substr(0, interval.size()), interval)) {
        const std::optional<interval_qualifier> fields = find_qualifier(name.substr(interval.size()));
        return fields ? std::optional(column_type{.type = type_of_qualifier(*fields), .fields = *fields}) : std::nullopt;
    }
    const auto* const found =
        std::ranges::find_if(named_types, [&](const named_type& type) { return equal_ignoring_case(type.name, name); });
    return found == std::end(named_types) ? std::nullopt : std::optional(column_type{.type = found->type});
}

field_fault store_field(const column_type& type, const session_settings& settings, std::string_view text, zqengine::column_storage& column,
                        std::uint32_t row) {
    bool read = false;
    switch (type.type) {
    case sql_type::integer:
        read = read_number(text, zqengine::values_of<std::int32_t>(column)[row]);
        break;
    case sql_type::bigint:
        read = read_number(text, zqengine::values_of<std::int64_t>(column)[row]);
        break;
    case sql_type::double_precision:
        read = read_number(text, zqengine::values_of<double>(column)[row]);
        break;
    case sql_type::decimal:
        read = read_decimal(text, zqengine::values_of<xdec>(column)[row]);
        break;
    case sql_type::date:
    case sql_type::time:
    case sql_type::timestamp:
    case sql_type::time_with_zone:
    case sql_type::timestamp_with_zone:
        read = read_datetime(text, type.type, settings.time_zone(), zqengine::values_of<zqtime>(column)[row]);
        break;
    case sql_type::interval_ym:
        read = read_interval(text, type.fields, zqengine::values_of<bifun_interval_ym>(column)[row]);
        break;
    case sql_type::interval_dt:
        read = read_interval(text, type.fields, zqengine::values_of<bifun_interval_dt>(column)[row]);
        break;
    default:
        return store_text(type, *settings.text_charset, text, column, row);
    }
    return read ? field_fault::none : has_too_many_digits(type, text) ? field_fault::too_many_digits : field_fault::not_of_type;
}

} // namespace host
