// SPDX-License-Identifier: Apache-2.0
// Scratch memory of a batch, from the memory object of the call.
//
//     return with_scratch(environment, memory, source_file, [&](scratch& scratch) { ... reserve(scratch, size) ... });
#ifndef BIFUN_FRAME_SCRATCH_H
#define BIFUN_FRAME_SCRATCH_H

#include <algorithm>
#include <cstdint>

#include "bop/frame/batch.h"

namespace bifun {

struct scratch {
    bifun_environment* environment;
    bifun_memory_object* memory;
    const char* source_file;
    std::uint8_t* bytes;
    std::uint32_t size;
};

inline void* allocate(bifun_environment* environment, bifun_memory_object* memory, std::uint64_t size, const char* source_file,
                      std::uint32_t line) {
    // Some heaps have no memory of size 0, which must not look like a failure.
    return size > UINT32_MAX ? nullptr
                             : memory->allocate(environment, memory->heap, static_cast<std::uint32_t>(std::max<std::uint64_t>(size, 1)),
                                                source_file, line);
}

inline void release(bifun_environment* environment, bifun_memory_object* memory, void* pointer) {
    if (memory->release != nullptr && pointer != nullptr) {
        memory->release(environment, memory->heap, pointer);
    }
}

// At least `size` bytes, aligned for any type; what was reserved before is gone. Null when memory is exhausted.
inline std::uint8_t* reserve(scratch& scratch, std::uint64_t size) {
    if (scratch.bytes == nullptr || size > scratch.size) {
        constexpr std::uint64_t smallest = 256;
        const std::uint64_t grown = std::max(smallest, std::uint64_t{scratch.size} * 2);
        const std::uint64_t wanted = std::min<std::uint64_t>(std::max(size, grown), UINT32_MAX);
        release(scratch.environment, scratch.memory, scratch.bytes);
        scratch.bytes =
            size > wanted
                ? nullptr
                : static_cast<std::uint8_t*>(allocate(scratch.environment, scratch.memory, wanted, scratch.source_file, __LINE__));
        scratch.size = scratch.bytes == nullptr ? 0 : static_cast<std::uint32_t>(wanted);
    }
    return scratch.bytes;
}

template <class Body>
status with_scratch(bifun_environment* environment, bifun_memory_object* memory, const char* source_file, const Body& body) {
    scratch scratch{environment, memory, source_file, nullptr, 0};
    const status outcome = body(scratch);
    release(environment, memory, scratch.bytes);
    return outcome;
}

} // namespace bifun

#endif
