// SPDX-License-Identifier: Apache-2.0
#include "embedded/columns/value_text.h"

#include <charconv>
#include <cstring>
#include <limits>

#include "bop/frame/status.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/number_format.h"
#include "layouts/intervals.h"

namespace zqengine {
namespace {

using bifun::value_type;

constexpr std::uint64_t microseconds_per_second = 1'000'000;
constexpr std::uint64_t seconds_per_day = 86'400;

template <class T> T load(const void* value) {
    T loaded;
    std::memcpy(&loaded, value, sizeof loaded);
    return loaded;
}

template <class T> std::int32_t store(void* value, const T& read) {
    std::memcpy(value, &read, sizeof read);
    return BIFUN_OK;
}

// ---- writing ----------------------------------------------------------------------------------------------------------

char* put(char* out, std::string_view text) {
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

template <class Number> char* put_number(char* out, Number value) { return std::to_chars(out, out + value_text_size / 2, value).ptr; }

char* put_two_digits(char* out, std::uint64_t value) {
    *out++ = static_cast<char>('0' + value / 10);
    *out++ = static_cast<char>('0' + value % 10);
    return out;
}

char* put_double(char* out, double value) {
    std::uint32_t length = 0;
    static_cast<void>(zq_dou2char(value, out, value_text_size, &length));
    return out + length;
}

char* put_decimal(char* out, const xdec& value) {
    std::uint32_t length = 0;
    static_cast<void>(xdec_to_char_with_zero(&value, out, value_text_size, 0, 0, &length));
    return out + length;
}

char* put_interval(char* out, const bifun_interval_ym& value) {
    const std::int64_t months = bifun::intervals::months_in(value);
    const auto magnitude = static_cast<std::uint64_t>(months < 0 ? -months : months);
    out = put_number(put(out, months < 0 ? "-" : ""), magnitude / 12);
    *out++ = '-';
    return put_two_digits(out, magnitude % 12);
}

char* put_interval(char* out, const bifun_interval_dt& value) {
    const __int128 microseconds = bifun::intervals::microseconds_in(value);
    const auto magnitude = static_cast<unsigned __int128>(microseconds < 0 ? -microseconds : microseconds);
    const auto seconds = static_cast<std::uint64_t>(magnitude / microseconds_per_second);
    auto fraction = static_cast<std::uint64_t>(magnitude % microseconds_per_second);
    out = put_number(put(out, microseconds < 0 ? "-" : ""), seconds / seconds_per_day);
    *out++ = ' ';
    out = put_two_digits(out, seconds / 3600 % 24);
    *out++ = ':';
    out = put_two_digits(out, seconds / 60 % 60);
    *out++ = ':';
    out = put_two_digits(out, seconds % 60);
    if (fraction != 0) {
        *out++ = '.';
    }
    for (std::uint64_t unit = microseconds_per_second / 10; fraction != 0; fraction %= unit, unit /= 10) {
        *out++ = static_cast<char>('0' + fraction / unit);
    }
    return out;
}

// ---- reading ----------------------------------------------------------------------------------------------------------

template <class Integer> std::int32_t read_number(std::string_view text, void* value) {
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    Integer read{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    if (end != text.data() + text.size() || error == std::errc::invalid_argument) {
        return BIFUN_UNREADABLE_TEXT;
    }
    return error == std::errc{} ? store(value, read) : BIFUN_NUMERIC_OVERFLOW;
}

std::int32_t read_truth(std::string_view text, void* value) {
    if (text != "true" && text != "false") {
        return BIFUN_UNREADABLE_TEXT;
    }
    return store(value, std::int32_t{text == "true"});
}

// `read` is an operation of the engine, which says 109 of what it cannot read.
template <class T> std::int32_t read_by(std::int32_t (*read)(const std::uint8_t*, std::uint32_t, T*), std::string_view text, void* value) {
    T result;
    if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
        return BIFUN_UNREADABLE_TEXT;
    }
    const std::int32_t status = read(reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<std::uint32_t>(text.size()), &result);
    return status == BIFUN_OK ? store(value, result) : status == BIFUN_UNUSABLE_TEXT ? std::int32_t{BIFUN_UNREADABLE_TEXT} : status;
}

// A number below `limit` off the front of the text, behind `separator` where that is not 0.
bool take_number(std::string_view& text, char separator, std::uint64_t limit, std::int32_t& number) {
    if (separator != '\0') {
        if (!text.starts_with(separator)) {
            return false;
        }
        text.remove_prefix(1);
    }
    std::uint64_t read = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    if (error != std::errc{} || read >= limit) {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    number = static_cast<std::int32_t>(read);
    return true;
}

// A point and one to six digits off the front of the text, where it begins so.
bool take_fraction(std::string_view& text, std::int32_t& microseconds) {
    if (!text.starts_with('.')) {
        return true;
    }
    const std::size_t digits = text.size() - 1;
    if (digits == 0 || digits > 6 || !take_number(text, '.', microseconds_per_second, microseconds)) {
        return false;
    }
    for (std::size_t i = digits; i < 6; ++i) {
        microseconds *= 10;
    }
    return true;
}

constexpr std::uint64_t first_field_limit = std::uint64_t{1} << 31;

bool take_sign(std::string_view& text) {
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative || text.starts_with('+') ? 1 : 0);
    return negative;
}

std::int32_t read_interval_ym(std::string_view text, void* value) {
    bifun_interval_ym read{};
    const bool negative = take_sign(text);
    if (!take_number(text, '\0', first_field_limit, read.years) || !take_number(text, '-', 12, read.months) || !text.empty()) {
        return BIFUN_UNREADABLE_TEXT;
    }
    return store(value, negative ? bifun_interval_ym{-read.years, -read.months} : read);
}

std::int32_t read_interval_dt(std::string_view text, void* value) {
    bifun_interval_dt read{};
    const bool negative = take_sign(text);
    if (!take_number(text, '\0', first_field_limit, read.days) || !take_number(text, ' ', 24, read.hours) ||
        !take_number(text, ':', 60, read.minutes) || !take_number(text, ':', 60, read.seconds) || !take_fraction(text, read.microseconds) ||
        !text.empty()) {
        return BIFUN_UNREADABLE_TEXT;
    }
    return store(value, negative ? bifun_interval_dt{-read.days, -read.hours, -read.minutes, -read.seconds, -read.microseconds} : read);
}

} // namespace

std::size_t write_value(value_type type, datetime_kind kind, const void* value, char* buffer) {
    switch (type) {
    case value_type::BOOL:
        return static_cast<std::size_t>(put(buffer, load<std::int32_t>(value) == 1 ? "true" : "false") - buffer);
    case value_type::INT:
        return static_cast<std::size_t>(put_number(buffer, load<std::int32_t>(value)) - buffer);
    case value_type::BIGINT:
        return static_cast<std::size_t>(put_number(buffer, load<std::int64_t>(value)) - buffer);
    case value_type::DOUBLE:
        return static_cast<std::size_t>(put_double(buffer, load<double>(value)) - buffer);
    case value_type::DECIMAL:
        return static_cast<std::size_t>(put_decimal(buffer, load<xdec>(value)) - buffer);
    case value_type::DATETIME:
        return write_datetime(load<zqtime>(value), kind, buffer);
    case value_type::INTERVAL_YM:
        return static_cast<std::size_t>(put_interval(buffer, load<bifun_interval_ym>(value)) - buffer);
    case value_type::INTERVAL_DT:
        return static_cast<std::size_t>(put_interval(buffer, load<bifun_interval_dt>(value)) - buffer);
    case value_type::VARCHAR:
    case value_type::VARBINARY:
    case value_type::BLOB:
        break;
    }
    return 0;
}

std::int32_t read_value(value_type type, std::string_view text, void* value) {
    switch (type) {
    case value_type::BOOL:
        return read_truth(text, value);
    case value_type::INT:
        return read_number<std::int32_t>(text, value);
    case value_type::BIGINT:
        return read_number<std::int64_t>(text, value);
    case value_type::DOUBLE:
        return read_by(zq_char2dou, text, value);
    case value_type::DECIMAL:
        return read_by(xdec_from_char, text, value);
    case value_type::DATETIME:
        return read_by(zqtime_from_char_ex, text, value);
    case value_type::INTERVAL_YM:
        return read_interval_ym(text, value);
    case value_type::INTERVAL_DT:
        return read_interval_dt(text, value);
    case value_type::VARCHAR:
    case value_type::VARBINARY:
    case value_type::BLOB:
        break;
    }
    return BIFUN_UNREADABLE_TEXT;
}

} // namespace zqengine
