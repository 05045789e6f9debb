// SPDX-License-Identifier: Apache-2.0
// CSV files, row by row.
#ifndef BIFUN_HOST_TABLES_CSV_FILE_H
#define BIFUN_HOST_TABLES_CSV_FILE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

extern "C" {
#include <csv.h>
}

namespace host {

// A field without quotes and without characters is NULL; "" is the empty string.
struct csv_field {
    std::string_view text;
    bool is_null;
};

// Reads one file. Blank lines are skipped, except in files of one column, where a blank line is a NULL. All errors are program_error
// with the file's name, the line and what to do about it.
class csv_reader {
  public:
    // Opens the file and reads its header.
    explicit csv_reader(std::string path);
    ~csv_reader();
    csv_reader(const csv_reader&) = delete;
    csv_reader& operator=(const csv_reader&) = delete;

    // The names in the first line, as their bytes stand in the file.
    [[nodiscard]] const std::vector<std::string>& header() const { return header_; }

    // Reads the next row behind the header; false at the end of the file. Every row has as many fields as the header.
    bool next_row();

    // The fields of the row just read; they stay until the next one is read.
    [[nodiscard]] const std::vector<csv_field>& fields() const { return fields_; }

    // The number of rows read, which is the number of the current row counted from 1 behind the header.
    [[nodiscard]] std::uint64_t row_number() const { return row_number_; }

    // The line in which that row begins.
    [[nodiscard]] std::uint64_t row_line() const { return row_line_; }

    // Whether the file can be read more than once, unlike a pipe.
    [[nodiscard]] bool can_rewind() const { return can_rewind_; }

    // Goes back to the first row behind the header.
    void rewind();

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::uint64_t bytes_read() const { return bytes_read_; }
    [[nodiscard]] std::uint64_t file_size() const { return file_size_; } // 0 where it is not known

  private:
    void begin();
    bool refill();
    bool read_fields();
    void finish_last_row();
    bool take_segment();
    void check_header();
    [[noreturn]] void fail_in_line(std::uint64_t line, std::string_view message) const;

    static void on_field(void* bytes, std::size_t length, void* reader);
    static void on_row(int terminator, void* reader);

    std::string path_;
    int file_ = -1;
    bool can_rewind_ = false;
    std::uint64_t file_size_ = 0;
    csv_parser parser_{};
    bool parser_ready_ = false;

    std::vector<char> buffer_;
    std::size_t position_ = 0; // of the next byte to parse in the buffer
    std::size_t filled_ = 0;
    std::uint64_t bytes_read_ = 0;
    bool at_end_ = false;

    std::uint64_t lines_ = 0; // ended so far
    bool after_carriage_return_ = false;

    std::uint64_t row_line_ = 0; // where the current row begins
    std::size_t row_size_ = 0;   // bytes parsed of it
    bool row_ended_ = false;
    std::string row_bytes_;
    std::vector<std::size_t> field_ends_;
    std::vector<csv_field> fields_;
    std::vector<std::string> header_;
    std::uint64_t row_number_ = 0;
};

} // namespace host

#endif
