// SPDX-License-Identifier: Apache-2.0
// libbifun.so inside of a host: found by name, with the embedded engine under it.
#ifndef BIFUN_ADAPTERS_BINDING_LIBRARY_H
#define BIFUN_ADAPTERS_BINDING_LIBRARY_H

#include <array>
#include <cstdint>
#include <string>

#include "bop/frame/contract.h"

namespace binding {

// Loads the library, once in a process, and hands it its settings, also those of a later call. Returns an empty text, or what stood in the
// way. The host holds its texts to be well-formed in the character set of the settings.
std::string load_library(const bifun_settings& settings);

// Whether texts are well-formed UTF-8.
bool texts_are_utf8();

// A function that the loaded library exports; null for another name.
void* find_function(const char* symbol);

// What a session of a host may set.
struct session_settings {
    std::int32_t time_zone = 0;              // minutes east of UTC
    std::int32_t language = 0;               // of names in dates, of dfm_language
    std::array<std::string, 5> date_formats; // by zqengine_format; empty where there is none

    bool operator==(const session_settings&) const = default;
};

// Gives an environment of the embedded engine its settings. Returns an empty text, or what is wrong with one of them.
std::string apply_settings(const session_settings& settings, bifun_environment* environment);

} // namespace binding

#endif
