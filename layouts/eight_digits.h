// Eight decimal digits at a time, for whoever writes numbers: the library and the embedded engine.
#ifndef BIFUN_LAYOUTS_EIGHT_DIGITS_H
#define BIFUN_LAYOUTS_EIGHT_DIGITS_H

#include <cstdint>

namespace bifun {

// The characters of a number below 10^8, the first in the lowest byte. Two numbers of four digits become four of two and eight of one;
// each division is a multiplication that is exact for its range.
inline std::uint64_t eight_digits(std::uint32_t number) {
    const std::uint64_t fours = number / 10000 | std::uint64_t{number % 10000} << 32;
    const std::uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007F0000007F;
    const std::uint64_t twos = hundreds | (fours - hundreds * 100) << 16;
    const std::uint64_t tens = (twos * 103 >> 10) & 0x000F000F000F000F;
    const std::uint64_t ones = tens | (twos - tens * 10) << 8;
    return ones | 0x3030303030303030;
}

} // namespace bifun

#endif
