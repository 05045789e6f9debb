// SPDX-License-Identifier: Apache-2.0
// Constants as the arguments of functions and as columns.
#ifndef BIFUN_HOST_EVALUATION_CONSTANT_H
#define BIFUN_HOST_EVALUATION_CONSTANT_H

#include <cstdint>
#include <span>

#include "adapters/binding/constant.h"
#include "embedded/columns/column_storage.h"

namespace host {

using binding::constant;

// A column of one row for each of the constants, or null when memory is exhausted. Its string bytes are its own.
zqengine::column_pointer make_constant_column(std::span<const constant> values, bifun::value_type type);

} // namespace host

#endif
