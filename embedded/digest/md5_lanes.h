// SPDX-License-Identifier: Apache-2.0
// MD5 of several short texts at once. A step of MD5 waits for the one before it, so that one digest leaves most of a processor idle.
#ifndef BIFUN_EMBEDDED_DIGEST_MD5_LANES_H
#define BIFUN_EMBEDDED_DIGEST_MD5_LANES_H

#include <cstdint>

#include "bop/frame/contract.h"

namespace zqengine {

constexpr std::uint32_t md5_lanes = 16;
// With what stands behind it, such a text fits into one block.
constexpr std::uint32_t longest_md5_lane = 55;

// The digests, 16 bytes each, of at most md5_lanes texts. In place of those of longer texts something is written that has no meaning.
void md5_of_short_texts(const bifun_string* texts, std::uint32_t count, std::uint8_t* digests);

} // namespace zqengine

#endif
