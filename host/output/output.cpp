// SPDX-License-Identifier: Apache-2.0
#include "host/output/output.h"

#include <algorithm>
#include <cmath>

#include "embedded/columns/value_text.h"
#include "host/output/display_width.h"
#include "host/program_error.h"

namespace host {
namespace {

constexpr std::uint64_t rows_that_settle_widths = 1000;

template <class T> const T& value_at(const bifun_column& column, std::uint32_t row) {
    return static_cast<const T*>(column.data->values)[row];
}

bool is_text(sql_type type) { return type == sql_type::varchar || type == sql_type::varbinary; }

std::string_view stored_text(const bifun_string& value) {
    return value.length == 0 ? std::string_view() : std::string_view(reinterpret_cast<const char*>(value.data), value.length);
}

void append_csv_text(std::string& out, std::string_view stored, std::size_t trailing_blanks) {
    const bool quoted = (stored.empty() && trailing_blanks == 0) || stored.find_first_of(",\"\r\n") != std::string_view::npos;
    if (!quoted) {
        out.append(stored).append(trailing_blanks, ' ');
        return;
    }
    out += '"';
    for (const char c : stored) {
        out.append(c == '"' ? 2 : 1, c);
    }
    out.append(trailing_blanks, ' ');
    out += '"';
}

void append_json_text(std::string& out, std::string_view text) {
    out += '"';
    for (const char c : text) {
        const char* const escaped = "\"\"\\\\\nn\rr\tt\bb\ff";
        bool done = false;
        for (const char* pair = escaped; *pair != '\0' && !done; pair += 2) {
            if (c == *pair) {
                out += '\\';
                out += pair[1];
                done = true;
            }
        }
        if (!done && static_cast<unsigned char>(c) < 0x20) {
            fmt::format_to(std::back_inserter(out), "\\u{:04x}", static_cast<unsigned>(c));
        } else if (!done) {
            out += c;
        }
    }
    out += '"';
}

// Characters that would move the cursor or command the terminal, written so that they do not.
std::string without_control_characters(std::string text) {
    if (std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; })) {
        return text;
    }
    std::string shown;
    for (const char c : text) {
        switch (c) {
        case '\n':
            shown += "\\n";
            break;
        case '\r':
            shown += "\\r";
            break;
        case '\t':
            shown += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
                fmt::format_to(std::back_inserter(shown), "\\x{:02x}", static_cast<unsigned>(c));
            } else {
                shown += c;
            }
        }
    }
    return shown;
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

} // namespace

void append_value(std::string& text, const bifun_column& column, sql_type type, std::uint32_t row) {
    const bifun::value_type of_values = value_type_of(type);
    const auto kind = type == sql_type::date ? zqengine::datetime_kind::date
                      : has_date(type)       ? zqengine::datetime_kind::datetime
                                             : zqengine::datetime_kind::time;
    const auto* const value = static_cast<const std::uint8_t*>(column.data->values) + row * bifun::value_width(of_values);
    char characters[zqengine::value_text_size];
    text.append(characters, zqengine::write_value(of_values, kind, value, characters));
}

result_output::result_output(output_format format, output_stream& stream, const std::vector<result_column>& columns, const charset& set)
    : format_(format), stream_(stream), columns_(columns), charset_(set) {}

// ---- CSV -----------------------------------------------------------------------------------------------------------

void result_output::write_csv_row(std::span<const bifun_column* const> columns, std::uint32_t row) {
    std::string& out = stream_.text;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const bifun_column& column = *columns[i];
        const std::uint32_t at = row_of(column, row);
        if (i > 0) {
            out += ',';
        }
        if (column.data->null_flags[at] == 0) {
            continue;
        }
        if (is_text(columns_[i].type)) {
            const auto& value = value_at<bifun_string>(column, at);
            append_csv_text(out, stored_text(value), value.trailing_blanks);
        } else {
            append_value(out, column, columns_[i].type, at);
        }
    }
    out += '\n';
}

// ---- JSON ----------------------------------------------------------------------------------------------------------

void result_output::write_json_row(std::span<const bifun_column* const> columns, std::uint32_t row) {
    std::string& out = stream_.text;
    out += rows_ == 0 ? "\n  {" : ",\n  {";
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
            // JSON has no number for NaN and infinities, so they are strings, as dates and intervals are.
            const bool quoted = is_datetime(type) || is_interval(type) ||
                                (type == sql_type::double_precision && !std::isfinite(value_at<double>(column, at)));
            out.append(quoted ? "\"" : "");
            append_value(out, column, type, at);
            out.append(quoted ? "\"" : "");
        }
    }
    out += '}';
}

// ---- tables --------------------------------------------------------------------------------------------------------

void result_output::hold_table_row(std::span<const bifun_column* const> columns, std::uint32_t row) {
    std::vector<std::string> cells;
    cells.reserve(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const bifun_column& column = *columns[i];
        const std::uint32_t at = row_of(column, row);
        std::string cell;
        if (column.data->null_flags[at] == 0) {
            cell = "NULL";
        } else if (is_text(columns_[i].type)) {
            cell = without_control_characters(utf8_text(charset_, value_at<bifun_string>(column, at)));
        } else {
            append_value(cell, column, columns_[i].type, at);
        }
        cells.push_back(std::move(cell));
    }
    if (widths_settled_) {
        append_table_row(stream_.text, cells, widths_, columns_);
        return;
    }
    held_rows_.push_back(std::move(cells));
    if (held_rows_.size() == rows_that_settle_widths) {
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
        widths_.push_back(width);
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

// ---- all formats ---------------------------------------------------------------------------------------------------

void result_output::begin() {
    begun_ = true;
    if (format_ == output_format::json) {
        for (const result_column& column : columns_) {
            append_json_text(json_keys_.emplace_back(), column.name);
            json_keys_.back() += ": ";
        }
        stream_.text += '[';
    } else if (format_ == output_format::csv) {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            stream_.text.append(i == 0 ? "" : ",");
            append_csv_text(stream_.text, from_utf8(charset_, columns_[i].name).value_or(columns_[i].name), 0);
        }
        stream_.text += '\n';
    }
}

void result_output::write_rows(std::span<const bifun_column* const> columns, std::uint32_t row_count) {
    for (std::uint32_t row = 0; row < row_count; ++row, ++rows_) {
        if (!begun_) {
            begin();
        }
        switch (format_) {
        case output_format::csv:
            write_csv_row(columns, row);
            break;
        case output_format::json:
            write_json_row(columns, row);
            break;
        case output_format::table:
            hold_table_row(columns, row);
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
