// SPDX-License-Identifier: Apache-2.0
#include "engine/datetime.h"

#include <cstdint>
#include <cstring>

#include "bop/frame/status.h"
#include "layouts/packed_datetimes.h"

using namespace bifun::datetime_layout;
using bifun::packed_datetimes;
using bifun::calendar::date_exists;

namespace {

bool is_zone(std::int32_t zone) { return zone == ZQTIME_NO_ZONE || (zone >= -max_zone && zone <= max_zone); }

std::uint32_t component(std::int32_t number) { return static_cast<std::uint32_t>(number); }

// Gives a value another part, where that is in its range.
template <class Part> std::int32_t set_part(zqtime* value, Part datetime_parts::*part, Part number, bool in_range) {
    datetime_parts parts = unpack_datetime(load_datetime(*value));
    parts.*part = number;
    if (!in_range) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    store_datetime(*value, pack_datetime(parts));
    return BIFUN_OK;
}

// The same of a part of the date, where that exists then.
template <class Part> std::int32_t set_date_part(zqtime* value, Part datetime_parts::*part, Part number) {
    datetime_parts parts = unpack_datetime(load_datetime(*value));
    parts.*part = number;
    return set_part(value, part, number, date_exists(parts.year, parts.month, parts.day));
}

} // namespace

int32_t zqtime_encode(zqtime* result, int32_t year, uint32_t month, uint32_t day, uint32_t hour, uint32_t minute, uint32_t second,
                      uint32_t microsecond, int32_t zone) {
    if (!date_exists(year, month, day) || hour > 23 || minute > 59 || second > 59 || microsecond > 999'999 || !is_zone(zone)) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    return zqtime_encode_without_check(result, year, month, day, hour, minute, second, microsecond, zone);
}

int32_t zqtime_encode_without_check(zqtime* result, int32_t year, uint32_t month, uint32_t day, uint32_t hour, uint32_t minute,
                                    uint32_t second, uint32_t microsecond, int32_t zone) {
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
    const datetime_parts parts = unpack_datetime(load_datetime(*value));
    const auto put = [](auto* place, auto part) {
        if (place != nullptr) {
            *place = part;
        }
    };
    put(year, parts.year);
    put(month, parts.month);
    put(day, parts.day);
    put(hour, parts.hour);
    put(minute, parts.minute);
    put(second, parts.second);
    put(microsecond, parts.microsecond);
}

// ---- components ---------------------------------------------------------------------------------------------------

uint32_t zqtime_get_year(const zqtime* value) { return component(packed_datetimes::year(*value)); }

uint32_t zqtime_get_month(const zqtime* value) { return component(packed_datetimes::month(*value)); }

uint32_t zqtime_get_day(const zqtime* value) { return component(packed_datetimes::day(*value)); }

uint32_t zqtime_get_hour(const zqtime* value) { return component(packed_datetimes::hour(*value)); }

uint32_t zqtime_get_min(const zqtime* value) { return component(packed_datetimes::minute(*value)); }

uint32_t zqtime_get_sec(const zqtime* value) { return component(packed_datetimes::second(*value)); }

uint32_t zqtime_get_msec(const zqtime* value) { return component(packed_datetimes::microsecond(*value)); }

int32_t zqtime_get_tz(const zqtime* value) { return packed_datetimes::zone(*value); }

int32_t zqtime_get_zone_hour(const zqtime* value) { return packed_datetimes::zone_hour(*value); }

int32_t zqtime_get_zone_min(const zqtime* value) { return packed_datetimes::zone_minute(*value); }

int32_t zqtime_set_year(zqtime* value, int32_t year) { return set_date_part(value, &datetime_parts::year, year); }

int32_t zqtime_set_month(zqtime* value, uint32_t month) { return set_date_part(value, &datetime_parts::month, month); }

int32_t zqtime_set_day(zqtime* value, uint32_t day) { return set_date_part(value, &datetime_parts::day, day); }

int32_t zqtime_set_hour(zqtime* value, uint32_t hour) { return set_part(value, &datetime_parts::hour, hour, hour <= 23); }

int32_t zqtime_set_min(zqtime* value, uint32_t minute) { return set_part(value, &datetime_parts::minute, minute, minute <= 59); }

int32_t zqtime_set_sec(zqtime* value, uint32_t second) { return set_part(value, &datetime_parts::second, second, second <= 59); }

int32_t zqtime_set_msec(zqtime* value, uint32_t microsecond) {
    return set_part(value, &datetime_parts::microsecond, microsecond, microsecond <= 999'999);
}

int32_t zqtime_set_tz(zqtime* value, int32_t zone) { return set_part(value, &datetime_parts::zone, zone, is_zone(zone)); }

int32_t zqtime_set_hour_without_check(zqtime* value, uint32_t hour) { return set_part(value, &datetime_parts::hour, hour, true); }

// ---- places in the calendar ---------------------------------------------------------------------------------------

uint32_t zqtime_day_of_year(const zqtime* value) { return component(packed_datetimes::day_of_year(*value)); }

uint32_t zqtime_day_of_week(const zqtime* value) { return component(packed_datetimes::day_of_week(*value)); }

uint32_t zqtime_week_for_datepart(const zqtime* value) { return component(packed_datetimes::week(*value)); }

uint32_t zqtime_month_end_day(int32_t year, uint32_t month) { return bifun::calendar::last_day_of_month(year, month); }

int32_t zqtime_date_validate(int32_t year, uint32_t month, uint32_t day) {
    return packed_datetimes::validate_date(year, static_cast<std::int32_t>(month), static_cast<std::int32_t>(day));
}

int32_t zqtime_cmp_with_glgl(int32_t year, uint32_t month, uint32_t day) {
    return bifun::calendar::is_missing_day(year, month, day) ? 0 : bifun::calendar::is_gregorian(year, month, day) ? 1 : -1;
}

int32_t zqtime_glgl_need_adjust_by_zero(const zqtime* value) {
    return packed_datetimes::is_missing_day(packed_datetimes::year(*value), packed_datetimes::month(*value), packed_datetimes::day(*value))
               ? 1
               : 0;
}

int32_t zqtime_glgl_need_adjust_for_w(const zqtime* value) { return packed_datetimes::is_behind_changeover_in_month(*value) ? 1 : 0; }

// ---- whole values -------------------------------------------------------------------------------------------------

void zqtime_assign(zqtime* destination, const zqtime* source) { std::memmove(destination, source, sizeof *destination); }
