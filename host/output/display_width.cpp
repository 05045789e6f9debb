// SPDX-License-Identifier: Apache-2.0
#include "host/output/display_width.h"

#include <cstdint>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace host {
namespace {

std::size_t character_width(UChar32 character) {
    switch (u_charType(character)) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
    case U_FORMAT_CHAR:
        return 0;
    default:
        break;
    }
    const int width = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

} // namespace

std::size_t display_width(std::string_view text) {
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    std::size_t width = 0;
    for (std::int32_t i = 0; i < length;) {
        if (bytes[i] < 0x80) {
            ++width;
            ++i;
            continue;
        }
        UChar32 character = 0;
        U8_NEXT_OR_FFFD(bytes, i, length, character);
        width += character_width(character);
    }
    return width;
}

} // namespace host
