// SPDX-License-Identifier: Apache-2.0
// The decimal layout XDEC_LAYOUT_PACKED_128 of engine/statements.h, and what can be told from it without a call.
//
//     byte 0        sign mark: 0xC1 positive, 0x3E negative, 0x80 zero
//     byte 1        precision: the number of digits of the value written as an integer without its point (1 for zero)
//     byte 2        scale: digits after the point, 0 .. 127
//     byte 3        exponent: zeros that follow the coefficient of an integer beyond 38 digits; else 0
//     bytes 4-7     zero
//     bytes 8-23    coefficient: the magnitude without its point, unsigned, 128 bits, little-endian, below 10^38
//     bytes 24-29   zero
//
// The value is coefficient x 10^(exponent - scale). Zero may have a scale (0.00); its coefficient is 0. An exponent above 0 goes with
// scale 0 and a coefficient of exactly 38 digits, so every value of one scale has one encoding.
#ifndef BIFUN_LAYOUTS_DECIMAL_LAYOUT_H
#define BIFUN_LAYOUTS_DECIMAL_LAYOUT_H

#include <cstdint>
#include <cstring>

#include "bop/frame/contract.h"
#include "layouts/fetch_ahead.h"
#include "layouts/order.h"

namespace bifun::decimal_layout {

__extension__ using uint128 = unsigned __int128;
__extension__ using int128 = __int128;

constexpr std::size_t precision_at = 1;
constexpr std::size_t scale_at = 2;
constexpr std::size_t exponent_at = 3;
constexpr std::size_t coefficient_at = 8;

inline uint128 coefficient(const xdec& value) {
    uint128 bits;
    std::memcpy(&bits, value.bytes + coefficient_at, sizeof bits);
    return bits;
}

// Has the values some way behind one come from memory.
inline void fetch_ahead(const xdec& value) {
    constexpr std::uintptr_t distance = 2048;
    fetch_behind(value.bytes, distance);
}

// Digits of the coefficient; 1 for zero.
inline std::uint32_t coefficient_digits(const xdec& value) { return std::uint32_t{value.bytes[precision_at]} - value.bytes[exponent_at]; }

// ---- writing ---------------------------------------------------------------------------------------------------------

// Bytes 0-7. The fields are in their ranges.
constexpr std::uint64_t pack_head(std::uint32_t mark, std::uint32_t precision, std::uint32_t scale, std::uint32_t exponent) {
    return mark | precision << 8 | scale << 16 | exponent << 24;
}

// A whole value. The coefficient has 64 or 128 bits.
template <class Word> inline void store_parts(xdec& result, std::uint64_t head, Word coefficient) {
    constexpr std::size_t behind_coefficient = coefficient_at + sizeof coefficient;
    std::memset(result.bytes + behind_coefficient, 0, sizeof result - behind_coefficient);
    std::memcpy(result.bytes, &head, sizeof head);
    std::memcpy(result.bytes + coefficient_at, &coefficient, sizeof coefficient);
}

// The magnitude. `result` may be the place of `value`.
inline void set_magnitude(const xdec& value, xdec& result) {
    const std::uint8_t mark = value.bytes[0];
    result = value;
    result.bytes[0] = mark == XDEC_ZERO ? mark : std::uint8_t{XDEC_POSITIVE};
}

// As many values as their bytes and those of a vector have a common multiple: their marks are at the same places of the vectors again.
constexpr std::uint32_t values_per_period = 32;

struct mark_pattern {
    std::uint8_t bytes[values_per_period * sizeof(xdec)];
};

// 0xFF where a mark is.
[[gnu::visibility("hidden")]] inline constexpr mark_pattern marks_of_period = [] {
    mark_pattern pattern{};
    for (std::size_t k = 0; k < values_per_period; ++k) {
        pattern.bytes[k * sizeof(xdec)] = 0xFF;
    }
    return pattern;
}();

// set_magnitude of `count` values side by side, in vectors: the mark of a negative value is the one whose top bit is clear, and the
// complement of that of a positive one.
inline void set_magnitudes(const xdec* __restrict values, xdec* __restrict results, std::uint32_t count) {
    std::uint32_t first = 0;
    for (; count - first >= values_per_period; first += values_per_period) {
        const std::uint8_t* const from = values[first].bytes;
        std::uint8_t* const to = results[first].bytes;
        for (std::size_t i = 0; i < sizeof marks_of_period; ++i) {
            const auto top_bit_clear = static_cast<std::uint8_t>(static_cast<std::int8_t>(from[i]) >= 0 ? 0xFF : 0);
            to[i] = static_cast<std::uint8_t>(from[i] ^ (top_bit_clear & marks_of_period.bytes[i]));
        }
    }
    for (; first < count; ++first) {
        set_magnitude(values[first], results[first]);
    }
}

// The value with the other sign. `result` may be the place of `value`.
inline void set_negation(const xdec& value, xdec& result) {
    const std::uint8_t mark = value.bytes[0];
    result = value;
    result.bytes[0] = static_cast<std::uint8_t>(mark == XDEC_ZERO ? mark : ~mark); // the marks differ in all bits
}

// ---- comparing -------------------------------------------------------------------------------------------------------

// The coefficient with its sign as a number that falls where the value rises: of the marks, only that of a negative value has a clear top
// bit, so the others get the complement. Without a branch, for signs in a column are as good as random.
inline int128 falling_key(const xdec& value) {
    const auto complement = static_cast<int128>(static_cast<std::int8_t>(value.bytes[0]) >> 7);
    return static_cast<int128>(coefficient(value)) ^ complement;
}

// Whether the coefficients of two values are in the same unit, so that they can be compared as they stand.
inline bool same_unit(const xdec& a, const xdec& b) {
    std::uint16_t scale_and_exponent_a;
    std::uint16_t scale_and_exponent_b;
    std::memcpy(&scale_and_exponent_a, a.bytes + scale_at, sizeof scale_and_exponent_a);
    std::memcpy(&scale_and_exponent_b, b.bytes + scale_at, sizeof scale_and_exponent_b);
    return scale_and_exponent_a == scale_and_exponent_b;
}

// Of values in the same unit: whether `a` is less than `b`, and xdec_cmp.
inline bool is_less(const xdec& a, const xdec& b) { return falling_key(a) > falling_key(b); }
inline std::int32_t compare_in_unit(const xdec& a, const xdec& b) { return order(falling_key(b), falling_key(a)); }

} // namespace bifun::decimal_layout

#endif
