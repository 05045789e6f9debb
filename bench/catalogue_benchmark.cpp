// SPDX-License-Identifier: Apache-2.0
// Every entry point of the catalogue over generated columns: time per row. Benchmarks are named symbol/path, with the paths of
// bench/catalogue_calls.h. The options are Google Benchmark's, and --rows_per_call=N.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bench/catalogue_calls.h"

namespace {

using namespace bifun;
using namespace bifun::bench;

void run(benchmark::State& state, const entry_point& entry, void* function, const call_path& path, std::uint32_t rows_per_call) {
    const std::unique_ptr<prepared_call> call = prepare_call(entry, path, rows_per_call);
    std::uint32_t row = 0;
    std::int32_t status = BIFUN_OK;
    for (auto _ : state) {
        status = std::min(status, call_at(*call, function, row));
        row = next_row(*call, row);
    }
    if (status != BIFUN_OK) {
        state.SkipWithError(("status " + std::to_string(status) + ": give the arguments typical values in the catalogue").c_str());
    }
    // Printed with its unit: ps or ns.
    state.counters["time_per_row"] = benchmark::Counter(static_cast<double>(state.iterations()) * rows_per_call,
                                                        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// Takes --rows_per_call out of the command line.
std::uint32_t read_rows_per_call(int& count, char** options) {
    constexpr std::string_view name = "--rows_per_call=";
    std::uint32_t rows = usual_rows_per_call;
    int kept = 0;
    for (int i = 0; i < count; ++i) {
        const std::string_view option = options[i];
        if (option.starts_with(name)) {
            rows = parse_rows_per_call(option.substr(name.size()));
        } else {
            options[kept++] = options[i];
        }
    }
    count = kept;
    return rows;
}

void register_all(void* library, std::uint32_t rows_per_call) {
    for (const entry_point& entry : entry_points) {
        void* const function = function_of(library, entry);
        if (function == nullptr) {
            throw std::runtime_error(std::string("no symbol ") + entry.symbol);
        }
        for (const call_path& path : call_paths) {
            benchmark::RegisterBenchmark(
                (std::string(entry.symbol) + "/" + path.name).c_str(),
                [&entry, function, &path, rows_per_call](benchmark::State& state) { run(state, entry, function, path, rows_per_call); });
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        const std::uint32_t rows_per_call = read_rows_per_call(argc, argv);
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
            return EXIT_FAILURE;
        }
        register_all(open_library(BIFUN_LIBRARY), rows_per_call);
        benchmark::RunSpecifiedBenchmarks();
        benchmark::Shutdown();
        return EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bifun_bench: %s\n", failure.what());
        return EXIT_FAILURE;
    }
}
