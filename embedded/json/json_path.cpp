// SPDX-License-Identifier: Apache-2.0
// Parsing of paths, by recursive descent:
//
//     path       [lax | strict] $ steps
//     steps      { . name | . "name" | . * | [ * ] | [ subscript , ... ] | ? ( condition ) | . method ( ) }
//     subscript  position [ to position ]; a position is a number, or last [ - number ]
//     condition  negation { && negation } with || between, parentheses around, and "is unknown" behind parentheses
//     negation   [ ! ] ( condition ) | exists ( operand ) | operand comparison operand | operand starts with literal
//     operand    literal | $ steps | @ steps
#include "embedded/json/json_path.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "bop/frame/status.h"
#include "embedded/json/json_numbers.h"
#include "embedded/json/json_strings.h"
#include "embedded/memory/allocation.h"
#include "embedded/memory/pending_failure.h"

namespace zqengine {

namespace {

constexpr std::uint32_t most_nested = 100; // conditions in each other

struct path_reader {
    std::string_view text;
    std::size_t at;
    jpath& path;
    std::uint32_t depth;
};

bool is_space(char character) { return character == ' ' || character == '\t' || character == '\n' || character == '\r'; }
bool is_digit(char character) { return character >= '0' && character <= '9'; }
bool is_name_character(char character) {
    const char letter = static_cast<char>(character | 0x20);
    return (letter >= 'a' && letter <= 'z') || is_digit(character) || character == '_' || character == '$' ||
           static_cast<unsigned char>(character) >= 0x80;
}

bool is_control(char character) { return static_cast<unsigned char>(character) < 0x20; }
bool must_be_escaped(char character) { return character == '"' || character == '\\' || is_control(character); }

std::string_view rest_of(const path_reader& reader) { return reader.text.substr(reader.at); }

void skip_spaces(path_reader& reader) {
    while (reader.at < reader.text.size() && is_space(reader.text[reader.at])) {
        ++reader.at;
    }
}

bool take(path_reader& reader, std::string_view symbol) {
    skip_spaces(reader);
    if (!rest_of(reader).starts_with(symbol)) {
        return false;
    }
    reader.at += symbol.size();
    return true;
}

bool take_word(path_reader& reader, std::string_view word) {
    skip_spaces(reader);
    const std::string_view rest = rest_of(reader);
    if (!rest.starts_with(word) || (rest.size() > word.size() && is_name_character(rest[word.size()]))) {
        return false;
    }
    reader.at += word.size();
    return true;
}

path_text keep(path_reader& reader, std::string_view characters) {
    const path_text kept{reader.path.character_count, static_cast<std::uint32_t>(characters.size())};
    std::memcpy(reader.path.characters + kept.begin, characters.data(), characters.size());
    reader.path.character_count += kept.length;
    return kept;
}

// A string behind its opening quote.
bool read_quoted(path_reader& reader, path_text& kept) {
    std::size_t end = reader.at;
    while (end < reader.text.size() && reader.text[end] != '"') {
        end += reader.text[end] == '\\' ? 2 : 1;
    }
    if (end >= reader.text.size()) {
        reader.at = reader.text.size();
        return false;
    }
    const std::string_view quoted = reader.text.substr(reader.at, end - reader.at);
    if (!has_good_escapes(quoted) || std::ranges::any_of(quoted, is_control)) {
        return false;
    }
    char* const first = reader.path.characters + reader.path.character_count;
    kept = {reader.path.character_count, static_cast<std::uint32_t>(write_characters(quoted, first) - first)};
    reader.path.character_count += kept.length;
    reader.at = end + 1;
    return true;
}

bool read_name(path_reader& reader, path_text& kept) {
    skip_spaces(reader);
    if (take(reader, "\"")) {
        return read_quoted(reader, kept);
    }
    std::size_t end = reader.at;
    while (end < reader.text.size() && is_name_character(reader.text[end])) {
        ++end;
    }
    if (end == reader.at || is_digit(reader.text[reader.at])) {
        return false;
    }
    kept = keep(reader, reader.text.substr(reader.at, end - reader.at));
    reader.at = end;
    return true;
}

bool read_number(path_reader& reader, std::int64_t& number) {
    constexpr std::int64_t most = 2'147'483'647;
    skip_spaces(reader);
    const std::size_t first = reader.at;
    number = 0;
    for (; reader.at < reader.text.size() && is_digit(reader.text[reader.at]); ++reader.at) {
        number = number * 10 + (reader.text[reader.at] - '0');
        if (number > most) {
            return false;
        }
    }
    return reader.at != first;
}

bool read_position(path_reader& reader, path_position& position) {
    position = {.from_last = take_word(reader, "last"), .number = 0};
    if (!position.from_last) {
        const bool negative = take(reader, "-");
        const bool read = read_number(reader, position.number);
        position.number = negative ? -position.number : position.number;
        return read;
    }
    return !take(reader, "-") || read_number(reader, position.number);
}

bool read_condition(path_reader& reader, std::uint32_t& condition);

// The step behind the brackets that open it.
bool read_subscripts(path_reader& reader, path_step& step) {
    if (take(reader, "*")) {
        step.kind = step_kind::any_element;
        return take(reader, "]");
    }
    step.kind = step_kind::elements;
    step.first = reader.path.subscript_count;
    do {
        path_subscript subscript{};
        if (!read_position(reader, subscript.from)) {
            return false;
        }
        subscript.to = subscript.from;
        if (take_word(reader, "to") && !read_position(reader, subscript.to)) {
            return false;
        }
        reader.path.subscripts[reader.path.subscript_count++] = subscript;
        ++step.count;
    } while (take(reader, ","));
    return take(reader, "]");
}

void describe_name(std::string_view name, path_step& step) {
    step.is_plain_name = std::ranges::none_of(name, must_be_escaped);
    char characters[sizeof step.beginning] = {};
    std::uint8_t mask[sizeof step.mask] = {};
    for (std::size_t i = 0; i <= name.size() && i < sizeof characters; ++i) {
        characters[i] = i < name.size() ? name[i] : '"';
        mask[i] = 0xFF;
    }
    std::memcpy(&step.beginning, characters, sizeof characters);
    std::memcpy(&step.mask, mask, sizeof mask);
}

// The step behind its point.
bool read_member(path_reader& reader, path_step& step) {
    if (take(reader, "*")) {
        step.kind = step_kind::any_member;
        return true;
    }
    constexpr std::pair<std::string_view, step_kind> methods[] = {
        {"type", step_kind::type_method}, {"size", step_kind::size_method}, {"double", step_kind::double_method}};
    step.kind = step_kind::member;
    const bool quoted = take(reader, "\"");
    reader.at -= quoted ? 1 : 0;
    if (!read_name(reader, step.name)) {
        return false;
    }
    if (!quoted && take(reader, "(")) {
        const std::size_t behind = reader.at;
        const std::string_view name = text_of(reader.path, step.name);
        for (const auto& [word, kind] : methods) {
            if (name == word) {
                step.kind = kind;
                return take(reader, ")");
            }
        }
        reader.at = behind - 1;
        return false;
    }
    describe_name(text_of(reader.path, step.name), step);
    return true;
}

// Steps are collected here while their filters, which have steps of their own, are read, and then lie side by side.
bool read_steps(path_reader& reader, path_chain& chain) {
    constexpr std::size_t most_steps = 64;
    path_step steps[most_steps];
    std::uint32_t count = 0;
    while (true) {
        path_step step{};
        const std::size_t before = reader.at;
        bool read = true;
        if (take(reader, ".")) {
            read = read_member(reader, step);
        } else if (take(reader, "[")) {
            read = read_subscripts(reader, step);
        } else if (take(reader, "?")) {
            step.kind = step_kind::filter;
            read = take(reader, "(") && read_condition(reader, step.first) && take(reader, ")");
        } else {
            break;
        }
        if (read && count == most_steps) {
            reader.at = before;
            return false;
        }
        if (!read) {
            return false;
        }
        steps[count++] = step;
    }
    chain = {reader.path.step_count, count};
    std::copy_n(steps, count, reader.path.steps + chain.first);
    reader.path.step_count += count;
    return true;
}

bool read_literal(path_reader& reader, path_operand& operand) {
    operand.kind = operand_kind::literal;
    constexpr std::pair<std::string_view, json_kind> words[] = {{"null", JSON_NULL}, {"true", JSON_TRUE}, {"false", JSON_FALSE}};
    for (const auto& [word, kind] : words) {
        if (take_word(reader, word)) {
            operand.literal_kind = static_cast<std::uint8_t>(kind);
            return true;
        }
    }
    if (take(reader, "\"")) {
        operand.literal_kind = JSON_STRING;
        return read_quoted(reader, operand.text);
    }
    const std::size_t length = json_number_length(rest_of(reader));
    if (length == 0 || (length < rest_of(reader).size() && is_name_character(rest_of(reader)[length]))) {
        return false;
    }
    operand.literal_kind = JSON_NUMBER;
    operand.text = keep(reader, rest_of(reader).substr(0, length));
    reader.at += length;
    return true;
}

bool read_operand(path_reader& reader, std::uint32_t& index) {
    path_operand operand{};
    if (take(reader, "$")) {
        operand.kind = operand_kind::of_document;
    } else if (take(reader, "@")) {
        operand.kind = operand_kind::of_current;
    } else if (!read_literal(reader, operand)) {
        return false;
    }
    if (operand.kind != operand_kind::literal && !read_steps(reader, operand.chain)) {
        return false;
    }
    index = reader.path.operand_count;
    reader.path.operands[reader.path.operand_count++] = operand;
    return true;
}

std::uint32_t add_condition(path_reader& reader, const path_condition& condition) {
    reader.path.conditions[reader.path.condition_count] = condition;
    return reader.path.condition_count++;
}

bool take_comparison(path_reader& reader, comparison& found) {
    constexpr std::pair<std::string_view, comparison> symbols[] = {
        {"==", comparison::equal},         {"!=", comparison::not_equal},        {"<>", comparison::not_equal},
        {"<=", comparison::less_or_equal}, {">=", comparison::greater_or_equal}, {"<", comparison::less},
        {">", comparison::greater}};
    for (const auto& [symbol, meaning] : symbols) {
        if (take(reader, symbol)) {
            found = meaning;
            return true;
        }
    }
    return false;
}

bool read_simple_condition(path_reader& reader, std::uint32_t& condition) {
    path_condition made{};
    if (take(reader, "!")) {
        made.kind = condition_kind::negation;
        skip_spaces(reader);
        const bool may_follow = rest_of(reader).starts_with("(") || rest_of(reader).starts_with("exists");
        if (!may_follow || !read_simple_condition(reader, made.left)) {
            return false;
        }
        condition = add_condition(reader, made);
        return true;
    }
    if (take(reader, "(")) {
        if (!read_condition(reader, condition) || !take(reader, ")")) {
            return false;
        }
        if (take_word(reader, "is")) {
            if (!take_word(reader, "unknown")) {
                return false;
            }
            condition = add_condition(reader, {.kind = condition_kind::is_unknown, .compared = {}, .left = condition, .right = 0});
        }
        return true;
    }
    if (take_word(reader, "exists")) {
        made.kind = condition_kind::exists;
        if (!take(reader, "(") || !read_operand(reader, made.left) || !take(reader, ")")) {
            return false;
        }
        condition = add_condition(reader, made);
        return true;
    }
    if (!read_operand(reader, made.left)) {
        return false;
    }
    if (take_word(reader, "starts")) {
        made.kind = condition_kind::starts_with;
        skip_spaces(reader);
        if (!take_word(reader, "with") || !take(reader, "\"")) {
            return false;
        }
        --reader.at;
    } else {
        made.kind = condition_kind::compared;
        if (!take_comparison(reader, made.compared)) {
            return false;
        }
    }
    if (!read_operand(reader, made.right)) {
        return false;
    }
    condition = add_condition(reader, made);
    return true;
}

// Conditions with `symbol` between them, each read by `read_part`.
template <class Part>
bool read_joined(path_reader& reader, std::string_view symbol, condition_kind kind, const Part& read_part, std::uint32_t& condition) {
    if (!read_part(reader, condition)) {
        return false;
    }
    while (take(reader, symbol)) {
        std::uint32_t right = 0;
        if (!read_part(reader, right)) {
            return false;
        }
        condition = add_condition(reader, {.kind = kind, .compared = {}, .left = condition, .right = right});
    }
    return true;
}

bool read_conjunction(path_reader& reader, std::uint32_t& condition) {
    return read_joined(reader, "&&", condition_kind::both, read_simple_condition, condition);
}

bool read_condition(path_reader& reader, std::uint32_t& condition) {
    if (++reader.depth > most_nested) {
        return false;
    }
    const bool read = read_joined(reader, "||", condition_kind::either, read_conjunction, condition);
    --reader.depth;
    return read;
}

} // namespace

bool parse_path(std::string_view text, jpath& path, std::uint32_t& fault_at) {
    path_reader reader{.text = text, .at = 0, .path = path, .depth = 0};
    path.strict = take_word(reader, "strict");
    if (!path.strict) {
        take_word(reader, "lax");
    }
    bool read = take(reader, "$") && read_steps(reader, path.chain);
    skip_spaces(reader);
    read = read && reader.at == text.size();
    fault_at = static_cast<std::uint32_t>(std::min(reader.at, text.size()));
    return read;
}

} // namespace zqengine

