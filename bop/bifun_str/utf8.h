// SPDX-License-Identifier: Apache-2.0
// The characters of short UTF-8 texts, by masks.
#ifndef BIFUN_STR_UTF8_H
#define BIFUN_STR_UTF8_H

#include <bit>

#if defined(__BMI2__)
#include <immintrin.h>
#endif

#include "bop/bifun_str/utf8_validation.h"

namespace bifun {

// Where the characters of a text begin, as bits; where it is not well-formed, that is not known.
struct utf8_characters {
    bool are_known;
    std::uint64_t starts;
};

// Where the characters of a well-formed text begin.
inline std::uint64_t starts_of_well_formed(const text_bytes<64>& text, std::uint32_t length) {
#if defined(BIFUN_MASKED_LOADS)
    (void)length;
    return _mm512_mask_cmpgt_epi8_mask(text.here, text.bytes, _mm512_set1_epi8(static_cast<char>(0xBF))); // with signs
#else
    return first_bits(length) & ~(bytes_beyond_ascii(text) & ~bytes_from(text, 0xC0));
#endif
}

#if defined(BIFUN_MASKED_LOADS)

// `bytes` are those of `text`, which is not empty.
inline utf8_characters utf8_characters_of(const text_bytes<64>& bytes, const std::uint8_t* text, std::uint32_t length) {
    constexpr std::uint32_t shortest_cut = 62; // of longer texts what is announced last has no byte behind it to show
    const auto back = [&](std::uint32_t places) { return _mm512_maskz_loadu_epi8(bytes.here << places, text - places); };
    wide_bytes wrong = wrong_bytes(bytes.bytes, back(1), back(2), back(3));
    if (length >= shortest_cut) [[unlikely]] {
        const std::uint64_t cut = bytes_from(bytes, 0xC0) >> 63 | bytes_from(bytes, 0xE0) >> 62 | bytes_from(bytes, 0xF0) >> 61;
        wrong = either(wrong, every_wide_byte(cut != 0 ? 1 : 0));
    }
    return {!has_bits(wrong), starts_of_well_formed(bytes, length)};
}

#else

// Well-formed is what Unicode's table 3-7 says. Every byte from 0xC0 on announces as many continuing ones as it has leading bits, less one,
// and nothing else may continue; some lead nothing, and four allow only some of the bytes that continue for the next one.
inline utf8_characters utf8_characters_of(const text_bytes<64>& bytes, const std::uint8_t* /*text*/, std::uint32_t length) {
    const std::uint64_t leads = bytes_from(bytes, 0xC0);
    const std::uint64_t leads_of_three = bytes_from(bytes, 0xE0);
    const std::uint64_t leads_of_four = bytes_from(bytes, 0xF0);
    const std::uint64_t continuing = bytes_beyond_ascii(bytes) & ~leads;
    const std::uint64_t announced = leads << 1 | leads_of_three << 2 | leads_of_four << 3;
    // What is announced behind a 64th byte has no bit.
    const std::uint64_t cut = leads >> 63 | leads_of_three >> 62 | leads_of_four >> 61;
    const std::uint64_t from_0x90 = bytes_from(bytes, 0x90);
    const std::uint64_t from_0xA0 = bytes_from(bytes, 0xA0);
    std::uint64_t wrong = (announced ^ continuing) | cut;
    wrong |= (leads & ~bytes_from(bytes, 0xC2)) | bytes_from(bytes, 0xF5);
    wrong |= (equal_bytes(bytes, 0xE0) << 1 & ~from_0xA0) | (equal_bytes(bytes, 0xED) << 1 & from_0xA0);
    wrong |= (equal_bytes(bytes, 0xF0) << 1 & ~from_0x90) | (equal_bytes(bytes, 0xF4) << 1 & from_0x90);
    return {wrong == 0, first_bits(length) & ~continuing};
}

#endif

// The n-th of the bits from 0 on, alone; none where there are fewer.
inline std::uint64_t nth_bit(std::uint64_t bits, std::uint32_t n) {
#if defined(__BMI2__)
    return n < 64 ? _pdep_u64(std::uint64_t{1} << n, bits) : 0;
#else
    for (; n != 0 && bits != 0; --n) {
        bits &= bits - 1;
    }
    return bits & (0 - bits);
#endif
}

// The offset of the n-th character from 0 on, below 64, of `length` bytes; `length` where there are fewer.
inline std::uint32_t offset_of_start(std::uint64_t starts, std::uint32_t n, std::uint32_t length) {
    const std::uint64_t start = nth_bit(starts, n);
    return start == 0 ? length : static_cast<std::uint32_t>(std::countr_zero(start));
}

} // namespace bifun

#endif
