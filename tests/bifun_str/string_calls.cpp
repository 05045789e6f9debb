// SPDX-License-Identifier: Apache-2.0
#include "tests/bifun_str/string_calls.h"

#include <algorithm>
#include <memory>

namespace string_model {

namespace {

using bifun::argument_kind;
using bifun::entry_point;
using bifun::value_type;

// A column whose texts lie in blocks of exactly their size.
struct argument_column {
    argument_column(value_type type, const std::vector<std::vector<value>>& rows, std::size_t position)
        : column(zqengine::create_column(type, static_cast<std::uint32_t>(rows.size()))), no_nulls(1) {
        for (std::uint32_t row = 0; row < rows.size(); ++row) {
            const value& value = rows[row][position];
            column->data.null_flags[row] = value.is_null ? 0 : 1;
            no_nulls &= value.is_null ? 0U : 1U;
            if (type == value_type::INT) {
                zqengine::values_of<std::int32_t>(*column)[row] = value.number;
                continue;
            }
            const std::string& stored = value.string.stored;
            blocks.push_back(std::make_unique<std::uint8_t[]>(stored.size()));
            std::ranges::copy(stored, blocks.back().get());
            zqengine::values_of<bifun_string>(*column)[row] = {static_cast<std::uint32_t>(stored.size()), value.string.blanks,
                                                               stored.empty() && row % 2 == 0 ? nullptr : blocks.back().get()};
        }
        column->column.no_nulls = no_nulls;
        if (type == value_type::VARCHAR && rows.size() % 2 == 0) {
            zqengine::tell_texts(*column, column->capacity);
        }
    }

    std::vector<std::unique_ptr<std::uint8_t[]>> blocks;
    zqengine::column_pointer column;
    std::uint32_t no_nulls;
};

// A row of a result as the model prints it.
std::string shown(const contract::outcome& outcome, std::uint32_t row) {
    if (outcome.flag(row) != 1) {
        return outcome.flag(row) == 0 ? "NULL" : "?";
    }
    if (!outcome.holds_value(row)) {
        return "=?";
    }
    if (outcome.result->type == value_type::INT) {
        return std::to_string(zqengine::values_of<std::int32_t>(*outcome.result)[row]);
    }
    if (outcome.result->type == value_type::BIGINT) {
        return std::to_string(zqengine::values_of<std::int64_t>(*outcome.result)[row]);
    }
    const bifun_string& value = zqengine::values_of<bifun_string>(*outcome.result)[row];
    return shown(text{std::string(reinterpret_cast<const char*>(value.data), value.length), value.trailing_blanks});
}

} // namespace

std::vector<const bifun::entry_point*> string_functions() {
    std::vector<const bifun::entry_point*> found;
    for (const bifun::entry_point& entry : bifun::entry_points) {
        // ROUND and the like are about numbers and dates in texts, or JSON; digests and sort keys have others to compare with.
        const bool is_other =
            bifun::has_word("ROUND TO_NUMBER TO_DOUBLE ISNUMERIC JSON_VALUE JSON_QUERY MD5 SHA2 NLSSORT", entry.builtin) ||
            std::ranges::any_of(entry.arguments(), [](const auto& argument) {
                return argument.type != value_type::VARCHAR && argument.type != value_type::INT;
            });
        if (std::string_view(entry.symbol).ends_with("_str") && !is_other) {
            found.push_back(&entry);
        }
    }
    return found;
}

string_call call_strings(const entry_point& entry, const std::vector<std::vector<value>>& rows) {
    std::vector<argument_column> columns;
    std::vector<contract::generated_constant> constants(entry.argument_count);
    std::vector<contract::call_argument> arguments(entry.argument_count);
    columns.reserve(entry.argument_count);
    for (std::size_t i = 0; i < entry.argument_count; ++i) {
        columns.emplace_back(entry.argument_list[i].type, rows, i);
        if (entry.argument_list[i].kind == argument_kind::constant) {
            constants[i] = contract::constant_of_row(*columns[i].column, 0);
            arguments[i] = {.constant = &constants[i]};
        } else {
            arguments[i] = {.column = columns[i].column.get()};
        }
    }
    string_call call{contract::call(entry, arguments, static_cast<std::uint32_t>(rows.size())), {}};
    for (std::uint32_t row = 0; row < rows.size(); ++row) {
        call.rows.push_back(shown(call.outcome, row));
    }
    return call;
}

std::string shown(const entry_point& entry, std::size_t position, const value& argument) {
    return argument.is_null                                        ? "NULL"
           : entry.argument_list[position].type == value_type::INT ? std::to_string(argument.number)
                                                                   : shown(argument.string);
}

std::string shown(const entry_point& entry, const std::vector<value>& arguments) {
    std::string call = entry.symbol;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        call += (i == 0 ? "(" : ", ") + shown(entry, i, arguments[i]);
    }
    return call + ")";
}

} // namespace string_model
