// Whether the engine's decimals can be worked on in place.
#ifndef BIFUN_NUMERIC_PACKED_DECIMALS_H
#define BIFUN_NUMERIC_PACKED_DECIMALS_H

#include "engine/decimal.h"

namespace bifun {

inline bool decimals_are_packed() { return &xdec_layout != nullptr && xdec_layout == XDEC_LAYOUT_PACKED_128; }

} // namespace bifun

#endif
