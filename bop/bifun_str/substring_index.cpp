// SPDX-License-Identifier: Apache-2.0
// SUBSTRING_INDEX: the text before the n-th delimiter, or behind the n-th from the end. What it has of the value's trailing blanks is a
// count. Texts of single-byte characters are searched where they lie, and so are those of well-formed UTF-8 for a constant delimiter of
// ASCII. The search of others reverses what it searches backwards, so both texts are scratch copies then, with their blanks written out,
// made afresh for every row.

#include "bop/bifun.h"
#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/pattern_search.h"

namespace bifun {
namespace {

// The wanted text is the first `*result_length` bytes of `text` afterwards. Returns 0 or the status of the search.
status ifun_substring_index_low(bifun_environment* environment, bifun_memory_object* memory, std::uint8_t* text, std::uint32_t length,
                                std::uint8_t* delimiter, std::uint32_t delimiter_length, std::int32_t count, std::uint32_t* result_length) {
    const bool is_backward = count < 0;
    const std::uint32_t occurrence = is_backward ? 0U - static_cast<std::uint32_t>(count) : static_cast<std::uint32_t>(count);
    std::uint32_t position;
    std::uint32_t offset;
    *result_length = 0;
    const status searched = ifun_instr_low(environment, memory, text, length, delimiter, delimiter_length, is_backward ? -1 : 1, occurrence,
                                           &position, &offset);
    if (searched < BIFUN_OK) {
        return searched;
    }
    std::uint32_t kept = position == 0 ? length : offset;
    if (is_backward) {
        // What lies behind the delimiter is at the beginning now, reversed.
        kept = position == 0 ? length : length - offset - delimiter_length;
        if (kept != 0 && zq_mbsrev_ex(text, kept) == nullptr) {
            kept = 0;
        }
    }
    *result_length = kept;
    return BIFUN_OK;
}

[[gnu::noinline]] status copy_part_of_any_text(scratch& memory, const bifun_string& value, const bifun_string& separator, std::int32_t n,
                                               string_room& room) {
    const std::uint64_t length = full_length(value);
    const std::uint64_t separator_length = full_length(separator);
    bifun_string part{0, 0, reserve(memory, length + separator_length)};
    if (part.data == nullptr) {
        return BIFUN_OUT_OF_MEMORY;
    }
    std::uint8_t* const delimiter = part.data + length;
    write_full_text(part.data, value);
    write_full_text(delimiter, separator);
    std::uint32_t kept = 0;
    const status found = ifun_substring_index_low(memory.environment, memory.memory, part.data, static_cast<std::uint32_t>(length),
                                                  delimiter, static_cast<std::uint32_t>(separator_length), n, &kept);
    if (found < BIFUN_OK) {
        return found;
    }
    // The part begins or ends with the full text, which ends with the blanks.
    const std::uint32_t behind_stored = kept > value.length ? kept - value.length : 0;
    part.trailing_blanks = n < 0 ? std::min(kept, value.trailing_blanks) : behind_stored;
    part.length = kept - part.trailing_blanks;
    return copy_text(room, part);
}

// Whether the n-th place of the delimiter, in a text of single-byte characters, is found, and the offset of it. Places may overlap.
struct delimiter_place {
    bool is_found;
    std::uint32_t offset;
};

delimiter_place find_from_left(const bifun_string& text, const needle& delimiter, std::uint32_t n) {
    std::uint32_t offset = 0;
    for (;;) {
        const std::uint32_t place = find(delimiter, text.data + offset, text.length - offset);
        if (place == no_offset || --n == 0) {
            return {place != no_offset, offset + place};
        }
        offset += place + 1;
    }
}

delimiter_place find_from_right(const bifun_string& text, const needle& delimiter, std::uint32_t n) {
    for (std::int64_t offset = std::int64_t{text.length} - delimiter.length; offset >= 0; --offset) {
        if (text.data[offset] == delimiter.first && std::memcmp(text.data + offset, delimiter.bytes, delimiter.length) == 0 && --n == 0) {
            return {true, static_cast<std::uint32_t>(offset)};
        }
    }
    return {false, 0};
}

// The same for a text of at most 64 bytes, without a branch: the offset is 64 where there is none.
delimiter_place find_by_masks(const bifun_string& text, const needle& delimiter, std::int32_t n) {
    const std::uint64_t places = places_of_bytes(text_bytes<64>(text.data, text.length), delimiter, text.data);
    const std::uint32_t behind = n > 0 ? 0 : static_cast<std::uint32_t>(std::popcount(places)) + 1;
    const std::uint32_t before = behind + static_cast<std::uint32_t>(n) - 1; // wraps where there are fewer
    const auto offset = static_cast<std::uint32_t>(std::countr_zero(nth_bit(places, before)));
    return {offset < longest_masked, offset};
}

// The part where it lies, of a text of single-byte characters whose blanks are not searched.
bifun_string part_of_single_bytes(const bifun_string& text, const bifun_string& separator, std::int32_t n) {
    const needle delimiter = make_needle(separator.data, separator.length);
    const bool is_short = text.length <= longest_masked;
    if (n > 0) {
        const delimiter_place place =
            is_short ? find_by_masks(text, delimiter, n) : find_from_left(text, delimiter, static_cast<std::uint32_t>(n));
        return place.is_found ? bifun_string{place.offset, 0, text.data} : text;
    }
    const delimiter_place place =
        is_short ? find_by_masks(text, delimiter, n) : find_from_right(text, delimiter, 0U - static_cast<std::uint32_t>(n));
    const std::uint32_t first = place.is_found ? place.offset + delimiter.length : 0;
    return {text.length - first, text.trailing_blanks, text.data + first};
}

status substring_index(const text_operations& texts, const bifun_string& value, const bifun_string& separator, std::int32_t n,
                       scratch& memory, string_room& room) {
    if (n == 0 || is_empty(separator)) {
        return take_text(room, {0, 0, value.data});
    }
    const bool blanks_do_not_matter =
        separator.trailing_blanks == 0 && (value.trailing_blanks == 0 || separator.data[separator.length - 1] != blank);
    if (blanks_do_not_matter && separator.length <= longest_plain_pattern && has_single_bytes(of_any_text(texts), separator) &&
        has_single_bytes(texts, value)) {
        return take_text(room, part_of_single_bytes(value, separator, n));
    }
    return copy_part_of_any_text(memory, value, separator, n, room);
}

// ---- short texts between which and the delimiter no byte is in doubt ----

// A constant delimiter of ASCII: in well-formed UTF-8 no byte of another character is like one of its own.
struct ascii_delimiter {
    const bifun_column* column; // of the texts
    needle bytes;
    std::int32_t n;
    std::uint32_t searched_blanks; // a mask for trailing blanks: all bits where the delimiter may reach them
};

template <class HasValue>
void find_in_short_texts(const ascii_delimiter& delimiter, const bifun_string* texts, std::uint32_t count, HasValue has_value,
                         std::uint32_t* offsets) {
    for (std::uint32_t k = 0; k < count; ++k) {
        const bool is_searched = has_value(k) && texts[k].length <= longest_masked;
        offsets[k] = is_searched ? find_by_masks(texts[k], delimiter.bytes, delimiter.n).offset : longest_masked;
    }
}

// The offsets of the wanted places in the short texts of a block, as find_by_masks() gives them.
[[gnu::noinline]] void find_in_block_of_short_texts(const void* source, std::uint32_t first, std::uint32_t count, std::uint32_t* offsets) {
    const auto& delimiter = *static_cast<const ascii_delimiter*>(source);
    block_of<column_argument<bifun_string>, most_rows_per_block> room;
    const dense_rows<bifun_string> texts = room.rows({delimiter.column}, first, count);
    if (delimiter.column->no_nulls != 0) {
        find_in_short_texts(
            delimiter, texts.values, count, [](std::uint32_t /*k*/) { return true; }, offsets);
    } else {
        find_in_short_texts(
            delimiter, texts.values, count, [texts](std::uint32_t k) { return texts.has_value(k); }, offsets);
    }
}

bool is_usual_text(const text_operations& texts, const bifun_string& value, std::uint32_t /*offset*/, const ascii_delimiter& delimiter,
                   const bifun_string& /*separator*/, std::int32_t /*n*/, const scratch& /*memory*/) {
    const auto is_known = static_cast<std::uint32_t>(texts.known != known_texts::nothing);
    const auto is_short = static_cast<std::uint32_t>(value.length <= longest_masked);
    return (is_known & is_short & static_cast<std::uint32_t>((value.trailing_blanks & delimiter.searched_blanks) == 0)) != 0;
}

void usual_substring_index(const text_operations& /*texts*/, const bifun_string& value, std::uint32_t offset,
                           const ascii_delimiter& delimiter, const bifun_string& /*separator*/, std::int32_t /*n*/,
                           const scratch& /*memory*/, bifun_string& result) {
    const std::uint32_t if_found = 0U - static_cast<std::uint32_t>(offset < longest_masked);
    if (delimiter.n > 0) {
        result = {std::min(offset, value.length), value.trailing_blanks & ~if_found, value.data};
    } else {
        const std::uint32_t first = (offset + delimiter.bytes.length) & if_found;
        // As a number: a NULL row has garbage for an address.
        const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(value.data) + first;
        result = {value.length - first, value.trailing_blanks,
                  reinterpret_cast<std::uint8_t*>(address)}; // NOLINT(performance-no-int-to-ptr): see above
    }
}

status unusual_substring_index(const text_operations& texts, const bifun_string& value, std::uint32_t /*offset*/,
                               const ascii_delimiter& /*delimiter*/, const bifun_string& separator, std::int32_t n, scratch& memory,
                               string_room& room) {
    return substring_index(texts, value, separator, n, memory, room);
}

// ---- batches ----

status substring_index_rows(batch_of<VARCHAR> batch, column_of<VARCHAR> text, column_of<VARCHAR> delimiter, constant_of<INT> count) {
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& memory) {
        return string_rows<substring_index>(batch, texts_of(text), text, delimiter, count, shared(memory));
    });
}

