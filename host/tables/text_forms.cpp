// SPDX-License-Identifier: Apache-2.0
#include "host/tables/text_forms.h"

#include <algorithm>

#include <fmt/format.h>

#include "host/values/plain_number.h"
#include "host/values/value_text.h"

namespace host {
namespace {

constexpr field_kinds plain_forms = decimal_form | double_form;
constexpr field_kinds marked_forms = comma_number_form | point_number_form;

bool has_all(const text_forms& forms, field_kinds form) { return forms.has_texts && (forms.of_all & form) != 0; }

void include_null_word(text_forms& forms, std::string_view word, const field_form& form) {
    forms.are_words_doubles = forms.are_words_doubles && (form.kinds & double_form) != 0;
    if (std::ranges::find(forms.null_words, word) == forms.null_words.end()) {
        forms.null_words.emplace_back(word);
    }
}

} // namespace

text_forms mere_texts() {
    text_forms made;
    made.has_texts = made.has_many_others = true;
    made.of_all = 0;
    return made;
}

bool are_mere_texts(const text_forms& forms) { return forms.of_all == 0 && forms.has_many_others; }

void include_kinds(text_forms& forms, field_kinds kinds) {
    forms.besides |= kinds;
    forms.of_all &= kinds == 0 ? all_forms : forms_of_all(numbers_in(kinds));
}

void include_text(text_forms& forms, std::string_view text, std::optional<char> decimal_mark) {
    if (are_mere_texts(forms)) {
        return;
    }
    const field_form form = form_of_field(text, decimal_mark, forms.of_all);
    if ((form.kinds & null_word_form) != 0) {
        include_null_word(forms, without_blanks_around(text), form);
        return;
    }
    const bool is_other = (form.kinds & text_field) != 0;
    if (!is_other) {
        forms.besides |= form.kinds & ~all_forms;
    } else if (!forms.has_many_others) {
        forms.has_many_others = !forms.other.empty() && forms.other != text;
        forms.other = text;
        forms.is_other_value = (form.kinds & all_forms) != 0;
    }
    if (!forms.has_texts) {
        forms.first = text;
        forms.affix = form.affix;
        forms.dates = form.date;
    }
    forms.has_texts = true;
    forms.of_all &= form.kinds;
    const field_kinds marks = form.kinds & marked_forms;
    forms.marks |= marks == marked_forms ? 0 : marks;
    if ((forms.of_all & affixed_number_form) != 0 && forms.affix != form.affix) {
        forms.of_all &= ~affixed_number_form;
    }
    if ((forms.of_all & written_date_form) != 0 && !include_written_date(forms.dates, form.date)) {
        forms.of_all &= ~written_date_form;
    }
}

bool has_mixed_zones(const text_forms& forms) {
    const auto have_zones = [&](field_kinds without, field_kinds with) {
        return (forms.besides & without) != 0 && (forms.besides & with) != 0 && (forms.besides & ~(without | with)) == 0;
    };
    return forms.has_texts && !forms.has_many_others && forms.other.empty() &&
           (have_zones(time_field, time_with_zone_field) || have_zones(date_field | timestamp_field, timestamp_with_zone_field));
}

std::vector<column_type> seeming_types(const text_forms& forms) {
    if (has_all(forms, truth_word_form)) {
        return {{.type = sql_type::boolean}};
    }
    if (has_all(forms, duration_form)) {
        return {{.type = sql_type::interval_dt, .fields = {.first = interval_field::hour, .last = interval_field::second}}};
    }
    if (has_mixed_zones(forms)) {
        return {{.type = (forms.besides & time_field) != 0 ? sql_type::time_with_zone : sql_type::timestamp_with_zone}};
    }
    return has_all(forms, written_date_form) ? types_of_written_dates(forms.dates) : std::vector<column_type>();
}

bool may_have_mark(const text_forms& forms) {
    // What is a number in SQL is text for another reason than its mark.
    return !has_all(forms, plain_forms) && has_all(forms, marked_forms);
}

bool may_have_either_mark(const text_forms& forms) { return may_have_mark(forms) && (forms.of_all & marked_forms) == marked_forms; }

std::string decimal_option(const text_forms& forms, bool is_point_likely, std::string_view what) {
    if (!may_have_mark(forms)) {
        return "";
    }
    const std::string nulls = null_options(forms.null_words, forms.known_nulls);
    if (!may_have_either_mark(forms)) {
        return fmt::format("--decimal {}{} reads {} as numbers", has_all(forms, comma_number_form) ? "comma" : "point", nulls, what);
    }
    std::string with_comma, with_point;
    (void)plain_number(forms.first, ',', with_comma);
    (void)plain_number(forms.first, '.', with_point);
    return is_point_likely ? fmt::format("--decimal point reads {} as {}, and --decimal comma as {}", forms.first, with_point, with_comma)
                           : fmt::format("--decimal comma reads {} as {}, and --decimal point as {}", forms.first, with_comma, with_point);
}

std::optional<placeholders> find_placeholders(const text_forms& forms) {
    const sql_type others = type_of_fields(forms.besides);
    placeholders found{.texts = forms.null_words, .others = others};
    if (!forms.other.empty()) {
        found.texts.push_back(forms.other);
    }
    const bool is_known =
        !forms.has_many_others && !forms.is_other_value && forms.besides != 0 && others != sql_type::varchar && !found.texts.empty();
    return is_known ? std::optional(std::move(found)) : std::nullopt;
}

std::string null_options(const std::vector<std::string>& texts, const std::vector<std::string>& known) {
    constexpr std::size_t longest = 40;
    std::string options;
    for (const std::string& text : texts) {
        if (text.find('\'') != text.npos || text.size() > longest) {
            return "";
        }
        options += fmt::format(" --null '{}'", text);
    }
    for (const std::string& text : known) {
        options += options.empty() ? "" : fmt::format(" --null '{}'", text);
    }
    return options;
}

std::string_view and_known_nulls(const std::vector<std::string>& known) { return known.empty() ? "" : " and empty fields"; }

} // namespace host
