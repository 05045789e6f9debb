// SPDX-License-Identifier: Apache-2.0
// The characters of a datetime that stand in texts of fixed width.
#ifndef BIFUN_EMBEDDED_FORMAT_DATE_DIGITS_H
#define BIFUN_EMBEDDED_FORMAT_DATE_DIGITS_H

#include <cstdint>

namespace zqengine {

// Where they lie, once a value has been taken apart.
enum digit_source : std::uint8_t {
    source_date = 0, // YYYYMMDD
    source_year = source_date,
    source_month = source_date + 4,
    source_day = source_date + 6,
    source_time = 8, // 00HHMMSS
    source_hour = source_time + 2,
    source_minute = source_time + 4,
    source_second = source_time + 6,
    source_fraction = 16,  // FFFFFF00
    source_half_hour = 24, // HHAMampm
    source_upper_meridian = source_half_hour + 2,
    source_lower_meridian = source_half_hour + 4,
    source_month_name = 32, // Jan, JAN and jan, four bytes each
    source_day_name = 48,   // likewise
    source_zone = 64,       // +HH:MM
    source_size = 80,
};

// What is made ready only where it is needed, as bits.
enum digit_part : std::uint16_t {
    part_date = 1,
    part_time = 2,
    part_fraction = 4,
    part_half_hour = 8,
    part_month_name = 16,
    part_day_name = 32,
    part_zone = 64,
};

} // namespace zqengine

#endif
