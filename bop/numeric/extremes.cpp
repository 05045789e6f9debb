// SPDX-License-Identifier: Apache-2.0
// GREATEST and LEAST of two numbers. Where the two are equal the second is the result, which shows in the scale of a decimal.

#include "bop/frame/choose.h"
#include "bop/frame/row_loop.h"
#include "bop/numeric/entry_points.h"
#include "engine/decimal.h"
#include "layouts/decimal_layout.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace bifun {
namespace {

std::int64_t greater_bigint(std::int64_t x, std::int64_t y) { return x > y ? x : y; }
std::int64_t lesser_bigint(std::int64_t x, std::int64_t y) { return x < y ? x : y; }

double greater_double(double x, double y) { return x > y ? x : y; }
double lesser_double(double x, double y) { return x < y ? x : y; }

const xdec& greater_decimal(const xdec& x, const xdec& y) { return choose(xdec_cmp(&x, &y) > 0, x, y); }
const xdec& lesser_decimal(const xdec& x, const xdec& y) { return choose(xdec_cmp(&x, &y) < 0, x, y); }

// The same for an engine whose layout of decimals is known: a column mostly has one scale, and then no call is needed.
const xdec& greater_packed(const xdec& x, const xdec& y) {
    if (!decimal_layout::same_unit(x, y)) [[unlikely]] {
        return greater_decimal(x, y);
    }
    return choose(decimal_layout::is_less(y, x), x, y);
}
const xdec& lesser_packed(const xdec& x, const xdec& y) {
    if (!decimal_layout::same_unit(x, y)) [[unlikely]] {
        return lesser_decimal(x, y);
    }
    return choose(decimal_layout::is_less(x, y), x, y);
}

enum class extreme : std::uint8_t { greatest, least };

#if defined(__AVX2__)

// Four rows at a time, as long as there is another one behind them: a value is loaded with two bytes of the next one, and stored with two
// that the next one overwrites. Returns how many rows are done; -1, with garbage in the results, where two values of a row that counts are
// not in the same unit, or a coefficient is not below 2^63.
template <extreme which>
std::int64_t choose_fours(const xdec* x, const xdec* y, const std::uint8_t* flags, xdec* __restrict results, std::uint32_t count) {
    struct heads_and_coefficients {
        __m256i heads;
        __m256i low_words;
    };
    __m256i high_words = _mm256_setzero_si256();
    __m256i units_differ = _mm256_setzero_si256();
    const auto load_half = [](const xdec& value, std::size_t at) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(value.bytes + at));
    };
    const auto load_fours = [&](const xdec* values) -> heads_and_coefficients {
        constexpr std::size_t last_half = sizeof(xdec) - sizeof(__m128i);
        const auto two = [&](std::uint32_t k, std::size_t at) {
            return _mm256_inserti128_si256(_mm256_castsi128_si256(load_half(values[k], at)), load_half(values[k + 2], at), 1);
        };
        const __m256i even = two(0, 0);
        const __m256i odd = two(1, 0);
        high_words = _mm256_or_si256(high_words, _mm256_or_si256(two(0, last_half), two(1, last_half)));
        return {_mm256_unpacklo_epi64(even, odd), _mm256_unpackhi_epi64(even, odd)};
    };
    // As decimal_layout::falling_key.
    const auto falling_keys = [](const heads_and_coefficients& of) {
        const __m256i not_negative = _mm256_cmpgt_epi64(_mm256_setzero_si256(), _mm256_slli_epi64(of.heads, 56));
        return _mm256_xor_si256(of.low_words, not_negative);
    };
    if (count != 0 && (decimal_layout::coefficient(x[0]) | decimal_layout::coefficient(y[0])) >> 63 != 0) {
        return 0; // so are the others
    }
    std::uint32_t k = 0;
    for (; k + 4 < count; k += 4) {
        const heads_and_coefficients of_x = load_fours(x + k);
        const heads_and_coefficients of_y = load_fours(y + k);
        std::uint32_t four_flags;
        std::memcpy(&four_flags, flags + k, sizeof four_flags);
        const __m256i missing =
            _mm256_cmpeq_epi64(_mm256_cvtepu8_epi64(_mm_cvtsi32_si128(static_cast<std::int32_t>(four_flags))), _mm256_setzero_si256());
        const __m256i differ = _mm256_and_si256(_mm256_xor_si256(of_x.heads, of_y.heads), _mm256_set1_epi64x(0xFFFF0000));
        const __m256i too_long = _mm256_or_si256(of_x.low_words, of_y.low_words);
        units_differ = _mm256_or_si256(units_differ, _mm256_andnot_si256(missing, differ));
        units_differ = _mm256_or_si256(units_differ, _mm256_andnot_si256(missing, _mm256_srli_epi64(too_long, 63)));
        const __m256i key_x = falling_keys(of_x);
        const __m256i key_y = falling_keys(of_y);
        const __m256i takes_x = which == extreme::greatest ? _mm256_cmpgt_epi64(key_y, key_x) : _mm256_cmpgt_epi64(key_x, key_y);
        const auto store = [&](std::uint32_t row, __m256i takes) {
            const auto whole = [](const xdec& value) { return reinterpret_cast<const __m256i*>(value.bytes); };
            const __m256i chosen = _mm256_blendv_epi8(_mm256_loadu_si256(whole(y[row])), _mm256_loadu_si256(whole(x[row])), takes);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(results[row].bytes), chosen);
        };
        store(k, _mm256_permute4x64_epi64(takes_x, 0x00));
        store(k + 1, _mm256_permute4x64_epi64(takes_x, 0x55));
        store(k + 2, _mm256_permute4x64_epi64(takes_x, 0xAA));
        store(k + 3, _mm256_permute4x64_epi64(takes_x, 0xFF));
    }
    // Of the last halves, the bytes behind the low word.
    const __m256i behind = _mm256_and_si256(high_words, _mm256_set_epi64x(-1, -0x10000, -1, -0x10000));
    const __m256i all = _mm256_or_si256(behind, units_differ);
    return _mm256_testz_si256(all, all) != 0 ? static_cast<std::int64_t>(k) : -1;
}

