// SPDX-License-Identifier: Apache-2.0
// The grammar of JSON, over the tokens of a text.
#ifndef BIFUN_EMBEDDED_JSON_JSON_STRUCTURE_H
#define BIFUN_EMBEDDED_JSON_JSON_STRUCTURE_H

#include <cstdint>

#include "embedded/json/json_document.h"

namespace zqengine {

// Whether the tokens of a document, which has all but `closings`, are JSON. `closings` has room for as many as there are tokens, and has
// what `shape`, that of the document before, says of it. Returns 0, JSON_INVALID_TEXT or JSON_TOO_DEEP.
[[nodiscard]] std::int32_t check_structure(const json_document& document, std::uint32_t* closings, json_shape& shape);

} // namespace zqengine

#endif
