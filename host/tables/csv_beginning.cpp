// SPDX-License-Identifier: Apache-2.0
// The beginning of a CSV file: what stands before the header, the delimiter, and the header itself.
#include <algorithm>

#include "host/program_error.h"
#include "host/tables/csv_file.h"
#include "host/tables/delimiter.h"
#include "host/tables/file_name.h"
#include "host/tables/header_form.h"
#include "host/values/value_text.h"

namespace host {

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

} // namespace host
