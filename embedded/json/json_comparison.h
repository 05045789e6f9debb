// SPDX-License-Identifier: Apache-2.0
// How items of paths compare.
#ifndef BIFUN_EMBEDDED_JSON_JSON_COMPARISON_H
#define BIFUN_EMBEDDED_JSON_JSON_COMPARISON_H

#include <cstdint>

#include "embedded/json/json_evaluation.h"
#include "embedded/json/json_path.h"

namespace zqengine {

enum class truth : std::uint8_t { no, yes, unknown };

inline truth truth_of(bool value) { return value ? truth::yes : truth::no; }

// A null differs from all else; other values of different types cannot be compared, nor can arrays and objects. Strings are in the order of
// their code points.
truth compare_items(comparison wanted, const path_item& a, const path_item& b);

// Unknown where one is no string.
truth begins_with(const path_item& text, const path_item& beginning);

} // namespace zqengine

#endif
