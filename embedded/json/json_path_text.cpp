// SPDX-License-Identifier: Apache-2.0
#include "embedded/json/json_path_text.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <utility>

#include "embedded/json/json_numbers.h"
#include "embedded/json/json_strings.h"

namespace zqengine {

namespace {

bool is_space(char character) { return character == ' ' || character == '\t' || character == '\n' || character == '\r'; }
bool is_digit(char character) { return character >= '0' && character <= '9'; }
bool is_name_character(char character) {
    const char letter = static_cast<char>(character | 0x20);
    return (letter >= 'a' && letter <= 'z') || is_digit(character) || character == '_' || character == '$' ||
           static_cast<unsigned char>(character) >= 0x80;
}

bool is_control(char character) { return static_cast<unsigned char>(character) < 0x20; }
bool must_be_escaped(char character) { return character == '"' || character == '\\' || is_control(character); }

path_text keep(path_reader& reader, std::string_view characters) {
    const path_text kept{reader.path.character_count, static_cast<std::uint32_t>(characters.size())};
    std::memcpy(reader.path.characters + kept.begin, characters.data(), characters.size());
    reader.path.character_count += kept.length;
    return kept;
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

} // namespace

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
    const bool may_end = rest.size() <= word.size() || rest[word.size()] == '$' || !is_name_character(rest[word.size()]);
    if (!rest.starts_with(word) || !may_end) {
        return false;
    }
    reader.at += word.size();
    return true;
}

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

bool read_name(path_reader& reader, path_step& step) {
    skip_spaces(reader);
    if (take(reader, "\"")) {
        if (!read_quoted(reader, step.name)) {
            return false;
        }
    } else {
        std::size_t end = reader.at;
        while (end < reader.text.size() && is_name_character(reader.text[end])) {
            ++end;
        }
        if (end == reader.at || is_digit(reader.text[reader.at])) {
            return false;
        }
        step.name = keep(reader, reader.text.substr(reader.at, end - reader.at));
        reader.at = end;
    }
    describe_name(text_of(reader.path, step.name), step);
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

bool read_level(path_reader& reader, std::uint32_t& level) {
    skip_spaces(reader);
    const std::string_view rest = rest_of(reader);
    const std::from_chars_result read = std::from_chars(rest.data(), rest.data() + rest.size(), level);
    if (read.ec != std::errc{} || level == no_level) {
        return false;
    }
    reader.at += static_cast<std::size_t>(read.ptr - rest.data());
    return true;
}

} // namespace zqengine
