// SPDX-License-Identifier: Apache-2.0
// The clauses in calls of JSON_VALUE and JSON_QUERY, which the parser does not know: JSON_VALUE(doc, '$.n' RETURNING INT NULL ON EMPTY).
#ifndef BIFUN_HOST_SQL_JSON_CLAUSES_H
#define BIFUN_HOST_SQL_JSON_CLAUSES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct json_clauses {
    std::size_t call;   // where the name of the function stands
    std::size_t offset; // where the clauses stand
    std::string text;
};

// All of a statement, which then has comments in their places, of the same bytes and characters.
std::vector<json_clauses> hide_json_clauses(std::string& sql);

} // namespace host

#endif
