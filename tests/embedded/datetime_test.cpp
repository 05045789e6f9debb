#include <gtest/gtest.h>

#include <unicode/gregocal.h>

#include <limits>
#include <memory>
#include <string>
#include <tuple>

#include "bop/frame/status.h"
#include "embedded/datetime/calendar.h"
#include "embedded/datetime/layout.h"
#include "embedded/datetime/text.h"
#include "engine/datetime.h"

using namespace zqengine;

namespace {

// The text of a value read from `text` behind its kind, or "no" where it is no datetime. The result of a failure must be untouched.
// The text is copied to the end of a block of its own, so that reading past it is caught.
std::string reread(const std::string& text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    const std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[text.size()]);
    std::copy(text.begin(), text.end(), bytes.get());
    zqtime value;
    memset(&value, 0x5A, sizeof value);
    datetime_kind kind{};
    const std::int32_t status = read_datetime(bytes.get(), length, &value, &kind);
    zqtime again;
    memset(&again, 0x5A, sizeof again);
    EXPECT_EQ(zqtime_from_char_ex(bytes.get(), length, &again), status);
    EXPECT_EQ(memcmp(&value, &again, sizeof value), 0) << text;
    if (status != 0) {
        EXPECT_EQ(status, BIFUN_UNUSABLE_TEXT);
        EXPECT_EQ(value.bytes[0], 0x5A) << text;
        return "no";
    }
    char buffer[datetime_text_size];
    const std::size_t written = write_datetime(value, kind, buffer);
    return (kind == datetime_kind::date ? "d " : kind == datetime_kind::time ? "t " : "dt ") + std::string(buffer, written);
}

zqtime encoded(std::int32_t year, std::uint32_t month, std::uint32_t day, std::uint32_t hour = 0, std::uint32_t minute = 0,
               std::uint32_t second = 0, std::uint32_t microsecond = 0, std::int32_t zone = ZQTIME_NO_ZONE) {
    zqtime value{};
    EXPECT_EQ(zqtime_encode(&value, year, month, day, hour, minute, second, microsecond, zone), 0);
    return value;
}

} // namespace

