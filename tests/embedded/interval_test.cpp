// What the operations on amounts and intervals do to their result: nothing where they fail, and nothing wrong where it is their argument.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "bop/frame/status.h"
#include "embedded/datetime/text.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/interval.h"

namespace {

zqtime read(const std::string& text) {
    zqtime value{};
    EXPECT_EQ(zqtime_from_char_ex(reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<std::uint32_t>(text.size()), &value), 0);
    return value;
}

bool same(const zqtime& a, const zqtime& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

std::vector<std::string> split(const std::string& list) {
    std::istringstream rest(list);
    std::vector<std::string> parts;
    for (std::string part; std::getline(rest, part, '|');) {
        parts.push_back(part);
    }
    return parts;
}

} // namespace

TEST(DatetimeSums, BeyondTheRangeAreLeftAlone) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
    constexpr std::int32_t int_least = std::numeric_limits<std::int32_t>::min();
    const bifun_interval_ym longest{int_least, int_least};
    for (const char* start : {"-4712-01-01", "2024-02-29 13:45:06+01:00", "9999-12-31 23:59:59.999999"}) {
        zqtime value = read(start);
        const zqtime before = value;
        for (std::int32_t field = ZQTIME_YEAR; field <= ZQTIME_WEEKDAY; ++field) {
            for (const std::int64_t amount : {most, least, most / 12 * 2, most / 7 + 1, std::int64_t{1} << 62, std::int64_t{1} << 60}) {
                EXPECT_EQ(zqtime_add_by_fmt(&value, field, amount, &value), BIFUN_INVALID_DATETIME) << field << ' ' << amount;
            }
        }
        for (const std::int32_t field : {0, -1, int{ZQTIME_ZONE_HOUR}, int{ZQTIME_ZONE_MINUTE}, 14}) {
            std::int32_t difference = 7;
            EXPECT_EQ(zqtime_add_by_fmt(&value, field, 0, &value), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
            EXPECT_EQ(zqtime_parse_datediff(field, &value, &value, &difference), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
            EXPECT_EQ(difference, 7);
        }
        for (const double days : {5.4e6, -5.4e6, 1e9, -1e9, 1e300, -1e300}) {
            EXPECT_EQ(zqtime_date_add_number(&value, days, &value), BIFUN_INVALID_DATETIME) << days;
        }
        EXPECT_EQ(zqtime_date_add_number(&value, std::numeric_limits<double>::infinity(), &value), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
        EXPECT_EQ(zqtime_date_add_number(&value, std::numeric_limits<double>::quiet_NaN(), &value), BIFUN_ARGUMENT_OUT_OF_DOMAIN);
        EXPECT_EQ(zqtime_date_add_iv_ym(&value, int_least, &value), BIFUN_INVALID_DATETIME);
        EXPECT_EQ(datetime_add_interval_ym(&value, &longest, &value), BIFUN_INVALID_DATETIME);
        EXPECT_EQ(datetime_sub_interval_ym(&value, &longest, &value), BIFUN_INVALID_DATETIME);
        EXPECT_TRUE(same(value, before)) << start;
    }
    zqtime value = read("2024-02-29 13:45:06.5+01:00");
    ASSERT_EQ(zqtime_add_by_fmt(&value, ZQTIME_HOUR, 24, &value), 0);
    ASSERT_EQ(zqtime_date_add_number(&value, -1, &value), 0);
    EXPECT_TRUE(same(value, read("2024-02-29 13:45:06.5+01:00")));
}

// Triples of a number, a unit and the interval's fields or a status. Each is converted by an operation; `write` makes a text of the fields.
template <class Interval, class Write>
void expect_intervals(const std::vector<std::string>& cases,
                      std::int32_t (*convert)(const xdec*, const std::uint8_t*, std::uint32_t, Interval*), const Write& write) {
    const auto bytes = [](const std::string& text) { return reinterpret_cast<const std::uint8_t*>(text.data()); };
    const auto length = [](const std::string& text) { return static_cast<std::uint32_t>(text.size()); };
    for (std::size_t i = 0; i + 2 < cases.size(); i += 3) {
        xdec number;
        ASSERT_EQ(xdec_from_char(bytes(cases[i]), length(cases[i]), &number), 0) << cases[i];
        Interval interval;
        std::memset(&interval, 0x5A, sizeof interval);
        const Interval before = interval;
        const std::int32_t status = convert(&number, bytes(cases[i + 1]), length(cases[i + 1]), &interval);
        EXPECT_EQ(status == 0 ? write(interval) : std::to_string(status), cases[i + 2]) << cases[i] << ' ' << cases[i + 1];
        EXPECT_TRUE(status == 0 || std::memcmp(&interval, &before, sizeof interval) == 0);
    }
}

TEST(Intervals, OfMonths) {
    expect_intervals<bifun_interval_ym>(
        split(
            "1.5|YEAR|1-6|-1.5|year|-1--6|14| Month |1-2|-14.5|MONTH|-1--3|14.4999|MONTH|1-2|0.04166666|YEAR|0-0|0.04166667|YEAR|0-1|"
            "1.96|YEAR|2-0|2147483647.95|YEAR|2147483647-11|2147483647.96|YEAR|-6102|-2147483648.95|YEAR|-2147483648--11|"
            "-2147483649|YEAR|-6102|25769803775|MONTH|2147483647-11|25769803776|MONTH|-6102|0|MONTH|0-0|1|DAY|-6803|1|YEARS|-6803|1||-6803|"
            "1|  |-6803|1|YEA|-6803|1E120|MONTH|-6102|1E-120|MONTH|0-0"),
        xdec_to_ivym,
        [](const bifun_interval_ym& interval) { return std::to_string(interval.years) + '-' + std::to_string(interval.months); });
}

// The last cases are halves of a microsecond, as near as 38 digits can tell: 1/172800000000 of a day is 5.787037...E-12.
TEST(Intervals, OfTime) {
    expect_intervals<bifun_interval_dt>(
        split(
            "1|MONTH|-6803|1.5|DAY|1 12:0:0.0|-1.5| hour|0 -1:-30:0.0|100.25|Hour|4 4:15:0.0|1441.1|MINUTE|1 0:1:6.0|"
            "90061.0000005|SECOND|1 1:1:1.1|90061.00000049|SECOND|1 1:1:1.0|-0.0000005|SECOND|0 0:0:0.-1|59.9999995|SECOND|0 0:1:0.0|"
            "0.99999999999999999|DAY|1 0:0:0.0|2147483647.9999999|DAY|2147483647 23:59:59.991360|2147483647.99999999999999|DAY|-6102|"
            "-2147483648.5|DAY|-2147483648 -12:0:0.0|185542587187199.999999|SECOND|2147483647 23:59:59.999999|185542587187200|SECOND|-6102|"
            "3|YEAR|-6803|3|D|-6803|0.000000000005787037037037037037037037037038|DAY|0 0:0:0.1|"
            "0.000000000005787037037037037037037037037037|DAY|0 0:0:0.0|0.0000000000057870370370370370370370370370370370370|DAY|0 0:0:0.0|"
            "0.0000000000057870370370370370370370370370370370371|DAY|0 0:0:0.1|1.0000000000057870370370370370370370370|DAY|1 0:0:0.0|"
            "1.0000000000057870370370370370370370371|DAY|1 0:0:0.1|0.0000005000000000000000000000000000000|SECOND|0 0:0:0.1|"
            "0.00000049999999999999999999999999999999999999|SECOND|0 0:0:0.0|0.9999999999999999999999999999999999999|HOUR|0 1:0:0.0|"
            "1E-38|DAY|0 0:0:0.0|1E-127|DAY|0 0:0:0.0|99999999999999999999999999999999999999|SECOND|-6102|1E100|SECOND|-6102"),
        xdec_to_ivdt, [](const bifun_interval_dt& interval) {
            std::ostringstream text;
            text << interval.days << ' ' << interval.hours << ':' << interval.minutes << ':' << interval.seconds << '.'
                 << interval.microseconds;
            return text.str();
        });
}
