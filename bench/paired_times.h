// SPDX-License-Identifier: Apache-2.0
// Two builds' times for the same calls, taken in turns so that the machine's noise hits both alike.
#ifndef BIFUN_BENCH_PAIRED_TIMES_H
#define BIFUN_BENCH_PAIRED_TIMES_H

#include <cstdint>
#include <vector>

#include "bench/catalogue_calls.h"

namespace bifun::bench {

// The same entry point in two builds.
struct function_pair {
    void* before;
    void* after;
};

// Nanoseconds per row, one of each for every round.
struct paired_times {
    std::vector<double> before;
    std::vector<double> after;
};

// Adds rounds that take `seconds` together, 11 to 400 of them. A round is four turns: before and after over some rows, after and before
// over the next, so that either is as often the first to read them. A turn has calls for about 100 microseconds, or for all rows that
// were generated.
void add_rounds(paired_times& times, prepared_call& call, const function_pair& functions, double seconds);

// `ratio` is the median of after / before over the rounds, and `least` and `greatest` bound the interval that holds the true median with a
// probability of 99.9 %, by the order of the rounds' ratios alone.
struct time_change {
    double before; // medians, in nanoseconds per row
    double after;
    double ratio;
    double least;
    double greatest;
};
time_change change_of(const paired_times& times);

} // namespace bifun::bench

#endif
