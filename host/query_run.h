// SPDX-License-Identifier: Apache-2.0
// A query over a file, from the command line to the output.
#ifndef BIFUN_HOST_QUERY_RUN_H
#define BIFUN_HOST_QUERY_RUN_H

#include <functional>
#include <string>
#include <vector>

#include "host/messages.h"
#include "host/program_options.h"

namespace host {

// Whether the last word is a query and not one more file.
bool has_query(const program_options& options);

// Runs it over the files before it. Throws program_error; what has been written before is closed as its format asks for.
void run_query(const program_options& options);

// The same with the files and the query given, whatever the words are. `tell` has what is to be said beside the result.
void run_statement(const program_options& options, const std::vector<std::string>& files, const std::string& sql,
                   const std::function<void(const std::string&)>& tell = print_message);

} // namespace host

#endif
