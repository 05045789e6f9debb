#include "host/field_value.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "host/near_names.h"

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

std::string_view without_blanks_around(std::string_view text) {
    while (!text.empty() && text.front() == ' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == ' ') {
        text.remove_suffix(1);
    }
    return text;
}

blank_counted_text count_trailing_blanks(std::string_view text) {
    const std::size_t last = text.find_last_not_of(' ');
    const std::size_t stored = last == std::string_view::npos ? 0 : last + 1;
    return {text.substr(0, stored), static_cast<std::uint32_t>(text.size() - stored)};
}

bool read_decimal(std::string_view text, xdec& value) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
        return false;
    }
    if (xdec_from_char(bytes_of(text), static_cast<std::uint32_t>(text.size()), &value) == 0) {
        return true;
    }
    // The engine wants a digit on both sides of a point.
    text = without_blanks_around(text);
    const std::size_t point = text.find('.');
    const auto is_digit = [&](std::size_t i) { return i < text.size() && text[i] >= '0' && text[i] <= '9'; };
    if (point == std::string_view::npos || is_digit(point - 1) == is_digit(point + 1)) {
        return false;
    }
    const std::string whole = is_digit(point - 1) ? fmt::format("{}{}", text.substr(0, point), text.substr(point + 1))
                                                  : fmt::format("{}0{}", text.substr(0, point), text.substr(point));
    return xdec_from_char(bytes_of(whole), static_cast<std::uint32_t>(whole.size()), &value) == 0;
}

std::optional<sql_type> read_any_datetime(std::string_view text, zqtime& value) {
    constexpr std::size_t longest_datetime = 256;
    auto kind = zqengine::datetime_kind::date;
    if (text.size() > longest_datetime ||
        zqengine::read_datetime(bytes_of(text), static_cast<std::uint32_t>(text.size()), &value, &kind) != 0) {
        return std::nullopt;
    }
    const bool zoned = zqtime_get_tz(&value) != ZQTIME_NO_ZONE;
    switch (kind) {
    case zqengine::datetime_kind::date:
        return sql_type::date;
    case zqengine::datetime_kind::time:
        return zoned ? sql_type::time_with_zone : sql_type::time;
    case zqengine::datetime_kind::datetime:
        return zoned ? sql_type::timestamp_with_zone : sql_type::timestamp;
    }
    return std::nullopt;
}

void add_zone(zqtime& value, std::int32_t time_zone) {
    if (zqtime_get_tz(&value) == ZQTIME_NO_ZONE) {
        zqtime_set_tz(&value, time_zone);
    }
}

bool read_datetime(std::string_view text, sql_type type, std::int32_t time_zone, zqtime& value) {
    const std::optional<sql_type> found = read_any_datetime(text, value);
    if (!found || has_date(*found) != has_date(type) || (type == sql_type::date && *found != type) ||
        (has_zone(*found) && !has_zone(type))) {
        return false;
    }
    if (has_zone(type)) {
        add_zone(value, time_zone);
    }
    return true;
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
    return read ? field_fault::none : field_fault::not_of_type;
}

} // namespace host
