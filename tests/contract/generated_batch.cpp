#include "tests/contract/generated_batch.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"

using bifun::value_type;

namespace contract {
namespace {

// As it lies in a column, or the text of a string.
struct value {
    std::array<std::uint8_t, sizeof(xdec)> bytes;
    std::optional<std::string> text;
    std::uint32_t trailing_blanks;
};

template <class T> value fixed(const T& number) {
    value result{};
    std::memcpy(result.bytes.data(), &number, sizeof number);
    return result;
}

void require(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "generated batch: %s\n", what);
        std::abort();
    }
}

// ---- boundary values ----

constexpr std::int32_t conditions[] = {1, 0, 2, -1, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()};

template <class T>
constexpr T integers[] = {std::numeric_limits<T>::min(),     std::numeric_limits<T>::max(),     0, -1, 1,
                          std::numeric_limits<T>::min() + 1, std::numeric_limits<T>::max() - 1, 2, -2, 7};

using doubles = std::numeric_limits<double>;
constexpr double floating[] = {0.0,
                               -0.0,
                               doubles::infinity(),
                               -doubles::infinity(),
                               doubles::quiet_NaN(),
                               -doubles::quiet_NaN(),
                               doubles::denorm_min(),
                               -doubles::denorm_min(),
                               doubles::min(),
                               doubles::max(),
                               doubles::lowest(),
                               1.0,
                               1.0 + doubles::epsilon(),
                               -1.0};

constexpr std::string_view decimals[] = {"0",
                                         "0.00",
                                         "1",
                                         "1.0",
                                         "1.00",
                                         "-1",
                                         "-1.000",
                                         "0.1",
                                         "-0.10",
                                         "99999999999999999999999999999999999999",
                                         "-99999999999999999999999999999999999999",
                                         "0.99999999999999999999999999999999999999",
                                         "12345678901234567890.123456789012345678",
                                         "1E126",
                                         "-1E126",
                                         "1E-127",
                                         "-1E-127",
                                         "1.0000000000000000000000000000000000000",
                                         "18446744073709551616",
                                         "-18446744073709551616.00"};

struct moment {
    std::int32_t year;
    std::uint32_t month, day, hour, minute, second, microsecond;
    std::int32_t zone;
};
constexpr moment moments[] = {{-4712, 1, 1, 0, 0, 0, 0, ZQTIME_NO_ZONE},
                              {9999, 12, 31, 23, 59, 59, 999999, ZQTIME_NO_ZONE},
                              {0, 2, 29, 0, 0, 0, 0, ZQTIME_NO_ZONE},
                              {1582, 10, 4, 23, 59, 59, 0, ZQTIME_NO_ZONE},
                              {1582, 10, 15, 0, 0, 0, 0, ZQTIME_NO_ZONE},
                              {1900, 1, 1, 12, 0, 0, 1, ZQTIME_NO_ZONE},
                              {2024, 2, 29, 1, 2, 3, 4, 840},
                              {2024, 2, 29, 1, 2, 3, 4, -840},
                              {1970, 1, 1, 0, 0, 0, 0, 0}};

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
constexpr bifun_interval_ym months[] = {{0, 0}, {1, 11}, {-1, -11}, {lowest, lowest}, {highest, highest}, {3, -4}, {-178000000, -11}};
constexpr bifun_interval_dt spans[] = {{0, 0, 0, 0, 0},
                                       {0, 0, 0, 0, -1},
                                       {1, 23, 59, 59, 999999},
                                       {-3, -4, -5, -6, -7},
                                       {7, -6, 5, -4, 3},
                                       {lowest, lowest, lowest, lowest, lowest},
                                       {highest, highest, highest, highest, highest}};

struct text {
    std::string_view bytes;
    std::uint32_t trailing_blanks;
};
const std::string letters(5000, 'z');
const text strings[] = {{"", 0},
                        {"", 3},
                        {"x", 0},
                        {"x", 1},
                        {"x ", 2},
                        {"\t xyx", 2}, // begins with white space that is stored
                        {"xxyx\t", 0},
                        {{letters.data(), 48}, 0}, // as long as a constant may be to lie in its record
                        {{letters.data(), 49}, 0},
                        {{letters.data(), 48}, 5},
                        {{letters.data(), 52}, 1},
                        {"日本語", 0},
                        {"naïve 🙂", 7},
                        {"\xE6\x97\xA5x\xE6\x97", 1}, // the last character is cut off
                        {{"\0\xFF\0", 3}, 0},
                        {letters, 9}};

