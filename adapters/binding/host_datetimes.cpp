// SPDX-License-Identifier: Apache-2.0
#include "adapters/binding/host_datetimes.h"

#include <algorithm>
#include <bit>

#include "adapters/binding/host_values.h"

// Three times, for what the machine has. Datetimes of twelve bytes do not go into vectors: each loop over a block reads or writes words
// side by side, and another one puts them together.
#if defined(__x86_64__) && !defined(__clang__)
#define FOR_ALL_MACHINES __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define FOR_ALL_MACHINES
#endif

namespace binding {
namespace {

using namespace bifun;

constexpr std::uint32_t block_rows = 256;

struct word_block {
    std::uint32_t time[block_rows];
    std::uint32_t date[block_rows];
    std::uint32_t fraction_and_zone[block_rows];
};

[[gnu::always_inline]] inline void store_block(const word_block& words, zqtime* results, std::uint32_t rows) {
    for (std::uint32_t k = 0; k < rows; ++k) {
        datetime_layout::store_words(results[k], words.time[k], words.date[k], words.fraction_and_zone[k]);
    }
}

[[gnu::always_inline]] inline void load_block(const zqtime* values, word_block& words, std::uint32_t rows) {
    for (std::uint32_t k = 0; k < rows; ++k) {
        words.time[k] = datetime_layout::load_time(values[k]);
        words.date[k] = datetime_layout::load_date(values[k]);
        words.fraction_and_zone[k] = datetime_layout::load_fraction_and_zone(values[k]);
    }
}

// What rows have that cannot be converted is counted, not collected by `or`: of that gcc makes a choice, and no vectors.

// The packed date of a day since the first that there is; 1 is added to `missing` where the library has no such day.
[[gnu::always_inline]] inline std::uint32_t pack_host_day(std::uint32_t day, std::uint32_t& missing) {
    const calendar::calendar_date date =
        calendar::date_of_julian_day(static_cast<std::int32_t>(day) + first_host_day + julian_day_of_1970, true);
    constexpr std::uint32_t before =
        datetime_layout::pack_date(calendar::changeover_year, calendar::changeover_month, calendar::last_julian_day);
    constexpr std::uint32_t behind =
        datetime_layout::pack_date(calendar::changeover_year, calendar::changeover_month, calendar::first_gregorian_day);
    const std::uint32_t packed = datetime_layout::pack_date(date.year, date.month, date.day);
    missing += static_cast<std::uint32_t>(packed - (before + 1) < behind - (before + 1));
    return packed;
}

// The number where all bits of the mask are set, or 0.
[[gnu::always_inline]] inline double double_if(std::uint64_t mask, double number) {
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(number) & mask);
}

// How many whole times `divisor` goes into an integer from 0 below 2^51, and what is left. A quotient by the reciprocal is too large by one
// at most.
[[gnu::always_inline]] inline double divide_whole(double number, double divisor, double& rest) {
    constexpr double rounder = 0x1.8p52; // what is below 2^51 and added to it has no fraction any more
    double quotient = (number * (1 / divisor) + rounder) - rounder;
    rest = number - quotient * divisor;
    const std::uint64_t is_negative = 0 - (std::bit_cast<std::uint64_t>(rest) >> 63); // all bits; no branch, as there would be for a choice
    quotient -= double_if(is_negative, 1);
    rest += double_if(is_negative, divisor);
    return quotient;
}

// An integer below 2^52, by the bits of a double: no conversion of 64 bits is a vector instruction everywhere.
[[gnu::always_inline]] inline double double_of(std::uint64_t number) {
    return std::bit_cast<double>(number | 0x4330'0000'0000'0000) - 0x1p52;
}

[[gnu::always_inline]] inline std::uint32_t integer_of(double number) {
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(number));
}

} // namespace

FOR_ALL_MACHINES bool read_host_dates(const std::int32_t* values, zqtime* results, std::uint32_t row_count) {
    constexpr std::uint32_t last = last_host_day - first_host_day;
    word_block words{};
    std::fill_n(words.fraction_and_zone, block_rows, datetime_layout::pack_fraction(0, ZQTIME_NO_ZONE));
    std::uint32_t unknown = 0;
    for (std::uint32_t first = 0; first < row_count; first += block_rows) {
        const std::uint32_t rows = std::min(row_count - first, block_rows);
        for (std::uint32_t k = 0; k < rows; ++k) {
            const std::uint32_t day = static_cast<std::uint32_t>(values[first + k]) - static_cast<std::uint32_t>(first_host_day);
            unknown += static_cast<std::uint32_t>(day > last);
            words.date[k] = pack_host_day(day > last ? 0 : day, unknown);
        }
        store_block(words, results + first, rows);
    }
    return unknown == 0;
}

