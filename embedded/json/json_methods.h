// SPDX-License-Identifier: Apache-2.0
// What methods and operators of paths make of scalars.
#ifndef BIFUN_EMBEDDED_JSON_JSON_METHODS_H
#define BIFUN_EMBEDDED_JSON_JSON_METHODS_H

#include <cstdint>

#include "bop/frame/contract.h"
#include "embedded/json/json_evaluation.h"
#include "embedded/json/json_path.h"

namespace zqengine {

// Room for the text of a result.
struct computed_text {
    char characters[512];
};

// The result of a method of scalars, whose text may be in `text`. Returns 0; JSON_WRONG_OPERAND where it has none.
[[nodiscard]] std::int32_t call_method(step_kind method, const path_item& item, computed_text& text, path_item& result);

// Operators compute with DECIMALs: the one that a number is, the result of two, and a number from one. Return 0 or JSON_WRONG_OPERAND.
[[nodiscard]] std::int32_t number_of(const path_item& item, xdec& number);
[[nodiscard]] std::int32_t combine_numbers(operand_kind operation, const xdec& left, const xdec& right, xdec& result);
[[nodiscard]] std::int32_t item_of_number(const xdec& number, computed_text& text, path_item& result);

// The integer of INT that is left when the fraction is cut off.
[[nodiscard]] std::int32_t index_of(const xdec& number, std::int64_t& index);

} // namespace zqengine

#endif
