// SPDX-License-Identifier: Apache-2.0
#include "tests/contract/text_case.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <span>
#include <sstream>
#include <utility>

#include "embedded/datetime/text.h"
#include "embedded/large_objects/large_object.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"

using bifun::value_type;

namespace contract {
namespace {

const std::uint8_t* bytes_of(const std::string& text) { return reinterpret_cast<const std::uint8_t*>(text.data()); }

void read_string(zqengine::column_storage& column, std::uint32_t row, std::string text) {
    if (text == "''") {
        text.clear();
    }
    const auto blanks = static_cast<std::uint32_t>(text.size() - (text.find_last_not_of('_') + 1));
    text.resize(text.size() - blanks);
    std::istringstream parts(std::exchange(text, {}));
    for (std::string part; std::getline(parts, part, '&');) {
        const bool is_repeated = part.size() > 2 && part[1] == '*';
        text += is_repeated ? std::string(std::strtoul(part.c_str() + 2, nullptr, 10), part[0]) : part;
    }
    std::ranges::replace(text, '~', ' ');
    (void)bdta3_col_assign_str(nullptr, nullptr, &column.column, row, bytes_of(text), static_cast<std::uint32_t>(text.size()), blanks);
}

// The fields of an interval.
std::span<std::int32_t> fields_of(const zqengine::column_storage& column, std::uint32_t row) {
    const std::size_t count = bifun::value_width(column.type) / sizeof(std::int32_t);
    return {static_cast<std::int32_t*>(column.data.values) + row * count, count};
}

// All that have one length are one.
const bifun_large_object* large_object_of(std::size_t length) {
    thread_local const zqengine::large_object_store_pointer store(zqengine::create_large_object_store());
    thread_local std::map<std::size_t, zqengine::large_object_pointer> objects;
    zqengine::large_object_pointer& object = objects[length];
    if (object == nullptr) {
        object.reset(zqengine::create_large_object(*store));
        const std::vector<std::uint8_t> bytes(length);
        EXPECT_EQ(zqengine::append_to_large_object(*object, bytes.data(), length), 0);
    }
    return object.get();
}

} // namespace

void read_value(zqengine::column_storage& column, std::uint32_t row, const std::string& text) {
    using zqengine::values_of;
    const auto length = static_cast<std::uint32_t>(text.size());
    switch (column.type) {
    case value_type::BOOL:
    case value_type::INT:
        values_of<std::int32_t>(column)[row] = static_cast<std::int32_t>(std::strtol(text.c_str(), nullptr, 10));
        break;
    case value_type::BIGINT:
        values_of<std::int64_t>(column)[row] = std::strtol(text.c_str(), nullptr, 10);
        break;
    case value_type::DOUBLE:
        values_of<double>(column)[row] = std::strtod(text.c_str(), nullptr);
        break;
    case value_type::DECIMAL:
        EXPECT_EQ(xdec_from_char(bytes_of(text), length, values_of<xdec>(column) + row), 0) << text;
        break;
    case value_type::DATETIME:
        EXPECT_EQ(zqtime_from_char_ex(bytes_of(text), length, values_of<zqtime>(column) + row), 0) << text;
        break;
    case value_type::INTERVAL_YM:
    case value_type::INTERVAL_DT: {
        std::istringstream parts(text);
        char slash = '/';
        for (std::int32_t& field : fields_of(column, row)) {
            parts >> field >> slash;
        }
        EXPECT_TRUE(slash == '/' && parts.eof() && std::ranges::count(text, '/') + 1 == std::ssize(fields_of(column, row))) << text;
        break;
    }
    case value_type::BLOB:
        values_of<const bifun_large_object*>(column)[row] = large_object_of(std::stoull(text));
        break;
    default:
        read_string(column, row, text);
    }
}

std::vector<std::string> parts_of(std::string_view text) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        parts.emplace_back(text.substr(0, text.find(" | ")));
        text.remove_prefix(std::min(parts.back().size() + 3, text.size()));
    }
    return parts;
}

text_column read_column(value_type type, std::string_view text) {
    constexpr std::string_view null = "NULL";
    std::istringstream words{std::string(text)};
    std::vector<std::string> rows;
    text_column result{};
    long no_nulls = -1;
    for (std::string word; words >> word;) {
        if (word.front() == '[') {
            no_nulls = std::strtol(word.c_str() + 1, nullptr, 10);
        } else if (word.front() == '@') {
            std::istringstream numbers(word.substr(1));
            for (std::string number; std::getline(numbers, number, ',');) {
                result.selection.push_back(static_cast<std::uint16_t>(std::stoul(number)));
            }
        } else {
            rows.push_back(word);
        }
    }
    result.column.reset(zqengine::create_column(type, static_cast<std::uint32_t>(rows.size())));
    std::memset(result.column->data.values, 0xFF, rows.size() * bifun::value_width(type));
    bool any_null = false;
    for (std::uint32_t row = 0; row < rows.size(); ++row) {
        const std::string& word = rows[row];
        const bool is_null = word.starts_with(null);
        any_null |= is_null;
        result.column->data.null_flags[row] = is_null ? 0 : 1;
        if (!is_null) {
            read_value(*result.column, row, word);
        } else if (word.size() > null.size()) {
            read_value(*result.column, row, word.substr(null.size() + 1));
        }
    }
    result.column->column.no_nulls = no_nulls >= 0 ? static_cast<std::uint32_t>(no_nulls) : !any_null;
    result.row_count = static_cast<std::uint32_t>(result.selection.empty() ? rows.size() : result.selection.size());
    return result;
}

