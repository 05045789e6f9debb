// SPDX-License-Identifier: Apache-2.0
// TRIM, LTRIM and RTRIM. The trailing blanks of a value are a count, so trimming them is no work; what is left of the stored bytes is told
// by a part of them. The trailing side is trimmed on reversed bytes, because a character set can be read from the left only; single-byte
// characters are trimmed where they lie, of text that is known to have them.

#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/text.h"

namespace bifun {
namespace {

// The mode of TRIM, as the parser numbers its keywords. Any other number is for both sides.
enum trim_mode : std::int32_t { trim_leading = 579, trim_trailing = 580 };

// The characters to trim, and what can be told of them before a row is seen.
struct trim_set {
    bifun_string characters;
    bool has_whitespace;   // among the stored bytes
    bool has_single_bytes; // and at least one
    ascii_set bytes;       // where it has_single_bytes
    scratch* room;         // for its bytes, where they lie in the text that is trimmed; null for a set without bytes
};

trim_set make_trim_set(const text_operations& texts, const bifun_string& characters, scratch& room) {
    trim_set set{characters, false, texts.ascii_is_single_byte && characters.length != 0, {}, &room};
    for (std::uint32_t i = 0; i < characters.length; ++i) {
        const std::uint8_t byte = characters.data[i];
        set.has_whitespace |= is_whitespace(byte);
        set.has_single_bytes &= byte < 0x80;
        include(set.bytes, byte);
    }
    return set;
}

bool is_one_character(const bifun_string& set) {
    const std::uint32_t stored = set.length <= 1 ? set.length : zq_mbstrlen_ex(set.data, set.length);
    return std::uint64_t{stored} + set.trailing_blanks == 1;
}

void drop_first(bifun_string& text, std::uint32_t count) {
    text.data += count;
    text.length -= count;
}

// ---- one side of the stored bytes --------------------------------------------------------------------------------------
//
// What asks the engine takes and returns values, so that those of the loop stay in registers.

[[gnu::noinline]] bifun_string trim_left_of_any_text(bifun_string text, const trim_set& set) {
    const std::uint8_t* first = text.data;
    trim_left(set.characters.data, set.characters.length, &first, &text.length);
    text.data += first - text.data;
    return text;
}

[[gnu::noinline]] bifun_string trim_left_blanks_of_any_text(bifun_string text) {
    const std::uint8_t* first = text.data;
    trim_left_space(&first, &text.length);
    text.data += first - text.data;
    return text;
}

void trim_stored_left(const text_operations& texts, bifun_string& text, const trim_set& set) {
    if (!set.has_single_bytes || !(texts.utf8_is_unicode || has_single_bytes(texts, text))) {
        text = trim_left_of_any_text(text, set);
    } else {
        drop_first(text, leading_in(set.bytes, text.data, text.length));
    }
}

struct right_trim_result {
    std::uint32_t length;
    status outcome;
};

bool share_bytes(const bifun_string& a, const bifun_string& b) {
    const auto begin_of_a = reinterpret_cast<std::uintptr_t>(a.data);
    const auto begin_of_b = reinterpret_cast<std::uintptr_t>(b.data);
    return begin_of_a < begin_of_b + b.length && begin_of_b < begin_of_a + a.length;
}

// The bytes of the argument are reversed and put back. Nothing is to be done for an empty text. A set that refers to bytes of the text, as
// the result of another call may, is copied first.
[[gnu::noinline]] right_trim_result trim_right_of_any_text(bifun_string text, const trim_set& set) {
    if (text.length == 0) {
        return {0, BIFUN_OK};
    }
    const std::uint8_t* characters = set.characters.data;
    if (share_bytes(text, set.characters)) {
        std::uint8_t* const copy = reserve(*set.room, set.characters.length);
        if (copy == nullptr) {
            return {0, BIFUN_OUT_OF_MEMORY};
        }
        characters = static_cast<std::uint8_t*>(std::memcpy(copy, characters, set.characters.length));
    }
    if (zq_mbsrev_ex(text.data, text.length) == nullptr) {
        return {0, BIFUN_INVALID_CHARACTER_STRING};
    }
    const std::uint8_t* first = text.data;
    std::uint32_t rest = text.length;
    trim_left(characters, set.characters.length, &first, &rest);
    if (zq_mbsrev_ex(text.data, text.length) == nullptr) {
        return {0, BIFUN_INVALID_CHARACTER_STRING};
    }
    return {rest, BIFUN_OK};
}

// Whether bytes below 0x80 can be trimmed from the end: each is a character, and the text could be reversed.
bool ends_in_single_bytes(const text_operations& texts, const bifun_string& text) {
    return texts.known != known_texts::nothing ||
           (text.length <= longest_masked ? characters_of(texts, text).are_known : has_single_bytes(texts, text));
}

status trim_stored_right(const text_operations& texts, bifun_string& text, const trim_set& set) {
    if (!set.has_single_bytes || !ends_in_single_bytes(texts, text)) {
        const right_trim_result trimmed = trim_right_of_any_text(text, set);
        text.length = trimmed.length;
        return trimmed.outcome;
    }
    text.length -= trailing_in(set.bytes, text.data, text.length);
    return BIFUN_OK;
}

// ---- what is left of a value -----------------------------------------------------------------------------------------------

value_or_unwritten btrim_process(const text_operations& texts, const bifun_string& value, const trim_set& set, bifun_string& text) {
    text = value;
    // Most texts begin with a letter.
    const bool begins_with_letter = text.length != 0 && text.data[0] > blank;
    const std::uint32_t whitespace = begins_with_letter ? 0 : leading_whitespace(text.data, text.length);
    if (set.characters.trailing_blanks != 0) {
        drop_first(text, whitespace);
        text.trailing_blanks = 0;
        return {};
    }
    if (whitespace == 0) {
        trim_stored_left(texts, text, set);
        if (text.length == 0) {
            return {};
        }
    }
    // A text with trailing blanks ends in a character that is not in the set.
    return text.trailing_blanks != 0 ? BIFUN_OK : trim_stored_right(texts, text, set);
}

value_or_unwritten bltrim_process(const text_operations& texts, const bifun_string& value, const trim_set& set, bifun_string& text) {
    text = value;
    const bifun_string& characters = set.characters;
    if (is_empty(text) || is_empty(characters)) {
        return {};
    }
    if (characters.length == 0) {
        if (text.length == 0) {
            text.trailing_blanks = 0;
        } else if (texts.ascii_is_single_byte) {
            drop_first(text, leading(blank, text.data, text.length));
        } else if (text.data[0] == blank) {
            text = trim_left_blanks_of_any_text(text);
        }
        return {};
    }
    const std::uint32_t whitespace = leading_whitespace(text.data, text.length);
    if (characters.trailing_blanks != 0 || set.has_whitespace) {
        drop_first(text, whitespace);
        trim_stored_left(texts, text, set);
        if (text.length == 0) {
            text.trailing_blanks = 0;
        }
        return {};
    }
    if (whitespace != 0) {
        return value_or_unwritten::unwritten();
    }
    trim_stored_left(texts, text, set);
    return {};
}

value_or_unwritten brtrim_process(const text_operations& texts, const bifun_string& value, const trim_set& set, bifun_string& text) {
    text = value;
    const bifun_string& characters = set.characters;
    const bool is_blank = characters.length == 0 && characters.trailing_blanks != 0;
    if (!is_blank) {
        const bool ends_outside = characters.trailing_blanks == 0 && !set.has_whitespace && text.trailing_blanks != 0;
        if (is_empty(text) || is_empty(characters) || ends_outside) {
            return {};
        }
        const status trimmed = trim_stored_right(texts, text, set);
        if (trimmed < BIFUN_OK) {
            return trimmed;
        }
    }
    text.trailing_blanks = 0;
    return {};
}

using trim_kernel = value_or_unwritten (*)(const text_operations&, const bifun_string&, const trim_set&, bifun_string&);

// The same with the set of the row.
template <trim_kernel kernel>
value_or_unwritten trim_by_row(const text_operations& texts, const bifun_string& value, const bifun_string& characters, scratch& room,
                               bifun_string& text) {
    return kernel(texts, value, make_trim_set(texts, characters, room), text);
}

// The same for a set that must be one character, or empty.
template <trim_kernel kernel>
value_or_unwritten trim_one_character(const text_operations& texts, const bifun_string& value, const bifun_string& characters,
                                      scratch& room, bifun_string& text) {
    text = value;
    if (is_empty(value) || is_empty(characters)) {
        return {};
    }
    return is_one_character(characters) ? trim_by_row<kernel>(texts, value, characters, room, text) : BIFUN_TRIM_SET_NOT_ONE_CHARACTER;
}

// The same for a blank. What is known when the kernel is compiled leaves little of it.
template <trim_kernel kernel> value_or_unwritten trim_blanks(const text_operations& texts, const bifun_string& value, bifun_string& text) {
    constexpr trim_set blank_set{{0, 1, nullptr}, false, false, {}, nullptr};
    return kernel(texts, value, blank_set, text);
}

// ---- batches -------------------------------------------------------------------------------------------------------------

template <trim_kernel kernel> status trim_by_default(batch_of<VARCHAR> batch, column_of<VARCHAR> text) {
    return string_rows<trim_blanks<kernel>>(batch, fixed(text_operations_of_engine()), text);
}

template <trim_kernel kernel> status trim_by_constant(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> set) {
    const text_operations texts = text_operations_of_engine();
    const auto [characters, present] = argument(set);
    return with_scratch(
        batch.environment, batch.memory, string_source_file, [&, characters = characters, present = present](scratch& room) {
            return string_rows<kernel>(batch, texts_of(text), text, constant_argument{make_trim_set(texts, characters, room), present});
        });
}

// `trim` is a kernel that is given the set of the row.
template <auto trim, class Text> status trim_by_column(batch_of<VARCHAR> batch, Text text, column_of<VARCHAR> set) {
    return with_scratch(batch.environment, batch.memory, string_source_file,
                        [&](scratch& room) { return string_rows<trim>(batch, texts_of(text), text, set, shared(room)); });
}

// TRIM with a mode, whose set is one character.

template <class Text> status trim_by_mode(batch_of<VARCHAR> batch, constant_of<INT> mode, Text text, column_of<VARCHAR> set) {
    const auto [sides, present] = argument(mode);
    return !present                 ? null_rows(batch)
           : sides == trim_leading  ? trim_by_column<trim_one_character<bltrim_process>>(batch, text, set)
           : sides == trim_trailing ? trim_by_column<trim_one_character<brtrim_process>>(batch, text, set)
                                    : trim_by_column<trim_one_character<btrim_process>>(batch, text, set);
}

} // namespace

status entry::btrim_vaa_str(batch_of<VARCHAR> batch, constant_of<INT> mode, column_of<VARCHAR> text, column_of<VARCHAR> set) {
    return trim_by_mode(batch, mode, text, set);
}
status entry::btrim_vva_str(batch_of<VARCHAR> batch, constant_of<INT> mode, constant_of<VARCHAR> text, column_of<VARCHAR> set) {
    return trim_by_mode(batch, mode, text, set);
}
status entry::btrim_vav_str(batch_of<VARCHAR> batch, constant_of<INT> mode, column_of<VARCHAR> text, constant_of<VARCHAR> set) {
    const auto [characters, present] = argument(set);
    if (present && !is_one_character(characters)) {
        return fail_batch(batch, BIFUN_TRIM_SET_NOT_ONE_CHARACTER);
    }
    const auto [sides, has_mode] = argument(mode);
    return !has_mode                ? null_rows(batch)
           : sides == trim_leading  ? trim_by_constant<bltrim_process>(batch, text, set)
           : sides == trim_trailing ? trim_by_constant<brtrim_process>(batch, text, set)
                                    : trim_by_constant<btrim_process>(batch, text, set);
}

status entry::btrim_def_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) { return trim_by_default<btrim_process>(batch, text); }
status entry::bltrim_def_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) { return trim_by_default<bltrim_process>(batch, text); }
status entry::brtrim_def_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) { return trim_by_default<brtrim_process>(batch, text); }

