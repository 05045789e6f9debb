// SPDX-License-Identifier: Apache-2.0
#include "host/session/interruption.h"

#include <csignal>

#include "host/program_error.h"

namespace host {
namespace {

volatile std::sig_atomic_t has_come = 0;

void remember_interruption(int /*signal*/) { has_come = 1; }

} // namespace

void begin_interruptible() {
    has_come = 0;
    static_cast<void>(std::signal(SIGINT, remember_interruption));
}

bool is_interrupted() { return has_come != 0; }

void stop_if_interrupted() {
    if (is_interrupted()) {
        fail("interrupted");
    }
}

} // namespace host
