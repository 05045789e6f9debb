// SPDX-License-Identifier: Apache-2.0
// Built-ins as SQL names them.
#ifndef BIFUN_HOST_SQL_BUILTINS_H
#define BIFUN_HOST_SQL_BUILTINS_H

#include <string>
#include <string_view>

#include "adapters/binding/keyword_use.h"
#include "bop/frame/catalogue.h"

namespace host {

using binding::keyword_use;
using binding::keywords_of;
using binding::role_name;

// The built-in with that name, its own or a further one, or null; ASCII case does not matter.
const bifun::builtin* find_builtin(std::string_view name);

// That there is none, with names that may be meant.
std::string unknown_function(std::string_view name);

// Of a name that other systems have a value for and no column has: "; use LIMIT n"; may be empty.
std::string advice_on_word(std::string_view name);

} // namespace host

#endif
