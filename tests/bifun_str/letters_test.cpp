// SPDX-License-Identifier: Apache-2.0
// UPPER and LOWER of UTF-8 that the library changes itself are those of the engine, for every character.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/charset.h"
#include "engine/letter_case.h"
#include "tests/contract/called_export.h"
#include "tests/contract/domains.h"

namespace {

using namespace contract;

std::string utf8_of(std::uint32_t code_point) {
    const auto continuing = [=](std::uint32_t bits) { return static_cast<char>(0x80 | (code_point >> bits & 0x3F)); };
    if (code_point < 0x80) {
        return {static_cast<char>(code_point)};
    }
    if (code_point < 0x800) {
        return {static_cast<char>(0xC0 | code_point >> 6), continuing(0)};
    }
    if (code_point < 0x10000) {
        return {static_cast<char>(0xE0 | code_point >> 12), continuing(6), continuing(0)};
    }
    return {static_cast<char>(0xF0 | code_point >> 18), continuing(12), continuing(6), continuing(0)};
}

std::string changed_by_engine(std::int32_t to, const std::string& text) {
    std::string result(text.size() * NLS_CASE_GROWTH, '?');
    result.resize(nls_change_case(to, NLS_CASE_ROOT, reinterpret_cast<const std::uint8_t*>(text.data()),
                                  static_cast<std::uint32_t>(text.size()), reinterpret_cast<std::uint8_t*>(result.data())));
    return result;
}

// The character at every place of a vector, behind characters of all lengths.
std::string around(std::uint32_t code_point) {
    static const std::string before = "aЯ一Bяñ😀Ž-aЯ一Bяñ😀Ž-aЯ一Bяñ😀Ž";
    std::size_t begin = code_point % before.size();
    while ((static_cast<unsigned char>(before[begin]) & 0xC0) == 0x80) {
        ++begin;
    }
    return before.substr(begin) + utf8_of(code_point) + "zЖ";
}

TEST(Letters, OfUtf8AreTheEngines) {
    set_up({0, ZQ_CHARSET_UTF8, 1});
    constexpr std::uint32_t first_without_case = 0x20000;
    std::vector<std::string> texts;
    for (std::uint32_t code_point = 0; code_point < 0x110000; code_point += code_point < first_without_case ? 1 : 0x101) {
        if (code_point - 0xD800 >= 0x800) { // no surrogate
            texts.push_back(around(code_point));
        }
    }
    std::vector<bifun_string> rows;
    for (std::string& text : texts) {
        rows.push_back({static_cast<std::uint32_t>(text.size()), 0, reinterpret_cast<std::uint8_t*>(text.data())});
    }
    const auto row_count = static_cast<std::uint32_t>(rows.size());
    const zqengine::column_pointer column = column_of(bifun::value_type::VARCHAR, rows);
    for (const bool is_told : {false, true}) {
        if (is_told) {
            zqengine::tell_texts(*column, row_count);
        }
        for (const auto& [symbol, to] : {std::pair{"bupper_a_str", NLS_CASE_UPPER}, std::pair{"blower_a_str", NLS_CASE_LOWER}}) {
            const std::vector<call_argument> arguments{{.column = column.get()}};
            const outcome found = call(entry_of(symbol), arguments, row_count);
            ASSERT_EQ(found.status, 0);
            for (std::uint32_t row = 0; row < row_count; ++row) {
                const bifun_string& result = zqengine::values_of<bifun_string>(*found.result)[row];
                ASSERT_EQ(std::string(reinterpret_cast<const char*>(result.data), result.length), changed_by_engine(to, texts[row]))
                    << symbol << " of " << texts[row];
            }
        }
    }
}

} // namespace
