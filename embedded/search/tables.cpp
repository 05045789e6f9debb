// SPDX-License-Identifier: Apache-2.0
// The tables of Boyer-Moore and of shift-or.
#include <algorithm>
#include <array>
#include <cstddef>

#include "engine/search.h"

namespace {

// ---- good suffixes ----------------------------------------------------------------------------------------------------

// The table is made in its own place, for patterns of any length. First every entry holds the length of the longest common suffix of the
// pattern and of its beginning up to and with that byte. From the end on each length is then turned into a shift, which belongs behind it
// unless the suffix overlaps itself; what comes too early for its place is kept aside. The lengths are linear in time to find, and so is
// all that follows.

constexpr uint32_t no_shift = 0;

// What is known of the bytes from `known_begin` to `known_end`, which are also the end of the pattern, is not compared again.
void find_common_suffixes(const uint8_t* pattern, int64_t length, uint32_t* entries) {
    int64_t known_begin = length - 1;
    int64_t known_end = length - 1;
    entries[length - 1] = static_cast<uint32_t>(length);
    for (int64_t i = length - 2; i >= 0; --i) {
        if (i > known_begin) {
            const int64_t common = entries[i + length - 1 - known_end];
            if (common < i - known_begin) {
                entries[i] = static_cast<uint32_t>(common);
                continue;
            }
        }
        known_begin = std::min(known_begin, i);
        known_end = i;
        while (known_begin >= 0 && pattern[known_begin] == pattern[known_begin + length - 1 - known_end]) {
            --known_begin;
        }
        entries[i] = static_cast<uint32_t>(known_end - known_begin);
    }
}

// The last `length` bytes have this period, no more have it, and they are more than two periods.
struct repetition {
    uint32_t period;
    uint32_t length;
};

// Those whose period is no multiple of a shorter one's. Of three such periods the longest is at least the sum of the others (the three
// squares lemma), so that they grow as fast as the Fibonacci numbers, of which 46 are below 2^32.
struct repetitions {
    std::array<repetition, 46> found;
    std::size_t count = 0;
};

// Told of periods from the shortest on. The multiples of a period have its length and come before another period.
void add_repetition(repetitions& all, const repetition& next) {
    if (all.count == 0 || next.length != all.found[all.count - 1].length) {
        all.found[all.count++] = next;
    }
}

// Lengths from `first` down to `last` in equal steps.
struct progression {
    uint32_t first;
    uint32_t last;
    uint32_t step;
};

// The borders of the pattern: what it both begins and ends with, from the longest on. Those between two powers of two are in equal steps,
// for a border that is at least half as long as another one is that without some of its periods.
struct borders {
    std::array<progression, 32> found;
    std::size_t count = 0;
};

void add_border(borders& all, uint32_t length) {
    if (all.count != 0) {
        progression& last = all.found[all.count - 1];
        const uint32_t step = last.last - length;
        if (last.first == last.last || step == last.step) {
            last.last = length;
            last.step = step;
            return;
        }
    }
    all.found[all.count++] = {length, length, 0};
}

// What matched lies elsewhere in the pattern, behind another byte: the rightmost place, which is met first, counts.
void move_lengths(uint32_t length, uint32_t* entries, repetitions& repeated, borders& bordered) {
    entries[length - 1] = no_shift;
    for (uint32_t i = length - 1; i-- > 0;) {
        const uint32_t common = entries[i];
        const uint32_t shift = length - 1 - i;
        entries[i] = no_shift;
        if (common == i + 1) {
            add_border(bordered, common);
        }
        if (common > shift) {
            add_repetition(repeated, {shift, common + shift});
        } else if (uint32_t& entry = entries[length - 1 - common]; entry == no_shift) {
            entry = shift;
        }
    }
}

// No other place of these suffixes is as near: one that is neither behind a multiple of the period nor overlaps them is further away.
void set_shifts_of(const repetition& repeated, uint32_t length, uint32_t* entries) {
    const uint32_t before = length - repeated.length; // the bytes before the repetition
    for (uint32_t shift = repeated.period; shift < repeated.length - shift; shift += repeated.period) {
        entries[before + shift - 1] = shift;
    }
}

// Where that is nowhere, a border that what matched ends with: the longest one counts.
void set_shifts_to_borders(const borders& bordered, uint32_t length, uint32_t* entries) {
    uint32_t next = 0;
    const auto fill = [&](uint32_t border) {
        for (; next < length - border; ++next) {
            if (entries[next] == no_shift) {
                entries[next] = length - border;
            }
        }
    };
    for (std::size_t i = 0; i < bordered.count; ++i) {
        const progression& lengths = bordered.found[i];
        for (uint32_t border = lengths.first; border > lengths.last; border -= lengths.step) {
            fill(border);
        }
        fill(lengths.last);
    }
    fill(0);
}

} // namespace

void preprocess_bmgs(const uint8_t* pattern, uint32_t length, uint32_t* good_suffixes) {
    find_common_suffixes(pattern, length, good_suffixes);
    repetitions repeated;
    borders bordered;
    move_lengths(length, good_suffixes, repeated, bordered);
    for (std::size_t i = 0; i < repeated.count; ++i) {
        set_shifts_of(repeated.found[i], length, good_suffixes);
    }
    set_shifts_to_borders(bordered, length, good_suffixes);
}

// ---- bytes ------------------------------------------------------------------------------------------------------------

void preprocess_bmbc(const uint8_t* pattern, uint32_t length, uint32_t* bad_characters) {
    std::fill_n(bad_characters, ZQ_BYTE_VALUES, length);
    for (uint32_t i = 0; i + 1 < length; ++i) {
        bad_characters[pattern[i]] = length - 1 - i;
    }
}

void preshiftorprocess(const uint8_t* pattern, uint32_t length, uint32_t* masks) {
    std::fill_n(masks, ZQ_BYTE_VALUES, UINT32_MAX);
    for (uint32_t i = 0; i < length; ++i) {
        masks[pattern[i]] &= ~(uint32_t{1} << i);
    }
}
