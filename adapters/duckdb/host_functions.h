// SPDX-License-Identifier: Apache-2.0
// What of DuckDB's C interface is not in its stable part: found by name in the process, and done without where it is not there.
#ifndef BIFUN_ADAPTERS_DUCKDB_HOST_FUNCTIONS_H
#define BIFUN_ADAPTERS_DUCKDB_HOST_FUNCTIONS_H

#include <cstdint>

#include "adapters/duckdb/api.h"

namespace duckdb_extension {

using config_option = void*;
using client_context = void*;

// All of them, or none: then sessions have no settings of the extension's.
struct setting_functions {
    config_option (*create_config_option)();
    void (*destroy_config_option)(config_option* option);
    void (*config_option_set_name)(config_option option, const char* name);
    void (*config_option_set_type)(config_option option, duckdb_logical_type type);
    void (*config_option_set_default_value)(config_option option, duckdb_value value);
    void (*config_option_set_description)(config_option option, const char* text);
    duckdb_state (*register_config_option)(duckdb_connection connection, config_option option);
    duckdb_value (*client_context_get_config_option)(client_context context, const char* name, std::int32_t* scope);
    void (*destroy_client_context)(client_context* context);
    void (*scalar_function_set_bind)(duckdb_scalar_function function, void (*bind)(duckdb_bind_info));
    void (*scalar_function_bind_set_error)(duckdb_bind_info info, const char* error);
    void (*scalar_function_get_client_context)(duckdb_bind_info info, client_context* context);
    void (*scalar_function_set_bind_data)(duckdb_bind_info info, void* data, void (*destroy)(void*));
    void (*scalar_function_set_bind_data_copy)(duckdb_bind_info info, void* (*copy)(void*));
    void* (*scalar_function_get_bind_data)(duckdb_function_info info);
};

// Null where this DuckDB does not have all of them.
const setting_functions* find_setting_functions();

} // namespace duckdb_extension

#endif