// Copies of the texts, each before a page that cannot be read. Four of each for a thread, because a trim reverses its arguments for a
// moment: columns of other seeds have others.
const bifun_string& guarded_text(std::size_t index, std::uint64_t seed) {
    constexpr std::size_t page = 4096;
    constexpr std::size_t copies = 4;
    thread_local std::array<bifun_string, std::size(strings) * copies> texts{};
    bifun_string& text = texts[index * copies + seed % copies];
    const std::string_view bytes = strings[index].bytes;
    if (text.data == nullptr && !bytes.empty()) {
        const std::size_t room = (bytes.size() + page - 1) / page * page;
        void* const pages = mmap(nullptr, room + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        require(pages != MAP_FAILED && mprotect(static_cast<std::uint8_t*>(pages) + room, page, PROT_NONE) == 0, "no pages");
        text.data = static_cast<std::uint8_t*>(pages) + room - bytes.size();
        std::ranges::copy(bytes, text.data);
    }
    text.length = static_cast<std::uint32_t>(bytes.size());
    text.trailing_blanks = strings[index].trailing_blanks;
    return text;
}

value encode(const moment& m) {
    zqtime time{};
    require(zqtime_encode(&time, m.year, m.month, m.day, m.hour, m.minute, m.second, m.microsecond, m.zone) == 0, "a datetime is invalid");
    return fixed(time);
}

value read_decimal(std::string_view text) {
    xdec decimal{};
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    require(xdec_from_char(bytes, static_cast<std::uint32_t>(text.size()), &decimal) == 0, "a decimal is invalid");
    return fixed(decimal);
}

value boundary_value(value_type type, std::size_t index, std::uint64_t seed) {
    switch (type) {
    case value_type::BOOL:
        return fixed(conditions[index]);
    case value_type::INT:
        return fixed(integers<std::int32_t>[index]);
    case value_type::BIGINT:
        return fixed(integers<std::int64_t>[index]);
    case value_type::DOUBLE:
        return fixed(floating[index]);
    case value_type::DECIMAL:
        return read_decimal(decimals[index]);
    case value_type::DATETIME:
        return encode(moments[index]);
    case value_type::INTERVAL_YM:
        return fixed(months[index]);
    case value_type::INTERVAL_DT:
        return fixed(spans[index]);
    default: {
        bifun_string text = guarded_text(index, seed);
        text.trailing_blanks = type == value_type::VARCHAR ? text.trailing_blanks : 0;
        return fixed(text);
    }
    }
}

// ---- ordinary values ----

// The standard fixes the numbers of the engine, not those of the distributions.
using random_source = std::mt19937_64;

value ordinary_value(value_type type, random_source& random) {
    const std::uint64_t bits = random();
    const auto below = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
    const auto signed_below = [&](std::uint32_t limit) { return static_cast<std::int32_t>(below(limit)) * (bits % 2 == 0 ? 1 : -1); };
    switch (type) {
    case value_type::BOOL:
        return fixed(static_cast<std::int32_t>(bits % 2));
    case value_type::INT:
        return fixed(static_cast<std::int32_t>(bits) >> (random() % 32));
    case value_type::BIGINT:
        return fixed(static_cast<std::int64_t>(bits) >> (bits % 64));
    case value_type::DOUBLE:
        return fixed(static_cast<double>(static_cast<std::int64_t>(bits)) / 1e9);
    case value_type::DECIMAL: {
        // Amounts with two digits behind the point, and some with another number of them.
        const int scale = bits % 8 == 0 ? static_cast<int>(below(9)) : 2;
        return read_decimal(std::to_string(static_cast<std::int64_t>(bits) >> 24) + "E-" + std::to_string(scale));
    }
    case value_type::DATETIME:
        return encode({static_cast<std::int32_t>(1900 + below(200)), 1 + below(12), 1 + below(28), below(24), below(60), below(60), 0,
                       ZQTIME_NO_ZONE});
    case value_type::INTERVAL_YM:
        return fixed(bifun_interval_ym{signed_below(5000), signed_below(12)});
    case value_type::INTERVAL_DT:
        return fixed(bifun_interval_dt{signed_below(100000), signed_below(24), signed_below(60), signed_below(60), signed_below(1000000)});
    default: {
        value result{{}, std::string(below(24), ' '), type == value_type::VARCHAR && bits % 4 == 0 ? below(12) : 0};
        for (char& character : *result.text) {
            character = static_cast<char>('a' + below(26));
        }
        return result;
    }
    }
}

// ---- garbage ----

std::uint8_t* unreadable_page() {
    static void* const page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    require(page != MAP_FAILED, "no page");
    return static_cast<std::uint8_t*>(page);
}

void write_garbage(value_type type, std::uint8_t* slot, std::uint64_t bits) {
    std::memset(slot, 0xFF, bifun::value_width(type));
    if (type == value_type::BOOL) {
        const auto condition = static_cast<std::int32_t>(bits % 3);
        std::memcpy(slot, &condition, sizeof condition);
    } else if (type == value_type::BIGINT) {
        std::memcpy(slot, &integers<std::int64_t>[0], sizeof(std::int64_t));
    } else if (type == value_type::INTERVAL_YM) {
        std::memcpy(slot, &months[3], sizeof months[3]);
    } else if (type == value_type::INTERVAL_DT) {
        std::memcpy(slot, &spans[5], sizeof spans[5]);
    } else if (bifun::is_string(type)) {
        const bifun_string garbage{1000, 0, unreadable_page()};
        std::memcpy(slot, &garbage, sizeof garbage);
    }
}

void write_row(zqengine::column_storage& column, std::uint32_t row, const value& value) {
    column.data.null_flags[row] = 1;
    if (value.text) {
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(value.text->data());
        require(bdta3_col_assign_str(nullptr, nullptr, &column.column, row, bytes, static_cast<std::uint32_t>(value.text->size()),
                                     value.trailing_blanks) == 0,
                "no memory for a string");
        return;
    }
    const std::size_t width = bifun::value_width(column.type);
    std::memcpy(values_of<std::uint8_t>(column) + row * width, value.bytes.data(), width);
}

} // namespace

