// SPDX-License-Identifier: Apache-2.0
// What conversions of characters share.
#ifndef BIFUN_STR_CONVERSION_H
#define BIFUN_STR_CONVERSION_H

#include "bop/bifun_str/block_pairs.h"
#include "bop/bifun_str/text.h"

namespace bifun {

// In bytes, blanks at the end among them.
constexpr std::uint32_t longest_converted_text = 32762;

// Whether bytes are valid characters of the database character set, all of them; `characters` gets their number.
inline bool are_valid_characters(const std::uint8_t* bytes, std::uint32_t length, std::uint32_t& characters) {
    // The engine's numbers of the character sets.
    constexpr std::int32_t numbers[] = {10, 1, 6};
    const std::uint32_t code = global_bifun_var.charset_code;
    return zq_get_valid_chars(code < 3 ? numbers[code] : 0, bytes, length, nullptr, &characters) == length;
}

// ---- hexadecimal digits ----

// The digits above 9 are the letters from `ten` on, `A` or `a`.
inline std::uint8_t hexadecimal_digit(std::uint32_t value, std::uint8_t ten) {
    return static_cast<std::uint8_t>(value < 10 ? '0' + value : ten + (value - 10));
}

// Of 16 bytes, 32 digits.
inline block_pair hexadecimal_digits(byte_block bytes, std::uint8_t ten) {
    const auto digits = [ten](byte_block values) {
        return values + '0' + (where_at_least(values, repeated(10)) & static_cast<std::uint8_t>(ten - '0' - 10));
    };
    const byte_block high = digits(bytes >> 4);
    const byte_block low = digits(bytes & 0x0F);
    return {__builtin_shufflevector(high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23),
            __builtin_shufflevector(high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31)};
}

// Two digits for every byte.
inline void append_hexadecimal(text_writer& text, const std::uint8_t* bytes, std::uint32_t length, std::uint8_t ten) {
    constexpr std::uint32_t digits_of_block = 2 * block_length;
    if (text.may_overrun) [[likely]] {
        // The digits of a pair fit into the room behind the text.
        for (std::uint32_t done = 0; done < length; done += block_pair_length) {
            const block_pair pair = load_block_pair(bytes + done, length - done);
            std::uint8_t* const to = text.at + std::size_t{2} * done;
            store_block_pair(to, hexadecimal_digits(pair.first, ten));
            store_block_pair(to + digits_of_block, hexadecimal_digits(pair.last, ten));
        }
        text.at += std::size_t{2} * length;
        return;
    }
    for (; length >= block_length; length -= block_length) {
        store_block_pair(text.at, hexadecimal_digits(load_block(bytes), ten));
        text.at += digits_of_block;
        bytes += block_length;
    }
    if (length == 0) {
        return;
    }
    const block_pair last = hexadecimal_digits(load_part_of_block(bytes, length), ten);
    std::uint8_t whole[digits_of_block];
    store_block_pair(whole, last);
    std::memcpy(text.at, whole, std::size_t{2} * length);
    text.at += std::size_t{2} * length;
}

} // namespace bifun

#endif
