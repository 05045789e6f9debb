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
#include "layouts/free_bytes.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace bifun {

constexpr std::uint8_t blank = 0x20;

// 9 to 13 and 32, in every character set.
constexpr bool is_whitespace(std::uint8_t byte) { return byte == blank || static_cast<std::uint8_t>(byte - 9) <= 4; }

constexpr std::uint32_t no_offset = UINT32_MAX;

// Bytes to be found, at least one. The first and the last tell most places that are none.
struct needle {
    const std::uint8_t* bytes;
    std::uint32_t length;
    std::uint8_t first;
    std::uint8_t last;
};

inline needle make_needle(const std::uint8_t* bytes, std::uint32_t length) { return {bytes, length, bytes[0], bytes[length - 1]}; }

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

    // The same for a part of a text of which few bytes are looked at.
    static bool begins_with_ascii(const std::uint8_t* text, std::uint32_t count) { return is_ascii(text, count); }

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
            at = static_cast<const std::uint8_t*>(std::memchr(at, sought.first, static_cast<std::size_t>(end - at)));
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

    WITH_AVX512 static bool begins_with_ascii(const std::uint8_t* text, std::uint32_t count) {
        if (count > 16) {
            return is_ascii(text, count);
        }
        return _mm_movepi8_mask(_mm_maskz_loadu_epi8(static_cast<__mmask16>(first_bits(count)), text)) == 0;
    }

    // Runs are short: 16 bytes mostly hold their end, and lie in one cache line.
    WITH_AVX512 static std::uint32_t leading_whitespace(const std::uint8_t* text, std::uint32_t length) {
        const std::uint32_t first = std::min(length, 16U);
        const __m128i bytes = _mm_maskz_loadu_epi8(static_cast<__mmask16>(first_bits(first)), text);
        const __mmask16 whitespace =
            _mm_cmpeq_epi8_mask(bytes, _mm_set1_epi8(blank)) | _mm_cmple_epu8_mask(_mm_sub_epi8(bytes, _mm_set1_epi8(9)), _mm_set1_epi8(4));
        const auto count = static_cast<std::uint32_t>(std::countr_one(whitespace)); // bytes behind the text are no whitespace
        return count < 16 ? count : 16 + portable_bytes::leading_whitespace(text + 16, length - 16);
    }

    WITH_AVX512 static std::uint32_t leading(std::uint8_t byte, const std::uint8_t* text, std::uint32_t length) {
        const std::uint32_t first = std::min(length, 16U);
        const auto here = static_cast<__mmask16>(first_bits(first));
        const __mmask16 equal = _mm_mask_cmpeq_epi8_mask(here, _mm_maskz_loadu_epi8(here, text), _mm_set1_epi8(static_cast<char>(byte)));
        const auto count = static_cast<std::uint32_t>(std::countr_one(equal));
        return count < 16 ? count : 16 + portable_bytes::leading(byte, text + 16, length - 16);
    }

    WITH_AVX512 static std::uint32_t trailing(std::uint8_t byte, const std::uint8_t* text, std::uint32_t length) {
        const std::uint32_t last = std::min(length, 16U);
        const auto here = static_cast<__mmask16>(first_bits(last));
        const __mmask16 differ =
            _mm_mask_cmpneq_epi8_mask(here, _mm_maskz_loadu_epi8(here, text + (length - last)), _mm_set1_epi8(static_cast<char>(byte)));
        const std::uint32_t count = last - 16 + static_cast<std::uint32_t>(std::countl_zero(differ));
        return differ != 0 ? count : last + portable_bytes::trailing(byte, text, length - last);
    }

    WITH_AVX512 static std::uint32_t find(const needle& sought, const std::uint8_t* text, std::uint32_t length) {
        const std::uint32_t behind_first = sought.length - 1;
        if (length <= behind_first) {
            return no_offset;
        }
        if (length > 64) [[unlikely]] {
            return find_in_long_text(sought, text, length);
        }
        const __mmask64 here = first_bits(length);
        const __m512i bytes = _mm512_maskz_loadu_epi8(here, text);
        const __mmask64 firsts = _mm512_mask_cmpeq_epi8_mask(here, bytes, _mm512_set1_epi8(static_cast<char>(sought.first)));
        const __mmask64 lasts = _mm512_mask_cmpeq_epi8_mask(here, bytes, _mm512_set1_epi8(static_cast<char>(sought.last)));
        return first_match(sought, text, firsts & lasts >> behind_first);
    }

    // The first of the places, as bits, at which the whole needle is.
    WITH_AVX512 static std::uint32_t first_match(const needle& sought, const std::uint8_t* text, __mmask64 places) {
        for (; places != 0; places &= places - 1) {
            const auto place = static_cast<std::uint32_t>(std::countr_zero(places));
            if (sought.length <= 2 || std::memcmp(text + place + 1, sought.bytes + 1, sought.length - 2) == 0) {
                return place;
            }
        }
        return no_offset;
    }

    [[gnu::noinline]] WITH_AVX512 static std::uint32_t find_in_long_text(needle sought, const std::uint8_t* text, std::uint32_t length) {
        const std::uint32_t behind_first = sought.length - 1;
        const __m512i first_byte = _mm512_set1_epi8(static_cast<char>(sought.first));
        const __m512i last_byte = _mm512_set1_epi8(static_cast<char>(sought.last));
        std::uint32_t offset = 0;
        while (length - offset > behind_first) {
            const std::uint32_t places = std::min(length - offset - behind_first, 64U);
            const __mmask64 here = first_bits(places);
            const std::uint8_t* const at = text + offset;
            const __mmask64 firsts = _mm512_mask_cmpeq_epi8_mask(here, _mm512_maskz_loadu_epi8(here, at), first_byte);
            const __mmask64 lasts = _mm512_mask_cmpeq_epi8_mask(here, _mm512_maskz_loadu_epi8(here, at + behind_first), last_byte);
            const std::uint32_t place = first_match(sought, at, firsts & lasts);
            if (place != no_offset) {
                return offset + place;
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
template <class Body> [[gnu::flatten]] WITH_AVX512 status run_with_avx512(const Body& body) { return body(avx512_bytes{}); }

template <class Body> status with_byte_operations(const Body& body) {
    return has_avx512() ? run_with_avx512(body) : body(portable_bytes{});
}

#else

template <class Body> status with_byte_operations(const Body& body) { return body(portable_bytes{}); }

#endif

} // namespace bifun

#endif
