// SPDX-License-Identifier: Apache-2.0
// The clock of the benchmarks.
#ifndef BIFUN_BENCH_PROCESSOR_TIME_H
#define BIFUN_BENCH_PROCESSOR_TIME_H

#include <ctime>

namespace bifun::bench {

// Processor time of the whole process in seconds. Of several threads one works at a time, but not always the calling one, and other
// programs that take the processor must not count.
inline double processor_seconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace bifun::bench

#endif
