// SPDX-License-Identifier: Apache-2.0
// One timed run of one engine.
#ifndef BIFUN_BENCH_PEERS_MEASUREMENT_H
#define BIFUN_BENCH_PEERS_MEASUREMENT_H

#include <string>

#include "bench/processor_time.h"

namespace bifun::peers {

// `value` is the aggregate of the expression, as text, so that the engines' results can be compared.
struct measurement {
    double seconds;
    std::string value;
};

using bench::processor_seconds;

} // namespace bifun::peers

#endif
