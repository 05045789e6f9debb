// SPDX-License-Identifier: Apache-2.0
#include "host/tables/given_types.h"

#include <algorithm>
#include <filesystem>

#include "host/near_names.h"
#include "host/program_error.h"
#include "host/tables/file_name.h"
#include "host/values/date_formats.h"
#include "host/values/value_text.h"

namespace host {
namespace {

table_column* find_column(table& source, std::string_view name) {
    auto found = std::ranges::find(source.columns, name, &table_column::name);
    if (found == source.columns.end()) {
        const auto is_meant = [&](const table_column& column) { return equal_ignoring_case(column.name, name); };
        found = std::ranges::find_if(source.columns, is_meant);
        if (std::ranges::count_if(source.columns, is_meant) > 1) {
            fail("--types: {} has several columns that differ from {} in case alone; write one as the file spells it", source.reader.path(),
                 name);
        }
    }
    return found == source.columns.end() ? nullptr : &*found;
}

// Behind an item of a list, in which a comma may also stand in a name in double quotes, in parentheses and, behind the colon, in a format.
std::size_t end_of_item(std::string_view text) {
    std::size_t end = 0;
    int open = 0;
    bool has_colon = false;
    bool in_name = false;
    bool in_format = false;
    for (; end < text.size() && (text[end] != ',' || open > 0 || in_name || in_format); ++end) {
        const bool begins_name = text[end] == '"' && (without_blanks_around(text.substr(0, end)).empty() || text[end - 1] == '.');
        in_name = in_name ? text[end] != '"' || text.substr(end + 1, 1) == "\"" : begins_name && !has_colon;
        has_colon |= text[end] == ':' && !in_name;
        in_format ^= has_colon && text[end] == '\'';
        open += in_format || in_name ? 0 : text[end] == '(' ? 1 : text[end] == ')' ? -1 : 0;
    }
    return end;
}

// A name without the double quotes around it, or around what stands behind the name of its table.
std::string unquoted_name(std::string_view name) {
    const std::size_t behind_table = name.find(".\"");
    const std::size_t open = name.starts_with('"') || behind_table == name.npos ? 0 : behind_table + 1;
    if (name.size() < open + 2 || name[open] != '"' || !name.ends_with('"')) {
        return std::string(name);
    }
    std::string made(name.substr(0, open));
    for (std::size_t i = open + 1; i + 1 < name.size(); ++i) {
        i += name.substr(i, 2) == "\"\"" ? 1 : 0;
        made += name[i];
    }
    return made;
}

std::string quoted_name(const std::string& name) {
    if (name.find_first_of(",:\"") == name.npos) {
        return name;
    }
    std::string made = "\"";
    for (const char c : name) {
        made.append(c == '"' ? 2 : 1, c);
    }
    return made + '"';
}

void take_format(column_type& type, std::string_view format) {
    const std::string name = column_type_name(type);
    type.format = format;
    if (!is_datetime(type.type) || has_zone(type.type) || type.fraction_digits) {
        fail("--types: formats are for DATE, TIME and TIMESTAMP, and {} has none", name);
    }
    if (const std::optional<std::string> fault = find_format_fault(bifun::date_format::model_to_read, format)) {
        fail("--types: {}{}", *fault, month_behind_hour_too(bifun::date_format::model_to_read, format));
    }
    if (type.type == sql_type::date && reads_time(format)) {
        fail("--types: a DATE keeps no time of day, and '{}' has one; TIMESTAMP keeps it", format);
    }
    if (type.type == sql_type::time && find_date_element(bifun::date_format::model, format)) {
        const std::string month = month_behind_hour_too(bifun::date_format::model, format);
        fail("--types: a TIME keeps no date, and '{}' has one{}", format, month.empty() ? "; TIMESTAMP keeps it" : month);
    }
}

bool can_be_read_again(const std::string& path) {
    std::error_code unreadable;
    return path != "-" && (std::filesystem::is_regular_file(path, unreadable) || !std::filesystem::exists(path, unreadable));
}

} // namespace

given_types parse_types(std::string_view text) {
    const bool is_list = text.find(',') != text.npos;
    given_types types;
    while (!text.empty()) {
        const std::string_view item = without_blanks_around(text.substr(0, end_of_item(text)));
        text.remove_prefix(std::min(end_of_item(text) + 1, text.size()));
        const std::size_t quote = item.ends_with('\'') ? item.rfind('\'', item.size() - 2) : item.npos;
        const std::string_view plain = without_blanks_around(item.substr(0, quote)); // without a format
        const std::size_t colon = plain.rfind(':');
        if (colon == std::string_view::npos || colon == 0) {
            fail("--types: \"{}\" is not of the form name:TYPE{}", item,
                 is_list ? "; a name with a comma stands in double quotes, as in '\"a, b\":INT'" : "");
        }
        std::optional<column_type> type = find_column_type(plain.substr(colon + 1));
        if (!type) {
            fail("--types: \"{}\" is not a type; there are {}", plain.substr(colon + 1), column_type_names);
        }
        if (quote != item.npos) {
            take_format(*type, item.substr(quote + 1, item.size() - quote - 2));
        }
        given_type given{.name = unquoted_name(without_blanks_around(item.substr(0, colon))), .type = *type};
        if (std::ranges::any_of(types, [&](const given_type& earlier) { return earlier.name == given.name; })) {
            fail("--types: {} has two types", given.name);
        }
        types.push_back(std::move(given));
    }
    return types;
}

given_types with_types(given_types types, const given_types& later, const std::function<bool(const std::string&)>& is_column) {
    std::erase_if(types, [&](const given_type& earlier) {
        return std::ranges::any_of(later, [&](const given_type& given) {
            return earlier.name == given.name ||
                   (equal_ignoring_case(earlier.name, given.name) && !(is_column(earlier.name) && is_column(given.name)));
        });
    });
    types.insert(types.end(), later.begin(), later.end());
    return types;
}

std::vector<std::string> remarks_on_formats(const given_types& types) {
    std::vector<std::string> remarks;
    for (const given_type& given : types) {
        if (const std::optional<std::string> month = find_month_behind_hour(bifun::date_format::model_to_read, given.type.format)) {
            remarks.push_back(fmt::format("--types {}: the format '{}' {}", given.name, given.type.format, *month));
        }
    }
    return remarks;
}

std::string given_types_text(const given_types& types) {
    std::string text;
    for (const given_type& given : types) {
        text += fmt::format("{}{}:{}", text.empty() ? "" : ",", quoted_name(given.name), column_type_name(given.type));
    }
    return text;
}

table_column* find_given_column(table& source, std::string_view name) {
    if (table_column* const found = find_column(source, name); found != nullptr) {
        return found;
    }
    const std::string& path = source.reader.path();
    for (const std::string& prefix : {table_name_of(path) + ".", plain_table_name_of(path) + "."}) {
        if (equal_ignoring_case(name.substr(0, prefix.size()), prefix)) {
            return find_column(source, name.substr(prefix.size()));
        }
    }
    return nullptr;
}

void check_given_types(const given_types& types, table* known, const std::vector<std::string>& files, const file_options& options,
                       const session_settings& settings) {
    std::vector<std::string> missing;
    std::ranges::transform(types, std::back_inserter(missing), &given_type::name);
    std::vector<std::string> names;
    const auto look_in = [&](table& source) {
        std::erase_if(missing, [&](const std::string& name) { return find_given_column(source, name) != nullptr; });
        for (const given_type& given : types) {
            const auto is_another = [&](const given_type& other) {
                return &other < &given && equal_ignoring_case(other.name, given.name) &&
                       find_given_column(source, other.name) == find_given_column(source, given.name);
            };
            if (std::ranges::any_of(types, is_another)) {
                fail("--types: {} has two types", given.name);
            }
        }
        std::ranges::transform(source.columns, std::back_inserter(names), &table_column::name);
    };
    if (known != nullptr) {
        look_in(*known);
    }
    for (const std::string& path : files) {
        if (missing.empty() || (known != nullptr && path == known->reader.path())) {
            continue;
        }
        if (!can_be_read_again(path)) {
            return;
        }
        look_in(*open_table(path, options, settings));
    }
    if (!missing.empty()) {
        fail("--types: {} column {}{}", files.size() == 1 ? files[0] + " has no" : "no file has a", missing[0],
             did_you_mean(missing[0], names));
    }
}

} // namespace host
