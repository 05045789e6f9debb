// SPDX-License-Identifier: Apache-2.0
// bifun's side of the comparison: what an executor does to evaluate one expression over the table.
#ifndef BIFUN_BENCH_PEERS_BIFUN_RUN_H
#define BIFUN_BENCH_PEERS_BIFUN_RUN_H

#include <cstdint>
#include <string>

#include "bench/peers/cases.h"
#include "bench/peers/measurement.h"
#include "bench/peers/table.h"
#include "embedded/session/environment.h"

namespace bifun::peers {

struct bifun_library {
    void* handle;
    bifun_environment environment;
    bifun_memory_object* memory;
};

// Throw std::runtime_error with what is wrong.
bifun_library load_bifun(const char* path);

// A copy in memory of the same library, which uses this instruction set where the processor has it, whatever the others use.
bifun_library load_bifun_copy(const char* path, const char* instruction_set);

void unload_bifun(bifun_library& library);

enum class part : std::uint8_t { measured, baseline };

// Walks the table in batches of `batch_rows`, at most 65,536. Measured: evaluates the argument's condition if there is one, calls the
// entry point and aggregates its result column. Baseline: aggregates the column `like_result` instead. Both read every value of every
// column that the case reads once. Columns are not copied: a batch is a view into the table.
measurement run_bifun(bifun_library& library, const table& table, const bench_case& bench_case, std::uint32_t batch_rows, part part);

// What sample_query asks the peers for.
std::string sample_bifun(bifun_library& library, const table& table, const bench_case& bench_case, std::uint32_t rows);

} // namespace bifun::peers

#endif
