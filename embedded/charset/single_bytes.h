// SPDX-License-Identifier: Apache-2.0
// Every byte a character, of which only ASCII is known.
#ifndef BIFUN_EMBEDDED_CHARSET_SINGLE_BYTES_H
#define BIFUN_EMBEDDED_CHARSET_SINGLE_BYTES_H

#include <algorithm>
#include <cstdint>

#include "embedded/charset/walk.h"

namespace zqengine {

struct single_bytes {
    static constexpr std::uint32_t ranks = 0;

    static std::uint32_t claimed_length(const std::uint8_t* /*character*/) { return 1; }
    static std::uint32_t length_of(const std::uint8_t* /*character*/, std::uint32_t /*remaining*/) { return 1; }
    static bool is_valid(const std::uint8_t* /*character*/, std::uint32_t /*length*/) { return true; }
    static bool is_start(const std::uint8_t* /*text*/, std::uint32_t /*length*/, std::uint32_t /*offset*/) { return true; }
    static std::uint32_t count(const std::uint8_t* /*text*/, std::uint32_t length) { return length; }
    static steps step(const std::uint8_t* /*text*/, std::uint32_t length, std::uint32_t characters) {
        return {.offset = std::min(length, characters), .characters = std::min(length, characters)};
    }
    static window window_at(const std::uint8_t* text, std::uint32_t remaining) {
        return window_by_character<single_bytes>(text, remaining);
    }
};

} // namespace zqengine

#endif
