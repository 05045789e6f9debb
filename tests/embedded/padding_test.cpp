// SPDX-License-Identifier: Apache-2.0
// Padding: what no text of whole characters shows, and the limits.

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "bop/frame/status.h"
#include "embedded/charset/database_charset.h"
#include "embedded/columns/column_storage.h"
#include "embedded/memory/allocation.h"
#include "embedded/session/environment.h"
#include "engine/charset.h"
#include "engine/strings.h"
#include "tests/contract/exact_block.h"

namespace {

using namespace std::string_view_literals;

bifun_environment environment;

class Padding : public testing::Test {
  protected:
    void TearDown() override { zqengine::set_database_charset(ZQ_CHARSET_UTF8); }

    // The bytes, and behind a + how many blanks; or the status, where the row must be as it was.
    std::string padded(decltype(zq_get_lpad_str)* pad, std::string_view text, std::uint32_t blanks, std::int32_t length,
                       std::string_view with) {
        const exact_block stored(text);
        const exact_block pad_block(with);
        const bifun_string value = {stored.length, blanks, stored.data()};
        bifun_string& row = zqengine::values_of<bifun_string>(*column)[1];
        column->data.null_flags[1] = 7;
        row = {9, 9, nullptr};
        const std::int32_t status = pad(&environment, nullptr, &column->data, 1, &value, length, pad_block.data(), pad_block.length);
        EXPECT_EQ(column->data.null_flags[1], 7);
        if (status != BIFUN_OK) {
            EXPECT_TRUE(status == BIFUN_OUT_OF_MEMORY || (row.length == 9 && row.trailing_blanks == 9)) << status;
            return std::to_string(status);
        }
        return std::string(reinterpret_cast<const char*>(row.data), row.length) + "+" + std::to_string(row.trailing_blanks);
    }
    std::string left(std::string_view text, std::uint32_t blanks, std::int32_t length, std::string_view pad) {
        return padded(zq_get_lpad_str, text, blanks, length, pad);
    }
    std::string right(std::string_view text, std::uint32_t blanks, std::int32_t length, std::string_view pad) {
        return padded(zq_get_rpad_str, text, blanks, length, pad);
    }

    zqengine::column_pointer column{zqengine::create_column(bifun::value_type::VARCHAR, 2)};
};

TEST_F(Padding, BlanksAtTheEndAreACount) {
    EXPECT_EQ(left("ab", 2, 7, "x "), "x xab+2");
    EXPECT_EQ(left("", 2, 7, "x "), "x x x+2");
    EXPECT_EQ(left("", 2, 6, "x "), "x x+3");
    EXPECT_EQ(left("", 0, 4, " "), "+4");
    EXPECT_EQ(left("a ", 0, 4, " "), "  a +0");
    EXPECT_EQ(right("ab", 2, 7, "  x"), "ab    x+0");
    EXPECT_EQ(right("ab", 2, 8, "  x"), "ab    x+1");
    EXPECT_EQ(right("ab", 2, 6, "  x"), "ab+4");
    EXPECT_EQ(right("ab ", 0, 9, "x  "), "ab x  x+2");
    EXPECT_EQ(right("a ", 0, 4, "  "), "a +2");
    EXPECT_EQ(right("é", 3, 3, "x"), "é+2");
    EXPECT_EQ(left("é一", 3, 1, "x"), "é+0");
    EXPECT_EQ(right("ab", 3, -2147483647 - 1, "x"), "+0");
    EXPECT_EQ(left("ab", 1, 2147483647, ""), "ab+1");
}

// Where a pad ends in half a character, the half must not join with what follows. Bytes that are none of a character stay.
TEST_F(Padding, HalfCharactersArePadsOfBlanks) {
    for (const std::string_view half : {"\xC3"sv, "\xE0"sv, "\xE4\xB8"sv, "\xED\x9F"sv, "\xF0\x90"sv, "\xF1\x80\x80"sv, "\xF4\x8F\xBF"sv}) {
        EXPECT_EQ(left("b", 0, 6, std::string("a").append(half)), "a a ab+0");
        EXPECT_EQ(right("b", 0, 5, std::string("a").append(half)), "ba a+1");
        EXPECT_EQ(right("b", 0, 5, half), "b+4");
    }
    for (const std::string_view none : {"\x80"sv, "\xC0"sv, "\xE0\x80"sv, "\xED\xA0"sv, "\xF4\x90"sv, "\xF5"sv, "\xE4\xB8\xC0"sv}) {
        const auto characters = static_cast<std::int32_t>(none.size());
        EXPECT_EQ(left("b", 0, 2 * characters + 1, none), std::string(none) + std::string(none) + "b+0");
    }
    zqengine::set_database_charset(ZQ_CHARSET_GB18030);
    for (const std::string_view half : {"\x81"sv, "\x81\x30"sv, "\x81\x30\xFE"sv}) {
        EXPECT_EQ(left("@", 0, 4, std::string("\x81\x81").append(half)), "\x81\x81 \x81\x81@+0");
    }
    // Two bytes that are none, a character, and half a one.
    EXPECT_EQ(left("@", 0, 5, "\x81\x30\x81\x61\x81\x30"), "\x81\x30\x81\x61 @+0");
    zqengine::set_database_charset(ZQ_CHARSET_EUC_KR);
    EXPECT_EQ(left("\xA1\xA1", 0, 4, "\xB0\xA1\xB0"), "\xB0\xA1 \xB0\xA1\xA1\xA1+0");
}

TEST_F(Padding, ResultsHaveAtMost32767Bytes) {
    EXPECT_EQ(left("ab", 1, 32767, "x"), std::string(32764, 'x') + "ab+1");
    EXPECT_EQ(right("ab", 1, 32767, "xyz").size(), std::string_view("+0").size() + 32767);
    EXPECT_EQ(right("ab", 1, 32767, " "), "ab+32765");
    EXPECT_EQ(left("", 0, 16383, "é").size(), std::string_view("+0").size() + 32766);
    const std::string long_text(32768, 'l');
    EXPECT_EQ(right(long_text, 5, 32767, ""), long_text.substr(1) + "+0");
    for (const auto pad : {zq_get_lpad_str, zq_get_rpad_str}) {
        EXPECT_EQ(padded(pad, "ab", 1, 32768, "x"), "-6108");
        EXPECT_EQ(padded(pad, "ab", 1, 32768, " "), "-6108");
        EXPECT_EQ(padded(pad, "", 0, 16384, "é"), "-6108");
        EXPECT_EQ(padded(pad, "", 4294967295, 2147483647, "x"), "-6108");
        EXPECT_EQ(padded(pad, "a", 0, 2147483647, "\xF1\x80\x80\x80"), "-6108"); // 8 GiB
        EXPECT_EQ(padded(pad, long_text, 0, 40000, ""), "-6108");
        EXPECT_EQ(padded(pad, long_text, 0, 32768, "x"), "-6108");
    }
}

TEST_F(Padding, MemoryRunsOut) {
    for (const auto pad : {zq_get_lpad_str, zq_get_rpad_str}) {
        zqengine::fail_step(1);
        EXPECT_EQ(padded(pad, "ab", 0, 5, "x"), "-503");
        zqengine::fail_step(1);
        EXPECT_EQ(padded(pad, "", 0, 5, " "), "+5");
        EXPECT_TRUE(zqengine::failure_is_pending()) << "blanks need no memory";
        zqengine::fail_step(0);
    }
}

} // namespace
