// SPDX-License-Identifier: Apache-2.0
// What a run found, and how it is written down.
#ifndef BIFUN_BENCH_PEERS_FIGURES_H
#define BIFUN_BENCH_PEERS_FIGURES_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "bench/peers/bifun_run.h"
#include "bench/peers/cases.h"
#include "bench/peers/measurement.h"
#include "bench/peers/sql.h"

namespace bifun::peers {

// One engine in one configuration.
struct contestant {
    std::string name;
    std::function<measurement(const bench_case&, part)> run;
    std::optional<dialect> peer = std::nullopt;                     // unless it is bifun
    std::function<std::string(const bench_case&)> sample = nullptr; // the values in the first rows
    std::string version = {};                                       // of a peer
};

inline bool takes_part(const contestant& contestant, const bench_case& bench_case) {
    return !contestant.peer || !expression_of(bench_case, *contestant.peer).empty();
}

// Of one contestant for one case. Empty where it does not take part.
struct timing {
    std::vector<double> measured; // seconds, one for every repetition
    std::vector<double> baseline;
    std::string value;
};

// What was measured, on what.
struct run_facts {
    std::uint32_t rows;
    std::uint32_t repetitions;
    std::string processor;
};

// A Markdown table on stdout: medians in ns per row, and how many times bifun, the first contestant, the peers take.
void print_head(const run_facts& facts, const std::vector<contestant>& contestants);
void print_row(const run_facts& facts, const std::vector<contestant>& contestants, const bench_case& bench_case,
               const std::vector<timing>& timings);

// The two times that are subtracted, on stderr.
void print_raw(const run_facts& facts, const std::vector<contestant>& contestants, const bench_case& bench_case,
               const std::vector<timing>& timings);

struct figures_of_case {
    const bench_case* of;
    std::vector<timing> timings;
};

// The same for programs, with the figures of all repetitions: as JSON, a case in each line. Throws std::runtime_error where the file cannot
// be written.
void write_json(const std::string& path, const run_facts& facts, const std::vector<contestant>& contestants,
                const std::vector<figures_of_case>& cases);

} // namespace bifun::peers

#endif
