// SPDX-License-Identifier: Apache-2.0
#include "host/tables/column_description.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include <fmt/format.h>

#include "engine/datetime.h"
#include "engine/decimal.h"
#include "host/tables/text_forms.h"
#include "host/tables/type_advice.h"
#include "host/values/plain_number.h"
#include "host/values/value_text.h"
#include "layouts/intervals.h"

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
    field_range<bifun_interval_ym> months;
    field_range<bifun_interval_dt> days;
    std::optional<std::string> smallest_text, largest_text;
    std::optional<std::uint64_t> text_line;
    std::string text;
    text_forms forms;
    std::optional<telling_field> code{}; // the first number with an exponent that may be a code
};

constexpr field_kinds exact_numbers = integer_field | bigint_field | decimal_field;
constexpr field_kinds datetimes = date_field | time_field | timestamp_field | time_with_zone_field | timestamp_with_zone_field;

void include_datetime(column_state& column, std::string_view text, const zqtime& value) {
    column.datetimes.include(value, text, [](const zqtime& a, const zqtime& b) { return zqtime_cmp(&a, &b) < 0; });
}

constexpr auto is_shorter = [](const auto& a, const auto& b) { return bifun::intervals::compare(a, b) < 0; };

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
            include_datetime(column, text, value);
        }
    }
}

// `text` as it was stored in row `row` of the column.
void include_stored_value(column_state& column, std::string_view text, std::string_view plain, const table_column& source,
                          std::size_t row) {
    switch (const sql_type type = source.type.type; value_type_of(type)) {
    case bifun::value_type::BOOL:
        column.doubles.include(zqengine::values_of<std::int32_t>(*source.values)[row], text, std::less());
        break;
    case bifun::value_type::DATETIME: // which may have a format of its own
        include_datetime(column, text, zqengine::values_of<zqtime>(*source.values)[row]);
        break;
    case bifun::value_type::INTERVAL_YM:
        column.months.include(zqengine::values_of<bifun_interval_ym>(*source.values)[row], text, is_shorter);
        break;
    case bifun::value_type::INTERVAL_DT:
        column.days.include(zqengine::values_of<bifun_interval_dt>(*source.values)[row], text, is_shorter);
        break;
    default:
        include_value(column, text, plain, type == sql_type::double_precision ? double_field : exact_numbers);
    }
}

// `place` is that of the row among those just read.
void include_field(column_state& column, const table_column& source, csv_reader& reader, std::size_t place, std::uint32_t row,
                   const csv_field& field) {
    if (field.is_null) {
        ++column.nulls;
        return;
    }
    if (field.is_null_unless_text) {
        ++column.empty;
        return;
    }
    ++column.values;
    std::string plain;
    const auto plain_text = [&]() -> std::string_view {
        const bool is_marked = reader.decimal_mark() && plain_number(field.text, *reader.decimal_mark(), plain);
        return is_marked ? plain : field.text;
    };
    if (source.needed && source.type.type != sql_type::varchar) {
        include_stored_value(column, field.text, plain_text(), source, place);
        return;
    }
    if (!column.smallest_text || field.text < *column.smallest_text) {
        column.smallest_text = field.text;
    }
    if (!column.largest_text || field.text > *column.largest_text) {
        column.largest_text = field.text;
    }
    if (source.needed) {
        return;
    }
    if (is_text_for_good(column.kinds)) {
        include_text(column.forms, field.text, reader.decimal_mark());
        return;
    }
    const field_kinds kind = classify_field(field.text, reader.decimal_mark());
    column.kinds |= kind;
    if (!column.code && (kind & code_with_exponent) != 0) {
        column.code = {.column = 0, .line = reader.line_of(row), .text = std::string(field.text)};
    }
    const bool is_text = type_of_fields(column.kinds) == sql_type::varchar;
    if (!is_text) {
        include_kinds(column.forms, column.kinds);
        column.text_line.reset();
    } else {
        include_text(column.forms, field.text, reader.decimal_mark());
    }
    if (is_text && (!column.text_line || is_text_for_good(column.kinds))) {
        column.text_line = reader.line_of(row);
        column.text = field.text;
    }
    if (!is_text_for_good(column.kinds)) {
        include_value(column, field.text, plain_text(), numbers_in(kind));
    }
}

