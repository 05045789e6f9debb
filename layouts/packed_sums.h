// SPDX-License-Identifier: Apache-2.0
// Sums of packed datetimes for loops over many rows: without a branch, in words of 32 bits, of which loops make vectors. They are defined
// for any bits and right for usual values only, which `*_are_usual` tells by fewer instructions than the sum takes; what they give for
// those is what layouts/datetime_arithmetic.h does.
#ifndef BIFUN_LAYOUTS_PACKED_SUMS_H
#define BIFUN_LAYOUTS_PACKED_SUMS_H

#include <cstdint>

#include "bop/frame/contract.h"
#include "layouts/calendar.h"
#include "layouts/datetime_arithmetic.h"
#include "layouts/datetime_layout.h"

namespace bifun::packed_sums {

constexpr std::uint32_t first_date = datetime_layout::pack_date(calendar::min_year, 1, 1);
constexpr std::uint32_t last_date = datetime_layout::pack_date(calendar::max_year, 12, 31);

// && that never is a branch.
[[gnu::always_inline]] constexpr bool both(bool a, bool b) { return (static_cast<unsigned>(a) & static_cast<unsigned>(b)) != 0; }

// ---- days ---------------------------------------------------------------------------------------------------------

constexpr std::int64_t most_days = 1 << 22;

// Whether a date that is moved by up to most_days stays within the range of years for sure: a packed date rises by less than 2 for every
// day and by less than the margin at the end of a year.
[[gnu::always_inline]] constexpr bool days_are_usual(std::uint32_t date, std::uint32_t days) {
    constexpr std::uint32_t margin = 256;
    return date + 2 * days - (first_date + margin) <= last_date - first_date - 2 * margin;
}

[[gnu::always_inline]] constexpr std::uint32_t date_plus_days(std::uint32_t date, std::uint32_t days) {
    const std::uint32_t number = static_cast<std::uint32_t>(datetime_arithmetic::day_number_of_date(date)) + days;
    return datetime_arithmetic::pack_date(calendar::date_of_julian_day(static_cast<std::int32_t>(number)));
}

// 0 to 30 days, from fewer instructions than any number of them, to a date that is not of the month of the changeover, the one before it or
// the last.
constexpr std::uint32_t most_few_days = 30;
[[gnu::always_inline]] constexpr bool few_days_are_usual(std::uint32_t date) {
    constexpr std::uint32_t first_of_last_month = datetime_layout::with_day(last_date, 1);
    constexpr std::uint32_t month_of_changeover = datetime_arithmetic::first_gregorian_date >> 5;
    const std::uint32_t behind_august_1582 = (date >> 5) - (month_of_changeover - 1);
    return both(date<first_of_last_month, behind_august_1582> 1);
}

[[gnu::always_inline]] constexpr std::uint32_t date_plus_few_days(std::uint32_t date, std::uint32_t days) {
    const std::uint32_t month = datetime_layout::month_of_date(date);
    const std::uint32_t last_day = datetime_arithmetic::last_day_of_month(date);
    const std::uint32_t day = datetime_layout::day_of_date(date) + days;
    // One month on, or two where that is a February in which the day is not.
    const std::uint32_t next_month = 1U << 5;
    const std::uint32_t next_year = (1U << 9) - (12U << 5);
    const std::uint32_t february = calendar::last_day_of_month(datetime_layout::year_of_date(date), 2);
    const std::uint32_t passed = day > last_day ? next_month + (month == 12 ? next_year : 0U) - last_day : 0U;
    const bool passes_february = both(month == 1, day > 31 + february);
    return date + days + passed + (passes_february ? next_month - february : 0U);
}

[[gnu::always_inline]] inline void add_few_days(const zqtime& value, std::uint32_t days, zqtime& result) {
    datetime_layout::store_words(result, datetime_layout::load_time(value), date_plus_few_days(datetime_layout::load_date(value), days),
                                 datetime_layout::load_fraction_and_zone(value));
}

[[gnu::always_inline]] inline void add_days(const zqtime& value, std::uint32_t days, zqtime& result) {
    datetime_layout::store_words(result, datetime_layout::load_time(value), date_plus_days(datetime_layout::load_date(value), days),
                                 datetime_layout::load_fraction_and_zone(value));
}

// ---- months -------------------------------------------------------------------------------------------------------

constexpr std::int64_t most_months = 1 << 20;

// Since January of year -5000, from which packed years count; up to most_months are added.
[[gnu::always_inline]] constexpr std::uint32_t months_with(std::uint32_t date, std::uint32_t months) {
    return (date >> 9 & 0x3FFF) * 12 + datetime_layout::month_of_date(date) - 1 + months;
}

// Exactly whether the sum is within the range of years.
[[gnu::always_inline]] constexpr bool months_are_usual(std::uint32_t date, std::uint32_t months) {
    constexpr std::uint32_t first = months_with(first_date, 0);
    return months_with(date, months) - first <= months_with(last_date, 0) - first;
}

template <bool keep_last_day> [[gnu::always_inline]] constexpr std::uint32_t date_plus_months(std::uint32_t date, std::uint32_t months) {
    constexpr std::uint32_t first_missing_date =
        datetime_layout::with_day(datetime_arithmetic::first_gregorian_date, calendar::last_julian_day + 1);
    const std::uint32_t count = months_with(date, months);
    const std::uint32_t year = (count >> 2) * 43691 >> 17;                       // count / 12, for counts below 2^18
    const std::uint32_t first_day = (count << 5) + (year << 7) + (1U << 5 | 1U); // the remainder is the month: 512 - 12 * 32 = 128
    const std::uint32_t day = datetime_layout::day_of_date(date);
    const std::uint32_t last_day = datetime_arithmetic::last_day_of_month(first_day);
    const bool is_last = keep_last_day && day == datetime_arithmetic::last_day_of_month(date);
    const std::uint32_t wanted_day = is_last ? datetime_layout::day_bits : day;
    const std::uint32_t moved = first_day - 1 + (wanted_day < last_day ? wanted_day : last_day);
    constexpr std::uint32_t missing_days = datetime_arithmetic::first_gregorian_date - first_missing_date;
    return moved - first_missing_date < missing_days ? datetime_arithmetic::first_gregorian_date : moved;
}

template <bool keep_last_day> [[gnu::always_inline]] inline void add_months(const zqtime& value, std::uint32_t months, zqtime& result) {
    datetime_layout::store_words(result, datetime_layout::load_time(value),
                                 date_plus_months<keep_last_day>(datetime_layout::load_date(value), months),
                                 datetime_layout::load_fraction_and_zone(value));
}

// ---- times of day -------------------------------------------------------------------------------------------------

constexpr std::uint32_t seconds_per_day = datetime_arithmetic::seconds_per_day;
constexpr std::uint32_t origin_in_days = 24'855;                                          // half of what 32 bits of seconds hold
constexpr std::int64_t most_seconds = std::int64_t{origin_in_days - 2} * seconds_per_day; // 68 years

[[gnu::always_inline]] constexpr bool is_time_of_day(std::uint32_t time) { return time < datetime_layout::pack_time(24, 0, 0); }

[[gnu::always_inline]] constexpr bool seconds_are_usual(std::uint32_t time, std::uint32_t date, std::uint32_t seconds) {
    // Seconds are days in 17 bits, nearly; the margin of dates has room for what is lost.
    const auto days = static_cast<std::uint32_t>(static_cast<std::int32_t>(seconds) >> 16);
    return both(is_time_of_day(time), days_are_usual(date, days));
}

// Up to most_seconds; with `few` 0 to most_few_seconds, to a time of less than a day. The microseconds stay.
constexpr std::int64_t most_few_seconds = std::int64_t{most_few_days - 1} * seconds_per_day;

template <bool few> [[gnu::always_inline]] inline void add_seconds(const zqtime& value, std::uint32_t seconds, zqtime& result) {
    constexpr std::uint32_t origin = few ? 0 : origin_in_days;
    const std::uint32_t sum = datetime_layout::seconds_of_time(datetime_layout::load_time(value)) + seconds + origin * seconds_per_day;
    const std::uint32_t days = sum / seconds_per_day;
    const std::uint32_t time = sum - days * seconds_per_day;
    const std::uint32_t hour = time * 37283 >> 27;                   // time / 3600
    const std::uint32_t minute = (time - hour * 3600) * 34953 >> 21; // divided by 60
    const std::uint32_t date = datetime_layout::load_date(value);
    // A packed hour is 4096, its 64 minutes of 60 seconds 256 more than 3600: seconds_of_time() the other way.
    constexpr std::uint32_t zero_bit = 1U << 11;
    datetime_layout::store_words(result, time + 496 * hour + 4 * minute,
                                 few ? date_plus_few_days(date, days) : date_plus_days(date, days - origin),
                                 datetime_layout::load_fraction_and_zone(value) & ~zero_bit);
}

} // namespace bifun::packed_sums

#endif
