// SPDX-License-Identifier: Apache-2.0
// REVERSE. The blanks at the end come to stand in front, where they are written.

#include "bop/bifun_str/ascii_changes.h"
#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/text.h"

namespace bifun {
namespace {

// ---- well-formed UTF-8: its bytes reversed, and then those of each character put back in order ----

byte_block chosen(byte_block where, byte_block a, byte_block b) { return (a & where) | (b & ~where); }

// 16 bytes behind which, and before which, three more can be read. A character's first byte, which says how many it has, stands last.
byte_block with_characters_in_order(const std::uint8_t* reversed) {
    const auto at = [=](std::ptrdiff_t distance) { return load_block(reversed + distance); };
    const auto begins = [](byte_block bytes, int mask, int with) { return where_equal(bytes & repeated(mask), repeated(with)); };
    const byte_block here = at(0);
    const byte_block one_on = at(1);
    const byte_block two_on = at(2);
    const byte_block three_on = at(3);
    byte_block ordered = chosen(begins(one_on, 0xE0, 0xC0) | begins(two_on, 0xF8, 0xF0), one_on, here);
    ordered = chosen(begins(here, 0xE0, 0xC0) | begins(one_on, 0xF8, 0xF0), at(-1), ordered);
    ordered = chosen(begins(two_on, 0xF0, 0xE0), two_on, ordered);
    ordered = chosen(begins(here, 0xF0, 0xE0), at(-2), ordered);
    ordered = chosen(begins(three_on, 0xF8, 0xF0), three_on, ordered);
    return chosen(begins(here, 0xF8, 0xF0), at(-3), ordered);
}

// Of at most longest_masked bytes.
void append_characters_reversed(text_writer& text, const std::uint8_t* bytes, std::uint32_t length) {
    std::uint8_t room[block_length + copy_room + block_length] = {};
    std::uint8_t* const reversed = room + block_length;
    write_reversed(reversed, bytes, length);
    std::uint8_t whole[copy_room];
    std::uint8_t* const to = text.may_overrun ? text.at : whole;
    for (std::uint32_t done = 0; done < length; done += block_length) {
        store_block(to + done, with_characters_in_order(reversed + done));
    }
    if (!text.may_overrun) {
        std::memcpy(text.at, whole, length);
    }
    text.at += length;
}

void append_utf8_reversed(text_writer& text, const std::uint8_t* bytes, std::uint32_t length) {
    while (length != 0) {
        std::uint32_t begin = length <= longest_masked ? 0 : length - longest_masked;
        // Not past the text, should it not be what it was told to be.
        for (std::uint32_t continuing = 0; begin != 0 && continuing < 3 && (bytes[begin] & 0xC0) == 0x80; ++continuing) {
            ++begin;
        }
        append_characters_reversed(text, bytes + begin, length - begin);
        length = begin;
    }
}

constexpr std::uint32_t mode_of_bytes = 2;

status reverse(const text_operations& texts, const bifun_string& value, string_room& room) {
    const bool has_characters = value.length != 0;
    text_writer text;
    const status made = make_room(room, has_characters ? full_length(value) : 0, has_characters ? 0 : value.trailing_blanks, text);
    if (made != BIFUN_OK || !has_characters) {
        return made;
    }
    append_blanks(text, value.trailing_blanks);
    if (has_single_bytes(texts, value)) [[likely]] {
        append_reversed(text, value.data, value.length);
        return BIFUN_OK;
    }
    if (global_bifun_var.compatible_mode != mode_of_bytes && is_well_formed(texts, value)) {
        append_utf8_reversed(text, value.data, value.length);
        return BIFUN_OK;
    }
    std::uint8_t* const bytes = text.at;
    append(text, value.data, value.length);
    return zq_mbsrev_with_compatible_mode(bytes, value.length, global_bifun_var.compatible_mode) == nullptr ? BIFUN_INVALID_CHARACTER_STRING
                                                                                                            : BIFUN_OK;
}

} // namespace

status entry::breverse_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) { return string_rows<reverse>(batch, texts_of(text), text); }

} // namespace bifun
