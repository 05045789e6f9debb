#include "tests/host/program_run.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <utility>

#include <gtest/gtest.h>

namespace program_run {

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) {
        text.append(part);
    }
    return text;
}

std::string read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

scratch_directory::scratch_directory() {
    std::string name = (std::filesystem::temp_directory_path() / "bifun-test-XXXXXX").string();
    path = mkdtemp(name.data());
}

scratch_directory::~scratch_directory() { std::filesystem::remove_all(path); }

void scratch_directory::write(const std::string& name, const std::string& text) const {
    std::ofstream(path / name, std::ios::binary) << text;
}

run_result scratch_directory::run(arguments words, int output) const {
    words.insert(words.begin(), BIFUN_PROGRAM_PATH);
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    const std::string out = path / "out";
    const std::string err = path / "err";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, path.c_str());
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (output < 0) {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    } else {
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    }
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t child = 0;
    EXPECT_EQ(posix_spawn(&child, BIFUN_PROGRAM_PATH, &actions, nullptr, pointers.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    int wait_status = 0;
    EXPECT_EQ(waitpid(child, &wait_status, 0), child);
    return {output < 0 ? read_file(out) : "", read_file(err), WIFEXITED(wait_status) ? WEXITSTATUS(wait_status) : -1};
}

void expect_answer(const std::string& file, const std::string& sql, const std::string& out, arguments options, const std::string& message) {
    SCOPED_TRACE(sql);
    const scratch_directory directory;
    if (!file.empty()) {
        directory.write("t.csv", file);
        options.emplace_back("t.csv");
    }
    options.push_back(sql);
    const run_result result = directory.run(std::move(options));
    EXPECT_EQ(result.out, out);
    EXPECT_EQ(result.err, message.empty() ? "" : joined({"bifun: ", message, "\n"}));
    EXPECT_EQ(result.status, message.empty() ? 0 : 1);
}

void expect_failure(const std::string& file, const std::string& sql, const std::string& message, const arguments& options) {
    expect_answer(file, sql, "", options, message);
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string shown(const std::string& expressions, arguments options) {
    const std::string list = replaced(expressions, " ; ", " AS v, ");
    options.insert(options.end(), {"--format", "json", joined({"SELECT ", list, " AS v"})});
    const run_result result = scratch_directory().run(std::move(options));
    const std::string_view message = result.err;
    if (!message.empty()) {
        return std::string(message.substr(message.find(' ') + 1, message.size() - message.find(' ') - 2));
    }
    const std::size_t begin = result.out.find('{') + 1;
    std::string values = replaced(result.out.substr(begin, result.out.rfind('}') - begin), "\"v\": ", "");
    for (std::size_t number = 2; values.find("\"v_") != std::string::npos; ++number) {
        values = replaced(values, joined({"\"v_", std::to_string(number), "\": "}), "");
    }
    return values;
}

void expect_shown(std::initializer_list<shown_case> cases) {
    for (const shown_case& tested : cases) {
        EXPECT_EQ(shown(tested.expressions, tested.options), tested.result) << tested.expressions;
    }
}

} // namespace program_run
