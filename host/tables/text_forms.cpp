// SPDX-License-Identifier: Apache-2.0
#include "host/tables/text_forms.h"

#include <algorithm>
#include <charconv>

#include <fmt/format.h>

#include "engine/decimal.h"
#include "host/near_names.h"
#include "host/tables/type_inference.h"
#include "host/values/plain_number.h"
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

// Takes the year off the text and returns how many digits it has: 4 or 2, or 0 for anything else.
std::size_t take_year(std::string_view& text, std::uint32_t& year) {
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    if (digits != 4 && digits != 2) {
        return 0;
    }
    (void)std::from_chars(text.data(), text.data() + digits, year);
    text.remove_prefix(digits);
    return digits;
}

bool take_month_name(std::string_view& text, char separator) {
    const std::string_view name = text.substr(0, 3);
    for (const std::string_view month : {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"}) {
        if (equal_ignoring_case(name, month) && text.substr(3, 1) == std::string_view(&separator, 1)) {
            text.remove_prefix(4);
            return true;
        }
    }
    return false;
}

void include_date(written_dates& dates, std::string_view text) {
    const bool is_first = dates.year_digits == 0;
    text = without_blanks_around(text);
    if (dates.separator == '\0') {
        const std::size_t behind_digits = text.find_first_of("./-");
        dates.separator = behind_digits == std::string_view::npos ? ' ' : text[behind_digits];
    }
    const std::uint32_t first = take_day_or_month(text, dates.separator);
    const bool has_name = take_month_name(text, dates.separator);
    const std::uint32_t second = has_name ? 1 : take_day_or_month(text, dates.separator);
    std::uint32_t year = 0;
    const std::size_t year_digits = take_year(text, year);
    const std::optional<std::string_view> time_format = year_digits != 0 ? format_of_time(text) : std::nullopt;
    if (is_first) {
        dates.time_format = time_format;
        dates.year_digits = year_digits;
        dates.have_month_names = has_name;
    }
    dates.are_all = dates.are_all && time_format && time_format == dates.time_format && year_digits == dates.year_digits &&
                    has_name == dates.have_month_names && first != 0 && second != 0 && first <= 31 && second <= 31;
    dates.largest_first = std::max(dates.largest_first, first);
    dates.largest_second = std::max(dates.largest_second, second);
    dates.largest_year = std::max(dates.largest_year, year);
}

enum class date_order : std::uint8_t { day_first, month_first, year_first };

// All that the texts may have.
std::vector<date_order> orders_of(const written_dates& dates) {
    constexpr std::uint32_t months = 12;
    std::vector<date_order> orders;
    if (!dates.are_all) {
        return orders;
    }
    if (dates.largest_second <= months) {
        orders.push_back(date_order::day_first);
    }
    const bool is_german = dates.separator == '.'; // which no one writes with the month first
    if (dates.largest_first <= months && !dates.have_month_names && !(is_german && !orders.empty())) {
        orders.push_back(date_order::month_first);
    }
    const bool may_begin_with_year = dates.year_digits == 2 && !dates.have_month_names && !is_german && dates.largest_year <= 31 &&
                                     dates.largest_second <= months && dates.largest_year != 0;
    if (may_begin_with_year && dates.largest_first > months) {
        orders.push_back(date_order::year_first);
    }
    return orders;
}

column_type type_of_dates(const written_dates& dates, date_order order) {
    const std::string_view time_format = dates.time_format.value_or("");
    const std::string_view month = dates.have_month_names ? "MON" : "MM";
    const std::string_view year = dates.year_digits == 2 ? "YY" : "YYYY";
    const std::string_view first = order == date_order::year_first ? year : order == date_order::day_first ? "DD" : month;
    const std::string_view second = order == date_order::month_first ? "DD" : month;
    const std::string_view third = order == date_order::year_first ? "DD" : year;
    return column_type{.type = time_format.empty() ? sql_type::date : sql_type::timestamp,
                       .format = fmt::format("{1}{0}{2}{0}{3}{4}", dates.separator, first, second, third, time_format)};
}

// The text without the only run of other characters before or behind a number, which is put into `affix`.
bool split_affix(std::string_view text, std::string_view& affix, std::string& number) {
    text = without_blanks_around(text);
    const std::size_t begin = text.find_first_of("+-0123456789.");
    const std::size_t end = text.find_last_of("0123456789.");
    if (begin == text.npos || end == text.npos || end < begin || (begin == 0) == (end + 1 == text.size())) {
        return false;
    }
    affix = begin > 0 ? text.substr(0, begin) : text.substr(end + 1);
    number = text.substr(begin, end + 1 - begin);
    return true;
}

bool has_long_fraction(std::string_view text) {
    constexpr std::size_t kept = 26; // 2024-01-01 10:00:00.123456
    text = without_blanks_around(text);
    return text.size() > kept && text[19] == '.' && text[kept] >= '0' && text[kept] <= '9' &&
           classify_field(text.substr(0, kept)) == timestamp_field;
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

text_forms mere_texts() {
    text_forms made;
    made.has_texts = true;
    made.has_truth_values = made.has_comma_numbers = made.has_point_numbers = made.has_decimals = made.has_doubles = false;
    made.has_long_fractions = made.has_one_other = made.has_affix = made.dates.are_all = false;
    return made;
}

bool are_mere_texts(const text_forms& forms) {
    return !forms.has_truth_values && !forms.has_comma_numbers && !forms.has_point_numbers && !forms.has_decimals && !forms.has_doubles &&
           !forms.has_long_fractions && !forms.has_one_other && !forms.has_affix && !forms.dates.are_all;
}

void include_text(text_forms& forms, std::string_view text, std::optional<char> decimal_mark) {
    if (!forms.has_texts) {
        forms.first = text;
    }
    forms.has_texts = true;
    forms.has_truth_values = forms.has_truth_values && is_truth_value(text);
    forms.has_comma_numbers = forms.has_comma_numbers && !decimal_mark && is_number_with(',', text);
    forms.has_point_numbers = forms.has_point_numbers && !decimal_mark && is_number_with('.', text);
    std::string number(text);
    const bool is_written = !decimal_mark || plain_number(text, *decimal_mark, number);
    xdec decimal;
    double nearest = 0;
    forms.has_decimals = forms.has_decimals && is_written && read_decimal(number, decimal);
    forms.has_doubles = forms.has_doubles && is_written && read_number(number, nearest);
    forms.has_long_fractions = forms.has_long_fractions && has_long_fraction(text);
    if (forms.has_affix) {
        std::string_view affix;
        forms.has_affix =
            split_affix(text, affix, number) && (forms.affix.empty() || forms.affix == affix) && read_decimal(number, decimal);
        forms.affix = affix;
    }
    if (forms.has_one_other) {
        const field_kinds kind = classify_field(text, decimal_mark);
        const bool is_other = (kind & text_field) != 0;
        forms.has_one_other = !is_other || forms.other.empty() || forms.other == text;
        forms.other = is_other ? text : std::string_view(forms.other);
        forms.kinds_besides |= is_other ? 0 : kind;
    }
    if (forms.dates.are_all) {
        include_date(forms.dates, text);
    }
}

std::vector<column_type> seeming_types(const text_forms& forms) {
    std::vector<column_type> types;
    if (forms.has_texts && forms.has_truth_values) {
        types.push_back({.type = sql_type::boolean});
    } else if (forms.has_texts) {
        for (const date_order order : orders_of(forms.dates)) {
            types.push_back(type_of_dates(forms.dates, order));
        }
    }
    return types;
}

bool may_have_mark(const text_forms& forms) {
    // What is a number in SQL is text for another reason than its mark.
    return forms.has_texts && !forms.has_decimals && !forms.has_doubles && (forms.has_comma_numbers || forms.has_point_numbers);
}

bool may_have_either_mark(const text_forms& forms) { return may_have_mark(forms) && forms.has_comma_numbers && forms.has_point_numbers; }

std::string decimal_option(const text_forms& forms, bool is_point_likely, std::string_view what) {
    if (!may_have_mark(forms)) {
        return "";
    }
    if (!may_have_either_mark(forms)) {
        return fmt::format("--decimal {} reads {} as numbers", forms.has_comma_numbers ? "comma" : "point", what);
    }
    std::string with_comma, with_point;
    (void)plain_number(forms.first, ',', with_comma);
    (void)plain_number(forms.first, '.', with_point);
    return is_point_likely ? fmt::format("--decimal point reads {} as {}, and --decimal comma as {}", forms.first, with_point, with_comma)
                           : fmt::format("--decimal comma reads {} as {}, and --decimal point as {}", forms.first, with_comma, with_point);
}

std::optional<lone_text> lone_other(const text_forms& forms) {
    const sql_type others = type_of_fields(forms.kinds_besides);
    const bool is_known = forms.has_texts && forms.has_one_other && !forms.other.empty() && forms.kinds_besides != 0;
    return is_known && others != sql_type::varchar ? std::optional(lone_text{forms.other, others}) : std::nullopt;
}

std::vector<std::string> iso_dates(std::string_view text) {
    written_dates alone;
    include_date(alone, text);
    std::vector<std::string> dates;
    if (alone.year_digits != 4 || alone.have_month_names || !alone.time_format || !alone.time_format->empty()) {
        return dates;
    }
    for (const date_order order : orders_of(alone)) {
        const bool has_day_first = order == date_order::day_first;
        dates.push_back(fmt::format("{:04}-{:02}-{:02}", alone.largest_year, has_day_first ? alone.largest_second : alone.largest_first,
                                    has_day_first ? alone.largest_first : alone.largest_second));
    }
    return dates;
}

bool is_written_date(std::string_view text) {
    written_dates alone;
    include_date(alone, text);
    return alone.are_all;
}

} // namespace host
