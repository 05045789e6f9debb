// SPDX-License-Identifier: Apache-2.0
// Statements that nearly always are right, out of what there is: the built-ins of the catalogue, the operators, and the columns of
// corpus/t.csv.
#ifndef BIFUN_FUZZ_MADE_STATEMENT_H
#define BIFUN_FUZZ_MADE_STATEMENT_H

#include <string>

#include "fuzz/choices.h"

// The types of those columns of t.csv whose texts do not tell them.
constexpr const char* types_of_t =
    "f:DOUBLE,s:CHAR(20),u:VARCHAR,zoned_clock:TIME WITH TIME ZONE,zoned:TIMESTAMP WITH TIME ZONE,months:INTERVAL YEAR TO MONTH,"
    "pause:INTERVAL DAY TO SECOND";

struct made_statement {
    std::string sql;
    bool has_limit;     // so that it may end before the row that fails
    bool is_repeatable; // no clock has a say, as it has in UNIX_TIMESTAMP of NULL
};

made_statement make_statement(choices& chosen);

#endif
