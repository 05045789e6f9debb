// SPDX-License-Identifier: Apache-2.0
#include "host/tables/field_value.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include "engine/charset.h"
#include "engine/columns.h"
#include "host/near_names.h"
#include "host/tables/plain_values.h"
#include "host/values/value_text.h"

namespace host {
namespace {

struct named_type {
    std::string_view name;
    sql_type type;
};

constexpr named_type named_types[] = {
    {"INT", sql_type::integer},
    {"INTEGER", sql_type::integer},
    {"BIGINT", sql_type::bigint},
    {"DECIMAL", sql_type::decimal},
    {"NUMERIC", sql_type::decimal},
    {"DOUBLE", sql_type::double_precision},
    {"DOUBLE PRECISION", sql_type::double_precision},
    {"FLOAT", sql_type::double_precision},
    {"REAL", sql_type::double_precision},
    {"DATE", sql_type::date},
    {"TIME", sql_type::time},
    {"TIMESTAMP", sql_type::timestamp},
    {"DATETIME", sql_type::timestamp},
    {"TIME WITH TIME ZONE", sql_type::time_with_zone},
    {"TIMESTAMP WITH TIME ZONE", sql_type::timestamp_with_zone},
    {"DATETIME WITH TIME ZONE", sql_type::timestamp_with_zone},
    {"VARCHAR", sql_type::varchar},
    {"TEXT", sql_type::varchar},
    {"STRING", sql_type::varchar},
};

constexpr std::uint32_t longest_char = 32767;
constexpr std::size_t longest_plain_text = std::size_t{1} << 20;

const std::uint8_t* bytes_of(std::string_view text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

field_fault store_text(const column_type& type, const charset& set, bool is_ascii, std::string_view text, zqengine::column_storage& column,
                       std::uint32_t row) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
        return field_fault::too_long;
    }
    if (!is_ascii && !is_valid_text(set, text)) {
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

field_fault store_field(const field_storing& storing, std::string_view text, bool is_ascii, zqengine::column_storage& column,
                        std::uint32_t row) {
    const column_type& type = storing.type;
    if (storing.sampled && type_of_fields(*storing.sampled | classify_field(text)) != type.type) {
        return field_fault::not_as_sampled;
    }
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
        read = read_datetime(text, type.type, storing.settings.time_zone(), zqengine::values_of<zqtime>(column)[row]);
        break;
    case sql_type::interval_ym:
        read = read_interval(text, type.fields, zqengine::values_of<bifun_interval_ym>(column)[row]);
        break;
    case sql_type::interval_dt:
        read = read_interval(text, type.fields, zqengine::values_of<bifun_interval_dt>(column)[row]);
        break;
    default:
        return store_text(type, *storing.settings.text_charset, is_ascii, text, column, row);
    }
    return read ? field_fault::none : has_too_many_digits(type, text) ? field_fault::too_many_digits : field_fault::not_of_type;
}

namespace {

// `store_plain` stores a text as row `row`, or is false for what is left to store_field.
template <class StorePlain>
std::size_t store_all(const field_storing& storing, csv_reader& reader, std::span<const std::uint32_t> rows, std::size_t column,
                      zqengine::column_storage& values, std::uint32_t first_row, field_fault& fault, StorePlain store_plain) {
    const bool is_ascii = reader.is_ascii();
    std::uint8_t* const known = values.data.null_flags + first_row;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const csv_field field = reader.field(rows[i], column);
        known[i] = field.is_null ? 0 : 1;
        if (field.is_null) {
            values.column.no_nulls = 0;
            continue;
        }
        const std::uint32_t row = first_row + static_cast<std::uint32_t>(i);
        if (!store_plain(field.text, row)) [[unlikely]] {
            fault = store_field(storing, field.text, is_ascii, values, row);
            if (fault != field_fault::none) {
                return i;
            }
        }
    }
    return rows.size();
}

} // namespace

std::size_t store_fields(const field_storing& storing, csv_reader& reader, std::span<const std::uint32_t> rows, std::size_t column,
                         zqengine::column_storage& values, std::uint32_t first_row, field_fault& fault) {
    const auto store = [&](auto store_plain) { return store_all(storing, reader, rows, column, values, first_row, fault, store_plain); };
    const auto store_numbers = [&](auto* numbers) {
        return store([numbers](std::string_view text, std::uint32_t row) { return plain_values::read_value(text, numbers[row]); });
    };
    switch (storing.type.type) {
    case sql_type::integer:
        return store_numbers(zqengine::values_of<std::int32_t>(values));
    case sql_type::bigint:
        return store_numbers(zqengine::values_of<std::int64_t>(values));
    case sql_type::double_precision:
        return store_numbers(zqengine::values_of<double>(values));
    case sql_type::decimal:
        return store_numbers(zqengine::values_of<xdec>(values));
    case sql_type::date:
        return store([dates = zqengine::values_of<zqtime>(values)](std::string_view text, std::uint32_t row) {
            return plain_values::read_date_value(text, dates[row]);
        });
    case sql_type::timestamp:
        return store([times = zqengine::values_of<zqtime>(values)](std::string_view text, std::uint32_t row) {
            return plain_values::read_timestamp_value(text, times[row]);
        });
    case sql_type::varchar:
        // Text with blanks at the end is stored by the general way, which counts them; text that has been sampled may only be so by chance.
        if (reader.is_ascii() && !storing.type.characters && (!storing.sampled || *storing.sampled != 0)) {
            return store([&values](std::string_view text, std::uint32_t row) {
                return !text.ends_with(' ') && text.size() <= longest_plain_text &&
                       bdta3_col_assign_str(nullptr, nullptr, &values.column, row, bytes_of(text), static_cast<std::uint32_t>(text.size()),
                                            0) == 0;
            });
        }
        [[fallthrough]];
    default:
        return store([](std::string_view, std::uint32_t) { return false; });
    }
}

} // namespace host
