// What the engine says of itself beyond the required.
#ifndef BIFUN_FRAME_STATEMENTS_H
#define BIFUN_FRAME_STATEMENTS_H

#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"

namespace bifun {

inline bool setters_are_plain_stores() { return &bdta3_setters_are_plain_stores != nullptr && bdta3_setters_are_plain_stores != 0; }
inline bool free_bytes_are_open() { return &bdta3_free_bytes_are_open != nullptr && bdta3_free_bytes_are_open != 0; }
inline bool ascii_is_single_byte() { return &zq_ascii_is_single_byte != nullptr && zq_ascii_is_single_byte != 0; }
inline bool decimals_are_packed() { return &xdec_layout != nullptr && xdec_layout == XDEC_LAYOUT_PACKED_128; }
inline bool datetimes_are_packed() { return &zqtime_layout != nullptr && zqtime_layout == ZQTIME_LAYOUT_PACKED; }

} // namespace bifun

#endif
