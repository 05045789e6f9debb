// SPDX-License-Identifier: Apache-2.0
// What to type in place of a call that cannot be bound. All of it stands behind what is wrong, "; use ...", and may be empty.
#ifndef BIFUN_HOST_BINDING_CALL_ADVICE_H
#define BIFUN_HOST_BINDING_CALL_ADVICE_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/binding/member_choice.h"
#include "host/binding/binder.h"

namespace host {

using binding::offered_argument;

// As the choice of a member sees the operands.
std::vector<offered_argument> offered_of(std::span<const operand> arguments);

// Where no member of the built-in takes the arguments.
std::string advice_on_arguments(const binder& state, std::string_view builtin, std::span<const operand> arguments);

// Where none takes so many.
std::string_view advice_on_count(std::string_view builtin, std::size_t count);

// Where a text literal among them cannot be read as a datetime.
std::string advice_on_unread_literal(std::string_view builtin, std::span<const operand> arguments, const operand& literal);

// Where the first operand of the call is none of its fields or modes.
std::string advice_on_keyword(const expression& call, std::string_view builtin);

// Where a text, in upper case, is none of the units with blanks between.
std::string advice_on_unit(std::string_view units, std::string_view unit);

} // namespace host

#endif