column_description describe(const column_state& column, const table_column& source, const charset& set, bool is_point_likely,
                            bool has_decimal_mark, const std::vector<std::string>& known_nulls) {
    const column_type type = source.needed ? source.type : column_type{.type = type_of_fields(column.kinds)};
    const bool is_text = type.type == sql_type::varchar;
    column_description made{.name = source.name,
                            .type = type,
                            .values = column.values + (is_text ? column.empty : 0),
                            .nulls = column.nulls + (is_text ? 0 : column.empty),
                            .smallest = {},
                            .largest = {},
                            .text_line = column.text_line,
                            .text = {},
                            .is_valid = true,
                            .has_characters = false,
                            .decimal = {},
                            .dressed = {},
                            .seems = {},
                            .has_long_fractions = false,
                            .has_mixed_zones = false,
                            .null_words = {}};
    if (is_text && !source.needed) {
        made.seems = seeming_types(column.forms);
        made.has_long_fractions = column.forms.has_texts && (column.forms.of_all & long_fraction_form) != 0;
        made.has_mixed_zones = has_mixed_zones(column.forms);
    }
    const auto shown = [&](const std::string& text) {
        const bool is_valid = is_valid_text(set, text);
        made.is_valid &= is_valid;
        made.has_characters |= is_valid && std::ranges::any_of(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
        return to_utf8_with_replacements(set, text);
    };
    const auto take = [&](const auto& range) {
        if (range.smallest) {
            made.smallest = shown(range.smallest->text);
            made.largest = shown(range.largest->text);
        }
    };
    if (type.type == sql_type::double_precision || type.type == sql_type::boolean) {
        take(column.doubles);
    } else if (is_number(type.type)) {
        take(column.decimals);
    } else if (is_datetime(type.type)) {
        take(column.datetimes);
    } else if (type.type == sql_type::interval_ym) {
        take(column.months);
    } else if (type.type == sql_type::interval_dt) {
        take(column.days);
    } else if (column.smallest_text || column.empty > 0) {
        made.smallest = column.empty > 0 ? "" : shown(*column.smallest_text);
        made.largest = shown(column.largest_text.value_or(""));
    }
    if (column.text_line) {
        made.text = shown(column.text);
    }
    if (is_text && !source.needed) {
        text_forms forms = column.forms;
        for (std::string& word : forms.null_words) {
            word = shown(word);
        }
        forms.known_nulls = known_nulls;
        made.decimal = has_decimal_mark ? "" : decimal_option(forms, is_point_likely, "them");
        for (std::string* const text : {&forms.first, &forms.affix}) {
            *text = shown(*text);
        }
        made.dressed = made.decimal.empty() && made.seems.empty() ? advice_on_dressed_numbers(source.name, forms) : "";
        const bool are_alone = forms.other.empty() && find_placeholders(forms);
        made.null_words = are_alone || !made.seems.empty() ? forms.null_words : std::vector<std::string>();
    }
    return made;
}

} // namespace

std::vector<column_description> describe_columns(table& source, progress_bar& progress) {
    csv_reader& reader = source.reader;
    reader.stop_keeping();
    std::vector<column_state> columns(source.columns.size());
    first_rows shown;
    constexpr std::uint32_t most_rows = 1024;
    std::uint64_t row_count = 0;
    create_columns(source, most_rows);
    while (read_rows(source, most_rows)) {
        const std::vector<std::uint32_t>& rows = source.last_rows;
        if (row_count == 0) {
            find_marked_columns(reader, rows, shown);
            find_grouped_column(reader, rows, shown);
            find_lone_groups(reader, rows, shown);
            find_blank_columns(reader, rows, shown);
        }
        for (std::size_t i = 0; i < columns.size(); ++i) {
            for (std::size_t place = 0; place < rows.size(); ++place) {
                include_field(columns[i], source.columns[i], reader, place, rows[place], reader.field(rows[place], i));
            }
        }
        row_count += rows.size();
        progress.update(reader.bytes_read(), reader.file_size(), row_count);
    }
    progress.clear();
    std::vector<column_description> made;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        made.push_back(describe(columns[i], source.columns[i], *source.settings->text_charset, seems_point(reader, shown),
                                reader.decimal_mark().has_value(), reader.nulls_to_repeat()));
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        source.columns[i].type = made[i].type;
        source.columns[i].needed = true; // all are shown
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].code && (columns[i].kinds & double_field) == 0) {
            columns[i].code->column = i;
            shown.with_codes.push_back(*columns[i].code);
        }
    }
    remark_on(source, shown);
    return made;
}

} // namespace host
