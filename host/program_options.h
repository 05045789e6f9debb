// SPDX-License-Identifier: Apache-2.0
// What the command line asks for.
#ifndef BIFUN_HOST_PROGRAM_OPTIONS_H
#define BIFUN_HOST_PROGRAM_OPTIONS_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/output/output.h"
#include "host/output/output_file.h"
#include "host/session/library.h"
#include "host/tables/table.h"

namespace host {

// As they stand there.
struct program_options {
    std::vector<std::string> words; // the files, then the query
    std::string format;
    std::string output;
    std::string types;
    std::string delimiter;
    std::string quote = "\"";
    std::string escape = "none";
    std::string comment = "none";
    std::string decimal;
    std::vector<std::string> nulls;
    std::string sample;
    bool no_header = false;
    file_options reading;
    std::vector<std::string> settings;
    std::string library = default_library;
    std::uint32_t batch_rows = 1024;
};

// Each throws program_error for a value that there is not.
file_options reading_of(const program_options& options);
type_sample sample_of(const program_options& options);
// By --format, or else the name of the output file; a table on a terminal, and CSV otherwise.
output_format format_of(const program_options& options);

// Whether --output names one; - is the standard output.
bool has_output_file(const program_options& options);

// Where the results go.
struct result_stream {
    std::unique_ptr<output_file> file; // null for the standard output
    output_stream stream;
    bool is_terminal;
};
// Fails where the result would take the place of one of the files, which may have another name, too.
result_stream open_results(const program_options& options, const std::vector<std::string>& files);
// Forgets what has been written; false where it has gone out.
bool restart(result_stream& results);
void commit(result_stream& results);

// How many bad rows were left out, if any.
void report_bad_rows(const csv_reader& reader);

} // namespace host

#endif
