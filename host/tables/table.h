// SPDX-License-Identifier: Apache-2.0
// CSV files as tables.
#ifndef BIFUN_HOST_TABLES_TABLE_H
#define BIFUN_HOST_TABLES_TABLE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/output/progress_bar.h"
#include "host/session/settings.h"
#include "host/tables/csv_file.h"
#include "host/tables/field_value.h"
#include "host/tables/type_inference.h"

namespace host {

struct table_column {
    std::string name; // in UTF-8
    column_type type;
    bool needed = false;             // by the query: only such columns have a type that counts, and values
    zqengine::column_pointer values; // of the batch in hand
};

struct table {
    csv_reader reader;
    const session_settings* settings;
    std::vector<table_column> columns;
};

// The name of a file's table: its base name without the extension .csv.
std::string table_name_of(std::string_view path);

// Opens the file and reads its header. The table refers to the settings.
std::unique_ptr<table> open_table(const std::string& path, const session_settings& settings);

// The types that a user gives: column name and type.
using given_types = std::vector<std::pair<std::string, column_type>>;

// Reads "name:CHAR(10),price:DECIMAL".
given_types parse_types(std::string_view text);

// Marks the columns that a query needs, gives them the types given, and reads the file for those of the others. No column may be
// given that the table does not have.
void resolve_types(table& source, const given_types& given, progress_bar& progress);

// Makes room for the values of the needed columns.
void create_columns(table& source, std::uint32_t batch_rows);

// Reads up to `most_rows` rows into the needed columns and returns how many there were; 0 at the end of the file.
std::uint32_t read_batch(table& source, std::uint32_t most_rows);

} // namespace host

#endif
