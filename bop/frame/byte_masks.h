// SPDX-License-Identifier: Apache-2.0
// The bytes of a short text in vector registers, and what holds for each of them as one mask: bit i for byte i, none for what lies behind
// the text. In the widest form that the build's instruction set has; all of them give the same masks.
//
// Without masked loads, bytes behind the text are loaded as well, but none of another page, so that nothing can happen; a text that ends a
// page is copied first. Sanitizers do not know that, and get the plain form in its place.
#ifndef BIFUN_FRAME_BYTE_MASKS_H
#define BIFUN_FRAME_BYTE_MASKS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "layouts/byte_block.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

#if defined(__AVX512BW__) && defined(__AVX512VL__) && defined(__BMI2__)
#define BIFUN_MASKED_LOADS
#elif !defined(BIFUN_SANITIZED)
#define BIFUN_WHOLE_LOADS
#endif

namespace bifun {

constexpr std::uint8_t blank = 0x20;

// 9 to 13 and 32, in every character set.
constexpr bool is_whitespace(std::uint8_t byte) { return byte == blank || static_cast<std::uint8_t>(byte - 9) <= 4; }

// Bytes below 0x80, by their lower half: a bit for each upper half.
struct ascii_set {
    std::uint8_t upper_halves[16];
};
inline void include(ascii_set& set, std::uint8_t byte) {
    set.upper_halves[byte & 0x0F] = static_cast<std::uint8_t>(set.upper_halves[byte & 0x0F] | 1U << (byte >> 4 & 7));
}
inline bool contains(const ascii_set& set, std::uint8_t byte) {
    return byte < 0x80 && (set.upper_halves[byte & 0x0F] >> (byte >> 4) & 1) != 0;
}

// The longest text that a mask has bits for.
constexpr std::uint32_t longest_masked = 64;

// `count` is at most 64.
inline std::uint64_t first_bits(std::uint32_t count) {
#if defined(__BMI2__)
    return _bzhi_u64(~std::uint64_t{0}, count);
#else
    return count == 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
#endif
}

#if defined(BIFUN_MASKED_LOADS)

// `width` bytes, 16 or 64. A short text in a short register touches fewer cache lines.
template <std::uint32_t width> struct text_bytes;

template <> struct text_bytes<64> {
    __mmask64 here;
    __m512i bytes;
    text_bytes(const std::uint8_t* text, std::uint32_t length)
        : here(_bzhi_u64(~std::uint64_t{0}, length)), bytes(_mm512_maskz_loadu_epi8(here, text)) {}
};
template <> struct text_bytes<16> {
    __mmask16 here;
    __m128i bytes;
    text_bytes(const std::uint8_t* text, std::uint32_t length)
        : here(static_cast<__mmask16>(_bzhi_u32(0xFFFF, length))), bytes(_mm_maskz_loadu_epi8(here, text)) {}
};

inline std::uint64_t equal_bytes(const text_bytes<64>& text, std::uint8_t byte) {
    return _mm512_mask_cmpeq_epi8_mask(text.here, text.bytes, _mm512_set1_epi8(static_cast<char>(byte)));
}
inline std::uint64_t equal_bytes(const text_bytes<16>& text, std::uint8_t byte) {
    return _mm_mask_cmpeq_epi8_mask(text.here, text.bytes, _mm_set1_epi8(static_cast<char>(byte)));
}

// The bytes of 0x80 and above.
inline std::uint64_t bytes_beyond_ascii(const text_bytes<64>& text) { return _mm512_movepi8_mask(text.bytes); }
inline std::uint64_t bytes_beyond_ascii(const text_bytes<16>& text) { return _mm_movepi8_mask(text.bytes); }

// The bytes of `low` and above, as numbers without sign.
inline std::uint64_t bytes_from(const text_bytes<64>& text, std::uint8_t low) {
    return _mm512_mask_cmpge_epu8_mask(text.here, text.bytes, _mm512_set1_epi8(static_cast<char>(low)));
}

inline std::uint64_t whitespace_bytes(const text_bytes<16>& text) {
    const __mmask16 controls = _mm_mask_cmple_epu8_mask(text.here, _mm_sub_epi8(text.bytes, _mm_set1_epi8(9)), _mm_set1_epi8(4));
    return equal_bytes(text, blank) | controls;
}

#elif defined(BIFUN_WHOLE_LOADS)

#if defined(__AVX2__)
using byte_vector = __m256i;
inline byte_vector load_vector(const std::uint8_t* bytes) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes)); }
inline void store_vector(std::uint8_t* to, byte_vector bytes) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes); }
inline std::uint32_t top_bits(byte_vector bytes) { return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes)); }
inline byte_vector every_byte(std::uint8_t byte) { return _mm256_set1_epi8(static_cast<char>(byte)); }
inline byte_vector equal(byte_vector bytes, std::uint8_t byte) { return _mm256_cmpeq_epi8(bytes, every_byte(byte)); }
inline byte_vector not_below(byte_vector bytes, std::uint8_t low) {
    return _mm256_cmpeq_epi8(_mm256_max_epu8(bytes, every_byte(low)), bytes);
}
// Of `mask` every byte is 0 or 0xFF.
inline byte_vector select(byte_vector mask, byte_vector set, byte_vector clear) { return _mm256_blendv_epi8(clear, set, mask); }
#else
using byte_vector = byte_block;
inline byte_vector load_vector(const std::uint8_t* bytes) { return load_block(bytes); }
inline void store_vector(std::uint8_t* to, byte_vector bytes) { store_block(to, bytes); }
inline std::uint32_t top_bits(byte_vector bytes) { return bits_of(bytes); }
inline byte_vector every_byte(std::uint8_t byte) { return repeated(byte); }
inline byte_vector equal(byte_vector bytes, std::uint8_t byte) { return where_equal(bytes, every_byte(byte)); }
inline byte_vector not_below(byte_vector bytes, std::uint8_t low) { return where_at_least(bytes, every_byte(low)); }
// Of `mask` every byte is 0 or 0xFF.
inline byte_vector select(byte_vector mask, byte_vector set, byte_vector clear) { return (mask & set) | (~mask & clear); }
#endif

