// SPDX-License-Identifier: Apache-2.0
#include "host/tables/text_forms.h"

#include <algorithm>
#include <charconv>

#include <fmt/format.h>

#include "host/near_names.h"
#include "host/tables/type_inference.h"
#include "host/values/value_text.h"

namespace host {
namespace {

// Takes one or two digits and the separator behind them off the text; 0 where it does not begin so.
std::uint32_t take_day_or_month(std::string_view& text, char separator) {
    const std::size_t digits = text.find(separator);
    std::uint32_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + std::min(digits, text.size()), number);
    if (digits == 0 || digits > 2 || read.ec != std::errc() || read.ptr != text.data() + digits) {
        return 0;
    }
    text.remove_prefix(digits + 1);
    return number;
}

// Of what stands behind a date: 10:30 or 10:30:00 behind a blank, or nothing.
std::optional<std::string_view> format_of_time(std::string_view text) {
    std::string shape(text);
    std::ranges::replace_if(
        shape, [](char c) { return c >= '0' && c <= '9'; }, '0');
    return shape.empty()                                 ? std::optional<std::string_view>("")
           : shape == " 00:00" || shape == " 0:00"       ? std::optional<std::string_view>(" HH24:MI")
           : shape == " 00:00:00" || shape == " 0:00:00" ? std::optional<std::string_view>(" HH24:MI:SS")
                                                         : std::nullopt;
}

void include_date(written_dates& dates, std::string_view text) {
    text = without_blanks_around(text);
    if (dates.separator == '\0') {
        const std::size_t behind_digits = text.find_first_of("./-");
        dates.separator = behind_digits == std::string_view::npos ? ' ' : text[behind_digits];
    }
    const std::uint32_t first = take_day_or_month(text, dates.separator);
    const std::uint32_t second = take_day_or_month(text, dates.separator);
    const bool has_year = text.size() >= 4 && text.substr(0, 4).find_first_not_of("0123456789") == std::string_view::npos;
    const std::optional<std::string_view> time_format = has_year ? format_of_time(text.substr(4)) : std::nullopt;
    dates.time_format = dates.time_format ? dates.time_format : time_format;
    dates.are_all =
        dates.are_all && time_format && time_format == dates.time_format && first != 0 && second != 0 && first <= 31 && second <= 31;
    dates.largest_first = std::max(dates.largest_first, first);
    dates.largest_second = std::max(dates.largest_second, second);
}

// Nothing where the order cannot be told.
std::optional<column_type> type_of_dates(const written_dates& dates) {
    constexpr std::uint32_t months = 12;
    const bool has_day_first = dates.largest_second <= months && (dates.largest_first > months || dates.separator == '.');
    const bool has_month_first = dates.largest_first <= months && dates.largest_second > months;
    if (!dates.are_all || (!has_day_first && !has_month_first)) {
        return std::nullopt;
    }
    const std::string_view time_format = dates.time_format.value_or("");
    return column_type{.type = time_format.empty() ? sql_type::date : sql_type::timestamp,
                       .format = fmt::format("{1}{0}{2}{0}YYYY{3}", dates.separator, has_day_first ? "DD" : "MM",
                                             has_day_first ? "MM" : "DD", time_format)};
}

bool is_number_with(char decimal_mark, std::string_view text) {
    constexpr field_kinds numbers = integer_field | bigint_field | decimal_field | double_field;
    return (classify_marked_field(text, decimal_mark) & numbers) != 0;
}

bool is_truth_value(std::string_view text) {
    text = without_blanks_around(text);
    return equal_ignoring_case(text, "true") || equal_ignoring_case(text, "false");
}

} // namespace

void include_text(text_forms& forms, std::string_view text) {
    forms.has_texts = true;
    forms.has_truth_values = forms.has_truth_values && is_truth_value(text);
    forms.has_comma_numbers = forms.has_comma_numbers && is_number_with(',', text);
    forms.has_point_numbers = forms.has_point_numbers && is_number_with('.', text);
    if (forms.dates.are_all) {
        include_date(forms.dates, text);
    }
}

std::optional<column_type> seeming_type(const text_forms& forms) {
    if (!forms.has_texts) {
        return std::nullopt;
    }
    return forms.has_truth_values ? column_type{.type = sql_type::boolean} : type_of_dates(forms.dates);
}

std::optional<std::string_view> seeming_decimal(const text_forms& forms) {
    return !forms.has_texts          ? std::nullopt
           : forms.has_comma_numbers ? std::optional<std::string_view>("comma")
           : forms.has_point_numbers ? std::optional<std::string_view>("point")
                                     : std::nullopt;
}

bool is_written_date(std::string_view text) {
    written_dates alone;
    include_date(alone, text);
    return alone.are_all;
}

} // namespace host
