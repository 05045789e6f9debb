// SPDX-License-Identifier: Apache-2.0
// A progress bar on the standard error of a terminal.
#ifndef BIFUN_HOST_OUTPUT_PROGRESS_BAR_H
#define BIFUN_HOST_OUTPUT_PROGRESS_BAR_H

#include <chrono>
#include <cstdint>
#include <string_view>

namespace host {

// Shows itself when the work has taken a second and wipes itself away at the end. Nothing is ever written to anything but a terminal.
class progress_bar {
  public:
    progress_bar();
    ~progress_bar();
    progress_bar(const progress_bar&) = delete;
    progress_bar& operator=(const progress_bar&) = delete;

    // Says what is being done; `shares_terminal` keeps the bar away where rows go to the same screen.
    void begin(std::string_view activity, bool shares_terminal);

    // To be called for every row or batch: it looks at the clock only now and then. `size` is 0 where it is not known.
    void update(std::uint64_t bytes, std::uint64_t size, std::uint64_t rows) {
        if (enabled_ && rows >= next_look_) {
            show(bytes, size, rows);
        }
    }

    // Wipes the bar away.
    void clear();

  private:
    void show(std::uint64_t bytes, std::uint64_t size, std::uint64_t rows);

    using clock = std::chrono::steady_clock;
    bool on_terminal_;
    bool enabled_ = false;
    bool shown_ = false;
    std::string_view activity_;
    std::uint64_t next_look_ = 0;
    clock::time_point next_show_;
};

} // namespace host

#endif
