// SPDX-License-Identifier: Apache-2.0
// The library with changes that a comparison has to find: the last ABS of every batch of BIGINTs is one too many, that of DOUBLEs is
// computed four times, and only these two are there.

#include <dlfcn.h>

#include <cstdint>

#include "bop/bifun.h"

namespace {

template <class Function> Function* original(const char* name) {
    return reinterpret_cast<Function*>(dlsym(dlopen(BIFUN_LIBRARY, RTLD_NOW | RTLD_LOCAL), name));
}

} // namespace

std::int32_t bifun_dll_var_init(std::uint32_t compatible_mode, std::uint32_t charset_code, std::uint32_t case_sensitive) {
    return original<decltype(bifun_dll_var_init)>("bifun_dll_var_init")(compatible_mode, charset_code, case_sensitive);
}

std::int32_t babs_a_math_int(bifun_environment* environment, bifun_memory_object* memory, const bifun_column* x, bifun_column* result,
                             std::uint32_t row_count) {
    static auto* const function = original<decltype(babs_a_math_int)>("babs_a_math_int");
    const std::int32_t status = function(environment, memory, x, result, row_count);
    static_cast<std::int64_t*>(result->data->values)[row_count - 1] += 1;
    return status;
}

std::int32_t babs_a_math_dbl(bifun_environment* environment, bifun_memory_object* memory, const bifun_column* x, bifun_column* result,
                             std::uint32_t row_count) {
    static auto* const function = original<decltype(babs_a_math_dbl)>("babs_a_math_dbl");
    for (int i = 0; i < 3; ++i) {
        (void)function(environment, memory, x, result, row_count);
    }
    return function(environment, memory, x, result, row_count);
}
