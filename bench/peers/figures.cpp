// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/figures.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <stdexcept>
#include <string_view>

namespace bifun::peers {
namespace {

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// ns per row, of every repetition.
std::vector<double> costs(const timing& timing, const run_facts& facts) {
    std::vector<double> costs(timing.measured.size());
    std::ranges::transform(timing.measured, timing.baseline, costs.begin(),
                           [&](double measured, double baseline) { return (measured - baseline) * 1e9 / facts.rows; });
    return costs;
}

std::string quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted += '"';
}

} // namespace

void print_head(const run_facts& facts, const std::vector<contestant>& contestants) {
    std::printf("ns per row, one thread; %u rows, median of %u; %s", facts.rows, facts.repetitions, facts.processor.c_str());
    for (const contestant& contestant : contestants) {
        if (contestant.peer) {
            std::printf(", %s %s", contestant.name.c_str(), contestant.version.c_str());
        }
    }
    std::printf(". bifun by rows per batch.\n\n| expression |");
    std::string line = "|---|";
    for (const contestant& contestant : contestants) {
        std::printf(" %s |", contestant.name.c_str());
        line += "--:|";
    }
    for (const contestant& contestant : contestants) {
        if (contestant.peer) {
            std::printf(" %s / bifun |", contestant.name.c_str());
            line += "--:|";
        }
    }
    std::printf("\n%s\n", line.c_str());
}

void print_row(const run_facts& facts, const std::vector<contestant>& contestants, const bench_case& bench_case,
               const std::vector<timing>& timings) {
    std::printf("| %s |", std::string(bench_case.name).c_str());
    std::vector<double> nanoseconds;
    for (const timing& timing : timings) {
        nanoseconds.push_back(timing.measured.empty() ? std::nan("") : median(costs(timing, facts)));
        std::printf(timing.measured.empty() ? " - |" : " %.2f |", nanoseconds.back());
    }
    for (std::size_t i = 0; i < timings.size(); ++i) {
        if (contestants[i].peer) {
            std::printf(timings[i].measured.empty() ? " - |" : " %.1f |", nanoseconds[i] / nanoseconds[0]);
        }
    }
    std::printf("\n");
    std::fflush(stdout);
}

void print_raw(const run_facts& facts, const std::vector<contestant>& contestants, const bench_case& bench_case,
               const std::vector<timing>& timings) {
    for (std::size_t i = 0; i < timings.size(); ++i) {
        const auto& [measured, baseline, value] = timings[i];
        if (measured.empty()) {
            continue;
        }
        std::fprintf(stderr, "%-34s %-14s measured %8.3f least %8.3f, baseline %8.3f least %8.3f ns per row; result %s\n",
                     std::string(bench_case.name).c_str(), contestants[i].name.c_str(), median(measured) * 1e9 / facts.rows,
                     *std::ranges::min_element(measured) * 1e9 / facts.rows, median(baseline) * 1e9 / facts.rows,
                     *std::ranges::min_element(baseline) * 1e9 / facts.rows, value.c_str());
    }
}

void write_json(const std::string& path, const run_facts& facts, const std::vector<contestant>& contestants,
                const std::vector<figures_of_case>& cases) {
    std::ofstream file(path);
    file << "{\"rows\": " << facts.rows << ", \"repetitions\": " << facts.repetitions << ", \"processor\": " << quoted(facts.processor)
         << ", \"peers\": {";
    const char* between = "";
    for (const contestant& contestant : contestants) {
        if (contestant.peer) {
            file << between << quoted(contestant.name) << ": " << quoted(contestant.version);
            between = ", ";
        }
    }
    file << "},\n\"cases\": [" << std::fixed << std::setprecision(3);
    between = "\n";
    for (const figures_of_case& figures : cases) {
        file << between << "{\"name\": " << quoted(figures.of->name) << ", \"symbol\": " << quoted(figures.of->symbol);
        for (std::size_t i = 0; i < contestants.size(); ++i) {
            file << ", " << quoted(contestants[i].name) << ": [";
            const char* comma = "";
            for (const double cost : costs(figures.timings[i], facts)) {
                file << comma << cost;
                comma = ", ";
            }
            file << ']';
        }
        file << '}';
        between = ",\n";
    }
    file << "\n]}\n";
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
}

} // namespace bifun::peers
