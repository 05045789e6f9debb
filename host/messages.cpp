// SPDX-License-Identifier: Apache-2.0
#include "host/messages.h"

#include <cstdio>

#include <fmt/format.h>
#include <unistd.h>

#include "host/output/output_stream.h"

namespace host {
namespace {

std::string one_line(std::string text) {
    for (char& c : text) {
        c = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? ' ' : c;
    }
    return text;
}

} // namespace

void print(const std::string& text) {
    output_stream stream{.file = STDOUT_FILENO, .text = text};
    stream.flush();
}

// There is nowhere left to say that this cannot be written.
void print_message(const std::string& message) {
    static_cast<void>(std::fputs(fmt::format("bifun: {}\n", one_line(message)).c_str(), stderr));
}

} // namespace host
