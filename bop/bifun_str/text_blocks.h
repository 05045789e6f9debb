// SPDX-License-Identifier: Apache-2.0
// What is known of all texts of a block at once. A column's texts mostly lie one behind the other, as they were stored: then one pass over
// their bytes tells what would take a look at each of them.
#ifndef BIFUN_STR_TEXT_BLOCKS_H
#define BIFUN_STR_TEXT_BLOCKS_H

#include <algorithm>

#include "bop/bifun_str/utf8_validation.h"
#include "bop/frame/arguments.h"
#include "bop/frame/byte_operations.h"

namespace bifun {

enum class known_texts : std::uint8_t { nothing, ascii, utf8 };

// The stored bytes of a block's texts, where these lie one behind the other and are short; else none.
struct bytes_of_texts {
    const std::uint8_t* begin;
    const std::uint8_t* end;
};

// Reading all of long texts may take longer than what is wanted of them.
constexpr std::uint32_t longest_mean_of_texts = 64;

// Whether every text begins where the one before it ends.
inline bool follow_each_other(const bifun_string* values, std::uint32_t count) {
    std::uintptr_t gaps = 0;
    for (std::uint32_t k = 0; k + 1 < count; ++k) {
        gaps |=
            (reinterpret_cast<std::uintptr_t>(values[k].data) + values[k].length) ^ reinterpret_cast<std::uintptr_t>(values[k + 1].data);
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

inline known_texts know_texts(const bifun_column& column, std::uint32_t first, std::uint32_t count, bool utf8_is_unicode) {
    const bytes_of_texts bytes = find_bytes_of_texts(column, first, count);
    if (bytes.begin == nullptr) {
        return known_texts::nothing;
    }
    const std::uint8_t* const beyond_ascii = skip_ascii(bytes.begin, bytes.end);
    if (beyond_ascii == bytes.end) {
        return known_texts::ascii;
    }
    return utf8_is_unicode && is_well_formed(beyond_ascii, bytes.end) && begin_with_characters(column, first, count) ? known_texts::utf8
                                                                                                                     : known_texts::nothing;
}

#else

inline known_texts know_texts(const bifun_column& column, std::uint32_t first, std::uint32_t count, bool /*utf8_is_unicode*/) {
    const bytes_of_texts bytes = find_bytes_of_texts(column, first, count);
    return bytes.begin != nullptr && is_long_text_ascii(bytes.begin, static_cast<std::uint32_t>(bytes.end - bytes.begin))
               ? known_texts::ascii
               : known_texts::nothing;
}

#endif

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

template <class HasValue, class Nowhere, class Somewhere>
void look_for(needle_ends ends, const bifun_string* texts, std::uint32_t count, HasValue has_value, Nowhere nowhere, Somewhere somewhere) {
    for (std::uint32_t k = 0;; ++k) {
        std::uint64_t places = 0;
        // A loop without a call in it: what is compared with stays in registers.
        for (; k < count; ++k) {
            if (!has_value(k)) {
                continue;
            }
            places = places_of_ends(ends, texts[k]);
            if (places != 0) {
                break;
            }
            nowhere(k, texts[k]);
        }
        if (k == count) {
            return;
        }
        somewhere(k, texts[k], places);
    }
}

// Calls `nowhere(k, value)` for rows that do not have the needle, of at most 64 bytes, and `somewhere(k, value, places)` for those that
// may, with the places_of_ends(). For NULLs neither is called. `somewhere` should be a call and `nowhere` none.
template <class Nowhere, class Somewhere>
void look_for(const searched_column& searched, std::uint32_t first, std::uint32_t count, Nowhere nowhere, Somewhere somewhere) {
    const needle_ends ends{searched.sought.first, searched.sought.last, searched.sought.length - 1};
    block_of<column_argument<bifun_string>, most_rows_per_block> room;
    const dense_rows<bifun_string> texts = room.rows({searched.column}, first, count);
    if (searched.column->no_nulls != 0 || std::memchr(texts.null_flags, 0, count) == nullptr) {
        look_for(
            ends, texts.values, count, [](std::uint32_t /*k*/) { return true; }, nowhere, somewhere);
    } else {
        look_for(
            ends, texts.values, count, [texts](std::uint32_t k) { return texts.has_value(k); }, nowhere, somewhere);
    }
}

// The offset of the first of such places.
inline std::uint32_t first_of_places(const needle& sought, const bifun_string& text, std::uint64_t places) {
    return text.length > longest_masked ? find_in_long_text(sought, text.data, text.length) : first_match(sought, text.data, places);
}

[[gnu::noinline]] inline void put_first_place(const searched_column& searched, const bifun_string& text, std::uint64_t places,
                                              std::uint32_t& offset) {
    offset = first_of_places(searched.sought, text, places);
}

[[gnu::noinline]] inline void find_in_block(const void* source, std::uint32_t first, std::uint32_t count, std::uint32_t* offsets) {
    const auto& searched = *static_cast<const searched_column*>(source);
    look_for(
        searched, first, count, [offsets](std::uint32_t k, const bifun_string& /*text*/) { offsets[k] = no_offset; },
        [&searched, offsets](std::uint32_t k, const bifun_string& text, std::uint64_t places) {
            put_first_place(searched, text, places, offsets[k]);
        });
}

// The offset of the first place of the needle in each text, or no_offset.
inline derived_argument<std::uint32_t> first_places(const searched_column& searched) { return {&searched, find_in_block}; }

} // namespace bifun

#endif