status substring_index_rows(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> delimiter, constant_of<INT> count) {
    const auto separator = argument(delimiter);
    const auto n = argument(count);
    const bool is_usual_delimiter = separator.present && n.present && n.value != 0 && separator.value.length != 0 &&
                                    separator.value.length <= longest_plain_pattern && separator.value.trailing_blanks == 0 &&
                                    has_single_bytes(text_operations_of_engine(), separator.value);
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& memory) {
        if (!is_usual_delimiter) {
            return string_rows<substring_index>(batch, texts_of(text), text, delimiter, count, shared(memory));
        }
        const needle bytes = make_needle(separator.value.data, separator.value.length);
        const ascii_delimiter usual{text.column, bytes, n.value, bytes.last == blank ? ~0U : 0U};
        return usual_string_rows<is_usual_text, usual_substring_index, unusual_substring_index>(
            batch, texts_of(text), text, derived_argument<std::uint32_t>{&usual, find_in_block_of_short_texts}, fixed(usual), delimiter,
            count, shared(memory));
    });
}

} // namespace

status entry::bsubstr_index_avv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> delimiter,
                                    constant_of<INT> count) {
    return substring_index_rows(batch, text, delimiter, count);
}
status entry::bsubstr_index_aav_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, column_of<VARCHAR> delimiter,
                                    constant_of<INT> count) {
    return substring_index_rows(batch, text, delimiter, count);
}

} // namespace bifun
