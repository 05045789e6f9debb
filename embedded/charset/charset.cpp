// SPDX-License-Identifier: Apache-2.0
#include "engine/charset.h"

#include <algorithm>
#include <cstring>

#include "bop/frame/status.h"
#include "embedded/charset/ascii.h"
#include "embedded/charset/charset_choice.h"
#include "embedded/charset/charset_tables.h"
#include "embedded/charset/database_charset.h"
#include "embedded/charset/reversal.h"

namespace zqengine {
namespace {

std::uint32_t charset_code = ZQ_CHARSET_UTF8;

// Calls `operation` with the record of the database character set.
template <class Operation> auto in_database_charset(Operation operation) { return in_charset(charset_code, operation); }

template <class Charset>
std::uint32_t write_positions(Charset /*charset*/, const std::uint8_t* text, std::uint32_t length, std::uint32_t* positions) {
    std::uint32_t position = 0;
    for (std::uint32_t offset = 0; offset < length;) {
        const window found = Charset::window_at(text + offset, length - offset);
        std::uint32_t* const out = positions + offset;
        for (std::uint32_t k = 0; k < found.length; ++k) {
            position += found.starts >> k & 1;
            out[k] = position;
        }
        offset += found.length;
    }
    return position;
}

// From the first block on that is not ASCII.
template <class Charset>
void change_characters(Charset /*charset*/, std::uint8_t* text, std::uint32_t offset, std::uint32_t length, letter_case to) {
    const charset_tables<Charset>& tables = tables_of<Charset>();
    while (offset < length) {
        if (text[offset] >= 0x80) {
            const std::uint32_t character_length = Charset::length_of(text + offset, length - offset);
            if (character_length > 1) {
                change_case(tables, text + offset, character_length, to);
            }
            offset += character_length;
        } else if (const byte_block block = length - offset >= block_length ? load_block(text + offset) : repeated(0x80); is_ascii(block)) {
            store_block(text + offset, fold_ascii(block, to));
            offset += block_length;
        } else {
            text[offset] = fold_ascii(text[offset], to);
            ++offset;
        }
    }
}

void change_characters(single_bytes /*charset*/, std::uint8_t* text, std::uint32_t offset, std::uint32_t length, letter_case to) {
    for (; offset < length; ++offset) {
        text[offset] = fold_ascii(text[offset], to);
    }
}

void change_text(std::uint8_t* text, std::uint32_t length, letter_case to) {
    if (const std::uint32_t offset = fold_leading_ascii(text, length, to); offset < length) {
        in_database_charset([=](auto charset) { change_characters(charset, text, offset, length, to); });
    }
}

// Returns whether there is a neighbour.
bool step_byte(std::uint8_t* character, std::int32_t step, std::int32_t byte_count) {
    const std::int32_t next = *character + step;
    if (*character >= byte_count || next < 0 || next >= byte_count) {
        return false;
    }
    *character = static_cast<std::uint8_t>(next);
    return true;
}

template <class Charset> bool step_character(Charset /*charset*/, std::uint8_t* character, std::uint32_t length, std::int32_t step) {
    if (length == 1) {
        return step_byte(character, step, 0x80);
    }
    const std::uint32_t rank = Charset::length_of(character, length) == length ? Charset::rank(character, length) : UINT32_MAX;
    std::uint32_t next = rank + static_cast<std::uint32_t>(step);
    if (Charset::rank_is_code_point && next - 0xD800 < 0x800) { // surrogates
        next = step > 0 ? 0xE000 : 0xD7FF;
    }
    const bool is_neighbour = rank < Charset::all_ranks && next < Charset::all_ranks && Charset::rank_length(next) == length;
    if (is_neighbour) {
        Charset::write(next, character, length);
    }
    return is_neighbour;
}

bool step_character(single_bytes /*charset*/, std::uint8_t* character, std::uint32_t /*length*/, std::int32_t step) {
    return step_byte(character, step, 0x100);
}

std::uint32_t write_code_points(single_bytes /*charset*/, const std::uint8_t* text, std::uint32_t length, std::uint32_t* code_points) {
    for (std::uint32_t i = 0; i < length; ++i) {
        code_points[i] = text[i] < 0x80 ? text[i] : unknown_code_point;
    }
    return length;
}

template <class Charset>
std::uint32_t write_code_points(Charset /*charset*/, const std::uint8_t* text, std::uint32_t length, std::uint32_t* code_points) {
    const charset_tables<Charset>& tables = tables_of<Charset>();
    std::uint32_t count = 0;
    for (std::uint32_t offset = 0; offset < length; ++count) {
        const std::uint32_t character_length = Charset::length_of(text + offset, length - offset);
        code_points[count] = character_length > 1  ? code_point_of(tables, text + offset, character_length)
                             : text[offset] < 0x80 ? text[offset]
                                                   : unknown_code_point;
        offset += character_length;
    }
    return count;
}

template <class Charset>
std::uint32_t copy_valid(Charset /*charset*/, const std::uint8_t* text, std::uint32_t length, std::uint8_t* valid,
                         std::uint32_t* characters) {
    std::uint32_t count = 0;
    std::uint32_t copied = 0;
    for (std::uint32_t offset = 0; offset < length;) {
        const std::uint32_t character_length = Charset::length_of(text + offset, length - offset);
        if (Charset::is_valid(text + offset, character_length)) {
            if (valid != nullptr) {
                std::memmove(valid + copied, text + offset, character_length);
            }
            copied += character_length;
            ++count;
        }
        offset += character_length;
    }
    if (characters != nullptr) {
        *characters = count;
    }
    return copied;
}

template <class Charset>
bool has_character(const std::uint8_t* set, std::uint32_t set_length, const std::uint8_t* character, std::uint32_t character_length) {
    for (std::uint32_t offset = 0; offset < set_length;) {
        const std::uint32_t length = Charset::length_of(set + offset, set_length - offset);
        if (length == character_length && std::memcmp(set + offset, character, length) == 0) {
            return true;
        }
        offset += length;
    }
    return false;
}

// How many leading bytes of the text are the one character that the set is.
template <class Charset>
std::uint32_t leading_character(const std::uint8_t* set, std::uint32_t set_length, const std::uint8_t* text, std::uint32_t length) {
    std::uint32_t offset = 0;
    if (set[0] < 0x80) { // at the place of a character always one itself
        while (offset < length && text[offset] == set[0]) {
            ++offset;
        }
        return offset;
    }
    while (length - offset >= set_length && std::memcmp(text + offset, set, set_length) == 0 &&
           Charset::length_of(text + offset, length - offset) == set_length) {
        offset += set_length;
    }
    return offset;
}

template <class Charset>
std::uint32_t leading_members(Charset /*charset*/, const std::uint8_t* set, std::uint32_t set_length, const std::uint8_t* text,
                              std::uint32_t length) {
    if (set_length == 0 || length == 0) {
        return 0;
    }
    if (Charset::length_of(set, set_length) == set_length) {
        return leading_character<Charset>(set, set_length, text, length);
    }
    std::uint64_t ascii_members[2] = {0, 0};
    bool has_others = false;
    for (std::uint32_t offset = 0; offset < set_length;) {
        if (set[offset] < 0x80) {
            ascii_members[set[offset] / 64] |= std::uint64_t{1} << (set[offset] % 64);
            ++offset;
        } else {
            has_others = true;
            offset += Charset::length_of(set + offset, set_length - offset);
        }
    }
    std::uint32_t offset = 0;
    while (offset < length) {
        const std::uint8_t byte = text[offset];
        std::uint32_t character_length = 1;
        bool is_member = false;
        if (byte < 0x80) {
            is_member = (ascii_members[byte / 64] >> (byte % 64) & 1) != 0;
        } else if (has_others) {
            character_length = Charset::length_of(text + offset, length - offset);
            is_member = has_character<Charset>(set, set_length, text + offset, character_length);
        }
        if (!is_member) {
            break;
        }
        offset += character_length;
    }
    return offset;
}

} // namespace

void set_database_charset(std::uint32_t code) { charset_code = code; }
std::uint32_t database_charset() { return charset_code; }

} // namespace zqengine

