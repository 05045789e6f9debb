// SPDX-License-Identifier: Apache-2.0
// What a column of texts could be given as its type: dates and truth values as people write them are text unless --types says more.
#ifndef BIFUN_HOST_TABLES_TEXT_FORMS_H
#define BIFUN_HOST_TABLES_TEXT_FORMS_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/tables/column_type.h"

namespace host {

// Whether all texts are dates of numbers with the year behind, as people write them, and in which order; all alike with a time or without.
struct written_dates {
    char separator = '\0'; // of the first one
    bool are_all = true;
    std::optional<std::string_view> time_format{}; // empty without a time
    std::uint32_t largest_first = 0;
    std::uint32_t largest_second = 0;
};

struct text_forms {
    bool has_texts = false;
    bool has_truth_values = true;  // alone
    bool has_comma_numbers = true; // alone: 1.234,56
    bool has_point_numbers = true; // alone: 1,234.56
    written_dates dates{};
};

constexpr text_forms mere_texts{
    .has_texts = true, .has_truth_values = false, .has_comma_numbers = false, .has_point_numbers = false, .dates = {.are_all = false}};

// Takes one more text into account.
void include_text(text_forms& forms, std::string_view text);

// Whether any text more could change nothing.
inline bool are_mere_texts(const text_forms& forms) {
    return !forms.has_truth_values && !forms.has_comma_numbers && !forms.has_point_numbers && !forms.dates.are_all;
}

// The --decimal with which the texts are numbers; nothing where there is none, and the comma where both would do.
std::optional<std::string_view> seeming_decimal(const text_forms& forms);

// BOOL, or DATE or TIMESTAMP with its format; nothing where the texts are something else or the order of day and month cannot be told.
std::optional<column_type> seeming_type(const text_forms& forms);

// Whether a text alone is such a date, in whatever order.
bool is_written_date(std::string_view text);

} // namespace host

#endif
