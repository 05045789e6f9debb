// SPDX-License-Identifier: Apache-2.0
// TRANSLATE: every character of the from-set in a text becomes the character of the to-set in its place, or none where that set is shorter.
// Trailing blanks belong to the sets, and those of a text are translated where the blank is in the from-set.

#include "bop/bifun.h"
#include "bop/bifun_str/entry_points.h"
#include "bop/bifun_str/text.h"

namespace bifun {
namespace {

// What becomes of a character.
struct translation {
    const std::uint8_t* bytes;
    std::uint32_t length; // 0: it is left out
};

constexpr std::uint32_t byte_values = 256;
constexpr std::uint32_t no_character = UINT32_MAX;
constexpr std::uint32_t most_pairs = 24; // for more a table is faster

struct character_set {
    std::uint32_t count;
    std::uint32_t* lengths;
    std::uint8_t** starts;
};

struct translations {
    // The characters of the from-set by their last byte, in which those of a script differ most: the first of each list, and the next one
    // of the same list.
    std::uint32_t first[byte_values];
    std::uint32_t* next;
    character_set from;
    character_set to;

    bool from_is_ascii;

    // Where the from-set is ASCII and the to-set of single bytes: what becomes of each byte, and which bytes are left out.
    bool is_of_bytes;
    bool leaves_out;
    std::uint8_t byte[byte_values];
    bool is_left_out[byte_values];
    std::uint32_t pair_count; // of few that change and none that is left out; else 0, or there are none
    byte_pair pairs[most_pairs];

