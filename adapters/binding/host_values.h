// SPDX-License-Identifier: Apache-2.0
// Datetimes and decimals as hosts have them, as values of the packed layouts and back. To be inlined into loops over rows.
//
// Hosts count days and microseconds by the Gregorian calendar, also before it was made. A date is the same year, month and day here: by
// the calendar of layouts/calendar.h days before 1582-10-15 are other days with the same names.
#ifndef BIFUN_ADAPTERS_BINDING_HOST_VALUES_H
#define BIFUN_ADAPTERS_BINDING_HOST_VALUES_H

#include <bit>
#include <cstdint>

#include "layouts/calendar.h"
#include "layouts/datetime_layout.h"
#include "layouts/decimal_layout.h"
#include "layouts/decimal_rounding.h"

namespace binding {

using bifun::decimal_layout::int128;
using bifun::decimal_layout::uint128;

// ---- datetimes ---------------------------------------------------------------------------------------------------------------

constexpr std::int64_t microseconds_per_second = 1'000'000;
constexpr std::int64_t microseconds_per_minute = 60 * microseconds_per_second;
constexpr std::int64_t microseconds_per_day = 24 * 60 * microseconds_per_minute;
constexpr std::int32_t julian_day_of_1970 = 2440588;
constexpr std::int32_t days_to_2000 = 10957; // from 1970

// Days from 1970 that dates can have, -4712-01-01 to 9999-12-31.
constexpr std::int32_t first_host_day = bifun::calendar::julian_day(bifun::calendar::min_year, 1, 1, true) - julian_day_of_1970;
constexpr std::int32_t last_host_day = bifun::calendar::number_of_last_day - julian_day_of_1970;

// What of a day count and of the microseconds since midnight, which are those of one day, is a datetime: false where there is no such date,
// and then the result is some datetime.
inline bool read_host_datetime(std::int64_t days_from_1970, std::int64_t microseconds, std::int32_t zone, zqtime& result) {
    using namespace bifun;
    const bool in_range = days_from_1970 >= first_host_day && days_from_1970 <= last_host_day;
    const calendar::calendar_date date =
        calendar::date_of_julian_day(in_range ? static_cast<std::int32_t>(days_from_1970) + julian_day_of_1970 : julian_day_of_1970, true);
    const auto seconds = static_cast<std::uint32_t>(microseconds / microseconds_per_second);
    const auto fraction = static_cast<std::uint32_t>(microseconds - std::int64_t{seconds} * microseconds_per_second);
    // Time and date in one store: a load of both would wait for two of them.
    datetime_layout::store_datetime(result,
                                    datetime_layout::join_words(datetime_layout::pack_time(seconds / 3600, seconds / 60 % 60, seconds % 60),
                                                                datetime_layout::pack_date(date.year, date.month, date.day),
                                                                datetime_layout::pack_fraction(fraction, zone)));
    return in_range && !calendar::is_missing_day(date.year, date.month, date.day);
}

// The same of microseconds from 1970.
inline bool read_host_timestamp(std::int64_t microseconds, std::int32_t zone, zqtime& result) {
    const std::int64_t days = microseconds / microseconds_per_day - (microseconds % microseconds_per_day < 0 ? 1 : 0);
    return read_host_datetime(days, microseconds - days * microseconds_per_day, zone, result);
}

// A time is one of the day that such values have: 1900-01-01.
inline void read_host_time(std::int64_t microseconds, std::int32_t zone, zqtime& result) {
    constexpr std::int32_t day_of_times = -25567;
    (void)read_host_datetime(day_of_times, microseconds, zone, result);
}

// False where the host has no such date: 29 February of a century before 1582 that 400 does not divide.
inline bool write_host_date(const zqtime& value, std::int32_t& days_from_1970) {
    using namespace bifun;
    const std::uint32_t packed = datetime_layout::load_date(value);
    const std::int32_t year = datetime_layout::year_of_date(packed);
    const std::uint32_t month = datetime_layout::month_of_date(packed);
    const std::uint32_t day = datetime_layout::day_of_date(packed);
    days_from_1970 = calendar::julian_day(year, month, day, true) - julian_day_of_1970;
    const bool is_common_century = year % 100 == 0 && year % 400 != 0;
    return !(is_common_century && month == 2 && day == 29);
}

inline std::int64_t write_host_time(const zqtime& value) {
    using namespace bifun;
    return datetime_layout::seconds_of_time(datetime_layout::load_time(value)) * microseconds_per_second +
           datetime_layout::microsecond_of_fraction(datetime_layout::load_fraction_and_zone(value));
}

// In minutes east of UTC; `otherwise` where the value has none.
inline std::int32_t write_host_zone(const zqtime& value, std::int32_t otherwise) {
    const std::int32_t zone = bifun::datetime_layout::zone_of_fraction(bifun::datetime_layout::load_fraction_and_zone(value));
    return zone == ZQTIME_NO_ZONE ? otherwise : zone;
}

// ---- decimals ------------------------------------------------------------------------------------------------------------------

constexpr std::int32_t most_coefficient_digits = bifun::decimal_layout::max_coefficient_digits;

// Decimal digits of a number of so many bits, or one less: log10(2) is 0.30103, 1233 / 4096 a little less.
constexpr std::uint32_t fewest_digits(std::uint32_t bits) { return bits * 1233 >> 12; }

inline std::uint32_t digits_of(std::uint64_t number) {
    const std::uint32_t fewest = fewest_digits(static_cast<std::uint32_t>(std::bit_width(number)));
    return fewest + (number >= static_cast<std::uint64_t>(bifun::decimal_layout::powers_of_ten[fewest]) ? 1 : 0);
}

inline std::uint32_t digits_of(uint128 number) {
    const auto high = static_cast<std::uint64_t>(number >> 64);
    if (high == 0) {
        return digits_of(static_cast<std::uint64_t>(number));
    }
    const std::uint32_t fewest = fewest_digits(static_cast<std::uint32_t>(64 + std::bit_width(high)));
    return fewest + (number >= bifun::decimal_layout::powers_of_ten[fewest] ? 1 : 0);
}

template <class Word> struct scaled {
    Word number;
    std::uint32_t scale;
};

// The same value without zeros at the end of its fraction. Called, as most values have none.
template <class Word> [[gnu::noinline]] scaled<Word> without_closing_zeros(scaled<Word> value) {
    const auto drop = [&](std::uint32_t count, Word power) {
        if (value.scale >= count && value.number % power == 0) {
            value.number /= power;
            value.scale -= count;
        }
    };
    drop(8, 100'000'000);
    drop(4, 10'000);
    drop(2, 100);
    drop(1, 10);
    if (value.scale >= 8) { // more than 15 of them
        while (value.scale > 0 && value.number % 10 == 0) {
            value.number /= 10;
            --value.scale;
        }
    }
    return value;
}

// number / 10^scale, below 10^38, with no more digits behind the point than it needs.
inline void read_host_decimal(int128 number, std::uint32_t scale, xdec& result) {
    using namespace bifun;
    const bool negative = number < 0;
    uint128 magnitude = negative ? -static_cast<uint128>(number) : static_cast<uint128>(number);
    if (magnitude == 0) {
        decimal_layout::store_parts(result, decimal_layout::pack_head(XDEC_ZERO, 1, 0, 0), std::uint64_t{0});
        return;
    }
    const std::uint32_t mark = negative ? XDEC_NEGATIVE : XDEC_POSITIVE;
    if (magnitude >> 64 == 0) {
        scaled<std::uint64_t> value{static_cast<std::uint64_t>(magnitude), scale};
        if (value.number % 10 == 0) {
            value = without_closing_zeros(value);
        }
        decimal_layout::store_parts(result, decimal_layout::pack_head(mark, digits_of(value.number), value.scale, 0), value.number);
        return;
    }
    scaled<uint128> value{magnitude, scale};
    if ((value.number & 1) == 0) { // what 10 divides, 2 divides
        value = without_closing_zeros(value);
    }
    decimal_layout::store_parts(result, decimal_layout::pack_head(mark, digits_of(value.number), value.scale, 0), value.number);
}

// write_host_decimal where it is not one multiplication.
[[gnu::noinline]] inline bool write_unusual_decimal(const xdec& value, std::uint32_t scale, uint128& magnitude) {
    using namespace bifun::decimal_layout;
    magnitude = coefficient(value);
    const std::uint32_t own_scale = value.bytes[scale_at];
    if (own_scale > scale) {
        const std::uint32_t cut = own_scale - scale;
        if (cut > static_cast<std::uint32_t>(most_coefficient_digits)) {
            magnitude = 0;
        } else {
            const uint128 power = powers_of_ten[cut];
            const uint128 rest = magnitude % power;
            magnitude = magnitude / power + (rest >= power - rest ? 1 : 0);
        }
        return true;
    }
    const std::uint32_t added = scale - own_scale + value.bytes[exponent_at];
    if (magnitude != 0 && added + digits_of(magnitude) > static_cast<std::uint32_t>(most_coefficient_digits)) {
        return false;
    }
    magnitude *= magnitude == 0 ? 1 : powers_of_ten[added];
    return true;
}

// The value times 10^scale, halves away from zero; false where it has more than 38 digits.
inline bool write_host_decimal(const xdec& value, std::uint32_t scale, int128& result) {
    using namespace bifun::decimal_layout;
    constexpr std::uint32_t most_added = 18; // to at most twenty digits
    const uint128 own = coefficient(value);
    const std::uint32_t added = scale - value.bytes[scale_at] + value.bytes[exponent_at]; // or wraps
    uint128 magnitude;
    if (own >> 64 == 0 && added <= most_added && value.bytes[scale_at] <= scale) [[likely]] {
        magnitude = uint128{static_cast<std::uint64_t>(own)} * static_cast<std::uint64_t>(powers_of_ten[added]);
    } else {
        uint128 unusual = 0; // of its own: the usual one stays in registers
        if (!write_unusual_decimal(value, scale, unusual)) {
            return false;
        }
        magnitude = unusual;
    }
    const uint128 sign = 0 - static_cast<uint128>(value.bytes[0] == XDEC_NEGATIVE); // all bits
    result = static_cast<int128>((magnitude ^ sign) - sign);
    return true;
}

} // namespace binding

#endif
