// SPDX-License-Identifier: Apache-2.0
#include "embedded/memory/allocation.h"

#include <atomic>
#include <cstdlib>

#include "embedded/memory/pending_failure.h"

namespace zqengine {

constinit std::atomic<std::int64_t> steps_to_failure{0};

namespace {

constinit std::atomic<std::int64_t> bytes_in_use{0};

} // namespace

void* allocate(std::size_t size) {
    void* const pointer = std::malloc(size == 0 ? 1 : size);
    if (pointer != nullptr) {
        bytes_in_use.fetch_add(static_cast<std::int64_t>(size), std::memory_order_relaxed);
    }
    return pointer;
}

void release(void* pointer, std::size_t size) {
    if (pointer != nullptr) {
        bytes_in_use.fetch_sub(static_cast<std::int64_t>(size), std::memory_order_relaxed);
        std::free(pointer);
    }
}

std::int64_t live_bytes() { return bytes_in_use.load(std::memory_order_relaxed); }

void fail_step(std::int64_t n) { steps_to_failure.store(n, std::memory_order_relaxed); }

bool failure_is_pending() { return pending_failure(); }

bool must_fail() {
    // Threads that race for the last step must not count past 0, from where the countdown would never end.
    std::int64_t steps = steps_to_failure.load(std::memory_order_relaxed);
    while (steps != 0 && !steps_to_failure.compare_exchange_weak(steps, steps - 1, std::memory_order_relaxed)) {
    }
    return steps == 1;
}

} // namespace zqengine
