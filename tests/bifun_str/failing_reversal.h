// Replaces the engine's zq_mbsrev_ex in the program that includes this, once: it can be told to fail.
#ifndef BIFUN_TESTS_BIFUN_STR_FAILING_REVERSAL_H
#define BIFUN_TESTS_BIFUN_STR_FAILING_REVERSAL_H

#include <dlfcn.h>

#include <cstdint>

#include "engine/charset.h"

inline int reversals_to_failure = 0; // 1: the next one fails; 0: none

extern "C" __attribute__((visibility("default"))) std::uint8_t* zq_mbsrev_ex(std::uint8_t* text, std::uint32_t length) {
    static auto* const reverse = reinterpret_cast<decltype(&zq_mbsrev_ex)>(dlsym(RTLD_NEXT, "zq_mbsrev_ex"));
    if (reversals_to_failure > 0 && --reversals_to_failure == 0) {
        return nullptr;
    }
    return reverse(text, length);
}

#endif
