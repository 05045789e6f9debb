// SPDX-License-Identifier: Apache-2.0
// The families are compiled once for every instruction set, each time in another namespace: `bifun` is the name of one of them there, and
// the build says which there are (bop/CMakeLists.txt). What exists once is here, outside of all of them.
#ifndef BIFUN_FRAME_INSTRUCTION_SETS_H
#define BIFUN_FRAME_INSTRUCTION_SETS_H

#include "bop/bifun.h"

namespace bifun_instruction_sets {

// The entry points as they were compiled for one instruction set.
struct entry_table {
#define EXPORT(symbol, builtin, result, ...) decltype(&::symbol) symbol;
#include "bop/exports.def"
};

// Forgets which instruction set the process uses: the next call chooses anew.
void choose_again();

} // namespace bifun_instruction_sets

#endif
