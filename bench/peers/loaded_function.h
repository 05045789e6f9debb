// SPDX-License-Identifier: Apache-2.0
// Functions of libraries that are loaded at run time.
#ifndef BIFUN_BENCH_PEERS_LOADED_FUNCTION_H
#define BIFUN_BENCH_PEERS_LOADED_FUNCTION_H

#include <dlfcn.h>

#include <stdexcept>

namespace bifun::peers {

// Throws std::runtime_error where the library has no such symbol.
template <class Function> void find(void* library, const char* name, Function& function) {
    void* const symbol = dlsym(library, name);
    if (symbol == nullptr) {
        throw std::runtime_error(dlerror());
    }
    function = reinterpret_cast<Function>(symbol);
}

} // namespace bifun::peers

#endif
