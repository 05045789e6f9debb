// SPDX-License-Identifier: Apache-2.0
// PostgreSQL's values as arguments of calls, and results as its values. The functions here end with PostgreSQL's errors where a value
// cannot be one of the other side.
#ifndef BIFUN_ADAPTERS_POSTGRESQL_DATUMS_H
#define BIFUN_ADAPTERS_POSTGRESQL_DATUMS_H

#include "adapters/postgresql/call_site.h"

#include "adapters/postgresql/api.h"

namespace postgresql_extension {

// Shows the arguments of a row to the call; bytes of texts stay where they are, unless the call writes to them. `context` lives as long as
// the site.
void show_arguments(const NullableDatum* values, MemoryContext context, call_site& site);

// The value of the only row of a result, which is not NULL, as the function's type.
Datum make_datum(const binding::row_result& made, const sql_function& function);

} // namespace postgresql_extension

#endif
