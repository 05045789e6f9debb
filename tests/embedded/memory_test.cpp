#include "engine/memory.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "bop/frame/status.h"
#include "embedded/columns/column_storage.h"
#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"
#include "engine/columns.h"
#include "engine/strings.h"

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
        std::uint8_t* const taken[] = {take(memory, 3000), nullptr, take(memory, 10), take(memory, 9000)}; // the last in another block
        for (std::uint8_t* const pointer : taken) {
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

// ---- strings that own memory ------------------------------------------------------------------------------------------

int released = 0; // by counting_release

void counting_release(bifun_environment* /*environment*/, void* /*heap*/, void* pointer) { released += pointer != nullptr; }

std::string text_of(const nstr& value) { return {reinterpret_cast<const char*>(value.data), value.length}; }

bifun_string string_over(std::string& bytes, std::uint32_t trailing_blanks) {
    return {static_cast<std::uint32_t>(bytes.size()), trailing_blanks, reinterpret_cast<std::uint8_t*>(bytes.data())};
}

class OwnedString : public testing::Test {
  protected:
    OwnedString() { memory->release = counting_release; }
    ~OwnedString() override {
        nstr_clear(&environment, &value);
        rt_memobj_destroy(&environment, memory);
    }

    bifun_memory_object* memory = rt_memobj_create_ex(&environment, 0, 4096, "strings_test", __LINE__);
    nstr value = {};
    int released_before = released;
};

// Over 64 bytes in memory of its own.
TEST_F(OwnedString, IsACopyOfItsSource) {
    for (const std::uint32_t length : {0U, 48U, 49U, 64U, 65U, 200U}) {
        for (const std::uint32_t blanks : {0U, 15U, 16U, 65U}) {
            std::string bytes(length, 'a');
            const std::string stored = bytes;
            const std::string full = stored + std::string(blanks, ' ');
            const bifun_string source = string_over(bytes, blanks);
            bifun_string_constant constant = {1, length, blanks, {}, length > BIFUN_INLINE_LENGTH ? source.data : nullptr};
            std::memset(constant.inline_bytes, length > BIFUN_INLINE_LENGTH ? 'i' : 'a', sizeof constant.inline_bytes);
            nstr values[4] = {};
            ASSERT_EQ(nstr_assign(&environment, memory, &values[0], &source), 0);
            ASSERT_EQ(nstr_assign_const_ex_no_clear(&environment, memory, &values[1], &constant), 0);
            ASSERT_EQ(nstr_assign_with_blank_no_clear(&environment, memory, &values[2], &source), 0);
            ASSERT_EQ(nstr_assign_const_with_blank_no_clear(&environment, memory, &values[3], &constant), 0);
            bytes.assign(length, 'z');
            for (nstr& copy : values) {
                const std::string& expected = &copy < &values[2] ? stored : full;
                const bool is_owned = expected.size() > 64;
                EXPECT_EQ(text_of(copy), expected);
                EXPECT_TRUE((copy.owned != 0) == is_owned && (copy.data == copy.reserved) == !is_owned) << length << "+" << blanks;
                const int before = released;
                nstr_clear(&environment, &copy);
                EXPECT_TRUE(copy.data == nullptr && copy.length == 0 && released - before == (is_owned ? 1 : 0));
            }
        }
    }
}

TEST_F(OwnedString, WhatItHeldIsReleasedUnlessNamedNoClear) {
    std::string long_bytes(100, 'l');
    std::string short_bytes = "short";
    const bifun_string long_source = string_over(long_bytes, 0);
    const bifun_string short_source = string_over(short_bytes, 1);
    const auto hold_long_value = [&] { ASSERT_EQ(nstr_assign(&environment, memory, &value, &long_source), 0); };
    hold_long_value();
    ASSERT_EQ(nstr_assign(&environment, memory, &value, &short_source), 0);
    EXPECT_EQ(released - released_before, 1);
    nstr_non_reserved_clear(&environment, &value);
    EXPECT_EQ(text_of(value), "short");
    hold_long_value();
    nstr_non_reserved_clear(&environment, &value);
    EXPECT_TRUE(released - released_before == 2 && value.data == nullptr);
    hold_long_value();
    nstr_set_str_value(&environment, &value, long_source.data, 3);
    bdta3_colstr_to_nstr_fast(&value, &long_source);
    EXPECT_EQ(value.data, long_source.data);
    nstr_clear(&environment, &value); // a view is not released
    EXPECT_EQ(released - released_before, 3);
    memory->release = nullptr;
    hold_long_value();
    nstr_clear(&environment, &value);
    EXPECT_EQ(value.data, nullptr);
}

TEST_F(OwnedString, WithoutMemoryItIsEmpty) {
    std::string bytes(100, 'a');
    const bifun_string source = string_over(bytes, 0);
    const bifun_string endless = string_over(bytes, UINT32_MAX); // longer than a length can say
    ASSERT_EQ(nstr_assign(&environment, memory, &value, &source), 0);
    zqengine::fail_step(1);
    EXPECT_EQ(nstr_assign(&environment, memory, &value, &source), BIFUN_OUT_OF_MEMORY);
    EXPECT_TRUE(value.data == nullptr && value.owned == 0 && released - released_before == 1);
    EXPECT_EQ(nstr_assign_with_blank_no_clear(&environment, memory, &value, &endless), BIFUN_OUT_OF_MEMORY);
    EXPECT_EQ(value.length, 0U);
}

} // namespace
