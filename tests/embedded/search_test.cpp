// SPDX-License-Identifier: Apache-2.0
#include "engine/search.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

// A copy of exactly its size, so that the sanitizer sees every byte read outside.
template <typename Value> struct exact_copy {
    explicit exact_copy(const Value* values, std::size_t count) : owned(new Value[count]) { std::copy_n(values, count, owned.get()); }
    std::unique_ptr<Value[]> owned;
};

struct prepared_pattern {
    explicit prepared_pattern(std::string_view text)
        : bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()), suffixes(new std::uint32_t[text.size()]) {
        const auto length = static_cast<std::uint32_t>(text.size());
        preprocess_bmbc(bytes.owned.get(), length, characters.get());
        preprocess_bmgs(bytes.owned.get(), length, suffixes.get());
        boyer_moore = {bytes.owned.get(), length, characters.get(), suffixes.get(), nullptr};
        if (length <= ZQ_SHIFT_OR_LENGTH) {
            preshiftorprocess(bytes.owned.get(), length, masks.get());
            shift_or = {bytes.owned.get(), length, nullptr, nullptr, masks.get()};
        }
    }
    exact_copy<std::uint8_t> bytes;
    std::unique_ptr<std::uint32_t[]> suffixes;
    std::unique_ptr<std::uint32_t[]> characters{new std::uint32_t[ZQ_BYTE_VALUES]};
    std::unique_ptr<std::uint32_t[]> masks{new std::uint32_t[ZQ_BYTE_VALUES]};
    zq_pattern boyer_moore = {};
    zq_pattern shift_or = {}; // without masks: the pattern is too long
};

// `positions` is empty for text of single-byte characters.
void expect_plain_scan(std::string_view text, const std::vector<std::uint32_t>& positions, std::string_view pattern, std::size_t from) {
    SCOPED_TRACE("text of " + std::to_string(text.size()) + ", pattern of " + std::to_string(pattern.size()) + ", from " +
                 std::to_string(from) + ": " + std::string(pattern.substr(0, 40)) + " in " + std::string(text.substr(0, 80)));
    std::vector<std::uint32_t> expected;
    std::uint32_t first_byte_match = ZQ_NOT_FOUND;
    for (std::size_t at = text.find(pattern, from); at != std::string_view::npos; at = text.find(pattern, at + 1)) {
        first_byte_match = std::min(first_byte_match, static_cast<std::uint32_t>(at));
        if (positions.empty() || at == 0 || positions[at] != positions[at - 1]) {
            expected.push_back(static_cast<std::uint32_t>(at));
        }
    }
    const auto expected_at = [&](std::size_t occurrence) { return occurrence < expected.size() ? expected[occurrence] : ZQ_NOT_FOUND; };
    const auto total = static_cast<std::uint32_t>(expected.size());

    const prepared_pattern prepared(pattern);
    const exact_copy copy(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    const exact_copy positions_copy(positions.data(), positions.size());
    const std::uint8_t* const bytes = copy.owned.get();
    const std::uint32_t* const places = positions.empty() ? nullptr : positions_copy.owned.get();
    const auto length = static_cast<std::uint32_t>(text.size());
    const auto start = static_cast<std::uint32_t>(from);

    struct {
        const zq_pattern* pattern;
        decltype(zq_strbmncmp)* plain;
        decltype(zq_strbmncmp_arr)* of_characters;
        decltype(zq_strbmncmp_arr_ex)* occurrence;
    } const algorithms[] = {{&prepared.boyer_moore, zq_strbmncmp, zq_strbmncmp_arr, zq_strbmncmp_arr_ex},
                            {&prepared.shift_or, zq_mbshiftor_ncmp, zq_mbshiftor_ncmp_arr, zq_mbshiftor_ncmp_arr_ex}};
    for (const auto& algorithm : algorithms) {
        if (algorithm.pattern->bytes == nullptr) {
            continue;
        }
        SCOPED_TRACE(algorithm.pattern->masks != nullptr ? "shift-or" : "Boyer-Moore");
        ASSERT_EQ(algorithm.plain(bytes, length, start, algorithm.pattern), first_byte_match);
        if (!positions.empty()) {
            ASSERT_EQ(algorithm.of_characters(bytes, length, start, algorithm.pattern, places), expected_at(0));
        }
        for (const std::uint32_t wanted : {1U, 2U, total / 2 + 1, total, total + 1}) {
            ASSERT_EQ(algorithm.occurrence(bytes, length, start, algorithm.pattern, places, wanted),
                      wanted == 0 ? ZQ_NOT_FOUND : expected_at(wanted - 1));
            std::uint32_t offset = 0;
            ASSERT_EQ(zq_get_occur_num(bytes, length, start, algorithm.pattern, places, wanted, &offset), std::min(wanted, total));
            ASSERT_EQ(offset, wanted == 0 ? ZQ_NOT_FOUND : expected_at(wanted - 1));
        }
    }
}

std::mt19937 random_numbers(20240229); // NOLINT(cert-msc51-cpp): every run is the same

std::size_t below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_numbers); }

