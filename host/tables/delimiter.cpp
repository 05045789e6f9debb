// SPDX-License-Identifier: Apache-2.0
#include "host/tables/delimiter.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include <fmt/format.h>

#include "host/near_names.h"
#include "host/tables/file_name.h"
#include "host/tables/line_scan.h"

namespace host {
namespace {

struct named_delimiter {
    std::string_view name;
    char delimiter;
};
constexpr named_delimiter named_delimiters[] = {
    {"comma", ','}, {"semicolon", ';'}, {"tab", '\t'}, {"bar", '|'}, {"pipe", '|'}, {"space", ' '}, {"colon", ':'}, {"\\t", '\t'},
};
constexpr std::size_t guessed_delimiters = 4; // the first of them, the bar last

// How a delimiter cuts the first lines.
struct cut_lines {
    char delimiter;
    std::uint32_t fields;     // of the first line that is not blank
    std::uint32_t same_lines; // with as many fields, in a row from the first
    bool all_same;
    std::uint32_t last_fields; // of the last two lines, where they have as many and not only as blanks follow
};

cut_lines cut_with(const csv_syntax& syntax, std::string_view text, bool is_all) {
    line_index index;
    scan_lines(text, is_all, syntax, index);
    cut_lines cut{.delimiter = syntax.delimiter, .fields = 0, .same_lines = 0, .all_same = false, .last_fields = 0};
    std::uint32_t line = 0;
    for (std::uint32_t before = 0; line < index.lines; before = index.line_fields[line++]) {
        const std::uint32_t fields = index.line_fields[line] - before;
        const std::uint32_t begin = index.ends[before] + 1;
        const std::uint32_t length = index.ends[before + 1] - begin;
        const bool blank = fields == 1 && (length == 0 || (length == 1 && text[begin] == '\r'));
        cut.fields = cut.fields == 0 && !blank ? fields : cut.fields;
        if (fields != cut.fields && !blank) {
            break;
        }
    }
    if (const std::uint32_t lines = index.lines; lines > 2) {
        const std::uint32_t last = index.line_fields[lines - 1] - index.line_fields[lines - 2];
        const bool are_same = last == index.line_fields[lines - 2] - index.line_fields[lines - 3];
        // Smith; John
        bool is_punctuation = true;
        for (std::uint32_t f = index.line_fields[lines - 2] + 1; f < index.line_fields[lines - 1]; ++f) {
            const std::size_t begin = index.ends[f] + std::size_t{1};
            is_punctuation &= begin < text.size() && text[begin] == ' ';
        }
        cut.last_fields = are_same && !is_punctuation ? last : 0;
    }
    cut.same_lines = line;
    cut.all_same = line == index.lines && (!index.found_fault || index.found_fault->kind == scan_fault::comment) &&
                   !index.has_quotes_as_text; // which a wrong delimiter makes of others
    return cut;
}

// Whether all lines have the same number of words, more than one, with any number of blanks between.
bool has_aligned_words(std::string_view text) {
    std::size_t words_of_first = 0;
    std::size_t lines = 0;
    for (std::size_t end = text.find('\n'); end != text.npos; end = text.find('\n')) {
        std::size_t words = 0;
        for (std::size_t i = 0; i < end; ++i) {
            words += text[i] != ' ' && text[i] != '\r' && (i == 0 || text[i - 1] == ' ') ? 1 : 0;
        }
        text.remove_prefix(end + 1);
        if (words == 0) {
            continue;
        }
        words_of_first = lines++ == 0 ? words : words_of_first;
        if (words != words_of_first) {
            return false;
        }
    }
    return lines > 1 && words_of_first > 1;
}

// Blanks and colons stand in texts of a single column, too, so that they are not taken for what separates fields.
std::string doubt_of_unguessed(std::string_view path, std::string_view text, bool is_all, csv_syntax syntax) {
    for (const char delimiter : {' ', ':'}) {
        syntax.delimiter = delimiter;
        const cut_lines cut = cut_with(syntax, text, is_all);
        if (cut.fields > 1 && cut.all_same && cut.same_lines > 1) {
            return fmt::format("{}: each line is taken for one field; --delimiter {} reads {} fields", path, delimiter_name(delimiter),
                               cut.fields);
        }
    }
    return has_aligned_words(text)
               ? fmt::format("{0}: each line is taken for one field; where blanks align columns, tr -s ' ' < {0} | bifun "
                             "--delimiter space - reads them",
                             path)
               : "";
}

} // namespace

std::optional<char> find_delimiter_named(std::string_view text) {
    const auto* const found =
        std::ranges::find_if(named_delimiters, [&](const named_delimiter& d) { return equal_ignoring_case(d.name, text); });
    if (found != std::end(named_delimiters)) {
        return found->delimiter;
    }
    const std::optional<char> byte = find_byte(text);
    return byte == '"' ? std::nullopt : byte;
}

std::optional<char> find_byte(std::string_view text) {
    const auto is_usable = [](char byte) { return byte != '\n' && byte != '\r'; };
    unsigned byte = 0;
    if (text.size() == 4 && equal_ignoring_case(text.substr(0, 2), "0x")) {
        const auto [end, error] = std::from_chars(text.data() + 2, text.data() + text.size(), byte, 16);
        const bool is_byte = error == std::errc{} && end == text.data() + text.size() && is_usable(static_cast<char>(byte));
        return is_byte ? std::optional(static_cast<char>(byte)) : std::nullopt;
    }
    return text.size() == 1 && is_usable(text[0]) ? std::optional(text[0]) : std::nullopt;
}

std::string delimiter_name(char delimiter) {
    const auto* const found = std::ranges::find(named_delimiters, delimiter, &named_delimiter::delimiter);
    return found != std::end(named_delimiters) ? std::string(found->name)
           : static_cast<unsigned char>(delimiter) > 0x20 && delimiter > 0 && delimiter < 0x7F
               ? fmt::format("{}", delimiter)
               : fmt::format("byte 0x{:02X}", static_cast<unsigned char>(delimiter));
}

found_delimiter guess_delimiter(std::string_view path, std::string_view text, bool is_all, csv_syntax syntax, bool may_be_bar) {
    const std::string extension = extension_of(path);
    if (extension == ".tsv" || extension == ".tab" || extension == ".psv") {
        return {extension == ".psv" ? '|' : '\t', ""};
    }
    constexpr std::size_t looked_at = std::size_t{64} * 1024;
    is_all = is_all && text.size() <= looked_at;
    text = text.substr(0, looked_at);
    std::vector<cut_lines> candidates;
    std::optional<char> of_last_lines;
    for (std::size_t i = 0; i < guessed_delimiters - (may_be_bar ? 0 : 1); ++i) {
        syntax.delimiter = named_delimiters[i].delimiter;
        const cut_lines cut = cut_with(syntax, text, is_all);
        if (cut.fields > 1 && syntax.delimiter != syntax.quote && syntax.delimiter != syntax.escape) {
            candidates.push_back(cut);
        } else if (cut.last_fields > 1) {
            of_last_lines = syntax.delimiter;
        }
    }
    if (const std::string unguessed = candidates.empty() ? doubt_of_unguessed(path, text, is_all, syntax) : ""; !unguessed.empty()) {
        return {',', unguessed};
    }
    if (candidates.empty()) {
        return {',', of_last_lines ? fmt::format("{}: the first line has one field, and others have fields that end with a {}; --skip or "
                                                 "--comment leaves out lines before the header",
                                                 path, delimiter_name(*of_last_lines))
                                   : ""};
    }
    const auto is_worse = [](const cut_lines& a, const cut_lines& b) {
        return a.all_same != b.all_same ? b.all_same : a.all_same ? false : a.same_lines < b.same_lines;
    };
    const cut_lines& best = *std::ranges::max_element(candidates, is_worse);
    const auto rival = std::ranges::find_if(
        candidates, [&](const cut_lines& other) { return &other != &best && !is_worse(other, best) && !is_worse(best, other); });
    const bool is_sure = candidates.size() == 1 || (best.all_same && rival == candidates.end());
    if (is_sure) {
        return {best.delimiter, ""};
    }
    const cut_lines& other =
        rival != candidates.end() ? *rival : *std::ranges::find_if(candidates, [&](const cut_lines& c) { return &c != &best; });
    return {best.delimiter, fmt::format("{}: fields are taken to end with a {}, though it could be a {}; --delimiter says which", path,
                                        delimiter_name(best.delimiter), delimiter_name(other.delimiter))};
}

} // namespace host
