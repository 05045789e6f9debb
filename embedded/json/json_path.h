// SPDX-License-Identifier: Apache-2.0
// SQL/JSON paths, parsed. docs/json.md describes the language.
#ifndef BIFUN_EMBEDDED_JSON_JSON_PATH_H
#define BIFUN_EMBEDDED_JSON_JSON_PATH_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "embedded/json/json_pattern.h"
#include "engine/json.h"

namespace zqengine {

// The methods are those that are written with parentheses behind.
enum class step_kind : std::uint8_t {
    member,
    any_member,
    elements,
    any_element,
    descendants,
    filter,
    type_method,
    size_method,
    double_method,
    number_method,
    integer_method,
    bigint_method,
    string_method,
    boolean_method,
    abs_method,
    ceiling_method,
    floor_method,
    keyvalue_method
};

struct path_text {
    std::uint32_t begin; // in the characters of the path
    std::uint32_t length;
};

// `first` and `count` are the subscripts of `elements`; `first` is the condition of a filter; both are the levels of `descendants`, from
// the one to the other, no_level for the deepest. Steps of a chain lie side by side.
struct path_step {
    step_kind kind;
    bool is_plain_name; // which has no character that JSON writes as an escape
    path_text name;     // of a member
    std::uint32_t first;
    std::uint32_t count;
    std::uint64_t beginning; // of the name with a quote behind it, as a word in memory, zeros behind
    std::uint64_t mask;      // of the bytes that are not zeros
};
constexpr std::uint32_t no_level = ~std::uint32_t{0};

struct path_chain {
    std::uint32_t first; // step
    std::uint32_t count;
};

// An element: counted from 0, or before the last one from that, or what an operand gives.
enum class position_kind : std::uint8_t { from_first, from_last, computed };
struct path_position {
    position_kind kind;
    std::int64_t number;
    std::uint32_t operand;
};

// From the one to the other; of a single element both are the same.
struct path_subscript {
    path_position from;
    path_position to;
};

enum class operand_kind : std::uint8_t {
    of_document, // $
    of_current,  // @
    of_last,     // last
    literal,
    of_operand, // in parentheses
    of_condition,
    identity, // +
    negation,
    sum,
    difference,
    product,
    quotient,
    remainder
};

// What the steps of the chain are taken from; a literal is a number as it is written, or a string as its characters. `left` and `right` are
// operands, `left` of of_condition a condition.
struct path_operand {
    operand_kind kind;
    std::uint8_t literal_kind; // of json_kind
    path_chain chain;
    path_text text;
    std::uint32_t left;
    std::uint32_t right;
};

enum class comparison : std::uint8_t { equal, not_equal, less, less_or_equal, greater, greater_or_equal };
enum class condition_kind : std::uint8_t { both, either, negation, is_unknown, exists, compared, starts_with, like_regex };

// `left` and `right` are conditions, or operands of the last four; of like_regex `right` is a pattern.
struct path_condition {
    condition_kind kind;
    comparison compared;
    std::uint32_t left;
    std::uint32_t right;
};

} // namespace zqengine

// All but patterns in one block of memory. A text has no more parts of a kind than bytes.
struct jpath {
    std::size_t size;
    bool strict;
    bool repeats;       // some step may be taken for one item more than once
    std::uint32_t root; // operand
    zqengine::path_step* steps;
    zqengine::path_subscript* subscripts;
    zqengine::path_operand* operands;
    zqengine::path_condition* conditions;
    URegularExpression** patterns;
    char* characters;
    std::uint32_t step_count;
    std::uint32_t subscript_count;
    std::uint32_t operand_count;
    std::uint32_t condition_count;
    std::uint32_t pattern_count;
    std::uint32_t character_count;
};

namespace zqengine {

inline std::string_view text_of(const jpath& path, const path_text& text) { return {path.characters + text.begin, text.length}; }

// Into a path whose lists have room for a text of this length. Returns 0; -503; BIFUN_INVALID_JSON_PATH, and then `fault_at` gets the first
// byte that does not fit. Patterns are the caller's to release in any case.
[[nodiscard]] std::int32_t parse_path(std::string_view text, jpath& path, std::uint32_t& fault_at);

} // namespace zqengine

#endif
