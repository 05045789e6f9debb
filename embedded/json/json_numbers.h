// SPDX-License-Identifier: Apache-2.0
// Numbers as JSON writes them, exactly.
#ifndef BIFUN_EMBEDDED_JSON_JSON_NUMBERS_H
#define BIFUN_EMBEDDED_JSON_JSON_NUMBERS_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zqengine {

// The length of the number that a text begins with; 0 where it does not.
std::size_t json_number_length(std::string_view text);

// What is left between blanks at both ends, and other white space of ASCII.
std::string_view without_spaces(std::string_view text);

// Less than, equal to or greater than 0 as `a` is less than, equal to or greater than `b`, to the last digit. Both are numbers.
std::int32_t compare_json_numbers(std::string_view a, std::string_view b);

} // namespace zqengine

#endif
