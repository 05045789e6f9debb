// SPDX-License-Identifier: Apache-2.0
#include "host/tables/type_advice.h"

#include <fmt/format.h>

#include "host/tables/given_types.h"

namespace host {
namespace {

std::string way_from_literal(sql_type needed) {
    return is_number(needed)             ? "; write the number without quotes"
           : needed == sql_type::boolean ? "; write TRUE or FALSE without quotes"
           : is_interval(needed)         ? "; write the interval with its type, such as INTERVAL '3' DAY"
           : is_datetime(needed)         ? "; write a date with its type, such as DATE '2024-02-29'"
                                         : "";
}

// A column of dates may be one of dates with times.
bool has_form(const table_column& column, sql_type type) {
    return column.seems && (column.seems->type == type || (has_date(type) && has_date(column.seems->type)));
}

std::string way_from_column(sql_type needed, const table_column& column) {
    if (is_number(needed) && column.decimal) {
        return fmt::format("; --decimal {} reads the column as numbers", *column.decimal);
    }
    if (is_number(needed)) {
        return fmt::format(
            "; {} reads the column as numbers; --decimal comma is for such as 1.234,56, --null NA for texts in place of NULL",
            types_option(column, sql_type::decimal));
    }
    if (is_datetime(needed)) {
        return fmt::format("; {} reads the column as dates{}", types_option(column, needed),
                           has_form(column, needed) ? "" : ", if that is their format");
    }
    return needed == sql_type::boolean ? fmt::format("; {} reads true and false", types_option(column, needed)) : "";
}

std::string way_from_text(sql_type needed) {
    return is_number(needed)     ? "; CAST(x AS DECIMAL) makes a number of a text"
           : is_datetime(needed) ? "; TO_DATE(x, 'DD.MM.YYYY') makes a date of a text, as CAST(x AS DATE) does of YYYY-MM-DD"
                                 : "";
}

} // namespace

std::string types_option(const table_column& column, sql_type type) {
    const bool may_have_format = type == sql_type::date && column.type.type == sql_type::varchar;
    const std::string text = given_types_text(
        {{.name = column.name,
          .type = has_form(column, type) ? *column.seems : column_type{.type = type, .format = may_have_format ? "DD.MM.YYYY" : ""}}});
    const bool is_word = text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_:") == text.npos;
    std::string escaped; // for a shell
    for (const char c : text) {
        escaped.append(c == '"' ? "\\" : "").push_back(c);
    }
    return is_word ? "--types " + text : fmt::format("--types \"{}\"", escaped);
}

std::string way_to(sql_type needed, const misplaced_value& given) {
    if (given.type == sql_type::varchar) {
        return given.is_literal          ? way_from_literal(needed)
               : given.column != nullptr ? way_from_column(needed, *given.column)
                                         : way_from_text(needed);
    }
    return needed == sql_type::varchar                            ? "; CAST(x AS VARCHAR) makes a text"
           : needed == sql_type::boolean && is_number(given.type) ? "; compare it, as in x <> 0"
           : is_datetime(needed) && is_number(given.type) && given.column != nullptr
               ? fmt::format(
                     "; --types \"{}:DATE 'YYYYMMDD'\" reads numbers such as 20240229 as dates, and FROM_UNIXTIME takes seconds since 1970",
                     given.column->name)
               : "";
}

std::string way_together(const misplaced_value& left, const misplaced_value& right) {
    const bool is_left_text = left.type == sql_type::varchar;
    if (is_left_text || right.type == sql_type::varchar) {
        const misplaced_value& text = is_left_text ? left : right;
        const misplaced_value& other = is_left_text ? right : left;
        const bool holds_numbers = text.column != nullptr && text.column->decimal; // whose texts have another order
        const bool is_plain_number = is_number(other.type) && other.is_literal && !holds_numbers;
        return (is_plain_number ? "; write the number in quotes, as a text" : "") + way_to(other.type, text);
    }
    const bool are_date_and_number = (is_datetime(left.type) && is_number(right.type)) || (is_number(left.type) && is_datetime(right.type));
    return are_date_and_number ? "; a date is written in quotes" : "";
}

} // namespace host
