// SPDX-License-Identifier: Apache-2.0
#include "adapters/duckdb/vectors.h"

#include <bit>
#include <cstring>

#include "adapters/binding/host_datetimes.h"
#include "adapters/binding/host_values.h"
#include "adapters/duckdb/vector_rows.h"

namespace duckdb_extension {
namespace {

using bifun::value_type;
using binding::call_argument;
using binding::sql_type;

bifun_string shown_text(const duckdb_string_t& text, bool counts_blanks) {
    const std::uint32_t size = text.value.inlined.length;
    const char* const bytes = size <= sizeof text.value.inlined.inlined ? text.value.inlined.inlined : text.value.pointer.ptr;
    std::uint32_t length = size;
    while (counts_blanks && length > 0 && bytes[length - 1] == ' ') {
        --length;
    }
    // Calls do not write to the bytes of other arguments than those that are copied.
    return {length, size - length, reinterpret_cast<std::uint8_t*>(const_cast<char*>(bytes))};
}

void show_texts(const duckdb_string_t* texts, bool counts_blanks, std::uint32_t row_count, std::vector<std::uint8_t>* copy,
                call_argument& argument) {
    auto* const shown = binding::values_of<bifun_string>(argument);
    std::size_t size = 0;
    for_each_value(argument, row_count, [&](std::uint32_t row) {
        shown[row] = shown_text(texts[row], counts_blanks);
        size += shown[row].length;
        return true;
    });
    if (copy == nullptr) {
        return;
    }
    copy->resize(size);
    std::uint8_t* to = copy->data();
    for_each_value(argument, row_count, [&](std::uint32_t row) {
        if (shown[row].length > 0) {
            std::memcpy(to, shown[row].data, shown[row].length);
        }
        shown[row].data = to;
        to += shown[row].length;
        return true;
    });
}

// 40 bits of microseconds above 24 bits of the zone, in seconds, that fall where it rises.
constexpr std::uint32_t zone_bits = 24;
constexpr std::int32_t greatest_zone = 16 * 3600 - 1;

bool show_datetimes(const void* values, sql_type type, std::uint32_t row_count, std::int32_t time_zone, call_argument& argument) {
    auto* const shown = binding::values_of<zqtime>(argument);
    if (argument.column.no_nulls != 0 && type == sql_type::date) {
        return binding::read_host_dates(static_cast<const std::int32_t*>(values), shown, row_count);
    }
    if (argument.column.no_nulls != 0 && type == sql_type::timestamp) {
        return binding::read_host_timestamps(static_cast<const std::int64_t*>(values), ZQTIME_NO_ZONE, shown, row_count);
    }
    const auto value = [&](std::uint32_t row) { return static_cast<const std::int64_t*>(values)[row]; };
    switch (type) {
    case sql_type::date:
        return for_each_value(argument, row_count, [&](std::uint32_t row) {
            return binding::read_host_datetime(static_cast<const std::int32_t*>(values)[row], 0, ZQTIME_NO_ZONE, shown[row]);
        });
    case sql_type::time:
        return for_each_value(argument, row_count, [&](std::uint32_t row) {
            binding::read_host_time(value(row), ZQTIME_NO_ZONE, shown[row]);
            return true;
        });
    case sql_type::time_with_zone:
        return for_each_value(argument, row_count, [&](std::uint32_t row) {
            const auto bits = static_cast<std::uint64_t>(value(row));
            const std::int32_t zone = greatest_zone - static_cast<std::int32_t>(bits & ((1U << zone_bits) - 1));
            binding::read_host_time(static_cast<std::int64_t>(bits >> zone_bits), zone / 60, shown[row]);
            return zone % 60 == 0 && zone / 60 <= bifun::datetime_layout::max_zone && zone / 60 >= -bifun::datetime_layout::max_zone;
        });
    case sql_type::timestamp:
        return for_each_value(argument, row_count,
                              [&](std::uint32_t row) { return binding::read_host_timestamp(value(row), ZQTIME_NO_ZONE, shown[row]); });
    default:
        return for_each_value(argument, row_count, [&](std::uint32_t row) {
            std::int64_t local = 0;
            const bool fits = !__builtin_add_overflow(value(row), time_zone * binding::microseconds_per_minute, &local);
            return binding::read_host_timestamp(local, time_zone, shown[row]) && fits;
        });
    }
}

constexpr std::size_t width_of(sql_type type) {
    switch (type) {
    case sql_type::boolean:
        return sizeof(bool);
    case sql_type::integer:
    case sql_type::date:
        return sizeof(std::int32_t);
    case sql_type::decimal:
    case sql_type::interval_dt:
    case sql_type::varchar:
    case sql_type::varbinary:
        return sizeof(duckdb_string_t);
    default:
        return sizeof(std::int64_t);
    }
}

// ---- results -----------------------------------------------------------------------------------------------------------------

// Bits of eight flags that are 0 or 1.
std::uint64_t bits_of_flags(const std::uint8_t* flags) {
    std::uint64_t bytes;
    std::memcpy(&bytes, flags, sizeof bytes);
    return bytes * 0x0102'0408'1020'4080 >> 56;
}

// Where a row of the results goes.
std::uint32_t target_of(std::span<const std::uint16_t> rows, std::uint32_t k) { return rows.empty() ? k : rows[k]; }

void store_nulls(const bifun_column* results, std::span<const std::uint16_t> rows, std::uint32_t row_count, duckdb_vector vector) {
    if (results != nullptr && results->no_nulls != 0) {
        return;
    }
    duckdb_vector_ensure_validity_writable(vector);
    std::uint64_t* const validity = duckdb_vector_get_validity(vector);
    std::uint32_t k = 0;
    if (results != nullptr && rows.empty()) {
        auto* const bits = reinterpret_cast<std::uint8_t*>(validity);
        for (; row_count - k >= 8; k += 8) {
            bits[k / 8] = static_cast<std::uint8_t>(bits_of_flags(results->data->null_flags + k));
        }
    }
    for (; k < row_count; ++k) {
        if (results == nullptr || results->data->null_flags[k] == 0) {
            const std::uint32_t row = target_of(rows, k);
            validity[row / 64] &= ~(std::uint64_t{1} << row % 64);
        }
    }
}

template <class Store>
bool for_each_result(const bifun_column& results, std::span<const std::uint16_t> rows, std::uint32_t row_count, const Store& store) {
    if (results.no_nulls != 0 && rows.empty()) {
        bool all = true;
        for (std::uint32_t k = 0; k < row_count; ++k) {
            all &= store(k, k);
        }
        return all;
    }
    for (std::uint32_t k = 0; k < row_count; ++k) {
        if (results.data->null_flags[k] != 0 && !store(k, target_of(rows, k))) {
            return false;
        }
    }
    return true;
}

template <class T> const T* values_of(const bifun_column& column) { return static_cast<const T*>(column.data->values); }

template <class T> void store_numbers(const bifun_column& results, std::span<const std::uint16_t> rows, std::uint32_t row_count, void* to) {
    if (rows.empty()) {
        std::memcpy(to, results.data->values, row_count * sizeof(T));
        return;
    }
    for (std::uint32_t k = 0; k < row_count; ++k) {
        static_cast<T*>(to)[rows[k]] = values_of<T>(results)[k];
    }
}

// A text of up to twelve bytes lies in the vector itself; a longer one is copied by DuckDB.
void store_text(const bifun_string& text, std::uint32_t row, duckdb_string_t* to, duckdb_vector vector, std::string& written_out) {
    const std::uint64_t size = std::uint64_t{text.length} + text.trailing_blanks;
    if (size <= sizeof to->value.inlined.inlined) {
        duckdb_string_t made{};
        made.value.inlined.length = static_cast<std::uint32_t>(size);
        std::memset(made.value.inlined.inlined, ' ', size);
        if (text.length > 0) {
            std::memcpy(made.value.inlined.inlined, text.data, text.length);
        }
        to[row] = made;
        return;
    }
    const char* bytes = reinterpret_cast<const char*>(text.data);
    if (text.trailing_blanks > 0) {
        written_out.assign(bytes, text.length);
        written_out.append(text.trailing_blanks, ' ');
        bytes = written_out.data();
    }
    duckdb_vector_assign_string_element_len(vector, row, bytes, size);
}

bool store_datetimes(const bifun_column& results, std::span<const std::uint16_t> rows, std::uint32_t row_count, sql_type type,
                     std::int32_t time_zone, void* to) {
    const auto* const values = values_of<zqtime>(results);
    auto* const words = static_cast<std::int64_t*>(to);
    if (results.no_nulls != 0 && rows.empty() && type == sql_type::date) {
        return binding::write_host_dates(values, static_cast<std::int32_t*>(to), row_count);
    }
    if (results.no_nulls != 0 && rows.empty() && type == sql_type::timestamp) {
        return binding::write_host_timestamps(values, words, row_count);
    }
    return for_each_result(results, rows, row_count, [&](std::uint32_t k, std::uint32_t row) {
        const std::int64_t time = binding::write_host_time(values[k]);
        if (type == sql_type::time) {
            words[row] = time;
            return time <= binding::microseconds_per_day;
        }
        const std::int32_t zone = binding::write_host_zone(values[k], time_zone);
        if (type == sql_type::time_with_zone) {
            words[row] = static_cast<std::int64_t>(static_cast<std::uint64_t>(time) << zone_bits |
                                                   static_cast<std::uint32_t>(greatest_zone - zone * 60));
            return time <= binding::microseconds_per_day;
        }
        std::int32_t days = 0;
        const bool exists = binding::write_host_date(values[k], days);
        if (type == sql_type::date) {
            static_cast<std::int32_t*>(to)[row] = days;
            return exists;
        }
        words[row] = days * binding::microseconds_per_day + time -
                     (type == sql_type::timestamp_with_zone ? zone * binding::microseconds_per_minute : 0);
        return exists;
    });
}

} // namespace

duckdb_logical_type make_type(sql_type type) {
    switch (type) {
    case sql_type::boolean:
        return duckdb_create_logical_type(DUCKDB_TYPE_BOOLEAN);
    case sql_type::integer:
        return duckdb_create_logical_type(DUCKDB_TYPE_INTEGER);
    case sql_type::bigint:
        return duckdb_create_logical_type(DUCKDB_TYPE_BIGINT);
    case sql_type::decimal:
        return duckdb_create_decimal_type(decimal_digits, fraction_digits);
    case sql_type::double_precision:
        return duckdb_create_logical_type(DUCKDB_TYPE_DOUBLE);
    case sql_type::date:
        return duckdb_create_logical_type(DUCKDB_TYPE_DATE);
    case sql_type::time:
        return duckdb_create_logical_type(DUCKDB_TYPE_TIME);
    case sql_type::timestamp:
        return duckdb_create_logical_type(DUCKDB_TYPE_TIMESTAMP);
    case sql_type::time_with_zone:
        return duckdb_create_logical_type(DUCKDB_TYPE_TIME_TZ);
    case sql_type::timestamp_with_zone:
        return duckdb_create_logical_type(DUCKDB_TYPE_TIMESTAMP_TZ);
    case sql_type::interval_ym:
    case sql_type::interval_dt:
        return duckdb_create_logical_type(DUCKDB_TYPE_INTERVAL);
    case sql_type::varbinary:
        return duckdb_create_logical_type(DUCKDB_TYPE_BLOB);
    default:
        return duckdb_create_logical_type(DUCKDB_TYPE_VARCHAR);
    }
}

std::string show_vector(duckdb_vector vector, sql_type type, std::uint32_t row_count, std::int32_t time_zone,
                        std::vector<std::uint8_t>* copy, call_argument& argument) {
    void* const values = duckdb_vector_get_data(vector);
    const std::uint32_t shown = show_rows(vector, width_of(type), row_count, argument);
    switch (type) {
    case sql_type::integer:
    case sql_type::bigint:
    case sql_type::double_precision:
        argument.data.values = values;
        return "";
    case sql_type::boolean:
        for (std::uint32_t row = 0; row < shown; ++row) {
            // Functions of a condition look at what stands behind a NULL: it counts as false.
            const bool is_true = argument.data.null_flags[row] != 0 && static_cast<const std::uint8_t*>(values)[row] != 0;
            binding::values_of<std::int32_t>(argument)[row] = is_true ? 1 : 0;
        }
        return "";
    case sql_type::decimal:
        for_each_value(argument, shown, [&](std::uint32_t row) {
            binding::int128 number;
            std::memcpy(&number, static_cast<const duckdb_hugeint*>(values) + row, sizeof number);
            binding::read_host_decimal(number, fraction_digits, binding::values_of<xdec>(argument)[row]);
            return true;
        });
        return "";
    case sql_type::interval_dt:
        static_assert(sizeof(binding::interval) == sizeof(duckdb_interval));
        std::memcpy(argument.intervals.data(), values, shown * sizeof(duckdb_interval));
        return "";
    case sql_type::varchar:
    case sql_type::varbinary:
        show_texts(static_cast<const duckdb_string_t*>(values), type == sql_type::varchar, shown, copy, argument);
        return "";
    default:
        if (show_datetimes(values, type, shown, time_zone, argument)) {
            return "";
        }
        return type == sql_type::time_with_zone ? "the zone of a time is not one of whole minutes from -14:00 to +14:00" : no_such_date;
    }
}

std::string store_results(const bifun_column* results, value_type given, std::span<const std::uint16_t> rows, std::uint32_t row_count,
                          sql_type type, std::int32_t time_zone, duckdb_vector vector) {
    store_nulls(results, rows, row_count, vector);
    if (results == nullptr) {
        return "";
    }
    void* const to = duckdb_vector_get_data(vector);
    switch (type) {
    case sql_type::boolean:
        for_each_result(*results, rows, row_count, [&](std::uint32_t k, std::uint32_t row) {
            static_cast<bool*>(to)[row] = values_of<std::int32_t>(*results)[k] != 0;
            return true;
        });
        return "";
    case sql_type::integer:
        store_numbers<std::int32_t>(*results, rows, row_count, to);
        return "";
    case sql_type::bigint:
        store_numbers<std::int64_t>(*results, rows, row_count, to);
        return "";
    case sql_type::double_precision:
        store_numbers<double>(*results, rows, row_count, to);
        return "";
    case sql_type::decimal: {
        const bool fit = for_each_result(*results, rows, row_count, [&](std::uint32_t k, std::uint32_t row) {
            binding::int128 number = 0;
            const bool fits = binding::write_host_decimal(values_of<xdec>(*results)[k], fraction_digits, number);
            std::memcpy(static_cast<duckdb_hugeint*>(to) + row, &number, sizeof number);
            return fits;
        });
        return fit ? "" : "a result has more than 28 digits before the point, and DECIMAL(38,10) has no room for them";
    }
    case sql_type::varchar:
    case sql_type::varbinary: {
        std::string written_out;
        for_each_result(*results, rows, row_count, [&](std::uint32_t k, std::uint32_t row) {
            store_text(values_of<bifun_string>(*results)[k], row, static_cast<duckdb_string_t*>(to), vector, written_out);
            return true;
        });
        return "";
    }
    case sql_type::interval_dt:
        for_each_result(*results, rows, row_count, [&](std::uint32_t k, std::uint32_t row) {
            static_cast<duckdb_interval*>(to)[row] = std::bit_cast<duckdb_interval>(binding::interval_at(*results, given, k));
            return true;
        });
        return "";
    default:
        if (store_datetimes(*results, rows, row_count, type, time_zone, to)) {
            return "";
        }
        return type == sql_type::time || type == sql_type::time_with_zone
                   ? "a result is a time of more than 24 hours, which DuckDB does not have"
                   : "a result is 29 February of a year that has none by the Gregorian calendar, which DuckDB goes by before 1582, too";
    }
}

} // namespace duckdb_extension
