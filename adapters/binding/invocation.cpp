// SPDX-License-Identifier: Apache-2.0
#include "adapters/binding/invocation.h"

namespace binding {

std::int32_t invoke(const invocation& call, std::uint32_t row_count) {
    std::array<const void*, bifun::most_arguments> arguments{};
    for (std::size_t i = 0; i < call.entry->argument_count; ++i) {
        arguments[i] = call.columns[i] != nullptr ? call.columns[i] : call.constants[i];
    }
    return invoke_entry(*call.entry, call.function, call.environment, call.memory, arguments.data(), call.result, row_count);
}

failed_call find_failure(const invocation& call, std::int32_t status, std::uint32_t row_count) {
    const std::int32_t constant_status = invoke(call, 0);
    if (constant_status != 0) {
        return {constant_status, std::nullopt};
    }
    for (std::uint32_t row = 0; row < row_count; ++row) {
        std::array<bifun_column, bifun::most_arguments> single{};
        std::array<std::uint16_t, bifun::most_arguments> entries{};
        invocation alone = call;
        for (std::size_t i = 0; i < call.columns.size(); ++i) {
            if (call.columns[i] != nullptr) {
                const std::uint16_t* const selection = call.columns[i]->selection;
                entries[i] = selection == nullptr ? static_cast<std::uint16_t>(row) : selection[row];
                single[i] = *call.columns[i];
                single[i].selection = &entries[i];
                alone.columns[i] = &single[i];
            }
        }
        const std::int32_t row_status = invoke(alone, 1);
        if (row_status != 0) {
            return {row_status, row};
        }
    }
    return {status, std::nullopt};
}

} // namespace binding
