// SPDX-License-Identifier: Apache-2.0
// docs/functions.md: bifun functions --markdown.
#ifndef BIFUN_HOST_FUNCTIONS_FUNCTION_REFERENCE_H
#define BIFUN_HOST_FUNCTIONS_FUNCTION_REFERENCE_H

#include <string>

namespace host {

// All built-ins with their examples, which are evaluated, and the entry points behind them. Throws where an example fails.
std::string function_reference();

} // namespace host

#endif
