// SPDX-License-Identifier: Apache-2.0
// Configuration parameters of the process: what ini_get_value reads.
#ifndef BIFUN_EMBEDDED_SESSION_PARAMETERS_H
#define BIFUN_EMBEDDED_SESSION_PARAMETERS_H

#include <cstdint>

namespace zqengine {

// Sets a parameter for all sessions. Safe at any time; a call that runs keeps the value that it has read. Returns 0; -6803 where there is
// no such parameter or the value is outside its range, and then nothing is changed. The parameters, with their first values:
//     529 INI_SHOW_FRACTION   0      0 or 1: whether times and datetimes without a format are shown with six digits of the fraction
//     650 INI_NOW_TIME_ZONE   1000   minutes -840..840 east of UTC, or 1000 for the process's own zone
[[nodiscard]] std::int32_t set_parameter(std::int32_t number, std::int64_t value);

// What ini_enable_oracle_date_fmt tells; false at first. Safe at any time.
void set_dates_keep_time(bool keep);

} // namespace zqengine

#endif
