// SPDX-License-Identifier: Apache-2.0
// What the rows of a file show of the types of its columns.
#ifndef BIFUN_HOST_TABLES_TYPE_INFERENCE_H
#define BIFUN_HOST_TABLES_TYPE_INFERENCE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/output/progress_bar.h"
#include "host/tables/csv_file.h"
#include "host/tables/field_kind.h"
#include "host/tables/text_forms.h"

namespace host {

// A field that says something of its column.
struct telling_field {
    std::size_t column;
    std::uint64_t line;
    std::string text;
};

// What the first rows show beside types.
struct first_rows {
    // The first columns of numbers that can have a comma before the fraction alone, and a point: 3,5 and 3.5.
    std::optional<std::size_t> with_comma{}, with_point{};
    std::optional<std::size_t> with_groups{}; // the first of which all points may be those of thousands: 1.234
    std::vector<std::size_t> with_blanks{};   // columns of which most values begin with a blank
    // The first fields of columns in which each has one point, of thousands or of a fraction of three digits: 1.234
    std::vector<telling_field> with_lone_groups{};
    // The first numbers with an exponent of columns that are DOUBLE for such as may be codes alone: 1e2. Of all rows that were read.
    std::vector<telling_field> with_codes{};
};
void find_marked_columns(csv_reader& reader, std::span<const std::uint32_t> rows, first_rows& shown);
void find_grouped_column(csv_reader& reader, std::span<const std::uint32_t> rows, first_rows& shown);
void find_lone_groups(csv_reader& reader, std::span<const std::uint32_t> rows, first_rows& shown);
void find_blank_columns(csv_reader& reader, std::span<const std::uint32_t> rows, first_rows& shown);

// What the rows of a file show, or those that begin within its first `most_text` bytes.
struct found_kinds {
    std::vector<field_kinds> of_columns; // 0 for those that are not wanted
    std::vector<text_forms> forms;       // of some thousand rows from the first text on
    first_rows shown;                    // marks only where numbers have or may have another one than in SQL
    bool is_whole_file;
};

// Reads the rows and rewinds the file.
found_kinds find_kinds(csv_reader& reader, const std::vector<bool>& wanted, std::uint64_t most_text, progress_bar& progress);

} // namespace host

#endif
