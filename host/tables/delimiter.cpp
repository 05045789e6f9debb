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

// The words of a line, and whether runs of blanks lie between some.
struct aligned_line {
    std::size_t words = 0;
    bool has_run = false;
};

aligned_line align(std::string_view line) {
    aligned_line found;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const bool begins_word = line[i] != ' ' && line[i] != '\r' && (i == 0 || line[i - 1] == ' ');
        found.words += begins_word ? 1 : 0;
        found.has_run = found.has_run || (begins_word && found.words > 1 && line[i - 2] == ' ');
    }
    return found;
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
    const std::string advice = advice_on_aligned(path, text);
    return advice.empty() ? "" : fmt::format("{}: each line is taken for one field; {}", path, advice);
}

// Lines that begin with # hide what separates the fields of those behind them.
std::string doubt_of_remarks(std::string_view path, std::string_view text, bool is_all, csv_syntax syntax, std::size_t guessed) {
    if (!text.starts_with('#')) {
        return "";
    }
    while (text.starts_with('#')) {
        text.remove_prefix(std::min(text.find('\n'), text.size() - 1) + 1);
    }
    cut_lines best{.delimiter = ',', .fields = 0, .same_lines = 1, .all_same = false, .last_fields = 0};
    for (std::size_t i = 0; i < guessed; ++i) {
        syntax.delimiter = named_delimiters[i].delimiter;
        const cut_lines cut = cut_with(syntax, text, is_all);
        if (cut.fields > 1 && cut.same_lines > best.same_lines) {
            best = cut;
        }
    }
    return best.fields == 0
               ? ""
               : fmt::format("{}: the first line begins with # and has one field, and those behind it have fields that end with a {}; "
                             "--comment '#' leaves out lines that begin so",
                             path, delimiter_name(best.delimiter));
}

} // namespace

std::string advice_on_aligned(std::string_view path, std::string_view text) {
    std::vector<aligned_line> lines;
    for (std::size_t end = text.find('\n'); end != text.npos; end = text.find('\n')) {
        if (const aligned_line line = align(text.substr(0, end)); line.words > 0) {
            lines.push_back(line);
        }
        text.remove_prefix(end + 1);
    }
    if (lines.size() < 2) {
        return "";
    }
    const bool have_same = std::ranges::all_of(lines, [&](const aligned_line& line) { return line.words == lines[0].words; });
    if (have_same) {
        return lines[0].words == 1 ? ""
                                   : fmt::format("where blanks align columns, tr -s ' '{} | bifun --delimiter space - reads them",
                                                 file_operand(path, " < "));
    }
    // As ps, df and ls write: the last column has blanks of its own, and the first line may be a sum.
    constexpr std::size_t fewest = 3;
    const std::size_t fields_below = std::ranges::min_element(lines.begin() + 1, lines.end(), {}, &aligned_line::words)->words;
    const bool has_names = lines[0].has_run || lines[0].words >= fields_below;
    const std::size_t fields = has_names ? std::min(lines[0].words, fields_below) : fields_below;
    const bool are_aligned =
        std::all_of(lines.begin() + (has_names ? 0 : 1), lines.end(), [](const aligned_line& line) { return line.has_run; });
    return fields < fewest || !are_aligned
               ? ""
               : fmt::format("where blanks align columns, awk 'NF >= {0} {{for (i = 1; i < {0}; i++) {{printf \"%s\\t\", $i; $i = \"\"}} "
                             "sub(/^ +/, \"\"); print}}'{1} | bifun --delimiter tab --quote none{2} - reads {0}, the last with its blanks",
                             fields, file_operand(path), has_names ? "" : " --no-header");
}

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
    const std::size_t guessed = guessed_delimiters - (may_be_bar ? 0 : 1);
    for (std::size_t i = 0; i < guessed; ++i) {
        syntax.delimiter = named_delimiters[i].delimiter;
        const cut_lines cut = cut_with(syntax, text, is_all);
        if (cut.fields > 1 && syntax.delimiter != syntax.quote && syntax.delimiter != syntax.escape) {
            candidates.push_back(cut);
        } else if (cut.last_fields > 1) {
            of_last_lines = syntax.delimiter;
        }
    }
    if (const std::string remark = candidates.empty() ? doubt_of_remarks(path, text, is_all, syntax, guessed) : ""; !remark.empty()) {
        return {',', remark};
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