status entry::bltrim_aa_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, column_of<VARCHAR> set) {
    return trim_by_column<trim_by_row<bltrim_process>>(batch, text, set);
}
status entry::bltrim_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> set) {
    return trim_by_constant<bltrim_process>(batch, text, set);
}
status entry::bltrim_va_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> text, column_of<VARCHAR> set) {
    const auto [value, present] = argument(text);
    if (!present || !is_empty(value)) {
        return trim_by_column<trim_by_row<bltrim_process>>(batch, text, set);
    }
    // Nothing is left of nothing, whatever the sets are: they are not looked at.
    for (std::uint32_t row = 0; row < batch.row_count; ++row) {
        null_flags(batch)[row] = 1;
        set_value(batch, row, bifun_string{});
    }
    batch.result->no_nulls = 1;
    return BIFUN_OK;
}

status entry::brtrim_aa_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, column_of<VARCHAR> set) {
    return trim_by_column<trim_by_row<brtrim_process>>(batch, text, set);
}
status entry::brtrim_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> set) {
    return trim_by_constant<brtrim_process>(batch, text, set);
}
status entry::brtrim_va_str(batch_of<VARCHAR> batch, constant_of<VARCHAR> text, column_of<VARCHAR> set) {
    return trim_by_column<trim_by_row<brtrim_process>>(batch, text, set);
}

} // namespace bifun
