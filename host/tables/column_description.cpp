// SPDX-License-Identifier: Apache-2.0
#include "host/tables/column_description.h"

#include <string_view>

#include "engine/datetime.h"
#include "engine/decimal.h"
#include "host/values/plain_number.h"
#include "host/values/value_text.h"

namespace host {
namespace {

// The smallest and the largest field by one way of comparing.
template <class Value> struct field_range {
    struct end {
        Value value;
        std::string text;
    };
    std::optional<end> smallest, largest;

    template <class IsLess> void include(const Value& value, std::string_view text, IsLess is_less) {
        if (!smallest || is_less(value, smallest->value)) {
            smallest = end{value, std::string(text)};
        }
        if (!largest || is_less(largest->value, value)) {
            largest = end{value, std::string(text)};
        }
    }
};

// Which way of comparing is the column's is known at the end only.
struct column_state {
    field_kinds kinds = 0;
    std::uint64_t values = 0;
    std::uint64_t nulls = 0;
    std::uint64_t empty = 0; // values of a text, NULLs in any other column
    field_range<xdec> decimals;
    field_range<double> doubles;
    field_range<zqtime> datetimes;
    std::optional<std::string> smallest_text, largest_text;
    std::optional<std::uint64_t> text_line;
    std::string text;
};

constexpr field_kinds exact_numbers = integer_field | bigint_field | decimal_field;
constexpr field_kinds datetimes = date_field | time_field | timestamp_field | time_with_zone_field | timestamp_with_zone_field;

// `text` is the field, and `plain` what is read: a number may be written otherwise.
void include_value(column_state& column, std::string_view text, std::string_view plain, field_kinds kind) {
    if ((kind & exact_numbers) != 0) {
        xdec value;
        if (read_decimal(plain, value)) {
            column.decimals.include(value, text, [](const xdec& a, const xdec& b) { return xdec_cmp(&a, &b) < 0; });
        }
    }
    if ((kind & (exact_numbers | double_field)) != 0) {
        double value = 0;
        if (read_number(plain, value)) {
            column.doubles.include(value, text, [](double a, double b) { return a < b; });
        }
    }
    if ((kind & datetimes) != 0) {
        zqtime value;
        if (read_any_datetime(without_blanks_around(text), value)) {
            column.datetimes.include(value, text, [](const zqtime& a, const zqtime& b) { return zqtime_cmp(&a, &b) < 0; });
        }
    }
}

void include_field(column_state& column, csv_reader& reader, std::uint32_t row, const csv_field& field) {
    if (field.is_null) {
        ++column.nulls;
        return;
    }
    if (field.is_null_unless_text) {
        ++column.empty;
        return;
    }
    ++column.values;
    if (!column.smallest_text || field.text < *column.smallest_text) {
        column.smallest_text = field.text;
    }
    if (!column.largest_text || field.text > *column.largest_text) {
        column.largest_text = field.text;
    }
    if (column.text_line) {
        return;
    }
    const field_kinds kind = classify_field(field.text, reader.decimal_mark());
    column.kinds |= kind;
    if (type_of_fields(column.kinds) == sql_type::varchar) {
        column.text_line = reader.line_of(row);
        column.text = field.text;
        return;
    }
    std::string plain;
    const bool is_marked = reader.decimal_mark() && plain_number(field.text, *reader.decimal_mark(), plain);
    include_value(column, field.text, is_marked ? plain : field.text, kind);
}

column_description describe(const column_state& column, std::string name, const charset& set) {
    const sql_type type = type_of_fields(column.kinds);
    const bool is_text = type == sql_type::varchar;
    column_description made{.name = std::move(name),
                            .type = type,
                            .values = column.values + (is_text ? column.empty : 0),
                            .nulls = column.nulls + (is_text ? 0 : column.empty),
                            .smallest = {},
                            .largest = {},
                            .text_line = column.text_line,
                            .text = {},
                            .is_valid = true};
    const auto shown = [&](const std::string& text) {
        made.is_valid &= is_valid_text(set, text);
        return to_utf8_with_replacements(set, text);
    };
    const auto take = [&](const auto& range) {
        if (range.smallest) {
            made.smallest = shown(range.smallest->text);
            made.largest = shown(range.largest->text);
        }
    };
    if (made.type == sql_type::double_precision) {
        take(column.doubles);
    } else if (is_number(made.type)) {
        take(column.decimals);
    } else if (is_datetime(made.type)) {
        take(column.datetimes);
    } else if (column.smallest_text || column.empty > 0) {
        made.smallest = column.empty > 0 ? "" : shown(*column.smallest_text);
        made.largest = shown(column.largest_text.value_or(""));
    }
    if (column.text_line) {
        made.text = shown(column.text);
    }
    return made;
}

} // namespace

std::vector<column_description> describe_columns(table& source, progress_bar& progress) {
    csv_reader& reader = source.reader;
    reader.stop_keeping();
    std::vector<column_state> columns(source.columns.size());
    constexpr std::uint32_t most_rows = 1024;
    std::uint64_t row_count = 0;
    for (auto rows = reader.next_rows(most_rows); !rows.empty(); rows = reader.next_rows(most_rows)) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            for (const std::uint32_t row : rows) {
                include_field(columns[i], reader, row, reader.field(row, i));
            }
        }
        row_count += rows.size();
        progress.update(reader.bytes_read(), reader.file_size(), row_count);
    }
    progress.clear();
    std::vector<column_description> made;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        made.push_back(describe(columns[i], source.columns[i].name, *source.settings->text_charset));
    }
    return made;
}

} // namespace host
