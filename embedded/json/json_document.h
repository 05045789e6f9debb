// SPDX-License-Identifier: Apache-2.0
// A JSON document as a list of its values, in their order in the text.
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

// What lies in an array or object follows it, up to `next`: elements, or keys with a value behind each. Texts are those between the quotes
// of strings and keys, else with all that belongs to the value.
struct json_node {
    std::uint32_t begin;
    std::uint32_t end;  // behind the last byte
    std::uint32_t next; // the node behind this value
    std::uint8_t kind;  // of json_kind
    bool has_escapes;   // of strings
};

// The memory of a list, which grows to what is asked for and keeps what it has.
struct json_nodes {
    json_node* first;
    std::uint32_t capacity;
};

struct structure_finder {
    simdjson::internal::dom_parser_implementation* implementation; // null before the first document
    std::size_t capacity;                                          // the longest text it takes
};

struct json_document {
    const std::uint8_t* text;
    json_nodes nodes;
    structure_finder structure;
};

inline std::string_view text_of(const json_document& document, const json_node& node) {
    return {reinterpret_cast<const char*>(document.text) + node.begin, node.end - node.begin};
}

// Returns 0, JSON_INVALID_TEXT, JSON_TOO_DEEP or -503.
[[nodiscard]] std::int32_t parse_document(const std::uint8_t* text, std::uint32_t length, json_document& document);
void release_document(json_document& document);

// ---- strings ----

// Whether all escapes of a string are such: \u of surrogates stand in pairs.
[[nodiscard]] bool has_good_escapes(std::string_view text);

// Writes the characters of a string whose escapes are good; they have no more bytes than it. Returns what is behind the last.
char* write_characters(std::string_view text, char* out);

// The length of the number that a text begins with; 0 where it does not.
std::size_t json_number_length(std::string_view text);

// Whether the string, its escapes resolved, has these characters.
bool has_characters(std::string_view text, bool has_escapes, std::string_view characters);

} // namespace zqengine

#endif
