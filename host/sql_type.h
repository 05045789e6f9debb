// The types of SQL expressions: finer than those of the catalogue, which has one type for dates, times and datetimes.
#ifndef BIFUN_HOST_SQL_TYPE_H
#define BIFUN_HOST_SQL_TYPE_H

#include <cstdint>
#include <string_view>

#include "bop/frame/value_type.h"

namespace host {

// `null` is the type of the literal NULL, which takes on any other.
enum class sql_type : std::uint8_t { null, boolean, integer, bigint, decimal, double_precision, date, time, datetime, varchar, varbinary };

constexpr std::string_view sql_type_name(sql_type type) {
    constexpr std::string_view names[] = {"NULL", "BOOL", "INT",      "BIGINT",  "DECIMAL",  "DOUBLE",
                                          "DATE", "TIME", "DATETIME", "VARCHAR", "VARBINARY"};
    return names[static_cast<std::size_t>(type)];
}

// The type of the values in a column. NULL literals go into INT columns where nothing asks for another.
constexpr bifun::value_type value_type_of(sql_type type) {
    using bifun::value_type;
    constexpr value_type types[] = {value_type::INT,      value_type::BOOL,    value_type::INT,      value_type::BIGINT,
                                    value_type::DECIMAL,  value_type::DOUBLE,  value_type::DATETIME, value_type::DATETIME,
                                    value_type::DATETIME, value_type::VARCHAR, value_type::VARBINARY};
    return types[static_cast<std::size_t>(type)];
}

// The type that an expression has whose values are of a catalogue type and nothing finer is known.
constexpr sql_type sql_type_of(bifun::value_type type) {
    constexpr sql_type types[] = {sql_type::boolean, sql_type::integer,  sql_type::bigint,  sql_type::double_precision,
                                  sql_type::decimal, sql_type::datetime, sql_type::varchar, sql_type::varbinary};
    return types[static_cast<std::size_t>(type)];
}

constexpr bool is_number(sql_type type) { return type >= sql_type::integer && type <= sql_type::double_precision; }
constexpr bool is_datetime(sql_type type) { return type >= sql_type::date && type <= sql_type::datetime; }

} // namespace host

#endif
