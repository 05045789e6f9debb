// SPDX-License-Identifier: Apache-2.0
// HEXTORAW and RAWTOHEX: bytes as hexadecimal digits.

#include "bop/bifun_str/conversion.h"
#include "bop/bifun_str/entry_points.h"
#include "engine/decimal.h"

namespace bifun {
namespace {

// ---- HEXTORAW ---------------------------------------------------------------------------------------------------------------

constexpr std::uint8_t no_digit = 0xFF;

std::uint8_t value_of_digit(std::uint8_t digit) {
    const auto letter = static_cast<std::uint8_t>((digit | 0x20) - 'a');
    const auto number = static_cast<std::uint8_t>(digit - '0');
    return number < 10 ? number : letter < 6 ? static_cast<std::uint8_t>(letter + 10) : no_digit;
}

// The values of 16 digits; `wrong` gets bits where one is none.
byte_block values_of_digits(byte_block digits, byte_block& wrong) {
    const byte_block number = digits - '0';
    const byte_block letter = (digits | 0x20) - 'a';
    const byte_block is_number = where_at_most(number, repeated(9));
    const byte_block is_letter = where_at_most(letter, repeated(5));
    wrong |= ~(is_number | is_letter);
    return (number & is_number) | ((letter + 10) & is_letter);
}

byte_block pairs_of_digits(byte_block first, byte_block last) {
    const byte_block high = __builtin_shufflevector(first, last, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const byte_block low = __builtin_shufflevector(first, last, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
    return high << 4 | low;
}

// The first `count` digits, below 32, and zeros behind them.
byte_block pairs_of_some_digits(const std::uint8_t* digits, std::uint32_t count, byte_block& wrong) {
    constexpr byte_block index = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    const auto some = [&](std::uint32_t from) {
        const std::uint32_t left = count < from ? 0 : count - from < block_length ? count - from : block_length;
        const byte_block is_there = where_less_signed(index, repeated(static_cast<int>(left)));
        const byte_block given = left == 0 ? byte_block{} : load_part_of_block(digits + from, left);
        return values_of_digits((given & is_there) | (repeated('0') & ~is_there), wrong);
    };
    const byte_block first = some(0);
    return pairs_of_digits(first, some(block_length));
}

// Returns whether all are digits; what is written else has no meaning.
bool append_bytes_of_digits(text_writer& bytes, const std::uint8_t* digits, std::uint32_t count) {
    byte_block wrong{};
    bool first_is_digit = true;
    if (count % 2 != 0) {
        *bytes.at = value_of_digit(*digits);
        first_is_digit = *bytes.at != no_digit;
        ++bytes.at;
        ++digits;
        --count;
    }
    for (; count >= 2 * block_length; count -= 2 * block_length) {
        const byte_block first = values_of_digits(load_block(digits), wrong);
        const byte_block last = values_of_digits(load_block(digits + block_length), wrong);
        store_block(bytes.at, pairs_of_digits(first, last));
        digits += std::size_t{2} * block_length;
        bytes.at += block_length;
    }
    if (count != 0) {
        const byte_block last = pairs_of_some_digits(digits, count, wrong);
        if (bytes.may_overrun) [[likely]] {
            store_block(bytes.at, last);
        } else {
            std::uint8_t whole[block_length];
            store_block(whole, last);
            std::memcpy(bytes.at, whole, count / 2);
        }
        bytes.at += count / 2;
    }
    return first_is_digit && bits_of(wrong) == 0;
}

// An odd number of digits is taken to have a zero before it. Blanks at the end of the text do not count.
status hextoraw(const bifun_string& text, column_space& room) {
    text_writer bytes;
    const status made = make_room(room, (std::uint64_t{text.length} + 1) / 2, 0, bytes);
    return made != BIFUN_OK || append_bytes_of_digits(bytes, text.data, text.length) ? made : BIFUN_CONVERSION_FAILED;
}

// The digits of an integer that is not negative.
status hextoraw_of_decimal(const xdec& number, column_space& room) {
    constexpr std::uint32_t most_digits = 38;
    char text[256];
    std::uint32_t length = 0;
    const status written = xdec_to_char_with_zero(&number, text, sizeof text, 0, 0, &length);
    if (written < BIFUN_OK) {
        return written;
    }
    const auto* const digits = reinterpret_cast<const std::uint8_t*>(text);
    if (const void* const point = std::memchr(text, '.', length); point != nullptr) {
        const auto whole = static_cast<std::uint32_t>(static_cast<const std::uint8_t*>(point) - digits);
        for (std::uint32_t i = whole + 1; i < length; ++i) {
            if (text[i] != '0') {
                return BIFUN_CONVERSION_FAILED;
            }
        }
        length = whole;
    }
    if (length != 0 && text[0] == '-') {
        return BIFUN_CONVERSION_FAILED;
    }
    return length > most_digits ? BIFUN_TOO_MANY_DIGITS : hextoraw({length, 0, const_cast<std::uint8_t*>(digits)}, room);
}

// ---- RAWTOHEX ---------------------------------------------------------------------------------------------------------------

status digits_of(const bifun_string& bytes, std::uint32_t blanks, string_room& room) {
    const std::uint64_t length = (std::uint64_t{bytes.length} + blanks) * 2;
    if (length > longest_converted_text) {
        return BIFUN_INVALID_CHARACTER_STRING;
    }
    text_writer text;
    const status made = make_room(room, length, 0, text);
    if (made != BIFUN_OK) {
        return made;
    }
    append_hexadecimal(text, bytes.data, bytes.length, 'A');
    for (std::uint32_t i = 0; i < blanks; ++i) {
        text.at[std::size_t{2} * i] = '2';
        text.at[std::size_t{2} * i + 1] = '0';
    }
    return BIFUN_OK;
}

status rawtohex(const bifun_string& bytes, string_room& room) { return digits_of(bytes, 0, room); }
status rawtohex_of_text(const bifun_string& text, string_room& room) { return digits_of(text, text.trailing_blanks, room); }

} // namespace

status entry::bhextoraw_a_str(batch_of<VARBINARY> batch, column_of<VARCHAR> text) { return binary_rows<hextoraw>(batch, text); }
status entry::bhextoraw_dec_a_str(batch_of<VARBINARY> batch, column_of<DECIMAL> number) {
    return binary_rows<hextoraw_of_decimal>(batch, number);
}
status entry::brawtohex_a_str(batch_of<VARCHAR> batch, column_of<VARBINARY> bytes) { return string_rows<rawtohex>(batch, bytes); }
status entry::brawtohex_varchar_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    return string_rows<rawtohex_of_text>(batch, text);
}

} // namespace bifun
