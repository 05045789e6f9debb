// SPDX-License-Identifier: Apache-2.0
// The conversions of host_values.h for arrays of rows without a NULL, in vectors. What they return is false as soon as one row's is.
#ifndef BIFUN_ADAPTERS_BINDING_HOST_DATETIMES_H
#define BIFUN_ADAPTERS_BINDING_HOST_DATETIMES_H

#include <cstdint>

#include "bop/frame/contract.h"

namespace binding {

// From days since 1970.
bool read_host_dates(const std::int32_t* values, zqtime* results, std::uint32_t row_count);

// From microseconds since 1970; the values get the zone.
bool read_host_timestamps(const std::int64_t* values, std::int32_t zone, zqtime* results, std::uint32_t row_count);

// To days since 1970, and to microseconds whatever the zone is.
bool write_host_dates(const zqtime* values, std::int32_t* results, std::uint32_t row_count);
bool write_host_timestamps(const zqtime* values, std::int64_t* results, std::uint32_t row_count);

} // namespace binding

#endif
