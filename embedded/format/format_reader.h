// SPDX-License-Identifier: Apache-2.0
// Reading a text of fixed words in any case.
#ifndef BIFUN_EMBEDDED_FORMAT_FORMAT_READER_H
#define BIFUN_EMBEDDED_FORMAT_FORMAT_READER_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zqengine {

// The text from `next` on is still to be read.
struct format_reader {
    const std::uint8_t* next;
    const std::uint8_t* end;
};

// Reads `word`, in upper case, where it comes next in any case; else reads nothing.
inline bool take(format_reader& text, std::string_view word) {
    if (static_cast<std::size_t>(text.end - text.next) < word.size()) {
        return false;
    }
    for (std::size_t i = 0; i < word.size(); ++i) {
        const std::uint8_t byte = text.next[i];
        if ((byte >= 'a' && byte <= 'z' ? byte - ('a' - 'A') : byte) != word[i]) {
            return false;
        }
    }
    text.next += word.size();
    return true;
}

} // namespace zqengine

#endif
