// What is done to the bytes of one short text after the other, in the best form that the machine has. A family asks for it once per batch:
//
//     with_byte_operations([&](auto bytes) INLINED { return ...; })
//
// and gets one of the two records below. They give the same results; all functions take any length.
#ifndef BIFUN_FRAME_BYTE_OPERATIONS_H
#define BIFUN_FRAME_BYTE_OPERATIONS_H

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "bop/frame/batch.h"
#include "engine/free_bytes.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace bifun {

constexpr std::uint8_t blank = 0x20;

// 9 to 13 and 32, in every character set.
constexpr bool is_whitespace(std::uint8_t byte) { return byte == blank || static_cast<std::uint8_t>(byte - 9) <= 4; }

constexpr std::uint32_t no_offset = UINT32_MAX;

// Bytes to be found. Two of them tell most places that are none.
struct needle {
    const std::uint8_t* bytes;
    std::uint32_t length; // at least 1
};

// Room that a text must have behind `to` for copy_into_room.
constexpr std::size_t copy_room = 64;

struct portable_bytes {
    static bool is_ascii(const std::uint8_t* text, std::uint32_t length) {
        std::uint64_t bits = 0;
        std::uint32_t i = 0;
        for (; i + 8 <= length; i += 8) {
            std::uint64_t eight;
            std::memcpy(&eight, text + i, sizeof eight);
            bits |= eight;
        }
        for (; i < length; ++i) {
            bits |= text[i];
        }
        return (bits & 0x8080808080808080) == 0;
    }

    // How many whitespace bytes, or bytes equal to `byte`, a text begins or ends with.
    static std::uint32_t leading_whitespace(const std::uint8_t* text, std::uint32_t length) {
        std::uint32_t count = 0;
        while (count < length && is_whitespace(text[count])) {
            ++count;
        }
        return count;
    }

    static std::uint32_t leading(std::uint8_t byte, const std::uint8_t* text, std::uint32_t length) {
        std::uint32_t count = 0;
        while (count < length && text[count] == byte) {
            ++count;
        }
        return count;
    }

    static std::uint32_t trailing(std::uint8_t byte, const std::uint8_t* text, std::uint32_t length) {
        std::uint32_t count = 0;
        while (count < length && text[length - 1 - count] == byte) {
            ++count;
        }
        return count;
    }

    // The offset of the first place of the needle, or no_offset.
    static std::uint32_t find(const needle& sought, const std::uint8_t* text, std::uint32_t length) {
        if (length < sought.length) {
            return no_offset;
        }
        const std::uint8_t* const end = text + (length - sought.length + 1);
        for (const std::uint8_t* at = text; at != end; ++at) {
            at = static_cast<const std::uint8_t*>(std::memchr(at, sought.bytes[0], static_cast<std::size_t>(end - at)));
            if (at == nullptr) {
                return no_offset;
            }
            if (std::memcmp(at, sought.bytes, sought.length) == 0) {
                return static_cast<std::uint32_t>(at - text);
            }
        }
        return no_offset;
    }

    // Copies at most copy_room bytes. The bytes behind them, up to copy_room, may change as well.
    static void copy_into_room(std::uint8_t* to, const std::uint8_t* from, std::uint32_t length) {
        free_bytes::copy_short(to, from, length);
    }
};

#if defined(__x86_64__) && !defined(BIFUN_SANITIZED)

// One masked load takes in the whole of a text of up to 64 bytes and touches no byte behind it.
struct avx512_bytes {
    WITH_AVX512 static __mmask64 first_bits(std::uint32_t count) { return _bzhi_u64(~std::uint64_t{0}, count); }
    WITH_AVX512 static __m512i load(const std::uint8_t* text, std::uint32_t length) {
        return _mm512_maskz_loadu_epi8(first_bits(length), text);
    }

    WITH_AVX512 static bool is_ascii(const std::uint8_t* text, std::uint32_t length) {
        if (length > 64) [[unlikely]] {
            return portable_bytes::is_ascii(text, length);
        }
        return _mm512_movepi8_mask(load(text, length)) == 0;
    }

