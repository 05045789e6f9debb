#include "tests/bifun_str/string_calls.h"

#include <algorithm>
#include <memory>

#include "tests/bifun_str/optional_symbols.h"

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
    const bifun_string& value = zqengine::values_of<bifun_string>(*outcome.result)[row];
    return shown(text{std::string(reinterpret_cast<const char*>(value.data), value.length), value.trailing_blanks});
}

} // namespace

string_call call_strings(const entry_point& entry, const std::vector<std::vector<value>>& rows,
                         const contract::circumstances& circumstances) {
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
    const contract::outcome outcome = contract::call(entry, arguments, static_cast<std::uint32_t>(rows.size()), circumstances);
    string_call call{outcome.status, {}};
    for (std::uint32_t row = 0; row < rows.size(); ++row) {
        call.rows.push_back(shown(outcome, row));
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

void expect_rows(std::span<const row_case> cases, std::initializer_list<bool> with_symbols) {
    for (const row_case& row_case : cases) {
        const entry_point& entry = contract::entry_of(row_case.symbol);
        ASSERT_EQ(row_case.arguments.size(), entry.argument_count) << row_case.symbol;
        for (const bool said : with_symbols) {
            const optional_symbols symbols(said);
            const string_call call = call_strings(entry, {row_case.arguments});
            const std::string status = call.status == 0 ? "" : std::to_string(call.status) + " ";
            EXPECT_EQ(status + call.rows[0], row_case.result) << shown(entry, row_case.arguments) << ", symbols " << said;
        }
    }
}

} // namespace string_model
