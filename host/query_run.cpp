// SPDX-License-Identifier: Apache-2.0
#include "host/query_run.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>

#include "host/binding/binding.h"
#include "host/evaluation/execution.h"
#include "host/near_names.h"
#include "host/session/settings.h"
#include "host/sql/names.h"
#include "host/sql/sql_text.h"
#include "host/sql/syntax.h"
#include "host/sql/syntax_advice.h"
#include "host/tables/file_name.h"
#include "host/tables/given_types.h"
#include "host/tables/input_file.h"

namespace host {
namespace {

// The file that a FROM means, by the name of its table.
const std::string& file_of_table(const std::vector<std::string>& files, const table_name& from, const std::string& sql) {
    const std::string* found = nullptr;
    for (const auto name_of : {table_name_of, plain_table_name_of}) {
        for (const bool ignoring_case : {false, true}) {
            for (const std::string& file : files) {
                const std::string name = name_of(file);
                const bool same = ignoring_case ? equal_ignoring_case(name, from.name) : name == from.name;
                if (same && found != nullptr) {
                    fail_at(sql, from.offset, fmt::format("{} and {} are both the table {}; give one of them", *found, file, from.name));
                }
                found = same ? &file : found;
            }
            if (found != nullptr) {
                return *found;
            }
        }
    }
    if (equal_ignoring_case(from.name, table_name_of("-"))) {
        fail_at(sql, from.offset, "the standard input is read where its name - is given, as in: bifun - \"SELECT ...\"");
    }
    if (files.empty()) {
        fail_at(sql, from.offset, fmt::format("there is no table {0}; give its file, as in: bifun {0}.csv \"SELECT ...\"", from.name));
    }
    std::vector<std::string> names;
    std::ranges::transform(files, std::back_inserter(names), plain_table_name_of);
    const std::string hint = did_you_mean(from.name, names);
    fail_at(
        sql, from.offset,
        fmt::format("there is no table {}{}", from.name, hint.empty() ? fmt::format("; the tables are {}", fmt::join(names, ", ")) : hint));
}

// A file that the query does not read may be a mistaken word, such as a second one behind --null.
void check_files(const std::vector<std::string>& files, const std::vector<std::string>& nulls) {
    for (const std::string& file : files) {
        std::error_code unreadable;
        if (file != "-" && !std::filesystem::exists(file, unreadable)) {
            if (!nulls.empty() && extension_of(file).empty()) {
                fail("{0}: no such file; another text for NULL has the option before it, too: --null '{1}' --null '{0}'", file,
                     nulls.back());
            }
            fail_opening(file, ENOENT);
        }
    }
}

// The names of a file's columns; none where it cannot be read, or only once.
std::vector<std::string> column_names_of(const std::string& file, const program_options& options, const session_settings& settings) {
    std::vector<std::string> names;
    std::error_code unreadable;
    if (!std::filesystem::is_regular_file(file, unreadable)) {
        return names;
    }
    try {
        const std::unique_ptr<table> opened = open_table(file, reading_of(options), settings);
        std::ranges::transform(opened->columns, std::back_inserter(names), &table_column::name);
    } catch (const program_error&) {
        names.clear(); // what is wrong with the query comes first
    }
    return names;
}

// Reads the query. Where that fails, a file or a column that cannot be called by its own name is often why.
select_statement parse_query(const std::string& sql, const std::vector<std::string>& files, const program_options& options,
                             const session_settings& settings) {
    try {
        return parse_select(sql);
    } catch (const syntax_error& error) {
        std::string hint =
            sql.find(".csv") != std::string::npos ? "; FROM takes the name of a table, which is that of its file without .csv" : "";
        for (const std::string& file : files) {
            const std::string name = plain_table_name_of(file);
            const auto is_written = [&](std::string_view written) { return find_name_around(sql, written, error.offset) != sql.npos; };
            const bool begins_with_digit = name.starts_with('_') && !table_name_of(file).starts_with('_');
            if ((name != table_name_of(file) && is_written(table_name_of(file))) ||
                (begins_with_digit && is_written(std::string_view(name).substr(1)))) {
                hint += fmt::format("; {} is the table {}", file, name);
            }
            for (const std::string& column : column_names_of(file, options, settings)) {
                const std::string quoted = name_in_query(column);
                if (quoted != column && find_name_around(sql, column, error.offset) != sql.npos) {
                    hint += fmt::format("; the column {} of {} is written {}", column, file, quoted);
                }
            }
        }
        throw program_error(error.what() + hint);
    }
}

// The last word is a file where a query should be.
bool is_file_name(const std::string& word) {
    std::error_code unreadable;
    return std::filesystem::exists(word, unreadable) || word == "-" || (!extension_of(word).empty() && word.find(' ') == std::string::npos);
}

} // namespace

bool has_query(const program_options& options) { return !options.words.empty() && !is_file_name(options.words.back()); }

void run_query(const program_options& options) {
    if (options.words.empty()) {
        fail("there is no query; give one as in: bifun \"SELECT NVL(NULL, 7)\", or see bifun --help");
    }
    for (std::size_t i = 0; i + 1 < options.words.size(); ++i) {
        const std::string& word = options.words[i];
        if (equal_ignoring_case(word, "SELECT")) {
            fail("the query is one word, in quotes: bifun {} \"{}\"",
                 fmt::join(options.words.begin(), options.words.begin() + static_cast<std::ptrdiff_t>(i), " "),
                 fmt::join(options.words.begin() + static_cast<std::ptrdiff_t>(i), options.words.end(), " "));
        }
        if (equal_ignoring_case(std::string_view(word).substr(0, 7), "SELECT ")) {
            fail("the query is the last word, behind the files: bifun FILE.csv \"{}\"", word);
        }
    }
    if (!has_query(options)) {
        const std::string& file = options.words.back();
        fail("there is no query behind {0}; give one as in: bifun {0} \"SELECT * FROM {1}\"", file, plain_table_name_of(file));
    }
    const std::string& sql = options.words.back();
    if (!sql.empty() && sql.find_first_of(" \t\n(*;") == std::string::npos) {
        fail("{} is neither a file nor a query; give a query as in: bifun FILE.csv \"SELECT ...\", or see bifun --help", sql);
    }
    run_statement(options, {options.words.begin(), options.words.end() - 1}, options.words.back());
}

void run_statement(const program_options& options, const std::vector<std::string>& files, const std::string& sql,
                   const std::function<void(const std::string&)>& tell) {
    const session_settings settings = read_settings(options.settings);
    // First of all: it tells the engine of the character set, in which everything else is text.
    const function_library library(options.library, settings.library);
    begin_session(settings);
    const given_types types = parse_types(options.types);
    const select_statement statement = parse_query(sql, files, options, settings);
    check_files(files, options.nulls);
    const output_format format = format_of(options);
    const file_options reading = reading_of(options);
    const type_sample sample = sample_of(options);
    result_stream results = open_results(options, files);
    std::ranges::for_each(remarks_on_formats(settings), tell);
    std::ranges::for_each(remarks_on_formats(types), tell);

    std::vector<std::string> told;
    const auto tell_once = [&](const std::string& remark) {
        if (!remark.empty() && std::ranges::find(told, remark) == told.end()) {
            told.push_back(remark);
            tell(remark);
        }
    };
    // False where the first part of a file has given a wrong type and nothing has gone out, so that the query can be run again.
    const auto run = [&](type_sample decides) {
        progress_bar progress;
        std::unique_ptr<table> source;
        if (statement.from) {
            source = open_table(file_of_table(files, *statement.from, sql), reading, settings);
            tell_once(source->reader.doubt());
            check_given_types(types, source.get(), files, reading, settings);
            mark_needed_columns(statement, sql, *source);
            resolve_types(*source, types, decides, progress);
            std::ranges::for_each(source->number_remarks, tell_once);
            // Who trims knows of the blanks.
            if (upper_case(sql).find("TRIM(") == sql.npos) {
                tell_once(source->blank_remark);
            }
        }
        plan query = bind_statement(statement, sql, source.get(), settings, library);
        result_output output(format, results.stream, query.results, *settings.text_charset);
        progress.begin("running", results.is_terminal);
        try {
            run_plan(query, options.batch_rows, settings, output, progress);
        } catch (const program_error& error) {
            progress.clear();
            if (dynamic_cast<const type_not_as_sampled*>(&error) != nullptr && source->reader.is_file() && restart(results)) {
                return false;
            }
            output.abandon();
            throw;
        }
        progress.clear();
        output.finish();
        std::ranges::for_each(query.notices, tell);
        if (source != nullptr) {
            report_bad_rows(source->reader);
        }
        return true;
    };
    if (!run(sample)) {
        run({.of_files = whole_file, .of_pipes = whole_file});
    }
    commit(results);
}

} // namespace host
