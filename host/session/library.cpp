// SPDX-License-Identifier: Apache-2.0
#include "host/session/library.h"

#include <dlfcn.h>

#include "host/program_error.h"

namespace host {

function_library::function_library(const std::string& path, const bifun_settings& settings)
    : path_(path), handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) {
        fail("the function library cannot be loaded: {}; name another with --library", dlerror());
    }
    try {
        using initialise = std::int32_t (*)(std::uint32_t, std::uint32_t, std::uint32_t);
        const auto function = reinterpret_cast<initialise>(find("bifun_dll_var_init"));
        const std::int32_t status = function(settings.compatible_mode, settings.charset_code, settings.case_sensitive);
        if (status != 0) {
            fail("{}: bifun_dll_var_init returned {}", path_, status);
        }
    } catch (...) {
        dlclose(handle_);
        throw;
    }
}

function_library::~function_library() { dlclose(handle_); }

void* function_library::find(const char* symbol) const {
    void* const function = dlsym(handle_, symbol);
    if (function == nullptr) {
        fail("the function library {} does not export {}; name another with --library", path_, symbol);
    }
    return function;
}

} // namespace host
