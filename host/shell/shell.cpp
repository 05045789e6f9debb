// SPDX-License-Identifier: Apache-2.0
#include "host/shell/shell.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <optional>

#include "bop/frame/catalogue.h"
#include "host/functions/function_list.h"
#include "host/messages.h"
#include "host/near_names.h"
#include "host/query_run.h"
#include "host/session/interruption.h"
#include "host/shell/line_editor.h"
#include "host/sql/names.h"
#include "host/sql/tokens.h"
#include "host/tables/given_types.h"
#include "host/values/value_text.h"

namespace host {
namespace {

struct shell_state {
    program_options options;
    std::vector<shell_table> tables;
    std::string statement; // what has been entered of it
    bool shows_time = false;
    bool has_ended = false;
};

void describe(shell_state& shell, const std::string& name) {
    if (!name.empty()) {
        return print(describe_table(shell.options, shell.tables, name));
    }
    std::string text;
    std::size_t width = 0;
    for (const shell_table& table : shell.tables) {
        width = std::max(width, table.name.size());
    }
    for (const shell_table& table : shell.tables) {
        text += fmt::format("{:<{}}  {}\n", table.name, width, table.path);
    }
    print(text.empty() ? "There are no tables; start with files, as in: bifun staff.csv\n" : text);
}

constexpr std::string_view reading_options =
    "files are read as the options of bifun say when the shell begins, as in: bifun --delimiter tab --skip 2 FILE";

bool is_reading_option(std::string_view name) {
    constexpr std::string_view names =
        "delimiter separator skip header no-header quote escape null nullvalue encoding decimal comment sample";
    return bifun::has_word(names, name);
}

// Takes over options only when they have proved to be possible.
void change_format(shell_state& shell, const std::string& name) {
    program_options changed = shell.options;
    changed.format = name;
    static_cast<void>(format_of(changed));
    shell.options = std::move(changed);
}

void change_settings(shell_state& shell, const std::string& assignment) {
    if (assignment.empty()) {
        for (const std::string& given : shell.options.settings) {
            print(given + "\n");
        }
        return;
    }
    if (is_reading_option(std::string_view(assignment).substr(0, assignment.find_first_of("= ")))) {
        fail("\\set: {}", reading_options);
    }
    program_options changed = shell.options;
    changed.settings.push_back(assignment);
    try {
        begin_session(read_settings(changed.settings));
        std::vector<shell_table> tables = read_tables(changed, changed.words);
        for (std::size_t i = 0; i < tables.size(); ++i) {
            if (!tables[i].fault.empty() && shell.tables[i].fault.empty()) { // with the change alone
                throw program_error(tables[i].fault);
            }
        }
        shell.tables = std::move(tables);
    } catch (...) {
        begin_session(read_settings(shell.options.settings));
        throw;
    }
    shell.options = std::move(changed);
}

// Whether a column has just this name, that of its table before it or not.
bool is_column(const shell_state& shell, const std::string& name) {
    const auto has = [&](const shell_table& table) {
        std::size_t begin = 0;
        while (std::ranges::find(table.columns, name_in_query(name.substr(begin))) == table.columns.end()) {
            const std::size_t point = name.find('.', begin);
            if (point == name.npos) {
                return false;
            }
            begin = point + 1;
        }
        return true;
    };
    return std::ranges::any_of(shell.tables, has);
}

void change_types(shell_state& shell, const std::string& types) {
    if (types.empty()) {
        return print(shell.options.types.empty() ? "No types are given; \\d TABLE shows those found.\n" : shell.options.types + "\n");
    }
    if (equal_ignoring_case(types, "none")) {
        return shell.options.types.clear();
    }
    const given_types added = parse_types(types);
    check_given_types(added, nullptr, shell.options.words, reading_of(shell.options), read_settings(shell.options.settings));
    shell.options.types = given_types_text(
        with_types(parse_types(shell.options.types), added, [&](const std::string& name) { return is_column(shell, name); }));
}

void change_output(shell_state& shell, const std::string& path) { shell.options.output = path; }

void show_functions(shell_state& /*shell*/, const std::string& name) { print(name.empty() ? function_list() : function_description(name)); }

void switch_timing(shell_state& shell, const std::string& /*none*/) {
    shell.shows_time = !shell.shows_time;
    print(shell.shows_time ? "The time of queries is shown.\n" : "The time of queries is not shown.\n");
}

void end(shell_state& shell, const std::string& /*none*/) { shell.has_ended = true; }

void show_commands(shell_state& shell, const std::string& none);

struct shell_command {
    std::string_view name;
    std::string_view argument; // none where it is empty
    std::string_view meaning;
    void (*run)(shell_state& shell, const std::string& argument);
};

constexpr shell_command commands[] = {
    {"\\d", "[TABLE]", "the tables, or the columns of one with their types", describe},
    {"\\format", "[NAME]", "write results as table, csv, tsv, json, jsonl or markdown; without a name as at the start of a shell",
     change_format},
    {"\\h", "[FUNCTION]", "the built-in functions, or one of them in full", show_functions},
    {"\\o", "[FILE]", "write the result of the next query to a file; without a file to the terminal, after all", change_output},
    {"\\q", "", "end; so does Ctrl-D", end},
    {"\\set", "[NAME=VALUE]", "change a setting, as --set does; without one show those given", change_settings},
    {"\\timing", "", "show the time that queries take, or no longer", switch_timing},
    {"\\types", "[NAME:TYPE,...]", "give columns types, as --types does, besides those given; none takes all back", change_types},
    {"\\?", "", "these commands", show_commands},
};

void show_commands(shell_state& /*shell*/, const std::string& /*none*/) {
    std::string text = "A query ends with ; and may take several lines. Tab completes, Ctrl-R looks in the history, Ctrl-C abandons.\n";
    for (const shell_command& command : commands) {
        text += fmt::format("{:<8} {:<15}  {}\n", command.name, command.argument, command.meaning);
    }
    print(text);
}

// Commands of other shells.
constexpr std::pair<std::string_view, std::string_view> commands_elsewhere[] = {
    {"\\dt", "\\d"},    {"\\l", "\\d"},   {".tables", "\\d"}, {".schema", "\\d"}, {".mode", "\\format"},
    {".output", "\\o"}, {".once", "\\o"}, {".quit", "\\q"},   {".exit", "\\q"},   {".help", "\\?"},
};

void run_command(shell_state& shell, std::string_view line) {
    const std::size_t name_end = std::min(line.find_first_of(" \t"), line.size());
    std::string_view argument = without_blanks_around(line.substr(name_end));
    while (argument.ends_with(';')) { // out of habit
        argument = without_blanks_around(argument.substr(0, argument.size() - 1));
    }
    std::string_view name = line.substr(0, name_end);
    name = name.substr(0, name.find(';'));
    const auto* const elsewhere = std::ranges::find(commands_elsewhere, name, &std::pair<std::string_view, std::string_view>::first);
    name = elsewhere != std::end(commands_elsewhere) ? elsewhere->second : name;
    const auto* const found = std::ranges::find(commands, name, &shell_command::name);
    if (found == std::end(commands) && is_reading_option(name.substr(1))) {
        fail("there is no command {}; {}", name, reading_options);
    }
    if (found == std::end(commands)) {
        fail("there is no command {}; \\? lists what there is", name);
    }
    if (found->argument.empty() && !argument.empty()) {
        fail("{} takes nothing behind it", name);
    }
    found->run(shell, std::string(argument));
}

// Some options are commands here, of which the words of a line have no quotes around them: --types "day:DATE 'DD.MM.YYYY'".
std::string with_commands(std::string_view message) {
    std::string made;
    while (!message.empty()) {
        const auto* const found = std::ranges::find_if(commands, [&](const shell_command& command) {
            const std::size_t length = command.name.size() + 1;
            return message.starts_with("--") && message.substr(2).starts_with(command.name.substr(1)) &&
                   (message.size() == length || !is_sql_word_character(message[length]));
        });
        if (found == std::end(commands)) {
            made += message.front();
            message.remove_prefix(1);
            continue;
        }
        made += found->name;
        message.remove_prefix(found->name.size() + 1);
        if (message.starts_with(" \"")) {
            made += ' ';
            for (message.remove_prefix(2); !message.empty() && message.front() != '"'; message.remove_prefix(1)) {
                message.remove_prefix(message.front() == '\\' ? 1 : 0);
                made += message.substr(0, 1);
            }
            message.remove_prefix(std::min<std::size_t>(1, message.size()));
        }
    }
    return made;
}

void run_timed(shell_state& shell, const std::string& sql) {
    const auto begin = std::chrono::steady_clock::now();
    run_statement(shell.options, shell.options.words, sql, [](const std::string& notice) { print_message(with_commands(notice)); });
    if (has_output_file(shell.options)) {
        print_message("the result is in " + std::exchange(shell.options.output, {}));
    }
    if (shell.shows_time) {
        print_message(fmt::format("{:.3f} s", std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count()));
    }
}

// Shows an error of what is done, after which the shell goes on.
template <class Action> void attempt(const Action& action) {
    std::string message;
    try {
        return action();
    } catch (const std::bad_alloc&) {
        message = "out of memory";
    } catch (const std::exception& error) {
        message = with_commands(error.what());
    }
    print_message(message);
}

// Where the first statement in a text ends: behind its semicolon.
std::optional<std::size_t> end_of_statement(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view token = sql_token(text, at);
        at += token.size();
        if (token == ";") {
            return at;
        }
    }
    return std::nullopt;
}

// Of a line that goes on with a statement: what it has to close, if anything.
const char* prompt_for(std::string_view statement) {
    if (statement.empty()) {
        return "bifun> ";
    }
    std::string_view last;
    for (std::size_t at = 0; at < statement.size(); at += last.size()) {
        last = sql_token(statement, at);
    }
    const bool is_open = last.size() == 1 || last.back() != last.front();
    return last.front() == '\'' && is_open                   ? "    '> "
           : last.front() == '"' && is_open                  ? "    \"> "
           : last.starts_with("/*") && !last.ends_with("*/") ? "    *> "
                                                             : "   ..> ";
}

bool is_blank(std::string_view text) { return text.find_first_not_of(" \t\r\n;") == std::string_view::npos; }

void take_line(shell_state& shell, line_editor& editor, std::string line) {
    const bool begins = is_blank(shell.statement);
    std::string_view word = without_blanks_around(line);
    while (begins && word.ends_with(';')) {
        word.remove_suffix(1);
    }
    for (const auto& [plain, command] : {std::pair("quit", "\\q"), std::pair("exit", "\\q"), std::pair("help", "\\?")}) {
        if (begins && equal_ignoring_case(word, plain)) {
            word = line = command;
        }
    }
    if (begins && (word.starts_with('\\') || word.starts_with('.'))) { // .tables is a command elsewhere
        shell.statement.clear();
        editor.remember(line);
        return attempt([&] { run_command(shell, word); });
    }
    shell.statement += begins && shell.statement.empty() ? line : "\n" + line;
    // What stands in one line is one entry of the history.
    if (end_of_statement(shell.statement) && !is_blank(shell.statement)) {
        editor.remember(shell.statement);
    }
    while (const std::optional<std::size_t> end = end_of_statement(shell.statement)) {
        const std::string sql = shell.statement.substr(0, *end - 1);
        shell.statement.erase(0, *end);
        if (!is_blank(sql)) {
            attempt([&] { run_timed(shell, sql); });
        }
    }
    if (is_blank(shell.statement)) {
        shell.statement.clear();
    }
}

completions complete(const shell_state& shell, std::string_view before) {
    const std::size_t argument = before.find_first_of(" \t");
    if (!shell.statement.empty() || !before.starts_with('\\')) {
        return complete_statement(fmt::format("{}\n{}", shell.statement, before), shell.tables);
    }
    std::vector<std::string> words;
    if (argument == std::string_view::npos) {
        for (const shell_command& command : commands) {
            words.push_back(fmt::format("{}{}", command.name, command.argument.empty() ? "" : " "));
        }
        return complete_word(before, words);
    }
    const std::string_view name = before.substr(0, argument);
    const std::string_view begun = before.substr(std::min(before.find_first_not_of(" \t", argument), before.size()));
    if (name == "\\o") {
        return complete_path(begun);
    }
    if (name == "\\d") {
        std::ranges::transform(shell.tables, std::back_inserter(words), &shell_table::name);
    } else if (name == "\\h") {
        words = function_names();
    } else if (name == "\\format") {
        for (const std::string_view format : output_formats) {
            words.emplace_back(format);
        }
    } else if (name == "\\set") {
        for (const std::string_view setting : setting_names()) {
            words.push_back(fmt::format("{}=", setting));
        }
    }
    return complete_word(begun, words);
}

} // namespace

