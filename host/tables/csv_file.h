// SPDX-License-Identifier: Apache-2.0
// CSV files, some rows at a time.
#ifndef BIFUN_HOST_TABLES_CSV_FILE_H
#define BIFUN_HOST_TABLES_CSV_FILE_H

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/tables/csv_syntax.h"
#include "host/tables/line_scan.h"
#include "host/tables/text_input.h"

namespace host {

// How files are read.
struct file_options {
    std::optional<char> delimiter;   // found by the name or the first lines where there is none; a first line sep=; says it, too
    bool has_header = true;          // the first line has the names of the columns
    std::uint64_t skipped_lines = 0; // before the header
    bool ignores_errors = false;     // bad rows are left out and counted
    std::string encoding;            // as text_input takes it
    std::optional<char> quote = '"'; // this and the next as in csv_syntax
    std::optional<char> escape{};
    bool has_letter_escapes = false;
    std::optional<char> comment{};
    std::optional<char> decimal_mark{}; // a comma or a point, as in plain_number; nothing where numbers are as in SQL
    std::vector<std::string> null_texts = {
        ""};                       // in UTF-8; fields that are one of them, as they stand in the file but for blanks around, are NULL
    bool has_quoted_nulls = false; // also in quotes
    bool fills_short_rows = false; // with NULL; without a header, the longest of the first rows has all columns
};

// With no texts of NULLs given, a field without quotes and without characters is NULL; "" is the empty string.
struct csv_field {
    std::string_view text;
    bool is_null;
    bool is_null_unless_text; // in a column of any other type: also where the field is empty and NULLs have a text
};

// Reads one file. Blank lines are skipped, except in files of one column, where a blank line is an empty field. All errors are
// program_error with the file's name, the line and what to do about it.
class csv_reader {
  public:
    // Opens the file and reads its header.
    csv_reader(std::string path, const file_options& options, const charset& set);

    // The names in the first line, as their bytes stand in the file; for a file without a header as many empty names as columns.
    [[nodiscard]] const std::vector<std::string>& header() const { return header_; }

    // Reads the next rows behind the header, at least one and at most `most`; none at the end of the file. A row is a number by which its
    // fields are found until rows are read again. Every row has as many fields as the header.
    std::span<const std::uint32_t> next_rows(std::uint32_t most);

    // A field of a row just read; stays until the next one with escapes or with quotes inside its quotes is asked for.
    [[nodiscard]] csv_field field(std::uint32_t row, std::size_t column) {
        return field_at(row + static_cast<std::uint32_t>(column), column + 1 == header_.size());
    }

    // The line in which a row just read begins.
    [[nodiscard]] std::uint64_t line_of(std::uint32_t row) const { return line_at(begin_of(row)); }

    // Adds the lines of rows just read, which are in the order of the file, at one pass.
    void add_lines_of(std::span<const std::uint32_t> rows, std::vector<std::uint64_t>& lines) const;

    [[nodiscard]] std::optional<char> decimal_mark() const { return options_.decimal_mark; }
    [[nodiscard]] bool has_header() const { return options_.has_header; }

    // The texts that stand for NULL, in UTF-8, where empty fields are among them: a --null more would have them be texts, and so has to
    // name all of them again.
    [[nodiscard]] std::vector<std::string> nulls_to_repeat() const;
    [[nodiscard]] char delimiter() const { return syntax_.delimiter; }

    // Whether some other line in hand is text of the character set beyond ASCII, so that the encoding is not what is wrong with this row.
    [[nodiscard]] bool has_valid_characters_besides(std::uint32_t row) const;

    // Whether all rows just read are ASCII.
    [[nodiscard]] bool is_ascii() const { return index_.is_ascii; }

    // Counts a row as bad where errors are ignored, otherwise fails: its line, what is wrong with it, and the column
    // where it is one.
    void report_bad_row(std::uint64_t line, std::string_view message, std::string_view column = {});

    // Goes back to the first row. Can be done for what is no file once, as long as stop_keeping has not been called.
    void rewind();
    // Nothing will be read again.
    void stop_keeping() { input_.stop_keeping(); }
    [[nodiscard]] bool is_file() const { return input_.file().can_rewind(); }

    [[nodiscard]] const std::string& path() const { return input_.file().path(); }
    [[nodiscard]] std::uint64_t bytes_read() const { return input_.file().bytes_read(); }
    [[nodiscard]] std::uint64_t file_size() const { return input_.file().size(); } // 0 where it is not known
    // Characters read since the beginning, in bytes, unpacked.
    [[nodiscard]] std::uint64_t text_read() const { return text_read_; }

