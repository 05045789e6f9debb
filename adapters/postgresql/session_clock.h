// SPDX-License-Identifier: Apache-2.0
// What the clocks of the session's time zone show.
#ifndef BIFUN_ADAPTERS_POSTGRESQL_SESSION_CLOCK_H
#define BIFUN_ADAPTERS_POSTGRESQL_SESSION_CLOCK_H

#include <cstdint>

namespace postgresql_extension {

// Minutes east of UTC at a moment, which is counted from 1970, in seconds. Clocks of the 19th century differed by seconds, too; these are
// rounded.
std::int32_t zone_at(std::int64_t unix_seconds);

// The same of a moment that is told by what those clocks show, counted in the same way.
std::int32_t zone_of_local(std::int64_t local_seconds);

} // namespace postgresql_extension

#endif
