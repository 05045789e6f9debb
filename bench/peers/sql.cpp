// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/sql.h"

namespace bifun::peers {
namespace {

std::string call(std::string_view function, std::string_view argument) { return std::string(function) + "(" + std::string(argument) + ")"; }

// Of a timestamp or a date.
std::string microseconds_of(std::string_view expression, dialect dialect) {
    return dialect == dialect::duckdb ? "epoch_us(CAST(" + std::string(expression) + " AS TIMESTAMP))"
                                      : "toUnixTimestamp64Micro(toDateTime64(" + std::string(expression) + ", 6, 'UTC'))";
}

// Aggregates whose time does not depend on the values, as far as there are: DuckDB's sum of BIGINT is 128 bits wide and branches.
std::string total_of(value_type type, std::string_view expression, dialect dialect) {
    const bool duckdb = dialect == dialect::duckdb;
    switch (type) {
    case value_type::DOUBLE:
        return call("sum", expression);
    case value_type::DECIMAL:
        return call("max", expression);
    case value_type::DATETIME:
        return microseconds_of(call("max", expression), dialect);
    case value_type::VARCHAR:
    case value_type::VARBINARY:
        return call("sum", call(duckdb ? "strlen" : "length", expression));
    default:
        return call(duckdb ? "bit_xor" : "groupBitXor", expression);
    }
}

std::string touch_of(value_type type, std::string_view column, dialect dialect) {
    if (type == value_type::VARCHAR || type == value_type::VARBINARY) {
        return call("max", call(dialect == dialect::duckdb ? "strlen" : "length", column));
    }
    if (type == value_type::DOUBLE) {
        return call("avg", column); // max is many times slower in DuckDB, and for NULLs in ClickHouse, and would hide the reading
    }
    return call(type == value_type::DECIMAL || type == value_type::DATETIME ? "min" : "max", column);
}

std::string query(const bench_case& bench_case, std::string_view expression, dialect dialect) {
    const value_type result = column_named(bench_case.like_result).type;
    std::string touched;
    for (const std::string_view name : columns_read(bench_case)) {
        touched += touch_of(column_named(name).type, name, dialect) + ", ";
    }
    return "SELECT " + touched + total_of(result, expression, dialect) + " FROM t";
}

} // namespace

std::string_view expression_of(const bench_case& bench_case, dialect dialect) {
    return dialect == dialect::duckdb ? bench_case.duckdb : bench_case.clickhouse;
}

std::string measured_query(const bench_case& bench_case, dialect dialect) {
    return query(bench_case, expression_of(bench_case, dialect), dialect);
}

std::string baseline_query(const bench_case& bench_case, dialect dialect) { return query(bench_case, bench_case.like_result, dialect); }

std::string sample_query(const bench_case& bench_case, dialect dialect, std::uint32_t rows) {
    std::string value(expression_of(bench_case, dialect));
    if (column_named(bench_case.like_result).type == value_type::DATETIME) {
        value = microseconds_of(value, dialect);
    }
    const std::string from = " FROM (SELECT * FROM t LIMIT " + std::to_string(rows) + ")";
    const std::string between = std::string("'") + separator + "'";
    return dialect == dialect::duckdb
               ? "SELECT string_agg(coalesce(CAST(" + value + " AS VARCHAR), 'NULL'), " + between + ")" + from
               : "SELECT arrayStringConcat(groupArray(ifNull(toString(" + value + "), 'NULL')), " + between + ")" + from;
}

} // namespace bifun::peers
