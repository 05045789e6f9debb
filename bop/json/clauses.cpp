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

// One of the words, which have blanks between.
bool take_type(clause_reader& reader, const char* types) {
    char word[16];
    while (*types != '\0') {
        std::uint32_t length = 0;
        for (; *types != '\0' && *types != ' '; ++types) {
            word[length++] = *types;
        }
        word[length] = '\0';
        types += *types == ' ' ? 1 : 0;
        if (take(reader, word)) {
            (void)(word[0] == 'D' && word[1] == 'O' && take(reader, "PRECISION"));
            return true;
        }
    }
    return false;
}

void keep(json_clauses& clauses, std::uint8_t character) { clauses.characters[clauses.used++] = character; }

void keep_digits(clause_reader& reader, std::uint32_t& count) {
    for (; !at_end(reader) && is_digit(*reader.next); ++reader.next) {
        keep(reader.clauses, *reader.next);
        ++count;
    }
}

bool keep_one_of(clause_reader& reader, char a, char b) {
    const bool found = !at_end(reader) && (*reader.next == a || *reader.next == b);
    if (found) {
        keep(reader.clauses, *reader.next++);
    }
    return found;
}

// [sign]digits[.digits][E[sign]digits], digits missing before or behind the point, up to the end or a blank.
bool keep_number(clause_reader& reader) {
    std::uint32_t digits = 0;
    std::uint32_t exponent_digits = 0;
    (void)keep_one_of(reader, '-', '+');
    keep_digits(reader, digits);
    if (keep_one_of(reader, '.', '.')) {
        keep_digits(reader, digits);
    }
    const bool has_exponent = digits != 0 && keep_one_of(reader, 'e', 'E');
    if (has_exponent) {
        (void)keep_one_of(reader, '-', '+');
        keep_digits(reader, exponent_digits);
    }
    return digits != 0 && (!has_exponent || exponent_digits != 0) && (at_end(reader) || is_space(*reader.next));
}

// Behind its opening quote; quotes in it are doubled.
bool keep_text(clause_reader& reader) {
    while (true) {
        if (at_end(reader)) {
            return false;
        }
        const std::uint8_t character = *reader.next++;
        if (character == '\'') {
            if (at_end(reader) || *reader.next != '\'') {
                return true;
            }
            ++reader.next;
        }
        keep(reader.clauses, character);
    }
}

bool keep_word(clause_reader& reader, const char* word) {
    const bool found = take(reader, word);
    for (; found && *word != '\0'; ++word) {
        keep(reader.clauses, static_cast<std::uint8_t>(*word | 0x20));
    }
    return found;
}

// 'text', a number, or TRUE or FALSE.
bool take_literal(clause_reader& reader, bifun_string& literal) {
    json_clauses& clauses = reader.clauses;
    skip_spaces(reader);
    std::uint8_t* const first = clauses.characters + clauses.used;
    const std::uint32_t used_before = clauses.used;
    bool good = false;
    if (!at_end(reader) && *reader.next == '\'') {
        ++reader.next;
        good = keep_text(reader);
    } else {
        good = keep_word(reader, "TRUE") || keep_word(reader, "FALSE") || keep_number(reader);
    }
    literal = {clauses.used - used_before, 0, first};
    return good;
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

status parse_clauses(const bifun_string& text, json_function of, const char* types, json_clauses& clauses) {
    clauses.used = 0;
    clauses.wrapper = JPATH_NO_WRAPPER;
    clauses.on_empty = {};
    clauses.on_error = {};
    // Each literal is shorter than what spells it; [] and {} are as well.
    clause_reader reader{text.data, text.data + text.length, clauses};
    bool good = text.length <= longest_clauses && (!take(reader, "RETURNING") || take_type(reader, types));
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
