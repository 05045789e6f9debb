// SPDX-License-Identifier: Apache-2.0
// What is done to the bytes of one short text after the other. All functions take any length.
#ifndef BIFUN_FRAME_BYTE_OPERATIONS_H
#define BIFUN_FRAME_BYTE_OPERATIONS_H

#include <bit>

#include "bop/frame/byte_masks.h"
#include "layouts/free_bytes.h"

namespace bifun {

constexpr std::uint32_t no_offset = UINT32_MAX;

// ---- ASCII ----

inline bool is_long_text_ascii(const std::uint8_t* text, std::uint32_t length) {
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

inline bool is_ascii(const std::uint8_t* text, std::uint32_t length) {
    return length <= longest_masked ? bytes_beyond_ascii(text_bytes<64>(text, length)) == 0 : is_long_text_ascii(text, length);
}

// The same for a part of a text of which few bytes are looked at.
inline bool begins_with_ascii(const std::uint8_t* text, std::uint32_t count) {
    return count <= 16 ? bytes_beyond_ascii(text_bytes<16>(text, count)) == 0 : is_ascii(text, count);
}

// ---- runs: how many bytes of a kind a text begins or ends with. They are short: 16 bytes mostly hold their end. ----

inline std::uint32_t leading_whitespace(const std::uint8_t* text, std::uint32_t length) {
    const std::uint32_t first = length < 16 ? length : 16;
    auto count = static_cast<std::uint32_t>(std::countr_one(whitespace_bytes(text_bytes<16>(text, first))));
    while (count >= 16 && count < length && is_whitespace(text[count])) {
        ++count;
    }
    return count;
}

inline std::uint32_t leading(std::uint8_t byte, const std::uint8_t* text, std::uint32_t length) {
    const std::uint32_t first = length < 16 ? length : 16;
    auto count = static_cast<std::uint32_t>(std::countr_one(equal_bytes(text_bytes<16>(text, first), byte)));
    while (count >= 16 && count < length && text[count] == byte) {
        ++count;
    }
    return count;
}

inline std::uint32_t leading_in(const ascii_set& set, const std::uint8_t* text, std::uint32_t length) {
    const std::uint32_t first = length < 16 ? length : 16;
    auto count = static_cast<std::uint32_t>(std::countr_one(bytes_in(set, text_bytes<16>(text, first))));
    while (count >= 16 && count < length && contains(set, text[count])) {
        ++count;
    }
    return count;
}

inline std::uint32_t trailing_in(const ascii_set& set, const std::uint8_t* text, std::uint32_t length) {
    const std::uint32_t last = length < 16 ? length : 16;
    const std::uint64_t others = ~bytes_in(set, text_bytes<16>(text + (length - last), last)) & first_bits(last);
    if (others != 0) {
        return last - 64 + static_cast<std::uint32_t>(std::countl_zero(others));
    }
    std::uint32_t count = last;
    while (count < length && contains(set, text[length - 1 - count])) {
        ++count;
    }
    return count;
}

inline std::uint32_t trailing(std::uint8_t byte, const std::uint8_t* text, std::uint32_t length) {
    const std::uint32_t last = length < 16 ? length : 16;
    const std::uint64_t differ = ~equal_bytes(text_bytes<16>(text + (length - last), last), byte) & first_bits(last);
    if (differ != 0) {
        return last - 64 + static_cast<std::uint32_t>(std::countl_zero(differ));
    }
    std::uint32_t count = last;
    while (count < length && text[length - 1 - count] == byte) {
        ++count;
    }
    return count;
}

// ---- search ----

// Bytes to be found, at least one. The first and the last tell most places that are none.
struct needle {
    const std::uint8_t* bytes;
    std::uint32_t length;
    std::uint8_t first;
    std::uint8_t last;
};

inline needle make_needle(const std::uint8_t* bytes, std::uint32_t length) { return {bytes, length, bytes[0], bytes[length - 1]}; }

// The first of the places, as bits, at which the whole needle is, or no_offset.
inline std::uint32_t first_match(const needle& sought, const std::uint8_t* text, std::uint64_t places) {
    if (sought.length > 2) {
        while (places != 0 && std::memcmp(text + std::countr_zero(places) + 1, sought.bytes + 1, sought.length - 2) != 0) {
            places &= places - 1;
        }
    }
    const auto place = static_cast<std::uint32_t>(std::countr_zero(places));
    return places == 0 ? no_offset : place;
}

// All places of the needle, of at most 64 bytes, in the bytes of `text`.
inline std::uint64_t places_of_bytes(const text_bytes<64>& bytes, const needle& sought, const std::uint8_t* text) {
    std::uint64_t places = equal_bytes(bytes, sought.first) & equal_bytes(bytes, sought.last) >> (sought.length - 1);
    if (sought.length > 2) {
        for (std::uint64_t left = places; left != 0; left &= left - 1) {
            const auto place = static_cast<std::uint32_t>(std::countr_zero(left));
            if (std::memcmp(text + place + 1, sought.bytes + 1, sought.length - 2) != 0) {
                places &= ~(std::uint64_t{1} << place);
            }
        }
    }
    return places;
}

[[gnu::noinline]] inline std::uint32_t find_in_long_text(needle sought, const std::uint8_t* text, std::uint32_t length) {
    const std::uint32_t behind_first = sought.length - 1;
    std::uint32_t offset = 0;
    while (std::uint64_t{offset} + behind_first < length) {
        const std::uint32_t rest = length - offset - behind_first;
        const std::uint32_t places = rest < longest_masked ? rest : longest_masked;
        const std::uint8_t* const at = text + offset;
        const std::uint64_t firsts = equal_bytes(text_bytes<64>(at, places), sought.first);
        const std::uint64_t lasts = equal_bytes(text_bytes<64>(at + behind_first, places), sought.last);
        const std::uint32_t place = first_match(sought, at, firsts & lasts);
        if (place != no_offset) {
            return offset + place;
        }
        offset += places;
    }
    return no_offset;
}

// The offset of the first place of the needle, or no_offset.
inline std::uint32_t find(const needle& sought, const std::uint8_t* text, std::uint32_t length) {
    if (length > longest_masked || sought.length > longest_masked) [[unlikely]] {
        return find_in_long_text(sought, text, length);
    }
    const text_bytes<64> bytes(text, length);
    return first_match(sought, text, equal_bytes(bytes, sought.first) & equal_bytes(bytes, sought.last) >> (sought.length - 1));
}

// ---- copies ----

// Room that a text must have behind `to` for copy_into_room.
constexpr std::size_t copy_room = 64;

// Copies at most copy_room bytes. The bytes behind them, up to copy_room, may change as well.
inline void copy_into_room(std::uint8_t* to, const std::uint8_t* from, std::uint32_t length) {
#if defined(BIFUN_MASKED_LOADS)
    _mm512_storeu_si512(to, text_bytes<64>(from, length).bytes);
#elif defined(BIFUN_WHOLE_LOADS)
    if (can_load<64>(from, length)) [[likely]] {
        for (std::size_t i = 0; i < copy_room; i += sizeof(byte_vector)) {
            store_vector(to + i, load_vector(from + i));
        }
    } else {
        free_bytes::copy_short(to, from, length);
    }
#else
    free_bytes::copy_short(to, from, length);
#endif
}

// A byte that becomes another.
struct byte_pair {
    std::uint8_t from;
    std::uint8_t to;
};

// copy_into_room, with the bytes of the pairs changed, of which no two are from the same.
inline void translate_into_room(std::uint8_t* to, const std::uint8_t* from, std::uint32_t length, const byte_pair* pairs,
                                std::uint32_t count) {
#if defined(BIFUN_MASKED_LOADS)
    const text_bytes<64> text(from, length);
    __m512i bytes = text.bytes;
    for (std::uint32_t i = 0; i < count; ++i) {
        bytes = _mm512_mask_mov_epi8(bytes, equal_bytes(text, pairs[i].from), _mm512_set1_epi8(static_cast<char>(pairs[i].to)));
    }
    _mm512_storeu_si512(to, bytes);
#elif defined(BIFUN_WHOLE_LOADS)
    const text_bytes<64> text(from, length);
    for (std::size_t part = 0; part < text_bytes<64>::parts; ++part) {
        byte_vector bytes = text.part[part];
        for (std::uint32_t i = 0; i < count; ++i) {
            bytes = select(equal(text.part[part], pairs[i].from), every_byte(pairs[i].to), bytes);
        }
        store_vector(to + part * sizeof(byte_vector), bytes);
    }
#else
    for (std::uint32_t k = 0; k < length; ++k) {
        to[k] = from[k];
        for (std::uint32_t i = 0; i < count; ++i) {
            to[k] = from[k] == pairs[i].from ? pairs[i].to : to[k];
        }
    }
#endif
}

// copy_into_room, with the other case for the ASCII letters of the case that begins with `first_letter`, `a` or `A`.
inline void change_case_into_room(std::uint8_t* to, const std::uint8_t* from, std::uint32_t length, std::uint8_t first_letter) {
    constexpr std::uint8_t letters = 26;
    constexpr std::uint8_t other_case = 0x20;
#if defined(BIFUN_MASKED_LOADS)
    const __m512i bytes = text_bytes<64>(from, length).bytes;
    const __m512i from_first = _mm512_sub_epi8(bytes, _mm512_set1_epi8(static_cast<char>(first_letter)));
    const __m512i flipped = _mm512_xor_si512(bytes, _mm512_set1_epi8(other_case));
    _mm512_storeu_si512(to, _mm512_mask_mov_epi8(bytes, _mm512_cmplt_epu8_mask(from_first, _mm512_set1_epi8(letters)), flipped));
#elif defined(BIFUN_WHOLE_LOADS)
    const text_bytes<64> text(from, length);
    const auto behind_last = static_cast<std::uint8_t>(first_letter + letters);
    for (std::size_t part = 0; part < text_bytes<64>::parts; ++part) {
        const byte_vector bytes = text.part[part];
        const byte_vector is_letter = not_below(bytes, first_letter) & ~not_below(bytes, behind_last);
        store_vector(to + part * sizeof(byte_vector), bytes ^ (is_letter & every_byte(other_case)));
    }
#else
    for (std::uint32_t k = 0; k < length; ++k) {
        to[k] = static_cast<std::uint8_t>(from[k] ^ (static_cast<std::uint8_t>(from[k] - first_letter) < letters ? other_case : 0));
    }
#endif
}

// ---- texts made of pieces ----

// Where a text is being written.
struct text_writer {
    std::uint8_t* at;
    bool may_overrun; // the copy_room bytes behind the text may be changed
};

inline void append(text_writer& text, const std::uint8_t* bytes, std::uint32_t length) {
    if (text.may_overrun && length <= copy_room) [[likely]] {
        copy_into_room(text.at, bytes, length);
    } else if (length != 0) {
        std::memcpy(text.at, bytes, length);
    }
    text.at += length;
}

// `count` times the byte.
inline void append(text_writer& text, std::uint8_t byte, std::uint32_t count) {
    if (text.may_overrun && count <= copy_room) [[likely]] {
        std::memset(text.at, byte, copy_room);
    } else if (count != 0) {
        std::memset(text.at, byte, count);
    }
    text.at += count;
}

// `length` bytes: copies of the unit, of at least one byte, the last one cut.
inline void append_copies(text_writer& text, const std::uint8_t* unit, std::uint32_t unit_length, std::uint32_t length) {
    constexpr std::uint32_t long_enough = 256;
    const std::uint8_t* const begin = text.at;
    while (length != 0) {
        // What was written a moment ago cannot be read at once, so it is only copied where that pays.
        const auto written = static_cast<std::uint32_t>(text.at - begin);
        const bool copies_written = written >= long_enough && written > unit_length;
        const std::uint32_t copied = copies_written ? written : unit_length;
        const std::uint32_t now = copied < length ? copied : length;
        append(text, copies_written ? begin : unit, now);
        length -= now;
    }
}

} // namespace bifun

#endif
