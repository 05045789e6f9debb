// SPDX-License-Identifier: Apache-2.0
// The weekday rule: whole days since a Sunday. Days of the Julian part of the calendar count as they passed.
#ifndef BIFUN_DATE_WEEKDAY_H
#define BIFUN_DATE_WEEKDAY_H

#include "bop/bifun_date/datetime_operations.h"

namespace bifun {

// 0 Sunday to 6 Saturday. Returns 0 or the engine's status.
template <class Datetimes> status ifun_weekday_in(Datetimes /*how*/, const zqtime& value, std::int32_t& weekday) {
    std::int32_t days = 0;
    const status counted = Datetimes::days_from_reference(value, days);
    const std::int32_t rest = days % 7;
    weekday = rest + (rest >> 31 & 7); // 7 where it is negative, without a branch
    return counted;
}

// The same rule, under the name that moves to a weekday know it by.
template <class Datetimes> status ifun_weekday_in_for_glgl_special(Datetimes datetimes, const zqtime& value, std::int32_t& weekday) {
    return ifun_weekday_in(datetimes, value, weekday);
}

} // namespace bifun

#endif
