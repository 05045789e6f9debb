// SPDX-License-Identifier: Apache-2.0
// PostgreSQL's interface for functions in C. Included behind all other headers, as its macros have common names.
//
// Its errors leave by longjmp: no frame that they pass may hold an object with a destructor, and no exception may reach PostgreSQL.
#ifndef BIFUN_ADAPTERS_POSTGRESQL_API_H
#define BIFUN_ADAPTERS_POSTGRESQL_API_H

#define PGDLLEXPORT __attribute__((visibility("default"))) // what is found by name, when all else is hidden

extern "C" {
#include "postgres.h"

#include "access/htup_details.h"
#include "access/xact.h"
#include "catalog/pg_proc.h"
#include "fmgr.h"
#include "mb/pg_wchar.h"
#include "nodes/primnodes.h"
#include "utils/builtins.h"
#include "utils/date.h"
#include "utils/datetime.h"
#include "utils/guc.h"
#include "utils/memutils.h"
#include "utils/syscache.h"
#include "utils/timestamp.h"
}

#endif
