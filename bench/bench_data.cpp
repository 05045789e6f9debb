// SPDX-License-Identifier: Apache-2.0
#include "bench/bench_data.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <string>

#include "embedded/large_objects/large_object.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"

namespace bifun::bench {
namespace {

constexpr typical_values values_of_type(value_type type) {
    switch (type) {
    case value_type::BOOL:
        return {0, 1, "1"};
    case value_type::INT:
        return {-1e6, 1e6, "7"};
    case value_type::BIGINT:
        return {-1e15, 1e15, "7"};
    case value_type::DOUBLE:
        return {-1000, 1000, "2.5"};
    case value_type::DECIMAL:
        return {-1e9, 1e9, "12.5"};
    case value_type::DATETIME:
        return {1970, 2037, "2001-02-03 04:05:06"};
    case value_type::INTERVAL_YM:
        return {-240, 240, "14"};
    case value_type::INTERVAL_DT:
        return {-1e6, 1e6, "93784"};
    case value_type::VARCHAR:
    case value_type::VARBINARY:
    case value_type::BLOB:
        break;
    }
    return {5, 40, "unknown"};
}

constexpr typical_values values_of_form(value_type type, value_form form) {
    switch (form) {
    case value_form::padded:
        return {5, 25, "unknown"};
    case value_form::multilingual:
        return {6, 16, "неизвестно"};
    case value_form::datetime_text:
        return {1970, 2037, "2001-02-03 04:05:06"};
    case value_form::number_text:
    case value_form::price_text:
        return {-1000, 1000, "-12.5"};
    default:
        return values_of_type(type);
    }
}

// As frequent as in English, roughly. No blanks, so that there is nothing to trim, and no q, so that there is something not to find.
constexpr std::string_view usual_letters = "eeeeeettaaooiinnsshrrdlcumwfgypbvkxz";

// Uniform in [low, high).
double between(double low, double high, std::uint64_t random) { return low + (high - low) * static_cast<double>(random >> 11) * 0x1p-53; }

std::int64_t whole_between(double low, double high, std::uint64_t random) {
    const auto first = static_cast<std::int64_t>(low);
    const auto values = static_cast<std::uint64_t>(static_cast<std::int64_t>(high) - first) + 1;
    return first + static_cast<std::int64_t>(random % values);
}

xdec decimal_between(double low, double high, std::uint64_t random) {
    constexpr std::int64_t unit = 10000;
    const std::int64_t scaled = whole_between(low * static_cast<double>(unit), high * static_cast<double>(unit), random);
    const std::string sign = scaled < 0 ? "-" : "";
    const std::uint64_t magnitude = scaled < 0 ? 0 - static_cast<std::uint64_t>(scaled) : static_cast<std::uint64_t>(scaled);
    const std::string fraction = std::to_string(magnitude % unit + unit).substr(1);
    const std::string text = sign + std::to_string(magnitude / unit) + "." + fraction;
    xdec value{};
    (void)xdec_from_char(reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<std::uint32_t>(text.size()), &value);
    return value;
}

struct civil_time {
    std::chrono::year_month_day date;
    std::uint32_t hour = 0;
    std::uint32_t minute = 0;
    std::uint32_t second = 0;
    std::uint32_t microsecond = 0;
};

// Every day of the years is as likely as another.
civil_time time_between(double first_year, double last_year, std::uint64_t random) {
    using namespace std::chrono;
    const auto first_day = sys_days(year(static_cast<int>(first_year)) / January / 1);
    const auto last_day = sys_days(year(static_cast<int>(last_year)) / December / 31);
    const auto part = [&](std::uint64_t values) {
        const std::uint64_t value = random % values;
        random /= values;
        return static_cast<std::uint32_t>(value);
    };
    civil_time time{};
    time.date = first_day + days(part(static_cast<std::uint64_t>((last_day - first_day).count()) + 1));
    time.hour = part(24);
    time.minute = part(60);
    time.second = part(60);
    time.microsecond = part(1'000'000);
    return time;
}

zqtime encode(const civil_time& time) {
    zqtime value{};
    (void)zqtime_encode(&value, int{time.date.year()}, unsigned{time.date.month()}, unsigned{time.date.day()}, time.hour, time.minute,
                        time.second, time.microsecond, ZQTIME_NO_ZONE);
    return value;
}

std::string text_of(const civil_time& time) {
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02u:%02u:%02u", int{time.date.year()}, unsigned{time.date.month()},
                  unsigned{time.date.day()}, time.hour, time.minute, time.second);
    return text;
}

bifun_interval_ym interval_of_months(std::int32_t months) { return {months / 12, months % 12}; }

bifun_interval_dt interval_of_seconds(std::int32_t seconds) {
    return {seconds / 86400, seconds / 3600 % 24, seconds / 60 % 60, seconds % 60, 0};
}

std::string letters_of(std::string_view letters, std::size_t length, std::uint64_t seed, std::uint32_t row) {
    letters = letters.empty() ? usual_letters : letters;
    std::string text(length, '\0');
    std::uint64_t random = 0;
    for (std::size_t i = 0; i < length; ++i) {
        constexpr std::size_t letters_per_random = 8;
        if (i % letters_per_random == 0) {
            random = random_at(~seed, std::uint64_t{row} << 8 | i);
        }
        text[i] = letters[(random & 0xFF) % letters.size()];
        random >>= 8;
    }
    return text;
}

// The code point is below 0x10000.
void append_utf8(std::string& text, std::uint32_t code_point) {
    const auto byte = [&](std::uint32_t value) { text += static_cast<char>(value); };
    if (code_point < 0x80) {
        byte(code_point);
    } else if (code_point < 0x800) {
        byte(0xC0 | code_point >> 6);
        byte(0x80 | (code_point & 0x3F));
    } else {
        byte(0xE0 | code_point >> 12);
        byte(0x80 | (code_point >> 6 & 0x3F));
        byte(0x80 | (code_point & 0x3F));
    }
}

std::string multilingual_of(std::size_t characters, std::uint64_t seed, std::uint32_t row) {
    std::string text;
    for (std::size_t i = 0; i < characters; ++i) {
        const std::uint64_t random = random_at(~seed, std::uint64_t{row} << 8 | i);
        const std::uint64_t percent = random % 100;
        const std::uint64_t which = random / 100;
        if (percent < 38) {
            append_utf8(text, 'a' + static_cast<std::uint32_t>(which % 26));
        } else if (percent < 80) {
            append_utf8(text, 0x430 + static_cast<std::uint32_t>(which % 32)); // Cyrillic small letters
        } else {
            append_utf8(text, 0x4E00 + static_cast<std::uint32_t>(which % 20000)); // Chinese
        }
    }
    return text;
}

bool assign_text(zqengine::column_storage& column, std::uint32_t row, const typical_values& values, std::uint64_t seed) {
    const std::uint64_t random = random_at(seed, row);
    const auto length = [&] { return static_cast<std::size_t>(whole_between(values.low, values.high, random)); };
    std::string text;
    std::uint32_t trailing_blanks = 0;
    switch (values.form) {
    case value_form::padded: {
        const std::uint64_t blanks = random >> 32;
        trailing_blanks = blanks & 0xF;
        text = std::string((blanks >> 4 & 3) == 0 ? (blanks >> 6 & 7) + 1 : 0, ' ') + letters_of(values.letters, length(), seed, row);
        break;
    }
    case value_form::multilingual:
        text = multilingual_of(length(), seed, row);
        break;
    case value_form::datetime_text:
        text = text_of(time_between(values.low, values.high, random));
        break;
    case value_form::number_text: {
        char shortest[32];
        text.assign(shortest, std::to_chars(shortest, std::end(shortest), between(values.low, values.high, random)).ptr);
        break;
    }
    case value_form::price_text: {
        char rounded[64];
        constexpr int cents = 2;
        text.assign(
            rounded,
            std::to_chars(rounded, std::end(rounded), between(values.low, values.high, random), std::chars_format::fixed, cents).ptr);
        break;
    }
    case value_form::json_object:
        text = R"({"id": )" + std::to_string(random % 1'000'000) +
               R"(, "tags": ["math", "poetry"], "address": {"street": "12 St James's Square", )" +
               R"("city": "London", "zip": "SW1Y"}, "score": 98.75, "name": ")" + letters_of(values.letters, 12, seed, row) +
               R"(", "active": true, "parent": null, "n": 7})";
        break;
    default:
        text = letters_of(values.letters, length(), seed, row);
        break;
    }
    std::uint8_t* const bytes =
        bdta3_colstr_assign_without_value(nullptr, nullptr, &column.data, row, static_cast<std::uint32_t>(text.size()), trailing_blanks);
    if (bytes != nullptr) {
        std::memcpy(bytes, text.data(), text.size());
    }
    return bytes != nullptr;
}