TEST(Datetime, ReadsAndWritesText) {
    const std::tuple<std::string, std::string> cases[] = {
        {"2024-02-29", "d 2024-02-29"},
        {"  2024/2/9  ", "d 2024-02-09"},
        {"2024.12.31", "d 2024-12-31"},
        {"20240229", "d 2024-02-29"},
        {"-4712-01-01", "d -4712-01-01"},
        {"0000-02-29", "d 0000-02-29"},
        {"-0004-02-29", "d -0004-02-29"},
        {"9999-12-31T23:59:59.999999", "dt 9999-12-31 23:59:59.999999"},
        {"1500-02-29", "d 1500-02-29"},
        {"1582-10-04", "d 1582-10-04"},
        {"1582-10-15", "d 1582-10-15"},
        {"2024-01-02   03:04", "dt 2024-01-02 03:04:00"},
        {"20240102 03:04:05", "dt 2024-01-02 03:04:05"},
        {"20240102T03:04", "dt 2024-01-02 03:04:00"},
        {"20240102T030405Z", "dt 2024-01-02 03:04:05+00:00"},
        {"13:45", "t 13:45:00"},
        {"00:00:00.100", "t 00:00:00.1"},
        {"23:59:59.0000019", "t 23:59:59.000001"},
        {"23:59:59." + std::string(100'000, '9'), "t 23:59:59.999999"},
        {std::string(100'000, ' ') + "13:45" + std::string(100'000, ' '), "t 13:45:00"},
        {"13:45Z", "t 13:45:00+00:00"},
        {"13:45:10+14:00", "t 13:45:10+14:00"},
        {"13:45:10.5-1400", "t 13:45:10.5-14:00"},
        {"2024-01-02 13:45-08", "dt 2024-01-02 13:45:00-08:00"},
        {"13:45-00:30", "t 13:45:00-00:30"},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(reread(text), expected) << text.substr(0, 40);
    }
}

TEST(Datetime, RejectsOtherText) {
    const std::string cases[] = {
        "",
        " ",
        "-",
        "x",
        "2024",
        "2024-",
        "2024-01",
        "2024-01-",
        "2024-00-01",
        "2024-13-01",
        "2024-01-00",
        "2024-01-32",
        "2023-02-29",
        "1900-02-29",
        "1582-10-05",
        "1582-10-14",
        "-4713-12-31",
        "10000-01-01",
        "024-01-01",
        "+2024-01-01",
        "-20240101",
        "2024-01/02",
        "2024 -01-01",
        "2024-001-01",
        "2024-01-011",
        "2024010",
        "202401011",
        "20241301",
        "2024-01-02T",
        "2024-01-02 T03:04",
        "2024-01-02t03:04",
        "2024-01-02T 03:04",
        "2024-01-02T030405",
        "20240102 030405",
        "20240102T0304",
        "20240102T030405.5",
        "20240102T03:0405",
        "T03:04",
        "030405",
        "3:04",
        "03:4",
        "03:04:",
        "03:04:5",
        "03:04:05.",
        "03:04:05.x",
        "03:04.5",
        "24:00",
        "23:60",
        "23:59:60",
        "13:45z",
        "13:45 Z",
        "13:45ZZ",
        "13:45+",
        "13:45+8",
        "13:45+08:",
        "13:45+08:6",
        "13:45+08:60",
        "13:45+080",
        "13:45+14:01",
        "13:45-15",
        "13:45+08:000",
        "2024-01-02Z",
        "2024-01-02+08:00",
        "2024-01-02 03:04 x",
        "2024-01-02\t03:04",
        std::string("2024-01-02\0", 11),
        "\xD9\xA2\xD9\xA0\xD9\xA2\xD9\xA4-01-01",
        std::string(100'000, '1'),
        "13:45:00+" + std::string(99, '0'),
    };
    for (const std::string& text : cases) {
        EXPECT_EQ(reread(text), "no") << text.substr(0, 40);
    }
    zqtime value;
    EXPECT_EQ(zqtime_from_char_ex(nullptr, 0, &value), BIFUN_UNUSABLE_TEXT);
}

TEST(Datetime, EncodesWithinRangesOnly) {
    constexpr std::uint32_t huge = std::numeric_limits<std::uint32_t>::max();
    zqtime value;
    memset(&value, 0x5A, sizeof value);
    const zqtime untouched = value;
    for (const auto& [hour, minute, second, microsecond, zone] : {std::tuple{24U, 0U, 0U, 0U, 0},
                                                                  {huge, 0U, 0U, 0U, 0},
                                                                  {0U, 60U, 0U, 0U, 0},
                                                                  {0U, 0U, 60U, 0U, 0},
                                                                  {0U, 0U, 0U, 1'000'000U, 0},
                                                                  {0U, 0U, 0U, 0U, 841},
                                                                  {0U, 0U, 0U, 0U, -841},
                                                                  {0U, 0U, 0U, 0U, 999},
                                                                  {0U, 0U, 0U, 0U, std::numeric_limits<std::int32_t>::min()}}) {
        EXPECT_EQ(zqtime_encode(&value, 2024, 2, 29, hour, minute, second, microsecond, zone), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    }
    EXPECT_EQ(zqtime_encode(&value, 2024, huge, 1, 0, 0, 0, 0, 0), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    EXPECT_EQ(zqtime_encode(&value, 2024, 1, huge, 0, 0, 0, 0, 0), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
    EXPECT_EQ(memcmp(&value, &untouched, sizeof value), 0);

    for (const std::int32_t zone : {-840, -1, 0, 840, int{ZQTIME_NO_ZONE}}) {
        const zqtime last = encoded(9999, 12, 31, 23, 59, 59, 999'999, zone);
        std::int32_t year;
        std::uint32_t month, day, hour, minute, second, microsecond;
        zqtime_decode(&last, &year, &month, &day, &hour, &minute, &second, &microsecond);
        EXPECT_EQ(std::tuple(year, month, day, hour, minute, second, microsecond), std::tuple(9999, 12U, 31U, 23U, 59U, 59U, 999'999U));
        EXPECT_EQ(zqtime_get_tz(&last), zone);
        zqtime_decode(&last, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    }

    // Arithmetic on times may leave more hours than a day has.
    zqtime many{};
    store_datetime(many, pack_datetime({1900, 1, 1, 596'523, 59, 58, 7, ZQTIME_NO_ZONE}));
    char buffer[datetime_text_size];
    EXPECT_EQ(std::string(buffer, write_datetime(many, datetime_kind::time, buffer)), "596523:59:58.000007");
}

TEST(Datetime, ComparesByTimeOrInstant) {
    // Each list is ascending; values of one inner list are equal.
    const std::vector<std::vector<std::vector<zqtime>>> orders = {
        {{encoded(-4712, 1, 1)},
         {encoded(-1, 12, 31, 23, 59, 59, 999'999)},
         {encoded(0, 1, 1), encoded(0, 1, 1, 0, 0, 0, 0, -840)},
         {encoded(2024, 1, 31)},
         {encoded(2024, 2, 1)},
         {encoded(2024, 2, 1, 0, 0, 0, 1)},
         {encoded(2024, 2, 1, 0, 0, 1)},
         {encoded(2024, 2, 1, 0, 1, 0)},
         {encoded(2024, 2, 1, 1, 0, 0)},
         {encoded(9999, 12, 31)}},
        {{encoded(1582, 10, 4, 23, 59, 0, 0, 1)},
         {encoded(1582, 10, 15, 0, 0, 0, 0, 1), encoded(1582, 10, 4, 23, 59, 0, 0, 0)},
         {encoded(2023, 12, 31, 20, 0, 0, 0, 480)},
         {encoded(2024, 1, 1, 8, 0, 0, 0, 480), encoded(2024, 1, 1, 0, 0, 0, 0, 0), encoded(2023, 12, 31, 10, 0, 0, 0, -840)},
         {encoded(2023, 12, 31, 10, 0, 0, 1, -840)},
         {encoded(9999, 12, 31, 0, 0, 0, 0, 840)},
         {encoded(9999, 12, 31, 0, 0, 0, 0, -840)}},
    };
    for (const auto& order : orders) {
        for (std::size_t i = 0; i < order.size(); ++i) {
            for (std::size_t j = 0; j < order.size(); ++j) {
                for (const zqtime& a : order[i]) {
                    for (const zqtime& b : order[j]) {
                        EXPECT_EQ(zqtime_cmp(&a, &b), i < j ? -1 : i > j ? 1 : 0) << i << ' ' << j;
                    }
                }
            }
        }
    }
}

// Every day that ICU's calendar has is accepted, with its day number; and no others, because there are as many.
TEST(Datetime, DaysAreThoseOfIcu) {
    constexpr std::int32_t last_day_number = 5'373'484; // 9999-12-31
#ifdef BIFUN_SANITIZED
    constexpr std::int32_t stride = 29;
#else
    constexpr std::int32_t stride = 1;
#endif
    UErrorCode status = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(*icu::TimeZone::getGMT(), status);
    for (std::int32_t day_number = 0; day_number <= last_day_number; day_number += stride) {
        calendar.setTime((day_number - 2'440'588) * 86'400'000.0, status);
        const std::int32_t year = calendar.get(UCAL_EXTENDED_YEAR, status);
        const auto month = static_cast<std::uint32_t>(calendar.get(UCAL_MONTH, status) + 1);
        const auto day = static_cast<std::uint32_t>(calendar.get(UCAL_DATE, status));
        ASSERT_TRUE(U_SUCCESS(status));
        ASSERT_TRUE(date_exists(year, month, day)) << year << '-' << month << '-' << day;
        ASSERT_EQ(julian_day(year, month, day), day_number) << year << '-' << month << '-' << day;
    }
    std::int32_t days = 0;
    zqtime value;
    for (std::int32_t year = -4720; year <= 10'010; ++year) {
        for (std::uint32_t month = 0; month <= 13; ++month) {
            for (std::uint32_t day = 0; day <= 32; ++day) {
                days += zqtime_encode(&value, year, month, day, 0, 0, 0, 0, 0) == 0 ? 1 : 0;
            }
        }
    }
    EXPECT_EQ(days, last_day_number + 1);
}
