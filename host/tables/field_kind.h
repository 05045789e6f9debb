// SPDX-License-Identifier: Apache-2.0
// What fields are: in the forms of SQL, which decide the types of columns, and in those of people and of other programs.
#ifndef BIFUN_HOST_TABLES_FIELD_KIND_H
#define BIFUN_HOST_TABLES_FIELD_KIND_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/tables/written_date.h"
#include "host/values/sql_type.h"

namespace host {

// The kinds of fields that a column holds, as a set. Those of numbers written as codes stand apart, `code_shift` bits higher.
using field_kinds = std::uint64_t;
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

    // What a field may be meant as, besides its kind in SQL; it may be several of these.
    decimal_form = field_kinds{1} << 32,       // a DECIMAL takes it as it is: 007
    double_form = decimal_form << 1,           // the same of a DOUBLE
    comma_number_form = decimal_form << 2,     // 1.234,56
    point_number_form = decimal_form << 3,     // 1,234.56
    affixed_number_form = decimal_form << 4,   // 10%, $5
    written_date_form = decimal_form << 5,     // 31.12.2024
    long_fraction_form = decimal_form << 6,    // a timestamp, also with more digits of a second than are kept
    truth_word_form = decimal_form << 7,       // true, yes
    null_word_form = decimal_form << 8,        // NA
    bracketed_number_form = decimal_form << 9, // (5.00), a negative number of accounts
    trailing_minus_form = decimal_form << 10,  // 5.00-, the same
    duration_form = decimal_form << 11,        // 25:10:05
    all_forms = (decimal_form << 12) - decimal_form,
};

constexpr field_kinds code_with_exponent = field_kinds{double_field} << code_shift; // 12E4
constexpr field_kinds number_fields = integer_field | bigint_field | decimal_field | double_field;
constexpr field_kinds datetime_fields = date_field | time_field | timestamp_field | time_with_zone_field | timestamp_with_zone_field;

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
constexpr field_kinds numbers_in(field_kinds kinds) { return (kinds | kinds >> code_shift) & ((field_kinds{1} << code_shift) - 1); }

// All that a field may be meant as, for what is said of a file: reading one asks for classify_field alone. Forms that are not wanted may
// be left out, but for null_word_form.
struct field_form {
    field_kinds kinds = 0;    // as classify_field has them, with the forms
    std::string_view affix{}; // of an affixed_number_form: what stands before or behind the number
    written_date date{};      // of a written_date_form
};
field_form form_of_field(std::string_view text, std::optional<char> decimal_mark, field_kinds wanted = all_forms);

// The forms that every field of these kinds has, as far as the kinds tell.
field_kinds forms_of_all(field_kinds kinds);

// Whether a text often stands for NULL: NA, n/a, -.
bool is_null_word(std::string_view text);

} // namespace host

#endif