// The same for every row: what is measured is not what is in it.
const bifun_large_object* large_object() {
    static const zqengine::large_object_store_pointer store(zqengine::create_large_object_store());
    static const zqengine::large_object_pointer object(store == nullptr ? nullptr : zqengine::create_large_object(*store));
    return object.get();
}

template <class T> T number_from(std::string_view text) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) {
        throw std::runtime_error("not a number: " + std::string(text));
    }
    return value;
}

const std::uint8_t* bytes_of(std::string_view text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

} // namespace

typical_values values_of_argument(const entry_point& entry, std::size_t position) {
    typical_values values = fact_of(entry, position).typical;
    const typical_values usual = values_of_form(entry.argument_list[position].type, values.form);
    if (values.low == 0 && values.high == 0) {
        values.low = usual.low;
        values.high = usual.high;
    }
    values.constant = values.constant.empty() ? usual.constant : values.constant;
    return values;
}

bool fill_column(zqengine::column_storage& column, const typical_values& values, std::uint64_t seed, std::uint32_t row_count) {
    column.column.no_nulls = 1;
    std::memset(column.data.null_flags, 1, row_count);
    for (std::uint32_t row = 0; row < row_count; ++row) {
        const std::uint64_t random = random_at(seed, row);
        switch (column.type) {
        case value_type::BOOL:
        case value_type::INT:
            zqengine::values_of<std::int32_t>(column)[row] = static_cast<std::int32_t>(whole_between(values.low, values.high, random));
            break;
        case value_type::BIGINT:
            zqengine::values_of<std::int64_t>(column)[row] = whole_between(values.low, values.high, random);
            break;
        case value_type::DOUBLE:
            zqengine::values_of<double>(column)[row] = between(values.low, values.high, random);
            break;
        case value_type::DECIMAL:
            zqengine::values_of<xdec>(column)[row] = decimal_between(values.low, values.high, random);
            break;
        case value_type::DATETIME: {
            const civil_time time = time_between(values.low, values.high, random);
            zqengine::values_of<zqtime>(column)[row] = encode(values.form == value_form::date ? civil_time{.date = time.date} : time);
            break;
        }
        case value_type::INTERVAL_YM: {
            const auto months = static_cast<std::int32_t>(whole_between(values.low, values.high, random));
            zqengine::values_of<bifun_interval_ym>(column)[row] = interval_of_months(months);
            break;
        }
        case value_type::INTERVAL_DT: {
            const auto seconds = static_cast<std::int32_t>(whole_between(values.low, values.high, random));
            zqengine::values_of<bifun_interval_dt>(column)[row] = interval_of_seconds(seconds);
            break;
        }
        case value_type::VARCHAR:
        case value_type::VARBINARY:
            if (!assign_text(column, row, values, seed)) {
                return false;
            }
            break;
        case value_type::BLOB:
            zqengine::values_of<const bifun_large_object*>(column)[row] = large_object();
            if (large_object() == nullptr) {
                return false;
            }
            break;
        }
    }
    return true;
}

