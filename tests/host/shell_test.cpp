// SPDX-License-Identifier: Apache-2.0
// The shell as people use it, on a terminal, and what the other shells know of the program.
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <regex>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/host/program_run.h"

namespace {

using namespace program_run;

// A command of the shell, with further words, on a terminal of its own.
class terminal {
  public:
    terminal(const scratch_directory& directory, const std::string& command, const arguments& words) {
        winsize size{.ws_row = 50, .ws_col = 200, .ws_xpixel = 0, .ws_ypixel = 0}; // no line is wrapped
        pid_ = forkpty(&master_, nullptr, nullptr, &size);
        if (pid_ == 0) {
            setenv("XDG_STATE_HOME", (directory.path / "state").c_str(), 1);
            setenv("HOME", directory.path.c_str(), 1);
            setenv("TERM", "dumb", 1);
            setenv("ASAN_OPTIONS", "detect_leaks=0", 1); // el_end of libedit forgets two strings
            const std::string started = joined({"exec ", command, " \"$@\""});
            std::vector<const char*> list = {"sh", "-c", started.c_str(), "sh"};
            for (const std::string& word : words) {
                list.push_back(word.c_str());
            }
            list.push_back(nullptr);
            if (chdir(directory.path.c_str()) == 0) {
                execv("/bin/sh", const_cast<char* const*>(list.data()));
            }
            _exit(127);
        }
    }
    ~terminal() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        close(master_);
    }
    terminal(const terminal&) = delete;
    terminal& operator=(const terminal&) = delete;

    void type(const std::string& keys) const { ASSERT_EQ(write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size())); }

    // Waits for a text behind what has been expected before.
    testing::AssertionResult shows(const std::string& expected) {
        while (shown_.find(expected) == std::string::npos) {
            if (!read_more()) {
                return testing::AssertionFailure() << "no \"" << expected << "\" in\n" << shown_;
            }
        }
        shown_.erase(0, shown_.find(expected) + expected.size());
        return testing::AssertionSuccess();
    }

    // The same for a prompt, and until keys are taken one by one: what comes before is for the terminal itself, as Ctrl-D is.
    testing::AssertionResult prompts(const std::string& prompt) {
        const testing::AssertionResult is_shown = shows(prompt);
        termios state{};
        for (int waited = 0; is_shown && waited < most_milliseconds; ++waited) {
            if (tcgetattr(master_, &state) == 0 && (state.c_lflag & ICANON) == 0) {
                return is_shown;
            }
            usleep(1000);
        }
        return is_shown ? testing::AssertionFailure() << "no keys are taken" : is_shown;
    }

    int exit_status() {
        while (read_more()) {
        }
        kill(pid_, SIGKILL); // if it has not ended
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    static constexpr int most_milliseconds = 30'000;

    bool read_more() {
        pollfd waiting{.fd = master_, .events = POLLIN, .revents = 0};
        if (poll(&waiting, 1, most_milliseconds) <= 0) {
            return false;
        }
        std::array<char, 4096> bytes{};
        const ssize_t count = read(master_, bytes.data(), bytes.size());
        for (ssize_t i = 0; i < count; ++i) {
            shown_.append(bytes[static_cast<std::size_t>(i)] == '\r' ? 0 : 1, bytes[static_cast<std::size_t>(i)]);
        }
        return count > 0;
    }

    pid_t pid_ = 0;
    int master_ = -1;
    std::string shown_;
};

// The shell over files, from its first prompt to its end by Ctrl-D, whatever stands in the line.
class running_shell : public terminal {
  public:
    running_shell(const scratch_directory& directory, const arguments& words) : terminal(directory, BIFUN_PROGRAM_COMMAND, words) {
        EXPECT_TRUE(prompts("bifun> "));
    }
    ~running_shell() {
        type("\x03");
        EXPECT_TRUE(shows("^C\n"));
        EXPECT_TRUE(prompts("bifun> "));
        type("\x04");
        EXPECT_EQ(exit_status(), 0);
    }
    running_shell(const running_shell&) = delete;
    running_shell& operator=(const running_shell&) = delete;
};

struct staff_directory : scratch_directory {
    staff_directory() {
        write("staff.csv", "name,Hired On,salary\nAda,2019-03-31,10.5\nGrace,2016-02-29,\n");
        write("sales.csv", "day,price\n2024-02-29,NA\n");
    }
};

// A shell over files of a directory of its own.
template <class Directory> struct shell_of : Directory {
    running_shell shell;
    explicit shell_of(const arguments& words = {}) : shell(*this, words) {}
};

