// SPDX-License-Identifier: Apache-2.0
#include "adapters/binding/library.h"

#include <dlfcn.h>

#include <atomic>
#include <mutex>

#include <fmt/format.h>

#include "embedded/zqengine.h"
#include "engine/charset.h"

namespace binding {
namespace {

constexpr const char* library_name = "libbifun.so.0";
constexpr const char* engine_name = "libzqengine.so.0";

std::mutex loading;
void* library = nullptr;
std::atomic<bool> are_utf8 = false;

} // namespace

std::string load_library(const bifun_settings& settings) {
    const std::lock_guard guard(loading);
    if (library == nullptr) {
        // The library's operations are looked for among what is global. A host loads its extensions, and what they link, for themselves.
        if (dlopen(engine_name, RTLD_NOW | RTLD_GLOBAL) == nullptr) {
            return fmt::format("{} cannot be loaded: {}", engine_name, dlerror());
        }
        library = dlopen(library_name, RTLD_NOW | RTLD_LOCAL);
    }
    if (library == nullptr) {
        return fmt::format("{} cannot be loaded: {}", library_name, dlerror());
    }
    using initialise = std::int32_t (*)(std::uint32_t, std::uint32_t, std::uint32_t);
    const auto set = reinterpret_cast<initialise>(find_function("bifun_dll_var_init"));
    if (set == nullptr || set(settings.compatible_mode, settings.charset_code, settings.case_sensitive) != 0) {
        return fmt::format("{} does not take its settings", library_name);
    }
    are_utf8 = settings.charset_code == ZQ_CHARSET_UTF8;
    return "";
}

bool texts_are_utf8() { return are_utf8; }

void* find_function(const char* symbol) { return dlsym(library, symbol); }

std::string apply_settings(const session_settings& settings, bifun_environment* environment) {
    if (zqengine_environment_set_time_zone(environment, settings.time_zone) != 0) {
        return fmt::format("{} minutes are no time zone; they are from -840 to 840", settings.time_zone);
    }
    if (zqengine_environment_set_language(environment, settings.language) != 0) {
        return fmt::format("there is no language {}", settings.language);
    }
    for (std::size_t which = 0; which < settings.date_formats.size(); ++which) {
        const std::string& format = settings.date_formats[which];
        zqengine_format_fault fault{};
        if (zqengine_environment_set_format(environment, static_cast<std::int32_t>(which), format.data(),
                                            static_cast<std::uint32_t>(format.size()), &fault) != 0) {
            return fmt::format("'{}' is no date format: {}, at '{}'", format, fault.meaning, format.substr(fault.offset, fault.length));
        }
    }
    return "";
}

} // namespace binding
