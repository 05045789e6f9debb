// SPDX-License-Identifier: Apache-2.0
#include "host/tables/csv_file.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "host/program_error.h"
#include "host/tables/delimiter.h"
#include "host/tables/file_name.h"
#include "host/tables/header_form.h"
#include "host/values/value_text.h"

namespace host {
namespace {

constexpr std::size_t alignment = 64;
constexpr std::size_t first_capacity = std::size_t{128} * 1024;
// A row beyond this is a quote that somebody forgot to close.
constexpr std::size_t longest_row = std::size_t{64} * 1024 * 1024;
// Rows are handed out when those that were filled have so many fields, however many rows were asked for.
constexpr std::size_t most_filled_fields = std::size_t{1} << 24;

constexpr std::string_view leaving_out_comments = "--comment '#' leaves out lines that begin with it";

char* allocate(std::size_t size) {
    void* const bytes = std::aligned_alloc(alignment, size);
    if (bytes == nullptr) {
        throw std::bad_alloc();
    }
    return static_cast<char*>(bytes);
}

// (2 rows), as programs end the tables that they print.
bool counts_rows(std::string_view text) {
    const std::size_t behind = text.starts_with('(') ? text.find_first_not_of("0123456789", 1) : 0;
    return behind != text.npos && behind > 1 && text.substr(behind).starts_with(" row");
}

} // namespace

csv_reader::csv_reader(std::string path, const file_options& options, const charset& set)
    : input_(std::move(path), options.encoding, set, options.ignores_errors), options_(options),
      charset_(set), syntax_{.quote = options.quote,
                             .comment = options.comment,
                             .escape = options.escape,
                             .has_letter_escapes = options.has_letter_escapes},
      is_usual_(options.quote == '"' && !options.escape && options.null_texts == file_options().null_texts && !options.has_quoted_nulls &&
                !options.fills_short_rows),
      bytes_(allocate(first_capacity)), capacity_(first_capacity) {
    take_null_texts();
    begin();
}

void csv_reader::begin() {
    skip_lines();
    take_delimiter_line();
    skip_comments();
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
    scan_lines(text(), at_end_, syntax_, index_);
    is_usual_ &= !index_.has_blanks_around_quotes;
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
        if (index_.found_fault && (index_.found_fault->kind != scan_fault::unclosed || at_end_)) {
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
    if (fault.kind == scan_fault::misplaced) {
        const char quote = *syntax_.quote;
        const std::size_t line_end = text().substr(0, fault.position).find_last_of("\r\n");
        const bool is_in_comment = text()[line_end == std::string_view::npos ? 0 : line_end + 1] == '#';
        const bool is_behind_backslash = fault.position >= 2 && text()[fault.position - 1] == quote && text()[fault.position - 2] == '\\';
        report_bad_row(
            line_at(fault.position),
            fmt::format("text stands behind a closing quote; {}",
                        is_in_comment ? std::string(leaving_out_comments)
                        : is_behind_backslash && !syntax_.escape
                            ? fmt::format("where \\{0} is a {0} inside a field, --escape '\\' says so", quote)
                            : fmt::format("write a field with quotes as {0}...{0} with each quote inside doubled; --quote none reads files "
                                          "in which quotes are text",
                                          quote)));
    }
    drop_lines();
    if (fault.kind == scan_fault::unclosed) {
        report_bad_row(lines_before_ + 1,
                       "the row that begins here has a quote that is never closed; --quote none reads files in which quotes are text");
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

// ---- rows ------------------------------------------------------------------------------------------------------------

bool csv_reader::is_blank(std::uint32_t line) const {
    const std::uint32_t first = first_field(line);
    return index_.line_fields[line] == first + 1 && begin_of(first) == end_of(first, true);
}

std::span<const std::uint32_t> csv_reader::next_rows(std::uint32_t most) {
    rows_.clear();
    const std::size_t columns = header_.size();
    while (rows_.empty() && find_line()) {
        behind_fields_ = index_.lines == 0 ? 1 : index_.line_fields[index_.lines - 1] + std::size_t{1};
        for (; line_ < index_.lines && rows_.size() < most; ++line_) {
            const std::uint32_t first = first_field(line_);
            const std::uint32_t fields = index_.line_fields[line_] - first;
            if (fields == columns) [[likely]] {
                rows_.push_back(first);
            } else if (is_blank(line_)) {
                continue;
            } else if (fields < columns && options_.fills_short_rows) {
                if (behind_fields_ > most_filled_fields && !rows_.empty()) {
                    break;
                }
                rows_.push_back(fill_row(line_));
            } else {
                if (!rows_.empty() && !options_.ignores_errors) {
                    break; // after the rows before it
                }
                report_field_count(line_);
            }
        }
    }
    // In a file of one column, blank lines may lie between a title and the header.
    found_rows_ =
        found_rows_ || std::ranges::any_of(rows_, [&](std::uint32_t row) { return columns > 1 || begin_of(row) != end_of(row, true); });
    return rows_;
}

// Whether all rows in hand from a line on have as many fields as it, and there are several.
bool csv_reader::have_as_many_fields(std::uint32_t first_line) const {
    const std::uint32_t fields = index_.line_fields[first_line] - first_field(first_line);
    std::uint32_t rows = 0;
    for (std::uint32_t line = first_line; line < index_.lines; ++line) {
        if (is_blank(line)) {
            continue;
        }
        if (index_.line_fields[line] - first_field(line) != fields) {
            return false;
        }
        ++rows;
    }
    return rows > 1;
}

bool csv_reader::has_number_or_date(std::uint32_t line) {
    const std::uint32_t behind = index_.line_fields[line];
    for (std::uint32_t f = first_field(line); f < behind; ++f) {
        if (is_value(value_form_of(field_at(f, f + 1 == behind).text))) {
            return true;
        }
    }
    return false;
}

bool csv_reader::has_empty_field(std::uint32_t line) const {
    const std::uint32_t behind = index_.line_fields[line];
    for (std::uint32_t f = first_field(line); f < behind; ++f) {
        if (begin_of(f) == end_of(f, f + 1 == behind)) {
            return true;
        }
    }
    return false;
}

// 'it, is'
bool csv_reader::has_field_in_apostrophes(std::uint32_t line) const {
    const std::uint32_t behind = index_.line_fields[line];
    bool is_open = false;
    for (std::uint32_t f = first_field(line); f < behind; ++f) {
        const std::string_view written = text().substr(begin_of(f), end_of(f, f + 1 == behind) - begin_of(f));
        if (is_open && written.ends_with('\'')) {
            return true;
        }
        is_open = is_open || (written.starts_with('\'') && !written.substr(1).ends_with('\''));
    }
    return false;
}

// The first one behind a line that is not blank.
std::uint32_t csv_reader::next_full_line(std::uint32_t line) const {
    do {
        ++line;
    } while (line < index_.lines && is_blank(line));
    return line;
}

// Whether a line names the columns of those behind it, rather than the first line of the file.
bool csv_reader::seems_header(std::uint32_t line) {
    return have_as_many_fields(line) && !has_number_or_date(line) && has_number_or_date(next_full_line(line));
}

void csv_reader::report_field_count(std::uint32_t line) {
    const std::size_t columns = header_.size();
    const std::uint32_t fields = index_.line_fields[line] - first_field(line);
    const std::uint64_t place = line_at(begin_of(first_field(line)));
    const bool is_first_row = options_.has_header && !found_rows_ && bad_rows_ == 0;
    std::string hint;
    constexpr std::uint64_t most_title_lines = 20;
    const bool seems_title = options_.has_header && place - header_end_ <= most_title_lines && fields > 1 && seems_header(line);
    if (seems_title) {
        hint = fmt::format("; if this line names the columns, --skip {} leaves out those before it", place - 1);
    } else if (fields == 1 && counts_rows(text().substr(begin_of(first_field(line))))) {
        hint = "; it counts the rows, and --ignore-errors leaves it out";
    } else if (fields < columns) {
        hint = "; --fill-short-rows has NULL for the rest of such rows";
    } else if (!options_.has_header) {
        hint = "; --fill-short-rows gives all rows as many fields as the longest of the first ones has";
    } else if (syntax_.quote != '\'' && has_field_in_apostrophes(line)) {
        hint = "; where fields stand in '...', --quote \"'\" says so";
    } else if (syntax_.quote) {
        hint = fmt::format("; a field that holds a {} stands in {}", delimiter_name(syntax_.delimiter),
                           *syntax_.quote == '"' ? "double quotes" : fmt::format("{0}...{0}", *syntax_.quote));
    }
    const bool has_one_more = columns > 1 && is_first_row && !seems_title && fields == columns + 1 && have_as_many_fields(line);
    if (has_one_more && begin_of(first_field(line) + fields - 1) == end_of(first_field(line) + fields - 1, true)) {
        hint = fmt::format("; where all rows end with a {0}, sed 's/{1}$//'{2} | bifun - \"SELECT ...\" takes it away",
                           delimiter_name(syntax_.delimiter), syntax_.delimiter, file_operand(path()));
    } else if (has_one_more) {
        hint += fmt::format("; as the rows have one field more, the first column may have no name, as R writes row names: --no-header "
                            "--skip {} reads them",
                            header_end_);
    }
    if (text()[begin_of(first_field(line))] == '#' || (columns == 1 && header_[0].starts_with('#'))) {
        hint = fmt::format("; {}", leaving_out_comments);
    }
    if (const std::string advice = syntax_.delimiter == ' ' ? advice_on_aligned(path(), text()) : ""; !advice.empty()) {
        hint = "; " + advice;
    }
    if (columns == 1 && !seems_title) {
        hint += "; --delimiter names the byte between fields, --skip leaves out lines before the header";
    }
    report_bad_row(place, fmt::format("the {} {} field{} and this row {}{}", options_.has_header ? "header has" : "first row has", columns,
                                      columns == 1 ? "" : "s", fields, hint));
}

bool csv_reader::has_valid_characters_besides(std::uint32_t row) const {
    for (std::uint32_t line = 0; line < index_.lines; ++line) {
        const std::size_t begin = begin_of(first_field(line));
        const std::string_view written = text().substr(begin, end_of(index_.line_fields[line] - 1, true) - begin);
        const bool has_characters = std::ranges::any_of(written, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
        if (begin != begin_of(row) && has_characters && is_valid_text(charset_, written)) {
            return true;
        }
    }
    return false;
}

// Makes a row of a short one behind the fields of the index. Each field that it lacks ends before it begins.
std::uint32_t csv_reader::fill_row(std::uint32_t line) {
    const std::size_t columns = header_.size();
    const std::uint32_t first = first_field(line);
    const std::uint32_t fields = index_.line_fields[line] - first;
    const std::size_t made = behind_fields_;
    behind_fields_ += columns + 1;
    if (behind_fields_ > index_.room) {
        auto larger = std::make_unique_for_overwrite<std::uint32_t[]>(behind_fields_ * 2);
        std::copy_n(index_.ends.get(), made, larger.get());
        index_.ends = std::move(larger);
        auto lines = std::make_unique_for_overwrite<std::uint32_t[]>(behind_fields_ * 2);
        std::copy_n(index_.line_fields.get(), index_.lines, lines.get());
        index_.line_fields = std::move(lines);
        index_.room = behind_fields_ * 2;
    }
    std::uint32_t* const ends = index_.ends.get();
    std::copy_n(ends + first, fields, ends + made);
    std::fill_n(ends + made + fields, columns - fields + 1, end_of(first + fields - 1, true));
    return static_cast<std::uint32_t>(made);
}

// Each line of the index is one of the file, unless fields hold line ends.
void csv_reader::add_lines_of(std::span<const std::uint32_t> rows, std::vector<std::uint64_t>& lines) const {
    if (!index_.has_inner_line_ends && !index_.found_fault && !options_.fills_short_rows) {
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

csv_field csv_reader::unusual_field(std::uint32_t field, bool ends_line) {
    const std::uint32_t begin = begin_of(field);
    const std::uint32_t end = end_of(field, ends_line);
    if (end < begin) { // of a row that was filled
        return {.text = {}, .is_null = true, .is_null_unless_text = true};
    }
    std::string_view found(bytes_.get() + begin, end - begin);
    const std::string_view inside_blanks = index_.has_blanks_around_quotes ? without_blanks_around(found) : found;
    const bool quoted = syntax_.quote && !inside_blanks.empty() && inside_blanks.front() == *syntax_.quote;
    if (quoted) {
        found = inside_blanks.substr(1, inside_blanks.size() - 2);
    }
    const bool may_be_null = !quoted || options_.has_quoted_nulls;
    const std::string_view written = without_blanks_around(found);
    const bool is_null = may_be_null && (!written.empty() || found.empty()) && std::ranges::find(null_texts_, written) != null_texts_.end();
    return {.text = decoded_text(found, quoted, syntax_, decoded_),
            .is_null = is_null,
            .is_null_unless_text = is_null || (may_be_null && found.empty())};
}

} // namespace host
