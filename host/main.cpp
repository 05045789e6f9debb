// SPDX-License-Identifier: Apache-2.0
// bifun: SQL over CSV files, evaluated batch by batch through libbifun.so.

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <sstream>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "host/binding/binding.h"
#include "host/evaluation/execution.h"
#include "host/functions/function_list.h"
#include "host/functions/function_reference.h"
#include "host/near_names.h"
#include "host/output/output.h"
#include "host/program_error.h"
#include "host/session/settings.h"
#include "host/sql/sql_text.h"
#include "host/sql/syntax.h"

namespace host {
namespace {

struct program_options {
    std::vector<std::string> words; // the files, then the query
    std::string format;
    std::string types;
    std::vector<std::string> settings;
    std::string library = default_library;
    std::uint32_t batch_rows = 1024;
};

output_format chosen_format(const std::string& name) {
    if (name == "csv" || name == "json") {
        return name == "csv" ? output_format::csv : output_format::json;
    }
    return name == "table" || isatty(STDOUT_FILENO) == 1 ? output_format::table : output_format::csv;
}

// The file that a FROM means, by the name of its table.
const std::string& file_of_table(const std::vector<std::string>& files, const table_name& from, const std::string& sql) {
    std::vector<std::string> names;
    const std::string* found = nullptr;
    for (const bool ignoring_case : {false, true}) {
        names.clear();
        for (const std::string& file : files) {
            names.push_back(table_name_of(file));
            const bool same = ignoring_case ? equal_ignoring_case(names.back(), from.name) : names.back() == from.name;
            if (same && found != nullptr) {
                fail_at(sql, from.offset, fmt::format("{} and {} are both the table {}; give one of them", *found, file, from.name));
            }
            found = same ? &file : found;
        }
        if (found != nullptr) {
            return *found;
        }
    }
    if (files.empty()) {
        fail_at(sql, from.offset, fmt::format("there is no table {0}; give its file, as in: bifun {0}.csv \"SELECT ...\"", from.name));
    }
    const std::string hint = did_you_mean(from.name, names);
    fail_at(
        sql, from.offset,
        fmt::format("there is no table {}{}", from.name, hint.empty() ? fmt::format("; the tables are {}", fmt::join(names, ", ")) : hint));
}

// The last word is a file where a query should be.
bool is_file_name(const std::string& word) {
    std::error_code unreadable;
    return std::filesystem::is_regular_file(word, unreadable) || (word.ends_with(".csv") && word.find(' ') == std::string::npos);
}

void run_query(const program_options& options) {
    if (!options.words.empty() && is_file_name(options.words.back())) {
        const std::string& file = options.words.back();
        fail("there is no query behind {0}; give one as in: bifun {0} \"SELECT * FROM {1}\"", file, table_name_of(file));
    }
    if (options.words.empty()) {
        fail("there is no query; give one as in: bifun \"SELECT NVL(NULL, 7)\", or see bifun --help");
    }
    const std::string& sql = options.words.back();
    const std::vector<std::string> files(options.words.begin(), options.words.end() - 1);
    const session_settings settings = read_settings(options.settings);
    // First of all: it tells the engine of the character set, in which everything else is text.
    const function_library library(options.library, settings.library);
    begin_session(settings);
    const given_types types = parse_types(options.types);
    const select_statement statement = parse_select(sql);
    const output_format format = chosen_format(options.format);

    progress_bar progress;
    std::unique_ptr<table> source;
    if (statement.from) {
        source = open_table(file_of_table(files, *statement.from, sql), settings);
        mark_needed_columns(statement, sql, *source);
        resolve_types(*source, types, progress);
    }
    plan query = bind_statement(statement, sql, source.get(), settings, library);

    output_stream stream{.file = STDOUT_FILENO, .text = {}};
    result_output output(format, stream, query.results, *settings.text_charset);
    progress.begin("running", isatty(STDOUT_FILENO) == 1);
    try {
        run_plan(query, options.batch_rows, settings, output, progress);
    } catch (const program_error&) {
        progress.clear();
        output.abandon();
        throw;
    }
    progress.clear();
    output.finish();
}

void print(const std::string& text) {
    output_stream stream{.file = STDOUT_FILENO, .text = text};
    stream.flush();
}

// A message takes one line, whatever a file or a query holds.
std::string one_line(std::string text) {
    for (char& c : text) {
        c = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? ' ' : c;
    }
    return text;
}

constexpr const char* description =
    "bifun - SQL over CSV files, evaluated batch by batch by the SQL built-in functions of libbifun.so\n\n"
    "  bifun [OPTIONS] [FILE.csv ...] \"SELECT ...\"\n"
    "  bifun functions [NAME]                          the built-in functions, or one of them in full\n\n"
    "A file is a table named after its base name: staff.csv is the table staff. Without FROM there is one row.";

constexpr const char* footer =
    "\nSQL: SELECT list FROM table WHERE condition LIMIT n OFFSET m, with functions, + - * / % || = <> < <= > >= AND OR NOT\n"
    "BETWEEN IN LIKE IS NULL, CASE, COALESCE, NULLIF, CAST, CURRENT_DATE and CURRENT_TIMESTAMP; no sorting, aggregates or joins.\n"
    "An empty field is NULL; \"\" is the empty string. Exit status: 0, or 1 after an error.\n\n"
    "Examples\n"
    "  bifun \"SELECT NVL(NULL, 7)\"\n"
    "  bifun peaks.csv \"SELECT name, height_m FROM peaks WHERE height_m >= 8000 LIMIT 5\"\n"
    "  bifun --format json --types \"name:CHAR(10)\" staff.csv \"SELECT * FROM staff\"";

// Prints a help or version that was asked for; any other reason to stop is an error.
int answer(const CLI::App& app, const CLI::ParseError& reason) {
    if (reason.get_exit_code() == 0) {
        std::ostringstream text;
        app.exit(reason, text, text);
        print(text.str());
        return 0;
    }
    fail("{}; see bifun --help", reason.what());
}

int list_functions(int argument_count, char** arguments) {
    CLI::App app("The built-in functions, or one of them in full", "bifun functions");
    std::string name;
    bool markdown = false;
    CLI::Option* const chosen = app.add_option("NAME", name, "a built-in function");
    app.add_flag("--markdown", markdown, "the function reference, docs/functions.md")->excludes(chosen);
    try {
        app.parse(argument_count - 1, arguments + 1);
    } catch (const CLI::ParseError& reason) {
        return answer(app, reason);
    }
    print(markdown ? function_reference() : name.empty() ? function_list() : function_description(name));
    return 0;
}

int run(int argument_count, char** arguments) {
    if (argument_count > 1 && std::string_view(arguments[1]) == "functions") {
        return list_functions(argument_count, arguments);
    }
    CLI::App app(description, "bifun");
    app.set_version_flag("--version", std::string("bifun ") + BIFUN_VERSION);
    app.footer(footer);
    program_options options;
    app.add_option("FILES_AND_QUERY", options.words, "CSV files, and last the query")->type_name("TEXT");
    app.add_option("--format", options.format, "table, csv or json; table on a terminal, csv otherwise")
        ->check(CLI::IsMember({"table", "csv", "json"}))
        ->type_name("NAME");
    app.add_option("--types", options.types,
                   std::string("types of columns, such as name:CHAR(10),price:DECIMAL; the others are found by reading the file twice. "
                               "There are ") +
                       std::string(column_type_names))
        ->type_name("NAME:TYPE,...");
    app.add_option(
           "--set", options.settings,
           "compatible_mode=1|2|3 (1, the default: a negative length in SUBSTR is an error and not NULL; 2: functions such as NVL take "
           "empty "
           "strings for NULL), charset=utf-8|gb18030|euc-kr (of files and of "
           "CSV output), "
           "case_sensitive=0|1 (0: comparisons and searches fold case), time_zone=+08:00 (of zoned values that name no zone, and of "
           "the current date), date_format, time_format, datetime_format, time_tz_format, datetime_tz_format (format models of TO_CHAR, "
           "TO_DATE and their kin where a call gives none), date_language=ENGLISH|CHINESE (of names in dates), oracle_date=0|1 (1: "
           "TO_DATE without a format may read a time of day), param.650=480 (the zone of the current date alone, in minutes), "
           "param.529=1 (TO_CHAR without a format shows fractions)")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    app.add_option("--batch-rows", options.batch_rows, "rows evaluated at a time, 1 to 65536")
        ->check(CLI::Range(1U, 65536U))
        ->type_name("N")
        ->capture_default_str();
    app.add_option("--library", options.library, "another library with the functions")->type_name("PATH");
    try {
        app.parse(argument_count, arguments);
    } catch (const CLI::ParseError& reason) {
        return answer(app, reason);
    }
    run_query(options);
    return 0;
}

} // namespace
} // namespace host

int main(int argument_count, char** arguments) {
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN)); // a write says so itself
    std::string message;
    try {
        return host::run(argument_count, arguments);
    } catch (const host::output_closed&) {
        return 0;
    } catch (const std::bad_alloc&) {
        message = "out of memory";
    } catch (const std::exception& error) {
        message = host::one_line(error.what());
    }
    // There is nowhere left to say that this cannot be written.
    static_cast<void>(std::fputs(fmt::format("bifun: {}\n", message).c_str(), stderr));
    return 1;
}