    bool blanks_stay; // the blank is not in the from-set, or becomes itself
    translation of_blank;
};

translation translated(const translations& by, const std::uint8_t* character, std::uint32_t length) {
    for (std::uint32_t i = by.first[character[length - 1]]; i != no_character; i = by.next[i]) {
        if (by.from.lengths[i] == length && std::memcmp(by.from.starts[i], character, length) == 0) {
            return i < by.to.count ? translation{by.to.starts[i], by.to.lengths[i]} : translation{nullptr, 0};
        }
    }
    return {character, length};
}

// ---- text by text ------------------------------------------------------------------------------------------------------------

// Calls `body` with what becomes of each character of the stored bytes.
template <class Body>
void for_each_translation(const text_operations& texts, const translations& by, const bifun_string& text, const Body& body) {
    const bool bytes_are_characters = has_single_bytes(texts, text) || (texts.utf8_is_unicode && by.from_is_ascii);
    for (std::uint32_t offset = 0; offset < text.length;) {
        const std::uint8_t* const character = text.data + offset;
        const std::uint32_t length = bytes_are_characters ? 1 : zq_mbsinc_ex(character, text.length - offset);
        body(translated(by, character, length));
        offset += length;
    }
}

[[gnu::noinline]] status translate_characters(const text_operations& texts, const translations& by, const bifun_string& text,
                                              string_room& room) {
    const std::uint64_t written_blanks = by.blanks_stay ? 0 : text.trailing_blanks;
    std::uint64_t length = written_blanks * by.of_blank.length;
    for_each_translation(texts, by, text, [&](const translation& to) { length += to.length; });
    text_writer result;
    const status made = make_room(room, length, by.blanks_stay ? text.trailing_blanks : 0, result);
    if (made != BIFUN_OK || length == 0) {
        return made;
    }
    for_each_translation(texts, by, text, [&](const translation& to) { append(result, to.bytes, to.length); });
    for (std::uint64_t i = 0; i < written_blanks && by.of_blank.length != 0; ++i) {
        append(result, by.of_blank.bytes, by.of_blank.length);
    }
    return BIFUN_OK;
}

void translate_all_bytes(const std::uint8_t* __restrict byte, const std::uint8_t* from, std::uint8_t* __restrict to, std::uint32_t length) {
    for (std::uint32_t i = 0; i < length; ++i) {
        to[i] = byte[from[i]];
    }
}

void translate_kept_bytes(const translations& by, const std::uint8_t* from, std::uint8_t* to, std::uint32_t length) {
    const std::uint8_t* const end = from + length;
    for (; from != end; ++from) {
        if (!by.is_left_out[*from]) {
            *to++ = by.byte[*from];
        }
    }
}

status translate_bytes(const translations& by, const bifun_string& text, string_room& room) {
    std::uint32_t length = text.length;
    if (by.leaves_out) {
        for (std::uint32_t i = 0; i < text.length; ++i) {
            length -= by.is_left_out[text.data[i]] ? 1 : 0;
        }
    }
    text_writer result;
    const status made = make_room(room, length, text.trailing_blanks, result);
    if (result.may_overrun && length <= copy_room && by.pair_count != 0) [[likely]] {
        translate_into_room(result.at, text.data, length, by.pairs, by.pair_count);
    } else if (made == BIFUN_OK && length != 0) {
        by.leaves_out ? translate_kept_bytes(by, text.data, result.at, text.length)
                      : translate_all_bytes(by.byte, text.data, result.at, text.length);
    }
    return made;
}

using translations_of_batch = const translations*;

status translate(const text_operations& texts, const bifun_string& text, const translations_of_batch& by, string_room& room) {
    const bool bytes_are_characters = texts.utf8_is_unicode || has_single_bytes(texts, text);
    return by->is_of_bytes && bytes_are_characters && (by->blanks_stay || text.trailing_blanks == 0)
               ? translate_bytes(*by, text, room)
               : translate_characters(texts, *by, text, room);
}

// ---- once for a batch ----------------------------------------------------------------------------------------------------------

bool are_single_bytes(const character_set& set) {
    std::uint32_t longest = 1;
    for (std::uint32_t i = 0; i < set.count; ++i) {
        longest = std::max(longest, set.lengths[i]);
    }
    return longest == 1;
}

bool is_ascii_set(const character_set& set) {
    std::uint32_t bits = 0;
    for (std::uint32_t i = 0; i < set.count; ++i) {
        bits |= *set.starts[i];
    }
    return bits < 0x80;
}

// The bytes that change: how many, or 0 where they are too many.
std::uint32_t find_pairs(const std::uint8_t* byte, byte_pair* pairs) {
    std::uint32_t count = 0;
    for (std::uint32_t i = 0; i < byte_values; ++i) {
        if (byte[i] == i) {
            continue;
        }
        if (count == most_pairs) {
            return 0;
        }
        pairs[count++] = {static_cast<std::uint8_t>(i), byte[i]};
    }
    return count;
}

void fill_translations(translations& by) {
    std::memset(by.first, 0xFF, sizeof by.first);     // no_character
    for (std::uint32_t i = by.from.count; i-- > 0;) { // the first of several counts, so it has to be found first
        std::uint32_t& first = by.first[by.from.starts[i][by.from.lengths[i] - 1]];
        by.next[i] = first;
        first = i;
    }
    by.from_is_ascii = zq_translate_from_str_has_mb(by.from.lengths, by.from.count) == 0 && is_ascii_set(by.from);
    by.is_of_bytes = by.from_is_ascii && are_single_bytes(by.to);
    by.leaves_out = by.to.count < by.from.count;
    if (by.is_of_bytes) {
        for (std::uint32_t i = 0; i < byte_values; ++i) {
            const auto byte = static_cast<std::uint8_t>(i);
            const translation to = translated(by, &byte, 1);
            by.is_left_out[i] = to.length == 0;
            by.byte[i] = to.length == 0 ? byte : *to.bytes;
        }
    }
    by.pair_count = by.is_of_bytes && !by.leaves_out ? find_pairs(by.byte, by.pairs) : 0;
    by.of_blank = translated(by, &blank, 1);
    by.blanks_stay = by.of_blank.length == 1 && *by.of_blank.bytes == blank;
}

// Calls `body` with the characters of a set's full text. Returns its status, or -503.
template <class Body> status with_character_set(const batch& batch, const bifun_string& set, const Body& body) {
    return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& scratch) -> status {
        const std::uint64_t length = full_length(set);
        std::uint8_t* const bytes = length > INT32_MAX ? nullptr : reserve(scratch, length);
        if (bytes == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        write_full_text(bytes, set);
        character_set characters{};
        status outcome = zq_gather_char_info(batch.environment, batch.memory, bytes, static_cast<std::int32_t>(length), &characters.count,
                                             &characters.lengths, &characters.starts);
        if (outcome != BIFUN_OK) {
            return outcome;
        }
        if (characters.count != 0) {
            // The end may cut the last one off.
            std::uint32_t& last = characters.lengths[characters.count - 1];
            last = std::min(last, static_cast<std::uint32_t>(bytes + length - characters.starts[characters.count - 1]));
        }
        outcome = body(characters);
        release(batch.environment, batch.memory, characters.lengths);
        release(batch.environment, batch.memory, characters.starts);
        return outcome;
    });
}

} // namespace

status entry::btranslate_avv_str(batch_of<VARCHAR> batch, column_of<VARCHAR> text, constant_of<VARCHAR> from, constant_of<VARCHAR> to) {
    const auto from_set = argument(from);
    const auto to_set = argument(to);
    if (!from_set.present || !to_set.present) {
        return null_rows(batch);
    }
    status made = BIFUN_OUT_OF_MEMORY; // of the sets
    const status outcome = with_character_set(batch, from_set.value, [&](const character_set& from_characters) {
        return with_character_set(batch, to_set.value, [&](const character_set& to_characters) {
            return with_scratch(batch.environment, batch.memory, string_source_file, [&](scratch& scratch) -> status {
                translations by;
                by.from = from_characters;
                by.to = to_characters;
                by.next = reinterpret_cast<std::uint32_t*>(reserve(scratch, std::uint64_t{by.from.count} * sizeof(std::uint32_t)));
                if (by.next == nullptr) {
                    return BIFUN_OUT_OF_MEMORY;
                }
                made = BIFUN_OK;
                fill_translations(by);
                const constant_argument prepared{translations_of_batch{&by}, true};
                return string_rows<translate>(batch, texts_of(text), text, prepared);
            });
        });
    });
    return made < BIFUN_OK ? fail_batch(batch, outcome) : outcome;
}

} // namespace bifun
