#include "host/tables/type_inference.h"

#include <charconv>

#include "engine/decimal.h"
#include "host/values/value_text.h"

namespace host {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// How a number is written; `is_number` false where the text is none.
struct number_shape {
    bool is_number = false;
    bool has_point = false;
    bool has_exponent = false;
    bool has_leading_zero = false; // and further digits before the point
    std::size_t digits = 0;        // without leading zeros
};

number_shape shape_of_number(std::string_view text) {
    number_shape shape;
    std::size_t i = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    std::size_t all_digits = 0;
    shape.has_leading_zero = i + 1 < text.size() && text[i] == '0' && is_digit(text[i + 1]);
    for (; i < text.size() && (is_digit(text[i]) || (text[i] == '.' && !shape.has_point)); ++i) {
        if (text[i] == '.') {
            shape.has_point = true;
            continue;
        }
        ++all_digits;
        shape.digits += shape.digits > 0 || text[i] != '0' ? 1 : 0;
    }
    if (all_digits > 0 && i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        shape.has_exponent = true;
        ++i;
        i += i < text.size() && (text[i] == '-' || text[i] == '+') ? 1 : 0;
        const std::size_t first = i;
        while (i < text.size() && is_digit(text[i])) {
            ++i;
        }
        all_digits = i == first ? 0 : all_digits;
    }
    shape.is_number = all_digits > 0 && i == text.size();
    return shape;
}

field_kind classify_number(std::string_view text, const number_shape& shape) {
    constexpr std::size_t digits_of_any_int = 9;
    constexpr std::size_t digits_of_any_bigint = 18;
    constexpr std::size_t digits_of_any_decimal = 38;
    if (shape.has_exponent) {
        return double_field;
    }
    if (!shape.has_point) {
        if (shape.digits <= digits_of_any_int) {
            return integer_field;
        }
        std::int64_t value = 0;
        text.remove_prefix(text[0] == '+' ? 1 : 0);
        if (shape.digits <= digits_of_any_bigint + 1 && std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc{}) {
            return value >= INT32_MIN && value <= INT32_MAX ? integer_field : bigint_field;
        }
    }
    xdec value;
    return shape.digits <= digits_of_any_decimal || read_decimal(text, value) ? decimal_field : double_field;
}

} // namespace

field_kind classify_field(std::string_view text) {
    const std::string_view trimmed = without_blanks_around(text);
    const number_shape shape = shape_of_number(trimmed);
    if (shape.is_number) {
        return shape.has_leading_zero ? text_field : classify_number(trimmed, shape);
    }
    constexpr std::size_t shortest_time = 4; // 1:23
    if (trimmed.size() < shortest_time || (!is_digit(trimmed[0]) && trimmed[0] != '-')) {
        return text_field;
    }
    zqtime value;
    switch (read_any_datetime(trimmed, value).value_or(sql_type::varchar)) {
    case sql_type::date:
        return date_field;
    case sql_type::time:
        return time_field;
    case sql_type::timestamp:
        return timestamp_field;
    case sql_type::time_with_zone:
        return time_with_zone_field;
    case sql_type::timestamp_with_zone:
        return timestamp_with_zone_field;
    default:
        return text_field;
    }
}

sql_type type_of_fields(field_kinds kinds) {
    constexpr field_kinds numbers = integer_field | bigint_field | decimal_field | double_field;
    if (kinds != 0 && (kinds & ~numbers) == 0) {
        return (kinds & double_field) != 0    ? sql_type::double_precision
               : (kinds & decimal_field) != 0 ? sql_type::decimal
               : (kinds & bigint_field) != 0  ? sql_type::bigint
                                              : sql_type::integer;
    }
    switch (kinds) {
    case date_field:
        return sql_type::date;
    case time_field:
        return sql_type::time;
    case timestamp_field:
    case date_field | timestamp_field:
        return sql_type::timestamp;
    case time_with_zone_field:
        return sql_type::time_with_zone;
    case timestamp_with_zone_field:
        return sql_type::timestamp_with_zone;
    default:
        return sql_type::varchar;
    }
}

std::vector<sql_type> infer_types(csv_reader& reader, const std::vector<bool>& wanted, progress_bar& progress) {
    std::vector<field_kinds> kinds(wanted.size(), 0);
    while (reader.next_row()) {
        const std::vector<csv_field>& fields = reader.fields();
        for (std::size_t i = 0; i < fields.size(); ++i) {
            if (wanted[i] && !fields[i].is_null && (kinds[i] & text_field) == 0) {
                kinds[i] |= classify_field(fields[i].text);
            }
        }
        progress.update(reader.bytes_read(), reader.file_size(), reader.row_number());
    }
    reader.rewind();
    std::vector<sql_type> types;
    types.reserve(kinds.size());
    for (const field_kinds of_column : kinds) {
        types.push_back(type_of_fields(of_column));
    }
    return types;
}

} // namespace host
