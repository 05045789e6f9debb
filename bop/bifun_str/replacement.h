// SPDX-License-Identifier: Apache-2.0
// REPLACE of one value: every occurrence of a pattern in its full text, from the left on and without overlaps, gives way to the full text
// of the replacement. Trailing blanks that no occurrence reaches stay a count. A pattern that has no counted blanks itself is looked for
// among the stored bytes only.
#ifndef BIFUN_STR_REPLACEMENT_H
#define BIFUN_STR_REPLACEMENT_H

#include "bop/bifun_str/row_search.h"

namespace bifun {

// On a server that does not distinguish case the search is for the upper case of both; the result has the texts as they are.
inline search_request request_of_replace() { return {folding_unless_case_sensitive(folding::upper), false, 1, 1}; }

// Bytes `from` to `end` of the full text.
inline void append_part(text_writer& text, const bifun_string& source, std::uint64_t from, std::uint64_t end) {
    if (end <= source.length) [[likely]] {
        append(text, source.data + from, static_cast<std::uint32_t>(end - from));
        return;
    }
    if (from < source.length) {
        append(text, source.data + from, static_cast<std::uint32_t>(source.length - from));
        from = source.length;
    }
    append(text, blank, static_cast<std::uint32_t>(end - from));
}

// `next(from)` gives the offset of the first occurrence of `length` bytes at or behind `from`, or no_offset.
template <class Next>
status replace_occurrences(const bifun_string& source, std::uint32_t length, const bifun_string& replacement, const Next& next,
                           string_room& room) {
    std::uint32_t end = 0;
    std::uint64_t occurrences = 0;
    for (std::uint32_t at = next(0); at != no_offset; at = next(end)) {
        ++occurrences;
        end = at + length;
    }
    if (occurrences == 0) {
        return take_text(room, source);
    }
    const std::uint32_t rebuilt = end < source.length ? source.length : end; // bytes of the full text; what is behind them is counted
    text_writer text;
    const status made = make_room(room, rebuilt - occurrences * length + occurrences * full_length(replacement),
                                  static_cast<std::uint32_t>(full_length(source) - rebuilt), text);
    if (made != BIFUN_OK || text.at == nullptr) {
        return made;
    }
    std::uint32_t done = 0;
    for (; occurrences != 0; --occurrences) {
        const std::uint32_t at = next(done);
        append_part(text, source, done, at);
        append_full_text(text, replacement);
        done = at + length;
    }
    append_part(text, source, done, rebuilt);
    return BIFUN_OK;
}

// ---- patterns that are compared byte by byte -----------------------------------------------------------------------------

// The places of the needle at which a character begins, as bits, in a text of at most 64 bytes.
inline std::uint64_t places_of(const text_operations& texts, const needle& sought, const bifun_string& source) {
    const text_bytes<64> bytes(source.data, source.length);
    std::uint64_t places = places_of_bytes(bytes, sought, source.data);
    // Of bytes that are characters anywhere nobody need ask whether one begins there.
    if (places == 0 || bytes_beyond_ascii(bytes) == 0 || (texts.utf8_is_unicode && sought.first < 0x80)) {
        return places;
    }
    for (std::uint64_t left = places; left != 0; left &= left - 1) {
        const auto place = static_cast<std::uint32_t>(std::countr_zero(left));
        if (zq_char_start(source.data, source.length, place) == 0) {
            places &= ~(std::uint64_t{1} << place);
        }
    }
    return places;
}

// Of places from the left on those that do not overlap.
inline std::uint64_t without_overlaps(std::uint64_t places, std::uint32_t length) {
    if (length == 1) {
        return places;
    }
    std::uint64_t kept = 0;
    while (places != 0) {
        const int first = std::countr_zero(places);
        kept |= std::uint64_t{1} << first;
        places &= ~(first_bits(length) << first);
    }
    return kept;
}

// A piece of a text that mostly is shorter than a block.
inline void append_piece(text_writer& text, const std::uint8_t* bytes, std::uint32_t length) {
    if (text.may_overrun && length <= block_length) [[likely]] {
        store_block(text.at, load_part_of_block(bytes, length));
        text.at += length;
    } else {
        append(text, bytes, length);
    }
}

// What `append_replacement` appends in place of `length` bytes at each of the places.
template <class Append>
void append_replaced(text_writer& text, const bifun_string& source, std::uint64_t places, std::uint32_t length,
                     const Append& append_replacement) {
    std::uint32_t done = 0;
    for (; places != 0; places &= places - 1) {
        const auto place = static_cast<std::uint32_t>(std::countr_zero(places));
        append_piece(text, source.data + done, place - done);
        append_replacement();
        done = place + length;
    }
    append(text, source.data + done, source.length - done);
}

inline status replace_in_short_text(const text_operations& texts, const bifun_string& source, const needle& sought,
                                    const bifun_string& replacement, string_room& room) {
    const std::uint64_t places = without_overlaps(places_of(texts, sought, source), sought.length);
    if (places == 0) {
        return take_text(room, source);
    }
    const auto occurrences = static_cast<std::uint64_t>(std::popcount(places));
    text_writer text;
    const status made =
        make_room(room, source.length - occurrences * sought.length + occurrences * full_length(replacement), source.trailing_blanks, text);
    if (made != BIFUN_OK || text.at == nullptr) {
        return made;
    }
    if (text.may_overrun && replacement.length <= block_length && replacement.trailing_blanks == 0) [[likely]] {
        const byte_block block = load_part_of_block(replacement.data, replacement.length);
        append_replaced(text, source, places, sought.length, [&] {
            store_block(text.at, block);
            text.at += replacement.length;
        });
    } else {
        append_replaced(text, source, places, sought.length, [&] { append_full_text(text, replacement); });
    }
    return BIFUN_OK;
}

// Whether a character begins at `place`. One begins at `start`, not behind it, which then comes as near as it can: engines may look at all
// bytes between the two, and from the beginning of the text these would be the square of its length.
inline bool is_start_behind(std::uint32_t& start, const bifun_string& source, std::uint32_t place) {
    std::uint32_t begin = place;
    while (begin != start && zq_char_start(source.data + start, source.length - start, begin - start) == 0) {
        --begin;
    }
    start = begin;
    return begin == place;
}

[[gnu::noinline]] inline status replace_in_long_text(bool places_are_characters, const bifun_string& source, needle sought,
                                                     const bifun_string& replacement, string_room& room) {
    std::uint32_t start = 0;
    const auto next = [&](std::uint32_t from) {
        start = from < start ? 0 : start;
        for (;;) {
            const std::uint32_t place = find(sought, source.data + from, source.length - from);
            if (place == no_offset || places_are_characters || is_start_behind(start, source, from + place)) {
                return place == no_offset ? no_offset : from + place;
            }
            from += place + 1;
        }
    };
    return replace_occurrences(source, sought.length, replacement, next, room);
}

// Whether bytes are all that matters: nothing is folded, and no trailing blank belongs to the pattern.
inline bool is_replaced_by_bytes(const text_operations& texts, const search_request& request, const bifun_string& pattern) {
    return texts.ascii_is_single_byte && request.is_plain() && pattern.trailing_blanks == 0 && pattern.length != 0 &&
           pattern.length <= longest_plain_pattern;
}

inline status replace_bytes(const text_operations& texts, const bifun_string& source, const needle& sought, const bifun_string& replacement,
                            string_room& room) {
    if (source.length <= longest_masked) [[likely]] {
        return replace_in_short_text(texts, source, sought, replacement, room);
    }
    const bool places_are_characters = (texts.utf8_is_unicode && sought.first < 0x80) || is_long_text_ascii(source.data, source.length);
    return replace_in_long_text(places_are_characters, source, sought, replacement, room);
}

// ---- patterns that are searched with tables --------------------------------------------------------------------------------

// `pattern_blanks` are those that the pattern has counted. -503.
[[gnu::noinline]] inline status replace_by_search(pattern_search& search, scratch& scratch, std::uint32_t pattern_blanks,
                                                  const bifun_string& source, const bifun_string& replacement, string_room& room) {
    const status prepared = make_tables(scratch.environment, scratch.memory, search);
    if (prepared < BIFUN_OK) {
        return prepared;
    }
    // A pattern that is not all blanks reaches less than its length into those of the source.
    const std::uint32_t farthest = search.is_blank ? source.trailing_blanks : std::min(source.trailing_blanks, search.pattern.length - 1);
    const std::uint32_t reached = pattern_blanks == 0 ? 0 : farthest;
    const bool is_copied = reached != 0 || search.request.fold != folding::none;
    const std::uint64_t length = std::uint64_t{source.length} + reached;
    const std::uint64_t positions_size = length * sizeof(std::uint32_t);
    std::uint8_t* const memory = length > UINT32_MAX ? nullptr : reserve(scratch, positions_size + (is_copied ? length : 0));
    if (memory == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    const auto text_length = static_cast<std::uint32_t>(length);
    auto* positions = reinterpret_cast<std::uint32_t*>(memory);
    const std::uint8_t* text = source.data;
    if (is_copied) {
        std::uint8_t* const copy = memory + positions_size;
        write_full_text(copy, {source.length, reached, source.data});
        fold_case(copy, text_length, search.request.fold);
        text = copy;
    }
    if (zq_mbstrlen_cposition_ex(text, text_length, positions) == text_length) {
        positions = nullptr; // characters of one byte
    }
    const auto next = [&](std::uint32_t from) {
        const std::uint32_t place = find_occurrence(search.pattern, text, text_length, positions, from, 1);
        return place == ZQ_NOT_FOUND ? no_offset : place;
    };
    return replace_occurrences(source, search.pattern.length, replacement, next, room);
}

// The pattern of one row, which has at least one byte or blank.
[[gnu::noinline]] inline status replace_by_row_search(row_search& search, bifun_string pattern, const bifun_string& source,
                                                      const bifun_string& replacement, string_room& room) {
    return with_prepared_row(search, pattern, [&](pattern_search& prepared) {
        return replace_by_search(prepared, search.text_scratch, pattern.trailing_blanks, source, replacement, room);
    });
}

inline status replace_row(const text_operations& texts, const bifun_string& source, const bifun_string& pattern,
                          const bifun_string& replacement, row_search& search, string_room& room) {
    if (is_replaced_by_bytes(texts, search.request, pattern)) [[likely]] {
        return replace_bytes(texts, source, make_needle(pattern.data, pattern.length), replacement, room);
    }
    return is_empty(pattern) ? take_text(room, source) : replace_by_row_search(search, pattern, source, replacement, room);
}

} // namespace bifun

#endif
