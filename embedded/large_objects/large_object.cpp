// SPDX-License-Identifier: Apache-2.0
#include "embedded/large_objects/large_object.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "bop/frame/status.h"
#include "embedded/memory/allocation.h"
#include "embedded/memory/pending_failure.h"
#include "engine/large_objects.h"

// Up to `longest_in_memory` bytes it has no blocks, above them no memory.
struct bifun_large_object {
    zqengine::large_object_store* store;
    std::uint64_t length = 0;
    std::uint8_t* memory = nullptr; // `memory_size` bytes
    std::size_t memory_size = 0;
    zqengine::block_numbers blocks = {};
};

namespace zqengine {
namespace {

constexpr std::uint64_t longest_in_memory = 4096;
constexpr std::uint64_t longest_object = std::uint64_t{UINT32_MAX} / 2 * spool_block_size;

template <class T, class... Members> T* create(Members... members) {
    void* const memory = must_fail() ? nullptr : allocate(sizeof(T));
    return memory == nullptr ? nullptr : new (memory) T{members...};
}

void release_memory(bifun_large_object& object) {
    release(object.memory, object.memory_size);
    object.memory = nullptr;
    object.memory_size = 0;
}

std::int32_t append_in_memory(bifun_large_object& object, const std::uint8_t* chunk, std::size_t size) {
    const std::uint64_t length = object.length + size;
    if (length > object.memory_size) {
        const std::size_t memory_size = std::bit_ceil(length);
        auto* const memory = static_cast<std::uint8_t*>(allocate(memory_size));
        if (memory == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        std::copy_n(object.memory, object.length, memory);
        release_memory(object);
        object.memory = memory;
        object.memory_size = memory_size;
    }
    std::copy_n(chunk, size, object.memory + object.length);
    object.length = length;
    return BIFUN_OK;
}

std::int32_t append_to_file(bifun_large_object& object, const std::uint8_t* chunk, std::size_t size) {
    spool_file& file = object.store->file;
    const std::uint64_t length = object.length + size;
    const std::uint32_t blocks_before = object.blocks.count;
    std::int32_t status = take_blocks(file, object.blocks, static_cast<std::uint32_t>((length + spool_block_size - 1) / spool_block_size));
    if (status == BIFUN_OK && object.memory != nullptr) {
        status = write_spooled(file, object.blocks, 0, object.memory, object.length);
    }
    if (status == BIFUN_OK) {
        status = write_spooled(file, object.blocks, object.length, chunk, size);
    }
    if (status != BIFUN_OK) {
        give_back_blocks(file, object.blocks, blocks_before);
        return status;
    }
    release_memory(object);
    object.length = length;
    return BIFUN_OK;
}

} // namespace

large_object_store* create_large_object_store() { return create<large_object_store>(); }

void destroy_large_object_store(large_object_store* store) {
    if (store != nullptr) {
        close_spool_file(store->file);
        release(store, sizeof(large_object_store));
    }
}

bifun_large_object* create_large_object(large_object_store& store) { return create<bifun_large_object>(&store); }

void release_large_object(bifun_large_object* object) {
    if (object != nullptr) {
        give_back_blocks(object->store->file, object->blocks, 0);
        release_numbers(object->blocks);
        release_memory(*object);
        release(object, sizeof(bifun_large_object));
    }
}

std::int32_t append_to_large_object(bifun_large_object& object, const std::uint8_t* chunk, std::size_t size) {
    if (must_fail()) {
        return BIFUN_OUT_OF_MEMORY;
    }
    if (size > longest_object - object.length) {
        return spool_failure;
    }
    return object.length + size <= longest_in_memory ? append_in_memory(object, chunk, size) : append_to_file(object, chunk, size);
}

std::int32_t read_large_object(const bifun_large_object& object, std::int64_t offset, std::uint8_t* buffer, std::size_t size,
                               std::size_t* read) {
    *read = 0;
    if (offset < 0) {
        return BIFUN_ARGUMENT_OUT_OF_DOMAIN;
    }
    const std::uint64_t from = std::min(static_cast<std::uint64_t>(offset), object.length);
    const std::size_t count = std::min<std::uint64_t>(size, object.length - from);
    if (object.length <= longest_in_memory) {
        std::copy_n(object.memory + from, count, buffer);
    } else if (const std::int32_t status = read_spooled(object.store->file, object.blocks, from, buffer, count); status != BIFUN_OK) {
        return status;
    }
    *read = count;
    return BIFUN_OK;
}

std::int64_t length_of(const bifun_large_object& object) { return static_cast<std::int64_t>(object.length); }

} // namespace zqengine

int32_t nblob_get_length(bifun_environment* /*environment*/, const bifun_large_object* object, int64_t* length) {
    *length = zqengine::length_of(*object);
    return BIFUN_OK;
}

int32_t ntext_get_data(bifun_environment* /*environment*/, const bifun_large_object* object, int64_t offset, uint8_t* data, uint32_t size,
                       uint32_t* read) {
    std::size_t copied = 0;
    const std::int32_t status = zqengine::read_large_object(*object, offset, data, size, &copied);
    *read = static_cast<std::uint32_t>(copied);
    return status;
}
