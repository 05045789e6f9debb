// SPDX-License-Identifier: Apache-2.0
#ifndef BIFUN_CONDITIONAL_ENTRY_POINTS_H
#define BIFUN_CONDITIONAL_ENTRY_POINTS_H

#define BIFUN_FAMILY "bop/conditional/exports.def"
#include "bop/frame/entry_points.h" // IWYU pragma: export
#undef BIFUN_FAMILY

#endif