// Whether `width` bytes may be loaded where a text of `length` is: it has bytes, and they lie in one page, of the smallest that processors
// have.
template <std::uint32_t width> bool can_load(const std::uint8_t* text, std::uint32_t length) {
    constexpr std::uintptr_t page = 4096;
    return length != 0 && (reinterpret_cast<std::uintptr_t>(text) & (page - 1)) <= page - width;
}

// A copy of a text where `width` bytes may be loaded.
template <std::uint32_t width> struct loadable_copy {
    std::uint8_t bytes[width] = {};
    loadable_copy(const std::uint8_t* text, std::uint32_t length) {
        if (length != 0) {
            std::memcpy(bytes, text, length);
        }
    }
};

template <std::uint32_t width> struct text_bytes;

template <> struct text_bytes<64> {
    static constexpr std::size_t parts = 64 / sizeof(byte_vector);
    std::uint64_t here;
    byte_vector part[parts];

    text_bytes(const std::uint8_t* text, std::uint32_t length) : here(first_bits(length)) {
        const auto load = [this](const std::uint8_t* bytes) {
            for (std::size_t i = 0; i < parts; ++i) {
                part[i] = load_vector(bytes + i * sizeof(byte_vector));
            }
        };
        if (can_load<64>(text, length)) [[likely]] {
            load(text);
        } else {
            load(loadable_copy<64>(text, length).bytes);
        }
    }
};

template <class Test> std::uint64_t mask_of(const text_bytes<64>& text, Test test) {
    std::uint64_t mask = 0;
    for (std::size_t i = 0; i < text_bytes<64>::parts; ++i) {
        mask |= std::uint64_t{top_bits(test(text.part[i]))} << i * sizeof(byte_vector);
    }
    return mask & text.here;
}
inline std::uint64_t equal_bytes(const text_bytes<64>& text, std::uint8_t byte) {
    return mask_of(text, [byte](byte_vector bytes) { return equal(bytes, byte); });
}
inline std::uint64_t bytes_beyond_ascii(const text_bytes<64>& text) {
    return mask_of(text, [](byte_vector bytes) { return bytes; });
}
inline std::uint64_t bytes_from(const text_bytes<64>& text, std::uint8_t low) {
    return mask_of(text, [low](byte_vector bytes) { return not_below(bytes, low); });
}

