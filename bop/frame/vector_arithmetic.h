// What vectors of the build's instruction set can do, for the few kernels whose best form depends on it.
#ifndef BIFUN_FRAME_VECTOR_ARITHMETIC_H
#define BIFUN_FRAME_VECTOR_ARITHMETIC_H

#include <cstdint>

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

// The value, kept out of vectors: assembling them of numbers that lie 20 bytes apart takes twice as long as storing the numbers one by one.
inline std::int32_t alone(std::int32_t value) {
    asm("" : "+r"(value)); // NOLINT(hicpp-no-assembler): no instruction, but the compiler does not know that
    return value;
}

} // namespace bifun

#endif
