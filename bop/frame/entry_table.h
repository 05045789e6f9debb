// SPDX-License-Identifier: Apache-2.0
// The table of the namespace that this is compiled in.
#ifndef BIFUN_FRAME_ENTRY_TABLE_H
#define BIFUN_FRAME_ENTRY_TABLE_H

#include "bop/frame/instruction_sets.h"

namespace bifun {

extern const bifun_instruction_sets::entry_table entry_table;

} // namespace bifun

#endif
