// SPDX-License-Identifier: Apache-2.0
// LENGTH and LENGTHB: characters or bytes of the stored text, with or without its trailing blanks. The length of an empty text is NULL, or
// 0 in the compatible mode for that.

#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/text.h"
#include "engine/large_objects.h"

namespace bifun {
namespace {

// A length that is no INT fails (-6102).
value_or_null length_of_text(std::uint64_t units, const value_or_null& of_empty, std::int32_t& length) {
    length = static_cast<std::int32_t>(units);
    if (units - 1 < INT32_MAX) [[likely]] {
        return {};
    }
    return units == 0 ? of_empty : value_or_null(BIFUN_NUMERIC_OVERFLOW);
}

template <class HasValue>
void count_well_formed(const text_operations& texts, const bifun_string* values, std::uint32_t count, HasValue has_value,
                       std::uint32_t* characters) {
    for (std::uint32_t k = 0;; ++k) {
        // A loop without a call in it.
        for (; k < count && (!has_value(k) || values[k].length <= longest_masked); ++k) {
            const bifun_string& value = values[k];
            characters[k] = has_value(k)
                                ? static_cast<std::uint32_t>(std::popcount(starts_of_well_formed({value.data, value.length}, value.length)))
                                : 0;
        }
        if (k == count) {
            return;
        }
        characters[k] = count_characters(texts, values[k]);
    }
}

// The characters of each stored text.
[[gnu::noinline]] void count_in_block(const void* source, std::uint32_t first, std::uint32_t count, std::uint32_t* characters) {
    const column_argument<bifun_string> text{static_cast<const bifun_column*>(source)};
    const text_operations texts = texts_of_block(source, first, count);
    block_of<column_argument<bifun_string>, most_rows_per_block> room;
    const dense_rows<bifun_string> rows = room.rows(text, first, count);
    const bool no_nulls = has_no_nulls(text) || std::memchr(rows.null_flags, 0, count) == nullptr;
    switch (texts.known) {
    case known_texts::ascii:
        for (std::uint32_t k = 0; k < count; ++k) {
            characters[k] = rows[k].length;
        }
        break;
    case known_texts::utf8:
        if (no_nulls) {
            count_well_formed(
                texts, rows.values, count, [](std::uint32_t /*k*/) { return true; }, characters);
        } else {
            count_well_formed(
                texts, rows.values, count, [rows](std::uint32_t k) { return rows.has_value(k); }, characters);
        }
        break;
    case known_texts::nothing:
        for (std::uint32_t k = 0; k < count; ++k) {
            characters[k] = no_nulls || rows.has_value(k) ? stored_characters(texts, rows[k]) : 0;
        }
        break;
    }
}

derived_argument<std::uint32_t> characters_in(column_of<VARCHAR> text) { return {text.column, count_in_block}; }

value_or_null length(const value_or_null& of_empty, const bifun_string& /*text*/, std::uint32_t stored, std::int32_t& characters) {
    return length_of_text(stored, of_empty, characters);
}

value_or_null length_space(const value_or_null& of_empty, const bifun_string& text, std::uint32_t stored, std::int32_t& characters) {
    return length_of_text(std::uint64_t{stored} + text.trailing_blanks, of_empty, characters);
}

// Neither empty nor anywhere near what is no INT.
bool is_usual(const value_or_null& /*of_empty*/, const bifun_string& text, std::uint32_t stored) {
    return (static_cast<std::uint32_t>(stored != 0) & static_cast<std::uint32_t>((stored | text.trailing_blanks) < 1U << 30)) != 0;
}
void usual_length(const value_or_null& /*of_empty*/, const bifun_string& /*text*/, std::uint32_t stored, std::int32_t& characters) {
    characters = static_cast<std::int32_t>(stored);
}
void usual_length_space(const value_or_null& /*of_empty*/, const bifun_string& text, std::uint32_t stored, std::int32_t& characters) {
    characters = static_cast<std::int32_t>(stored + text.trailing_blanks);
}

value_or_null lengthb(const value_or_null& of_empty, const bifun_string& text, std::int32_t& bytes) {
    return length_of_text(full_length(text), of_empty, bytes);
}

bool is_usual_size(const value_or_null& /*of_empty*/, const bifun_string& text) {
    const std::uint32_t either = text.length | text.trailing_blanks;
    return (static_cast<std::uint32_t>(either != 0) & static_cast<std::uint32_t>(either < 1U << 30)) != 0;
}
void usual_size(const value_or_null& /*of_empty*/, const bifun_string& text, std::int32_t& bytes) {
    bytes = static_cast<std::int32_t>(text.length + text.trailing_blanks);
}

using large_object = const bifun_large_object*;
using environment = bifun_environment*;

value_or_null lengthb_of_large_object(const environment& environment, const value_or_null& of_empty, const large_object& object,
                                      std::int64_t& bytes) {
    const status found = nblob_get_length(environment, object, &bytes);
    return found >= BIFUN_OK && bytes == 0 ? of_empty : value_or_null(found);
}

} // namespace

status entry::blength_a_str(batch_of<INT> batch, column_of<VARCHAR> text) {
    return set_usual_rows<is_usual, usual_length, length>(batch, fixed(length_of_empty()), text, characters_in(text));
}
status entry::blength_space_a_str(batch_of<INT> batch, column_of<VARCHAR> text) {
    return set_usual_rows<is_usual, usual_length_space, length_space>(batch, fixed(length_of_empty()), text, characters_in(text));
}
status entry::blengthb_a_str(batch_of<INT> batch, column_of<VARCHAR> text) {
    return set_usual_rows<is_usual_size, usual_size, lengthb>(batch, fixed(length_of_empty()), text);
}
status entry::blengthb_blob_a_str(batch_of<BIGINT> batch, column_of<BLOB> object) {
    return set_rows<lengthb_of_large_object>(batch, fixed(batch.environment), fixed(length_of_empty()), object);
}

} // namespace bifun
