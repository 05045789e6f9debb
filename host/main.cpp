// SPDX-License-Identifier: Apache-2.0
// bifun: SQL over CSV files, evaluated batch by batch through libbifun.so.

#include <csignal>
#include <new>
#include <sstream>

#include <CLI/CLI.hpp>
#include <unistd.h>

#include "host/file_description.h"
#include "host/functions/function_list.h"
#include "host/functions/function_reference.h"
#include "host/messages.h"
#include "host/near_names.h"
#include "host/output/output_stream.h"
#include "host/program_error.h"
#include "host/query_run.h"
#include "host/shell/shell.h"
#include "host/tables/delimiter.h"
#include "host/values/value_text.h"

namespace host {
namespace {

constexpr const char* description =
    "bifun - SQL over CSV files, evaluated batch by batch by the SQL built-in functions of libbifun.so\n\n"
    "  bifun [OPTIONS] [FILE.csv ...] \"SELECT ...\"\n"
    "  bifun [OPTIONS] [FILE.csv ...]                  an interactive shell, on a terminal; \\? lists its commands\n"
    "  bifun describe [OPTIONS] FILE.csv               the columns of a file: types, NULLs, smallest and largest values\n"
    "  bifun functions [NAME]                          the built-in functions, or one of them in full\n\n"
    "A file is a table named after its base name: staff.csv is the table staff, and my-file.csv my_file. - is the standard input, the\n"
    "table stdin. Files packed by gzip or zstd are read as they are. Without FROM there is one row.";

constexpr const char* footer =
    "\nSQL: SELECT list FROM table WHERE condition LIMIT n OFFSET m, with functions, + - * / % || = <> < <= > >= AND OR NOT\n"
    "BETWEEN IN LIKE ILIKE IS NULL, CASE, COALESCE, NULLIF, CAST, CURRENT_DATE and CURRENT_TIMESTAMP; no sorting, aggregates or joins.\n"
    "An empty field is NULL; \"\" is the empty string. Exit status: 0, or 1 after an error.\n\n"
    "Examples\n"
    "  bifun \"SELECT NVL(NULL, 7)\"\n"
    "  bifun zones.csv \"SELECT zone, country FROM zones WHERE latitude > 60 LIMIT 5\"\n"
    "  bifun --format json --types \"name:CHAR(10)\" staff.csv \"SELECT * FROM staff\"";

// What other programs call an option that there is.
struct option_elsewhere {
    std::string_view names; // with blanks around each
    std::string_view advice;
};

constexpr option_elsewhere options_elsewhere[] = {
    {" -d -s -F -t --sep --separator --delim --ifs --fs --field-separator ", "; --delimiter says what separates the fields"},
    {" --header -header --headers -H ", "; the first line has the names of the columns unless --no-header is given"},
    {" --noheader -noheader --implicit-csv-header ", "; --no-header says that the first line is a row"},
    {" --json -json --csv -csv --icsv --ojson --opprint --oxtab --tsv --jsonl --markdown -markdown --table -table --box -box ",
     "; --format says how results are written"},
    {" -o --out --outfile ", "; --output names the file of the result"},
    {" -e -c --query --sql -q ", "; the query is the last word"},
    {" --nullstr --nullvalue -nullvalue --null-value --na --nulls --na-values ", "; --null names what stands for NULL in a file"},
    {" --null-padding --null_padding --ragged --allow-ragged-csv-input --fill ", "; --fill-short-rows has NULL for what rows lack"},
    {" --quotechar --quote-char --quotes -Q --no-quote --lazy-quotes ", "; --quote says what stands around fields, or none"},
    {" --escapechar --escape-char ", "; --escape says what stands before a byte that is text"},
    {" --decimal-separator --decimal_separator --decimal-mark --decimal-comma --dec ", "; --decimal comma reads numbers such as 1.234,56"},
    {" --comments --pass-comments --skip-comments --comment-char ", "; --comment '#' leaves out lines that begin with it"},
    {" --dateformat --date-format --timestampformat ", "; a format goes with a type, as in --types \"day:DATE 'DD.MM.YYYY'\""},
    {" --type --dtype --dtypes --schema --columns ", "; --types gives columns their types"},
    {" -n --head --limit ", "; LIMIT in the query ends the result"},
};

std::string advice_for(const CLI::App& app, std::string_view complaint) {
    const std::size_t colon = complaint.find(": ");
    const std::string_view behind = colon == complaint.npos ? "" : complaint.substr(colon + 2);
    const std::string_view word = behind.substr(0, behind.find_first_of(" ="));
    for (const option_elsewhere& known : options_elsewhere) {
        if (known.names.find(fmt::format(" {} ", word)) != known.names.npos) {
            return std::string(known.advice);
        }
    }
    std::vector<std::string> names;
    for (const CLI::Option* const known : app.get_options()) {
        names.insert(names.end(), known->get_lnames().begin(), known->get_lnames().end());
    }
    return word.starts_with("--") ? did_you_mean(word.substr(2), names, [](const std::string& name) { return "--" + name; }) : "";
}

// Prints a help or version that was asked for; any other reason to stop is an error.
int answer(const CLI::App& app, const CLI::ParseError& reason) {
    if (reason.get_exit_code() == 0) {
        std::ostringstream text;
        app.exit(reason, text, text);
        print(text.str());
        return 0;
    }
    const std::string advice = advice_for(app, reason.what());
    fail("{}{}{} see bifun --help", reason.what(), advice, advice.ends_with('?') ? "" : ";");
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

// Read as an unsigned number, -1 would be a huge one. Empty where the text is right.
std::string is_line_count(const std::string& text) {
    std::uint64_t lines = 0;
    return read_number(text, lines) ? "" : fmt::format("\"{}\" is no number of lines, such as 2", text);
}

// Of files and results, for queries and descriptions alike.
void add_file_options(CLI::App& app, program_options& options) {
    app.add_option("--format", options.format,
                   std::string(output_format_names) + "; otherwise what the name of --output says, a table on a terminal, or csv")
        ->type_name("NAME");
    app.add_option("--output", options.output,
                   "the file that the result goes to; it is written whole or, after an error, not at all. - is the standard output")
        ->type_name("FILE");
    app.add_option("--delimiter", options.delimiter,
                   std::string("what separates the fields: ") + std::string(delimiter_names) +
                       "; otherwise a tab in .tsv files, a bar in .psv files, and what the first lines show in others")
        ->type_name("NAME");
    app.add_option("--quote", options.quote,
                   "what stands around fields that hold delimiters, line ends or quotes, which are doubled: a double quote unless given, a "
                   "character of one byte, or none, with which quotes are text")
        ->type_name("CHARACTER");
    app.add_option(
           "--escape", options.escape,
           "what stands before a quote, a delimiter, a line end or another of it that is text, such as \\; none unless given. \\n for a "
           "backslash with which n t r 0 b f v Z are control characters. With both, a field \\N is NULL")
        ->type_name("CHARACTER");
    app.add_option("--comment", options.comment, "what lines begin with that are left out, such as #; none unless given")
        ->type_name("CHARACTER");
    app.add_option("--decimal", options.decimal,
                   "comma for numbers such as 1.234,56 and 1234,56, point for 1,234.56 and 1234.56; groups of three digits may also have "
                   "blanks or apostrophes between them. Without it, numbers are as in SQL")
        ->type_name("MARK");
    app.add_option(
           "--null", options.nulls,
           "fields without quotes that are NULL, such as NA or \\N; may be given again for each. Where it is, empty fields are empty "
           "strings in columns of text, and NULL in others; --null '' has them NULL in all")
        ->type_name("TEXT")
        ->allow_extra_args(false);
    app.add_flag("--quoted-nulls", options.reading.has_quoted_nulls,
                 "fields in quotes are NULL, too, where they are empty or one of --null");
    app.add_flag("--fill-short-rows", options.reading.fills_short_rows, "rows with fewer fields than the header have NULL for the rest");
    app.add_flag("--no-header", options.no_header, "the first line is a row, and the columns are column_1, column_2 ...");
    app.add_option("--skip", options.reading.skipped_lines, "leave out the first lines of the file")
        ->check(is_line_count, "")
        ->type_name("LINES");
    app.add_flag("--ignore-errors", options.reading.ignores_errors,
                 "leave out rows that have more or fewer fields than the header, misplaced quotes or values that do not fit the types "
                 "given, and say how many");
    app.add_option("--encoding", options.reading.encoding,
                   "the encoding of the files where it is not the charset, by a name that ICU knows, such as latin1; a byte order mark "
                   "goes before it")
        ->type_name("NAME");
    app.add_option(
           "--types", options.types,
           std::string(
               "types of columns, such as name:CHAR(10),price:DECIMAL(8,2), with several files also staff.name:CHAR(10); the others "
               "are found in the file. A value that does not fit is an error. There are ") +
               std::string(column_type_names))
        ->type_name("NAME:TYPE,...")
        ->join(',');
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
}

int describe(int argument_count, char** arguments) {
    CLI::App app("The columns of a file: type, number of values and of NULLs, smallest and largest value, and of a VARCHAR the first line "
                 "that made it one, with its text",
                 "bifun describe");
    program_options options;
    std::string file;
    app.add_option("FILE", file, "a CSV file, or - for the standard input")->required();
    add_file_options(app, options);
    try {
        app.parse(argument_count - 1, arguments + 1);
    } catch (const CLI::ParseError& reason) {
        return answer(app, reason);
    }
    describe_file(file, options);
    return 0;
}

int run(int argument_count, char** arguments) {
    const std::string_view command = argument_count > 1 ? arguments[1] : "";
    if (command == "functions") {
        return list_functions(argument_count, arguments);
    }
    if (command == "describe") {
        return describe(argument_count, arguments);
    }
    CLI::App app(description, "bifun");
    app.set_version_flag("-V,--version", std::string("bifun ") + BIFUN_VERSION);
    app.footer(footer);
    program_options options;
    app.add_option("FILES_AND_QUERY", options.words, "CSV files, and last the query")->type_name("TEXT");
    add_file_options(app, options);
    app.add_option("--sample", options.sample,
                   "how much of a file decides the types, in MB, or all (32; 4 of a pipe). A value behind it that would have given another "
                   "type has the whole file decide, or is an error where output has gone out or a pipe is read")
        ->type_name("MB");
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
    if (!has_query(options) && isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1) {
        run_shell(std::move(options));
    } else {
        run_query(options);
    }
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
