// SPDX-License-Identifier: Apache-2.0
// EUC-KR: ASCII and pairs of bytes 0xA1 to 0xFE.
#ifndef BIFUN_EMBEDDED_CHARSET_EUC_KR_H
#define BIFUN_EMBEDDED_CHARSET_EUC_KR_H

#include <cstdint>

#include "embedded/charset/walk.h"

namespace zqengine {

struct euc_kr {
    static constexpr std::uint32_t row_length = 94;
    static constexpr std::uint32_t ranks = row_length * row_length;
    static constexpr std::uint32_t all_ranks = ranks;
    static constexpr bool rank_is_code_point = false;
    static constexpr bool has_private_use = false; // the rows that it leaves to its users have no characters

    static bool is_of_pair(std::uint8_t byte) { return byte - 0xA1U < row_length; }

    static std::uint32_t claimed_length(const std::uint8_t* character) { return is_of_pair(character[0]) ? 2 : 1; }

    static std::uint32_t length_of(const std::uint8_t* character, std::uint32_t remaining) {
        return remaining >= 2 && is_of_pair(character[0]) && is_of_pair(character[1]) ? 2 : 1;
    }

    static bool is_valid(const std::uint8_t* character, std::uint32_t length) { return length > 1 || character[0] < 0x80; }

    // A run of bytes that can be of a pair is pairs from its beginning on.
    static bool is_start(const std::uint8_t* text, std::uint32_t /*length*/, std::uint32_t offset) {
        if (!is_of_pair(text[offset])) {
            return true;
        }
        std::uint32_t run = 0;
        while (run < offset && is_of_pair(text[offset - run - 1])) {
            ++run;
        }
        return run % 2 == 0;
    }

    static std::uint32_t count(const std::uint8_t* text, std::uint32_t length) { return count_by_character<euc_kr>(text, length); }
    static steps step(const std::uint8_t* text, std::uint32_t length, std::uint32_t characters) {
        return step_by_character<euc_kr>(text, length, characters);
    }
    static window window_at(const std::uint8_t* text, std::uint32_t remaining) { return window_by_character<euc_kr>(text, remaining); }

    static std::uint32_t rank(const std::uint8_t* character, std::uint32_t /*length*/) {
        return (character[0] - 0xA1U) * row_length + character[1] - 0xA1U;
    }

    static void write(std::uint32_t rank, std::uint8_t* character, std::uint32_t /*length*/) {
        character[0] = static_cast<std::uint8_t>(0xA1 + rank / row_length);
        character[1] = static_cast<std::uint8_t>(0xA1 + rank % row_length);
    }

    static std::uint32_t rank_length(std::uint32_t /*rank*/) { return 2; }
};

} // namespace zqengine

#endif
