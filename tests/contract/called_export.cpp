// SPDX-License-Identifier: Apache-2.0
#include "tests/contract/called_export.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"
#include "engine/columns.h"
#include "engine/memory.h"
#include "engine/statements.h"

namespace contract {
namespace {

constexpr std::uint32_t guard_rows = 64;

void append(std::string& image, const void* bytes, std::size_t size) { image.append(static_cast<const char*>(bytes), size); }

// Every byte of the rows that a call may read.
std::string image_of(const call_argument& argument, std::uint32_t row_count) {
    std::string image;
    if (argument.constant != nullptr) {
        append(image, argument.constant->record, sizeof argument.constant->record);
        append(image, argument.constant->bytes.get(), argument.constant->length);
        return image;
    }
    const zqengine::column_storage& column = *argument.column;
    const std::size_t width = bifun::value_width(column.type);
    const std::uint8_t* const flags = column.data.null_flags + argument.first_row;
    const std::uint8_t* const values = zqengine::values_of<std::uint8_t>(column) + argument.first_row * width;
    if (argument.selection.empty()) {
        append(image, flags, row_count);
        append(image, values, row_count * width);
    } else {
        append(image, argument.selection.data(), argument.selection.size_bytes());
        for (std::uint32_t k = 0; k < row_count; ++k) {
            append(image, flags + argument.selection[k], 1);
            append(image, values + argument.selection[k] * width, width);
        }
    }
    for (std::uint32_t k = 0; bifun::is_string(column.type) && k < row_count; ++k) {
        const std::uint32_t row = argument.selection.empty() ? k : argument.selection[k];
        if (flags[row] != 0) {
            bifun_string value;
            std::memcpy(&value, values + row * width, sizeof value);
            append(image, value.data, value.length);
        }
    }
    return image;
}

// A memory object that asks the engine for every allocation, but hands out bytes of its own: tools see what is written beside them.
struct watched_memory {
    explicit watched_memory(bifun_memory_object* engine, bool has_release)
        : record{{}, allocate, has_release ? release : nullptr, nullptr, this}, engine(engine) {}

    static void* allocate(bifun_environment* environment, void* heap, std::uint32_t size, const char* file, std::uint32_t line) {
        auto& memory = *static_cast<watched_memory*>(heap);
        EXPECT_GT(size, 0U) << "some heaps have no memory of no bytes";
        if (void* const promised = memory.engine->allocate(environment, memory.engine->heap, size, file, line)) {
            auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(size);
            std::memset(bytes.get(), unwritten, size);
            void* const taken = bytes.get();
            memory.taken[taken] = {std::move(bytes), promised};
            return taken;
        }
        return nullptr;
    }
    static void release(bifun_environment* environment, void* heap, void* pointer) {
        auto& memory = *static_cast<watched_memory*>(heap);
        const auto found = memory.taken.find(pointer);
        if (pointer != nullptr && found == memory.taken.end()) {
            ADD_FAILURE() << "what has not been allocated is released";
        } else if (pointer != nullptr) {
            memory.engine->release(environment, memory.engine->heap, found->second.second);
            memory.taken.erase(found);
        }
    }

    bifun_memory_object record;
    bifun_memory_object* engine;
    std::map<void*, std::pair<std::unique_ptr<std::uint8_t[]>, void*>> taken;
};

// Copies of the strings of a call's arguments.
struct short_lived_strings {
    std::vector<std::unique_ptr<std::uint8_t[]>> bytes;
    std::vector<std::unique_ptr<bifun_string[]>> columns;
    std::vector<std::unique_ptr<bifun_string_constant>> constants;

