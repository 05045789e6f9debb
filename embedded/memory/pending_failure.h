// The countdown behind fail_step, for the operations that are called once per row and cannot afford a call to must_fail.
#ifndef BIFUN_EMBEDDED_MEMORY_PENDING_FAILURE_H
#define BIFUN_EMBEDDED_MEMORY_PENDING_FAILURE_H

#include <atomic>
#include <cstdint>

#include "embedded/memory/allocation.h"

namespace zqengine {

// Steps until the one that must fail; 0 when no failure is asked for. Only the engine itself uses it.
[[gnu::visibility("hidden")]] extern std::atomic<std::int64_t> steps_to_failure;

// must_fail, of one load and one branch while no failure is asked for.
inline bool step_must_fail() { return steps_to_failure.load(std::memory_order_relaxed) != 0 && must_fail(); }

} // namespace zqengine

#endif
