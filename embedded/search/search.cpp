// SPDX-License-Identifier: Apache-2.0
// Searches for a pattern: a filter that looks for its first and last byte at 16 places at once, and behind it, for long patterns and for
// texts that are full of candidates, Boyer-Moore or shift-or, which are linear in the text.
#include "engine/search.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "layouts/byte_block.h"

namespace {

using bifun::byte_block;

struct text_span {
    const uint8_t* bytes;
    size_t length;
};

// Scans tell `accept` the offsets of all places of the pattern from `from` on, overlapping ones too, until it returns true. They return
// the offset of that place, or ZQ_NOT_FOUND.

struct boyer_moore {
    template <typename Accept> static uint32_t scan(const text_span& text, size_t from, const zq_pattern& pattern, Accept& accept) {
        const size_t length = pattern.length;
        const uint8_t* const bytes = pattern.bytes;
        const size_t period = pattern.good_suffixes[0];
        const size_t overlap = length - period;
        size_t known = 0; // so many bytes at `at` are the pattern's because of the last place
        for (size_t at = from; at + length <= text.length;) {
            size_t unmatched = length;
            while (unmatched > known && text.bytes[at + unmatched - 1] == bytes[unmatched - 1]) {
                --unmatched;
            }
            if (unmatched == known) {
                if (accept(at)) {
                    return static_cast<uint32_t>(at);
                }
                at += period;
                known = overlap;
                continue;
            }
            const size_t matched = length - unmatched;
            const size_t bad_character = pattern.bad_characters[text.bytes[at + unmatched - 1]];
            at += std::max<size_t>(pattern.good_suffixes[unmatched - 1], bad_character > matched ? bad_character - matched : 0);
            known = 0;
        }
        return ZQ_NOT_FOUND;
    }
};

struct shift_or {
    template <typename Accept> static uint32_t scan(const text_span& text, size_t from, const zq_pattern& pattern, Accept& accept) {
        const uint32_t last = uint32_t{1} << (pattern.length - 1);
        uint32_t unmatched = UINT32_MAX; // bit i: the text does not end here in the first i + 1 bytes of the pattern
        for (size_t i = from; i < text.length; ++i) {
            unmatched = (unmatched << 1) | pattern.masks[text.bytes[i]];
            if ((unmatched & last) == 0 && accept(i + 1 - pattern.length)) {
                return static_cast<uint32_t>(i + 1 - pattern.length);
            }
        }
        return ZQ_NOT_FOUND;
    }
};

// The longest pattern for which the filter is tried: a longer one lets Boyer-Moore leap further than the filter reads at once.
constexpr uint32_t filtered_length = 64;
constexpr size_t block = 16;
constexpr size_t half_block = 8;

struct end_bytes {
    byte_block first;
    byte_block last;
};

unsigned candidates(byte_block first, byte_block last, const end_bytes& ends) {
    return bifun::bits_of(bifun::where_equal(first, ends.first) & bifun::where_equal(last, ends.last));
}

unsigned candidates_of_block(const uint8_t* text, size_t last_byte, const end_bytes& ends) {
    return candidates(bifun::load_block(text), bifun::load_block(text + last_byte), ends);
}

unsigned candidates_of_half_block(const uint8_t* text, size_t last_byte, const end_bytes& ends) {
    const auto load = [](const uint8_t* bytes) {
        uint64_t word;
        std::memcpy(&word, bytes, sizeof word);
        return bifun::block_of_words(word, 0);
    };
    return candidates(load(text), load(text + last_byte), ends) & 0xFFU;
}

// How far the filter came.
struct filtered {
    size_t at;     // `accept` has been told all places before
    bool accepted; // and took this one
};

template <typename Accept> filtered filter(const text_span& text, size_t from, const zq_pattern& pattern, Accept& accept) {
    const size_t last_byte = pattern.length - 1;
    const size_t behind = text.length - last_byte; // the last place, and one on
    const end_bytes ends = {bifun::repeated(pattern.bytes[0]), bifun::repeated(pattern.bytes[last_byte])};
    size_t comparisons = block; // that may be made before the text counts as full of candidates
    filtered result = {from, false};

    // Takes the candidates of a block that begins at `at`. Returns whether the filter is at its end.
    const auto take = [&](size_t at, unsigned found) {
        for (; found != 0; found &= found - 1) {
            result.at = at + static_cast<size_t>(__builtin_ctz(found));
            if (comparisons-- == 0) {
                return true;
            }
            if ((last_byte < 2 || std::memcmp(text.bytes + result.at + 1, pattern.bytes + 1, last_byte - 1) == 0) && accept(result.at)) {
                result.accepted = true;
                return true;
            }
        }
        ++comparisons;
        return false;
    };

    size_t at = from;
    for (; at + block <= behind; at += block) {
        if (take(at, candidates_of_block(text.bytes + at, last_byte, ends))) {
            return result;
        }
    }
    // Fewer places than a block has are left: they are the end of the last block of the text, or of its last half block.
    if (behind >= block) {
        const unsigned found = candidates_of_block(text.bytes + behind - block, last_byte, ends);
        if (take(at, found >> (block - (behind - at)))) {
            return result;
        }
        at = behind;
    } else if (behind >= half_block) {
        if (at + half_block <= behind) {
            if (take(at, candidates_of_half_block(text.bytes + at, last_byte, ends))) {
                return result;
            }
            at += half_block;
        }
        const unsigned found = candidates_of_half_block(text.bytes + behind - half_block, last_byte, ends);
        if (take(at, found >> (half_block - (behind - at)))) {
            return result;
        }
        at = behind;
    }
    result.at = at;
    return result;
}

template <typename Algorithm, typename Accept>
uint32_t search(const uint8_t* bytes, uint32_t length, uint32_t from, const zq_pattern& pattern, Accept accept) {
    if (pattern.length > length || from > length - pattern.length) {
        return ZQ_NOT_FOUND;
    }
    const text_span text = {bytes, length};
    if (pattern.length > filtered_length) {
        return Algorithm::scan(text, from, pattern, accept);
    }
    const filtered reached = filter(text, from, pattern, accept);
    if (reached.accepted) {
        return static_cast<uint32_t>(reached.at);
    }
    return Algorithm::scan(text, reached.at, pattern, accept);
}

bool begins_character(const uint32_t* positions, size_t offset) { return offset == 0 || positions[offset] != positions[offset - 1]; }

template <typename Algorithm> uint32_t find(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern& pattern) {
    return search<Algorithm>(text, length, from, pattern, [](size_t /*offset*/) { return true; });
}

template <typename Algorithm>
uint32_t find_character(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern& pattern, const uint32_t* positions) {
    return search<Algorithm>(text, length, from, pattern, [=](size_t offset) { return begins_character(positions, offset); });
}

struct occurrences {
    uint32_t counted;
    uint32_t offset; // of the one wanted, or ZQ_NOT_FOUND
};

template <typename Algorithm>
occurrences count(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern& pattern, const uint32_t* positions,
                  uint32_t wanted) {
    uint32_t counted = 0;
    if (wanted == 0) {
        return {0, ZQ_NOT_FOUND};
    }
    const uint32_t offset =
        positions == nullptr ? search<Algorithm>(text, length, from, pattern, [&](size_t /*offset*/) { return ++counted == wanted; })
                             : search<Algorithm>(text, length, from, pattern,
                                                 [&](size_t offset) { return begins_character(positions, offset) && ++counted == wanted; });
    return {counted, offset};
}

} // namespace

