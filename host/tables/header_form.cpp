// SPDX-License-Identifier: Apache-2.0
#include "host/tables/header_form.h"

#include <algorithm>
#include <charconv>

#include "host/tables/field_kind.h"
#include "host/values/value_text.h"

namespace host {
namespace {

bool is_number(value_form form) { return is_value(form) && form != value_form::date; }

bool has_letter(std::string_view text) {
    return std::ranges::any_of(text, [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); });
}

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
    return counted > 1 && counted < columns.size() && !is_value(value_form_of(columns[columns.size() - counted - 1].name));
}

} // namespace

value_form value_form_of(std::string_view field) {
    field = without_blanks_around(field);
    if (field.empty()) {
        return value_form::empty;
    }
    const field_form form = form_of_field(field, std::nullopt);
    constexpr field_kinds number_forms = decimal_form | comma_number_form | point_number_form;
    if ((form.kinds & (datetime_fields | written_date_form | long_fraction_form)) != 0) {
        return value_form::date;
    }
    // Q1 may be a name, and 10% hardly.
    const bool is_affixed = (form.kinds & affixed_number_form) != 0 && !has_letter(form.affix);
    if ((form.kinds & number_forms) == 0) {
        return is_affixed ? value_form::number : value_form::text;
    }
    if (field.find_first_not_of("0123456789") != field.npos) {
        return field.find_first_of(".,") == field.npos && field.find_first_of("eE") == field.npos ? value_form::whole_number
                                                                                                  : value_form::number;
    }
    const bool is_year = field.size() == 4 && (field.starts_with("18") || field.starts_with("19") || field.starts_with("20"));
    return is_year ? value_form::year : value_form::whole_number;
}

void include_field(column_form& column, std::string_view field) {
    const value_form form = value_form_of(field);
    if (column.values == value_form::empty) {
        column.values = form;
    } else if (form != column.values && form != value_form::empty) {
        column.values = is_number(form) && is_number(column.values) ? value_form::number : value_form::text;
    }
}

bool seems_row(const std::vector<column_form>& columns) {
    bool has_value = false;
    for (const column_form& column : columns) {
        if (!is_value(column.values)) {
            continue;
        }
        const value_form name = value_form_of(column.name);
        const bool is_alike =
            name == value_form::year || name == value_form::date ? name == column.values : is_number(name) && is_number(column.values);
        if (!is_alike) {
            return false;
        }
        has_value = true;
    }
    return has_value && !counts_last_columns(columns);
}

} // namespace host
