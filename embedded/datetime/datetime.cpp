#include "engine/datetime.h"

#include <cstdint>
#include <cstring>

#include "bop/frame/status.h"
#include "engine/calendar.h"
#include "engine/datetime_layout.h"

using namespace bifun::calendar;
using namespace bifun::datetime_layout;

namespace {

constexpr std::int32_t max_zone = 840;

template <class T> std::int32_t order(T a, T b) { return (a > b ? 1 : 0) - (a < b ? 1 : 0); }

// Seconds since day 0, UTC.
std::int64_t instant_of(datetime_words words) {
    const std::int64_t minutes =
        (std::int64_t{julian_day(year_of(words), month_of(words), day_of(words))} * 24 + hour_of(words)) * 60 + minute_of(words);
    return (minutes - zone_of(words)) * 60 + second_of(words);
}

} // namespace

int32_t zqtime_encode(zqtime* result, int32_t year, uint32_t month, uint32_t day, uint32_t hour, uint32_t minute, uint32_t second,
                      uint32_t microsecond, int32_t zone) {
    if (!date_exists(year, month, day) || hour > 23 || minute > 59 || second > 59 || microsecond > 999'999 ||
        (zone != ZQTIME_NO_ZONE && (zone < -max_zone || zone > max_zone))) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    store_datetime(*result, pack_datetime({.year = year,
                                           .month = month,
                                           .day = day,
                                           .hour = hour,
                                           .minute = minute,
                                           .second = second,
                                           .microsecond = microsecond,
                                           .zone = zone}));
    return BIFUN_OK;
}

void zqtime_decode(const zqtime* value, int32_t* year, uint32_t* month, uint32_t* day, uint32_t* hour, uint32_t* minute, uint32_t* second,
                   uint32_t* microsecond) {
    const datetime_words words = load_datetime(*value);
    const auto put = [](auto* place, auto component) {
        if (place != nullptr) {
            *place = component;
        }
    };
    put(year, year_of(words));
    put(month, month_of(words));
    put(day, day_of(words));
    put(hour, hour_of(words));
    put(minute, minute_of(words));
    put(second, second_of(words));
    put(microsecond, microsecond_of(words));
}

int32_t zqtime_get_tz(const zqtime* value) { return zone_of(load_datetime(*value)); }

void zqtime_assign(zqtime* destination, const zqtime* source) { std::memmove(destination, source, sizeof *destination); }

int32_t zqtime_cmp(const zqtime* a, const zqtime* b) {
    const datetime_words words_a = load_datetime(*a);
    const datetime_words words_b = load_datetime(*b);
    const std::int32_t zone_a = zone_of(words_a);
    const std::int32_t zone_b = zone_of(words_b);
    // Times of one zone are in the order of their instants.
    const bool by_instant = zone_a != zone_b && zone_a != ZQTIME_NO_ZONE && zone_b != ZQTIME_NO_ZONE;
    const std::int32_t by_seconds = by_instant ? order(instant_of(words_a), instant_of(words_b)) : order(words_a.civil, words_b.civil);
    return by_seconds != 0 ? by_seconds : order(microsecond_of(words_a), microsecond_of(words_b));
}
