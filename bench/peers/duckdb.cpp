// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/duckdb.h"

#include <dlfcn.h>

#include <cstring>
#include <stdexcept>
#include <vector>

#include "bench/peers/loaded_function.h"

namespace bifun::peers {
namespace {

// The part of DuckDB's C interface that is used, declared here because the package with the library has no header.
using duckdb_handle = void*;
using row_index = std::uint64_t;
enum duckdb_type : std::int32_t {
    duckdb_integer = 4,
    duckdb_bigint = 5,
    duckdb_double = 11,
    duckdb_timestamp = 12,
    duckdb_date = 13,
    duckdb_varchar = 17
};

struct duckdb_result {
    row_index deprecated_counts[3];
    void* deprecated_columns;
    char* deprecated_error_message;
    void* internal_data;
};

struct duckdb_functions {
    std::int32_t (*open)(const char* path, duckdb_handle* database);
    void (*close)(duckdb_handle* database);
    std::int32_t (*connect)(duckdb_handle database, duckdb_handle* connection);
    void (*disconnect)(duckdb_handle* connection);
    std::int32_t (*query)(duckdb_handle connection, const char* query, duckdb_result* result);
    void (*destroy_result)(duckdb_result* result);
    const char* (*result_error)(duckdb_result* result);
    row_index (*column_count)(duckdb_result* result);
    char* (*value_varchar)(duckdb_result* result, row_index column, row_index row);
    void (*free)(void* pointer);
    row_index (*vector_size)();
    duckdb_handle (*create_logical_type)(duckdb_type type);
    duckdb_handle (*create_decimal_type)(std::uint8_t width, std::uint8_t scale);
    void (*destroy_logical_type)(duckdb_handle* type);
    duckdb_handle (*create_data_chunk)(duckdb_handle* types, row_index column_count);
    void (*destroy_data_chunk)(duckdb_handle* chunk);
    void (*data_chunk_reset)(duckdb_handle chunk);
    duckdb_handle (*data_chunk_get_vector)(duckdb_handle chunk, row_index column);
    void (*data_chunk_set_size)(duckdb_handle chunk, row_index size);
    void* (*vector_get_data)(duckdb_handle vector);
    std::uint64_t* (*vector_get_validity)(duckdb_handle vector);
    void (*vector_ensure_validity_writable)(duckdb_handle vector);
    void (*vector_assign_string_element_len)(duckdb_handle vector, row_index row, const char* text, row_index length);
    std::int32_t (*appender_create)(duckdb_handle connection, const char* schema, const char* table, duckdb_handle* appender);
    std::int32_t (*append_data_chunk)(duckdb_handle appender, duckdb_handle chunk);
    std::int32_t (*appender_destroy)(duckdb_handle* appender);
};

} // namespace

struct duckdb_session {
    void* library;
    duckdb_functions api;
    duckdb_handle database;
    duckdb_handle connection;
};

namespace {

duckdb_functions find_functions(void* library) {
    duckdb_functions api{};
#define FIND(name) find(library, "duckdb_" #name, api.name)
    FIND(open);
    FIND(close);
    FIND(connect);
    FIND(disconnect);
    FIND(query);
    FIND(destroy_result);
    FIND(result_error);
    FIND(column_count);
    FIND(value_varchar);
    FIND(free);
    FIND(vector_size);
    FIND(create_logical_type);
    FIND(create_decimal_type);
    FIND(destroy_logical_type);
    FIND(create_data_chunk);
    FIND(destroy_data_chunk);
    FIND(data_chunk_reset);
    FIND(data_chunk_get_vector);
    FIND(data_chunk_set_size);
    FIND(vector_get_data);
    FIND(vector_get_validity);
    FIND(vector_ensure_validity_writable);
    FIND(vector_assign_string_element_len);
    FIND(appender_create);
    FIND(append_data_chunk);
    FIND(appender_destroy);
#undef FIND
    return api;
}

void must_succeed(std::int32_t state, const char* step) {
    if (state != 0) {
        throw std::runtime_error(std::string("DuckDB failed to ") + step);
    }
}

std::string sql_type(const table_column& column) {
    switch (column.type) {
    case value_type::DOUBLE:
        return "DOUBLE";
    case value_type::DECIMAL:
        return "DECIMAL(" + std::to_string(column.precision) + "," + std::to_string(column.scale) + ")";
    case value_type::DATETIME:
        return is_date(column) ? "DATE" : "TIMESTAMP";
    case value_type::VARCHAR:
        return "VARCHAR";
    case value_type::INT:
        return "INTEGER";
    case value_type::BIGINT:
        return "BIGINT";
    default:
        throw std::runtime_error("DuckDB: no type for column " + std::string(column.name));
    }
}

duckdb_handle make_type(const duckdb_functions& api, const table_column& column) {
    switch (column.type) {
    case value_type::DECIMAL:
        return api.create_decimal_type(column.precision, column.scale);
    case value_type::DOUBLE:
        return api.create_logical_type(duckdb_double);
    case value_type::DATETIME:
        return api.create_logical_type(is_date(column) ? duckdb_date : duckdb_timestamp);
    case value_type::VARCHAR:
        return api.create_logical_type(duckdb_varchar);
    case value_type::INT:
        return api.create_logical_type(duckdb_integer);
    default:
        return api.create_logical_type(duckdb_bigint);
    }
}

// A decimal of up to 18 digits is a 64-bit integer in DuckDB, a longer one 128 bits.
constexpr std::uint8_t most_digits_of_64_bits = 18;

void fill_vector(const duckdb_functions& api, duckdb_handle vector, const loaded_column& column, std::uint32_t first, std::uint32_t rows) {
    const zqengine::column_storage& from = *column.storage;
    auto* const to = static_cast<std::uint8_t*>(api.vector_get_data(vector));
    for (std::uint32_t k = 0; k < rows; ++k) {
        const std::uint32_t row = first + k;
        if (from.data.null_flags[row] == 0) {
            api.vector_ensure_validity_writable(vector);
            api.vector_get_validity(vector)[k / 64] &= ~(std::uint64_t{1} << (k % 64));
            continue;
        }
        if (from.type == value_type::VARCHAR) {
            const std::string value = text_with_blanks(zqengine::values_of<bifun_string>(from)[row]);
            api.vector_assign_string_element_len(vector, k, value.data(), value.size());
        } else if (is_date(*column.definition)) {
            const std::int32_t value = unix_days(zqengine::values_of<zqtime>(from)[row]);
            std::memcpy(to + k * sizeof value, &value, sizeof value);
        } else if (from.type == value_type::DATETIME) {
            const std::int64_t value = unix_microseconds(zqengine::values_of<zqtime>(from)[row]);
            std::memcpy(to + k * sizeof value, &value, sizeof value);
        } else if (from.type == value_type::DECIMAL) {
            const decimal_layout::int128 value = signed_coefficient(zqengine::values_of<xdec>(from)[row]);
            const std::size_t width = column.definition->precision <= most_digits_of_64_bits ? sizeof(std::int64_t) : sizeof value;
            std::memcpy(to + k * width, &value, width);
        } else {
            const std::size_t width = value_width(from.type);
            std::memcpy(to + k * width, static_cast<const std::uint8_t*>(from.data.values) + row * width, width);
        }
    }
}

} // namespace

void close_duckdb(duckdb_session* session) {
    session->api.disconnect(&session->connection);
    session->api.close(&session->database);
    delete session;
}

duckdb_pointer open_duckdb(const std::string& path) {
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        return nullptr;
    }
    duckdb_pointer session(new duckdb_session{library, find_functions(library), nullptr, nullptr});
    must_succeed(session->api.open(nullptr, &session->database), "open a database");
    must_succeed(session->api.connect(session->database, &session->connection), "connect");
    run_duckdb(*session, "SET threads = 1");
    return session;
}

