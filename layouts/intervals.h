// SPDX-License-Identifier: Apache-2.0
// The length of intervals, by which they are compared and added to packed datetimes: what the operations of engine/interval.h do.
#ifndef BIFUN_LAYOUTS_INTERVALS_H
#define BIFUN_LAYOUTS_INTERVALS_H

#include <cstdint>

#include "bop/frame/contract.h"
#include "layouts/order.h"

namespace bifun::intervals {

constexpr std::int64_t months_in(const bifun_interval_ym& interval) { return std::int64_t{interval.years} * 12 + interval.months; }

// Whole days of 24 hours, and microseconds beyond them, which may be of another sign and are within +-3 days. Any fields do.
struct day_time {
    std::int64_t days;
    std::int64_t microseconds;
};

constexpr day_time split(const bifun_interval_dt& interval) {
    constexpr std::int64_t seconds_per_day = 86'400;
    const std::int64_t seconds = (std::int64_t{interval.hours} * 60 + interval.minutes) * 60 + interval.seconds;
    return {.days = interval.days + seconds / seconds_per_day,
            .microseconds = seconds % seconds_per_day * 1'000'000 + interval.microseconds};
}

// The greatest span takes 68 bits.
constexpr __int128 microseconds_in(const bifun_interval_dt& interval) {
    const std::int64_t seconds = ((std::int64_t{interval.days} * 24 + interval.hours) * 60 + interval.minutes) * 60 + interval.seconds;
    return __int128{seconds} * 1'000'000 + interval.microseconds;
}

constexpr std::int32_t compare(const bifun_interval_ym& a, const bifun_interval_ym& b) { return order(months_in(a), months_in(b)); }
constexpr std::int32_t compare(const bifun_interval_dt& a, const bifun_interval_dt& b) {
    return order(microseconds_in(a), microseconds_in(b));
}

} // namespace bifun::intervals

#endif
