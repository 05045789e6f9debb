// SPDX-License-Identifier: Apache-2.0
// The engine environment: what an executor passes with every call.
#ifndef BIFUN_EMBEDDED_SESSION_ENVIRONMENT_H
#define BIFUN_EMBEDDED_SESSION_ENVIRONMENT_H

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

#include "embedded/format/date_format.h"
#include "embedded/format/format_memory.h"
#include "embedded/format/number_format.h"
#include "embedded/json/document_memory.h"

namespace zqengine {

enum class session_format : std::uint8_t { date, time, datetime, time_with_zone, datetime_with_zone };

struct session_model {
    bool is_set = false;
    dfm_model model;
};

struct document_memory_release {
    void operator()(document_memory* memory) const { release_document_memory(memory); }
};

} // namespace zqengine

// One per session; a session runs one call at a time. Zone, language and formats may be set between calls.
struct bifun_environment {
    mutable zqengine::format_memory<zqengine::number_format> number_formats;
    mutable zqengine::format_memory<zqengine::date_model> date_models;
    std::int32_t time_zone = 0;          // the session's displacement from UTC in minutes, -840..840
    std::int32_t language = DFM_ENGLISH; // of dfm_language, for formats that are parsed from then on
    std::array<zqengine::session_model, 5> formats;
    std::unique_ptr<zqengine::document_memory, zqengine::document_memory_release> documents; // null before the first JSON document
};

namespace zqengine {

// Sets the format of values for which a call gives none; an empty text sets none. Returns what keeps the text from being a format, and then
// none is set.
[[nodiscard]] format_problem set_session_format(bifun_environment& session, session_format which, std::string_view format);

} // namespace zqengine

#endif
