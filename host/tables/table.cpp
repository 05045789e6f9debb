// SPDX-License-Identifier: Apache-2.0
#include "host/tables/table.h"

#include <algorithm>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "embedded/session/environment.h"
#include "host/near_names.h"
#include "host/program_error.h"
#include "host/sql/names.h"
#include "host/tables/given_types.h"
#include "host/tables/type_advice.h"
#include "host/values/plain_number.h"
#include "host/values/value_text.h"

namespace host {
namespace {

// Where a text is one that often stands for NULL.
std::string null_hint(const table& source, std::string_view text) {
    if (is_null_word(text)) {
        const std::vector<std::string> known = source.reader.nulls_to_repeat();
        return fmt::format(";{} takes it{} for NULL", null_options({std::string(without_blanks_around(text))}, known),
                           and_known_nulls(known));
    }
    return text.empty() ? "; --quoted-nulls takes it for NULL" : "";
}

// Where a number or a date may be written otherwise than in SQL.
std::string writing_hint(const table& source, const table_column& column, std::string_view text) {
    std::string plain;
    for (const auto& [mark, name] : {std::pair(',', "comma"), std::pair('.', "point")}) {
        if (is_number(column.type.type) && !shape_of_number(without_blanks_around(text)).is_number &&
            source.reader.decimal_mark() != mark && plain_number(text, mark, plain)) {
            return fmt::format(", or read numbers such as this with --decimal {}", name);
        }
    }
    const bool may_have_format = is_datetime(column.type.type) && !has_zone(column.type.type) && column.type.format.empty();
    return may_have_format ? fmt::format(", or a format, as in \"{}:{} '{}'\"", column.name, sql_type_name(column.type.type),
                                         column.type.type == sql_type::date   ? "DD.MM.YYYY"
                                         : column.type.type == sql_type::time ? "HH.MI AM"
                                                                              : "MM/DD/YYYY HH24:MI")
                           : "";
}

// What is wrong with a field, as it stands behind the column.
std::string describe_fault(const table& source, const table_column& column, std::uint32_t row, std::string_view text, field_fault fault) {
    const charset& set = *source.settings->text_charset;
    const std::string type = column_type_name(column.type);
    const std::string shown = fmt::format("\"{}\"", shown_text(set, text));
    switch (fault) {
    case field_fault::invalid_text:
        return fmt::format("{} is not valid {}{}", shown, set.name,
                           source.reader.has_valid_characters_besides(row) ? ", as other rows are; --ignore-errors leaves out such rows"
                                                                           : naming_encoding);
    case field_fault::too_wide:
        if (std::string plain; source.reader.decimal_mark() == ',' && text.find('.') != text.npos && plain_number(text, ',', plain)) {
            return fmt::format("{} is {} with --decimal comma, and does not fit {}; --types {}:VARCHAR with CAST({} AS {}) has the point "
                               "before a fraction",
                               shown, plain, type, column.name, name_in_query(column.name), type);
        }
        return fmt::format("{} does not fit {}; give the column a wider type with --types", shown, type);
    case field_fault::too_many_digits:
        return fmt::format(
            "{} has more digits than {} keeps; give the column another type with --types, such as {}:VARCHAR{}", shown, type, column.name,
            has_date(column.type.type) && column.type.format.empty() ? fmt::format(", of which {}", advice_on_long_fractions(column.name))
                                                                     : "");
    case field_fault::short_year: {
        column_type shorter = column.type;
        shorter.format.erase(upper_case(shorter.format).find("YYYY"), 2);
        return fmt::format("{} has a year of two digits, and {} reads one of four; give the column the format with YY, {}, or with RR for "
                           "years from 1950 to 2049",
                           shown, type, column_type_name(shorter));
    }
    case field_fault::not_as_sampled: {
        const sql_type wider = type_of_fields(*column.sampled | classify_field(text, source.reader.decimal_mark()));
        return fmt::format("{} is not of type {}, which the rows at the beginning of the file gave; give the column its type with --types, "
                           "such as {}:{}, or have the whole file decide with --sample all{}",
                           shown, *column.sampled == 0 ? "NULL" : type, column.name, sql_type_name(wider), null_hint(source, text));
    }
    case field_fault::out_of_memory:
        return fmt::format("{}: out of memory", shown);
    default:
        return fmt::format("{} is not of type {}; give the column another type with --types, such as {}:VARCHAR{}", shown, type,
                           column.name, null_hint(source, text) + writing_hint(source, column, text));
    }
}

// Every column gets a name of its own: a, a_2, a_3; those without one are called by their place.
void complete_names(std::vector<table_column>& columns) {
    std::unordered_set<std::string> taken;
    for (const table_column& column : columns) {
        taken.insert(column.name);
    }
    std::unordered_set<std::string> seen;
    std::unordered_map<std::string, std::uint64_t> last_numbers;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        std::string& name = columns[i].name;
        const bool is_unnamed = name.empty();
        const std::string wanted = is_unnamed ? fmt::format("column_{}", i + 1) : name;
        if (is_unnamed ? taken.insert(wanted).second : seen.insert(wanted).second) {
            name = wanted;
            continue;
        }
        std::uint64_t& number = last_numbers.try_emplace(wanted, 1).first->second;
        do {
            name = fmt::format("{}_{}", wanted, ++number);
        } while (!taken.insert(name).second);
    }
}

} // namespace