template <> struct text_bytes<16> {
    std::uint32_t here;
    byte_block bytes;

    text_bytes(const std::uint8_t* text, std::uint32_t length) : here(static_cast<std::uint32_t>(first_bits(length))) {
        const auto load = [this](const std::uint8_t* from) { bytes = load_block(from); };
        if (can_load<16>(text, length)) [[likely]] {
            load(text);
        } else {
            load(loadable_copy<16>(text, length).bytes);
        }
    }
};
inline std::uint64_t mask_of(const text_bytes<16>& text, byte_block found) { return bits_of(found) & text.here; }
inline std::uint64_t equal_bytes(const text_bytes<16>& text, std::uint8_t byte) {
    return mask_of(text, where_equal(text.bytes, repeated(byte)));
}
inline std::uint64_t bytes_beyond_ascii(const text_bytes<16>& text) { return mask_of(text, text.bytes); }
inline std::uint64_t whitespace_bytes(const text_bytes<16>& text) {
    const byte_block controls = where_at_most(text.bytes - 9, repeated(4));
    return mask_of(text, controls | where_equal(text.bytes, repeated(blank)));
}

#else

template <std::uint32_t width> struct text_bytes {
    const std::uint8_t* text;
    std::uint32_t length;
    text_bytes(const std::uint8_t* text, std::uint32_t length) : text(text), length(length) {}
};

template <std::uint32_t width, class Test> std::uint64_t mask_of(const text_bytes<width>& text, Test test) {
    std::uint64_t mask = 0;
    for (std::uint32_t i = 0; i < text.length; ++i) {
        mask |= std::uint64_t{test(text.text[i]) ? 1U : 0U} << i;
    }
    return mask;
}
template <std::uint32_t width> std::uint64_t equal_bytes(const text_bytes<width>& text, std::uint8_t byte) {
    return mask_of(text, [byte](std::uint8_t found) { return found == byte; });
}
template <std::uint32_t width> std::uint64_t bytes_beyond_ascii(const text_bytes<width>& text) {
    return mask_of(text, [](std::uint8_t found) { return found >= 0x80; });
}
template <std::uint32_t width> std::uint64_t bytes_from(const text_bytes<width>& text, std::uint8_t low) {
    return mask_of(text, [low](std::uint8_t found) { return found >= low; });
}
template <std::uint32_t width> std::uint64_t whitespace_bytes(const text_bytes<width>& text) { return mask_of(text, is_whitespace); }

#endif

// At most 16 bytes of a text in a block; what stands behind them has no meaning.
inline byte_block load_part_of_block(const std::uint8_t* text, std::uint32_t length) {
#if defined(BIFUN_MASKED_LOADS) || defined(BIFUN_WHOLE_LOADS)
    return reinterpret_cast<byte_block>(text_bytes<16>(text, length).bytes);
#else
    std::uint8_t bytes[block_length] = {};
    if (length != 0) { // an empty text may point nowhere
        std::memcpy(bytes, text, length);
    }
    return load_block(bytes);
#endif
}

// The bytes of the set.
#if defined(BIFUN_MASKED_LOADS) || (defined(BIFUN_WHOLE_LOADS) && defined(BIFUN_BLOCK_LOOKUP))
inline std::uint64_t bytes_in(const ascii_set& set, const text_bytes<16>& text) {
    const auto bytes = reinterpret_cast<byte_block>(text.bytes);
    const byte_block bits = {1, 2, 4, 8, 16, 32, 64, 128};
    const byte_block found = looked_up(load_block(set.upper_halves), bytes) & looked_up(bits, bytes >> 4);
#if defined(BIFUN_MASKED_LOADS)
    const auto tested = reinterpret_cast<__m128i>(found);
    return _mm_mask_test_epi8_mask(text.here, tested, tested);
#else
    return ~bits_of(where_equal(found, byte_block{})) & text.here;
#endif
}
#elif defined(BIFUN_WHOLE_LOADS)
inline std::uint64_t bytes_in(const ascii_set& set, const text_bytes<16>& text) {
    std::uint8_t bytes[block_length];
    store_block(bytes, text.bytes);
    std::uint64_t mask = 0;
    for (std::uint32_t i = 0; i < block_length; ++i) {
        mask |= std::uint64_t{contains(set, bytes[i]) ? 1U : 0U} << i;
    }
    return mask & text.here;
}
#else
inline std::uint64_t bytes_in(const ascii_set& set, const text_bytes<16>& text) {
    return mask_of(text, [&set](std::uint8_t found) { return contains(set, found); });
}
#endif

} // namespace bifun

#endif
