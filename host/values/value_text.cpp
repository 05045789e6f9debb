#include "host/values/value_text.h"

#include <limits>

#include <fmt/format.h>

#include "embedded/datetime/text.h"
#include "engine/datetime.h"
#include "engine/decimal.h"

namespace host {
namespace {

const std::uint8_t* bytes_of(std::string_view text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

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

bool read_decimal(std::string_view text, xdec& value) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
        return false;
    }
    if (xdec_from_char(bytes_of(text), static_cast<std::uint32_t>(text.size()), &value) == 0) {
        return true;
    }
    // The engine wants a digit on both sides of a point.
    text = without_blanks_around(text);
    const std::size_t point = text.find('.');
    const auto is_digit = [&](std::size_t i) { return i < text.size() && text[i] >= '0' && text[i] <= '9'; };
    if (point == std::string_view::npos || is_digit(point - 1) == is_digit(point + 1)) {
        return false;
    }
    const std::string whole = is_digit(point - 1) ? fmt::format("{}{}", text.substr(0, point), text.substr(point + 1))
                                                  : fmt::format("{}0{}", text.substr(0, point), text.substr(point));
    return xdec_from_char(bytes_of(whole), static_cast<std::uint32_t>(whole.size()), &value) == 0;
}

std::optional<sql_type> read_any_datetime(std::string_view text, zqtime& value) {
    constexpr std::size_t longest_datetime = 256;
    auto kind = zqengine::datetime_kind::date;
    if (text.size() > longest_datetime ||
        zqengine::read_datetime(bytes_of(text), static_cast<std::uint32_t>(text.size()), &value, &kind) != 0) {
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
