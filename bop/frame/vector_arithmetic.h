// SPDX-License-Identifier: Apache-2.0
// What vectors of the build's instruction set can do, for the few kernels whose best form depends on it.
#ifndef BIFUN_FRAME_VECTOR_ARITHMETIC_H
#define BIFUN_FRAME_VECTOR_ARITHMETIC_H

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

} // namespace bifun

#endif
