// SPDX-License-Identifier: Apache-2.0
// What to type where a value is not of the type that is needed.
#ifndef BIFUN_HOST_TABLES_TYPE_ADVICE_H
#define BIFUN_HOST_TABLES_TYPE_ADVICE_H

#include <span>
#include <string>

#include "host/tables/table.h"

namespace host {

struct misplaced_value {
    sql_type type;
    bool is_literal = false;
    const table_column* column = nullptr; // where it is one
};

// What makes a value of the type needed of it, to stand behind what is wrong: "; write the number without quotes". Empty where nothing is
// known.
std::string way_to(sql_type needed, const misplaced_value& given);

// What makes numbers of all texts of a column, the same; empty where nothing does.
std::string way_to_all_numbers(const table_column& column);

// The same where neither of two values has to have its type, as in a comparison, which may be one for equality alone.
std::string way_together(const misplaced_value& left, const misplaced_value& right, bool is_equality);

// --types "day:DATE 'DD/MM/YYYY'" or --types "day:DATE 'MM/DD/YYYY'", for a shell.
std::string options_of_types(const std::string& column, std::span<const column_type> types);

// TO_NUMBER(REPLACE(price, '$', '')) makes numbers of its texts: where the texts of a column are numbers with something around them or with
// other groups; empty where they are not.
std::string advice_on_dressed_numbers(const std::string& column, const text_forms& forms);

// What makes timestamps of texts that have more digits of a second than are kept.
std::string advice_on_long_fractions(const std::string& column);

// Why a column of times of which some have a zone is text, and what gives it the type.
std::string zone_advice(const std::string& column, std::span<const column_type> types);

} // namespace host

#endif
