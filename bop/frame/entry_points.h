// SPDX-License-Identifier: Apache-2.0
// The entry points of a family, declared from its part of the catalogue. For the headers entry_points.h of the families, which define
// BIFUN_FAMILY as the name of that part.

#include "bop/frame/batch.h"

namespace bifun::entry {

#define COLUMN(type) column_of<value_type::type>
#define CONSTANT(type) constant_of<value_type::type>
#define EXPORT(symbol, builtin, result, ...) status symbol(batch_of<value_type::result> batch, __VA_ARGS__);
#include "bop/exports.def"
#undef COLUMN
#undef CONSTANT

} // namespace bifun::entry
