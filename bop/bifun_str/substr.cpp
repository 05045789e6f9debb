// SPDX-License-Identifier: Apache-2.0
// SUBSTR, LEFT and RIGHT by characters, SUBSTRB by bytes. A value's trailing blanks are characters like any others; a result that ends
// among them has its share of them as a count.

#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/text.h"

namespace bifun {
namespace {

constexpr std::int64_t to_the_end = INT64_MAX;

// What a negative length comes to: the row is NULL, or in compatible mode 1 an error.
value_or_null outcome_of_negative_length(status failure) { return global_bifun_var.compatible_mode == 1 ? failure : value_or_null::null(); }

// What is wanted of a text: `length` characters, or bytes, from `position` on, which counts from the end where it is negative.
struct wanted_range {
    std::int64_t position;
    std::int64_t length;
    bool begins_at_latest = false; // a position before the first character means the first
};

// What there is of it: `stored` units of the stored bytes, and blanks.
struct text_range {
    std::int64_t start; // from 1
    std::int64_t stored;
    std::uint32_t blanks;
};

// The range in a value of `stored` units and `blanks` blanks, or outcome_of_negative_length(failure) for a length below 0.
value_or_null place_range(const wanted_range& wanted, std::int64_t stored, std::uint32_t blanks, status failure, text_range& range) {
    const std::int64_t total = stored + blanks;
    const std::int64_t position = wanted.begins_at_latest ? std::max(wanted.position, -total) : wanted.position;
    range = {1, 0, 0};
    if (position > total || total + position < 0 || wanted.length == 0) {
        return {};
    }
    if (wanted.length < 0) {
        return outcome_of_negative_length(failure);
    }
    const std::int64_t start = position > 0 ? position : position == 0 ? 1 : total + position + 1;
    if (start > stored) {
        range.blanks = static_cast<std::uint32_t>(std::min(wanted.length, total + 1 - start));
        return {};
    }
    const std::int64_t rest = stored - start + 1;
    range.start = start;
    range.stored = std::min(wanted.length, rest);
    range.blanks = static_cast<std::uint32_t>(std::clamp<std::int64_t>(wanted.length - rest, 0, blanks));
    return {};
}

[[gnu::noinline]] string_outcome<value_or_null> substring_of_any_text(bifun_string text, wanted_range wanted) {
    // A range of stored characters from the left needs no count of all of them.
    if (wanted.position > 0 && wanted.length >= 0 && wanted.length <= text.length) {
        const std::uint32_t first = zq_mbsninc_ex(text.data, text.length, static_cast<std::uint32_t>(wanted.position - 1));
        std::uint32_t stepped = 0;
        const std::uint32_t length =
            zq_mbsninc_count_ex(text.data + first, text.length - first, static_cast<std::uint32_t>(wanted.length), &stepped);
        if (stepped == wanted.length && first < text.length) {
            return {{length, 0, text.data + first}, {}};
        }
    }
    const std::uint32_t characters = zq_mbstrlen_ex(text.data, text.length);
    text_range range;
    const value_or_null placed = place_range(wanted, characters, text.trailing_blanks, BIFUN_NEGATIVE_SUBSTRING_LENGTH, range);
    bifun_string part{0, range.blanks, text.data};
    if (placed.outcome == BIFUN_OK && range.stored != 0) {
        const std::uint32_t first = zq_mbsninc_ex(text.data, text.length, static_cast<std::uint32_t>(range.start - 1));
        std::uint32_t stepped;
        part.data += first;
        part.length = range.start - 1 + range.stored == characters
                          ? text.length - first
                          : zq_mbsninc_count_ex(part.data, text.length - first, static_cast<std::uint32_t>(range.stored), &stepped);
    }
    return {part, placed};
}

value_or_null substring_of_bytes(const bifun_string& text, const wanted_range& wanted, bifun_string& part) {
    text_range range;
    const value_or_null placed = place_range(wanted, text.length, text.trailing_blanks, BIFUN_NEGATIVE_SUBSTRING_LENGTH, range);
    part = {static_cast<std::uint32_t>(range.stored), range.blanks, text.data + (range.start - 1)};
    return placed;
}

// Of a text of at most 64 bytes whose characters begin at `starts`.
value_or_null substring_by_masks(std::uint64_t starts, const bifun_string& text, const wanted_range& wanted, bifun_string& part) {
    text_range range;
    const value_or_null placed = place_range(wanted, std::popcount(starts), text.trailing_blanks, BIFUN_NEGATIVE_SUBSTRING_LENGTH, range);
    const std::uint32_t begin = offset_of_start(starts, static_cast<std::uint32_t>(range.start - 1), text.length);
    const std::uint32_t end = offset_of_start(starts, static_cast<std::uint32_t>(range.start - 1 + range.stored), text.length);
    part = {end - begin, range.blanks, text.data + begin};
    return placed;
}

// Called, so that a loop over the usual ranges keeps its values in registers.
[[gnu::noinline]] string_outcome<value_or_null> substring_of_any_range(text_operations texts, bifun_string text,
                                                                       const wanted_range& wanted) {
    string_outcome<value_or_null> found;
    if (text.length <= longest_masked) {
        const utf8_characters characters = characters_of(texts, text);
        if (characters.are_known) {
            found.outcome = substring_by_masks(characters.starts, text, wanted, found.value);
            return found;
        }
    } else if (has_single_bytes(texts, text)) {
        found.outcome = substring_of_bytes(text, wanted, found.value);
        return found;
    }
    return substring_of_any_text(text, wanted);
}

value_or_null substring(const text_operations& texts, const bifun_string& text, const wanted_range& wanted, bifun_string& part) {
    const std::int64_t before = wanted.position - 1;
    const bool is_from_left = before >= 0 && wanted.length >= 0;
    if (is_from_left && texts.known == known_texts::utf8 && text.length <= longest_masked) {
        const std::uint64_t starts = starts_of_well_formed(text_bytes<64>(text.data, text.length), text.length);
        if (wanted.length <= std::popcount(starts) - before) {
            const std::uint32_t begin = offset_of_start(starts, static_cast<std::uint32_t>(before), text.length);
            const std::uint32_t end = offset_of_start(starts, static_cast<std::uint32_t>(before + wanted.length), text.length);
            part = {end - begin, 0, text.data + begin};
            return {};
        }
    }
    // A range of stored bytes from the left needs no look at what follows.
    if (is_from_left && wanted.length <= text.length - before &&
        begins_with_single_bytes(texts, text, static_cast<std::uint32_t>(before + wanted.length))) {
        part = {static_cast<std::uint32_t>(wanted.length), 0, text.data + before};
        return {};
    }
    if (texts.known == known_texts::ascii) {
        return substring_of_bytes(text, wanted, part);
    }
    const auto found = substring_of_any_range(texts, text, wanted);
    part = found.value;
    return found.outcome;
}

// ---- of ASCII: by arithmetic on records, for blocks of nothing else; other blocks go row by row, below ----

// `count` characters from offset `first` on, either of which may be beyond the text.
bifun_string range_of_ascii(const bifun_string& text, std::uint32_t first, std::uint32_t count) {
    const std::uint32_t total = text.length + text.trailing_blanks;
    const std::uint32_t begin = std::min(first, total);
    const std::uint32_t end = begin + std::min(count, total - begin);
    const std::uint32_t stored_begin = std::min(begin, text.length);
    const std::uint32_t stored = std::min(end, text.length) - stored_begin;
    // As a number: a NULL row has garbage for an address.
    const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(text.data) + stored_begin;
    return {stored, end - begin - stored, reinterpret_cast<std::uint8_t*>(address)}; // NOLINT(performance-no-int-to-ptr): see above
}

// The offset of a position; one before the text is as one behind it.
std::uint32_t offset_of_position(const bifun_string& text, std::int32_t position) {
    const std::uint32_t total = text.length + text.trailing_blanks;
    return static_cast<std::uint32_t>(position) - (position > 0 ? 1 : 0) + (position < 0 ? total : 0);
}

bool is_usual_substr(const text_operations& texts, const bifun_string& text, std::int32_t /*position*/, std::int32_t length) {
    return (static_cast<std::uint32_t>(is_told_by_record(texts, text)) & static_cast<std::uint32_t>(length >= 0)) != 0;
}
void substr_of_ascii(const text_operations& /*texts*/, const bifun_string& text, std::int32_t position, std::int32_t length,
                     bifun_string& part) {
    part = range_of_ascii(text, offset_of_position(text, position), static_cast<std::uint32_t>(length));
}

bool is_usual_part(const text_operations& texts, const bifun_string& text, std::int32_t /*number*/) {
    return is_told_by_record(texts, text);
}
void end_of_ascii(const text_operations& /*texts*/, const bifun_string& text, std::int32_t position, bifun_string& part) {
    part = range_of_ascii(text, offset_of_position(text, position), UINT32_MAX);
}
void left_of_ascii(const text_operations& /*texts*/, const bifun_string& text, std::int32_t count, bifun_string& part) {
    part = range_of_ascii(text, 0, static_cast<std::uint32_t>(count));
}
void right_of_ascii(const text_operations& /*texts*/, const bifun_string& text, std::int32_t count, bifun_string& part) {
    const std::uint32_t total = text.length + text.trailing_blanks;
    const std::uint32_t kept = std::min(static_cast<std::uint32_t>(count), total);
    part = range_of_ascii(text, total - kept, kept);
}

// All blanks of a value of which stored bytes remain are the result's.
void substrb_of_ascii(const text_operations& texts, const bifun_string& text, std::int32_t position, std::int32_t length,
                      bifun_string& part) {
    bifun_string characters;
    substr_of_ascii(texts, text, position, length, characters);
    part = {characters.length, characters.length != 0 ? text.trailing_blanks : characters.trailing_blanks, characters.data};
}
void end_in_bytes_of_ascii(const text_operations& texts, const bifun_string& text, std::int32_t position, bifun_string& part) {
    substrb_of_ascii(texts, text, position, INT32_MAX, part);
}

// ---- of any text ----

value_or_null substr(const text_operations& texts, const bifun_string& text, std::int32_t position, std::int32_t length,
                     bifun_string& part) {
    return substring(texts, text, {position, length}, part);
}

// The others have no length that can be negative, so that nothing becomes NULL.

void substr_to_end(const text_operations& texts, const bifun_string& text, std::int32_t position, bifun_string& part) {
    (void)substring(texts, text, {position, to_the_end}, part);
}

void left(const text_operations& texts, const bifun_string& text, std::int32_t count, bifun_string& part) {
    (void)substring(texts, text, {1, count}, part);
}

void right(const text_operations& texts, const bifun_string& text, std::int32_t count, bifun_string& part) {
    (void)substring(texts, text, {count == 0 ? 1 : -std::int64_t{count}, count, true}, part);
}

void whole_text(const bifun_string& text, bifun_string& copy) { copy = text; }

// ---- SUBSTRB -----------------------------------------------------------------------------------------------------------

// Bytes `first` to `end` of the stored ones; those of characters that the range cuts become blanks.
void append_whole_characters(text_writer& part, const bifun_string& text, std::uint32_t first, std::uint32_t end) {
    const auto begins_character = [&](std::uint32_t offset) {
        return offset == text.length || zq_char_start(text.data, text.length, offset) != 0;
    };
    std::uint32_t whole_first = first;
    while (whole_first < end && !begins_character(whole_first)) {
        ++whole_first;
    }
    std::uint32_t whole_end = end;
    while (whole_end > whole_first && !begins_character(whole_end)) {
        --whole_end;
    }
    append(part, blank, whole_first - first);
    append(part, text.data + whole_first, whole_end - whole_first);
    append(part, blank, end - whole_end);
}

value_or_null substring_in_bytes(const text_operations& texts, const bifun_string& text, const wanted_range& wanted, column_space& space) {
    text_range range;
    const value_or_null placed = place_range(wanted, text.length, text.trailing_blanks, BIFUN_ARGUMENT_OUT_OF_DOMAIN, range);
    if (placed.outcome != BIFUN_OK) {
        return placed;
    }
    const auto first = static_cast<std::uint32_t>(range.start - 1);
    const auto stored = static_cast<std::uint32_t>(range.stored);
    const std::uint32_t blanks = stored == 0 ? range.blanks : text.trailing_blanks;
    // Single-byte characters up to the end of the range are not cut, whatever is behind.
    if (begins_with_single_bytes(texts, text, first + stored)) {
        return take_text(space, {stored, blanks, text.data + first});
    }
    text_writer part;
    const status made = make_room(space, stored, blanks, part);
    if (made == BIFUN_OK) {
        append_whole_characters(part, text, first, first + stored);
    }
    return made;
}

value_or_null substrb(const text_operations& texts, const bifun_string& text, std::int32_t position, std::int32_t length,
                      column_space& space) {
    return substring_in_bytes(texts, text, {position, length}, space);
}

status substrb_to_end(const text_operations& texts, const bifun_string& text, std::int32_t position, column_space& space) {
    return substring_in_bytes(texts, text, {position, to_the_end}, space).outcome;
}

// ---- batches -------------------------------------------------------------------------------------------------------------

template <class Position, class Length>
status substr_rows(batch_of<VARCHAR> batch, column_of<VARCHAR> text, Position position, Length length) {
    return usual_string_rows<is_usual_substr, substr_of_ascii, substr>(batch, texts_of(text), text, position, length);
}

template <class Position> status substr_rows(batch_of<VARCHAR> batch, column_of<VARCHAR> text, Position position) {
    return usual_string_rows<is_usual_part, end_of_ascii, substr_to_end>(batch, texts_of(text), text, position);
}

template <auto kernel_of_ascii, auto kernel> status end_of_text(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> count) {
    const auto [characters, present] = argument(count);
    return present && characters < 0 ? fail_batch(batch, BIFUN_ARGUMENT_OUT_OF_DOMAIN)
                                     : usual_string_rows<is_usual_part, kernel_of_ascii, kernel>(batch, texts_of(text), text, count);
}

} // namespace

status entry::bsubstr_avv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> position, constant_of<INT> length) {
    return substr_rows(batch, text, position, length);
}
status entry::bsubstr_ava_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> position, column_of<INT> length) {
    return substr_rows(batch, text, position, length);
}
status entry::bsubstr_aav_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, column_of<INT> position, constant_of<INT> length) {
    return substr_rows(batch, text, position, length);
}
status entry::bsubstr_aaa_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, column_of<INT> position, column_of<INT> length) {
    return substr_rows(batch, text, position, length);
}
status entry::bsubstr_def1_aa_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, column_of<INT> position) {
    return substr_rows(batch, text, position);
}
status entry::bsubstr_def1_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> position) {
    return substr_rows(batch, text, position);
}
status entry::bsubstr_def2_a_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text) { return string_rows<whole_text>(batch, text); }

status entry::bsubstrb_avv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> position, constant_of<INT> length) {
    return usual_string_rows<is_usual_substr, substrb_of_ascii, substrb>(batch, texts_of(text), text, position, length);
}
status entry::bsubstrb_def_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> position) {
    return usual_string_rows<is_usual_part, end_in_bytes_of_ascii, substrb_to_end>(batch, texts_of(text), text, position);
}

status entry::bleftstr_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> count) {
    return end_of_text<left_of_ascii, left>(batch, text, count);
}
status entry::brightstr_av_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<INT> count) {
    return end_of_text<right_of_ascii, right>(batch, text, count);
}

} // namespace bifun
