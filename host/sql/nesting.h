// SPDX-License-Identifier: Apache-2.0
// How deep a statement is nested, told before anything recurses over it, the parser included.
#ifndef BIFUN_HOST_SQL_NESTING_H
#define BIFUN_HOST_SQL_NESTING_H

#include <cstddef>
#include <string_view>

namespace host {

// Parentheses and CASE count as levels, and so do the operators of a chain: in a || b || c the last one is applied to the result of the
// first. A comma begins a new chain, and so do AND and OR, which count once, however many of them there are.
constexpr std::size_t deepest_nesting = 200; // fits a stack of 1 MB in sanitizer builds, too

// Throws with the place where a statement is nested deeper.
void check_nesting(std::string_view sql);

} // namespace host

#endif
