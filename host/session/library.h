// SPDX-License-Identifier: Apache-2.0
// libbifun.so, loaded at run time and called by name.
#ifndef BIFUN_HOST_SESSION_LIBRARY_H
#define BIFUN_HOST_SESSION_LIBRARY_H

#include <string>

#include "bop/frame/contract.h"

namespace host {

constexpr const char* default_library = "libbifun.so.0";

class function_library {
  public:
    // Loads the library and hands it its settings. A name without a slash is looked for along the program's run path.
    function_library(const std::string& path, const bifun_settings& settings);
    ~function_library();
    function_library(const function_library&) = delete;
    function_library& operator=(const function_library&) = delete;

    // An exported function; throws where the library does not export it.
    [[nodiscard]] void* find(const char* symbol) const;

  private:
    std::string path_;
    void* handle_;
};

} // namespace host

#endif
