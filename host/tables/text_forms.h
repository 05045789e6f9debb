// SPDX-License-Identifier: Apache-2.0
// What a column of texts could be given as its type: dates and truth values as people write them are text unless --types says more.
#ifndef BIFUN_HOST_TABLES_TEXT_FORMS_H
#define BIFUN_HOST_TABLES_TEXT_FORMS_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/tables/column_type.h"

namespace host {

// Whether all texts are dates of numbers with the year behind, as people write them, and in which order.
struct written_dates {
    char separator = '\0'; // of the first one
    bool are_all = true;
    std::uint32_t largest_first = 0;
    std::uint32_t largest_second = 0;
};

struct text_forms {
    bool has_texts = false;
    bool has_truth_values = true; // alone
    written_dates dates{};
};

// Takes one more text into account.
void include_text(text_forms& forms, std::string_view text);

// Whether any text more could change nothing.
inline bool are_mere_texts(const text_forms& forms) { return !forms.has_truth_values && !forms.dates.are_all; }

// BOOL, or DATE with its format; nothing where the texts are something else or the order of day and month cannot be told.
std::optional<column_type> seeming_type(const text_forms& forms);

// Whether a text alone is such a date, in whatever order.
bool is_written_date(std::string_view text);

} // namespace host

#endif
