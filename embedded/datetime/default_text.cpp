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

uint32_t zqdt_to_char(bifun_environment* /*environment*/, const zqdt* datetime, uint8_t* buffer, uint32_t size) {
    if (datetime->kind < ZQDT_DATE || datetime->kind > ZQDT_DATETIME) {
        return 0;
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
    const auto length = static_cast<std::uint32_t>(out - text);
    if (length > size) {
        return 0;
    }
    std::memcpy(buffer, text, length);
    return length;
}
