// SPDX-License-Identifier: Apache-2.0
#include "host/tables/csv_file.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "host/program_error.h"
#include "host/tables/delimiter.h"

namespace host {
namespace {

constexpr std::size_t alignment = 64;
constexpr std::size_t first_capacity = std::size_t{128} * 1024;
// A row beyond this is a quote that somebody forgot to close.
constexpr std::size_t longest_row = std::size_t{64} * 1024 * 1024;

char* allocate(std::size_t size) {
    void* const bytes = std::aligned_alloc(alignment, size);
    if (bytes == nullptr) {
        throw std::bad_alloc();
    }
    return static_cast<char*>(bytes);
}

} // namespace

csv_reader::csv_reader(std::string path, const file_options& options, const charset& set)
    : input_(std::move(path), options.encoding, set, options.ignores_errors), options_(options), charset_(set),
      bytes_(allocate(first_capacity)), capacity_(first_capacity) {
    begin();
}

void csv_reader::begin() {
    skip_lines();
    take_delimiter_line();
    if (header_.empty()) {
        find_delimiter();
    }
    rescan();
    read_header();
}

void csv_reader::rewind() {
    input_.rewind();
    filled_ = 0;
    at_end_ = false;
    lines_before_ = text_read_ = bad_rows_ = 0;
    first_bad_row_.clear();
    begin();
}

// ---- bytes and lines -------------------------------------------------------------------------------------------------

// Reads behind the bytes in hand, which become more, or at_end_ true.
void csv_reader::read_more() {
    if (filled_ == capacity_) {
        std::unique_ptr<char, releaser> larger(allocate(capacity_ * 2));
        std::memcpy(larger.get(), bytes_.get(), filled_);
        bytes_ = std::move(larger);
        capacity_ *= 2;
    }
    const std::size_t count = input_.read(bytes_.get() + filled_, capacity_ - filled_);
    filled_ += count;
    text_read_ += count;
    at_end_ = count == 0;
}

void csv_reader::rescan() {
    scan_lines(text(), at_end_, delimiter_, index_);
    line_ = 0;
}

std::uint64_t csv_reader::line_at(std::size_t position) const { return lines_before_ + count_line_ends(text().substr(0, position)) + 1; }

void csv_reader::drop_bytes(std::size_t position, std::uint64_t lines) {
    lines_before_ += lines;
    filled_ -= position;
    std::memmove(bytes_.get(), bytes_.get() + position, filled_);
}

// Drops the lines that have been read, with which the index loses its meaning.
void csv_reader::drop_lines() {
    const std::size_t behind = std::min<std::size_t>(line_ == 0 ? 0 : index_.ends[index_.line_fields[line_ - 1]] + std::size_t{1}, filled_);
    drop_bytes(behind, index_.has_inner_line_ends || index_.found_fault ? count_line_ends(text().substr(0, behind)) : line_);
}

void csv_reader::drop_first_line() {
    std::optional<line_end> found = find_line_end(text());
    while (!found && !at_end_) {
        const std::size_t kept = text().ends_with('\r') ? 1 : 0;
        drop_bytes(filled_ - kept, 0);
        read_more();
        found = find_line_end(text());
    }
    drop_bytes(found ? found->behind : filled_, 1);
}

// Finds the next line to read; false at the end of the file.
bool csv_reader::find_line() {
    while (line_ == index_.lines) {
        if (index_.found_fault && (index_.found_fault->kind == quote_fault::misplaced || at_end_)) {
            report_fault();
            continue;
        }
        if (at_end_) {
            return false;
        }
        drop_lines();
        if (filled_ >= longest_row) {
            report_bad_row(lines_before_ + 1, "the row that begins here is longer than 64 MiB; is a closing quote missing?");
            drop_first_line();
        }
        read_more();
        rescan();
    }
    return true;
}

// Where the quotes of a row are misplaced, nobody knows its end: the next row is looked for behind the first line end.
void csv_reader::report_fault() {
    const line_index::fault fault = *index_.found_fault;
    if (fault.kind == quote_fault::misplaced) {
        report_bad_row(line_at(fault.position),
                       "a quote stands inside a field, or text behind a closing quote; write a field with quotes as "
                       "\"...\" with each quote inside doubled");
    }
    drop_lines();
    if (fault.kind == quote_fault::unclosed) {
        report_bad_row(lines_before_ + 1, "the row that begins here has a quote that is never closed");
    }
    drop_first_line();
    rescan();
}

void csv_reader::report_bad_row(std::uint64_t line, std::string_view message, std::string_view column) {
    std::string error = fmt::format("{}, line {}{}{}: {}", path(), line, column.empty() ? "" : ", column ", column, message);
    if (!options_.ignores_errors) {
        throw program_error(error);
    }
    if (++bad_rows_ == 1) {
        first_bad_row_ = std::move(error);
    }
}

// ---- the beginning of the file ---------------------------------------------------------------------------------------

void csv_reader::skip_lines() {
    std::size_t position = 0;
    for (std::uint64_t i = 0; i < options_.skipped_lines; ++i) {
        std::optional<line_end> found = find_line_end(text().substr(position));
        while (!found && !at_end_) {
            drop_bytes(position, i - lines_before_);
            position = 0;
            read_more();
            found = find_line_end(text());
        }
        position = found ? position + found->behind : filled_;
    }
    drop_bytes(position, options_.skipped_lines - lines_before_);
}

// Spreadsheets write a line sep=; before the header.
void csv_reader::take_delimiter_line() {
    while (!at_end_ && !find_line_end(text())) {
        read_more();
    }
    constexpr std::string_view mark = "sep=";
    const std::optional<line_end> end = find_line_end(text());
    if (!end || !text().starts_with(mark) || end->position != mark.size() + 1) {
        return;
    }
    options_.delimiter = options_.delimiter ? options_.delimiter : find_delimiter_named(text().substr(mark.size(), 1));
    drop_bytes(end->behind, 1);
}

// The bytes of a character of the database's character set may look like ASCII.
bool csv_reader::is_part_of_characters(char byte) const {
    const auto value = static_cast<unsigned char>(byte);
    switch (charset_.code) {
    case ZQ_CHARSET_GB18030:
        return (value >= 0x81 && value <= 0xFE) || (value >= 0x40 && value <= 0x7E) || (value >= '0' && value <= '9');
    case ZQ_CHARSET_EUC_KR:
        return value >= 0xA1 && value <= 0xFE;
    default:
        return value >= 0x80 && value <= 0xF4;
    }
}

void csv_reader::find_delimiter() {
    if (options_.delimiter) {
        delimiter_ = *options_.delimiter;
        if (is_part_of_characters(delimiter_)) {
            fail("--delimiter: in {}, {} is also a part of characters", charset_.name, delimiter_name(delimiter_));
        }
        return;
    }
    const found_delimiter found = guess_delimiter(path(), text(), at_end_, !is_part_of_characters('|'));
    delimiter_ = found.delimiter;
    doubt_ = found.doubt;
}

void csv_reader::read_header() {
    while (find_line() && is_blank(line_)) {
        ++line_;
    }
    const bool is_first = header_.empty();
    if (!find_line()) {
        if (is_first) {
            fail("{}: the file is empty{}", path(), options_.has_header ? "; its first line must name the columns" : "");
        }
        return;
    }
    const std::uint32_t first = first_field(line_);
    for (std::uint32_t f = first; is_first && f < index_.line_fields[line_]; ++f) {
        header_.emplace_back(options_.has_header ? field_at(f, f + 1 == index_.line_fields[line_]).text : std::string_view());
    }
    line_ += options_.has_header ? 1 : 0;
}

// ---- rows ------------------------------------------------------------------------------------------------------------

bool csv_reader::is_blank(std::uint32_t line) const {
    const std::uint32_t first = first_field(line);
    return index_.line_fields[line] == first + 1 && begin_of(first) == end_of(first, true);
}

std::span<const std::uint32_t> csv_reader::next_rows(std::uint32_t most) {
    rows_.clear();
    const std::size_t columns = header_.size();
    while (rows_.empty() && find_line()) {
        for (; line_ < index_.lines && rows_.size() < most; ++line_) {
            const std::uint32_t first = first_field(line_);
            const std::uint32_t fields = index_.line_fields[line_] - first;
            if (fields == columns) [[likely]] {
                rows_.push_back(first);
            } else if (!is_blank(line_)) {
                if (!rows_.empty() && !options_.ignores_errors) {
                    break; // after the rows before it
                }
                report_bad_row(line_at(begin_of(first)),
                               fmt::format("the {} {} field{} and this row {}; a field that holds a {} stands in double quotes{}",
                                           options_.has_header ? "header has" : "first row has", columns, columns == 1 ? "" : "s", fields,
                                           delimiter_name(delimiter_),
                                           columns == 1 ? ", and --skip leaves out lines before the header" : ""));
            }
        }
    }
    return rows_;
}

// Each line of the index is one of the file, unless fields hold line ends.
void csv_reader::add_lines_of(std::span<const std::uint32_t> rows, std::vector<std::uint64_t>& lines) const {
    if (!index_.has_inner_line_ends && !index_.found_fault) {
        std::uint32_t index_line = 0;
        for (const std::uint32_t row : rows) {
            while (first_field(index_line) != row) {
                ++index_line;
            }
            lines.push_back(lines_before_ + index_line + 1);
        }
        return;
    }
    std::size_t counted = 0;
    std::uint64_t line = lines_before_ + 1;
    for (const std::uint32_t row : rows) {
        const std::size_t begin = begin_of(row);
        line += count_line_ends(text().substr(counted, begin - counted));
        counted = begin;
        lines.push_back(line);
    }
}

std::string_view csv_reader::without_quotes(std::string_view quoted) {
    std::string_view left = quoted.substr(1, quoted.size() - 2);
    std::size_t quote = left.find('"');
    if (quote == std::string_view::npos) {
        return left;
    }
    unquoted_.clear();
    for (; quote != std::string_view::npos; quote = left.find('"')) {
        unquoted_ += left.substr(0, quote + 1);
        left.remove_prefix(quote + 2);
    }
    unquoted_ += left;
    return unquoted_;
}

} // namespace host
