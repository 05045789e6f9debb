// SPDX-License-Identifier: Apache-2.0
// Sessions, parameters and statuses by their C names.

#include <new>

#include "bop/frame/status.h"
#include "embedded/large_objects/spool_file.h"
#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"
#include "embedded/session/parameters.h"
#include "embedded/zqengine.h"
#include "engine/json.h"
#include "engine/number_format.h"

namespace {

using zqengine::format_fault;
using zqengine::session_format;

static_assert(ZQENGINE_DATE_FORMAT == static_cast<int>(session_format::date));
static_assert(ZQENGINE_TIME_FORMAT == static_cast<int>(session_format::time));
static_assert(ZQENGINE_DATETIME_FORMAT == static_cast<int>(session_format::datetime));
static_assert(ZQENGINE_TIME_WITH_ZONE_FORMAT == static_cast<int>(session_format::time_with_zone));
static_assert(ZQENGINE_DATETIME_WITH_ZONE_FORMAT == static_cast<int>(session_format::datetime_with_zone));

constexpr std::int32_t most_zone_minutes = 840;

const char* meaning_of(format_fault fault) {
    switch (fault) {
    case format_fault::none:
        break;
    case format_fault::too_long:
        return "a format has at most 75 bytes";
    case format_fault::unknown_element:
        return "formats have no such element; text stands in double quotes";
    case format_fault::open_quote:
        return "the closing quote is missing";
    case format_fault::misplaced_suffix:
        return "the suffix stands behind what is no number";
    case format_fault::lone_percent:
        return "the format ends in a single percent sign";
    case format_fault::output_only:
        return "the element cannot be read";
    case format_fault::repeated:
        return "the element says again what another one says";
    case format_fault::contradiction:
        return "the element contradicts another one";
    case format_fault::incomplete:
        return "the element needs another one beside it";
    case format_fault::unexpected_zone:
        return "the value has no time zone";
    }
    return "";
}

} // namespace

const char* zqengine_status_meaning(int32_t status) {
    switch (status) {
    case BIFUN_OK:
        return "no error";
#define STATUS(code, name, meaning)                                                                                                        \
    case code:                                                                                                                             \
        return meaning;
#include "bop/frame/statuses.def"
#undef STATUS
    case ZQ_INVALID_NUMBER_FORMAT:
        return "invalid number format";
    case JSON_INVALID_TEXT:
        return "the text is no JSON";
    case JSON_TOO_DEEP:
        return "the JSON has more than 1024 levels";
    case JSON_NO_SUCH_PART:
        return "the JSON lacks a part that a strict path asks for";
    case JSON_NO_ITEM:
        return "the path gives nothing";
    case JSON_SEVERAL_ITEMS:
        return "the path gives more than one item";
    case JSON_NO_SCALAR:
        return "the path gives an array or object, not a scalar";
    case JSON_WRONG_OPERAND:
        return "a method or an operator of the path has a value that it is not for";
    case JSON_NO_CHARACTER:
        return "the database character set lacks a character of the JSON";
    case ZQ_INVALID_NLS_PARAMETERS:
        return "invalid NLS parameters";
    case zqengine::spool_failure:
        return "the temporary file of large objects cannot be made, written or read, or is full";
    default:
        return "engine error";
    }
}

bifun_environment* zqengine_environment_create(void) {
    void* const memory = zqengine::allocate(sizeof(bifun_environment));
    return memory == nullptr ? nullptr : new (memory) bifun_environment;
}

void zqengine_environment_destroy(bifun_environment* environment) {
    if (environment != nullptr) {
        environment->~bifun_environment();
        zqengine::release(environment, sizeof(bifun_environment));
    }
}

int32_t zqengine_environment_set_time_zone(bifun_environment* environment, int32_t minutes) {
    if (minutes < -most_zone_minutes || minutes > most_zone_minutes) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    environment->time_zone = minutes;
    return BIFUN_OK;
}

int32_t zqengine_environment_set_language(bifun_environment* environment, int32_t language) {
    if (language != DFM_ENGLISH && language != DFM_CHINESE) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    environment->language = language;
    return BIFUN_OK;
}

int32_t zqengine_environment_set_format(bifun_environment* environment, int32_t which, const char* format, uint32_t length,
                                        zqengine_format_fault* fault) {
    if (which < ZQENGINE_DATE_FORMAT || which > ZQENGINE_DATETIME_WITH_ZONE_FORMAT) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    zqengine::session_model& model = environment->formats[static_cast<std::size_t>(which)];
    const zqengine::session_model before = model;
    const zqengine::format_problem problem = set_session_format(*environment, static_cast<session_format>(which), {format, length});
    if (problem.fault == format_fault::none) {
        return BIFUN_OK;
    }
    model = before;
    if (fault != nullptr) {
        const bool is_whole = problem.fault == format_fault::too_long;
        *fault = {meaning_of(problem.fault), is_whole ? 0U : problem.offset, is_whole ? length : problem.length};
    }
    return BIFUN_INVALID_DATE_FORMAT;
}

int32_t zqengine_set_parameter(int32_t parameter, int64_t value) { return zqengine::set_parameter(parameter, value); }

void zqengine_set_dates_keep_time(int32_t keep) { zqengine::set_dates_keep_time(keep != 0); }
