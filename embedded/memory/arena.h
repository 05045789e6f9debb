// SPDX-License-Identifier: Apache-2.0
// A growing run of bytes that are freed together.
#ifndef BIFUN_EMBEDDED_MEMORY_ARENA_H
#define BIFUN_EMBEDDED_MEMORY_ARENA_H

#include <cstddef>
#include <cstdint>

#include "engine/columns.h"

namespace zqengine {

// The bytes of a block follow its record, aligned like it.
struct alignas(16) arena_block {
    arena_block* older;
    std::size_t size;
};

inline std::uint8_t* bytes_of(arena_block* block) { return reinterpret_cast<std::uint8_t*>(block + 1); }

// Begin with all members zero. Bytes are taken from `top`, by the library itself where they become strings of a result; where they do not
// fit, a larger block is added in front of the list.
struct arena : bdta3_free_bytes {
    arena_block* newest;
};

struct arena_mark {
    arena_block* newest;
    std::uint8_t* top;
};

// The slow part of arena_take: adds a block with room for `size` bytes and takes them from it.
[[nodiscard]] std::uint8_t* arena_grow(arena& target, std::size_t size, std::size_t alignment);

// `size` bytes aligned to `alignment`, a power of two up to 16; null when memory is exhausted, never for size 0.
[[nodiscard]] inline std::uint8_t* arena_take(arena& target, std::size_t size, std::size_t alignment) {
    const auto misalignment = reinterpret_cast<std::uintptr_t>(target.top) & (alignment - 1);
    const std::size_t padding = misalignment == 0 ? 0 : alignment - misalignment;
    if (target.top == nullptr || static_cast<std::size_t>(target.end - target.top) < padding + size) {
        return arena_grow(target, size, alignment);
    }
    std::uint8_t* const bytes = target.top + padding;
    target.top = bytes + size;
    return bytes;
}

inline arena_mark arena_top(const arena& target) { return {target.newest, target.top}; }

// Frees what was taken after the mark. The arena may keep a block for later use.
void arena_free_to(arena& target, arena_mark mark);

// Forgets everything taken but keeps the newest block, mostly the largest, so that a steady load stops allocating.
inline void arena_clear(arena& target) {
    if (target.newest != nullptr && target.newest->older == nullptr) [[likely]] {
        target.top = bytes_of(target.newest);
    } else {
        arena_free_to(target, {nullptr, nullptr});
    }
}

// Releases all memory; the arena is as at the beginning.
void arena_release(arena& target);

} // namespace zqengine

#endif
