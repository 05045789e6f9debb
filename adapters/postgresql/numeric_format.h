// SPDX-License-Identifier: Apache-2.0
// PostgreSQL's numeric as it is stored, which its own header keeps private. It stays the same between versions, as pg_upgrade leaves tables
// as they are. Behind the length word of a variable-length value, in the order of bytes of the machine:
//
//     16 bits       11kk............  no number; kk0. is NaN (1100), infinity (1101), -infinity (1111)
//                   10sddddddwwwwwww  short: sign, digits to show behind the point, weight in two's complement
//                   0sdddddddddddddd  long: sign and digits to show, then the weight in 16 bits of its own
//     16 bits each  digits to the base 10000, the first and the last not 0, none for zero
//
// The first digit counts 10000^weight times, each next one a 10000th of that.
#ifndef BIFUN_ADAPTERS_POSTGRESQL_NUMERIC_FORMAT_H
#define BIFUN_ADAPTERS_POSTGRESQL_NUMERIC_FORMAT_H

#include <cstdint>

#include "bop/frame/contract.h"

namespace postgresql_extension {

enum class numeric_kind : std::uint8_t { number, nan, infinity, too_large };

// The value in the `size` bytes behind a length word, with the digits behind the point that it shows; where these are more than 38 in all,
// rounded to as many as are needed. `result` is written for numbers.
numeric_kind read_numeric(const std::uint8_t* bytes, std::uint32_t size, xdec& result);

// As many bytes as any DECIMAL takes behind the length word.
constexpr std::uint32_t most_numeric_bytes = 32;

// Returns how many bytes are written.
std::uint32_t write_numeric(const xdec& value, std::uint8_t* bytes);

} // namespace postgresql_extension

#endif
