// SPDX-License-Identifier: Apache-2.0
#include "host/session/interruption.h"

#include <atomic>
#include <csignal>

#include <poll.h>

#include "host/program_error.h"

namespace host {
namespace {

std::atomic<bool> has_come = false;
static_assert(std::atomic<bool>::is_always_lock_free);

void remember_interruption(int /*signal*/) { has_come = true; }

} // namespace

// A read that waits for a pipe is interrupted.
void catch_interruptions() {
    struct sigaction action {};
    action.sa_handler = remember_interruption;
    sigaction(SIGINT, &action, nullptr);
}

bool take_interruption() { return has_come.exchange(false); }

void stop_if_interrupted() {
    if (take_interruption()) {
        fail("interrupted");
    }
}

// The signal is held back between the look at what has come and the wait.
bool wait_for_input(int file) {
    sigset_t interruption;
    sigset_t before;
    sigemptyset(&interruption);
    sigaddset(&interruption, SIGINT);
    sigprocmask(SIG_BLOCK, &interruption, &before);
    pollfd waiting{.fd = file, .events = POLLIN, .revents = 0};
    const bool is_readable = !has_come && ppoll(&waiting, 1, nullptr, &before) > 0;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    return is_readable;
}

} // namespace host
