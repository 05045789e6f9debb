#include "engine/datetime.h"

#include <cstdint>
#include <cstring>

#include "bop/frame/status.h"
#include "layouts/calendar.h"
#include "layouts/datetime_arithmetic.h"
#include "layouts/datetime_layout.h"

using namespace bifun::calendar;
using namespace bifun::datetime_layout;
namespace arithmetic = bifun::datetime_arithmetic;

namespace {

constexpr std::int32_t max_zone = 840;

template <class T> std::int32_t order(T a, T b) { return (a > b ? 1 : 0) - (a < b ? 1 : 0); }

// Seconds since day 0, UTC.
std::int64_t instant_of(datetime_words words) { return arithmetic::seconds_of(words) - std::int64_t{zone_of(words)} * 60; }

bool is_zone(std::int32_t zone) { return zone == ZQTIME_NO_ZONE || (zone >= -max_zone && zone <= max_zone); }

datetime_parts parts_of(datetime_words words) {
    return {.year = year_of(words),
            .month = month_of(words),
            .day = day_of(words),
            .hour = hour_of(words),
            .minute = minute_of(words),
            .second = second_of(words),
            .microsecond = microsecond_of(words),
            .zone = zone_of(words)};
}

// Gives a value with one part changed, which is stored where it is in its range and the date exists.
template <class Part> std::int32_t set_part(zqtime* value, Part datetime_parts::*part, Part number, bool in_range) {
    datetime_parts parts = parts_of(load_datetime(*value));
    parts.*part = number;
    if (!in_range || !date_exists(parts.year, parts.month, parts.day)) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    store_datetime(*value, pack_datetime(parts));
    return BIFUN_OK;
}

} // namespace

int32_t zqtime_encode(zqtime* result, int32_t year, uint32_t month, uint32_t day, uint32_t hour, uint32_t minute, uint32_t second,
                      uint32_t microsecond, int32_t zone) {
    if (!date_exists(year, month, day) || hour > 23 || minute > 59 || second > 59 || microsecond > 999'999 || !is_zone(zone)) {
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

// ---- components ---------------------------------------------------------------------------------------------------

uint32_t zqtime_get_year(const zqtime* value) { return static_cast<std::uint32_t>(year_of(load_datetime(*value))); }

uint32_t zqtime_get_month(const zqtime* value) { return month_of(load_datetime(*value)); }

uint32_t zqtime_get_day(const zqtime* value) { return day_of(load_datetime(*value)); }

uint32_t zqtime_get_hour(const zqtime* value) { return hour_of(load_datetime(*value)); }

uint32_t zqtime_get_min(const zqtime* value) { return minute_of(load_datetime(*value)); }

uint32_t zqtime_get_sec(const zqtime* value) { return second_of(load_datetime(*value)); }

uint32_t zqtime_get_msec(const zqtime* value) { return microsecond_of(load_datetime(*value)); }

int32_t zqtime_get_tz(const zqtime* value) { return zone_of(load_datetime(*value)); }

int32_t zqtime_get_zone_hour(const zqtime* value) {
    const std::int32_t zone = zqtime_get_tz(value);
    return zone == ZQTIME_NO_ZONE ? 0 : zone / 60;
}

int32_t zqtime_get_zone_min(const zqtime* value) {
    const std::int32_t zone = zqtime_get_tz(value);
    return zone == ZQTIME_NO_ZONE ? 0 : zone % 60;
}

int32_t zqtime_set_year(zqtime* value, int32_t year) { return set_part(value, &datetime_parts::year, year, true); }

int32_t zqtime_set_month(zqtime* value, uint32_t month) { return set_part(value, &datetime_parts::month, month, true); }

int32_t zqtime_set_day(zqtime* value, uint32_t day) { return set_part(value, &datetime_parts::day, day, true); }

int32_t zqtime_set_hour(zqtime* value, uint32_t hour) { return set_part(value, &datetime_parts::hour, hour, hour <= 23); }

int32_t zqtime_set_min(zqtime* value, uint32_t minute) { return set_part(value, &datetime_parts::minute, minute, minute <= 59); }

int32_t zqtime_set_sec(zqtime* value, uint32_t second) { return set_part(value, &datetime_parts::second, second, second <= 59); }

int32_t zqtime_set_msec(zqtime* value, uint32_t microsecond) {
    return set_part(value, &datetime_parts::microsecond, microsecond, microsecond <= 999'999);
}

int32_t zqtime_set_tz(zqtime* value, int32_t zone) { return set_part(value, &datetime_parts::zone, zone, is_zone(zone)); }

// ---- places in the calendar ---------------------------------------------------------------------------------------

uint32_t zqtime_day_of_year(const zqtime* value) { return arithmetic::day_of_year(load_datetime(*value)); }

uint32_t zqtime_day_of_week(const zqtime* value) { return arithmetic::day_of_week(load_datetime(*value)); }

uint32_t zqtime_week_for_datepart(const zqtime* value) { return arithmetic::week_of_year(load_datetime(*value)); }

uint32_t zqtime_month_end_day(int32_t year, uint32_t month) { return last_day_of_month(year, month); }

// ---- whole values -------------------------------------------------------------------------------------------------

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
