// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <limits>

#include "bop/frame/status.h"
#include "embedded/decimal/decimal_parts.h"
#include "embedded/decimal/wide_decimal.h"
#include "engine/decimal.h"

namespace zqengine {

namespace layout = bifun::decimal_layout;

namespace {

template <class Word> struct signed_magnitude {
    Word magnitude;
    bool negative;
};

// The sum of the magnitudes fits in the word. Without a branch, for signs in a column are as good as random.
template <class Word> signed_magnitude<Word> add_magnitudes(Word a, bool a_negative, Word b, bool b_negative) {
    const bool signs_differ = a_negative != b_negative;
    const Word complement = Word{0} - (signs_differ ? 1 : 0);
    const bool turns = signs_differ && b > a;
    const Word turn = Word{0} - (turns ? 1 : 0);
    const Word sum = a + ((b ^ complement) - complement);
    return {.magnitude = (sum ^ turn) - turn, .negative = a_negative != turns};
}

// 2 x coefficient / 10^cut, rounded up.
uint128 halves_rounded_up(uint128 coefficient, std::int64_t cut) {
    const uint128 halves = halves_after_any_cut(coefficient, cut);
    const auto power = static_cast<std::size_t>(std::min<std::int64_t>(cut, max_coefficient_digits));
    return halves + (halves * powers_of_ten[power] == coefficient * 2 ? 0 : 1);
}

bool is_negative(const xdec& value, bool change_sign) { return (value.bytes[0] == XDEC_NEGATIVE) != change_sign; }

// The sum, or the difference, of any values.
[[gnu::noinline]] std::int32_t add_units(const xdec& a, const xdec& b, bool change_sign, xdec* result) {
    const auto unit = [](const xdec& value) { return value.bytes[layout::scale_at] - value.bytes[layout::exponent_at]; };
    const bool b_is_fine = unit(a) <= unit(b);
    decimal_parts coarse = split_decimal(b_is_fine ? a : b);
    decimal_parts fine = split_decimal(b_is_fine ? b : a);
    coarse.negative = coarse.negative != (change_sign && !b_is_fine);
    fine.negative = fine.negative != (change_sign && b_is_fine);
    if (coarse.coefficient == 0) {
        return make_decimal(result, fine);
    }
    // The coarse coefficient is filled up with zeros as far as its digits allow.
    const std::int64_t room = std::int64_t{max_coefficient_digits} - digit_count(coarse.coefficient);
    const std::int64_t zeros = std::min(fine.scale - coarse.scale, room);
    coarse.coefficient *= powers_of_ten[static_cast<std::size_t>(zeros)];
    coarse.scale += zeros;
    std::int64_t cut = fine.scale - coarse.scale;
    if (cut == 0) {
        const auto sum = add_magnitudes(coarse.coefficient, coarse.negative, fine.coefficient, fine.negative);
        return make_decimal(result, {.coefficient = sum.magnitude, .scale = fine.scale, .negative = sum.negative, .half = false});
    }
    // Now it has 38 digits and exceeds the fine value, whose unit is a tenth of its own or less. The exact sum, rounded down to halves of
    // the coarse unit, tells how make_decimal has to round.
    uint128 halves;
    if (coarse.negative == fine.negative) {
        halves = coarse.coefficient * 2 + halves_after_any_cut(fine.coefficient, cut);
    } else {
        halves = coarse.coefficient * 2 - halves_rounded_up(fine.coefficient, cut);
        if (halves < powers_of_ten[max_coefficient_digits - 1] * 2) {
            // A digit was lost, so there is room for one more. What exceeds 128 bits before the subtraction does not after it.
            coarse.coefficient *= 10;
            ++coarse.scale;
            --cut;
            halves = coarse.coefficient * 2 - halves_rounded_up(fine.coefficient, cut);
        }
    }
    return make_decimal(result,
                        {.coefficient = halves >> 1, .scale = coarse.scale, .negative = coarse.negative, .half = (halves & 1) != 0});
}

[[gnu::noinline]] std::int32_t multiply_long(const xdec& a, const xdec& b, xdec* result) {
    const decimal_parts parts_a = split_decimal(a);
    const decimal_parts parts_b = split_decimal(b);
    if (parts_a.coefficient == 0 || parts_b.coefficient == 0) {
        store_zero(result, std::min<std::uint32_t>(a.bytes[layout::scale_at] + b.bytes[layout::scale_at], max_scale));
        return BIFUN_OK;
    }
    return make_wide_decimal(result, multiply_wide(parts_a.coefficient, parts_b.coefficient), parts_a.scale + parts_b.scale,
                             parts_a.negative != parts_b.negative);
}

std::int32_t store_sum(const signed_magnitude<std::uint64_t>& sum, std::uint32_t scale, xdec* result) {
    if (sum.magnitude == 0) {
        store_zero(result, scale);
    } else {
        store_decimal(result, sum.negative ? XDEC_NEGATIVE : XDEC_POSITIVE, digit_count(sum.magnitude), scale, 0, sum.magnitude);
    }
    return BIFUN_OK;
}

// The sum; where `change_sign`, the difference.
[[gnu::always_inline]] inline std::int32_t add(const xdec& a, const xdec& b, bool change_sign, xdec* result) {
    const bool a_negative = is_negative(a, false);
    const bool b_negative = is_negative(b, change_sign);
    const std::uint32_t scale_a = a.bytes[layout::scale_at];
    const std::uint32_t scale_b = b.bytes[layout::scale_at];
    std::uint64_t magnitude_a;
    std::uint64_t magnitude_b;
    const bool short_a = layout::load_magnitude(a, &magnitude_a);
    const bool short_b = layout::load_magnitude(b, &magnitude_b);
    if (short_a && short_b) { // so there is no exponent
        if (scale_a == scale_b) {
            return store_sum(add_magnitudes(magnitude_a, a_negative, magnitude_b, b_negative), scale_a, result);
        }
        const std::uint32_t scale = std::max(scale_a, scale_b);
        const std::uint32_t zeros_a = scale - scale_a;
        const std::uint32_t zeros_b = scale - scale_b;
        constexpr std::uint32_t max_digits = std::numeric_limits<std::int64_t>::digits10;
        if (std::max(coefficient_digits(a) + zeros_a, coefficient_digits(b) + zeros_b) <= max_digits) {
            magnitude_a *= static_cast<std::uint64_t>(powers_of_ten[zeros_a]);
            magnitude_b *= static_cast<std::uint64_t>(powers_of_ten[zeros_b]);
            return store_sum(add_magnitudes(magnitude_a, a_negative, magnitude_b, b_negative), scale, result);
        }
    } else if (layout::same_unit(a, b) && a.bytes[layout::exponent_at] == 0) {
        const auto sum = add_magnitudes(layout::coefficient(a), a_negative, layout::coefficient(b), b_negative);
        return make_decimal(result, {.coefficient = sum.magnitude, .scale = scale_a, .negative = sum.negative, .half = false});
    }
    return add_units(a, b, change_sign, result);
}

} // namespace

} // namespace zqengine

