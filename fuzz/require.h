// SPDX-License-Identifier: Apache-2.0
#ifndef BIFUN_FUZZ_REQUIRE_H
#define BIFUN_FUZZ_REQUIRE_H

#include <cstdlib>

// Tells the fuzzer of a failure.
inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

#endif
