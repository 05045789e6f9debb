// SPDX-License-Identifier: Apache-2.0
// One of two values without a branch, for choices that nobody can predict: a wrong guess costs more than both values.
#ifndef BIFUN_FRAME_CHOOSE_H
#define BIFUN_FRAME_CHOOSE_H

#include <cstdint>
#include <type_traits>

namespace bifun {

template <class T>
requires std::is_arithmetic_v<T> T choose(bool first, const T& a, const T& b) { return first ? a : b; }

// By arithmetic on addresses, for records that take longer to load than a number.
template <class T>
requires(!std::is_arithmetic_v<T>) const T& choose(bool first, const T& a, const T& b) {
    const auto address_of_a = reinterpret_cast<std::uintptr_t>(&a);
    const auto address_of_b = reinterpret_cast<std::uintptr_t>(&b);
    const auto difference = (address_of_a ^ address_of_b) & (std::uintptr_t{0} - static_cast<std::uintptr_t>(first));
    return *reinterpret_cast<const T*>(address_of_b ^ difference); // NOLINT(performance-no-int-to-ptr): that is the point
}

} // namespace bifun

#endif
