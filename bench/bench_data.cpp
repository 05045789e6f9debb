#include "bench/bench_data.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"

namespace bifun::bench {
namespace {

constexpr value_range range_of_type(value_type type) {
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
        break;
    }
    return {5, 40, "unknown"};
}

constexpr value_range padded_text = {5, 25, "unknown", value_range{}.letters, value_form::padded};
constexpr value_range multilingual_text = {6, 16, "неизвестно", {}, value_form::multilingual};
constexpr value_range datetime_text = {1970, 2037, "2001-02-03 04:05:06", {}, value_form::datetime_text};
constexpr value_range searched_text = {5, 40, "What the pattern is looked for in: the quick brown fox jumps over the lazy dog"};
constexpr value_range short_pattern = {2, 3, "ta"};

// Arguments for which the values of their type will not do. The first line that fits counts.
struct exception {
    std::string_view name; // of the built-in or of one entry point
    std::size_t position;
    value_type type;
    value_range range;
};

constexpr exception exceptions[] = {
    // Divisors of the dividends' size would make nearly every quotient 0.
    {"MOD", 1, value_type::BIGINT, {1, 1e6, "7"}},
    {"MOD", 0, value_type::BIGINT, {-1e15, 1e15, "123456789012345"}},
    // What the functions are defined for.
    {"ASIN", 0, value_type::DOUBLE, {-1, 1, "0.5"}},
    {"ACOS", 0, value_type::DOUBLE, {-1, 1, "0.5"}},
    {"SINH", 0, value_type::DOUBLE, {-10, 10, "0.5"}},
    {"COSH", 0, value_type::DOUBLE, {-10, 10, "0.5"}},
    {"EXP", 0, value_type::DOUBLE, {-10, 10, "0.5"}},
    {"SQRT", 0, value_type::DOUBLE, {0, 1000, "2"}},
    {"LN", 0, value_type::DOUBLE, {0.001, 1000, "2"}},
    {"LOG10", 0, value_type::DOUBLE, {0.001, 1000, "2"}},
    {"LOG", 0, value_type::DOUBLE, {1.5, 1000, "2"}},
    {"LOG", 1, value_type::DOUBLE, {0.001, 1000, "2"}},
    {"POWER", 0, value_type::DOUBLE, {0.001, 1000, "2"}},
    {"POWER", 1, value_type::DOUBLE, {-10, 10, "2.5"}},
    {"ROUND", 1, value_type::INT, {0, 6, "2"}},
    {"TRUNC", 1, value_type::INT, {0, 6, "2"}},
    {"TRUNC", 0, value_type::VARCHAR, {5, 18, "123.456", "0123456789"}},
    {"TO_CHAR", 1, value_type::VARCHAR, {0, 0, "S999,999,999,999,990.00"}},
    {"TO_CHAR", 2, value_type::VARCHAR, {0, 0, "NLS_NUMERIC_CHARACTERS='.,'"}},
    // Which end to trim: 579 the beginning, 580 the end, any other both.
    {"btrim_vva_str", 0, value_type::INT, {0, 0, "579"}},
    {"btrim_vaa_str", 0, value_type::INT, {0, 0, "580"}},
    {"TRIM", 0, value_type::INT, {0, 0, "0"}},
    {"TRIM", 0, value_type::VARCHAR, padded_text},
    {"btrim_vva_str", 1, value_type::VARCHAR, {0, 0, "eattaoe"}},
    {"TRIM", 2, value_type::VARCHAR, {1, 1, "e"}},
    {"bltrim_def_a_str", 0, value_type::VARCHAR, padded_text},
    {"brtrim_def_a_str", 0, value_type::VARCHAR, padded_text},
    {"LTRIM", 1, value_type::VARCHAR, {1, 5, "aeiou"}},
    {"RTRIM", 1, value_type::VARCHAR, {1, 5, "aeiou"}},
    {"bsubstr_aaa_str", 0, value_type::VARCHAR, multilingual_text},
    {"SUBSTR", 1, value_type::INT, {-20, 20, "3"}},
    {"SUBSTR", 2, value_type::INT, {0, 10, "5"}},
    {"SUBSTRB", 0, value_type::VARCHAR, multilingual_text},
    {"SUBSTRB", 1, value_type::INT, {0, 0, "3"}},
    {"SUBSTRB", 2, value_type::INT, {0, 0, "5"}},
    {"LEFT", 1, value_type::INT, {0, 0, "5"}},
    {"RIGHT", 1, value_type::INT, {0, 0, "5"}},
    {"SUBSTRING_INDEX", 1, value_type::VARCHAR, {1, 1, "e"}},
    {"SUBSTRING_INDEX", 2, value_type::INT, {0, 0, "2"}},
    {"INSTR", 1, value_type::VARCHAR, short_pattern},
    {"INSTR", 2, value_type::INT, {0, 0, "2"}},
    {"INSTR", 3, value_type::INT, {0, 0, "2"}},
    {"INSTRB", 1, value_type::VARCHAR, short_pattern},
    {"INSTRB", 2, value_type::INT, {0, 0, "2"}},
    {"INSTRB", 3, value_type::INT, {0, 0, "2"}},
    {"POSITION", 0, value_type::VARCHAR, short_pattern},
    {"LOCATE", 0, value_type::VARCHAR, short_pattern},
    {"LOCATE", 1, value_type::VARCHAR, searched_text},
    {"LOCATE", 2, value_type::INT, {0, 0, "2"}},
    // A field that the values of the type have: 1 year, 4 hour, 6 second, 10 week, 12 hour of the zone.
    {"bextract_datetime_va_date", 0, value_type::INT, {0, 0, "1"}},
    {"bextract_date_va_date", 0, value_type::INT, {0, 0, "1"}},
    {"bextract_time_va_date", 0, value_type::INT, {0, 0, "4"}},
    {"bextract_datetime_tz_va_date", 0, value_type::INT, {0, 0, "1"}},
    {"bextract_time_tz_va_date", 0, value_type::INT, {0, 0, "12"}},
    {"bextract_iv_ym_va_date", 0, value_type::INT, {0, 0, "1"}},
    {"bextract_iv_dt_va_date", 0, value_type::INT, {0, 0, "4"}},
    {"bextract_str_va_date", 0, value_type::INT, {0, 0, "1"}},
    {"EXTRACT", 0, value_type::INT, {0, 0, "6"}},
    {"EXTRACT", 1, value_type::VARCHAR, datetime_text},
    {"WEEKDAY", 0, value_type::VARCHAR, datetime_text},
    {"DATEPART", 0, value_type::INT, {0, 0, "10"}},
    {"DATEPART", 1, value_type::VARCHAR, {0, 0, "WEEK"}},
    {"DATEDIFF", 0, value_type::INT, {0, 0, "3"}},
    {"BIGDATEDIFF", 0, value_type::INT, {0, 0, "6"}},
    // Amounts that stay within the years there are.
    {"DATEADD", 0, value_type::INT, {0, 0, "2"}},
    {"DATEADD", 1, value_type::BIGINT, {-1000, 1000, "7"}},
    {"ADD_WEEKS", 1, value_type::INT, {-1000, 1000, "7"}},
    {"ADD_MONTHS", 1, value_type::INT, {-1000, 1000, "7"}},
    {"LAST_DAY", 0, value_type::VARCHAR, datetime_text},
    {"NEXT_DAY", 1, value_type::VARCHAR, {0, 0, "MONDAY"}},
    {"NUMTOYMINTERVAL", 1, value_type::VARCHAR, {0, 0, "MONTH"}},
    {"NUMTODSINTERVAL", 1, value_type::VARCHAR, {0, 0, "HOUR"}},
};

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

bool assign_text(zqengine::column_storage& column, std::uint32_t row, const value_range& range, std::uint64_t seed) {
    const std::uint64_t random = random_at(seed, row);
    const auto length = [&] { return static_cast<std::size_t>(whole_between(range.low, range.high, random)); };
    std::string text;
    std::uint32_t trailing_blanks = 0;
    switch (range.form) {
    case value_form::padded: {
        const std::uint64_t blanks = random >> 32;
        trailing_blanks = blanks & 0xF;
        text = std::string((blanks >> 4 & 3) == 0 ? (blanks >> 6 & 7) + 1 : 0, ' ') + letters_of(range.letters, length(), seed, row);
        break;
    }
    case value_form::multilingual:
        text = multilingual_of(length(), seed, row);
        break;
    case value_form::datetime_text:
        text = text_of(time_between(range.low, range.high, random));
        break;
    default:
        text = letters_of(range.letters, length(), seed, row);
        break;
    }
    std::uint8_t* const bytes =
        bdta3_colstr_assign_without_value(nullptr, nullptr, &column.data, row, static_cast<std::uint32_t>(text.size()), trailing_blanks);
    if (bytes != nullptr) {
        std::memcpy(bytes, text.data(), text.size());
    }
    return bytes != nullptr;
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

value_range range_of_argument(const entry_point& entry, std::size_t position) {
    const value_type type = entry.argument_list[position].type;
    for (const exception& exception : exceptions) {
        if ((exception.name == entry.symbol || exception.name == entry.builtin) && exception.position == position &&
            exception.type == type) {
            return exception.range;
        }
    }
    return range_of_type(type);
}

bool fill_column(zqengine::column_storage& column, const value_range& range, std::uint64_t seed, std::uint32_t row_count) {
    column.column.no_nulls = 1;
    std::memset(column.data.null_flags, 1, row_count);
    for (std::uint32_t row = 0; row < row_count; ++row) {
        const std::uint64_t random = random_at(seed, row);
        switch (column.type) {
        case value_type::BOOL:
        case value_type::INT:
            zqengine::values_of<std::int32_t>(column)[row] = static_cast<std::int32_t>(whole_between(range.low, range.high, random));
            break;
        case value_type::BIGINT:
            zqengine::values_of<std::int64_t>(column)[row] = whole_between(range.low, range.high, random);
            break;
        case value_type::DOUBLE:
            zqengine::values_of<double>(column)[row] = between(range.low, range.high, random);
            break;
        case value_type::DECIMAL:
            zqengine::values_of<xdec>(column)[row] = decimal_between(range.low, range.high, random);
            break;
        case value_type::DATETIME: {
            const civil_time time = time_between(range.low, range.high, random);
            zqengine::values_of<zqtime>(column)[row] = encode(range.form == value_form::date ? civil_time{.date = time.date} : time);
            break;
        }
        case value_type::INTERVAL_YM: {
            const auto months = static_cast<std::int32_t>(whole_between(range.low, range.high, random));
            zqengine::values_of<bifun_interval_ym>(column)[row] = interval_of_months(months);
            break;
        }
        case value_type::INTERVAL_DT: {
            const auto seconds = static_cast<std::int32_t>(whole_between(range.low, range.high, random));
            zqengine::values_of<bifun_interval_dt>(column)[row] = interval_of_seconds(seconds);
            break;
        }
        case value_type::VARCHAR:
        case value_type::VARBINARY:
            if (!assign_text(column, row, range, seed)) {
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
