// SPDX-License-Identifier: Apache-2.0
// Short texts as two blocks: no branch depends on how long one of at most 32 bytes is.
#ifndef BIFUN_STR_BLOCK_PAIRS_H
#define BIFUN_STR_BLOCK_PAIRS_H

#include "bop/frame/byte_masks.h"

namespace bifun {

struct block_pair {
    byte_block first;
    byte_block last;
};
constexpr std::uint32_t block_pair_length = 2 * block_length;

// The first 32 bytes of a text; what stands behind its end has no meaning.
inline block_pair load_block_pair(const std::uint8_t* text, std::uint32_t length) {
#if defined(BIFUN_WHOLE_LOADS)
    if (can_load<block_pair_length>(text, length)) [[likely]] {
        return {load_block(text), load_block(text + block_length)};
    }
#endif
    const std::uint32_t in_pair = length < block_pair_length ? length : block_pair_length;
    const std::uint32_t in_first = in_pair < block_length ? in_pair : block_length;
    return {load_part_of_block(text, in_first), load_part_of_block(text + in_first, in_pair - in_first)};
}

inline void store_block_pair(std::uint8_t* to, const block_pair& pair) {
    store_block(to, pair.first);
    store_block(to + block_length, pair.last);
}

} // namespace bifun

#endif
