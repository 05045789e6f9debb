// SPDX-License-Identifier: Apache-2.0
#include "host/sql/parse_tree.h"

#include <algorithm>

#include "host/sql/sql_text.h"

namespace host {

std::size_t first_offset(const json& node) {
    std::size_t first = nowhere;
    if (node.is_object()) {
        const auto location = node.find("location");
        if (location != node.end() && location->is_number_integer() && location->get<int>() >= 0) {
            first = location->get<std::size_t>();
        }
    }
    if (node.is_structured()) {
        for (const json& child : node) {
            first = std::min(first, first_offset(child));
        }
    }
    return first;
}

std::size_t offset_of(const json& body) {
    const auto location = body.find("location");
    if (location == body.end()) {
        return 0;
    }
    return location->get<int>() >= 0 ? location->get<std::size_t>() : first_offset(body);
}

const json& list_in(const json& body, const char* key) {
    static const json empty = json::array();
    const auto list = body.find(key);
    return list == body.end() ? empty : *list;
}

[[noreturn]] void refuse(const json& part, const translation_context& context, std::string_view message) {
    const std::size_t offset = first_offset(part);
    fail_at(context.sql, offset == nowhere ? 0 : offset, message);
}

expression make(expression_kind kind, const json& body) {
    expression made{.kind = kind};
    made.offset = offset_of(body);
    return made;
}

std::vector<expression> translate_all(const json& list, translation_context context) {
    std::vector<expression> all;
    for (const json& item : list) {
        all.push_back(translate(item, context));
    }
    return all;
}

} // namespace host
