// SPDX-License-Identifier: Apache-2.0
#ifndef BIFUN_TESTS_CONTRACT_EXACT_BLOCK_H
#define BIFUN_TESTS_CONTRACT_EXACT_BLOCK_H

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// A text in a block of exactly its size, so that tools see every byte that is read beside it. Without bytes there is no block.
struct exact_block {
    explicit exact_block(std::string_view text)
        : bytes(text.empty() ? nullptr : new std::uint8_t[text.size()]), length(static_cast<std::uint32_t>(text.size())) {
        std::ranges::copy(text, bytes.get());
    }
    [[nodiscard]] std::uint8_t* data() const { return bytes.get(); }
    [[nodiscard]] std::string text() const { return {data(), data() + length}; }

    std::unique_ptr<std::uint8_t[]> bytes;
    std::uint32_t length;
};

#endif
