// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "engine/datetime.h"
#include "engine/session.h"
#include "layouts/datetime_layout.h"
#include "layouts/datetime_text.h"

using namespace bifun::datetime_layout;
using namespace bifun::datetime_text;

void zqdt_encode_fast(zqdt* result, const zqtime* value, int32_t kind) {
    result->value = *value;
    result->kind = kind;
}

namespace {

std::uint32_t copy_text(const std::uint8_t* text, std::uint32_t length, std::uint8_t* buffer, std::uint32_t size) {
    if (length > size) {
        return 0;
    }
    std::memcpy(buffer, text, length);
    return length;
}

const dfm_model* session_format_of(bifun_environment* environment, const zqdt& datetime) {
    const bool has_zone = zone_of(load_datetime(datetime.value)) != ZQTIME_NO_ZONE;
    switch (datetime.kind) {
    case ZQDT_DATE:
        return sess4_get_date_format(environment);
    case ZQDT_TIME:
        return has_zone ? sess4_get_time_tz_format(environment) : sess4_get_time_format(environment);
    default:
        return has_zone ? sess4_get_datetimetz_format(environment) : sess4_get_datetime_format(environment);
    }
}

} // namespace

uint32_t zqdt_to_char(bifun_environment* environment, const zqdt* datetime, uint8_t* buffer, uint32_t size) {
    if (datetime->kind < ZQDT_DATE || datetime->kind > ZQDT_DATETIME) {
        return 0;
    }
    if (const dfm_model* const model = session_format_of(environment, *datetime); model != nullptr) {
        std::uint8_t text[DFM_TEXT_SIZE];
        std::uint32_t length;
        (void)dfm_char_get(environment, model, &datetime->value, text, &length);
        return copy_text(text, length, buffer, size);
    }
    const datetime_words words = load_datetime(datetime->value);
    std::uint8_t text[longest + slack];
    std::uint8_t* out = text;
    if (datetime->kind != ZQDT_TIME) {
        out = put_date(out, year_of(words), month_of(words), day_of(words));
    }
    if (datetime->kind == ZQDT_DATETIME) {
        *out++ = ' ';
    }
    if (datetime->kind != ZQDT_DATE) {
        out = put_time(out, hour_of(words), minute_of(words), second_of(words));
        if (ini_get_value(0, INI_SHOW_FRACTION) == 1) {
            out = put_fraction(out, microsecond_of(words));
        }
        out = put_zone(out, zone_of(words));
    }
    return copy_text(text, static_cast<std::uint32_t>(out - text), buffer, size);
}
