// The exported operations on single values.

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "bop/bifun.h"
#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"
#include "engine/charset.h"
#include "engine/memory.h"
#include "tests/contract/called_export.h"

namespace {

template <class Function> Function* exported(const char* name) { return reinterpret_cast<Function*>(contract::library_symbol(name)); }

// In a block of exactly its size.
struct block {
    explicit block(std::string_view text) : bytes(new std::uint8_t[text.size()]), length(static_cast<std::uint32_t>(text.size())) {
        std::memcpy(bytes.get(), text.data(), text.size());
    }
    std::unique_ptr<std::uint8_t[]> bytes;
    std::uint32_t length;
};

class StringValues : public testing::Test {
  protected:
    void SetUp() override { use(ZQ_CHARSET_UTF8); }
    void TearDown() override {
        zqengine::fail_step(0);
        rt_memobj_destroy(&environment, memory);
    }
    static void use(std::uint32_t charset) { contract::set_up({.compatible_mode = 0, .charset_code = charset, .case_sensitive = 1}); }

    bifun_environment environment;
    bifun_memory_object* memory = rt_memobj_create_ex(&environment, 0, 4096, __FILE__, __LINE__);
};

TEST_F(StringValues, CharactersOfAText) {
    const auto gather = exported<decltype(zq_gather_char_info)>("zq_gather_char_info");
    const struct {
        std::string_view text;
        std::uint32_t charset;
        std::vector<std::uint32_t> lengths;
    } cases[] = {
        {"", ZQ_CHARSET_UTF8, {}},
        {"a", ZQ_CHARSET_UTF8, {1}},
        {"aé一\U0001F600", ZQ_CHARSET_UTF8, {1, 2, 3, 4}},
        {"a\xE4\xB8", ZQ_CHARSET_UTF8, {1, 3}}, // a character that is cut off is stepped over as if whole
        {"\x81\x41\x81\x30\x81\x30\x41", ZQ_CHARSET_GB18030, {2, 4, 1}},
        {"\x41\x81\x30\x81", ZQ_CHARSET_GB18030, {1, 4}},
        {"\xB0\xA1\xB0", ZQ_CHARSET_EUC_KR, {2, 2}},
    };
    for (const auto& c : cases) {
        use(c.charset);
        const block text(c.text);
        std::uint32_t count = 7;
        std::uint32_t* lengths = nullptr;
        std::uint8_t** starts = nullptr;
        ASSERT_EQ(gather(&environment, memory, text.bytes.get(), static_cast<std::int32_t>(text.length), &count, &lengths, &starts), 0);
        ASSERT_TRUE(lengths != nullptr && starts != nullptr);
        EXPECT_EQ(std::vector(lengths, lengths + count), c.lengths) << c.text;
        const std::uint8_t* expected = text.bytes.get();
        for (std::uint32_t i = 0; i < count; expected += lengths[i], ++i) {
            EXPECT_EQ(starts[i], expected);
        }
    }
    std::uint32_t count = 7;
    std::uint32_t* lengths;
    std::uint8_t** starts;
    EXPECT_EQ(gather(&environment, memory, nullptr, -1, &count, &lengths, &starts), 0);
    EXPECT_EQ(count, 0U);
    for (const int step : {1, 2}) {
        block text("ab");
        zqengine::fail_step(step);
        EXPECT_EQ(gather(&environment, memory, text.bytes.get(), 2, &count, &lengths, &starts), BIFUN_OUT_OF_MEMORY);
    }
}

TEST_F(StringValues, PositionOfACharacter) {
    const struct {
        std::uint32_t charset;
        std::string_view text, character;
        std::uint32_t position;
    } cases[] = {
        {ZQ_CHARSET_UTF8, "", "a", 0},
        {ZQ_CHARSET_UTF8, "ba", "a", 2},
        {ZQ_CHARSET_UTF8, "一é一", "a", 0},
        {ZQ_CHARSET_UTF8, "ab一c一", "一", 3},
        {ZQ_CHARSET_UTF8, "一ab一c", "c", 5},
        {ZQ_CHARSET_UTF8, "é一", "一", 2},
        {ZQ_CHARSET_UTF8, "一丁", "丁", 2},
        {ZQ_CHARSET_UTF8, "ab", "一", 0},
        {ZQ_CHARSET_UTF8, "a\xE4\xB8", "一", 0}, // cut off
        {ZQ_CHARSET_GB18030, "\201AA", "A", 2},
        {ZQ_CHARSET_GB18030, "\2010\20100", "0", 2},
        {ZQ_CHARSET_GB18030, "A\x81", "\201A", 0},
        {ZQ_CHARSET_GB18030, "A\2010", "\2010\2010", 0},
        {ZQ_CHARSET_EUC_KR, "\xB0\xA1\xB0", "\xB0\xA1", 1},
    };
    for (const auto& c : cases) {
        use(c.charset);
        const block text(c.text);
        const block character(c.character);
        std::uint32_t position = 7;
        exported<decltype(bifun_search_char_in_str)>("bifun_search_char_in_str")(text.bytes.get(), text.length, character.bytes.get(),
                                                                                 character.length, &position);
        EXPECT_EQ(position, c.position) << c.text << ", " << c.character;
        position = 7;
        exported<decltype(bifun_search_char_in_str_ex)>("bifun_search_char_in_str_ex")(text.bytes.get(), text.length, character.bytes.get(),
                                                                                       character.length, &position);
        EXPECT_EQ(position, c.position) << c.text << ", " << c.character;
    }
}

TEST_F(StringValues, BlanksAreWrittenOut) {
    const auto into_row = exported<decltype(bifun_colstr_assign_with_blank)>("bifun_colstr_assign_with_blank");
    const auto into_value = exported<decltype(bifun_colstr_assign_with_blank_no_clear)>("bifun_colstr_assign_with_blank_no_clear");
    const zqengine::column_pointer column(zqengine::create_column(bifun::value_type::VARCHAR, 2));
    const auto full_text = [](const bifun_string& value) {
        EXPECT_EQ(value.trailing_blanks, 0U);
        return std::string(reinterpret_cast<const char*>(value.data), value.length);
    };
    const struct {
        std::string_view stored;
        std::uint32_t blanks;
    } cases[] = {{"", 0}, {"", 3}, {"ab", 0}, {"ab", 1}, {"é", 5000}};
    for (const auto& c : cases) {
        const block stored(c.stored);
        const bifun_string source = {stored.length, c.blanks, stored.length == 0 ? nullptr : stored.bytes.get()};
        const std::string expected = std::string(c.stored) + std::string(c.blanks, ' ');
        column->data.null_flags[1] = 0;
        ASSERT_EQ(into_row(&environment, memory, &column->column, 1, &source), 0);
        EXPECT_EQ(column->data.null_flags[1], 1);
        EXPECT_EQ(full_text(zqengine::values_of<bifun_string>(*column)[1]), expected);
        bifun_string target = {7, 7, nullptr};
        ASSERT_EQ(into_value(&environment, memory, &target, &source), 0);
        EXPECT_EQ(full_text(target), expected);
    }
    block stored("ab");
    bifun_string value = {2, 3, stored.bytes.get()};
    EXPECT_EQ(into_value(&environment, memory, &value, &value), 0);
    EXPECT_TRUE(value.length == 2 && value.trailing_blanks == 3 && value.data == stored.bytes.get());

    // The lengths are set before memory is asked for.
    zqengine::fail_step(1);
    EXPECT_EQ(into_row(&environment, memory, &column->column, 0, &value), BIFUN_OUT_OF_MEMORY);
    EXPECT_EQ(zqengine::values_of<bifun_string>(*column)[0].length, 5U);
    EXPECT_EQ(column->data.null_flags[0], 1);
    bifun_string target = {7, 7, nullptr};
    zqengine::fail_step(1);
    EXPECT_EQ(into_value(&environment, memory, &target, &value), BIFUN_OUT_OF_MEMORY);
    EXPECT_EQ(target.length, 5U);
    EXPECT_EQ(target.trailing_blanks, 0U);
}

} // namespace
