// SPDX-License-Identifier: Apache-2.0
// The elements of format models, and what reading text by them takes.
#ifndef BIFUN_EMBEDDED_FORMAT_DATE_ELEMENTS_H
#define BIFUN_EMBEDDED_FORMAT_DATE_ELEMENTS_H

#include <span>
#include <string_view>

#include "embedded/format/date_format.h"

namespace zqengine {

// What an element says of a value that is read, as bits.
using said_set = std::uint32_t;
enum : said_set {
    says_nothing = 0,
    says_year = 1U << 0,
    says_month = 1U << 1,
    says_day = 1U << 2,
    says_day_of_year = 1U << 3,
    says_julian_day = 1U << 4,
    says_weekday = 1U << 5,
    says_era = 1U << 6,
    says_hour = 1U << 7,
    says_half_hour = 1U << 8, // 1 to 12
    says_meridian = 1U << 9,
    says_minute = 1U << 10,
    says_second = 1U << 11,
    says_seconds_of_day = 1U << 12,
    says_fraction = 1U << 13,
    says_zone_hour = 1U << 14,
    says_zone_minute = 1U << 15,
    says_zone = 1U << 16,
    has_sign = 1U << 17, // of a year, so that no era goes with it
};
inline constexpr said_set says_time =
    says_hour | says_half_hour | says_meridian | says_minute | says_second | says_seconds_of_day | says_fraction;
inline constexpr said_set says_of_zone = says_zone_hour | says_zone_minute | says_zone;

struct element_name {
    std::string_view name;
    date_element element;
    std::uint8_t digits; // of a number or a fraction
    said_set said;       // nothing: the element cannot be read
};

// Those that begin with a letter, of either case, and perhaps others.
std::span<const element_name> element_names(std::uint8_t letter);

// What an element says; nothing for one that cannot be read.
said_set said_by(date_element element);

} // namespace zqengine

#endif
