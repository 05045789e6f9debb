// SPDX-License-Identifier: Apache-2.0
// Failures as errors of PostgreSQL.
#ifndef BIFUN_ADAPTERS_POSTGRESQL_ERRORS_H
#define BIFUN_ADAPTERS_POSTGRESQL_ERRORS_H

#include "adapters/postgresql/call_site.h"

namespace postgresql_extension {

// Ends the statement with an SQLSTATE that suits the status.
[[noreturn]] void report(const failure_text& failure);

} // namespace postgresql_extension

#endif
