// SPDX-License-Identifier: Apache-2.0
// What a column of texts could be given as its type: dates and truth values as people write them are text unless --types says more.
#ifndef BIFUN_HOST_TABLES_TEXT_FORMS_H
#define BIFUN_HOST_TABLES_TEXT_FORMS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/tables/column_type.h"

namespace host {

// Whether all texts are dates with the year behind or, of two digits, at either end, as people write them; all alike with a time or
// without.
struct written_dates {
    char separator = '\0'; // of the first one
    bool are_all = true;
    bool have_month_names = false;                 // 31-Dec-2023
    std::size_t year_digits = 0;                   // 4 or 2
    std::optional<std::string_view> time_format{}; // empty without a time
    std::uint32_t largest_first = 0;
    std::uint32_t largest_second = 0;
    std::uint32_t largest_year = 0;
};

// The texts are as the file has them.
struct text_forms {
    bool has_texts = false;
    bool has_truth_values = true;   // alone
    bool has_comma_numbers = true;  // alone: 1.234,56
    bool has_point_numbers = true;  // alone: 1,234.56
    bool has_decimals = true;       // alone, which a DECIMAL takes as they are, however they are written
    bool has_doubles = true;        // the same of a DOUBLE
    bool has_long_fractions = true; // alone: timestamps with more digits of a second than are kept
    bool has_one_other = true;      // at most one text, in however many rows, besides numbers or datetimes
    bool has_affix = true;          // alone: numbers with the same text before or behind them, as in 10%
    std::string first{}, other{}, affix{};
    std::uint32_t kinds_besides = 0; // of the fields that are not `other`, as a set of field_kinds
    written_dates dates{};
};

text_forms mere_texts();

// Takes one more text into account. The mark before the fraction of numbers is that of --decimal.
void include_text(text_forms& forms, std::string_view text, std::optional<char> decimal_mark);

// Whether any text more could change nothing.
bool are_mere_texts(const text_forms& forms);

// With which --decimal the texts are numbers: 1,234 is one with either mark, and another one.
bool may_have_mark(const text_forms& forms);
bool may_have_either_mark(const text_forms& forms);

// --decimal comma reads ...: what makes the texts numbers; empty where neither mark does. What speaks for the point has it stand first.
std::string decimal_option(const text_forms& forms, bool is_point_likely, std::string_view what);

// BOOL, or DATE or TIMESTAMP with its format; several where the order of day and month cannot be told, and nothing where the texts are
// something else.
std::vector<column_type> seeming_types(const text_forms& forms);

// The only text besides numbers or datetimes, and the type of these; nothing where there is none, or more than one.
struct lone_text {
    std::string_view text;
    sql_type others;
};
std::optional<lone_text> lone_other(const text_forms& forms);

// 2025-01-31 for 31.01.2025, and both for 01/02/2025; empty where it is no such date.
std::vector<std::string> iso_dates(std::string_view text);

// Whether a text alone is such a date, in whatever order.
bool is_written_date(std::string_view text);

} // namespace host

#endif
