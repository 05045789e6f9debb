// SPDX-License-Identifier: Apache-2.0
#include "tests/host/program_run.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

namespace program_run {

std::string joined(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts) {
        text.append(part);
    }
    return text;
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string made;
    for (std::size_t i = 0; i < count; ++i) {
        made += text;
    }
    return made;
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

run_result scratch_directory::run(const arguments& words, const std::string& output, const std::string& input) const {
    const std::string piped = input.empty() ? "" : joined({"cat '", input, "' | "});
    std::string command = joined({"cd '", path.string(), "' && ", piped, BIFUN_PROGRAM_COMMAND});
    for (const std::string& word : words) {
        command += joined({" '", replaced(word, "'", "'\\''"), "'"});
    }
    const int wait_status = std::system(joined({command, input.empty() ? " </dev/null" : "", " >", output, " 2>err"}).c_str());
    return {read_file(path / "out"), read_file(path / "err"), WIFEXITED(wait_status) ? WEXITSTATUS(wait_status) : -1};
}

namespace {

bool is_like(std::string_view text, std::string_view expected) {
    const std::size_t rest = expected.find(" ...");
    return rest == std::string_view::npos ? text == expected : text.starts_with(expected.substr(0, rest));
}

} // namespace

void expect_answer(const std::string& file, const std::string& sql, const std::string& out, arguments options, const std::string& message) {
    SCOPED_TRACE(sql);
    const scratch_directory directory;
    if (!file.empty()) {
        directory.write("t.csv", file);
        options.emplace_back("t.csv");
    }
    options.push_back(sql);
    const run_result result = directory.run(options);
    EXPECT_EQ(result.out, out);
    EXPECT_TRUE(message.empty() ? result.err.empty() : is_like(result.err, joined({"bifun: ", message, "\n"}))) << result.err;
    EXPECT_EQ(result.status, message.empty() ? 0 : 1);
}

void expect_notices(const std::string& file, const std::string& sql, const std::string& out, const std::vector<std::string>& messages,
                    arguments options) {
    SCOPED_TRACE(sql);
    const scratch_directory directory;
    directory.write("t.csv", file);
    options.insert(options.end(), {"t.csv", sql});
    const run_result result = directory.run(options);
    EXPECT_EQ(result.out, out);
    std::string all;
    for (const std::string& message : messages) {
        all += joined({"bifun: ", message, "\n"});
    }
    EXPECT_EQ(result.err, all);
    EXPECT_EQ(result.status, 0);
}

void expect_failure(const std::string& file, const std::string& sql, const std::string& message, const arguments& options) {
    expect_answer(file, sql, "", options, message);
}

void expect_read(const std::vector<read_file_case>& cases) {
    for (const read_file_case& tested : cases) {
        SCOPED_TRACE(joined({tested.file, ": ", tested.text}));
        const scratch_directory directory;
        directory.write(tested.file, tested.text);
        arguments words = tested.options;
        words.insert(words.end(), {tested.file, "SELECT * FROM t"});
        const run_result result = directory.run(words);
        EXPECT_EQ(result.out, tested.out);
        EXPECT_EQ(result.err, tested.message.empty() ? "" : joined({"bifun: ", tested.message, "\n"}));
        EXPECT_EQ(result.status, 0);
    }
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
    const run_result result = scratch_directory().run(options);
    if (!result.err.empty()) {
        const std::string message = replaced(result.err.substr(0, result.err.size() - 1), "SQL, character ", "");
        return message.substr(message.find(' ') + 1);
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
        const std::string result = shown(tested.expressions, tested.options);
        EXPECT_TRUE(is_like(result, tested.result)) << tested.expressions << '\n' << result;
    }
}

} // namespace program_run