using namespace zqengine;

std::uint32_t zq_mb_char_get_len(const std::uint8_t* character) {
    return in_database_charset([=](auto charset) { return charset.claimed_length(character); });
}

std::uint32_t zq_mb_char_get_len_ex(const std::uint8_t* character, std::uint32_t remaining) {
    if (remaining < 2) {
        return 1;
    }
    return in_database_charset([=](auto charset) { return charset.length_of(character, remaining); });
}

std::uint32_t zq_mbstrlen_ex(const std::uint8_t* text, std::uint32_t length) {
    return in_database_charset([=](auto charset) { return charset.count(text, length); });
}

std::uint32_t zq_mbstrlen_cposition_ex(const std::uint8_t* text, std::uint32_t length, std::uint32_t* positions) {
    return in_database_charset([=](auto charset) { return write_positions(charset, text, length, positions); });
}

std::uint32_t zq_mbsninc_count_ex(const std::uint8_t* text, std::uint32_t length, std::uint32_t characters, std::uint32_t* stepped) {
    const steps found = in_database_charset([=](auto charset) { return charset.step(text, length, characters); });
    *stepped = found.characters;
    return found.offset;
}

std::uint32_t zq_mbsninc_ex(const std::uint8_t* text, std::uint32_t length, std::uint32_t characters) {
    if (characters >= length) {
        return length;
    }
    return in_database_charset([=](auto charset) { return charset.step(text, length, characters).offset; });
}

