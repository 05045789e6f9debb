// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstdint>
#include <string_view>

#include "engine/datetime.h"

namespace {

constexpr std::array<std::string_view, 7> weekdays{"SUNDAY", "MONDAY", "TUESDAY", "WEDNESDAY", "THURSDAY", "FRIDAY", "SATURDAY"};
constexpr std::size_t short_length = 3;

// The letters that `name`, which ends in a NUL, has in common with `word` at its front, in any case.
std::size_t common_letters(const char* name, std::string_view word) {
    std::size_t count = 0;
    while (count < word.size() && (name[count] == word[count] || name[count] == word[count] + ('a' - 'A'))) {
        ++count;
    }
    return count;
}

} // namespace

// Letters are the same bytes in every character set there is.
uint32_t zqtime_convert_weekday(uint32_t /*charset_code*/, const char* name) {
    for (std::uint32_t weekday = 0; weekday < weekdays.size(); ++weekday) {
        const std::size_t letters = common_letters(name, weekdays[weekday]);
        if ((letters == short_length || letters == weekdays[weekday].size()) && name[letters] == '\0') {
            return weekday;
        }
    }
    return ZQTIME_UNKNOWN_WEEKDAY;
}
