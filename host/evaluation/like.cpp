// SPDX-License-Identifier: Apache-2.0
#include "host/evaluation/like.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "engine/charset.h"
#include "host/evaluation/comparison.h"
#include "host/program_error.h"

namespace host {
namespace {

enum class element_kind : std::uint8_t { one_character, any_characters, this_character };

struct pattern_element {
    element_kind kind;
    std::string_view character; // this_character
};

// A pattern taken apart; the characters point into the text that it is made from.
struct like_pattern {
    std::string text;
    std::vector<pattern_element> elements;
    std::vector<pattern_element> without_blanks; // at the end
};

std::size_t character_length(std::string_view text) {
    return zq_mb_char_get_len_ex(reinterpret_cast<const std::uint8_t*>(text.data()), static_cast<std::uint32_t>(text.size()));
}

char folded(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Only single bytes: the second bytes of some characters look like letters.
void fold(std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = character_length(std::string_view(text).substr(at));
        text[at] = length == 1 ? folded(text[at]) : text[at];
        at += length;
    }
}

std::string with_blanks(const bifun_string& value, std::size_t blanks) {
    std::string text;
    text.append(reinterpret_cast<const char*>(value.data), value.length);
    return text.append(blanks, ' ');
}

std::string full_text(const bifun_string& value, std::size_t blanks, bool fold_case) {
    std::string text = with_blanks(value, blanks);
    if (fold_case) {
        fold(text);
    }
    return text;
}

void take_apart(like_pattern& pattern, std::string_view escape, bool fold_case) {
    pattern.elements.clear();
    std::string_view rest = pattern.text;
    while (!rest.empty()) {
        std::string_view character = rest.substr(0, character_length(rest));
        rest.remove_prefix(character.size());
        const bool is_escaped = !escape.empty() && character == escape;
        if (is_escaped) {
            if (rest.empty()) {
                fail("LIKE: the pattern '{}' ends in its escape character", pattern.text);
            }
            character = rest.substr(0, character_length(rest));
            rest.remove_prefix(character.size());
        }
        const element_kind kind = is_escaped         ? element_kind::this_character
                                  : character == "%" ? element_kind::any_characters
                                  : character == "_" ? element_kind::one_character
                                                     : element_kind::this_character;
        pattern.elements.push_back({kind, character});
    }
    pattern.without_blanks = pattern.elements;
    while (!pattern.without_blanks.empty() && pattern.without_blanks.back().kind == element_kind::this_character &&
           pattern.without_blanks.back().character == " ") {
        pattern.without_blanks.pop_back();
    }
    if (fold_case) {
        fold(pattern.text); // keeps the characters where they are
    }
}

// Goes back to the last % alone where the rest does not match: an earlier one has nothing better to offer.
bool matches(std::string_view text, const std::vector<pattern_element>& elements) {
    std::size_t next = 0;
    std::size_t behind_any = elements.size() + 1; // the element behind the last %
    std::string_view taken_by_any;                // the text from where the last % may end
    while (!text.empty()) {
        const bool has_next = next < elements.size();
        if (has_next && elements[next].kind == element_kind::any_characters) {
            behind_any = ++next;
            taken_by_any = text;
        } else if (has_next && (elements[next].kind == element_kind::one_character || text.starts_with(elements[next].character))) {
            text.remove_prefix(elements[next].kind == element_kind::one_character ? character_length(text)
                                                                                  : elements[next].character.size());
            ++next;
        } else if (behind_any <= elements.size()) {
            taken_by_any.remove_prefix(character_length(taken_by_any));
            text = taken_by_any;
            next = behind_any;
        } else {
            return false;
        }
    }
    return std::all_of(elements.begin() + static_cast<std::ptrdiff_t>(next), elements.end(),
                       [](const pattern_element& e) { return e.kind == element_kind::any_characters; });
}

bool is_same(const bifun_string& a, const bifun_string& b) {
    return a.data == b.data && a.length == b.length && a.trailing_blanks == b.trailing_blanks;
}

} // namespace

void match_columns(const bifun_column& texts, const bifun_column& patterns, std::string_view escape, bool fold_case, bifun_column& result,
                   std::uint32_t row_count) {
    const auto* const text_values = static_cast<const bifun_string*>(texts.data->values);
    const auto* const pattern_values = static_cast<const bifun_string*>(patterns.data->values);
    auto* const values = static_cast<std::int32_t*>(result.data->values);
    like_pattern pattern;
    const bifun_string* last = nullptr;
    for (std::uint32_t k = 0; k < row_count; ++k) {
        const std::uint32_t i = row_of(texts, k);
        const std::uint32_t j = row_of(patterns, k);
        const bool known = texts.data->null_flags[i] != 0 && patterns.data->null_flags[j] != 0;
        result.data->null_flags[k] = known ? 1 : 0;
        values[k] = 0;
        if (!known) {
            continue;
        }
        if (last == nullptr || !is_same(*last, pattern_values[j])) {
            last = &pattern_values[j];
            pattern.text = with_blanks(*last, last->trailing_blanks);
            take_apart(pattern, escape, fold_case);
        }
        const bifun_string& text = text_values[i];
        const bool has_blanks = text.trailing_blanks > 0;
        values[k] = matches(full_text(text, 0, fold_case), pattern.without_blanks) ||
                            (has_blanks && matches(full_text(text, text.trailing_blanks, fold_case), pattern.elements))
                        ? 1
                        : 0;
    }
    result.no_nulls = texts.no_nulls != 0 && patterns.no_nulls != 0 ? 1 : 0;
}

} // namespace host
