// SPDX-License-Identifier: Apache-2.0
#include "host/tables/field_value.h"

#include <algorithm>
#include <limits>
#include <vector>

#include <fmt/format.h>

#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "host/near_names.h"
#include "host/tables/plain_values.h"
#include "host/values/decimal_shape.h"
#include "host/values/plain_number.h"
#include "host/values/value_text.h"

namespace host {
namespace {

// What may stand in parentheses behind the name of a type.
enum class type_width : std::uint8_t { none, characters, padded_characters, digits, fraction_digits };

struct named_type {
    std::string_view name;
    sql_type type;
    type_width width = type_width::none;
    std::optional<std::int32_t> largest{};
};

constexpr named_type named_types[] = {
    {"BOOL", sql_type::boolean},
    {"BOOLEAN", sql_type::boolean},
    {"TINYINT", sql_type::integer, type_width::none, INT8_MAX},
    {"SMALLINT", sql_type::integer, type_width::none, INT16_MAX},
    {"INT2", sql_type::integer, type_width::none, INT16_MAX},
    {"INT", sql_type::integer},
    {"INTEGER", sql_type::integer},
    {"INT4", sql_type::integer},
    {"BIGINT", sql_type::bigint},
    {"INT8", sql_type::bigint},
    {"DECIMAL", sql_type::decimal, type_width::digits},
    {"NUMERIC", sql_type::decimal, type_width::digits},
    {"NUMBER", sql_type::decimal, type_width::digits},
    {"DOUBLE", sql_type::double_precision},
    {"DOUBLE PRECISION", sql_type::double_precision},
    {"FLOAT", sql_type::double_precision},
    {"FLOAT8", sql_type::double_precision},
    {"REAL", sql_type::double_precision},
    {"DATE", sql_type::date},
    {"TIME", sql_type::time, type_width::fraction_digits},
    {"TIMESTAMP", sql_type::timestamp, type_width::fraction_digits},
    {"DATETIME", sql_type::timestamp, type_width::fraction_digits},
    {"TIME WITHOUT TIME ZONE", sql_type::time, type_width::fraction_digits},
    {"TIMESTAMP WITHOUT TIME ZONE", sql_type::timestamp, type_width::fraction_digits},
    {"TIME WITH TIME ZONE", sql_type::time_with_zone, type_width::fraction_digits},
    {"TIMESTAMP WITH TIME ZONE", sql_type::timestamp_with_zone, type_width::fraction_digits},
    {"DATETIME WITH TIME ZONE", sql_type::timestamp_with_zone, type_width::fraction_digits},
    {"TIMETZ", sql_type::time_with_zone, type_width::fraction_digits},
    {"TIMESTAMPTZ", sql_type::timestamp_with_zone, type_width::fraction_digits},
    {"VARCHAR", sql_type::varchar, type_width::characters},
    {"VARCHAR2", sql_type::varchar, type_width::characters},
    {"CHARACTER VARYING", sql_type::varchar, type_width::characters},
    {"TEXT", sql_type::varchar},
    {"STRING", sql_type::varchar},
};
// Without a number, CHAR is of one character in SQL and of any in some systems, so that it is asked for.
constexpr named_type named_with_width[] = {
    {"CHAR", sql_type::varchar, type_width::padded_characters},
    {"CHARACTER", sql_type::varchar, type_width::padded_characters},
};

constexpr std::uint32_t longest_char = 32767;
constexpr std::uint32_t most_datetime_fraction_digits = 6;
constexpr std::size_t longest_plain_text = std::size_t{1} << 20;

const std::uint8_t* bytes_of(std::string_view text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

field_fault store_text(const column_type& type, const charset& set, bool is_ascii, std::string_view text, zqengine::column_storage& column,
                       std::uint32_t row) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
        return field_fault::too_wide;
    }
    if (!is_ascii && !is_valid_text(set, text)) {
        return field_fault::invalid_text;
    }
    blank_counted_text value = count_trailing_blanks(text);
    if (type.characters) {
        const std::uint32_t characters = zq_mbstrlen_ex(bytes_of(value.stored), static_cast<std::uint32_t>(value.stored.size()));
        if (characters + (type.is_padded ? 0U : value.trailing_blanks) > *type.characters) {
            return field_fault::too_wide;
        }
        value.trailing_blanks = type.is_padded ? *type.characters - characters : value.trailing_blanks;
    }
    // The embedded engine's columns need neither an environment nor a memory object.
    const std::int32_t status = bdta3_col_assign_str(nullptr, nullptr, &column.column, row, bytes_of(value.stored),
                                                     static_cast<std::uint32_t>(value.stored.size()), value.trailing_blanks);
    return status == 0 ? field_fault::none : field_fault::out_of_memory;
}

// Of a text that is not read: whether that is because its type does not keep all of its digits.
bool has_too_many_digits(const column_type& type, std::string_view text) {
    const bool has_fraction = (is_datetime(type.type) && type.format.empty()) || is_interval(type.type);
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

// The numbers in "10, 2"; none where that is not what stands there.
std::vector<std::uint32_t> read_numbers(std::string_view text) {
    std::vector<std::uint32_t> numbers;
    for (;;) {
        const std::size_t comma = std::min(text.find(','), text.size());
        if (!read_number(text.substr(0, comma), numbers.emplace_back())) {
            return {};
        }
        if (comma == text.size()) {
            return numbers;
        }
        text.remove_prefix(comma + 1);
    }
}

// False where the type cannot have that width.
bool take_width(column_type& type, type_width width, const std::vector<std::uint32_t>& numbers) {
    constexpr std::size_t most_numbers = 2;
    if (numbers.empty() || numbers.size() > most_numbers || (numbers.size() == most_numbers && width != type_width::digits)) {
        return false;
    }
    const std::uint32_t first = numbers[0];
    const std::uint32_t second = numbers.size() == most_numbers ? numbers[1] : 0;
    switch (width) {
    case type_width::none:
        return false;
    case type_width::characters:
    case type_width::padded_characters:
        type.characters = first;
        type.is_padded = width == type_width::padded_characters;
        return first >= 1 && (first <= longest_char || !type.is_padded);
    case type_width::digits:
        type.shape = decimal_shape{static_cast<std::int32_t>(first), static_cast<std::int32_t>(second)};
        return first >= 1 && first <= most_decimal_digits && second <= first;
    case type_width::fraction_digits:
        type.fraction_digits = first;
        return first <= most_datetime_fraction_digits;
    }
    return false;
}

template <std::size_t count> const named_type* find_named(const named_type (&types)[count], std::string_view name) {
    const auto* const found = std::ranges::find_if(types, [&](const named_type& type) { return equal_ignoring_case(type.name, name); });
    return found == std::end(types) ? nullptr : found;
}

bool read_boolean(std::string_view text, std::int32_t& value) {
    text = without_blanks_around(text);
    const auto is_one_of = [text](const auto& names) {
        return std::ranges::any_of(names, [text](std::string_view name) { return equal_ignoring_case(name, text); });
    };
    constexpr std::string_view true_names[] = {"true", "t", "yes", "y", "on", "1"};
    constexpr std::string_view false_names[] = {"false", "f", "no", "n", "off", "0"};
    value = is_one_of(true_names) ? 1 : 0;
    return value == 1 || is_one_of(false_names);
}

} // namespace

std::string column_type_name(const column_type& type) {
    if (!type.format.empty()) {
        return fmt::format("{} '{}'", sql_type_name(type.type), type.format);
    }
    if (is_interval(type.type)) {
        return "INTERVAL " + qualifier_name(type.fields);
    }
    if (type.characters) {
        return fmt::format("{}({})", type.is_padded ? "CHAR" : "VARCHAR", *type.characters);
    }
    if (type.shape) {
        return fmt::format("DECIMAL({}, {})", type.shape->digits, type.shape->fraction_digits);
    }
    if (type.largest) {
        return *type.largest == INT8_MAX ? "TINYINT" : "SMALLINT";
    }
    const std::string_view name = sql_type_name(type.type);
    if (type.fraction_digits) {
        const std::size_t zone = std::min(name.find(' '), name.size());
        return fmt::format("{}({}){}", name.substr(0, zone), *type.fraction_digits, name.substr(zone));
    }
    return std::string(name);
}

std::optional<column_type> find_column_type(std::string_view text) {
    std::string name = with_single_blanks(text);
    constexpr std::string_view interval = "INTERVAL ";
    if (equal_ignoring_case(std::string_view(name).substr(0, interval.size()), interval)) {
        const std::optional<interval_qualifier> fields = find_qualifier(std::string_view(name).substr(interval.size()));
        return fields ? std::optional(column_type{.type = type_of_qualifier(*fields), .fields = *fields}) : std::nullopt;
    }
    const std::size_t open = name.find('(');
    const std::size_t close = name.find(')');
    const bool has_width = open != name.npos && close != name.npos && open < close;
    std::vector<std::uint32_t> numbers;
    if (has_width) {
        numbers = read_numbers(std::string_view(name).substr(open + 1, close - open - 1));
        name = with_single_blanks(fmt::format("{} {}", name.substr(0, open), name.substr(close + 1)));
    }
    const named_type* found = find_named(named_types, name);
    if (found == nullptr && has_width) {
        found = find_named(named_with_width, name);
    }
    if (found == nullptr) {
        return std::nullopt;
    }
    column_type type{.type = found->type, .largest = found->largest};
    return has_width && !take_width(type, found->width, numbers) ? std::nullopt : std::optional(type);
}

namespace {

// Widths are kept to: a value is fit to be stored as it is, or not at all.
bool read_integer(const column_type& type, std::string_view text, std::int32_t& value, field_fault& fault) {
    const bool read = read_number(text, value);
    if (read && type.largest && (value > *type.largest || value < -*type.largest - 1)) {
        fault = field_fault::too_wide;
    }
    return read;
}

bool read_by_format(const field_storing& storing, std::string_view text, zqtime& value) {
    text = without_blanks_around(text);
    const auto as = storing.type.type == sql_type::date ? DFM_DATE : DFM_DATETIME;
    if (char_to_date_simple_with_alen(storing.format, bytes_of(text), static_cast<std::uint32_t>(text.size()), as, &value) != 0) {
        return false;
    }
    complete_datetime(value, storing.type.type, storing.settings.time_zone());
    return true;
}

bool read_datetime(const field_storing& storing, std::string_view text, zqtime& value, field_fault& fault) {
    const column_type& type = storing.type;
    constexpr std::uint32_t powers[most_datetime_fraction_digits + 1] = {1'000'000, 100'000, 10'000, 1'000, 100, 10, 1};
    const bool read = storing.format != nullptr ? read_by_format(storing, text, value)
                                                : host::read_datetime(text, type.type, storing.settings.time_zone(), value);
    if (read && storing.format != nullptr && type.format.find_first_of("Ff") != type.format.npos && has_excess_fraction(text)) {
        fault = field_fault::too_many_digits;
    }
    if (read && type.fraction_digits && zqtime_get_msec(&value) % powers[*type.fraction_digits] != 0) {
        fault = field_fault::too_wide;
    }
    return read;
}

bool read_decimal(const column_type& type, std::string_view text, xdec& value, field_fault& fault) {
    const bool read = host::read_decimal(text, value);
    if (read && type.shape) {
        const xdec given = value;
        fault = fit_to_shape(value, *type.shape) && xdec_cmp(&given, &value) == 0 ? field_fault::none : field_fault::too_wide;
    }
    return read;
}

} // namespace

field_fault store_field(const field_storing& storing, std::string_view text, bool is_ascii, zqengine::column_storage& column,
                        std::uint32_t row) {
    const column_type& type = storing.type;
    if (storing.sampled && type_of_fields(*storing.sampled | classify_field(text, storing.decimal_mark)) != type.type) {
        return field_fault::not_as_sampled;
    }
    std::string plain;
    if (storing.decimal_mark && is_number(type.type)) {
        if (!plain_number(text, *storing.decimal_mark, plain)) {
            return field_fault::not_of_type;
        }
        text = plain;
    }
    bool read = false;
    auto fault = field_fault::none;
    switch (type.type) {
    case sql_type::boolean:
        read = read_boolean(text, zqengine::values_of<std::int32_t>(column)[row]);
        break;
    case sql_type::integer:
        read = read_integer(type, text, zqengine::values_of<std::int32_t>(column)[row], fault);
        break;
    case sql_type::bigint:
        read = read_number(text, zqengine::values_of<std::int64_t>(column)[row]);
        break;
    case sql_type::double_precision:
        read = read_number(text, zqengine::values_of<double>(column)[row]);
        break;
    case sql_type::decimal:
        read = read_decimal(type, text, zqengine::values_of<xdec>(column)[row], fault);
        break;
    case sql_type::date:
    case sql_type::time:
    case sql_type::timestamp:
    case sql_type::time_with_zone:
    case sql_type::timestamp_with_zone:
        read = read_datetime(storing, text, zqengine::values_of<zqtime>(column)[row], fault);
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
    return read ? fault : has_too_many_digits(type, text) ? field_fault::too_many_digits : field_fault::not_of_type;
}

namespace {

// `store_plain` stores a text as row `row`, or is false for what is left to store_field.
template <bool is_text, class StorePlain>
std::size_t store_all(const field_storing& storing, csv_reader& reader, std::span<const std::uint32_t> rows, std::size_t column,
                      zqengine::column_storage& values, std::uint32_t first_row, field_fault& fault, StorePlain store_plain) {
    const bool is_ascii = reader.is_ascii();
    std::uint8_t* const known = values.data.null_flags + first_row;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const csv_field field = reader.field(rows[i], column);
        const bool is_null = is_text ? field.is_null : field.is_null_unless_text;
        known[i] = is_null ? 0 : 1;
        if (is_null) {
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
    const auto store = [&](auto store_plain) {
        return store_all<false>(storing, reader, rows, column, values, first_row, fault, store_plain);
    };
    const auto store_text = [&](auto store_plain) {
        return store_all<true>(storing, reader, rows, column, values, first_row, fault, store_plain);
    };
    const auto never = [](std::string_view, std::uint32_t) { return false; };
    const auto store_generally = [&] { return storing.type.type == sql_type::varchar ? store_text(never) : store(never); };
    const bool is_plain = is_number(storing.type.type) ? !storing.decimal_mark && !storing.type.largest : storing.format == nullptr;
    if (!is_plain) {
        return store_generally();
    }
    const auto store_numbers = [&](auto* numbers) {
        return store([numbers](std::string_view text, std::uint32_t row) { return plain_values::read_value(text, numbers[row]); });
    };
    switch (storing.type.type) {
    case sql_type::boolean:
        // Conditions are 0 where they are NULL.
        std::fill_n(zqengine::values_of<std::int32_t>(values) + first_row, rows.size(), 0);
        return store_generally();
    case sql_type::integer:
        return store_numbers(zqengine::values_of<std::int32_t>(values));
    case sql_type::bigint:
        return store_numbers(zqengine::values_of<std::int64_t>(values));
    case sql_type::double_precision:
        return store_numbers(zqengine::values_of<double>(values));
    case sql_type::decimal:
        if (storing.type.shape) {
            return store([&](std::string_view text, std::uint32_t row) {
                return plain_values::read_value(text, *storing.type.shape, zqengine::values_of<xdec>(values)[row]);
            });
        }
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
            return store_text([&values](std::string_view text, std::uint32_t row) {
                return !text.ends_with(' ') && text.size() <= longest_plain_text &&
                       bdta3_col_assign_str(nullptr, nullptr, &values.column, row, bytes_of(text), static_cast<std::uint32_t>(text.size()),
                                            0) == 0;
            });
        }
        [[fallthrough]];
    default:
        return store_generally();
    }
}

} // namespace host
