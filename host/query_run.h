// SPDX-License-Identifier: Apache-2.0
// A query over a file, from the command line to the output.
#ifndef BIFUN_HOST_QUERY_RUN_H
#define BIFUN_HOST_QUERY_RUN_H

#include "host/program_options.h"

namespace host {

// Throws program_error; what has been written before is closed as its format asks for.
void run_query(const program_options& options);

} // namespace host

#endif
