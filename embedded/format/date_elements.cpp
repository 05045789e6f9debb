// SPDX-License-Identifier: Apache-2.0
#include "embedded/format/date_elements.h"

#include <array>

namespace zqengine {
namespace {

using enum date_element;

constexpr element_name names[] = {
    {"SYYYY", signed_year, 4, says_year | has_sign},
    {"Y,YYY", year_in_groups, 4, says_year},
    {"YYYY", year, 4, says_year},
    {"YYY", year, 3, says_year},
    {"YY", year, 2, says_year},
    {"Y", year, 1, says_year},
    {"RRRR", rounded_year, 4, says_year},
    {"RR", rounded_year, 2, says_year},
    {"SYEAR", signed_year_in_words, 0, says_nothing},
    {"YEAR", year_in_words, 0, says_nothing},
    {"IYYY", iso_year, 4, says_nothing},
    {"IYY", iso_year, 3, says_nothing},
    {"IY", iso_year, 2, says_nothing},
    {"I", iso_year, 1, says_nothing},
    {"SCC", signed_century, 2, says_nothing},
    {"CC", century, 2, says_nothing},
    {"Q", quarter, 1, says_nothing},
    {"MM", month, 2, says_month},
    {"MONTH", month_name, 0, says_month},
    {"MON", short_month_name, 0, says_month},
    {"RM", roman_month, 0, says_month},
    {"WW", week, 2, says_nothing},
    {"IW", iso_week, 2, says_nothing},
    {"W", month_week, 1, says_nothing},
    {"DDD", day_of_year, 3, says_day_of_year},
    {"DD", day, 2, says_day},
    {"DAY", day_name, 0, says_weekday},
    {"DY", short_day_name, 0, says_weekday},
    {"D", weekday, 1, says_weekday},
    {"J", julian_day, 7, says_julian_day},
    {"HH24", hour_24, 2, says_hour},
    {"HH12", hour_12, 2, says_half_hour},
    {"HH", hour_12, 2, says_half_hour},
    {"MI", minute, 2, says_minute},
    {"SSSSS", seconds_of_day, 5, says_seconds_of_day},
    {"SS", second, 2, says_second},
    {"FF1", fraction, 1, says_fraction},
    {"FF2", fraction, 2, says_fraction},
    {"FF3", fraction, 3, says_fraction},
    {"FF4", fraction, 4, says_fraction},
    {"FF5", fraction, 5, says_fraction},
    {"FF6", fraction, 6, says_fraction},
    {"FF7", fraction, 7, says_fraction},
    {"FF8", fraction, 8, says_fraction},
    {"FF9", fraction, 9, says_fraction},
    {"FF", fraction, 6, says_fraction},
    {"AM", meridian, 0, says_meridian},
    {"PM", meridian, 0, says_meridian},
    {"A.M.", meridian_with_points, 0, says_meridian},
    {"P.M.", meridian_with_points, 0, says_meridian},
    {"AD", era, 0, says_era},
    {"BC", era, 0, says_era},
    {"A.D.", era_with_points, 0, says_era},
    {"B.C.", era_with_points, 0, says_era},
    {"TZH", zone_hour, 0, says_zone_hour},
    {"TZM", zone_minute, 0, says_zone_minute},
    {"TZR", zone, 0, says_zone},
};

// By element.
constexpr auto said_by_elements = [] {
    std::array<said_set, static_cast<std::size_t>(time_24) + 1> said{};
    for (const element_name& known : names) {
        said[static_cast<std::size_t>(known.element)] = known.said;
    }
    return said;
}();

// Where the names with each first letter begin and end, of A to Z.
struct name_range {
    std::uint8_t first;
    std::uint8_t behind;
};
constexpr auto ranges = [] {
    std::array<name_range, 26> found{};
    for (std::uint8_t i = 0; i < std::size(names); ++i) {
        name_range& range = found[static_cast<std::size_t>(names[i].name[0] - 'A')];
        range.first = range.behind == 0 ? i : range.first;
        range.behind = static_cast<std::uint8_t>(i + 1);
    }
    return found;
}();

} // namespace

std::span<const element_name> element_names(std::uint8_t letter) {
    const auto index = static_cast<std::uint32_t>((letter & ~0x20U) - 'A');
    if (index >= ranges.size()) {
        return {};
    }
    return std::span(names).subspan(ranges[index].first, ranges[index].behind - std::size_t{ranges[index].first});
}

said_set said_by(date_element element) { return said_by_elements[static_cast<std::size_t>(element)]; }

} // namespace zqengine
