// SPDX-License-Identifier: Apache-2.0
#include "bop/json/clauses.h"

namespace bifun {
namespace {

struct clause_reader {
    const std::uint8_t* next;
    const std::uint8_t* end;
    json_clauses& clauses;
};

bool is_space(std::uint8_t character) { return character == ' ' || (character >= '\t' && character <= '\r'); }
bool is_digit(std::uint8_t character) { return character - 0x30U < 10; }
bool is_word_character(std::uint8_t character) {
    const unsigned letter = character | 0x20U;
    return (letter >= 'a' && letter <= 'z') || is_digit(character) || character == '_';
}

bool at_end(const clause_reader& reader) { return reader.next == reader.end; }

void skip_spaces(clause_reader& reader) {
    while (!at_end(reader) && is_space(*reader.next)) {
        ++reader.next;
    }
}

// The words, in upper case with a blank between, in any case and with any space between; else nothing is read.
bool take(clause_reader& reader, const char* words) {
    clause_reader ahead = reader;
    skip_spaces(ahead);
    for (; *words != '\0'; ++words) {
        if (*words == ' ') {
            if (at_end(ahead) || !is_space(*ahead.next)) {
                return false;
            }
            skip_spaces(ahead);
            continue;
        }
        const std::uint8_t character = at_end(ahead) ? std::uint8_t{0} : *ahead.next;
        const std::uint8_t upper = character >= 'a' && character <= 'z' ? static_cast<std::uint8_t>(character - 0x20) : character;
        if (upper != static_cast<std::uint8_t>(*words)) {
            return false;
        }
        ++ahead.next;
    }
    if (!at_end(ahead) && is_word_character(*ahead.next)) {
        return false;
    }
    reader.next = ahead.next;
    return true;
}

bool take_type(clause_reader& reader) {
    skip_spaces(reader);
    const std::uint8_t* const first = reader.next;
    while (!at_end(reader) && is_word_character(*reader.next)) {
        ++reader.next;
    }
    const bool found = reader.next != first;
    (void)take(reader, "PRECISION");
    return found;
}

void keep(json_clauses& clauses, std::uint8_t character) { clauses.characters[clauses.used++] = character; }

// 'text', with quotes doubled, or a number with or without a sign.
bool take_literal(clause_reader& reader, bifun_string& literal) {
    json_clauses& clauses = reader.clauses;
    skip_spaces(reader);
    std::uint8_t* const first = clauses.characters + clauses.used;
    const std::uint32_t used_before = clauses.used;
    if (at_end(reader)) {
        return false;
    }
    if (*reader.next == '\'') {
        while (true) {
            ++reader.next;
            if (at_end(reader)) {
                return false;
            }
            if (*reader.next == '\'') {
                ++reader.next;
                if (at_end(reader) || *reader.next != '\'') {
                    break;
                }
            }
            keep(clauses, *reader.next);
        }
    } else {
        const std::uint8_t* const begin = reader.next;
        for (; !at_end(reader) && !is_space(*reader.next); ++reader.next) {
            keep(clauses, *reader.next);
        }
        if (!is_digit(*begin) && *begin != '-' && *begin != '+' && *begin != '.') {
            return false;
        }
    }
    literal = {clauses.used - used_before, 0, first};
    return true;
}

void set_json(clause_reader& reader, const char* json, json_outcome& outcome) {
    std::uint8_t* const first = reader.clauses.characters + reader.clauses.used;
    keep(reader.clauses, static_cast<std::uint8_t>(json[0]));
    keep(reader.clauses, static_cast<std::uint8_t>(json[1]));
    outcome = {json_reaction::value, {2, 0, first}};
}

bool take_reaction(clause_reader& reader, json_function of, json_outcome& outcome) {
    if (take(reader, "NULL")) {
        outcome = {};
        return true;
    }
    if (take(reader, "ERROR")) {
        outcome = {json_reaction::error, {}};
        return true;
    }
    if (of == json_function::value) {
        outcome.reaction = json_reaction::value;
        return take(reader, "DEFAULT") && take_literal(reader, outcome.value);
    }
    if (take(reader, "EMPTY OBJECT")) {
        set_json(reader, "{}", outcome);
        return true;
    }
    if (take(reader, "EMPTY ARRAY") || take(reader, "EMPTY")) {
        set_json(reader, "[]", outcome);
        return true;
    }
    return false;
}

bool take_wrapper(clause_reader& reader, std::int32_t& wrapper) {
    if (take(reader, "WITHOUT")) {
        (void)take(reader, "ARRAY");
        return take(reader, "WRAPPER");
    }
    if (!take(reader, "WITH")) {
        return true;
    }
    wrapper = take(reader, "CONDITIONAL") ? JPATH_CONDITIONAL_WRAPPER : JPATH_WRAPPER;
    (void)take(reader, "UNCONDITIONAL");
    (void)take(reader, "ARRAY");
    return take(reader, "WRAPPER");
}

} // namespace

status parse_clauses(const bifun_string& text, json_function of, json_clauses& clauses) {
    clauses.used = 0;
    clauses.wrapper = JPATH_NO_WRAPPER;
    clauses.on_empty = {};
    clauses.on_error = {};
    // Each literal is shorter than what spells it; [] and {} are as well.
    clause_reader reader{text.data, text.data + text.length, clauses};
    bool good = text.length <= longest_clauses && (!take(reader, "RETURNING") || take_type(reader));
    good = good && (of == json_function::value || take_wrapper(reader, clauses.wrapper));
    bool empty_said = false;
    for (skip_spaces(reader); good && !at_end(reader); skip_spaces(reader)) {
        json_outcome outcome;
        good = take_reaction(reader, of, outcome);
        if (good && !empty_said && take(reader, "ON EMPTY")) {
            clauses.on_empty = outcome;
            empty_said = true;
        } else {
            good = good && take(reader, "ON ERROR");
            clauses.on_error = outcome;
            skip_spaces(reader);
            good = good && at_end(reader);
            break;
        }
    }
    return good ? BIFUN_OK : BIFUN_ARGUMENT_OUT_OF_DOMAIN;
}

} // namespace bifun