void make_nulls(zqengine::column_storage& column, std::uint64_t seed, std::uint32_t row_count) {
    column.column.no_nulls = 0;
    for (std::uint32_t row = 0; row < row_count; ++row) {
        column.data.null_flags[row] = random_at(seed, row) % 10 != 0 ? 1 : 0;
    }
}

constant_record make_constant(value_type type, std::string_view text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    switch (type) {
    case value_type::BOOL:
    case value_type::INT:
        return bifun_int_constant{1, number_from<std::int32_t>(text)};
    case value_type::BIGINT:
        return bifun_bigint_constant{1, number_from<std::int64_t>(text)};
    case value_type::DOUBLE:
        return bifun_double_constant{1, number_from<double>(text)};
    case value_type::DECIMAL: {
        bifun_decimal_constant record{1, {}};
        if (xdec_from_char(bytes_of(text), length, &record.value) != BIFUN_OK) {
            throw std::runtime_error("not a decimal: " + std::string(text));
        }
        return record;
    }
    case value_type::DATETIME: {
        bifun_datetime_constant record{1, {}};
        if (zqtime_from_char_ex(bytes_of(text), length, &record.value) != BIFUN_OK) {
            throw std::runtime_error("not a datetime: " + std::string(text));
        }
        return record;
    }
    case value_type::INTERVAL_YM:
        return bifun_interval_ym_constant{1, interval_of_months(number_from<std::int32_t>(text))};
    case value_type::INTERVAL_DT:
        return bifun_interval_dt_constant{1, interval_of_seconds(number_from<std::int32_t>(text))};
    case value_type::BLOB:
        throw std::runtime_error("there are no constants of large objects");
    case value_type::VARCHAR:
    case value_type::VARBINARY:
        break;
    }
    bifun_string_constant record{};
    record.not_null = 1;
    record.length = length;
    if (length <= BIFUN_INLINE_LENGTH) {
        std::memcpy(record.inline_bytes, text.data(), length);
    } else {
        record.data = const_cast<std::uint8_t*>(bytes_of(text)); // only read by those who do not trim
    }
    return record;
}

} // namespace bifun::bench
