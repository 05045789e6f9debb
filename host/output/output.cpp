// SPDX-License-Identifier: Apache-2.0
#include "host/output/output.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <utility>

#include "host/near_names.h"
#include "host/output/display_width.h"
#include "host/output/value_output.h"

namespace host {
namespace {

constexpr std::uint64_t rows_that_settle_widths = 1000;
constexpr std::size_t text_that_settles_widths = std::size_t{4} << 20;
// A wider cell stands in full, and is not what the others of its column are filled up to.
constexpr std::size_t widest_column = 120;

bool is_text(sql_type type) { return type == sql_type::varchar; }

std::string_view stored_text(const bifun_string& value) {
    return value.length == 0 ? std::string_view() : std::string_view(reinterpret_cast<const char*>(value.data), value.length);
}

std::string utf8_text(const charset& set, const bifun_string& value) {
    return to_utf8_with_replacements(set, stored_text(value)) + std::string(value.trailing_blanks, ' ');
}

void append_table_row(std::string& out, const std::vector<std::string>& cells, const std::vector<std::size_t>& widths,
                      const std::vector<result_column>& columns) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const std::size_t width = display_width(cells[i]);
        const std::size_t padding = widths[i] > width ? widths[i] - width : 0;
        const bool right = is_number(columns[i].type);
        out += i == 0 ? " " : " | ";
        out.append(right ? padding : 0, ' ').append(cells[i]);
        out.append(right || i + 1 == cells.size() ? 0 : padding, ' ');
    }
    out += '\n';
}

constexpr std::pair<std::string_view, output_format> named_formats[] = {
    {"table", output_format::table},       {"csv", output_format::csv},          {"tsv", output_format::tsv},
    {"json", output_format::json},         {"jsonl", output_format::json_lines}, {"ndjson", output_format::json_lines},
    {"markdown", output_format::markdown}, {"md", output_format::markdown},      {"txt", output_format::table},
};

} // namespace

std::optional<output_format> find_output_format(std::string_view name) {
    const auto* const found =
        std::ranges::find_if(named_formats, [&](const auto& named) { return equal_ignoring_case(named.first, name); });
    return found == std::end(named_formats) ? std::nullopt : std::optional(found->second);
}

result_output::result_output(output_format format, output_stream& stream, const std::vector<result_column>& columns, const charset& set)
    : format_(format), stream_(stream), columns_(columns), charset_(set), delimiter_(format == output_format::tsv ? '\t' : ',') {}

// ---- CSV and TSV ---------------------------------------------------------------------------------------------------

void result_output::write_delimited_row(std::span<const bifun_column* const> columns, std::uint32_t row) {
    std::string& out = stream_.text;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const bifun_column& column = *columns[i];
        const std::uint32_t at = row_of(column, row);
        if (i > 0) {
            out += delimiter_;
        }
        if (column.data->null_flags[at] == 0) {
            continue;
        }
        if (is_text(columns_[i].type)) {
            const auto& value = value_at<bifun_string>(column, at);
            append_delimited_text(out, stored_text(value), value.trailing_blanks, delimiter_);
        } else if (columns_[i].type == sql_type::varbinary) {
            std::string digits;
            append_value(digits, column, columns_[i].type, at);
            append_delimited_text(out, digits, 0, delimiter_);
        } else {
            append_value(out, column, columns_[i].type, at);
        }
    }
    out += '\n';
}

// ---- JSON ----------------------------------------------------------------------------------------------------------

void result_output::write_json_row(std::span<const bifun_column* const> columns, std::uint32_t row) {
    std::string& out = stream_.text;
    const bool is_array = format_ == output_format::json;
    out += !is_array ? "{" : rows_ == 0 ? "\n  {" : ",\n  {";
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const bifun_column& column = *columns[i];
        const sql_type type = columns_[i].type;
        const std::uint32_t at = row_of(column, row);
        out.append(i > 0 ? ", " : "").append(json_keys_[i]);
        if (column.data->null_flags[at] == 0) {
            out += "null";
        } else if (is_text(type)) {
            append_json_text(out, utf8_text(charset_, value_at<bifun_string>(column, at)));
        } else {
            // JSON has no number for NaN and infinities, so they are strings, as dates, intervals and binary values are.
            const bool quoted = is_datetime(type) || is_interval(type) || type == sql_type::varbinary ||
                                (type == sql_type::double_precision && !std::isfinite(value_at<double>(column, at)));
            out.append(quoted ? "\"" : "");
            append_value(out, column, type, at);
            out.append(quoted ? "\"" : "");
        }
    }
    out += is_array ? "}" : "}\n";
}

// ---- tables --------------------------------------------------------------------------------------------------------

