// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "bop/frame/status.h"
#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/strings.h"

namespace {

constexpr std::uint8_t blank = 0x20;
constexpr std::uint64_t longest_result = 32767;

enum class side : std::uint8_t { left, right };

// ---- pads -------------------------------------------------------------------------------------------------------------

// What is repeated: `length` bytes, and a blank where the bytes that follow are the beginning of a character.
struct pad_text {
    const std::uint8_t* bytes;
    std::uint32_t length;
    std::uint32_t blank_behind; // 1 or 0
};

// How characters that have begun may go on: one of these completes any that can be completed.
struct rest_of_character {
    std::uint8_t bytes[3];
    std::uint32_t length;
};
constexpr rest_of_character rests[] = {{{0x80, 0x80, 0x80}, 3}, {{0xBF, 0xBF, 0xBF}, 3}, {{0x81, 0x30, 0}, 2}, {{0x30, 0, 0}, 1}};
constexpr std::uint32_t longest_beginning = 3;

bool is_beginning_of_character(const std::uint8_t* text, std::uint32_t length) {
    return std::ranges::any_of(rests, [=](const rest_of_character& rest) {
        std::uint8_t whole[longest_beginning + sizeof rest.bytes];
        std::memcpy(whole, text, length);
        std::memcpy(whole + length, rest.bytes, rest.length);
        return zq_mb_char_get_len_ex(whole, length + rest.length) > length;
    });
}

pad_text make_pad(const std::uint8_t* pad, std::uint32_t length) {
    for (std::uint32_t left = std::min(length, longest_beginning); left > 0; --left) {
        const std::uint32_t offset = length - left;
        const bool is_beginning = pad[offset] >= 0x80 && zq_char_start(pad, length, offset) != 0 &&
                                  zq_mb_char_get_len_ex(pad + offset, left) == 1 && is_beginning_of_character(pad + offset, left);
        if (is_beginning) {
            return {pad, offset, 1};
        }
    }
    return {pad, length, 0};
}

// What stands in front of a text or behind it: `length` bytes, of which the last ones are blanks.
struct padding {
    std::uint64_t length;
    std::uint64_t trailing_blanks;
};

std::uint32_t trailing_blanks_of(const pad_text& pad, std::uint32_t length) {
    std::uint32_t stored = std::min(length, pad.length);
    while (stored > 0 && pad.bytes[stored - 1] == blank) {
        --stored;
    }
    return length - stored;
}

padding make_padding(const pad_text& pad, std::uint32_t characters) {
    const std::uint32_t copy_length = pad.length + pad.blank_behind;
    const std::uint32_t copy_characters = zq_mbstrlen_ex(pad.bytes, pad.length) + pad.blank_behind;
    const std::uint64_t copies = characters / copy_characters;
    const std::uint32_t part_length = zq_mbsninc_ex(pad.bytes, pad.length, characters % copy_characters);
    padding result = {copies * copy_length + part_length, trailing_blanks_of(pad, part_length)};
    if (result.trailing_blanks == part_length && copies != 0) {
        const std::uint32_t of_copy = trailing_blanks_of(pad, copy_length);
        result.trailing_blanks = of_copy == copy_length ? result.length : result.trailing_blanks + of_copy;
    }
    return result;
}

// The first `length` bytes of the pad's copies.
void write_padding(const pad_text& pad, std::uint8_t* out, std::size_t length) {
    const std::size_t copied = std::min<std::size_t>(length, pad.length);
    if (copied != 0) {
        std::memcpy(out, pad.bytes, copied);
    }
    std::size_t written = copied;
    if (written < length && pad.blank_behind != 0) {
        out[written++] = blank;
    }
    while (written < length) { // what is there, as often as it has been repeated already
        const std::size_t more = std::min(written, length - written);
        std::memcpy(out + written, out, more);
        written += more;
    }
}

// ---- results ----------------------------------------------------------------------------------------------------------

// A value of `length` bytes, for which `bytes` gets the room where that is not 0, and blanks behind them.
std::int32_t make_room(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result, std::uint32_t row,
                       std::uint64_t length, std::uint64_t trailing_blanks, std::uint8_t*& bytes) {
    bytes = nullptr;
    if (length + trailing_blanks > longest_result) {
        return BIFUN_INVALID_CHARACTER_STRING;
    }
    const auto stored = static_cast<std::uint32_t>(length);
    const auto blanks = static_cast<std::uint32_t>(trailing_blanks);
    if (stored == 0) {
        static_cast<bifun_string*>(result->values)[row] = {0, blanks, nullptr};
        return BIFUN_OK;
    }
    bytes = bdta3_colstr_assign_without_value(environment, memory, result, row, stored, blanks);
    return bytes == nullptr ? BIFUN_OUT_OF_MEMORY : BIFUN_OK;
}

// The first bytes of the text, and blanks behind them.
std::int32_t store_text(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result, std::uint32_t row,
                        const bifun_string& text, std::uint32_t length, std::uint32_t trailing_blanks) {
    std::uint8_t* bytes;
    const std::int32_t status = make_room(environment, memory, result, row, length, trailing_blanks, bytes);
    if (bytes != nullptr) {
        std::memcpy(bytes, text.data, length);
    }
    return status;
}

template <side padded>
std::int32_t store_padded(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result, std::uint32_t row,
                          const bifun_string& text, const pad_text& pad, padding padding) {
    std::uint8_t* bytes;
    if (padded == side::left && text.length != 0) {
        const std::int32_t status = make_room(environment, memory, result, row, padding.length + text.length, text.trailing_blanks, bytes);
        if (bytes != nullptr) {
            write_padding(pad, bytes, padding.length);
            std::memcpy(bytes + padding.length, text.data, text.length);
        }
        return status;
    }
    // The padding is followed by blanks at most, and has the text before it, or the text's blanks where it is padded on the right.
    const std::uint64_t blanks_before = padded == side::right ? text.trailing_blanks : 0;
    const std::uint64_t blanks_behind = text.trailing_blanks - blanks_before;
    const std::uint64_t written = padding.length - padding.trailing_blanks;
    const std::uint64_t stored = written == 0 ? text.length : text.length + blanks_before + written;
    const std::uint64_t trailing_blanks = padding.trailing_blanks + blanks_behind + (written == 0 ? blanks_before : 0);
    const std::int32_t status = make_room(environment, memory, result, row, stored, trailing_blanks, bytes);
    if (bytes != nullptr) {
        if (text.length != 0) {
            std::memcpy(bytes, text.data, text.length);
        }
        if (written != 0) {
            std::memset(bytes + text.length, blank, blanks_before);
            write_padding(pad, bytes + text.length + blanks_before, written);
        }
    }
    return status;
}

template <side padded>
std::int32_t pad(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result, std::uint32_t row,
                 const bifun_string& text, std::int32_t length, const std::uint8_t* pad_bytes, std::uint32_t pad_length) {
    const std::uint32_t wanted = length < 0 ? 0 : static_cast<std::uint32_t>(length);
    std::uint32_t stored_characters;
    const std::uint32_t stored_length = zq_mbsninc_count_ex(text.data, text.length, wanted, &stored_characters);
    const std::uint32_t blanks = std::min(text.trailing_blanks, wanted - stored_characters);
    const std::uint32_t missing = wanted - stored_characters - blanks;
    if (missing == 0 || pad_length == 0) {
        return store_text(environment, memory, result, row, text, stored_length, blanks);
    }
    const pad_text made = make_pad(pad_bytes, pad_length);
    return store_padded<padded>(environment, memory, result, row, text, made, make_padding(made, missing));
}

} // namespace

int32_t zq_get_lpad_str(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result, uint32_t row,
                        const bifun_string* text, int32_t length, const uint8_t* pad_bytes, uint32_t pad_length) {
    return pad<side::left>(environment, memory, result, row, *text, length, pad_bytes, pad_length);
}

int32_t zq_get_rpad_str(bifun_environment* environment, bifun_memory_object* memory, bifun_column_data* result, uint32_t row,
                        const bifun_string* text, int32_t length, const uint8_t* pad_bytes, uint32_t pad_length) {
    return pad<side::right>(environment, memory, result, row, *text, length, pad_bytes, pad_length);
}
