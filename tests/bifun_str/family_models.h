// SPDX-License-Identifier: Apache-2.0
// What the models of the families have in common, and what each models: the rows of the built-ins, as string_model::shown() prints them.
#ifndef BIFUN_TESTS_BIFUN_STR_FAMILY_MODELS_H
#define BIFUN_TESTS_BIFUN_STR_FAMILY_MODELS_H

#include <limits>

#include "tests/bifun_str/string_model.h"

namespace string_model {

using characters = std::vector<std::string>;

constexpr std::int64_t everything = std::numeric_limits<std::int64_t>::max();

// Of the character that the bytes begin with, 0 where none of more than one byte begins.
std::size_t multibyte_length(std::uint32_t charset, std::string_view bytes);

// The blanks at the end as characters like others.
characters full_text(std::uint32_t charset, const text& value);
std::string joined(characters::const_iterator begin, characters::const_iterator end);
bool is_empty(const text& value);

// The indexes of the characters with which an occurrence begins.
std::vector<std::size_t> occurrences(const characters& all, const characters& pattern);

// In upper case, where both cases have as many bytes.
text folded(std::uint32_t charset, const text& value);

// A character of a text on its way into another: whether it is a blank that is counted where it stands at the end.
struct cell {
    std::string character;
    bool is_counted;
};
using cells = std::vector<cell>;

cells cells_of(std::uint32_t charset, const text& value);
cells written_out(cells all);
cells part_of(const cells& all, std::size_t begin, std::size_t end);
cells& append(cells& all, const cells& more);
std::string shown(const cells& all);

// ---- TRIM, LTRIM and RTRIM ----

std::string trimmed_on_the_left(std::uint32_t charset, const text& value, const text& set);
std::string trimmed_on_the_right(std::uint32_t charset, const text& value, const text& set);
std::string trimmed_on_both_sides(std::uint32_t charset, const text& value, const text& set);
std::string trim(std::uint32_t charset, std::int32_t mode, const text& value, const text& set);

// ---- parts of texts and places in them ----

enum class unit : std::uint8_t { character, byte };

std::string substring(std::uint32_t charset, const text& value, std::int64_t position, std::int64_t length);
std::string right(std::uint32_t charset, const text& value, std::int64_t length);
std::string substring_of_bytes(std::uint32_t charset, const text& value, std::int64_t position, std::int64_t length);
std::string search(const bifun_settings& settings, bool folds, unit unit, text value, text pattern, std::int64_t start,
                   std::int64_t occurrence);
std::string substring_index(std::uint32_t charset, const text& value, const text& delimiter, std::int64_t count);

// ---- texts built of others ----

std::string replace(const bifun_settings& settings, const text& value, const text& pattern, const text& replacement);
std::string overlay(std::uint32_t charset, const text& value, std::int64_t position, std::int64_t length, const text& replacement);
std::string translate(std::uint32_t charset, const text& value, const text& from, const text& to);
std::string padded_on_the_left(std::uint32_t charset, const text& value, std::int64_t length, const text& pad);
std::string padded_on_the_right(std::uint32_t charset, const text& value, std::int64_t length, const text& pad);
std::string concatenation(const value& a, const value& b);
std::string repetition(std::uint32_t charset, const text& value, std::int64_t count);

// ---- characters changed or written as others ----

std::string in_case(std::uint32_t charset, const text& value, std::string_view builtin);
std::string reversal(std::uint32_t charset, const text& value);
std::string stepped(std::uint32_t charset, const text& value, std::int64_t position, int step);
std::string written_out(const text& value);
std::string in_digits(std::string_view bytes);
std::string from_digits(std::string digits);
std::string escaped(std::uint32_t charset, const text& value);
std::string first_code(const bifun_settings& settings, const text& value);
std::string soundex(std::uint32_t charset, const text& value);
std::string difference(std::string a, std::string b);

} // namespace string_model

#endif