std::string duckdb_version(duckdb_session& session) { return run_duckdb(session, "SELECT version()").value; }

void load_duckdb(duckdb_session& session, const table& table) {
    const duckdb_functions& api = session.api;
    std::string definition;
    std::vector<duckdb_handle> types;
    for (const loaded_column& column : table.columns) {
        definition += (definition.empty() ? "" : ", ") + std::string(column.definition->name) + " " + sql_type(*column.definition);
        types.push_back(make_type(api, *column.definition));
    }
    run_duckdb(session, "CREATE TABLE t (" + definition + ")");
    duckdb_handle appender = nullptr;
    must_succeed(api.appender_create(session.connection, nullptr, "t", &appender), "make an appender");
    duckdb_handle chunk = api.create_data_chunk(types.data(), types.size());
    const auto chunk_rows = static_cast<std::uint32_t>(api.vector_size());
    for (std::uint32_t first = 0; first < table.row_count; first += chunk_rows) {
        const std::uint32_t rows = std::min(chunk_rows, table.row_count - first);
        api.data_chunk_reset(chunk);
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            fill_vector(api, api.data_chunk_get_vector(chunk, i), table.columns[i], first, rows);
        }
        api.data_chunk_set_size(chunk, rows);
        must_succeed(api.append_data_chunk(appender, chunk), "append rows");
    }
    must_succeed(api.appender_destroy(&appender), "finish appending");
    api.destroy_data_chunk(&chunk);
    for (duckdb_handle& type : types) {
        api.destroy_logical_type(&type);
    }
}

measurement run_duckdb(duckdb_session& session, const std::string& query) {
    const duckdb_functions& api = session.api;
    duckdb_result result{};
    const double start = processor_seconds();
    const std::int32_t state = api.query(session.connection, query.c_str(), &result);
    const double elapsed = processor_seconds() - start;
    if (state != 0) {
        const char* const message = api.result_error(&result);
        const std::string text = std::string("DuckDB: ") + (message != nullptr ? message : "query failed") + ": " + query;
        api.destroy_result(&result);
        throw std::runtime_error(text);
    }
    char* const value = api.value_varchar(&result, api.column_count(&result) - 1, 0);
    measurement measured{elapsed, value != nullptr ? value : ""};
    api.free(value);
    api.destroy_result(&result);
    return measured;
}

} // namespace bifun::peers
