#include "engine/strings.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "bop/frame/status.h"
#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"
#include "engine/memory.h"

namespace {

bifun_environment environment;
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

TEST_F(OwnedString, LongValuesOwnMemoryShortOnesDoNot) {
    struct {
        std::size_t length;
        std::uint32_t blanks;
        bool with_blanks;
        bool owned;
    } const cases[] = {{0, 0, false, false}, {64, 0, false, false}, {65, 0, false, true}, {64, 9, false, false},
                       {60, 4, true, false}, {60, 5, true, true},   {0, 3, true, false},  {0, 65, true, true}};
    for (const auto& c : cases) {
        std::string bytes(c.length, 'a');
        const bifun_string source = string_over(bytes, c.blanks);
        nstr target = {};
        ASSERT_EQ(c.with_blanks ? nstr_assign_with_blank_no_clear(&environment, memory, &target, &source)
                                : nstr_assign(&environment, memory, &target, &source),
                  0);
        const std::string expected = bytes + std::string(c.with_blanks ? c.blanks : 0, ' ');
        bytes.assign(c.length, 'z'); // the value is a copy
        EXPECT_EQ(text_of(target), expected);
        EXPECT_EQ(target.owned != 0, c.owned) << c.length << "+" << c.blanks;
        EXPECT_EQ(target.data == target.reserved, !c.owned);
        nstr_clear(&environment, &target);
        EXPECT_EQ(target.data, nullptr);
        EXPECT_EQ(target.length, 0U);
    }
    EXPECT_EQ(released - released_before, 3);
}

TEST_F(OwnedString, ConstantsAreReadWhereTheirLengthPutsThem) {
    for (const std::uint32_t length : {0U, 48U, 49U, 200U}) {
        std::string behind(length, 'p');
        bifun_string_constant constant = {1, length, 2, {}, length > 48 ? reinterpret_cast<std::uint8_t*>(behind.data()) : nullptr};
        std::memset(constant.inline_bytes, 'i', sizeof constant.inline_bytes);
        const std::string stored(length, length > 48 ? 'p' : 'i');
        ASSERT_EQ(nstr_assign_const_ex_no_clear(&environment, memory, &value, &constant), 0);
        EXPECT_EQ(text_of(value), stored);
        nstr_clear(&environment, &value);
        ASSERT_EQ(nstr_assign_const_with_blank_no_clear(&environment, memory, &value, &constant), 0);
        EXPECT_EQ(text_of(value), stored + "  ");
        nstr_clear(&environment, &value);
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
    EXPECT_EQ(released - released_before, 2);
    EXPECT_EQ(value.data, nullptr);

    hold_long_value();
    nstr_set_str_value(&environment, &value, long_source.data, 3);
    EXPECT_EQ(released - released_before, 3);
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
    EXPECT_FALSE(zqengine::failure_is_pending());
    EXPECT_EQ(value.data, nullptr);
    EXPECT_EQ(value.owned, 0U);
    EXPECT_EQ(nstr_assign_with_blank_no_clear(&environment, memory, &value, &endless), BIFUN_OUT_OF_MEMORY);
    EXPECT_EQ(value.length, 0U);
    EXPECT_EQ(released - released_before, 1);
}

} // namespace
