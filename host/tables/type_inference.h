// SPDX-License-Identifier: Apache-2.0
// What type a column of text has.
#ifndef BIFUN_HOST_TABLES_TYPE_INFERENCE_H
#define BIFUN_HOST_TABLES_TYPE_INFERENCE_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "host/output/progress_bar.h"
#include "host/tables/csv_file.h"
#include "host/tables/text_forms.h"
#include "host/values/sql_type.h"

namespace host {

// The kinds of fields that a column holds, as a set. Those of numbers written as codes stand apart, `code_shift` bits higher.
using field_kinds = std::uint32_t;
constexpr unsigned code_shift = 16;

enum field_kind : field_kinds {
    integer_field = 1,
    bigint_field = 2,
    decimal_field = 4,
    double_field = 8,
    date_field = 16,
    time_field = 32,
    timestamp_field = 64,
    time_with_zone_field = 128,
    timestamp_with_zone_field = 256,
    text_field = 512,
    precise_field = 1024, // besides the kind of a number: as a double it would have other digits
};

// The kind of one field that is not NULL. Numbers may have blanks around them. What no number or datetime keeps as it is, is text: 007,
// which would lose its zeros, numbers with too many digits for a decimal or an exponent beyond doubles, and fractions of a second with more
// than six digits. Digits alone behind a plus sign, as in +4930123456, and 12E4 without a point or a sign are codes as likely as numbers.
field_kinds classify_field(std::string_view text);

// The same with numbers that have this mark before their fraction, if any; what is a number in SQL alone is text then.
field_kinds classify_marked_field(std::string_view text, char decimal_mark);
inline field_kinds classify_field(std::string_view text, std::optional<char> decimal_mark) {
    return decimal_mark ? classify_marked_field(text, *decimal_mark) : classify_field(text);
}

// The type that holds every field of a column: the widest of its numbers (a double wherever an exponent stands), TIMESTAMP for dates
// and timestamps together, VARCHAR for any other mixture, such as values with and without zones or exponents and numbers that a double
// would change, and where every field is NULL or a number written as a code: no program writes all of its numbers so.
sql_type type_of_fields(field_kinds kinds);

// Whether the type is VARCHAR, whatever fields follow.
bool is_text_for_good(field_kinds kinds);

// The kinds with those of codes as the numbers that they are.
constexpr field_kinds numbers_in(field_kinds kinds) { return (kinds | kinds >> code_shift) & ((1U << code_shift) - 1); }

// What the rows of a file show, or those that begin within its first `most_text` bytes.
struct found_kinds {
    std::vector<field_kinds> of_columns; // 0 for those that are not wanted
    std::vector<text_forms> forms;       // of the texts of the first rows, some thousand
    bool is_whole_file;
};

// Reads the rows and rewinds the file.
found_kinds find_kinds(csv_reader& reader, const std::vector<bool>& wanted, std::uint64_t most_text, progress_bar& progress);

} // namespace host

#endif
