// Literals as the constant arguments of functions.
#ifndef BIFUN_HOST_CONSTANT_H
#define BIFUN_HOST_CONSTANT_H

#include <cstdint>
#include <span>
#include <vector>

#include "bop/frame/contract.h"
#include "embedded/columns/column_storage.h"
#include "host/field_value.h"
#include "host/sql_syntax.h"

namespace host {

// The argument record of a constant. The bytes of a long string lie in `text`, where functions may change them during a call.
struct constant {
    union {
        bifun_int_constant as_int; // also BOOL
        bifun_bigint_constant as_bigint;
        bifun_double_constant as_double;
        bifun_decimal_constant as_decimal;
        bifun_datetime_constant as_datetime;
        bifun_interval_ym_constant as_interval_ym;
        bifun_interval_dt_constant as_interval_dt;
        bifun_string_constant as_string;
    };
    std::vector<std::uint8_t> text;
};

// The type that a literal has by itself: the first of INT, BIGINT and DECIMAL that a number fits, DOUBLE where it has an exponent.
// Throws where the text cannot be read as what it is said to be.
sql_type literal_type_of(const expression& literal, const std::string& sql);

// Whether a string literal can be read as a datetime, and the type of it.
std::optional<sql_type> datetime_type_of(const expression& literal);

// A literal as a value of a type that it has or widens to. Throws where the character set lacks one of its characters.
constant make_constant(const expression& literal, bifun::value_type type, const session_settings& settings, const std::string& sql);

// A column of one row for each of the constants, or null when memory is exhausted. Its string bytes are its own.
zqengine::column_pointer make_constant_column(std::span<const constant> values, bifun::value_type type);

} // namespace host

#endif
