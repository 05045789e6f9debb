// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/table.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>
#include <string>

#include "bench/bench_data.h"
#include "engine/datetime.h"
#include "engine/decimal.h"

namespace bifun::peers {
namespace {

// A sign, `high` random digits and a point among them. The first digits may be zeros.
xdec random_decimal(const table_column& definition, std::uint64_t seed, std::uint32_t row) {
    constexpr std::uint32_t digits_per_random = 16;
    const auto digits = static_cast<std::uint32_t>(definition.high);
    std::string text = (bench::random_at(~seed, row) & 1) != 0 ? "-" : "+";
    std::uint64_t random = 0;
    for (std::uint32_t i = 0; i < digits; ++i) {
        if (i % digits_per_random == 0) {
            random = bench::random_at(seed + i, row);
        }
        if (i == digits - definition.scale) {
            text += '.';
        }
        text += static_cast<char>('0' + random % 10);
        random /= 10;
    }
    xdec value{};
    if (xdec_from_char(reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<std::uint32_t>(text.size()), &value) != 0) {
        throw std::runtime_error("not a decimal: " + text);
    }
    return value;
}

void fill_by_magnitude(zqengine::column_storage& storage, const table_column& definition, std::uint64_t seed) {
    storage.column.no_nulls = 1;
    std::fill_n(storage.data.null_flags, storage.capacity, std::uint8_t{1});
    for (std::uint32_t row = 0; row < storage.capacity; ++row) {
        if (definition.type == value_type::DECIMAL) {
            zqengine::values_of<xdec>(storage)[row] = random_decimal(definition, seed, row);
            continue;
        }
        const auto low = static_cast<std::int64_t>(definition.low);
        const auto values = static_cast<std::uint64_t>(static_cast<std::int64_t>(definition.high) - low) + 1;
        const auto magnitude = low + static_cast<std::int64_t>(bench::random_at(seed, row) % values);
        zqengine::values_of<std::int64_t>(storage)[row] = (bench::random_at(~seed, row) & 1) != 0 ? -magnitude : magnitude;
    }
}

} // namespace

table make_table(const std::vector<std::string_view>& names, std::uint32_t row_count) {
    table made{row_count, {}};
    for (const table_column& definition : table_columns()) {
        if (std::ranges::find(names, definition.name) == names.end()) {
            continue;
        }
        zqengine::column_pointer storage(zqengine::create_column(definition.type, row_count));
        // A distance that leaves room for the parts of a decimal.
        const auto seed = 1000 * static_cast<std::uint64_t>(&definition - table_columns().data() + 1);
        if (storage == nullptr) {
            throw std::runtime_error("out of memory");
        }
        if (definition.values == content::magnitude) {
            fill_by_magnitude(*storage, definition, seed);
        } else if (!bench::fill_column(
                       *storage, {.low = definition.low, .high = definition.high, .letters = definition.letters, .form = definition.form},
                       seed, row_count)) {
            throw std::runtime_error("out of memory");
        }
        if (definition.nulls) {
            bench::make_nulls(*storage, seed + 500, row_count);
        }
        if (definition.type == value_type::VARCHAR) {
            zqengine::tell_texts(*storage, row_count); // the peers know as much: DuckDB's statistics tell ASCII, its texts are UTF-8
        }
        made.columns.push_back({&definition, std::move(storage)});
    }
    return made;
}

const loaded_column& column_of(const table& table, std::string_view name) {
    const auto found = std::ranges::find(table.columns, name, [](const loaded_column& column) { return column.definition->name; });
    if (found == table.columns.end()) {
        throw std::runtime_error("column is not in the table: " + std::string(name));
    }
    return *found;
}

decimal_layout::int128 signed_coefficient(const xdec& value) {
    const auto magnitude = static_cast<decimal_layout::int128>(decimal_layout::coefficient(value));
    return value.bytes[0] == XDEC_NEGATIVE ? -magnitude : magnitude;
}

std::int64_t unix_microseconds(const zqtime& value) {
    std::int32_t year = 0;
    std::uint32_t month = 0;
    std::uint32_t day = 0;
    std::uint32_t hour = 0;
    std::uint32_t minute = 0;
    std::uint32_t second = 0;
    std::uint32_t microsecond = 0;
    zqtime_decode(&value, &year, &month, &day, &hour, &minute, &second, &microsecond);
    using namespace std::chrono;
    const auto date = sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day));
    const auto time = hours(hour) + minutes(minute) + seconds(second) + microseconds(microsecond);
    return (date.time_since_epoch() + time) / microseconds(1);
}

std::int32_t unix_days(const zqtime& value) {
    using namespace std::chrono;
    return static_cast<std::int32_t>(floor<days>(microseconds(unix_microseconds(value))).count());
}

std::string text_with_blanks(const bifun_string& value) {
    std::string text(reinterpret_cast<const char*>(value.data), value.length);
    text.append(value.trailing_blanks, ' ');
    return text;
}

} // namespace bifun::peers
