// ASCII text sixteen bytes at a time.
#ifndef BIFUN_EMBEDDED_CHARSET_ASCII_H
#define BIFUN_EMBEDDED_CHARSET_ASCII_H

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include <emmintrin.h>

namespace zqengine {

enum class letter_case : std::uint32_t { upper, lower };

constexpr std::uint32_t block_length = 16;

inline __m128i load_block(const std::uint8_t* bytes) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)); }
inline void store_block(std::uint8_t* bytes, __m128i block) { _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), block); }
inline __m128i every_byte(int byte) { return _mm_set1_epi8(static_cast<char>(byte)); }
inline std::uint32_t bits_of(__m128i block) { return static_cast<std::uint32_t>(_mm_movemask_epi8(block)); }
inline bool is_ascii(__m128i block) { return bits_of(block) == 0; }

template <class Word> Word load_word(const std::uint8_t* bytes) {
    Word word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

template <class Word> void store_word(std::uint8_t* bytes, Word word) { std::memcpy(bytes, &word, sizeof word); }

// `length` bytes, below 16, and zeros behind them.
inline __m128i load_short(const std::uint8_t* bytes, std::uint32_t length) {
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    if (length >= 8) {
        low = load_word<std::uint64_t>(bytes);
        high = load_word<std::uint64_t>(bytes + length - 8) >> 8 >> (8 * (15 - length)); // 64 in two shifts, for a length of 8
    } else if (length >= 4) {
        low = load_word<std::uint32_t>(bytes) | std::uint64_t{load_word<std::uint32_t>(bytes + length - 4)} << (8 * (length - 4));
    } else if (length > 0) {
        low = bytes[0] | std::uint64_t{bytes[length / 2]} << (8 * (length / 2)) | std::uint64_t{bytes[length - 1]} << (8 * (length - 1));
    }
    return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
}

// The bytes with their ASCII letters in the case asked for; other bytes, those above 0x7F too, as they are.
inline __m128i fold_ascii(__m128i block, letter_case to) {
    const int first_letter = to == letter_case::upper ? 'a' : 'A';
    // Letters come to stand at the least signed values.
    const __m128i from_first = _mm_sub_epi8(block, every_byte(first_letter - 0x80));
    const __m128i is_letter = _mm_cmplt_epi8(from_first, every_byte(26 - 0x80));
    return _mm_xor_si128(block, _mm_and_si128(is_letter, every_byte(0x20)));
}

inline std::uint8_t fold_ascii(std::uint8_t byte, letter_case to) {
    const std::uint32_t from_first = std::uint32_t{byte} - (to == letter_case::upper ? 'a' : 'A');
    return static_cast<std::uint8_t>(byte ^ (from_first < 26 ? 0x20 : 0));
}

// Folds the text up to the first block that is not ASCII, whose offset it returns; `length` for ASCII text.
inline std::uint32_t fold_leading_ascii(std::uint8_t* text, std::uint32_t length, letter_case to) {
    std::uint32_t offset = 0;
    if (length >= block_length) {
        // What the blocks leave over is done with the bytes before it, read before these are written: a load that spans a fresh store
        // waits.
        const __m128i last = load_block(text + length - block_length);
        for (; length - offset >= block_length; offset += block_length) {
            const __m128i block = load_block(text + offset);
            if (!is_ascii(block)) {
                return offset;
            }
            store_block(text + offset, fold_ascii(block, to));
        }
        if (!is_ascii(last)) {
            return offset;
        }
        store_block(text + length - block_length, fold_ascii(last, to));
        return length;
    }
    if (length >= 8) {
        std::uint8_t* const last = text + length - 8;
        const __m128i block = _mm_set_epi64x(load_word<long long>(last), load_word<long long>(text));
        if (!is_ascii(block)) {
            return 0;
        }
        const __m128i folded = fold_ascii(block, to);
        store_word(text, _mm_cvtsi128_si64(folded));
        store_word(last, _mm_cvtsi128_si64(_mm_unpackhi_epi64(folded, folded)));
        return length;
    }
    while (offset < length && text[offset] < 0x80) {
        text[offset] = fold_ascii(text[offset], to);
        ++offset;
    }
    return offset;
}

// The length of the text's ASCII start in whole groups of 64 bytes.
inline std::uint32_t leading_ascii_groups(const std::uint8_t* text, std::uint32_t length) {
    constexpr std::uint32_t group = 4 * block_length;
    std::uint32_t offset = 0;
    while (length - offset >= group) {
        const std::uint8_t* const p = text + offset;
        if (!is_ascii(
                _mm_or_si128(_mm_or_si128(load_block(p), load_block(p + 16)), _mm_or_si128(load_block(p + 32), load_block(p + 48))))) {
            break;
        }
        offset += group;
    }
    return offset;
}

// The length of the text's ASCII start, exactly.
inline std::uint32_t leading_ascii(const std::uint8_t* text, std::uint32_t length) {
    std::uint32_t offset = leading_ascii_groups(text, length);
    while (offset < length) {
        const std::uint32_t size = std::min(length - offset, block_length);
        const std::uint32_t others = bits_of(size == block_length ? load_block(text + offset) : load_short(text + offset, size));
        if (others != 0) {
            return offset + static_cast<std::uint32_t>(std::countr_zero(others));
        }
        offset += size;
    }
    return length;
}

} // namespace zqengine

#endif
