// SPDX-License-Identifier: Apache-2.0
#include "host/tables/header_form.h"

#include <charconv>

#include "host/values/value_text.h"

namespace host {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Three groups of digits with the same separator between, and a time behind it or nothing.
bool is_date(std::string_view text) {
    char separator = '\0';
    for (int group = 0; group < 3; ++group) {
        std::size_t digits = 0;
        while (digits < text.size() && is_digit(text[digits])) {
            ++digits;
        }
        if (digits == 0 || digits > 4) {
            return false;
        }
        text.remove_prefix(digits);
        if (group == 2) {
            return text.empty() || text[0] == ' ' || text[0] == 'T';
        }
        if (text.empty() || (text[0] != '-' && text[0] != '/' && text[0] != '.') || (group == 1 && text[0] != separator)) {
            return false;
        }
        separator = text[0];
        text.remove_prefix(1);
    }
    return false;
}

bool is_value(field_form form) { return form > field_form::text; }
bool is_number(field_form form) { return is_value(form) && form != field_form::date; }

// Whether the last columns, two or more of them, are numbered one after the other.
bool counts_last_columns(const std::vector<column_form>& columns) {
    std::size_t counted = 0;
    std::uint64_t behind = 0;
    for (std::size_t i = columns.size(); i-- > 0; ++counted) {
        const std::string_view name = columns[i].name;
        std::uint64_t number = 0;
        const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
        if (error != std::errc{} || end != name.data() + name.size() || (counted > 0 && number + 1 != behind)) {
            break;
        }
        behind = number;
    }
    return counted > 1 && counted < columns.size() && !is_value(form_of(columns[columns.size() - counted - 1].name));
}

} // namespace

field_form form_of(std::string_view field) {
    field = without_blanks_around(field);
    if (field.empty()) {
        return field_form::empty;
    }
    if (is_date(field)) {
        return field_form::date;
    }
    const bool has_sign = field.front() == '-' || field.front() == '+';
    field.remove_prefix(has_sign ? 1 : 0);
    if (field.find_first_not_of("0123456789.,") != field.npos || field.find_first_of("0123456789") == field.npos) {
        return field_form::text;
    }
    if (field.find_first_of(".,") != field.npos) {
        return field_form::number;
    }
    const bool is_year = field.size() == 4 && !has_sign && (field.starts_with("18") || field.starts_with("19") || field.starts_with("20"));
    return is_year ? field_form::year : field_form::whole_number;
}

void include_field(column_form& column, std::string_view field) {
    const field_form form = form_of(field);
    if (column.values == field_form::empty) {
        column.values = form;
    } else if (form != column.values && form != field_form::empty) {
        column.values = is_number(form) && is_number(column.values) ? field_form::number : field_form::text;
    }
}

bool seems_row(const std::vector<column_form>& columns) {
    bool has_value = false;
    for (const column_form& column : columns) {
        if (!is_value(column.values)) {
            continue;
        }
        const field_form name = form_of(column.name);
        const bool is_alike =
            name == field_form::year || name == field_form::date ? name == column.values : is_number(name) && is_number(column.values);
        if (!is_alike) {
            return false;
        }
        has_value = true;
    }
    return has_value && !counts_last_columns(columns);
}

} // namespace host
