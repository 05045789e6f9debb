// SPDX-License-Identifier: Apache-2.0
// The built-ins as functions of a host that overloads by types, as SQL engines do: the host finds the function that takes a call's types,
// the binding the entry point that takes the values.
#ifndef BIFUN_ADAPTERS_BINDING_SIGNATURE_H
#define BIFUN_ADAPTERS_BINDING_SIGNATURE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/binding/sql_type.h"
#include "bop/frame/catalogue.h"

namespace binding {

// Arguments as bits: bit i is argument i.
using argument_set = std::uint32_t;
constexpr bool contains(argument_set set, std::size_t position) { return (set >> position & 1) != 0; }

struct signature {
    std::string_view builtin;
    // `varchar` for a keyword, such as the name of a field; `interval_dt` for intervals of either kind: which one a value is shows itself.
    std::array<sql_type, bifun::most_arguments> type_list;
    std::size_t argument_count;
    sql_type result;        // for keywords and formats that the types do not tell, a type that holds all results; `interval_dt` as above
    argument_set constants; // these are constants in any call: rows that have others there are evaluated by themselves
    std::optional<std::size_t> keyword; // the argument that is one
    bifun::keyword_list keywords;       // of which it is one
    bifun::change changes;
    bool is_null_for_null; // wherever any argument is
    bool takes_more;       // f(a, b, c) is f(f(a, b), c)

    [[nodiscard]] std::span<const sql_type> types() const { return {type_list.data(), argument_count}; }
};

// Those of a built-in, no two with the same types.
std::vector<signature> signatures_of(std::string_view builtin);

// What the values of a call tell besides its types.
struct call_values {
    argument_set constants;               // one value for all rows
    std::optional<std::int32_t> keyword;  // the code, of the argument that is one
    argument_set intervals_of_months = 0; // the intervals that are years and months
};

// How a call with such values is evaluated: a member that may take one argument more than the signature has, which then has the value that
// stands for it where it is omitted. Null where the built-in does not take them.
const bifun::entry_point* find_member(const signature& call, const call_values& values);

// The type of what a member gives; nothing where it does not take the datetimes of the call.
std::optional<sql_type> result_type(const signature& call, const call_values& values, const bifun::entry_point& member);

// Why find_member or result_type has found nothing; begins with the name of the built-in. `keyword` is how the call has it.
std::string explain_refusal(const signature& call, const call_values& values, std::string_view keyword);

} // namespace binding

#endif