// A value as text that takes one line.
std::string result_output::cell_of(const bifun_column& column, sql_type type, std::uint32_t row) const {
    const std::uint32_t at = row_of(column, row);
    if (column.data->null_flags[at] == 0) {
        return "NULL";
    }
    if (is_text(type)) {
        return without_control_characters(utf8_text(charset_, value_at<bifun_string>(column, at)));
    }
    std::string cell;
    append_value(cell, column, type, at);
    return cell;
}

void result_output::hold_table_row(std::span<const bifun_column* const> columns, std::uint32_t row) {
    std::vector<std::string> cells;
    cells.reserve(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        cells.push_back(cell_of(*columns[i], columns_[i].type, row));
    }
    if (widths_settled_) {
        append_table_row(stream_.text, cells, widths_, columns_);
        return;
    }
    held_text_ +=
        std::transform_reduce(cells.begin(), cells.end(), std::size_t{0}, std::plus(), [](const std::string& cell) { return cell.size(); });
    held_rows_.push_back(std::move(cells));
    if (held_rows_.size() == rows_that_settle_widths || held_text_ > text_that_settles_widths) {
        write_held_rows();
    }
}

void result_output::write_held_rows() {
    if (widths_settled_) {
        return;
    }
    widths_settled_ = true;
    std::vector<std::string> heading;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        heading.push_back(without_control_characters(columns_[i].name));
        std::size_t width = display_width(heading[i]);
        for (const std::vector<std::string>& cells : held_rows_) {
            width = std::max(width, display_width(cells[i]));
        }
        widths_.push_back(std::min(width, widest_column));
    }
    append_table_row(stream_.text, heading, widths_, columns_);
    for (std::size_t i = 0; i < widths_.size(); ++i) {
        stream_.text.append(i == 0 ? "-" : "-+-").append(widths_[i], '-');
    }
    stream_.text += "-\n";
    for (const std::vector<std::string>& cells : held_rows_) {
        append_table_row(stream_.text, cells, widths_, columns_);
    }
    held_rows_.clear();
}

// ---- Markdown ------------------------------------------------------------------------------------------------------

void result_output::write_markdown_row(std::span<const bifun_column* const> columns, std::uint32_t row) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        stream_.text += i == 0 ? "| " : " | ";
        append_markdown_text(stream_.text, cell_of(*columns[i], columns_[i].type, row));
    }
    stream_.text += " |\n";
}

void result_output::write_markdown_heading() {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        stream_.text += i == 0 ? "| " : " | ";
        append_markdown_text(stream_.text, without_control_characters(columns_[i].name));
    }
    stream_.text += " |\n|";
    for (const result_column& column : columns_) {
        stream_.text += is_number(column.type) ? "---:|" : "---|";
    }
    stream_.text += '\n';
}

// ---- all formats ---------------------------------------------------------------------------------------------------

void result_output::begin() {
    begun_ = true;
    switch (format_) {
    case output_format::json:
        stream_.text += '[';
        [[fallthrough]];
    case output_format::json_lines:
        for (const result_column& column : columns_) {
            append_json_text(json_keys_.emplace_back(), column.name);
            json_keys_.back() += ": ";
        }
        break;
    case output_format::csv:
    case output_format::tsv:
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            stream_.text.append(i == 0 ? 0 : 1, delimiter_);
            append_delimited_text(stream_.text, from_utf8(charset_, columns_[i].name).value_or(columns_[i].name), 0, delimiter_);
        }
        stream_.text += '\n';
        break;
    case output_format::markdown:
        write_markdown_heading();
        break;
    case output_format::table: // when the widths are known
        break;
    }
}

void result_output::write_rows(std::span<const bifun_column* const> columns, std::uint32_t row_count) {
    for (std::uint32_t row = 0; row < row_count; ++row, ++rows_) {
        if (!begun_) {
            begin();
        }
        switch (format_) {
        case output_format::csv:
        case output_format::tsv:
            write_delimited_row(columns, row);
            break;
        case output_format::json:
        case output_format::json_lines:
            write_json_row(columns, row);
            break;
        case output_format::table:
            hold_table_row(columns, row);
            break;
        case output_format::markdown:
            write_markdown_row(columns, row);
            break;
        }
        stream_.flush_if_large();
    }
}

void result_output::finish() {
    if (!begun_) {
        begin();
    }
    if (format_ == output_format::table) {
        write_held_rows();
    } else if (format_ == output_format::json) {
        stream_.text += rows_ == 0 ? "]\n" : "\n]\n";
    }
    stream_.flush();
}

void result_output::abandon() {
    if (begun_) {
        finish();
    }
}

} // namespace host
