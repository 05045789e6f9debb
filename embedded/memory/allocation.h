// SPDX-License-Identifier: Apache-2.0
// Where the embedded engine's memory comes from: counted, and made to fail on demand. For tests of exhaustion and leaks.
#ifndef BIFUN_EMBEDDED_MEMORY_ALLOCATION_H
#define BIFUN_EMBEDDED_MEMORY_ALLOCATION_H

#include <cstddef>
#include <cstdint>

namespace zqengine {

// Memory aligned for any type, or null. `release` takes the size that was asked for; null does nothing.
[[nodiscard]] void* allocate(std::size_t size);
void release(void* pointer, std::size_t size);

// Bytes allocated and not released, over all threads.
std::int64_t live_bytes();

// Makes the n-th (1 is the next) following step fail that can run out of memory, once; 0 calls it off. A step is one engine operation
// that hands out memory, whether or not it has to go to the system for it. For one thread at a time.
void fail_step(std::int64_t n);

// Whether a failure asked for has not come yet.
bool failure_is_pending();

} // namespace zqengine

#endif
