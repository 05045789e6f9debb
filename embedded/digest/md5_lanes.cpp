// SPDX-License-Identifier: Apache-2.0
#include "embedded/digest/md5_lanes.h"

#include <cstddef>
#include <cstring>
#include <utility>

namespace zqengine {
namespace {

// One word of eight texts. Two of these take turns, since each waits for its own step before.
constexpr std::uint32_t lanes_in_half = 8;
constexpr std::uint32_t halves = md5_lanes / lanes_in_half;
using half_words [[gnu::vector_size(32)]] = std::uint32_t;

constexpr std::uint32_t words_in_block = 16;
constexpr std::uint32_t words_in_state = 4;

struct lane_blocks {
    alignas(sizeof(half_words)) std::uint32_t words[words_in_block][md5_lanes];
};

struct lane_states {
    half_words words[words_in_state][halves];
};

constexpr std::uint32_t initial_state[words_in_state] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};

// The first 32 bits of the fraction of |sin(i + 1)|; RFC 1321, section 3.4.
constexpr std::uint32_t sines[] = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501, 0x698098D8, 0x8B44F7AF, 0xFFFF5BB1,
    0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821, 0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453,
    0xD8A1E681, 0xE7D3FBC8, 0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A, 0xFFFA3942,
    0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70, 0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05,
    0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665, 0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D,
    0x85845DD1, 0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};
constexpr std::uint32_t steps = sizeof sines / sizeof *sines;

constexpr std::uint32_t rotations[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

// Which word of the block a step of a round takes: of each round `factor` * step + `offset`.
constexpr std::uint32_t word_factors[4] = {1, 5, 3, 7};
constexpr std::uint32_t word_offsets[4] = {0, 1, 5, 0};

template <std::uint32_t step> [[gnu::always_inline]] inline void take_step(lane_states& state, const lane_blocks& blocks) {
    constexpr std::uint32_t round = step / words_in_block;
    constexpr std::uint32_t word = (word_factors[round] * step + word_offsets[round]) % words_in_block;
    constexpr std::uint32_t rotation = rotations[round][step % 4];
    // What is a, b, c and d moves on by one with each step.
    constexpr std::uint32_t first = (steps - step) % words_in_state;
    for (std::uint32_t half = 0; half < halves; ++half) {
        half_words& a = state.words[first][half];
        const half_words& b = state.words[(first + 1) % words_in_state][half];
        const half_words& c = state.words[(first + 2) % words_in_state][half];
        const half_words& d = state.words[(first + 3) % words_in_state][half];
        half_words of_block;
        std::memcpy(&of_block, &blocks.words[word][std::size_t{half} * lanes_in_half], sizeof of_block);
        a += of_block + sines[step];
        if constexpr (round == 0) {
            a += d ^ (b & (c ^ d));
        } else if constexpr (round == 1) {
            a += c ^ (d & (b ^ c));
        } else if constexpr (round == 2) {
            a += b ^ c ^ d;
        } else {
            a += c ^ (b | ~d);
        }
        a = b + (a << rotation | a >> (32 - rotation));
    }
}

template <std::uint32_t... step>
[[gnu::always_inline]] inline void take_steps(lane_states& state, const lane_blocks& blocks,
                                              std::integer_sequence<std::uint32_t, step...> /*steps*/) {
    (take_step<step>(state, blocks), ...);
}

constexpr std::make_integer_sequence<std::uint32_t, steps> all_steps;

#if defined(__x86_64__)
[[gnu::target("avx2")]] void take_steps_by_avx2(lane_states& state, const lane_blocks& blocks) { take_steps(state, blocks, all_steps); }
[[gnu::target("avx2,avx512f,avx512vl")]] void take_steps_by_avx512(lane_states& state, const lane_blocks& blocks) {
    take_steps(state, blocks, all_steps);
}

void take_all_steps(lane_states& state, const lane_blocks& blocks) {
    if (__builtin_cpu_supports("avx512vl") != 0) {
        take_steps_by_avx512(state, blocks);
    } else if (__builtin_cpu_supports("avx2") != 0) {
        take_steps_by_avx2(state, blocks);
    } else {
        take_steps(state, blocks, all_steps);
    }
}
#else
void take_all_steps(lane_states& state, const lane_blocks& blocks) { take_steps(state, blocks, all_steps); }
#endif

// The bytes of the text, a bit, zeros and the number of bits. Of the words behind the text only the number is written.
void write_block(const bifun_string& text, lane_blocks& blocks, std::uint32_t lane) {
    constexpr std::uint32_t word_length = sizeof(std::uint32_t);
    const std::uint32_t length = text.length <= longest_md5_lane ? text.length : 0;
    const std::uint32_t whole = length / word_length;
    for (std::uint32_t i = 0; i < whole; ++i) {
        std::memcpy(&blocks.words[i][lane], text.data + std::size_t{i} * word_length, word_length);
    }
    std::uint32_t last = std::uint32_t{0x80} << (8 * (length % word_length));
    for (std::uint32_t k = whole * word_length; k < length; ++k) {
        last |= std::uint32_t{text.data[k]} << (8 * (k % word_length));
    }
    blocks.words[whole][lane] = last;
    blocks.words[words_in_block - 2][lane] = 8 * length;
}

} // namespace

void md5_of_short_texts(const bifun_string* texts, std::uint32_t count, std::uint8_t* digests) {
    lane_blocks blocks{}; // lanes without a text are computed with the others
    for (std::uint32_t lane = 0; lane < md5_lanes; ++lane) {
        write_block(texts[lane < count ? lane : 0], blocks, lane);
    }
    lane_states state;
    for (std::uint32_t i = 0; i < words_in_state; ++i) {
        for (std::uint32_t half = 0; half < halves; ++half) {
            state.words[i][half] = half_words{} + initial_state[i];
        }
    }
    take_all_steps(state, blocks);
    for (std::uint32_t lane = 0; lane < count; ++lane) {
        for (std::uint32_t i = 0; i < words_in_state; ++i) {
            const std::uint32_t word = state.words[i][lane / lanes_in_half][lane % lanes_in_half] + initial_state[i];
            std::memcpy(digests + (std::size_t{lane} * words_in_state + i) * sizeof word, &word, sizeof word);
        }
    }
}

} // namespace zqengine
