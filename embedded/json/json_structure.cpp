// SPDX-License-Identifier: Apache-2.0
// Documents differ from row to row, and a processor that has to guess what the next token is guesses wrong: that, and not the work, is the
// price of a pass that has a branch for each kind of token. So 64 tokens at a time are told by masks, a bit for each, which also tell
// whether each token may follow the one before. That does not depend on what the token is in but for commas, which have a key behind them
// in objects only; they are looked at bracket by bracket. Of a document that has the kinds of tokens of the one before only scalars are
// left to be looked at.
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

// The first characters of 8 tokens.
std::uint64_t gather_word(const json_document& document, std::uint32_t first) {
    std::uint64_t characters = 0;
    for (std::uint32_t i = 0; i < 8; ++i) {
        characters |= std::uint64_t{document.text[document.places[first + i]]} << (8 * i);
    }
    return characters;
}

// Of fewer tokens, zeros behind the last one; in a register, as bytes in memory would have to be waited for.
std::uint64_t gather_rest(const json_document& document, std::uint32_t first, std::uint32_t end) {
    std::uint64_t characters = 0;
    for (std::uint32_t shift = 0; first < end; ++first, shift += 8) {
        characters |= std::uint64_t{document.text[document.places[first]]} << shift;
    }
    return characters;
}

// Of 16.
bifun::byte_block gather_block(const json_document& document, std::uint32_t first) {
    constexpr std::uint32_t half = bifun::block_length / 2;
    const std::uint32_t end = document.token_count;
    if (end - first >= bifun::block_length) {
        return bifun::block_of_words(gather_word(document, first), gather_word(document, first + half));
    }
    return end - first >= half ? bifun::block_of_words(gather_word(document, first), gather_rest(document, first + half, end))
                               : bifun::block_of_words(gather_rest(document, first, end), 0);
}

// The first characters of tokens, one in place of all that scalars of a kind may begin with, and of - . / that none begins with: what
// begins so is looked at in any case.
bifun::byte_block kinds_of(bifun::byte_block characters) {
    const auto where = [&](char character) { return bifun::where_equal(characters, bifun::repeated(character)); };
    const bifun::byte_block numbers = bifun::where_at_most(characters - bifun::repeated('-'), bifun::repeated('9' - '-'));
    const bifun::byte_block words = where('t') | where('f') | where('n');
    return (characters & ~(numbers | words)) | (numbers & bifun::repeated('0')) | (words & bifun::repeated('t'));
}

bool has_shape(const json_document& document, const json_shape& shape) {
    if (document.token_count != shape.token_count) {
        return false;
    }
    bifun::byte_block difference{};
    for (std::uint32_t at = 0; at < document.token_count; at += bifun::block_length) {
        difference |= kinds_of(gather_block(document, at)) ^ bifun::load_block(shape.kinds + at);
    }
    return (bifun::first_word(difference) | bifun::last_word(difference)) == 0;
}

token_masks classify(const json_document& document, std::uint32_t first, std::uint32_t count, json_shape& shape) {
    token_masks masks{};
    for (std::uint32_t at = 0; at < count; at += bifun::block_length) {
        const bifun::byte_block block = gather_block(document, first + at);
        if (first + at < json_shape::longest) {
            bifun::store_block(shape.kinds + first + at, kinds_of(block));
        }
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

bool are_scalars(const json_document& document, std::uint32_t first, std::uint64_t numbers, std::uint64_t words) {
    return are_all<is_number>(document, first, numbers) && are_all<is_word>(document, first, words);
}

std::int32_t check_part(const json_document& document, std::uint32_t first, token_before& before, open_brackets& open,
                        std::uint32_t* closings, json_shape& shape) {
    const std::uint32_t left = document.token_count - first;
    const std::uint32_t count = left < part_length ? left : part_length;
    const token_masks masks = classify(document, first, count, shape);
    // Tokens of the next part tell whether the last one is a key, or a comma before one.
    const auto is_ahead = [&](std::uint32_t further, char character) {
        return left > count + further && first_character(document, first + count + further) == character;
    };
    const std::uint64_t all = ~std::uint64_t{0} >> (part_length - count);
    const auto followed_by = [](std::uint64_t mask, bool is_next) { return mask >> 1 | std::uint64_t{is_next} << (part_length - 1); };
    const auto behind = [](std::uint64_t mask, std::uint64_t is_before) { return mask << 1 | is_before; };
    const std::uint64_t keys = masks.strings & followed_by(masks.colons, is_ahead(0, ':'));
    const std::uint64_t commas_before_keys = masks.commas & followed_by(keys, is_ahead(0, '"') && is_ahead(1, ':'));
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
    const std::uint64_t words = scalars & masks.words;
    const std::uint64_t numbers = scalars & ~words;
    if (misplaced != 0 || !are_scalars(document, first, numbers, words)) {
        return JSON_INVALID_TEXT;
    }
    if (first < json_shape::longest) {
        shape.numbers[first / part_length] = numbers;
        shape.words[first / part_length] = words;
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

std::int32_t check_tokens(const json_document& document, std::uint32_t* closings, json_shape& shape) {
    open_brackets open; // not cleared: most of it is not used
    open.depth = 0;
    open.within[0] = in_nothing;
    token_before before{};
    before.is_colon = 1; // a value has to come
    shape.token_count = 0;
    for (std::uint32_t first = 0; first < document.token_count; first += part_length) {
        if (const std::int32_t checked = check_part(document, first, before, open, closings, shape); checked != BIFUN_OK) {
            return checked;
        }
    }
    const bool is_whole = before.ends_value != 0 && open.depth == 0;
    shape.token_count = is_whole && document.token_count <= json_shape::longest ? document.token_count : 0;
    return is_whole ? std::int32_t{BIFUN_OK} : std::int32_t{JSON_INVALID_TEXT};
}

bool are_scalars(const json_document& document, const json_shape& shape) {
    bool good = true;
    for (std::uint32_t first = 0; first < shape.token_count; first += part_length) {
        good &= are_scalars(document, first, shape.numbers[first / part_length], shape.words[first / part_length]);
    }
    return good;
}

} // namespace

std::int32_t check_structure(const json_document& document, std::uint32_t* closings, json_shape& shape) {
    const std::int32_t checked = !has_shape(document, shape)    ? check_tokens(document, closings, shape)
                                 : are_scalars(document, shape) ? std::int32_t{BIFUN_OK}
                                                                : std::int32_t{JSON_INVALID_TEXT};
    const std::string_view text(reinterpret_cast<const char*>(document.text), document.length);
    return checked == BIFUN_OK && document.has_backslash && !has_good_escapes(text) ? std::int32_t{JSON_INVALID_TEXT} : checked;
}

} // namespace zqengine
