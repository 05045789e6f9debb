// SPDX-License-Identifier: Apache-2.0
// Texts that lie one behind the other in memory, as those of stored columns do, of which the library finds things out together: results are
// those of the same texts each by itself.

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "engine/charset.h"
#include "tests/contract/called_export.h"
#include "tests/contract/domains.h"

namespace {

using namespace contract;

bifun_string text_at(std::string& bytes, std::size_t first, std::size_t length) {
    return {static_cast<std::uint32_t>(length), 0, reinterpret_cast<std::uint8_t*>(bytes.data() + first)};
}

// Whether the catalogue lets an argument be any text. Where it does not, other texts may mean the time of day.
bool takes_any_text(const bifun::entry_point& entry, std::size_t position) {
    const argument_fact* const fact = domain_of(entry, position);
    return entry.argument_list[position].type == bifun::value_type::VARCHAR &&
           (fact == nullptr || fact->texts.empty() || fact->others_pass);
}

// Ends of pieces of the bytes: at characters, or anywhere. Some pieces are empty.
std::vector<std::size_t> cut(const std::string& bytes, bool at_characters) {
    std::vector<std::size_t> ends;
    for (std::size_t end = 0, step = 5; end < bytes.size(); step = step * 7 % 43) {
        end = std::min(end + step - 1, bytes.size());
        while (at_characters && end < bytes.size() && (static_cast<unsigned char>(bytes[end]) & 0xC0) == 0x80) {
            ++end;
        }
        ends.push_back(end);
    }
    return ends;
}

TEST(TextBlocks, AreTheirTexts) {
    constexpr std::string_view pieces[] = {"a", "x ", "ta", "e", ".", "  ", "0", "éa", "я", "一", "😀", "ß"};
    constexpr std::size_t ascii_pieces = 7;
    for (const std::uint32_t charset : {ZQ_CHARSET_UTF8, ZQ_CHARSET_GB18030}) {
        set_up({0, charset, 1});
        for (unsigned round = 0; round < 12; ++round) {
            const std::size_t used = round % 3 == 0 ? ascii_pieces : std::size(pieces);
            std::string bytes;
            for (std::size_t i = 0, random = round + 1; i < 14000; ++i, random = random * 48271 % 2147483647) {
                bytes += pieces[random % used];
            }
            const std::vector<std::size_t> ends = cut(bytes, round % 3 != 2);
            std::vector<bifun_string> texts{text_at(bytes, 0, ends[0])};
            for (std::size_t i = 1; i < ends.size(); ++i) {
                texts.push_back(text_at(bytes, ends[i - 1], ends[i] - ends[i - 1]));
            }
            if (round % 2 != 0) { // between texts that touch
                texts.insert(texts.begin() + 40, {7, 3, nullptr});
                texts.insert(texts.begin() + 90, {UINT32_MAX, UINT32_MAX, text_at(bytes, 0, 0).data});
            }
            const auto row_count = static_cast<std::uint32_t>(texts.size());
            const zqengine::column_pointer column = column_of(bifun::value_type::VARCHAR, texts);
            if (round % 2 != 0) {
                column->column.no_nulls = 0;
                column->data.null_flags[40] = column->data.null_flags[90] = 0;
            }
            for (const bifun::entry_point& entry : bifun::entry_points) {
                std::vector<zqengine::column_pointer> others;
                std::vector<generated_constant> constants(entry.argument_count);
                std::vector<call_argument> arguments(entry.argument_count);
                bool has_texts = false;
                for (std::size_t i = 0; i < arguments.size(); ++i) {
                    if (entry.argument_list[i].kind == bifun::argument_kind::constant) {
                        const std::size_t values = value_count(entry, i);
                        others.push_back(sound_column(entry, i, static_cast<std::uint32_t>(values), 0, 0));
                        constants[i] = constant_of_row(*others.back(), static_cast<std::uint32_t>((round + i) % values));
                        arguments[i].constant = &constants[i];
                    } else if (!has_texts && takes_any_text(entry, i)) {
                        has_texts = true;
                        arguments[i].column = column.get();
                    } else {
                        others.push_back(sound_column(entry, i, row_count, 0, round));
                        arguments[i].column = others.back().get();
                    }
                }
                if (!has_texts) {
                    continue;
                }
                const outcome found_together = call(entry, arguments, row_count);
                zqengine::tell_texts(*column, row_count);
                const outcome told = call(entry, arguments, row_count);
                const outcome told_apart = call(entry, arguments, row_count, {.arguments_are_short_lived = true});
                column->data.engine_word = nullptr;
                const outcome apart = call(entry, arguments, row_count, {.arguments_are_short_lived = true});
                for (const outcome* const other : {&found_together, &told, &told_apart}) {
                    EXPECT_TRUE(same_outcome(apart, *other)) << entry.symbol << ", round " << round << ", charset " << charset;
                }
            }
        }
    }
    set_up({0, ZQ_CHARSET_UTF8, 1});
}

// What is no well-formed UTF-8 is not taken for it, wherever it stands.
TEST(TextBlocks, AreNotTakenForWellFormed) {
    constexpr std::string_view bytes_of_note("\x41\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xED\xEE\xEF\xF0\xF1\xF4\xF5\xFF");
    const bifun::entry_point& length = entry_of("blength_a_str");
    const auto expect_same = [&](const std::string& sequence, std::size_t offset) {
        std::string bytes = std::string(offset, 'a') + sequence + "é";
        const std::vector<bifun_string> texts{text_at(bytes, 0, offset), text_at(bytes, offset, sequence.size()),
                                              text_at(bytes, offset + sequence.size(), 2)};
        const zqengine::column_pointer column = column_of(bifun::value_type::VARCHAR, texts);
        const std::vector<call_argument> arguments{{.column = column.get()}};
        ASSERT_TRUE(same_outcome(call(length, arguments, 3), call(length, arguments, 3, {.arguments_are_short_lived = true})))
            << testing::PrintToString(sequence) << " at " << offset;
    };
    for (const char first : bytes_of_note) {
        for (const char second : bytes_of_note) {
            for (const char third : bytes_of_note) {
                expect_same({first, second, third}, 1U + static_cast<unsigned char>(second ^ third) % 64);
                if (static_cast<unsigned char>(first) >= 0xF0) {
                    expect_same({first, second, third, '\x80'}, 61);
                    expect_same({first, second, '\x80', third}, 62);
                }
            }
        }
    }
}

} // namespace
