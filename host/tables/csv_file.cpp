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

// ---- the beginning of the file ---------------------------------------------------------------------------------------

void csv_reader::skip_lines() {
    std::size_t position = 0;
    std::uint64_t lines = 0;
    while (lines < options_.skipped_lines && (!at_end_ || position < filled_)) {
        std::optional<line_end> found = find_line_end(text().substr(position));
        while (!found && !at_end_) {
            drop_bytes(position, lines - lines_before_);
            position = 0;
            read_more();
            found = find_line_end(text());
        }
        lines += found || position < filled_ ? 1 : 0;
        position = found ? position + found->behind : filled_;
    }
    drop_bytes(position, lines - lines_before_);
}

// Those before the header, which would hide what separates its fields.
void csv_reader::skip_comments() {
    const auto is_comment = [this] {
        if (filled_ == 0 && !at_end_) {
            read_more();
        }
        return options_.comment && text().starts_with(*options_.comment);
    };
    while (is_comment()) {
        drop_first_line();
    }
    while (!at_end_ && !find_line_end(text())) {
        read_more();
    }
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

void csv_reader::check_byte(std::string_view option, char byte) const {
    if (is_part_of_characters(byte)) {
        fail("{}: in {}, {} is also a part of characters", option, charset_.name, delimiter_name(byte));
    }
}

std::vector<std::string> csv_reader::nulls_to_repeat() const {
    const std::vector<std::string>& texts = options_.null_texts;
    return std::ranges::find(texts, "") != texts.end() ? texts : std::vector<std::string>();
}

void csv_reader::take_null_texts() {
    for (const std::string& text : options_.null_texts) {
        // No field holds what the character set does not have.
        if (std::optional<std::string> converted = from_utf8(charset_, text)) {
            null_texts_.push_back(std::move(*converted));
        }
    }
}

namespace {

// 2024-01-01 10:00:00,123 INFO ...: no field begins with a blank behind so many digits.
bool begins_as_log(std::string_view text) {
    constexpr std::string_view form = "0000-00-00 00:00:00,000 ";
    return text.size() > form.size() && std::ranges::equal(text.substr(0, form.size()), form, [](char c, char expected) {
               return expected == '0' ? c >= '0' && c <= '9' : c == expected;
           });
}

} // namespace

void csv_reader::find_delimiter() {
    if (syntax_.quote) {
        check_byte("--quote", *syntax_.quote);
    }
    if (syntax_.escape) {
        check_byte("--escape", *syntax_.escape);
    }
    if (syntax_.comment) {
        check_byte("--comment", *syntax_.comment);
    }
    if (options_.delimiter) {
        syntax_.delimiter = *options_.delimiter;
        check_byte("--delimiter", syntax_.delimiter);
        if (syntax_.delimiter == syntax_.quote || syntax_.delimiter == syntax_.escape) { // as a first line sep= may say
            fail("{}: {} cannot separate fields, as --quote or --escape names it", path(), delimiter_name(syntax_.delimiter));
        }
        return;
    }
    if (syntax_.quote == '"' && (text().starts_with("{\"") || text().starts_with("[{"))) {
        fail("{}: this is JSON; with --no-header --quote none --delimiter 0x01 each line is a text, for JSON_VALUE(column_1, '$.name')",
             path());
    }
    if (begins_as_log(text())) {
        fail(
            "{}: this seems to be a log with commas before its milliseconds; with --no-header --quote none --delimiter 0x01 each line is a "
            "text, for SUBSTR(column_1, 1, 19), and with --delimiter comma it has fields",
            path());
    }
    const found_delimiter found = guess_delimiter(path(), text(), at_end_, syntax_, !is_part_of_characters('|'));
    syntax_.delimiter = found.delimiter;
    doubt_ = found.doubt;
}

void csv_reader::read_header() {
    const bool is_first = header_.empty();
    const bool takes_longest = !options_.has_header && options_.fills_short_rows;
    if (is_first && takes_longest) {
        while (!at_end_ && filled_ < capacity_) {
            read_more();
        }
        rescan();
    }
    while (find_line() && is_blank(line_)) {
        ++line_;
    }
    if (!find_line()) {
        if (is_first && options_.skipped_lines > 0) {
            const std::uint64_t lines = lines_before_ + index_.lines;
            fail("{}: --skip {} leaves nothing of the file, which has {} line{}", path(), options_.skipped_lines, lines,
                 lines == 1 ? "" : "s");
        }
        if (is_first) {
            fail("{}: the file is empty{}", path(), options_.has_header ? "; its first line must name the columns" : "");
        }
        return;
    }
    const std::uint32_t first = first_field(line_);
    for (std::uint32_t f = first; is_first && f < index_.line_fields[line_]; ++f) {
        header_.emplace_back(options_.has_header ? field_at(f, f + 1 == index_.line_fields[line_]).text : std::string_view());
    }
    for (std::uint32_t line = line_; is_first && takes_longest && line < index_.lines; ++line) {
        header_.resize(std::max<std::size_t>(header_.size(), index_.line_fields[line] - first_field(line)));
    }
    header_end_ = line_at(index_.ends[index_.line_fields[line_]]);
    line_ += options_.has_header ? 1 : 0;
    if (is_first && options_.has_header && doubt_.empty()) {
        doubt_header();
    }
}

// Programs rule off the names of columns in the tables that they print.
bool csv_reader::is_rule(std::uint32_t line) const {
    const std::size_t begin = begin_of(first_field(line));
    const std::string_view written = text().substr(begin, end_of(index_.line_fields[line] - 1, true) - begin);
    return written.find("--") != written.npos && written.find_first_of("+|") != written.npos &&
           written.find_first_not_of("-+|: ") == written.npos;
}

// A title in the first line that has as many delimiters as the rows, as spreadsheets write it, leaves most columns without a name: the line
// further down that names them.
std::optional<std::uint32_t> csv_reader::find_later_header() {
    constexpr std::uint32_t most_title_lines = 20;
    const auto unnamed = static_cast<std::size_t>(std::ranges::count(header_, ""));
    if (header_.size() < 2 || unnamed * 2 < header_.size() || (unnamed * 2 == header_.size() && header_[0].empty())) {
        return std::nullopt;
    }
    const std::uint32_t behind = std::min(index_.lines, line_ + most_title_lines);
    for (std::uint32_t line = line_; line < behind; ++line) {
        if (index_.line_fields[line] - first_field(line) == header_.size() && !has_empty_field(line)) {
            const std::uint32_t next = next_full_line(line);
            const bool names_all = next < index_.lines && !has_number_or_date(line) && has_number_or_date(next);
            return names_all ? std::optional(line) : std::nullopt;
        }
    }
    return std::nullopt;
}

// Without a header, the first row would be lost silently.
void csv_reader::doubt_header() {
    constexpr std::uint32_t most_rows = 100;
    if (line_ == index_.lines && !at_end_) { // the end of a row may be that of the file, not seen yet
        const std::uint32_t line = line_;
        read_more();
        rescan();
        line_ = line;
    }
    std::vector<column_form> columns;
    for (const std::string& name : header_) {
        columns.push_back({.name = name});
    }
    const std::uint32_t behind = std::min(index_.lines, line_ + most_rows);
    for (std::uint32_t line = line_; line < behind; ++line) {
        const std::uint32_t first = first_field(line);
        for (std::size_t f = 0; index_.line_fields[line] - first == columns.size() && f < columns.size(); ++f) {
            include_field(columns[f], field(first, f).text);
        }
    }
    if (is_rule(line_ - 1) || (line_ < index_.lines && is_rule(line_))) {
        doubt_ = fmt::format(
            "{0}: this is a table as programs print it; sed -E '/^[-+|: ]*$/d; /^\\([0-9]+ rows?\\)$/d; s/^ *\\| *//; s/ *\\| *$//; "
            "s/ *\\| */|/g; s/^ +//'{1} | bifun --delimiter bar - reads it",
            path(), file_operand(path()));
    } else if (const std::optional<std::uint32_t> named = find_later_header()) {
        const std::uint64_t place = line_at(begin_of(first_field(*named)));
        doubt_ = fmt::format("{}: most columns have no name in the header; if line {} names them, --skip {} leaves out those before it",
                             path(), place, place - 1);
    } else if (seems_row(columns)) {
        doubt_ =
            fmt::format("{}: the names of columns are numbers or dates; if the first line is a row, --no-header reads it as one", path());
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