    WITH_AVX512 static std::uint32_t leading_whitespace(const std::uint8_t* text, std::uint32_t length) {
        const std::uint32_t first = std::min(length, 64U);
        const __m512i bytes = load(text, first);
        const __mmask64 whitespace = _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(blank)) |
                                     _mm512_cmple_epu8_mask(_mm512_sub_epi8(bytes, _mm512_set1_epi8(9)), _mm512_set1_epi8(4));
        const auto count = static_cast<std::uint32_t>(std::countr_one(whitespace)); // bytes behind the text are no whitespace
        return count < 64 ? count : 64 + portable_bytes::leading_whitespace(text + 64, length - 64);
    }

    WITH_AVX512 static std::uint32_t leading(std::uint8_t byte, const std::uint8_t* text, std::uint32_t length) {
        const std::uint32_t first = std::min(length, 64U);
        const __mmask64 equal =
            _mm512_mask_cmpeq_epi8_mask(first_bits(first), load(text, first), _mm512_set1_epi8(static_cast<char>(byte)));
        const auto count = static_cast<std::uint32_t>(std::countr_one(equal));
        return count < 64 ? count : 64 + portable_bytes::leading(byte, text + 64, length - 64);
    }

    WITH_AVX512 static std::uint32_t trailing(std::uint8_t byte, const std::uint8_t* text, std::uint32_t length) {
        const std::uint32_t last = std::min(length, 64U);
        const std::uint8_t* const from = text + (length - last);
        const __mmask64 differ =
            _mm512_mask_cmpneq_epi8_mask(first_bits(last), load(from, last), _mm512_set1_epi8(static_cast<char>(byte)));
        const auto count = last - 64 + static_cast<std::uint32_t>(std::countl_zero(differ));
        return differ != 0 ? count : last + portable_bytes::trailing(byte, text, length - last);
    }

    WITH_AVX512 static std::uint32_t find(const needle& sought, const std::uint8_t* text, std::uint32_t length) {
        const std::uint32_t behind_first = sought.length - 1;
        const __m512i first_byte = _mm512_set1_epi8(static_cast<char>(sought.bytes[0]));
        const __m512i last_byte = _mm512_set1_epi8(static_cast<char>(sought.bytes[behind_first]));
        std::uint32_t offset = 0;
        while (length - offset > behind_first) {
            const std::uint32_t places = std::min(length - offset - behind_first, 64U);
            const __mmask64 here = first_bits(places);
            __mmask64 candidates =
                _mm512_cmpeq_epi8_mask(_mm512_maskz_loadu_epi8(here, text + offset), first_byte) &
                _mm512_mask_cmpeq_epi8_mask(here, _mm512_maskz_loadu_epi8(here, text + offset + behind_first), last_byte);
            for (; candidates != 0; candidates &= candidates - 1) {
                const std::uint32_t place = offset + static_cast<std::uint32_t>(std::countr_zero(candidates));
                if (behind_first < 2 || std::memcmp(text + place + 1, sought.bytes + 1, behind_first - 1) == 0) {
                    return place;
                }
            }
            offset += places;
        }
        return no_offset;
    }

    WITH_AVX512 static void copy_into_room(std::uint8_t* to, const std::uint8_t* from, std::uint32_t length) {
        _mm512_storeu_si512(to, load(from, length));
    }
};

// The loops of `body` are inlined here and its byte operations into them: only then are both compiled for these instructions.
template <class Body> WITH_AVX512 status run_with_avx512(const Body& body) { return body(avx512_bytes{}); }

template <class Body> status with_byte_operations(const Body& body) {
    return has_avx512() ? run_with_avx512(body) : body(portable_bytes{});
}

#else

template <class Body> status with_byte_operations(const Body& body) { return body(portable_bytes{}); }

#endif

} // namespace bifun

#endif