using namespace zqengine;

int32_t xdec_add(const xdec* a, const xdec* b, xdec* result) { return add(*a, *b, false, result); }

int32_t xdec_sub(const xdec* a, const xdec* b, xdec* result) { return add(*a, *b, true, result); }

int32_t xdec_mul(const xdec* a, const xdec* b, xdec* result) {
    const std::uint32_t digits = coefficient_digits(*a) + coefficient_digits(*b);
    const std::uint32_t scale = std::uint32_t{a->bytes[layout::scale_at]} + b->bytes[layout::scale_at];
    if (digits > max_coefficient_digits || scale > max_scale) { // as with any exponent, which goes with 38 digits
        return multiply_long(*a, *b, result);
    }
    const uint128 product = layout::coefficient(*a) * layout::coefficient(*b);
    if (product == 0) {
        store_zero(result, scale);
        return BIFUN_OK;
    }
    const std::uint32_t precision = digits - (product < powers_of_ten[digits - 1] ? 1 : 0);
    const auto mark =
        static_cast<std::uint8_t>(XDEC_POSITIVE ^ a->bytes[0] ^ b->bytes[0]); // a positive and a negative mark differ in all bits
    store_decimal(result, mark, precision, scale, 0, product);
    return BIFUN_OK;
}

int32_t xdec_abs(const xdec* value, xdec* result) {
    layout::set_magnitude(*value, *result);
    return BIFUN_OK;
}

int32_t xdec_neg(const xdec* value, xdec* result) {
    layout::set_negation(*value, *result);
    return BIFUN_OK;
}