std::string random_text(std::size_t length, std::string_view alphabet) {
    std::string text(length, ' ');
    std::generate(text.begin(), text.end(), [&] { return alphabet[below(alphabet.size())]; });
    return text;
}

// Of a period that is often much shorter than the text, with a few other bytes strewn in.
std::string periodic_text(std::size_t length, std::string_view alphabet) {
    const std::string period = random_text(1 + below(std::min<std::size_t>(length, 9)), alphabet);
    std::string text;
    while (text.size() < length) {
        text += period;
    }
    text.resize(length);
    for (std::size_t changes = below(3); changes-- > 0;) {
        text[below(length)] = alphabet[below(alphabet.size())];
    }
    return text;
}

std::string some_text(std::size_t length, std::string_view alphabet) {
    return below(2) == 0 ? random_text(length, alphabet) : periodic_text(length, alphabet);
}

// A piece of the text, perhaps changed in one byte, or a text of its own.
std::string pattern_for(const std::string& text, std::size_t length, std::string_view alphabet) {
    if (length > text.size() || below(4) == 0) {
        return some_text(length, alphabet);
    }
    std::string pattern = text.substr(below(text.size() - length + 1), length);
    if (below(3) == 0) {
        pattern[below(length)] = alphabet[below(alphabet.size())];
    }
    return pattern;
}

TEST(Search, FindsWhatAPlainScanFinds) {
    const std::string bytes = [] {
        std::string all(256, ' ');
        std::generate(all.begin(), all.end(), [value = 0]() mutable { return static_cast<char>(value++); });
        return all;
    }();
    for (const std::string_view alphabet :
         {std::string_view("a"), std::string_view("ab"), std::string_view("abc\xFF"), std::string_view(bytes)}) {
        for (const std::size_t length : {1U, 2U, 3U, 4U, 8U, 30U, 31U, 32U, 33U, 63U, 64U, 65U, 256U, 257U, 5000U}) {
            for (int repetition = 0; repetition < (length == 5000 ? 4 : 60); ++repetition) {
                // Short rests behind the pattern are where blocks end, long ones where the filter gives up.
                const std::size_t rest = repetition % 2 == 0 ? below(40) : below(3000);
                const std::string text = some_text(length + rest, alphabet);
                expect_plain_scan(text, {}, pattern_for(text, length, alphabet), below(3) == 0 ? below(text.size() + 2) : 0);
            }
        }
    }
}

TEST(Search, OccurrencesOfMultibyteTextBeginWithACharacter) {
    // Characters of 1, 2 and 4 bytes whose later bytes are characters, or beginnings of characters, of their own.
    const std::string_view characters[] = {"0", "A", "\2010", "\201A", "A", "\x81\x81", "\2010\2010", "\x81\x30\x81\x31"};
    for (int repetition = 0; repetition < 4000; ++repetition) {
        std::string text;
        std::vector<std::uint32_t> positions;
        const std::size_t count = 1 + below(repetition % 4 == 0 ? 400 : 30);
        for (std::uint32_t position = 1; position <= count; ++position) {
            const std::string_view character = characters[below(std::size(characters))];
            text += character;
            positions.insert(positions.end(), character.size(), position);
        }
        const std::size_t length = std::min(text.size(), repetition % 5 == 0 ? 32 + below(40) : 1 + below(6));
        expect_plain_scan(text, positions, pattern_for(text, length, "0A1\x81"), below(3) == 0 ? below(text.size() + 2) : 0);
    }
}

