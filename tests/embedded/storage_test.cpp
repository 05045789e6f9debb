// SPDX-License-Identifier: Apache-2.0
// Memory, result columns and string values.

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
#include "engine/memory.h"
#include "engine/strings.h"

namespace {

using bifun::value_type;
using zqengine::column_pointer;
using zqengine::create_column;
using zqengine::values_of;

bifun_environment environment;

std::string text_of(const zqengine::column_storage& column, std::uint32_t row) {
    const bifun_string& value = values_of<bifun_string>(column)[row];
    return std::string(reinterpret_cast<const char*>(value.data), value.length) + "+" + std::to_string(value.trailing_blanks);
}

bifun_string string_over(std::string& bytes, std::uint32_t trailing_blanks = 0) {
    return {static_cast<std::uint32_t>(bytes.size()), trailing_blanks, reinterpret_cast<std::uint8_t*>(bytes.data())};
}

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
    column_pointer column(create_column(bifun::value_type::VARCHAR, 1));
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
    const bifun_string long_source = string_over(long_bytes);
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
    hold_long_value();
    zqengine::fail_step(1);
    EXPECT_EQ(nstr_assign(&environment, memory, &value, &long_source), BIFUN_OUT_OF_MEMORY);
    EXPECT_TRUE(value.data == nullptr && value.owned == 0 && released - released_before == 4);
    const bifun_string endless = string_over(long_bytes, UINT32_MAX); // longer than a length can say
    EXPECT_EQ(nstr_assign_with_blank_no_clear(&environment, memory, &value, &endless), BIFUN_OUT_OF_MEMORY);
    EXPECT_EQ(value.length, 0U);
    memory->release = nullptr;
    hold_long_value();
    nstr_clear(&environment, &value);
    EXPECT_EQ(value.data, nullptr);
}

// ---- columns ----

// What is copied, NVL and IF show. Without memory every row is NULL.
TEST(ColumnCopy, HasBytesOfItsOwn) {
    std::string texts[] = {"", "b", "", std::string(5000, 'f')};
    const auto rows = static_cast<std::uint32_t>(std::size(texts));
    const column_pointer source(create_column(value_type::VARCHAR, rows));
    const column_pointer destination(create_column(value_type::VARCHAR, rows));
    std::memset(source->data.null_flags, 1, rows);
    for (std::uint32_t row = 0; row < rows; ++row) {
        values_of<bifun_string>(*source)[row] = string_over(texts[row], row);
    }
    ASSERT_EQ(bdta3_col_copy(&environment, nullptr, &destination->column, &source->column, rows), 0);
    for (std::uint32_t row = 0; row < rows; ++row) {
        EXPECT_EQ(text_of(*destination, row), text_of(*source, row));
        EXPECT_NE(values_of<bifun_string>(*destination)[row].data, values_of<bifun_string>(*source)[row].data);
    }
    for (const value_type type : {value_type::INT, value_type::VARCHAR}) {
        const column_pointer failed(create_column(type, rows));
        failed->column.no_nulls = 1;
        zqengine::fail_step(1);
        EXPECT_EQ(bdta3_col_copy(&environment, nullptr, &failed->column, &source->column, rows), BIFUN_OUT_OF_MEMORY);
        EXPECT_TRUE(failed->status == BIFUN_OUT_OF_MEMORY && failed->column.no_nulls == 0);
        EXPECT_EQ(std::count(failed->data.null_flags, failed->data.null_flags + rows, 0), rows);
    }
}

TEST(StringResults, LastAssignmentOfARowHolds) {
    const column_pointer column(create_column(value_type::VARCHAR, 2));
    std::string first = "first";
    const bifun_string source = string_over(first, 4);
    EXPECT_EQ(bdta3_colstr_copy(&environment, nullptr, &column->column, 0, &source), 0);
    EXPECT_EQ(bdta3_colstr_copy(&environment, nullptr, &column->column, 1, &values_of<bifun_string>(*column)[0]), 0);
    std::memset(bdta3_colstr_assign_without_value(&environment, nullptr, &column->data, 0, 1 << 20, 0), 'l', 1 << 20);
    EXPECT_EQ(text_of(*column, 0), std::string(1 << 20, 'l') + "+0");
    EXPECT_EQ(text_of(*column, 1), "first+4");
}

TEST(StringResults, WithoutMemoryTheRowIsEmpty) {
    static std::uint8_t bytes[100];
    static const bifun_string source = {5, 1, bytes};
    using step = std::int32_t (*)(zqengine::column_storage&);
    const step steps[] = {
        [](auto& c) { return bdta3_col_assign_str(&environment, nullptr, &c.column, 0, nullptr, 0, 3); },
        [](auto& c) { return bdta3_col_assign_str(&environment, nullptr, &c.column, 0, bytes, 5, 0); },
        [](auto& c) { return bdta3_col_assign_bin(&environment, nullptr, &c.column, 0, bytes, 5); },
        [](auto& c) { return bdta3_set_str_from_str_with_len(&environment, nullptr, &c.column, 0, bytes, 5); },
        [](auto& c) { return bdta3_colstr_copy(&environment, nullptr, &c.column, 0, &source); },
        [](auto& c) { return bdta3_colstr_assign_without_value(&environment, nullptr, &c.data, 0, 5, 1) == nullptr ? c.status : 0; },
    };
    for (const step& assign : steps) {
        const column_pointer column(create_column(value_type::VARCHAR, 1));
        values_of<bifun_string>(*column)[0] = {9, 9, bytes};
        zqengine::fail_step(2);
        EXPECT_NE(bdta3_col_space_alloc(&environment, nullptr, &column->data, 8), nullptr);
        EXPECT_EQ(assign(*column), BIFUN_OUT_OF_MEMORY);
        EXPECT_FALSE(zqengine::failure_is_pending());
        EXPECT_EQ(text_of(*column, 0), "+0");
        EXPECT_EQ(column->status, BIFUN_OUT_OF_MEMORY);
        clear_column(*column);
        EXPECT_EQ(column->status, 0);
    }
}

// Every text of up to three of a few bytes, with up to three blanks behind it.
TEST(StringValues, AreComparedAndTrimmedAsFullTexts) {
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; texts[i].size() < 3; ++i) {
        for (const char byte : {' ', 'a', '\x1f', '!', '\xff'}) {
            texts.push_back(texts[i] + byte);
        }
    }
    const auto sign_of = [](int value) { return (value > 0) - (value < 0); };
    for (std::string& text : texts) {
        for (std::uint32_t blanks = 0; blanks < 4; ++blanks) {
            bifun_string value = string_over(text, blanks);
            const std::string full = text + std::string(blanks, ' ');
            for (std::size_t other = 0; other < texts.size(); other += 7) {
                const std::uint32_t more = other % 4;
                const bifun_string compared = string_over(texts[other], more);
                const int sign = sign_of(full.compare(texts[other] + std::string(more, ' ')));
                ASSERT_EQ(sign_of(bdta3_colstr_cmp_with_blank(&value, &compared)), sign) << full << '|' << texts[other] << more;
                ASSERT_EQ(sign_of(bdta3_colstr_cmp_with_blank(&compared, &value)), -sign) << full << '|' << texts[other] << more;
            }
            bdta3_colstr_trim(&value);
            ASSERT_EQ(value.length + value.trailing_blanks, text.find_last_not_of(' ') + 1) << full;
        }
    }
    const bifun_string endless = {0, UINT32_MAX, nullptr};
    const bifun_string one_blank = {0, 1, nullptr};
    EXPECT_GT(bdta3_colstr_cmp_with_blank(&endless, &one_blank), 0);
}

} // namespace
