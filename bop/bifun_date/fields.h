// SPDX-License-Identifier: Apache-2.0
// The fields of datetimes by their names.
#ifndef BIFUN_DATE_FIELDS_H
#define BIFUN_DATE_FIELDS_H

#include <cstdint>

namespace bifun {

// The code of a field, as in zqtime_field, from a name of DATEPART: one letter as it is listed, longer names in any case. 0 for another
// text. One function for all instruction sets: it reads a constant, and is called once for a batch.
extern "C" std::int32_t ifun_parse_datepart(const std::uint8_t* name, std::uint32_t length);

} // namespace bifun

#endif
