// SPDX-License-Identifier: Apache-2.0
// The bytes of an input as a row of choices.
#ifndef BIFUN_FUZZ_CHOICES_H
#define BIFUN_FUZZ_CHOICES_H

#include <cstddef>
#include <cstdint>
#include <string_view>

// Where no bytes are left every choice is the first one, which is to be the plainest.
struct choices {
    std::string_view bytes;

    // Below `count`, which is at least 1.
    std::size_t below(std::size_t count) {
        std::size_t chosen = 0;
        for (std::size_t range = 1; range < count && !bytes.empty(); range <<= 8U) {
            chosen = chosen << 8U | static_cast<unsigned char>(bytes.front());
            bytes.remove_prefix(1);
        }
        return chosen % count;
    }

    // True for one in so many.
    bool once_in(std::size_t count) { return below(count) == count - 1; }

    template <class Value, std::size_t Count> const Value& of(const Value (&values)[Count]) { return values[below(Count)]; }
};

#endif
