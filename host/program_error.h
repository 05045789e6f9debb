// SPDX-License-Identifier: Apache-2.0
// What the program tells the user when it cannot go on.
#ifndef BIFUN_HOST_PROGRAM_ERROR_H
#define BIFUN_HOST_PROGRAM_ERROR_H

#include <stdexcept>
#include <string>
#include <utility>

#include <fmt/format.h>

namespace host {

// Its text is printed behind "bifun: " and the program exits with status 1.
struct program_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The reader of the standard output has gone away: the program ends quietly.
struct output_closed {};

template <class... Arguments> [[noreturn]] void fail(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    throw program_error(fmt::format(format, std::forward<Arguments>(arguments)...));
}

} // namespace host

#endif
