// Which entry point of a built-in takes the arguments of a call.
#ifndef BIFUN_HOST_MEMBER_CHOICE_H
#define BIFUN_HOST_MEMBER_CHOICE_H

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "bop/frame/catalogue.h"
#include "host/sql_syntax.h"
#include "host/sql_type.h"

namespace host {

// An argument as far as the choice depends on it.
struct offered_argument {
    sql_type type;
    bool is_literal;
};

// How far an argument is from a parameter's type: 0 for the type itself, more for each step of INT -> BIGINT -> DECIMAL -> DOUBLE,
// most for a string literal that is read as a datetime; nothing where it does not fit.
std::optional<unsigned> widening(offered_argument argument, bifun::value_type parameter);

// The built-in with that name, or null; ASCII case does not matter.
const bifun::builtin* find_builtin(std::string_view name);

// The member that needs the least widening; among equals the one that takes the most literals as constants; among those the first.
// Null where none fits. Not for EXTRACT, whose members take the same arguments.
const bifun::entry_point* choose_member(std::string_view builtin, std::span<const offered_argument> arguments);

// The last argument of a call that SQL lets people leave out while no member does without it.
struct default_argument {
    std::string_view builtin;
    sql_type given[2]; // the types of the arguments before it; null for no argument
    literal_kind kind;
    std::string_view text;
};

// What to add to these arguments before a member is chosen, or null.
const default_argument* find_default_argument(std::string_view builtin, std::span<const offered_argument> arguments);

// The member of that name in the library.
const bifun::entry_point& member_named(std::string_view symbol);

// How many arguments the members take: "2", or "2 or 3".
std::string argument_counts(std::string_view builtin);
bool takes_argument_count(std::string_view builtin, std::size_t count);

// What calls with so many arguments may look like: "(BIGINT), (DECIMAL)". A parameter is called constant where it has to be a literal; the
// first one of built-ins that take a keyword there is called `role`, which is empty for others.
std::string signatures(std::string_view builtin, std::size_t argument_count, std::string_view role);

// What to do instead where no member takes the arguments: "; use ..."; may be empty.
std::string_view advice_for(std::string_view builtin, std::span<const offered_argument> arguments);

} // namespace host

#endif
