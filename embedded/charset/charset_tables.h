// SPDX-License-Identifier: Apache-2.0
// Code points and cases of the characters of a charset, by rank.
//
// The rank of a valid character of more than one byte is its number in an order of its charset's own. Those of the Basic Multilingual Plane
// come first, `ranks` of them; the rank of a supplementary character is its code point less 0x10000, behind them. Any rank beyond is of a
// character that Unicode has not.
//   rank(character, length)             the rank
//   write(rank, character, length)      the character's bytes, of which there are `length`
//   rank_length(rank)                   how many bytes those are
//   rank_is_code_point                  whether code points need no table
//   has_private_use                     whether characters of Unicode's private use are of the charset; of those that need a table
//   all_ranks                           how many ranks there are, those of supplementary characters among them
#ifndef BIFUN_EMBEDDED_CHARSET_CHARSET_TABLES_H
#define BIFUN_EMBEDDED_CHARSET_CHARSET_TABLES_H

#include <array>
#include <cstdint>

#include "embedded/charset/ascii.h"

namespace zqengine {

constexpr std::uint32_t unknown_code_point = 0xFFFD;

template <class Charset> struct charset_tables {
    std::array<std::uint16_t, Charset::rank_is_code_point ? 0 : Charset::ranks> code_points;
    // The rank of the same letter in upper and in lower case; the own rank for characters without that case, or where it has another
    // length.
    std::array<std::array<std::uint16_t, Charset::ranks>, 2> in_case;
};

// Of utf8, gb18030 and euc_kr. Made at the first call, which takes some milliseconds, by whichever thread that is.
template <class Charset> const charset_tables<Charset>& tables_of();

// A code point's simple case mapping.
std::uint32_t code_point_in_case(std::uint32_t code_point, letter_case to);

// Of a valid character of more than one byte.
template <class Charset>
std::uint32_t code_point_of(const charset_tables<Charset>& tables, const std::uint8_t* character, std::uint32_t length) {
    const std::uint32_t rank = Charset::rank(character, length);
    if (rank >= Charset::ranks) {
        const std::uint32_t supplementary = rank - Charset::ranks;
        return supplementary < 0x100000 ? 0x10000 + supplementary : unknown_code_point;
    }
    if constexpr (Charset::rank_is_code_point) {
        return rank;
    } else {
        return tables.code_points[rank];
    }
}

// Changes a valid character of more than one byte.
template <class Charset>
void change_case(const charset_tables<Charset>& tables, std::uint8_t* character, std::uint32_t length, letter_case to) {
    const std::uint32_t rank = Charset::rank(character, length);
    std::uint32_t changed = rank;
    if (rank < Charset::ranks) {
        changed = tables.in_case[static_cast<std::uint32_t>(to)][rank];
    } else if (rank - Charset::ranks < 0x100000) {
        const std::uint32_t code_point = code_point_in_case(0x10000 + (rank - Charset::ranks), to);
        changed = code_point >= 0x10000 ? Charset::ranks + (code_point - 0x10000) : rank;
    }
    if (changed != rank) {
        Charset::write(changed, character, length);
    }
}

} // namespace zqengine

#endif
