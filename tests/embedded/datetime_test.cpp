// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <ctime>
#include <limits>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "bop/frame/status.h"
#include "embedded/datetime/text.h"
#include "embedded/session/parameters.h"
#include "engine/datetime.h"
#include "engine/interval.h"
#include "engine/session.h"
#include "layouts/datetime_layout.h"
#include "tests/contract/exact_block.h"

using namespace bifun::datetime_layout;
using namespace zqengine;

namespace {

std::vector<std::string> split(const std::string& list) {
    std::istringstream rest(list);
    std::vector<std::string> parts;
    for (std::string part; std::getline(rest, part, '|');) {
        parts.push_back(part);
    }
    return parts;
}

// "date", "time" or "datetime" and the text of the value read from `text`, or "none", and then the value must be untouched.
std::string reread(const std::string& text, zqtime& value) {
    const exact_block bytes(text);
    memset(&value, 0x5A, sizeof value);
    zqtime again = value;
    datetime_kind kind{};
    const std::int32_t status = read_datetime(bytes.data(), bytes.length, &value, &kind);
    EXPECT_EQ(zqtime_from_char_ex(bytes.data(), bytes.length, &again), status);
    EXPECT_EQ(memcmp(&value, &again, sizeof value), 0);
    if (status != 0) {
        EXPECT_TRUE(status == BIFUN_UNUSABLE_TEXT && value.bytes[0] == 0x5A);
        return "none";
    }
    char buffer[datetime_text_size];
    const std::string written(buffer, write_datetime(value, kind, buffer));
    return (kind == datetime_kind::date ? "date " : kind == datetime_kind::time ? "time " : "datetime ") + written;
}

} // namespace

