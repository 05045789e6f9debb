// SPDX-License-Identifier: Apache-2.0
// What every character becomes in another case, by Unicode's full mappings.
#ifndef BIFUN_EMBEDDED_CHARSET_CASE_MAPPING_H
#define BIFUN_EMBEDDED_CHARSET_CASE_MAPPING_H

#include <array>
#include <cstdint>

namespace zqengine {

enum class full_case : std::uint8_t { upper, lower, title };

// What is not one character of more than one byte.
struct special_mapping {
    std::uint8_t length;
    std::uint8_t bytes[12];
};

// The first special mappings: a sigma at the end of a word and elsewhere, and what Turkic rules make of i and I. Of no bytes where the
// character set lacks them.
enum special_number : std::uint32_t { final_sigma, other_sigma, capital_dotted_i, small_dotless_i, first_other_special };

template <class Charset> struct case_mapping {
    // From this rank on numbers are of special mappings: no character of two or three bytes has one of them.
    static constexpr std::uint32_t first_special = Charset::rank_is_code_point ? 0xD800 : Charset::ranks;
    static constexpr std::uint32_t most_specials = 256;

    // By the rank of a character, the rank of what it becomes.
    std::array<std::array<std::uint16_t, Charset::ranks>, 3> mapped;
    // Of utf8, by code point, in upper and in lower case: the bytes of what it becomes, the first one the lowest, and in the highest byte
    // how many these are. 0 for surrogates and what has a special mapping.
    std::array<std::array<std::uint32_t, Charset::rank_is_code_point ? Charset::ranks : 0>, 2> words;
    std::array<special_mapping, most_specials> specials;
    std::uint32_t special_count;
};

// Of utf8, gb18030 and euc_kr. Made at the first call, which takes some milliseconds, by whichever thread that is.
template <class Charset> const case_mapping<Charset>& case_mapping_of();

// A supplementary code point, each of which becomes one.
std::uint32_t supplementary_in_case(std::uint32_t code_point, full_case to);

} // namespace zqengine

#endif
