// SPDX-License-Identifier: Apache-2.0
// Arrays of datetimes against one value at a time, over the days around every place where a calendar turns and over random ones.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "adapters/binding/host_datetimes.h"
#include "adapters/binding/host_values.h"

namespace binding {
namespace {

std::vector<std::int64_t> timestamps() {
    std::vector<std::int64_t> made;
    for (const std::int32_t day :
         {first_host_day, first_host_day + 400, -719529, -141438, -141428, -141427, -1, 0, 1, days_to_2000, last_host_day}) {
        for (const std::int64_t microseconds : {std::int64_t{0}, std::int64_t{1}, std::int64_t{1023}, std::int64_t{999'999},
                                                microseconds_per_day / 2, microseconds_per_day - 1}) {
            made.push_back(day * microseconds_per_day + microseconds);
        }
    }
    std::mt19937_64 random(7);
    std::uniform_int_distribution<std::int64_t> any(first_host_day * microseconds_per_day, last_host_day * microseconds_per_day);
    for (int k = 0; k < 200'000; ++k) {
        const std::int64_t value = any(random);
        made.push_back(k % 4 != 0 ? value : value / microseconds_per_day * microseconds_per_day - k % 8 / 4);
    }
    return made;
}

TEST(HostDatetimes, ArraysAreTheirValues) {
    const std::vector<std::int64_t> values = timestamps();
    std::vector<zqtime> expected(values.size());
    std::vector<zqtime> read(values.size());
    std::vector<std::int32_t> days(values.size());
    bool all = true;
    for (std::size_t i = 0; i < values.size(); ++i) {
        all &= read_host_timestamp(values[i], 120, expected[i]);
        days[i] = static_cast<std::int32_t>((values[i] - first_host_day * microseconds_per_day) / microseconds_per_day) + first_host_day;
    }
    EXPECT_EQ(read_host_timestamps(values.data(), 120, read.data(), static_cast<std::uint32_t>(values.size())), all);
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(std::memcmp(&read[i], &expected[i], sizeof(zqtime)), 0) << values[i];
    }

    std::vector<std::int64_t> written(values.size());
    EXPECT_TRUE(write_host_timestamps(read.data(), written.data(), static_cast<std::uint32_t>(values.size())));
    EXPECT_EQ(written, values);

    read_host_dates(days.data(), read.data(), static_cast<std::uint32_t>(days.size()));
    std::vector<std::int32_t> written_days(days.size());
    EXPECT_TRUE(write_host_dates(read.data(), written_days.data(), static_cast<std::uint32_t>(days.size())));
    EXPECT_EQ(written_days, days);
}

TEST(HostDatetimes, WhatOneSideLacksIsRefused) {
    zqtime one{};
    for (const std::int32_t day : {first_host_day - 1, last_host_day + 1, INT32_MIN, INT32_MAX, -141428}) { // the last is 1582-10-14
        EXPECT_FALSE(read_host_dates(&day, &one, 1)) << day;
        std::int64_t microseconds = 0;
        if (!__builtin_mul_overflow(std::int64_t{day}, microseconds_per_day, &microseconds)) {
            EXPECT_FALSE(read_host_timestamps(&microseconds, 0, &one, 1)) << day;
        }
    }
    for (const std::int64_t value : {INT64_MIN, INT64_MAX, first_host_day * microseconds_per_day - 1}) {
        EXPECT_FALSE(read_host_timestamps(&value, 0, &one, 1)) << value;
    }
    std::int32_t day = 0;
    for (const auto& [year, exists] : {std::pair(1500, false), {1600, true}, {1200, true}, {-300, false}, {4, true}}) {
        bifun::datetime_layout::store_words(one, 0, bifun::datetime_layout::pack_date(year, 2, 29), 0);
        EXPECT_EQ(write_host_dates(&one, &day, 1), exists) << year;
        EXPECT_EQ(write_host_date(one, day), exists) << year;
    }
}

} // namespace
} // namespace binding