    // The rows left out, and why the first of them was; none where errors are not ignored.
    [[nodiscard]] std::uint64_t bad_rows() const { return bad_rows_; }
    [[nodiscard]] const std::string& first_bad_row() const { return first_bad_row_; }

    // What has to be said of the delimiter that was found, or of the header, if anything.
    [[nodiscard]] const std::string& doubt() const { return doubt_; }

  private:
    void begin();
    void skip_lines();
    void take_delimiter_line();
    void skip_comments();
    void take_null_texts();
    [[nodiscard]] bool is_part_of_characters(char byte) const;
    void check_byte(std::string_view option, char byte) const;
    void find_delimiter();
    void read_header();
    void doubt_header();
    [[nodiscard]] std::optional<std::uint32_t> find_later_header();
    void read_more();
    void rescan();
    bool find_line();
    void report_fault();
    void report_field_count(std::uint32_t line);
    [[nodiscard]] bool have_as_many_fields(std::uint32_t first_line) const;
    [[nodiscard]] bool seems_header(std::uint32_t line);
    [[nodiscard]] bool has_number_or_date(std::uint32_t line);
    [[nodiscard]] bool has_empty_field(std::uint32_t line) const;
    [[nodiscard]] bool has_field_in_apostrophes(std::uint32_t line) const;
    [[nodiscard]] std::uint32_t next_full_line(std::uint32_t line) const;
    std::uint32_t fill_row(std::uint32_t line);
    void drop_bytes(std::size_t position, std::uint64_t lines);
    void drop_lines();
    void drop_first_line();
    [[nodiscard]] std::string_view text() const { return {bytes_.get(), filled_}; }
    [[nodiscard]] std::uint32_t first_field(std::uint32_t line) const { return line == 0 ? 0 : index_.line_fields[line - 1]; }
    [[nodiscard]] std::uint32_t begin_of(std::uint32_t field) const { return index_.ends[field] + 1; }
    [[nodiscard]] std::uint32_t end_of(std::uint32_t field, bool ends_line) const {
        const std::uint32_t end = index_.ends[field + 1];
        const bool is_line_feed = ends_line && end > begin_of(field) && end < filled_ && bytes_.get()[end] == '\n';
        return is_line_feed && bytes_.get()[end - 1] == '\r' ? end - 1 : end;
    }
    [[nodiscard]] csv_field field_at(std::uint32_t field, bool ends_line) {
        if (!is_usual_) [[unlikely]] {
            return unusual_field(field, ends_line);
        }
        const std::uint32_t begin = begin_of(field);
        const std::string_view found(bytes_.get() + begin, end_of(field, ends_line) - begin);
        if (!found.empty() && found.front() == '"') {
            return {.text = decoded_text(found.substr(1, found.size() - 2), true, syntax_, decoded_),
                    .is_null = false,
                    .is_null_unless_text = false};
        }
        return {.text = found, .is_null = found.empty(), .is_null_unless_text = found.empty()};
    }
    [[nodiscard]] csv_field unusual_field(std::uint32_t field, bool ends_line);
    [[nodiscard]] bool is_blank(std::uint32_t line) const;
    [[nodiscard]] bool is_rule(std::uint32_t line) const;
    [[nodiscard]] std::uint64_t line_at(std::size_t position) const;

    struct releaser {
        void operator()(char* bytes) const { std::free(bytes); }
    };

    text_input input_;
    file_options options_;
    const charset& charset_;
    csv_syntax syntax_;
    bool is_usual_; // double quotes, no escape, empty fields as the only NULLs
    std::vector<std::string> null_texts_;
    std::string doubt_;

    std::unique_ptr<char, releaser> bytes_; // at a multiple of 64
    std::size_t capacity_ = 0;
    std::size_t filled_ = 0;
    bool at_end_ = false;
    std::uint64_t text_read_ = 0;

    line_index index_;               // of all bytes
    std::uint32_t line_ = 0;         // of the index, the next to read
    std::uint64_t lines_before_ = 0; // of the file, before the bytes

    std::uint64_t header_end_ = 0; // the line in which the header ends
    bool found_rows_ = false;      // since the file was opened
    std::vector<std::uint32_t> rows_;
    std::size_t behind_fields_ = 0; // of the index and of the rows that have been filled
    std::string decoded_;
    std::vector<std::string> header_;
    std::uint64_t bad_rows_ = 0;
    std::string first_bad_row_;
};

} // namespace host

#endif
