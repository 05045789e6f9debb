// SPDX-License-Identifier: Apache-2.0
// What the catalogue says of an argument or a result, and what a kernel makes of it, do not compile where they differ. With one of the
// names below defined this is such a definition; without, it is right and compiles.
#include "bop/frame/row_loop.h"

namespace bifun {

std::int64_t magnitude(std::int64_t x) { return x < 0 ? -x : x; }

#if defined(ARGUMENT_OF_ANOTHER_TYPE)
status magnitudes(batch_of<BIGINT> batch, column_of<INT> x) { return set_rows<magnitude>(batch, x); }
#elif defined(CONSTANT_OF_ANOTHER_TYPE)
status magnitudes(batch_of<BIGINT> batch, constant_of<INT> x) { return set_rows<magnitude>(batch, x); }
#elif defined(RESULT_OF_ANOTHER_TYPE)
status magnitudes(batch_of<INT> batch, column_of<BIGINT> x) { return set_rows<magnitude>(batch, x); }
#else
status magnitudes(batch_of<BIGINT> batch, column_of<BIGINT> x) { return set_rows<magnitude>(batch, x); }
#endif

} // namespace bifun

// And an entry point is what the catalogue says.
#define BIFUN_FAMILY "bop/numeric/exports.def"
#include "bop/frame/entry_points.h"
#if defined(ENTRY_POINT_WITH_ANOTHER_ARGUMENT)
bifun::status bifun::entry::babs_a_math_int(batch_of<BIGINT>, column_of<INT>) { return 0; }
#endif
