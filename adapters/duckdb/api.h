// SPDX-License-Identifier: Apache-2.0
// DuckDB's C interface for extensions, the stable part of it: any DuckDB from 1.2 on has these functions in this order.
#ifndef BIFUN_ADAPTERS_DUCKDB_API_H
#define BIFUN_ADAPTERS_DUCKDB_API_H

#define DUCKDB_EXTENSION_NAME bifun
#define DUCKDB_EXTENSION_API_VERSION_MAJOR 1
#define DUCKDB_EXTENSION_API_VERSION_MINOR 2
#define DUCKDB_EXTENSION_API_VERSION_PATCH 0
#include <duckdb_extension.h>

DUCKDB_EXTENSION_EXTERN

#endif
