// One of two values without a branch, for choices that nobody can predict: a wrong guess costs more than both values.
#ifndef BIFUN_FRAME_CHOOSE_H
#define BIFUN_FRAME_CHOOSE_H

#include <bit>
#include <cstdint>
#include <type_traits>

#include "bop/frame/batch.h"

namespace bifun {

// By masks: behind a selection vector the compiler would branch.
template <class T>
requires std::is_arithmetic_v<T> INLINED inline T choose(bool first, const T& a, const T& b) {
    using word = std::conditional_t<sizeof(T) == sizeof(std::uint64_t), std::uint64_t, std::uint32_t>;
    static_assert(sizeof(T) == sizeof(word));
    const word mask = word{0} - static_cast<word>(first);
    return std::bit_cast<T>((std::bit_cast<word>(a) & mask) | (std::bit_cast<word>(b) & ~mask));
}

// By arithmetic on addresses, for records that take longer to load than a number.
template <class T>
requires(!std::is_arithmetic_v<T>) INLINED inline const T& choose(bool first, const T& a, const T& b) {
    const auto address_of_a = reinterpret_cast<std::uintptr_t>(&a);
    const auto address_of_b = reinterpret_cast<std::uintptr_t>(&b);
    const auto difference = (address_of_a ^ address_of_b) & (std::uintptr_t{0} - static_cast<std::uintptr_t>(first));
    return *reinterpret_cast<const T*>(address_of_b ^ difference); // NOLINT(performance-no-int-to-ptr): that is the point
}

} // namespace bifun

#endif
