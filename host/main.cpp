// bifun: SQL over CSV files, evaluated batch by batch through libbifun.so.

#include <algorithm>
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
#include "host/tables/delimiter.h"
#include "host/tables/file_name.h"
#include "host/values/value_text.h"

namespace host {
namespace {

struct program_options {
    std::vector<std::string> words; // the files, then the query
    std::string format;
    std::string types;
    std::string delimiter;
    std::string sample;
    bool no_header = false;
    file_options reading;
    std::vector<std::string> settings;
    std::string library = default_library;
    std::uint32_t batch_rows = 1024;
};

// A message takes one line, whatever a file or a query holds.
std::string one_line(std::string text) {
    for (char& c : text) {
        c = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? ' ' : c;
    }
    return text;
}

// On the standard error. There is nowhere left to say that this cannot be written.
void print_message(const std::string& message) {
    static_cast<void>(std::fputs(fmt::format("bifun: {}\n", one_line(message)).c_str(), stderr));
}

output_format chosen_format(const std::string& name) {
    if (name == "csv" || name == "json") {
        return name == "csv" ? output_format::csv : output_format::json;
    }
    return name == "table" || isatty(STDOUT_FILENO) == 1 ? output_format::table : output_format::csv;
}

file_options reading_of(const program_options& options) {
    file_options reading = options.reading;
    reading.has_header = !options.no_header;
    if (!options.delimiter.empty()) {
        reading.delimiter = find_delimiter_named(options.delimiter);
        if (!reading.delimiter) {
            fail("--delimiter: \"{}\" is none; there are {}", options.delimiter, delimiter_names);
        }
    }
    return reading;
}

type_sample sample_of(const std::string& text) {
    constexpr std::uint64_t most_megabytes = 1U << 20;
    if (text.empty()) {
        return {};
    }
    std::uint64_t megabytes = 0;
    if (equal_ignoring_case(text, "all")) {
        return {.of_files = whole_file, .of_pipes = whole_file};
    }
    if (!read_number(text, megabytes) || megabytes == 0 || megabytes > most_megabytes) {
        fail("--sample: \"{}\" is no number of megabytes, such as 100, nor all", text);
    }
    return {.of_files = megabytes << 20, .of_pipes = megabytes << 20};
}

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

// Reads the query. Where that fails, a file that cannot be called by its own name is often why.
select_statement parse_query(const std::string& sql, const std::vector<std::string>& files) {
    try {
        return parse_select(sql);
    } catch (const program_error& error) {
        std::string hint;
        for (const std::string& file : files) {
            const std::string name = plain_table_name_of(file);
            if (name != table_name_of(file)) {
                hint += fmt::format("; {} is the table {}", file, name);
            }
        }
        throw program_error(error.what() + hint);
    }
}

// The last word is a file where a query should be.
bool is_file_name(const std::string& word) {
    std::error_code unreadable;
    return std::filesystem::is_regular_file(word, unreadable) || word == "-" ||
           (!extension_of(word).empty() && word.find(' ') == std::string::npos);
}

void run_query(const program_options& options) {
    if (!options.words.empty() && is_file_name(options.words.back())) {
        const std::string& file = options.words.back();
        fail("there is no query behind {0}; give one as in: bifun {0} \"SELECT * FROM {1}\"", file, plain_table_name_of(file));
    }
    if (options.words.empty()) {
        fail("there is no query; give one as in: bifun \"SELECT NVL(NULL, 7)\", or see bifun --help");
    }
    const std::string& sql = options.words.back();
    const std::vector<std::string> files(options.words.begin(), options.words.end() - 1);
    const session_settings settings = read_settings(options.settings);
    begin_session(settings);
    const given_types types = parse_types(options.types);
    const select_statement statement = parse_query(sql, files);
    const function_library library(options.library, settings.library);
    const output_format format = chosen_format(options.format);
    const file_options reading = reading_of(options);
    const type_sample sample = sample_of(options.sample);

    output_stream stream{.file = STDOUT_FILENO, .text = {}};
    // False where the sampled part of a file has given a wrong type and nothing has been written, so that the query can be run again.
    const auto run = [&](type_sample sample, bool is_first) {
        progress_bar progress;
        std::unique_ptr<table> source;
        if (statement.from) {
            source = open_table(file_of_table(files, *statement.from, sql), reading, settings);
            if (is_first && !source->reader.doubt().empty()) {
                print_message(source->reader.doubt());
            }
            mark_needed_columns(statement, sql, *source);
            resolve_types(*source, types, sample, progress);
        }
        plan query = bind_statement(statement, sql, source.get(), settings, library);
        result_output output(format, stream, query.results, *settings.text_charset);
        progress.begin("running", isatty(STDOUT_FILENO) == 1);
        try {
            run_plan(query, options.batch_rows, settings, output, progress);
        } catch (const program_error& error) {
            progress.clear();
            if (dynamic_cast<const type_not_as_sampled*>(&error) != nullptr && !stream.flushed && source->reader.is_file()) {
                stream.text.clear();
                return false;
            }
            output.abandon();
            throw;
        }
        progress.clear();
        output.finish();
        if (source != nullptr && source->reader.bad_rows() > 0) {
            print_message(fmt::format("{} row{} left out; the first: {}", source->reader.bad_rows(),
                                      source->reader.bad_rows() == 1 ? "" : "s", source->reader.first_bad_row()));
        }
        return true;
    };
    if (!run(sample, true)) {
        run({.of_files = whole_file, .of_pipes = whole_file}, false);
    }
}

void print(const std::string& text) {
    output_stream stream{.file = STDOUT_FILENO, .text = text};
    stream.flush();
}

constexpr const char* description =
    "bifun - SQL over CSV files, evaluated batch by batch by the SQL built-in functions of libbifun.so\n\n"
    "  bifun [OPTIONS] [FILE.csv ...] \"SELECT ...\"\n"
    "  bifun functions [NAME]                          the built-in functions, or one of them in full\n\n"
    "A file is a table named after its base name: staff.csv is the table staff. Without FROM there is one row.";

constexpr const char* footer = "\nSQL: SELECT list FROM table WHERE condition LIMIT n, with = <> < <= > >= AND OR NOT BETWEEN IN IS NULL.\n"
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
                   std::string("types of columns, such as name:CHAR(10),price:DECIMAL; the others are found in the file. "
                               "There are ") +
                       std::string(column_type_names))
        ->type_name("NAME:TYPE,...");
    app.add_option("--delimiter", options.delimiter,
                   std::string("what separates the fields: ") + std::string(delimiter_names) +
                       "; otherwise a tab in .tsv files, and what the first lines show in others")
        ->type_name("NAME");
    app.add_flag("--no-header", options.no_header, "the first line is a row, and the columns are column_1, column_2 ...");
    app.add_option("--skip", options.reading.skipped_lines, "leave out the first lines of the file")->type_name("LINES");
    app.add_flag(
        "--ignore-errors", options.reading.ignores_errors,
        "leave out rows that have more or fewer fields than the header, misplaced quotes or values that do not fit the types given, "
        "and say how many");
    app.add_option("--encoding", options.reading.encoding,
                   "the encoding of the files, by a name that ICU knows, such as latin1; a byte order mark goes before it");
    app.add_option(
           "--sample", options.sample,
           "how much of a file decides the types, in MB, or all (32; 4 of a pipe). A value behind it that would have given another type "
           "has the whole file decide, or is an error where output has begun")
        ->type_name("MB");
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
        message = error.what();
    }
    host::print_message(message);
    return 1;
}
