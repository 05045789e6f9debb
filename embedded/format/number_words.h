// SPDX-License-Identifier: Apache-2.0
// Numbers in English words.
#ifndef BIFUN_EMBEDDED_FORMAT_NUMBER_WORDS_H
#define BIFUN_EMBEDDED_FORMAT_NUMBER_WORDS_H

#include <cstdint>

namespace zqengine {

// Each writes capitals at `out` and returns what is behind them: TWENTY-NINE, TWENTY-NINTH, and a year as it is said, such as NINETEEN
// OH-FOUR, NINETEEN HUNDRED or TWO THOUSAND FOUR.
std::uint8_t* write_in_words(std::uint8_t* out, std::uint32_t number);
std::uint8_t* write_ordinal_in_words(std::uint8_t* out, std::uint32_t number);
std::uint8_t* write_year_in_words(std::uint8_t* out, std::uint32_t year);

} // namespace zqengine

#endif