namespace {

// With runs of one character written as `a*49`.
std::string fold(std::string_view text) {
    constexpr std::size_t longest_run = 40;
    std::string folded;
    for (std::size_t first = 0; first < text.size();) {
        const std::size_t end = std::min(text.find_first_not_of(text[first], first), text.size());
        if (end - first > longest_run) {
            folded += std::string(first == 0 ? "" : "&") + text[first] + "*" + std::to_string(end - first);
            folded += end == text.size() ? "" : "&";
        } else {
            folded += text.substr(first, end - first);
        }
        first = end;
    }
    return folded;
}

std::string write_string(const bifun_string& value) {
    std::string text = fold({reinterpret_cast<const char*>(value.data), value.length});
    text.append(value.trailing_blanks, '_');
    return text.empty() ? "''" : text;
}

} // namespace

std::string write_value(const zqengine::column_storage& column, std::uint32_t row) {
    using zqengine::values_of;
    constexpr std::string_view midnight = "T00:00:00";
    char buffer[256];
    std::uint32_t length = 0;
    switch (column.type) {
    case value_type::BOOL:
    case value_type::INT:
        return std::to_string(values_of<std::int32_t>(column)[row]);
    case value_type::BIGINT:
        return std::to_string(values_of<std::int64_t>(column)[row]);
    case value_type::DOUBLE:
        return {buffer, static_cast<std::size_t>(std::snprintf(buffer, sizeof buffer, "%.17g", values_of<double>(column)[row]))};
    case value_type::DECIMAL:
        EXPECT_EQ(xdec_to_char_with_zero(values_of<xdec>(column) + row, buffer, sizeof buffer, 0, 0, &length), 0);
        return fold({buffer, length});
    case value_type::DATETIME: {
        std::string text(buffer, zqengine::write_datetime(values_of<zqtime>(column)[row], zqengine::datetime_kind::datetime, buffer));
        std::ranges::replace(text, ' ', 'T');
        return text.substr(0, text.size() - (text.ends_with(midnight) ? midnight.size() : 0));
    }
    case value_type::INTERVAL_YM:
    case value_type::INTERVAL_DT: {
        std::string text;
        for (const std::int32_t field : fields_of(column, row)) {
            text.append(text.empty() ? "" : "/").append(std::to_string(field));
        }
        return text;
    }
    case value_type::BLOB:
        return std::to_string(zqengine::length_of(*values_of<const bifun_large_object*>(column)[row]));
    default:
        return write_string(values_of<bifun_string>(column)[row]);
    }
}

std::string evaluate(const text_case& text_case, const circumstances& circumstances) {
    const bifun::entry_point& entry = entry_of(text_case.symbol);
    if (entry.argument_count != text_case.arguments.size()) {
        return std::string("no such call of ") + text_case.symbol;
    }
    std::vector<text_column> columns(entry.argument_count);
    std::vector<generated_constant> constants(entry.argument_count);
    std::vector<call_argument> arguments(entry.argument_count);
    std::uint32_t row_count = 0;
    for (std::size_t i = entry.argument_count; i-- > 0;) {
        columns[i] = read_column(entry.argument_list[i].type, text_case.arguments[i]);
        if (entry.argument_list[i].kind == bifun::argument_kind::constant) {
            constants[i] = constant_of_row(*columns[i].column, 0);
            arguments[i] = {.constant = &constants[i]};
        } else {
            row_count = columns[i].row_count;
            arguments[i] = {.column = columns[i].column.get(), .selection = columns[i].selection};
        }
    }
    const outcome outcome = call(entry, arguments, row_count, circumstances);
    std::string text = std::string("[").append(std::to_string(outcome.no_nulls())).append("]");
    for (std::uint32_t row = 0; row < row_count; ++row) {
        text += ' ';
        text += outcome.flag(row) == unwritten ? "?"
                : outcome.flag(row) == 0       ? "NULL"
                : outcome.holds_value(row)     ? write_value(*outcome.result, row)
                                               : "=?";
    }
    return outcome.status == 0 ? text : text + " status " + std::to_string(outcome.status);
}

void expect_results(std::initializer_list<std::string_view> cases, const circumstances& circumstances) {
    for (const std::string_view text : cases) {
        const std::vector<std::string> parts = parts_of(text);
        EXPECT_EQ(evaluate({parts.front().c_str(), {parts.begin() + 1, parts.end() - 1}, {}}, circumstances), parts.back()) << text;
    }
}

} // namespace contract
