// SPDX-License-Identifier: Apache-2.0
#include "host/shell/shell_table.h"

#include <algorithm>
#include <filesystem>

#include "host/near_names.h"
#include "host/output/display_width.h"
#include "host/sql/names.h"
#include "host/tables/file_name.h"
#include "host/tables/given_types.h"

namespace host {
namespace {

bool is_file(const std::string& path) {
    std::error_code unreadable;
    return std::filesystem::is_regular_file(path, unreadable);
}

} // namespace

std::vector<shell_table> read_tables(const program_options& options, const std::vector<std::string>& files) {
    const session_settings settings = read_settings(options.settings);
    const file_options reading = reading_of(options);
    std::vector<shell_table> tables;
    for (const std::string& path : files) {
        if (path == "-") {
            fail("the standard input is the terminal here, and no table; give files alone");
        }
        tables.push_back({.path = path, .name = plain_table_name_of(path), .columns = {}, .fault = {}});
        std::error_code none;
        const bool exists = std::filesystem::exists(path, none);
        // A pipe is read once, by a query, and what cannot be read says so.
        if (!is_file(path) && exists) {
            continue;
        }
        try {
            const std::unique_ptr<table> opened = open_table(path, reading, settings);
            for (const table_column& column : opened->columns) {
                tables.back().columns.push_back(name_in_query(column.name));
            }
        } catch (const program_error& error) {
            if (!exists) {
                throw;
            }
            tables.back().fault = error.what();
        }
    }
    return tables;
}

std::string describe_table(const program_options& options, const std::vector<shell_table>& tables, std::string_view name) {
    const auto found = std::ranges::find_if(tables, [&](const shell_table& known) {
        return equal_ignoring_case(known.name, name) || equal_ignoring_case(table_name_of(known.path), name) || known.path == name;
    });
    if (found == tables.end()) {
        std::vector<std::string> names;
        std::ranges::transform(tables, std::back_inserter(names), &shell_table::name);
        fail("there is no table {}{}", name, did_you_mean(name, names));
    }
    if (!is_file(found->path)) {
        fail("{} can be read only once, which is left to a query", found->path);
    }
    const session_settings settings = read_settings(options.settings);
    const std::unique_ptr<table> source = open_table(found->path, reading_of(options), settings);
    for (table_column& column : source->columns) {
        column.needed = true;
    }
    progress_bar progress;
    resolve_types(*source, parse_types(options.types), sample_of(options), progress);
    std::size_t width = 0;
    for (const std::string& column : found->columns) {
        width = std::max(width, display_width(column));
    }
    std::string text;
    for (std::size_t i = 0; i < found->columns.size(); ++i) {
        const std::string& column = found->columns[i];
        text += fmt::format("{}{:{}}  {}\n", column, "", width - display_width(column), column_type_name(source->columns[i].type));
    }
    return text;
}

} // namespace host
