// SPDX-License-Identifier: Apache-2.0
// The types of the program's expressions are those that calls are bound by, in the program's own namespace.
#ifndef BIFUN_HOST_VALUES_SQL_TYPE_H
#define BIFUN_HOST_VALUES_SQL_TYPE_H

#include "adapters/binding/sql_type.h"

namespace host {

using namespace binding;

} // namespace host

#endif