    std::uint8_t* copy(const std::uint8_t* from, std::uint32_t length) {
        bytes.push_back(std::make_unique_for_overwrite<std::uint8_t[]>(length));
        std::copy_n(from, length, bytes.back().get());
        return bytes.back().get();
    }
    void* copy(const bifun_column& column, std::uint32_t row_count) {
        const auto* const values = static_cast<const bifun_string*>(column.data->values);
        const std::uint32_t last =
            column.selection == nullptr ? row_count : 1U + *std::max_element(column.selection, column.selection + row_count);
        columns.push_back(std::make_unique_for_overwrite<bifun_string[]>(last));
        for (std::uint32_t row = 0; row < last; ++row) {
            bifun_string& value = columns.back()[row] = values[row];
            value.data = column.data->null_flags[row] != 0 ? copy(value.data, value.length) : value.data;
        }
        return columns.back().get();
    }
    const void* copy(const bifun_string_constant& constant) {
        constants.push_back(std::make_unique<bifun_string_constant>(constant));
        if (constant.not_null != 0 && constant.length > BIFUN_INLINE_LENGTH) {
            constants.back()->data = copy(constant.data, constant.length);
        }
        return constants.back().get();
    }
};

bool is_unwritten(const void* bytes, std::size_t size) {
    const auto* const begin = static_cast<const std::uint8_t*>(bytes);
    return std::all_of(begin, begin + size, [](std::uint8_t byte) { return byte == unwritten; });
}

// Whether the bytes of the batch's strings are safe from the next assignment, which takes the free ones.
bool free_bytes_lie_apart(const outcome& outcome) {
    const auto& free = *static_cast<const bdta3_free_bytes*>(outcome.result->data.engine_header[1]);
    bool apart = true;
    for (std::uint32_t row = 0; row < outcome.row_count; ++row) {
        if (outcome.flag(row) == 1 && outcome.holds_value(row)) {
            const bifun_string& value = zqengine::values_of<bifun_string>(*outcome.result)[row];
            apart &= value.data + value.length <= free.top || value.data >= free.end;
        }
    }
    return apart;
}

void check_invariants(const bifun::entry_point& entry, const outcome& outcome) {
    const zqengine::column_storage& result = *outcome.result;
    const std::size_t width = bifun::value_width(result.type);
    EXPECT_TRUE(is_unwritten(result.data.null_flags + outcome.row_count, guard_rows)) << "flags behind the batch are written";
    EXPECT_TRUE(is_unwritten(zqengine::values_of<std::uint8_t>(result) + outcome.row_count * width, guard_rows * width))
        << "values behind the batch are written";
    EXPECT_TRUE(!bifun::is_string(result.type) || free_bytes_lie_apart(outcome)) << entry.symbol << " leaves bytes of its results free";
    const std::span flags(result.data.null_flags, outcome.row_count);
    if (outcome.status == 0) {
        EXPECT_TRUE(std::ranges::all_of(flags, [](std::uint8_t flag) { return flag <= 1; })) << "a flag is neither 0 nor 1";
        EXPECT_TRUE(outcome.no_nulls() == 0 || std::ranges::all_of(flags, [](std::uint8_t flag) { return flag == 1; }))
            << "the no-null flag promises what is not so";
        std::uint32_t lacking = 0; // when the engine has run out of memory, some do
        for (std::uint32_t row = 0; row < outcome.row_count && result.status == 0; ++row) {
            lacking += flags[row] == 1 && !outcome.holds_value(row) ? 1 : 0;
        }
        // Trimming the leading side leaves the value of a row as it was, though the row is not NULL, where the text begins with white space
        // and the set has none.
        EXPECT_TRUE(lacking == 0 || bifun::has_word("LTRIM TRIM", entry.builtin))
            << entry.symbol << ": " << lacking << " rows are not NULL and have no value";
    } else {
        EXPECT_EQ(outcome.no_nulls(), 0U) << "the call failed and the no-null flag is set";
    }
}

// Has the strings of the result point to copies, so that the arguments need not live as long as the outcome.
void keep_strings(outcome& outcome) {
    auto* const values = zqengine::values_of<bifun_string>(*outcome.result);
    const auto is_kept = [&](std::uint32_t row) { return outcome.flag(row) == 1 && outcome.holds_value(row); };
    std::size_t length = 0;
    for (std::uint32_t row = 0; row < outcome.row_count; ++row) {
        length += is_kept(row) ? values[row].length : 0;
    }
    outcome.string_bytes = std::make_unique_for_overwrite<std::uint8_t[]>(length);
    std::uint8_t* top = outcome.string_bytes.get();
    for (std::uint32_t row = 0; row < outcome.row_count; ++row) {
        if (is_kept(row)) {
            std::uint8_t* const copy = top;
            top = std::copy_n(values[row].data, values[row].length, top);
            values[row].data = copy;
        }
    }
}

} // namespace

bool outcome::holds_value(std::uint32_t row) const {
    const std::size_t width = bifun::value_width(result->type);
    return !is_unwritten(zqengine::values_of<std::uint8_t>(*result) + row * width, width);
}

void* library_symbol(const char* name) {
    // Local, as an engine may load it: the engine's own symbols are found in the program all the same.
    static void* const library = dlopen(BIFUN_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        ADD_FAILURE() << dlerror();
        return nullptr;
    }
    return dlsym(library, name);
}

const bifun::entry_point& entry_of(std::string_view symbol) {
    const auto* const entry = std::ranges::find(bifun::entry_points, symbol, &bifun::entry_point::symbol);
    if (entry == std::end(bifun::entry_points)) {
        std::fprintf(stderr, "no entry point is called %.*s\n", static_cast<int>(symbol.size()), symbol.data());
        std::abort();
    }
    return *entry;
}

void set_up(const bifun_settings& settings) {
    auto* const initialise = reinterpret_cast<decltype(&bifun_dll_var_init)>(library_symbol("bifun_dll_var_init"));
    ASSERT_NE(initialise, nullptr);
    EXPECT_EQ(initialise(settings.compatible_mode, settings.charset_code, settings.case_sensitive), 0);
}

outcome call(const bifun::entry_point& entry, const std::vector<call_argument>& arguments, std::uint32_t row_count,
             const circumstances& circumstances) {
    std::vector<bifun_column> columns(arguments.size());
    std::vector<bifun_column_data> data(arguments.size());
    std::vector<const void*> pointers(arguments.size());
    std::vector<std::string> images(arguments.size());
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const call_argument& argument = arguments[i];
        images[i] = image_of(argument, row_count);
        if (argument.constant != nullptr) {
            pointers[i] = argument.constant->record;
            continue;
        }
        data[i] = argument.column->data;
        data[i].null_flags += argument.first_row;
        data[i].values = static_cast<std::uint8_t*>(data[i].values) + argument.first_row * bifun::value_width(argument.column->type);
        columns[i] = {argument.column->column.no_nulls, argument.selection.empty() ? nullptr : argument.selection.data(), &data[i]};
        pointers[i] = &columns[i];
    }
    auto copies = std::make_unique<short_lived_strings>();
    for (std::size_t i = 0; circumstances.arguments_are_short_lived && i < arguments.size(); ++i) {
        if (!bifun::is_string(entry.arguments()[i].type)) {
            continue;
        }
        if (arguments[i].constant != nullptr) {
            pointers[i] = copies->copy(*static_cast<const bifun_string_constant*>(pointers[i]));
        } else if (row_count != 0) {
            data[i].values = copies->copy(columns[i], row_count);
        }
    }
    outcome outcome{0, row_count, zqengine::column_pointer(zqengine::create_column(entry.result, row_count + guard_rows))};
    std::memset(outcome.result->data.null_flags, unwritten, row_count + guard_rows);
    std::memset(outcome.result->data.values, unwritten, (row_count + guard_rows) * bifun::value_width(entry.result));
    outcome.result->column.no_nulls = circumstances.no_nulls_before;

