// SPDX-License-Identifier: Apache-2.0
#include "bop/bifun_date/fields.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "bop/frame/keywords.h"
#include "engine/charset.h"

namespace bifun {
namespace {

constexpr std::size_t longest_name = 11;

constexpr char upper_letter(std::uint8_t byte) { return static_cast<char>(byte >= 'a' && byte <= 'z' ? byte - 'a' + 'A' : byte); }

} // namespace

// A single letter, of which weeks and weekdays have none, is in either case what it is whatever the engine takes for its upper case.
std::int32_t ifun_parse_datepart(const std::uint8_t* name, std::uint32_t length) {
    if (length > longest_name) {
        return 0;
    }
    std::array<char, longest_name> upper;
    std::transform(name, name + length, upper.begin(),
                   [length](std::uint8_t byte) { return length == 1 ? upper_letter(byte) : static_cast<char>(zqupper(byte)); });
    const keyword* const found = find_keyword(datepart_fields, {upper.data(), length});
    return found == nullptr ? 0 : found->code;
}

} // namespace bifun
