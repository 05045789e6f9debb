// SPDX-License-Identifier: Apache-2.0
// PostgreSQL's values as arguments of calls, and results as its values. The functions here end with PostgreSQL's errors where a value
// cannot be one of the other side.
#ifndef BIFUN_ADAPTERS_POSTGRESQL_DATUMS_H
#define BIFUN_ADAPTERS_POSTGRESQL_DATUMS_H

#include "adapters/postgresql/call_site.h"

#include "adapters/postgresql/api.h"

namespace postgresql_extension {

// Shows a value that is not NULL as the argument at `position`; bytes of texts stay where they are, unless the call writes to them.
// `context` lives as long as the site. Returns whether what is shown stays valid as long as the value itself.
bool show_datum(Datum value, std::size_t position, MemoryContext context, call_site& site);

// The value of the only row of a result, which is not NULL, as the function's type.
Datum make_datum(const binding::row_result& made, const sql_function& function);

} // namespace postgresql_extension

#endif
