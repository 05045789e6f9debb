// One timed run of one engine.
#ifndef BIFUN_BENCH_PEERS_MEASUREMENT_H
#define BIFUN_BENCH_PEERS_MEASUREMENT_H

#include <string>

namespace bifun::peers {

// `value` is the aggregate of the expression, as text, so that the engines' results can be compared.
struct measurement {
    double seconds;
    std::string value;
};

} // namespace bifun::peers

#endif
