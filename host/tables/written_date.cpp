// SPDX-License-Identifier: Apache-2.0
#include "host/tables/written_date.h"

#include <algorithm>
#include <charconv>

#include <fmt/format.h>

#include "host/near_names.h"
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

// Of what stands behind a date: 10:30 or 10:30:00 behind a blank, with AM or PM or not, or nothing.
std::optional<std::string_view> format_of_time(std::string_view text) {
    constexpr std::size_t longest = 12;
    if (text.size() > longest) {
        return std::nullopt;
    }
    std::string shape(text);
    std::ranges::replace_if(
        shape, [](char c) { return c >= '0' && c <= '9'; }, '0');
    if (const std::string_view half = text.substr(text.size() - std::min<std::size_t>(text.size(), 3));
        equal_ignoring_case(half, " AM") || equal_ignoring_case(half, " PM")) {
        shape.resize(shape.size() - half.size());
        return shape == " 00:00" || shape == " 0:00"         ? std::optional<std::string_view>(" HH:MI AM")
               : shape == " 00:00:00" || shape == " 0:00:00" ? std::optional<std::string_view>(" HH:MI:SS AM")
                                                             : std::nullopt;
    }
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

// Jan 2, 2024
std::optional<written_date> read_date_behind_month(std::string_view text) {
    constexpr std::uint32_t longest_month = 31;
    written_date date{.has_month_name = true, .begins_with_month_name = true};
    if (!take_month_name(text, ' ')) {
        return std::nullopt;
    }
    date.first = take_day_or_month(text, ',');
    date.second = 1;
    if (date.first == 0 || date.first > longest_month || !text.starts_with(' ')) {
        return std::nullopt;
    }
    text.remove_prefix(1);
    date.year_digits = take_year(text, date.year);
    return date.year_digits == 4 && text.empty() ? std::optional(date) : std::nullopt;
}

enum class date_order : std::uint8_t { day_first, month_first, year_first };

// All that the dates may have.
std::vector<date_order> orders_of(const written_date& dates) {
    constexpr std::uint32_t months = 12;
    std::vector<date_order> orders;
    if (dates.second <= months) {
        orders.push_back(date_order::day_first);
    }
    const bool is_german = dates.separator == '.'; // which no one writes with the month first
    if (dates.first <= months && !dates.has_month_name && !(is_german && !orders.empty())) {
        orders.push_back(date_order::month_first);
    }
    const bool may_begin_with_year =
        dates.year_digits == 2 && !dates.has_month_name && !is_german && dates.year <= 31 && dates.second <= months && dates.year != 0;
    if (may_begin_with_year && dates.first > months) {
        orders.push_back(date_order::year_first);
    }
    return orders;
}

column_type type_of(const written_date& dates, date_order order) {
    const std::string_view month = dates.has_month_name ? "MON" : "MM";
    const std::string_view year = dates.year_digits == 2 ? "YY" : "YYYY";
    const std::string_view first = order == date_order::year_first ? year : order == date_order::day_first ? "DD" : month;
    const std::string_view second = order == date_order::month_first ? "DD" : month;
    const std::string_view third = order == date_order::year_first ? "DD" : year;
    if (dates.begins_with_month_name) {
        return column_type{.type = sql_type::date, .format = fmt::format("MON DD, {}", year)};
    }
    return column_type{.type = dates.time_format.empty() ? sql_type::date : sql_type::timestamp,
                       .format = fmt::format("{1}{0}{2}{0}{3}{4}", dates.separator, first, second, third, dates.time_format)};
}

} // namespace

std::optional<written_date> read_written_date(std::string_view text) {
    constexpr std::uint32_t longest_month = 31;
    text = without_blanks_around(text);
    if (text.empty() || text[0] < '0' || text[0] > '9') {
        return read_date_behind_month(text);
    }
    written_date date;
    const std::size_t behind_digits = text.find_first_of("./-");
    date.separator = behind_digits == text.npos ? ' ' : text[behind_digits];
    date.first = take_day_or_month(text, date.separator);
    date.has_month_name = take_month_name(text, date.separator);
    date.second = date.has_month_name ? 1 : take_day_or_month(text, date.separator);
    date.year_digits = take_year(text, date.year);
    const std::optional<std::string_view> time_format = date.year_digits != 0 ? format_of_time(text) : std::nullopt;
    if (!time_format || date.first == 0 || date.second == 0 || date.first > longest_month || date.second > longest_month) {
        return std::nullopt;
    }
    date.time_format = *time_format;
    return date;
}

bool include_written_date(written_date& dates, const written_date& other) {
    dates.first = std::max(dates.first, other.first);
    dates.second = std::max(dates.second, other.second);
    dates.year = std::max(dates.year, other.year);
    // A format with seconds reads times without, and dates alone.
    if (other.time_format.starts_with(dates.time_format)) {
        dates.time_format = other.time_format;
    }
    const bool has_one_format = dates.time_format.starts_with(other.time_format);
    return dates.separator == other.separator && dates.has_month_name == other.has_month_name &&
           dates.begins_with_month_name == other.begins_with_month_name && dates.year_digits == other.year_digits && has_one_format;
}

std::vector<column_type> types_of_written_dates(const written_date& dates) {
    std::vector<column_type> types;
    for (const date_order order : orders_of(dates)) {
        types.push_back(type_of(dates, order));
    }
    return types;
}

std::vector<std::string> iso_dates(std::string_view text) {
    const std::optional<written_date> date = read_written_date(text);
    std::vector<std::string> dates;
    if (!date || date->year_digits != 4 || date->has_month_name || !date->time_format.empty()) {
        return dates;
    }
    for (const date_order order : orders_of(*date)) {
        const bool has_day_first = order == date_order::day_first;
        dates.push_back(fmt::format("{:04}-{:02}-{:02}", date->year, has_day_first ? date->second : date->first,
                                    has_day_first ? date->first : date->second));
    }
    return dates;
}

bool is_written_date(std::string_view text) { return read_written_date(text).has_value(); }

bool is_twelve_hour_time(std::string_view text) {
    return !text.empty() && read_written_date(fmt::format("31.12.2024 {}", text)).has_value() && (text.back() | 0x20) == 'm';
}

} // namespace host
