// SPDX-License-Identifier: Apache-2.0
// Conditions that an engine has evaluated into a boolean column.
#ifndef BIFUN_CONDITIONAL_CONDITION_H
#define BIFUN_CONDITIONAL_CONDITION_H

#include <cstdint>

namespace bifun {

// Only the value decides, never the null flag: the engine keeps something other than 1 in the slot of an unknown condition.
inline bool is_true(std::int32_t condition) { return condition == 1; }

} // namespace bifun

#endif