FOR_ALL_MACHINES bool read_host_timestamps(const std::int64_t* values, std::int32_t zone, zqtime* results, std::uint32_t row_count) {
    constexpr std::uint64_t origin = static_cast<std::uint64_t>(std::int64_t{first_host_day} * microseconds_per_day);
    constexpr std::uint64_t span = static_cast<std::uint64_t>((std::int64_t{last_host_day} - first_host_day + 1) * microseconds_per_day);
    // 1,024 microseconds are a part of which a day has a whole number, and there are not too many of them for divide_whole.
    constexpr std::uint32_t part_bits = 10;
    constexpr double parts_per_day = static_cast<double>(microseconds_per_day >> part_bits);
    static_assert(microseconds_per_day % (1 << part_bits) == 0 && span >> part_bits < std::uint64_t{1} << 51);
    word_block words;
    std::uint32_t days[block_rows];
    std::uint32_t seconds[block_rows];
    std::uint32_t microseconds[block_rows];
    std::uint64_t outside = 0;
    std::uint32_t missing = 0;
    for (std::uint32_t first = 0; first < row_count; first += block_rows) {
        const std::uint32_t rows = std::min(row_count - first, block_rows);
        for (std::uint32_t k = 0; k < rows; ++k) {
            const std::uint64_t number = static_cast<std::uint64_t>(values[first + k]) - origin;
            const auto is_outside = static_cast<std::uint64_t>(number >= span);
            outside += is_outside;
            const std::uint64_t inside = number & (is_outside - 1);
            double parts = 0;
            double rest = 0;
            days[k] = integer_of(divide_whole(double_of(inside >> part_bits), parts_per_day, parts));
            const double of_day = parts * (1 << part_bits) + double_of(inside & ((1U << part_bits) - 1));
            seconds[k] = integer_of(divide_whole(of_day, static_cast<double>(microseconds_per_second), rest));
            microseconds[k] = integer_of(rest);
        }
        for (std::uint32_t k = 0; k < rows; ++k) {
            words.time[k] = datetime_layout::pack_time(seconds[k] / 3600, seconds[k] / 60 % 60, seconds[k] % 60);
            words.date[k] = pack_host_day(days[k], missing);
            words.fraction_and_zone[k] = datetime_layout::pack_fraction(microseconds[k], zone);
        }
        store_block(words, results + first, rows);
    }
    return outside == 0 && missing == 0;
}

namespace {

// Days since 1970 of a packed date; 1 is added to `unknown` where hosts have no such day.
[[gnu::always_inline]] inline std::int32_t host_day(std::uint32_t packed, std::uint32_t& unknown) {
    const std::int32_t year = datetime_layout::year_of_date(packed);
    const std::uint32_t month = datetime_layout::month_of_date(packed);
    const std::uint32_t day = datetime_layout::day_of_date(packed);
    // Each fourth year before the changeover has a leap day here; hosts have none where 25 divides such a year and 16 does not.
    const std::uint32_t years = static_cast<std::uint32_t>(year) + 10'000; // a multiple of 400
    unknown += static_cast<std::uint32_t>(((month ^ 2) | (day ^ 29)) == 0 && years % 25 == 0 && (years & 15) != 0);
    return calendar::julian_day(year, month, day, true) - julian_day_of_1970;
}

} // namespace

FOR_ALL_MACHINES bool write_host_dates(const zqtime* values, std::int32_t* results, std::uint32_t row_count) {
    word_block words;
    std::int32_t days[block_rows];
    std::uint32_t unknown = 0;
    for (std::uint32_t first = 0; first < row_count; first += block_rows) {
        const std::uint32_t rows = std::min(row_count - first, block_rows);
        load_block(values + first, words, rows);
        for (std::uint32_t k = 0; k < rows; ++k) {
            days[k] = host_day(words.date[k], unknown);
        }
        std::copy_n(days, rows, results + first);
    }
    return unknown == 0;
}

FOR_ALL_MACHINES bool write_host_timestamps(const zqtime* values, std::int64_t* results, std::uint32_t row_count) {
    word_block words;
    std::int32_t days[block_rows];
    std::uint32_t unknown = 0;
    for (std::uint32_t first = 0; first < row_count; first += block_rows) {
        const std::uint32_t rows = std::min(row_count - first, block_rows);
        load_block(values + first, words, rows);
        for (std::uint32_t k = 0; k < rows; ++k) {
            days[k] = host_day(words.date[k], unknown);
            words.time[k] = datetime_layout::seconds_of_time(words.time[k]);
        }
        for (std::uint32_t k = 0; k < rows; ++k) {
            results[first + k] = days[k] * microseconds_per_day + words.time[k] * microseconds_per_second +
                                 datetime_layout::microsecond_of_fraction(words.fraction_and_zone[k]);
        }
    }
    return unknown == 0;
}

} // namespace binding
