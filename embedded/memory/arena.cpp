// SPDX-License-Identifier: Apache-2.0
#include "embedded/memory/arena.h"

#include <algorithm>
#include <new>

#include "embedded/memory/allocation.h"

namespace zqengine {

namespace {

constexpr std::size_t first_block_size = std::size_t{4} << 10;

// Doubling without end: what arena_clear and arena_free_to keep is the largest block while memory lasts, and after a few rounds a whole
// round fits in it.
std::size_t next_block_size(const arena_block* newest, std::size_t wanted) {
    return std::max(newest == nullptr ? first_block_size : newest->size * 2, wanted);
}

void release_block(arena_block* block) { release(block, sizeof(arena_block) + block->size); }

} // namespace

std::uint8_t* arena_grow(arena& target, std::size_t size, std::size_t /*alignment: a block begins aligned for any*/) {
    std::size_t block_size = next_block_size(target.newest, size);
    void* memory = allocate(sizeof(arena_block) + block_size);
    if (memory == nullptr) {
        block_size = std::max(first_block_size, size); // too much was asked for, perhaps
        memory = allocate(sizeof(arena_block) + block_size);
    }
    if (memory == nullptr) {
        return nullptr;
    }
    target.newest = new (memory) arena_block{target.newest, block_size};
    std::uint8_t* const bytes = bytes_of(target.newest);
    target.top = bytes + size;
    target.end = bytes + block_size;
    return bytes;
}

// Of the blocks added after the mark the newest stays, empty: taking the same again, row after row, needs no further block.
void arena_free_to(arena& target, arena_mark mark) {
    if (target.newest == mark.newest) {
        target.top = mark.top;
        return;
    }
    arena_block* const kept = target.newest;
    while (kept->older != mark.newest) {
        arena_block* const freed = kept->older;
        kept->older = freed->older;
        release_block(freed);
    }
    target.top = bytes_of(kept);
}

void arena_release(arena& target) {
    while (target.newest != nullptr) {
        arena_block* const freed = target.newest;
        target.newest = freed->older;
        release_block(freed);
    }
    target = {};
}

} // namespace zqengine
