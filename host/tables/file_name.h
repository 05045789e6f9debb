// SPDX-License-Identifier: Apache-2.0
// What the name of a file says.
#ifndef BIFUN_HOST_TABLES_FILE_NAME_H
#define BIFUN_HOST_TABLES_FILE_NAME_H

#include <string>
#include <string_view>

namespace host {

// .csv, .tsv and what else files with rows are called, in small letters and without the .gz or .zst behind it; empty for any other.
std::string extension_of(std::string_view path);

// The name of a file's table: its base name without that extension. The standard input is the table stdin.
std::string table_name_of(std::string_view path);

// The table's name as it can be written in a query without quotes: `2024 sales.csv` is _2024_sales. Where that is a word of SQL, a _ stands
// behind it.
std::string plain_table_name_of(std::string_view path);

// As messages call what - names.
constexpr std::string_view standard_input_name = "standard input";

// " staff.csv", as a shell's command has a file behind it, or with what stands before it, such as " < "; empty for the standard input.
std::string file_operand(std::string_view path, std::string_view before = " ");

} // namespace host

#endif
