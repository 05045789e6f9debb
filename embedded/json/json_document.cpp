// SPDX-License-Identifier: Apache-2.0
// Parsing. The first pass, which finds where strings, scalars and the characters between them begin and holds the text to be UTF-8, is the
// one of simdjson; the second is over what that has found. Its own second pass would make doubles of numbers, which then are not exact, and
// walking a document by its On Demand interface takes three times as long. What is called here, it calls itself between its two passes.
#include "embedded/json/json_document.h"

#include <cstring>
#include <memory>

#include <simdjson.h>

#include "bop/frame/status.h"
#include "embedded/memory/allocation.h"

namespace zqengine {

namespace {

bool is_digit(char character) { return character >= '0' && character <= '9'; }

// ---- the second pass ---------------------------------------------------------------------------------------------

// Colons and commas are read together with what stands before them.
enum class expected : std::uint8_t { value, value_or_end, key, key_or_end, end, nothing };

struct open_value {
    std::uint32_t node;
    bool is_object;
};

struct second_pass {
    const char* text;
    std::uint32_t length;
    bool has_backslash; // somewhere: most texts have none, and no string is searched then
    json_node* nodes;
    std::uint32_t node_count;
    std::uint32_t depth;
    open_value open[JSON_MOST_LEVELS];
};

// `next` is the next place that the first pass has found, before which the string ends, perhaps with white space between.
bool add_string(second_pass& pass, std::uint32_t at, std::uint32_t next) {
    std::uint32_t end = next - 1;
    while (pass.text[end] != '"') {
        --end;
    }
    const std::string_view characters(pass.text + at + 1, end - at - 1);
    const bool has_escapes = pass.has_backslash && characters.find('\\') != characters.npos;
    pass.nodes[pass.node_count] = {
        .begin = at + 1, .end = end, .next = pass.node_count + 1, .kind = JSON_STRING, .has_escapes = has_escapes};
    ++pass.node_count;
    return !has_escapes || has_good_escapes(characters);
}

bool ends_scalar(char character) {
    switch (character) {
    case ' ':
    case '\t':
    case '\n':
    case '\r':
    case ',':
    case ']':
    case '}':
        return true;
    default:
        return false;
    }
}

bool add_scalar(second_pass& pass, std::uint32_t at) {
    const std::string_view rest(pass.text + at, pass.length - at);
    std::size_t length = 0;
    std::uint8_t kind = JSON_NUMBER;
    const auto is_word = [&](std::string_view word, std::uint8_t of_word) {
        if (!rest.starts_with(word)) {
            return false;
        }
        kind = of_word;
        length = word.size();
        return true;
    };
    if (!is_word("true", JSON_TRUE) && !is_word("false", JSON_FALSE) && !is_word("null", JSON_NULL)) {
        length = json_number_length(rest);
    }
    if (length == 0 || (length < rest.size() && !ends_scalar(rest[length]))) {
        return false;
    }
    pass.nodes[pass.node_count] = {
        .begin = at, .end = at + static_cast<std::uint32_t>(length), .next = pass.node_count + 1, .kind = kind, .has_escapes = false};
    ++pass.node_count;
    return true;
}

std::int32_t read_structure(second_pass& pass, const std::uint32_t* places, std::uint32_t place_count) {
    expected expects = expected::value;
    std::uint32_t i = 0;
    const auto take_next = [&](char character) {
        const bool is_next = i + 1 < place_count && pass.text[places[i + 1]] == character;
        i += is_next ? 1 : 0;
        return is_next;
    };
    const auto behind_value = [&] {
        if (pass.depth == 0) {
            return expected::nothing;
        }
        return !take_next(',') ? expected::end : pass.open[pass.depth - 1].is_object ? expected::key : expected::value;
    };
    for (; i < place_count; ++i) {
        const std::uint32_t at = places[i];
        const char character = pass.text[at];
        const bool expects_value = expects == expected::value || expects == expected::value_or_end;
        switch (character) {
        case '{':
        case '[':
            if (!expects_value) {
                return JSON_INVALID_TEXT;
            }
            if (pass.depth == JSON_MOST_LEVELS) {
                return JSON_TOO_DEEP;
            }
            pass.open[pass.depth++] = {pass.node_count, character == '{'};
            pass.nodes[pass.node_count++] = {.begin = at,
                                             .end = 0,
                                             .next = 0,
                                             .kind = static_cast<std::uint8_t>(character == '{' ? JSON_OBJECT : JSON_ARRAY),
                                             .has_escapes = false};
            expects = character == '{' ? expected::key_or_end : expected::value_or_end;
            break;
        case '}':
        case ']': {
            const bool may_end = expects == expected::end || expects == expected::key_or_end || expects == expected::value_or_end;
            if (!may_end || pass.open[pass.depth - 1].is_object != (character == '}')) {
                return JSON_INVALID_TEXT;
            }
            json_node& ended = pass.nodes[pass.open[--pass.depth].node];
            ended.end = at + 1;
            ended.next = pass.node_count;
            expects = behind_value();
            break;
        }
        case '"': {
            const bool is_key = expects == expected::key || expects == expected::key_or_end;
            if ((!is_key && !expects_value) || !add_string(pass, at, i + 1 < place_count ? places[i + 1] : pass.length)) {
                return JSON_INVALID_TEXT;
            }
            if (is_key && !take_next(':')) {
                return JSON_INVALID_TEXT;
            }
            expects = is_key ? expected::value : behind_value();
            break;
        }
        default:
            if (!expects_value || !add_scalar(pass, at)) {
                return JSON_INVALID_TEXT;
            }
            expects = behind_value();
        }
    }
    return expects == expected::nothing ? std::int32_t{BIFUN_OK} : std::int32_t{JSON_INVALID_TEXT};
}

// ---- memory ------------------------------------------------------------------------------------------------------

void release_nodes(json_nodes& nodes) {
    release(nodes.first, nodes.capacity * sizeof(json_node));
    nodes = {};
}

bool reserve_nodes(json_nodes& nodes, std::uint32_t count) {
    if (count <= nodes.capacity) {
        return true;
    }
    release_nodes(nodes);
    const std::uint64_t wanted = std::uint64_t{count} + count / 2 + 64;
    const std::uint64_t capacity = wanted < UINT32_MAX ? wanted : UINT32_MAX;
    nodes.first = static_cast<json_node*>(allocate(capacity * sizeof(json_node)));
    nodes.capacity = nodes.first == nullptr ? 0 : static_cast<std::uint32_t>(capacity);
    return nodes.first != nullptr;
}

std::int32_t reserve_structure(structure_finder& structure, std::size_t length) {
    constexpr std::size_t smallest = 4096;
    constexpr std::size_t levels = 1; // of its second pass, which is not made
    if (structure.implementation != nullptr && length <= structure.capacity) {
        return BIFUN_OK;
    }
    const std::size_t capacity = length + length / 2 > smallest ? length + length / 2 : smallest;
    simdjson::error_code failure = simdjson::SUCCESS;
    if (structure.implementation == nullptr) {
        std::unique_ptr<simdjson::internal::dom_parser_implementation> made;
        failure = simdjson::get_active_implementation()->create_dom_parser_implementation(capacity, levels, made);
        structure.implementation = made.release();
    } else {
        failure = structure.implementation->set_capacity(capacity);
    }
    structure.capacity = failure == simdjson::SUCCESS ? capacity : 0;
    return failure == simdjson::SUCCESS ? BIFUN_OK : BIFUN_OUT_OF_MEMORY;
}

} // namespace

std::int32_t parse_document(const std::uint8_t* text, std::uint32_t length, json_document& document) {
    document.text = text;
    if (length == 0) {
        return JSON_INVALID_TEXT;
    }
    if (const std::int32_t reserved = reserve_structure(document.structure, length); reserved != BIFUN_OK) {
        return reserved;
    }
    simdjson::internal::dom_parser_implementation& structure = *document.structure.implementation;
    const simdjson::error_code failure = structure.stage1(text, length, simdjson::stage1_mode::regular);
    if (failure != simdjson::SUCCESS) {
        return failure == simdjson::MEMALLOC ? std::int32_t{BIFUN_OUT_OF_MEMORY} : std::int32_t{JSON_INVALID_TEXT};
    }
    if (!reserve_nodes(document.nodes, structure.n_structural_indexes)) {
        return BIFUN_OUT_OF_MEMORY;
    }
    second_pass pass; // not cleared: most of it is not used
    pass.text = reinterpret_cast<const char*>(text);
    pass.length = length;
    pass.has_backslash = std::memchr(text, '\\', length) != nullptr;
    pass.nodes = document.nodes.first;
    pass.node_count = 0;
    pass.depth = 0;
    return read_structure(pass, structure.structural_indexes.get(), structure.n_structural_indexes);
}

void release_document(json_document& document) {
    release_nodes(document.nodes);
    delete document.structure.implementation;
    document.structure = {};
}

// ---- strings -----------------------------------------------------------------------------------------------------

namespace {

constexpr std::uint32_t no_unit = ~0U;

// The UTF-16 unit of four hexadecimal digits.
std::uint32_t unit_at(std::string_view digits) {
    std::uint32_t unit = 0;
    if (digits.size() < 4) {
        return no_unit;
    }
    for (const char digit : digits.substr(0, 4)) {
        const char letter = static_cast<char>(digit | 0x20);
        if (!is_digit(digit) && (letter < 'a' || letter > 'f')) {
            return no_unit;
        }
        unit = unit * 16 + static_cast<std::uint32_t>(is_digit(digit) ? digit - '0' : letter - 'a' + 10);
    }
    return unit;
}

bool is_high_surrogate(std::uint32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool is_low_surrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// The character of an escape that begins at the backslash, and how long it is; length 0 where it is none.
struct escaped_character {
    std::uint32_t code;
    std::uint32_t length;
};

escaped_character read_escape(std::string_view text) {
    if (text.size() < 2) {
        return {0, 0};
    }
    constexpr std::string_view names = "\"\\/bfnrt";
    constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    if (const std::size_t named = names.find(text[1]); named != names.npos) {
        return {static_cast<std::uint8_t>(meanings[named]), 2};
    }
    const std::uint32_t unit = text[1] == 'u' ? unit_at(text.substr(2)) : no_unit;
    if (unit == no_unit || is_low_surrogate(unit)) {
        return {0, 0};
    }
    if (!is_high_surrogate(unit)) {
        return {unit, 6};
    }
    const std::uint32_t low = text.size() >= 12 && text[6] == '\\' && text[7] == 'u' ? unit_at(text.substr(8)) : no_unit;
    return is_low_surrogate(low) ? escaped_character{0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00), 12} : escaped_character{0, 0};
}

char* write_utf8(std::uint32_t code, char* out) {
    const auto put = [&](std::uint32_t byte) { *out++ = static_cast<char>(byte); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0 | code >> 6);
        put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        put(0xE0 | code >> 12);
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    } else {
        put(0xF0 | code >> 18);
        put(0x80 | (code >> 12 & 0x3F));
        put(0x80 | (code >> 6 & 0x3F));
        put(0x80 | (code & 0x3F));
    }
    return out;
}

} // namespace

