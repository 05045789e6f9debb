// SPDX-License-Identifier: Apache-2.0
#include "host/values/value_text.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include "embedded/datetime/text.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/number_format.h"

namespace host {
namespace {

const std::uint8_t* bytes_of(std::string_view text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

bool is_digit(char c) { return c >= '0' && c <= '9'; }

} // namespace

std::string_view without_blanks_around(std::string_view text) {
    while (!text.empty() && text.front() == ' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == ' ') {
        text.remove_suffix(1);
    }
    return text;
}

blank_counted_text count_trailing_blanks(std::string_view text) {
    const std::size_t last = text.find_last_not_of(' ');
    const std::size_t stored = last == std::string_view::npos ? 0 : last + 1;
    return {text.substr(0, stored), static_cast<std::uint32_t>(text.size() - stored)};
}

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
        shape.fraction_digits += shape.has_point ? 1 : 0;
    }
    if (all_digits > 0 && i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        shape.has_exponent = true;
        ++i;
        i += i + 1 < text.size() && text[i] == '+' && is_digit(text[i + 1]) ? 1 : 0;
        const bool negative = i < text.size() && text[i] == '-';
        const auto [end, error] = std::from_chars(text.data() + i, text.data() + text.size(), shape.exponent);
        if (error == std::errc::result_out_of_range) {
            shape.exponent = negative ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
        }
        all_digits = error == std::errc::invalid_argument ? 0 : all_digits;
        i = static_cast<std::size_t>(end - text.data());
    }
    shape.is_number = all_digits > 0 && i == text.size();
    return shape;
}

bool fits_decimal(const number_shape& shape) {
    return shape.digits <= most_decimal_digits &&
           static_cast<std::int64_t>(shape.fraction_digits) <= most_fraction_digits + std::min<std::int64_t>(shape.exponent, INT32_MAX);
}

bool read_number(std::string_view text, double& value) {
    return text.size() <= std::numeric_limits<std::uint32_t>::max() &&
           zq_char2dou(bytes_of(text), static_cast<std::uint32_t>(text.size()), &value) == 0;
}

bool read_decimal(std::string_view text, xdec& value) {
    // So short a text has room for all of its digits, unless an exponent moves the point.
    const bool always_fits = text.size() <= most_decimal_digits && text.find_first_of("eE") == std::string_view::npos;
    if (text.size() > std::numeric_limits<std::uint32_t>::max() ||
        (!always_fits && !fits_decimal(shape_of_number(without_blanks_around(text))))) {
        return false;
    }
    return xdec_from_char(bytes_of(text), static_cast<std::uint32_t>(text.size()), &value) == 0;
}

bool has_excess_fraction(std::string_view text) {
    constexpr std::size_t kept_digits = 6;
    // No other part of a datetime or interval has so many digits behind a point or a comma.
    for (std::size_t mark = text.find_first_of(".,"); mark != std::string_view::npos; mark = text.find_first_of(".,", mark + 1)) {
        const std::string_view digits =
            text.substr(mark + 1, std::min(text.find_first_not_of("0123456789", mark + 1), text.size()) - mark - 1);
        if (digits.size() > kept_digits && digits.find_first_not_of('0', kept_digits) != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

std::optional<sql_type> read_any_datetime(std::string_view text, zqtime& value) {
    constexpr std::size_t longest_datetime = 256;
    auto kind = zqengine::datetime_kind::date;
    if (text.size() > longest_datetime ||
        zqengine::read_datetime(bytes_of(text), static_cast<std::uint32_t>(text.size()), &value, &kind) != 0 || has_excess_fraction(text)) {
        return std::nullopt;
    }
    const bool zoned = zqtime_get_tz(&value) != ZQTIME_NO_ZONE;
    switch (kind) {
    case zqengine::datetime_kind::date:
        return sql_type::date;
    case zqengine::datetime_kind::time:
        return zoned ? sql_type::time_with_zone : sql_type::time;
    case zqengine::datetime_kind::datetime:
        return zoned ? sql_type::timestamp_with_zone : sql_type::timestamp;
    }
    return std::nullopt;
}

void add_zone(zqtime& value, std::int32_t time_zone) {
    if (zqtime_get_tz(&value) == ZQTIME_NO_ZONE) {
        zqtime_set_tz(&value, time_zone);
    }
}

void complete_datetime(zqtime& value, sql_type type, std::int32_t time_zone) {
    constexpr std::int32_t year_of_times = 1900;
    if (type == sql_type::date) {
        (void)zqtime_set_hour(&value, 0);
        (void)zqtime_set_min(&value, 0);
        (void)zqtime_set_sec(&value, 0);
        (void)zqtime_set_msec(&value, 0);
    }
    if (!has_date(type)) {
        (void)zqtime_set_day(&value, 1);
        (void)zqtime_set_month(&value, 1);
        (void)zqtime_set_year(&value, year_of_times);
    }
    if (has_zone(type)) {
        add_zone(value, time_zone);
    }
}

bool read_datetime(std::string_view text, sql_type type, std::int32_t time_zone, zqtime& value) {
    const std::optional<sql_type> found = read_any_datetime(text, value);
    if (!found || has_date(*found) != has_date(type) || (type == sql_type::date && *found != type) ||
        (has_zone(*found) && !has_zone(type))) {
        return false;
    }
    if (has_zone(type)) {
        add_zone(value, time_zone);
    }
    return true;
}

} // namespace host
