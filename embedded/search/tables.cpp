// The tables of Boyer-Moore and of shift-or.
#include "embedded/search/tables.h"

#include <algorithm>

#include "engine/search.h"

namespace {

// While good suffixes are looked for, an entry of their table holds two numbers of 16 bits: the shift found so far, and above it the length
// of the longest common suffix of the pattern and of its beginning up to and with that byte.
constexpr uint32_t suffix_bit = 16;
constexpr uint32_t shift_mask = (uint32_t{1} << suffix_bit) - 1;

// Linear: what is known of the bytes from `known_begin` to `known_end`, which are also the end of the pattern, is not compared again.
void find_common_suffixes(const uint8_t* pattern, int64_t length, uint32_t* entries) {
    int64_t known_begin = length - 1;
    int64_t known_end = length - 1;
    entries[length - 1] = static_cast<uint32_t>(length) << suffix_bit;
    for (int64_t i = length - 2; i >= 0; --i) {
        if (i > known_begin) {
            const int64_t common = entries[i + length - 1 - known_end] >> suffix_bit;
            if (common < i - known_begin) {
                entries[i] = static_cast<uint32_t>(common) << suffix_bit;
                continue;
            }
        }
        known_begin = std::min(known_begin, i);
        known_end = i;
        while (known_begin >= 0 && pattern[known_begin] == pattern[known_begin + length - 1 - known_end]) {
            --known_begin;
        }
        entries[i] = static_cast<uint32_t>(known_end - known_begin) << suffix_bit;
    }
}

void find_shifts(uint32_t length, uint32_t* entries) {
    for (uint32_t i = 0; i < length; ++i) {
        entries[i] |= length;
    }
    // A suffix of what matched begins the pattern: the longest such one counts.
    uint32_t behind = 0;
    for (uint32_t i = length; i-- > 0;) {
        if (entries[i] >> suffix_bit == i + 1) {
            for (; behind < length - 1 - i; ++behind) {
                entries[behind] = (entries[behind] & ~shift_mask) | (length - 1 - i);
            }
        }
    }
    // What matched lies elsewhere in the pattern behind another byte: the rightmost place counts.
    for (uint32_t i = 0; i + 1 < length; ++i) {
        uint32_t& entry = entries[length - 1 - (entries[i] >> suffix_bit)];
        entry = (entry & ~shift_mask) | (length - 1 - i);
    }
}

} // namespace

void preprocess_bmbc(const uint8_t* pattern, uint32_t length, uint32_t* bad_characters) {
    std::fill_n(bad_characters, ZQ_BYTE_VALUES, length);
    for (uint32_t i = 0; i + 1 < length; ++i) {
        bad_characters[pattern[i]] = length - 1 - i;
    }
}

void preprocess_bmgs(const uint8_t* pattern, uint32_t length, uint32_t* good_suffixes) {
    // Of longer patterns only the end is looked at. Its shifts are never too long for the whole pattern.
    const uint32_t examined = std::min(length, zqengine::exact_good_suffixes);
    const uint32_t left_out = length - examined;
    uint32_t* const entries = good_suffixes + left_out;
    find_common_suffixes(pattern + left_out, examined, entries);
    find_shifts(examined, entries);
    for (uint32_t i = 0; i < examined; ++i) {
        entries[i] &= shift_mask;
    }
    std::fill_n(good_suffixes, left_out, entries[0]);
}

void preshiftorprocess(const uint8_t* pattern, uint32_t length, uint32_t* masks) {
    std::fill_n(masks, ZQ_BYTE_VALUES, UINT32_MAX);
    for (uint32_t i = 0; i < length; ++i) {
        masks[pattern[i]] &= ~(uint32_t{1} << i);
    }
}
