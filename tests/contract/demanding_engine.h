// SPDX-License-Identifier: Apache-2.0
// The embedded engine with all that an engine may do and demand by the contracts of its operations. Linked into a test program, it stands
// before the embedded one.
#ifndef BIFUN_TESTS_CONTRACT_DEMANDING_ENGINE_H
#define BIFUN_TESTS_CONTRACT_DEMANDING_ENGINE_H

#include <cstdint>

namespace demanding_engine {

// What operations answer where they succeed; a negative number where the library takes no notice of the status. Other than 0, an engine is
// demanding: it has the number of a day right where neither time nor zone is set, and writes texts of numbers into buffers of zeros alone,
// which it leaves full of other bytes behind the text's NUL. It is never asked for room of no bytes, whatever this is.
extern std::int32_t success;

} // namespace demanding_engine

#endif
