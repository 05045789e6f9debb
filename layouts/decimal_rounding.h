// SPDX-License-Identifier: Apache-2.0
// Rounding and truncation of the values of layouts/decimal_layout.h, to be inlined into a loop over rows in place of a call for each: what
// varies within a column, signs and coefficients, meets no branch.
#ifndef BIFUN_LAYOUTS_DECIMAL_ROUNDING_H
#define BIFUN_LAYOUTS_DECIMAL_ROUNDING_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "layouts/decimal_layout.h"

namespace bifun::decimal_layout {

constexpr std::int32_t max_coefficient_digits = 38;

constexpr std::array<uint128, max_coefficient_digits + 1> make_powers_of_ten() {
    std::array<uint128, max_coefficient_digits + 1> powers{};
    powers[0] = 1;
    for (std::size_t i = 1; i < powers.size(); ++i) {
        powers[i] = powers[i - 1] * 10;
    }
    return powers;
}

// 10^0 to 10^38.
[[gnu::visibility("hidden")]] inline constexpr std::array<uint128, max_coefficient_digits + 1> powers_of_ten = make_powers_of_ten();

// Division of an N-bit word by d = 5 x 10^(k-1), which gives the number of halves of 10^k in it:
//     n / d = n x multiplier / 2^(N + shift), rounded down,    2^shift < d < 2^(shift + 1),    multiplier = 2^(N + shift) / d, rounded up
// for every n below 2^(N-1). After Granlund and Montgomery, "Division by invariant integers using multiplication", theorem 4.2:
// multiplier x d exceeds 2^(N + shift) by an e with 0 < e < d, so the product, divided, exceeds n / d by
// n x e / (d x 2^(N + shift)) < 2^(N-1) x 2^(shift + 1) / (d x 2^(N + shift)) = 1 / d, too little to reach the next integer.
// The multiplier has N bits because d is above 2^shift.
template <class Word> struct reciprocal {
    Word multiplier;
    std::uint32_t shift;
};

template <class Word, std::size_t size> constexpr std::array<reciprocal<Word>, size> make_reciprocals_of_half_powers() {
    std::array<reciprocal<Word>, size> reciprocals{};
    for (std::size_t k = 1; k < size; ++k) {
        const uint128 divisor = powers_of_ten[k] / 2;
        std::uint32_t shift = 0;
        while (uint128{2} << shift < divisor) {
            ++shift;
        }
        // Long division, one bit at a time. What remains is never 0, for no power of two is a multiple of 5.
        Word quotient = 0;
        uint128 remainder = 1;
        for (std::size_t i = 0; i < 8 * sizeof(Word) + shift; ++i) {
            remainder *= 2;
            const bool fits = remainder >= divisor;
            remainder -= fits ? divisor : 0;
            quotient = static_cast<Word>(quotient << 1 | (fits ? 1 : 0));
        }
        reciprocals[k] = {.multiplier = static_cast<Word>(quotient + 1), .shift = shift};
    }
    return reciprocals;
}

inline std::uint64_t low_half(uint128 number) { return static_cast<std::uint64_t>(number); }
inline std::uint64_t high_half(uint128 number) { return static_cast<std::uint64_t>(number >> 64); }

struct wide_number {
    uint128 high;
    uint128 low;
};

inline wide_number multiply_wide(uint128 a, uint128 b) {
    const uint128 low = uint128{low_half(a)} * low_half(b);
    const uint128 cross_a = uint128{high_half(a)} * low_half(b) + high_half(low);
    const uint128 cross_b = uint128{low_half(a)} * high_half(b) + low_half(cross_a);
    return {.high = uint128{high_half(a)} * high_half(b) + high_half(cross_a) + high_half(cross_b), .low = cross_b << 64 | low_half(low)};
}

// 2 x coefficient / 10^cut, rounded down: the quotient, and whether half a unit or more is cut off. `by` divides by the half of 10^cut,
// the coefficient is below 2^63 or 2^127.
inline std::uint64_t halves_after_cut(std::uint64_t coefficient, const reciprocal<std::uint64_t>& by) {
    return high_half(uint128{coefficient} * by.multiplier) >> by.shift;
}

inline uint128 halves_after_cut(uint128 coefficient, const reciprocal<uint128>& by) {
    // Processors are slow at the instruction that shifts two words as one.
    const uint128 product = multiply_wide(coefficient, by.multiplier).high;
    if (by.shift >= 64) {
        return high_half(product) >> (by.shift - 64);
    }
    const std::uint64_t low = low_half(product) >> by.shift | high_half(product) << 1 << (63 - by.shift);
    return uint128{high_half(product) >> by.shift} << 64 | low;
}

// The powers of ten that a coefficient below 2^63, or any, can be half of: from the next on it rounds to 0.
constexpr std::int32_t max_short_cut = 19;
constexpr std::int32_t max_long_cut = max_coefficient_digits;
[[gnu::visibility("hidden")]] inline constexpr auto short_reciprocals = make_reciprocals_of_half_powers<std::uint64_t, max_short_cut + 1>();
[[gnu::visibility("hidden")]] inline constexpr auto long_reciprocals = make_reciprocals_of_half_powers<uint128, max_long_cut + 1>();

// That of a word, for a cut of 1 to the greatest.
template <class Word> inline const reciprocal<Word>& reciprocal_of_half(std::uint32_t cut) {
    if constexpr (sizeof(Word) == sizeof(std::uint64_t)) {
        return short_reciprocals[cut];
    } else {
        return long_reciprocals[cut];
    }
}

// The last two cut toward zero, and then add one unit to positive values, or take one from negative values, whatever was cut off.
enum class rounding { half_away_from_zero, toward_zero, then_one_up, then_one_down };

// What a mode adds to a magnitude that has been cut.
template <rounding mode> inline std::uint32_t unit_added(std::uint8_t mark) {
    if constexpr (mode == rounding::then_one_up) {
        return mark == XDEC_POSITIVE ? 1 : 0;
    }
    return mode == rounding::then_one_down && mark == XDEC_NEGATIVE ? 1 : 0;
}

// Loads the coefficient; false where it takes the top bit of the word or more.
inline bool load_magnitude(const xdec& value, std::uint64_t* magnitude) {
    std::uint64_t high;
    std::memcpy(magnitude, value.bytes + coefficient_at, sizeof *magnitude);
    std::memcpy(&high, value.bytes + coefficient_at + sizeof *magnitude, sizeof high);
    return (high | *magnitude >> 63) == 0;
}

inline bool load_magnitude(const xdec& value, uint128* magnitude) {
    *magnitude = coefficient(value);
    return true;
}

template <rounding mode, class Word> inline bool set_digits(const xdec& value, std::int32_t digits, xdec* result) {
    constexpr std::uint32_t max_cut = sizeof(Word) == sizeof(std::uint64_t) ? max_short_cut : max_long_cut;
    const std::uint32_t scale = value.bytes[scale_at];
    const std::uint32_t cut = scale - static_cast<std::uint32_t>(digits);
    // One comparison: neither is `cut` outside 1 to max_cut nor `digits` negative. Then the scale is above 0, so there is no exponent.
    const std::uint32_t all_if_negative = static_cast<std::uint32_t>(digits >> 31);
    Word magnitude;
    if (((cut - 1) | all_if_negative) >= max_cut || !load_magnitude(value, &magnitude)) {
        if (digits >= static_cast<std::int32_t>(scale)) {
            *result = value;
            return true;
        }
        return false;
    }
    const Word halves = halves_after_cut(magnitude, reciprocal_of_half<Word>(cut));
    const Word rounded = mode == rounding::half_away_from_zero ? (halves + 1) >> 1 : (halves >> 1) + unit_added<mode>(value.bytes[0]);
    // One digit more where rounding up makes a power of ten. Of a value without a whole unit, 0 or 1 is left: one digit.
    const auto kept = static_cast<std::uint32_t>(std::max<std::int64_t>(std::int64_t{value.bytes[precision_at]} - cut, 1));
    const bool one_more = mode != rounding::toward_zero && rounded >= static_cast<Word>(powers_of_ten[kept]);
    const std::uint32_t precision = kept + (one_more ? 1 : 0);
    // The mark, or that of zero; in arithmetic, for compilers take a condition here for a rare case and branch.
    const std::uint32_t unless_zero = std::uint32_t{0} - (rounded != 0 ? 1 : 0);
    const std::uint32_t mark_change = (std::uint32_t{value.bytes[0]} ^ XDEC_ZERO) & unless_zero;
    const std::uint64_t head = pack_head(mark_change ^ XDEC_ZERO, precision, static_cast<std::uint32_t>(digits), 0);
    store_parts(*result, head, rounded);
    return true;
}

// xdec_round and xdec_trunc_scale_with_pos where the coefficient is below 2^63, `digits` not negative, and not more than 19 digits are cut
// off; and where the value already has no more digits. Otherwise false, and `result` is untouched: ask the operation. `result` may be
// the place of `value`. Always inlined: a call in its place makes truncation a quarter slower.
[[gnu::always_inline]] inline bool round_short(const xdec& value, std::int32_t digits, xdec* result) {
    return set_digits<rounding::half_away_from_zero, std::uint64_t>(value, digits, result);
}
[[gnu::always_inline]] inline bool truncate_short(const xdec& value, std::int32_t digits, xdec* result) {
    return set_digits<rounding::toward_zero, std::uint64_t>(value, digits, result);
}

// The same for any coefficient, and up to 38 digits cut off.
inline bool round_long(const xdec& value, std::int32_t digits, xdec* result) {
    return set_digits<rounding::half_away_from_zero, uint128>(value, digits, result);
}
inline bool truncate_long(const xdec& value, std::int32_t digits, xdec* result) {
    return set_digits<rounding::toward_zero, uint128>(value, digits, result);
}

// Either, as far as both go: false only where `digits` is negative or more than 38 digits are cut off.
[[gnu::always_inline]] inline bool round_to(const xdec& value, std::int32_t digits, xdec* result) {
    return round_short(value, digits, result) || round_long(value, digits, result);
}
[[gnu::always_inline]] inline bool truncate_to(const xdec& value, std::int32_t digits, xdec* result) {
    return truncate_short(value, digits, result) || truncate_long(value, digits, result);
}

// Without digits behind the point: one unit up from a positive value and one down from a negative one, where there is a scale at all.
inline bool step_up(const xdec& value, xdec* result) {
    return set_digits<rounding::then_one_up, std::uint64_t>(value, 0, result) ||
           set_digits<rounding::then_one_up, uint128>(value, 0, result);
}
inline bool step_down(const xdec& value, xdec* result) {
    return set_digits<rounding::then_one_down, std::uint64_t>(value, 0, result) ||
           set_digits<rounding::then_one_down, uint128>(value, 0, result);
}

} // namespace bifun::decimal_layout

#endif