std::unique_ptr<table> open_table(const std::string& path, const file_options& options, const session_settings& settings) {
    const charset& set = *settings.text_charset;
    std::unique_ptr<table> opened(
        new table{.reader = {path, options, set}, .settings = &settings, .ignores_errors = options.ignores_errors, .columns = {}});
    for (const std::string& name : opened->reader.header()) {
        const std::optional<std::string> converted = to_utf8(set, name);
        if (!converted) {
            fail("{}: the header is not valid {}{}", path, set.name, naming_encoding);
        }
        // A, B is written where A,B is meant.
        opened->columns.push_back({.name = std::string(without_blanks_around(*converted)), .type = {}, .values = {}});
    }
    complete_names(opened->columns);
    return opened;
}

namespace {

void keep_forms(const table& source, table_column& column, text_forms forms) {
    const auto as_utf8 = [&](std::string& text) { text = to_utf8_with_replacements(*source.settings->text_charset, text); };
    for (std::string* const text : {&forms.first, &forms.other, &forms.affix}) {
        as_utf8(*text);
    }
    std::ranges::for_each(forms.null_words, as_utf8);
    forms.known_nulls = source.reader.nulls_to_repeat();
    column.seems = seeming_types(forms);
    column.decimal_mark = source.reader.decimal_mark();
    column.forms = std::move(forms);
}

void keep_first_rows(table& source, const first_rows& shown) {
    const bool is_point_likely = seems_point(source.reader, shown);
    for (table_column& column : source.columns) {
        column.is_point_likely = is_point_likely;
        column.pointed_column = shown.with_point ? source.columns[*shown.with_point].name : "";
    }
}

} // namespace

bool seems_point(const csv_reader& reader, const first_rows& shown) {
    return shown.with_point.has_value() != shown.with_comma.has_value() ? shown.with_point.has_value() : reader.delimiter() == ',';
}

namespace {

// Nothing else would say that 52.520 is 52520, or that 1.000 is 1.
void remark_on_lone_groups(table& source, const first_rows& shown) {
    const bool is_comma = source.reader.decimal_mark() == ',';
    // Where commas separate fields they are hardly marks of fractions, and points elsewhere tell what they are.
    const bool may_be_comma = !source.reader.decimal_mark() && source.reader.delimiter() != ',' && !shown.with_point;
    for (const telling_field& first : shown.with_lone_groups) {
        const table_column& column = source.columns[first.column];
        if (!column.needed || !is_number(column.type.type) || (!is_comma && !may_be_comma) || !source.number_remarks.empty()) {
            continue;
        }
        const column_type text{.type = sql_type::varchar};
        std::string plain;
        (void)plain_number(first.text, ',', plain);
        const std::string each =
            fmt::format("{}: column {}: each number has one point and three digits behind it; ", source.reader.path(), column.name);
        source.number_remarks.push_back(
            is_comma ? fmt::format("{}--decimal comma takes {} for {}, and {} with CAST({} AS DECIMAL) has the point before a fraction",
                                   each, without_blanks_around(first.text), plain, options_of_types(column.name, {&text, 1}),
                                   name_in_query(column.name))
                     : fmt::format("{}where {} is {}, --decimal comma reads it so", each, without_blanks_around(first.text), plain));
    }
}

} // namespace

