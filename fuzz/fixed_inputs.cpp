// SPDX-License-Identifier: Apache-2.0
// A fuzzer as a test: FUZZER_inputs COUNT [CORPUS] runs each line of the corpus and COUNT inputs that are always the same, made of random
// bytes or of lines with some bytes changed. The input in hand is in FUZZER_inputs.input, which stays where the program does not come to
// its end, for FUZZER FUZZER_inputs.input to run again.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using generator = std::minstd_rand; // the same everywhere, as the distributions of the library are not

std::size_t below(generator& random, std::size_t count) { return random() % count; }
char random_byte(generator& random) { return static_cast<char>(below(random, 256)); }

std::string random_bytes(generator& random) {
    constexpr std::size_t longest = 400;
    std::string bytes(below(random, longest), '\0');
    for (char& byte : bytes) {
        byte = random_byte(random);
    }
    return bytes;
}

// Some pieces of it taken out, doubled, swapped for one of another line, or changed.
std::string changed(std::string line, const std::vector<std::string>& lines, generator& random) {
    constexpr std::size_t most_changes = 4;
    constexpr std::size_t longest_piece = 12;
    for (std::size_t changes = 1 + below(random, most_changes); changes > 0; --changes) {
        const std::size_t at = below(random, line.size() + 1);
        const std::size_t length = 1 + below(random, longest_piece);
        const std::string& other = lines[below(random, lines.size())];
        const std::size_t from = below(random, other.size() + 1);
        switch (below(random, 4)) {
        case 0:
            line.erase(at, length);
            break;
        case 1:
            line.insert(at, line.substr(at, length));
            break;
        case 2:
            line.replace(at, length, other.substr(from, length));
            break;
        default:
            line.insert(at, 1, random_byte(random));
            break;
        }
    }
    return line;
}

// The file is kept open: opening it for each input would take longer than most of them.
struct kept_input {
    std::string path;
    int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);

    void run(const std::string& input) const {
        require(ftruncate(file, 0) == 0 && pwrite(file, input.data(), input.size(), 0) == static_cast<ssize_t>(input.size()));
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    }
};

} // namespace

int main(int argument_count, char** arguments) {
    if (argument_count < 2) {
        return EXIT_FAILURE;
    }
    const kept_input kept{.path = std::string(arguments[0]) + ".input"};
    std::vector<std::string> lines;
    if (argument_count > 2) {
        std::ifstream corpus(arguments[2], std::ios::binary);
        for (std::string line; std::getline(corpus, line);) {
            lines.push_back(line);
            kept.run(line);
        }
        if (lines.empty()) {
            return EXIT_FAILURE;
        }
    }
    constexpr generator::result_type seed = 20260114;
    generator random(seed);
    for (long left = std::atol(arguments[1]); left > 0; --left) {
        const bool is_line = !lines.empty() && below(random, 2) == 0;
        kept.run(is_line ? changed(lines[below(random, lines.size())], lines, random) : random_bytes(random));
    }
    return std::remove(kept.path.c_str());
}
