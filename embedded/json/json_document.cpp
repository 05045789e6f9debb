// SPDX-License-Identifier: Apache-2.0
// Parsing. The first pass, which finds where tokens begin and holds the text to be UTF-8, is the one of simdjson; the second is over what
// that has found. Its own second pass would make doubles of numbers, which then are not exact, and walking a document by its On Demand
// interface takes three times as long. What is called here, it calls itself between its two passes.
#include "embedded/json/json_document.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <simdjson.h>

#include "bop/frame/status.h"
#include "embedded/json/json_structure.h"
#include "embedded/memory/allocation.h"

namespace zqengine {

namespace {

bool reserve_closings(json_parser& parser, std::uint32_t count) {
    if (count <= parser.closing_capacity) {
        return true;
    }
    release(parser.closings, parser.closing_capacity * sizeof(std::uint32_t));
    parser.shape.token_count = 0;
    const std::uint64_t wanted = std::uint64_t{count} + count / 2 + 64;
    const std::uint64_t capacity = wanted < UINT32_MAX ? wanted : UINT32_MAX;
    parser.closings = static_cast<std::uint32_t*>(allocate(capacity * sizeof(std::uint32_t)));
    parser.closing_capacity = parser.closings == nullptr ? 0 : static_cast<std::uint32_t>(capacity);
    return parser.closings != nullptr;
}

std::int32_t reserve_structure(json_parser& parser, std::size_t length) {
    constexpr std::size_t smallest = 4096;
    constexpr std::size_t levels = 1; // of its second pass, which is not made
    if (parser.structure != nullptr && length <= parser.structure_capacity) {
        return BIFUN_OK;
    }
    const std::size_t capacity = std::min(std::max(length + length / 2, smallest), simdjson::SIMDJSON_MAXSIZE_BYTES);
    simdjson::error_code failure = simdjson::SUCCESS;
    if (parser.structure == nullptr) {
        std::unique_ptr<simdjson::internal::dom_parser_implementation> made;
        failure = simdjson::get_active_implementation()->create_dom_parser_implementation(capacity, levels, made);
        parser.structure = made.release();
    } else {
        failure = parser.structure->set_capacity(capacity);
    }
    parser.structure_capacity = failure == simdjson::SUCCESS ? capacity : 0;
    return failure == simdjson::SUCCESS ? BIFUN_OK : BIFUN_OUT_OF_MEMORY;
}

} // namespace

std::int32_t parse_document(const std::uint8_t* text, std::uint32_t length, json_parser& parser, json_document& document) {
    if (length == 0) {
        return JSON_INVALID_TEXT;
    }
    if (const std::int32_t reserved = reserve_structure(parser, length); reserved != BIFUN_OK) {
        return reserved;
    }
    simdjson::internal::dom_parser_implementation& structure = *parser.structure;
    const simdjson::error_code failure = structure.stage1(text, length, simdjson::stage1_mode::regular);
    if (failure != simdjson::SUCCESS) {
        return failure == simdjson::MEMALLOC ? std::int32_t{BIFUN_OUT_OF_MEMORY} : std::int32_t{JSON_INVALID_TEXT};
    }
    if (!reserve_closings(parser, structure.n_structural_indexes)) {
        return BIFUN_OUT_OF_MEMORY;
    }
    document = {.text = text,
                .length = length,
                .token_count = structure.n_structural_indexes,
                .places = structure.structural_indexes.get(),
                .closings = parser.closings,
                .has_backslash = std::memchr(text, '\\', length) != nullptr};
    return check_structure(document, parser.closings, parser.shape);
}

void release_parser(json_parser& parser) {
    release(parser.closings, parser.closing_capacity * sizeof(std::uint32_t));
    delete parser.structure;
    parser = {};
}

std::string_view source_of(const json_document& document, std::uint32_t token) {
    const char first = first_character(document, token);
    const std::uint32_t last = first == '{' || first == '[' ? document.closings[token] : token;
    std::uint32_t end = last + 1 < document.token_count ? document.places[last + 1] : document.length;
    while (is_json_space(static_cast<char>(document.text[end - 1]))) {
        --end;
    }
    const std::uint32_t begin = document.places[token];
    return {reinterpret_cast<const char*>(document.text) + begin, end - begin};
}

} // namespace zqengine
