// SPDX-License-Identifier: Apache-2.0
#include "adapters/duckdb/host_functions.h"

#include <dlfcn.h>

#include <optional>
#include <string>

namespace duckdb_extension {
namespace {

template <class Function> bool find(void* host, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(host, (std::string("duckdb_") + name).c_str()));
    return function != nullptr;
}

std::optional<setting_functions> find_all() {
    // Where DuckDB is: a program of its own, or a library that only its user sees.
    Dl_info place{};
    if (dladdr(reinterpret_cast<void*>(duckdb_connect), &place) == 0) {
        return std::nullopt;
    }
    void* const library = dlopen(place.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
    void* const host = library != nullptr ? library : RTLD_DEFAULT;
    setting_functions found{};
#define FIND(name) find(host, #name, found.name)
    const bool all = FIND(create_config_option) && FIND(destroy_config_option) && FIND(config_option_set_name) &&
                     FIND(config_option_set_type) && FIND(config_option_set_default_value) && FIND(config_option_set_description) &&
                     FIND(register_config_option) && FIND(client_context_get_config_option) && FIND(destroy_client_context) &&
                     FIND(scalar_function_set_bind) && FIND(scalar_function_bind_set_error) && FIND(scalar_function_get_client_context) &&
                     FIND(scalar_function_set_bind_data) && FIND(scalar_function_set_bind_data_copy) && FIND(scalar_function_get_bind_data);
#undef FIND
    return all ? std::optional(found) : std::nullopt;
}

} // namespace

const setting_functions* find_setting_functions() {
    static const std::optional<setting_functions> found = find_all();
    return found ? &*found : nullptr;
}

} // namespace duckdb_extension
