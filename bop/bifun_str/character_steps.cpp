// SPDX-License-Identifier: Apache-2.0
// STRPOSINC and STRPOSDEC: a text with one of its characters replaced by its neighbour in the character set.

#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/text.h"

namespace bifun {
namespace {

std::uint64_t characters_in(const text_operations& texts, const bifun_string& value) {
    return std::uint64_t{stored_characters(texts, value)} + value.trailing_blanks;
}

// Where a character is: behind the stored bytes are the blanks.
struct character_place {
    std::uint32_t offset;
    std::uint32_t length;
};

// Of one that is there, from 0 on.
character_place find_character(const text_operations& texts, const bifun_string& value, std::uint32_t index) {
    const std::uint32_t offset = offset_of_character(texts, value, index);
    if (offset == value.length) {
        return {offset + (index - stored_characters(texts, value)), 1};
    }
    const bool is_single = texts.ascii_is_single_byte && value.data[offset] < 0x80;
    return {offset, is_single ? 1 : zq_mb_char_get_len_ex(value.data + offset, value.length - offset)};
}

template <std::int32_t step>
status step_character(const text_operations& texts, const bifun_string& value, std::uint32_t index, string_room& room) {
    const character_place place = find_character(texts, value, index);
    // Up to the character blanks are written.
    const std::uint32_t end = std::max(value.length, place.offset + place.length);
    const std::uint32_t written_blanks = end - value.length;
    text_writer text;
    const status made = make_room(room, end, value.trailing_blanks - written_blanks, text);
    if (made != BIFUN_OK) {
        return made;
    }
    std::uint8_t* const bytes = text.at;
    append(text, value.data, value.length);
    append_blanks(text, written_blanks);
    return zq_mb_char_step(bytes + place.offset, place.length, step);
}

// A text that ends before the position stays.
template <std::int32_t step>
status step_at(const text_operations& texts, const bifun_string& value, std::int32_t position, string_room& room) {
    if (position < 1) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    const auto index = static_cast<std::uint32_t>(position) - 1;
    return index < characters_in(texts, value) ? step_character<step>(texts, value, index, room) : take_text(room, value);
}

template <std::int32_t step> status step_last(const text_operations& texts, const bifun_string& value, string_room& room) {
    const std::uint64_t characters = characters_in(texts, value);
    if (characters > UINT32_MAX) {
        return BIFUN_OUT_OF_MEMORY;
    }
    return characters != 0 ? step_character<step>(texts, value, static_cast<std::uint32_t>(characters) - 1, room) : take_text(room, value);
}

template <std::int32_t step, class Position> status step_rows(batch_of<VARCHAR> batch, column_of<VARCHAR> text, Position position) {
    return string_rows<step_at<step>>(batch, texts_of(text), text, position);
}

template <std::int32_t step> status step_rows(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    return string_rows<step_last<step>>(batch, texts_of(text), text);
}

} // namespace

status entry::bstrposinc_def_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) { return step_rows<1>(batch, text); }
status entry::bstrposinc_aa_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, column_of<INT> position) {
    return step_rows<1>(batch, text, position);
}
status entry::bstrposinc_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> position) {
    return step_rows<1>(batch, text, position);
}
status entry::bstrposdec_def_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) { return step_rows<-1>(batch, text); }
status entry::bstrposdec_aa_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, column_of<INT> position) {
    return step_rows<-1>(batch, text, position);
}
status entry::bstrposdec_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> position) {
    return step_rows<-1>(batch, text, position);
}

} // namespace bifun
