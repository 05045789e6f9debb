// SPDX-License-Identifier: Apache-2.0
// CSV files as tables.
#ifndef BIFUN_HOST_TABLES_TABLE_H
#define BIFUN_HOST_TABLES_TABLE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/output/progress_bar.h"
#include "host/program_error.h"
#include "host/session/settings.h"
#include "host/tables/csv_file.h"
#include "host/tables/field_value.h"
#include "host/tables/type_inference.h"

namespace host {

struct table_column {
    std::string name; // in UTF-8
    column_type type;
    std::vector<column_type> seems{};     // what its texts could be given as their type, as far as the first rows show
    std::optional<text_forms> forms{};    // of these texts, in UTF-8
    bool is_point_likely = false;         // where a comma could be the mark before a fraction, too
    std::optional<char> decimal_mark{};   // of --decimal
    std::string pointed_column{};         // another column, whose numbers have a point before the fraction
    sql_type shown = sql_type::varchar;   // what the first rows show where VARCHAR was given
    std::optional<field_kinds> sampled{}; // where the type was found in the first part of the file alone
    bool needed = false;                  // by the query: only such columns have a type that counts, and values
    zqengine::column_pointer values;      // of the batch in hand
    std::unique_ptr<dfm_model> format{};  // of its type, made with the values
};

struct table {
    csv_reader reader;
    const session_settings* settings;
    bool ignores_errors;
    std::vector<table_column> columns;
    // What has to be said of the first rows, once types are resolved: empty where it is nothing.
    std::vector<std::string> number_remarks{}; // of numbers that may not be meant as they are read
    std::string blank_remark{};                // the values of texts begin with a blank that was hardly meant
    // Of the batch in hand: its last rows as the reader knows them, and the lines of those before, whose text has gone.
    std::vector<std::uint32_t> last_rows{};
    std::vector<std::uint64_t> earlier_lines{};
};

// Opens the file and reads its header. A column without a name is column_3, by its place, and a second one named a is a_2. The table refers
// to the settings.
std::unique_ptr<table> open_table(const std::string& path, const file_options& options, const session_settings& settings);

// A type that a user gives to a column, whose name may have that of its table before it: staff.salary.
struct given_type {
    std::string name;
    column_type type;
};
using given_types = std::vector<given_type>;

// How much of a file decides the types of its columns: its first bytes, more of a file that can be read again than of what is kept in
// memory for it.
struct type_sample {
    std::uint64_t of_files = std::uint64_t{32} << 20;
    std::uint64_t of_pipes = std::uint64_t{4} << 20;
};
constexpr std::uint64_t whole_file = UINT64_MAX;

// Gives the needed columns the types given, and reads the file for those of the others. Types of columns that the table does not have are
// those of other tables.
void resolve_types(table& source, const given_types& given, type_sample sample, progress_bar& progress);

// Whether 1,234 is rather a number of thousands, by the numbers in other columns, or else as commas separate the fields.
bool seems_point(const csv_reader& reader, const first_rows& shown);

// Makes the remarks of the table, whose columns have their types.
void remark_on(table& source, const first_rows& shown);

// Makes room for the values of the needed columns.
void create_columns(table& source, std::uint32_t batch_rows);

// A field that the sampled part of its file has given the wrong type. Read as a whole, the file has the right one.
struct type_not_as_sampled : program_error {
    using program_error::program_error;
};

// Reads some rows, at most `most_rows`, whose needed columns become those of a batch; their fields are still to be had by last_rows, of
// which there may be none. False at the end of the file. Errors are those of read_batch.
bool read_rows(table& source, std::uint32_t most_rows);

// Reads up to `most_rows` rows into the needed columns and returns how many there were; 0 at the end of the file. A field that does not fit
// its column's type is an error, or where errors are ignored, its row is left out; type_not_as_sampled is an error in any case.
std::uint32_t read_batch(table& source, std::uint32_t most_rows);

// The line of the file in which a row of the batch begins.
std::uint64_t line_of(const table& source, std::uint32_t row);

} // namespace host

#endif
