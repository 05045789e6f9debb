// SPDX-License-Identifier: Apache-2.0
// bifun describe: what the columns of a file hold.
#ifndef BIFUN_HOST_FILE_DESCRIPTION_H
#define BIFUN_HOST_FILE_DESCRIPTION_H

#include <string>

#include "host/program_options.h"

namespace host {

// Throws program_error.
void describe_file(const std::string& path, const program_options& options);

} // namespace host

#endif
