// SPDX-License-Identifier: Apache-2.0
// Functions of datetimes that are computed for many rows at once, against the engine's operations on one row at a time.

#include <cstring>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/interval.h"
#include "layouts/calendar.h"
#include "tests/contract/called_export.h"

namespace {

using random_bits = std::mt19937_64;

std::int64_t between(random_bits& random, std::int64_t first, std::int64_t last) {
    return std::uniform_int_distribution(first, last)(random);
}

// Blocks of 1024 rows are computed at once where all of them are usual: some batches have only such, of others a few rows are not.
constexpr std::size_t rows = 3000;
constexpr int batches = 24;

struct spread {
    std::int32_t first_day, last_day; // Julian day numbers
    std::int64_t most;                // amount to either side
    std::uint32_t last_hour;
};

spread spread_of(int batch, std::int64_t most) {
    switch (batch % 4) {
    case 0: // around the changeover
        return {2'298'000, 2'301'000, most / 1000, 23};
    case 1: // all that there is
        return {0, bifun::calendar::number_of_last_day, most, 23};
    case 2: // the ends of the range
        return {bifun::calendar::number_of_last_day - 500, bifun::calendar::number_of_last_day, most / 10'000 + 1, 23};
    default: // times of more than a day
        return {2'400'000, 2'500'000, most / 100, 60};
    }
}

zqtime draw_datetime(random_bits& random, const spread& within) {
    const bifun::calendar::calendar_date date =
        bifun::calendar::date_of_julian_day(static_cast<std::int32_t>(between(random, within.first_day, within.last_day)));
    const auto part = [&](std::uint32_t last) { return static_cast<std::uint32_t>(between(random, 0, last)); };
    zqtime value;
    const std::int32_t zone = between(random, 0, 3) == 0 ? static_cast<std::int32_t>(between(random, -840, 840)) : int{ZQTIME_NO_ZONE};
    EXPECT_EQ(zqtime_encode(&value, date.year, date.month, date.day, 0, part(59), part(59), part(999'999), zone), 0);
    (void)zqtime_set_hour_without_check(&value, part(within.last_hour));
    return value;
}

contract::generated_constant constant_of(std::int32_t number) {
    return contract::constant_of_row(*contract::column_of(bifun::value_type::INT, std::vector{number}), 0);
}

void expect_values(const contract::outcome& outcome, const std::vector<zqtime>& expected) {
    ASSERT_EQ(outcome.status, 0);
    const auto* const results = static_cast<const zqtime*>(outcome.result->data.values);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(std::memcmp(&results[i], &expected[i], sizeof(zqtime)), 0) << i;
    }
}

// `draw` gives an amount for a spread, `add` is the operation. Rows whose sum does not exist are drawn again, but that the first of them
// ends a batch.
template <class Amount, class Draw, class Add, class Call>
void expect_sums(std::int64_t most, const Draw& draw, const Add& add, const Call& call) {
    random_bits random(static_cast<std::uint64_t>(most));
    for (int batch = 0; batch < batches; ++batch) {
        const spread within = spread_of(batch, most);
        std::vector<zqtime> values;
        std::vector<Amount> amounts;
        std::vector<zqtime> expected;
        std::vector<zqtime> failing;
        std::vector<Amount> failing_amount;
        while (values.size() < rows) {
            const zqtime value = draw_datetime(random, within);
            const Amount amount = draw(random, within.most);
            zqtime sum;
            const std::int32_t status = add(value, amount, sum);
            if (status == 0) {
                values.push_back(value);
                amounts.push_back(amount);
                expected.push_back(sum);
            } else if (failing.empty()) {
                failing = {value};
                failing_amount = {amount};
            }
        }
        expect_values(call(values, amounts), expected);
        if (!failing.empty()) {
            values.insert(values.begin() + 1500, failing[0]);
            amounts.insert(amounts.begin() + 1500, failing_amount[0]);
            const contract::outcome outcome = call(values, amounts);
            EXPECT_LT(outcome.status, 0);
            EXPECT_EQ(outcome.flag(1499), 1);
            EXPECT_EQ(outcome.flag(1500), 0);
            EXPECT_FALSE(outcome.holds_value(1501));
        }
    }
}

TEST(ManyRows, OfDateadd) {
    constexpr std::pair<std::int32_t, std::int64_t> fields[] = {
        {ZQTIME_YEAR, 20'000},          {ZQTIME_QUARTER, 80'000},         {ZQTIME_MONTH, 200'000},
        {ZQTIME_WEEK, 1'000'000},       {ZQTIME_DAY, 6'000'000},          {ZQTIME_HOUR, 200'000'000},
        {ZQTIME_MINUTE, 9'000'000'000}, {ZQTIME_SECOND, 600'000'000'000}, {ZQTIME_SUBSECOND, 1'000'000'000}};
    for (const auto& [field, most] : fields) {
        SCOPED_TRACE(field);
        const contract::generated_constant code = constant_of(field);
        expect_sums<std::int64_t>(
            most, [](random_bits& random, std::int64_t to) { return between(random, -to, to); },
            [field = field](const zqtime& value, std::int64_t amount, zqtime& sum) {
                return zqtime_add_by_fmt(&value, field, amount, &sum);
            },
            [&](const std::vector<zqtime>& values, const std::vector<std::int64_t>& amounts) {
                const auto value = contract::column_of(bifun::value_type::DATETIME, values);
                const auto amount = contract::column_of(bifun::value_type::BIGINT, amounts);
                return contract::call(contract::entry_of("bdateadd_vaa_date"),
                                      {{.constant = &code}, {.column = amount.get()}, {.column = value.get()}}, value->capacity);
            });
    }
}

// Constant amounts of 0 to 30 days have a loop of their own, for dates outside two months.
TEST(ManyRows, OfDaysAndTimesThatAreConstant) {
    constexpr std::pair<std::int32_t, std::int64_t> amounts[] = {
        {ZQTIME_DAY, 0},  {ZQTIME_DAY, 1},   {ZQTIME_DAY, 27},   {ZQTIME_DAY, 30},    {ZQTIME_DAY, 31},           {ZQTIME_DAY, -1},
        {ZQTIME_WEEK, 4}, {ZQTIME_HOUR, 25}, {ZQTIME_HOUR, 696}, {ZQTIME_MINUTE, 90}, {ZQTIME_SECOND, 2'505'600}, {ZQTIME_SECOND, -1}};
    for (const auto& [field, amount] : amounts) {
        SCOPED_TRACE(testing::Message() << field << ' ' << amount);
        const contract::generated_constant code = constant_of(field);
        const contract::generated_constant count =
            contract::constant_of_row(*contract::column_of(bifun::value_type::BIGINT, std::vector{amount}), 0);
        const auto is_added = [&, field = field, amount = amount](const std::vector<zqtime>& values) {
            std::vector<zqtime> expected(values.size());
            for (std::size_t i = 0; i < values.size(); ++i) {
                ASSERT_EQ(zqtime_add_by_fmt(&values[i], field, amount, &expected[i]), 0);
            }
            const auto value = contract::column_of(bifun::value_type::DATETIME, values);
            expect_values(contract::call(contract::entry_of("bdateadd_vva_date"),
                                         {{.constant = &code}, {.constant = &count}, {.column = value.get()}}, value->capacity),
                          expected);
        };
        random_bits random(1);
        std::vector<zqtime> values;
        for (std::int32_t day = 40; day < bifun::calendar::number_of_last_day - 40; ++day) {
            // Every day about the changeover, and of a century with and without a leap day; one of some days else.
            if (day % 53 == 0 || (day >= 2'298'000 && day < 2'300'000) || (day >= 2'341'800 && day < 2'342'100) ||
                (day >= 2'451'500 && day < 2'451'700)) {
                values.push_back(draw_datetime(random, {day, day, 0, 23}));
            }
            if (values.size() == rows) {
                is_added(values);
                values.clear();
            }
        }
    }
}

TEST(ManyRows, OfMonthsAndWeeksAdded) {
    const auto draw = [](random_bits& random, std::int64_t to) { return static_cast<std::int32_t>(between(random, -to, to)); };
    expect_sums<std::int32_t>(
        200'000, draw, [](const zqtime& value, std::int32_t months, zqtime& sum) { return zqtime_date_add_iv_ym(&value, months, &sum); },
        [](const auto& values, const auto& months) { return contract::call_with("badd_months_aa_date", values, months); });
    expect_sums<std::int32_t>(
        1'000'000, draw,
        [](const zqtime& value, std::int32_t weeks, zqtime& sum) { return zqtime_date_add_number(&value, weeks * 7.0, &sum); },
        [](const auto& values, const auto& weeks) { return contract::call_with("badd_weeks_aa_date", values, weeks); });

    const auto draw_interval = [](random_bits& random, std::int64_t to) {
        return bifun_interval_ym{static_cast<std::int32_t>(between(random, -to, to)), static_cast<std::int32_t>(between(random, -40, 40))};
    };
    expect_sums<bifun_interval_ym>(
        20'000, draw_interval,
        [](const zqtime& value, const bifun_interval_ym& by, zqtime& sum) { return datetime_add_interval_ym(&value, &by, &sum); },
        [](const auto& values, const auto& by) { return contract::call_with("bdate_add_ym_aa", values, by); });
    expect_sums<bifun_interval_ym>(
        20'000, draw_interval,
        [](const zqtime& value, const bifun_interval_ym& by, zqtime& sum) { return datetime_sub_interval_ym(&value, &by, &sum); },
        [](const auto& values, const auto& by) { return contract::call_with("bdate_sub_ym_aa", values, by); });
}

// A batch in which all have one zone, and one in which they do not.
TEST(ManyRows, OfGreatestAndLeast) {
    random_bits random(1);
    for (const bool has_zones : {false, true}) {
        std::vector<zqtime> first;
        std::vector<zqtime> second;
        std::vector<zqtime> greatest;
        std::vector<zqtime> least;
        for (std::size_t i = 0; i < rows; ++i) {
            const std::int32_t day = static_cast<std::int32_t>(between(random, 1, bifun::calendar::number_of_last_day - 1));
            zqtime a = draw_datetime(random, {day, day, 0, 23});
            zqtime b = draw_datetime(random, {day - 1, day + 1, 0, 23});
            if (i % 3 == 0) { // which then differ by microseconds at most
                const std::uint32_t microsecond = zqtime_get_msec(&b);
                b = a;
                (void)zqtime_set_msec(&b, i % 2 == 0 ? microsecond : zqtime_get_msec(&a));
            }
            if (!has_zones) {
                (void)zqtime_set_tz(&a, 60);
                (void)zqtime_set_tz(&b, 60);
            }
            first.push_back(a);
            second.push_back(b);
            greatest.push_back(zqtime_cmp(&a, &b) > 0 ? a : b);
            least.push_back(zqtime_cmp(&a, &b) < 0 ? a : b);
        }
        expect_values(contract::call_with("bgreatest_date_aa_date", first, second), greatest);
        expect_values(contract::call_with("bleast_date_aa_", first, second), least);
    }
}

// Times of many days, up to 68 years, up to what 32 bits hold, and beyond.
TEST(ManyRows, OfSecondsBetween) {
    random_bits random(1);
    const contract::generated_constant code = constant_of(ZQTIME_SECOND);
    for (const std::int32_t span : {1, 24'800, 24'855, 30'000}) {
        std::vector<zqtime> first;
        std::vector<zqtime> second;
        std::vector<std::int32_t> expected;
        bool overflows = false;
        while (first.size() < rows) {
            const auto day = static_cast<std::int32_t>(between(random, 0, bifun::calendar::number_of_last_day - span));
            const zqtime a = draw_datetime(random, {day, day + span, 0, span == 1 ? 2000U : 23U});
            const zqtime b = draw_datetime(random, {day, day + span, 0, 23});
            std::int32_t count = 0;
            if (zqtime_parse_datediff(ZQTIME_SECOND, &a, &b, &count) == 0) {
                first.push_back(a);
                second.push_back(b);
                expected.push_back(count);
            } else if (!overflows) {
                overflows = true;
                const auto alone = [](const zqtime& value) { return contract::column_of(bifun::value_type::DATETIME, std::vector{value}); };
                const auto start = alone(a);
                const auto end = alone(b);
                EXPECT_EQ(contract::call(contract::entry_of("bdatediff_vaa_date"),
                                         {{.constant = &code}, {.column = start.get()}, {.column = end.get()}}, 1)
                              .status,
                          -6102);
            }
        }
        EXPECT_EQ(overflows, span > 24'855);
        const auto start = contract::column_of(bifun::value_type::DATETIME, first);
        const auto end = contract::column_of(bifun::value_type::DATETIME, second);
        const contract::outcome outcome = contract::call(contract::entry_of("bdatediff_vaa_date"),
                                                         {{.constant = &code}, {.column = start.get()}, {.column = end.get()}}, rows);
        ASSERT_EQ(outcome.status, 0);
        const auto* const results = static_cast<const std::int32_t*>(outcome.result->data.values);
        for (std::size_t i = 0; i < rows; ++i) {
            ASSERT_EQ(results[i], expected[i]) << span << ' ' << i;
        }
    }
}

// Days of one month and of any two, and what a double of their distance is as a decimal.
TEST(ManyRows, OfMonthsBetween) {
    random_bits random(1);
    for (const std::int32_t span : {40, 4000, 400'000, 5'000'000}) {
        std::vector<zqtime> first;
        std::vector<zqtime> second;
        std::vector<xdec> expected;
        for (int i = 0; i < 60'000; ++i) {
            const auto day = static_cast<std::int32_t>(between(random, 0, bifun::calendar::number_of_last_day - span));
            zqtime a = draw_datetime(random, {day, day + span, 0, 23});
            zqtime b = draw_datetime(random, {day, day + span, 0, 23});
            const auto part = [](std::uint32_t (*get)(const zqtime*), const zqtime& of) { return static_cast<std::int32_t>(get(&of)); };
            const auto month_end = [](const zqtime& of) {
                return zqtime_month_end_day(static_cast<std::int32_t>(zqtime_get_year(&of)), zqtime_get_month(&of));
            };
            const std::int32_t months =
                (static_cast<std::int32_t>(zqtime_get_year(&a)) - static_cast<std::int32_t>(zqtime_get_year(&b))) * 12 +
                part(zqtime_get_month, a) - part(zqtime_get_month, b);
            const std::int32_t days = part(zqtime_get_day, a) - part(zqtime_get_day, b);
            const bool are_ends = zqtime_get_day(&a) == month_end(a) && zqtime_get_day(&b) == month_end(b);
            xdec distance;
            ASSERT_EQ(xdec_from_double(&distance, are_ends ? months : months + days / 31.0), 0);
            first.push_back(a);
            second.push_back(b);
            expected.push_back(distance);
        }
        const contract::outcome outcome = contract::call_with("bmonths_between_aa_date", first, second);
        const auto* const results = static_cast<const xdec*>(outcome.result->data.values);
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(std::memcmp(&results[i], &expected[i], sizeof(xdec)), 0) << span << ' ' << i;
        }
    }
}

} // namespace
