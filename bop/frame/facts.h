// SPDX-License-Identifier: Apache-2.0
// What the catalogue says of functions besides their types: the records that the lines of the families' exports.def fill, with designated
// initialisers in the order of the members here. What a line leaves out is as it usually is.
#ifndef BIFUN_FRAME_FACTS_H
#define BIFUN_FRAME_FACTS_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

#include "bop/frame/keywords.h"
#include "bop/frame/value_type.h"

namespace bifun {

constexpr std::size_t most_arguments = 5;

// When a row of the result is NULL. The no-null flag of the result is that of the only column, or else says whether all columns have
// theirs set and no constant is NULL.
enum class null_rule : std::uint8_t {
    propagates, // where any argument is: the usual
    replaced,   // where both arguments are: the second one stands in for a NULL
    both_null,  // where both arguments are, and the no-null flag says whether any row is
    chosen,     // where the argument is that the first one chooses. The condition's own flag does not count, its value does even behind a
                // NULL, and the result's no-null flag is only ever cleared
    first_only, // where the first argument is: constants go by their length, whatever their flags say
    first_decides, // where the first argument is: for the others a NULL is a value like any
    never_null,    // never; the condition is read as under `chosen`
    defaulted,     // never: something else stands in for a NULL, and the argument's no-null flag is passed on all the same
    adds_nulls,    // propagates, but a row without a NULL may be NULL too: the no-null flag is always cleared
};

struct null_fact {
    std::string_view names;
    null_rule rule;
};

// Texts and datetimes that are made in another way than is usual.
enum class value_form : std::uint8_t {
    usual,
    padded,        // VARCHAR: the letters with 1 to 8 blanks in front in one row of four and 0 to 15 blanks behind, which are a count
    multilingual,  // VARCHAR: Latin, Cyrillic and Chinese, 1.8 bytes to a character; the range is the length in characters
    datetime_text, // VARCHAR: YYYY-MM-DD HH:MM:SS; the range are the years
    number_text,   // VARCHAR: a DOUBLE in its shortest digits, without an exponent; the range are the numbers
    price_text,    // VARCHAR: a number with two digits behind the point; the range are the numbers
    json_object,   // VARCHAR: 200 bytes of JSON, an object with a member "name" and others before and behind it
    date,          // DATETIME: without a time of day
};

// What a text has to be that says how dates are written or read.
enum class date_format : std::uint8_t {
    none,
    model,                   // a format model
    model_to_read,           // one by which text can be read
    model_to_read_with_zone, // the same, and it may have elements of the zone
    model_or_number_format,
    percent, // a %-format
};

// Values that suit an argument, for benchmarks. What is left out is as the form has it, or the type.
struct typical_values {
    double low = 0; // of numbers, years, lengths in bytes, months or seconds; both are left out together
    double high = 0;
    std::string_view constant = {}; // the value where the argument is a constant
    std::string_view letters = {};  // of texts
    value_form form = value_form::usual;
};

inline constexpr long double no_limit = std::numeric_limits<long double>::infinity();
// The smallest DOUBLEs that are greater.
inline constexpr long double above_zero = std::numeric_limits<double>::denorm_min();
inline constexpr long double above_one = 1.0 + std::numeric_limits<double>::epsilon();

// What is true of an argument: of these built-ins or entry points, in this position, where it has this type.
struct argument_fact {
    std::string_view names;
    std::size_t position;
    value_type type;

    // For those who write and bind calls.
    datetime_kinds kinds = datetime_kinds::ANY;
    bool adds_time = false;           // a DATE gets a time of day from it: from a field of the time, or from a fraction
    field_set fields = 0;             // the fields for which a call is bound to this entry point, where others take the rest
    keyword_list keywords = {};       // that people write in place of its values
    std::string_view words = {};      // the texts that a call may have here, in any case, with blanks between
    bool or_integer = false;          // a text that is an integer may stand in place of one of the words
    std::string_view returning = {};  // the types behind RETURNING in this text for which a call is bound to this entry point; without
                                      // RETURNING it is VARCHAR
    std::string_view if_omitted = {}; // what stands for this last argument where a call leaves it out
    date_format format = date_format::none;

    // Sound values, for tests and fuzzers: numbers and the years of datetimes from `low` to `high`; or else `texts`, or else the
    // codes of its fields or keywords. A range need not be all that is allowed.
    //
    // Texts have ` | ` between them. `_` is a trailing blank, '' the empty text, a*49 is 49 times a, and `&` joins such parts; the fields
    // of an interval have slashes between them.
    long double low = -no_limit;
    long double high = no_limit; // of 64 bits, so that every BIGINT is one
    std::string_view texts = {};
    bool takes_nan = true;
    bool others_pass = false; // other values do not fail, and these are only the ones that tell

    typical_values typical = {}; // where those of the type would be rejected or take a path that is not the usual one
};

// The kind of a DATETIME result that is none of the arguments' kinds.
struct result_fact {
    std::string_view names;
    datetime_kinds kind;
};

// How long the results of calls with the same arguments stay the same.
enum class change : std::uint8_t {
    never,       // the usual
    per_session, // the session's zone and formats decide, too, or the current time
    every_call,
};

struct change_fact {
    std::string_view names;
    change when;
};

// A call as a parser of SQL's own syntax may report it: its name for the call, and the built-in's arguments made from the call's. `$1` is
// the first of these, 'x' a literal, another word a keyword. Arguments that are not named stand behind, as they are.
struct parsed_call {
    std::string_view name;
    std::string_view arguments[most_arguments] = {};
};

// How SQL writes a built-in, besides NAME(argument, ...).
struct spelling {
    std::string_view builtin = {};
    std::string_view names = {};  // further names, in upper case with blanks between
    std::string_view syntax = {}; // its own syntax, `$1` for the first argument, in brackets what goes with one that may be missing
    bool takes_more = false;      // more than two arguments: f(a, b, c) is f(f(a, b), c)
    parsed_call parsed[6] = {};   // where that has another name or other arguments; the last counts for which a call has enough
};

// Some types, as bits: all of them, or one.
struct type_set {
    std::uint32_t bits = ~0U;

    constexpr type_set() = default;
    constexpr type_set(value_type type) : bits(1U << static_cast<unsigned>(type)) {}
};
constexpr type_set operator|(type_set a, type_set b) {
    a.bits |= b.bits;
    return a;
}
constexpr bool contains(type_set set, value_type type) { return (set.bits & type_set(type).bits) != 0; }

inline constexpr type_set any_type;
inline constexpr type_set any_number = type_set(value_type::INT) | value_type::BIGINT | value_type::DECIMAL | value_type::DOUBLE;

// What to do instead of a call whose first arguments are of these types and that no entry point takes.
struct advice {
    std::string_view names;
    std::string_view text;
    type_set types[2];
};

} // namespace bifun

#endif
