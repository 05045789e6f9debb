// SPDX-License-Identifier: Apache-2.0
#include "host/tables/type_inference.h"

#include <charconv>

#include "engine/decimal.h"
#include "host/session/interruption.h"
#include "host/tables/plain_values.h"
#include "host/values/plain_number.h"
#include "host/values/value_text.h"

namespace host {
namespace {

constexpr field_kinds numbers = integer_field | bigint_field | decimal_field | double_field | precise_field;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Whether the double nearest to the number, as the shortest text for it, has the same digits.
bool survives_as_double(std::string_view text, const xdec& value) {
    constexpr std::size_t room = 32;
    double nearest = 0;
    char shortest[room];
    xdec kept;
    return read_number(text, nearest) && read_decimal({shortest, std::to_chars(shortest, shortest + room, nearest).ptr}, kept) &&
           xdec_cmp(&value, &kept) == 0;
}

// Digits alone behind a plus sign, as in a telephone number, and those with an E and digits alone behind them, as in numbers of parts.
bool is_like_code(std::string_view text, const number_shape& shape) {
    if (shape.has_point || text.front() == '-') {
        return false;
    }
    return shape.has_exponent ? text.find_first_of("+-") == text.npos : text.front() == '+';
}

field_kinds classify_number(std::string_view text, const number_shape& shape) {
    constexpr std::size_t digits_of_any_int = 9;
    constexpr std::size_t digits_of_any_bigint = 18;
    constexpr std::size_t digits_of_any_double = 15;
    if (shape.has_exponent) {
        double value = 0;
        return read_number(text, value) ? double_field : text_field;
    }
    if (!shape.has_point && shape.digits <= digits_of_any_int) {
        return integer_field;
    }
    xdec decimal;
    if (!read_decimal(text, decimal)) {
        return text_field;
    }
    const field_kinds precise = shape.digits <= digits_of_any_double || survives_as_double(text, decimal) ? 0U : precise_field;
    std::int64_t value = 0;
    if (!shape.has_point && shape.digits <= digits_of_any_bigint + 1 && read_number(text, value)) {
        return (value >= INT32_MIN && value <= INT32_MAX ? integer_field : bigint_field) | precise;
    }
    return decimal_field | precise;
}

} // namespace

field_kinds classify_field(std::string_view text) {
    std::int32_t plain = 0;
    if (plain_values::read_value(text, plain)) {
        return integer_field;
    }
    zqtime value;
    if (plain_values::read_date_value(text, value) || plain_values::read_timestamp_value(text, value)) {
        return text.size() == plain_values::date_length ? date_field : timestamp_field;
    }
    const std::string_view trimmed = without_blanks_around(text);
    const number_shape shape = shape_of_number(trimmed);
    if (shape.is_number) {
        const field_kinds kind = shape.has_leading_zero ? text_field : classify_number(trimmed, shape);
        return kind != text_field && is_like_code(trimmed, shape) ? kind << code_shift : kind;
    }
    constexpr std::size_t shortest_time = 4; // 1:23
    if (trimmed.size() < shortest_time || (!is_digit(trimmed[0]) && trimmed[0] != '-')) {
        return text_field;
    }
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

field_kinds classify_marked_field(std::string_view text, char decimal_mark) {
    std::string plain;
    if (plain_number(text, decimal_mark, plain)) {
        return classify_field(plain);
    }
    const field_kinds kind = classify_field(text);
    return (numbers_in(kind) & numbers) != 0 ? text_field : kind;
}

bool is_text_for_good(field_kinds kinds) {
    return (numbers_in(kinds) & text_field) != 0 ||
           (kinds >> code_shift << code_shift != kinds && type_of_fields(kinds) == sql_type::varchar);
}

sql_type type_of_fields(field_kinds kinds) {
    constexpr field_kinds changed_by_widening = double_field | precise_field;
    const bool are_all_codes = kinds >> code_shift << code_shift == kinds;
    if (are_all_codes) {
        return sql_type::varchar;
    }
    kinds = numbers_in(kinds);
    if ((kinds & ~numbers) == 0 && (kinds & changed_by_widening) != changed_by_widening) {
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

namespace {

void find_forms(csv_reader& reader, std::span<const std::uint32_t> rows, std::size_t column, field_kinds kinds, text_forms& forms) {
    if (type_of_fields(kinds) != sql_type::varchar) {
        forms = mere_texts(); // whatever is behind
    }
    for (std::size_t r = 0; r < rows.size() && !are_mere_texts(forms); ++r) {
        const csv_field field = reader.field(rows[r], column);
        if (!field.is_null_unless_text) {
            include_text(forms, field.text, reader.decimal_mark());
        }
    }
}

} // namespace

found_kinds find_kinds(csv_reader& reader, const std::vector<bool>& wanted, std::uint64_t most_text, progress_bar& progress) {
    found_kinds found{
        .of_columns = std::vector<field_kinds>(wanted.size(), 0), .forms = std::vector<text_forms>(wanted.size()), .is_whole_file = false};
    constexpr std::uint32_t most_rows = 1024;
    constexpr std::uint64_t rows_for_forms = 16 * most_rows;
    const std::optional<char> decimal_mark = reader.decimal_mark();
    std::uint64_t row_count = 0;
    while (reader.text_read() <= most_text && !found.is_whole_file) {
        stop_if_interrupted();
        const std::span<const std::uint32_t> rows = reader.next_rows(most_rows);
        found.is_whole_file = rows.empty();
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            field_kinds kinds = found.of_columns[i];
            for (std::size_t r = 0; wanted[i] && (kinds & text_field) == 0 && r < rows.size(); ++r) {
                const csv_field field = reader.field(rows[r], i);
                kinds |= field.is_null_unless_text ? 0U : classify_field(field.text, decimal_mark);
            }
            found.of_columns[i] = kinds;
            if (wanted[i] && row_count < rows_for_forms) {
                find_forms(reader, rows, i, kinds, found.forms[i]);
            }
        }
        row_count += rows.size();
        progress.update(reader.bytes_read(), reader.file_size(), row_count);
    }
    reader.rewind();
    return found;
}

} // namespace host
