// SPDX-License-Identifier: Apache-2.0
// A JSON document as a list of its tokens, in their order in the text: brackets, colons, commas, strings and scalars.
#ifndef BIFUN_EMBEDDED_JSON_JSON_DOCUMENT_H
#define BIFUN_EMBEDDED_JSON_JSON_DOCUMENT_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "engine/json.h"

namespace simdjson::internal {
class dom_parser_implementation;
}

namespace zqengine {

// The lists belong to the parser. A value begins with one token, and what lies in an array or object follows it: elements, or keys with a
// colon and a value behind each; commas between them.
struct json_document {
    const std::uint8_t* text;
    std::uint32_t length;
    std::uint32_t token_count;
    const std::uint32_t* places;   // where each token begins
    const std::uint32_t* closings; // of a bracket that opens the token that closes it
    bool has_backslash;            // somewhere: without one no string has escapes
};

// What kinds of tokens a document has, one after the other. Those of a column often have one shape: brackets that belong together in one
// document do so in the next.
struct json_shape {
    static constexpr std::uint32_t longest = 256;

    std::uint32_t token_count; // 0: there is none
    std::uint64_t numbers[longest / 64];
    std::uint64_t words[longest / 64];
    std::uint8_t kinds[longest];
};

// Memory for one document at a time, which grows to what is asked for and is kept.
struct json_parser {
    simdjson::internal::dom_parser_implementation* structure; // null before the first document
    std::size_t structure_capacity;                           // the longest text it takes
    std::uint32_t* closings;
    std::uint32_t closing_capacity;
    json_shape shape;
};

// Returns 0, JSON_INVALID_TEXT, JSON_TOO_DEEP or -503. The document stays until the next one.
[[nodiscard]] std::int32_t parse_document(const std::uint8_t* text, std::uint32_t length, json_parser& parser, json_document& document);
void release_parser(json_parser& parser);

inline bool is_json_space(char character) { return character == ' ' || character == '\n' || character == '\t' || character == '\r'; }

inline char first_character(const json_document& document, std::uint32_t token) {
    return static_cast<char>(document.text[document.places[token]]);
}

// The token behind a value.
inline std::uint32_t behind_value(const json_document& document, std::uint32_t token) {
    const char first = first_character(document, token);
    return (first == '{' || first == '[' ? document.closings[token] : token) + 1;
}

// All that belongs to a value, a key or another token: the quotes of strings, too.
std::string_view source_of(const json_document& document, std::uint32_t token);

// Calls `visit` with the values of an array or the keys of an object, whose values are two tokens further, until it returns something else
// than 0. Returns what it has returned last.
template <class Visit> std::int32_t for_each_within(const json_document& document, std::uint32_t container, const Visit& visit) {
    const std::uint32_t end = document.closings[container];
    const std::uint32_t to_value = first_character(document, container) == '{' ? 2 : 0;
    for (std::uint32_t token = container + 1; token < end; token = behind_value(document, token + to_value) + 1) {
        if (const std::int32_t outcome = visit(token); outcome != 0) {
            return outcome;
        }
    }
    return 0;
}

} // namespace zqengine

#endif