using namespace zqengine;

namespace {

// Places for lists of any type, one behind the other.
template <class T> T* take_list(std::uint8_t*& next, std::size_t count) {
    T* const list = new (next) T[count];
    next += (count * sizeof(T) + 15) / 16 * 16;
    return list;
}

} // namespace

int32_t jpath_parse(bifun_environment* environment, const uint8_t* text, uint32_t length, jpath** path, uint32_t* fault_at) {
    static_cast<void>(environment);
    *path = nullptr;
    std::uint32_t fault = JPATH_LONGEST_TEXT;
    if (length <= JPATH_LONGEST_TEXT) {
        const std::size_t count = length + std::size_t{1};
        const std::size_t parts = sizeof(path_step) + sizeof(path_subscript) + sizeof(path_operand) + sizeof(path_condition) + 1;
        constexpr std::size_t most_padding = 6 * std::size_t{16};
        const std::size_t size = sizeof(jpath) + count * parts + most_padding;
        void* const memory = must_fail() ? nullptr : allocate(size);
        if (memory == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        auto* const made = new (memory) jpath{};
        std::uint8_t* next = static_cast<std::uint8_t*>(memory) + (sizeof(jpath) + 15) / 16 * 16;
        made->size = size;
        made->steps = take_list<path_step>(next, count);
        made->subscripts = take_list<path_subscript>(next, count);
        made->operands = take_list<path_operand>(next, count);
        made->conditions = take_list<path_condition>(next, count);
        made->characters = take_list<char>(next, count);
        if (parse_path({reinterpret_cast<const char*>(text), length}, *made, fault)) {
            *path = made;
            return BIFUN_OK;
        }
        release(memory, size);
    }
    if (fault_at != nullptr) {
        *fault_at = fault;
    }
    return BIFUN_INVALID_JSON_PATH;
}

void jpath_free(bifun_environment* environment, jpath* path) {
    static_cast<void>(environment);
    if (path != nullptr) {
        release(path, path->size);
    }
}