void remark_on(table& source, const first_rows& shown) {
    const std::string& path = source.reader.path();
    source.number_remarks.clear();
    const auto is_given_number = [&](std::size_t i) { return source.columns[i].needed && is_number(source.columns[i].type.type); };
    if (source.reader.decimal_mark() == ',' && shown.with_point && !is_given_number(*shown.with_point)) {
        source.number_remarks.push_back(
            fmt::format("{}: column {} has numbers with a point before the fraction; --decimal comma takes these for "
                        "texts, and 1.234 for 1234",
                        path, source.columns[*shown.with_point].name));
    }
    // Nothing else would say that 1.234 is not what was meant.
    if (!source.reader.decimal_mark() && shown.with_comma && shown.with_groups && !shown.with_point &&
        source.columns[*shown.with_groups].needed) {
        source.number_remarks.push_back(
            fmt::format("{}: column {} has numbers with a comma before the fraction, so that 1.234 in column {} may be 1234; "
                        "--decimal comma reads both so",
                        path, source.columns[*shown.with_comma].name, source.columns[*shown.with_groups].name));
    }
    remark_on_lone_groups(source, shown);
    for (const telling_field& code : shown.with_codes) {
        const table_column& column = source.columns[code.column];
        if (column.needed && column.type.type == sql_type::double_precision) {
            const std::vector<column_type> types = {{.type = sql_type::varchar}, {.type = sql_type::decimal}};
            source.number_remarks.push_back(fmt::format(
                "{}: column {} is DOUBLE because of {} in line {}; where that is a code, or the digits of the others are to stay "
                "as they are, {}",
                path, column.name, to_utf8_with_replacements(*source.settings->text_charset, code.text), code.line,
                options_of_types(column.name, types)));
        }
    }
    std::vector<std::string> names;
    for (const std::size_t i : shown.with_blanks) {
        if (source.columns[i].needed && source.columns[i].type.type == sql_type::varchar) {
            names.push_back(source.columns[i].name);
        }
    }
    if (!names.empty()) {
        source.blank_remark =
            fmt::format("{}: most values of column{} {} begin with a blank, which is a part of them; TRIM({}) is without it", path,
                        names.size() == 1 ? "" : "s", fmt::join(names, ", "), name_in_query(names[0]));
    }
}

void resolve_types(table& source, const given_types& given, type_sample sample, progress_bar& progress) {
    std::vector<bool> unknown;
    std::ranges::transform(source.columns, std::back_inserter(unknown), &table_column::needed);
    for (const given_type& item : given) {
        if (table_column* const found = find_given_column(source, item.name); found != nullptr) {
            found->type = item.type;
            unknown[static_cast<std::size_t>(found - source.columns.data())] = false;
        }
    }
    // Texts by choice are looked at for what is said of them.
    std::vector<bool> looked_at;
    for (std::size_t i = 0; i < source.columns.size(); ++i) {
        looked_at.push_back(source.columns[i].needed && (unknown[i] || source.columns[i].type.type == sql_type::varchar));
    }
    if (std::ranges::find(looked_at, true) == looked_at.end() && !source.reader.decimal_mark()) {
        source.reader.stop_keeping();
        return;
    }
    const bool has_unknown = std::ranges::find(unknown, true) != unknown.end();
    progress.begin("reading types", false);
    const std::uint64_t most_text = !has_unknown ? source.reader.text_read() : source.reader.is_file() ? sample.of_files : sample.of_pipes;
    const found_kinds found = find_kinds(source.reader, looked_at, most_text, progress);
    progress.clear();
    keep_first_rows(source, found.shown);
    for (std::size_t i = 0; i < source.columns.size(); ++i) {
        if (unknown[i]) {
            source.columns[i].type = {.type = type_of_fields(found.of_columns[i])};
            if (source.columns[i].type.type == sql_type::varchar) {
                keep_forms(source, source.columns[i], found.forms[i]);
            }
            source.columns[i].sampled = found.is_whole_file ? std::nullopt : std::optional(found.of_columns[i]);
        } else if (looked_at[i]) {
            source.columns[i].shown = type_of_fields(found.of_columns[i]);
            keep_forms(source, source.columns[i], found.forms[i]);
        }
    }
    remark_on(source, found.shown);
}

void create_columns(table& source, std::uint32_t batch_rows) {
    bifun_environment environment;
    set_up_environment(*source.settings, environment);
    for (table_column& column : source.columns) {
        if (column.needed && !column.type.format.empty()) {
            const std::string format = from_utf8(*source.settings->text_charset, column.type.format).value_or("");
            column.format = std::make_unique<dfm_model>();
            if (parse_date_fmt_with_len(&environment, reinterpret_cast<const std::uint8_t*>(format.data()),
                                        static_cast<std::uint32_t>(format.size()), 0, column.format.get()) != 0) {
                fail("--types: text cannot be read by {}", column_type_name(column.type));
            }
        }
        if (column.needed) {
            column.values.reset(zqengine::create_column(value_type_of(column.type.type), batch_rows));
            if (column.values == nullptr) {
                fail("out of memory; a smaller --batch-rows needs less");
            }
        }
    }
}

