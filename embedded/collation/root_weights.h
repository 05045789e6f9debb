// SPDX-License-Identifier: Apache-2.0
// Keys of Unicode's own order, which many languages have, from the weights of single characters. They are those that ICU makes, byte for
// byte, at a fraction of the time: ICU looks for what may belong together from character to character.
#ifndef BIFUN_EMBEDDED_COLLATION_ROOT_WEIGHTS_H
#define BIFUN_EMBEDDED_COLLATION_ROOT_WEIGHTS_H

#include <cstdint>

#include "embedded/collation/sort_name.h"

struct UCollator;

namespace zqengine {

// How many levels keys of the collator have, if they are those of Unicode's own order and nothing that changes them is set.
struct root_levels {
    bool are_roots;
    sort_strength strength;
};
[[nodiscard]] root_levels levels_of(const UCollator* collator);

constexpr std::uint32_t longest_root_text = 256; // characters

// The key of a text of at most so many characters, without the zero at its end. At most `room` bytes of `key` are written; where the key
// is longer, what is written has no meaning. Returns its length, or -1 for a text with characters whose weights are not known by
// themselves. The first call takes some milliseconds.
[[nodiscard]] std::int32_t root_key(const std::uint32_t* code_points, std::uint32_t count, sort_strength strength, std::uint8_t* key,
                                    std::uint32_t room);

} // namespace zqengine

#endif