    bifun_environment environment;
    bifun_memory_object* const engine_memory = rt_memobj_create_ex(&environment, 0, 4096, __FILE__, __LINE__);
    void* const function = library_symbol(entry.symbol);
    if (function == nullptr || engine_memory == nullptr) {
        ADD_FAILURE() << entry.symbol << " cannot be called";
        return outcome;
    }
    watched_memory memory(engine_memory, circumstances.memory_is_released);
    // Only where it is asked for: it concerns all threads.
    if (circumstances.failing_step != 0) {
        zqengine::fail_step(circumstances.failing_step);
    }
    outcome.status = entry.invoke(function, &environment, &memory.record, pointers.data(), &outcome.result->column, row_count);
    if (circumstances.failing_step != 0) {
        outcome.ran_out_of_memory = !zqengine::failure_is_pending();
        zqengine::fail_step(0);
    }
    rt_memobj_destroy(&environment, engine_memory);
    EXPECT_TRUE(memory.taken.empty() || !circumstances.memory_is_released) << entry.symbol << " keeps scratch memory";

    for (std::size_t i = 0; i < arguments.size(); ++i) {
        EXPECT_TRUE(images[i] == image_of(arguments[i], row_count)) << "argument " << i << " has changed";
        EXPECT_TRUE(arguments[i].column == nullptr ||
                    (columns[i].data == &data[i] && columns[i].no_nulls == arguments[i].column->column.no_nulls))
            << "the record of argument " << i << " has changed";
    }
    if (zq_engine_statements.results_may_refer == 0) {
        copies.reset();
    }
    check_invariants(entry, outcome);
    if (bifun::is_string(entry.result)) {
        keep_strings(outcome);
    }
    return outcome;
}

testing::AssertionResult same_rows(const outcome& a, std::uint32_t first_a, const outcome& b, std::uint32_t first_b, std::uint32_t count) {
    const std::size_t width = bifun::value_width(a.result->type);
    const auto same_values = [&](std::uint32_t row_a, std::uint32_t row_b) {
        if (!a.holds_value(row_a) || !b.holds_value(row_b)) {
            return a.holds_value(row_a) == b.holds_value(row_b);
        }
        if (bifun::is_string(a.result->type)) {
            const bifun_string& x = zqengine::values_of<bifun_string>(*a.result)[row_a];
            const bifun_string& y = zqengine::values_of<bifun_string>(*b.result)[row_b];
            return x.length == y.length && x.trailing_blanks == y.trailing_blanks && std::equal(x.data, x.data + x.length, y.data);
        }
        return std::memcmp(zqengine::values_of<std::uint8_t>(*a.result) + row_a * width,
                           zqengine::values_of<std::uint8_t>(*b.result) + row_b * width, width) == 0;
    };
    for (std::uint32_t k = 0; k < count; ++k) {
        const int flag_a = a.flag(first_a + k), flag_b = b.flag(first_b + k);
        if (flag_a != flag_b || (flag_a == 1 && !same_values(first_a + k, first_b + k))) {
            return testing::AssertionFailure() << "row " << first_a + k << " (flag " << flag_a << ") differs from row " << first_b + k
                                               << " (flag " << flag_b << ")";
        }
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult same_outcome(const outcome& a, const outcome& b) {
    if (a.status != b.status || a.no_nulls() != b.no_nulls() || a.row_count != b.row_count) {
        return testing::AssertionFailure() << "status " << a.status << ", no-null flag " << a.no_nulls() << " and status " << b.status
                                           << ", no-null flag " << b.no_nulls();
    }
    return same_rows(a, 0, b, 0, a.row_count);
}

} // namespace contract
