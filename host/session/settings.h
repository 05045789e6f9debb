// SPDX-License-Identifier: Apache-2.0
// The settings of a run, as given with --set.
#ifndef BIFUN_HOST_SESSION_SETTINGS_H
#define BIFUN_HOST_SESSION_SETTINGS_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bop/frame/contract.h"
#include "host/values/charset_text.h"

namespace host {

struct session_settings {
    bifun_settings library;
    const charset* text_charset;
    std::optional<std::int32_t> given_zone;                        // in minutes east of UTC
    std::vector<std::pair<std::int32_t, std::int64_t>> parameters; // of the engine: number and value
    std::int32_t language;                                         // of names in dates
    std::array<std::string, 5> date_formats;                       // by zqengine::session_format, empty where there is none
    bool dates_keep_time;

    // The session's zone, which also zoned values have that name none.
    [[nodiscard]] std::int32_t time_zone() const { return given_zone.value_or(0); }
};

// Of all but the engine's parameters.
std::vector<std::string_view> setting_names();

// Reads "NAME=VALUE" texts over the defaults: compatible_mode=1, charset=utf-8, case_sensitive=1 and no more.
session_settings read_settings(const std::vector<std::string>& assignments);

// Tells the engine those that hold for the whole process. A time zone given is also that of the current datetime, unless its parameter says
// otherwise. Throws where there is no such parameter or value.
void begin_session(const session_settings& settings);

// What is said of date formats that may not be meant as they are written.
std::vector<std::string> remarks_on_formats(const session_settings& settings);

// Gives an environment those that are its own.
void set_up_environment(const session_settings& settings, bifun_environment& environment);

} // namespace host

#endif
