// SPDX-License-Identifier: Apache-2.0
#ifndef BIFUN_JSON_ENTRY_POINTS_H
#define BIFUN_JSON_ENTRY_POINTS_H

#define BIFUN_FAMILY "bop/json/exports.def"
#include "bop/frame/entry_points.h" // IWYU pragma: export
#undef BIFUN_FAMILY

#endif
