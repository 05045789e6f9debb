// SPDX-License-Identifier: Apache-2.0
// What is known of all texts of a block at once. A column's texts mostly lie one behind the other, as they were stored: then one pass over
// their bytes tells what would take a look at each of them.
#ifndef BIFUN_STR_TEXT_BLOCKS_H
#define BIFUN_STR_TEXT_BLOCKS_H

#include <algorithm>

#include "bop/bifun_str/utf8_validation.h"
#include "bop/frame/arguments.h"
#include "bop/frame/byte_operations.h"
#include "bop/frame/statements.h"

namespace bifun {

enum class known_texts : std::uint8_t { nothing, ascii, utf8 };

// The stored bytes of a block's texts, where these lie one behind the other and are short; else none.
struct bytes_of_texts {
    const std::uint8_t* begin;
    const std::uint8_t* end;
};

// Reading all of long texts may take longer than what is wanted of them.
constexpr std::uint32_t longest_mean_of_texts = 64;

// Whether every text begins where the one before it ends. Meanwhile the texts come from memory for whoever reads them next: one stream of
// reads at a time would wait for each.
inline bool follow_each_other(const bifun_string* values, std::uint32_t count) {
    constexpr std::uint32_t group = 8;
    std::uintptr_t gaps = 0;
    const auto look = [&](std::uint32_t k) {
        gaps |=
            (reinterpret_cast<std::uintptr_t>(values[k].data) + values[k].length) ^ reinterpret_cast<std::uintptr_t>(values[k + 1].data);
    };
    std::uint32_t k = 0;
    for (; k + group < count; k += group) {
        __builtin_prefetch(values[k].data);
        __builtin_prefetch(values[k + group / 3].data);
        __builtin_prefetch(values[k + 2 * group / 3].data);
        for (std::uint32_t i = 0; i < group; ++i) {
            look(k + i);
        }
    }
    for (; k + 1 < count; ++k) {
        look(k);
    }
    return gaps == 0;
}

inline bytes_of_texts if_short(std::uint32_t count, const std::uint8_t* begin, const std::uint8_t* end) {
    const bool are_short = static_cast<std::uint64_t>(end - begin) <= std::uint64_t{count} * longest_mean_of_texts;
    return are_short ? bytes_of_texts{begin, end} : bytes_of_texts{nullptr, nullptr};
}

inline bytes_of_texts find_bytes_of_texts(const bifun_column& column, std::uint32_t first, std::uint32_t count) {
    if (column.selection != nullptr) {
        return {nullptr, nullptr};
    }
    const auto* const values = static_cast<const bifun_string*>(column.data->values) + first;
    const std::uint8_t* const flags = column.data->null_flags + first;
    const bool no_nulls = column.no_nulls != 0 || std::memchr(flags, 0, count) == nullptr;
    if (no_nulls && follow_each_other(values, count)) [[likely]] {
        return if_short(count, values[0].data, values[count - 1].data + values[count - 1].length);
    }
    // Texts that are NULL or empty may point anywhere.
    const std::uint8_t* begin = nullptr;
    const std::uint8_t* end = nullptr;
    for (std::uint32_t k = 0; k < count; ++k) {
        if ((!no_nulls && flags[k] == 0) || values[k].length == 0) {
            continue;
        }
        if (values[k].data != end) {
            if (end != nullptr) {
                return {nullptr, nullptr};
            }
            begin = values[k].data;
        }
        end = values[k].data + values[k].length;
    }
    return if_short(count, begin, end);
}

// What the column says of all its texts.
inline known_texts told_texts(const bifun_column& column, bool utf8_is_unicode) {
    if (!columns_tell_texts()) {
        return known_texts::nothing;
    }
    switch (reinterpret_cast<std::uintptr_t>(column.data->engine_word)) {
    case ZQ_TEXTS_ASCII:
        return known_texts::ascii;
    case ZQ_TEXTS_UTF8:
        return utf8_is_unicode ? known_texts::utf8 : known_texts::nothing;
    default:
        return known_texts::nothing;
    }
}

#if defined(BIFUN_WIDE_BYTES)

// Whether no text begins within a character: bytes that are well-formed as a whole then are so text by text.
inline bool begin_with_characters(const bifun_column& column, std::uint32_t first, std::uint32_t count) {
    const auto* const values = static_cast<const bifun_string*>(column.data->values) + first;
    const std::uint8_t* const flags = column.data->null_flags + first;
    std::uint32_t within = 0;
    for (std::uint32_t k = 0; k < count; ++k) {
        if ((column.no_nulls != 0 || flags[k] != 0) && values[k].length != 0) {
            within |= static_cast<std::uint32_t>((values[k].data[0] & 0xC0) == 0x80);
        }
    }
    return within == 0;
}

// What a look at the bytes adds to what the column says.
inline known_texts look_at_texts(bytes_of_texts bytes, const bifun_column& column, std::uint32_t first, std::uint32_t count,
                                 bool utf8_is_unicode, known_texts told) {
    const std::uint8_t* const beyond_ascii = skip_ascii(bytes.begin, bytes.end);
    if (beyond_ascii == bytes.end) {
        return known_texts::ascii;
    }
    if (told == known_texts::nothing && utf8_is_unicode && is_well_formed(beyond_ascii, bytes.end) &&
        begin_with_characters(column, first, count)) {
        return known_texts::utf8;
    }
    return told;
}

#else

inline known_texts look_at_texts(bytes_of_texts bytes, const bifun_column& /*column*/, std::uint32_t /*first*/, std::uint32_t /*count*/,
                                 bool /*utf8_is_unicode*/, known_texts told) {
    return is_long_text_ascii(bytes.begin, static_cast<std::uint32_t>(bytes.end - bytes.begin)) ? known_texts::ascii : told;
}

#endif

// Whether some texts, which stand for the block, are not ASCII.
inline bool shows_other_than_ascii(const bifun_column& column, std::uint32_t first, std::uint32_t count) {
    constexpr std::uint32_t looks = 4;
    const auto* const values = static_cast<const bifun_string*>(column.data->values);
    for (std::uint32_t i = 0; i < std::min(looks, count); ++i) {
        const std::uint32_t k = first + i * (count - 1) / (looks - 1);
        const std::uint32_t row = column.selection != nullptr ? column.selection[k] : k;
        if ((column.no_nulls != 0 || column.data->null_flags[row] != 0) &&
            !begins_with_ascii(values[row].data, std::min(values[row].length, longest_masked))) {
            return true;
        }
    }
    return false;
}

// Of a single row: a look at its text, if it is short, without what a block takes.
inline known_texts know_text(const bifun_column& column, std::uint32_t row, known_texts told) {
    const bifun_string& text = static_cast<const bifun_string*>(column.data->values)[row];
    const bool has_value = column.no_nulls != 0 || column.data->null_flags[row] != 0;
    return has_value && text.length <= longest_masked && is_ascii(text.data, text.length) ? known_texts::ascii : told;
}

inline known_texts know_texts(const bifun_column& column, std::uint32_t first, std::uint32_t count, bool utf8_is_unicode) {
    const known_texts told = told_texts(column, utf8_is_unicode);
    if (count == 1 && column.selection == nullptr) {
        return told == known_texts::ascii ? told : know_text(column, first, told);
    }
    if (told == known_texts::ascii || (told == known_texts::utf8 && shows_other_than_ascii(column, first, count))) {
        return told;
    }
    // Even in a column of other texts a block may be of ASCII.
    const bytes_of_texts bytes = find_bytes_of_texts(column, first, count);
    return bytes.begin == nullptr ? told : look_at_texts(bytes, column, first, count, utf8_is_unicode, told);
}

// ---- where a pattern is in the texts of a block ----

struct searched_column {
    const bifun_column* column;
    needle sought;
};

struct needle_ends {
    std::uint8_t first;
    std::uint8_t last;
    std::uint32_t distance;
};

// Where the needle, of at most 64 bytes, may be: the places of its first byte that have its last one behind them, as bits; all bits for a
// text of more than 64 bytes.
inline std::uint64_t places_of_ends(needle_ends ends, const bifun_string& text) {
    if (text.length > longest_masked) [[unlikely]] {
        return ~std::uint64_t{0};
    }
    const text_bytes<64> bytes(text.data, text.length);
    return equal_bytes(bytes, ends.first) & equal_bytes(bytes, ends.last) >> ends.distance;
}

// The offset of the first of such places. Called, so that a loop around it keeps what it compares with in registers.
[[gnu::noinline]] inline std::uint32_t first_of_places(const needle& sought, const bifun_string& text, std::uint64_t places) {
    return text.length > longest_masked ? find_in_long_text(sought, text.data, text.length) : first_match(sought, text.data, places);
}

template <class HasValue>
void find_in_texts(const needle& sought, const bifun_string* texts, std::uint32_t count, HasValue has_value, std::uint32_t* offsets) {
    const needle_ends ends{sought.first, sought.last, sought.length - 1};
    if (sought.length <= 2) {
        // What has both ends is the needle: no branch depends on where it is.
        for (std::uint32_t k = 0; k < count; ++k) {
            const std::uint64_t places = has_value(k) ? places_of_ends(ends, texts[k]) : 0;
            const auto place = static_cast<std::uint32_t>(std::countr_zero(places));
            offsets[k] = places != 0 ? place : no_offset;
            if (has_value(k) && texts[k].length > longest_masked) [[unlikely]] {
                offsets[k] = first_of_places(sought, texts[k], places);
            }
        }
        return;
    }
    for (std::uint32_t k = 0; k < count; ++k) {
        const std::uint64_t places = has_value(k) ? places_of_ends(ends, texts[k]) : 0;
        offsets[k] = places != 0 ? first_of_places(sought, texts[k], places) : no_offset;
    }
}

[[gnu::noinline]] inline void find_in_block(const void* source, std::uint32_t first, std::uint32_t count, std::uint32_t* offsets) {
    const auto& searched = *static_cast<const searched_column*>(source);
    block_of<column_argument<bifun_string>, most_rows_per_block> room;
    const dense_rows<bifun_string> texts = room.rows({searched.column}, first, count);
    if (searched.column->no_nulls != 0 || std::memchr(texts.null_flags, 0, count) == nullptr) {
        find_in_texts(
            searched.sought, texts.values, count, [](std::uint32_t /*k*/) { return true; }, offsets);
    } else {
        find_in_texts(
            searched.sought, texts.values, count, [texts](std::uint32_t k) { return texts.has_value(k); }, offsets);
    }
}

// The offset of the first place of the needle, of at most 64 bytes, in each text, or no_offset, as for NULL.
inline derived_argument<std::uint32_t> first_places(const searched_column& searched) { return {&searched, find_in_block}; }

} // namespace bifun

#endif