TEST(Datetime, ReadsAndWritesText) {
    const std::string blanks(100'000, ' ');
    // Each text is followed by what it names.
    std::vector<std::string> cases = split(
        "2024-02-29|date 2024-02-29|  2024/2/9  |date 2024-02-09|2024.12.31|date 2024-12-31|20240229|date 2024-02-29|"
        "-4712-01-01|date -4712-01-01|0000-02-29|date 0000-02-29|-0004-02-29|date -0004-02-29|1500-02-29|date 1500-02-29|"
        "1582-10-04|date 1582-10-04|1582-10-15|date 1582-10-15|9999-12-31T23:59:59.999999|datetime 9999-12-31 23:59:59.999999|"
        "2024-01-02   03:04|datetime 2024-01-02 03:04:00|20240102 03:04:05|datetime 2024-01-02 03:04:05|"
        "20240102T03:04|datetime 2024-01-02 03:04:00|20240102T030405Z|datetime 2024-01-02 03:04:05+00:00|"
        "13:45|time 13:45:00|00:00:00.100|time 00:00:00.1|23:59:59.0000019|time 23:59:59.000001|13:45Z|time 13:45:00+00:00|"
        "13:45:10+14:00|time 13:45:10+14:00|13:45:10.5-1400|time 13:45:10.5-14:00|13:45-00:30|time 13:45:00-00:30|"
        "2024-01-02 13:45-08|datetime 2024-01-02 13:45:00-08:00|2024-01-02t03:04z|datetime 2024-01-02 03:04:00+00:00|"
        "2024-01-02 3:04|datetime 2024-01-02 03:04:00|2024-01-02 03:04:05 +0100|datetime 2024-01-02 03:04:05+01:00|"
        "20240229134506|datetime 2024-02-29 13:45:06|20240229134506.5z|datetime 2024-02-29 13:45:06.5+00:00|"
        "20240102 030405|datetime 2024-01-02 03:04:05|20240102T030405,678-01|datetime 2024-01-02 03:04:05.678-01:00|"
        "20240102T0304|datetime 2024-01-02 03:04:00|20240102 3:04|datetime 2024-01-02 03:04:00|3:04|time 03:04:00|"
        "3:04:05,1|time 03:04:05.1|23:59:59.1234567|time 23:59:59.123456|23:59:59.12345678+01|time 23:59:59.123456+01:00|"
        "2024-02-29 13:45:06.123456|datetime 2024-02-29 13:45:06.123456|2024-02-29 13:45:06.12Z|datetime 2024-02-29 13:45:06.12+00:00");
    cases.insert(cases.end(),
                 {"23:59:59." + std::string(100'000, '9'), "time 23:59:59.999999", blanks + "13:45" + blanks, "time 13:45:00"});
    for (std::size_t i = 0; i < cases.size(); i += 2) {
        zqtime value;
        EXPECT_EQ(reread(cases[i], value), cases[i + 1]) << cases[i].substr(0, 40);
    }
    zqtime time;
    zqtime datetime;
    reread("13:45", time);
    reread("1900-01-01 13:45", datetime);
    EXPECT_EQ(zqtime_cmp(&time, &datetime), 0);
}

TEST(Datetime, RejectsOtherText) {
    std::vector<std::string> cases = split(
        "| |-|x|2024|2024-|2024-01|2024-01-|2024-00-01|2024-13-01|2024-01-00|2024-01-32|2023-02-29|1900-02-29|1582-10-05|1582-10-14|"
        "-4713-12-31|10000-01-01|024-01-01|+2024-01-01|-20240101|2024-01/02|2024 "
        "-01-01|2024-001-01|2024-01-011|2024-0:-01|2024-02-1:|0::04:05|2024010|202401011|"
        "20241301|2024-01-02T|2024-01-02 T03:04|2024-01-02T 03:04|2024-01-02T030405|20240102T03:0405|202401020304|2024010203|"
        "20240102T030|20240102T03040|20240102T0304.5|20240102T030405.|2024010203:04|2024/01-02|T03:04|030405|:04|3:4|03:4|2024-01-02 3:|"
        "2024-01:02|2024-01-02 03:04:0x|2024-01-02 03:04;05|2024-01-02 03:04:05. 5|2024-01-02 03:04:05.1234567x|\xB2"
        "024-01-02|03:04:05.,1|03:04:|03:04:5|03:04:05.|03:04:05.x|03:04.5|24:00|23:60|23:59:60|"
        "13:45 Zx|13:45ZZ|13:45+|13:45+8|13:45+08:|13:45+08:6|13:45+08:60|13:45+080|13:45+14:01|13:45-15|13:45+08:000|"
        "2024-01-02Z|2024-01-02+08:00|2024-01-02 03:04 x|2024-01-02\t03:04|\xD9\xA2\xD9\xA0\xD9\xA2\xD9\xA4-01-01|12|1:|12:");
    cases.insert(cases.end(), {std::string("2024-01-02\0", 11), std::string(100'000, '1'), "13:45:00+" + std::string(99, '0')});
    zqtime value;
    for (const std::string& text : cases) {
        EXPECT_EQ(reread(text, value), "none") << text.substr(0, 40);
    }
    EXPECT_EQ(zqtime_from_char_ex(nullptr, 0, &value), BIFUN_UNUSABLE_TEXT);
}

using datetime_numbers = std::array<std::int32_t, 8>; // year to zone

std::int32_t encode(const datetime_numbers& from, zqtime& value) {
    std::array<std::uint32_t, 8> numbers;
    std::copy(from.begin(), from.end(), numbers.begin());
    return zqtime_encode(&value, from[0], numbers[1], numbers[2], numbers[3], numbers[4], numbers[5], numbers[6], from[7]);
}

TEST(Datetime, EncodesWithinRangesOnly) {
    zqtime value{};
    const datetime_numbers whole{-4712, 2, 29, 23, 59, 58, 999'999, 0};
    const std::vector<std::int32_t> beyond[] = {{10'000, -4713}, {13, 0}, {30, 0}, {24}, {60}, {60}, {1'000'000}, {841, -841, 999, 1001}};
    for (std::size_t part = 0; part < whole.size(); ++part) {
        for (const std::int32_t number : beyond[part]) {
            datetime_numbers numbers = whole;
            numbers[part] = number;
            EXPECT_EQ(encode(numbers, value), BIFUN_ARGUMENT_OUT_OF_DOMAIN) << part << ' ' << number;
        }
    }
    EXPECT_EQ(value.bytes[0] + value.bytes[11], 0);
    for (const std::int32_t zone : {-840, -1, 0, 840, int{ZQTIME_NO_ZONE}}) {
        datetime_numbers numbers = whole;
        numbers[7] = zone;
        ASSERT_EQ(encode(numbers, value), 0);
        std::int32_t year;
        std::uint32_t month, day, hour, minute, second, microsecond;
        zqtime_decode(&value, &year, &month, &day, &hour, &minute, &second, &microsecond);
        EXPECT_EQ(std::tuple(year, month, day, hour, minute, second, microsecond), std::tuple(-4712, 2U, 29U, 23U, 59U, 58U, 999'999U));
        EXPECT_EQ(zqtime_get_tz(&value), zone);
        zqtime_decode(&value, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    }
    // Arithmetic on times may leave more hours than a day has.
    store_datetime(value, pack_datetime({1900, 1, 1, 596'523, 59, 58, 7, ZQTIME_NO_ZONE}));
    char buffer[datetime_text_size];
    EXPECT_EQ(std::string(buffer, write_datetime(value, datetime_kind::time, buffer)), "596523:59:58.000007");
}

// What zqtime_encode makes of the components with this one changed.
TEST(Datetime, SetsOneComponentWithinItsRange) {
    using setter = std::int32_t (*)(zqtime*, std::uint32_t);
    const setter setters[] = {[](zqtime* value, std::uint32_t number) { return zqtime_set_year(value, static_cast<std::int32_t>(number)); },
                              zqtime_set_month,
                              zqtime_set_day,
                              zqtime_set_hour,
                              zqtime_set_min,
                              zqtime_set_sec,
                              zqtime_set_msec,
                              [](zqtime* value, std::uint32_t number) { return zqtime_set_tz(value, static_cast<std::int32_t>(number)); }};
    for (const datetime_numbers& numbers : {datetime_numbers{2024, 2, 29, 13, 45, 6, 500'000, 60}, {1582, 10, 15, 0, 0, 0, 0, 0}}) {
        zqtime before;
        ASSERT_EQ(encode(numbers, before), 0);
        for (std::size_t part = 0; part < numbers.size(); ++part) {
            for (const std::int32_t number :
                 {-4713, -4712, -4716, -841, -840, 0,   1,   4,   12,   13,   14,   23,     24,      29,
                  30,    31,    32,    59,   60,   840, 841, 999, 1000, 2023, 9999, 10'000, 999'999, 1'000'000}) {
                datetime_numbers changed = numbers;
                changed[part] = number;
                zqtime value = before;
                zqtime expected = before;
                EXPECT_EQ(setters[part](&value, static_cast<std::uint32_t>(number)), encode(changed, expected)) << part << ' ' << number;
                EXPECT_EQ(memcmp(&value, &expected, sizeof value), 0) << part << ' ' << number;
            }
        }
    }
}

TEST(Datetime, ComparesByTimeOrInstant) {
    // Ascending; what begins with = equals the one before.
    for (const char* list : {"-4712-01-01|-0001-12-31 23:59:59.999999|0000-01-01|2024-01-31|2024-02-01|2024-02-01 00:00:00.000001|"
                             "2024-02-01 00:00:01|2024-02-01 00:01:00|2024-02-01 01:00:00|=2024-02-01 01:00|9999-12-31",
                             "0000-01-01|=0000-01-01 00:00-14:00", "0000-01-01 00:00+14:00|=0000-01-01",
                             "1582-10-04 23:59+00:01|1582-10-15 00:00+00:01|=1582-10-04 23:59Z|2023-12-31 20:00+08:00|"
                             "2024-01-01 08:00+08:00|=2024-01-01 00:00Z|=2023-12-31 10:00-14:00|2023-12-31 10:00:00.000001-14:00|"
                             "2024-01-01 08:00:01+08:00|9999-12-31 00:00+14:00|9999-12-31 00:00-14:00"}) {
        std::vector<std::pair<int, zqtime>> ranked;
        for (const std::string& text : split(list)) {
            const bool equal = text[0] == '=';
            const int rank = ranked.empty() ? 0 : ranked.back().first + (equal ? 0 : 1);
            ranked.push_back({rank, {}});
            ASSERT_NE(reread(text.substr(equal ? 1 : 0), ranked.back().second), "none") << text;
        }
        for (const auto& [rank_a, a] : ranked) {
            for (const auto& [rank_b, b] : ranked) {
                EXPECT_EQ(zqtime_cmp(&a, &b), rank_a < rank_b ? -1 : rank_a > rank_b ? 1 : 0) << rank_a << ' ' << rank_b;
            }
        }
    }
}

TEST(Datetime, KnowsWeekdayNames) {
    const std::vector<std::string> names = split("SUNDAY|monday|Tue|wEdNeSdAy|THU|fri|Saturday");
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(zqtime_convert_weekday(0, names[i].c_str()), i) << names[i];
    }
    for (const std::string& name : split("|S|SU|SUND|SUNDAYS| SUN|SUN |TUES|\xF3UN|[UN|S\xDCN")) {
        EXPECT_EQ(zqtime_convert_weekday(0, name.c_str()), ZQTIME_UNKNOWN_WEEKDAY) << name;
    }
}

TEST(Datetime, TellsTheTimeOfAZone) {
    for (const auto& [zone, suffix] : {std::pair(-840, "-14:00"), {0, "+00:00"}, {330, "+05:30"}, {int{ZQTIME_NO_ZONE}, ""}}) {
        const auto expected = [zone = zone, suffix = suffix](std::time_t moment) {
            moment += zone == ZQTIME_NO_ZONE ? 0 : zone * 60;
            std::tm parts{};
            zone == ZQTIME_NO_ZONE ? localtime_r(&moment, &parts) : gmtime_r(&moment, &parts);
            char buffer[32];
            return std::string(buffer, std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &parts)) + suffix;
        };
        // std::time goes by a clock that lags some milliseconds behind.
        const auto this_second = [] { return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()); };
        zqtime now;
        char buffer[datetime_text_size];
        const std::string earliest = expected(this_second());
        EXPECT_EQ(zqtime_tz_now(0, zone, &now), 0);
        const std::string latest = expected(this_second());
        const std::string text(buffer, write_datetime(now, datetime_kind::datetime, buffer));
        EXPECT_TRUE(earliest <= text && text <= latest) << text << " is not from " << earliest << " to " << latest;
    }
    zqtime now{};
    for (int i = 0; i < 1'000'000 && zqtime_get_msec(&now) % 1000 == 0; ++i) {
        EXPECT_EQ(zqtime_tz_now(3, 0, &now), 0);
        EXPECT_EQ(zqtime_get_msec(&now) % 1000, 0);
        EXPECT_EQ(zqtime_tz_now(6, 0, &now), 0);
    }
    EXPECT_NE(zqtime_get_msec(&now) % 1000, 0);
    const zqtime before = now;
    for (const auto& [precision, zone] : {std::pair(6, 841), {6, -841}, {6, 999}, {-1, 0}, {7, 0}}) {
        EXPECT_EQ(zqtime_tz_now(precision, zone, &now), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
        EXPECT_EQ(memcmp(&now, &before, sizeof now), 0);
    }
}

TEST(Session, KeepsParametersWithinTheirRange) {
    EXPECT_EQ(ini_get_value(0, INI_NOW_TIME_ZONE), ZQTIME_NO_ZONE);
    EXPECT_EQ(set_parameter(INI_NOW_TIME_ZONE, -210), 0);
    for (const std::int64_t zone : {-841LL, 841LL, 999LL, 0x1'0000'0000LL}) {
        EXPECT_EQ(set_parameter(INI_NOW_TIME_ZONE, zone), BIFUN_ARGUMENT_OUT_OF_DOMAIN) << zone;
    }
    EXPECT_EQ(ini_get_value(0, INI_NOW_TIME_ZONE), -210);
    EXPECT_EQ(set_parameter(INI_NOW_TIME_ZONE, ZQTIME_NO_ZONE), 0);
    EXPECT_EQ(set_parameter(0, 0), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    EXPECT_EQ(ini_get_value(0, 0), 0);
}

// ---- sums and intervals ----------------------------------------------------------------------------------------------

TEST(DatetimeSums, BeyondTheRangeAreLeftAlone) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    constexpr std::int32_t int_least = std::numeric_limits<std::int32_t>::min();
    const bifun_interval_ym longest{int_least, int_least};
    for (const char* start : {"-4712-01-01", "2024-02-29 13:45:06+01:00", "9999-12-31 23:59:59.999999"}) {
        zqtime value;
        reread(start, value);
        const zqtime before = value;
        for (std::int32_t field = ZQTIME_YEAR; field <= ZQTIME_WEEKDAY; ++field) {
            for (const std::int64_t amount : {most, -most - 1, most / 12 * 2, most / 7 + 1, std::int64_t{1} << 62, std::int64_t{1} << 60}) {
                EXPECT_EQ(zqtime_add_by_fmt(&value, field, amount, &value), BIFUN_INVALID_DATETIME) << field << ' ' << amount;
            }
        }
        for (const std::int32_t field : {0, -1, int{ZQTIME_ZONE_HOUR}, int{ZQTIME_ZONE_MINUTE}, 14}) {
            std::int32_t difference = 7;
            EXPECT_EQ(zqtime_add_by_fmt(&value, field, 0, &value), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
            EXPECT_EQ(zqtime_parse_datediff(field, &value, &value, &difference), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
            EXPECT_EQ(difference, 7);
        }
        for (const double days : {5.4e6, -5.4e6, 1e9, -1e300, HUGE_VAL, std::nan("")}) {
            EXPECT_EQ(zqtime_date_add_number(&value, days, &value),
                      std::isfinite(days) ? BIFUN_INVALID_DATETIME : BIFUN_ARGUMENT_OUT_OF_DOMAIN)
                << days;
        }
        EXPECT_EQ(zqtime_date_add_iv_ym(&value, int_least, &value), BIFUN_INVALID_DATETIME);
        EXPECT_EQ(datetime_add_interval_ym(&value, &longest, &value), BIFUN_INVALID_DATETIME);
        EXPECT_EQ(datetime_sub_interval_ym(&value, &longest, &value), BIFUN_INVALID_DATETIME);
        EXPECT_TRUE(memcmp(&value, &before, sizeof value) == 0) << start;
    }
}
