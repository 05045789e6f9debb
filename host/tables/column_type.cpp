// SPDX-License-Identifier: Apache-2.0
#include "host/tables/column_type.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

#include "host/near_names.h"
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

} // namespace host
