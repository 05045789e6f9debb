// SPDX-License-Identifier: Apache-2.0
// What built-ins there are: bifun functions [NAME].
#ifndef BIFUN_HOST_FUNCTIONS_FUNCTION_LIST_H
#define BIFUN_HOST_FUNCTIONS_FUNCTION_LIST_H

#include <string>
#include <string_view>

namespace host {

// One line for every built-in.
std::string function_list();

// One built-in in full, with the entry points behind it. Throws where there is none of that name.
std::string function_description(std::string_view name);

} // namespace host

#endif
