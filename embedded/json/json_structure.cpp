// SPDX-License-Identifier: Apache-2.0
// Documents differ from row to row, and a processor that has to guess what the next token is guesses wrong: that, and not the work, is the
// price of a pass that has a branch for each kind of token. So 64 tokens at a time are told by masks, a bit for each, which also tell
// whether each token may follow the one before. That does not depend on what the token is in but for commas, which have a key behind them in
// objects only; they are looked at bracket by bracket.
#include "embedded/json/json_structure.h"

#include <array>
#include <bit>
#include <cstring>

#include "bop/frame/status.h"
#include "embedded/json/json_numbers.h"
#include "embedded/json/json_strings.h"
#include "layouts/byte_block.h"

namespace zqengine {

namespace {

constexpr std::array<std::uint8_t, 256> make_scalar_ends() {
    std::array<std::uint8_t, 256> ends{};
    for (const char end : {' ', '\t', '\n', '\r', ',', ']', '}'}) {
        ends[static_cast<std::uint8_t>(end)] = 1;
    }
    return ends;
}
constexpr std::array<std::uint8_t, 256> ends_scalar = make_scalar_ends();

bool ends_there(const json_document& document, std::size_t at) { return at == document.length || ends_scalar[document.text[at]] != 0; }

bool is_number(const json_document& document, std::uint32_t at) {
    const std::string_view rest(reinterpret_cast<const char*>(document.text) + at, document.length - at);
    const std::size_t length = json_number_length(rest);
    return length != 0 && ends_there(document, at + length);
}

// true, false or null.
bool is_word(const json_document& document, std::uint32_t at) {
    if (document.length - at < 4) {
        return false;
    }
    const std::uint8_t* const word = document.text + at;
    const bool is_short = std::memcmp(word, "true", 4) == 0 || std::memcmp(word, "null", 4) == 0;
    const std::uint32_t length = is_short ? 4 : 5;
    return (is_short || (document.length - at >= 5 && std::memcmp(word, "false", 5) == 0)) && ends_there(document, at + length);
}

constexpr std::uint32_t part_length = 64;

// Tokens of a part, a bit for each: the first is the lowest.
struct token_masks {
    std::uint64_t strings;
    std::uint64_t colons;
    std::uint64_t commas;
    std::uint64_t objects;
    std::uint64_t arrays;
    std::uint64_t object_ends;
    std::uint64_t array_ends;
    std::uint64_t words;
};

// By their first characters; `characters` are as many as a part has.
token_masks classify(const std::uint8_t* characters) {
    token_masks masks{};
    for (std::uint32_t at = 0; at < part_length; at += bifun::block_length) {
        const bifun::byte_block block = bifun::load_block(characters + at);
        const auto add = [&](std::uint64_t& mask, bifun::byte_block where) { mask |= std::uint64_t{bifun::bits_of(where)} << at; };
        const auto where = [&](char character) { return bifun::where_equal(block, bifun::repeated(character)); };
        add(masks.strings, where('"'));
        add(masks.colons, where(':'));
        add(masks.commas, where(','));
        add(masks.objects, where('{'));
        add(masks.arrays, where('['));
        add(masks.object_ends, where('}'));
        add(masks.array_ends, where(']'));
        add(masks.words, where('t') | where('f') | where('n'));
    }
    return masks;
}

// What the last token of the part before was, in bit 0.
struct token_before {
    std::uint64_t is_key;
    std::uint64_t ends_value;
    std::uint64_t is_comma;
    std::uint64_t is_colon;
    std::uint64_t opens_object;
    std::uint64_t opens_array;
};

enum surroundings : std::uint8_t { in_nothing, in_array, in_object };

struct open_brackets {
    std::uint32_t depth;
    std::uint32_t tokens[JSON_MOST_LEVELS + 1];
    surroundings within[JSON_MOST_LEVELS + 1]; // the bracket
};

// Commas that are where they do not belong, in what is open.
std::uint64_t misplaced_commas(const open_brackets& open, std::uint64_t commas, std::uint64_t before_keys) {
    switch (open.within[open.depth]) {
    case in_object:
        return commas & ~before_keys;
    case in_array:
        return before_keys;
    case in_nothing:
        break;
    }
    return commas;
}

// The bits below one of a mask, and that one.
std::uint64_t up_to(std::uint64_t bit) { return bit | (bit - 1); }

// `first` is the first token of the part.
std::int32_t match_brackets(const token_masks& masks, std::uint64_t commas_before_keys, std::uint32_t first, open_brackets& open,
                            std::uint32_t* closings) {
    const std::uint64_t opening = masks.objects | masks.arrays;
    std::uint64_t left = ~std::uint64_t{0}; // tokens
    std::uint64_t brackets = opening | masks.object_ends | masks.array_ends;
    for (; brackets != 0; brackets &= brackets - 1) {
        const std::uint64_t bracket = brackets & -brackets;
        const std::uint64_t passed = left & up_to(bracket);
        left &= ~passed;
        if (misplaced_commas(open, masks.commas & passed, commas_before_keys & passed) != 0) {
            return JSON_INVALID_TEXT;
        }
        const std::uint32_t token = first + static_cast<std::uint32_t>(std::countr_zero(bracket));
        const surroundings kind = (bracket & (masks.objects | masks.object_ends)) != 0 ? in_object : in_array;
        if ((bracket & opening) != 0) {
            if (open.depth == JSON_MOST_LEVELS) {
                return JSON_TOO_DEEP;
            }
            ++open.depth;
            open.tokens[open.depth] = token;
            open.within[open.depth] = kind;
        } else {
            if (open.within[open.depth] != kind) {
                return JSON_INVALID_TEXT;
            }
            closings[open.tokens[open.depth]] = token;
            --open.depth;
        }
    }
    const bool good = misplaced_commas(open, masks.commas & left, commas_before_keys & left) == 0;
    return good ? std::int32_t{BIFUN_OK} : std::int32_t{JSON_INVALID_TEXT};
}

// Whether `is_such` is true of the places of all tokens of a mask.
template <bool (*is_such)(const json_document&, std::uint32_t)>
bool are_all(const json_document& document, std::uint32_t first, std::uint64_t tokens) {
    bool good = true;
    for (; tokens != 0; tokens &= tokens - 1) {
        good &= is_such(document, document.places[first + static_cast<std::uint32_t>(std::countr_zero(tokens))]);
    }
    return good;
}

std::int32_t check_part(const json_document& document, std::uint32_t first, token_before& before, open_brackets& open,
                        std::uint32_t* closings) {
    const std::uint32_t left = document.token_count - first;
    const std::uint32_t count = left < part_length ? left : part_length;
    constexpr std::uint32_t ahead = 2; // tokens of the next part tell whether the last one is a key or a comma before one
    std::uint8_t characters[part_length + ahead] = {};
    for (std::uint32_t i = 0; i < count; ++i) {
        characters[i] = document.text[document.places[first + i]];
    }
    for (std::uint32_t i = count; i < left && i < part_length + ahead; ++i) {
        characters[i] = document.text[document.places[first + i]];
    }
    const token_masks masks = classify(characters);
    const std::uint64_t all = ~std::uint64_t{0} >> (part_length - count);
    const auto followed_by = [](std::uint64_t mask, bool is_next) { return mask >> 1 | std::uint64_t{is_next} << (part_length - 1); };
    const auto behind = [](std::uint64_t mask, std::uint64_t is_before) { return mask << 1 | is_before; };
    const std::uint64_t keys = masks.strings & followed_by(masks.colons, characters[part_length] == ':');
    const std::uint64_t commas_before_keys =
        masks.commas & followed_by(keys, characters[part_length] == '"' && characters[part_length + 1] == ':');
    const std::uint64_t brackets = masks.objects | masks.arrays | masks.object_ends | masks.array_ends;
    const std::uint64_t scalars = all & ~(brackets | masks.strings | masks.colons | masks.commas);
    const std::uint64_t values = (masks.strings & ~keys) | scalars | masks.objects | masks.arrays;
    const std::uint64_t value_ends = (masks.strings & ~keys) | scalars | masks.object_ends | masks.array_ends;
    const std::uint64_t behind_comma = behind(masks.commas, before.is_comma);
    const std::uint64_t behind_object = behind(masks.objects, before.opens_object);
    const std::uint64_t behind_array = behind(masks.arrays, before.opens_array);
    const std::uint64_t behind_value = behind(value_ends, before.ends_value);
    const std::uint64_t misplaced = (masks.colons & ~behind(keys, before.is_key)) | (keys & ~(behind_object | behind_comma)) |
                                    (values & ~(behind(masks.colons, before.is_colon) | behind_comma | behind_array)) |
                                    (masks.commas & ~behind_value) | (masks.object_ends & ~(behind_value | behind_object)) |
                                    (masks.array_ends & ~(behind_value | behind_array));
    if (misplaced != 0 || !are_all<is_number>(document, first, scalars & ~masks.words) ||
        !are_all<is_word>(document, first, scalars & masks.words)) {
        return JSON_INVALID_TEXT;
    }
    const auto last_of = [&](std::uint64_t mask) { return mask >> (count - 1) & 1; };
    before = {.is_key = last_of(keys),
              .ends_value = last_of(value_ends),
              .is_comma = last_of(masks.commas),
              .is_colon = last_of(masks.colons),
              .opens_object = last_of(masks.objects),
              .opens_array = last_of(masks.arrays)};
    return match_brackets(masks, commas_before_keys, first, open, closings);
}

} // namespace

std::int32_t check_structure(const json_document& document, std::uint32_t* closings) {
    open_brackets open; // not cleared: most of it is not used
    open.depth = 0;
    open.within[0] = in_nothing;
    token_before before{};
    before.is_colon = 1; // a value has to come
    for (std::uint32_t first = 0; first < document.token_count; first += part_length) {
        if (const std::int32_t checked = check_part(document, first, before, open, closings); checked != BIFUN_OK) {
            return checked;
        }
    }
    const bool is_whole = before.ends_value != 0 && open.depth == 0;
    const std::string_view text(reinterpret_cast<const char*>(document.text), document.length);
    return is_whole && (!document.has_backslash || has_good_escapes(text)) ? std::int32_t{BIFUN_OK} : std::int32_t{JSON_INVALID_TEXT};
}

} // namespace zqengine
