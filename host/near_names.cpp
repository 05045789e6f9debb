// SPDX-License-Identifier: Apache-2.0
#include "host/near_names.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace host {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Insertions, deletions, replacements and swaps of neighbours that turn `a` into `b`.
std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before_previous(b.size() + 1);
    std::vector<std::size_t> previous(b.size() + 1);
    std::vector<std::size_t> current(b.size() + 1);
    std::iota(previous.begin(), previous.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = lower(a[i - 1]) == lower(b[j - 1]);
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1, previous[j - 1] + (same ? 0U : 1U)});
            if (i > 1 && j > 1 && lower(a[i - 1]) == lower(b[j - 2]) && lower(a[i - 2]) == lower(b[j - 1])) {
                current[j] = std::min(current[j], before_previous[j - 2] + 1);
            }
        }
        before_previous.swap(previous);
        previous.swap(current);
    }
    return previous[b.size()];
}

// POW for POWER, CEILING for CEIL.
bool begins_with_the_other(std::string_view a, std::string_view b) {
    constexpr std::size_t shortest = 3;
    const std::size_t shared = std::min(a.size(), b.size());
    return shared >= shortest && equal_ignoring_case(a.substr(0, shared), b.substr(0, shared));
}

} // namespace

std::string lower_case(std::string_view text) {
    std::string made(text);
    std::ranges::transform(made, made.begin(), lower);
    return made;
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

std::string did_you_mean(std::string_view name, std::span<const std::string> candidates, std::string (*shown)(const std::string&)) {
    constexpr std::size_t longest_name = 200;
    if (name.size() > longest_name) {
        return {};
    }
    const std::size_t tolerance = name.size() < 4 ? 1 : name.size() < 8 ? 2 : 3;
    std::vector<std::pair<std::size_t, const std::string*>> near;
    for (const std::string& candidate : candidates) {
        const std::size_t distance = candidate.size() > longest_name          ? longest_name
                                     : begins_with_the_other(name, candidate) ? 1
                                                                              : edit_distance(name, candidate);
        if (distance <= tolerance && distance < std::max(name.size(), candidate.size())) {
            near.emplace_back(distance, &candidate);
        }
    }
    std::stable_sort(near.begin(), near.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    constexpr std::size_t most_suggestions = 3;
    std::string text;
    for (std::size_t i = 0; i < near.size() && i < most_suggestions && near[i].first == near[0].first; ++i) {
        text += i == 0 ? "; did you mean " : " or ";
        text += shown(*near[i].second);
    }
    return text.empty() ? text : text + "?";
}

} // namespace host
