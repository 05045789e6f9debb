// The countdown behind fail_step, for the operations that are called once per row and cannot afford a call to must_fail.
#ifndef BIFUN_EMBEDDED_MEMORY_PENDING_FAILURE_H
#define BIFUN_EMBEDDED_MEMORY_PENDING_FAILURE_H

#include <atomic>
#include <cstdint>

namespace zqengine {

// Steps until the one that must fail; 0 when no failure is asked for. Only the engine itself uses it.
[[gnu::visibility("hidden")]] extern std::atomic<std::int64_t> steps_to_failure;

// failure_is_pending without a call: while it is false, must_fail need not be asked.
inline bool pending_failure() { return steps_to_failure.load(std::memory_order_relaxed) != 0; }

} // namespace zqengine

#endif
