// SPDX-License-Identifier: Apache-2.0
// Runs the program as people do: files and arguments in, output, message and exit status out.
#ifndef BIFUN_TESTS_HOST_PROGRAM_RUN_H
#define BIFUN_TESTS_HOST_PROGRAM_RUN_H

#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace program_run {

using arguments = std::vector<std::string>;

// gcc 12 takes operator+ of a literal and a string for an overlapping copy.
std::string joined(std::initializer_list<std::string_view> parts);

// The text with every `from` replaced.
std::string replaced(std::string text, std::string_view from, std::string_view to);

std::string repeated(std::string_view text, std::size_t count);

std::string read_file(const std::string& path);

struct run_result {
    std::string out;
    std::string err;
    int status = -1;
};

// A directory of its own for every test, which is the program's working directory too.
struct scratch_directory {
    std::filesystem::path path;

    scratch_directory();
    ~scratch_directory();
    scratch_directory(const scratch_directory&) = delete;
    scratch_directory& operator=(const scratch_directory&) = delete;

    void write(const std::string& name, const std::string& text) const;

    // `output` is where the shell is to send the program's standard output; `input`, unless it is empty, a file that goes to it by a pipe.
    [[nodiscard]] run_result run(const arguments& words, const std::string& output = "out", const std::string& input = {}) const;
};

// Expects this output of a query, and this message behind "bifun: " if any, of which ` ...` stands for any rest. `file`, unless it is
// empty, is t.csv.
void expect_answer(const std::string& file, const std::string& sql, const std::string& out, arguments options = {},
                   const std::string& message = {});

// Expects the output and, although all is well, the messages, each a line behind "bifun: ".
void expect_notices(const std::string& file, const std::string& sql, const std::string& out, const std::vector<std::string>& messages,
                    arguments options = {});

// Expects the message alone.
void expect_failure(const std::string& file, const std::string& sql, const std::string& message, const arguments& options = {});

// A file, all of which is queried, and the output; `message` behind "bifun: ", if any.
struct read_file_case {
    std::string file, text;
    arguments options;
    std::string out;
    std::string message = {};
};
void expect_read(const std::vector<read_file_case>& cases);

// The values of expressions, with ` ; ` between, as JSON shows them, or the message behind "bifun: " and "SQL, character " where there is
// an error.
std::string shown(const std::string& expressions, arguments options = {});

// Expressions and what `shown` makes of them.
struct shown_case {
    std::string expressions;
    std::string result;
    arguments options = {};
};
void expect_shown(std::initializer_list<shown_case> cases);

} // namespace program_run

#endif
