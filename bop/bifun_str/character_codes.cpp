// SPDX-License-Identifier: Apache-2.0
// ASCII and CHR: characters as numbers, which are their bytes in the database character set, the first one the highest. ASCIISTR:
// characters beyond ASCII as the numbers that Unicode has for them.

#include "bop/bifun_str/conversion.h"
#include "bop/bifun_str/entry_points.h"

namespace bifun {
namespace {

// The first byte of each text; one that is not ASCII where a text has none, or where ASCII is not of single bytes.
[[gnu::noinline]] void first_bytes_in_block(const void* source, std::uint32_t first, std::uint32_t count, std::uint32_t* bytes) {
    constexpr std::uint32_t not_ascii = 0x80;
    const column_argument<bifun_string> text{static_cast<const bifun_column*>(source)};
    const bool no_nulls = has_no_nulls(text);
    const std::uint32_t at_least = text_operations_of_engine().ascii_is_single_byte ? 0 : not_ascii;
    block_of<column_argument<bifun_string>, most_rows_per_block> room;
    const dense_rows<bifun_string> rows = room.rows(text, first, count);
    for (std::uint32_t k = 0; k < count; ++k) {
        fetch_ahead(rows, k);
        bytes[k] = (no_nulls || rows.has_value(k)) && rows[k].length != 0 ? rows[k].data[0] | at_least : not_ascii;
    }
}

bool begins_with_ascii_character(const value_or_null& /*of_empty*/, const text_operations& /*texts*/, const bifun_string& /*text*/,
                                 std::uint32_t first_byte) {
    return first_byte < 0x80;
}

void ascii_of_byte(const value_or_null& /*of_empty*/, const text_operations& /*texts*/, const bifun_string& /*text*/,
                   std::uint32_t first_byte, std::int64_t& code) {
    code = first_byte;
}

value_or_null ascii(const value_or_null& of_empty, const text_operations& texts, const bifun_string& text, std::uint32_t /*first_byte*/,
                    std::int64_t& code) {
    if (text.length == 0) {
        code = text.trailing_blanks != 0 ? blank : 0;
        return text.trailing_blanks != 0 ? value_or_null() : of_empty;
    }
    const bool is_single = texts.ascii_is_single_byte && text.data[0] < 0x80;
    const std::uint32_t length = is_single ? 1 : zq_mb_char_get_len_ex(text.data, text.length);
    code = 0;
    for (std::uint32_t i = 0; i < length; ++i) {
        code = code << 8 | text.data[i];
    }
    return {};
}

constexpr std::uint32_t most_bytes_of_character = 4;
using one_character = bounded_text<2 * most_bytes_of_character>;

[[gnu::noinline]] status multibyte_character(std::uint64_t code, one_character& text) {
    std::uint32_t length = 1;
    while (code >> (8 * length) != 0) {
        ++length;
    }
    for (std::uint32_t i = 0; i < length; ++i) {
        text.bytes[i] = static_cast<std::uint8_t>(code >> (8 * (length - 1 - i)));
    }
    text.length = length;
    std::uint32_t characters = 0;
    return are_valid_characters(text.bytes, length, characters) && characters == 1 ? BIFUN_OK : BIFUN_ARGUMENT_OUT_OF_DOMAIN;
}

status chr(const text_operations& texts, std::int64_t code, one_character& text) {
    if (texts.ascii_is_single_byte && code >= 0 && code < 0x80) [[likely]] {
        text.bytes[0] = static_cast<std::uint8_t>(code);
        text.length = 1;
        return BIFUN_OK;
    }
    if (code < 0) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    return code > UINT32_MAX ? BIFUN_RESULT_TOO_LONG : multibyte_character(static_cast<std::uint64_t>(code), text);
}

// ---- ASCIISTR: \ and four digits for every character that is not ASCII, for a supplementary one twice, and for \ itself
// ---------------------

constexpr std::uint32_t escape_length = 5;

std::uint32_t escaped_length(std::uint32_t code_point) {
    return code_point >= 0x10000 ? 2 * escape_length : code_point >= 0x80 || code_point == '\\' ? escape_length : 1;
}

std::uint8_t* write_escape(std::uint8_t* to, std::uint32_t code_unit) {
    *to = '\\';
    for (std::uint32_t digit = 1; digit < escape_length; ++digit) {
        to[digit] = hexadecimal_digit(code_unit >> (4 * (escape_length - 1 - digit)) & 0x0F, 'A');
    }
    return to + escape_length;
}

std::uint8_t* write_escaped(std::uint8_t* to, std::uint32_t code_point) {
    switch (escaped_length(code_point)) {
    case 1:
        *to = static_cast<std::uint8_t>(code_point);
        return to + 1;
    case escape_length:
        return write_escape(to, code_point);
    default:
        return write_escape(write_escape(to, 0xD800 + ((code_point - 0x10000) >> 10)), 0xDC00 + (code_point & 0x3FF));
    }
}

[[gnu::noinline]] status escaped_text(const bifun_string& value, scratch& code_points, string_room& room) {
    auto* const points = reinterpret_cast<std::uint32_t*>(reserve(code_points, std::uint64_t{value.length} * sizeof(std::uint32_t)));
    if (points == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    const std::uint32_t count = zq_get_char_unicode_vals(value.data, value.length, points);
    std::uint64_t length = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        length += escaped_length(points[i]);
    }
    if (length + value.trailing_blanks > longest_converted_text) {
        return BIFUN_CHARACTER_RESULT_TOO_LONG;
    }
    text_writer text;
    const status made = make_room(room, length, value.trailing_blanks, text);
    for (std::uint32_t i = 0; made == BIFUN_OK && i < count; ++i) {
        text.at = write_escaped(text.at, points[i]);
    }
    return made;
}

status asciistr(const text_operations& texts, const bifun_string& value, scratch& code_points, string_room& room) {
    const bool stays = has_single_bytes(texts, value) && (value.length == 0 || std::memchr(value.data, '\\', value.length) == nullptr);
    if (!stays) [[unlikely]] {
        return escaped_text(value, code_points, room);
    }
    return full_length(value) > longest_converted_text ? BIFUN_CHARACTER_RESULT_TOO_LONG : take_text(room, value);
}

} // namespace

status entry::bascii_a_str(batch_of<BIGINT> batch, column_of<VARCHAR> text) {
    const derived_argument<std::uint32_t> first_bytes{text.column, first_bytes_in_block};
    return set_usual_rows<begins_with_ascii_character, ascii_of_byte, ascii>(batch, fixed(length_of_empty()),
                                                                             fixed(text_operations_of_engine()), text, first_bytes);
}

status entry::bchr_a_str(batch_of<VARCHAR> batch, column_of<BIGINT> code) {
    return string_rows<chr>(batch, fixed(text_operations_of_engine()), code);
}

status entry::basciistr_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    return with_scratch(batch.environment, batch.memory, string_source_file,
                        [&](scratch& code_points) { return string_rows<asciistr>(batch, texts_of(text), text, shared(code_points)); });
}

} // namespace bifun
