// SPDX-License-Identifier: Apache-2.0
// Calls of the string functions, whatever bytes the texts hold.
#ifndef BIFUN_TESTS_BIFUN_STR_STRING_CALLS_H
#define BIFUN_TESTS_BIFUN_STR_STRING_CALLS_H

#include <string>
#include <vector>

#include "tests/bifun_str/string_model.h"
#include "tests/contract/called_export.h"

namespace string_model {

// Those of the catalogue whose names end in _str, of texts and integers.
std::vector<const bifun::entry_point*> string_functions();

struct string_call {
    contract::outcome outcome;
    std::vector<std::string> rows; // as the model prints them, `?` for one without a flag
};

// One batch. Constants are taken from the first row.
string_call call_strings(const bifun::entry_point& entry, const std::vector<std::vector<value>>& rows);

std::string shown(const bifun::entry_point& entry, std::size_t position, const value& argument);
std::string shown(const bifun::entry_point& entry, const std::vector<value>& arguments); // the whole call

} // namespace string_model

#endif
