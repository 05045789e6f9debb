// SPDX-License-Identifier: Apache-2.0
// The clauses behind the path of JSON_VALUE and JSON_QUERY:
//
//     [RETURNING type] [x ON EMPTY] [x ON ERROR]                of JSON_VALUE: x is NULL, ERROR or DEFAULT literal,
//                                                               which is 'text', a number, TRUE or FALSE
//     [RETURNING type] [wrapper] [x ON EMPTY] [x ON ERROR]      of JSON_QUERY: x is NULL, ERROR, EMPTY [ARRAY] or EMPTY OBJECT; the wrapper
//                                                               is WITHOUT [ARRAY] WRAPPER or WITH [CONDITIONAL | UNCONDITIONAL] [ARRAY]
//                                                               WRAPPER
#ifndef BIFUN_JSON_CLAUSES_H
#define BIFUN_JSON_CLAUSES_H

#include <cstdint>

#include "bop/frame/batch.h"
#include "engine/json.h"

namespace bifun {

constexpr std::uint32_t longest_clauses = 1000;

// What a row is where the path gives nothing, or something goes wrong.
enum class json_reaction : std::uint8_t { null, error, value };

struct json_outcome {
    json_reaction reaction = json_reaction::null;
    bifun_string value = {}; // the literal's characters, or JSON
};

struct json_clauses {
    json_outcome on_empty;
    json_outcome on_error;
    std::int32_t wrapper = JPATH_NO_WRAPPER;
    std::uint32_t used = 0;
    std::uint8_t characters[longest_clauses]; // of literals
};

enum class json_function : std::uint8_t { value, query };

// `types` are the words that may stand behind RETURNING. Returns 0, or -6803 for other texts. The clauses point into themselves and are not
// copied.
status parse_clauses(const bifun_string& text, json_function of, const char* types, json_clauses& clauses);

} // namespace bifun

#endif
