// SPDX-License-Identifier: Apache-2.0
// What bdta3_col_assign_str does where free bytes lie open, for the engine that says so and for the library that then does it without a
// call.
#ifndef BIFUN_LAYOUTS_FREE_BYTES_H
#define BIFUN_LAYOUTS_FREE_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#ifdef BIFUN_CHECK_COLUMNS
#include <cstdio>
#include <cstdlib>
#endif

#include "bop/frame/contract.h"

namespace bifun::free_bytes {

// Copies the first and the last `Width` bytes; Width <= length <= 2 * Width.
template <std::size_t Width> inline void copy_both_ends(std::uint8_t* to, const std::uint8_t* from, std::size_t length) {
    std::uint8_t first[Width];
    std::uint8_t last[Width];
    std::memcpy(first, from, Width);
    std::memcpy(last, from + length - Width, Width);
    std::memcpy(to, first, Width);
    std::memcpy(to + length - Width, last, Width);
}

constexpr std::size_t longest_short = 64;

// Copies at most `longest_short` bytes by moves of constant width, which overlap but never leave the value.
inline void copy_short(std::uint8_t* to, const std::uint8_t* from, std::size_t length) {
    if (length > 32) {
        copy_both_ends<16>(to, from, 32);
        copy_both_ends<16>(to + length - 32, from + length - 32, 32);
    } else if (length >= 16) {
        copy_both_ends<16>(to, from, length);
    } else if (length >= 8) {
        copy_both_ends<8>(to, from, length);
    } else if (length >= 4) {
        copy_both_ends<4>(to, from, length);
    } else if (length >= 2) {
        copy_both_ends<2>(to, from, length);
    } else if (length == 1) {
        *to = *from;
    }
}

inline void copy_bytes(std::uint8_t* to, const std::uint8_t* from, std::size_t length) {
    if (length > longest_short) {
        std::memcpy(to, from, length);
    } else {
        copy_short(to, from, length);
    }
}

// The free bytes of a string column that is written.
inline bdta3_free_bytes& of_column(const bifun_column_data& column) {
#ifdef BIFUN_CHECK_COLUMNS
    if (column.engine_header[1] == nullptr) {
        static_cast<void>(
            std::fputs("bifun: the column of a string result has no free bytes (engine_header[1] is null), but the engine "
                       "says that they lie open (engine/statements.h): result columns are made by the engine, the embedded one's by "
                       "zqengine_column_create\n",
                       stderr));
        std::abort();
    }
#endif
    return *static_cast<bdta3_free_bytes*>(column.engine_header[1]);
}

} // namespace bifun::free_bytes

#endif
