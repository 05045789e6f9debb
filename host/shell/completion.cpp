// SPDX-License-Identifier: Apache-2.0
#include "host/shell/completion.h"

#include <algorithm>
#include <filesystem>

#include "bop/frame/catalogue.h"
#include "host/near_names.h"
#include "host/sql/tokens.h"

namespace host {
namespace {

constexpr std::string_view keywords[] = {"AND",    "AS",    "BETWEEN", "CASE",      "CURRENT_DATE", "CURRENT_TIMESTAMP",
                                         "DATE",   "ELSE",  "END",     "ESCAPE",    "EXTRACT",      "FALSE",
                                         "FROM",   "ILIKE", "IN",      "INTERVAL",  "IS",           "LIKE",
                                         "LIMIT",  "NOT",   "NULL",    "OFFSET",    "OR",           "OVERLAPS",
                                         "SELECT", "THEN",  "TIME",    "TIMESTAMP", "TRUE",         "WHEN",
                                         "WHERE"};

bool begins_with(std::string_view text, std::string_view begun) { return equal_ignoring_case(text.substr(0, begun.size()), begun); }

void sort(completions& found) {
    std::ranges::sort(found.texts);
    found.texts.erase(std::unique(found.texts.begin(), found.texts.end()), found.texts.end());
}

void add_name(completions& found, const std::string& name, std::string_view begun) {
    const bool has_quotes = name.starts_with('"');
    if (begins_with(std::string_view(name).substr(has_quotes ? 1 : 0), begun)) {
        found.texts.push_back(name);
    }
}

void add_word(completions& found, std::string_view word, std::string_view begun, std::string_view behind) {
    if (!begins_with(word, begun)) {
        return;
    }
    std::string text(word);
    if (begun[0] >= 'a' && begun[0] <= 'z') {
        std::ranges::transform(text, text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    }
    found.texts.push_back(text.append(behind));
}

} // namespace

std::vector<std::string> function_names() {
    std::vector<std::string> names;
    for (const bifun::builtin& known : bifun::builtins) {
        names.emplace_back(known.name);
    }
    for (const bifun::spelling& known : bifun::spellings) {
        for (std::string_view rest = known.names; !rest.empty();) {
            const std::size_t end = std::min(rest.find(' '), rest.size());
            names.emplace_back(rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    return names;
}

completions complete_statement(std::string_view before, const std::vector<shell_table>& tables) {
    std::string_view last;
    std::string_view last_but_one; // neither is blank
    bool ends_in_last = false;
    for (std::size_t at = 0; at < before.size();) {
        const std::string_view token = sql_token(before, at);
        at += token.size();
        ends_in_last = token.find_first_not_of(" \t\r\n") != std::string_view::npos;
        if (ends_in_last) {
            last_but_one = last;
            last = token;
        }
    }
    const bool is_open_name = ends_in_last && last[0] == '"' && (last.size() == 1 || last.back() != '"');
    const bool is_word = ends_in_last && is_sql_word_character(last[0]);
    if (ends_in_last && (is_sql_comment(last) || last[0] == '\'' || last[0] == '$')) {
        return {};
    }
    std::string_view begun;
    if (is_open_name || is_word) {
        begun = last.substr(is_open_name ? 1 : 0);
        last = last_but_one;
    }
    completions found{.replaced = begun.size() + (is_open_name ? 1 : 0), .texts = {}};
    const bool is_behind_from = equal_ignoring_case(last, "FROM");
    for (const shell_table& table : tables) {
        add_name(found, table.name, begun);
        for (std::size_t i = 0; !is_behind_from && i < table.columns.size(); ++i) {
            add_name(found, table.columns[i], begun);
        }
    }
    if (is_word && !is_behind_from) {
        for (const std::string_view keyword : keywords) {
            add_word(found, keyword, begun, " ");
        }
        for (const std::string& name : function_names()) {
            add_word(found, name, begun, "(");
        }
    }
    sort(found);
    return found;
}

completions complete_word(std::string_view begun, std::span<const std::string> words) {
    completions found{.replaced = begun.size(), .texts = {}};
    std::ranges::copy_if(words, std::back_inserter(found.texts), [&](const std::string& word) { return begins_with(word, begun); });
    sort(found);
    return found;
}

completions complete_path(std::string_view begun) {
    const std::size_t name_begin = begun.rfind('/') == std::string_view::npos ? 0 : begun.rfind('/') + 1;
    const std::string folder(begun.substr(0, name_begin));
    completions found{.replaced = begun.size(), .texts = {}};
    std::error_code unreadable;
    for (std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, unreadable), end; !unreadable && entry != end;
         entry.increment(unreadable)) {
        const std::string name = entry->path().filename().string();
        std::error_code unknown;
        if (name.starts_with(begun.substr(name_begin)) && (name_begin < begun.size() || !name.starts_with('.'))) {
            found.texts.push_back(folder + name + (entry->is_directory(unknown) ? "/" : ""));
        }
    }
    sort(found);
    return found;
}

} // namespace host
