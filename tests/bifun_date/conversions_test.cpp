// SPDX-License-Identifier: Apache-2.0
// TO_DATETIME against a calendar that is walked a day at a time, unix times against the C library's, times of seconds, and texts without a
// format.

#include <ctime>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "embedded/session/parameters.h"
#include "engine/datetime.h"
#include "engine/session.h"
#include "tests/contract/each_engine.h"
#include "tests/contract/text_case.h"

namespace {

struct parts {
    std::int32_t year, month, day, hour, minute;
};

std::int32_t length_of(std::int32_t year, std::int32_t month) {
    constexpr std::int32_t lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool is_leap = year % 4 == 0 && (year < 1583 || year % 100 != 0 || year % 400 == 0);
    return lengths[month - 1] + (month == 2 && is_leap ? 1 : 0);
}

// Days follow each other as the months number them.
void next_day(parts& at) {
    if (++at.day > length_of(at.year, at.month)) {
        at.day = 1;
        at.year += at.month == 12 ? 1 : 0;
        at.month = at.month % 12 + 1;
    }
}

void last_day(parts& at) {
    if (--at.day == 0) {
        at.month = at.month == 1 ? 12 : at.month - 1;
        at.year -= at.month == 12 ? 1 : 0;
        at.day = length_of(at.year, at.month);
    }
}

parts rolled_over(const parts& given) {
    parts at{given.year, given.month, 1, given.hour, given.minute};
    for (; at.minute < 0; at.minute += 60) {
        --at.hour;
    }
    for (; at.minute > 59; at.minute -= 60) {
        ++at.hour;
    }
    std::int32_t days = given.day - 1;
    for (; at.hour < 0; at.hour += 24) {
        --days;
    }
    for (; at.hour > 23; at.hour -= 24) {
        ++days;
    }
    for (; days > 0; --days) {
        next_day(at);
    }
    for (; days < 0; ++days) {
        last_day(at);
    }
    if (at.year == 1582 && at.month == 10 && at.day > 4 && at.day < 15) {
        at.day = 15;
    }
    return at;
}

zqtime encoded(const parts& at) {
    zqtime value{};
    const auto part = [](std::int32_t number) { return static_cast<std::uint32_t>(number); };
    EXPECT_EQ(zqtime_encode(&value, at.year, part(at.month), part(at.day), part(at.hour), part(at.minute), 0, 0, ZQTIME_NO_ZONE), 0);
    return value;
}

TEST(ToDatetime, RollsOverAsTheCalendarIsWalked) {
    std::mt19937 random(21); // NOLINT(cert-msc51-cpp): every run is the same
    const auto within = [&](std::int32_t limit) {
        return static_cast<std::int32_t>(random() % (2U * static_cast<unsigned>(limit))) - limit;
    };
    constexpr std::uint32_t row_count = 20'000;
    std::vector<std::vector<std::int32_t>> arguments(5);
    std::vector<zqtime> expected;
    while (expected.size() < row_count) {
        const std::int32_t year = expected.size() % 4 == 0 ? 1582 : expected.size() % 4 == 1 ? within(4700) : 2000 + within(400);
        const parts given{year, 1 + static_cast<std::int32_t>(random() % 12), within(400), within(3000), within(9000)};
        const parts result = rolled_over(given);
        if (result.year == 0) {
            continue;
        }
        expected.push_back(encoded(result));
        const std::int32_t numbers[] = {given.year, given.month, given.day, given.hour, given.minute};
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            arguments[i].push_back(numbers[i]);
        }
    }
    const contract::outcome outcome =
        contract::call_with("bto_datetime_aaaaa_date", arguments[0], arguments[1], arguments[2], arguments[3], arguments[4]);
    ASSERT_EQ(outcome.status, 0);
    for (std::uint32_t row = 0; row < row_count; ++row) {
        EXPECT_EQ(zqtime_cmp(&zqengine::values_of<zqtime>(*outcome.result)[row], &expected[row]), 0)
            << contract::write_value(*outcome.result, row) << ' ' << row;
    }
}

