// SPDX-License-Identifier: Apache-2.0
// TRIM, LTRIM and RTRIM.
#include <algorithm>

#include "tests/bifun_str/family_models.h"

namespace string_model {

namespace {

bool lies_in(unsigned char byte, unsigned low, unsigned high) { return byte >= low && byte <= high; }

bool is_whitespace(char byte) { return byte == ' ' || lies_in(static_cast<unsigned char>(byte), 9, 13); }

bool is_blank_set(const text& set) { return set.stored.empty() && set.blanks != 0; }
bool has_whitespace(const text& set) { return std::ranges::any_of(set.stored, is_whitespace); }

std::string without_leading(std::uint32_t charset, const std::string& bytes, const characters& set) {
    const characters all = characters_of(charset, bytes);
    return joined(std::ranges::find_if(all, [&](const auto& c) { return std::ranges::count(set, c) == 0; }), all.end());
}

std::string without_trailing(std::uint32_t charset, const std::string& bytes, const characters& set) {
    characters all = characters_of(charset, bytes);
    while (!all.empty() && std::ranges::count(set, all.back()) != 0) {
        all.pop_back();
    }
    return joined(all.begin(), all.end());
}

std::string without_leading_whitespace(const std::string& bytes) { return {std::ranges::find_if_not(bytes, is_whitespace), bytes.end()}; }

} // namespace

std::string trimmed_on_the_left(std::uint32_t charset, const text& value, const text& set) {
    const characters members = characters_of(charset, set.stored);
    if (is_empty(value) || is_empty(set)) {
        return shown(value);
    }
    if (is_blank_set(set)) {
        // The count is kept where there is a text before it.
        return shown({without_leading(charset, value.stored, {" "}), value.stored.empty() ? 0 : value.blanks});
    }
    if (set.blanks != 0 || has_whitespace(set)) {
        const std::string rest = without_leading(charset, without_leading_whitespace(value.stored), members);
        return shown({rest, rest.empty() ? 0 : value.blanks});
    }
    if (!value.stored.empty() && is_whitespace(value.stored[0])) {
        return "=?";
    }
    return shown({without_leading(charset, value.stored, members), value.blanks});
}

std::string trimmed_on_the_right(std::uint32_t charset, const text& value, const text& set) {
    if (is_blank_set(set)) {
        return shown({value.stored, 0});
    }
    if (is_empty(value) || is_empty(set) || (set.blanks == 0 && !has_whitespace(set) && value.blanks != 0)) {
        return shown(value);
    }
    return shown({without_trailing(charset, value.stored, characters_of(charset, set.stored)), 0});
}

std::string trimmed_on_both_sides(std::uint32_t charset, const text& value, const text& set) {
    if (set.blanks != 0) {
        return shown({without_leading_whitespace(value.stored), 0});
    }
    const characters members = characters_of(charset, set.stored);
    const bool begins_with_whitespace = !value.stored.empty() && is_whitespace(value.stored[0]);
    const std::string rest = begins_with_whitespace ? value.stored : without_leading(charset, value.stored, members);
    return shown({value.blanks != 0 ? rest : without_trailing(charset, rest, members), value.blanks});
}

std::string trim(std::uint32_t charset, std::int32_t mode, const text& value, const text& set) {
    if (is_empty(value) || is_empty(set)) {
        return shown(value);
    }
    if (characters_of(charset, set.stored).size() + set.blanks != 1) {
        return "";
    }
    return (mode == 579 ? trimmed_on_the_left : mode == 580 ? trimmed_on_the_right : trimmed_on_both_sides)(charset, value, set);
}

} // namespace string_model
