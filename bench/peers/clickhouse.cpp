// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/clickhouse.h"

#include <dlfcn.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

#include "bench/peers/loaded_function.h"

namespace bifun::peers {
namespace {

// The part of chdb's C interface that is used, declared here because the package with the library has no header.
using chdb_handle = void*;

struct chdb_functions {
    chdb_handle* (*connect)(int argument_count, char** arguments);
    void (*close_conn)(chdb_handle* connection);
    chdb_handle (*query)(chdb_handle connection, const char* query, const char* format);
    void (*destroy_query_result)(chdb_handle result);
    char* (*result_buffer)(chdb_handle result);
    std::size_t (*result_length)(chdb_handle result);
    const char* (*result_error)(chdb_handle result);
};

} // namespace

struct clickhouse_session {
    void* library;
    chdb_functions api;
    chdb_handle* connection;
};

namespace {

chdb_functions find_functions(void* library) {
    chdb_functions api{};
#define FIND(name) find(library, "chdb_" #name, api.name)
    FIND(connect);
    FIND(close_conn);
    FIND(query);
    FIND(destroy_query_result);
    FIND(result_buffer);
    FIND(result_length);
    FIND(result_error);
#undef FIND
    return api;
}

std::string sql_type(const table_column& column) {
    std::string type;
    switch (column.type) {
    case value_type::DOUBLE:
        type = "Float64";
        break;
    case value_type::DECIMAL:
        type = "Decimal(" + std::to_string(column.precision) + "," + std::to_string(column.scale) + ")";
        break;
    case value_type::DATETIME:
        type = is_date(column) ? "Date32" : "DateTime64(6, 'UTC')";
        break;
    case value_type::VARCHAR:
        type = "String";
        break;
    case value_type::INT:
        type = "Int32";
        break;
    case value_type::BIGINT:
        type = "Int64";
        break;
    default:
        throw std::runtime_error("ClickHouse: no type for column " + std::string(column.name));
    }
    return column.nulls ? "Nullable(" + type + ")" : type;
}

template <class T> void put(std::string& bytes, const T& value, std::size_t width = sizeof(T)) {
    bytes.append(reinterpret_cast<const char*>(&value), width);
}

constexpr std::uint8_t most_digits_of_64_bits = 18;

// One value of the row format RowBinary. Lengths below 128 take one byte.
void put_value(std::string& bytes, const loaded_column& column, std::uint32_t row) {
    const zqengine::column_storage& from = *column.storage;
    if (column.definition->nulls) {
        put(bytes, static_cast<std::uint8_t>(from.data.null_flags[row] == 0));
        if (from.data.null_flags[row] == 0) {
            return;
        }
    }
    if (from.type == value_type::VARCHAR) {
        const std::string value = text_with_blanks(zqengine::values_of<bifun_string>(from)[row]);
        std::size_t length = value.size();
        for (; length >= 0x80; length >>= 7) {
            put(bytes, static_cast<std::uint8_t>(length | 0x80));
        }
        put(bytes, static_cast<std::uint8_t>(length));
        bytes += value;
    } else if (is_date(*column.definition)) {
        put(bytes, unix_days(zqengine::values_of<zqtime>(from)[row]));
    } else if (from.type == value_type::DATETIME) {
        put(bytes, unix_microseconds(zqengine::values_of<zqtime>(from)[row]));
    } else if (from.type == value_type::DECIMAL) {
        const decimal_layout::int128 value = signed_coefficient(zqengine::values_of<xdec>(from)[row]);
        put(bytes, value, column.definition->precision <= most_digits_of_64_bits ? sizeof(std::int64_t) : sizeof value);
    } else {
        const std::size_t width = value_width(from.type);
        bytes.append(static_cast<const char*>(from.data.values) + row * width, width);
    }
}

void write_rows(const std::filesystem::path& path, const table& table) {
    std::ofstream file(path, std::ios::binary);
    std::string bytes;
    constexpr std::size_t flush_at = 1 << 20;
    for (std::uint32_t row = 0; row < table.row_count; ++row) {
        for (const loaded_column& column : table.columns) {
            put_value(bytes, column, row);
        }
        if (bytes.size() >= flush_at || row + 1 == table.row_count) {
            file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
            bytes.clear();
        }
    }
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

} // namespace

void close_clickhouse(clickhouse_session* session) {
    session->api.close_conn(session->connection);
    delete session;
}

clickhouse_pointer open_clickhouse(const std::string& path) {
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        return nullptr;
    }
    const chdb_functions api = find_functions(library);
    std::string name = "clickhouse";
    char* arguments[] = {name.data(), nullptr};
    chdb_handle* const connection = api.connect(1, arguments);
    if (connection == nullptr) {
        throw std::runtime_error("ClickHouse failed to start");
    }
    clickhouse_pointer session(new clickhouse_session{library, api, connection});
    run_clickhouse(*session, "SET max_threads = 1, max_insert_threads = 1");
    return session;
}

std::string clickhouse_version(clickhouse_session& session) { return run_clickhouse(session, "SELECT version()").value; }

void load_clickhouse(clickhouse_session& session, const table& table) {
    std::string definition;
    for (const loaded_column& column : table.columns) {
        definition += (definition.empty() ? "" : ", ") + std::string(column.definition->name) + " " + sql_type(*column.definition);
    }
    const std::filesystem::path path = std::filesystem::temp_directory_path() / ("bifun_peers_" + std::to_string(getpid()) + ".bin");
    try {
        write_rows(path, table);
        run_clickhouse(session, "CREATE TABLE t (" + definition + ") ENGINE = Memory");
        std::string schema;
        for (const char c : definition) {
            schema += c == '\'' ? "\\'" : std::string(1, c);
        }
        // Not squashed: the table keeps blocks of the size in which ClickHouse evaluates expressions, 65,409 rows.
        run_clickhouse(session, "INSERT INTO t SELECT * FROM file('" + path.string() + "', 'RowBinary', '" + schema +
                                    "') SETTINGS min_insert_block_size_rows = 0, min_insert_block_size_bytes = 0");
    } catch (...) {
        std::filesystem::remove(path);
        throw;
    }
    std::filesystem::remove(path);
}

measurement run_clickhouse(clickhouse_session& session, const std::string& query) {
    const chdb_functions& api = session.api;
    const double start = processor_seconds();
    chdb_handle const result = api.query(*session.connection, query.c_str(), "TabSeparated");
    const double elapsed = processor_seconds() - start;
    if (result == nullptr) {
        throw std::runtime_error("ClickHouse: no result: " + query);
    }
    const char* const error = api.result_error(result);
    const std::string message = error != nullptr ? error : "";
    const char* const buffer = api.result_buffer(result);
    const std::string text = buffer != nullptr ? std::string(buffer, api.result_length(result)) : "";
    api.destroy_query_result(result);
    if (!message.empty()) {
        throw std::runtime_error("ClickHouse: " + message + ": " + query);
    }
    const std::string first_row = text.substr(0, text.find('\n'));
    return {elapsed, first_row.substr(first_row.rfind('\t') + 1)};
}

} // namespace bifun::peers
