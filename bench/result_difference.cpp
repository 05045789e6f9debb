// SPDX-License-Identifier: Apache-2.0
#include "bench/result_difference.h"

#include <array>
#include <cstdio>
#include <cstring>

#include "engine/decimal.h"

namespace bifun::bench {
namespace {

bool is_null(const zqengine::column_storage& column, std::uint32_t row) {
    return column.column.no_nulls == 0 && column.data.null_flags[row] == 0;
}

std::string value_bytes(const zqengine::column_storage& column, std::uint32_t row) {
    if (is_string(column.type)) {
        const bifun_string& value = zqengine::values_of<bifun_string>(column)[row];
        return std::string(reinterpret_cast<const char*>(value.data), value.length) + std::string(value.trailing_blanks, ' ');
    }
    const std::size_t width = value_width(column.type);
    return {static_cast<const char*>(column.data.values) + width * row, width};
}

bool same_value(const zqengine::column_storage& a, const zqengine::column_storage& b, std::uint32_t row) {
    if (is_null(a, row) || is_null(b, row)) {
        return is_null(a, row) == is_null(b, row);
    }
    if (is_string(a.type)) {
        const bifun_string& first = zqengine::values_of<bifun_string>(a)[row];
        const bifun_string& second = zqengine::values_of<bifun_string>(b)[row];
        return first.length == second.length && first.trailing_blanks == second.trailing_blanks &&
               (first.length == 0 || std::memcmp(first.data, second.data, first.length) == 0);
    }
    const std::size_t width = value_width(a.type);
    return std::memcmp(static_cast<const char*>(a.data.values) + width * row, static_cast<const char*>(b.data.values) + width * row,
                       width) == 0;
}

// To be told from another: numbers as such, the bytes of what has no short text.
std::string text_of_value(const zqengine::column_storage& column, std::uint32_t row) {
    if (is_null(column, row)) {
        return "NULL";
    }
    switch (column.type) {
    case value_type::BOOL:
    case value_type::INT:
        return std::to_string(zqengine::values_of<std::int32_t>(column)[row]);
    case value_type::BIGINT:
        return std::to_string(zqengine::values_of<std::int64_t>(column)[row]);
    case value_type::DOUBLE: {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.17g", zqengine::values_of<double>(column)[row]);
        return text.data();
    }
    case value_type::VARCHAR:
        return std::string(1, '\'').append(value_bytes(column, row)).append(1, '\'');
    default: {
        std::string text = "0x";
        for (const char byte : value_bytes(column, row)) {
            std::array<char, 3> digits{};
            std::snprintf(digits.data(), digits.size(), "%02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
            text += digits.data();
        }
        return text;
    }
    }
}

} // namespace

std::string result_difference(prepared_call& before, prepared_call& after, const function_pair& functions) {
    std::uint32_t first = 0;
    do {
        const std::int32_t status_before = call_at(before, functions.before, first);
        const std::int32_t status_after = call_at(after, functions.after, first);
        const std::string where = "in the " + std::to_string(before.rows_per_call) + " rows from " + std::to_string(first);
        if (status_before != status_after) {
            return "status " + std::to_string(status_before) + " and " + std::to_string(status_after) + ' ' + where;
        }
        const zqengine::column_storage& a = *before.result;
        const zqengine::column_storage& b = *after.result;
        if (status_before == BIFUN_OK && a.column.no_nulls != b.column.no_nulls) {
            return "no_nulls " + std::to_string(a.column.no_nulls) + " and " + std::to_string(b.column.no_nulls) + ' ' + where;
        }
        for (std::uint32_t row = 0; status_before == BIFUN_OK && row < before.rows_per_call; ++row) {
            if (!same_value(a, b, row)) {
                return text_of_value(a, row) + " and " + text_of_value(b, row) + " in row " + std::to_string(first + row);
            }
        }
        first = next_row(before, first);
    } while (first != 0);
    return {};
}

} // namespace bifun::bench
