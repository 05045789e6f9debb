// SPDX-License-Identifier: Apache-2.0
// The order of two values as a number, for comparisons that C callers see.
#ifndef BIFUN_LAYOUTS_ORDER_H
#define BIFUN_LAYOUTS_ORDER_H

#include <cstdint>

namespace bifun {

// -1, 0 or 1 as `a` is less than, equal to or greater than `b`. Without a branch.
template <class T> constexpr std::int32_t order(T a, T b) { return (a > b ? 1 : 0) - (a < b ? 1 : 0); }

} // namespace bifun

#endif
