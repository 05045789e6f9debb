// SPDX-License-Identifier: Apache-2.0
// bifun without a query, on a terminal.
#ifndef BIFUN_HOST_SHELL_SHELL_H
#define BIFUN_HOST_SHELL_SHELL_H

#include "host/program_options.h"

namespace host {

// Runs queries over the files, which are the words of the options, and the shell's own commands, until the input ends. Errors are shown
// and the shell goes on; throws program_error only where it cannot begin.
void run_shell(program_options options);

} // namespace host

#endif