void run_shell(program_options options) {
    shell_state shell{.options = std::move(options), .tables = {}, .statement = {}};
    begin_session(read_settings(shell.options.settings));
    static_cast<void>(format_of(shell.options));
    static_cast<void>(sample_of(shell.options));
    shell.tables = read_tables(shell.options, shell.options.words);
    shell.options.types = given_types_text(parse_types(shell.options.types));
    const auto is_readable = [](const shell_table& table) { return table.fault.empty(); };
    if (std::ranges::all_of(shell.tables, is_readable)) { // or else types may be of what cannot be read
        check_given_types(parse_types(shell.options.types), nullptr, shell.options.words, reading_of(shell.options),
                          read_settings(shell.options.settings));
    }
    catch_interruptions();
    line_editor editor(history_path(), [&](std::string_view before) { return complete(shell, before); });
    print("bifun " BIFUN_VERSION "; \\? lists the commands, Ctrl-D ends.\n");
    for (const shell_table& table : shell.tables) {
        if (!table.fault.empty()) {
            print_message(table.fault);
        }
    }
    std::string line;
    while (!shell.has_ended) {
        switch (editor.read(prompt_for(shell.statement), line)) {
        case line_outcome::entered:
            take_line(shell, editor, line);
            break;
        case line_outcome::abandoned:
            shell.statement.clear();
            break;
        case line_outcome::input_ended:
            print("\n");
            shell.has_ended = true;
            break;
        }
    }
}

} // namespace host
