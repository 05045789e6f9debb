// SPDX-License-Identifier: Apache-2.0
// Built-ins as SQL names them.
#ifndef BIFUN_HOST_SQL_BUILTINS_H
#define BIFUN_HOST_SQL_BUILTINS_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "bop/frame/catalogue.h"

namespace host {

// The built-in with that name, its own or a further one, or null; ASCII case does not matter.
const bifun::builtin* find_builtin(std::string_view name);

// That there is none, with names that may be meant.
std::string unknown_function(std::string_view name);

// What keywords do in the calls of a built-in.
struct keyword_use {
    bifun::keyword_list list;                 // none without any
    bool chooses_member = false;              // which member a call is bound to depends on the field, and on the kind of the datetime
    std::optional<std::size_t> name_position; // where a member takes the name of a field as a text
};
const keyword_use& keywords_of(std::string_view builtin);

// What messages call such an argument.
constexpr std::string_view role_name(bifun::keyword_role role) { return role == bifun::keyword_role::mode ? "mode" : "field"; }

} // namespace host

#endif
