// SPDX-License-Identifier: Apache-2.0
// Parts of texts and places in them.
#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "tests/bifun_str/family_models.h"

namespace string_model {

namespace {

struct range {
    std::size_t begin, end;
};

// Units `position` to `position + length - 1` of `total`, counted from the end where the position is negative.
range part(std::size_t total, std::int64_t position, std::int64_t length) {
    const auto size = static_cast<std::int64_t>(total);
    const std::int64_t begin = position > 0 ? position - 1 : position == 0 ? 0 : size + position;
    if (begin < 0 || begin >= size) {
        return {0, 0};
    }
    return {static_cast<std::size_t>(begin), static_cast<std::size_t>(begin + std::min(length, size - begin))};
}

// Whether the length makes the row NULL: it does not matter where nothing is there to take.
bool refuses(std::size_t total, std::int64_t position, std::int64_t length) {
    const auto size = static_cast<std::int64_t>(total);
    return length < 0 && position <= size && size + position >= 0;
}

// Characters `begin` to `end` of a text: of its blanks as a count.
std::string shown_part(const characters& all, const text& value, range taken) {
    const std::size_t stored = all.size() - value.blanks;
    const auto at = [&](std::size_t index) { return all.begin() + static_cast<std::ptrdiff_t>(std::min(index, stored)); };
    return shown(
        {joined(at(taken.begin), at(taken.end)), static_cast<std::uint32_t>(taken.end - std::clamp(stored, taken.begin, taken.end))});
}

} // namespace

std::string substring(std::uint32_t charset, const text& value, std::int64_t position, std::int64_t length) {
    const characters all = full_text(charset, value);
    return refuses(all.size(), position, length) ? "NULL" : shown_part(all, value, part(all.size(), position, length));
}

std::string right(std::uint32_t charset, const text& value, std::int64_t length) {
    const auto total = static_cast<std::int64_t>(full_text(charset, value).size());
    return substring(charset, value, length >= total ? 1 : total - length + 1, everything);
}

std::string substring_of_bytes(std::uint32_t charset, const text& value, std::int64_t position, std::int64_t length) {
    const std::size_t total = value.stored.size() + value.blanks;
    if (refuses(total, position, length)) {
        return "NULL";
    }
    const range taken = part(total, position, length);
    if (taken.begin >= value.stored.size() || taken.begin == taken.end) {
        return shown({"", static_cast<std::uint32_t>(taken.end - taken.begin)});
    }
    std::string uncut;
    for (const std::string& character : characters_of(charset, value.stored)) {
        const bool is_cut = uncut.size() < taken.begin || uncut.size() + character.size() > taken.end;
        uncut += is_cut ? std::string(character.size(), ' ') : character;
    }
    return shown({uncut.substr(taken.begin, taken.end - taken.begin), value.blanks});
}

namespace {

std::int64_t place_of(const characters& all, const characters& pattern, unit unit, std::int64_t start, std::int64_t occurrence) {
    const auto size = [&](std::size_t begin, std::size_t end) {
        const auto at = [&](std::size_t i) { return all.begin() + static_cast<std::ptrdiff_t>(i); };
        return static_cast<std::int64_t>(unit == unit::byte ? joined(at(begin), at(end)).size() : end - begin);
    };
    std::vector<std::int64_t> places;
    for (const std::size_t index : occurrences(all, pattern)) {
        const std::int64_t place = size(0, index) + 1;
        const std::int64_t last = place + size(index, index + pattern.size()) - 1;
        if (start > 0 ? place >= start : start < 0 && last <= size(0, all.size()) + start + 1) {
            places.push_back(place);
        }
    }
    if (start < 0) {
        std::ranges::reverse(places);
    }
    return occurrence <= static_cast<std::int64_t>(places.size()) ? places[static_cast<std::size_t>(occurrence - 1)] : 0;
}

} // namespace

std::string search(const bifun_settings& settings, bool folds, unit unit, text value, text pattern, std::int64_t start,
                   std::int64_t occurrence) {
    if (is_empty(pattern)) {
        return "NULL";
    }
    if (folds && settings.case_sensitive == 0) {
        value = folded(settings.charset_code, value);
        pattern = folded(settings.charset_code, pattern);
    }
    return std::to_string(
        place_of(full_text(settings.charset_code, value), full_text(settings.charset_code, pattern), unit, start, occurrence));
}

std::string substring_index(std::uint32_t charset, const text& value, const text& delimiter, std::int64_t count) {
    const characters all = full_text(charset, value);
    const characters sought = full_text(charset, delimiter);
    if (count == 0 || sought.empty()) {
        return shown(text{});
    }
    const std::vector<std::size_t> found = occurrences(all, sought);
    const auto wanted = static_cast<std::size_t>(std::abs(count));
    range taken = {0, all.size()};
    if (wanted <= found.size() && count > 0) {
        taken.end = found[wanted - 1];
    } else if (wanted <= found.size()) {
        taken.begin = found[found.size() - wanted] + sought.size();
    }
    return shown_part(all, value, taken);
}

} // namespace string_model
