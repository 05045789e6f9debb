// SPDX-License-Identifier: Apache-2.0
#include "host/file_description.h"

#include <algorithm>
#include <functional>

#include "engine/columns.h"
#include "host/messages.h"
#include "host/tables/column_description.h"
#include "host/tables/given_types.h"
#include "host/tables/type_advice.h"

namespace host {
namespace {

using bifun::value_type;

// A value of one more row of the result; none is NULL.
void store_text(zqengine::column_storage& column, std::uint32_t row, const std::optional<std::string>& text) {
    column.data.null_flags[row] = text ? 1 : 0;
    const std::string stored = text.value_or("");
    if (bdta3_col_assign_str(nullptr, nullptr, &column.column, row, reinterpret_cast<const std::uint8_t*>(stored.data()),
                             static_cast<std::uint32_t>(stored.size()), 0) != 0) {
        fail("out of memory");
    }
}

void store_number(zqengine::column_storage& column, std::uint32_t row, std::optional<std::uint64_t> number) {
    column.data.null_flags[row] = number ? 1 : 0;
    zqengine::values_of<std::int64_t>(column)[row] = static_cast<std::int64_t>(number.value_or(0));
}

// A text that is to stand in a cell of a table.
std::optional<std::string> cut(const std::optional<std::string>& text, bool is_cut) {
    constexpr std::size_t longest = 40;
    if (!text || !is_cut || text->size() <= longest) {
        return text;
    }
    std::size_t end = longest;
    while (end > 0 && (static_cast<unsigned char>((*text)[end]) & 0xC0U) == 0x80U) { // within a character
        --end;
    }
    return text->substr(0, end) + "...";
}

// What makes values of the columns that are of texts.
std::vector<std::string> advice_on_texts(const csv_reader& reader, const std::vector<column_description>& described) {
    const std::string& path = reader.path();
    const std::vector<std::string> known_nulls = reader.nulls_to_repeat();
    std::vector<std::string> advice;
    given_types seeming;
    std::vector<std::string> with_words, words;
    for (const column_description& column : described) {
        if (!column.dressed.empty()) {
            advice.push_back(fmt::format("{}: column {}: numbers of this form are text; {}", path, column.name, column.dressed));
        }
        if (column.has_long_fractions) {
            advice.push_back(
                fmt::format("{}: column {}: times of this form are text; {}", path, column.name, advice_on_long_fractions(column.name)));
        } else if (column.has_mixed_zones) {
            advice.push_back(fmt::format("{}: column {}: {}", path, column.name, zone_advice(column.name, column.seems)));
        } else if (column.seems.size() == 1) {
            seeming.push_back({.name = column.name, .type = column.seems[0]});
        } else if (!column.seems.empty()) {
            advice.push_back(fmt::format("{}: column {}: dates of this form are text unless their column is given its type, with {}", path,
                                         column.name, options_of_types(column.name, column.seems)));
        }
        if (!column.null_words.empty()) {
            with_words.push_back(column.name);
        }
        std::ranges::copy_if(column.null_words, std::back_inserter(words),
                             [&](const std::string& word) { return std::ranges::find(words, word) == words.end(); });
    }
    const auto with_mark = std::ranges::find_if(described, [](const column_description& column) { return !column.decimal.empty(); });
    if (with_mark != described.end()) {
        advice.push_back(fmt::format("{}: column {}: numbers of this form are text; {}", path, with_mark->name, with_mark->decimal));
    }
    if (!seeming.empty()) {
        advice.push_back(fmt::format(
            "{}: truth values, dates and durations of this form are text unless their column is given its type, with --types \"{}\"", path,
            given_types_text(seeming)));
    }
    if (!words.empty()) {
        advice.push_back(fmt::format("{}: column{} {}: words for NULL beside other values make texts of these;{} takes them{} for NULL",
                                     path, with_words.size() == 1 ? "" : "s", fmt::join(with_words, ", "), null_options(words, known_nulls),
                                     and_known_nulls(known_nulls)));
    }
    return advice;
}

} // namespace

void describe_file(const std::string& path, const program_options& options) {
    const session_settings settings = read_settings(options.settings);
    // First of all, as for a query: it tells the engine of the character set, by which widths and formats are read.
    const function_library library(options.library, settings.library);
    begin_session(settings);
    const output_format format = format_of(options);
    progress_bar progress;
    const given_types types = parse_types(options.types);
    const file_options reading = reading_of(options);
    const std::unique_ptr<table> source = open_table(path, reading, settings);
    if (!source->reader.doubt().empty()) {
        print_message(source->reader.doubt());
    }
    check_given_types(types, source.get(), {path}, reading, settings);
    for (const given_type& given : types) {
        find_given_column(*source, given.name)->needed = true;
    }
    std::ranges::for_each(remarks_on_formats(settings), print_message);
    std::ranges::for_each(remarks_on_formats(types), print_message);
    resolve_types(*source, types, {}, progress);
    result_stream results = open_results(options, {path});
    progress.begin("describing", results.is_terminal);
    const std::vector<column_description> described = describe_columns(*source, progress);

    const std::vector<result_column> headings = {
        {"column", sql_type::varchar, 0},   {"type", sql_type::varchar, 1},     {"values", sql_type::bigint, 2},
        {"nulls", sql_type::bigint, 3},     {"smallest", sql_type::varchar, 4}, {"largest", sql_type::varchar, 5},
        {"text_line", sql_type::bigint, 6}, {"text", sql_type::varchar, 7},
    };
    const auto row_count = static_cast<std::uint32_t>(described.size());
    std::vector<zqengine::column_pointer> columns;
    std::vector<const bifun_column*> shown;
    for (const result_column& heading : headings) {
        columns.emplace_back(zqengine::create_column(value_type_of(heading.type), row_count));
        if (columns.back() == nullptr) {
            fail("out of memory");
        }
        shown.push_back(&columns.back()->column);
    }
    const bool is_cut = format == output_format::table || format == output_format::markdown;
    for (std::uint32_t row = 0; row < row_count; ++row) {
        const column_description& column = described[row];
        store_text(*columns[0], row, column.name);
        store_text(*columns[1], row, column_type_name(column.type));
        store_number(*columns[2], row, column.values);
        store_number(*columns[3], row, column.nulls);
        store_text(*columns[4], row, cut(column.smallest, is_cut));
        store_text(*columns[5], row, cut(column.largest, is_cut));
        store_number(*columns[6], row, column.text_line);
        store_text(*columns[7], row, cut(column.text, is_cut));
    }
    result_output output(format, results.stream, headings, *find_charset("utf-8"));
    output.write_rows(shown, row_count);
    output.finish();
    report_bad_rows(source->reader);
    if (std::ranges::any_of(described, [](const column_description& column) { return !column.is_valid; })) {
        const bool is_mixed = std::ranges::any_of(described, &column_description::has_characters);
        print_message(fmt::format("{}: there is text that is not valid {}{}", path, settings.text_charset->name,
                                  is_mixed ? ", besides text that is; in a query --ignore-errors leaves out such rows" : naming_encoding));
    }
    std::ranges::for_each(source->number_remarks, print_message);
    if (!source->blank_remark.empty()) {
        print_message(source->blank_remark);
    }
    for (const std::string& advice : advice_on_texts(source->reader, described)) {
        print_message(advice);
    }
    commit(results);
}

} // namespace host