#else

template <extreme which> std::int64_t choose_fours(const xdec*, const xdec*, const std::uint8_t*, xdec*, std::uint32_t) { return 0; }

#endif

template <extreme which> constexpr auto packed_kernel = which == extreme::greatest ? greater_packed : lesser_packed;
template <extreme which> constexpr auto engine_kernel = which == extreme::greatest ? greater_decimal : lesser_decimal;

// Two columns: mostly they have one scale and no more than 18 digits.
template <extreme which> status choose_packed(const batch& batch, const column_argument<xdec>& x, const column_argument<xdec>& y) {
    const bool no_nulls = has_no_nulls(x) && has_no_nulls(y);
    batch.result->no_nulls = joint_no_null_flag(x, y);
    stored_results<xdec> results(batch);
    const auto block = [&](std::uint32_t first, std::uint32_t count, const dense_rows<xdec>& x_rows,
                           const dense_rows<xdec>& y_rows) -> status {
        std::uint8_t* const flags = null_flags(batch) + first;
        write_null_flags(flags, count, no_nulls, x_rows, y_rows);
        const std::int64_t done = choose_fours<which>(x_rows.values, y_rows.values, flags, results.values + first, count);
        const auto from = static_cast<std::uint32_t>(done < 0 ? 0 : done);
        return evaluate_one_by_one<packed_kernel<which>, no_checks>(batch, results, first, from, count, no_nulls, x_rows, y_rows);
    };
    return for_each_block(batch.row_count, block, x, y);
}

template <extreme which, class X, class Y> status extremes_of_decimals(batch_of<DECIMAL> batch, X x, Y y) {
    if (!decimals_are_packed()) {
        return store_rows<engine_kernel<which>>(batch, x, y);
    }
    if constexpr (std::is_same_v<X, Y>) {
        return choose_packed<which>(batch, argument(x), argument(y));
    } else {
        return store_rows<packed_kernel<which>>(batch, x, y);
    }
}

