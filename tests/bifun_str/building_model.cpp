// SPDX-License-Identifier: Apache-2.0
// Texts built of others.
#include <algorithm>
#include <iterator>

#include "tests/bifun_str/family_models.h"

namespace string_model {

// A pattern without trailing blanks of its own is not looked for in those of the text.
std::string replace(const bifun_settings& settings, const text& value, const text& pattern, const text& replacement) {
    const std::uint32_t charset = settings.charset_code;
    const bool folds = settings.case_sensitive == 0;
    const cells original = cells_of(charset, value);
    const text looked_in = {value.stored, pattern.blanks == 0 ? 0 : value.blanks};
    const characters searched = full_text(charset, folds ? folded(charset, looked_in) : looked_in);
    const characters sought = full_text(charset, folds ? folded(charset, pattern) : pattern);
    cells result;
    std::size_t done = 0;
    for (const std::size_t place : sought.empty() ? std::vector<std::size_t>() : occurrences(searched, sought)) {
        if (place >= done) {
            append(result, part_of(original, done, place));
            append(result, written_out(cells_of(charset, replacement)));
            done = place + sought.size();
        }
    }
    return shown(append(result, part_of(original, done, original.size())));
}

std::string overlay(std::uint32_t charset, const text& value, std::int64_t position, std::int64_t length, const text& replacement) {
    const cells all = cells_of(charset, value);
    const auto begin = static_cast<std::size_t>(std::min(position - 1, std::ssize(all)));
    const auto end = static_cast<std::size_t>(std::min(position - 1 + length, std::ssize(all)));
    cells result = written_out(part_of(all, 0, begin));
    append(result, written_out(cells_of(charset, replacement)));
    return shown(append(result, part_of(all, end, all.size())));
}

std::string translate(std::uint32_t charset, const text& value, const text& from, const text& to) {
    const characters sought = full_text(charset, from);
    const characters given = full_text(charset, to);
    cells result;
    for (const cell& cell : cells_of(charset, value)) {
        const auto found = static_cast<std::size_t>(std::ranges::find(sought, cell.character) - sought.begin());
        if (found == sought.size()) {
            result.push_back(cell);
        } else if (found < given.size()) {
            result.push_back({given[found], cell.is_counted && given[found] == " "});
        }
    }
    return shown(result);
}

namespace {

// A number of characters, of which those that the text lacks are of the pad.
cells padding(std::uint32_t charset, std::size_t present, std::int64_t length, const text& pad) {
    const characters repeated = full_text(charset, pad);
    cells result;
    for (std::size_t i = 0; !repeated.empty() && static_cast<std::int64_t>(present + i) < length; ++i) {
        const std::string& character = repeated[i % repeated.size()];
        result.push_back({character, character == " "});
    }
    return result;
}

cells beginning(const cells& all, std::int64_t length) {
    return part_of(all, 0, static_cast<std::size_t>(std::clamp<std::int64_t>(length, 0, std::ssize(all))));
}

} // namespace

std::string padded_on_the_left(std::uint32_t charset, const text& value, std::int64_t length, const text& pad) {
    const cells all = cells_of(charset, value);
    cells result = padding(charset, all.size(), length, pad);
    return shown(append(result, beginning(all, length)));
}

std::string padded_on_the_right(std::uint32_t charset, const text& value, std::int64_t length, const text& pad) {
    const cells all = cells_of(charset, value);
    cells result = beginning(all, length);
    return shown(append(result, padding(charset, all.size(), length, pad)));
}

std::string concatenation(const value& a, const value& b) {
    if (a.is_null || b.is_null) {
        return a.is_null && b.is_null ? "NULL" : shown(a.is_null ? b.string : a.string);
    }
    const std::string blanks(a.string.blanks, ' ');
    return b.string.stored.empty() ? shown(text{a.string.stored, a.string.blanks + b.string.blanks})
                                   : shown(text{a.string.stored + blanks + b.string.stored, b.string.blanks});
}

std::string repetition(std::uint32_t charset, const text& value, std::int64_t count) {
    cells result;
    for (std::int64_t i = 0; i < count; ++i) {
        append(result, cells_of(charset, value));
    }
    return shown(result);
}

} // namespace string_model
