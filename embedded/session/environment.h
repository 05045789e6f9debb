// The engine environment: what an executor passes with every call.
#ifndef BIFUN_EMBEDDED_SESSION_ENVIRONMENT_H
#define BIFUN_EMBEDDED_SESSION_ENVIRONMENT_H

#include <cstdint>

#include "bop/frame/contract.h"
#include "embedded/format/number_format.h"

// One per session; a session runs one call at a time.
struct bifun_environment {
    zqengine::number_format_memory number_format;
    std::int32_t time_zone = 0; // the session's displacement from UTC in minutes, -840..840
};

#endif
