// SPDX-License-Identifier: Apache-2.0
// Which entry point of a built-in takes the arguments of a call.
#ifndef BIFUN_ADAPTERS_BINDING_MEMBER_CHOICE_H
#define BIFUN_ADAPTERS_BINDING_MEMBER_CHOICE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "adapters/binding/sql_type.h"
#include "bop/frame/catalogue.h"

namespace binding {

// An argument as far as the choice depends on it.
struct offered_argument {
    sql_type type;
    bool is_literal;
    std::optional<std::int32_t> keyword = {}; // the code of one
    std::string_view text = {};               // of a literal
};

// How far an argument is from a parameter's type: 0 for the type itself, more for each step of INT -> BIGINT -> DECIMAL -> DOUBLE,
// most for a string literal that is read as a datetime; nothing where it does not fit.
std::optional<unsigned> widening(offered_argument argument, bifun::value_type parameter);

// The member that needs the least widening; among equals one that all arguments are given for, then the one that takes the most literals
// as constants, then the first. Null where none fits. The member may take one argument more than is given, which then has the value that
// stands for it where it is omitted.
const bifun::entry_point* choose_member(std::string_view builtin, std::span<const offered_argument> arguments);

// How many arguments calls have: "2", or "2 or 3".
std::string argument_counts(std::string_view builtin);
bool takes_argument_count(std::string_view builtin, std::size_t count);

// What calls with so many arguments may look like: "(BIGINT), (field, DECIMAL)". A parameter is called constant where it has to be a
// literal.
std::string describe_signatures(std::string_view builtin, std::size_t argument_count);

// Where no member takes the arguments for the field that is one of them, but members would for others: "TIME has no field DAY; it has ...".
// Empty where the field is not to blame.
std::string field_refusal(std::string_view builtin, std::string_view field, std::span<const offered_argument> arguments);

// The types that text behind RETURNING can name in calls of the builtin: "INT, BIGINT"; empty where none has such.
std::string returned_types(std::string_view builtin);

// The text of the first that is for the built-in and its arguments; empty where there is none.
std::string_view find_advice(std::span<const bifun::advice> advices, std::string_view builtin, std::span<const offered_argument> arguments);

// What to do instead where no member takes the arguments: "; use ..."; may be empty.
std::string advice_for(std::string_view builtin, std::span<const offered_argument> arguments);

} // namespace binding

#endif
