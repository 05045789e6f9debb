// SPDX-License-Identifier: Apache-2.0
#include "engine/memory.h"

#include <new>

#include "embedded/memory/allocation.h"
#include "embedded/memory/arena.h"
#include "embedded/memory/pending_failure.h"

using zqengine::arena;
using zqengine::arena_block;
using zqengine::arena_mark;

namespace {

// Lies before the bytes of every allocation.
struct alignas(16) allocation {
    allocation* previous;
    arena_block* block; // in which it lies
    std::size_t number; // in the order of taking, from 1
    bool released;
};

} // namespace

// Allocations are stacked in an arena. One that is released is given back at once when it is on top, else when those above it are.
struct mem_heap {
    arena bytes;
    allocation* newest;
    std::size_t taken; // allocations so far
};

namespace {

mem_heap* create_heap(std::uint32_t initial_size) {
    void* const memory = zqengine::allocate(sizeof(mem_heap));
    if (memory == nullptr) {
        return nullptr;
    }
    mem_heap* const heap = new (memory) mem_heap{};
    if (arena_grow(heap->bytes, initial_size, alignof(allocation)) == nullptr) {
        zqengine::release(heap, sizeof(mem_heap));
        return nullptr;
    }
    arena_clear(heap->bytes);
    return heap;
}

void destroy_heap(mem_heap* heap) {
    arena_release(heap->bytes);
    zqengine::release(heap, sizeof(mem_heap));
}

// Takes off the stack what is newer than allocation `number`, and what is released below that.
void unstack(mem_heap& heap, std::size_t number) {
    while (heap.newest != nullptr && (heap.newest->number > number || heap.newest->released)) {
        const arena_mark before{heap.newest->block, reinterpret_cast<std::uint8_t*>(heap.newest)};
        heap.newest = heap.newest->previous;
        arena_free_to(heap.bytes, before);
    }
}

void* allocate_from_heap(bifun_environment* /*environment*/, void* from, std::uint32_t size, const char* /*file*/, std::uint32_t /*line*/) {
    if (zqengine::must_fail()) {
        return nullptr;
    }
    mem_heap& heap = *static_cast<mem_heap*>(from);
    std::uint8_t* const memory = arena_take(heap.bytes, sizeof(allocation) + std::size_t{size}, alignof(allocation));
    if (memory == nullptr) {
        return nullptr;
    }
    heap.newest = new (memory) allocation{heap.newest, heap.bytes.newest, ++heap.taken, false};
    return heap.newest + 1;
}

void release_to_heap(bifun_environment* /*environment*/, void* to, void* pointer) {
    if (pointer == nullptr) {
        return;
    }
    mem_heap& heap = *static_cast<mem_heap*>(to);
    (static_cast<allocation*>(pointer) - 1)->released = true;
    unstack(heap, heap.taken);
}

} // namespace

mem_heap* mem_heap_create_low(bifun_environment* /*environment*/, int32_t /*reserved_1*/, int32_t /*reserved_2*/, uint32_t initial_size,
                              void* /*context*/, const char* /*file*/, uint32_t /*line*/, int32_t /*kind*/) {
    return zqengine::must_fail() ? nullptr : create_heap(initial_size);
}

void mem_heap_free(bifun_environment* /*environment*/, mem_heap* heap) { destroy_heap(heap); }

mem_heap_mark mem_heap_get_heap_top(mem_heap* heap) { return {heap->taken}; }

void mem_heap_free_heap_top(bifun_environment* /*environment*/, mem_heap* heap, mem_heap_mark mark) { unstack(*heap, mark.taken); }

bifun_memory_object* rt_memobj_create_ex(bifun_environment* /*environment*/, int32_t /*reserved*/, uint32_t size, const char* /*file*/,
                                         uint32_t /*line*/) {
    if (zqengine::must_fail()) {
        return nullptr;
    }
    void* const memory = zqengine::allocate(sizeof(bifun_memory_object));
    if (memory == nullptr) {
        return nullptr;
    }
    mem_heap* const heap = create_heap(size);
    if (heap == nullptr) {
        zqengine::release(memory, sizeof(bifun_memory_object));
        return nullptr;
    }
    return new (memory) bifun_memory_object{{nullptr, nullptr}, allocate_from_heap, release_to_heap, nullptr, heap};
}

void rt_memobj_destroy(bifun_environment* /*environment*/, bifun_memory_object* memory) {
    if (memory != nullptr) {
        destroy_heap(static_cast<mem_heap*>(memory->heap));
        zqengine::release(memory, sizeof(bifun_memory_object));
    }
}
