// SPDX-License-Identifier: Apache-2.0
// One call of an entry point.
#ifndef BIFUN_ADAPTERS_BINDING_INVOCATION_H
#define BIFUN_ADAPTERS_BINDING_INVOCATION_H

#include <array>
#include <cstdint>
#include <optional>

#include "bop/frame/catalogue.h"
#include "embedded/zqengine.h"

namespace binding {

struct invocation {
    const bifun::entry_point* entry;
    void* function; // found under the entry point's symbol
    bifun_environment* environment;
    bifun_memory_object* memory;
    std::array<const bifun_column*, bifun::most_arguments> columns; // null for constants
    std::array<const void*, bifun::most_arguments> constants;       // their records, null for columns
    bifun_column* result;                                           // of the embedded engine, with room for all rows
};

// Whatever the result held is forgotten. Returns 0 or a negative status, also where a string of the result found no memory.
std::int32_t invoke(const invocation& call, std::uint32_t row_count);

// The same with all that is passed: `arguments` are columns and records of constants.
inline std::int32_t invoke_entry(const bifun::entry_point& entry, void* function, bifun_environment* environment,
                                 bifun_memory_object* memory, const void* const* arguments, bifun_column* result, std::uint32_t row_count) {
    // Results of other types have no storage besides their values.
    const bool is_string = bifun::is_string(entry.result);
    if (is_string) {
        zqengine_column_prepare(result, row_count);
    }
    const std::int32_t status = entry.invoke(function, environment, memory, arguments, result, row_count);
    return status != 0 || !is_string ? status : zqengine_column_status(result);
}

// A call that failed says what went wrong, but not where.
struct failed_call {
    std::int32_t status;
    std::optional<std::uint32_t> row; // of the batch; none where a constant is at fault or memory ran out for the batch as a whole
};

// Repeats a call that failed with `status`, with no rows and then row by row. The result is changed.
failed_call find_failure(const invocation& call, std::int32_t status, std::uint32_t row_count);

} // namespace binding

#endif
