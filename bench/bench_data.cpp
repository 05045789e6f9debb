#include "bench/bench_data.h"

#include <charconv>
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
    case value_type::VARCHAR:
    case value_type::VARBINARY:
        break;
    }
    return {5, 40, "unknown"};
}

// Arguments for which the values of their type will not do.
struct exception {
    std::string_view builtin;
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

zqtime datetime_between(double first_year, double last_year, std::uint64_t random) {
    const auto part = [&](std::uint64_t values) {
        const std::uint64_t value = random % values;
        random /= values;
        return static_cast<std::uint32_t>(value);
    };
    const auto year =
        static_cast<std::int32_t>(first_year) + static_cast<std::int32_t>(part(static_cast<std::uint64_t>(last_year - first_year) + 1));
    zqtime value{};
    const std::uint32_t month = part(12) + 1;
    const std::uint32_t day = part(28) + 1;
    const std::uint32_t hour = part(24);
    const std::uint32_t minute = part(60);
    const std::uint32_t second = part(60);
    (void)zqtime_encode(&value, year, month, day, hour, minute, second, part(1'000'000), ZQTIME_NO_ZONE);
    return value;
}

bool assign_text(zqengine::column_storage& column, std::uint32_t row, const value_range& range, std::uint64_t seed) {
    std::uint64_t random = random_at(seed, row);
    const auto length = static_cast<std::uint32_t>(whole_between(range.low, range.high, random));
    std::uint8_t* const bytes = bdta3_colstr_assign_without_value(nullptr, nullptr, &column.data, row, length, 0);
    if (bytes == nullptr) {
        return false;
    }
    const std::string_view letters = range.letters;
    for (std::uint32_t i = 0; i < length; ++i) {
        constexpr std::uint32_t letters_per_random = 8;
        if (i % letters_per_random == 0) {
            random = random_at(~seed, std::uint64_t{row} << 8 | i);
        }
        bytes[i] = static_cast<std::uint8_t>(letters[(random & 0xFF) % letters.size()]);
        random >>= 8;
    }
    return true;
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
        if (exception.builtin == entry.builtin && exception.position == position && exception.type == type) {
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
        case value_type::DATETIME:
            zqengine::values_of<zqtime>(column)[row] = datetime_between(range.low, range.high, random);
            break;
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