TEST(ToDatetime, OfLargeNumbers) {
    contract::expect_results({
        "bto_datetime_aaaaa_date | 2024 2024 1582 2 | 1 3 10 1 | 31 0 5 1 | 25 0 0 0 | 0 0 0 0 | "
        "[1] 2024-02-01T01:00:00 2024-02-29 1582-10-15 0002-01-01",
        "bto_datetime_aaaaa_date | 1582 1582 1582 1582 1582 | 10 10 10 10 1 | 4 14 15 31 365 | 24 0 0 0 0 | 0 0 0 0 0 | "
        "[1] 1582-10-15 1582-10-15 1582-10-15 1582-10-31 1582-12-31",
        // Hours and minutes beyond 32 bits of minutes.
        "bto_datetime_aaaaa_date | 2024 2024 | 1 1 | 1 89478488 | 2147483647 -2147483648 | -2147483648 0 | "
        "[0] NULL ? status -6118",
        "bto_datetime_aaaaa_date | 2024 | 1 | 1 | 1 | -59 | [1] 2024-01-01T00:01:00",
    });
}

TEST(UnixTimes, AreThoseOfTheCLibrary) {
    std::mt19937_64 random(22); // NOLINT(cert-msc51-cpp): every run is the same
    std::vector<std::int64_t> seconds{0, 1, 86'399, 86'400, 951'782'400, 2'147'483'647};
    while (seconds.size() < 5000) {
        seconds.push_back(static_cast<std::int64_t>(random() % 2'147'483'648U));
    }
    const contract::outcome moments = contract::call_with("bfrom_unixtime_a_date", seconds);
    ASSERT_EQ(moments.status, 0);
    const auto* const values = zqengine::values_of<zqtime>(*moments.result);
    for (std::uint32_t row = 0; row < seconds.size(); ++row) {
        const std::time_t time = seconds[row];
        std::tm expected;
        ASSERT_NE(gmtime_r(&time, &expected), nullptr);
        const zqtime& value = values[row];
        EXPECT_EQ(static_cast<int>(zqtime_get_year(&value)), expected.tm_year + 1900);
        EXPECT_EQ(static_cast<int>(zqtime_get_month(&value)), expected.tm_mon + 1);
        EXPECT_EQ(static_cast<int>(zqtime_get_day(&value)), expected.tm_mday);
        EXPECT_EQ(static_cast<int>(zqtime_get_hour(&value)), expected.tm_hour);
        EXPECT_EQ(static_cast<int>(zqtime_get_min(&value)), expected.tm_min);
        EXPECT_EQ(static_cast<int>(zqtime_get_sec(&value)), expected.tm_sec);
        EXPECT_EQ(zqtime_get_tz(&value), ZQTIME_NO_ZONE);
    }
    for (const char* const symbol : {"bunix_timestamp_a_date", "bunix_timestamp_num_a_date"}) {
        const contract::outcome back = contract::call_with(symbol, std::vector(values, values + seconds.size()));
        for (std::uint32_t row = 0; row < seconds.size(); ++row) {
            EXPECT_EQ(zqengine::values_of<std::int64_t>(*back.result)[row], seconds[row]) << symbol;
        }
    }
}

TEST(UnixTimes, OutOfRangeOrWithZones) {
    contract::expect_results({
        "bfrom_unixtime_a_date | -1 2147483648 0 -9223372036854775808 9223372036854775807 | "
        "[0] NULL NULL 1970-01-01 NULL NULL",
        "bfrom_unixtime_a_date | [7] 5 | [7] 1970-01-01T00:00:05",
        // A zone does not count; a fraction is cut, also before 1970.
        "bunix_timestamp_a_date | 1970-01-01T00:00:05.9+05:00 1969-12-31T23:59:59.5 1582-10-04 9999-12-31T23:59:59 | "
        "[1] 5 -1 -12219379200 253402300799",
        "bunix_timestamp_str_a_date | 1970-01-02 x 1970-01-01T00:01:00Z | [0] 86400 NULL 60",
    });
}

TEST(UnixTimes, OfNullIsNow) {
    const auto evaluated = contract::evaluate({"bunix_timestamp_a_date", {"NULL"}, {}});
    // What a clock without a zone shows, taken for UTC.
    zqtime now;
    std::int64_t expected = 0;
    ASSERT_EQ(zqtime_tz_now(0, ZQTIME_NO_ZONE, &now), 0);
    ASSERT_EQ(zqtime_unix_timestamp_low(&now, &expected), 0);
    EXPECT_TRUE(evaluated == "[0] " + std::to_string(expected) || evaluated == "[0] " + std::to_string(expected - 1)) << evaluated;
    EXPECT_EQ(contract::evaluate({"bunix_timestamp_str_a_date", {"NULL"}, {}}).substr(0, 8), evaluated.substr(0, 8));
}

TEST(DefaultTexts, AreReadAndWritten) {
    each_engine::expect_results({
        "bto_date_def_a_date | 20240229 2024-2-9 2024/02/29 2024.2.09 2024@2@9 2024#2#9 2024$2$9 2024%2%9 2024*2*9 99-1-02 | "
        "[1] 2024-02-29 2024-02-09 2024-02-29 2024-02-09 2024-02-09 2024-02-09 2024-02-09 2024-02-09 2024-02-09 0099-01-02",
        "bto_date_def_a_date | 1582-10-04 1582-10-05 15821014 1582-10-15 1500-02-29 | "
        "[1] 1582-10-04 1582-10-15 1582-10-15 1582-10-15 1500-02-29",
        "bto_timestamp_def_a_date | 2024-02-29~1:2:3 20240229~23:59:59.9999999 1582-10-10~01:02:03.5 NULL | "
        "[0] 2024-02-29T01:02:03 2024-02-29T23:59:59.999999 1582-10-15T01:02:03.5 NULL",
        "bto_char_date_def_a_date | 2024-02-29T13:45:06.5 -0044-03-15 -4712-01-01 | [1] 2024-02-29 -044-03-15 -4712-01-01",
        "bto_char_dt_def_a_date | 2024-02-29T13:45:06.5+01:00 0001-01-01 | [1] 2024-02-29 13:45:06 0001-01-01 00:00:00",
        "bto_char_time_tz_def_a_date | 2024-02-29T13:45:06.5-05:30 2024-02-29T13:45:06 | [1] 13:45:06 -05:30 13:45:06",
        "bto_char_dt_tz_def_a_date | -0044-03-15T13:45:06+14:00 2024-02-29T13:45:06-00:30 | "
        "[1] -044-03-15 13:45:06 +14:00 2024-02-29 13:45:06 -00:30",
    });
    for (const char* const text : {"2024-02-29~10:00", "2024-02-29~~10:00:00", "2024-02-29~24:00:00", "2024-02-29~10:60:00",
                                   "2024-02-29~10:00:60", "2024-02-29~10:00:00.", "2024-02-29~10:00:00~", "2024-02-29T10:00:00"}) {
        EXPECT_EQ(contract::evaluate({"bto_timestamp_def_a_date", {text}, {}}), "[0] NULL status -6118") << text;
    }
}

TEST(DefaultTexts, ShowTheFractionWhereTheyAreToldTo) {
    ASSERT_EQ(zqengine::set_parameter(INI_SHOW_FRACTION, 1), 0);
    each_engine::expect_results({
        "bto_char_dt_def_a_date | 2024-02-29T13:45:06.000005 2024-02-29T13:45:06 2024-02-29T13:45:06.5 | "
        "[1] 2024-02-29 13:45:06.000005 2024-02-29 13:45:06.000000 2024-02-29 13:45:06.500000",
        "bto_char_time_tz_def_a_date | 2024-02-29T13:45:06.001234-05:30 | [1] 13:45:06.001234 -05:30",
        "bto_char_date_def_a_date | 2024-02-29T13:45:06.5 | [1] 2024-02-29",
    });
    ASSERT_EQ(zqengine::set_parameter(INI_SHOW_FRACTION, 0), 0);
}

TEST(Seconds, AreTimesOfAnyLength) {
    const std::vector<std::int32_t> seconds{0, 59, -3661, 3661, 86'399, 86'400, INT32_MAX, -INT32_MAX};
    const contract::outcome times = contract::call_with("bsec_to_time_a_date", seconds);
    const auto* const values = zqengine::values_of<zqtime>(*times.result);
    const contract::outcome back = contract::call_with("btime_to_sec_a_date", std::vector(values, values + seconds.size()));
    for (std::uint32_t row = 0; row < seconds.size(); ++row) {
        const auto count = static_cast<std::uint32_t>(std::abs(seconds[row]));
        EXPECT_EQ(zqtime_get_hour(&values[row]), count / 3600);
        EXPECT_EQ(zqtime_get_min(&values[row]), count / 60 % 60);
        EXPECT_EQ(zqtime_get_sec(&values[row]), count % 60);
        EXPECT_EQ(zqtime_get_year(&values[row]), 1900U);
        EXPECT_EQ(zqengine::values_of<std::int32_t>(*back.result)[row], std::abs(seconds[row]));
    }
    const contract::outcome longest = contract::call_with("bsec_to_time_a_date", std::vector{INT32_MIN});
    EXPECT_EQ(zqtime_get_hour(zqengine::values_of<zqtime>(*longest.result)), 596'523U);
}

} // namespace
