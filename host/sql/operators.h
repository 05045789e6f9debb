// SPDX-License-Identifier: Apache-2.0
// The operators of conditions.
#ifndef BIFUN_HOST_SQL_OPERATORS_H
#define BIFUN_HOST_SQL_OPERATORS_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace host {

enum class comparison_operator : std::uint8_t { equal, not_equal, less, less_or_equal, greater, greater_or_equal };

enum class arithmetic_operator : std::uint8_t { add, subtract, multiply, divide, negate };

constexpr std::string_view arithmetic_symbol(arithmetic_operator operation) {
    constexpr std::string_view symbols[] = {"+", "-", "*", "/", "-"};
    return symbols[static_cast<std::size_t>(operation)];
}

enum class truth_value : std::uint8_t { true_value, false_value, unknown };

} // namespace host

#endif
