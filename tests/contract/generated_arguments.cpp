// SPDX-License-Identifier: Apache-2.0
#include "tests/contract/generated_arguments.h"

#include <map>
#include <tuple>
#include <utility>

namespace contract {

using bifun::argument_kind;
using bifun::entry_point;
using bifun::value_type;
using zqengine::column_storage;

const column_storage& column_for(const entry_point& entry, std::size_t position, std::uint32_t row_count, double null_rate) {
    static std::map<std::tuple<const argument_fact*, value_type, std::size_t, std::uint32_t, double>, zqengine::column_pointer> columns;
    auto& column = columns[{domain_of(entry, position), entry.argument_list[position].type, position, row_count, null_rate}];
    if (column == nullptr) {
        column = sound_column(entry, position, row_count, null_rate, position);
    }
    return *column;
}

const generated_constant& constant_for(const entry_point& entry, std::size_t position, std::size_t row) {
    static std::map<std::pair<const column_storage*, std::size_t>, generated_constant> constants;
    constexpr std::uint32_t ordinary = 8;
    const column_storage& column = column_for(entry, position, static_cast<std::uint32_t>(value_count(entry, position)) + ordinary, 0);
    const auto [found, is_new] = constants.try_emplace({&column, row});
    if (is_new) {
        found->second = constant_of_row(column, static_cast<std::uint32_t>(row));
    }
    return found->second;
}

std::vector<call_argument> arguments_of(const entry_point& entry, std::uint32_t row_count, double null_rate) {
    std::vector<call_argument> arguments;
    for (std::size_t position = 0; position < entry.argument_count; ++position) {
        if (entry.argument_list[position].kind == argument_kind::column) {
            arguments.push_back({.column = &column_for(entry, position, row_count, null_rate)});
        } else {
            arguments.push_back({.constant = &constant_for(entry, position, value_count(entry, position) + position)});
        }
    }
    return arguments;
}

std::vector<call_argument> arguments_of_round(const entry_point& entry, std::uint32_t row_count, double null_rate, std::size_t round) {
    std::vector<call_argument> arguments = arguments_of(entry, row_count, null_rate);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].constant != nullptr) {
            arguments[i].constant = &constant_for(entry, i, (round * (2 * i + 1) + i) % value_count(entry, i));
        }
    }
    return arguments;
}

} // namespace contract
