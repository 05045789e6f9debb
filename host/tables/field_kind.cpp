// SPDX-License-Identifier: Apache-2.0
#include "host/tables/field_kind.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "engine/decimal.h"
#include "host/near_names.h"
#include "host/tables/plain_values.h"
#include "host/values/interval_text.h"
#include "host/values/plain_number.h"
#include "host/values/value_text.h"

namespace host {
namespace {

constexpr field_kinds numbers = number_fields | precise_field;

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
    const field_kinds precise = shape.digits <= digits_of_any_double || survives_as_double(text, decimal) ? 0U : field_kinds{precise_field};
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

// ---- forms -----------------------------------------------------------------------------------------------------------

namespace {

// The text without the only run of other characters before or behind a number, which is put into `affix`; empty where it has none.
std::string_view without_affix(std::string_view text, std::string_view& affix) {
    const std::size_t begin = text.find_first_of("+-0123456789.");
    const std::size_t end = text.find_last_of("0123456789.");
    if (begin == text.npos || end == text.npos || end < begin || (begin == 0) == (end + 1 == text.size())) {
        return {};
    }
    affix = begin > 0 ? text.substr(0, begin) : text.substr(end + 1);
    return text.substr(begin, end + 1 - begin);
}

bool has_long_fraction(std::string_view text) {
    constexpr std::size_t kept = 26; // 2024-01-01 10:00:00.123456
    return text.size() > kept && text[19] == '.' && is_digit(text[kept]) && classify_field(text.substr(0, kept)) == timestamp_field;
}

field_kinds form_if(bool has_form, field_kinds form) { return has_form ? form : 0; }

field_kinds plain_forms_of(std::string_view text, std::optional<char> decimal_mark) {
    std::string plain(text);
    xdec decimal;
    double nearest = 0;
    return decimal_mark && !plain_number(text, *decimal_mark, plain)
               ? 0
               : form_if(read_decimal(plain, decimal), decimal_form) | form_if(read_number(plain, nearest), double_form);
}

field_kinds marked_forms_of(std::string_view text) {
    field_kinds forms = 0;
    for (const auto& [mark, form] : {std::pair(',', comma_number_form), std::pair('.', point_number_form)}) {
        forms |= form_if((numbers_in(classify_marked_field(text, mark)) & number_fields) != 0, form);
    }
    return forms;
}

// 25:10:05, which a time of day need not be.
bool is_duration(std::string_view text) {
    constexpr interval_qualifier hours{.first = interval_field::hour, .last = interval_field::second};
    bifun_interval_dt value{};
    return std::ranges::count(text, ':') == 2 && read_interval(text, hours, value);
}

bool is_truth_word(std::string_view text) {
    constexpr std::string_view words[] = {"true", "false", "yes", "no"};
    return std::ranges::any_of(words, [text](std::string_view word) { return equal_ignoring_case(text, word); });
}

// Of negative numbers in accounts, beside which the others are plain ones.
field_kinds account_forms_of(std::string_view text) {
    xdec decimal;
    if (read_decimal(text, decimal)) {
        return bracketed_number_form | trailing_minus_form;
    }
    if (text.starts_with('(') && text.ends_with(')') && text.size() > 2) {
        return form_if(is_digit(text[1]) && read_decimal(text.substr(1, text.size() - 2), decimal), bracketed_number_form);
    }
    return form_if(text.ends_with('-') && is_digit(text[0]) && read_decimal(text.substr(0, text.size() - 1), decimal), trailing_minus_form);
}

} // namespace

field_form form_of_field(std::string_view text, std::optional<char> decimal_mark, field_kinds wanted) {
    const auto wants = [wanted](field_kinds forms) { return (wanted & forms) != 0; };
    field_form form{.kinds = classify_field(text, decimal_mark)};
    text = without_blanks_around(text);
    form.kinds |= form_if(is_null_word(text), null_word_form);
    if (text.find_first_of("0123456789") == text.npos) {
        double named = 0; // NaN
        form.kinds |= form_if(is_truth_word(text), truth_word_form) | form_if(read_number(text, named), double_form);
        return form;
    }
    if (wants(decimal_form | double_form)) {
        form.kinds |= plain_forms_of(text, decimal_mark);
    }
    if (wants(comma_number_form | point_number_form)) {
        form.kinds |= marked_forms_of(text);
    }
    form.kinds |= wants(bracketed_number_form | trailing_minus_form) ? account_forms_of(text) : 0;
    // Beside long fractions, others may be short.
    form.kinds |=
        form_if(wants(long_fraction_form) && ((form.kinds & timestamp_field) != 0 || has_long_fraction(text)), long_fraction_form);
    form.kinds |= form_if(wants(duration_form) && is_duration(text), duration_form);
    if (wants(affixed_number_form)) {
        xdec decimal;
        const std::string_view number = without_affix(text, form.affix);
        form.kinds |= form_if(!number.empty() && read_decimal(number, decimal), affixed_number_form);
    }
    if (const std::optional<written_date> date = wants(written_date_form) ? read_written_date(text) : std::nullopt) {
        form.kinds |= written_date_form;
        form.date = *date;
    }
    return form;
}

field_kinds forms_of_all(field_kinds kinds) {
    constexpr field_kinds forms_of_exact = decimal_form | double_form | point_number_form | bracketed_number_form | trailing_minus_form;
    if (kinds == timestamp_field) {
        return long_fraction_form;
    }
    if (kinds == time_field) {
        return duration_form;
    }
    return (kinds & ~(integer_field | bigint_field | precise_field)) == 0                   ? forms_of_exact | comma_number_form
           : (kinds & ~(integer_field | bigint_field | decimal_field | precise_field)) == 0 ? forms_of_exact
                                                                                            : 0;
}

bool is_null_word(std::string_view text) {
    constexpr std::string_view words[] = {"NA",      "N/A",     "N.A.", "#N/A",    "<NA>",    "NULL",  "(null)", "<null>", "[NULL]",
                                          "\\N",     "NONE",    "NIL",  "NAN",     "-",       "--",    "---",    "?",      ".",
                                          "..",      "...",     "#NV",  "#VALUE!", "#DIV/0!", "#REF!", "#NAME?", "#NUM!",  "#NULL!",
                                          "missing", "unknown", "N.D.", "N/D",     "K.A.",    "TBD"};
    constexpr std::size_t longest = 7;
    text = without_blanks_around(text);
    return text.size() <= longest && std::ranges::any_of(words, [text](std::string_view word) { return equal_ignoring_case(text, word); });
}

} // namespace host
