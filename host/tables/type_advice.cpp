// SPDX-License-Identifier: Apache-2.0
#include "host/tables/type_advice.h"

#include <algorithm>

#include <fmt/format.h>

#include "host/sql/names.h"
#include "host/tables/given_types.h"
#include "host/values/charset_text.h"
#include "host/values/plain_number.h"
#include "host/values/value_text.h"

namespace host {
namespace {

// 1,23,456.00: groups of two digits before the last, which has three.
bool has_indian_groups(std::string_view text) {
    std::string shape(text.substr(0, text.find('.')));
    std::ranges::replace_if(
        shape, [](char c) { return c >= '0' && c <= '9'; }, '0');
    const std::string_view groups = shape;
    constexpr std::string_view last = ",000";
    if (!groups.ends_with(last)) {
        return false;
    }
    std::string_view rest = groups.substr(0, groups.size() - last.size());
    std::size_t pairs = 0;
    for (; rest.ends_with(",00"); ++pairs) {
        rest.remove_suffix(3);
    }
    return pairs > 0 && (rest == "0" || rest == "00") && text.substr(groups.size()).find_first_not_of("0123456789", 1) == text.npos;
}

bool has_plain_forms(const text_forms& forms) { return (forms.of_all & (decimal_form | double_form)) != 0; }

std::string way_from_literal(sql_type needed) {
    return is_number(needed)             ? "; write the number without quotes"
           : needed == sql_type::boolean ? "; write TRUE or FALSE without quotes"
           : is_interval(needed)         ? "; write the interval with its type, such as INTERVAL '3' DAY"
           : is_datetime(needed)         ? "; write a date with its type, such as DATE '2024-02-29'"
                                         : "";
}

// Of words that may stand for NULL, of a header that files put one behind the other have repeated, or of one value that may be a fault.
std::string way_by_null(const table_column& column, const text_forms& forms, const placeholders& found) {
    const std::vector<std::string>& known = forms.known_nulls;
    const column_type type{.type = found.others};
    const std::string leaving_out =
        fmt::format("{}{} --ignore-errors", options_of_types(column.name, {&type, 1}), null_options(forms.null_words, known));
    if (forms.other == column.name && found.texts.size() == 1) {
        return fmt::format("; rows that repeat the header are left out with {}", leaving_out);
    }
    if (!forms.other.empty()) {
        return fmt::format(
            "; \"{}\"{} is not of type {}, which the others have; {} leaves out such rows", shown_text(*find_charset("utf-8"), forms.other),
            forms.other_line == 0 ? "" : fmt::format(" in line {}", forms.other_line), sql_type_name(found.others), leaving_out);
    }
    const std::string options = null_options(found.texts, known);
    return options.empty()
               ? ""
               : fmt::format(";{} takes {}{} for NULL, and the others for {}", options,
                             found.texts.size() == 1 ? "that text" : "these texts", and_known_nulls(known), sql_type_name(found.others));
}

// Without groups of thousands, and with a point.
std::string read_with_comma(const std::string& name) { return fmt::format("TO_NUMBER(REPLACE(REPLACE({}, '.', ''), ',', '.'))", name); }

// Of numbers with another mark than those of SQL, or than --decimal says.
std::string way_by_mark(const table_column& column, const text_forms& forms) {
    const std::string name = name_in_query(column.name);
    const bool has_comma = (forms.of_all & comma_number_form) != 0;
    if (column.decimal_mark) {
        return fmt::format("; its numbers have a {} before the fraction, which --decimal {} does not read; {} does",
                           has_comma ? "comma" : "point", *column.decimal_mark == ',' ? "comma" : "point",
                           has_comma ? read_with_comma(name) : fmt::format("TO_NUMBER(REPLACE({}, ',', ''))", name));
    }
    const std::string option = decimal_option(forms, column.is_point_likely, "the column");
    const bool breaks_others = has_comma && !may_have_either_mark(forms) && !column.pointed_column.empty();
    return breaks_others ? fmt::format("; {}, but takes those of {}, which have a point, for texts; {} reads {} alone", option,
                                       column.pointed_column, read_with_comma(name), column.name)
                         : "; " + option;
}

std::string way_to_numbers(const table_column& column, const text_forms& forms) {
    const std::string name = name_in_query(column.name);
    if (is_number(column.shown)) {
        const column_type type{.type = column.shown};
        return fmt::format("; {} reads the column as numbers", options_of_types(column.name, {&type, 1}));
    }
    const std::optional<placeholders> found = find_placeholders(forms);
    const bool are_words_doubles = forms.are_words_doubles && !forms.null_words.empty();
    if (may_have_mark(forms)) {
        return way_by_mark(column, forms);
    }
    if (const std::string advice = advice_on_dressed_numbers(column.name, forms); !advice.empty()) {
        return "; " + advice;
    }
    if (found && is_number(found->others) && forms.other.empty() && !are_words_doubles) {
        return way_by_null(column, forms, *found);
    }
    if (forms.has_texts && has_plain_forms(forms)) {
        const bool is_decimal = (forms.of_all & decimal_form) != 0 && !are_words_doubles;
        const column_type type{.type = is_decimal ? sql_type::decimal : sql_type::double_precision};
        return fmt::format("; {}{} reads the column as numbers", options_of_types(column.name, {&type, 1}),
                           are_words_doubles ? "" : null_options(forms.null_words, forms.known_nulls));
    }
    if (found) {
        return way_by_null(column, forms, *found);
    }
    return "";
}

std::string way_to_some_numbers(const table_column& column, const text_forms& forms) {
    const bool has_both_marks = forms.marks == (comma_number_form | point_number_form);
    return fmt::format("; {}TO_NUMBER({}) is NULL where a text is no number",
                       has_both_marks ? "some of its numbers have a comma before the fraction and others a point; " : "",
                       name_in_query(column.name));
}

std::string way_to_dates(const table_column& column, const text_forms& forms) {
    if (const std::optional<placeholders> found = find_placeholders(forms); found && is_datetime(found->others)) {
        return way_by_null(column, forms, *found);
    }
    constexpr std::string_view zone = " UTC";
    if (std::string_view first = forms.first; first.ends_with(zone)) {
        first.remove_suffix(zone.size());
        if (classify_field(first) == timestamp_field) {
            return fmt::format("; CAST(REPLACE({}, '{}', 'Z') AS TIMESTAMP WITH TIME ZONE) makes times of texts such as {}",
                               name_in_query(column.name), zone, forms.first);
        }
    }
    const std::string name = name_in_query(column.name);
    if (forms.has_texts && (forms.of_all & long_fraction_form) != 0) {
        return "; " + advice_on_long_fractions(column.name);
    }
    const bool has_dates = (forms.besides & datetime_fields) != 0 || is_written_date(forms.first) || is_written_date(forms.other);
    return has_dates ? fmt::format("; CAST(TO_DT_TZ({0}) AS DATE) is NULL where a text is no date such as 2024-02-29, and TO_DATE({0}, "
                                   "'DD.MM.YYYY') reads others by a format",
                                   name)
                     : "";
}

text_forms forms_of(const table_column& column) { return column.forms.value_or(mere_texts()); }

std::string way_from_column(sql_type needed, const table_column& column) {
    const text_forms forms = forms_of(column);
    const bool seems_date = !column.seems.empty() && has_date(column.seems[0].type);
    if (is_number(needed)) {
        const std::string of_all = way_to_numbers(column, forms);
        return of_all.empty() ? way_to_some_numbers(column, forms) : of_all;
    }
    if (is_datetime(needed) && is_datetime(column.shown)) {
        const column_type type{.type = column.shown};
        return fmt::format("; {} reads the column as dates", options_of_types(column.name, {&type, 1}));
    }
    if (is_datetime(needed) && has_mixed_zones(forms)) {
        return "; " + zone_advice(column.name, column.seems);
    }
    if (!column.seems.empty() && is_interval(column.seems[0].type) && (is_datetime(needed) || is_interval(needed))) {
        return fmt::format("; {}{} reads the column as durations", options_of_types(column.name, column.seems),
                           null_options(forms.null_words, forms.known_nulls));
    }
    if (has_date(needed) && seems_date) {
        const bool has_short_year = forms.dates.year_digits == 2;
        return fmt::format("; {}{} reads the column as dates{}{}", options_of_types(column.name, column.seems),
                           null_options(forms.null_words, forms.known_nulls), column.seems.size() > 1 ? ", by which of them is meant" : "",
                           has_short_year ? "; YY is a year from 2000 on, RR one from 1950 to 2049" : "");
    }
    if (has_date(needed)) {
        return way_to_dates(column, forms);
    }
    if (needed == sql_type::time && is_twelve_hour_time(forms.first)) {
        const bool has_seconds = std::ranges::count(forms.first, ':') > 1;
        return fmt::format("; --types \"{}:TIME 'HH:MI{} AM'\" reads the column as times", column.name, has_seconds ? ":SS" : "");
    }
    return needed == sql_type::boolean && !column.seems.empty() && column.seems[0].type == sql_type::boolean
               ? fmt::format("; {}{} reads true and false", options_of_types(column.name, column.seems),
                             null_options(forms.null_words, forms.known_nulls))
               : "";
}

std::string way_from_text(sql_type needed) {
    return is_number(needed)     ? "; CAST(x AS DECIMAL) makes a number of a text"
           : is_datetime(needed) ? "; TO_DATE(x, 'DD.MM.YYYY') makes a date of a text, as CAST(x AS DATE) does of YYYY-MM-DD"
                                 : "";
}

// A number as a text, which equals no text that writes it in another way.
std::string way_by_quotes(const misplaced_value& text) {
    const text_forms forms = text.column != nullptr ? forms_of(*text.column) : mere_texts();
    if (may_have_mark(forms)) {
        return "";
    }
    const bool is_code = forms.has_texts && (forms.of_all & decimal_form) != 0 && forms.first.find('\'') == forms.first.npos;
    return is_code ? fmt::format("; write the number in quotes, as the file has it, such as '{}'", forms.first)
                   : "; write the number in quotes, as a text";
}

} // namespace

std::string way_to_all_numbers(const table_column& column) { return way_to_numbers(column, forms_of(column)); }

std::string options_of_types(const std::string& column, std::span<const column_type> types) {
    std::string options;
    for (const column_type& type : types) {
        const std::string text = given_types_text({{.name = column, .type = type}});
        const bool is_word = text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_:") == text.npos;
        std::string escaped;
        for (const char c : text) {
            escaped.append(c == '"' ? "\\" : "").push_back(c);
        }
        options.append(options.empty() ? "" : " or ").append(is_word ? "--types " + text : fmt::format("--types \"{}\"", escaped));
    }
    return options;
}

std::string zone_advice(const std::string& column, std::span<const column_type> types) {
    return fmt::format("some of its times have a zone and others none; {} gives these the zone of the session, --set time_zone",
                       options_of_types(column, types));
}

std::string advice_on_dressed_numbers(const std::string& column, const text_forms& forms) {
    const std::string name = name_in_query(column);
    if (!forms.has_texts || has_plain_forms(forms)) {
        return "";
    }
    if ((forms.of_all & bracketed_number_form) != 0) {
        return fmt::format("TO_NUMBER(REPLACE(REPLACE({}, '(', '-'), ')', '')) makes numbers of its texts", name);
    }
    if ((forms.of_all & trailing_minus_form) != 0) {
        return fmt::format("TO_NUMBER({}, '999999999999.999999MI') makes numbers of its texts", name);
    }
    if ((forms.of_all & affixed_number_form) != 0 && forms.affix.find_first_of("'\"") == forms.affix.npos) {
        return fmt::format("TO_NUMBER(REPLACE({}, '{}', '')) makes numbers of its texts", name, forms.affix);
    }
    const std::string_view first = forms.first;
    std::string plain;
    if (first.starts_with('$') && plain_number(first.substr(1), '.', plain)) {
        return fmt::format("TO_NUMBER({}, '$999,999,999,999.99') makes numbers of texts such as {}", name, first);
    }
    if (first.starts_with("=\"") && first.ends_with('"') && shape_of_number(first.substr(2, first.size() - 3)).is_number) {
        return fmt::format("REPLACE(SUBSTR({}, 2), '\"', '') is without the signs around texts such as {}", name, first);
    }
    return has_indian_groups(first) ? fmt::format("TO_NUMBER(REPLACE({}, ',', '')) makes numbers of texts such as {}", name, first) : "";
}

std::string advice_on_long_fractions(const std::string& column) {
    return fmt::format("CAST(SUBSTR({}, 1, 26) AS TIMESTAMP) leaves out what stands behind six digits of a fraction",
                       name_in_query(column));
}

std::string way_to(sql_type needed, const misplaced_value& given) {
    if (given.type == sql_type::varchar) {
        return given.is_literal          ? way_from_literal(needed)
               : given.column != nullptr ? way_from_column(needed, *given.column)
                                         : way_from_text(needed);
    }
    return needed == sql_type::varchar                            ? "; CAST(x AS VARCHAR) makes a text"
           : needed == sql_type::boolean && is_number(given.type) ? "; compare it, as in x <> 0"
           : is_datetime(needed) && is_number(given.type) && given.column != nullptr
               ? fmt::format(
                     "; --types \"{}:DATE 'YYYYMMDD'\" reads numbers such as 20240229 as dates, and FROM_UNIXTIME takes seconds since 1970",
                     given.column->name)
               : "";
}

std::string way_together(const misplaced_value& left, const misplaced_value& right, bool is_equality) {
    const bool is_left_text = left.type == sql_type::varchar;
    if (is_left_text || right.type == sql_type::varchar) {
        const misplaced_value& text = is_left_text ? left : right;
        const misplaced_value& other = is_left_text ? right : left;
        return (is_equality && is_number(other.type) && other.is_literal ? way_by_quotes(text) : "") + way_to(other.type, text);
    }
    const bool are_date_and_number = (is_datetime(left.type) && is_number(right.type)) || (is_number(left.type) && is_datetime(right.type));
    const bool are_truth_and_number =
        (left.type == sql_type::boolean && is_number(right.type)) || (is_number(left.type) && right.type == sql_type::boolean);
    return are_date_and_number ? "; a date is written in quotes" : are_truth_and_number ? "; compare the number, as in x <> 0" : "";
}

} // namespace host
