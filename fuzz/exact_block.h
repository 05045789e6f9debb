// What the fuzzers of single operations share.
#ifndef BIFUN_FUZZ_EXACT_BLOCK_H
#define BIFUN_FUZZ_EXACT_BLOCK_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// A text in a block of exactly its size, so that reading past it is caught.
struct exact_block {
    explicit exact_block(std::string_view text) : bytes(new std::uint8_t[text.size()]), length(static_cast<std::uint32_t>(text.size())) {
        std::ranges::copy(text, bytes.get());
    }
    std::unique_ptr<std::uint8_t[]> bytes;
    std::uint32_t length;
};

#endif
