// SPDX-License-Identifier: Apache-2.0
#include "bop/bifun_date/units.h"

#include "bop/frame/keywords.h"

namespace bifun {
namespace {

constexpr std::size_t longest_name = 5;

constexpr keyword unit_words[] = {
    {unit::year, "YEAR YYYY YYY YY Y SYYYY SYYY SYEAR"},
    {unit::month, "MONTH MON MM M RM"},
    {unit::day, "DD DDD J"},
    {unit::quarter, "Q"},
    {unit::week, "DAY DY D"},
    {unit::iso_week, "IW"},
    {unit::week_of_year, "WW"},
    {unit::week_of_month, "W"},
    {unit::hour, "HH HH12 HH24"},
    {unit::minute, "MI"},
    {unit::century, "CC SCC"},
};
constexpr keyword_list units{keyword_role::none, unit_words};

} // namespace

std::int32_t ifun_parse_roundpart(const std::uint8_t* name, std::uint32_t length) {
    if (length > longest_name) {
        return unit::none;
    }
    char upper[longest_name];
    for (std::uint32_t i = 0; i < length; ++i) {
        upper[i] = static_cast<char>(name[i] >= 'a' && name[i] <= 'z' ? name[i] - 'a' + 'A' : name[i]);
    }
    const keyword* const found = find_keyword(units, {upper, length});
    return found == nullptr ? std::int32_t{unit::none} : found->code;
}

} // namespace bifun
