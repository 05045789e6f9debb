// SPDX-License-Identifier: Apache-2.0
// What keywords do in the calls of a built-in.
#ifndef BIFUN_ADAPTERS_BINDING_KEYWORD_USE_H
#define BIFUN_ADAPTERS_BINDING_KEYWORD_USE_H

#include <cstddef>
#include <optional>
#include <string_view>

#include "bop/frame/catalogue.h"

namespace binding {

struct keyword_use {
    bifun::keyword_list list;                 // none without any
    bool chooses_member = false;              // which member a call is bound to depends on the field, and on the kind of the datetime
    std::optional<std::size_t> name_position; // where a member takes the name of a field as a text
};
keyword_use keywords_of(std::string_view builtin);

// What messages call such an argument.
constexpr std::string_view role_name(bifun::keyword_role role) { return role == bifun::keyword_role::mode ? "mode" : "field"; }

} // namespace binding

#endif
