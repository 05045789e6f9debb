// SPDX-License-Identifier: Apache-2.0
#include "host/tables/table.h"

#include <algorithm>

#include "host/near_names.h"
#include "host/program_error.h"
#include "host/values/value_text.h"

namespace host {
namespace {

std::vector<std::string> column_names(const table& source) {
    std::vector<std::string> names;
    std::ranges::transform(source.columns, std::back_inserter(names), &table_column::name);
    return names;
}

// A field as an error shows it: cut, and in UTF-8.
std::string shown_field(const charset& set, std::string_view text) {
    constexpr std::size_t longest = 40;
    return to_utf8_with_replacements(set, text.substr(0, longest)) + (text.size() > longest ? "..." : "");
}

[[noreturn]] void fail_in_field(const table& source, const table_column& column, std::string_view text, field_fault fault) {
    const std::string place = fmt::format("{}, line {}, column {}", source.reader.path(), source.reader.row_line(), column.name);
    const std::string type = column_type_name(column.type);
    const charset& set = *source.settings->text_charset;
    switch (fault) {
    case field_fault::invalid_text:
        fail("{}: \"{}\" is not valid {}; name the file's character set with --set charset=NAME", place, shown_field(set, text), set.name);
    case field_fault::too_long:
        fail("{}: \"{}\" does not fit {}; give the column a longer type with --types", place, shown_field(set, text), type);
    case field_fault::too_many_digits:
        fail("{}: \"{}\" has more digits than {} keeps; give the column another type with --types, such as {}:VARCHAR", place,
             shown_field(set, text), type, column.name);
    case field_fault::out_of_memory:
        fail("{}: out of memory", place);
    default:
        fail("{}: \"{}\" is not of type {}; give the column another type with --types, such as {}:VARCHAR", place, shown_field(set, text),
             type, column.name);
    }
}

} // namespace

std::string table_name_of(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    constexpr std::string_view extension = ".csv";
    if (name.size() > extension.size() && equal_ignoring_case(name.substr(name.size() - extension.size()), extension)) {
        name.remove_suffix(extension.size());
    }
    return std::string(name);
}

std::unique_ptr<table> open_table(const std::string& path, const session_settings& settings) {
    std::unique_ptr<table> opened(new table{.reader = csv_reader(path), .settings = &settings, .columns = {}});
    const charset& set = *settings.text_charset;
    for (const std::string& name : opened->reader.header()) {
        const std::optional<std::string> converted = to_utf8(set, name);
        if (!converted) {
            fail("{}: the header is not valid {}; name the file's character set with --set charset=NAME", path, set.name);
        }
        opened->columns.push_back({.name = *converted, .type = {}, .needed = false, .values = {}});
    }
    return opened;
}

given_types parse_types(std::string_view text) {
    given_types types;
    while (!text.empty()) {
        std::size_t end = 0;
        for (int open = 0; end < text.size() && (text[end] != ',' || open > 0); ++end) {
            open += text[end] == '(' ? 1 : text[end] == ')' ? -1 : 0;
        }
        const std::string_view item = without_blanks_around(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t colon = item.rfind(':');
        if (colon == std::string_view::npos || colon == 0) {
            fail("--types: \"{}\" is not of the form name:TYPE", item);
        }
        const std::optional<column_type> type = find_column_type(item.substr(colon + 1));
        if (!type) {
            fail("--types: \"{}\" is not a type; there are {}", item.substr(colon + 1), column_type_names);
        }
        types.emplace_back(std::string(without_blanks_around(item.substr(0, colon))), *type);
    }
    return types;
}

void resolve_types(table& source, const given_types& given, progress_bar& progress) {
    std::vector<bool> unknown;
    std::ranges::transform(source.columns, std::back_inserter(unknown), &table_column::needed);
    for (const auto& item : given) {
        const std::string& name = item.first;
        auto found = std::ranges::find(source.columns, name, &table_column::name);
        if (found == source.columns.end()) {
            found = std::ranges::find_if(source.columns, [&](const table_column& c) { return equal_ignoring_case(c.name, name); });
        }
        if (found == source.columns.end()) {
            fail("--types: {} has no column {}{}", source.reader.path(), name, did_you_mean(name, column_names(source)));
        }
        found->type = item.second;
        unknown[static_cast<std::size_t>(found - source.columns.begin())] = false;
    }
    if (std::ranges::find(unknown, true) == unknown.end()) {
        return;
    }
    if (!source.reader.can_rewind()) {
        fail("{}: this can be read only once, so give the types of all columns that the query uses with --types", source.reader.path());
    }
    progress.begin("reading types", false);
    const std::vector<sql_type> inferred = infer_types(source.reader, unknown, progress);
    progress.clear();
    for (std::size_t i = 0; i < source.columns.size(); ++i) {
        if (unknown[i]) {
            source.columns[i].type = {.type = inferred[i]};
        }
    }
}

void create_columns(table& source, std::uint32_t batch_rows) {
    for (table_column& column : source.columns) {
        if (column.needed) {
            column.values.reset(zqengine::create_column(value_type_of(column.type.type), batch_rows));
            if (column.values == nullptr) {
                fail("out of memory; a smaller --batch-rows needs less");
            }
        }
    }
}

std::uint32_t read_batch(table& source, std::uint32_t most_rows) {
    std::vector<std::size_t> needed;
    for (std::size_t i = 0; i < source.columns.size(); ++i) {
        if (source.columns[i].needed) {
            needed.push_back(i);
            zqengine::clear_column(*source.columns[i].values);
            source.columns[i].values->column.no_nulls = 1;
        }
    }
    std::uint32_t row = 0;
    for (; row < most_rows && source.reader.next_row(); ++row) {
        for (const std::size_t i : needed) {
            const csv_field& field = source.reader.fields()[i];
            zqengine::column_storage& values = *source.columns[i].values;
            values.data.null_flags[row] = field.is_null ? 0 : 1;
            if (field.is_null) {
                values.column.no_nulls = 0;
                continue;
            }
            const field_fault fault = store_field(source.columns[i].type, *source.settings, field.text, values, row);
            if (fault != field_fault::none) {
                fail_in_field(source, source.columns[i], field.text, fault);
            }
        }
    }
    return row;
}

} // namespace host
