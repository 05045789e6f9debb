#include "bop/bifun_date/fields.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "engine/charset.h"
#include "engine/datetime.h"

namespace bifun {
namespace {

struct field_name {
    std::string_view name;
    zqtime_field field;
};

// A single letter is day of year for y and minute for n; there is none for weeks and weekdays.
constexpr field_name letters[] = {
    {"dD", ZQTIME_DAY},    {"mM", ZQTIME_MONTH},   {"nN", ZQTIME_MINUTE},
    {"sS", ZQTIME_SECOND}, {"qQ", ZQTIME_QUARTER}, {"yY", ZQTIME_DAY_OF_YEAR},
};

constexpr field_name names[] = {
    {"YY", ZQTIME_YEAR},
    {"YYYY", ZQTIME_YEAR},
    {"YEAR", ZQTIME_YEAR},
    {"MM", ZQTIME_MONTH},
    {"MONTH", ZQTIME_MONTH},
    {"DD", ZQTIME_DAY},
    {"DAY", ZQTIME_DAY},
    {"HH", ZQTIME_HOUR},
    {"HOUR", ZQTIME_HOUR},
    {"MI", ZQTIME_MINUTE},
    {"MINUTE", ZQTIME_MINUTE},
    {"SS", ZQTIME_SECOND},
    {"SECOND", ZQTIME_SECOND},
    {"MS", ZQTIME_SUBSECOND},
    {"MILLISECOND", ZQTIME_SUBSECOND},
    {"QQ", ZQTIME_QUARTER},
    {"QUARTER", ZQTIME_QUARTER},
    {"DY", ZQTIME_DAY_OF_YEAR},
    {"DAYOFYEAR", ZQTIME_DAY_OF_YEAR},
    {"WK", ZQTIME_WEEK},
    {"WW", ZQTIME_WEEK},
    {"WEEK", ZQTIME_WEEK},
    {"DW", ZQTIME_WEEKDAY},
    {"WEEKDAY", ZQTIME_WEEKDAY},
};

constexpr std::size_t longest_name = 11;

} // namespace

std::int32_t ifun_parse_datepart(const std::uint8_t* name, std::uint32_t length) {
    if (length == 1) {
        const auto* const found = std::ranges::find_if(
            letters, [&](const field_name& known) { return known.name.find(static_cast<char>(*name)) != known.name.npos; });
        return found == std::end(letters) ? 0 : found->field;
    }
    if (length > longest_name) {
        return 0;
    }
    std::array<char, longest_name> upper;
    std::transform(name, name + length, upper.begin(), [](std::uint8_t byte) { return static_cast<char>(zqupper(byte)); });
    const auto* const found = std::ranges::find(names, std::string_view(upper.data(), length), &field_name::name);
    return found == std::end(names) ? 0 : found->field;
}

} // namespace bifun