uint32_t zq_strbmncmp(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern) {
    return find<boyer_moore>(text, length, from, *pattern);
}

uint32_t zq_mbshiftor_ncmp(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern) {
    return find<shift_or>(text, length, from, *pattern);
}

uint32_t zq_strbmncmp_arr(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern, const uint32_t* positions) {
    return find_character<boyer_moore>(text, length, from, *pattern, positions);
}

uint32_t zq_mbshiftor_ncmp_arr(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern, const uint32_t* positions) {
    return find_character<shift_or>(text, length, from, *pattern, positions);
}

uint32_t zq_strbmncmp_arr_ex(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern, const uint32_t* positions,
                             uint32_t occurrence) {
    return count<boyer_moore>(text, length, from, *pattern, positions, occurrence).offset;
}

uint32_t zq_mbshiftor_ncmp_arr_ex(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern, const uint32_t* positions,
                                  uint32_t occurrence) {
    return count<shift_or>(text, length, from, *pattern, positions, occurrence).offset;
}

uint32_t zq_get_occur_num(const uint8_t* text, uint32_t length, uint32_t from, const zq_pattern* pattern, const uint32_t* positions,
                          uint32_t wanted, uint32_t* offset) {
    const occurrences found = pattern->masks != nullptr ? count<shift_or>(text, length, from, *pattern, positions, wanted)
                                                        : count<boyer_moore>(text, length, from, *pattern, positions, wanted);
    *offset = found.offset;
    return found.counted;
}
