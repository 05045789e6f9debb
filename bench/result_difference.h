// SPDX-License-Identifier: Apache-2.0
// Whether two builds give the same results.
#ifndef BIFUN_BENCH_RESULT_DIFFERENCE_H
#define BIFUN_BENCH_RESULT_DIFFERENCE_H

#include <string>

#include "bench/paired_times.h"

namespace bifun::bench {

// Calls both functions for all generated rows and compares statuses, flags, and the bytes of all values that are not NULL. The first
// difference in words, or nothing. A batch that both fail alike is not looked at further.
std::string result_difference(prepared_call& before, prepared_call& after, const function_pair& functions);

} // namespace bifun::bench

#endif
