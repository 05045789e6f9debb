// SPDX-License-Identifier: Apache-2.0
// The functions that PostgreSQL has for the built-ins: those of the signatures, and more for types that PostgreSQL would convert in another
// way than a call is bound.
#ifndef BIFUN_ADAPTERS_POSTGRESQL_SQL_FUNCTIONS_H
#define BIFUN_ADAPTERS_POSTGRESQL_SQL_FUNCTIONS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/binding/signature.h"

namespace postgresql_extension {

enum class host_type : std::uint8_t {
    boolean,
    smallint,
    integer,
    bigint,
    numeric,
    double_precision,
    date,
    time,
    timestamp,
    time_with_zone,
    timestamp_with_zone,
    interval,
    text,
    character, // char(n), whose trailing blanks a conversion to text would drop
    bytea
};

struct host_type_names {
    std::uint32_t oid;    // in pg_type
    std::string_view sql; // in a declaration
};
const host_type_names& names_of(host_type type);

struct sql_function {
    std::string name; // in lower case
    binding::signature form;
    std::vector<host_type> arguments; // more than the signature has where it takes more
    host_type result;
};

// All functions of a built-in, under all of its names; no two of them have the same name and arguments.
std::vector<sql_function> functions_of(const bifun::builtin& builtin);

// The built-in that has a function of the name, in lower case; null for another one.
const bifun::builtin* find_builtin(std::string_view name);

// How long results stay the same: moments are shown by the session's clock.
bifun::change change_of(const sql_function& function);

} // namespace postgresql_extension

#endif
