// SPDX-License-Identifier: Apache-2.0
// GB18030: characters of one, two and four bytes. Trail bytes can be ASCII letters and digits.
#ifndef BIFUN_EMBEDDED_CHARSET_GB18030_H
#define BIFUN_EMBEDDED_CHARSET_GB18030_H

#include <cstdint>

#include "embedded/charset/walk.h"

namespace zqengine {

struct gb18030 {
    static constexpr std::uint32_t trails = 190; // 0x40 to 0xFE but 0x7F
    static constexpr std::uint32_t leads = 126;  // 0x81 to 0xFE
    static constexpr std::uint32_t digits = 10;  // 0x30 to 0x39
    // In the order of four-byte characters: 0x81308130 up to 0x8431A439 are the rest of the Basic Multilingual Plane, from 0x90308130 on
    // stand the supplementary planes in their order.
    static constexpr std::uint32_t two_bytes = leads * trails;
    static constexpr std::uint32_t four_bytes_of_plane_0 = 39420;
    static constexpr std::uint32_t four_bytes_before_plane_1 = 15 * digits * leads * digits;

    // Two-byte characters, then four-byte ones of plane 0, then the supplementary ones.
    static constexpr std::uint32_t ranks = two_bytes + four_bytes_of_plane_0;
    static constexpr std::uint32_t all_ranks = ranks + 0x100000;
    static constexpr std::uint32_t no_rank = UINT32_MAX;
    static constexpr bool rank_is_code_point = false;
    static constexpr bool has_private_use = true;

    static bool is_lead(std::uint8_t byte) { return byte - 0x81U < leads; }
    static bool is_digit(std::uint8_t byte) { return byte - 0x30U < digits; }
    static bool is_trail(std::uint8_t byte) { return byte - 0x40U < 191 && byte != 0x7F; }

    static std::uint32_t claimed_length(const std::uint8_t* character) {
        if (!is_lead(character[0])) {
            return 1;
        }
        return is_trail(character[1]) ? 2 : is_digit(character[1]) ? 4 : 1;
    }

    static std::uint32_t length_of(const std::uint8_t* character, std::uint32_t remaining) {
        if (remaining < 2) {
            return 1;
        }
        const std::uint32_t length = claimed_length(character);
        return length == 4 && (remaining < 4 || !is_lead(character[2]) || !is_digit(character[3])) ? 1 : length;
    }

    static bool is_valid(const std::uint8_t* character, std::uint32_t length) { return length > 1 || character[0] < 0x80; }

    // A byte that always is the last one of its character: not a lead byte, nor a digit, which may be the second of four.
    static bool always_ends(std::uint8_t byte) { return !is_lead(byte) && !is_digit(byte); }

    static bool is_start(const std::uint8_t* text, std::uint32_t length, std::uint32_t offset) {
        std::uint32_t start = offset;
        while (start > 0 && !always_ends(text[start - 1])) {
            --start;
        }
        while (start < offset) {
            start += length_of(text + start, length - start);
        }
        return start == offset;
    }

    static std::uint32_t count(const std::uint8_t* text, std::uint32_t length) { return count_by_character<gb18030>(text, length); }
    static steps step(const std::uint8_t* text, std::uint32_t length, std::uint32_t characters) {
        return step_by_character<gb18030>(text, length, characters);
    }
    static window window_at(const std::uint8_t* text, std::uint32_t remaining) { return window_by_character<gb18030>(text, remaining); }

    static std::uint32_t rank(const std::uint8_t* character, std::uint32_t length) {
        if (length == 2) {
            return (character[0] - 0x81U) * trails + character[1] - 0x40U - (character[1] > 0x7F ? 1U : 0U);
        }
        const std::uint32_t number =
            (((character[0] - 0x81U) * digits + character[1] - 0x30U) * leads + character[2] - 0x81U) * digits + character[3] - 0x30U;
        if (number < four_bytes_of_plane_0) {
            return two_bytes + number;
        }
        const std::uint32_t behind_plane_0 = number - four_bytes_before_plane_1;
        return behind_plane_0 < 0x100000 ? ranks + behind_plane_0 : no_rank;
    }

    static void write(std::uint32_t rank, std::uint8_t* character, std::uint32_t length) {
        if (length == 2) {
            const std::uint32_t trail = 0x40 + rank % trails;
            character[0] = static_cast<std::uint8_t>(0x81 + rank / trails);
            character[1] = static_cast<std::uint8_t>(trail < 0x7F ? trail : trail + 1);
            return;
        }
        std::uint32_t number = rank < ranks ? rank - two_bytes : rank - ranks + four_bytes_before_plane_1;
        character[3] = static_cast<std::uint8_t>(0x30 + number % digits);
        number /= digits;
        character[2] = static_cast<std::uint8_t>(0x81 + number % leads);
        number /= leads;
        character[1] = static_cast<std::uint8_t>(0x30 + number % digits);
        character[0] = static_cast<std::uint8_t>(0x81 + number / digits);
    }

    static std::uint32_t rank_length(std::uint32_t rank) { return rank < two_bytes ? 2 : 4; }
};

} // namespace zqengine

#endif
