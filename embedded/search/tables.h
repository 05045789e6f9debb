// What a search may take for granted about the tables that it gets.
#ifndef BIFUN_EMBEDDED_SEARCH_TABLES_H
#define BIFUN_EMBEDDED_SEARCH_TABLES_H

#include <cstdint>

namespace zqengine {

// Up to this length of the pattern the good-suffix table is exact, and its first entry the period of the pattern; above, shifts may be
// shorter than they could be.
constexpr std::uint32_t exact_good_suffixes = UINT16_MAX;

} // namespace zqengine

#endif
