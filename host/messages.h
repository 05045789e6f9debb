// SPDX-License-Identifier: Apache-2.0
// What the program says besides its results.
#ifndef BIFUN_HOST_MESSAGES_H
#define BIFUN_HOST_MESSAGES_H

#include <string>

namespace host {

// On the standard output.
void print(const std::string& text);

// On the standard error, behind "bifun: " and in one line, whatever a file or a query holds.
void print_message(const std::string& message);

} // namespace host

#endif
