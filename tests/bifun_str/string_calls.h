// Calls of the string functions, whatever bytes the texts hold, with results in print.
#ifndef BIFUN_TESTS_BIFUN_STR_STRING_CALLS_H
#define BIFUN_TESTS_BIFUN_STR_STRING_CALLS_H

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <vector>

#include "tests/bifun_str/string_model.h"
#include "tests/contract/called_export.h"

namespace string_model {

struct string_call {
    std::int32_t status;
    std::vector<std::string> rows; // as the model prints them, `?` for one without a flag
};

// One batch. Constants are taken from the first row.
string_call call_strings(const bifun::entry_point& entry, const std::vector<std::vector<value>>& rows,
                         const contract::circumstances& circumstances = {});

std::string shown(const bifun::entry_point& entry, std::size_t position, const value& argument);
std::string shown(const bifun::entry_point& entry, const std::vector<value>& arguments); // the whole call

// A batch of one row. `result` is the row, or the status and then the row: `-6109 NULL`.
struct row_case {
    const char* symbol;
    std::vector<value> arguments;
    std::string result;
};

// With the optional symbols of the engine and without, or only one of these.
void expect_rows(std::span<const row_case> cases, std::initializer_list<bool> with_symbols = {true, false});

} // namespace string_model

#endif
