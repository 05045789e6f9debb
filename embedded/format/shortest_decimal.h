// SPDX-License-Identifier: Apache-2.0
// The shortest decimal that reads back as the same double.
#ifndef BIFUN_EMBEDDED_FORMAT_SHORTEST_DECIMAL_H
#define BIFUN_EMBEDDED_FORMAT_SHORTEST_DECIMAL_H

#include <cstdint>

namespace zqengine {

// digits x 10^exponent, with up to 17 digits, of which the last ones may be zeros.
struct shortest_decimal {
    std::uint64_t digits;
    std::int32_t exponent;
};

// Of all decimals that are nearer to `magnitude` than to any other double, those with the fewest digits, and of these the nearest. The
// magnitude is finite and above 0.
shortest_decimal shortest_decimal_of(double magnitude);

} // namespace zqengine

#endif
