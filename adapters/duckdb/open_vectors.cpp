// SPDX-License-Identifier: Apache-2.0
#include "adapters/duckdb/open_vectors.h"

#include <cstring>

#include "adapters/binding/host_values.h"
#include "adapters/duckdb/vector_rows.h"
#include "adapters/duckdb/vectors.h"

namespace duckdb_extension {
namespace {

using binding::call_argument;
using binding::int128;
using binding::sql_type;
using binding::uint128;

// The rows of a vector of `Stored` values, each by show(value, row), which returns false for a value that cannot be shown.
template <class Stored, class Show>
bool show_each(duckdb_vector vector, std::uint32_t row_count, call_argument& argument, const Show& show) {
    const std::uint32_t shown = show_rows(vector, sizeof(Stored), row_count, argument);
    const auto* const bytes = static_cast<const std::uint8_t*>(duckdb_vector_get_data(vector));
    return for_each_value(argument, shown, [&](std::uint32_t row) {
        Stored value;
        std::memcpy(&value, bytes + row * sizeof value, sizeof value);
        return show(value, row);
    });
}

template <class Stored, class Value> void show_as(duckdb_vector vector, std::uint32_t row_count, call_argument& argument) {
    auto* const values = binding::values_of<Value>(argument);
    (void)show_each<Stored>(vector, row_count, argument, [values](Stored value, std::uint32_t row) {
        values[row] = static_cast<Value>(value);
        return true;
    });
}

template <class Stored> void show_decimals(duckdb_vector vector, std::uint32_t scale, std::uint32_t row_count, call_argument& argument) {
    auto* const values = binding::values_of<xdec>(argument);
    (void)show_each<Stored>(vector, row_count, argument, [values, scale](Stored value, std::uint32_t row) {
        binding::read_host_decimal(value, scale, values[row]);
        return true;
    });
}

template <class Stored> void show_numbers(duckdb_vector vector, sql_type type, std::uint32_t row_count, call_argument& argument) {
    switch (type) {
    case sql_type::integer:
        return show_as<Stored, std::int32_t>(vector, row_count, argument);
    case sql_type::bigint:
        return show_as<Stored, std::int64_t>(vector, row_count, argument);
    default:
        return show_as<Stored, double>(vector, row_count, argument);
    }
}

void show_decimal_vector(duckdb_vector vector, duckdb_logical_type type, std::uint32_t row_count, call_argument& argument) {
    const std::uint32_t scale = duckdb_decimal_scale(type);
    switch (duckdb_decimal_internal_type(type)) {
    case DUCKDB_TYPE_SMALLINT:
        return show_decimals<std::int16_t>(vector, scale, row_count, argument);
    case DUCKDB_TYPE_INTEGER:
        return show_decimals<std::int32_t>(vector, scale, row_count, argument);
    case DUCKDB_TYPE_BIGINT:
        return show_decimals<std::int64_t>(vector, scale, row_count, argument);
    default:
        return show_decimals<int128>(vector, scale, row_count, argument);
    }
}

// `count` of these units are a microsecond, or it has `per_unit` microseconds.
bool show_timestamps(duckdb_vector vector, std::int64_t per_unit, std::int64_t count, std::uint32_t row_count, call_argument& argument) {
    auto* const values = binding::values_of<zqtime>(argument);
    return show_each<std::int64_t>(vector, row_count, argument, [=](std::int64_t value, std::uint32_t row) {
        const std::int64_t whole = value / count - (value % count < 0 ? 1 : 0);
        std::int64_t microseconds = 0;
        return !__builtin_mul_overflow(whole, per_unit, &microseconds) &&
               binding::read_host_timestamp(microseconds, ZQTIME_NO_ZONE, values[row]);
    });
}

constexpr std::string_view no_function = "there is no function for an argument of this type; write which it is to be: CAST(... AS ...)";

std::string show_by_type(duckdb_vector vector, duckdb_logical_type host_type, sql_type type, std::uint32_t row_count,
                         call_argument& argument) {
    switch (const duckdb_type known = duckdb_get_type_id(host_type)) {
    case DUCKDB_TYPE_TINYINT:
        show_numbers<std::int8_t>(vector, type, row_count, argument);
        return "";
    case DUCKDB_TYPE_SMALLINT:
        show_numbers<std::int16_t>(vector, type, row_count, argument);
        return "";
    case DUCKDB_TYPE_INTEGER:
        show_numbers<std::int32_t>(vector, type, row_count, argument);
        return "";
    case DUCKDB_TYPE_BIGINT:
        show_numbers<std::int64_t>(vector, type, row_count, argument);
        return "";
    case DUCKDB_TYPE_UTINYINT:
        show_numbers<std::uint8_t>(vector, type, row_count, argument);
        return "";
    case DUCKDB_TYPE_USMALLINT:
        show_numbers<std::uint16_t>(vector, type, row_count, argument);
        return "";
    case DUCKDB_TYPE_UINTEGER:
        show_numbers<std::uint32_t>(vector, type, row_count, argument);
        return "";
    case DUCKDB_TYPE_UBIGINT:
        show_as<std::uint64_t, double>(vector, row_count, argument);
        return "";
    case DUCKDB_TYPE_HUGEINT:
        show_as<int128, double>(vector, row_count, argument);
        return "";
    case DUCKDB_TYPE_UHUGEINT:
        show_as<uint128, double>(vector, row_count, argument);
        return "";
    case DUCKDB_TYPE_FLOAT:
        show_as<float, double>(vector, row_count, argument);
        return "";
    case DUCKDB_TYPE_TIMESTAMP_S:
    case DUCKDB_TYPE_TIMESTAMP_MS:
    case DUCKDB_TYPE_TIMESTAMP_NS: {
        const std::int64_t per_unit = known == DUCKDB_TYPE_TIMESTAMP_S ? 1'000'000 : known == DUCKDB_TYPE_TIMESTAMP_MS ? 1'000 : 1;
        const bool fit = show_timestamps(vector, per_unit, known == DUCKDB_TYPE_TIMESTAMP_NS ? 1'000 : 1, row_count, argument);
        return fit ? "" : no_such_date;
    }
    default:
        return std::string(no_function);
    }
}

// The parameter for decimals gets what no other function takes, too.
std::string show_of_any_type(duckdb_vector vector, duckdb_logical_type host_type, std::uint32_t row_count, call_argument& argument) {
    switch (duckdb_get_type_id(host_type)) {
    case DUCKDB_TYPE_DECIMAL:
        show_decimal_vector(vector, host_type, row_count, argument);
        return "";
    case DUCKDB_TYPE_SQLNULL:
        argument.repeats = true;
        argument.data.null_flags[0] = 0;
        argument.column.no_nulls = 0;
        return "";
    default:
        return std::string(no_function);
    }
}

} // namespace

std::string show_open_vector(duckdb_vector vector, sql_type type, std::uint32_t row_count, call_argument& argument) {
    duckdb_logical_type host_type = duckdb_vector_get_column_type(vector);
    std::string fault = type == sql_type::decimal ? show_of_any_type(vector, host_type, row_count, argument)
                                                  : show_by_type(vector, host_type, type, row_count, argument);
    duckdb_destroy_logical_type(&host_type);
    return fault;
}

} // namespace duckdb_extension
