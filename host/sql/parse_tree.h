// SPDX-License-Identifier: Apache-2.0
// What the parts of the syntax share: the nodes of the parser's tree, which is JSON, become expressions.
#ifndef BIFUN_HOST_SQL_PARSE_TREE_H
#define BIFUN_HOST_SQL_PARSE_TREE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/sql/expression.h"
#include "host/sql/json_clauses.h"

namespace host {

using json = nlohmann::json;

struct translation_context {
    const std::string& sql;
    const std::vector<json_clauses>& clauses; // that the parser has not seen
};

constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

// The first place in the text that a part of the tree names, or `nowhere`.
std::size_t first_offset(const json& node);

// The place that a node itself names; the tree leaves out a location of 0.
std::size_t offset_of(const json& body);

// The list that a body has there; an empty one where it has none.
const json& list_in(const json& body, const char* key);

[[noreturn]] void refuse(const json& part, const translation_context& context, std::string_view message);

// An expression at the place of a node.
expression make(expression_kind kind, const json& body);

// A node of any kind: an object with the name of the kind and the body.
expression translate(const json& node, translation_context context);
std::vector<expression> translate_all(const json& list, translation_context context);

// The bodies of nodes.
expression translate_constant(const json& body, translation_context context);
expression translate_column(const json& body, translation_context context);
expression translate_cast(const json& body, translation_context context);
expression translate_moment(const json& body, translation_context context); // CURRENT_DATE
expression translate_call(const json& body, translation_context context);
expression translate_extreme(const json& body, translation_context context); // GREATEST, LEAST

} // namespace host

#endif
