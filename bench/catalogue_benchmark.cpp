// Every entry point of the catalogue over generated columns: time per row. Benchmarks are named symbol/path:
//
//     no_nulls             dense columns without NULLs
//     nulls10              dense columns, 10 % NULLs in each
//     selection            columns without NULLs behind selection vectors that take every other row or so, in order
//     selection_nulls10    the same with 10 % NULLs
//     setters              no_nulls for an engine that announces nothing of itself: every result goes through its setter, every decimal,
//                          datetime and character through its operations
//
// The options are Google Benchmark's, and --rows_per_call=N (default 1024, at most 32768). A small batch repeated would train the branch
// predictor on its values, so the calls walk through 131,072 distinct rows.

#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "bench/bench_data.h"
#include "embedded/session/environment.h"
#include "engine/charset.h"
#include "engine/memory.h"
#include "engine/statements.h"

namespace {

using namespace bifun;
using namespace bifun::bench;

constexpr std::uint32_t pool_rows = 131072;
constexpr std::uint32_t most_rows_per_call = 32768; // a selection vector reaches over twice as many

std::uint32_t rows_per_call = 1024;

[[noreturn]] void fail(const std::string& message) {
    std::fprintf(stderr, "bifun_bench: %s\n", message.c_str());
    std::exit(EXIT_FAILURE);
}

struct path {
    const char* name;
    bool nulls;
    bool selection;
    bool setters;
};

constexpr path paths[] = {
    {"no_nulls", false, false, false},        {"nulls10", true, false, false}, {"selection", false, true, false},
    {"selection_nulls10", true, true, false}, {"setters", false, false, true},
};

// ---- argument columns, made when the first benchmark wants them ----

using pool_key = std::tuple<value_type, double, double, std::string_view, value_form, std::size_t, bool>;

const zqengine::column_storage& pool(value_type type, const typical_values& values, std::size_t position, bool nulls) {
    static std::map<pool_key, zqengine::column_pointer> pools;
    zqengine::column_pointer& column = pools[{type, values.low, values.high, values.letters, values.form, position, nulls}];
    if (column == nullptr) {
        column.reset(zqengine::create_column(type, pool_rows));
        if (column == nullptr || !fill_column(*column, values, position + 1, pool_rows)) {
            fail("out of memory");
        }
        if (nulls) {
            make_nulls(*column, position + 100, pool_rows);
        }
    }
    return *column;
}

// One row of every two next to each other, which of them by chance.
std::vector<std::uint16_t> make_selection(std::size_t position) {
    std::vector<std::uint16_t> selection(most_rows_per_call);
    for (std::size_t k = 0; k < selection.size(); ++k) {
        selection[k] = static_cast<std::uint16_t>(2 * k + (random_at(position + 200, k) & 1));
    }
    return selection;
}

const std::uint16_t* selection_of(std::size_t position) {
    static const std::vector<std::uint16_t> selections[most_arguments] = {make_selection(0), make_selection(1), make_selection(2),
                                                                          make_selection(3), make_selection(4)};
    return selections[position].data();
}

// ---- one argument as the calls see it ----

struct argument_source {
    argument_kind kind;
    constant_record constant;
    const zqengine::column_storage* column;
    bifun_column_data data; // the column's from the current batch on
    bifun_column view;
};

void move_to_row(argument_source& source, std::uint32_t row) {
    if (source.kind == argument_kind::column) {
        source.data = source.column->data;
        source.data.null_flags += row;
        source.data.values = static_cast<std::uint8_t*>(source.data.values) + value_width(source.column->type) * row;
    }
}

// What the engine says of itself, all of it or nothing.
void announce(bool open) { zq_engine_statements.size = open ? std::uint32_t{sizeof zq_engine_statements} : 0; }

void run(benchmark::State& state, const entry_point& entry, void* function, const path& path) {
    argument_source sources[most_arguments] = {};
    const void* arguments[most_arguments] = {};
    for (std::size_t i = 0; i < entry.argument_count; ++i) {
        const auto [kind, type] = entry.argument_list[i];
        const typical_values values = values_of_argument(entry, i);
        argument_source& source = sources[i];
        source.kind = kind;
        if (kind == argument_kind::constant) {
            source.constant = make_constant(type, values.constant);
            arguments[i] = record_address(source.constant);
        } else {
            source.column = &pool(type, values, i, path.nulls);
            source.view = {source.column->column.no_nulls, path.selection ? selection_of(i) : nullptr, &source.data};
            arguments[i] = &source.view;
        }
    }
    bifun_environment environment{};
    bifun_memory_object* const memory = rt_memobj_create_ex(&environment, 0, 4096, __FILE__, __LINE__);
    const zqengine::column_pointer result(zqengine::create_column(entry.result, rows_per_call));
    if (memory == nullptr || result == nullptr) {
        fail("out of memory");
    }
    announce(!path.setters);

    const std::uint32_t rows_read = path.selection ? 2 * rows_per_call : rows_per_call;
    std::uint32_t row = 0;
    std::int32_t status = BIFUN_OK;
    for (auto _ : state) {
        for (std::size_t i = 0; i < entry.argument_count; ++i) {
            move_to_row(sources[i], row);
        }
        if (is_string(entry.result)) {
            zqengine::clear_column(*result);
        }
        status = std::min(status, entry.invoke(function, &environment, memory, arguments, &result->column, rows_per_call));
        row += rows_read;
        row = row + rows_read > pool_rows ? 0 : row;
    }
    if (status != BIFUN_OK) {
        state.SkipWithError(("status " + std::to_string(status) + ": give the arguments typical values in the catalogue").c_str());
    }
    // Printed with its unit: ps or ns.
    state.counters["time_per_row"] = benchmark::Counter(static_cast<double>(state.iterations()) * rows_per_call,
                                                        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    announce(true);
    rt_memobj_destroy(&environment, memory);
}

void* symbol_of(void* library, const char* name) {
    void* const symbol = dlsym(library, name);
    if (symbol == nullptr) {
        fail(dlerror());
    }
    return symbol;
}

// Takes --rows_per_call out of the command line.
void read_rows_per_call(int& count, char** options) {
    constexpr std::string_view name = "--rows_per_call=";
    int kept = 0;
    for (int i = 0; i < count; ++i) {
        const std::string_view option = options[i];
        if (!option.starts_with(name)) {
            options[kept++] = options[i];
            continue;
        }
        const std::string_view text = option.substr(name.size());
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rows_per_call);
        if (error != std::errc{} || end != text.data() + text.size() || rows_per_call == 0 || rows_per_call > most_rows_per_call) {
            fail("--rows_per_call takes a number from 1 to " + std::to_string(most_rows_per_call));
        }
    }
    count = kept;
}

} // namespace

int main(int argc, char** argv) {
    read_rows_per_call(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return EXIT_FAILURE;
    }
    void* const library = dlopen(BIFUN_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        fail(dlerror());
    }
    reinterpret_cast<decltype(&bifun_dll_var_init)>(symbol_of(library, "bifun_dll_var_init"))(1, ZQ_CHARSET_UTF8, 1);
    for (const entry_point& entry : entry_points) {
        void* const function = symbol_of(library, entry.symbol);
        for (const path& path : paths) {
            benchmark::RegisterBenchmark((std::string(entry.symbol) + "/" + path.name).c_str(),
                                         [&entry, function, &path](benchmark::State& state) { run(state, entry, function, path); });
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}
