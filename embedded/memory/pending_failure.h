// SPDX-License-Identifier: Apache-2.0
// The countdown behind fail_step: what the engine operations that hand out memory ask.
#ifndef BIFUN_EMBEDDED_MEMORY_PENDING_FAILURE_H
#define BIFUN_EMBEDDED_MEMORY_PENDING_FAILURE_H

#include <atomic>
#include <cstdint>

namespace zqengine {

// Steps until the one that must fail; 0 when no failure is asked for. Only the engine itself uses it.
[[gnu::visibility("hidden")]] extern std::atomic<std::int64_t> steps_to_failure;

// Counts the step of an operation that hands out memory: true when it must fail.
[[gnu::visibility("hidden")]] bool must_fail();

// failure_is_pending without a call, for operations that run once per row: while it is false, must_fail need not be asked.
inline bool pending_failure() { return steps_to_failure.load(std::memory_order_relaxed) != 0; }

} // namespace zqengine

#endif
