#include "engine/memory.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "embedded/columns/column_storage.h"
#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"
#include "engine/columns.h"

namespace {

bifun_environment environment;

struct memory_deleter {
    void operator()(bifun_memory_object* memory) const { rt_memobj_destroy(&environment, memory); }
};
using memory_pointer = std::unique_ptr<bifun_memory_object, memory_deleter>;

memory_pointer create_memory() { return memory_pointer(rt_memobj_create_ex(&environment, 0, 4096, "memory_test", __LINE__)); }

std::uint8_t* take(const memory_pointer& memory, std::uint32_t size) {
    return static_cast<std::uint8_t*>(memory->allocate(&environment, memory->heap, size, "memory_test", __LINE__));
}

void give_back(const memory_pointer& memory, void* pointer) { memory->release(&environment, memory->heap, pointer); }

mem_heap* heap_of(const memory_pointer& memory) { return static_cast<mem_heap*>(memory->heap); }

// Bytes that all hold one number, which nobody else may overwrite.
struct tagged {
    std::uint8_t* bytes;
    std::uint32_t size;
    std::uint8_t tag;
};

tagged take_tagged(const memory_pointer& memory, std::uint32_t size, std::size_t tag) {
    const tagged result = {take(memory, size), size, static_cast<std::uint8_t>(tag)};
    std::memset(result.bytes, result.tag, size);
    return result;
}

bool is_whole(const tagged& t) {
    return std::all_of(t.bytes, t.bytes + t.size, [&](std::uint8_t byte) { return byte == t.tag; });
}

TEST(Heap, MarksNestOverSeveralBlocks) {
    const std::int64_t before = zqengine::live_bytes();
    memory_pointer memory = create_memory();
    std::vector<tagged> taken;
    std::vector<std::pair<mem_heap_mark, std::size_t>> marks;
    for (std::uint32_t level = 0; level < 6; ++level) {
        marks.emplace_back(mem_heap_get_heap_top(heap_of(memory)), taken.size());
        for (const std::uint32_t size : {0U, 1U, 100U, 3000U, 5000U, 17U, 70000U}) {
            taken.push_back(take_tagged(memory, size, taken.size()));
        }
    }
    // Freeing to a mark and taking anew leaves what is older whole; the outer marks stay valid.
    for (std::size_t level = marks.size(); level-- > 0;) {
        mem_heap_free_heap_top(&environment, heap_of(memory), marks[level].first);
        taken.resize(marks[level].second);
        for (const std::uint32_t size : {40U, 200000U}) {
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(take_tagged(memory, size, 255).bytes) % 16, 0U);
        }
        EXPECT_TRUE(std::all_of(taken.begin(), taken.end(), is_whole)) << level;
    }
    memory.reset();
    EXPECT_EQ(zqengine::live_bytes(), before);
}

TEST(Heap, WhatIsOlderThanAMarkMayBeReleasedAfterIt) {
    const memory_pointer memory = create_memory();
    const tagged older = take_tagged(memory, 50, 1);
    std::uint8_t* const top = take(memory, 50);
    const mem_heap_mark mark = mem_heap_get_heap_top(heap_of(memory));
    give_back(memory, top);
    std::uint8_t* const newer = take(memory, 50);
    mem_heap_free_heap_top(&environment, heap_of(memory), mark);
    EXPECT_EQ(take(memory, 50), newer); // freed
    EXPECT_TRUE(is_whole(older));
    EXPECT_NE(take(memory, 50), older.bytes);
}

TEST(Heap, ScratchOfARowDoesNotGrowWithTheRows) {
    const memory_pointer memory = create_memory();
    const tagged kept = take_tagged(memory, 3900, 1);
    std::int64_t live[1000] = {};
    for (std::int64_t& after_row : live) {
        std::uint8_t* const first = take(memory, 3000);
        std::uint8_t* const second = take(memory, 9000); // in another block
        std::uint8_t* const third = take(memory, 10);
        for (std::uint8_t* const pointer : {first, third, static_cast<std::uint8_t*>(nullptr), second}) {
            give_back(memory, pointer);
        }
        const mem_heap_mark mark = mem_heap_get_heap_top(heap_of(memory));
        take(memory, 9000);
        mem_heap_free_heap_top(&environment, heap_of(memory), mark);
        after_row = zqengine::live_bytes();
    }
    EXPECT_EQ(live[999], live[1]);
    EXPECT_TRUE(is_whole(kept));
}

TEST(Exhaustion, EveryStepFailsOnceAndLeaksNothing) {
    const std::int64_t before = zqengine::live_bytes();
    zqengine::fail_step(1);
    EXPECT_EQ(mem_heap_create_low(&environment, 0, 0, 4096, nullptr, "memory_test", __LINE__, 1), nullptr);
    zqengine::fail_step(1);
    EXPECT_EQ(create_memory(), nullptr);
    zqengine::fail_step(4); // making an object and a heap is one step each
    memory_pointer memory = create_memory();
    mem_heap* const heap = mem_heap_create_low(&environment, 0, 0, 8096, nullptr, "memory_test", __LINE__, 1);
    ASSERT_NE(heap, nullptr);
    EXPECT_NE(take(memory, 0), nullptr);
    EXPECT_TRUE(zqengine::failure_is_pending());
    EXPECT_EQ(take(memory, 10), nullptr);
    EXPECT_FALSE(zqengine::failure_is_pending());
    EXPECT_NE(take(memory, 10), nullptr);
    mem_heap_free(&environment, heap);
    memory.reset();
    EXPECT_EQ(zqengine::live_bytes(), before);
}

TEST(ColumnStorage, ASteadyLoadStopsAllocating) {
    const std::int64_t before = zqengine::live_bytes();
    zqengine::column_pointer column(zqengine::create_column(bifun::value_type::VARCHAR, 1));
    const std::vector<std::uint8_t> bytes(3000000);
    for (int batch = 0; batch < 8; ++batch) {
        const auto* const block = column->string_bytes.newest;
        for (const std::uint32_t length : {10U, 3000000U, 1500000U}) {
            bdta3_col_assign_str(&environment, nullptr, &column->column, 0, bytes.data(), length, 0);
        }
        EXPECT_TRUE(batch < 4 || column->string_bytes.newest == block) << batch;
        clear_column(*column);
    }
    column.reset();
    EXPECT_EQ(zqengine::live_bytes(), before);
}

} // namespace
