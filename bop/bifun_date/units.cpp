// SPDX-License-Identifier: Apache-2.0
#include "bop/bifun_date/units.h"

#include <string_view>

namespace bifun {
namespace {

constexpr std::size_t longest_name = 5;

// A name as one number, of its letters and their count: engines that call row by row have it looked up for each row.
constexpr std::uint64_t add_letter(std::uint64_t name, std::uint8_t letter) { return name << 8 | letter; }
constexpr std::uint64_t end_name(std::uint64_t name, std::size_t length) { return name << 8 | length; }

constexpr std::uint64_t number_of(std::string_view name) {
    std::uint64_t number = 0;
    for (const char letter : name) {
        number = add_letter(number, static_cast<std::uint8_t>(letter));
    }
    return end_name(number, name.size());
}

struct unit_name {
    std::uint64_t number;
    std::int32_t code;

    constexpr unit_name(std::int32_t unit, std::string_view name) : number(number_of(name)), code(unit) {}
};

constexpr unit_name unit_names[] = {
    {unit::century, "CC"},      {unit::century, "SCC"}, {unit::week, "D"},     {unit::week, "DY"},    {unit::week, "DAY"},
    {unit::day, "DD"},          {unit::day, "DDD"},     {unit::day, "J"},      {unit::hour, "HH"},    {unit::hour, "HH12"},
    {unit::hour, "HH24"},       {unit::iso_week, "IW"}, {unit::month, "M"},    {unit::month, "MM"},   {unit::month, "MON"},
    {unit::month, "MONTH"},     {unit::month, "RM"},    {unit::minute, "MI"},  {unit::quarter, "Q"},  {unit::week_of_month, "W"},
    {unit::week_of_year, "WW"}, {unit::year, "Y"},      {unit::year, "YY"},    {unit::year, "YYY"},   {unit::year, "YYYY"},
    {unit::year, "YEAR"},       {unit::year, "SYYY"},   {unit::year, "SYYYY"}, {unit::year, "SYEAR"},
};

} // namespace

std::int32_t ifun_parse_roundpart(const std::uint8_t* name, std::uint32_t length) {
    if (length > longest_name) {
        return unit::none;
    }
    std::uint64_t number = 0;
    for (std::uint32_t i = 0; i < length; ++i) {
        const std::uint8_t byte = name[i];
        number = add_letter(number, static_cast<std::uint8_t>(byte >= 'a' && byte <= 'z' ? byte - 'a' + 'A' : byte));
    }
    number = end_name(number, length);
    for (const unit_name& known : unit_names) {
        if (known.number == number) {
            return known.code;
        }
    }
    return unit::none;
}

} // namespace bifun