bool has_good_escapes(std::string_view text) {
    for (std::size_t at = text.find('\\'); at != text.npos; at = text.find('\\', at)) {
        const std::uint32_t length = read_escape(text.substr(at)).length;
        if (length == 0) {
            return false;
        }
        at += length;
    }
    return true;
}

char* write_characters(std::string_view text, char* out) {
    while (true) {
        const std::size_t plain = text.find('\\');
        const std::string_view copied = text.substr(0, plain);
        if (!copied.empty()) {
            std::memcpy(out, copied.data(), copied.size());
            out += copied.size();
        }
        if (plain == text.npos) {
            return out;
        }
        const escaped_character escape = read_escape(text.substr(plain));
        out = write_utf8(escape.code, out);
        text.remove_prefix(plain + escape.length);
    }
}

bool has_characters(std::string_view text, bool has_escapes, std::string_view characters) {
    if (!has_escapes) {
        return text == characters;
    }
    while (true) {
        const std::size_t plain = text.find('\\');
        const std::string_view same = text.substr(0, plain);
        if (!characters.starts_with(same)) {
            return false;
        }
        characters.remove_prefix(same.size());
        if (plain == text.npos) {
            return characters.empty();
        }
        const escaped_character escape = read_escape(text.substr(plain));
        char bytes[4];
        const std::string_view character(bytes, static_cast<std::size_t>(write_utf8(escape.code, bytes) - bytes));
        if (!characters.starts_with(character)) {
            return false;
        }
        characters.remove_prefix(character.size());
        text.remove_prefix(plain + escape.length);
    }
}

std::size_t json_number_length(std::string_view text) {
    std::size_t at = 0;
    const auto character = [&] { return at < text.size() ? text[at] : '\0'; };
    const auto take_digits = [&] {
        const std::size_t first = at;
        while (is_digit(character())) {
            ++at;
        }
        return at != first;
    };
    at += character() == '-' ? 1 : 0;
    if (character() == '0') {
        ++at;
    } else if (!take_digits()) {
        return 0;
    }
    if (character() == '.') {
        ++at;
        if (!take_digits()) {
            return 0;
        }
    }
    if (character() == 'e' || character() == 'E') {
        ++at;
        at += character() == '+' || character() == '-' ? 1 : 0;
        if (!take_digits()) {
            return 0;
        }
    }
    return at;
}

} // namespace zqengine
