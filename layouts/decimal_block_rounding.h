// SPDX-License-Identifier: Apache-2.0
// Rounding and truncation of many packed decimals of one scale (layouts/decimal_rounding.h), side by side.
#ifndef BIFUN_LAYOUTS_DECIMAL_BLOCK_ROUNDING_H
#define BIFUN_LAYOUTS_DECIMAL_BLOCK_ROUNDING_H

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "layouts/decimal_rounding.h"

#if defined(__AVX512BW__) && defined(__AVX512DQ__) && defined(__AVX512VL__)
#define BIFUN_EIGHT_DECIMALS
#include <immintrin.h>
#endif

namespace bifun::decimal_layout {

// The digits of values of one scale, and of their results. The word is that of the coefficients.
template <class Word> struct block_cut {
    std::uint32_t scale;
    std::uint32_t digits; // less than the scale
    reciprocal<Word> by;  // divides by the half of 10^(scale - digits)
};

// What a value that is to be cut may not have: another scale, an exponent, or a coefficient that takes the top bit of the word or more.
constexpr std::uint64_t scale_and_exponent_bits = 0xFFFF0000;

template <class Word> constexpr bool is_short_word = sizeof(Word) == sizeof(std::uint64_t);

#if defined(BIFUN_EIGHT_DECIMALS)

// ---- eight values in vectors of eight words ----

// Operators work word by word; a comparison gives all bits of a word or none. Instructions are named in their forms with masks, all set:
// gcc takes what the others leave undefined for used.
using eight_words [[gnu::vector_size(64)]] = std::uint64_t;
using eight_signed_words [[gnu::vector_size(64)]] = std::int64_t;
constexpr __mmask8 all_eight = 0xFF;

inline eight_words words_of(__m512i bits) { return reinterpret_cast<eight_words>(bits); }
inline __m512i bits_of(eight_words words) { return reinterpret_cast<__m512i>(words); }

struct eight_wide_numbers {
    eight_words low;
    eight_words high;
};

// Of the lower halves.
inline eight_words multiply_halves(eight_words a, eight_words b) {
    return words_of(_mm512_maskz_mul_epu32(all_eight, bits_of(a), bits_of(b)));
}

// Products of 64 bits by 64, of four of 32 by 32.
inline eight_wide_numbers multiply(eight_words numbers, std::uint64_t factor) {
    const eight_words factor_low = eight_words{} + factor;
    const eight_words factor_high = factor_low >> 32;
    const eight_words upper = numbers >> 32;
    const eight_words low = multiply_halves(numbers, factor_low);
    const eight_words cross_a = multiply_halves(upper, factor_low) + (low >> 32);
    const eight_words cross_b = multiply_halves(numbers, factor_high) + (cross_a & UINT32_MAX);
    const eight_words high = multiply_halves(upper, factor_high) + (cross_a >> 32) + (cross_b >> 32);
    return {.low = cross_b << 32 | (low & UINT32_MAX), .high = high};
}

// sum += addend, and carries += 1 where that is more than a word holds.
inline void add_with_carry(eight_words& sum, eight_words addend, eight_words& carries) {
    sum += addend;
    carries -= reinterpret_cast<eight_words>(sum < addend);
}

// A count of 64 or more, or below 0, leaves nothing.
inline eight_words shifted_right(eight_words words, std::int64_t count) {
    return words_of(_mm512_maskz_srl_epi64(all_eight, bits_of(words), _mm_cvtsi64_si128(count)));
}
inline eight_words shifted_left(eight_words words, std::int64_t count) {
    return words_of(_mm512_maskz_sll_epi64(all_eight, bits_of(words), _mm_cvtsi64_si128(count)));
}
inline eight_wide_numbers shifted_right(const eight_wide_numbers& numbers, std::int64_t count) {
    const eight_words from_high = shifted_left(numbers.high, 64 - count) | shifted_right(numbers.high, count - 64);
    return {.low = shifted_right(numbers.low, count) | from_high, .high = shifted_right(numbers.high, count)};
}

// As halves_after_cut(), shifted by `more` bits.
inline eight_wide_numbers cut_eight(const eight_wide_numbers& numbers, const reciprocal<std::uint64_t>& by, std::int64_t more) {
    return {.low = shifted_right(multiply(numbers.low, by.multiplier).high, by.shift + more), .high = eight_words{}};
}

inline eight_wide_numbers cut_eight(const eight_wide_numbers& numbers, const reciprocal<uint128>& by, std::int64_t more) {
    const eight_wide_numbers cross_a = multiply(numbers.high, low_half(by.multiplier));
    const eight_wide_numbers cross_b = multiply(numbers.low, high_half(by.multiplier));
    eight_words second_word = multiply(numbers.low, low_half(by.multiplier)).high;
    eight_wide_numbers product = multiply(numbers.high, high_half(by.multiplier));
    eight_words carries{};
    add_with_carry(second_word, cross_a.low, carries);
    add_with_carry(second_word, cross_b.low, carries);
    add_with_carry(product.low, carries, product.high);
    add_with_carry(product.low, cross_a.high, product.high);
    add_with_carry(product.low, cross_b.high, product.high);
    return shifted_right(product, by.shift + more);
}

// Where all bits are set.
inline void add_one(eight_wide_numbers& numbers, eight_words where) {
    numbers.low -= where;
    numbers.high -= where & reinterpret_cast<eight_words>(numbers.low == 0);
}

// Of eight values, one behind the other, the words at a place: of those at even, or of those at odd places when the second one is first.
inline eight_words load_every_other(const xdec* values, std::size_t at) {
    using two_words [[gnu::vector_size(16), gnu::aligned(1), gnu::may_alias]] = std::uint64_t;
    const auto load = [=](std::uint32_t k) -> two_words { return *reinterpret_cast<const two_words*>(values[k].bytes + at); };
    const auto first = __builtin_shufflevector(load(0), load(2), 0, 1, 2, 3);
    const auto last = __builtin_shufflevector(load(4), load(6), 0, 1, 2, 3);
    return __builtin_shufflevector(first, last, 0, 1, 2, 3, 4, 5, 6, 7);
}

inline eight_words first_of_pairs(eight_words even, eight_words odd) {
    return __builtin_shufflevector(even, odd, 0, 8, 2, 10, 4, 12, 6, 14);
}
inline eight_words last_of_pairs(eight_words even, eight_words odd) {
    return __builtin_shufflevector(even, odd, 1, 9, 3, 11, 5, 13, 7, 15);
}

// Writes eight values, and two bytes behind them.
inline void store_eight(xdec* results, eight_words heads, const eight_wide_numbers& coefficients) {
    using value_words [[gnu::vector_size(32), gnu::aligned(1), gnu::may_alias]] = std::uint64_t;
    const auto store = [=](std::uint32_t k, value_words value) { *reinterpret_cast<value_words*>(results[k].bytes) = value; };
    const eight_words even_first = first_of_pairs(heads, coefficients.low);
    const eight_words odd_first = last_of_pairs(heads, coefficients.low);
    const eight_words even_last = first_of_pairs(coefficients.high, eight_words{});
    const eight_words odd_last = last_of_pairs(coefficients.high, eight_words{});
    store(0, __builtin_shufflevector(even_first, even_last, 0, 1, 8, 9));
    store(1, __builtin_shufflevector(odd_first, odd_last, 0, 1, 8, 9));
    store(2, __builtin_shufflevector(even_first, even_last, 2, 3, 10, 11));
    store(3, __builtin_shufflevector(odd_first, odd_last, 2, 3, 10, 11));
    store(4, __builtin_shufflevector(even_first, even_last, 4, 5, 12, 13));
    store(5, __builtin_shufflevector(odd_first, odd_last, 4, 5, 12, 13));
    store(6, __builtin_shufflevector(even_first, even_last, 6, 7, 14, 15));
    store(7, __builtin_shufflevector(odd_first, odd_last, 6, 7, 14, 15));
}

inline eight_words gather_words(const uint128* table, eight_words words) {
    return words_of(_mm512_mask_i64gather_epi64(_mm512_setzero_si512(), all_eight, bits_of(words), table, 8));
}

inline bool any(eight_words words) { return _mm512_test_epi64_mask(bits_of(words), bits_of(words)) != 0; }

// Cuts values eight at a time, as long as there is another one behind them. Returns how many, or -1 where one that counts does not go with
// the others.
template <rounding mode, class Word>
std::int64_t cut_eights(const xdec* __restrict values, const std::uint8_t* flags, const block_cut<Word>& cut, xdec* __restrict results,
                        std::uint32_t count) {
    constexpr bool is_short = is_short_word<Word>;
    const std::uint64_t expected = pack_head(0, 0, cut.scale, 0);
    const std::uint64_t head_of_result = pack_head(0, 0, cut.digits, 0);
    const std::int64_t digits_cut = cut.scale - cut.digits;
    std::uint32_t k = 0;
    for (; k + 8 < count; k += 8) {
        for (std::uint32_t i = 0; i < 8; i += 2) {
            fetch_ahead(values[k + i]);
        }
        const eight_words even = load_every_other(values + k, 0);
        const eight_words odd = load_every_other(values + k + 1, 0);
        const eight_words heads = first_of_pairs(even, odd);
        const eight_wide_numbers coefficients = {
            .low = last_of_pairs(even, odd),
            .high = last_of_pairs(load_every_other(values + k, coefficient_at), load_every_other(values + k + 1, coefficient_at))};
        eight_words differs = (heads ^ expected) & scale_and_exponent_bits;
        if constexpr (is_short) {
            differs |= coefficients.high | coefficients.low >> 63;
        }
        const __m512i eight_flags = _mm512_maskz_cvtepu8_epi64(all_eight, _mm_loadl_epi64(reinterpret_cast<const __m128i*>(flags + k)));
        if (any(differs & reinterpret_cast<eight_words>(words_of(eight_flags) != 0))) {
            return -1; // at once: where there is one there are many, and all rows are to be done again
        }

        eight_wide_numbers rounded;
        const eight_words marks = heads & 0xFF;
        if constexpr (mode == rounding::half_away_from_zero) {
            rounded = cut_eight(coefficients, cut.by, 0);
            add_one(rounded, ~eight_words{});
            rounded = shifted_right(rounded, 1);
        } else {
            rounded = cut_eight(coefficients, cut.by, 1);
            if constexpr (mode != rounding::toward_zero) {
                constexpr std::uint64_t moving = mode == rounding::then_one_up ? XDEC_POSITIVE : XDEC_NEGATIVE;
                add_one(rounded, reinterpret_cast<eight_words>(marks == moving));
            }
        }
        // As in set_digits(). What is no precision stays within the table.
        const auto less = reinterpret_cast<eight_signed_words>(heads >> 8 & 0xFF) - digits_cut;
        const eight_signed_words least = eight_signed_words{} + 1;
        const eight_signed_words most = eight_signed_words{} + max_coefficient_digits;
        const eight_signed_words at_least = less < least ? least : less;
        eight_words precisions = reinterpret_cast<eight_words>(at_least > most ? most : at_least);
        if constexpr (mode != rounding::toward_zero) {
            // Rounding up makes nothing above the power of ten. That another number has its lower word is rare enough for a branch.
            const eight_words places = precisions * 2;
            auto is_power = reinterpret_cast<eight_words>(rounded.low == gather_words(powers_of_ten.data(), places));
            if (!is_short && any(is_power)) {
                is_power &= reinterpret_cast<eight_words>(rounded.high == gather_words(powers_of_ten.data(), places + 1));
            }
            precisions -= is_power;
        }
        const eight_words zero_marks = eight_words{} + std::uint64_t{XDEC_ZERO};
        const eight_words marks_of_results = (rounded.low | rounded.high) == 0 ? zero_marks : marks;
        store_eight(results + k, head_of_result | marks_of_results | precisions << 8, rounded);
    }
    return k;
}

#else

template <rounding mode, class Word>
std::int64_t cut_eights(const xdec*, const std::uint8_t*, const block_cut<Word>&, xdec*, std::uint32_t) {
    return 0;
}

#endif

// set_digits_of_all() in words of one length. False, at once, where a value that counts does not go with the others.
template <rounding mode, class Word>
bool cut_all(const xdec* __restrict values, const std::uint8_t* flags, const block_cut<Word>& cut, xdec* __restrict results,
             std::uint32_t count) {
    const std::int64_t done = cut_eights<mode>(values, flags, cut, results, count);
    if (done < 0) {
        return false;
    }
    const std::uint64_t expected = pack_head(0, 0, cut.scale, 0);
    const std::uint64_t head_of_result = pack_head(0, 0, cut.digits, 0);
    const auto digits_cut = static_cast<std::int32_t>(cut.scale - cut.digits);
    for (auto k = static_cast<std::uint32_t>(done); k < count; ++k) {
        fetch_ahead(values[k]);
        std::uint64_t head;
        std::memcpy(&head, values[k].bytes, sizeof head);
        const uint128 coefficient_bits = coefficient(values[k]);
        const auto magnitude = static_cast<Word>(coefficient_bits);
        const std::uint64_t too_long =
            is_short_word<Word> ? high_half(coefficient_bits) | low_half(coefficient_bits) >> 63 : std::uint64_t{0};
        const std::uint64_t differs = ((head ^ expected) & scale_and_exponent_bits) | too_long;
        if ((differs & (std::uint64_t{0} - flags[k])) != 0) {
            return false;
        }
        const Word halves = halves_after_cut(magnitude, cut.by);
        const auto mark = static_cast<std::uint8_t>(head);
        const Word rounded = mode == rounding::half_away_from_zero ? (halves + 1) >> 1 : (halves >> 1) + unit_added<mode>(mark);
        // As in set_digits(). What is no precision stays within the table.
        const auto precision = static_cast<std::int32_t>(head >> 8 & 0xFF);
        const auto kept = static_cast<std::uint32_t>(std::clamp(precision - digits_cut, 1, max_coefficient_digits));
        const bool one_more = mode != rounding::toward_zero && rounded >= static_cast<Word>(powers_of_ten[kept]);
        const std::uint32_t unless_zero = std::uint32_t{0} - (rounded != 0 ? 1 : 0);
        const std::uint32_t mark_change = (std::uint32_t{mark} ^ XDEC_ZERO) & unless_zero;
        store_parts(results[k], head_of_result | (mark_change ^ XDEC_ZERO) | std::uint64_t{kept + (one_more ? 1 : 0)} << 8, rounded);
    }
    return true;
}

// What the operations of `mode` do, to `count` values side by side of which those with a flag other than 0 count: in one pass for values
// that have the scale of the first one. Otherwise false, and the results are garbage; those of the other values always are.
template <rounding mode>
bool set_digits_of_all(const xdec* __restrict values, const std::uint8_t* flags, std::int32_t digits, xdec* __restrict results,
                       std::uint32_t count) {
    std::uint32_t first = 0;
    while (first < count && flags[first] == 0) {
        ++first;
    }
    if (first == count) {
        return true;
    }
    const std::uint32_t scale = values[first].bytes[scale_at];
    const auto digits_kept = static_cast<std::uint32_t>(digits);
    const std::uint32_t digits_cut = scale - digits_kept;
    if (digits < 0 || digits_cut - 1 >= max_long_cut) {
        return false;
    }
    const auto cut_in_words = [=]<class Word>(const reciprocal<Word>& by) {
        return cut_all<mode, Word>(values + first, flags + first, {scale, digits_kept, by}, results + first, count - first);
    };
    std::uint64_t magnitude;
    return (digits_cut <= max_short_cut && load_magnitude(values[first], &magnitude) && cut_in_words(short_reciprocals[digits_cut])) ||
           cut_in_words(long_reciprocals[digits_cut]);
}

} // namespace bifun::decimal_layout

#endif
