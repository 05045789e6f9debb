// SPDX-License-Identifier: Apache-2.0
#include "host/output/progress_bar.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include <fmt/format.h>
#include <unistd.h>

namespace host {

namespace {

// A bar that cannot be shown is no reason to stop.
void write_to_terminal(const std::string& text) {
    static_cast<void>(std::fputs(text.c_str(), stderr));
    static_cast<void>(std::fflush(stderr));
}

} // namespace

progress_bar::progress_bar() : on_terminal_(isatty(STDERR_FILENO) == 1), next_show_(clock::now() + std::chrono::seconds(1)) {}

progress_bar::~progress_bar() { clear(); }

void progress_bar::begin(std::string_view activity, bool shares_terminal) {
    clear();
    activity_ = activity;
    enabled_ = on_terminal_ && !shares_terminal;
    next_look_ = 0;
}

void progress_bar::clear() {
    if (shown_) {
        write_to_terminal("\r\033[K");
        shown_ = false;
    }
}

void progress_bar::show(std::uint64_t bytes, std::uint64_t size, std::uint64_t rows) {
    constexpr std::uint64_t rows_between_looks = 4096;
    next_look_ = rows + rows_between_looks;
    const auto now = clock::now();
    if (now < next_show_) {
        return;
    }
    next_show_ = now + std::chrono::milliseconds(100);
    std::string line;
    if (size > 0) {
        constexpr std::uint64_t width = 30;
        const std::uint64_t part = std::min(bytes, size);
        line = fmt::format("\r{} [{:-<{}}] {:3} %, {} rows\033[K", activity_, std::string(width * part / size, '#'), width,
                           100 * part / size, rows);
    } else {
        line = fmt::format("\r{}, {} rows\033[K", activity_, rows);
    }
    write_to_terminal(line);
    shown_ = true;
}

} // namespace host