namespace {

using row_numbers = std::span<const std::uint32_t>;

// Stores the columns of rows as those from `first_row` on. The rows with a fault, in their order, are put into `bad`, which ends with the
// first of them where errors are not ignored: then nothing behind it counts.
struct bad_row {
    std::size_t place; // among the rows given
    std::size_t column;
    field_fault fault;
};

void store_rows(table& source, row_numbers rows, std::uint32_t first_row, std::vector<bad_row>& bad) {
    bad.clear();
    for (std::size_t i = 0; i < source.columns.size(); ++i) {
        table_column& column = source.columns[i];
        if (!column.needed) {
            continue;
        }
        const field_storing storing{.type = column.type,
                                    .sampled = column.sampled,
                                    .settings = *source.settings,
                                    .format = column.format.get(),
                                    .decimal_mark = source.reader.decimal_mark()};
        for (std::size_t begin = 0; begin < rows.size();) {
            auto fault = field_fault::none;
            begin += store_fields(storing, source.reader, rows.subspan(begin), i, *column.values,
                                  first_row + static_cast<std::uint32_t>(begin), fault);
            if (fault != field_fault::none) {
                bad.push_back({begin, i, fault});
                rows = source.ignores_errors ? rows : rows.first(begin);
                ++begin;
            }
        }
    }
}

void report_bad_row(table& source, std::uint32_t row, const bad_row& bad) {
    const table_column& column = source.columns[bad.column];
    const std::string_view text = source.reader.field(row, bad.column).text;
    const std::string message = describe_fault(source, column, row, text, bad.fault);
    const std::uint64_t line = source.reader.line_of(row);
    // This is no bad row, whatever becomes of those.
    if (bad.fault == field_fault::not_as_sampled) {
        throw type_not_as_sampled(fmt::format("{}, line {}, column {}: {}", source.reader.path(), line, column.name, message));
    }
    source.reader.report_bad_row(line, message, column.name);
}

void clear_batch(table& source) {
    for (table_column& column : source.columns) {
        if (column.needed) {
            zqengine::clear_column(*column.values);
            column.values->column.no_nulls = 1;
        }
    }
    source.earlier_lines.clear();
    source.last_rows.clear();
}

// Reads some rows, which are stored from `first_row` on and become the last; false at the end of the file.
bool add_rows(table& source, std::uint32_t first_row, std::uint32_t most_rows) {
    std::vector<std::uint32_t>& good = source.last_rows;
    source.reader.add_lines_of(good, source.earlier_lines);
    good.clear();
    const row_numbers rows = source.reader.next_rows(most_rows);
    std::vector<bad_row> bad;
    store_rows(source, rows, first_row, bad);
    if (bad.empty()) {
        good.assign(rows.begin(), rows.end());
        return !rows.empty();
    }
    // Without `ignores_errors`, each column ended before the row with a fault that those before it had found.
    std::ranges::stable_sort(bad, {}, &bad_row::place);
    for (std::size_t place = 0, next = 0; place < rows.size(); ++place) {
        if (next == bad.size() || bad[next].place != place) {
            good.push_back(rows[place]);
            continue;
        }
        report_bad_row(source, rows[place], bad[next]);
        while (next < bad.size() && bad[next].place == place) {
            ++next;
        }
    }
    store_rows(source, good, first_row, bad);
    return true;
}

} // namespace

bool read_rows(table& source, std::uint32_t most_rows) {
    clear_batch(source);
    return add_rows(source, 0, most_rows);
}

std::uint32_t read_batch(table& source, std::uint32_t most_rows) {
    clear_batch(source);
    std::uint32_t stored = 0;
    while (stored < most_rows && add_rows(source, stored, most_rows - stored)) {
        stored += static_cast<std::uint32_t>(source.last_rows.size());
    }
    return stored;
}

std::uint64_t line_of(const table& source, std::uint32_t row) {
    const std::size_t earlier = source.earlier_lines.size();
    return row < earlier ? source.earlier_lines[row] : source.reader.line_of(source.last_rows[row - earlier]);
}

} // namespace host
