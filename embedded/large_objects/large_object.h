// SPDX-License-Identifier: Apache-2.0
// Large objects: written chunk by chunk at their end, read in parts. Short ones lie in memory, the others in a temporary file of their
// store, so that objects take memory in proportion to 1/16,000 of their length, and a store takes one file descriptor.
#ifndef BIFUN_EMBEDDED_LARGE_OBJECTS_LARGE_OBJECT_H
#define BIFUN_EMBEDDED_LARGE_OBJECTS_LARGE_OBJECT_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "bop/frame/contract.h"
#include "embedded/large_objects/spool_file.h"

namespace zqengine {

// One thread at a time may change a store and its objects. Any number may read objects and their lengths while nobody changes the store.
struct large_object_store {
    spool_file file;
};

// Null when memory is exhausted. A store is destroyed after its objects.
[[nodiscard]] large_object_store* create_large_object_store();
void destroy_large_object_store(large_object_store* store);

// An object without bytes, or null when memory is exhausted. Releasing makes room in the store's file; null does nothing.
[[nodiscard]] bifun_large_object* create_large_object(large_object_store& store);
void release_large_object(bifun_large_object* object);

// Returns 0; -503, or spool_failure where the file cannot be made or written or is full: then the object is as it was. Where the process
// has a limit for the size of files, SIGXFSZ has to be ignored.
[[nodiscard]] std::int32_t append_to_large_object(bifun_large_object& object, const std::uint8_t* chunk, std::size_t size);

// Reads `size` bytes from `offset` on, or those that there are; `*read` gets their number, which is 0 from the object's end on. Returns 0;
// -6803 for a negative offset; spool_failure.
[[nodiscard]] std::int32_t read_large_object(const bifun_large_object& object, std::int64_t offset, std::uint8_t* buffer, std::size_t size,
                                             std::size_t* read);

[[nodiscard]] std::int64_t length_of(const bifun_large_object& object);

struct large_object_deleter {
    void operator()(large_object_store* store) const { destroy_large_object_store(store); }
    void operator()(bifun_large_object* object) const { release_large_object(object); }
};
using large_object_store_pointer = std::unique_ptr<large_object_store, large_object_deleter>;
using large_object_pointer = std::unique_ptr<bifun_large_object, large_object_deleter>;

} // namespace zqengine

#endif
