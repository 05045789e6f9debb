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

constexpr const char* staff = "name,Hired On,salary\nAda,2019-03-31,10.5\nGrace,2016-02-29,\n";

// The program on a terminal of its own.
class terminal {
  public:
    terminal(const scratch_directory& directory, const arguments& words) {
        winsize size{.ws_row = 50, .ws_col = 200, .ws_xpixel = 0, .ws_ypixel = 0}; // no line is wrapped
        pid_ = forkpty(&master_, nullptr, nullptr, &size);
        if (pid_ == 0) {
            setenv("XDG_STATE_HOME", (directory.path / "state").c_str(), 1);
            setenv("HOME", directory.path.c_str(), 1);
            setenv("TERM", "dumb", 1);
            setenv("ASAN_OPTIONS", "detect_leaks=0", 1); // el_end of libedit forgets two strings
            std::vector<const char*> list = {"sh", "-c", "exec " BIFUN_PROGRAM_COMMAND " \"$@\"", "sh"};
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
    testing::AssertionResult shows(const std::string& expected, int milliseconds = most_milliseconds) {
        while (shown_.find(expected) == std::string::npos) {
            if (!read_more(milliseconds)) {
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

    // Presses Ctrl-C, as people do once more where it comes between two looks of the line editor for keys.
    testing::AssertionResult abandons_line() {
        constexpr int shortly = 500;
        testing::AssertionResult abandoned = testing::AssertionFailure();
        for (int tries = 0; !abandoned && tries < most_milliseconds / shortly; ++tries) {
            type("\x03");
            abandoned = shows("bifun> ", shortly);
        }
        return abandoned;
    }

    int exit_status() {
        while (read_more(most_milliseconds)) {
        }
        kill(pid_, SIGKILL); // if it has not ended
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    static constexpr int most_milliseconds = 30'000;

    bool read_more(int milliseconds) {
        pollfd waiting{.fd = master_, .events = POLLIN, .revents = 0};
        if (poll(&waiting, 1, milliseconds) <= 0) {
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

TEST(Shell, QueriesErrorsAndCommands) {
    const scratch_directory directory;
    directory.write("staff.csv", staff);
    terminal shell(directory, {"staff.csv"});
    EXPECT_TRUE(shell.prompts("bifun> "));
    shell.type("SELECT name, ';' AS x -- ; no end\n");
    EXPECT_TRUE(shell.prompts("..> "));
    shell.type("FROM staff LIMIT 1; SELECT 6 + 1 AS\n");
    EXPECT_TRUE(shell.shows(" name | x\n------+---\n Ada  | ;\n"));
    EXPECT_TRUE(shell.prompts("..> "));
    EXPECT_TRUE(shell.abandons_line()); // the second one
    shell.type("SELECT nmae FROM staff;\n");
    EXPECT_TRUE(shell.shows("bifun: SQL, character 8, near nmae"));
    shell.type("\\d\n");
    EXPECT_TRUE(shell.shows("staff  staff.csv\n"));
    shell.type("\\d STAFF\n");
    EXPECT_TRUE(shell.shows("name        VARCHAR\n\"Hired On\"  DATE\nsalary      DECIMAL\n"));
    shell.type("\\h nvl\n");
    EXPECT_TRUE(shell.shows("Entry points"));
    shell.type("\\set charset=none\n");
    EXPECT_TRUE(shell.shows("bifun: \\set: charset cannot be \"none\""));
    shell.type("\\set compatible_mode=2\n\\format jsonl\n\\timing\nSELECT NVL('', 'x') AS v;\n");
    EXPECT_TRUE(shell.shows("{\"v\": \"x\"}\n"));
    EXPECT_TRUE(shell.shows(" s\n"));
    shell.type("\\o out.csv\n\\format\nSELECT 1 AS a;\nSELECT 2 AS b;\n");
    EXPECT_TRUE(shell.shows("the result is in out.csv\n"));
    EXPECT_TRUE(shell.shows(" b\n"));
    EXPECT_EQ(read_file(directory.path / "out.csv"), "a\n1\n");
    shell.type("\\nothing\n");
    EXPECT_TRUE(shell.shows("bifun: there is no command \\nothing; \\? lists what there is\n"));
    shell.type("\\q\n");
    EXPECT_EQ(shell.exit_status(), 0);
}

TEST(Shell, Completion) {
    const scratch_directory directory;
    directory.write("staff.csv", staff);
    terminal shell(directory, {"staff.csv"});
    EXPECT_TRUE(shell.prompts("bifun> "));
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
    for (const char* const text : {"SELECT 11 AS first,\n22 AS second;\n", "SELECT 33 AS third;\n"}) {
        terminal shell(directory, {});
        EXPECT_TRUE(shell.prompts("bifun> "));
        shell.type(text);
        EXPECT_TRUE(shell.shows("---"));
        EXPECT_TRUE(shell.prompts("bifun> "));
        shell.type("\x04");
        EXPECT_EQ(shell.exit_status(), 0);
    }
    terminal shell(directory, {});
    EXPECT_TRUE(shell.prompts("bifun> "));
    shell.type("\x10\x10\n"); // up, twice
    EXPECT_TRUE(shell.shows(" first | second\n"));
    EXPECT_TRUE(shell.prompts("bifun> "));
    EXPECT_EQ(std::filesystem::status(directory.path / "state/bifun/history").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

// A pipe that never ends: the query is at it when Ctrl-C comes.
TEST(Shell, CtrlCEndsTheQueryAlone) {
    const scratch_directory directory;
    const std::string pipe = (directory.path / "endless.csv").string();
    ASSERT_EQ(std::system(joined({"mkfifo '", pipe, "' && { { echo x; yes 1; } >'", pipe, "' 2>/dev/null & }"}).c_str()), 0);
    terminal shell(directory, {"--format", "csv", "endless.csv", "-"});
    EXPECT_TRUE(shell.shows("and no table"));
    terminal second(directory, {"--format", "csv", "endless.csv"});
    EXPECT_TRUE(second.prompts("bifun> "));
    second.type("SELECT x FROM endless;\n");
    EXPECT_TRUE(second.shows("1\n1\n1\n"));
    second.type("\x03");
    EXPECT_TRUE(second.shows("bifun: interrupted\n"));
    EXPECT_TRUE(second.prompts("bifun> "));
    second.type("SELECT 42;\n");
    EXPECT_TRUE(second.shows("\n42\n"));
    EXPECT_TRUE(second.prompts("bifun> "));
    second.type("\x04");
    EXPECT_EQ(second.exit_status(), 0);
}

TEST(Shell, BadFilesEndIt) {
    const scratch_directory directory;
    terminal shell(directory, {"missing.csv"});
    EXPECT_TRUE(shell.shows("bifun: missing.csv"));
    EXPECT_EQ(shell.exit_status(), 1);
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
        EXPECT_TRUE(std::regex_search(bash, std::regex("--" + option + "[ '\"]"))) << option;
        EXPECT_TRUE(std::regex_search(zsh, std::regex("--" + option + "\\["))) << option;
        EXPECT_TRUE(std::regex_search(fish, std::regex("-l " + option + " "))) << option;
    }
}

TEST(Completions, OfBash) {
    const scratch_directory directory;
    directory.write("staff.csv", staff);
    directory.write("complete.sh", joined({"bifun() { ", BIFUN_PROGRAM_COMMAND, " \"$@\"; }; compopt() { :; }; . '", BIFUN_COMPLETIONS,
                                           "/bifun'\nCOMP_WORDS=(bifun \"$@\") COMP_CWORD=$#; _bifun; echo \"${COMPREPLY[@]}\"\n"}));
    const auto completed = [&](const std::string& words) {
        const std::string command = joined({"cd '", directory.path.string(), "' && bash complete.sh ", words, " >out"});
        EXPECT_EQ(std::system(command.c_str()), 0);
        return read_file(directory.path / "out");
    };
    EXPECT_EQ(completed("sta"), "staff.csv\n");
    EXPECT_EQ(completed("staff.csv --fo"), "--format\n");
    EXPECT_EQ(completed("--format js"), "json jsonl\n");
    EXPECT_EQ(completed("--set charset = gb"), "gb18030\n");
    EXPECT_EQ(completed("functions nv"), "NVL\n");
    EXPECT_EQ(completed("des"), "describe\n");
}

} // namespace
