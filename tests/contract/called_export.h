// SPDX-License-Identifier: Apache-2.0
// Calling what the library exports by name, as an engine does, and comparing what calls leave in their result columns.
#ifndef BIFUN_TESTS_CONTRACT_CALLED_EXPORT_H
#define BIFUN_TESTS_CONTRACT_CALLED_EXPORT_H

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "bop/frame/catalogue.h"
#include "embedded/columns/column_storage.h"
#include "tests/contract/generated_batch.h"

namespace contract {

// The symbol of libbifun.so, or null.
void* library_symbol(const char* name);

// The entry point of a name. Fails the program where there is none.
const bifun::entry_point& entry_of(std::string_view symbol);

// Either a column, read from row `first_row` of its data on and through `selection` where that is not empty, or a constant.
struct call_argument {
    const zqengine::column_storage* column = nullptr;
    const generated_constant* constant = nullptr;
    std::uint32_t first_row = 0;
    std::span<const std::uint16_t> selection = {};
};

constexpr std::uint8_t unwritten = 0xA5;

// What a call returned and left behind. Rows that it did not write hold `unwritten` in every byte, the flag too.
struct outcome {
    std::int32_t status;
    std::uint32_t row_count;
    zqengine::column_pointer result;
    std::unique_ptr<std::uint8_t[]> string_bytes = nullptr; // copies of what the strings of the result point to
    bool ran_out_of_memory = false;                         // the failing step that was asked for has come

    [[nodiscard]] std::uint32_t no_nulls() const { return result->column.no_nulls; }
    [[nodiscard]] std::uint8_t flag(std::uint32_t row) const { return result->data.null_flags[row]; }
    [[nodiscard]] bool holds_value(std::uint32_t row) const; // whether the value has been written, be the flag what it may
};

// How a call is made: the result's no-null flag before it, the step of it that is to run out of memory (1 is the first, 0 none), whether
// the memory object has a release function, and whether the strings of the arguments are copies of which each has memory of its own, gone
// as soon as the engine may release it.
struct circumstances {
    std::uint32_t no_nulls_before = 1;
    std::int64_t failing_step = 0;
    bool memory_is_released = true;
    bool arguments_are_short_lived = false;
};

// Calls the entry point. Whatever the entry point, it is a failure of the test that arguments change, that scratch memory is kept or
// memory of no bytes asked for, that rows behind the batch are written, that bytes of result strings count as free, that a flag is neither
// 0 nor 1 or says that there is a value where none has been written, that the no-null flag promises what is not so, or that it is set
// although the call failed.
outcome call(const bifun::entry_point& entry, const std::vector<call_argument>& arguments, std::uint32_t row_count,
             const circumstances& circumstances = {});

// Calls it with columns of these values, none of them NULL.
template <class... T> outcome call_with(const char* symbol, const std::vector<T>&... values) {
    const bifun::entry_point& entry = entry_of(symbol);
    std::vector<zqengine::column_pointer> columns;
    (columns.push_back(column_of(entry.argument_list[columns.size()].type, values)), ...);
    std::vector<call_argument> arguments(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        arguments[i].column = columns[i].get();
    }
    return call(entry, arguments, columns[0]->capacity);
}

// Calls bifun_dll_var_init.
void set_up(const bifun_settings& settings);

// Whether `count` rows of a, from `first_a` on, are those of b from `first_b` on: flags, and to the bit the values of rows not NULL. A
// value that has not been written is like another such only.
testing::AssertionResult same_rows(const outcome& a, std::uint32_t first_a, const outcome& b, std::uint32_t first_b, std::uint32_t count);

// The same of all rows, the statuses and the no-null flags.
testing::AssertionResult same_outcome(const outcome& a, const outcome& b);

} // namespace contract

#endif
