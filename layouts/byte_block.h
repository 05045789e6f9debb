// SPDX-License-Identifier: Apache-2.0
// Sixteen bytes in a vector register, for the library and the embedded engine. Blocks are vectors of the compiler's own: + - & | ^ ~ >>
// work byte by byte, the same on every architecture. What it has no operators for is here.
#ifndef BIFUN_LAYOUTS_BYTE_BLOCK_H
#define BIFUN_LAYOUTS_BYTE_BLOCK_H

#include <cstdint>

#if defined(__SSSE3__)
#include <tmmintrin.h>
#elif defined(__SSE2__)
#include <emmintrin.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#endif

namespace bifun {

using byte_block [[gnu::vector_size(16)]] = std::uint8_t;
using word_block [[gnu::vector_size(16)]] = std::uint64_t;

constexpr std::uint32_t block_length = sizeof(byte_block);

// At any place. Through memory that is copied, the compiler would not see vectors.
using unaligned_block [[gnu::vector_size(16), gnu::aligned(1), gnu::may_alias]] = std::uint8_t;
inline byte_block load_block(const std::uint8_t* bytes) { return *reinterpret_cast<const unaligned_block*>(bytes); }
inline void store_block(std::uint8_t* bytes, byte_block block) { *reinterpret_cast<unaligned_block*>(bytes) = block; }

// The lower eight bits of the number, in every byte.
inline byte_block repeated(int byte) { return byte_block{} + static_cast<std::uint8_t>(byte); }

inline byte_block block_of_words(std::uint64_t first, std::uint64_t last) { return reinterpret_cast<byte_block>(word_block{first, last}); }
inline std::uint64_t first_word(byte_block block) { return reinterpret_cast<word_block>(block)[0]; }
inline std::uint64_t last_word(byte_block block) { return reinterpret_cast<word_block>(block)[1]; }

// 0xFF where it holds, else 0.
inline byte_block where_equal(byte_block a, byte_block b) { return reinterpret_cast<byte_block>(a == b); }
inline byte_block where_at_least(byte_block bytes, byte_block least) {
#if defined(__SSE2__)
    // The compiler would take the minimum, and so keep each `least` in two registers.
    const __m128i more = _mm_max_epu8(reinterpret_cast<__m128i>(bytes), reinterpret_cast<__m128i>(least));
    return where_equal(reinterpret_cast<byte_block>(more), bytes);
#else
    return reinterpret_cast<byte_block>(bytes >= least);
#endif
}
inline byte_block where_at_most(byte_block bytes, byte_block most) {
#if defined(__SSE2__)
    const __m128i less = _mm_min_epu8(reinterpret_cast<__m128i>(bytes), reinterpret_cast<__m128i>(most));
    return where_equal(reinterpret_cast<byte_block>(less), bytes);
#else
    return reinterpret_cast<byte_block>(bytes <= most);
#endif
}
// Of bytes with a sign, which x86 compares in one step.
inline byte_block where_less_signed(byte_block a, byte_block b) {
    using signed_block [[gnu::vector_size(16)]] = std::int8_t;
    return reinterpret_cast<byte_block>(reinterpret_cast<signed_block>(a) < reinterpret_cast<signed_block>(b));
}

// The bytes `places` further back, zeros before them; and further to the front, zeros behind them.
template <int places> byte_block moved_back(byte_block block) {
    constexpr int from = static_cast<int>(block_length) - places;
    return __builtin_shufflevector(byte_block{}, block, from, from + 1, from + 2, from + 3, from + 4, from + 5, from + 6, from + 7,
                                   from + 8, from + 9, from + 10, from + 11, from + 12, from + 13, from + 14, from + 15);
}
template <int places> byte_block moved_to_front(byte_block block) {
    return __builtin_shufflevector(block, byte_block{}, places, places + 1, places + 2, places + 3, places + 4, places + 5, places + 6,
                                   places + 7, places + 8, places + 9, places + 10, places + 11, places + 12, places + 13, places + 14,
                                   places + 15);
}

// The highest bit of every byte: bit i for byte i.
inline std::uint32_t bits_of(byte_block block) {
#if defined(__SSE2__)
    return static_cast<std::uint32_t>(_mm_movemask_epi8(reinterpret_cast<__m128i>(block)));
#else
    // Each factor's bit takes one of the eight up to the highest byte; no two meet.
    const auto bits = [](std::uint64_t word) { return static_cast<std::uint32_t>((word & 0x8080808080808080) * 0x0002040810204081 >> 56); };
    return bits(first_word(block)) | bits(last_word(block)) << 8;
#endif
}

// Of bytes of at most 15.
inline std::uint32_t sum_of(byte_block block) {
#if defined(__SSE2__)
    const __m128i sums = _mm_sad_epu8(reinterpret_cast<__m128i>(block), _mm_setzero_si128());
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(sums) + _mm_extract_epi16(sums, 4));
#else
    return static_cast<std::uint32_t>((first_word(block) + last_word(block)) * 0x0101010101010101 >> 56);
#endif
}

// For every byte of `index` that of `values` which its lower half counts; 0 where it is 0x80 or more. BIFUN_BLOCK_LOOKUP is defined where
// an instruction does it.
#if defined(__SSSE3__)
#define BIFUN_BLOCK_LOOKUP
inline byte_block looked_up(byte_block values, byte_block index) {
    return reinterpret_cast<byte_block>(_mm_shuffle_epi8(reinterpret_cast<__m128i>(values), reinterpret_cast<__m128i>(index)));
}
#elif defined(__aarch64__)
#define BIFUN_BLOCK_LOOKUP
inline byte_block looked_up(byte_block values, byte_block index) { return vqtbl1q_u8(values, index & 0x8F); }
#else
inline byte_block looked_up(byte_block values, byte_block index) {
    byte_block found{};
    for (std::uint32_t i = 0; i < block_length; ++i) {
        found[i] = index[i] >= 0x80 ? std::uint8_t{0} : values[index[i] & 0x0F];
    }
    return found;
}
#endif

} // namespace bifun

#endif