template <class X, class Y> status greatest_decimals(batch_of<DECIMAL> batch, X x, Y y) {
    return extremes_of_decimals<extreme::greatest>(batch, x, y);
}

template <class X, class Y> status least_decimals(batch_of<DECIMAL> batch, X x, Y y) {
    return extremes_of_decimals<extreme::least>(batch, x, y);
}

} // namespace

status entry::bgreatest_aa_math_bigint(batch_of<BIGINT> batch, column_of<BIGINT> x, column_of<BIGINT> y) {
    return store_all_rows<greater_bigint>(batch, x, y);
}
status entry::bgreatest_av_do_math_bigint(batch_of<BIGINT> batch, column_of<BIGINT> x, constant_of<BIGINT> y) {
    return store_all_rows<greater_bigint>(batch, x, y);
}
status entry::bgreatest_va_do_math_bigint(batch_of<BIGINT> batch, constant_of<BIGINT> x, column_of<BIGINT> y) {
    return store_all_rows<greater_bigint>(batch, x, y);
}
status entry::bleast_aa_math_bigint(batch_of<BIGINT> batch, column_of<BIGINT> x, column_of<BIGINT> y) {
    return store_all_rows<lesser_bigint>(batch, x, y);
}
status entry::bleast_av_bi_math_bigint(batch_of<BIGINT> batch, column_of<BIGINT> x, constant_of<BIGINT> y) {
    return store_all_rows<lesser_bigint>(batch, x, y);
}
status entry::bleast_va_bi_math_bigint(batch_of<BIGINT> batch, constant_of<BIGINT> x, column_of<BIGINT> y) {
    return store_all_rows<lesser_bigint>(batch, x, y);
}

status entry::bgreatest_aa_math_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x, column_of<DECIMAL> y) {
    return greatest_decimals(batch, x, y);
}
status entry::bgreatest_av_do_math_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x, constant_of<DECIMAL> y) {
    return greatest_decimals(batch, x, y);
}
status entry::bgreatest_va_do_math_dec(batch_of<DECIMAL> batch, constant_of<DECIMAL> x, column_of<DECIMAL> y) {
    return greatest_decimals(batch, x, y);
}
status entry::bleast_aa_math_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x, column_of<DECIMAL> y) {
    return least_decimals(batch, x, y);
}
status entry::bleast_av_do_math_dec(batch_of<DECIMAL> batch, column_of<DECIMAL> x, constant_of<DECIMAL> y) {
    return least_decimals(batch, x, y);
}
status entry::bleast_va_do_math_dec(batch_of<DECIMAL> batch, constant_of<DECIMAL> x, column_of<DECIMAL> y) {
    return least_decimals(batch, x, y);
}

status entry::bgreatest_aa_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x, column_of<DOUBLE> y) {
    return set_all_rows<greater_double>(batch, x, y);
}
status entry::bgreatest_av_do_math_dbl(batch_of<DOUBLE> batch, column_of<DOUBLE> x, constant_of<DOUBLE> y) {
    return set_all_rows<greater_double>(batch, x, y);
}
status entry::bgreatest_va_do_math_dbl(batch_of<DOUBLE> batch, constant_of<DOUBLE> x, column_of<DOUBLE> y) {
    return set_all_rows<greater_double>(batch, x, y);
}
status entry::bleast_aa_math(batch_of<DOUBLE> batch, column_of<DOUBLE> x, column_of<DOUBLE> y) {
    return set_all_rows<lesser_double>(batch, x, y);
}
status entry::bleast_av_do_math(batch_of<DOUBLE> batch, column_of<DOUBLE> x, constant_of<DOUBLE> y) {
    return set_all_rows<lesser_double>(batch, x, y);
}
status entry::bleast_va_do_math(batch_of<DOUBLE> batch, constant_of<DOUBLE> x, column_of<DOUBLE> y) {
    return set_all_rows<lesser_double>(batch, x, y);
}

} // namespace bifun
