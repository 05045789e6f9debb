// SPDX-License-Identifier: Apache-2.0
// What the columns of a file hold.
#ifndef BIFUN_HOST_TABLES_COLUMN_DESCRIPTION_H
#define BIFUN_HOST_TABLES_COLUMN_DESCRIPTION_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/output/progress_bar.h"
#include "host/tables/table.h"

namespace host {

struct column_description {
    std::string name;
    column_type type; // as given, or as the fields show
    std::uint64_t values;
    std::uint64_t nulls;
    // As they stand in the file: of numbers and datetimes by their value, of text by its bytes. The first of several that are equal.
    std::optional<std::string> smallest, largest;
    // The first row that made the column a VARCHAR: its line, and the field.
    std::optional<std::uint64_t> text_line;
    std::optional<std::string> text;
    bool is_valid;                       // whether all of these are text of the character set
    bool has_characters;                 // whether some are, beyond ASCII
    std::string decimal;                 // the --decimal with which a VARCHAR would be of numbers, or both, as decimal_option has it
    std::string dressed;                 // what makes numbers of a VARCHAR that has something around them, as type_advice has it
    std::vector<column_type> seems;      // what a VARCHAR of nothing but true and false, or of dates in one form, can be given as its type
    bool has_long_fractions;             // a VARCHAR of timestamps with more digits of a second than are kept
    bool has_mixed_zones;                // where this is a type with a zone
    std::vector<std::string> null_words; // without which a VARCHAR would be of numbers or dates, or could be given such a type
};

// Reads the whole file. The needed columns have been given their types, and what does not fit them is a bad row; the others get the types
// that all of their fields have. Texts are in UTF-8. The table's
// remarks are made, and its columns get these types.
std::vector<column_description> describe_columns(table& source, progress_bar& progress);

} // namespace host

#endif
