// SPDX-License-Identifier: Apache-2.0
#include "host/tables/type_inference.h"

#include <algorithm>

#include "host/session/interruption.h"
#include "host/values/value_text.h"

namespace host {
namespace {

constexpr std::uint32_t most_rows = 1024;
constexpr std::uint64_t most_rows_for_forms = 16 * most_rows;

// 1.234, with one to three digits before the point that may be a number of thousands.
bool is_lone_group(std::string_view text) {
    constexpr std::size_t group_digits = 3;
    text = without_blanks_around(text);
    text.remove_prefix(text.starts_with('-') || text.starts_with('+') ? 1 : 0);
    const std::size_t point = text.find('.');
    return point >= 1 && point <= group_digits && text.size() == point + 1 + group_digits && text.front() != '0' &&
           text.find_first_not_of("0123456789") == point && text.find_first_not_of("0123456789", point + 1) == text.npos;
}

} // namespace

void find_marked_columns(csv_reader& reader, std::span<const std::uint32_t> rows, first_rows& shown) {
    for (std::size_t i = 0; i < reader.header().size(); ++i) {
        text_forms forms;
        for (std::size_t r = 0; r < rows.size() && forms.of_all != 0; ++r) {
            const csv_field field = reader.field(rows[r], i);
            if (!field.is_null_unless_text) {
                include_text(forms, field.text, std::nullopt);
            }
        }
        std::optional<std::size_t>& first = (forms.marks & comma_number_form) != 0 ? shown.with_comma : shown.with_point;
        const field_kinds of_all = forms.of_all & (comma_number_form | point_number_form);
        first = !first && forms.marks != 0 && (of_all & forms.marks) != 0 ? std::optional(i) : first;
    }
}

void find_grouped_column(csv_reader& reader, std::span<const std::uint32_t> rows, first_rows& shown) {
    for (std::size_t i = 0; i < reader.header().size() && !shown.with_groups; ++i) {
        bool has_point = false;
        bool may_be_groups = true;
        for (std::size_t r = 0; r < rows.size() && may_be_groups; ++r) {
            const csv_field field = reader.field(rows[r], i);
            has_point |= field.text.find('.') != field.text.npos;
            may_be_groups = field.is_null_unless_text || (classify_marked_field(field.text, ',') & (integer_field | bigint_field)) != 0;
        }
        shown.with_groups = has_point && may_be_groups ? std::optional(i) : std::nullopt;
    }
}

void find_lone_groups(csv_reader& reader, std::span<const std::uint32_t> rows, first_rows& shown) {
    for (std::size_t i = 0; i < reader.header().size(); ++i) {
        telling_field first{.column = i, .line = 0, .text = {}};
        bool are_alike = true;
        for (std::size_t r = 0; r < rows.size() && are_alike; ++r) {
            const csv_field field = reader.field(rows[r], i);
            if (field.is_null_unless_text) {
                continue;
            }
            are_alike = is_lone_group(field.text);
            if (first.text.empty()) {
                first.line = reader.line_of(rows[r]);
                first.text = field.text;
            }
        }
        if (are_alike && !first.text.empty()) {
            shown.with_lone_groups.push_back(std::move(first));
        }
    }
}

void find_blank_columns(csv_reader& reader, std::span<const std::uint32_t> rows, first_rows& shown) {
    for (std::size_t i = 0; i < reader.header().size(); ++i) {
        std::size_t values = 0;
        std::size_t with_blank = 0;
        for (const std::uint32_t row : rows) {
            const csv_field field = reader.field(row, i);
            values += field.text.empty() ? 0 : 1;
            with_blank += field.text.starts_with(' ') && field.text.find_first_not_of(' ') != field.text.npos ? 1 : 0;
        }
        if (with_blank > 1 && with_blank > values / 2) {
            shown.with_blanks.push_back(i);
        }
    }
}

namespace {

void find_code_with_exponent(csv_reader& reader, std::span<const std::uint32_t> rows, std::size_t column, first_rows& shown) {
    const auto* const row = std::ranges::find_if(rows.data(), rows.data() + rows.size(), [&](std::uint32_t tried) {
        return (classify_field(reader.field(tried, column).text, reader.decimal_mark()) & code_with_exponent) != 0;
    });
    shown.with_codes.push_back({.column = column, .line = reader.line_of(*row), .text = std::string(reader.field(*row, column).text)});
}

} // namespace

found_kinds find_kinds(csv_reader& reader, const std::vector<bool>& wanted, std::uint64_t most_text, progress_bar& progress) {
    found_kinds found{.of_columns = std::vector<field_kinds>(wanted.size(), 0),
                      .forms = std::vector<text_forms>(wanted.size()),
                      .shown = {},
                      .is_whole_file = false};
    std::vector<std::uint64_t> rows_for_forms(wanted.size(), 0);
    const std::optional<char> decimal_mark = reader.decimal_mark();
    std::uint64_t row_count = 0;
    while (reader.text_read() <= most_text && !found.is_whole_file) {
        stop_if_interrupted();
        const std::span<const std::uint32_t> rows = reader.next_rows(most_rows);
        found.is_whole_file = rows.empty();
        bool has_marks = decimal_mark.has_value();
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            if (!wanted[i]) {
                continue;
            }
            field_kinds kinds = found.of_columns[i];
            for (std::size_t r = 0; (kinds & text_field) == 0 && r < rows.size(); ++r) {
                const csv_field field = reader.field(rows[r], i);
                kinds |= field.is_null_unless_text ? 0U : classify_field(field.text, decimal_mark);
            }
            if ((kinds & ~found.of_columns[i] & code_with_exponent) != 0) {
                find_code_with_exponent(reader, rows, i, found.shown);
            }
            found.of_columns[i] = kinds;
            text_forms& forms = found.forms[i];
            if (type_of_fields(kinds) != sql_type::varchar) {
                include_kinds(forms, kinds);
                continue;
            }
            if (kinds == 0 || rows_for_forms[i] >= most_rows_for_forms) {
                continue;
            }
            rows_for_forms[i] += rows.size();
            for (std::size_t r = 0; r < rows.size() && !are_mere_texts(forms); ++r) {
                const csv_field field = reader.field(rows[r], i);
                if (field.is_null_unless_text) {
                    continue;
                }
                include_text(forms, field.text, decimal_mark);
                if (forms.other_line == 0 && !forms.other.empty()) {
                    forms.other_line = reader.line_of(rows[r]);
                }
            }
            has_marks |= may_have_mark(forms);
        }
        if (row_count == 0) {
            find_blank_columns(reader, rows, found.shown);
            if (!decimal_mark && reader.delimiter() != ',') {
                find_grouped_column(reader, rows, found.shown);
                has_marks |= found.shown.with_groups.has_value();
            }
            find_lone_groups(reader, rows, found.shown);
        }
        if (row_count == 0 && has_marks) {
            find_marked_columns(reader, rows, found.shown);
        }
        row_count += rows.size();
        progress.update(reader.bytes_read(), reader.file_size(), row_count);
    }
    std::erase_if(found.shown.with_codes, [&](const telling_field& code) { return (found.of_columns[code.column] & double_field) != 0; });
    reader.rewind();
    return found;
}

} // namespace host
