// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/bifun_run.h"

#include <dlfcn.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <span>
#include <stdexcept>
#include <string_view>

#include "bench/bench_data.h"
#include "bench/catalogue_calls.h"
#include "bench/peers/sql.h"
#include "bop/frame/batch.h"
#include "embedded/session/parameters.h"
#include "engine/decimal.h"
#include "engine/memory.h"
#include "engine/session.h"
#include "layouts/datetime_layout.h"
#include "layouts/decimal_layout.h"

namespace bifun::peers {
namespace {

void* symbol_of(void* library, const char* name) {
    void* const symbol = dlsym(library, name);
    if (symbol == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return symbol;
}

// The loops of the executor that the peers have in vectors are built for the machine's vectors, too.
#if defined(__x86_64__) && !defined(__clang__)
#define FOR_EVERY_MACHINE __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define FOR_EVERY_MACHINE
#endif

// ---- aggregates: those of the queries for the peers -----------------------------------------------------------------

using lanes = std::array<double, 8>;

struct aggregates {
    std::uint64_t bits = 0;         // BIGINT: exclusive or of all values
    lanes sums{};                   // DOUBLE: in as many sums
    std::uint64_t length = 0;       // strings: bytes with trailing blanks; binary values: digits of their hexadecimal text
    const void* greatest = nullptr; // DECIMAL, DATETIME: in `kept`
    std::array<std::uint8_t, 30> kept{};
    std::uint64_t touched = 0; // keeps the reading of the other columns alive
};

template <class T, class Add> void for_present(const bifun_column& column, std::uint32_t row_count, Add add) {
    const auto* const values = static_cast<const T*>(column.data->values);
    if (column.no_nulls != 0) {
        for (std::uint32_t k = 0; k < row_count; ++k) {
            add(values[k], k);
        }
        return;
    }
    for (std::uint32_t k = 0; k < row_count; ++k) {
        if (column.data->null_flags[k] != 0) {
            add(values[k], k);
        }
    }
}

// In vectors, as the peers do: a loop that branches at each NULL would cost more than most functions that give one.
template <class Value> void add_in_lanes(lanes& sums, std::uint32_t row_count, const Value& value) {
    lanes added = sums;
    std::uint32_t k = 0;
    for (; k + added.size() <= row_count; k += added.size()) {
        for (std::uint32_t lane = 0; lane < added.size(); ++lane) {
            added[lane] += value(k + lane);
        }
    }
    for (; k < row_count; ++k) {
        added[k % added.size()] += value(k);
    }
    sums = added;
}

void add_doubles(lanes& sums, const bifun_column& column, std::uint32_t row_count) {
    const auto* const values = static_cast<const double*>(column.data->values);
    const std::uint8_t* const flags = column.data->null_flags;
    if (column.no_nulls != 0) {
        add_in_lanes(sums, row_count, [values](std::uint32_t k) { return values[k]; });
    } else {
        add_in_lanes(sums, row_count, [values, flags](std::uint32_t k) { return flags[k] != 0 ? values[k] : 0.0; });
    }
}

template <class T, class Greater>
void keep_greatest(aggregates& total, const bifun_column& column, std::uint32_t row_count, Greater greater) {
    T kept;
    std::memcpy(&kept, total.kept.data(), sizeof kept);
    bool any = total.greatest != nullptr;
    for_present<T>(column, row_count, [&](const T& value, std::uint32_t) {
        if (!any || greater(value, kept)) {
            kept = value;
            any = true;
        }
    });
    std::memcpy(total.kept.data(), &kept, sizeof kept);
    total.greatest = any ? total.kept.data() : nullptr;
}

// Of values without zones. Not by the engine's operation: a call for every row would be a part of every baseline.
bool is_later(const zqtime& a, const zqtime& b) {
    const datetime_layout::datetime_words first = datetime_layout::load_datetime(a);
    const datetime_layout::datetime_words second = datetime_layout::load_datetime(b);
    return first.civil != second.civil ? first.civil > second.civil : first.fraction_and_zone > second.fraction_and_zone;
}

FOR_EVERY_MACHINE [[gnu::flatten]] void add_column(aggregates& total, value_type type, const bifun_column& column,
                                                   std::uint32_t row_count) {
    switch (type) {
    case value_type::BOOL:
    case value_type::INT:
        for_present<std::int32_t>(column, row_count,
                                  [&](std::int32_t value, std::uint32_t) { total.bits ^= static_cast<std::uint64_t>(value); });
        break;
    case value_type::BIGINT: {
        std::uint64_t bits = total.bits;
        for_present<std::uint64_t>(column, row_count, [&](std::uint64_t value, std::uint32_t) { bits ^= value; });
        total.bits = bits;
        break;
    }
    case value_type::DOUBLE:
        add_doubles(total.sums, column, row_count);
        break;
    case value_type::DECIMAL: // the values of a column have one scale
        keep_greatest<xdec>(total, column, row_count, [](const xdec& a, const xdec& b) { return decimal_layout::is_less(b, a); });
        break;
    case value_type::DATETIME:
        keep_greatest<zqtime>(total, column, row_count, [](const zqtime& a, const zqtime& b) { return is_later(a, b); });
        break;
    case value_type::VARCHAR:
    case value_type::VARBINARY: {
        std::uint64_t length = 0;
        for_present<bifun_string>(column, row_count,
                                  [&](const bifun_string& value, std::uint32_t) { length += value.length + value.trailing_blanks; });
        total.length += type == value_type::VARBINARY ? 2 * length : length;
        break;
    }
    case value_type::INTERVAL_YM:
    case value_type::INTERVAL_DT:
    case value_type::BLOB:
        throw std::runtime_error("no aggregate of intervals and large objects");
    }
}

std::string text_of(const xdec& value) {
    std::array<char, 256> text{};
    std::uint32_t length = 0;
    if (xdec_to_char_with_zero(&value, text.data(), text.size(), 0, 0, &length) != 0) {
        throw std::runtime_error("no decimal to print");
    }
    return {text.data(), length};
}

std::string text_of(const aggregates& total, value_type type) {
    switch (type) {
    case value_type::DOUBLE: {
        double sum = 0;
        for (const double lane : total.sums) {
            sum += lane;
        }
        return std::to_string(sum);
    }
    case value_type::DECIMAL: {
        xdec value;
        std::memcpy(&value, total.kept.data(), sizeof value);
        return text_of(value);
    }
    case value_type::DATETIME: {
        zqtime value;
        std::memcpy(&value, total.kept.data(), sizeof value);
        return std::to_string(unix_microseconds(value));
    }
    case value_type::VARCHAR:
    case value_type::VARBINARY:
        return std::to_string(total.length);
    default:
        return std::to_string(static_cast<std::int64_t>(total.bits));
    }
}

std::string hexadecimal_text(const bifun_string& value) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t byte : std::span(value.data, value.length)) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

std::string value_text(const zqengine::column_storage& column, std::uint32_t row) {
    if (column.column.no_nulls == 0 && column.data.null_flags[row] == 0) {
        return "NULL";
    }
    switch (column.type) {
    case value_type::BIGINT:
        return std::to_string(zqengine::values_of<std::int64_t>(column)[row]);
    case value_type::DOUBLE: {
        std::array<char, 64> text{};
        (void)std::snprintf(text.data(), text.size(), "%.17g", zqengine::values_of<double>(column)[row]);
        return text.data();
    }
    case value_type::DECIMAL:
        return text_of(zqengine::values_of<xdec>(column)[row]);
    case value_type::DATETIME:
        return std::to_string(unix_microseconds(zqengine::values_of<zqtime>(column)[row]));
    case value_type::VARCHAR:
        return text_with_blanks(zqengine::values_of<bifun_string>(column)[row]);
    case value_type::VARBINARY:
        return hexadecimal_text(zqengine::values_of<bifun_string>(column)[row]);
    default:
        return std::to_string(zqengine::values_of<std::int32_t>(column)[row]);
    }
}

std::uint64_t words_of(const void* memory, std::size_t bytes) {
    std::uint64_t seen = 0;
    for (std::size_t at = 0; at + sizeof seen <= bytes; at += sizeof seen) {
        std::uint64_t word;
        std::memcpy(&word, static_cast<const std::uint8_t*>(memory) + at, sizeof word);
        seen ^= word;
    }
    return seen;
}

// Reads a column as words, with its null flags where there are NULLs: so do the aggregates of the peers.
FOR_EVERY_MACHINE void touch(aggregates& total, value_type type, const bifun_column& column, std::uint32_t row_count) {
    std::uint64_t seen = words_of(column.data->values, value_width(type) * row_count);
    if (column.no_nulls == 0) {
        seen ^= words_of(column.data->null_flags, row_count);
    }
    total.touched ^= seen;
}

// ---- batches -----------------------------------------------------------------------------------------------------------

// A column of the table from some row on.
struct view {
    const zqengine::column_storage* storage;
    bifun_column_data data;
    bifun_column column;
};

void move_to_row(view& view, std::uint32_t row) {
    view.data = view.storage->data;
    view.data.null_flags += row;
    view.data.values = static_cast<std::uint8_t*>(view.data.values) + value_width(view.storage->type) * row;
    view.column = {view.storage->column.no_nulls, nullptr, &view.data};
}

// The host's comparison.
FOR_EVERY_MACHINE void evaluate_positive(std::int32_t* __restrict conditions, const double* __restrict values, std::uint32_t row_count) {
    for (std::uint32_t k = 0; k < row_count; ++k) {
        conditions[k] = values[k] > 0 ? 1 : 0;
    }
}

zqengine::column_pointer make_column(value_type type, std::uint32_t capacity) {
    zqengine::column_pointer column(zqengine::create_column(type, capacity));
    if (column == nullptr) {
        throw std::runtime_error("out of memory");
    }
    column->column.no_nulls = 1;
    std::memset(column->data.null_flags, 1, capacity);
    return column;
}

const entry_point& entry_named(std::string_view symbol) {
    const auto* const found = std::ranges::find_if(entry_points, [&](const entry_point& entry) { return entry.symbol == symbol; });
    if (found == std::ranges::end(entry_points)) {
        throw std::runtime_error("not in the catalogue: " + std::string(symbol));
    }
    return *found;
}

// ---- one expression ----------------------------------------------------------------------------------------------------

struct expression {
    const entry_point* entry;
    void* function;
    std::vector<view> views; // of the columns that are read; `like_result` is the last or one of the others
    const view* like_result;
    const view* condition_of; // the column that a condition is about, or null
    std::array<bench::constant_record, most_arguments> constants;
    std::array<const void*, most_arguments> arguments;
    zqengine::column_pointer conditions;
    zqengine::column_pointer result;
};

std::unique_ptr<expression> prepare(const bifun_library& library, const table& table, const bench_case& bench_case,
                                    std::uint32_t batch_rows) {
    auto made = std::make_unique<expression>();
    made->entry = &entry_named(bench_case.symbol);
    made->function = symbol_of(library.handle, bench_case.symbol);
    if (bench_case.arguments.size() != made->entry->argument_count) {
        throw std::runtime_error(std::string(bench_case.symbol) + " does not take the arguments of " + std::string(bench_case.name));
    }
    const std::vector<std::string_view> names = columns_read(bench_case);
    made->views.resize(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        made->views[i].storage = column_of(table, names[i]).storage.get();
    }
    const auto view_of = [&](std::string_view name) -> const view& {
        return made->views[static_cast<std::size_t>(std::ranges::find(names, name) - names.begin())];
    };
    made->like_result = &view_of(bench_case.like_result);
    made->conditions = make_column(value_type::BOOL, batch_rows);
    for (std::size_t i = 0; i < made->entry->argument_count; ++i) {
        const case_argument& argument = bench_case.arguments[i];
        switch (argument.source) {
        case argument_source::column:
            made->arguments[i] = &view_of(argument.text).column;
            break;
        case argument_source::constant:
            made->constants[i] = bench::make_constant(made->entry->argument_list[i].type, argument.text);
            made->arguments[i] = bench::record_address(made->constants[i]);
            break;
        case argument_source::positive:
            made->condition_of = &view_of(argument.text);
            made->arguments[i] = &made->conditions->column;
            break;
        }
    }
    made->result = make_column(made->entry->result, batch_rows);
    return made;
}

// Of the rows that the views stand at.
void evaluate(bifun_library& library, expression& expression, std::uint32_t rows) {
    if (expression.condition_of != nullptr) {
        evaluate_positive(zqengine::values_of<std::int32_t>(*expression.conditions),
                          static_cast<const double*>(expression.condition_of->data.values), rows);
    }
    const entry_point& entry = *expression.entry;
    if (is_string(entry.result)) {
        zqengine::clear_column(*expression.result);
    }
    const std::int32_t status = entry.invoke(expression.function, &library.environment, library.memory, expression.arguments.data(),
                                             &expression.result->column, rows);
    if (status != BIFUN_OK) {
        throw std::runtime_error(std::string(entry.symbol) + " returned " + std::to_string(status));
    }
}

} // namespace

bifun_library load_bifun(const char* path) {
    void* const handle = bench::open_library(path);
    // ClickHouse's texts of timestamps have six digits of the fraction.
    if (zqengine::set_parameter(INI_SHOW_FRACTION, 1) != BIFUN_OK) {
        throw std::runtime_error("no fraction in texts of timestamps");
    }
    bifun_library library{handle, {}, nullptr};
    library.memory = rt_memobj_create_ex(&library.environment, 0, 4096, __FILE__, __LINE__);
    if (library.memory == nullptr) {
        throw std::runtime_error("out of memory");
    }
    return library;
}

bifun_library load_bifun_copy(const char* path, const char* instruction_set) {
    // The file stays open: of two files under the same name the loader would take the second one for the first.
    const int file = memfd_create("libbifun.so", MFD_CLOEXEC);
    const std::string name = "/proc/self/fd/" + std::to_string(file);
    std::ofstream(name, std::ios::binary) << std::ifstream(path, std::ios::binary).rdbuf();
    bifun_library library = load_bifun(name.c_str());
    // The library chooses when it is called for the first time.
    setenv("BIFUN_INSTRUCTION_SET", instruction_set, 1);
    const entry_point& any = entry_points[0];
    (void)bench::call_at(*bench::prepare_call(any, bench::call_paths[0], 1), symbol_of(library.handle, any.symbol), 0);
    unsetenv("BIFUN_INSTRUCTION_SET");
    return library;
}

void unload_bifun(bifun_library& library) {
    rt_memobj_destroy(&library.environment, library.memory);
    dlclose(library.handle);
}

measurement run_bifun(bifun_library& library, const table& table, const bench_case& bench_case, std::uint32_t batch_rows, part part) {
    const std::unique_ptr<expression> expression = prepare(library, table, bench_case, batch_rows);
    const value_type type = expression->entry->result;
    aggregates total;
    const double start = processor_seconds();
    for (std::uint32_t row = 0; row < table.row_count; row += batch_rows) {
        const std::uint32_t rows = std::min(batch_rows, table.row_count - row);
        for (view& view : expression->views) {
            move_to_row(view, row);
        }
        if (part == part::measured) {
            evaluate(library, *expression, rows);
        }
        for (const view& view : expression->views) {
            touch(total, view.storage->type, view.column, rows);
        }
        add_column(total, type, part == part::measured ? expression->result->column : expression->like_result->column, rows);
    }
    const double elapsed = processor_seconds() - start;
    asm volatile("" : : "r"(total.touched)); // the compiler must not leave the reading out
    return {elapsed, text_of(total, type)};
}

std::string sample_bifun(bifun_library& library, const table& table, const bench_case& bench_case, std::uint32_t rows) {
    const std::unique_ptr<expression> expression = prepare(library, table, bench_case, rows);
    for (view& view : expression->views) {
        move_to_row(view, 0);
    }
    evaluate(library, *expression, rows);
    std::string text;
    for (std::uint32_t row = 0; row < rows; ++row) {
        text += value_text(*expression->result, row);
        text += row + 1 < rows ? std::string(1, separator) : "";
    }
    return text;
}

} // namespace bifun::peers
