// SPDX-License-Identifier: Apache-2.0
#include "tests/contract/generated_batch.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "engine/columns.h"
#include "engine/datetime.h"
#include "tests/contract/text_case.h"

using bifun::value_type;
using namespace std::string_view_literals;

namespace contract {
namespace {

// ---- boundary values, written as in a text_case ----

// Two begin with white space or blanks that are stored; some are as long as a constant may be to lie in its record, and longer; of one the
// last character is cut off.
constexpr std::string_view texts = "'' | ___ | x | x_ | x~__ | \t~xyx__ | xxyx\t | z*48 | z*49 | z*48_____ | z*52_ | 日本語 | naïve "
                                   "🙂_______ | \xE6\x97\xA5x\xE6\x97_ | "
                                   "\0\xFF\0 | z*5000_________"sv;

constexpr std::string_view boundaries_of(value_type type) {
    switch (type) {
    case value_type::BOOL:
        return "1 0 2 -1 2147483647 -2147483648";
    case value_type::INT:
        return "-2147483648 2147483647 0 -1 1 -2147483647 2147483646 2 -2 7";
    case value_type::BIGINT:
        return "-9223372036854775808 9223372036854775807 0 -1 1 -9223372036854775807 9223372036854775806 2 -2 7";
    case value_type::DOUBLE:
        return "0 -0.0 inf -inf nan -nan 4.9e-324 -4.9e-324 2.2250738585072014e-308 1.7976931348623157e308 -1.7976931348623157e308 1 "
               "1.0000000000000002 -1";
    case value_type::DECIMAL:
        return "0 0.00 1 1.0 1.00 -1 -1.000 0.1 -0.10 99999999999999999999999999999999999999 -99999999999999999999999999999999999999 "
               "0.99999999999999999999999999999999999999 12345678901234567890.123456789012345678 1E126 -1E126 1E-127 -1E-127 "
               "1.0000000000000000000000000000000000000 18446744073709551616 -18446744073709551616.00";
    case value_type::DATETIME:
        return "-4712-01-01 9999-12-31T23:59:59.999999 0000-02-29 1582-10-04T23:59:59 1582-10-15 1900-01-01T12:00:00.000001 "
               "2024-02-29T01:02:03.000004+14:00 2024-02-29T01:02:03.000004-14:00 1970-01-01T00:00:00+00:00";
    case value_type::INTERVAL_YM:
        return "0/0 1/11 -1/-11 -2147483648/-2147483648 2147483647/2147483647 3/-4 -178000000/-11";
    case value_type::INTERVAL_DT:
        return "0/0/0/0/0 0/0/0/0/-1 1/23/59/59/999999 -3/-4/-5/-6/-7 7/-6/5/-4/3 "
               "-2147483648/-2147483648/-2147483648/-2147483648/-2147483648 2147483647/2147483647/2147483647/2147483647/2147483647";
    case value_type::BLOB:
        return "0 1 4096 4097 65536 300000";
    default:
        return {};
    }
}

const zqengine::column_storage& boundary_column(value_type type) {
    thread_local std::array<zqengine::column_pointer, 11> columns;
    zqengine::column_pointer& column = columns.at(static_cast<std::size_t>(type));
    if (column == nullptr) {
        std::istringstream words{std::string(boundaries_of(type))};
        std::vector<std::string> values(std::istream_iterator<std::string>(words), {});
        if (bifun::is_string(type)) {
            values = parts_of(texts);
        }
        column.reset(zqengine::create_column(type, static_cast<std::uint32_t>(values.size())));
        for (std::uint32_t row = 0; row < values.size(); ++row) {
            read_value(*column, row, values[row]);
        }
    }
    return *column;
}

void* readable_pages(std::size_t size) {
    void* const pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(pages, MAP_FAILED);
    return pages;
}

// Not the same on every machine of an architecture.
std::size_t page_size() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

// A copy of a text before a page that cannot be read. There are four of each for a thread, because a trim reverses its arguments for a
// moment: columns of other seeds have others.
bifun_string guarded_text(const bifun_string& text, std::size_t index, std::uint64_t seed) {
    constexpr std::size_t copies = 4;
    thread_local std::map<std::size_t, std::uint8_t*> guarded;
    std::uint8_t*& data = guarded[index * copies + seed % copies];
    if (data == nullptr && text.length > 0) {
        const std::size_t page = page_size();
        const std::size_t room = (text.length + page - 1) / page * page;
        auto* const pages = static_cast<std::uint8_t*>(readable_pages(room + page));
        EXPECT_EQ(mprotect(pages + room, page, PROT_NONE), 0);
        data = pages + room - text.length;
        std::copy_n(text.data, text.length, data);
    }
    return {text.length, text.trailing_blanks, data};
}

void write_boundary(zqengine::column_storage& column, std::uint32_t row, std::size_t index, std::uint64_t seed) {
    const auto* const values = zqengine::values_of<std::uint8_t>(boundary_column(column.type));
    const std::size_t width = bifun::value_width(column.type);
    std::memcpy(zqengine::values_of<std::uint8_t>(column) + row * width, values + index * width, width);
    if (bifun::is_string(column.type)) {
        bifun_string& text = zqengine::values_of<bifun_string>(column)[row];
        text = guarded_text(text, index, seed);
        text.trailing_blanks = column.type == value_type::VARCHAR ? text.trailing_blanks : 0;
    }
}

// ---- ordinary values ----

// The standard fixes the numbers of the engine, not those of the distributions.
using random_source = std::mt19937_64;

void write_ordinary(zqengine::column_storage& column, std::uint32_t row, random_source& random) {
    using zqengine::values_of;
    const std::uint64_t bits = random();
    const auto below = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
    const auto signed_below = [&](std::uint32_t limit) { return static_cast<std::int32_t>(below(limit)) * (bits % 2 == 0 ? 1 : -1); };
    switch (column.type) {
    case value_type::BOOL:
        values_of<std::int32_t>(column)[row] = static_cast<std::int32_t>(bits % 2);
        break;
    case value_type::INT:
        values_of<std::int32_t>(column)[row] = static_cast<std::int32_t>(bits) >> (random() % 32);
        break;
    case value_type::BIGINT:
        values_of<std::int64_t>(column)[row] = static_cast<std::int64_t>(bits) >> (bits % 64);
        break;
    case value_type::DOUBLE:
        values_of<double>(column)[row] = static_cast<double>(static_cast<std::int64_t>(bits)) / 1e9;
        break;
    case value_type::DECIMAL: {
        // Amounts with two digits behind the point, and some with another number of them.
        const int scale = bits % 8 == 0 ? static_cast<int>(below(9)) : 2;
        read_value(column, row, std::to_string(static_cast<std::int64_t>(bits) >> 24) + "E-" + std::to_string(scale));
        break;
    }
    case value_type::DATETIME: {
        const std::uint32_t f[] = {1900 + below(200), 1 + below(12), 1 + below(28), below(24), below(60), below(60)};
        auto* const value = &values_of<zqtime>(column)[row];
        EXPECT_EQ(zqtime_encode(value, static_cast<std::int32_t>(f[0]), f[1], f[2], f[3], f[4], f[5], 0, ZQTIME_NO_ZONE), 0);
        break;
    }
    case value_type::INTERVAL_YM:
        values_of<bifun_interval_ym>(column)[row] = {signed_below(5000), signed_below(12)};
        break;
    case value_type::INTERVAL_DT:
        values_of<bifun_interval_dt>(column)[row] = {signed_below(100000), signed_below(24), signed_below(60), signed_below(60),
                                                     signed_below(1000000)};
        break;
    case value_type::BLOB:
        read_value(column, row, std::to_string(100 * below(64)));
        break;
    default: {
        std::string text(below(24), ' ');
        std::ranges::generate(text, [&] { return static_cast<char>('a' + below(26)); });
        text.append(column.type == value_type::VARCHAR && bits % 4 == 0 ? below(12) : 0, '_');
        read_value(column, row, text);
    }
    }
}

// ---- garbage ----

void write_garbage(value_type type, std::uint8_t* slot, std::uint64_t bits) {
    const std::size_t width = bifun::value_width(type);
    std::memset(slot, 0xFF, width);
    constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
    constexpr auto smallest_field = std::numeric_limits<std::int32_t>::min();
    if (type == value_type::BOOL) {
        const auto condition = static_cast<std::int32_t>(bits % 3);
        std::memcpy(slot, &condition, sizeof condition);
    } else if (type == value_type::BIGINT) {
        std::memcpy(slot, &smallest, sizeof smallest);
    } else if (type == value_type::INTERVAL_YM || type == value_type::INTERVAL_DT) {
        for (std::size_t field = 0; field < width; field += sizeof smallest_field) {
            std::memcpy(slot + field, &smallest_field, sizeof smallest_field);
        }
    } else if (bifun::is_string(type)) {
        static void* const unreadable = mmap(nullptr, page_size(), PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        const bifun_string garbage{1000, 0, static_cast<std::uint8_t*>(unreadable)};
        std::memcpy(slot, &garbage, sizeof garbage);
    }
}

} // namespace

std::size_t boundary_count(value_type type) { return boundary_column(type).capacity; }

zqengine::column_pointer generate_column(value_type type, std::uint32_t row_count, double null_rate, std::uint64_t seed) {
    zqengine::column_pointer column(zqengine::create_column(type, row_count));
    column->column.no_nulls = null_rate == 0 ? 1 : 0;
    random_source random(seed);
    const std::size_t boundaries = boundary_count(type);
    for (std::uint32_t row = 0; row < row_count; ++row) {
        const double share = static_cast<double>(random() >> 11) * 0x1p-53;
        column->data.null_flags[row] = share < null_rate ? 0 : 1;
        if (share < null_rate) {
            write_garbage(type, zqengine::values_of<std::uint8_t>(*column) + row * bifun::value_width(type), random());
        } else if (row < boundaries) {
            write_boundary(*column, row, (row + seed) % boundaries, seed);
        } else if (random() % 8 == 0) {
            write_boundary(*column, row, random() % boundaries, seed);
        } else {
            write_ordinary(*column, row, random);
        }
    }
    return column;
}

zqengine::column_pointer gather(const zqengine::column_storage& column, const std::vector<std::uint16_t>& selection) {
    zqengine::column_pointer dense(zqengine::create_column(column.type, static_cast<std::uint32_t>(selection.size())));
    dense->column.no_nulls = column.column.no_nulls;
    const std::size_t width = bifun::value_width(column.type);
    for (std::size_t k = 0; k < selection.size(); ++k) {
        dense->data.null_flags[k] = column.data.null_flags[selection[k]];
        std::memcpy(zqengine::values_of<std::uint8_t>(*dense) + k * width, zqengine::values_of<std::uint8_t>(column) + selection[k] * width,
                    width);
    }
    return dense;
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
