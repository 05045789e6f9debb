// SPDX-License-Identifier: Apache-2.0
// How wide text is on a terminal.
#ifndef BIFUN_HOST_OUTPUT_DISPLAY_WIDTH_H
#define BIFUN_HOST_OUTPUT_DISPLAY_WIDTH_H

#include <cstddef>
#include <string_view>

namespace host {

// The number of cells that valid UTF-8 text takes: two for wide East Asian characters and emoji, none for combining marks.
std::size_t display_width(std::string_view text);

} // namespace host

#endif