TEST(Shell, QueriesErrorsAndCommands) {
    shell_of<staff_directory> session({"--null", "NA", "staff.csv", "sales.csv"});
    running_shell& shell = session.shell;
    shell.type("SELECT name, ';' AS x -- ; no end\n");
    EXPECT_TRUE(shell.prompts("..> "));
    shell.type("FROM staff LIMIT 1; SELECT 6 + 1 AS\n");
    EXPECT_TRUE(shell.shows(" name | x\n------+---\n Ada  | ;\n"));
    EXPECT_TRUE(shell.prompts("..> "));
    shell.type("\x03"); // the second one
    EXPECT_TRUE(shell.shows("^C\nbifun> "));
    shell.type("SELECT nmae FROM staff;\n");
    EXPECT_TRUE(shell.shows("bifun: SQL, character 8, near nmae"));
    shell.type("\\d\n");
    EXPECT_TRUE(shell.shows("staff  staff.csv\nsales  sales.csv\n"));
    shell.type("\\types\n\\types salary=INT\n\\types salary:DOUBLE\n\\types price:DECIMAL(5,2),sales.day:VARCHAR\n\\types "
               "x:INT\n\\types\n\\d STAFF\n");
    EXPECT_TRUE(shell.shows("No types are given"));
    EXPECT_TRUE(shell.shows("bifun: \\types: \"salary=INT\" is not of the form name:TYPE\n"));
    EXPECT_TRUE(shell.shows("bifun: \\types: no file has a column x\n"));
    EXPECT_TRUE(shell.shows("salary:DOUBLE,price:DECIMAL(5, 2),sales.day:VARCHAR\n"));
    EXPECT_TRUE(shell.shows("name        VARCHAR\n\"Hired On\"  DATE\nsalary      DOUBLE\n"));
    shell.type("\\d sales\n\\types none\n\\d STAFF\n");
    EXPECT_TRUE(shell.shows("day    VARCHAR\nprice  DECIMAL(5, 2)\n"));
    EXPECT_TRUE(shell.shows("salary      DECIMAL\n"));
    shell.type("\\types day:VARCHAR\nSELECT day FROM sales WHERE day > '2024-01-01';\n");
    EXPECT_TRUE(shell.shows("bifun: day is text, and compared as such with '2024-01-01'"));
    shell.type("\\types none\n\\h nvl\n");
    EXPECT_TRUE(shell.shows("Entry points"));
    shell.type("\\set charset=none\n");
    EXPECT_TRUE(shell.shows("bifun: \\set: charset cannot be \"none\""));
    shell.type("\\set compatible_mode=2\n\\format jsonl\n\\timing\nSELECT NVL('', 'x') AS v;\n");
    EXPECT_TRUE(shell.shows("{\"v\": \"x\"}\n"));
    EXPECT_TRUE(shell.shows(" s\n"));
    shell.type("\\o out.csv\n\\format\nSELECT 1 AS a;\nSELECT 2 AS b;\n");
    EXPECT_TRUE(shell.shows("the result is in out.csv\n"));
    EXPECT_TRUE(shell.shows(" b\n"));
    EXPECT_EQ(read_file(session.path / "out.csv"), "a\n1\n");
    shell.type(".tables\n");
    EXPECT_TRUE(shell.shows("staff  staff.csv\n"));
    shell.type("\\set delimiter=;\n\\skip 2\n");
    EXPECT_TRUE(
        shell.shows("bifun: \\set: files are read as the options of bifun say when the shell begins, as in: bifun --delimiter tab"));
    EXPECT_TRUE(shell.shows("bifun: there is no command \\skip; files are read as"));
    shell.type("SELECT 'it''s\n");
    EXPECT_TRUE(shell.prompts("'> "));
    shell.type("' AS \"a\n");
    EXPECT_TRUE(shell.prompts("\"> "));
    shell.type("b\"/*\n");
    EXPECT_TRUE(shell.prompts("*> "));
    shell.type("*/;\n");
    EXPECT_TRUE(shell.shows("it's"));
    shell.type("\\nothing\n");
    EXPECT_TRUE(shell.shows("bifun: there is no command \\nothing; \\? lists what there is\n"));
}

struct directory_of_near_names : scratch_directory {
    directory_of_near_names() { write("n.csv", "id,ID,x\n1,2,3\n"); }
};

TEST(Shell, TypesOfColumnsThatDifferInCase) {
    shell_of<directory_of_near_names> session({"n.csv"});
    running_shell& shell = session.shell;
    shell.type("\\types id:VARCHAR,x:VARCHAR\n\\types ID:DOUBLE,X:BIGINT\n\\types ID:DECIMAL\n\\types\n");
    EXPECT_TRUE(shell.shows("id:VARCHAR,X:BIGINT,ID:DECIMAL\n"));
}

