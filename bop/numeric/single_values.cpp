// SPDX-License-Identifier: Apache-2.0
// The exported operation on a single number.

#include "bop/bifun.h"
#include "bop/frame/setters.h"

// The ceiling of an integer is the integer.
std::int32_t bceil_a_process_int64(bifun_environment* environment, bifun_memory_object* memory, std::int64_t value, bifun_column* result,
                                   std::uint32_t row) {
    bifun::set_value({environment, memory, result, 1}, row, value);
    return BIFUN_OK;
}
