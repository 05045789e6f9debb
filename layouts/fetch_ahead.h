// SPDX-License-Identifier: Apache-2.0
// For loops that take less time for a row than its bytes take to come from memory.
#ifndef BIFUN_LAYOUTS_FETCH_AHEAD_H
#define BIFUN_LAYOUTS_FETCH_AHEAD_H

#include <cstdint>

namespace bifun {

// Has what lies so many bytes behind an address come from memory meanwhile. An address at which nothing is does no harm.
inline void fetch_behind(const void* address, std::uintptr_t distance) {
    const auto behind = reinterpret_cast<std::uintptr_t>(address) + distance;
    __builtin_prefetch(reinterpret_cast<const void*>(behind)); // NOLINT(performance-no-int-to-ptr): may be beyond any object
}

} // namespace bifun

#endif
