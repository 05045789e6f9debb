// SPDX-License-Identifier: Apache-2.0
#include "bop/bifun_date/units.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "bop/frame/keywords.h"

namespace bifun {
namespace {

constexpr keyword unit_words[] = {
    {unit::century, "CC SCC"},
    {unit::week, "D DY DAY"},
    {unit::day, "DD DDD J"},
    {unit::hour, "HH HH12 HH24"},
    {unit::iso_week, "IW"},
    {unit::month, "M MM MON MONTH RM"},
    {unit::minute, "MI"},
    {unit::quarter, "Q"},
    {unit::week_of_month, "W"},
    {unit::week_of_year, "WW"},
    {unit::year, "Y YY YYY YYYY YEAR SYYY SYYYY SYEAR"},
};
constexpr std::size_t longest_name = 5;

} // namespace

std::int32_t ifun_parse_roundpart(const std::uint8_t* name, std::uint32_t length) {
    if (length == 0 || length > longest_name) {
        return unit::none;
    }
    std::array<char, longest_name> upper;
    std::transform(name, name + length, upper.begin(),
                   [](std::uint8_t byte) { return static_cast<char>(byte >= 'a' && byte <= 'z' ? byte - 'a' + 'A' : byte); });
    const std::string_view text(upper.data(), length);
    const keyword* const found = text.find(' ') == std::string_view::npos ? find_keyword({keyword_role::none, unit_words}, text) : nullptr;
    return found == nullptr ? unit::none : found->code;
}

} // namespace bifun
