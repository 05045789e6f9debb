// SPDX-License-Identifier: Apache-2.0
// Calls of the entry points of the catalogue over generated columns: what the benchmarks measure.
#ifndef BIFUN_BENCH_CATALOGUE_CALLS_H
#define BIFUN_BENCH_CATALOGUE_CALLS_H

#include <cstdint>
#include <memory>

#include "bench/bench_data.h"
#include "bop/frame/catalogue.h"
#include "embedded/columns/column_storage.h"
#include "embedded/session/environment.h"

namespace bifun::bench {

// How an entry point is called.
struct call_path {
    const char* name;
    bool nulls;     // 10 % of each column
    bool selection; // columns behind selection vectors that take every other row or so, in order
    bool setters;   // the engine announces nothing of itself: every result goes through its setter, every decimal, datetime and character
                    // through its operations
};

inline constexpr call_path call_paths[] = {
    {"no_nulls", false, false, false},        {"nulls10", true, false, false}, {"selection", false, true, false},
    {"selection_nulls10", true, true, false}, {"setters", false, false, true},
};

// A small batch repeated would train the branch predictor on its values: calls walk through as many distinct rows.
constexpr std::uint32_t generated_rows = 131072;
constexpr std::uint32_t most_rows_per_call = 32768; // a selection vector reaches over twice as many
constexpr std::uint32_t usual_rows_per_call = 1024;

// One argument as the calls see it.
struct call_argument {
    constant_record constant;
    const zqengine::column_storage* column; // null: it is the constant
    bifun_column_data data;                 // the column's from the batch's first row on
    bifun_column view;
};

struct memory_object_deleter {
    bifun_environment* environment;
    void operator()(bifun_memory_object* memory) const;
};

// What a call of an entry point needs. Not moved: `pointers` and `memory` point into it.
struct prepared_call {
    const entry_point* entry;
    const call_path* path;
    std::uint32_t rows_per_call;
    std::uint32_t rows_read; // by one call, of the generated ones
    call_argument arguments[most_arguments];
    const void* pointers[most_arguments];
    bifun_environment environment;
    std::unique_ptr<bifun_memory_object, memory_object_deleter> memory;
    zqengine::column_pointer result;
};

// Columns are generated once and kept, for all calls that need the same. Throws std::runtime_error when memory is exhausted.
std::unique_ptr<prepared_call> prepare_call(const entry_point& entry, const call_path& path, std::uint32_t rows_per_call);

// Calls `function`, the entry point in some library, for the rows from `row` on, at most generated_rows - rows_read. Returns its status;
// the result is in `result` until the next call.
std::int32_t call_at(prepared_call& call, void* function, std::uint32_t row);

// The row at which the next call begins, back at the first one where too few are left.
inline std::uint32_t next_row(const prepared_call& call, std::uint32_t row) {
    const std::uint32_t next = row + call.rows_read;
    return next + call.rows_read > generated_rows ? 0 : next;
}

// Loads a build of the library, initialised, beside the others that the process has. Throws std::runtime_error with what is wrong.
void* open_library(const char* path);

// Null where the library does not have it.
void* function_of(void* library, const entry_point& entry);

// Throws std::runtime_error where the text is no number from 1 to most_rows_per_call.
std::uint32_t parse_rows_per_call(std::string_view text);

} // namespace bifun::bench

#endif
