// SPDX-License-Identifier: Apache-2.0
// The string functions as one would explain them: on texts written out in full, character by character, without tables, places or copies
// saved. What the library computes is held against it.
#ifndef BIFUN_TESTS_BIFUN_STR_STRING_MODEL_H
#define BIFUN_TESTS_BIFUN_STR_STRING_MODEL_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bop/bifun.h"
#include "bop/frame/catalogue.h"

namespace string_model {

struct text {
    std::string stored;
    std::uint32_t blanks = 0;
};

// An argument: a text or a number, or NULL.
struct value {
    value() = default; // NULL
    value(std::string stored, std::uint32_t blanks) : is_null(false), string{std::move(stored), blanks} {}
    value(const char* stored) : value(stored, 0) {}
    value(std::int32_t number) : is_null(false), number(number) {}

    bool is_null = true;
    text string = {};
    std::int32_t number = 0;
};

// Characters that the model knows, of 1, 2, 3 and 4 bytes. Among the bytes of some are others of them.
std::vector<std::string> alphabet(std::uint32_t charset);

std::vector<std::string> characters_of(std::uint32_t charset, std::string_view bytes);

// What a row holds, in print: the stored bytes in quotes, then +n for its trailing blanks; a number; `NULL`; or `=?` for a row that is not
// NULL and has been given no value. An empty text says that the model has no answer for such arguments, as the call fails.
std::string shown(const text& value);
std::string row_of(const bifun_settings& settings, const bifun::entry_point& entry, const std::vector<value>& arguments);

} // namespace string_model

#endif
