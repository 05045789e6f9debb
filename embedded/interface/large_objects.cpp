// SPDX-License-Identifier: Apache-2.0
// Large objects by their C names.

#include "embedded/large_objects/large_object.h"
#include "embedded/zqengine.h"

namespace {

// The C name stands for the store itself.
zqengine::large_object_store* inside(zqengine_large_object_store* store) { return reinterpret_cast<zqengine::large_object_store*>(store); }

} // namespace

zqengine_large_object_store* zqengine_large_object_store_create(void) {
    return reinterpret_cast<zqengine_large_object_store*>(zqengine::create_large_object_store());
}

void zqengine_large_object_store_destroy(zqengine_large_object_store* store) { zqengine::destroy_large_object_store(inside(store)); }

bifun_large_object* zqengine_large_object_create(zqengine_large_object_store* store) {
    return zqengine::create_large_object(*inside(store));
}

void zqengine_large_object_destroy(bifun_large_object* object) { zqengine::release_large_object(object); }

int32_t zqengine_large_object_append(bifun_large_object* object, const void* bytes, size_t size) {
    return zqengine::append_to_large_object(*object, static_cast<const std::uint8_t*>(bytes), size);
}

int32_t zqengine_large_object_read(const bifun_large_object* object, int64_t offset, void* buffer, size_t size, size_t* read) {
    return zqengine::read_large_object(*object, offset, static_cast<std::uint8_t*>(buffer), size, read);
}
