// SPDX-License-Identifier: Apache-2.0
// The files of a shell as it shows and completes them.
#ifndef BIFUN_HOST_SHELL_SHELL_TABLE_H
#define BIFUN_HOST_SHELL_SHELL_TABLE_H

#include <string>
#include <string_view>
#include <vector>

#include "host/program_options.h"

namespace host {

// Names are as a query can have them, in quotes where they need some.
struct shell_table {
    std::string path;
    std::string name;
    std::vector<std::string> columns; // none of what can be read only once
    std::string fault;                // why it cannot be read; empty where it can
};

// Reads the headers of the files. Throws program_error where a file does not exist or is the standard input.
std::vector<shell_table> read_tables(const program_options& options, const std::vector<std::string>& files);

// The columns of one of them with their types, a line each; `name` is that of the table or the file. Throws where there is none.
std::string describe_table(const program_options& options, const std::vector<shell_table>& tables, std::string_view name);

} // namespace host

#endif
