// SPDX-License-Identifier: Apache-2.0
// Ctrl-C where it ends a query or a line and not the program.
#ifndef BIFUN_HOST_SESSION_INTERRUPTION_H
#define BIFUN_HOST_SESSION_INTERRUPTION_H

namespace host {

// From now on SIGINT is only remembered, until one of the functions below has told of it.
void catch_interruptions();

// Whether there has been a SIGINT since this was last asked.
bool take_interruption();

// Throws program_error after a SIGINT; to be called every few thousand rows, and where a system call has been interrupted.
void stop_if_interrupted();

// Waits until a file can be read; false where a signal comes meanwhile, or where there has been a SIGINT of which nobody has been told.
bool wait_for_input(int file);

} // namespace host

#endif
