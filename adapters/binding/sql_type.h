// SPDX-License-Identifier: Apache-2.0
// The types of SQL expressions: finer than those of the catalogue, which has one type for dates, times and timestamps.
#ifndef BIFUN_ADAPTERS_BINDING_SQL_TYPE_H
#define BIFUN_ADAPTERS_BINDING_SQL_TYPE_H

#include <cstdint>
#include <string_view>

#include "bop/frame/value_type.h"

namespace binding {

// `null` is the type of the literal NULL, which takes on any other.
enum class sql_type : std::uint8_t {
    null,
    boolean,
    integer,
    bigint,
    decimal,
    double_precision,
    date,
    time,
    timestamp,
    time_with_zone,
    timestamp_with_zone,
    interval_ym,
    interval_dt,
    varchar,
    varbinary,
    blob // of parameters only: no table has such columns
};

constexpr std::string_view sql_type_name(sql_type type) {
    constexpr std::string_view names[] = {"NULL",
                                          "BOOL",
                                          "INT",
                                          "BIGINT",
                                          "DECIMAL",
                                          "DOUBLE",
                                          "DATE",
                                          "TIME",
                                          "TIMESTAMP",
                                          "TIME WITH TIME ZONE",
                                          "TIMESTAMP WITH TIME ZONE",
                                          "INTERVAL YEAR TO MONTH",
                                          "INTERVAL DAY TO SECOND",
                                          "VARCHAR",
                                          "VARBINARY",
                                          "BLOB"};
    return names[static_cast<std::size_t>(type)];
}

// DECIMAL(10, 2): digits in all, and behind the point.
struct decimal_shape {
    std::int32_t digits;
    std::int32_t fraction_digits;
};

constexpr bool is_number(sql_type type) { return type >= sql_type::integer && type <= sql_type::double_precision; }
constexpr bool is_datetime(sql_type type) { return type >= sql_type::date && type <= sql_type::timestamp_with_zone; }
constexpr bool is_interval(sql_type type) { return type == sql_type::interval_ym || type == sql_type::interval_dt; }

// Of a datetime type, which are in the same order here; nothing for the others.
constexpr bifun::datetime_kinds kind_of(sql_type type) {
    return static_cast<bifun::datetime_kinds>(is_datetime(type) ? 1U << static_cast<unsigned>(type) >> static_cast<unsigned>(sql_type::date)
                                                                : 0U);
}
// The type of a single kind.
constexpr sql_type type_of(bifun::datetime_kinds kind) {
    auto type = static_cast<unsigned>(sql_type::date);
    while (kind_of(static_cast<sql_type>(type)) != kind) {
        ++type;
    }
    return static_cast<sql_type>(type);
}
constexpr bool has_zone(sql_type type) { return overlap(kind_of(type), bifun::datetime_kinds::WITH_ZONE); }
constexpr bool has_date(sql_type type) { return overlap(kind_of(type), bifun::datetime_kinds::WITH_DATE); }

// The type of the values in a column. NULL literals go into INT columns where nothing asks for another.
constexpr bifun::value_type value_type_of(sql_type type) {
    using bifun::value_type;
    constexpr value_type types[] = {value_type::INT,         value_type::BOOL,     value_type::INT,       value_type::BIGINT,
                                    value_type::DECIMAL,     value_type::DOUBLE,   value_type::DATETIME,  value_type::DATETIME,
                                    value_type::DATETIME,    value_type::DATETIME, value_type::DATETIME,  value_type::INTERVAL_YM,
                                    value_type::INTERVAL_DT, value_type::VARCHAR,  value_type::VARBINARY, value_type::BLOB};
    return types[static_cast<std::size_t>(type)];
}

// The type that an expression has whose values are of a catalogue type and nothing finer is known.
constexpr sql_type sql_type_of(bifun::value_type type) {
    constexpr sql_type types[] = {sql_type::boolean,     sql_type::integer,     sql_type::bigint,  sql_type::double_precision,
                                  sql_type::decimal,     sql_type::timestamp,   sql_type::varchar, sql_type::varbinary,
                                  sql_type::interval_ym, sql_type::interval_dt, sql_type::blob};
    return types[static_cast<std::size_t>(type)];
}

// What a parameter asks for. DATETIME stands for any of the datetime types.
constexpr std::string_view parameter_type_name(bifun::value_type type) {
    return type == bifun::value_type::DATETIME ? "DATETIME" : sql_type_name(sql_type_of(type));
}

} // namespace binding

#endif
