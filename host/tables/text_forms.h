// SPDX-License-Identifier: Apache-2.0
// What a column of texts could be given as its type: numbers, dates and truth values as people write them are text unless options say more.
#ifndef BIFUN_HOST_TABLES_TEXT_FORMS_H
#define BIFUN_HOST_TABLES_TEXT_FORMS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/tables/column_type.h"
#include "host/tables/field_kind.h"

namespace host {

// The texts are as the file has them.
struct text_forms {
    bool has_texts = false;         // any but words for NULL
    field_kinds of_all = all_forms; // the forms that all fields have but these words
    field_kinds besides = 0;        // the kinds of fields that are no texts
    field_kinds marks = 0;          // comma_number_form where a number is one with a comma alone, point_number_form the same
    bool has_many_others = false;   // more than one text that is nothing else and no word for NULL
    bool is_other_value = false;    // a number or a date in another form than those of SQL
    std::string first{}, other{}, affix{};
    std::uint64_t other_line = 0;           // of the first such text; 0 where nobody asks
    std::vector<std::string> null_words{};  // without blanks around, each once
    std::vector<std::string> known_nulls{}; // of the reader: nulls_to_repeat
    bool are_words_doubles = true;          // NaN
    written_date dates{};                   // where all are such
};

// Of a column that need not be looked at.
text_forms mere_texts();

// Takes one more field of the column into account.
void include_text(text_forms& forms, std::string_view text, std::optional<char> decimal_mark);

// The same of fields of these kinds, none of which is a text.
void include_kinds(text_forms& forms, field_kinds kinds);

// Whether any text more could change nothing.
bool are_mere_texts(const text_forms& forms);

// With which --decimal the texts are numbers: 1,234 is one with either mark, and another one.
bool may_have_mark(const text_forms& forms);
bool may_have_either_mark(const text_forms& forms);

// --decimal comma reads ...: what makes the texts numbers; empty where neither mark does. What speaks for the point has it stand first.
std::string decimal_option(const text_forms& forms, bool is_point_likely, std::string_view what);

// BOOL, or an INTERVAL for durations of which some are no times of day, or DATE or TIMESTAMP with its format, or the type with a zone where
// some have one; several where the order of day and month cannot be told, and nothing where the texts are something else.
std::vector<column_type> seeming_types(const text_forms& forms);

// Whether some of a column of times have a zone and others none.
bool has_mixed_zones(const text_forms& forms);

// The texts that may stand for NULL, words for it and at most one other, and the type of all others.
struct placeholders {
    std::vector<std::string> texts;
    sql_type others;
};
// Nothing where there are none, or where the others are texts, too.
std::optional<placeholders> find_placeholders(const text_forms& forms);

// " --null 'NA' --null '-' --null ''", for a shell, to stand behind another option, with what is NULL already, as nulls_to_repeat gives it;
// empty where there is no text, or one that a shell would read.
std::string null_options(const std::vector<std::string>& texts, const std::vector<std::string>& known);

// " and empty fields" where the options name these, too.
std::string_view and_known_nulls(const std::vector<std::string>& known);

} // namespace host

#endif
