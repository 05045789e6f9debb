// SPDX-License-Identifier: Apache-2.0
#include "host/tables/type_inference.h"

#include <algorithm>

#include "host/session/interruption.h"

namespace host {
namespace {

constexpr std::uint32_t most_rows = 1024;
constexpr std::uint64_t most_rows_for_forms = 16 * most_rows;

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
                if (!field.is_null_unless_text) {
                    include_text(forms, field.text, decimal_mark);
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
        }
        if (row_count == 0 && has_marks) {
            find_marked_columns(reader, rows, found.shown);
        }
        row_count += rows.size();
        progress.update(reader.bytes_read(), reader.file_size(), row_count);
    }
    reader.rewind();
    return found;
}

} // namespace host