TEST(Shell, Completion) {
    shell_of<staff_directory> session({"staff.csv"});
    running_shell& shell = session.shell;
    shell.type("sel\t\"hi\t, sala\t, datedi\tDAY, \"H\t, DATE '2019-04-01') fr\t st\t;\n");
    EXPECT_TRUE(shell.shows("select \"Hired On\", salary, datediff(DAY, \"Hired On\", DATE '2019-04-01') from staff"));
    EXPECT_TRUE(shell.shows("10.5 "));
    EXPECT_TRUE(shell.prompts("bifun> "));
    shell.type("\\se\tcase_s\t0\n");
    EXPECT_TRUE(shell.shows("\\set case_sensitive=0"));
    EXPECT_TRUE(shell.prompts("bifun> "));
    shell.type("SELECT 'sal\t' < TO_\t");
    EXPECT_TRUE(shell.shows("TO_CHAR("));
}

TEST(Shell, HistoryIsKept) {
    const scratch_directory directory;
    for (const char* const text : {"SELECT 11 AS first,\n22 AS second, 'ä' AS third;\n", "SELECT 33 AS fourth;\n"}) {
        running_shell shell(directory, {});
        shell.type(text);
        EXPECT_TRUE(shell.shows("---"));
        EXPECT_TRUE(shell.prompts("bifun> "));
    }
    running_shell shell(directory, {});
    shell.type("\x10\x10\n"); // up, twice
    EXPECT_TRUE(shell.shows(" first | second | third\n"));
    EXPECT_TRUE(shell.shows("| ä\n"));
    EXPECT_TRUE(shell.prompts("bifun> "));
    EXPECT_EQ(std::filesystem::status(directory.path / "state/bifun/history").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

// Pipes that never end: the query is at one of them when Ctrl-C comes, whether it has something to read or not.
TEST(Shell, CtrlCEndsTheQueryAlone) {
    const scratch_directory directory;
    for (const char* const writer : {"yes 1", "sleep 30"}) {
        const std::string name = joined({writer, ".csv"});
        const std::string pipe = (directory.path / name).string();
        // The writer is left with nothing of the test's own output, for which somebody may wait.
        const std::string endless =
            joined({"mkfifo '", pipe, "' && { sh -c '{ echo x; seq 9; exec ", writer, "; } >\"$0\"' '", pipe, "' >/dev/null 2>&1 & }"});
        ASSERT_EQ(std::system(endless.c_str()), 0);
        running_shell shell(directory, {"--format", "csv", "--types", "x:INT", "--batch-rows", "3", name});
        shell.type(joined({"SELECT x AS digit FROM \"", writer, "\";\n"}));
        usleep(100'000);
        shell.type("\x03");
        EXPECT_TRUE(shell.shows("bifun: interrupted\n"));
        EXPECT_TRUE(shell.prompts("bifun> "));
        shell.type("SELECT 42;\n");
        EXPECT_TRUE(shell.shows("\n42\n"));
        EXPECT_TRUE(shell.prompts("bifun> "));
    }
}

// None comes between two reads of the line.
TEST(Shell, CtrlCIsNeverLost) {
    shell_of<scratch_directory> session;
    running_shell& shell = session.shell;
    for (int i = 0; i < 200; ++i) {
        shell.type(i % 2 == 0 ? "\x03" : "SELECT");
        shell.type(i % 2 == 0 ? "" : "\x03");
        EXPECT_TRUE(shell.shows("^C\n"));
        EXPECT_TRUE(shell.shows("bifun> "));
    }
}

TEST(Shell, BadFilesEndIt) {
    const scratch_directory directory;
    for (const auto& [file, message] : {std::pair("missing.csv", "bifun: missing.csv"), std::pair("-", "and no table")}) {
        terminal shell(directory, BIFUN_PROGRAM_COMMAND, {file});
        EXPECT_TRUE(shell.shows(message));
        EXPECT_EQ(shell.exit_status(), 1);
    }
}

TEST(Shell, FilesThatCannotBeReadLeaveTheOthers) {
    const scratch_directory directory;
    directory.write("empty.csv", "");
    directory.write("t.csv", "a\n7\n");
    terminal shell(directory, BIFUN_PROGRAM_COMMAND, {"empty.csv", "t.csv"});
    EXPECT_TRUE(shell.shows("bifun: empty.csv: the file is empty"));
    EXPECT_TRUE(shell.prompts("bifun> "));
    shell.type("SELECT a + 1 AS b FROM t;\r");
    EXPECT_TRUE(shell.shows("8"));
    EXPECT_TRUE(shell.prompts("bifun> "));
    shell.type("\x04");
    EXPECT_EQ(shell.exit_status(), 0);
}

// Each option of the help, as the other shells write it.
TEST(Completions, HaveAllOptions) {
    const scratch_directory directory;
    std::set<std::string> options;
    for (const arguments& words : {arguments{"--help"}, arguments{"describe", "--help"}, arguments{"functions", "--help"}}) {
        const std::string help = directory.run(words).out;
        const std::regex pattern("\n +(?:-[a-z],)?--([a-z][a-z-]*)");
        for (std::sregex_iterator found(help.begin(), help.end(), pattern), end; found != end; ++found) {
            options.insert((*found)[1]);
        }
    }
    EXPECT_TRUE(options.contains("format") && options.contains("markdown"));
    const std::string bash = read_file(BIFUN_COMPLETIONS "/bifun");
    const std::string zsh = read_file(BIFUN_COMPLETIONS "/_bifun");
    const std::string fish = read_file(BIFUN_COMPLETIONS "/bifun.fish");
    for (const std::string& option : options) {
        EXPECT_TRUE(std::regex_search(bash, std::regex("--" + option + "[ '\"\n]"))) << option;
        EXPECT_TRUE(std::regex_search(zsh, std::regex("--" + option + "\\["))) << option;
        EXPECT_TRUE(std::regex_search(fish, std::regex("-l " + option + " "))) << option;
    }
}

bool is_installed(const char* program) { return std::system(joined({"command -v ", program, " >/dev/null"}).c_str()) == 0; }

// Puts the program under test, as the directory's bifun, before others of its name.
const std::string path_of_program = "PATH=$PWD:$PATH";
void write_program(const scratch_directory& directory) {
    directory.write("bifun", "#!/bin/sh\nexec " BIFUN_PROGRAM_COMMAND " \"$@\"\n");
    std::filesystem::permissions(directory.path / "bifun", std::filesystem::perms::owner_all);
}

std::string shell_output(const scratch_directory& directory, const std::string& command) {
    write_program(directory);
    EXPECT_EQ(std::system(joined({"cd '", directory.path.string(), "' && ", path_of_program, " ", command, " >out"}).c_str()), 0);
    return read_file(directory.path / "out");
}

// Words behind bifun, and what the last of them becomes, which = may cut into two.
struct completed_words {
    std::string words, completed;
};
const completed_words completions[] = {
    {"sta", "staff.csv"},
    {"staff.csv --fo", "--format"},
    {"--format ma", "markdown"},
    {"--set charset=gb", "charset=gb18030"},
    {"--null NA --fi", "--fill-short-rows"},
    {"functions nv", "NVL"},
    {"des", "describe"},
    {"describe --ty", "--types"},
};

// By a command that prints what there is for the words in $WORDS, one a line.
void expect_completions(const scratch_directory& directory, const std::string& command) {
    for (const completed_words& tested : completions) {
        const std::string shown = shell_output(directory, joined({"WORDS='", tested.words, "' ", command}));
        const std::string behind_sign = tested.completed.substr(tested.completed.find('=') + 1);
        EXPECT_TRUE(shown.starts_with(tested.completed) || shown.starts_with(behind_sign)) << tested.words << '\n' << shown;
    }
}

TEST(Completions, OfBash) {
    const staff_directory directory;
    directory.write("complete.sh", joined({"compopt() { :; }; . '", BIFUN_COMPLETIONS,
                                           "/bifun'\nCOMP_WORDS=(bifun ${WORDS//=/ = }) COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _bifun\n"
                                           "printf '%s\\n' \"${COMPREPLY[@]}\"\n"}));
    expect_completions(directory, "bash complete.sh");
}

TEST(Completions, OfFish) {
    if (!is_installed("fish")) {
        GTEST_SKIP() << "fish is not installed";
    }
    expect_completions(staff_directory(), joined({"HOME=. fish --no-config -c \"source '", BIFUN_COMPLETIONS,
                                                  "/bifun.fish'; complete -C \\\"bifun \\$WORDS\\\"\" | cut -f1"}));
}

TEST(Completions, OfZsh) {
    if (!is_installed("zsh")) {
        GTEST_SKIP() << "zsh is not installed";
    }
    const staff_directory directory;
    write_program(directory);
    directory.write(".zshrc", joined({path_of_program, "\nfpath=('", BIFUN_COMPLETIONS, "' $fpath)\nautoload -U compinit\ncompinit -u -D\n",
                                      "PS1='zsh> '\n"}));
    terminal shell(directory, "zsh", {"-d"});
    for (const completed_words& tested : completions) {
        EXPECT_TRUE(shell.prompts("zsh> "));
        shell.type(joined({"bifun ", tested.words, "\t"}));
        EXPECT_TRUE(shell.shows(joined({tested.completed, " "}))) << tested.words;
        shell.type("\x15\n"); // takes the line back
    }
}

} // namespace
