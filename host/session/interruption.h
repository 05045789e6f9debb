// SPDX-License-Identifier: Apache-2.0
// Ctrl-C where it ends a query and not the program.
#ifndef BIFUN_HOST_SESSION_INTERRUPTION_H
#define BIFUN_HOST_SESSION_INTERRUPTION_H

namespace host {

// From now on SIGINT is only remembered; what it has asked for before is forgotten.
void begin_interruptible();

bool is_interrupted();

// Throws program_error after a SIGINT; to be called every few thousand rows.
void stop_if_interrupted();

} // namespace host

#endif
