// SPDX-License-Identifier: Apache-2.0
// What vectors of the build's instruction set can do, for the few kernels whose best form depends on it.
#ifndef BIFUN_FRAME_VECTOR_ARITHMETIC_H
#define BIFUN_FRAME_VECTOR_ARITHMETIC_H

#include <cmath>

namespace bifun {

// x * y + z rounded once, in an instruction; elsewhere std::fma is a call.
#if defined(__FMA__) || defined(__aarch64__)
constexpr bool vectors_fuse_multiply_add = true;
#else
constexpr bool vectors_fuse_multiply_add = false;
#endif

// Conversions between 64-bit integers and doubles; elsewhere they are made one by one.
#if defined(__AVX512DQ__)
constexpr bool vectors_convert_bigints = true;
#else
constexpr bool vectors_convert_bigints = false;
#endif

// Doubles rounded to integers, in an instruction; elsewhere std::trunc is a call.
#if defined(__SSE4_1__) || defined(__aarch64__)
constexpr bool vectors_round = true;
#else
constexpr bool vectors_round = false;
#endif

// As std::trunc, for any bits. Doubles from 2^52 on are integers, and between 2^52 and 2^53 there is nothing else, so that a sum there is
// rounded to one.
inline double rounded_toward_zero(double x) {
    if constexpr (vectors_round) {
        return std::trunc(x);
    }
    constexpr double all_integers = 0x1p52;
    const double size = std::fabs(x);
    const double nearest = (size + all_integers) - all_integers;
    const double below = nearest - (nearest > size ? 1.0 : 0.0);
    return std::copysign(size < all_integers ? below : size, x);
}

// As std::ceil and std::floor.
inline double rounded_up(double x) {
    if constexpr (vectors_round) {
        return std::ceil(x);
    }
    const double integral = rounded_toward_zero(x);
    return integral < x ? integral + 1.0 : integral;
}
inline double rounded_down(double x) {
    if constexpr (vectors_round) {
        return std::floor(x);
    }
    const double integral = rounded_toward_zero(x);
    return integral > x ? integral - 1.0 : integral;
}

} // namespace bifun

#endif
