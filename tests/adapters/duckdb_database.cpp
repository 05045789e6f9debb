// SPDX-License-Identifier: Apache-2.0
#include "tests/adapters/duckdb_database.h"

#include <dlfcn.h>

#include <cstdint>
#include <mutex>
#include <stdexcept>

namespace bifun::test {
namespace {

using handle = void*;
using index = std::uint64_t;

struct result_record {
    index deprecated_counts[3];
    void* deprecated_columns;
    char* deprecated_error_message;
    void* internal_data;
};

} // namespace

struct duckdb_database {
    void* library = nullptr;
    handle database = nullptr;
    std::vector<handle> connections;
    std::mutex connecting;

    template <class Function> Function* find(const char* name) const {
        void* const found = dlsym(library, name);
        return found != nullptr ? reinterpret_cast<Function*>(found) : throw std::runtime_error(name);
    }
};

void duckdb_closer::operator()(duckdb_database* database) const {
    for (handle& connection : database->connections) {
        database->find<void(handle*)>("duckdb_disconnect")(&connection);
    }
    database->find<void(handle*)>("duckdb_close")(&database->database);
    delete database;
}

duckdb_pointer open_duckdb(const std::string& library) {
    duckdb_pointer made(new duckdb_database);
    made->library = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (made->library == nullptr) {
        throw std::runtime_error(dlerror());
    }
    handle config = nullptr;
    char* error = nullptr;
    made->find<std::int32_t(handle*)>("duckdb_create_config")(&config);
    made->find<std::int32_t(handle, const char*, const char*)>("duckdb_set_config")(config, "allow_unsigned_extensions", "true");
    const auto open = made->find<std::int32_t(const char*, handle*, handle, char**)>("duckdb_open_ext");
    if (open(nullptr, &made->database, config, &error) != 0) {
        throw std::runtime_error(error);
    }
    made->find<void(handle*)>("duckdb_destroy_config")(&config);
    return made;
}

query_result query(duckdb_database& database, const std::string& sql, std::size_t connection) {
    handle used = nullptr;
    {
        const std::lock_guard guard(database.connecting);
        while (database.connections.size() <= connection) {
            database.find<std::int32_t(handle, handle*)>("duckdb_connect")(database.database, &database.connections.emplace_back());
        }
        used = database.connections[connection];
    }
    result_record record{};
    query_result made;
    if (database.find<std::int32_t(handle, const char*, result_record*)>("duckdb_query")(used, sql.c_str(), &record) != 0) {
        made.error = database.find<const char*(result_record*)>("duckdb_result_error")(&record);
    } else {
        const index columns = database.find<index(result_record*)>("duckdb_column_count")(&record);
        const index rows = database.find<index(result_record*)>("duckdb_row_count")(&record);
        const auto value = database.find<char*(result_record*, index, index)>("duckdb_value_varchar");
        const auto release = database.find<void(void*)>("duckdb_free");
        for (index row = 0; row < rows; ++row) {
            auto& cells = made.rows.emplace_back();
            for (index column = 0; column < columns; ++column) {
                char* const text = value(&record, column, row);
                cells.push_back(text == nullptr ? std::nullopt : std::optional<std::string>(text));
                release(text);
            }
        }
    }
    database.find<void(result_record*)>("duckdb_destroy_result")(&record);
    return made;
}

} // namespace bifun::test
