// SPDX-License-Identifier: Apache-2.0
#include "bench/paired_times.h"

#include <algorithm>
#include <cmath>

#include "bench/processor_time.h"

namespace bifun::bench {
namespace {

constexpr double turn_seconds = 100e-6;
constexpr std::uint32_t least_rounds = 11; // fewer have no interval of that probability
constexpr std::uint32_t most_rounds = 400;
constexpr double error_probability = 0.001;

double turn(prepared_call& call, void* function, std::uint32_t& row, std::uint32_t calls) {
    const double start = processor_seconds();
    for (std::uint32_t i = 0; i < calls; ++i) {
        (void)call_at(call, function, row);
        row = next_row(call, row);
    }
    return processor_seconds() - start;
}

std::uint32_t calls_of_turn(prepared_call& call, void* function) {
    const std::uint32_t most = generated_rows / call.rows_read;
    std::uint32_t row = 0;
    std::uint32_t calls = 1;
    while (calls < most && turn(call, function, row, calls) < turn_seconds) {
        calls = std::min(2 * calls, most);
    }
    return calls;
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return (values[values.size() / 2] + values[(values.size() - 1) / 2]) / 2;
}

// How many of the least and of the greatest of `count` values lie outside of the interval: that so few are below the median, or above it,
// has at most the error's probability.
std::size_t outside_of_interval(std::size_t count) {
    double probability = std::exp2(-static_cast<double>(count)); // that none is below
    double at_most = probability;
    std::size_t outside = 0;
    while (2 * at_most <= error_probability) {
        ++outside;
        probability *= static_cast<double>(count - outside + 1) / static_cast<double>(outside);
        at_most += probability;
    }
    return outside - 1;
}

} // namespace

void add_rounds(paired_times& times, prepared_call& call, const function_pair& functions, double seconds) {
    const std::uint32_t calls = std::max(calls_of_turn(call, functions.before), calls_of_turn(call, functions.after));
    const double nanoseconds_per_row = 1e9 / (2.0 * calls * call.rows_per_call);
    std::uint32_t row = 0;
    std::uint32_t rounds = least_rounds;
    const double start = processor_seconds();
    for (std::uint32_t round = 0; round < rounds; ++round) {
        const std::uint32_t first = row;
        double before = turn(call, functions.before, row, calls);
        row = first;
        double after = turn(call, functions.after, row, calls);
        const std::uint32_t second = row;
        after += turn(call, functions.after, row, calls);
        row = second;
        before += turn(call, functions.before, row, calls);
        times.before.push_back(before * nanoseconds_per_row);
        times.after.push_back(after * nanoseconds_per_row);
        if (round == 0) {
            const double fitting = seconds / (processor_seconds() - start);
            rounds = static_cast<std::uint32_t>(std::clamp(fitting, double{least_rounds}, double{most_rounds}));
        }
    }
}

time_change change_of(const paired_times& times) {
    std::vector<double> ratios(times.before.size());
    std::ranges::transform(times.after, times.before, ratios.begin(), std::divides<>());
    std::ranges::sort(ratios);
    const std::size_t outside = outside_of_interval(ratios.size());
    return {median(times.before), median(times.after), median(ratios), ratios[outside], ratios[ratios.size() - 1 - outside]};
}

} // namespace bifun::bench