TEST(Search, FindsNothingWithoutText) {
    const prepared_pattern a("a");
    for (const std::uint32_t from : {0U, 1U, UINT32_MAX}) {
        EXPECT_EQ(zq_strbmncmp(nullptr, 0, from, &a.boyer_moore), ZQ_NOT_FOUND);
        EXPECT_EQ(zq_mbshiftor_ncmp(nullptr, 0, from, &a.shift_or), ZQ_NOT_FOUND);
        EXPECT_EQ(zq_mbshiftor_ncmp_arr_ex(nullptr, 0, from, &a.shift_or, nullptr, 1), ZQ_NOT_FOUND);
    }
}

// The smallest shift that puts an equal piece below what matched and another byte below the one that did not.
std::uint32_t good_suffix(const std::string& pattern, std::size_t unmatched) {
    for (std::size_t shift = 1;; ++shift) {
        bool fits = shift > unmatched || pattern[unmatched - shift] != pattern[unmatched];
        for (std::size_t i = std::max(unmatched + 1, shift); fits && i < pattern.size(); ++i) {
            fits = pattern[i - shift] == pattern[i];
        }
        if (fits) {
            return static_cast<std::uint32_t>(shift);
        }
    }
}

// A piece of a Fibonacci word, which has repetitions of as many periods as there can be.
std::string fibonacci_text(std::size_t length) {
    std::string text = "ab";
    for (std::string before = "a"; text.size() < 2 * length;) {
        before = std::exchange(text, text + before);
    }
    return text.substr(below(length), length);
}

// A table of too short shifts would find everything, and slowly.
TEST(Search, TablesHaveTheLongestShifts) {
    for (int repetition = 0; repetition < 600; ++repetition) {
        const std::size_t length = 1 + below(repetition % 50 < 2 ? 300 : 40);
        const std::string pattern = repetition % 2 == 0 ? some_text(length, "ab") : fibonacci_text(length);
        const prepared_pattern prepared(pattern);
        for (std::size_t i = 0; i < pattern.size(); ++i) {
            // A pattern matched whole moves on by its period, which is what the first entry holds.
            ASSERT_EQ(prepared.suffixes[i], good_suffix(pattern, i)) << pattern << " at " << i;
        }
        for (const char byte : {'a', 'b', 'c'}) {
            const std::size_t last = pattern.substr(0, pattern.size() - 1).rfind(byte);
            ASSERT_EQ(prepared.characters[static_cast<unsigned char>(byte)],
                      last == std::string::npos ? pattern.size() : pattern.size() - 1 - last)
                << pattern;
        }
    }
}

TEST(Search, PatternsOfMoreThan65535Bytes) {
    for (const std::size_t length : {std::size_t{65535}, std::size_t{65536}, std::size_t{70001}}) {
        const std::string run(length, 'a');
        const std::string runs = std::string(1, 'c').append(run).append("c").append(run).append("c");
        expect_plain_scan(runs, {}, run + "c", 0);
        expect_plain_scan(runs, {}, runs.substr(0, length), 0);
        for (const std::string& text : {random_text(length + 3000, "ab"), fibonacci_text(length + 3000)}) {
            const std::string pattern = pattern_for(text, length, "ab");
            expect_plain_scan(text, {}, pattern, 0);
            const prepared_pattern prepared(pattern);
            for (const std::size_t i : {std::size_t{0}, std::size_t{1}, length / 2, length - 1}) {
                ASSERT_EQ(prepared.suffixes[i], good_suffix(pattern, i)) << pattern.substr(0, 40) << " at " << i;
            }
        }
    }
}

} // namespace
