// SPDX-License-Identifier: Apache-2.0
// Literals as values.
#ifndef BIFUN_HOST_BINDING_LITERAL_H
#define BIFUN_HOST_BINDING_LITERAL_H

#include <optional>
#include <string>

#include "host/evaluation/constant.h"
#include "host/session/settings.h"
#include "host/sql/expression.h"

namespace host {

// The type that a literal has by itself: the first of INT, BIGINT and DECIMAL that a number fits, DOUBLE where it has an exponent.
// Throws where the text cannot be read as what it is said to be.
sql_type literal_type_of(const expression& literal, const std::string& sql);

// Whether a string literal can be read as a datetime, and the type of it.
std::optional<sql_type> datetime_type_of(const expression& literal);

// A literal as a value of a type that it has or widens to. Throws where the character set lacks one of its characters.
constant make_constant(const expression& literal, bifun::value_type type, const session_settings& settings, const std::string& sql);

} // namespace host

#endif