std::size_t boundary_count(value_type type) {
    constexpr std::size_t counts[] = {std::size(conditions),
                                      std::size(integers<std::int32_t>),
                                      std::size(integers<std::int64_t>),
                                      std::size(floating),
                                      std::size(decimals),
                                      std::size(moments),
                                      std::size(strings),
                                      std::size(strings),
                                      std::size(months),
                                      std::size(spans)};
    return counts[static_cast<std::size_t>(type)];
}

zqengine::column_pointer generate_column(value_type type, std::uint32_t row_count, double null_rate, std::uint64_t seed) {
    zqengine::column_pointer column(zqengine::create_column(type, row_count));
    require(column != nullptr, "no memory for a column");
    column->column.no_nulls = null_rate == 0 ? 1 : 0;
    random_source random(seed);
    const std::size_t boundaries = boundary_count(type);
    for (std::uint32_t row = 0; row < row_count; ++row) {
        const double share = static_cast<double>(random() >> 11) * 0x1p-53;
        if (share < null_rate) {
            column->data.null_flags[row] = 0;
            write_garbage(type, values_of<std::uint8_t>(*column) + row * bifun::value_width(type), random());
        } else if (row < boundaries) {
            write_row(*column, row, boundary_value(type, (row + seed) % boundaries, seed));
        } else if (random() % 8 == 0) {
            write_row(*column, row, boundary_value(type, random() % boundaries, seed));
        } else {
            write_row(*column, row, ordinary_value(type, random));
        }
    }
    return column;
}

generated_constant constant_of_row(const zqengine::column_storage& column, std::uint32_t row) {
    generated_constant constant{};
    std::memset(constant.record, 0xFF, sizeof constant.record);
    const std::uint32_t not_null = column.data.null_flags[row];
    std::memcpy(constant.record, &not_null, sizeof not_null);
    if (not_null == 0) {
        return constant;
    }
    if (!bifun::is_string(column.type)) {
        const std::size_t width = bifun::value_width(column.type);
        const std::size_t offset = column.type == value_type::BIGINT || column.type == value_type::DOUBLE ? 8 : 4;
        std::memcpy(constant.record + offset, zqengine::values_of<std::uint8_t>(column) + row * width, width);
        return constant;
    }
    const bifun_string& value = zqengine::values_of<bifun_string>(column)[row];
    bifun_string_constant record;
    std::memcpy(&record, constant.record, sizeof record);
    record.length = value.length;
    if (column.type == value_type::VARCHAR) { // a binary constant has no trailing blanks, whatever its third word holds
        record.trailing_blanks = value.trailing_blanks;
    }
    std::uint8_t* bytes = record.inline_bytes;
    if (value.length > BIFUN_INLINE_LENGTH) {
        constant.bytes = std::make_unique<std::uint8_t[]>(value.length);
        constant.length = value.length;
        bytes = record.data = constant.bytes.get();
    }
    std::copy_n(value.data, value.length, bytes);
    std::memcpy(constant.record, &record, sizeof record);
    return constant;
}

} // namespace contract
