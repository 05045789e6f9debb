// SPDX-License-Identifier: Apache-2.0
#include "host/tables/file_name.h"

#include <algorithm>

extern "C" {
#include <pg_query.h>
}

#include "host/near_names.h"

namespace host {
namespace {

constexpr std::string_view packed_extensions[] = {".gz", ".zst"};
constexpr std::string_view extensions[] = {".csv", ".tsv", ".tab", ".psv", ".txt"};

// The extension among those given with which the name ends; empty where there is none, or nothing but it.
template <std::size_t count> std::string_view ending_of(std::string_view name, const std::string_view (&known)[count]) {
    for (const std::string_view extension : known) {
        if (name.size() > extension.size() && equal_ignoring_case(name.substr(name.size() - extension.size()), extension)) {
            return extension;
        }
    }
    return {};
}

std::string_view base_name(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
    name.remove_suffix(ending_of(name, packed_extensions).size());
    return name;
}

// Whether a name can stand behind FROM as it is.
bool is_plain_name(const std::string& name) {
    const PgQueryParseResult parsed = pg_query_parse(("SELECT 1 FROM " + name).c_str());
    const bool is_plain = parsed.error == nullptr;
    pg_query_free_parse_result(parsed);
    return is_plain;
}

} // namespace

std::string extension_of(std::string_view path) { return std::string(ending_of(base_name(path), extensions)); }

std::string table_name_of(std::string_view path) {
    if (path == "-") {
        return "stdin";
    }
    std::string_view name = base_name(path);
    name.remove_suffix(ending_of(name, extensions).size());
    return std::string(name);
}

std::string plain_table_name_of(std::string_view path) {
    std::string name = table_name_of(path);
    const auto is_letter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
    };
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    std::ranges::replace_if(
        name, [&](char c) { return !is_letter(c) && !is_digit(c); }, '_');
    if (!name.empty() && is_digit(name.front())) {
        name.insert(name.begin(), '_');
    }
    return is_plain_name(name) ? name : name + "_";
}

std::string file_operand(std::string_view path, std::string_view before) {
    return path == standard_input_name ? "" : std::string(before).append(path);
}

} // namespace host
