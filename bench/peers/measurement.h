// One timed run of one engine.
#ifndef BIFUN_BENCH_PEERS_MEASUREMENT_H
#define BIFUN_BENCH_PEERS_MEASUREMENT_H

#include <ctime>
#include <string>

namespace bifun::peers {

// `value` is the aggregate of the expression, as text, so that the engines' results can be compared.
struct measurement {
    double seconds;
    std::string value;
};

// Processor time of the whole process. Every engine has one thread that works at a time, but not always the calling one, and other
// programs that take the processor must not count.
inline double processor_seconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace bifun::peers

#endif
