// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdint>
#include <ctime>

#include "bop/frame/status.h"
#include "engine/datetime.h"
#include "engine/session.h"
#include "layouts/calendar.h"
#include "layouts/datetime_arithmetic.h"

namespace {

using bifun::datetime_arithmetic::seconds_per_day;

constexpr std::int64_t seconds_to_1970 = bifun::calendar::julian_day(1970, 1, 1) * seconds_per_day;

// The microseconds without the digits of the second behind `precision`, 0-6.
std::uint32_t cut_fraction(std::uint32_t microseconds, std::int32_t precision) {
    std::uint32_t unit = 1;
    for (std::int32_t digits = precision; digits < 6; ++digits) {
        unit *= 10;
    }
    return microseconds - microseconds % unit;
}

std::int32_t process_time(std::time_t seconds, std::uint32_t microseconds, zqtime* now) {
    std::tm local;
    if (localtime_r(&seconds, &local) == nullptr) {
        return BIFUN_INVALID_DATETIME;
    }
    const auto part = [](int number) { return static_cast<std::uint32_t>(number); };
    // Some zones count leap seconds.
    return zqtime_encode(now, local.tm_year + 1900, part(local.tm_mon + 1), part(local.tm_mday), part(local.tm_hour), part(local.tm_min),
                         part(std::min(local.tm_sec, 59)), microseconds, ZQTIME_NO_ZONE);
}

// A moment, counted from 1970 in UTC, as clocks with the displacement of `clock_zone` show it.
std::int32_t shown_by_clocks(std::int64_t unix_seconds, std::uint32_t microseconds, std::int32_t clock_zone, std::int32_t zone,
                             zqtime* shown) {
    // More would leave the range of years anyway, and overflow on the way.
    constexpr std::int64_t beyond_range = std::int64_t{1} << 40;
    const std::int64_t seconds = std::clamp(unix_seconds, -beyond_range, beyond_range) + std::int64_t{clock_zone} * 60 + seconds_to_1970;
    if (seconds < 0 || seconds / seconds_per_day > bifun::calendar::number_of_last_day) {
        return BIFUN_INVALID_DATETIME;
    }
    const auto date = bifun::calendar::date_of_julian_day(static_cast<std::int32_t>(seconds / seconds_per_day));
    const auto second_of_day = static_cast<std::uint32_t>(seconds % seconds_per_day);
    return zqtime_encode(shown, date.year, date.month, date.day, second_of_day / 3600, second_of_day / 60 % 60, second_of_day % 60,
                         microseconds, zone);
}

} // namespace

int32_t zqtime_tz_now(int32_t precision, int32_t zone, zqtime* now) {
    if (precision < 0 || precision > 6) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    std::timespec time;
    clock_gettime(CLOCK_REALTIME, &time);
    const std::uint32_t microseconds = cut_fraction(static_cast<std::uint32_t>(time.tv_nsec / 1000), precision);
    if (zone == ZQTIME_NO_ZONE) {
        return process_time(time.tv_sec, microseconds, now);
    }
    return shown_by_clocks(time.tv_sec, microseconds, zone, zone, now);
}

int32_t zqtime_from_unix_time(const bifun_environment* environment, int64_t seconds, zqtime* result) {
    return shown_by_clocks(seconds, 0, sess4_get_time_zone(environment), ZQTIME_NO_ZONE, result);
}

int32_t zqtime_unix_timestamp(int32_t /*zone*/, const zqtime* value, int64_t* seconds) { return zqtime_unix_timestamp_low(value, seconds); }

int32_t zqtime_unix_timestamp_low(const zqtime* value, int64_t* seconds) {
    *seconds = bifun::datetime_arithmetic::seconds_of(bifun::datetime_layout::load_datetime(*value)) - seconds_to_1970;
    return BIFUN_OK;
}