std::uint32_t zq_mbsinc_ex(const std::uint8_t* text, std::uint32_t length) { return length == 0 ? 0 : zq_mb_char_get_len_ex(text, length); }

std::uint32_t zq_mbget_byte_offset(const std::uint8_t* text, std::uint32_t length, std::uint32_t position) {
    return zq_mbsninc_ex(text, length, std::max(position, 1U) - 1);
}

std::uint32_t zq_mbget_bytelen(const std::uint8_t* text, std::uint32_t length, std::uint32_t start, std::uint32_t characters) {
    const std::uint32_t offset = zq_mbget_byte_offset(text, length, start);
    return offset == length ? 0 : zq_mbsninc_ex(text + offset, length - offset, characters);
}

std::int32_t zq_char_start(const std::uint8_t* text, std::uint32_t length, std::uint32_t offset) {
    return in_database_charset([=](auto charset) { return charset.is_start(text, length, offset); }) ? 1 : 0;
}

int32_t zq_translate_from_str_has_mb(const std::uint32_t* lengths, std::uint32_t count) {
    return std::any_of(lengths, lengths + count, [](std::uint32_t length) { return length > 1; }) ? 1 : 0;
}

void zq_mbsupper_ex(std::uint8_t* text, std::uint32_t length) { change_text(text, length, letter_case::upper); }
void zq_mbslower_ex(std::uint8_t* text, std::uint32_t length) { change_text(text, length, letter_case::lower); }
std::uint8_t zqupper(std::uint8_t character) { return fold_ascii(character, letter_case::upper); }

std::uint8_t* zq_mbsrev_ex(std::uint8_t* text, std::uint32_t length) {
    return in_database_charset([=](auto charset) { return reverse_characters(charset, text, length); }) ? text : nullptr;
}

std::uint8_t* zq_mbsrev_with_compatible_mode(std::uint8_t* text, std::uint32_t length, std::uint32_t compatible_mode) {
    constexpr std::uint32_t by_bytes = 2;
    if (compatible_mode != by_bytes) {
        return zq_mbsrev_ex(text, length);
    }
    reverse_bytes(text, length);
    return text;
}

std::int32_t zq_mb_char_step(std::uint8_t* character, std::uint32_t length, std::int32_t step) {
    return in_database_charset([=](auto charset) { return step_character(charset, character, length, step); })
               ? BIFUN_OK
               : BIFUN_ARGUMENT_OUT_OF_DOMAIN;
}

void trim_left(const std::uint8_t* set, std::uint32_t set_length, const std::uint8_t** text, std::uint32_t* length) {
    const std::uint32_t trimmed =
        in_database_charset([=](auto charset) { return leading_members(charset, set, set_length, *text, *length); });
    *text += trimmed;
    *length -= trimmed;
}

void trim_left_space(const std::uint8_t** text, std::uint32_t* length) {
    constexpr std::uint64_t blanks = 0x2020202020202020;
    const std::uint8_t* from = *text;
    std::uint32_t left = *length;
    while (left >= 8 && load_word<std::uint64_t>(from) == blanks) {
        from += 8;
        left -= 8;
    }
    while (left > 0 && *from == 0x20) {
        ++from;
        --left;
    }
    *text = from;
    *length = left;
}

std::uint32_t zq_get_valid_chars(std::int32_t number, const std::uint8_t* text, std::uint32_t length, std::uint8_t* valid,
                                 std::uint32_t* characters) {
    switch (number) {
    case 1:
        return copy_valid(utf8{}, text, length, valid, characters);
    case 6:
        return copy_valid(euc_kr{}, text, length, valid, characters);
    case 10:
        return copy_valid(gb18030{}, text, length, valid, characters);
    default:
        return copy_valid(single_bytes{}, text, length, valid, characters);
    }
}

std::uint32_t zq_get_char_unicode_vals(const std::uint8_t* text, std::uint32_t length, std::uint32_t* code_points) {
    return in_database_charset([=](auto charset) { return write_code_points(charset, text, length, code_points); });
}
