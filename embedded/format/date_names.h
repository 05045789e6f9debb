// SPDX-License-Identifier: Apache-2.0
// Names in dates, by language.
#ifndef BIFUN_EMBEDDED_FORMAT_DATE_NAMES_H
#define BIFUN_EMBEDDED_FORMAT_DATE_NAMES_H

#include <array>
#include <cstdint>
#include <string_view>

namespace zqengine {

// In the database character set. English names begin with a capital; those of the two halves of a day and of the eras are all capitals.
struct date_names {
    std::array<std::string_view, 12> months;
    std::array<std::string_view, 12> short_months;
    std::array<std::string_view, 7> days; // from Sunday on
    std::array<std::string_view, 7> short_days;
    std::array<std::string_view, 2> meridians;
    std::array<std::string_view, 2> meridians_with_points;
    std::array<std::string_view, 2> eras; // AD and BC
    std::array<std::string_view, 2> eras_with_points;
    // How many blanks fill names up to the longest.
    std::array<std::uint8_t, 12> month_blanks;
    std::array<std::uint8_t, 12> short_month_blanks;
    std::array<std::uint8_t, 7> day_blanks;
};

const date_names& names_in(std::uint8_t language);

inline constexpr std::array<std::string_view, 12> roman_months{"I", "II", "III", "IV", "V", "VI", "VII", "VIII", "IX", "X", "XI", "XII"};

} // namespace zqengine

#endif
