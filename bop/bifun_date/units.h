// SPDX-License-Identifier: Apache-2.0
// The units to which datetimes are truncated and rounded, by their names.
#ifndef BIFUN_DATE_UNITS_H
#define BIFUN_DATE_UNITS_H

#include <cstdint>

namespace bifun {

namespace unit {
enum code : std::int32_t {
    none = 0,
    day = 1,
    century = 2,
    year = 3,
    quarter = 4,
    month = 5,
    week_of_year = 6,  // weeks that begin on the weekday of 1 January
    week_of_month = 7, // on the weekday of the month's first day
    week = 8,          // on Sunday
    hour = 9,
    minute = 10,
    iso_week = 11, // on Monday
};
} // namespace unit

// The code of a unit by a name in any case; `none` for another text. One function for all instruction sets: it reads a constant, and is
// called once for a batch.
extern "C" std::int32_t ifun_parse_roundpart(const std::uint8_t* name, std::uint32_t length);

} // namespace bifun

#endif
