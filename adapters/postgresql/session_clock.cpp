// SPDX-License-Identifier: Apache-2.0
#include "adapters/postgresql/session_clock.h"

#include <limits>

#include "adapters/postgresql/api.h"

namespace postgresql_extension {
namespace {

// A zone's displacement stays the same for months: moments in [from, until) have that of the last one that was asked for.
struct known_span {
    const pg_tz* zone;
    std::int64_t from;
    std::int64_t until;
    std::int32_t seconds;
};
known_span known{nullptr, 0, 0, 0};

std::int32_t seconds_at(std::int64_t unix_seconds) {
    if (known.zone == session_timezone && unix_seconds >= known.from && unix_seconds < known.until) {
        return known.seconds;
    }
    const pg_time_t moment = unix_seconds;
    long before = 0;
    long after = 0;
    int before_is_summer = 0;
    int after_is_summer = 0;
    pg_time_t boundary = 0;
    const int found = pg_next_dst_boundary(&moment, &before, &before_is_summer, &boundary, &after, &after_is_summer, session_timezone);
    known = {session_timezone, unix_seconds, found > 0 ? boundary : std::numeric_limits<std::int64_t>::max(),
             static_cast<std::int32_t>(before)};
    return known.seconds;
}

std::int32_t whole_minutes(std::int32_t seconds) {
    constexpr std::int32_t half_a_minute = 30;
    return (seconds + (seconds < 0 ? -half_a_minute : half_a_minute)) / 60;
}

} // namespace

std::int32_t zone_at(std::int64_t unix_seconds) { return whole_minutes(seconds_at(unix_seconds)); }

std::int32_t zone_of_local(std::int64_t local_seconds) {
    constexpr std::int64_t seconds_per_day = 86'400;
    const std::int32_t before = seconds_at(local_seconds - seconds_per_day);
    const std::int32_t after = seconds_at(local_seconds + seconds_per_day);
    // What clocks show twice is the later time, and what they never show is by the zone before, as PostgreSQL has it.
    return whole_minutes(seconds_at(local_seconds - after) == after ? after : before);
}

} // namespace postgresql_extension
